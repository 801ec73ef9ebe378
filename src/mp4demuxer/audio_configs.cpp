// Configuration boxes of audio sample entries (ISO/IEC 14496-14 5.6, ETSI TS 102 366 F.6).
#include <array>

#include "src/ac4analyze_impl/ac4_dsi.h"
#include "src/audio/channel_words.h"
#include "src/mp4demuxer/box_reader.h"
#include "src/mp4demuxer/handlers.h"
#include "src/mp4demuxer/sample_entries.h"

namespace mediasplit {

namespace {

// Tags of descriptors, ISO/IEC 14496-1 7.2.2.1.
constexpr std::uint8_t kEsDescriptor = 3;
constexpr std::uint8_t kDecoderConfigDescriptor = 4;
constexpr std::uint8_t kDecoderSpecificInfo = 5;

// Bits of `chan_loc` in the channel word, bit 0 first.
constexpr std::array<std::uint32_t, 9> kLocationChannels = {
    1U << 10, 1U << 9, 1U << 8, 1U << 7, 1U << 6, 1U << 5, 1U << 4, 1U << 3, 1U << 1};

std::uint32_t read_descriptor_length(PayloadReader& in) {
    std::uint32_t length = 0;
    for (int i = 0; i < 5; ++i) {
        const std::uint8_t byte = in.u8();
        length = length << 7 | (byte & 0x7FU);
        if ((byte & 0x80) == 0) {
            break;
        }
    }
    return length;
}

std::uint32_t channels_of(const Ec3Substream& substream) {
    std::uint32_t word = acmod_to_channel_config(substream.acmod) | substream.lfeon;
    for (std::size_t bit = 0; bit < kLocationChannels.size(); ++bit) {
        if ((substream.chan_loc >> bit & 1) != 0) {
            word |= kLocationChannels[bit];
        }
    }
    return calculate_ec3_channel_count(word);
}

Ec3Substream read_ec3_substream(ByteReader& in, Ec3Config& config) {
    Ec3Substream substream;
    const std::uint32_t a = in.u8();
    const std::uint32_t b = in.u8();
    const std::uint32_t c = in.u8();
    substream.fscod = a >> 6;
    substream.bsid = a >> 1 & 31;
    substream.asvc = b >> 7;
    substream.bsmod = b >> 4 & 7;
    substream.acmod = b >> 1 & 7;
    substream.lfeon = b & 1;
    substream.num_dep_sub = c >> 1 & 15;
    if ((a & 1) != 0 || (c & 0x20) != 0) {
        config.reserved_nonzero = 1;
    }
    if (substream.num_dep_sub != 0) {
        substream.chan_loc = (c & 1) << 8 | in.u8();
    }
    return substream;
}

void read_ec3_config(ByteReader& in, Ec3Config& config) {
    const std::uint32_t word = in.u16();
    config.ec3_datarate = word >> 3;
    config.ec3_ind_sub_stream_count = (word & 7) + 1;
    for (std::uint32_t i = 0; i < config.ec3_ind_sub_stream_count; ++i) {
        config.substreams[i] = read_ec3_substream(in, config);
    }
    config.channel_count = channels_of(config.substreams[0]);
    if (!in.at_end()) {
        config.flag_ec3_extension_type_a = in.u8() & 1;
        if (config.flag_ec3_extension_type_a != 0) {
            config.complexity_index_type_a = in.u8();
        }
    }
    config.parse_error = in.position() > in.size() ? 1 : 0;
}

HandlerResult keep_payload(Mp4Demuxer& demuxer, InputFile& file, const BoxNode& node) {
    keep_dsi(*demuxer.current, read_config(file, node));
    return kHandled;
}

}  // namespace

HandlerResult parse_box_esds(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    Mp4Stream* stream = demuxer.current;
    PayloadReader in(file, node.size);
    in.skip(4);
    stream->stream_id = kStreamIdAac;
    while (in.left() != 0) {
        const std::uint8_t tag = in.u8();
        const std::uint32_t length = read_descriptor_length(in);
        switch (tag) {
            case kEsDescriptor:
                // The descriptors inside it are read next.
                in.skip(3);
                break;
            case kDecoderConfigDescriptor:
                stream->mp4a_object_type_indication = in.u8();
                in.skip(12);
                break;
            case kDecoderSpecificInfo:
                keep_dsi(*stream, in.rest(length));
                break;
            default:
                in.skip(length);
                break;
        }
    }
    return kHandled;
}

HandlerResult parse_box_dac3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    return keep_payload(demuxer, file, node);
}

HandlerResult parse_box_dmlp(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    return keep_payload(demuxer, file, node);
}

HandlerResult parse_box_dec3(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* /*tree*/) {
    static_cast<void>(keep_payload(demuxer, file, node));
    Mp4Stream& stream = *demuxer.current;
    stream.box_flags |= kBoxDec3;
    if (stream.ec3_config == nullptr) {
        stream.ec3_config = std::make_unique<Ec3Config>();
    }
    ByteReader in(stream.dsi);
    read_ec3_config(in, *stream.ec3_config);
    return kHandled;
}

HandlerResult parse_box_dac4(Mp4Demuxer& demuxer, InputFile& file, BoxNode& node, Ezxml* tree) {
    Mp4Stream* stream = demuxer.current;
    const std::vector<std::uint8_t> payload = read_config(file, node);
    stream->box_flags |= kBoxDac4;
    if (stream->ac4_config == nullptr) {
        stream->ac4_config = std::make_shared<DsiRecord>();
    }
    return ac4_dsi_parser(payload, *stream->ac4_config, tree);
}

}  // namespace mediasplit
