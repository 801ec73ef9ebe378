// H.264 sequence parameter sets, and the codec text and level check that follow from one.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "src/video/codec_text.h"
#include "src/video/level_rules.h"
#include "src/video/parameter_sets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    const NalBuffer nal{data, static_cast<std::uint32_t>(size)};
    AvcSps sps;
    parse_avc_sps_nal(&nal, &sps, nullptr);
    std::string text;
    build_avc_codec(&text, 2, &sps);
    if (text.size() != 11) {
        std::abort();
    }
    static_cast<void>(
        check_px_level(1, sps.pic_width, sps.pic_height, nullptr, sps.frame_rate, 0.0F));
    return 0;
}
