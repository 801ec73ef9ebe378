// The frame that all parameter set parsers share.
#pragma once

#include <cstdint>

#include "src/log/status.h"
#include "src/video/bit_cursor.h"
#include "src/video/nal_unit.h"

namespace mediasplit {

/// Fails on null arguments; leaves the record as it is for a unit of size 0; otherwise clears it
/// and calls `read(record, bits)` for the unescaped unit.
template <typename Record, typename Read>
Status parse_nal(const NalBuffer* nal, Record* record, Read read) {
    if (nal == nullptr || nal->data == nullptr || record == nullptr) {
        return Status::kFailed;
    }
    if (nal->size == 0) {
        return Status::kOk;
    }
    *record = Record{};
    const UnescapedNal unit(*nal);
    std::uint32_t position = 0;
    BitCursor bits(unit.bytes(), position);
    return read(*record, bits);
}

}  // namespace mediasplit
