#include <gtest/gtest.h>

#include <random>

#include "oapinfolib/src/oap_parser_state.h"
#include "tests/support/eac3_builder.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

// Broken blocks, over many calls of one parser. Each has to come back with one of the told results,
// and a good block afterwards has to be read as ever.

namespace mediasplit {
namespace {

using test_support::Ac3Spec;
using test_support::build_ac3_frame;
using test_support::build_eac3_frame;
using test_support::Bytes;
using test_support::Eac3Spec;
using test_support::join;

struct Hostile : testing::Test {
    OapParser parser = oap_es_parser_new(1);
    Bytes good;

    void SetUp() override {
        parser->disp_flags = 0xFFFF;
        good = build_eac3_frame({});
    }

    void expect_survives(const Bytes& block) {
        // Exactly as large as the block, so that a sanitizer sees any read behind it.
        const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[block.size() + 1]);
        std::copy(block.begin(), block.end(), exact.get() + 1);
        OapEsInfo info;
        const int result = oap_es_parser(exact.get() + 1, static_cast<std::uint32_t>(block.size()),
                                         parser.get(), &info);
        ASSERT_GE(result, 0);
        ASSERT_LE(result, 2);
        ASSERT_LE(info.num_programs, 8U);
        ASSERT_LT(info.remainder_blocks, 6U);
        for (const OapProgramInfo& program : info.program) {
            ASSERT_LE(program.addbsi_len, 64U);
        }
    }

    void expect_still_good() {
        OapEsInfo info;
        EXPECT_LT(oap_es_parser(good.data(), static_cast<std::uint32_t>(good.size()), parser.get(),
                                &info),
                  2);
        EXPECT_EQ(info.num_programs, 1U);
        EXPECT_EQ(info.program[0].acmod, 7U);
        EXPECT_EQ(info.program[0].num_dependent, 0U);
    }
};

Eac3Spec full_header() {
    Eac3Spec spec;
    spec.words = 128;
    spec.acmod = 1;
    spec.numblkscod = 1;
    spec.compr[0] = 3;
    spec.mix =
        test_support::MixSpec{.lfemixlevcod = 1, .extpgmscl = 2, .mixdef = 3, .mixdeflen = 9};
    spec.mix->mixdata2 = test_support::Mixdata2Spec{
        .extpgmscl = {1, 2, 3, 4, 5, 6}, .dmixscl = 1, .addche = true, .aux_scl = {1, 2}};
    spec.mix->pan[0] = test_support::PanSpec{1, 2};
    spec.mix->blkmixcfginfo = {1, 2};
    spec.info = test_support::InfoSpec{};
    spec.addbsi = Bytes(64, 0xA5);
    spec.aux = test_support::AuxSpec{40, Bytes(5, 0x3C)};
    return spec;
}

TEST_F(Hostile, EveryBitOfAFullHeaderFlipped) {
    const Bytes frame = build_eac3_frame(full_header());
    ExpectText quiet;
    for (std::size_t bit = 0; bit < frame.size() * 8; ++bit) {
        Bytes changed = frame;
        changed[bit / 8] ^= static_cast<std::uint8_t>(0x80U >> bit % 8);
        expect_survives(changed);
        test_support::repair_eac3_crc(changed);
        expect_survives(join({good, changed, good}));
    }
    expect_still_good();
}

// The time slice under way outlives a block that was refused, and so do its dependent substreams.
TEST_F(Hostile, DependentsThatComeAgainOverManyBlocksFillTheListAndNoMore) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    spec.chanmap = 0x1A00;
    const Bytes dependent = build_eac3_frame(spec);
    ExpectText quiet;
    expect_survives(join({good, dependent}));
    for (int i = 0; i < 100; ++i) {
        expect_survives(dependent);
    }
    OapEsInfo info;
    EXPECT_LT(oap_es_parser(good.data(), 0, parser.get(), &info), 2);
    EXPECT_EQ(info.num_programs, 1U);
    EXPECT_EQ(info.program[0].num_dependent, 8U);
}

TEST_F(Hostile, ComplianceLinesOfManySmallBlocksEnd) {
    parser->disp_flags = kDefaultDispFlags;
    Eac3Spec spec;
    spec.words = 64;
    spec.fscod = 2;  // breaks a rule
    std::vector<Bytes> blocks;
    for (const unsigned acmod : {1U, 2U}) {
        spec.acmod = acmod;
        blocks.push_back(build_eac3_frame(spec));
    }
    constexpr std::size_t kBlocks = 500;
    parser->report_left = 2000;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (std::size_t i = 0; i < kBlocks; ++i) {
        const Bytes& block = blocks[i % 2];
        // Takes out what the block itself adds, as if it were of no size.
        parser->report_left -= kReportShare * static_cast<std::int64_t>(block.size());
        expect_survives(block);
    }
    const std::string lines = testing::internal::GetCapturedStdout();
    const std::string warnings = testing::internal::GetCapturedStderr();
    // A line for each block would come to 500; 100 bytes are counted for each, and a call ends with
    // what it has begun.
    EXPECT_GT(count_of(lines, "FAILURE"), 10U);
    EXPECT_LT(count_of(lines, "FAILURE"), 50U);
    EXPECT_EQ(count_of(warnings, "Further compliance lines of this stream are left out"), 1U);
}

TEST_F(Hostile, EveryByteOfAnAc3HeaderChanged) {
    Ac3Spec spec;
    spec.frmsizecod = 0;
    spec.addbsi = Bytes(3, 1);
    const Bytes frame = build_ac3_frame(spec);
    ExpectText quiet;
    for (std::size_t byte = 0; byte < frame.size(); ++byte) {
        for (const unsigned value : {0x00U, 0x55U, 0xFFU}) {
            Bytes changed = frame;
            changed[byte] = static_cast<std::uint8_t>(value);
            expect_survives(changed);
        }
    }
    expect_still_good();
}

TEST_F(Hostile, TruncatedAtEveryByte) {
    const Bytes block = join({build_eac3_frame(full_header()), build_ac3_frame({})});
    ExpectText quiet;
    for (std::size_t size = 0; size <= block.size(); ++size) {
        expect_survives(Bytes(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size)));
    }
    expect_still_good();
}

TEST_F(Hostile, FramesShorterThanTheirHeader) {
    ExpectText quiet;
    for (unsigned words = 1; words < 100; ++words) {
        Eac3Spec spec = full_header();
        spec.words = words;
        const Bytes frame = build_eac3_frame(spec);
        expect_survives(frame);
        expect_survives(join({frame, Bytes(8, 0)}));
        expect_survives(join({frame, good}));
        expect_survives(join({test_support::swapped(frame), good}));
    }
    expect_still_good();
}

TEST_F(Hostile, AddbsiAtTheEndOfTheData) {
    // The header ends before the frame's last words; 64 bytes of addbsi don't fit there.
    Eac3Spec spec;
    spec.words = 8;
    spec.addbsi = Bytes(64, 0xFF);
    Bytes frame = build_eac3_frame(spec);
    test_support::repair_eac3_crc(frame);
    const RunResult run = run_once(frame);
    EXPECT_EQ(run.result, 0) << run.err;
    EXPECT_EQ(run.info.program[0].addbsi_len, 64U);
    EXPECT_EQ(run.info.program[0].addbsi[0], 0xFF);
    EXPECT_EQ(run.info.program[0].addbsi[63], 0) << "nothing stands there";
    ExpectText quiet;
    expect_survives(frame);
}

TEST_F(Hostile, WhatLiesBehindAFrameDoesNotDependOnEarlierFrames) {
    Eac3Spec spec;
    spec.words = 8;
    spec.addbsi = Bytes(64, 0xFF);
    const Bytes frame = build_eac3_frame(spec);
    OapParser used = oap_es_parser_new(1);
    run(used, build_eac3_frame(full_header()));
    EXPECT_EQ(run(used, frame).info.program[0].addbsi, run_once(frame).info.program[0].addbsi);
}

TEST_F(Hostile, OneWordFrameWithNothingBehind) {
    // The three words that a size is read from are there; the frame itself is the sync word alone.
    ExpectText quiet;
    expect_survives({0x0B, 0x77, 0x00, 0x00, 0x3F, 0x87});
    expect_still_good();
}

TEST_F(Hostile, NineIndependentFramesInATimeSlice) {
    Bytes block = good;
    Eac3Spec spec;
    spec.substreamid = 1;
    for (int i = 0; i < 7; ++i) {
        block = join({block, build_eac3_frame(spec)});
    }
    RunResult result = run_once(block);
    EXPECT_EQ(result.info.num_programs, 8U);
    result = run_once(join({block, build_eac3_frame(spec)}));
    EXPECT_EQ(result.result, 2);
    EXPECT_EQ(count_of(result.err, "Multiple independent frames exist for the same program."), 1U);
    ExpectText quiet;
    for (int i = 0; i < 20; ++i) {
        expect_survives(build_eac3_frame(spec));
        expect_survives(block);
    }
    expect_still_good();
}

TEST_F(Hostile, DependentFramesOnly) {
    ExpectText quiet;
    Eac3Spec spec;
    spec.strmtyp = 1;
    for (unsigned i = 0; i < 40; ++i) {
        spec.substreamid = i % 8;
        expect_survives(build_eac3_frame(spec));
    }
    spec.strmtyp = 0;
    spec.substreamid = 1;
    expect_survives(build_eac3_frame(spec));
    spec.strmtyp = 1;
    for (unsigned i = 0; i < 40; ++i) {
        spec.substreamid = i % 8;
        expect_survives(build_eac3_frame(spec));
    }
    expect_still_good();
}

TEST_F(Hostile, RandomFramesWithGoodCrc) {
    std::minstd_rand random(11);
    ExpectText quiet;
    for (int round = 0; round < 3000; ++round) {
        Bytes block;
        const int frames = 1 + static_cast<int>(random() % 4);
        for (int i = 0; i < frames; ++i) {
            const unsigned words = 3 + random() % 40;
            Bytes frame(words * 2);
            for (std::uint8_t& byte : frame) {
                byte = static_cast<std::uint8_t>(random() >> 8U);
            }
            const unsigned type = random() % 4 == 0 ? 0x40U : 0U;
            frame[0] = 0x0B;
            frame[1] = 0x77;
            frame[2] = static_cast<std::uint8_t>(type | (random() % 3 == 0 ? 0x08U : 0U));
            frame[3] = static_cast<std::uint8_t>(words - 1);
            frame[5] = static_cast<std::uint8_t>((frame[5] & 7U) | 0x80U);
            test_support::repair_eac3_crc(frame);
            block = join({block, frame});
        }
        expect_survives(block);
    }
    expect_still_good();
}

TEST_F(Hostile, RandomBytes) {
    std::minstd_rand random(13);
    ExpectText quiet;
    for (int round = 0; round < 2000; ++round) {
        Bytes block(random() % 200);
        for (std::uint8_t& byte : block) {
            byte = static_cast<std::uint8_t>(random() >> 8U);
        }
        if (block.size() > 6) {
            block[0] = 0x0B;
            block[1] = 0x77;
        }
        expect_survives(block);
    }
    expect_still_good();
}

}  // namespace
}  // namespace mediasplit
