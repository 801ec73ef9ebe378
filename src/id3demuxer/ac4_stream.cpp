// AC-4 elementary streams, sync frame by sync frame.
#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>

#include "src/ac4analyze_impl/dsi_values.h"
#include "src/ac4analyze_impl/es_parser.h"
#include "src/audio/hls_channels.h"
#include "src/id3demuxer/es_streams.h"
#include "src/id3demuxer/frame_buffer.h"
#include "src/log/logging.h"
#include "src/video/codec_text.h"

namespace mediasplit {

namespace {

constexpr std::uint8_t kSyncFirst = 0xAC;
constexpr std::uint8_t kSyncPlain = 0x40;
constexpr std::uint8_t kSyncWithCrc = 0x41;
constexpr std::uint32_t kLongSize = 0xFFFF;
constexpr std::uint64_t kMaxWritten = 0x200000;

// Channel mode codes whose channels hang on further flags.
constexpr std::array<std::int32_t, 4> kFlaggedModes = {504, 506, 1016, 1018};

struct Ac4Stream {
    InputFile* input = nullptr;
    OutputFile* output = nullptr;
    ManifestContext* context = nullptr;
    Loglist* loglist = nullptr;
    std::unique_ptr<Ac4EsParser> parser{};
    std::unique_ptr<AnalysisRecord> analysis{};
    FrameBuffer buffer{};
    bool is_first_frame = true;
    Status status = Status::kOk;
};

// A sync frame without its check word. The payload holds until the next one is read.
struct SyncFrame {
    std::array<std::uint8_t, 7> header{};
    std::uint64_t header_size = 0;
    ByteSpan payload{};
};

// What is asked of a frame; all zero for one that can't be analysed.
struct FrameFacts {
    bool is_iframe = false;
    std::int32_t bitstream_version = 0;
    std::int32_t presentation_version = 0;
    std::int32_t mdcompat = 0;
    bool is_channel_coded = false;
    std::int32_t channel_mode = 0;
    std::uint32_t layout_count = 0;
    std::int32_t top_pairs = 0;
};

struct ChannelFacts {
    std::optional<std::string> text{};  // as CHANNELS should have it; none if there is no rule
    std::uint32_t count = 0;
    bool is_immersive = false;
};

bool read_header_bytes(SyncFrame& frame, std::uint64_t count, InputFile& input) {
    const std::uint64_t got = ReadBytes(frame.header.data() + frame.header_size, count, input);
    frame.header_size += got;
    return got == count;
}

enum class ReadResult : std::uint8_t { kFrame, kEnd, kLostSync };

ReadResult read_frame(SyncFrame& frame, Ac4Stream& stream) {
    InputFile& input = *stream.input;
    frame.header_size = 0;
    if (!read_header_bytes(frame, 2, input)) {
        return frame.header_size == 0 ? ReadResult::kEnd : ReadResult::kLostSync;
    }
    const std::array<std::uint8_t, 7>& header = frame.header;
    if (header[0] != kSyncFirst || (header[1] != kSyncPlain && header[1] != kSyncWithCrc) ||
        !read_header_bytes(frame, 2, input)) {
        return ReadResult::kLostSync;
    }
    std::uint64_t size = header[2] << 8U | header[3];
    if (size == kLongSize) {
        if (!read_header_bytes(frame, 3, input)) {
            return ReadResult::kLostSync;
        }
        size = header[4] << 16U | header[5] << 8U | header[6];
    }
    frame.payload = read_view(size, input);
    if (frame.payload.size() != size) {
        stream.buffer.clear();
        if (stream.buffer.append_from(input, size) != size) {
            return ReadResult::kLostSync;
        }
        frame.payload = stream.buffer.bytes();
    }
    return ReadResult::kFrame;
}

FrameFacts analyse(ByteSpan payload, Ac4Stream& stream) {
    if (stream.parser == nullptr) {
        stream.parser = ac4_es_parser_new(stream.loglist);
    }
    const bool is_good = stream.parser != nullptr &&
                         ac4_es_parser(*stream.parser, payload, stream.analysis) == kAnalyzeOk;
    stream.status |= check(is_good, stream.loglist, 4491, {});
    FrameFacts facts;
    if (!is_good) {
        return facts;
    }
    const AnalysisRecord* analysis = stream.analysis.get();
    facts.is_iframe = ac4_get_bitstream_b_iframe_global(analysis);
    facts.bitstream_version = ac4_get_bitstream_version(analysis);
    facts.presentation_version = ac4_get_presentation_version(analysis);
    facts.mdcompat = ac4_get_top_mdcompat(analysis);
    facts.is_channel_coded = ac4_get_top_b_channel_coded(analysis);
    facts.channel_mode = ac4_get_top_pres_ch_mode(analysis);
    facts.layout_count = ac4_get_top_channel_layout_count(analysis);
    facts.top_pairs = ac4_get_top_pres_top_channel_pairs(analysis);
    ac4_es_parser_clear(*stream.analysis);
    return facts;
}

Status check_codec(const FrameFacts& facts, const ManifestContext& context, Loglist* loglist) {
    const std::string codec =
        ac4_codec_text({static_cast<std::uint32_t>(facts.bitstream_version),
                        static_cast<std::uint32_t>(facts.presentation_version),
                        static_cast<std::uint32_t>(facts.mdcompat)});
    return check(codec_is_contained(context.codecs, codec), loglist, 4393,
                 LogContext{context.stream_index, {}, "CODECS"}, context.stream_index, codec);
}

// Channels of a channel coded first presentation of version 1.
ChannelFacts channels_by_mode(const FrameFacts& facts) {
    const bool is_flagged = std::find(kFlaggedModes.begin(), kFlaggedModes.end(),
                                      facts.channel_mode) != kFlaggedModes.end();
    if (is_flagged) {
        const bool is_immersive = facts.top_pairs != 0;
        return {std::to_string(facts.layout_count) + (is_immersive ? "/IMSA" : ""),
                facts.layout_count, is_immersive};
    }
    const std::int32_t mode = convert_2_ac4_ch_mode(facts.channel_mode);
    if (mode < 0) {
        return {"", 0, false};
    }
    const std::uint32_t count = chmode_2_channel_count(static_cast<std::uint32_t>(mode));
    return {std::to_string(count), count, false};
}

ChannelFacts channels_of(const FrameFacts& facts) {
    if (facts.presentation_version == 0 || !facts.is_channel_coded) {
        return {};
    }
    switch (facts.presentation_version) {
        case 1:
            return channels_by_mode(facts);
        case 2:
            return {"2/IMSA", 2, true};
        default:
            return {"", 0, false};
    }
}

Status check_channels(const FrameFacts& facts, ManifestContext& context, Loglist* loglist) {
    const ChannelFacts channels = channels_of(facts);
    const LogContext where{context.rendition_index, {}, "CHANNELS"};
    Status status = Status::kOk;
    if (channels.text) {
        status |=
            check(context.channels_text.has_value(), loglist, 4388, where, context.rendition_index);
    }
    if (!context.channels_text) {
        return status;
    }
    if (channels.text && context.channels_parsed == 0) {
        status |= check(channels.text == context.channels_text, loglist, 4394, where,
                        context.rendition_index, channels.text, context.channels_text);
    }
    return status |
           check_ac4_channel_limit(context, channels.count, channels.is_immersive, loglist);
}

void write_frame(const SyncFrame& frame, OutputFile* output) {
    if (output == nullptr) {
        return;
    }
    if (frame.header_size + frame.payload.size() > kMaxWritten) {
        note_remark("An AC-4 frame was not written: it is larger than 2 MiB.");
        return;
    }
    output->write(ByteSpan(frame.header).first(frame.header_size));
    output->write(frame.payload);
}

void pass_frame(const SyncFrame& frame, Ac4Stream& stream) {
    const FrameFacts facts = analyse(frame.payload, stream);
    if (stream.context != nullptr) {
        stream.status |= check_codec(facts, *stream.context, stream.loglist);
        stream.status |= check_channels(facts, *stream.context, stream.loglist);
    }
    if (stream.is_first_frame) {
        stream.status |= check(facts.is_iframe, stream.loglist, 4485, {});
    }
    stream.is_first_frame = false;
    write_frame(frame, stream.output);
}

}  // namespace

Status parse_es_stream_ac4(OutputFile* output, InputFile& input, ManifestContext* context,
                           Loglist* loglist) {
    Ac4Stream stream;
    stream.input = &input;
    stream.output = output;
    stream.context = context;
    stream.loglist = loglist;
    SyncFrame frame;
    ReadResult result = ReadResult::kEnd;
    while ((result = read_frame(frame, stream)) == ReadResult::kFrame) {
        pass_frame(frame, stream);
        if (frame.header[1] == kSyncWithCrc) {
            std::array<std::uint8_t, 2> check_word{};
            (void)ReadBytes(check_word.data(), check_word.size(), input);
        }
    }
    stream.status |= check(result != ReadResult::kLostSync, loglist, 4490, {});
    return stream.status;
}

}  // namespace mediasplit
