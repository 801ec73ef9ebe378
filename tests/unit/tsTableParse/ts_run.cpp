#include "tests/unit/tsTableParse/ts_run.h"

#include <algorithm>
#include <filesystem>

#include "src/tsTableParse/ts_demux.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {

namespace {

namespace fs = std::filesystem;

Bytes file_bytes(const fs::path& path) {
    const std::string text = read_file(path);
    return {text.begin(), text.end()};
}

}  // namespace

std::size_t TsRun::count(int id) const {
    return static_cast<std::size_t>(
        std::count_if(reports.begin(), reports.end(),
                      [id](const RecordedReport& report) { return report.id == id; }));
}

std::string TsRun::text(int id) const {
    const auto found = std::find_if(reports.begin(), reports.end(),
                                    [id](const RecordedReport& report) { return report.id == id; });
    return found == reports.end() ? std::string() : found->text;
}

TsRun demux_series(const std::vector<Bytes>& inputs, const TsRunOptions& options) {
    const TempFolder folder;
    const fs::path out = folder.path("out");
    if (options.has_folder) {
        fs::create_directory(out);
    }
    TsRun run;
    RecordingSink sink;
    bool first = true;
    for (const auto& bytes : inputs) {
        const std::string path = folder.write("input.ts", std::string(bytes.begin(), bytes.end()));
        InputFile input;
        run.status |= OpenFileEx(path, nullptr, 0, input);
        run.summary = {};
        run.summary.first_video_pts = -1;
        run.status |= tsdemux(input, out.string(), options.name_prefix, first, options.manifest,
                              &run.summary, options.is_hls, nullptr, options.pid_filter);
        CloseFile(input);
        first = false;
    }
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(out, none)) {
        run.files[entry.path().filename().string()] = file_bytes(entry.path());
    }
    run.reports = sink.reports();
    run.notes = sink.notes();
    return run;
}

TsRun demux(const Bytes& bytes, const TsRunOptions& options) {
    return demux_series({bytes}, options);
}

}  // namespace mediasplit
