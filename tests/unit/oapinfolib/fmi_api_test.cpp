#include "oapinfolib/src/fmi_api.h"

#include <gtest/gtest.h>

#include "oapinfolib/src/axdd.h"
#include "tests/support/eac3_builder.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

namespace mediasplit {
namespace {

using test_support::Ac3Spec;
using test_support::AuxSpec;
using test_support::build_ac3_frame;
using test_support::build_eac3_frame;
using test_support::Bytes;
using test_support::Eac3Spec;
using test_support::InfoSpec;
using test_support::MixSpec;

struct OpenFrame {
    std::vector<std::uint16_t> words;
    FrameHandle handle;
    FrameDescriptor descriptor;
    std::uint16_t size = 0;
    int opened = 0;

    explicit OpenFrame(const Bytes& frame) : words(test_support::to_words(frame)) {
        descriptor = {words.data(), static_cast<std::uint16_t>(words.size()),
                      static_cast<std::uint16_t>(words.size())};
        opened = oapi_fmi_openframe(handle, descriptor, size);
    }
    OpenFrame(const OpenFrame&) = delete;
    OpenFrame& operator=(const OpenFrame&) = delete;
    ~OpenFrame() = default;

    struct Group {
        int result = 0;
        FrameStatus status = kStatusUnknown;
        std::vector<std::uint16_t> words;
    };

    Group group(int number) {
        FrameParams params;
        Group group;
        group.result = oapi_fmi_getframeparam(handle, descriptor, number, params, group.status);
        group.words.assign(params.word.begin(),
                           params.word.begin() + static_cast<std::ptrdiff_t>(params.count));
        return group;
    }
};

using Words = std::vector<std::uint16_t>;

TEST(FmiFrame, QueryGivesTheHandlesSize) {
    std::size_t size = 0;
    EXPECT_EQ(oapi_fmi_query(size), 0);
    EXPECT_EQ(size, 344U);
}

TEST(FmiFrame, OpeningGivesTheSizeOfBothSyntaxes) {
    Eac3Spec spec;
    spec.words = 2048;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).size, 2048);
    EXPECT_EQ(OpenFrame(build_ac3_frame({})).size, 384);
}

TEST(FmiFrame, OpeningNeedsThreeWordsAlone) {
    OpenFrame frame(build_eac3_frame({}));
    frame.descriptor.valid_words = 3;
    EXPECT_EQ(oapi_fmi_openframe(frame.handle, frame.descriptor, frame.size), 0);
    EXPECT_EQ(frame.size, 384);
}

TEST(FmiFrame, OpeningMapsTheHeaderErrors) {
    ExpectText text;
    Bytes unsupported = build_ac3_frame({});
    unsupported[5] = 9U << 3U;
    EXPECT_EQ(OpenFrame(unsupported).opened, kFmiUnsupportedBsid);
    Bytes rate = build_ac3_frame({});
    rate[4] |= 0xC0U;
    EXPECT_EQ(OpenFrame(rate).opened, kFmiUnpackError);
}

TEST(FmiFrame, StatusOfEac3IsGoodOrFullError) {
    Eac3Spec spec;
    OpenFrame good(build_eac3_frame(spec));
    EXPECT_EQ(good.group(0).result, 0);
    EXPECT_EQ(good.group(0).status, kStatusGood);
    spec.good_crc = false;
    OpenFrame bad(build_eac3_frame(spec));
    for (const int group : {0, 1, 2, 3, 4, 6, 7, 11}) {
        EXPECT_EQ(bad.group(group).result, kFmiCrcError) << group;
        EXPECT_EQ(bad.group(group).status, kStatusFullError);
    }
}

TEST(FmiFrame, StatusOfAc3TellsTheTwoPartsApart) {
    Ac3Spec spec;
    spec.bsid = 6;
    spec.xbsi2 = test_support::Xbsi2Spec{.encinfo = 1};
    spec.aux = AuxSpec{8, {0xAB}};
    spec.good_crc2 = false;
    OpenFrame partial(build_ac3_frame(spec));
    EXPECT_EQ(partial.group(0).result, 0);
    EXPECT_EQ(partial.group(0).status, kStatusPartialError);
    EXPECT_EQ(partial.group(kGroupAuxdata).result, kFmiCrcError);
    EXPECT_EQ(partial.group(kGroupEncinfo).result, 0) << "stands in the header of AC-3";
    spec.good_crc1 = false;
    OpenFrame full(build_ac3_frame(spec));
    EXPECT_EQ(full.group(0).result, kFmiCrcError);
    EXPECT_EQ(full.group(0).status, kStatusFullError);
}

TEST(FmiFrame, TooFewWordsAreRefusedInBothSyntaxes) {
    OpenFrame oap(build_eac3_frame({}));
    oap.descriptor.valid_words = 383;
    ExpectText text;
    EXPECT_EQ(oap.group(0).result, kFmiNotEnoughData);
    EXPECT_EQ(text.err(), fatal_text("Insufficient data in input frame buffer", "fmi_api", 188));
    OpenFrame oa(build_ac3_frame({}));
    oa.descriptor.valid_words = 383;
    ExpectText second;
    EXPECT_EQ(oa.group(0).result, kFmiNotEnoughData);
    EXPECT_EQ(second.err(), fatal_text("Insufficient data in input frame buffer", "fmi_api", 208));
}

TEST(FmiFrame, UnpackErrorsAreMapped) {
    Eac3Spec spec;
    spec.fscod = 3;
    OpenFrame half(build_eac3_frame(spec));
    EXPECT_EQ(half.opened, 0) << "the size stands in front of the rate";
    ExpectText text;
    EXPECT_EQ(half.group(0).result, kFmiUnpackError);
    text.fatal("Half sample rate unsupported", "bsid_oap", 1);
}

TEST(FmiFrame, CheckGivesTheStatusOnce) {
    OpenFrame frame(build_eac3_frame({}));
    FrameStatus status = 7;
    EXPECT_EQ(oapi_fmi_checkframe(frame.handle, frame.descriptor, status), 0);
    EXPECT_EQ(status, kStatusGood);
    frame.words[100] ^= 1U;
    EXPECT_EQ(oapi_fmi_checkframe(frame.handle, frame.descriptor, status), 0);
    EXPECT_EQ(status, kStatusGood) << "computed on first need";
    EXPECT_EQ(oapi_fmi_closeframe(frame.handle), 0);
    EXPECT_EQ(frame.handle.status, kStatusUnknown);
    EXPECT_EQ(frame.handle.buffer, nullptr);
    EXPECT_EQ(oapi_fmi_checkframe(frame.handle, frame.descriptor, status), kFmiUnpackError);
}

TEST(FmiGroup, UnknownNumbersAreRefused) {
    OpenFrame frame(build_eac3_frame({}));
    EXPECT_EQ(frame.group(12).result, kFmiBadGroup);
    EXPECT_EQ(frame.group(-1).result, kFmiBadGroup);
}

TEST(FmiGroup, FrameFacts) {
    Eac3Spec spec;
    spec.fscod = 1;
    spec.strmtyp = 1;
    spec.substreamid = 3;
    spec.numblkscod = 2;
    spec.acmod = 5;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(0).words, (Words{16, 44100, 1, 3, 3, 5, 1}));
    EXPECT_EQ(OpenFrame(build_ac3_frame({})).group(0).words, (Words{8, 48000, 0, 0, 6, 7, 1}));
}

TEST(FmiGroup, MixingHas27WordsWithTheirDefaults) {
    EXPECT_EQ(OpenFrame(build_eac3_frame({})).group(1).words,
              (Words{0,      0,      0,      4,      4,      4,      4,      51,     51,
                     51,     0,      0,      0,      0,      10,     0,      0,      0,
                     0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}));
    Eac3Spec spec;
    spec.acmod = 1;
    spec.mix = MixSpec{.lfemixlevcod = 3, .extpgmscl = 21, .mixdef = 3, .mixdeflen = 20};
    spec.mix->pgmscl[0] = 20;
    spec.mix->pan[0] = {.panmean = 100, .paninfo = 9};
    spec.mix->mixdata2 = test_support::Mixdata2Spec{.premixcmpsel = 1,
                                                    .drcsrc = 0,
                                                    .premixcmpscl = 7,
                                                    .extpgmscl = {1, 2, 3, 4, 5, 6},
                                                    .dmixscl = 7,
                                                    .addche = true,
                                                    .aux_scl = {8, 9}};
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(1).words,
              (Words{0, 0, 0, 4, 4, 4, 4, 20, 51, 21, 9, 0, 100, 0,
                     3, 1, 0, 7, 1, 2, 3, 4,  5,  6,  7, 8, 9}));
}

TEST(FmiGroup, Information) {
    Eac3Spec spec;
    spec.acmod = 2;
    spec.info = InfoSpec{.bsmod = 2,
                         .copyrightb = 1,
                         .origbs = 0,
                         .dsurmod = 1,
                         .dheadphonmod = 2,
                         .sourcefscod = 1};
    spec.info->audprod[0] = {.mixlevel = 5, .roomtyp = 1, .adconvtyp = 1};
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(2).words,
              (Words{2, 1, 0, 1, 0, 2, 0, 0, 1, 1, 5, 1, 0, 0, 0, 0, 1}));
}

TEST(FmiGroup, DialnormComprAndConverter) {
    Eac3Spec spec;
    spec.acmod = 0;
    spec.numblkscod = 0;
    spec.convsync = 0;
    spec.dialnorm = {5, 6};
    spec.compr[1] = 0x12;
    OpenFrame frame(build_eac3_frame(spec));
    EXPECT_EQ(frame.group(3).words, (Words{5, 6}));
    EXPECT_EQ(frame.group(4).words, (Words{0, 0, 1, 0x1200}));
    EXPECT_EQ(frame.group(6).words, (Words{0}));
    EXPECT_EQ(frame.group(7).words, (Words{0, 0}));
    spec.strmtyp = 2;
    spec.frmsizecod = 30;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(7).words, (Words{1, 30}));
}

TEST(FmiGroup, ChannelMapStandsInDependentFramesAlone) {
    Eac3Spec spec;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(5).result, kFmiAbsent);
    spec.strmtyp = 1;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(5).words, (Words{0xF801}));
}

TEST(FmiGroup, TimeCodesAreTakenApart) {
    Ac3Spec spec;
    spec.timecod1 = 23U << 9U | 59U << 3U | 5U;
    OpenFrame first(build_ac3_frame(spec));
    EXPECT_EQ(first.group(8).result, 0);
    EXPECT_EQ(first.group(8).words, (Words{1, 23, 59, 40, 0, 0}));
    spec.timecod2 = 7U << 11U | 29U << 6U | 63U;
    EXPECT_EQ(OpenFrame(build_ac3_frame(spec)).group(8).words, (Words{2, 23, 59, 47, 29, 63}));
    spec.timecod1.reset();
    EXPECT_EQ(OpenFrame(build_ac3_frame(spec)).group(8).words, (Words{2, 0, 0, 7, 29, 63}));
}

TEST(FmiGroup, TimeCodesAreAbsentInOtherSyntaxes) {
    Ac3Spec spec;
    EXPECT_EQ(OpenFrame(build_ac3_frame(spec)).group(8).result, kFmiAbsent);
    spec.bsid = 6;
    OpenFrame alternate(build_ac3_frame(spec));
    EXPECT_EQ(alternate.group(8).result, kFmiAbsent);
    EXPECT_EQ(alternate.group(8).words, Words(6, 0));
    EXPECT_EQ(OpenFrame(build_eac3_frame({})).group(8).result, kFmiAbsent);
}

TEST(FmiGroup, AdditionalInformationIsReadAgain) {
    Eac3Spec spec;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(9).result, kFmiAbsent);
    spec.addbsi = Bytes{1, 0x80, 0xFF};
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(9).words, (Words{3, 1, 0x80, 0xFF}));
    Ac3Spec ac3;
    ac3.addbsi = Bytes(64, 0x3C);
    const auto group = OpenFrame(build_ac3_frame(ac3)).group(9);
    ASSERT_EQ(group.words.size(), 65U);
    EXPECT_EQ(group.words[0], 64);
    EXPECT_EQ(group.words[64], 0x3C);
}

TEST(FmiGroup, AuxiliaryDataIsLeftJustified) {
    Eac3Spec spec;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(10).result, kFmiAbsent);
    spec.aux = AuxSpec{21, {0xAB, 0xCD, 0xE8}};
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(10).words, (Words{21, 0xABCD, 0xE800}));
    spec.aux = AuxSpec{0, {}};
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(10).words, (Words{0}));
    Ac3Spec ac3;
    ac3.aux = AuxSpec{16, {0x12, 0x34}};
    EXPECT_EQ(OpenFrame(build_ac3_frame(ac3)).group(10).words, (Words{16, 0x1234}));
}

TEST(FmiGroup, AuxiliaryDataLongerThanTheFrameIsRefused) {
    Eac3Spec spec;
    spec.words = 64;
    spec.aux = AuxSpec{16383, {}};
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(10).result, kFmiNotEnoughData);
    spec.words = 1030;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(10).words.size(), 1025U);
}

TEST(FmiGroup, EncoderInformationStandsAtTheEndOfEac3) {
    Eac3Spec spec;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(11).words, (Words{0}));
    spec.encinfo = 1;
    EXPECT_EQ(OpenFrame(build_eac3_frame(spec)).group(11).words, (Words{1}));
}

TEST(FmiGroup, EncoderInformationOfAc3NeedsItsExtension) {
    Ac3Spec spec;
    EXPECT_EQ(OpenFrame(build_ac3_frame(spec)).group(11).result, kFmiAbsent);
    spec.bsid = 6;
    EXPECT_EQ(OpenFrame(build_ac3_frame(spec)).group(11).result, kFmiAbsent);
    spec.xbsi2 = test_support::Xbsi2Spec{.encinfo = 1};
    EXPECT_EQ(OpenFrame(build_ac3_frame(spec)).group(11).words, (Words{1}));
}

TEST(Axdd, PositionComesBackAfterReading) {
    Eac3Spec spec;
    spec.aux = AuxSpec{20, {0xAB, 0xCD, 0xE0}};
    const auto words = test_support::to_words(build_eac3_frame(spec));
    const auto count = static_cast<std::uint16_t>(words.size());
    AuxField field;
    axdd_unp(words.data(), count, field);
    EXPECT_EQ(field.auxdatae, 1);
    EXPECT_EQ(field.auxdatal, 20);
    EXPECT_EQ(bsod_unprj(field.data, 8), 0xAB);
    axdd_seek(words.data(), count, field);
    EXPECT_EQ(bsod_unprj(field.data, 16), 0xABCD);
    EXPECT_EQ(field.data.index * 16 + field.data.bit, 384 * 16 - 32 - 4);
    axdd_init(field);
    EXPECT_EQ(field.auxdatae, 0);
    EXPECT_EQ(field.data.words, nullptr);
    axdd_unp(words.data(), 1, field);
    EXPECT_EQ(field.auxdatae, 0) << "a frame without room for the field";
}

}  // namespace
}  // namespace mediasplit
