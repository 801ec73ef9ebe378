// Sample entries (ISO/IEC 14496-12 8.5.2, 12.1.3, 12.2.3).
#include "src/mp4demuxer/sample_entries.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <utility>

#include "src/ac4analyze_impl/ac4_dsi.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"

namespace mediasplit {

namespace {

constexpr std::int64_t kAudioEntrySize = 28;
constexpr std::int64_t kAudioVersion1Size = 16;
constexpr std::int64_t kAudioVersion2Size = 36;
constexpr std::int64_t kVideoEntrySize = 78;
constexpr std::int64_t kTableHeadSize = 8;

constexpr std::array kSampleEntries{
    SampleEntryKind{fourcc("mp4a"), kStreamIdAac},
    SampleEntryKind{fourcc("ac-3"), kStreamIdAc3},
    SampleEntryKind{fourcc("ec-3"), kStreamIdEc3},
    SampleEntryKind{fourcc("ac-4"), kStreamIdAc4},
    SampleEntryKind{fourcc("s263"), kStreamIdS263},
    SampleEntryKind{fourcc("avc1"), kStreamIdAvc1, 0, kBoxAvc1, false, kPxPxa1},
    SampleEntryKind{fourcc("avc3"), kStreamIdAvc3, 0, kBoxAvc3, false, kPxPxav},
    SampleEntryKind{fourcc("hvc1"), kStreamIdHvc1, 0, kBoxHvc1, false, kPxPxh1},
    SampleEntryKind{fourcc("hev1"), kStreamIdHev1, 0, kBoxHev1, false, kPxPxhe},
    SampleEntryKind{fourcc("av01"), kStreamIdAv01, 0, kBoxAv01},
    SampleEntryKind{fourcc("pxav"), kStreamIdAvc3, kPxPxav, 0, true},
    SampleEntryKind{fourcc("pxa1"), kStreamIdAvc1, kPxPxa1, 0, true},
    SampleEntryKind{fourcc("pavc"), kStreamIdAvc1, kPxPavc, kBoxPavc, true},
    SampleEntryKind{fourcc("pxhe"), kStreamIdHev1, kPxPxhe, kBoxPxhe, true},
    SampleEntryKind{fourcc("pxh1"), kStreamIdHvc1, kPxPxh1, kBoxPxh1, true},
    SampleEntryKind{fourcc("pxh8"), kStreamIdHvc1, kPxPxh8, kBoxPxh8, true},
    SampleEntryKind{fourcc("pav1"), kStreamIdAv01, kPxPav1, kBoxPav1, true},
};

// A box inside bytes in memory; type 0 when there is none.
struct MemoryBox {
    std::uint32_t type = 0;
    std::span<const std::uint8_t> payload;
};

// Takes the box at the front of `bytes` off.
MemoryBox take_box(std::span<const std::uint8_t>& bytes) {
    ByteReader in(bytes);
    const std::uint64_t size = in.u32();
    const std::uint32_t type = in.u32();
    if (size < 8 || size > bytes.size()) {
        bytes = {};
        return {};
    }
    const MemoryBox box{type, bytes.subspan(8, size - 8)};
    bytes = bytes.subspan(size);
    return box;
}

MemoryBox find_child(std::span<const std::uint8_t> bytes, std::uint32_t type) {
    while (!bytes.empty()) {
        const MemoryBox box = take_box(bytes);
        if (box.type == type) {
            return box;
        }
    }
    return {};
}

// The unprotected format of an `encv` entry, 0 when it tells none.
std::uint32_t protected_format(std::span<const std::uint8_t> entry) {
    if (entry.size() < static_cast<std::size_t>(kVideoEntrySize)) {
        return 0;
    }
    const MemoryBox sinf = find_child(entry.subspan(kVideoEntrySize), fourcc("sinf"));
    const MemoryBox frma = find_child(sinf.payload, fourcc("frma"));
    return frma.payload.size() < 4 ? 0 : ByteReader(frma.payload).u32();
}

// Whether two entries are a clear one and its encrypted twin.
bool are_twins(std::span<const std::uint8_t> entries) {
    std::uint32_t clear = 0;
    std::uint32_t encrypted = 0;
    for (int i = 0; i < 2; ++i) {
        const MemoryBox entry = take_box(entries);
        if (entry.type == fourcc("encv")) {
            encrypted = protected_format(entry.payload);
        } else {
            clear = entry.type;
        }
    }
    return encrypted != 0 && clear == encrypted;
}

// Reads a table of two entries ahead and goes back to its start.
bool has_twin_entries(InputFile& file, PayloadReader& in) {
    const std::vector<std::uint8_t> entries = in.rest(kMaxConfigSize);
    static_cast<void>(SeekBytes(-static_cast<std::int64_t>(entries.size()), file));
    return are_twins(entries);
}

void read_audio_version_1(PayloadReader& in, Mp4Stream& stream) {
    in.skip(8);
    const std::uint32_t bytes_per_frame = in.u32();
    in.skip(4);
    if (stream.audio_channel_count != 0) {
        stream.audio_sample_size = bytes_per_frame / stream.audio_channel_count * 8 & 0xFFFF;
    }
}

void read_audio_version_2(PayloadReader& in, Mp4Stream& stream) {
    in.skip(4);
    const double rate = std::bit_cast<double>(in.u64());
    stream.audio_sample_rate =
        rate >= 0 && rate < 4294967296.0 ? static_cast<std::uint32_t>(rate) : 0;
    stream.audio_channel_count = in.u32() & 0xFFFF;
    in.skip(4);
    stream.audio_sample_size = in.u32() & 0xFFFF;
    in.skip(12);
}

// Sets what the entry's type stands for and reads it as a video entry.
HandlerResult parse_video_entry(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    Mp4Stream* stream = demuxer.current;
    const SampleEntryKind* kind = find_sample_entry(node.type);
    if (kind != nullptr) {
        stream->stream_id = kind->stream_id;
        stream->box_flags |= kind->box_flag;
        if (kind->is_prisma) {
            stream->px_kind = kind->px_kind;
            stream->box_flags |= kBoxPrisma;
        }
    }
    return parse_box_video(demuxer, file, node, tree);
}

// Sets the codec and reads it as an audio entry. One too short for an audio entry is passed over.
Mp4Stream* begin_audio_entry(Mp4Demuxer& demuxer, const BoxNode& node, std::uint32_t stream_id) {
    if (node.size < kAudioEntrySize) {
        return nullptr;
    }
    demuxer.current->stream_id = stream_id;
    return demuxer.current;
}

// The next zero-ended text; at the end of the bytes the rest.
std::string_view take_text(std::string_view& bytes) {
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    const std::string_view text = bytes.substr(0, end);
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
    return text;
}

}  // namespace

const SampleEntryKind* find_sample_entry(std::uint32_t type) {
    const auto row =
        std::find_if(kSampleEntries.begin(), kSampleEntries.end(),
                     [type](const SampleEntryKind& kind) { return kind.type == type; });
    return row == kSampleEntries.end() ? nullptr : &*row;
}

std::uint32_t plain_px_of(std::uint32_t stream_id) {
    const auto row = std::find_if(kSampleEntries.begin(), kSampleEntries.end(),
                                  [stream_id](const SampleEntryKind& kind) {
                                      return kind.stream_id == stream_id && kind.plain_px != 0;
                                  });
    return row == kSampleEntries.end() ? 0 : row->plain_px;
}

std::vector<std::uint8_t> read_config(InputFile& file, const BoxNode& node) {
    return PayloadReader(file, node.size).rest(kMaxConfigSize);
}

void keep_dsi(Mp4Stream& stream, std::vector<std::uint8_t> payload) {
    stream.dsi = std::move(payload);
    stream.dsi_size = static_cast<std::uint32_t>(stream.dsi.size());
}

HandlerResult parse_box_stsd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    PayloadReader in(file, node.size);
    in.skip(4);
    const std::uint32_t count = in.u32();
    if (count != 1 && (count != 2 || !has_twin_entries(file, in))) {
        return kRefused;
    }
    node.size -= kTableHeadSize;
    return parse_box(demuxer, file, node, tree);
}

HandlerResult parse_box_audio(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    Mp4Stream* stream = demuxer.current;
    if (node.size < kAudioEntrySize) {
        return kHandled;
    }
    PayloadReader in(file, node.size);
    std::uint32_t reserved = in.u32();
    reserved |= in.u16();
    in.skip(2);
    const std::uint16_t version = in.u16();
    reserved |= version;
    reserved |= in.u16();
    reserved |= in.u32();
    stream->audio_channel_count = in.u16();
    stream->audio_sample_size = in.u16();
    reserved |= in.u16();
    reserved |= in.u16();
    stream->audio_sample_rate = in.u16();
    reserved |= in.u16();
    stream->audio_reserved = reserved;
    node.size -= kAudioEntrySize;
    if (version == 1) {
        read_audio_version_1(in, *stream);
        node.size -= kAudioVersion1Size;
    } else if (version == 2) {
        read_audio_version_2(in, *stream);
        node.size -= kAudioVersion2Size;
    }
    return parse_box(demuxer, file, node, tree);
}

HandlerResult parse_box_enca(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_box_audio(demuxer, file, node, tree);
}

HandlerResult parse_box_ac3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    begin_audio_entry(demuxer, node, kStreamIdAc3);
    return parse_box_audio(demuxer, file, node, tree);
}

HandlerResult parse_box_mlpa(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    begin_audio_entry(demuxer, node, kStreamIdMlpa);
    return parse_box_audio(demuxer, file, node, tree);
}

HandlerResult parse_box_ec3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    if (Mp4Stream* stream = begin_audio_entry(demuxer, node, kStreamIdEc3)) {
        stream->ec3_config = std::make_unique<Ec3Config>();
    }
    return parse_box_audio(demuxer, file, node, tree);
}

HandlerResult parse_box_ac4(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    if (Mp4Stream* stream = begin_audio_entry(demuxer, node, kStreamIdAc4)) {
        ++stream->ac4_entry_count;
        stream->ac4_config = std::make_shared<DsiRecord>();
    }
    return parse_box_audio(demuxer, file, node, tree);
}

HandlerResult parse_box_wave(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_box(demuxer, file, node, tree);
}

HandlerResult parse_box_video(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    PayloadReader in(file, node.size);
    in.skip(6 + 2 + 4 + 12);
    demuxer.current->width = in.u16();
    demuxer.current->height = in.u16();
    in.skip(14 + 32 + 2 + 2);
    node.size -= kVideoEntrySize;
    return parse_box(demuxer, file, node, tree);
}

HandlerResult parse_box_encv(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_box_video(demuxer, file, node, tree);
}

HandlerResult parse_box_s263(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_avc1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_avc3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_hvc1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_hev1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_av01(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_pxav(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_pxa1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_pavc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_pxhe(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_pxh1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_pxh8(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_pav1(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    return parse_video_entry(demuxer, file, node, tree);
}

HandlerResult parse_box_tx3g(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    constexpr std::uint64_t kKept = 38;
    PayloadReader in(file, node.size);
    demuxer.current->stream_id = kStreamIdTx3g;
    keep_dsi(*demuxer.current, in.rest(kKept));
    return kHandled;
}

HandlerResult parse_box_metx(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    constexpr std::string_view kSchema =
        "http://" MEDIASPLIT_TAG_AUTHORITY "/ns/mobile Orvel-Mobile-1.0.xsd";
    PayloadReader in(file, node.size);
    in.skip(7);
    const std::vector<std::uint8_t> bytes = in.rest(kMaxConfigSize);
    const std::string block(bytes.begin(), bytes.end());
    std::string_view left = block;
    take_text(left);  // content encoding
    take_text(left);  // namespace
    demuxer.current->stream_id = take_text(left) == kSchema ? kStreamIdMetadata : 0;
    return kHandled;
}

}  // namespace mediasplit
