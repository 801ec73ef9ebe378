#include "src/report/report_file.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <streambuf>

#include "src/file_util/output_folder.h"
#include "src/main/input_format.h"

namespace mediasplit::report {

namespace {

constexpr mode_t kFileMode = 0666;

// Hands characters on to a file, which does the buffering.
class FileBuffer : public std::streambuf {
public:
    explicit FileBuffer(OutputFile& file) : file_(file) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        return put(text, static_cast<std::size_t>(size)) ? size : 0;
    }

    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) {
            return traits_type::not_eof(c);
        }
        const char character = traits_type::to_char_type(c);
        return put(&character, 1) ? c : traits_type::eof();
    }

private:
    bool put(const char* text, std::size_t size) {
        return file_.write({reinterpret_cast<const std::uint8_t*>(text), size});
    }

    OutputFile& file_;
};

// Standard output for the report alone: what else is printed there goes to standard error.
int take_standard_output() {
    static_cast<void>(std::fflush(stdout));
    const int descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (descriptor >= 0 && ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        static_cast<void>(::close(descriptor));
        return -1;
    }
    return descriptor;
}

int open_for_writing(const std::string& path) {
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, kFileMode);
}

// The run makes its output folder, but only after the report is open.
bool make_missing_folder(const std::string& path, const std::optional<std::string>& folder) {
    if (!folder || errno != ENOENT) {
        return false;
    }
    const auto plain = [](const std::filesystem::path& name) {
        const auto normal = (name / "").lexically_normal();
        return normal.empty() ? std::filesystem::path("./") : normal;
    };
    return plain(std::filesystem::path(path).parent_path()) == plain(*folder) &&
           recursive_create_path(*folder) == 0;
}

bool is_same_file(const struct stat& a, const std::string& path) {
    struct stat b {};
    return ::stat(path.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// True if the name is one that the template of a numbered series gives.
bool is_of_series(const std::string& name, const std::string& name_template) {
    if (!input_is_template(name_template)) {
        return false;
    }
    const auto plain = [](const std::string& path) {
        return std::filesystem::path(path).lexically_normal().string();
    };
    const std::string all = plain(name_template);
    const std::size_t begin = all.find('%');
    const std::size_t end = all.find('d', begin) + 1;
    const std::string path = plain(name);
    const std::string_view head = std::string_view(all).substr(0, begin);
    const std::string_view tail = std::string_view(all).substr(end);
    if (path.size() <= head.size() + tail.size() || !path.starts_with(head) ||
        !path.ends_with(tail)) {
        return false;
    }
    const std::string number = path.substr(head.size(), path.size() - head.size() - tail.size());
    return number.find_first_not_of("0123456789") == std::string::npos;
}

// Why the file can't take the report, or empty. Empties it.
std::string prepare(int descriptor, const std::optional<std::string>& input) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return std::strerror(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return {};
    }
    if (input && is_same_file(status, *input)) {
        return "it is the input";
    }
    return ::ftruncate(descriptor, 0) == 0 ? std::string() : std::strerror(errno);
}

}  // namespace

ReportFile::ReportFile(int descriptor) : file_(std::make_unique<OutputFile>(descriptor)) {
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        device_ = status.st_dev;
        inode_ = status.st_ino;
    }
    winsize size{};
    if (::isatty(descriptor) != 0) {
        const char* const no_colour = std::getenv("NO_COLOR");
        layout_.coloured = no_colour == nullptr || *no_colour == 0;
        if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0) {
            layout_.width = size.ws_col;
        }
    }
}

std::optional<ReportFile> ReportFile::open(const std::string& path,
                                           const std::optional<std::string>& input,
                                           const std::optional<std::string>& folder,
                                           std::string& error) {
    if (path == "-") {
        const int descriptor = take_standard_output();
        if (descriptor < 0) {
            error = std::strerror(errno);
            return std::nullopt;
        }
        return ReportFile(descriptor);
    }
    if (input && is_of_series(path, *input)) {
        error = "it is a file of the input";
        return std::nullopt;
    }
    int descriptor = open_for_writing(path);
    if (descriptor < 0 && make_missing_folder(path, folder)) {
        descriptor = open_for_writing(path);
    }
    if (descriptor < 0) {
        error = std::strerror(errno);
        return std::nullopt;
    }
    error = prepare(descriptor, input);
    if (!error.empty()) {
        static_cast<void>(::close(descriptor));
        return std::nullopt;
    }
    return ReportFile(descriptor);
}

bool ReportFile::is_output_of(const std::vector<Stream>& streams) const {
    struct stat status {};
    status.st_dev = device_;
    status.st_ino = inode_;
    return inode_ != 0 &&
           std::any_of(streams.begin(), streams.end(), [&status](const Stream& stream) {
               return std::any_of(
                   stream.outputs.begin(), stream.outputs.end(),
                   [&status](const Output& output) { return is_same_file(status, output.file); });
           });
}

bool ReportFile::write(const std::function<void(std::ostream&)>& writer) {
    FileBuffer buffer(*file_);
    std::ostream out(&buffer);
    writer(out);
    return file_->close() && out.good();
}

}  // namespace mediasplit::report
