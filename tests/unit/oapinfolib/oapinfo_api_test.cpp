#include "oapinfolib/src/oapinfo_api.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "oapinfolib/src/disp.h"
#include "oapinfolib/src/oap_parser_state.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

namespace mediasplit {
namespace {

using test_support::Ac3Spec;
using test_support::build_ac3_frame;
using test_support::build_eac3_frame;
using test_support::Bytes;
using test_support::Eac3Spec;
using test_support::join;
using test_support::swapped;

Bytes independent(unsigned id = 0, unsigned words = 384) {
    Eac3Spec spec;
    spec.substreamid = id;
    spec.words = words;
    return build_eac3_frame(spec);
}

Bytes dependent(unsigned id = 0, unsigned chanmap = 0x1A00) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    spec.substreamid = id;
    spec.acmod = 6;
    spec.lfeon = 0;
    spec.chanmap = chanmap;
    spec.words = 256;
    return build_eac3_frame(spec);
}

TEST(OapParser, DefaultsOfANewParser) {
    const OapParser parser = oap_es_parser_new(1);
    ASSERT_NE(parser, nullptr);
    EXPECT_EQ(parser->disp_flags, 81);
    EXPECT_EQ(parser->compliance_mode, 1);
    EXPECT_FALSE(parser->stop_at_first_failure);
    EXPECT_EQ(parser->display_word, 2);
    EXPECT_EQ(oap_es_parser_new(0)->display_word, 0);
}

TEST(OapParser, QueryGivesSizeAndVersion) {
    DitQuery query;
    EXPECT_EQ(oapi_dit_query(query), 0);
    EXPECT_EQ(query.state_size, 364864U);
    EXPECT_EQ(query.version.major, 5);
    EXPECT_EQ(query.version.minor, 1);
    EXPECT_EQ(query.version.update, 6);
    EXPECT_STRNE(query.banner, "");
}

TEST(OapParser, DeleteOfNoneIsTold) {
    OapParser parser = oap_es_parser_new(1);
    EXPECT_EQ(oap_es_parser_delete(parser), 0);
    EXPECT_EQ(parser, nullptr);
    EXPECT_EQ(oap_es_parser_delete(parser), 2);
}

TEST(OapParser, NothingToParseWithIsRefused) {
    OapEsInfo info;
    const Bytes frame = independent();
    EXPECT_EQ(oap_es_parser(frame.data(), 768, nullptr, &info), 2);
    const OapParser parser = oap_es_parser_new(1);
    EXPECT_EQ(oap_es_parser(nullptr, 768, parser.get(), &info), 2);
    EXPECT_EQ(oap_es_parser(frame.data(), 768, parser.get(), nullptr), 2);
}

TEST(OapParser, OneFrameIsOneFrameset) {
    const RunResult run = run_once(independent());
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.info.byte_swapped, 0U);
    EXPECT_EQ(run.info.framesets, 1U);
    EXPECT_EQ(run.info.remainder_blocks, 0U);
    EXPECT_EQ(run.info.data_rate, 192U);
    EXPECT_EQ(run.info.num_programs, 1U);
    EXPECT_EQ(run.info.program[0].bsid, 16U);
    EXPECT_EQ(run.info.program[0].acmod, 7U);
    EXPECT_EQ(run.info.program[0].lfeon, 1U);
    EXPECT_EQ(run.info.program[0].chanmap, 0U);
    EXPECT_EQ(run.info.program[0].num_dependent, 0U);
    EXPECT_EQ(run.info.program[0].addbsie, 0U);
    EXPECT_EQ(run.info.program[0].addbsi_len, 0U);
}

TEST(OapParser, ProgramsAndDependentsAreFilled) {
    Eac3Spec joc;
    joc.addbsi = Bytes{1, 16};
    joc.info = test_support::InfoSpec{.bsmod = 2};
    Eac3Spec second;
    second.substreamid = 1;
    second.acmod = 2;
    second.lfeon = 0;
    second.fscod = 0;
    Eac3Spec last;
    last.strmtyp = 1;
    last.addbsi = Bytes(64, 0x11);
    last.acmod = 2;
    last.lfeon = 0;
    last.chanmap = 0x0010;
    last.substreamid = 1;
    const RunResult run =
        run_once(join({build_eac3_frame(joc), dependent(0), build_eac3_frame(last),
                       build_eac3_frame(second), dependent(0, 0x0200)}));
    EXPECT_EQ(run.result, 1) << "a dependent id other than 0";
    const OapEsInfo& info = run.info;
    ASSERT_EQ(info.num_programs, 2U);
    EXPECT_EQ(info.framesets, 1U);
    const OapProgramInfo& first = info.program[0];
    EXPECT_EQ(first.num_dependent, 2U);
    EXPECT_EQ(first.bsmod, 2U);
    EXPECT_EQ(first.addbsie, 1U);
    EXPECT_EQ(first.addbsi_len, 2U);
    EXPECT_EQ(first.addbsi[0], 1);
    EXPECT_EQ(first.addbsi[1], 16);
    EXPECT_EQ(first.dependent[0].strmtyp, 1U);
    EXPECT_EQ(first.dependent[0].acmod, 6U);
    EXPECT_EQ(first.dependent[0].chanmap, 0x1A00U);
    EXPECT_EQ(first.dependent[1].substreamid, 1U);
    EXPECT_EQ(first.dependent[1].chanmap, 0x0010U);
    EXPECT_EQ(first.dependent[1].addbsi_len, 64U);
    EXPECT_EQ(first.dependent[1].addbsi[63], 0x11);
    EXPECT_EQ(first.dependent[2].bsid, 0U);
    EXPECT_EQ(info.program[1].substreamid, 1U);
    EXPECT_EQ(info.program[1].acmod, 2U);
    EXPECT_EQ(info.program[1].num_dependent, 1U);
    EXPECT_EQ(info.program[1].dependent[0].chanmap, 0x0200U);
    EXPECT_EQ(info.program[2].bsid, 0U);
    EXPECT_EQ(info.data_rate, 192U + 128U + 192U + 192U + 128U);
}

TEST(OapParser, SevenPointOneIsGood) {
    const RunResult run = run_once(join({independent(), dependent(), independent(), dependent()}));
    EXPECT_EQ(run.result, 0) << run.out;
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.info.program[0].num_dependent, 1U);
    EXPECT_EQ(run.info.data_rate, 320U);
}

TEST(OapParser, EmptyBlockIsGood) {
    const RunResult run = run_once({});
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.info.num_programs, 0U);
    EXPECT_EQ(run.info.framesets, 0U);
}

TEST(OapParser, StrayByteEndsTheBlock) {
    for (const Bytes& block : {Bytes{0x0B}, join({independent(), Bytes{0x0B}})}) {
        const RunResult run = run_once(block);
        EXPECT_EQ(run.result, 2);
        EXPECT_EQ(run.err, fatal_text("Cannot read from input file", "dit_fio", 85));
        EXPECT_EQ(run.info.num_programs, 0U) << "untouched";
    }
}

TEST(OapParser, WrongSyncEndsTheBlock) {
    const RunResult run = run_once(join({independent(), Bytes{0, 0}, independent()}));
    EXPECT_EQ(run.result, 2);
    EXPECT_EQ(count_of(run.err,
                       "FATAL ERROR:  Invalid syncword detected while detecting byte "
                       "order\n"),
              1U);
}

TEST(OapParser, CutFrames) {
    const Bytes frame = independent();
    for (std::size_t size = 1; size < frame.size(); ++size) {
        const RunResult run =
            run_once(Bytes(frame.begin(), frame.begin() + static_cast<int>(size)));
        if (size == 6) {
            EXPECT_EQ(run.result, 0);
            EXPECT_EQ(run.err, fatal_text("Incomplete frame", "oapinfo_api", 313));
        } else {
            EXPECT_EQ(run.result, 2) << size;
            EXPECT_EQ(count_of(run.err, "FATAL ERROR:  Cannot read from input file\n"), 1U);
        }
        EXPECT_EQ(run.info.num_programs, 0U);
    }
}

TEST(OapParser, IncompleteFrameGivesTheResultThatStood) {
    OapParser parser = oap_es_parser_new(1);
    Eac3Spec spec;
    spec.fscod = 1;
    EXPECT_EQ(run(parser, build_eac3_frame(spec)).result, 1);
    const Bytes frame = independent();
    EXPECT_EQ(run(parser, Bytes(frame.begin(), frame.begin() + 6)).result, 1);
}

TEST(OapParser, ByteOrdersMayChangeBetweenFrames) {
    const Bytes frame = independent();
    RunResult run = run_once(swapped(frame));
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.info.byte_swapped, 1U);
    EXPECT_EQ(run.info.program[0].acmod, 7U);
    EXPECT_EQ(run.err, "");
    run = run_once(join({frame, swapped(frame), swapped(frame), frame}));
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.info.byte_swapped, 1U);
    EXPECT_EQ(run.info.framesets, 4U);
    EXPECT_EQ(run.err,
              "\nWARNING:  FIO: Byte order status changed\n"
              "\nWARNING:  FIO: Byte order status changed\n");
}

TEST(OapParser, CrcErrorOfEac3EndsTheBlockSilently) {
    Eac3Spec bad;
    bad.good_crc = false;
    const RunResult run = run_once(join({independent(), build_eac3_frame(bad), independent()}));
    EXPECT_EQ(run.result, 2);
    EXPECT_EQ(run.err + run.out, "");
    EXPECT_EQ(run.info.num_programs, 0U);
}

const std::string kRow68 =
    "    068 - FAILURE: Orvel Audio Plus: Primary audio: I0: BSID is not 16.\n";
const std::string kRow166 =
    "    166 - FAILURE: No CRC errors shall exist in the bitstream (for HD-DVD and BD)\n";

TEST(OapParser, Ac3StreamFailsByItsBsidAlone) {
    const Bytes frame = build_ac3_frame({});
    const RunResult run = run_once(join({frame, frame, frame}));
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.info.framesets, 3U);
    EXPECT_EQ(run.info.data_rate, 192U);
    EXPECT_EQ(run.info.program[0].bsid, 8U);
    EXPECT_EQ(run.out, kRow68 + kRow68) << "once for the time slices, once for the stream";
    EXPECT_EQ(run.err, "");
}

TEST(OapParser, PartialCrcErrorOfAc3GoesOn) {
    Ac3Spec bad;
    bad.good_crc2 = false;
    const Bytes good = build_ac3_frame({});
    const RunResult run = run_once(join({good, build_ac3_frame(bad), good}));
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.info.framesets, 3U);
    EXPECT_EQ(run.out, kRow68 + kRow68 + kRow166 + kRow68 + kRow68 + kRow166);
    bad.good_crc1 = false;
    EXPECT_EQ(run_once(join({good, build_ac3_frame(bad)})).result, 2);
}

TEST(OapParser, UnsupportedHeadersEndTheBlock) {
    for (const unsigned bsid : {9U, 10U, 17U, 31U}) {
        Eac3Spec spec;
        spec.bsid = bsid;
        const RunResult run = run_once(build_eac3_frame(spec));
        EXPECT_EQ(run.result, 2);
        EXPECT_EQ(count_of(run.err, "FATAL ERROR:  Unsupported bitstream id\n"), 1U) << bsid;
    }
    Eac3Spec half;
    half.fscod = 3;
    EXPECT_EQ(run_once(build_eac3_frame(half)).result, 2);
}

TEST(OapParser, FrameOutOfPlaceEndsTheBlock) {
    const RunResult run = run_once(dependent());
    EXPECT_EQ(run.result, 2);
    EXPECT_EQ(run.err, fatal_text("Invalid bitstream detected.  Dependent stream type has no "
                                  "associated independent frames.",
                                  "tsi", 126) +
                           fatal_text("Processing error in DIT subroutine", "oapinfo_api", 339));
    EXPECT_EQ(run_once(join({independent(), dependent(), dependent()})).result, 2);
}

TEST(OapParser, LargestFrameIsRead) {
    const RunResult run = run_once(independent(0, 2048));
    EXPECT_EQ(run.info.data_rate, 1024U);
    EXPECT_EQ(run.info.framesets, 1U);
}

TEST(OapParser, SmallestFrameIsToldNotRead) {
    // One word, the sync word alone: its header lies outside it and the next word is no sync word.
    const Bytes block{0x0B, 0x77, 0x00, 0x00, 0x3F, 0x87, 0xFF, 0xFF};
    EXPECT_EQ(run_once(block).result, 2);
}

TEST(OapParser, ShortFramesCountBlocks) {
    Eac3Spec spec;
    spec.numblkscod = 1;
    Bytes block;
    for (int i = 0; i < 4; ++i) {
        spec.convsync = i % 3 == 0 ? 1 : 0;
        block = join({block, build_eac3_frame(spec)});
    }
    const RunResult run = run_once(block);
    EXPECT_EQ(run.info.framesets, 1U);
    EXPECT_EQ(run.info.remainder_blocks, 2U);
    EXPECT_EQ(run.result, 1);
    EXPECT_EQ(run.out.find("    172 - FAILURE: Orvel Audio Plus: Program: Program shall consist "
                           "only of complete 6-block framesets\n"),
              0U)
        << run.out;
}

TEST(OapParser, WholeFramesetsOfShortFramesAreGood) {
    for (const unsigned code : {0U, 1U, 2U}) {
        Eac3Spec spec;
        spec.numblkscod = code;
        const int frames = code == 0 ? 6 : 4 - static_cast<int>(code);
        Bytes block;
        for (int i = 0; i < 3 * frames; ++i) {
            spec.convsync = i % frames == 0 ? 1 : 0;
            block = join({block, build_eac3_frame(spec)});
        }
        const RunResult run = run_once(block);
        EXPECT_EQ(run.result, 0) << run.out;
        EXPECT_EQ(run.info.framesets, 3U);
        EXPECT_EQ(run.info.remainder_blocks, 0U);
    }
}

TEST(OapParser, LateConverterSyncGivesRow170) {
    Eac3Spec spec;
    spec.numblkscod = 0;
    Bytes block;
    for (int i = 0; i < 8; ++i) {
        spec.convsync = i % 6 == 2 ? 1 : 0;
        block = join({block, build_eac3_frame(spec)});
    }
    const RunResult run = run_once(block);
    EXPECT_EQ(run.result, 1);
    EXPECT_NE(run.out.find("    170 - FAILURE: "), std::string::npos);
    EXPECT_EQ(run.out.find("    171 - "), std::string::npos);
}

TEST(OapParser, FramesOf44kGetRows63And74) {
    Eac3Spec spec;
    spec.fscod = 1;
    Bytes block;
    for (int i = 0; i < 6; ++i) {
        spec.words = 417 + static_cast<unsigned>(i % 2);
        block = join({block, build_eac3_frame(spec)});
    }
    const RunResult run = run_once(block);
    EXPECT_EQ(run.result, 1);
    EXPECT_NE(run.out.find("    063 - "), std::string::npos);
    EXPECT_NE(run.out.find("    074 - "), std::string::npos);
    EXPECT_EQ(run.out.find("    077 - "), std::string::npos);
}

TEST(OapParser, ComplianceLinesComeOnceForATimeSlice) {
    Eac3Spec spec;
    spec.fscod = 1;
    Eac3Spec second = spec;
    second.substreamid = 1;
    const RunResult run = run_once(join({build_eac3_frame(spec), build_eac3_frame(second)}));
    EXPECT_EQ(run.out,
              "    074 - FAILURE: Orvel Audio Plus: I0: Sample rate is not 48kHz.\n"
              "    074 - FAILURE: Orvel Audio Plus: I0: Sample rate is not 48kHz.\n");
}

TEST(OapParser, FailureStandsOverLaterBlocks) {
    OapParser parser = oap_es_parser_new(1);
    Eac3Spec spec;
    spec.fscod = 1;
    EXPECT_EQ(run(parser, independent()).result, 0);
    EXPECT_EQ(run(parser, build_eac3_frame(spec)).result, 1);
    EXPECT_EQ(run(parser, independent()).result, 1);
    EXPECT_EQ(run_once(independent()).result, 0) << "instances share nothing";
}

TEST(OapParser, BlocksFollowEachOtherLikeOneStream) {
    OapParser parser = oap_es_parser_new(1);
    for (int i = 0; i < 20; ++i) {
        const RunResult result = run(parser, independent());
        EXPECT_EQ(result.result, 0);
        EXPECT_EQ(result.out + result.err, "");
        EXPECT_EQ(result.info.framesets, 1U) << i;
        EXPECT_EQ(result.info.data_rate, 192U);
    }
    EXPECT_EQ(parser->dit->timeslices.timeslice_count, 20);
    EXPECT_EQ(parser->dit->timeslices.frame_count, 20);
}

TEST(OapParser, ShortFramesOverBlocksHaveNoFlushFailureAtWholeFramesets) {
    OapParser parser = oap_es_parser_new(1);
    Eac3Spec spec;
    spec.numblkscod = 2;
    for (int i = 0; i < 6; ++i) {
        spec.convsync = 1;
        const Bytes first = build_eac3_frame(spec);
        spec.convsync = 0;
        const RunResult result = run(parser, join({first, build_eac3_frame(spec)}));
        EXPECT_EQ(result.result, 0) << result.out;
        EXPECT_EQ(result.info.framesets, 1U);
    }
}

TEST(OapParser, EmptyBlockBetweenKeepsTheLastPrograms) {
    OapParser parser = oap_es_parser_new(1);
    run(parser, independent());
    const RunResult result = run(parser, {});
    EXPECT_EQ(result.result, 0);
    EXPECT_EQ(result.info.num_programs, 1U);
    EXPECT_EQ(result.info.framesets, 0U);
}

TEST(OapParser, FailedFirstBlockIsMadeUpForByTheNext) {
    OapParser parser = oap_es_parser_new(1);
    EXPECT_EQ(run(parser, join({independent(), Bytes{1, 2}})).result, 2);
    EXPECT_EQ(run(parser, independent()).info.framesets, 2U)
        << "no report had stood, so both time slices count";
}

TEST(OapParser, UnreadableBlockDoesNotHarmTheNext) {
    OapParser parser = oap_es_parser_new(1);
    run(parser, independent());
    for (const Bytes& bad : {dependent(7), independent(3), Bytes{1, 2, 3}, Bytes(8, 0x0B)}) {
        run(parser, bad);
        const RunResult result = run(parser, independent());
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.info.num_programs, 1U);
        EXPECT_EQ(result.info.program[0].num_dependent, 0U);
    }
}

TEST(OapParser, GapInDependentIdsIsAWarning) {
    const RunResult run = run_once(join({independent(), dependent(1)}));
    EXPECT_EQ(run.err,
              "\nWARNING:  Invalid bitstream detected.  Dependent frames are out of order.\n");
    EXPECT_EQ(run.info.program[0].num_dependent, 1U);
}

TEST(OapParser, StopFlagEndsTheBlockAtTheFirstFailure) {
    OapParser parser = oap_es_parser_new(1);
    parser->stop_at_first_failure = true;
    Eac3Spec spec;
    spec.fscod = 1;
    const Bytes frame = build_eac3_frame(spec);
    const RunResult result = run(parser, join({frame, frame, frame, frame}));
    EXPECT_EQ(result.result, 1);
    EXPECT_EQ(parser->dit->timeslices.timeslice_count, 2);
}

TEST(OapParser, OtherModesAreChosenByNumber) {
    OapParser parser = oap_es_parser_new(1);
    parser->compliance_mode = 2;
    const Bytes core = build_ac3_frame({});
    EXPECT_EQ(run(parser, join({core, core})).result, 0);
    EXPECT_EQ(run(parser, independent()).result, 1);
    parser = oap_es_parser_new(1);
    parser->compliance_mode = 0;
    EXPECT_EQ(run(parser, join({core, core})).result, 0);
    parser = oap_es_parser_new(1);
    parser->compliance_mode = 7;
    EXPECT_EQ(run(parser, core).result, 7169) << "the flush's code comes up";
    parser = oap_es_parser_new(1);
    parser->compliance_mode = 7;
    EXPECT_EQ(run(parser, join({core, core})).result, 2);
}

TEST(OapParser, Ac3CoreWithItsExtensionIsGoodForBluray) {
    OapParser parser = oap_es_parser_new(1);
    parser->compliance_mode = 2;
    const Bytes slice = join({build_ac3_frame({.frmsizecod = 30}), dependent()});
    const RunResult result = run(parser, join({slice, slice, slice}));
    EXPECT_EQ(result.result, 0) << result.out;
    EXPECT_EQ(result.info.program[0].bsid, 8U);
    EXPECT_EQ(result.info.program[0].num_dependent, 1U);
    EXPECT_EQ(result.info.program[0].dependent[0].bsid, 16U);
    EXPECT_EQ(result.info.framesets, 3U);
    const RunResult alone = run(parser, independent());
    EXPECT_EQ(alone.result, 1) << "no E-AC-3 core there";
    EXPECT_NE(alone.out.find("    117 - "), std::string::npos);
}

TEST(OapParser, SecondaryStreamsOfBothRuleSets) {
    Eac3Spec spec;
    spec.acmod = 1;
    spec.lfeon = 0;
    spec.words = 192;
    OapParser parser = oap_es_parser_new(1);
    parser->compliance_mode = 3;
    parser->disp_flags = kDispCompliance | kDispSummaryCompliance | kDispWarnings;
    const Bytes plain = build_eac3_frame(spec);
    EXPECT_EQ(run(parser, join({plain, plain})).result, 0);
    spec.mix = test_support::MixSpec{.extpgmscl = 40};
    const Bytes scaled = build_eac3_frame(spec);
    parser = oap_es_parser_new(1);
    parser->compliance_mode = 4;
    parser->disp_flags = kDispCompliance | kDispSummaryCompliance | kDispWarnings;
    RunResult result = run(parser, join({scaled, scaled}));
    EXPECT_EQ(result.result, 0);
    EXPECT_EQ(result.out, "");
    spec.mix->extpgmscl.reset();
    result = run(parser, build_eac3_frame(spec));
    EXPECT_EQ(result.result, 0) << "a warning is no failure";
    EXPECT_EQ(count_of(result.out,
                       "    178 - WARNING: Blu-ray: Secondary Audio: EC3 (I0): mixdef != 3 and "
                       "extpgmscle = 0\n"),
              2U)
        << result.out;
}

TEST(OapParser, InstancesOnThreadsAreIndependent) {
    const Bytes block = join({independent(), dependent(), independent(), dependent()});
    std::array<int, 4> results{-1, -1, -1, -1};
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (int& result : results) {
        threads.emplace_back([&block, &result] {
            const OapParser parser = oap_es_parser_new(1);
            OapEsInfo info;
            result = 0;
            for (int call = 0; call < 50; ++call) {
                result |= oap_es_parser(block.data(), static_cast<std::uint32_t>(block.size()),
                                        parser.get(), &info);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results, (std::array<int, 4>{0, 0, 0, 0}));
}

TEST(OapParser, FullReportOfTwoDifferentTimeSlices) {
    OapParser parser = oap_es_parser_new(1);
    parser->disp_flags = kDispProgram | kDispTotals;
    const RunResult result =
        run(parser, join({independent(0, 384), independent(0, 384), independent(0, 512)}));
    EXPECT_EQ(count_of(result.out, "    Combined data rate: 192.0 kbps\n"), 1U) << result.out;
    EXPECT_EQ(count_of(result.out, "    Combined data rate: 256.0 kbps\n"), 1U);
    EXPECT_LT(result.out.find("192.0 kbps"), result.out.find("256.0 kbps"));
    EXPECT_NE(result.out.find("Total number of timeslices: 3\nTotal number of frames: 3\n"
                              "Total playing time: 0.1 seconds\nOverall data rate: 213.3 kbps\n"
                              "Overall bitstream status: No CRC errors\n"),
              std::string::npos)
        << result.out;
}

}  // namespace
}  // namespace mediasplit
