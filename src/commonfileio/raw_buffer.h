// Room for bytes that are read over it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace mediasplit {

// Bytes that are left as the allocator gives them: a source that holds a short segment never
// touches the rest of its block.
class RawBuffer {
public:
    // Room for `size` bytes; what stood there is lost. Throws std::bad_alloc.
    void resize(std::size_t size) {
        // Not make_unique: that would clear them.
        bytes_.reset(new std::uint8_t[size]);  // NOLINT(modernize-make-unique)
        size_ = size;
    }
    [[nodiscard]] std::uint8_t* data() { return bytes_.get(); }
    [[nodiscard]] const std::uint8_t* data() const { return bytes_.get(); }
    [[nodiscard]] std::size_t size() const { return bytes_ ? size_ : 0; }
    [[nodiscard]] bool empty() const { return size() == 0; }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
};

}  // namespace mediasplit
