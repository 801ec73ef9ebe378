// The NAL units of a sample (ISO/IEC 14496-15 4.3.3): each behind its length.
#pragma once

#include <cstdint>

#include "src/log/logging.h"
#include "src/util/bit_reader.h"

namespace mediasplit {

// Goes through a sample's units in order.
class NalUnits {
public:
    // `length_size` is the number of length bytes, 1 to 4.
    NalUnits(ByteSpan sample, unsigned length_size) : rest_(sample), length_size_(length_size) {}

    [[nodiscard]] bool at_end() const { return rest_.empty(); }

    // The sample's bytes from the start of the last unit on.
    [[nodiscard]] ByteSpan from_unit() const { return from_unit_; }

    // The next unit without its length. One that claims more than is left raises 4073, whose result
    // is ORed into `status`, and is cut at the sample's end.
    ByteSpan next(Loglist* loglist, Status& status);

private:
    ByteSpan rest_;
    ByteSpan from_unit_;
    unsigned length_size_;
};

// The unit's first byte, 0 for an empty unit.
[[nodiscard]] inline std::uint8_t first_byte(ByteSpan unit) {
    return unit.empty() ? std::uint8_t{0} : unit[0];
}

// nal_unit_type of ITU-T H.264 Table 7-1.
[[nodiscard]] inline std::uint8_t avc_unit_type(ByteSpan unit) {
    return first_byte(unit) & 0x1F;
}

// nal_unit_type of ITU-T H.265 Table 7-1.
[[nodiscard]] inline std::uint8_t hevc_unit_type(ByteSpan unit) {
    return first_byte(unit) >> 1 & 0x3F;
}

// `unit` up to the first 00 00 00 or 00 00 01 that begins at `from` or behind. What lies behind the
// bytes that the parsers of parameter sets look at is left out, so that many units in one sample
// take no more time than they have bytes.
[[nodiscard]] ByteSpan measure_unit(ByteSpan unit, std::size_t from);

// The parameter set inside an enhancement layer's unit: from its third byte up to and including the
// first 0x7E behind the fourth.
[[nodiscard]] ByteSpan enhancement_parameter_set(ByteSpan unit);

}  // namespace mediasplit
