// Feeds blocks to one E-AC-3 parser. An input is a sequence of blocks, each with a two-byte head:
// the options of the block, then its size in units of 8 bytes. Check words can be repaired on the
// way, so that changes to a header get past the CRC.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "oapinfolib/src/crc.h"
#include "oapinfolib/src/oap_parser_state.h"

namespace {

using mediasplit::OapEsInfo;
using mediasplit::OapParser;

constexpr unsigned kRepairCrc = 0x80;
constexpr unsigned kFullReport = 0x40;

void put_check_word(std::uint8_t* frame, std::size_t words) {
    std::vector<std::uint16_t> copy(words);
    for (std::size_t i = 0; i < words; ++i) {
        copy[i] = static_cast<std::uint16_t>(frame[2 * i] << 8 | frame[2 * i + 1]);
    }
    const std::uint16_t crc =
        mediasplit::crc_calcfwd(copy.data() + 1, static_cast<std::uint32_t>(words) - 2);
    frame[2 * words - 2] = static_cast<std::uint8_t>(crc >> 8);
    frame[2 * words - 1] = static_cast<std::uint8_t>(crc);
}

// Walks the E-AC-3 frames that stand in file order and makes their check words good.
void repair(std::vector<std::uint8_t>& block) {
    std::size_t at = 0;
    while (block.size() - at >= 6 && block[at] == 0x0B && block[at + 1] == 0x77) {
        const std::size_t words = ((block[at + 2] & 7U) << 8U | block[at + 3]) + std::size_t{1};
        if (words < 3 || words * 2 > block.size() - at) {
            return;
        }
        put_check_word(block.data() + at, words);
        at += words * 2;
    }
}

void check(const OapEsInfo& info, int result) {
    const bool sane = result >= 0 && info.num_programs <= 8 && info.remainder_blocks < 6;
    if (!sane) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = std::freopen("/dev/null", "w", stdout) != nullptr;
    (void)quiet;
    const OapParser parser = mediasplit::oap_es_parser_new(1);
    while (size >= 2) {
        const unsigned options = data[0];
        const std::size_t length = std::min<std::size_t>(data[1] * std::size_t{8}, size - 2);
        std::vector<std::uint8_t> block(data + 2, data + 2 + length);
        data += 2 + length;
        size -= 2 + length;
        if ((options & kRepairCrc) != 0) {
            repair(block);
        }
        parser->disp_flags = (options & kFullReport) != 0 ? 0xFFFF : mediasplit::kDefaultDispFlags;
        parser->compliance_mode = static_cast<std::uint16_t>(options & 7U);
        OapEsInfo info;
        check(info,
              mediasplit::oap_es_parser(block.data(), static_cast<std::uint32_t>(block.size()),
                                        parser.get(), &info));
    }
    return 0;
}
