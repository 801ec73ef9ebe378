// Configuration boxes of video sample entries (ISO/IEC 14496-15, AV1-ISOBMFF) and what else such an
// entry holds.
#include <algorithm>
#include <new>
#include <string_view>

#include "src/log/logging.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"
#include "src/mp4demuxer/sample_entries.h"
#include "src/video/decoder_configs.h"
#include "src/video/leb128.h"

namespace mediasplit {

namespace {

constexpr const char* kSourceName = "../../../../mediacheck2/src/mp4demuxer";
constexpr int kSourceLine = 1288;

// The units of one configuration box, each with a 16-bit length.
class UnitReader {
public:
    UnitReader(ByteReader& in, const char* box, Loglist* loglist)
        : in_(&in), box_(box), loglist_(loglist) {}

    // Reads `count` units and keeps those that there is room for.
    template <typename Unit, typename Keep>
    void read(std::uint32_t count, const char* name, std::vector<Unit>& units, Keep keep) {
        for (std::uint32_t i = 0; i < count; ++i) {
            const bool has_room = units.size() < kMaxConfigUnits;
            if (!has_room && in_->at_end()) {
                return;
            }
            const std::uint64_t length = in_->u16();
            report_overrun(name, length);
            const std::span<const std::uint8_t> bytes = in_->take(length);
            if (has_room) {
                keep_unit(units, bytes, keep);
            }
        }
    }

private:
    void report_overrun(const char* name, std::uint64_t length) {
        static_cast<void>(check(in_->position() + length <= in_->size(), loglist_, 4072, {}, name,
                                box_, in_->position(), length, in_->size()));
    }

    template <typename Unit, typename Keep>
    void keep_unit(std::vector<Unit>& units, std::span<const std::uint8_t> bytes, Keep keep) {
        try {
            units.push_back(keep(std::vector<std::uint8_t>(bytes.begin(), bytes.end())));
        } catch (const std::bad_alloc&) {
            static_cast<void>(Logging_err_type_check(loglist_, 3002, {}, kSourceName, kSourceLine));
        }
    }

    ByteReader* in_;
    const char* box_;
    Loglist* loglist_;
};

template <typename Record>
using SetParser = Status (*)(const NalBuffer*, Record*, Loglist*);

// Makes a parameter set of a unit's bytes. What the parser returns tells of null arguments alone.
template <typename Record>
auto parse_with(SetParser<Record> parser, Loglist* loglist) {
    return [parser, loglist](std::vector<std::uint8_t>&& unit) {
        ParameterSet<Record> set;
        set.unit = std::move(unit);
        const NalBuffer nal = set.nal();
        static_cast<void>(parser(&nal, &set.record, loglist));
        return set;
    };
}

std::vector<std::uint8_t> as_it_is(std::vector<std::uint8_t>&& unit) {
    return std::move(unit);
}

// Parameter sets with start codes behind the four bytes "PIFF".
void read_piff_sets(std::span<const std::uint8_t> payload, AvcConfig& config, Loglist* loglist) {
    constexpr std::size_t kTag = 4;
    config.length_size_minus_one = 3;
    std::size_t at = kTag;
    const auto is_start_code = [&payload](std::size_t i) {
        return payload[i] == 0 && payload[i + 1] == 0 && payload[i + 2] == 0 && payload[i + 3] == 1;
    };
    while (at + 4 < payload.size() && !is_start_code(at)) {
        ++at;
    }
    const std::span<const std::uint8_t> sps = payload.subspan(kTag, at - kTag);
    const std::span<const std::uint8_t> pps = payload.subspan(std::min(at + 4, payload.size()));
    config.sps.push_back(
        parse_with(&parse_avc_sps_nal, loglist)(std::vector<std::uint8_t>(sps.begin(), sps.end())));
    config.pps.emplace_back(pps.begin(), pps.end());
}

void read_avc_record(std::span<const std::uint8_t> payload, AvcConfig& config, Loglist* loglist) {
    ByteReader in(payload);
    config.configuration_version = in.u8();
    config.profile_idc = in.u8();
    config.profile_compatibility = in.u8();
    config.level_idc = in.u8();
    config.length_size_minus_one = in.u8() & 3;
    UnitReader units(in, "avcC", loglist);
    const std::uint32_t sps_count = in.u8() & 31;
    units.read(sps_count, "SPS", config.sps, parse_with(&parse_avc_sps_nal, loglist));
    const std::uint32_t pps_count = in.u8();
    units.read(pps_count, "PPS", config.pps, as_it_is);
}

bool begins_with_piff(std::span<const std::uint8_t> payload) {
    constexpr std::string_view kPiff = "PIFF";
    return payload.size() >= kPiff.size() &&
           std::equal(kPiff.begin(), kPiff.end(), payload.begin(),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

void read_hevc_arrays(ByteReader& in, const char* box, HevcConfig& config, Loglist* loglist) {
    UnitReader units(in, box, loglist);
    for (std::uint32_t i = 0; i < config.num_arrays; ++i) {
        const std::uint8_t type = in.u8() & 0x3F;
        switch (type) {
            case 32:
                units.read(in.u16(), "VPS", config.vps, parse_with(&parse_hevc_vps_nal, loglist));
                break;
            case 33:
                units.read(in.u16(), "SPS", config.sps, parse_with(&parse_hevc_sps_nal, loglist));
                break;
            case 34:
                units.read(in.u16(), "PPS", config.pps, parse_with(&parse_hevc_pps_nal, loglist));
                break;
            case 39:
                units.read(in.u16(), "PREFIX_SEI", config.sei, as_it_is);
                break;
            default:
                // Deliberate: the units of another type aren't passed over, the next array is read
                // from the bytes behind this type.
                break;
        }
    }
}

void read_hevc_head(ByteReader& in, HevcConfig& config) {
    config.configuration_version = in.u8();
    const std::uint8_t profile = in.u8();
    config.general_profile_space = profile >> 6;
    config.general_tier_flag = profile >> 5 & 1;
    config.general_profile_idc = profile & 31;
    config.general_profile_compatibility_flags = in.u32();
    const std::uint32_t high = in.u32();
    const std::uint32_t low = in.u16();
    config.general_progressive_source_flag = high >> 31;
    config.general_interlaced_source_flag = high >> 30 & 1;
    config.general_non_packed_constraint_flag = high >> 29 & 1;
    config.general_frame_only_constraint_flag = high >> 28 & 1;
    config.general_reserved_zero_44bits_43_12 = high << 4 | low >> 12;
    config.general_reserved_zero_44bits_11_0 = low & 0xFFF;
    config.general_level_idc = in.u8();
    config.min_spatial_segmentation_idc = in.u16() & 0xFFF;
    config.parallelism_type = in.u8() & 3;
    config.chroma_format_idc = in.u8() & 3;
    config.bit_depth_luma_minus8 = in.u8() & 7;
    config.bit_depth_chroma_minus8 = in.u8() & 7;
    config.avg_frame_rate = in.u16();
    const std::uint8_t layers = in.u8();
    config.constant_frame_rate = layers >> 6;
    config.num_temporal_layers = layers >> 3 & 7;
    config.temporal_id_nested = layers >> 2 & 1;
    config.length_size_minus_one = layers & 3;
    config.num_arrays = in.u8();
}

void read_lhevc_head(ByteReader& in, HevcConfig& config) {
    config.configuration_version = in.u8();
    config.min_spatial_segmentation_idc = in.u16() & 0xFFF;
    config.parallelism_type = in.u8() & 3;
    const std::uint8_t layers = in.u8();
    config.num_temporal_layers = layers >> 3 & 7;
    config.temporal_id_nested = layers >> 2 & 1;
    config.length_size_minus_one = layers & 3;
    config.num_arrays = in.u8();
}

// Looks for the first metadata unit of the configuration.
void read_config_obus(std::uint32_t bit, ByteSpan payload, Av1Config& config) {
    // Deliberate: bytes are compared with bits, so that only a box of more than 32 bytes has units.
    while (payload.size() > bit) {
        const std::uint8_t forbidden = read_uint8(bit, payload, 1);
        const std::uint8_t type = read_uint8(bit, payload, 4);
        const std::uint8_t extension = read_uint8(bit, payload, 1);
        const std::uint8_t has_size = read_uint8(bit, payload, 1);
        bit += 1;
        const std::uint64_t size = read_leb128(bit, payload);
        if (type == 5) {
            config.obu_forbidden_bit = forbidden;
            config.obu_type = type;
            config.obu_extension_flag = extension;
            config.obu_has_size_field = has_size;
            config.obu_size = static_cast<std::uint32_t>(size);
            config.metadata_type = static_cast<std::uint32_t>(read_leb128(bit, payload));
            config.itu_t_t35_country_code = read_uint8(bit, payload, 8);
            config.itu_t_t35_terminal_provider_code = read_uint16(bit, payload, 16);
            config.itu_t_t35_terminal_provider_oriented_code = read_uint32(bit, payload, 32);
            return;
        }
        if (size > payload.size()) {
            return;
        }
        bit += static_cast<std::uint32_t>(size) * 8;
    }
}

std::uint32_t prsm_config_flag(std::uint32_t type) {
    switch (type) {
        case fourcc("pxcC"):
            return kBoxPxcC;
        case fourcc("pxvC"):
            return kBoxPxvC;
        default:
            return kBoxPxwC;
    }
}

HandlerResult set_flag(Mp4Demuxer& demuxer, std::uint32_t flag) {
    demuxer.current->box_flags |= flag;
    return kHandled;
}

}  // namespace

HandlerResult parse_box_avcC(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    keep_dsi(*stream, read_config(file, node));
    stream->box_flags |= kBoxAvcC;
    stream->avc_config = std::make_unique<AvcConfig>();
    if (begins_with_piff(stream->dsi)) {
        read_piff_sets(stream->dsi, *stream->avc_config, demuxer.loglist);
    } else if (stream->dsi.size() >= 4) {
        read_avc_record(stream->dsi, *stream->avc_config, demuxer.loglist);
    }
    return kHandled;
}

HandlerResult parse_box_avcE(Mp4Demuxer& demuxer, InputFile& /*file*/, BoxNode& /*node*/,
                             Ezxml* /*tree*/) {
    return set_flag(demuxer, kBoxAvcE);
}

HandlerResult parse_box_hvcE(Mp4Demuxer& demuxer, InputFile& /*file*/, BoxNode& /*node*/,
                             Ezxml* /*tree*/) {
    return set_flag(demuxer, kBoxHvcE);
}

HandlerResult parse_box_hvcC(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    keep_dsi(*stream, read_config(file, node));
    stream->box_flags |= kBoxHvcC;
    stream->hevc_config = std::make_unique<HevcConfig>();
    ByteReader in(stream->dsi);
    read_hevc_head(in, *stream->hevc_config);
    read_hevc_arrays(in, "hvcC", *stream->hevc_config, demuxer.loglist);
    return kHandled;
}

HandlerResult parse_box_lhvC(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    const std::vector<std::uint8_t> payload = read_config(file, node);
    stream->box_flags |= kBoxLhvC;
    stream->lhevc_config = std::make_unique<HevcConfig>();
    ByteReader in(payload);
    read_lhevc_head(in, *stream->lhevc_config);
    read_hevc_arrays(in, "lhvC", *stream->lhevc_config, demuxer.loglist);
    return kHandled;
}

HandlerResult parse_box_av1C(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    keep_dsi(*stream, read_config(file, node));
    stream->box_flags |= kBoxAv1C;
    stream->av1_config = std::make_unique<Av1Config>();
    Av1Config& config = *stream->av1_config;
    std::uint32_t bit = 0;
    const auto field = [&bit, stream](std::uint32_t width) {
        return static_cast<std::uint8_t>(read_uint32(bit, stream->dsi, width));
    };
    config.marker = field(1);
    config.version = field(7);
    config.seq_profile = field(3);
    config.seq_level_idx_0 = field(5);
    config.seq_tier_0 = field(1);
    config.high_bitdepth = field(1);
    config.twelve_bit = field(1);
    config.monochrome = field(1);
    config.chroma_subsampling_x = field(1);
    config.chroma_subsampling_y = field(1);
    config.chroma_sample_position = field(2);
    bit += 3;
    config.initial_presentation_delay_present = field(1);
    const std::uint8_t delay = field(4);
    if (config.initial_presentation_delay_present != 0) {
        config.initial_presentation_delay_minus_one = delay;
    }
    read_config_obus(bit, stream->dsi, config);
    return kHandled;
}

HandlerResult parse_box_prsm_config(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node,
                                    Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    stream->box_flags |= kBoxPrisma | prsm_config_flag(node.type);
    stream->px_config = std::make_unique<PxConfig>();
    PxConfig& config = *stream->px_config;
    config.version_major = in.u8();
    config.version_minor = in.u8();
    const std::uint32_t word = in.u24();
    config.profile = word >> 17;
    config.level = word >> 11 & 63;
    config.rpu_flag = word >> 10 & 1;
    config.el_flag = word >> 9 & 1;
    config.bl_flag = word >> 8 & 1;
    config.bl_compatible_id = word >> 4 & 15;
    config.md_compression = word >> 2 & 3;
    if (stream->px_kind == 0) {
        stream->px_kind = plain_px_of(stream->stream_id);
    }
    return kHandled;
}

HandlerResult parse_box_d263(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    keep_dsi(*demuxer.current, read_config(file, node));
    return kHandled;
}

HandlerResult parse_box_mdcv(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    stream->display_primaries_gx = in.u16();
    stream->display_primaries_gy = in.u16();
    stream->display_primaries_bx = in.u16();
    stream->display_primaries_by = in.u16();
    stream->display_primaries_rx = in.u16();
    stream->display_primaries_ry = in.u16();
    stream->white_point_x = in.u16();
    stream->white_point_y = in.u16();
    stream->max_display_mastering_luminance = in.u32();
    stream->min_display_mastering_luminance = in.u32();
    return kHandled;
}

HandlerResult parse_box_clli(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    demuxer.current->max_content_light_level = in.u16();
    demuxer.current->max_pic_average_light_level = in.u16();
    return kHandled;
}

HandlerResult parse_box_colr(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    stream->marks |= kMarkColr;
    stream->colour_type = in.u32();
    if (stream->colour_type == fourcc("nclx")) {
        stream->colour_primaries = in.u16();
        stream->transfer_characteristics = in.u16();
        stream->matrix_coefficients = in.u16();
        stream->full_range_flag = in.u8() >> 7;
    }
    return kHandled;
}

}  // namespace mediasplit
