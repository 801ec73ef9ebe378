#include "src/log/output.h"

#include <atomic>
#include <cstdio>

namespace mediasplit {

namespace {

std::atomic<OutputObserver*> g_output_observer{nullptr};

void write_text(std::FILE* stream, std::string_view text) {
    OutputObserver* const observer = g_output_observer.load(std::memory_order_acquire);
    if (observer != nullptr) {
        observer->before_write();
    }
    // A terminal or pipe that is gone must not end the run: what can't be shown is lost.
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
    static_cast<void>(std::fflush(stream));
    if (observer != nullptr) {
        observer->after_write();
    }
}

}  // namespace

void write_to_stdout(std::string_view text) {
    write_text(stdout, text);
}

void write_to_stderr(std::string_view text) {
    write_text(stderr, text);
}

void set_output_observer(OutputObserver* observer) {
    g_output_observer.store(observer, std::memory_order_release);
}

}  // namespace mediasplit
