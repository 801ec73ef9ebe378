#include "src/log/logging.h"
#include "src/main/flows/flows.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

// The places of the readers of elementary streams; none is part of the program yet.
constexpr ElementaryReader kEac3Reader = nullptr;
constexpr ElementaryReader kAc4Reader = nullptr;

Status run_elementary(ElementaryReader reader, Loglist* loglist) {
    InputFile input;
    if (OpenFileEx(g_input, nullptr, 0, input) != Status::kOk) {
        const Status status = Logging_err_type_check(loglist, 4022, {}, *g_input);
        return status | CloseFile(input);
    }
    return reader == nullptr ? Status::kFailed : reader(nullptr, input, nullptr, loglist);
}

}  // namespace

Status run_eac3(Loglist* loglist) {
    return run_elementary(kEac3Reader, loglist);
}

Status run_ac4(Loglist* loglist) {
    return run_elementary(kAc4Reader, loglist);
}

}  // namespace mediasplit
