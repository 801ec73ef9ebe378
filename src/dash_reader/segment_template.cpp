#include "src/dash_reader/segment_template.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "src/dash_reader/base_url.h"
#include "src/file_util/path_names.h"
#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

// Where a filled template is cut; no address of this length can be fetched.
constexpr std::size_t kLongestFilled = 4096;
constexpr std::size_t kWidthLimit = 21;
constexpr std::string_view kFormatEnd = "d$";

// An identifier that may have a width: "$<name>$" and "$<name>%0<width>d$".
struct Identifier {
    std::string_view plain;
    std::string_view format_start;
    Status (*missing)(Loglist*);
    Status (*too_wide)(Loglist*);
};

Status report_missing_bandwidth(Loglist* loglist) {
    return Logging_err_type_check(loglist, 4037, {});
}
Status report_missing_number(Loglist* loglist) {
    return Logging_err_type_check(loglist, 4038, {});
}
Status report_missing_time(Loglist* loglist) {
    return Logging_err_type_check(loglist, 4039, {});
}
Status report_wide_bandwidth(Loglist* loglist) {
    return Logging_err_type_check(loglist, 4040, {});
}
Status report_wide_number(Loglist* loglist) {
    return Logging_err_type_check(loglist, 4041, {});
}
Status report_wide_time(Loglist* loglist) {
    return Logging_err_type_check(loglist, 4042, {});
}

constexpr Identifier kBandwidth{"$Bandwidth$", "$Bandwidth%0", report_missing_bandwidth,
                                report_wide_bandwidth};
constexpr Identifier kNumber{"$Number$", "$Number%0", report_missing_number, report_wide_number};
constexpr Identifier kTime{"$Time$", "$Time%0", report_missing_time, report_wide_time};

void replace_all(std::string& text, std::string_view find, std::string_view replacement) {
    text = str_replace(text, find, replacement, kLongestFilled);
}

// The first token with a width, and the text of the width. None if that isn't a number.
struct WidthToken {
    std::string token;
    std::string width;
};
std::optional<WidthToken> find_width_token(std::string_view text, std::string_view start) {
    const std::size_t at = text.find(start);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t digits = at + start.size();
    const std::size_t end = text.find(kFormatEnd, digits);
    if (end == std::string_view::npos || end == digits) {
        return std::nullopt;
    }
    const std::string_view width = text.substr(digits, end - digits);
    if (!allNumber(width)) {
        return std::nullopt;
    }
    return WidthToken{std::string(text.substr(at, end + kFormatEnd.size() - at)),
                      std::string(width)};
}

// The width, or the limit for all that reach it.
std::size_t width_of(std::string_view digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits.size() > 2 ? kWidthLimit
                             : std::min<std::size_t>(str2uint_r10(digits), kWidthLimit);
}

Status fill_identifier(const Identifier& identifier, OptText value, std::string& text,
                       Loglist* loglist) {
    if (text.find(identifier.plain) != std::string::npos) {
        if (!value) {
            return identifier.missing(loglist);
        }
        replace_all(text, identifier.plain, *value);
    }
    const auto found = find_width_token(text, identifier.format_start);
    if (!found) {
        return Status::kOk;
    }
    if (!value) {
        return identifier.missing(loglist);
    }
    const std::size_t width = width_of(found->width);
    if (width >= kWidthLimit) {
        return identifier.too_wide(loglist);
    }
    std::string padded(width - std::min(width, value->size()), '0');
    padded += *value;
    replace_all(text, found->token, padded);
    return Status::kOk;
}

Status fill_id(OptText id, std::string& text, Loglist* loglist) {
    constexpr std::string_view kIdentifier = "$RepresentationID$";
    if (text.find(kIdentifier) == std::string::npos) {
        return Status::kOk;
    }
    if (!id) {
        return Logging_err_type_check(loglist, 4036, {});
    }
    replace_all(text, kIdentifier, *id);
    return Status::kOk;
}

}  // namespace

Status substitute_url(OptText url_template, OptText id, OptText bandwidth, OptText number,
                      OptText time, std::string* out, Loglist* loglist) {
    if (!url_template || url_template->size() > kLongestRelativeUrl) {
        return Status::kFailed;
    }
    std::string text = url_template.str();
    if (const Status status = fill_id(id, text, loglist); status != Status::kOk) {
        return status;
    }
    struct Filling {
        const Identifier& identifier;
        OptText value;
    };
    for (const Filling& filling :
         {Filling{kBandwidth, bandwidth}, Filling{kNumber, number}, Filling{kTime, time}}) {
        const Status status = fill_identifier(filling.identifier, filling.value, text, loglist);
        if (status != Status::kOk) {
            return status;
        }
    }
    replace_all(text, "$$", "$");
    if (out != nullptr) {
        *out = std::move(text);
    }
    return Status::kOk;
}

}  // namespace mediasplit
