// Comparison and splitting of codec lists: two texts, separated by the first line end.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "src/video/codec_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    const std::string input(data, data + size);
    const std::size_t line = std::min(input.find('\n'), input.size());
    const std::string a = input.substr(0, line);
    const std::string b = input.substr(std::min(line + 1, input.size()));
    avc_codec_match(a, b);
    hevc_codec_match(a, b);
    ac4_codec_match(a, b);
    codec_match(a, b);
    codec_is_contained(a, b);
    if (codecs_match(a, b) != codecs_match(b, a) && a == b) {
        std::abort();
    }
    std::string kept;
    if (splitprsmcodec(a, &kept) && kept.size() != 10) {
        std::abort();
    }
    splitprsm_supplemental_codec(a, &kept);
    std::optional<std::string> out;
    Status status = Status::kOk;
    splitcodec_audio(a, out, status, nullptr);
    splitcodec_video(b, out, status, nullptr);
    return 0;
}
