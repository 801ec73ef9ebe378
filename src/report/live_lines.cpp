#include "src/report/live_lines.h"

#include <pthread.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "src/report/text_escape.h"
#include "src/report/wording.h"

namespace mediasplit::report {

namespace {

constexpr std::chrono::milliseconds kFirstPause{500};
constexpr std::chrono::milliseconds kPause{250};
constexpr std::size_t kUsualColumns = 80;
constexpr std::size_t kUsualRows = 24;

std::uint64_t written_bytes(const std::vector<std::string>& outputs) {
    std::uint64_t sum = 0;
    for (const std::string& path : outputs) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        sum += error ? 0 : static_cast<std::uint64_t>(size);
    }
    return sum;
}

// The first `columns` characters of a text.
std::string cut(std::string_view text, std::size_t columns) {
    std::size_t at = 0;
    while (at < text.size() && columns > 0) {
        char32_t character = 0;
        const std::size_t length = utf8_character(text.substr(at), character);
        at += std::max<std::size_t>(length, 1);
        --columns;
    }
    return std::string(text.substr(0, at));
}

std::string line_of(const StreamProgress& stream) {
    std::string line = stream.name.empty() ? "Main stream" : printable(stream.name);
    line += ": ";
    if (stream.segments != 0) {
        line += counted(stream.segments, "segment") + ", ";
    }
    return line + counted(written_bytes(stream.outputs), "byte") + ", " +
           counted(stream.findings, "finding");
}

void write_terminal(std::string_view text) {
    while (!text.empty()) {
        const ssize_t done = ::write(STDERR_FILENO, text.data(), text.size());
        if (done <= 0) {
            return;  // lines that can't be shown are lost
        }
        text.remove_prefix(static_cast<std::size_t>(done));
    }
}

}  // namespace

std::string live_text(const std::vector<StreamProgress>& streams, std::size_t columns,
                      std::size_t rows) {
    // With a manifest the main stream does nothing that a user waits for.
    const std::size_t first = streams.size() > 1 ? 1 : 0;
    const std::size_t count = streams.size() - first;
    const std::size_t shown = count <= rows || rows == 0 ? std::min(count, rows) : rows - 1;
    std::string text;
    for (std::size_t i = 0; i < shown; ++i) {
        text += cut(line_of(streams[first + i]), columns) + "\n";
    }
    if (shown < count && rows != 0) {
        text += cut("and " + counted(count - shown, "stream") + " more", columns) + "\n";
    }
    return text;
}

LiveLines::LiveLines(const FindingsCollector& collector) : collector_(collector) {
    // Signals are for the threads of the run.
    sigset_t all{};
    sigset_t before{};
    static_cast<void>(::sigfillset(&all));
    static_cast<void>(::pthread_sigmask(SIG_SETMASK, &all, &before));
    thread_ = std::thread([this] { keep_up(); });
    static_cast<void>(::pthread_sigmask(SIG_SETMASK, &before, nullptr));
    set_output_observer(this);
}

LiveLines::~LiveLines() {
    set_output_observer(nullptr);
    {
        const std::lock_guard lock(mutex_);
        is_over_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void LiveLines::before_write() {
    mutex_.lock();
    erase();
}

void LiveLines::after_write() {
    mutex_.unlock();
}

bool LiveLines::can_be_shown() {
    const char* const kind = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) != 0 && kind != nullptr && std::string_view(kind) != "dumb";
}

void LiveLines::erase() {
    if (shown_ != 0) {
        write_terminal("\033[" + std::to_string(shown_) + "A\r\033[J");
        shown_ = 0;
    }
}

void LiveLines::keep_up() {
    std::unique_lock lock(mutex_);
    // A run that is over at once shows nothing.
    for (auto pause = kFirstPause; !wake_.wait_for(lock, pause, [this] { return is_over_; });
         pause = kPause) {
        winsize size{};
        static_cast<void>(::ioctl(STDERR_FILENO, TIOCGWINSZ, &size));
        const std::size_t columns = size.ws_col != 0 ? size.ws_col : kUsualColumns;
        const std::size_t rows = size.ws_row != 0 ? size.ws_row : kUsualRows;
        const std::string text = live_text(collector_.progress(), columns - 1, rows - 1);
        erase();
        write_terminal(text);
        shown_ = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }
    erase();
}

}  // namespace mediasplit::report
