// Boxes that tell about a presentation or a track as a whole.
#include <array>
#include <string_view>

#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"

namespace mediasplit {

namespace {

constexpr std::uint64_t kNoMediaTime = ~std::uint64_t{0};
// A `sidx` of more references is refused.
constexpr std::uint32_t kMaxIndexBytes = 65535;

struct Edit {
    std::uint64_t segment_duration = 0;
    std::uint64_t media_time = 0;
};

Edit read_edit(PayloadReader& in, std::uint8_t version) {
    Edit edit;
    if (version == 1) {
        edit.segment_duration = in.u64();
        edit.media_time = in.u64();
    } else {
        edit.segment_duration = in.u32();
        const std::uint32_t time = in.u32();
        edit.media_time = time == 0xFFFFFFFFU ? kNoMediaTime : time;
    }
    in.skip(4);
    return edit;
}

// ISO 639-2/T packed in three times five bits.
std::array<char, 4> language_text(std::uint16_t word) {
    if (word == 0) {
        return {'u', 'n', 'd', 0};
    }
    const auto letter = [word](int shift) {
        return static_cast<char>((word >> shift & 31) + 0x60);
    };
    return {letter(10), letter(5), letter(0), 0};
}

std::uint32_t stream_type_of(std::uint32_t handler) {
    switch (handler) {
        case fourcc("vide"):
            return kStreamVideo;
        case fourcc("soun"):
            return kStreamAudio;
        case fourcc("text"):
        case fourcc("sbtl"):
            return kStreamText;
        case fourcc("meta"):
            return kStreamMeta;
        case fourcc("hint"):
            return kStreamHint;
        default:
            return 0;
    }
}

HandlerResult set_mark(Mp4Demuxer& demuxer, std::uint32_t mark) {
    demuxer.current->marks |= mark;
    return kHandled;
}

}  // namespace

HandlerResult parse_box_mvhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    const std::uint8_t version = in.u8();
    in.skip(3);
    in.skip(version == 1 ? 16 : 8);
    demuxer.timescale = in.u32();
    return kHandled;
}

HandlerResult parse_box_tkhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    const std::uint8_t version = in.u8();
    if (version > 1) {
        return kRefused;
    }
    in.skip(3);
    in.skip(version == 1 ? 16 : 8);
    demuxer.current->track_id = in.u32();
    return kHandled;
}

HandlerResult parse_box_mdhd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    const std::uint8_t version = in.u8();
    if (version > 1) {
        return kRefused;
    }
    in.skip(3);
    in.skip(version == 1 ? 16 : 8);
    stream->time_scale = in.u32();
    in.skip(version == 1 ? 4 : 0);
    stream->duration = in.u32();
    stream->lang = language_text(in.u16());
    if (stream->elst_segment_duration != 0 && demuxer.timescale != 0) {
        // Deliberate: whole units of the movie's time scale first, as the division comes first.
        stream->elst_offset = static_cast<std::int64_t>(stream->elst_segment_duration /
                                                        demuxer.timescale * stream->time_scale);
    }
    return kHandled;
}

HandlerResult parse_box_elst(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    in.skip(8);
    const std::uint8_t version = in.u8();
    in.skip(3);
    const std::uint32_t count = in.u32();
    if (version > 1 || count == 0 || count > 2) {
        return kRefused;
    }
    const Edit first = read_edit(in, version);
    if (count == 1) {
        // Deliberate: the low 32 bits alone, negated as a 32-bit value.
        stream->elst_offset =
            static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(first.media_time));
        return kHandled;
    }
    const Edit second = read_edit(in, version);
    if (first.media_time != kNoMediaTime || second.media_time != 0) {
        return kRefused;
    }
    stream->elst_segment_duration = first.segment_duration;
    return kHandled;
}

HandlerResult parse_box_vmhd(Mp4Demuxer& demuxer, InputFile& /*file*/, BoxNode& /*node*/,
                             Ezxml* /*tree*/) {
    return set_mark(demuxer, kMarkVmhd);
}

HandlerResult parse_box_smhd(Mp4Demuxer& demuxer, InputFile& /*file*/, BoxNode& /*node*/,
                             Ezxml* /*tree*/) {
    return set_mark(demuxer, kMarkSmhd);
}

HandlerResult parse_box_hdlr(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    in.skip(8);
    demuxer.current->stream_type = stream_type_of(in.u32());
    return kHandled;
}

HandlerResult parse_box_sidx(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    const std::uint8_t version = in.u8();
    in.skip(3 + 8);
    if (version != 0) {
        in.skip(8);
        demuxer.sidx_first_offset = static_cast<std::int64_t>(in.u64());
    } else {
        in.skip(4);
        demuxer.sidx_first_offset = in.u32();
    }
    in.skip(2);
    const std::uint16_t count = in.u16();
    if (count * 4U > kMaxIndexBytes) {
        return kRefused;
    }
    demuxer.sidx_count = count;
    demuxer.sidx_sizes.clear();
    for (std::uint16_t i = 0; i < count && in.left() != 0; ++i) {
        demuxer.sidx_sizes.push_back(in.u32() & 0x7FFFFFFFU);
        in.skip(8);
    }
    return kHandled;
}

HandlerResult parse_box_vdep(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    demuxer.current->depends_on_track = in.u32();
    demuxer.current->marks |= kMarkVdep;
    return kHandled;
}

HandlerResult parse_box_uuid(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    constexpr std::string_view kVendorMetadata = "ORVL-METADATA-00";
    if (node.size < 16) {
        return kRefused;
    }
    const auto start = static_cast<std::int64_t>(CurrentOffset(file));
    PayloadReader in(file, node.size);
    std::array<std::uint8_t, 16> id{};
    in.fill(id);
    if (std::string(id.begin(), id.end()) == kVendorMetadata) {
        demuxer.uuid_offset = start - 8;
        demuxer.uuid_size = node.size - 16;
    }
    return kHandled;
}

// Item lists stand below `meta`, which is passed over, and nobody receives their items.
HandlerResult parse_box_ilst(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_box_skip(demuxer, file, node, tree);
}

}  // namespace mediasplit
