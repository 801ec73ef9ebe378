#include "src/mp4demuxer/ac4_dsi.h"

namespace mediasplit {

std::uint32_t ac4_dsi_parser(std::span<const std::uint8_t> /*payload*/, DsiRecord& /*record*/,
                             Ezxml* /*tree*/) {
    return 0;
}

}  // namespace mediasplit
