// The object audio extension of an E-AC-3 stream in its additional bitstream information
// (ETSI TS 103 420 8.3).
#pragma once

#include <cstdint>
#include <span>

#include "oapinfolib/src/oapinfo_api.h"

namespace mediasplit {

// Additional bitstream information of a substream. The bytes stand in the record it was taken from.
struct AdditionalBsi {
    bool exists = false;
    std::uint32_t length = 0;                              // bytes coded
    std::span<const std::uint8_t, kOapAddbsiBytes> bytes;  // zeros behind the length
};

// That of the substream which carries the extension: the first dependent one, or a program that has
// none.
[[nodiscard]] AdditionalBsi extension_of(const OapProgramInfo& program);

}  // namespace mediasplit
