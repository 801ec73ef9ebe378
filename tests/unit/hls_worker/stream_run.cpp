#include "tests/unit/hls_worker/stream_run.h"

#include <cstdio>

#include "tests/support/ts_builder.h"

namespace mediasplit {

std::string ts_segment(const std::string& payload) {
    return as_text(adts_stream(payload));
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
    return file_names(folder_.path(name));
}

}  // namespace mediasplit
