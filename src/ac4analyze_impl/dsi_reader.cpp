#include "src/ac4analyze_impl/dsi_reader.h"

#include <algorithm>

#include "src/util/tree_text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 28;  // that a 32-bit bit position can tell

}  // namespace

DsiReader::DsiReader(ByteSpan data, std::uint64_t position)
    : data_(data.first(std::min(data.size(), kMostBytes))), size_(data_.size() * 8) {
    position_ = std::min(position, size_);
}

bool DsiReader::claim(std::uint64_t bits) {
    failed_ = failed_ || bits > bits_left();
    return !failed_;
}

bool DsiReader::peel(std::uint32_t width, std::uint32_t* out) {
    if (!claim(width)) {
        return false;
    }
    auto at = static_cast<std::uint32_t>(position_);
    *out = read_uint32(at, data_, width);
    position_ += width;
    return true;
}

bool DsiReader::value(std::uint32_t width, const char* name, std::uint32_t* out, Ezxml* node) {
    if (!peel(width, out)) {
        return false;
    }
    add_uint_to_xml(node, name, out, 0);
    return true;
}

bool DsiReader::skip(std::uint64_t bits) {
    if (!claim(bits)) {
        return false;
    }
    position_ += bits;
    return true;
}

bool DsiReader::bytes(std::uint32_t count, std::string* out) {
    if (!claim(std::uint64_t{count} * 8)) {
        return false;
    }
    out->resize(count);
    for (char& each : *out) {
        auto at = static_cast<std::uint32_t>(position_);
        each = static_cast<char>(read_uint8(at, data_, 8));
        position_ += 8;
    }
    return true;
}

bool DsiReader::align(std::uint64_t start) {
    const std::uint64_t over = (position_ - start) % 8;
    return over == 0 ? !failed_ : skip(8 - over);
}

void DsiReader::jump(std::uint64_t position) {
    position_ = std::max(position_, std::min(position, size_));
}

}  // namespace mediasplit
