#include "ac4/toc_reader/toc_head.h"

namespace mediasplit {
namespace {

constexpr std::int32_t kLastFrameRate = 13;  // the only one at 44.1 kHz
constexpr std::int32_t kNoBound = 7;

void read_wait_frames(TocParser& parser, TocHead* head) {
    head->b_wait_frames = read_flag(parser.in);
    if (!head->b_wait_frames) {
        return;
    }
    head->wait_frames = static_cast<std::int32_t>(read_field(parser.in, 3));
    if (head->wait_frames == 0) {
        head->bit_rate_mode = BitRateMode::kConstant;
        return;
    }
    head->br_code = static_cast<std::int32_t>(read_field(parser.in, 2)) | kBrCodePresent;
    head->bit_rate_mode =
        head->wait_frames == kNoBound ? BitRateMode::kAverage : BitRateMode::kBuffered;
}

void read_presentation_count(TocParser& parser, TocHead* head) {
    head->n_presentations = 1;
    if (read_flag(parser.in)) {
        return;
    }
    head->n_presentations = 0;
    if (read_flag(parser.in)) {
        const std::uint32_t count = read_variable_bits(parser.in, 2) + 2;
        if (count > kMaxTocPresentations) {
            stop(parser, kTocLimit);
            return;
        }
        head->n_presentations = static_cast<std::int32_t>(count);
    }
}

void read_program_id(TocParser& parser, TocHead* head) {
    if (!read_flag(parser.in)) {
        return;
    }
    head->program_id_kind = ProgramIdKind::kShort;
    head->short_program_id = read_field(parser.in, 16);
    if (read_flag(parser.in)) {
        head->program_id_kind = ProgramIdKind::kShortAndUuid;
        for (std::uint8_t& byte : head->program_uuid) {
            byte = static_cast<std::uint8_t>(read_field(parser.in, 8));
        }
    }
}

}  // namespace

void AC4_ANALYZE_ac4toc_parse_num_presentations(TocParser& parser, BitRateMode last_bit_rate_mode) {
    TocHead& head = parser.head;
    head = TocHead{};
    head.bit_rate_mode = last_bit_rate_mode;
    head.bitstream_version = static_cast<std::int32_t>(read_field(parser.in, 2));
    if (head.bitstream_version > 2) {
        stop(parser, kTocUnsupported);
    }
    head.sequence_counter = static_cast<std::int32_t>(read_field(parser.in, 10));
    read_wait_frames(parser, &head);
    head.fs_index = static_cast<std::int32_t>(read_field(parser.in, 1));
    head.frame_rate_index = static_cast<std::int32_t>(read_field(parser.in, 4));
    if (head.fs_index == 1 ? head.frame_rate_index > kLastFrameRate
                           : head.frame_rate_index != kLastFrameRate) {
        refuse(parser, kTocLimit);
    }
    head.b_iframe_global = read_flag(parser.in);
    read_presentation_count(parser, &head);
    if (read_flag(parser.in)) {
        head.payload_base = read_field(parser.in, 5) + 1;
        if (head.payload_base == 32) {
            head.payload_base += read_variable_bits(parser.in, 3);
        }
    }
    if (head.bitstream_version > 1) {
        read_program_id(parser, &head);
    }
    head.presentations_position = field_position(parser.in);
}

void copy_head(const TocHead& head, TocInfo* info) {
    info->bitstream_version = head.bitstream_version;
    info->fs_index = head.fs_index;
    info->frame_rate_index = head.frame_rate_index;
    info->wait_frames_plus1 = head.b_wait_frames ? head.wait_frames + 1 : 0;
    info->br_code = head.br_code;
    info->bit_rate_mode = static_cast<std::int32_t>(head.bit_rate_mode);
    info->b_iframe_global = head.b_iframe_global;
    info->n_presentations = head.n_presentations;
    info->sequence_counter = head.sequence_counter;
    info->program_id_kind = head.program_id_kind;
    info->short_program_id = head.short_program_id;
    info->program_uuid = head.program_uuid;
}

}  // namespace mediasplit
