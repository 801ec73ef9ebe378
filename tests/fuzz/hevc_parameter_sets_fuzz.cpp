// H.265 parameter sets; the type in the unit's header picks the parser. The rest of the input
// behind a video parameter set goes into a codec text.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "src/video/codec_text.h"
#include "src/video/level_rules.h"
#include "src/video/parameter_sets.h"

namespace {

using namespace mediasplit;

void fuzz_vps(const NalBuffer& nal) {
    HevcConfig config;
    config.vps.emplace_back();
    parse_hevc_vps_nal(&nal, &config.vps.back().record, nullptr);
    std::string text;
    static_cast<void>(build_hevc_codec(&text, 13, &config, "fuzz", nullptr));
    const std::string copy = text;
    if (!hevc_codec_match(text, copy)) {
        std::abort();
    }
}

void fuzz_sps(const NalBuffer& nal) {
    const HevcVps vps;
    HevcSps sps;
    parse_hevc_sps_nal(&nal, &sps, nullptr);
    static_cast<void>(check_px_h265_profile_level(4, 1, &vps, &sps, &sps, nullptr, 25.0F));
}

void fuzz_pps(const NalBuffer& nal) {
    HevcPps pps;
    parse_hevc_pps_nal(&nal, &pps, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const NalBuffer nal{data, static_cast<std::uint32_t>(size)};
    const int type = size == 0 ? 0 : (data[0] >> 1) & 63;
    if (type == 33) {
        fuzz_sps(nal);
    } else if (type == 34) {
        fuzz_pps(nal);
    } else {
        fuzz_vps(nal);
    }
    return 0;
}
