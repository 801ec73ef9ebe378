#include "src/id3demuxer/es_streams.h"
#include "src/log/logging.h"
#include "src/main/flows/flows.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

using ElementaryReader = Status (*)(OutputFile* output, InputFile& input, ManifestContext* context,
                                    Loglist* loglist);

// Reads and checks only: a stream that is elementary already has nothing to be written.
Status run_elementary(ElementaryReader reader, Loglist* loglist) {
    InputFile input;
    const Status status = OpenFileEx(g_input, nullptr, 0, input) == Status::kOk
                              ? reader(nullptr, input, nullptr, loglist)
                              : Logging_err_type_check(loglist, 4022, {}, *g_input);
    return status | close_whole_input(input, loglist);
}

}  // namespace

Status run_eac3(Loglist* loglist) {
    return run_elementary(parse_es_stream_oap, loglist);
}

Status run_ac4(Loglist* loglist) {
    return run_elementary(parse_es_stream_ac4, loglist);
}

}  // namespace mediasplit
