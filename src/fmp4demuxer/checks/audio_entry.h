// Checks of E-AC-3 and AC-4 sample entries against the manifest and the bitstream.
#pragma once

#include <cstdint>

#include "oapinfolib/src/oapinfo_api.h"
#include "src/log/status.h"
#include "src/mp4demuxer/records.h"

namespace mediasplit {

// Whether the track has a "dec3" box.
[[nodiscard]] inline bool has_ec3_config(const Mp4Stream& stream) {
    return (stream.box_flags & kBoxDec3) != 0 && stream.ec3_config != nullptr;
}

// Whether the track has a "dac4" box.
[[nodiscard]] inline bool has_ac4_config(const Mp4Stream& stream) {
    return (stream.box_flags & kBoxDac4) != 0 && stream.ac4_config != nullptr;
}

// Judges an "ec-3" sample entry with its "dec3" box (ETSI TS 102 366 F.2, ETSI TS 103 420 C.3),
// 4294 to 4302 and 2039, and holds it against the manifest: 4269 to 4290, 2036 and 2037. Does so
// only if `entry_due` tells that the track's entry is seen for the first time. The OR of the
// reports; what was found is put into a playlist's context.
[[nodiscard]] Status oap_sample_entry_validation(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                                 bool entry_due);

// Holds the analysis of one E-AC-3 sample against the "dec3" box: 2040, 4293, 4303 to 4311, and
// with `check_extension` the object audio extension, 4312 to 4316. 3006 if an argument is missing.
// The OR of the reports.
[[nodiscard]] Status oap_es_info_validate(const OapEsInfo* info, const Ec3Config* config,
                                          bool check_extension, Loglist* loglist);

// The same for an "ac-4" entry with its "dac4" box: 4400 to 4413 and 4489, and against the manifest
// 4339 to 4351, 4357 to 4391 and 2041 to 2047.
[[nodiscard]] Status ac4SampleEntry(Mp4Demuxer& demuxer, std::uint32_t stream_index,
                                    bool entry_due);

}  // namespace mediasplit
