#include "src/fmp4demuxer/checks/prisma_codecs.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace mediasplit {
namespace {

constexpr std::size_t kLongestList = 100;
constexpr std::array<std::string_view, 4> kEnhancementPrefixes{"pxav.", "pxa1.", "pxhe.", "pxh1."};

bool names_enhancement(std::string_view codec) {
    return std::any_of(
        kEnhancementPrefixes.begin(), kEnhancementPrefixes.end(),
        [&](std::string_view prefix) { return codec.find(prefix) != std::string_view::npos; });
}

}  // namespace

std::string get_main_codec(OptText codecs) {
    if (!codecs || codecs->size() > kLongestList) {
        return {};
    }
    for (std::string_view rest = *codecs; !rest.empty();) {
        const std::string_view word = rest.substr(0, rest.find(','));
        if (names_enhancement(word)) {
            return std::string(word);
        }
        rest.remove_prefix(std::min(word.size() + 1, rest.size()));
    }
    return codecs.str();
}

}  // namespace mediasplit
