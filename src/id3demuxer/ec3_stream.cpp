// E-AC-3 elementary streams, time slice by time slice.
#include <array>
#include <optional>

#include "oapinfolib/src/oapinfo_api.h"
#include "src/audio/channel_words.h"
#include "src/audio/hls_channels.h"
#include "src/id3demuxer/es_streams.h"
#include "src/id3demuxer/frame_buffer.h"
#include "src/log/logging.h"

namespace mediasplit {

namespace {

constexpr std::uint64_t kHeaderSize = 4;
constexpr std::uint8_t kFirstDependent = 0x40;  // of the byte with strmtyp and substreamid
// Largest time slice that is written. No stream comes near it: a longer row of frames is taken as
// several, so that memory stays bounded.
constexpr std::uint64_t kMaxSlice = 0x200000;
// Locations of `chanmap` that dependent substreams add to the channels of a programme.
constexpr std::uint32_t kAddedLocations = 0x7FE;

struct Ec3Stream {
    OutputFile* output = nullptr;
    ManifestContext* context = nullptr;
    Loglist* loglist = nullptr;
    OapParser parser = oap_es_parser_new(1);
    OapEsInfo info{};
    FrameBuffer slice{};
    std::optional<std::uint32_t> main_substream{};  // begins each time slice
    bool is_first_slice = true;
    Status status = Status::kOk;
};

Ec3Programme programme_of(const OapProgramInfo& program) {
    if (program.addbsie != 0) {
        return {true, program.addbsi[1]};
    }
    std::uint32_t word = acmod_to_channel_config(program.acmod) | program.lfeon;
    for (std::uint32_t i = 0; i < program.num_dependent; ++i) {
        word |= program.dependent[i].chanmap & kAddedLocations;
    }
    return {false, calculate_ec3_channel_count(word)};
}

void analyse_slice(Ec3Stream& stream) {
    const std::span<const std::uint8_t> bytes = stream.slice.bytes();
    const bool is_good = stream.parser != nullptr &&
                         oap_es_parser(bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                                       stream.parser.get(), &stream.info) == kOapGood;
    stream.status |= check(is_good, stream.loglist, 4333, {});
}

void write_slice(Ec3Stream& stream) {
    if (stream.output != nullptr) {
        stream.output->write(stream.slice.bytes());
    }
    stream.slice.clear();
}

// Hands on a time slice behind which another one begins.
void pass_slice(Ec3Stream& stream) {
    analyse_slice(stream);
    if (stream.is_first_slice && stream.info.num_programs != 0 && stream.context != nullptr) {
        stream.status |= check_ec3_attributes(*stream.context, programme_of(stream.info.program[0]),
                                              AudioCarrier::kPackedAudio, stream.loglist);
    }
    stream.is_first_slice = false;
    write_slice(stream);
}

// The last one. Deliberate: it isn't held against the playlist, not even when it is the only one.
void pass_last_slice(Ec3Stream& stream) {
    if (stream.slice.size() != 0) {
        analyse_slice(stream);
        write_slice(stream);
    }
}

// Whether a time slice begins with the frame of this stream type and substream.
bool begins_slice(Ec3Stream& stream, std::uint8_t type_and_substream) {
    if (type_and_substream >= kFirstDependent) {
        return false;
    }
    const std::uint32_t substream = type_and_substream >> 3;
    const bool is_known = stream.main_substream.has_value();
    if (!is_known) {
        stream.main_substream = substream;
    }
    return is_known && *stream.main_substream == substream;
}

// Takes frames in up to the end of the file. False if sync is lost.
bool read_frames(Ec3Stream& stream, InputFile& input) {
    for (;;) {
        std::array<std::uint8_t, kHeaderSize> header{};
        const std::uint64_t got = ReadBytes(header.data(), 2, input);
        if (got == 0) {
            return true;
        }
        if (got != 2 || header[0] != 0x0B || header[1] != 0x77 ||
            ReadBytes(header.data() + 2, 2, input) != 2) {
            return false;
        }
        const std::uint64_t size = (((header[2] & 7U) << 8) + header[3] + 1U) * 2;
        if (size < kHeaderSize) {
            return false;
        }
        if (begins_slice(stream, header[2]) || stream.slice.size() + size > kMaxSlice) {
            pass_slice(stream);
        }
        stream.slice.append(header);
        stream.slice.append_from(input, size - kHeaderSize);
    }
}

}  // namespace

Status parse_es_stream_oap(OutputFile* output, InputFile& input, ManifestContext* context,
                           Loglist* loglist) {
    Ec3Stream stream;
    stream.output = output;
    stream.context = context;
    stream.loglist = loglist;
    const bool is_in_sync = read_frames(stream, input);
    stream.status |= check(is_in_sync, loglist, 4332, {});
    pass_last_slice(stream);
    return stream.status;
}

}  // namespace mediasplit
