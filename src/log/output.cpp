#include "src/log/output.h"

#include <cstdio>

namespace mediasplit {

namespace {

void write_text(std::FILE* stream, std::string_view text) {
    // A terminal or pipe that is gone must not end the run: what can't be shown is lost.
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
    static_cast<void>(std::fflush(stream));
}

}  // namespace

void write_to_stdout(std::string_view text) {
    write_text(stdout, text);
}

void write_to_stderr(std::string_view text) {
    write_text(stderr, text);
}

}  // namespace mediasplit
