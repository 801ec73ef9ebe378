#include "tests/unit/tsTableParse/ts_run.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "src/tsTableParse/ts_demux.h"

namespace mediasplit {

namespace {

namespace fs = std::filesystem;

class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = (fs::temp_directory_path() / "ts_test_XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() { fs::remove_all(path_); }
    [[nodiscard]] const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

Bytes read_file(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

void write_file(const fs::path& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
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
    const ScratchFolder folder;
    const fs::path input_path = folder.path() / "input.ts";
    const fs::path out = folder.path() / "out";
    if (options.has_folder) {
        fs::create_directory(out);
    }
    TsRun run;
    RecordingSink sink;
    bool first = true;
    for (const auto& bytes : inputs) {
        write_file(input_path, bytes);
        InputFile input;
        run.status |= OpenFileEx(input_path.string(), nullptr, 0, input);
        run.summary = {};
        run.summary.first_video_pts = -1;
        run.status |= tsdemux(input, out.string(), options.name_prefix, first, options.manifest,
                              &run.summary, options.is_hls, nullptr, options.pid_filter);
        CloseFile(input);
        first = false;
    }
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(out, none)) {
        run.files[entry.path().filename().string()] = read_file(entry.path());
    }
    run.reports = sink.reports();
    run.notes = sink.notes();
    return run;
}

TsRun demux(const Bytes& bytes, const TsRunOptions& options) {
    return demux_series({bytes}, options);
}

}  // namespace mediasplit
