#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/main/flows/flows.h"
#include "src/main/series_name.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

// The place of the transport stream demultiplexer; none is part of the program yet.
constexpr TsDemux kTsDemux = nullptr;

constexpr std::uint32_t kEac3StreamType = 0x87;
constexpr std::uint64_t kLargestOffset = 2879;  // ticks of 90 kHz

struct CloseStream {
    void operator()(std::FILE* stream) const { static_cast<void>(std::fclose(stream)); }
};

bool can_be_opened(const std::string& path) {
    const std::unique_ptr<std::FILE, CloseStream> stream(std::fopen(path.c_str(), "rb"));
    return stream != nullptr;
}

Status run_demux(TsDemux demux, InputFile& input, const std::string& name, bool first,
                 TsSegmentSummary* summary, Loglist* loglist) {
    if (demux == nullptr) {
        return Status::kFailed;
    }
    return demux(input, g_output_dir.value_or(""), name, first, nullptr, summary, false, loglist,
                 g_pid);
}

Status check_audio(const TsSegmentSummary& previous, const TsSegmentSummary& current,
                   std::size_t index, Loglist* loglist) {
    const TsAudioSummary& audio = current.audio[index];
    const auto first_audio = static_cast<std::uint64_t>(audio.first_pts);
    const auto first_video = static_cast<std::uint64_t>(current.first_video_pts);
    if (audio.first_pts < current.first_video_pts) {
        return check(false, loglist, 4106, {}, first_audio, first_video);
    }
    Status status = check(true, loglist, 4106, {}, first_audio, first_video);
    const std::uint64_t offset = first_audio - first_video;
    status |= check(offset <= kLargestOffset, loglist, 4107, {}, first_audio, first_video, offset);
    const TsAudioSummary& before = previous.audio[index];
    if (before.stream_type == audio.stream_type) {
        const std::uint64_t growth = offset - static_cast<std::uint64_t>(before.end_pts) +
                                     static_cast<std::uint64_t>(previous.video_end_pts);
        // In 32 bits, as a signed value.
        status |= check(static_cast<std::int32_t>(growth) <= 1, loglist, 4108, {});
    }
    return status;
}

}  // namespace

Status check_ts_timing(const TsSegmentSummary& previous, const TsSegmentSummary& current,
                       Loglist* loglist) {
    Status status = Status::kOk;
    if (previous.first_video_pts == kNoVideoPts || current.first_video_pts == kNoVideoPts) {
        return status;
    }
    const std::size_t count = std::min<std::size_t>(current.count, current.audio.size());
    for (std::size_t i = 0; i < count; ++i) {
        if (current.audio[i].stream_type == kEac3StreamType) {
            status |= check_audio(previous, current, i, loglist);
        }
    }
    return status;
}

Status run_ts_series_with(TsDemux demux, Loglist* loglist) {
    std::string name;
    const bool has_name = splitfilename(g_input, name) == 0;
    Status status = Status::kOk;
    TsSegmentSummary previous;
    std::uint32_t n = 0;
    for (;; ++n) {
        const SeriesName file = series_file_name(*g_input, g_startIndex + n);
        // A template without a number names one file, not an endless row of it.
        if ((n > 0 && !file.is_numbered) || !can_be_opened(file.name)) {
            break;
        }
        if (!has_name) {
            return status | Status::kFailed;
        }
        InputFile input;
        TsSegmentSummary summary;
        if (OpenFileEx(file.name, nullptr, 0, input) == Status::kOk) {
            status |= Logging_err_type_check(loglist, 3, {}, file.name);
            status |= run_demux(demux, input, name, n == 0, &summary, loglist);
        }
        if (status == Status::kOk) {
            status |= check_ts_timing(previous, summary, loglist);
        }
        status |= CloseFile(input);
        previous = summary;
    }
    if (n == 0) {
        status |= Logging_err_type_check(loglist, 4064, {}, *g_input);
    }
    return status;
}

Status run_ts_file_with(TsDemux demux, Loglist* loglist) {
    std::string name;
    if (splitfilename(g_input, name) != 0) {
        return Status::kFailed;
    }
    InputFile input;
    Status status = Status::kOk;
    if (OpenFileEx(g_input, nullptr, 0, input) == Status::kOk) {
        status |= Logging_err_type_check(loglist, 3, {}, *g_input);
        status |= run_demux(demux, input, name, true, nullptr, loglist);
    } else {
        status |= Logging_err_type_check(loglist, 4022, {}, *g_input);
    }
    return status | CloseFile(input);
}

Status run_ts_series(Loglist* loglist) {
    return run_ts_series_with(kTsDemux, loglist);
}

Status run_ts_file(Loglist* loglist) {
    return run_ts_file_with(kTsDemux, loglist);
}

}  // namespace mediasplit
