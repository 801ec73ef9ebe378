#include <gtest/gtest.h>

#include "oapinfolib/src/bsid.h"
#include "oapinfolib/src/bsid_tables.h"
#include "tests/support/eac3_builder.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

namespace mediasplit {
namespace {

using test_support::build_eac3_frame;
using test_support::Bytes;
using test_support::Eac3Spec;
using test_support::InfoSpec;
using test_support::MixSpec;

BitstreamInfo read(const Eac3Spec& spec) {
    const HeaderResult header = unpack(build_eac3_frame(spec));
    EXPECT_EQ(header.result, kBsidGood);
    return header.info;
}

TEST(BsidOap, ReadsTheFrameStart) {
    Eac3Spec spec;
    spec.substreamid = 5;
    spec.words = 2048;
    spec.fscod = 2;
    spec.numblkscod = 1;
    spec.acmod = 5;
    spec.lfeon = 0;
    spec.bsid = 12;
    spec.dialnorm = {24, 0};
    spec.compr[0] = 0x80;
    spec.convsync = 0;
    const BitstreamInfo info = read(spec);
    EXPECT_EQ(info.strmtyp, 0);
    EXPECT_EQ(info.substreamid, 5);
    EXPECT_EQ(info.frmsiz, 2048);
    EXPECT_EQ(info.fscod, 2);
    EXPECT_EQ(info.numblks, 2);
    EXPECT_EQ(info.acmod, 5);
    EXPECT_EQ(info.lfeon, 0);
    EXPECT_EQ(info.nfchans, 4);
    EXPECT_EQ(info.nchans, 4);
    EXPECT_EQ(info.bsid, 12);
    EXPECT_EQ(info.dialnorm[0], 24);
    EXPECT_EQ(info.compr[0], 0x8000);
    EXPECT_EQ(info.convsync, 0);
    EXPECT_EQ(info.copyrightb, 1) << "not in the stream";
    EXPECT_EQ(info.origbs, 1) << "not in the stream";
    EXPECT_EQ(info.lfemixlevcod, 10) << "not in the stream";
}

TEST(BsidOap, BlocksFollowTheirCode) {
    Eac3Spec spec;
    const int blocks[] = {1, 2, 3, 6};
    for (spec.numblkscod = 0; spec.numblkscod < 4; ++spec.numblkscod) {
        EXPECT_EQ(read(spec).numblks, blocks[spec.numblkscod]);
    }
}

TEST(BsidOap, SixBlocksHaveNoConverterSyncBit) {
    Eac3Spec spec;
    spec.convsync = 0;
    spec.addbsi = Bytes{0xA5};
    const BitstreamInfo info = read(spec);
    EXPECT_EQ(info.convsync, 1);
    EXPECT_EQ(info.addbsi[0], 0xA5);
}

TEST(BsidOap, DualMonoHasTwoDialnorms) {
    Eac3Spec spec;
    spec.acmod = 0;
    spec.lfeon = 0;
    spec.dialnorm = {3, 4};
    spec.compr[1] = 0x7F;
    EXPECT_EQ(read(spec).dialnorm, (BitstreamInfo::Pair{3, 4}));
    EXPECT_EQ(read(spec).compr, (BitstreamInfo::Pair{0, 0x7F00}));
    spec.acmod = 1;
    EXPECT_EQ(read(spec).dialnorm, (BitstreamInfo::Pair{3, 0}));
}

TEST(BsidOap, ChannelMapIsBuiltWhenAbsent) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    const std::uint16_t maps[] = {0xA000, 0x4000, 0xA000, 0xE000, 0xB000, 0xF000, 0xB800, 0xF800};
    for (spec.acmod = 0; spec.acmod < 8; ++spec.acmod) {
        spec.lfeon = 1;
        EXPECT_EQ(read(spec).chanmap, maps[spec.acmod] | 1) << spec.acmod;
        spec.lfeon = 0;
        EXPECT_EQ(read(spec).chanmap, maps[spec.acmod]) << spec.acmod;
    }
    spec.chanmap = 0x0660;
    spec.acmod = 6;
    const BitstreamInfo info = read(spec);
    EXPECT_EQ(info.chanmape, 1);
    EXPECT_EQ(info.chanmap, 0x0660);
}

TEST(BsidOap, IndependentFrameHasNoChannelMap) {
    const BitstreamInfo info = read({});
    EXPECT_EQ(info.chanmape, 0);
    EXPECT_EQ(info.chanmap, 0);
}

TEST(BsidOap, DownmixLevelsGiveTheOlderLevels) {
    Eac3Spec spec;
    spec.mix = MixSpec{};
    const int cmixlev[] = {0, 0, 0, 0, 0, 1, 2, 2};
    const int surmixlev[] = {0, 0, 0, 0, 0, 1, 1, 2};
    for (unsigned code = 0; code < 8; ++code) {
        spec.mix->dmixmod = 1;
        spec.mix->ltrtcmixlev = 7 - code;
        spec.mix->lorocmixlev = code;
        spec.mix->ltrtsurmixlev = 7 - code;
        spec.mix->lorosurmixlev = code;
        const BitstreamInfo info = read(spec);
        EXPECT_EQ(info.mixmdate, 1);
        EXPECT_EQ(info.dmixmod, 1);
        EXPECT_EQ(info.dmixmod_present, 1);
        EXPECT_EQ(info.mixlevels_present, 1);
        EXPECT_EQ(info.ltrtcmixlev, 7 - code);
        EXPECT_EQ(info.lorocmixlev, code);
        EXPECT_EQ(info.ltrtsurmixlev, std::max(7 - code, 3U)) << "0 to 2 stand for 3";
        EXPECT_EQ(info.lorosurmixlev, std::max(code, 3U));
        EXPECT_EQ(info.cmixlev, cmixlev[code]);
        EXPECT_EQ(info.surmixlev, surmixlev[code]);
    }
}

TEST(BsidOap, DownmixFieldsStandByCodingMode) {
    Eac3Spec spec;
    spec.mix = MixSpec{.dmixmod = 2,
                       .ltrtcmixlev = 5,
                       .lorocmixlev = 6,
                       .ltrtsurmixlev = 7,
                       .lorosurmixlev = 6,
                       .lfemixlevcod = 21};
    spec.addbsi = Bytes{0x5A};
    for (spec.acmod = 0; spec.acmod < 8; ++spec.acmod) {
        const BitstreamInfo info = read(spec);
        const bool center = spec.acmod == 3 || spec.acmod == 5 || spec.acmod == 7;
        EXPECT_EQ(info.dmixmod, spec.acmod > 2 ? 2 : 0) << spec.acmod;
        EXPECT_EQ(info.ltrtcmixlev, center ? 5 : 4) << spec.acmod;
        EXPECT_EQ(info.lorocmixlev, center ? 6 : 4) << spec.acmod;
        EXPECT_EQ(info.ltrtsurmixlev, spec.acmod >= 4 ? 7 : 4) << spec.acmod;
        EXPECT_EQ(info.lorosurmixlev, spec.acmod >= 4 ? 6 : 4) << spec.acmod;
        EXPECT_EQ(info.lfemixlevcode, 1);
        EXPECT_EQ(info.lfemixlevcod, 21);
        EXPECT_EQ(info.addbsi[0], 0x5A) << spec.acmod;
    }
    spec.lfeon = 0;
    EXPECT_EQ(read(spec).lfemixlevcode, 0);
    EXPECT_EQ(read(spec).lfemixlevcod, 10);
}

TEST(BsidOap, ProgramScalesAre51WhenOff) {
    Eac3Spec spec;
    spec.acmod = 0;
    spec.mix = MixSpec{};
    BitstreamInfo info = read(spec);
    EXPECT_EQ(info.pgmscl, (BitstreamInfo::Pair{51, 51}));
    EXPECT_EQ(info.extpgmscl, 51);
    spec.mix->pgmscl = {7, 8};
    spec.mix->extpgmscl = 9;
    info = read(spec);
    EXPECT_EQ(info.pgmscle, (BitstreamInfo::Pair{1, 1}));
    EXPECT_EQ(info.pgmscl, (BitstreamInfo::Pair{7, 8}));
    EXPECT_EQ(info.extpgmscle, 1);
    EXPECT_EQ(info.extpgmscl, 9);
}

TEST(BsidOap, MixdefOneAndTwoAreReadAndPassedOver) {
    Eac3Spec spec;
    spec.addbsi = Bytes{0x5A, 0xA5};
    spec.mix = MixSpec{.mixdef = 1, .premixcmpsel = 1, .drcsrc = 0, .premixcmpscl = 5};
    BitstreamInfo info = read(spec);
    EXPECT_EQ(info.mixdef, 1);
    EXPECT_EQ(info.premixcmpsel, 1);
    EXPECT_EQ(info.drcsrc, 0);
    EXPECT_EQ(info.premixcmpscl, 5);
    EXPECT_EQ(info.addbsi[1], 0xA5);
    spec.mix = MixSpec{.mixdef = 2, .mixdata12 = 0xFFF};
    info = read(spec);
    EXPECT_EQ(info.mixdef, 2);
    EXPECT_EQ(info.premixcmpsel, 0);
    EXPECT_EQ(info.addbsi[1], 0xA5);
}

TEST(BsidOap, MixdefThreeReadsEachScale) {
    Eac3Spec spec;
    spec.addbsi = Bytes{0x5A};
    spec.mix = MixSpec{.mixdef = 3, .mixdeflen = 9};
    spec.mix->mixdata2 = test_support::Mixdata2Spec{.premixcmpsel = 1,
                                                    .drcsrc = 1,
                                                    .premixcmpscl = 6,
                                                    .extpgmscl = {1, 2, 3, 4, 5, 6},
                                                    .dmixscl = 7,
                                                    .addche = true,
                                                    .aux_scl = {8, 9}};
    const BitstreamInfo info = read(spec);
    EXPECT_EQ(info.mixdeflen, 9);
    EXPECT_EQ(info.mixdata2e, 1);
    EXPECT_EQ(info.premixcmpsel, 1);
    EXPECT_EQ(info.drcsrc, 1);
    EXPECT_EQ(info.premixcmpscl, 6);
    EXPECT_EQ(info.extpgmlscle + info.extpgmcscle + info.extpgmrscle + info.extpgmlsscle +
                  info.extpgmrsscle + info.extpgmlfescle,
              6);
    EXPECT_EQ(info.extpgmlscl, 1);
    EXPECT_EQ(info.extpgmcscl, 2);
    EXPECT_EQ(info.extpgmrscl, 3);
    EXPECT_EQ(info.extpgmlsscl, 4);
    EXPECT_EQ(info.extpgmrsscl, 5);
    EXPECT_EQ(info.extpgmlfescl, 6);
    EXPECT_EQ(info.dmixscle, 1);
    EXPECT_EQ(info.dmixscl, 7);
    EXPECT_EQ(info.addche, 1);
    EXPECT_EQ(info.extpgmaux1scle, 1);
    EXPECT_EQ(info.extpgmaux1scl, 8);
    EXPECT_EQ(info.extpgmaux2scle, 1);
    EXPECT_EQ(info.extpgmaux2scl, 9);
    EXPECT_EQ(info.addbsi[0], 0x5A);
}

TEST(BsidOap, MixdefThreeEndsWhereItsLengthSays) {
    Eac3Spec spec;
    spec.addbsi = Bytes{0x5A};
    for (unsigned length = 0; length < 32; ++length) {
        spec.mix = MixSpec{.mixdef = 3, .mixdeflen = length};
        EXPECT_EQ(read(spec).addbsi[0], 0x5A) << length;
        EXPECT_EQ(read(spec).mixdata2e, 0);
    }
}

TEST(BsidOap, MixdefThreeShorterThanItsFieldsPassesOverNothing) {
    Eac3Spec spec;
    spec.addbsi = Bytes{0x5A};
    spec.mix = MixSpec{.mixdef = 3, .mixdeflen = 0};
    spec.mix->mixdata2 = test_support::Mixdata2Spec{.extpgmscl = {1, 2, 3, 4, 5, 6}};
    const BitstreamInfo info = read(spec);
    EXPECT_EQ(info.extpgmlfescl, 6);
    EXPECT_EQ(info.addbsi[0], 0x5A);
}

TEST(BsidOap, PanInformationStandsForOneChannelPrograms) {
    Eac3Spec spec;
    spec.addbsi = Bytes{0x5A};
    spec.mix = MixSpec{};
    spec.mix->pan[0] = {.panmean = 200, .paninfo = 33};
    spec.mix->pan[1] = {.panmean = 17, .paninfo = 1};
    for (spec.acmod = 0; spec.acmod < 4; ++spec.acmod) {
        const BitstreamInfo info = read(spec);
        EXPECT_EQ(info.paninfoe[0], spec.acmod < 2 ? 1 : 0) << spec.acmod;
        EXPECT_EQ(info.panmean[0], spec.acmod < 2 ? 200 : 0) << spec.acmod;
        EXPECT_EQ(info.paninfo[0], spec.acmod < 2 ? 33 : 0) << spec.acmod;
        EXPECT_EQ(info.panmean[1], spec.acmod < 1 ? 17 : 0) << spec.acmod;
        EXPECT_EQ(info.addbsi[0], 0x5A) << spec.acmod;
    }
}

TEST(BsidOap, BlockMixConfigurationHasAFlagForEachOfSeveralBlocks) {
    Eac3Spec spec;
    spec.addbsi = Bytes{0x5A};
    spec.mix = MixSpec{};
    spec.mix->blkmixcfginfo = {11, 12, std::nullopt, 14, std::nullopt, 16};
    BitstreamInfo info = read(spec);
    EXPECT_EQ(info.frmmixcfginfoe, 1);
    EXPECT_EQ(info.blkmixcfginfoe, 1);
    EXPECT_EQ(info.blkmixcfginfo, (std::array<std::uint16_t, 6>{11, 12, 0, 14, 0, 16}));
    EXPECT_EQ(info.addbsi[0], 0x5A);
    spec.numblkscod = 0;
    info = read(spec);
    EXPECT_EQ(info.blkmixcfginfo, (std::array<std::uint16_t, 6>{11, 0, 0, 0, 0, 0}));
    EXPECT_EQ(info.blkmixcfginfoe, 0);
    EXPECT_EQ(info.addbsi[0], 0x5A);
    spec.numblkscod = 2;
    EXPECT_EQ(read(spec).blkmixcfginfo, (std::array<std::uint16_t, 6>{11, 12, 0, 0, 0, 0}));
}

TEST(BsidOap, DependentFrameHasNoProgramMixing) {
    Eac3Spec spec;
    spec.strmtyp = 1;
    spec.addbsi = Bytes{0x5A};
    spec.mix = MixSpec{.dmixmod = 3, .mixdef = 3};
    const BitstreamInfo info = read(spec);
    EXPECT_EQ(info.dmixmod, 3);
    EXPECT_EQ(info.mixdef, 0);
    EXPECT_EQ(info.pgmscl[0], 0);
    EXPECT_EQ(info.addbsi[0], 0x5A);
}

TEST(BsidOap, InformationStandsByCodingMode) {
    Eac3Spec spec;
    spec.addbsi = Bytes{0x5A};
    spec.info = InfoSpec{.bsmod = 7,
                         .copyrightb = 0,
                         .origbs = 0,
                         .dsurmod = 2,
                         .dheadphonmod = 1,
                         .dsurexmod = 2,
                         .sourcefscod = 1};
    spec.info->audprod[0] = {.mixlevel = 30, .roomtyp = 1, .adconvtyp = 1};
    for (spec.acmod = 0; spec.acmod < 8; ++spec.acmod) {
        const BitstreamInfo info = read(spec);
        EXPECT_EQ(info.infomdate, 1);
        EXPECT_EQ(info.bsmod, 7);
        EXPECT_EQ(info.karaoke, spec.acmod > 1 ? 1 : 0) << spec.acmod;
        EXPECT_EQ(info.copyrightb, 0);
        EXPECT_EQ(info.origbs, 0);
        EXPECT_EQ(info.dsurmod, spec.acmod == 2 ? 2 : 0) << spec.acmod;
        EXPECT_EQ(info.dheadphonmod, spec.acmod == 2 ? 1 : 0) << spec.acmod;
        EXPECT_EQ(info.dheadphonmod_present, spec.acmod == 2 ? 1 : 0) << spec.acmod;
        EXPECT_EQ(info.dsurexmod, spec.acmod >= 6 ? 2 : 0) << spec.acmod;
        EXPECT_EQ(info.dsurexmod_present, spec.acmod >= 6 ? 1 : 0) << spec.acmod;
        EXPECT_EQ(info.mixlevel[0], 30);
        EXPECT_EQ(info.roomtyp[0], 1);
        EXPECT_EQ(info.adconvtyp[0], 1);
        EXPECT_EQ(info.sourcefscod, 1);
        EXPECT_EQ(info.addbsi[0], 0x5A) << spec.acmod;
    }
}

TEST(BsidOap, TranscodedFrameHasItsAc3FrameSize) {
    Eac3Spec spec;
    spec.strmtyp = 2;
    spec.frmsizecod = 37;
    spec.blkid = 0;
    spec.addbsi = Bytes{0x5A};
    BitstreamInfo info = read(spec);
    EXPECT_EQ(info.blkid, 1) << "six blocks have no blkid in the stream";
    EXPECT_EQ(info.frmsizecod, 37);
    spec.numblkscod = 1;
    info = read(spec);
    EXPECT_EQ(info.blkid, 0);
    EXPECT_EQ(info.frmsizecod, 0);
    EXPECT_EQ(info.addbsi[0], 0x5A);
    spec.blkid = 1;
    info = read(spec);
    EXPECT_EQ(info.blkid, 1);
    EXPECT_EQ(info.frmsizecod, 37);
    EXPECT_EQ(info.addbsi[0], 0x5A);
}

TEST(BsidOap, LongestAdditionalInformationIsReadWhole) {
    Eac3Spec spec;
    spec.addbsi = Bytes{};
    for (unsigned i = 0; i < 64; ++i) {
        spec.addbsi->push_back(static_cast<std::uint8_t>(255 - i));
    }
    const BitstreamInfo info = read(spec);
    EXPECT_EQ(info.addbsil, 63);
    for (unsigned i = 0; i < 64; ++i) {
        EXPECT_EQ(info.addbsi[i], 255 - i);
    }
}

TEST(BsidOap, ReducedSampleRatesAreRefused) {
    Eac3Spec spec;
    spec.fscod = 3;
    ExpectText expect;
    EXPECT_EQ(unpack(build_eac3_frame(spec)).result, 1541);
    expect.fatal("Half sample rate unsupported", "bsid_oap", 1);
}

TEST(BsidOap, WrongSyncWordIsRefused) {
    Bytes frame = build_eac3_frame({});
    frame[1] = 0x76;
    ExpectText expect;
    EXPECT_EQ(unpack(frame).result, 1537);
    expect.fatal("Invalid synchronization word", "bsid_oap", 1);
}

TEST(BsidOap, UnpackerRefusesTheOtherSyntax) {
    for (const unsigned bsid : {8U, 10U, 17U, 31U}) {
        Eac3Spec spec;
        spec.bsid = bsid;
        const auto words = test_support::to_words(build_eac3_frame(spec));
        BsodReader reader = reader_over(words);
        BitstreamInfo info;
        ExpectText expect;
        EXPECT_EQ(bsid_unpoap(reader, info), 1540);
        expect.fatal("Unsupported bitstream id", "bsid_oap", 1);
    }
}

TEST(BsidOap, ReservedStreamTypeIsNotTheHeadersBusiness) {
    Eac3Spec spec;
    spec.strmtyp = 3;
    EXPECT_EQ(read(spec).strmtyp, 3);
}

TEST(Chx, PairsCountTwoChannels) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        const bool pair = bit == 10 || bit == 9 || bit == 6 || bit == 5 || bit == 4;
        EXPECT_EQ(chx_getnumchanexts(static_cast<std::uint16_t>(1U << bit)), pair ? 2 : 1) << bit;
    }
    EXPECT_EQ(chx_getnumchanexts(0xFFFF), 21);
    EXPECT_EQ(chx_getnumchanexts(0), 0);
    EXPECT_EQ(chx_getnumchanexts(0xF801), 6);
}

}  // namespace
}  // namespace mediasplit
