#include "oapinfolib/src/crc.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/eac3_builder.h"

namespace mediasplit {
namespace {

using test_support::Bytes;

TEST(Crc, KnownCheckValueOfTheGenerator) {
    // "123456789" leaves 0xFEE8 with generator 0x8005, register 0, no reflection; one digit less is
    // a whole number of words.
    const Bytes digits{'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(test_support::reference_crc(digits.data(), 9), 0xFEE8);
    const std::vector<std::uint16_t> words{0x3132, 0x3334, 0x3536, 0x3738};
    EXPECT_EQ(crc_calcfwd(words.data(), 4), test_support::reference_crc(digits.data(), 8));
}

TEST(Crc, TableEntriesOfSingleWords) {
    for (const auto& [word, residue] :
         {std::pair<int, int>{0x0001, 0x8005}, {0x0002, 0x800F}, {0x0003, 0x000A}}) {
        const auto input = static_cast<std::uint16_t>(word);
        EXPECT_EQ(crc_calcfwd(&input, 1), residue);
    }
}

TEST(Crc, EveryLengthAgreesWithTheBitwiseCount) {
    Bytes bytes;
    for (unsigned i = 0; i < 200; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i * 37 + i * i));
    }
    const std::vector<std::uint16_t> words = test_support::to_words(bytes);
    for (std::uint32_t count = 0; count <= words.size(); ++count) {
        EXPECT_EQ(crc_calcfwd(words.data(), count),
                  test_support::reference_crc(bytes.data(), count * 2U))
            << count;
    }
}

TEST(Crc, Ac3FrameIsJudgedInTwoParts) {
    for (unsigned code = 0; code < 38; ++code) {
        for (unsigned fscod = 0; fscod < 3; ++fscod) {
            test_support::Ac3Spec spec;
            spec.frmsizecod = code;
            spec.fscod = fscod;
            const auto words = [&] {
                return test_support::to_words(test_support::build_ac3_frame(spec));
            };
            const std::uint32_t size = test_support::ac3_frame_words(fscod, code);
            EXPECT_EQ(crc_chkoafrm(size, words().data()), kCrcGood) << code;
            spec.good_crc2 = false;
            EXPECT_EQ(crc_chkoafrm(size, words().data()), kCrcErrorSecondPart) << code;
            spec.good_crc1 = false;
            EXPECT_EQ(crc_chkoafrm(size, words().data()), kCrcErrorFirstPart) << code;
            spec.good_crc2 = true;
            EXPECT_EQ(crc_chkoafrm(size, words().data()), kCrcErrorFirstPart) << code;
        }
    }
}

}  // namespace
}  // namespace mediasplit
