// Boxes of common encryption (ISO/IEC 14496-12 8.12, ISO/IEC 23001-7).
#include <algorithm>
#include <array>

#include "src/log/findings.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"
#include "src/mp4demuxer/sample_entries.h"

namespace mediasplit {

namespace {

constexpr std::uint32_t kMaxSencRows = 65535;
constexpr std::uint32_t kHasSubsamples = 0x2;
constexpr std::uint64_t kSubsampleSize = 6;

// Reads one row; false when the box holds no more of them.
bool read_senc_row(PayloadReader& in, Mp4Stream& stream, bool has_subsamples) {
    SencEntry entry;
    entry.iv_size = stream.default_Per_Sample_IV_Size;
    entry.iv_at = stream.senc_ivs.size();
    entry.subsamples_at = stream.senc_subsample_pool.size();
    const std::uint64_t head = entry.iv_size + (has_subsamples ? 2U : 0U);
    if (in.left() < head) {
        return false;
    }
    stream.senc_ivs.resize(stream.senc_ivs.size() + entry.iv_size);
    in.fill(std::span(stream.senc_ivs).subspan(entry.iv_at));
    if (has_subsamples) {
        entry.subsample_count = static_cast<std::uint16_t>(
            std::min<std::uint64_t>(in.u16(), in.left() / kSubsampleSize));
        for (std::uint16_t i = 0; i < entry.subsample_count; ++i) {
            Subsample subsample;
            subsample.clear_bytes = in.u16();
            subsample.protected_bytes = in.u32();
            stream.senc_subsample_pool.push_back(subsample);
        }
    }
    stream.senc.push_back(entry);
    return true;
}

}  // namespace

HandlerResult parse_box_sinf(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    if (demuxer.current != nullptr) {
        demuxer.current->is_encrypted = 1;
    }
    return parse_box(demuxer, file, node, tree);
}

HandlerResult parse_box_frma(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    const SampleEntryKind* kind = find_sample_entry(in.u32());
    if (kind == nullptr) {
        return kHandled;
    }
    stream->stream_id = kind->stream_id;
    if (kind->is_prisma) {
        stream->px_kind = kind->px_kind;
        stream->box_flags |= kind->box_flag;
    } else if (kind->plain_px != 0) {
        stream->box_flags |= kind->box_flag;
        if ((stream->box_flags & kBoxPrisma) != 0) {
            stream->px_kind = kind->plain_px;
        }
    }
    if (kind->stream_id == kStreamIdAc4) {
        ++stream->ac4_entry_count;
    }
    return kHandled;
}

HandlerResult parse_box_schm(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    in.skip(4);
    for (char& letter : stream->scheme_type) {
        letter = static_cast<char>(in.u8());
    }
    stream->scheme_version = in.u32();
    return kHandled;
}

HandlerResult parse_box_tenc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    const std::uint8_t version = in.u8();
    in.skip(3 + 1);
    const std::uint8_t pattern = in.u8();
    if (version > 0) {
        stream->crypt_byte_block = pattern >> 4;
        stream->skip_byte_block = pattern & 15;
    }
    stream->default_isProtected = in.u8();
    stream->default_Per_Sample_IV_Size = in.u8();
    in.fill(stream->default_KID);
    if (stream->default_isProtected == 1) {
        stream->default_constant_IV_size = in.u8();
        stream->default_constant_IV.assign(stream->default_constant_IV_size, 0);
        in.fill(stream->default_constant_IV);
    }
    return kHandled;
}

HandlerResult parse_box_pssh(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    PayloadReader in(file, node.size);
    const std::uint8_t version = in.u8();
    in.skip(3);
    std::array<std::uint8_t, 16> system_id{};
    in.fill(system_id);
    for (const auto& stream : demuxer.streams) {
        stream->SystemID = system_id;
    }
    if (version != 0) {
        const std::int64_t key_ids = in.u32();
        if (node.size - 3 <= key_ids * 16) {
            return kRefused;
        }
    }
    return kHandled;
}

HandlerResult parse_box_sgpd(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    in.skip(4);
    stream->sgpd_grouping_type = in.u32();
    in.skip(4);
    stream->sgpd_entry_count = in.u32();
    if (in.u32() == fourcc("av1M")) {
        const std::uint32_t word = in.u32();
        stream->sgpd_metadata_type = word >> 24;
        stream->sgpd_metadata_parameters = word & 0xFFFFFF;
        stream->box_flags |= kBoxSgpdAv1M;
    }
    stream->box_flags |= kBoxSgpd;
    return kHandled;
}

HandlerResult parse_box_senc(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    const bool has_subsamples = (in.u32() & kHasSubsamples) != 0;
    const std::uint32_t count = in.u32();
    if (count > kMaxSencRows) {
        note_remark(
            "The encryption data of a fragment's samples was dropped: it has more than 65,535 "
            "rows.");
        return kRefused;
    }
    SencBlock block;
    block.first_row = stream->senc_count;
    block.row_count = count;
    block.first_entry = stream->senc.size();
    stream->senc_count += count;
    if (has_subsamples || stream->default_Per_Sample_IV_Size != 0) {
        while (block.entry_count < count && read_senc_row(in, *stream, has_subsamples)) {
            ++block.entry_count;
        }
    }
    if (count != 0) {
        stream->senc_blocks.push_back(block);
    }
    return kHandled;
}

}  // namespace mediasplit
