// Names and targets of alternative presentations.

#include <gtest/gtest.h>

#include <string_view>

#include "tests/unit/ac4/toc_fixture.h"

namespace mediasplit {
namespace {

class TocNameTest : public TocFixture {};

TEST_F(TocNameTest, AlternativePresentationHasNameAndTargets) {
    BuildFrame frame = main_and_dialogue_frame();
    PresentationText text;
    text.alternative = true;
    text.name = "Main and dialogue";
    text.targets = {{1, 2, 9, 40, 17, {0U, {}}}, {7, 15, {}, {}, {}, {3U, 1U}}};
    text.tail.put(0, 16);
    frame.substreams[0] = write_presentation(text).to_bytes();
    frame.presentations[0].alternative = true;
    ASSERT_EQ(open_frame(frame), 0);
    const PresentationInfo info = presentation(0);
    EXPECT_EQ(std::string_view(info.presentation_name.data(), info.name_size), "Main and dialogue");
    ASSERT_EQ(info.n_targets, 2);
    EXPECT_EQ(info.targets[0].target_level, 1);
    EXPECT_EQ(info.targets[0].target_device_category, 2);
    EXPECT_EQ(info.targets[1].target_level, 7);
    EXPECT_EQ(info.targets[1].target_device_category, 15);
    EXPECT_TRUE(presentation_ext(0).b_alternative);
    // Without the flag nothing of this is there.
    EXPECT_EQ(presentation(1).name_size, 0U);
    EXPECT_EQ(presentation(1).n_targets, 0);
}

TEST_F(TocNameTest, NamesWithoutALengthHaveThirtyTwoBytes) {
    BuildFrame frame = simple_stereo_frame();
    PresentationText text;
    text.alternative = true;
    text.name = "12345678901234567890123456789012";
    text.long_name = true;
    text.targets.assign(40, TargetText{2, 3, {}, {}, {}, {{}}});
    text.tail.put(0, 16);
    frame.substreams[0] = write_presentation(text).to_bytes();
    frame.presentations[0].alternative = true;
    ASSERT_EQ(open_frame(frame), 0);
    const PresentationInfo info = presentation(0);
    EXPECT_EQ(std::string_view(info.presentation_name.data(), info.name_size), *text.name);
    EXPECT_EQ(info.n_targets, 40);
    EXPECT_EQ(info.targets[30].target_device_category, 3);
}

// 64 alternative presentations of one presentation substream and one group of `count` substreams.
BuildFrame many_alternatives(std::size_t count) {
    BuildFrame frame = simple_stereo_frame();
    PresentationText text;
    text.alternative = true;
    text.name = "12345678901234567890123456789012";
    text.long_name = true;
    TargetText target{2, 3, {}, {}, {}, {}};
    target.substreams.assign(count, 0U);
    text.targets.assign(31, target);
    text.tail.put(0, 16);
    frame.substreams[0] = write_presentation(text).to_bytes();
    frame.presentations[0].alternative = true;
    const BuildPresentation presentation = frame.presentations[0];
    frame.presentations.assign(64, presentation);
    const BuildSubstream substream = frame.groups[0].substreams[0];
    frame.groups[0].substreams.assign(count, substream);
    return frame;
}

TEST_F(TocNameTest, TargetsThatManyPresentationsShareAreReadForEach) {
    ASSERT_EQ(open_frame(many_alternatives(4)), 0);
    for (std::int32_t i = 0; i < 64; ++i) {
        EXPECT_EQ(presentation(i).targets[30].target_device_category, 3) << i;
    }
}

TEST_F(TocNameTest, TargetsPastSeveralTimesTheFrameAreRefused) {
    ASSERT_EQ(open_frame(many_alternatives(300)), 0);
    const auto size = static_cast<std::int64_t>(bytes_.size());
    EXPECT_EQ(presentation(0).targets[30].target_device_category, 3);
    std::int32_t read = 0;
    PresentationInfo info;
    while (read < 64 &&
           AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader_, toc_, read, &info) == 0) {
        ++read;
    }
    EXPECT_LT(read, 64);
    EXPECT_GT(reader_->target_bits_read, (4 * size + 32768) * 8);
    EXPECT_LT(reader_->target_bits_read, (5 * size + 32768) * 8);
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader_, toc_, read, &info),
              kTocLimit);
    // The next frame starts anew.
    ASSERT_EQ(open_bytes(Ac4Bytes(bytes_)), 0);
    EXPECT_EQ(presentation(0).targets[30].target_device_category, 3);
}

TEST_F(TocNameTest, NameOfZeroLengthIsNone) {
    BuildFrame frame = simple_stereo_frame();
    // b_name_present, b_length, name_len 0, one target without options
    frame.substreams[0] =
        MetadataBits().code("1 1 00000 00 001 0010 0 0 0 0").put(0, 40).to_bytes();
    frame.presentations[0].alternative = true;
    ASSERT_EQ(open_frame(frame), 0);
    EXPECT_EQ(presentation(0).name_size, 0U);
    EXPECT_EQ(presentation(0).n_targets, 1);
}

TEST_F(TocNameTest, CutNameIsToldAsMissingData) {
    BuildFrame frame = simple_stereo_frame();
    frame.substreams[0] = Ac4Bytes{0xC0 | 0x0F, 'a', 'b'};
    frame.presentations[0].alternative = true;
    ASSERT_EQ(open_frame(frame), 0);
    PresentationInfo info;
    EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader_, toc_, 0, &info), 1);
}

}  // namespace
}  // namespace mediasplit
