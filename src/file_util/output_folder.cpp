#include "src/file_util/output_folder.h"

#include <sys/stat.h>

#include "src/log/logging.h"

namespace mediasplit {
namespace {

constexpr mode_t kFolderMode = 0777;

bool folder_exists(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

int create_if_missing(const std::string& path) {
    return folder_exists(path) ? 0 : ::mkdir(path.c_str(), kFolderMode);
}

}  // namespace

int recursive_create_path(const std::string& path) {
    if (path.empty()) {
        return 1;
    }
    int result = 0;
    for (std::size_t at = path.find('\\'); at != std::string::npos; at = path.find('\\', at + 1)) {
        result |= create_if_missing(path.substr(0, at));
    }
    return result | create_if_missing(path);
}

Status open_output_folder(const std::string& path) {
    if (!path.empty() && (recursive_create_path(path) == 0 || folder_exists(path))) {
        return Status::kOk;
    }
    return Logging_err_type_check(nullptr, 4080, LogContext{}, path);
}

}  // namespace mediasplit
