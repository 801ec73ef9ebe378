#include "src/fmp4demuxer/writers/av1_headers.h"

#include <algorithm>

#include "src/video/leb128.h"

namespace mediasplit {
namespace {

constexpr std::uint32_t kUnspecified = 2;  // of the three colour values

// Reads a sequence header field by field.
class Fields {
public:
    explicit Fields(ByteSpan data) : data_(data) {}

    std::uint32_t get(std::uint32_t bits) { return read_uint32(at_, data_, bits); }
    bool flag() { return get(1) != 0; }
    void skip(std::uint32_t bits) { at_ += bits; }

    // uvlc(), whose value nobody needs.
    void skip_uvlc() {
        std::uint32_t zeros = 0;
        while (zeros < 32 && at_ / 8 < data_.size() && !flag()) {
            ++zeros;
        }
        if (zeros < 32) {
            skip(zeros);
        }
    }

private:
    ByteSpan data_;
    std::uint32_t at_ = 0;
};

// timing_info() and decoder_model_info(). Returns the bits of a buffer delay, 0 without a model.
std::uint32_t skip_timing(Fields& fields) {
    fields.skip(64);  // num_units_in_display_tick, time_scale
    if (fields.flag()) {
        fields.skip_uvlc();  // num_ticks_per_picture_minus_1
    }
    if (!fields.flag()) {
        return 0;
    }
    const std::uint32_t delay_bits = fields.get(5) + 1;
    fields.skip(32 + 5 + 5);
    return delay_bits;
}

void read_operating_points(Fields& fields, Av1SequenceHeader& header) {
    const std::uint32_t delay_bits = fields.flag() ? skip_timing(fields) : 0;
    const bool display_delays = fields.flag();
    const std::uint32_t count = fields.get(5) + 1;
    for (std::uint32_t i = 0; i < count; ++i) {
        fields.skip(12);  // operating_point_idc
        const std::uint32_t level = fields.get(5);
        const std::uint32_t tier = level > 7 ? fields.get(1) : 0;
        if (i == 0) {
            header.seq_level_idx_0 = level;
            header.seq_tier_0 = tier;
        }
        if (delay_bits != 0 && fields.flag()) {
            fields.skip(2 * delay_bits + 1);
        }
        if (display_delays && fields.flag()) {
            fields.skip(4);
        }
    }
}

void skip_frame_size(Fields& fields, bool reduced) {
    const std::uint32_t width_bits = fields.get(4) + 1;
    const std::uint32_t height_bits = fields.get(4) + 1;
    fields.skip(width_bits + height_bits);
    if (!reduced && fields.flag()) {  // frame_id_numbers_present_flag
        fields.skip(4 + 3);
    }
}

void skip_tools(Fields& fields) {
    constexpr std::uint32_t kChosenPerFrame = 2;
    fields.skip(4);  // inter-intra, masked compound, warped motion, dual filter
    const bool order_hint = fields.flag();
    if (order_hint) {
        fields.skip(2);
    }
    const std::uint32_t screen_content = fields.flag() ? kChosenPerFrame : fields.get(1);
    if (screen_content > 0 && !fields.flag()) {
        fields.skip(1);  // seq_force_integer_mv
    }
    if (order_hint) {
        fields.skip(3);
    }
}

void read_subsampling(Fields& fields, Av1SequenceHeader& header) {
    fields.skip(1);  // color_range
    if (header.seq_profile == 0) {
        header.chroma_subsampling_x = 1;
        header.chroma_subsampling_y = 1;
    } else if (header.seq_profile != 1) {
        if (header.twelve_bit != 0) {
            header.chroma_subsampling_x = fields.get(1);
            header.chroma_subsampling_y = header.chroma_subsampling_x != 0 ? fields.get(1) : 0;
        } else {
            header.chroma_subsampling_x = 1;
        }
    }
    if (header.chroma_subsampling_x != 0 && header.chroma_subsampling_y != 0) {
        header.chroma_sample_position = fields.get(2);
    }
}

// color_config(), 5.5.2.
void read_colour(Fields& fields, Av1SequenceHeader& header) {
    header.high_bitdepth = fields.get(1);
    if (header.seq_profile == 2 && header.high_bitdepth != 0) {
        header.twelve_bit = fields.get(1);
    }
    if (header.seq_profile != 1) {
        header.monochrome = fields.get(1);
    }
    const bool described = fields.flag();
    header.color_primaries = described ? fields.get(8) : kUnspecified;
    header.transfer_characteristics = described ? fields.get(8) : kUnspecified;
    header.matrix_coefficients = described ? fields.get(8) : kUnspecified;
    constexpr std::uint32_t kBt709 = 1;
    constexpr std::uint32_t kSrgb = 13;
    constexpr std::uint32_t kIdentity = 0;
    if (header.monochrome != 0) {
        header.chroma_subsampling_x = 1;
        header.chroma_subsampling_y = 1;
    } else if (header.color_primaries != kBt709 || header.transfer_characteristics != kSrgb ||
               header.matrix_coefficients != kIdentity) {
        read_subsampling(fields, header);
    }
}

}  // namespace

Obu take_obu(ByteSpan& rest) {
    constexpr std::size_t kLongestHeader = 2 + 8;
    constexpr std::size_t kLongestLookedAt = std::size_t{1} << 28;  // bit positions have 32 bits
    const ByteSpan head = rest.first(std::min(rest.size(), kLongestHeader));
    std::uint32_t at = 1;
    Obu obu;
    obu.type = read_uint32(at, head, 4);
    const bool extension = read_uint32(at, head, 1) != 0;
    const bool has_size = read_uint32(at, head, 1) != 0;
    at += extension ? 9 : 1;
    const std::uint64_t told = has_size ? read_leb128(at, head) : rest.size();
    obu.payload = rest.subspan(std::min<std::size_t>(at / 8, rest.size()));
    obu.payload = obu.payload.first(std::min<std::uint64_t>(told, obu.payload.size()));
    rest = rest.subspan(static_cast<std::size_t>(obu.payload.data() - rest.data()) +
                        obu.payload.size());
    obu.payload = obu.payload.first(std::min(obu.payload.size(), kLongestLookedAt));
    return obu;
}

Av1SequenceHeader read_sequence_header(ByteSpan payload) {
    Fields fields(payload);
    Av1SequenceHeader header;
    header.seq_profile = fields.get(3);
    fields.skip(1);  // still_picture
    const bool reduced = fields.flag();
    if (reduced) {
        header.seq_level_idx_0 = fields.get(5);
    } else {
        read_operating_points(fields, header);
    }
    skip_frame_size(fields, reduced);
    fields.skip(3);  // 128x128 superblocks, filter intra, intra edge filter
    if (!reduced) {
        skip_tools(fields);
    }
    fields.skip(3);  // superres, cdef, restoration
    read_colour(fields, header);
    return header;
}

}  // namespace mediasplit
