// Headers of metadata units.
#include <cstdint>
#include <cstdlib>

#include "src/video/enhancement_metadata.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    mediasplit::RpuNal rpu;
    rpu.data = data;
    rpu.size = static_cast<std::uint32_t>(size);
    mediasplit::parse_rpu_nal(&rpu, nullptr);
    if (rpu.size > 512 || rpu.rpu_compression > 7) {
        std::abort();
    }
    return 0;
}
