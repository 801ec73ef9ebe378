#include "ac4/toc_reader/toc_parser.h"

namespace mediasplit {

void stop(TocParser& parser, int code) {
    if (parser_ok(parser)) {
        parser.code = code;
        parser.in.error = FieldError::kRefused;
    }
}

void refuse(TocParser& parser, int code) {
    if (parser.mode != TocMode::kTolerant) {
        stop(parser, code);
    } else if (parser_ok(parser) && parser.deferred == kTocOk) {
        parser.deferred = code;
    }
}

std::uint32_t limited(TocParser& parser, std::uint32_t value, std::uint32_t most) {
    if (value > most) {
        refuse(parser, kTocLimit);
    }
    return value;
}

int parser_result(const TocParser& parser) {
    switch (parser.in.error) {
        case FieldError::kNone:
            return parser.deferred;
        case FieldError::kRefused:
            return parser.code;
        case FieldError::kTooLong:
            return kTocLimit;
        case FieldError::kRanOut:
        case FieldError::kHook:
            break;
    }
    return kTocNoData;
}

std::int32_t read_substream_index(TocParser& parser) {
    constexpr std::uint32_t kMostIndex = 1023;
    return static_cast<std::int32_t>(
        limited(parser, read_extended(parser.in, 2, 3, 2), kMostIndex));
}

std::uint32_t read_emdf_count(TocParser& parser) {
    const std::uint32_t count = read_field(parser.in, 2);
    return count != 0 || !parser_ok(parser) ? count : read_variable_bits(parser.in, 2) + 4;
}

std::int32_t read_frame_rate_multiply(TocParser& parser) {
    switch (parser.head.frame_rate_index) {
        case 2:
        case 3:
        case 4:
            if (!read_flag(parser.in)) {
                return 1;
            }
            return read_flag(parser.in) ? 4 : 2;
        case 0:
        case 1:
        case 7:
        case 8:
        case 9:
            return read_flag(parser.in) ? 2 : 1;
        default:
            return 1;
    }
}

std::int32_t read_frame_rate_fraction(TocParser& parser, std::int32_t frame_rate_multiply) {
    const std::int32_t index = parser.head.frame_rate_index;
    if (index >= 5 && index <= 9 && frame_rate_multiply == 1) {
        return read_flag(parser.in) ? 2 : 1;
    }
    if (index >= 10 && index <= 12 && read_flag(parser.in)) {
        return read_flag(parser.in) ? 4 : 2;
    }
    return 1;
}

EmdfSubstream read_emdf_info(TocParser& parser) {
    constexpr std::array<std::int64_t, 4> kProtectionBits = {0, 8, 32, 128};
    EmdfSubstream emdf;
    emdf.emdf_version = static_cast<std::int32_t>(read_extended(parser.in, 2, 3, 2));
    emdf.key_id = static_cast<std::int32_t>(read_extended(parser.in, 3, 7, 3));
    if (read_flag(parser.in)) {
        emdf.substream_index = read_substream_index(parser);
    }
    const std::int64_t protection = kProtectionBits[read_field(parser.in, 2)];
    const std::int64_t secondary = kProtectionBits[read_field(parser.in, 2)];
    const MaskedRange range = {field_position(parser.in), protection + secondary};
    skip_field(parser.in, range.length);
    if (parser.masked != nullptr && range.length > 0 && parser_ok(parser) &&
        parser.masked->count < kMaxMaskedRanges) {
        parser.masked->ranges[parser.masked->count++] = range;
    }
    return emdf;
}

std::uint32_t skip_presentation_config_ext(TocParser& parser) {
    std::uint32_t n_skip_bytes = read_field(parser.in, 5);
    if (read_flag(parser.in)) {
        n_skip_bytes += read_variable_bits(parser.in, 2) << 5;
    }
    skip_field(parser.in, static_cast<std::int64_t>(n_skip_bytes) * 8);
    return n_skip_bytes;
}

std::int32_t AC4_ANALYZE_ac4toc_get_bitrate_indicator(TocParser& parser) {
    const auto code = static_cast<std::int32_t>(read_field(parser.in, 3));
    if ((code & 1) == 0) {
        return code >> 1;
    }
    return 2 * code + 2 + static_cast<std::int32_t>(read_field(parser.in, 2));
}

void AC4_ANALYZE_ac4toc_get_substream_content_type(TocParser& parser, ContentType* content) {
    content->b_content_type = true;
    content->content_classifier = static_cast<std::int32_t>(read_field(parser.in, 3));
    content->b_language_indicator = read_flag(parser.in);
    if (!content->b_language_indicator) {
        return;
    }
    content->b_serialized_language_tag = read_flag(parser.in);
    if (content->b_serialized_language_tag) {
        content->b_start_tag = read_flag(parser.in);
        content->language_tag_chunk = read_field(parser.in, 16);
        return;
    }
    content->language_size = read_field(parser.in, 6);
    for (std::uint32_t i = 0; i < content->language_size; ++i) {
        content->language[i] = static_cast<char>(read_field(parser.in, 8));
    }
}

}  // namespace mediasplit
