#include "ac4/metadata/loudness.h"

#include <gtest/gtest.h>

#include "ac4/metadata/metadata_codes.h"
#include "tests/unit/ac4_metadata/metadata_test_reader.h"

namespace mediasplit {
namespace {

LoudnessText everything() {
    LoudnessText text;
    text.version = 5;
    text.practice = 2;
    text.dialgate_practice = 4;
    text.loudcorr_type = true;
    text.relgat = 1001;
    text.spchgat = 1002;
    text.speech_practice = 6;
    text.strm3s = 1003;
    text.max_strm3s = 1004;
    text.truepk = 1005;
    text.max_truepk = 1006;
    text.boundary_zeros = 3;
    text.boundary_end = true;
    text.boundary_offset = 77;
    text.lra = 500;
    text.lra_practice = 1;
    text.mntry = 1007;
    text.max_mntry = 2047;
    text.rtll_comp = 200;
    text.extension = "10110";
    return text;
}

void expect_shared_fields(const FurtherLoudness& out) {
    EXPECT_TRUE(out.present);
    EXPECT_TRUE(out.b_loudcorr_dialgate);
    EXPECT_EQ(out.loudrelgat, (CodedField{true, 1001}));
    EXPECT_EQ(out.loudspchgat, (CodedField{true, 1002}));
    EXPECT_EQ(out.speech_dialgate_prac_type, 6);
    EXPECT_EQ(out.loudstrm3s, (CodedField{true, 1003}));
    EXPECT_EQ(out.max_loudstrm3s, (CodedField{true, 1004}));
    EXPECT_EQ(out.truepk, (CodedField{true, 1005}));
    EXPECT_EQ(out.max_truepk, (CodedField{true, 1006}));
    EXPECT_EQ(out.lra, (CodedField{true, 500}));
    EXPECT_EQ(out.lra_prac_type, 1);
    EXPECT_EQ(out.loudmntry, (CodedField{true, 1007}));
    EXPECT_EQ(out.max_loudmntry, (CodedField{true, 2047}));
}

void expect_full_fields(const FurtherLoudness& out) {
    EXPECT_EQ(out.loudness_version, 5);
    EXPECT_EQ(out.loud_prac_type, 2);
    EXPECT_EQ(out.dialgate_prac_type, (CodedField{true, 4}));
    EXPECT_TRUE(out.b_loudcorr_type);
    EXPECT_TRUE(out.b_prgmbndy);
    EXPECT_EQ(out.prgmbndy_zeros, 3U);
    EXPECT_TRUE(out.b_end_or_start);
    EXPECT_EQ(out.prgmbndy_offset, (CodedField{true, 77}));
}

TEST(FurtherLoudness, ReadsEveryFieldOfTheOldSyntax) {
    const MetadataBits text = write_loudness(everything(), 0, false);
    TestReader reader(text);
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 0, false), kMetadataOk);
    EXPECT_EQ(reader.position(), text.size());
    expect_shared_fields(out);
    expect_full_fields(out);
    EXPECT_FALSE(out.rtll_comp.present);
}

TEST(FurtherLoudness, ReadsEveryFieldOfAPresentation) {
    const MetadataBits text = write_loudness(everything(), 1, true);
    TestReader reader(text);
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 1, true), kMetadataOk);
    EXPECT_EQ(reader.position(), text.size());
    expect_shared_fields(out);
    expect_full_fields(out);
    EXPECT_EQ(out.rtll_comp, (CodedField{true, 200}));
}

TEST(FurtherLoudness, SubstreamOfTheNewSyntaxHasNeitherPracticeNorBoundary) {
    const MetadataBits text = write_loudness(everything(), 1, false);
    TestReader reader(text);
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 1, false), kMetadataOk);
    EXPECT_EQ(reader.position(), text.size());
    expect_shared_fields(out);
    EXPECT_EQ(out.loud_prac_type, 0);
    EXPECT_FALSE(out.b_prgmbndy);
}

TEST(FurtherLoudness, NothingPresentIsOneBitForEachFlag) {
    const MetadataBits text = write_loudness({}, 0, false);
    EXPECT_EQ(text.size(), 2U + 4U + 11U);
    TestReader reader(text);
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 0, false), kMetadataOk);
    EXPECT_EQ(reader.position(), text.size());
    FurtherLoudness expected;
    expected.present = true;
    EXPECT_EQ(out, expected);
}

TEST(FurtherLoudness, StepsOverALongExtension) {
    LoudnessText text;
    text.extension = std::string(1234, '1');
    const MetadataBits bits = write_loudness(text, 1, true);
    TestReader reader(bits);
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 1, true), kMetadataOk);
    EXPECT_EQ(reader.position(), bits.size());
}

TEST(FurtherLoudness, ExtensionBeyondTheDataRunsOut) {
    LoudnessText text;
    text.extension = std::string(40, '1');
    const MetadataBits bits = write_loudness(text, 1, true);
    TestReader reader(bits.first(bits.size() - 1));
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 1, true), kMetadataRanOut);
}

TEST(FurtherLoudness, BoundaryWithoutItsClosingBitEndsWithTheData) {
    // Up to the boundary flag, then zeros only.
    MetadataBits text;
    text.put(0, 2 + 4).put(0, 6).flag(true).code(std::string(5000, '0'));
    TestReader reader(text);
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 0, false), kMetadataRanOut);
}

TEST(FurtherLoudness, EndlessExtensionSizeIsRefused) {
    MetadataBits text = write_loudness({}, 1, true);
    text = text.first(text.size() - 1);
    text.flag(true).put(31, 5).code(std::string(400, '1'));
    TestReader reader(text);
    FurtherLoudness out;
    EXPECT_EQ(parse_further_loudness_info(reader.in, &out, 1, true), kMetadataTooLong);
}

TEST(FurtherLoudness, CutAnywhereRunsOut) {
    for (const bool presentation : {false, true}) {
        const MetadataBits text = write_loudness(everything(), presentation ? 1 : 0, presentation);
        for (std::size_t kept = 0; kept < text.size(); ++kept) {
            TestReader reader(text.first(kept));
            FurtherLoudness out;
            EXPECT_EQ(
                parse_further_loudness_info(reader.in, &out, presentation ? 1 : 0, presentation),
                kMetadataRanOut)
                << kept;
        }
    }
}

}  // namespace
}  // namespace mediasplit
