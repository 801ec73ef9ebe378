#include "src/fmp4demuxer/writers/nal_units.h"

#include <algorithm>

#include "src/video/nal_unit.h"

namespace mediasplit {

ByteSpan NalUnits::next(Loglist* loglist, Status& status) {
    std::uint32_t length = 0;
    for (unsigned i = 0; i < length_size_; ++i) {
        length = length << 8 | (i < rest_.size() ? rest_[i] : 0U);
    }
    const bool whole_length = rest_.size() >= length_size_;
    from_unit_ = rest_.subspan(std::min<std::size_t>(length_size_, rest_.size()));
    if (!whole_length || length > from_unit_.size()) {
        status |= Logging_err_type_check(loglist, 4073, {}, length, from_unit_.size());
        rest_ = {};
        return from_unit_;
    }
    rest_ = from_unit_.subspan(length);
    return from_unit_.first(length);
}

ByteSpan measure_unit(ByteSpan unit, std::size_t from) {
    // Up to one byte in three is removed before the work area takes the unit.
    constexpr std::size_t kMostRead = kNalWorkAreaSize * 3 / 2 + 3;
    unit = unit.first(std::min(unit.size(), kMostRead));
    for (std::size_t at = from; at + 2 < unit.size(); ++at) {
        if (unit[at] == 0 && unit[at + 1] == 0 && unit[at + 2] <= 1) {
            return unit.first(at);
        }
    }
    return unit;
}

ByteSpan enhancement_parameter_set(ByteSpan unit) {
    constexpr std::size_t kStart = 2;
    constexpr std::size_t kFirstPossibleEnd = 4;
    if (unit.size() <= kStart) {
        return {};
    }
    std::size_t end = std::min(kFirstPossibleEnd, unit.size());
    while (end < unit.size() && unit[end] != 0x7E) {
        ++end;
    }
    return unit.subspan(kStart, std::min(end + 1, unit.size()) - kStart);
}

}  // namespace mediasplit
