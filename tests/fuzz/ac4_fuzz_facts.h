#pragma once

#include <cstddef>
#include <cstdint>

namespace mediasplit {

// Takes facts that a reader is told from the front of a fuzz input, and leaves the rest as its
// data.
class FuzzFacts {
public:
    FuzzFacts(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    // A number from 0 to `most`.
    int number(int most) {
        if (size_ == 0) {
            return 0;
        }
        --size_;
        return *data_++ % (most + 1);
    }
    bool flag() { return number(1) != 0; }
    int frame_length() {
        constexpr int kLengths[] = {384, 512, 768, 960, 1024, 1536, 1920, 2048, 7};
        return kLengths[number(8)];
    }

    const std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};

}  // namespace mediasplit
