// Writers that put at most a fixed header ahead of a sample.
#include <array>

#include "src/fmp4demuxer/checks/ac4_stream.h"
#include "src/fmp4demuxer/checks/ec3_stream.h"
#include "src/fmp4demuxer/writers/sample_writers.h"
#include "src/fmp4demuxer/writers/unit_output.h"

namespace mediasplit {
namespace {

constexpr std::size_t kHeaderSize = 7;
using Header = std::array<std::uint8_t, kHeaderSize>;

// adts_fixed_header() and adts_variable_header(). An object type of 31 and a frequency index of 15
// deliberately get no special handling; a track without a configuration reads as zeros.
Header adts_header(ByteSpan configuration, std::size_t sample_size) {
    std::uint32_t at = 0;
    const std::uint32_t object_type = read_uint32(at, configuration, 5);
    const std::uint32_t frequency_index = read_uint32(at, configuration, 4);
    const std::uint32_t channels = read_uint32(at, configuration, 4);
    struct Field {
        std::uint32_t bits;
        std::uint32_t value;
    };
    const auto frame_length = static_cast<std::uint32_t>((sample_size + kHeaderSize) & 0x1FFF);
    const std::array<Field, 12> fields{{
        {12, 0xFFF},           // syncword
        {1, 1},                // ID
        {2, 0},                // layer
        {1, 1},                // protection_absent
        {2, object_type - 1},  // profile
        {4, frequency_index},  // sampling_frequency_index
        {1, 0},                // private_bit
        {3, channels},         // channel_configuration
        {4, 0},                // original_copy, home and the two copyright bits
        {13, frame_length},    // aac_frame_length
        {11, 0x7FF},           // adts_buffer_fullness
        {2, 0},                // number_of_raw_data_blocks_in_frame
    }};
    Header header{};
    std::uint32_t position = 0;
    for (const Field& field : fields) {
        position = write_bits(position, header, field.bits, field.value);
    }
    return header;
}

// ac4_syncframe() with the long form of frame_size, whatever the size.
Header ac4_sync_header(std::size_t sample_size) {
    return {0xAC,
            0x40,
            0xFF,
            0xFF,
            static_cast<std::uint8_t>(sample_size >> 16 & 0xFF),
            static_cast<std::uint8_t>(sample_size >> 8 & 0xFF),
            static_cast<std::uint8_t>(sample_size & 0xFF)};
}

Status write_framed(Mp4Demuxer& demuxer, std::uint32_t stream_index, const Header& header,
                    ByteSpan sample) {
    OutputFile* file = output_of(demuxer, stream_index);
    const Status status = write_bytes(file, header, demuxer.loglist);
    return status | write_bytes(file, sample, demuxer.loglist);
}

}  // namespace

Status aacSample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    const Mp4Stream& stream = *demuxer.streams[stream_index];
    return write_framed(demuxer, stream_index, adts_header(stream.dsi, sample.size()), sample);
}

Status ec3Sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    const Status status = check_ec3_sample(demuxer, stream_index, sample);
    return status | unspecifiedSample(demuxer, stream_index, sample);
}

Status ac4Sample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample,
                 std::uint32_t number, std::uint32_t sync) {
    const Status status = check_ac4_sample(demuxer, stream_index, sample, number, sync);
    return status | write_framed(demuxer, stream_index, ac4_sync_header(sample.size()), sample);
}

Status unspecifiedSample(Mp4Demuxer& demuxer, std::uint32_t stream_index, ByteSpan sample) {
    return write_bytes(output_of(demuxer, stream_index), sample, demuxer.loglist);
}

}  // namespace mediasplit
