// Names of the outputs of packed audio.
#include <optional>
#include <string>
#include <string_view>

#include "base/osal.h"
#include "src/file_util/name_parts.h"
#include "src/id3demuxer/id3demux.h"
#include "src/log/logging.h"

namespace mediasplit {

namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/id3demuxer";
constexpr int kSourceLine = 553;

bool is_known(PackedKind kind) {
    return kind >= PackedKind::kAc3 && kind <= PackedKind::kAc4;
}

void append_name(std::string& stem, OptText name) {
    if (name) {
        append_pieces(stem, {*name});
    }
}

std::string unknown_stem(const ManifestContext& context) {
    std::string stem;
    if (context.codecs) {
        append_pieces(stem, {"_Codec", *context.codecs});
    }
    return stem + "_" + std::to_string(osal_get_time());
}

}  // namespace

int buildFullName_Id3(std::string* path, OptText output_dir, OptText name,
                      const ManifestContext* context, OptText extension, PackedKind kind) {
    if (path == nullptr || !extension) {
        (void)Logging_err_type_check(nullptr, 3006, {}, kSourceName, kSourceLine);
        return 1;
    }
    const std::string_view ending = output_extension(*extension);
    std::string stem;
    if (context == nullptr) {
        append_name(stem, name);
    } else if (is_known(kind)) {
        append_name(stem, name);
        append_rendition(stem, *context);
    } else if (ending == kUnknownExtension) {
        stem = unknown_stem(*context);
    } else {
        return 1;
    }
    const std::optional<std::string> file_name = output_file_name(stem, ending);
    if (!file_name) {
        (void)Logging_err_type_check(nullptr, 4079, {}, stem);
        return 1;
    }
    *path = output_dir.str() + "/" + *file_name;
    return 0;
}

}  // namespace mediasplit
