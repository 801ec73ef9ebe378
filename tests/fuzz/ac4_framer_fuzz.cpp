// Framer: first byte decides size limit and form of output, the rest is the stream.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "ac4/framer/framer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    if (size < 1) {
        return 0;
    }
    std::vector<std::byte> memory(static_cast<std::size_t>(AC4_ANALYZE_ac4framer_query_mem()));
    Ac4Framer* framer = AC4_ANALYZE_ac4framer_open(memory.data());
    AC4_ANALYZE_ac4framer_configure(
        framer, {std::uint64_t{8} << (data[0] & 15U), data[0] >= 128 ? 1U : 0U});
    FramerBuffer stream = {data + 1, size - 1};
    std::uint64_t skipped = 0;
    std::uint64_t total_consumed = 0;
    while (true) {
        std::uint64_t consumed = 0;
        FramerFrame frame;
        const int result =
            AC4_ANALYZE_ac4framer_get_frame(framer, stream, &consumed, &skipped, &frame);
        total_consumed += consumed;
        if (consumed > stream.size || skipped > total_consumed) {
            std::abort();
        }
        if (result != 0) {
            break;
        }
        // A frame lies inside the buffer and takes it forward.
        if (consumed < 2 || frame.data < stream.data ||
            frame.data + frame.size > stream.data + stream.size) {
            std::abort();
        }
        AC4_ANALYZE_framer_buffer_advance(&stream, consumed);
    }
    AC4_ANALYZE_ac4framer_close(framer);
    return 0;
}
