#include "src/hls/channels.h"

#include <algorithm>
#include <string_view>

#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {

namespace {

constexpr std::size_t kLongestText = 499;

// Cuts the next part off the front of `text`; empty if there is none. Runs of separators count as
// one.
std::string_view take_part(std::string_view& text, char separator) {
    text.remove_prefix(std::min(text.find_first_not_of(separator), text.size()));
    const std::string_view part = text.substr(0, text.find(separator));
    text.remove_prefix(part.size());
    return part;
}

// The special identifiers; true if "-" isn't the only one.
bool read_identifiers(std::string_view text, ManifestContext& context) {
    std::size_t count = 0;
    for (;;) {
        const std::string_view item = take_part(text, ',');
        if (item.empty()) {
            break;
        }
        ++count;
        if (item == "JOC") {
            context.channels_joc = 1;
        } else if (item == "IMSA") {
            context.channels_imsa = 1;
        } else if (item == "-") {
            context.channels_none = 1;
        }
    }
    return context.channels_none != 0 && count > 1;
}

}  // namespace

Status parse_channels_info(ManifestContext* context, Loglist* loglist) {
    if (context == nullptr) {
        return Status::kFailed;
    }
    context->channels_parsed = 1;
    if (!context->channels_text) {
        return Status::kOk;
    }
    std::string_view rest = *context->channels_text;
    if (rest.size() > kLongestText) {
        return Status::kFailed;
    }
    const std::string_view count = take_part(rest, '/');
    const bool is_number = !count.empty() && check_str_r10(count) == 0;
    Status status = check(is_number, loglist, 4060, {}, context->rendition_index);
    context->channel_count = str2uint_r10(count);
    const std::string_view identifiers = take_part(rest, '/');
    if (!identifiers.empty()) {
        context->channels_have_identifier = 1;
        const bool contradicts = read_identifiers(identifiers, *context);
        status |= check(!contradicts, loglist, 4103, {}, *context->channels_text);
    }
    return status;
}

Status check_channels_info(const ManifestContext* context, Loglist* loglist) {
    if (context == nullptr) {
        return Status::kOk;
    }
    Status status = Status::kOk;
    if (context->channel_count != 0 && context->found_channels != 0) {
        status |= check(context->found_channels_valid != 0, loglist, 2019, {},
                        context->channels_text, context->found_channels_max);
    }
    if (context->channels_joc != 0) {
        status |= check(context->found_joc != 0, loglist, 2020, {}, context->channels_text, "JOC",
                        "EC3 JOC");
    }
    if (context->channels_imsa != 0) {
        status |= check(context->found_imsa != 0, loglist, 2020, {}, context->channels_text, "IMSA",
                        "AC4 IMSA");
    }
    return status;
}

void pass_hls_check_channels_info(ManifestContext* context, const ManifestContext* found) {
    if (context == nullptr || found == nullptr || context->channels_parsed == 0) {
        return;
    }
    const auto take = [](std::uint32_t& known, std::uint32_t news) {
        if (known == 0) {
            known = news;
        }
    };
    take(context->found_channels, found->found_channels);
    take(context->found_channels_valid, found->found_channels_valid);
    take(context->found_joc, found->found_joc);
    take(context->found_imsa, found->found_imsa);
    context->found_channels_max = std::max(context->found_channels_max, found->found_channels_max);
}

}  // namespace mediasplit
