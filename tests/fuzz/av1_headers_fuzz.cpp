// AV1 parameter data: a sample's units with their sequence headers, and the same bytes as the
// configuration record of a track.
#include <cstdint>
#include <cstdlib>

#include "src/fmp4demuxer/writers/av1_headers.h"
#include "src/mp4demuxer/mp4demuxer.h"
#include "src/video/leb128.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/mp4_input.h"

namespace mediasplit {
namespace {

void read_units(ByteSpan rest) {
    while (!rest.empty()) {
        const std::size_t before = rest.size();
        const Obu unit = take_obu(rest);
        if (rest.size() >= before) {
            std::abort();  // a unit that takes nothing would never end
        }
        if (unit.type == kObuSequenceHeader) {
            static_cast<void>(read_sequence_header(unit.payload));
        }
        std::uint32_t position = 0;
        static_cast<void>(read_leb128(position, unit.payload));
    }
}

void read_configuration(const mp4::Bytes& record) {
    mp4::MovieSpec movie;
    mp4::TrackSpec track;
    track.entries = {mp4::video_entry("av01", 64, 64, {mp4::box("av1C", {record})})};
    movie.tracks = {track};
    static_cast<void>(mp4::walk(mp4::plain_file(movie)));
}

}  // namespace
}  // namespace mediasplit

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    read_units({data, size});
    static_cast<void>(read_sequence_header({data, size}));
    read_configuration(mp4::Bytes(data, data + size));
    return 0;
}
