#include "src/file_util/path_names.h"
#include "src/fmp4demuxer/fmp4demux.h"
#include "src/log/logging.h"
#include "src/main/flows/flows.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

Status demux_mp4(InputFile& input, const std::string& name, Loglist* loglist) {
    SegmentSlot slot;
    slot.uri = g_input;
    slot.kind = kSlotWholeFile;
    Status status = Logging_err_type_check(loglist, 3, {}, *g_input);
    std::unique_ptr<Mp4Demuxer> demuxer =
        fmp4demux_create(g_output_dir ? g_output_dir->c_str() : nullptr, name.c_str(), nullptr,
                         nullptr, nullptr, nullptr, g_keypairs ? g_keypairs->c_str() : nullptr,
                         &status, loglist, static_cast<std::uint32_t>(g_track_id));
    if (demuxer == nullptr) {
        return status | Status::kFailed;
    }
    status |= fmp4demux(&input, &slot, demuxer.get(), nullptr);
    return status | fmp4demux_destroy(std::move(demuxer));
}

}  // namespace

Status run_mp4(Loglist* loglist) {
    std::string name;
    if (splitfilename(g_input, name) != 0) {
        return Status::kFailed;
    }
    InputFile input;
    const Status status = OpenFileEx(g_input, nullptr, 0, input) == Status::kOk
                              ? demux_mp4(input, name, loglist)
                              : Logging_err_type_check(loglist, 4022, {}, *g_input);
    return status | close_whole_input(input, loglist);
}

}  // namespace mediasplit
