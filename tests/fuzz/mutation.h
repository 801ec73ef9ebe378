// Parts of the structure-aware mutators.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace mediasplit {

using Bytes = std::vector<std::uint8_t>;

// The mutator's dice: the same seed gives the same mutation.
class Dice {
public:
    explicit Dice(unsigned seed) : engine_(seed) {}
    // A number below `end`, which is not 0.
    std::size_t below(std::size_t end) { return engine_() % end; }
    bool one_in(std::size_t n) { return below(n) == 0; }

private:
    std::minstd_rand engine_;
};

// `bytes` changed by libFuzzer's own means, to at most `most` bytes.
inline void mutate_plainly(Bytes& bytes, std::size_t most) {
    const std::size_t size = std::min(bytes.size(), most);
    bytes.resize(std::max<std::size_t>(most, 1));
    bytes.resize(LLVMFuzzerMutate(bytes.data(), size, bytes.size()));
}

// Puts `result` where libFuzzer wants it.
inline std::size_t hand_over(const Bytes& result, std::uint8_t* data, std::size_t most) {
    const std::size_t size = std::min(result.size(), most);
    std::copy_n(result.begin(), size, data);
    return size;
}

}  // namespace mediasplit
