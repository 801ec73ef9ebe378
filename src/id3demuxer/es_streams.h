// Elementary streams of E-AC-3 and AC-4, from packed audio or as the input of a run.
#pragma once

#include "src/commonfileio/input_file.h"
#include "src/file_util/output_file.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"

namespace mediasplit {

// Reads E-AC-3 syncframes (ETSI TS 102 366 Annex E) to the end of `input`, hands each time slice to
// the analysis (4333), and writes it to `output` if there is one. The first of several time slices
// is held against CODECS and CHANNELS of `context`, which may be null (4283 to 4291). Lost sync
// ends the stream with 4332. The OR of all reports; write errors stay with `output`. Deliberate:
// AC-3 frames are taken by the size field of E-AC-3.
[[nodiscard]] Status parse_es_stream_oap(OutputFile* output, InputFile& input,
                                         ManifestContext* context, Loglist* loglist);

// Reads AC-4 sync frames (ETSI TS 103 190-2 Annex C) to the end of `input`, hands each frame to the
// analysis (4491), holds it against CODECS and CHANNELS of `context`, which may be null, and writes
// it to `output` if there is one. Lost sync ends the stream with 4490. The OR of all reports; write
// errors stay with `output`.
// Deliberate: the check word behind a frame is dropped, its sync word AC 41 stays.
[[nodiscard]] Status parse_es_stream_ac4(OutputFile* output, InputFile& input,
                                         ManifestContext* context, Loglist* loglist);

}  // namespace mediasplit
