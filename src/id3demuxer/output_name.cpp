// Names of the outputs of packed audio.
#include <string_view>

#include "base/osal.h"
#include "src/file_util/path_names.h"
#include "src/id3demuxer/id3demux.h"
#include "src/log/logging.h"

namespace mediasplit {

namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/id3demuxer";
constexpr int kSourceLine = 553;
constexpr std::size_t kStemLimit = 1024;
constexpr std::size_t kSafeStemLimit = 249;
constexpr std::size_t kExtensionLimit = 7;
constexpr std::size_t kChannelsLimit = 32;
constexpr std::string_view kUnknownExtension = "unknow";

bool is_known(PackedKind kind) {
    return kind >= PackedKind::kAc3 && kind <= PackedKind::kAc4;
}

// Adds the label and the text, if there is one and both fit.
void add_piece(std::string& stem, std::string_view label, OptText text) {
    if (text && stem.size() + label.size() + text->size() < kStemLimit) {
        stem += label;
        stem += *text;
    }
}

// CHANNELS as part of a name; none if it can't be made one.
std::optional<std::string> channels_piece(const std::optional<std::string>& channels) {
    if (!channels) {
        return std::nullopt;
    }
    return allNumber(channels) ? *channels + "ch" : eraseInvalidChr(channels, kChannelsLimit);
}

std::string rendition_stem(OptText name, const ManifestContext& context) {
    std::string stem;
    add_piece(stem, "", name);
    add_piece(stem, "_GroupID_", context.group_id);
    add_piece(stem, "_Lang_", context.language);
    add_piece(stem, "_Channel_", channels_piece(context.channels_text));
    return stem;
}

std::string unknown_stem(const ManifestContext& context) {
    std::string stem;
    add_piece(stem, "_Codec", context.codecs);
    return stem + "_" + std::to_string(osal_get_time());
}

}  // namespace

int buildFullName_Id3(std::string* path, OptText output_dir, OptText name,
                      const ManifestContext* context, OptText extension, PackedKind kind) {
    if (path == nullptr || !extension) {
        (void)Logging_err_type_check(nullptr, 3006, {}, kSourceName, kSourceLine);
        return 1;
    }
    const std::string_view ending =
        extension->size() < kExtensionLimit ? *extension : kUnknownExtension;
    std::string stem;
    if (context == nullptr) {
        add_piece(stem, "", name);
    } else if (is_known(kind)) {
        stem = rendition_stem(name, *context);
    } else if (ending == kUnknownExtension) {
        stem = unknown_stem(*context);
    } else {
        return 1;
    }
    (void)fileStrValid(&stem);
    if (stem.size() >= kSafeStemLimit) {
        (void)Logging_err_type_check(nullptr, 4079, {}, stem);
        return 1;
    }
    *path = output_dir.str() + "/" + stem + ".out.";
    *path += ending;
    return 0;
}

}  // namespace mediasplit
