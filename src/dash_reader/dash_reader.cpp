#include "src/dash_reader/dash_reader.h"

#include <cstdlib>
#include <string_view>

#include "src/dash_reader/element_readers.h"
#include "src/dash_reader/source_name.h"
#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

Status invalid_argument(Loglist* loglist, int line) {
    return Logging_err_type_check(loglist, 3006, {}, kDashReaderSourceName, line);
}

EzxmlPtr parse_tree(OptText text, std::FILE* file, OptText path) {
    if (text) {
        return ezxml_parse_str(text.str());
    }
    if (file != nullptr) {
        std::rewind(file);
        return ezxml_parse_fp(file);
    }
    return ezxml_parse_file(path.str().c_str());
}

}  // namespace

Status parse_dash_data(OptText text, std::FILE* file, OptText path, EzxmlPtr* root,
                       Loglist* loglist) {
    if (root == nullptr || !path) {
        return invalid_argument(loglist, 96);
    }
    *root = parse_tree(text, file, path);
    if (*root == nullptr) {
        return Logging_err_type_check(loglist, 4024, {}, *path);
    }
    const char* const name = (*root)->name;
    return check(name != nullptr && std::string_view(name) == "MPD", loglist, 4026, {});
}

Status get_dash_info(std::unique_ptr<DashInfo>* info, Ezxml* root, OptText manifest_url,
                     std::int32_t period_index, OptText representation_id, Loglist* loglist) {
    if (info == nullptr || root == nullptr || !manifest_url) {
        return invalid_argument(loglist, 140);
    }
    Status status = init_dash_info(info, loglist);
    if (status != Status::kOk) {
        return status;
    }
    (*info)->url = manifest_url.str();
    status = get_mpd_attribute(root, period_index, representation_id, **info, loglist);
    if (status != Status::kOk) {
        desctroy_dash_info(*info);
    }
    return status;
}

Status init_dash_info(std::unique_ptr<DashInfo>* info, Loglist* loglist) {
    if (info == nullptr) {
        return invalid_argument(loglist, 165);
    }
    *info = std::make_unique<DashInfo>();
    return Status::kOk;
}

void desctroy_dash_info(std::unique_ptr<DashInfo>& info) {
    info.reset();
}

Status get_attribute_uint32(const Ezxml* node, const char* name, std::uint32_t& out,
                            Loglist* loglist) {
    const char* const text = ezxml_attr(node, name);
    if (text == nullptr) {
        return Status::kOk;
    }
    char* end = nullptr;
    out = static_cast<std::uint32_t>(std::strtoull(text, &end, 10));
    const char* const ui_id = ezxml_attr(node, "ui-id");
    return check(*text != '\0' && *end == '\0', loglist, 4092,
                 LogContext{0, ui_id == nullptr ? "" : ui_id, name}, name, text);
}

Status get_attribute_uint64(const Ezxml* node, const char* name, std::uint64_t& out) {
    out = str2ulonglong(ezxml_attr(node, name));
    return Status::kOk;
}

}  // namespace mediasplit
