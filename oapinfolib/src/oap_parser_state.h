#pragma once

#include <cstdint>
#include <memory>

#include "oapinfolib/src/dit_api.h"
#include "oapinfolib/src/dit_fio.h"
#include "oapinfolib/src/fmi_api.h"
#include "oapinfolib/src/oapinfo_api.h"
#include "oapinfolib/src/timeslice.h"

// Inside of a parser, for callers that want another report or another rule set than the fixed ones:
// set `disp_flags` (see disp.h) or `compliance_mode` (see tsc.h) before the first block.

namespace mediasplit {

inline constexpr std::uint16_t kDefaultDispFlags = 0x51;  // compliance lines, of slices and in sum

// Bytes of compliance lines that a stream may ask for: so many in any case, and so many for each of
// its bytes. Sound streams, and broken ones that aren't made for it, stay far below.
inline constexpr std::int64_t kReportAnyway = std::int64_t{1} << 20;
inline constexpr std::int64_t kReportShare = 32;

struct OapParserState {
    FileBuffer file;
    bool stop_at_first_failure = false;  // ends a block once a compliance failure stands
    std::uint16_t display_word = 0;      // 2 if the argument of oap_es_parser_new was set; unused
    std::uint16_t disp_flags = kDefaultDispFlags;
    std::uint16_t compliance_mode = 1;
    std::uint16_t frame_words = 0;
    FrameStatus frame_status = kStatusUnknown;
    std::unique_ptr<FrameHandle> frame;
    FrameDescriptor descriptor{};
    FrameParams scratch{};
    const std::uint16_t* aux_data = nullptr;
    const std::uint16_t* encinfo = nullptr;
    std::int16_t aux_bits = 0;
    FlushResult flush{};
    std::unique_ptr<DitState> dit;
    const TimesliceState* last = nullptr;  // seen at the last report
    std::int64_t last_printed = 0;         // number of the time slice printed last
    Timeslice shadow;                      // the time slice the report took up last
    std::int64_t report_left = kReportAnyway;
    std::uint32_t last_compliance = 0;  // any-failure flag at the end of the last call
};

}  // namespace mediasplit
