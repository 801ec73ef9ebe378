#include "tests/unit/hls_worker/stream_run.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "tests/support/ts_builder.h"

namespace mediasplit {

namespace fs = std::filesystem;

std::string ts_segment(const std::string& payload) {
    TsBuilder stream = one_program({{0x0F, 257}});
    PesDescription pes;
    pes.stream_id = 0xC0;
    pes.pts = 90000;
    pes.payload.assign(payload.begin(), payload.end());
    stream.pes(257, pes);
    return as_text(stream.bytes());
}

void StreamRun::follow(const std::string& playlist, const std::string& url) {
    (void)folder_.write("playlist.read", playlist);
    std::FILE* const file = std::fopen("playlist.read", "r");
    result_ = thread(file, url, "list", "out", context_ ? &*context_ : nullptr, status_, &list_,
                     keypairs_, &live_remaining_, loglist_.get(), outputs_);
    (void)std::fclose(file);
}

std::string StreamRun::output(const std::string& name) const {
    return read_file(folder_.path("out/" + name));
}

std::vector<std::string> StreamRun::files(const std::string& name) const {
    std::vector<std::string> result;
    for (const auto& entry : fs::directory_iterator(folder_.path(name))) {
        result.push_back(entry.path().filename().string());
    }
    std::sort(result.begin(), result.end());
    return result;
}

}  // namespace mediasplit
