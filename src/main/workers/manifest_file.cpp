#include "src/main/workers/manifest_file.h"

#include <sys/stat.h>

#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/fetched_files.h"
#include "src/util/fetcher.h"

namespace mediasplit {

namespace {

bool is_folder(std::FILE* stream) {
    struct stat info {};
    return ::fstat(::fileno(stream), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

Status ManifestFile::open(const std::string& name, std::string_view stem, Loglist* loglist) {
    name_ = name;
    if (!is_url(name)) {
        stream_.reset(std::fopen(name.c_str(), "r"));
        // The system opens folders, too, and gives no bytes of them.
        if (stream_ != nullptr && is_folder(stream_.get())) {
            stream_.reset();
        }
        return stream_ == nullptr ? Logging_err_type_check(loglist, 4022, {}, name) : Status::kOk;
    }
    copy_ = createUniqueFileName(stem);
    if (url2file(name, *copy_, fetch_limits().manifest_bytes) != 0) {
        return Logging_err_type_check(loglist, 4021, {}, name);
    }
    stream_.reset(std::fopen(copy_->c_str(), "r"));
    return Status::kOk;
}

Status ManifestFile::remove_copy(Loglist* loglist) {
    stream_.reset();
    if (!copy_ || remove_fetched_file(*copy_) == 0) {
        return Status::kOk;
    }
    return Logging_err_type_check(loglist, 11, {}, *copy_, name_);
}

}  // namespace mediasplit
