#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/bsid_tables.h"
#include "tests/support/eac3_builder.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

namespace mediasplit {
namespace {

using test_support::Ac3Spec;
using test_support::build_ac3_frame;

TEST(BsidOa, ReadsEveryFieldOfTheHeader) {
    Ac3Spec spec;
    spec.fscod = 1;
    spec.frmsizecod = 21;
    spec.bsmod = 5;
    spec.acmod = 7;
    spec.cmixlev = 2;
    spec.surmixlev = 1;
    spec.dialnorm = {31, 0};
    spec.compr[0] = 0xAB;
    spec.langcod[0] = 0xCD;
    spec.audprod[0] = {.mixlevel = 21, .roomtyp = 2};
    spec.copyrightb = 1;
    spec.origbs = 0;
    spec.timecod1 = 0x2AAA;
    spec.timecod2 = 0x1555;
    spec.addbsi = test_support::Bytes{1, 2, 0xFF};
    const HeaderResult header = unpack(build_ac3_frame(spec));
    const BitstreamInfo& info = header.info;
    ASSERT_EQ(header.result, kBsidGood);
    EXPECT_EQ(info.syncword, 0x0B77);
    EXPECT_NE(info.crc1, 0);
    EXPECT_EQ(info.fscod, 1);
    EXPECT_EQ(info.frmsizecod, 21);
    EXPECT_EQ(info.bsid, 8);
    EXPECT_EQ(info.bsmod, 5);
    EXPECT_EQ(info.acmod, 7);
    EXPECT_EQ(info.lfeon, 1);
    EXPECT_EQ(info.nfchans, 5);
    EXPECT_EQ(info.nchans, 6);
    EXPECT_EQ(info.nprograms, 1);
    EXPECT_EQ(info.karaoke, 0);
    EXPECT_EQ(info.cmixlev, 2);
    EXPECT_EQ(info.surmixlev, 1);
    EXPECT_EQ(info.dialnorm[0], 31);
    EXPECT_EQ(info.compre[0], 1);
    EXPECT_EQ(info.compr[0], 0xAB00);
    EXPECT_EQ(info.langcode[0], 1);
    EXPECT_EQ(info.langcod[0], 0xCD);
    EXPECT_EQ(info.audprodie[0], 1);
    EXPECT_EQ(info.mixlevel[0], 21);
    EXPECT_EQ(info.roomtyp[0], 2);
    EXPECT_EQ(info.copyrightb, 1);
    EXPECT_EQ(info.origbs, 0);
    EXPECT_EQ(info.timecod1e, 1);
    EXPECT_EQ(info.timecod1, 0x2AAA);
    EXPECT_EQ(info.timecod2e, 1);
    EXPECT_EQ(info.timecod2, 0x1555);
    EXPECT_EQ(info.addbsie, 1);
    EXPECT_EQ(info.addbsil, 2);
    EXPECT_EQ(info.addbsi[2], 0xFF);
    EXPECT_EQ(info.numblks, 6);
    EXPECT_EQ(info.strmtyp, 0);
    EXPECT_EQ(info.substreamid, 0);
    EXPECT_EQ(info.convsync, 1);
}

TEST(BsidOa, DualMonoHasTwoSetsOfProgramFields) {
    Ac3Spec spec;
    spec.acmod = 0;
    spec.lfeon = 0;
    spec.dialnorm = {12, 20};
    spec.compr = {1, 2};
    spec.langcod[1] = 3;
    spec.audprod[1] = {.mixlevel = 4, .roomtyp = 1};
    const BitstreamInfo info = unpack(build_ac3_frame(spec)).info;
    EXPECT_EQ(info.nprograms, 2);
    EXPECT_EQ(info.dialnorm, (BitstreamInfo::Pair{12, 20}));
    EXPECT_EQ(info.compr, (BitstreamInfo::Pair{0x100, 0x200}));
    EXPECT_EQ(info.langcode, (BitstreamInfo::Pair{0, 1}));
    EXPECT_EQ(info.langcod[1], 3);
    EXPECT_EQ(info.mixlevel[1], 4);
    EXPECT_EQ(info.roomtyp[1], 1);
    spec.acmod = 1;
    EXPECT_EQ(unpack(build_ac3_frame(spec)).info.dialnorm, (BitstreamInfo::Pair{12, 0}));
}

TEST(BsidOa, MixLevelsStandByCodingMode) {
    Ac3Spec spec;
    spec.cmixlev = 1;
    spec.surmixlev = 2;
    spec.dsurmod = 2;
    spec.dialnorm = {9, 9};
    for (unsigned acmod = 0; acmod < 8; ++acmod) {
        spec.acmod = acmod;
        const BitstreamInfo info = unpack(build_ac3_frame(spec)).info;
        EXPECT_EQ(info.cmixlev, acmod == 3 || acmod == 5 || acmod == 7 ? 1 : 0) << acmod;
        EXPECT_EQ(info.surmixlev, acmod >= 4 ? 2 : 0) << acmod;
        EXPECT_EQ(info.dsurmod, acmod == 2 ? 2 : 0) << acmod;
        EXPECT_EQ(info.dialnorm[0], 9) << acmod;
        EXPECT_EQ(info.nchans, kChannelCount[acmod] + 1) << acmod;
    }
}

TEST(BsidOa, KaraokeIsBsmodSevenWithTwoChannelsOrMore) {
    Ac3Spec spec;
    spec.bsmod = 7;
    spec.acmod = 2;
    EXPECT_EQ(unpack(build_ac3_frame(spec)).info.karaoke, 1);
    spec.acmod = 1;
    EXPECT_EQ(unpack(build_ac3_frame(spec)).info.karaoke, 0);
}

TEST(BsidOa, AlternateSyntaxReadsTheDownmixFields) {
    Ac3Spec spec;
    spec.bsid = 6;
    spec.acmod = 7;
    spec.xbsi1 = {
        .dmixmod = 2, .ltrtcmixlev = 1, .ltrtsurmixlev = 1, .lorocmixlev = 6, .lorosurmixlev = 7};
    spec.xbsi2 = {.dsurexmod = 2, .dheadphonmod = 1, .adconvtyp = 1, .xbsi2 = 0x5A, .encinfo = 1};
    spec.addbsi = test_support::Bytes{0x77};
    const BitstreamInfo info = unpack(build_ac3_frame(spec)).info;
    EXPECT_EQ(info.xbsi1e, 1);
    EXPECT_EQ(info.dmixmod, 2);
    EXPECT_EQ(info.ltrtcmixlev, 1);
    EXPECT_EQ(info.ltrtsurmixlev, 3) << "a reserved code stands for 3";
    EXPECT_EQ(info.lorocmixlev, 6);
    EXPECT_EQ(info.lorosurmixlev, 7);
    EXPECT_EQ(info.mixlevels_present, 1);
    EXPECT_EQ(info.dmixmod_present, 1);
    EXPECT_EQ(info.xbsi2e, 1);
    EXPECT_EQ(info.dsurexmod, 2);
    EXPECT_EQ(info.dsurexmod_present, 1);
    EXPECT_EQ(info.dheadphonmod, 0) << "stands for 2/0 alone";
    EXPECT_EQ(info.dheadphonmod_present, 0);
    EXPECT_EQ(info.adconvtyp[0], 1);
    EXPECT_EQ(info.xbsi2, 0x5A);
    EXPECT_EQ(info.encinfo, 1);
    EXPECT_EQ(info.timecod1e, 0);
    EXPECT_EQ(info.addbsi[0], 0x77);
}

TEST(BsidOa, AlternateSyntaxPassesOverFieldsOfFewChannels) {
    Ac3Spec spec;
    spec.bsid = 6;
    spec.acmod = 2;
    spec.xbsi1 = {
        .dmixmod = 2, .ltrtcmixlev = 1, .ltrtsurmixlev = 5, .lorocmixlev = 6, .lorosurmixlev = 7};
    spec.xbsi2 = {.dsurexmod = 2, .dheadphonmod = 1, .adconvtyp = 1};
    spec.addbsi = test_support::Bytes{0x77};
    const BitstreamInfo info = unpack(build_ac3_frame(spec)).info;
    EXPECT_EQ(info.xbsi1e, 1);
    EXPECT_EQ(info.dmixmod, 0);
    EXPECT_EQ(info.ltrtcmixlev, 4);
    EXPECT_EQ(info.lorosurmixlev, 4);
    EXPECT_EQ(info.mixlevels_present, 0);
    EXPECT_EQ(info.dsurexmod, 0);
    EXPECT_EQ(info.dheadphonmod, 1);
    EXPECT_EQ(info.dheadphonmod_present, 1);
    EXPECT_EQ(info.addbsi[0], 0x77);
}

TEST(BsidOa, FrameSizesAreThoseOfTheStandardsRule) {
    Ac3Spec spec;
    for (spec.fscod = 0; spec.fscod < 3; ++spec.fscod) {
        for (spec.frmsizecod = 0; spec.frmsizecod < 38; ++spec.frmsizecod) {
            EXPECT_EQ(frame_size(build_ac3_frame(spec)).words,
                      test_support::ac3_frame_words(spec.fscod, spec.frmsizecod));
        }
    }
}

TEST(BsidOa, ReservedSampleRateIsRefused) {
    test_support::Bytes frame = build_ac3_frame({});
    frame[4] |= 0xC0U;
    ExpectText expect;
    EXPECT_EQ(frame_size(frame).result, 1538);
    EXPECT_EQ(unpack(frame).result, 1538);
    expect.fatal("Invalid sampling rate code", "bsid_oa", 2);
}

TEST(BsidOa, FrameSizeCodeAbove37IsRefused) {
    test_support::Bytes frame = build_ac3_frame({});
    frame[4] = 38;
    ExpectText expect;
    EXPECT_EQ(frame_size(frame).result, 1539);
    EXPECT_EQ(unpack(frame).result, 1539);
    expect.fatal("Invalid frame size code", "bsid_oa", 2);
}

TEST(BsidOa, WrongSyncWordIsRefused) {
    test_support::Bytes frame = build_ac3_frame({});
    frame[0] = 0x0C;
    ExpectText expect;
    EXPECT_EQ(unpack(frame).result, 1537);
    expect.fatal("Invalid synchronization word", "bsid_oa", 1);
}

TEST(BsidOa, OnlyBsidsOfTheTwoSyntaxesAreTaken) {
    for (unsigned bsid = 0; bsid < 32; ++bsid) {
        test_support::Bytes frame = build_ac3_frame({});
        frame[5] = static_cast<std::uint8_t>(bsid << 3U);
        const bool supported = bsid < 9 || (bsid > 10 && bsid < 17);
        ExpectText expect;
        std::uint16_t found = 0xFF;
        const auto words = test_support::to_words(frame);
        BsodReader reader = reader_over(words);
        EXPECT_EQ(bsid_getbsid(reader, found), supported ? 0 : 1540) << bsid;
        EXPECT_EQ(found, bsid);
        EXPECT_EQ(frame_size(frame).result, supported ? 0 : 1540) << bsid;
        if (!supported) {
            EXPECT_EQ(unpack(frame).result, 1540);
        }
        expect.fatal("Unsupported bitstream id", "bsid_oa", supported ? 0 : 3);
    }
}

TEST(BsidOa, UnpackerRefusesTheOtherSyntax) {
    // A start whose bits make a good rate and size code in AC-3.
    test_support::Eac3Spec spec;
    spec.numblkscod = 0;
    spec.acmod = 2;
    spec.lfeon = 0;
    const auto words = test_support::to_words(test_support::build_eac3_frame(spec));
    BsodReader reader = reader_over(words);
    BitstreamInfo info;
    ExpectText expect;
    const int result = bsid_unpoa(reader, info);
    EXPECT_EQ(result, 1540);
    expect.fatal("Unsupported bitstream id", "bsid_oa", 1);
}

TEST(BsidOa, PeekingDoesntMoveTheReader) {
    const auto words = test_support::to_words(build_ac3_frame({}));
    BsodReader reader = reader_over(words);
    BitstreamInfo info;
    std::uint16_t size = 0;
    EXPECT_EQ(bsid_getfrmsize(reader, info, size), 0);
    EXPECT_EQ(reader.index, 0);
    EXPECT_EQ(reader.bit, 0);
    EXPECT_EQ(size, 384);
}

}  // namespace
}  // namespace mediasplit
