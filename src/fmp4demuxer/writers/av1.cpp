#include <algorithm>
#include <array>

#include "src/fmp4demuxer/writers/av1_headers.h"
#include "src/fmp4demuxer/writers/sample_writers.h"
#include "src/log/logging.h"
#include "src/video/enhancement_metadata.h"
#include "src/video/leb128.h"

namespace mediasplit {
namespace {

// metadata_type values that are looked at (AV1 bitstream specification 6.7.1).
constexpr std::uint64_t kMetadataLightLevel = 1;
constexpr std::uint64_t kMetadataMastering = 2;
constexpr std::uint64_t kMetadataT35 = 4;

// A value of a box against the one that the stream gives.
struct Comparison {
    const char* name;
    std::uint32_t box;
    std::uint32_t stream;
};

Status check_sequence_header(Loglist* loglist, const Mp4Stream& stream,
                             const Av1SequenceHeader& header) {
    Status status = check(stream.colour_type != 0, loglist, 4222, {});
    if (stream.colour_type != 0) {
        const std::array<Comparison, 3> colours{{
            {"colour_primaries", stream.colour_primaries, header.color_primaries},
            {"transfer_characteristics", stream.transfer_characteristics,
             header.transfer_characteristics},
            {"matrix_coefficients", stream.matrix_coefficients, header.matrix_coefficients},
        }};
        for (const Comparison& row : colours) {
            status |=
                check(row.box == row.stream, loglist, 4225, {}, row.name, row.box, row.stream);
        }
    }
    const Av1Config& config = *stream.av1_config;
    const std::array<Comparison, 8> fields{{
        {"seq_profile", config.seq_profile, header.seq_profile},
        {"seq_level_idx_0", config.seq_level_idx_0, header.seq_level_idx_0},
        {"seq_tier_0", config.seq_tier_0, header.seq_tier_0},
        {"high_bitdepth", config.high_bitdepth, header.high_bitdepth},
        {"monochrome", config.monochrome, header.monochrome},
        {"chroma_subsampling_x", config.chroma_subsampling_x, header.chroma_subsampling_x},
        {"chroma_subsampling_y", config.chroma_subsampling_y, header.chroma_subsampling_y},
        {"chroma_sample_position", config.chroma_sample_position, header.chroma_sample_position},
    }};
    for (const Comparison& row : fields) {
        status |= check(row.box == row.stream, loglist, 4218, {}, row.name, row.name, row.box,
                        row.stream);
    }
    return status;
}

// A value of a box against the next `bits` of a metadata unit.
struct Field {
    const char* name;
    std::uint32_t box;
    std::uint32_t bits;
};

// `compare` takes a row and the value that the unit gives.
template <std::size_t kCount, typename Compare>
Status check_fields(const std::array<Field, kCount>& fields, ByteSpan payload, std::uint32_t at,
                    Compare compare) {
    Status status = Status::kOk;
    for (const Field& row : fields) {
        status |= compare(row, read_uint32(at, payload, row.bits));
    }
    return status;
}

Status check_light_level(Loglist* loglist, const Mp4Stream& stream, ByteSpan payload,
                         std::uint32_t at) {
    const bool has_box = stream.max_content_light_level != 0;
    const Status status = check(has_box, loglist, 4221, {});
    if (!has_box) {
        return status;
    }
    const std::array<Field, 2> fields{{
        {"max_content_light_level", stream.max_content_light_level, 16},
        {"max_pic_average_light_level", stream.max_pic_average_light_level, 16},
    }};
    return check_fields(fields, payload, at, [&](const Field& row, std::uint32_t value) {
        return check(row.box == value, loglist, 4224, {}, row.name, row.box, value);
    });
}

// Deliberate: the box's colours (green, blue, red) are held against the unit's (red, green, blue)
// place by place.
Status check_mastering(Loglist* loglist, const Mp4Stream& stream, ByteSpan payload,
                       std::uint32_t at) {
    const bool has_box = stream.display_primaries_gx != 0;
    const Status status = check(has_box, loglist, 4220, {});
    if (!has_box) {
        return status;
    }
    const std::array<Field, 10> fields{{
        {"display_primaries_gx", stream.display_primaries_gx, 16},
        {"display_primaries_gy", stream.display_primaries_gy, 16},
        {"display_primaries_bx", stream.display_primaries_bx, 16},
        {"display_primaries_by", stream.display_primaries_by, 16},
        {"display_primaries_rx", stream.display_primaries_rx, 16},
        {"display_primaries_ry", stream.display_primaries_ry, 16},
        {"white_point_x", stream.white_point_x, 16},
        {"white_point_y", stream.white_point_y, 16},
        {"max_display_mastering_luminance", stream.max_display_mastering_luminance, 32},
        {"min_display_mastering_luminance", stream.min_display_mastering_luminance, 32},
    }};
    return check_fields(fields, payload, at, [&](const Field& row, std::uint32_t value) {
        return check(row.box == value, loglist, 4223, {}, row.name, row.box, value);
    });
}

// An ITU-T T.35 unit that carries enhancement metadata.
Status check_enhancement_metadata(Loglist* loglist, Mp4Stream& stream, ByteSpan payload,
                                  std::uint32_t at) {
    constexpr std::uint32_t kExtendedCountry = 255;
    if (read_uint32(at, payload, 8) == kExtendedCountry) {
        at += 8;
    }
    at += 75;
    do {
        at += 8;
    } while (read_uint32(at, payload, 1) != 0);
    RpuNal rpu;
    static_cast<void>(parse_rpu_data_header(&rpu, payload, at, loglist));
    const std::uint32_t compression = rpu.rpu_compression;
    switch (stream.px_config->md_compression) {
        case 0:
            return check(compression == 0, loglist, 4187, {});
        case 1:
            stream.rpu_compression_seen = 1;
            stream.rpu_compression_max = std::max(stream.rpu_compression_max, compression);
            return Status::kOk;
        case 3:
            return check(compression != 1, loglist, 4187, {});
        default:
            return Status::kOk;
    }
}

Status check_metadata(Loglist* loglist, Mp4Stream& stream, ByteSpan payload) {
    std::uint32_t at = 0;
    const std::uint64_t type = read_leb128(at, payload);
    switch (type) {
        case kMetadataLightLevel:
            return check_light_level(loglist, stream, payload, at);
        case kMetadataMastering:
            return check_mastering(loglist, stream, payload, at);
        case kMetadataT35:
            return check_enhancement_metadata(loglist, stream, payload, at);
        default:
            return Status::kOk;
    }
}

bool is_enhancement_track(const Mp4Stream& stream) {
    return stream.av1_config != nullptr && stream.px_config != nullptr &&
           (stream.box_flags & kBoxPrisma) != 0;
}

}  // namespace

Status av1Sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    Mp4Stream& stream = *demuxer.streams[stream_index];
    // Deliberate: a plain AV1 track leaves an empty file.
    if (!is_enhancement_track(stream)) {
        return Status::kOk;
    }
    Loglist* loglist = demuxer.loglist;
    Status status = unspecifiedSample(demuxer, stream_index, sample);
    bool first = true;
    for (ByteSpan rest = sample; !rest.empty(); first = false) {
        const Obu obu = take_obu(rest);
        if (first) {
            status |=
                check(obu.type != kObuPadding && obu.type != kObuTileGroup, loglist, 4226, {});
        }
        if (obu.type == kObuSequenceHeader) {
            status |= check_sequence_header(loglist, stream, read_sequence_header(obu.payload));
        } else if (obu.type == kObuMetadata) {
            status |= check_metadata(loglist, stream, obu.payload);
        }
    }
    return status;
}

Status end_av1_stream(Mp4Demuxer& demuxer, std::uint32_t stream_index) {
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    if (stream.rpu_compression_seen == 0) {
        return Status::kOk;
    }
    return check(stream.rpu_compression_max == 1, demuxer.loglist, 4187, {});
}

}  // namespace mediasplit
