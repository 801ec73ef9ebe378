#include "src/video/level_rules.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

struct LevelCase {
    std::uint32_t width;
    std::uint32_t height;
    float frame_rate;
    std::uint32_t level;
};

class LevelSizes : public ::testing::TestWithParam<LevelCase> {};

TEST_P(LevelSizes, GivesTheLowestLevelThatHolds) {
    const LevelCase& c = GetParam();
    EXPECT_EQ(px_level_of(c.width, c.height, c.frame_rate), c.level);
    const RecordingSink sink;
    EXPECT_EQ(check_px_level(c.level, c.width, c.height, nullptr, c.frame_rate, 0), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_EQ(check_px_level(c.level + 1, c.width, c.height, nullptr, c.frame_rate, 0),
              Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), (std::vector<int>{4253}));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LevelSizes,
    ::testing::Values(
        LevelCase{1280, 720, 24, 1}, LevelCase{1280, 720, 24.5F, 2}, LevelCase{1280, 720, 30, 2},
        LevelCase{1280, 720, 30.5F, 3}, LevelCase{1281, 720, 1, 3}, LevelCase{1920, 1080, 24, 3},
        LevelCase{1920, 1080, 25, 4}, LevelCase{1921, 16, 1, 4}, LevelCase{1920, 1080, 30, 4},
        LevelCase{1920, 1080, 31, 5}, LevelCase{2561, 16, 1, 5}, LevelCase{1920, 1080, 60, 5},
        LevelCase{1920, 1080, 61, 6}, LevelCase{3840, 2160, 24, 6}, LevelCase{3840, 2160, 25, 7},
        LevelCase{3840, 2160, 30, 7}, LevelCase{3840, 2160, 31, 8}, LevelCase{3840, 2160, 48, 8},
        LevelCase{3840, 2160, 50, 9}, LevelCase{3840, 2160, 60, 9}, LevelCase{3840, 2160, 61, 10},
        LevelCase{3840, 2160, 120, 10}, LevelCase{3841, 16, 1, 11}, LevelCase{7680, 4320, 30, 11},
        LevelCase{7680, 4320, 31, 12}, LevelCase{7680, 4320, 60, 12}, LevelCase{7680, 4320, 61, 13},
        LevelCase{7680, 4320, 120, 13}, LevelCase{7680, 4320, 121, 0}, LevelCase{7681, 16, 1, 0}));

// The table once more: samples a second and width that a level reaches, and its successor where
// either is passed.
struct LevelRow {
    std::uint32_t level;
    float samples;
    std::uint32_t width;
    std::uint32_t beyond_samples;
    std::uint32_t beyond_width;
};

TEST(LevelTable, RowByRow) {
    constexpr LevelRow kRows[] = {
        {1, 22118400, 1280, 2, 3},     {2, 27648000, 1280, 3, 3},    {3, 49766400, 1920, 4, 4},
        {4, 62208000, 2560, 5, 5},     {5, 124416000, 3840, 6, 11},  {6, 199065600, 3840, 7, 11},
        {7, 248832000, 3840, 8, 11},   {8, 398131200, 3840, 9, 11},  {9, 497664000, 3840, 10, 11},
        {10, 995328000, 3840, 12, 11}, {11, 995328000, 7680, 12, 0}, {12, 1990656000, 7680, 13, 0},
        {13, 3981312000, 7680, 0, 0},
    };
    for (const LevelRow& row : kRows) {
        // One line of pictures; the rate alone makes the samples of a second.
        const float rate = row.samples / static_cast<float>(row.width);
        ASSERT_EQ(static_cast<float>(row.width) * rate, row.samples) << row.level;
        EXPECT_EQ(px_level_of(row.width, 1, rate), row.level);
        const float more = std::nextafter(rate * 1.000001F, 1e30F);
        EXPECT_EQ(px_level_of(row.width, 1, more), row.beyond_samples) << row.level;
        const float same = row.samples / static_cast<float>(row.width + 1) * 0.999999F;
        EXPECT_EQ(px_level_of(row.width + 1, 1, same), row.beyond_width) << row.level;
    }
}

TEST(CheckPxLevel, MessageNamesLevelSizeAndRate) {
    const RecordingSink sink;
    EXPECT_EQ(check_px_level(5, 1920, 1080, nullptr, 25, 0), Status::kRuleBroken);
    ASSERT_EQ(sink.ids(), (std::vector<int>{4253}));
    EXPECT_EQ(sink.reports()[0].text,
              "For a [Orvel Prisma] stream, in MP4, the level value [5] in the Orvel Prisma "
              "configuration box mismatches the corresponding description in the elementary stream "
              "[in sps: width:1920, height:1080, framerate:25.000000].");
}

TEST(CheckPxLevel, RateOfTheParameterSetGoesBeforeThatOfTheContainer) {
    const RecordingSink sink;
    EXPECT_EQ(check_px_level(3, 1920, 1080, nullptr, 24, 60), Status::kOk);
    EXPECT_EQ(check_px_level(5, 1920, 1080, nullptr, 0, 60), Status::kOk);
    EXPECT_EQ(check_px_level(5, 1920, 1080, nullptr, 5e-7F, 60), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(CheckPxLevel, WithoutAnyRateThereIsNothingToCheck) {
    const RecordingSink sink;
    EXPECT_EQ(check_px_level(99, 1920, 1080, nullptr, 0, 0), Status::kOk);
    EXPECT_EQ(check_px_level(99, 1920, 1080, nullptr, std::numeric_limits<float>::quiet_NaN(), 0),
              Status::kOk);
    EXPECT_FALSE(sink.was_evaluated(4253));
}

TEST(CheckPxLevel, SizesOfDamagedSetsHaveNoLevel) {
    EXPECT_EQ(px_level_of(0xFFFFFFFF, 0xFFFFFFFF, 1e30F), 0U);
    EXPECT_EQ(px_level_of(0, 0, 24), 1U);
}

struct ProfileCase {
    std::uint32_t profile;
    std::uint32_t base_width;
    std::uint32_t base_height;
    std::uint32_t width;
    std::uint32_t height;
    bool holds;
};

class ProfileSizes : public ::testing::TestWithParam<ProfileCase> {};

TEST_P(ProfileSizes, Decide4252) {
    const ProfileCase& c = GetParam();
    const RecordingSink sink;
    const Status status = check_px_profile_level(c.profile, 1, c.base_width, c.base_height, c.width,
                                                 c.height, nullptr, 0, 0);
    EXPECT_EQ(status, c.holds ? Status::kOk : Status::kRuleBroken);
    EXPECT_EQ(sink.count(4252), c.holds ? 0U : 1U);
    EXPECT_TRUE(sink.was_evaluated(4252));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ProfileSizes,
    ::testing::Values(
        ProfileCase{4, 3840, 2160, 1920, 1080, true}, ProfileCase{4, 3840, 2160, 3840, 2160, false},
        ProfileCase{4, 3840, 2160, 1920, 2160, true}, ProfileCase{4, 3840, 2160, 3840, 1080, true},
        ProfileCase{4, 3841, 2160, 1920, 2160, true},  // integer division
        ProfileCase{4, 3840, 2160, 0, 1080, false}, ProfileCase{4, 3840, 2160, 1920, 0, false},
        ProfileCase{0, 3840, 2160, 1920, 1080, true}, ProfileCase{0, 3840, 2160, 3840, 2160, false},
        ProfileCase{2, 3840, 2160, 1920, 1080, true}, ProfileCase{2, 3840, 2160, 1280, 720, false},
        ProfileCase{1, 1920, 1080, 1920, 1080, true}, ProfileCase{1, 1920, 1080, 1920, 800, true},
        ProfileCase{1, 1920, 1080, 960, 540, false}, ProfileCase{3, 1920, 1080, 1280, 1080, true},
        ProfileCase{3, 1920, 1080, 960, 540, false}, ProfileCase{5, 1, 2, 3, 4, true},
        ProfileCase{6, 1, 2, 3, 4, true}, ProfileCase{7, 1920, 1080, 1920, 1080, false},
        ProfileCase{8, 1920, 1080, 1920, 1080, false},
        ProfileCase{0xFFFFFFFF, 1920, 1080, 1920, 1080, false}));

TEST(CheckPxProfileLevel, LevelIsThatOfTheBaseLayer) {
    const RecordingSink sink;
    EXPECT_EQ(check_px_profile_level(4, 6, 3840, 2160, 1920, 1080, nullptr, 24, 0), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_EQ(check_px_profile_level(4, 3, 3840, 2160, 3840, 2160, nullptr, 0, 24),
              Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), (std::vector<int>{4252, 4253}));
}

HevcSps sps_of(std::uint32_t width, std::uint32_t height) {
    HevcSps sps;
    sps.pic_width = width;
    sps.pic_height = height;
    return sps;
}

TEST(ParseH265WidthHeightFramerate, RateOfTheVpsGoesBeforeThatOfTheSps) {
    HevcVps vps;
    HevcSps sps = sps_of(1920, 1080);
    sps.vui.vui_num_units_in_tick = 1001;
    sps.vui.vui_time_scale = 60000;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float rate = -1;
    EXPECT_EQ(parse_h265_width_height_framerate(&width, &height, &rate, &vps, &sps, nullptr),
              Status::kOk);
    EXPECT_EQ(width, 1920U);
    EXPECT_EQ(height, 1080U);
    EXPECT_EQ(rate, 0.0F);
    sps.vui.vui_timing_info_present_flag = 1;
    parse_h265_width_height_framerate(&width, &height, &rate, &vps, &sps, nullptr);
    EXPECT_FLOAT_EQ(rate, 60000.0F / 1001.0F);
    vps.vps_timing_info_present_flag = 1;
    vps.vps_num_units_in_tick = 1;
    vps.vps_time_scale = 24;
    parse_h265_width_height_framerate(&width, &height, &rate, &vps, &sps, nullptr);
    EXPECT_FLOAT_EQ(rate, 24.0F);
}

TEST(ParseH265WidthHeightFramerate, ZeroTickGivesZero) {
    HevcVps vps;
    vps.vps_timing_info_present_flag = 1;
    vps.vps_time_scale = 24;
    const HevcSps sps;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float rate = -1;
    parse_h265_width_height_framerate(&width, &height, &rate, &vps, &sps, nullptr);
    EXPECT_EQ(rate, 0.0F);
}

TEST(ParseH265WidthHeightFramerate, NullArgumentsFail) {
    const HevcVps vps;
    const HevcSps sps;
    std::uint32_t n = 0;
    float rate = 0;
    EXPECT_EQ(parse_h265_width_height_framerate(nullptr, &n, &rate, &vps, &sps, nullptr),
              Status::kFailed);
    EXPECT_EQ(parse_h265_width_height_framerate(&n, nullptr, &rate, &vps, &sps, nullptr),
              Status::kFailed);
    EXPECT_EQ(parse_h265_width_height_framerate(&n, &n, nullptr, &vps, &sps, nullptr),
              Status::kFailed);
    EXPECT_EQ(parse_h265_width_height_framerate(&n, &n, &rate, nullptr, &sps, nullptr),
              Status::kFailed);
    EXPECT_EQ(parse_h265_width_height_framerate(&n, &n, &rate, &vps, nullptr, nullptr),
              Status::kFailed);
    EXPECT_EQ(check_px_h265_level(1, nullptr, &sps, nullptr, 24), Status::kFailed);
    EXPECT_EQ(check_px_h265_level(1, &vps, nullptr, nullptr, 24), Status::kFailed);
    EXPECT_EQ(check_px_h265_profile_level(4, 1, nullptr, &sps, &sps, nullptr, 24), Status::kFailed);
    EXPECT_EQ(check_px_h265_profile_level(4, 1, &vps, nullptr, &sps, nullptr, 24), Status::kFailed);
    EXPECT_EQ(check_px_h265_profile_level(4, 1, &vps, &sps, nullptr, nullptr, 24), Status::kFailed);
}

TEST(CheckPxH265Level, TakesSizeAndRateFromTheSets) {
    HevcVps vps;
    vps.vps_timing_info_present_flag = 1;
    vps.vps_num_units_in_tick = 1;
    vps.vps_time_scale = 60;
    const HevcSps sps = sps_of(3840, 2160);
    const RecordingSink sink;
    EXPECT_EQ(check_px_h265_level(9, &vps, &sps, nullptr, 24), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_EQ(check_px_h265_level(6, &vps, &sps, nullptr, 24), Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), (std::vector<int>{4253}));
}

TEST(CheckPxH265Level, FallsBackToTheContainer) {
    const HevcVps vps;
    const HevcSps sps = sps_of(3840, 2160);
    const RecordingSink sink;
    EXPECT_EQ(check_px_h265_level(6, &vps, &sps, nullptr, 24), Status::kOk);
    EXPECT_EQ(check_px_h265_level(99, &vps, &sps, nullptr, 0), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(CheckPxH265ProfileLevel, ComparesTheTwoLayers) {
    const HevcVps vps;
    const HevcSps base = sps_of(3840, 2160);
    const HevcSps half = sps_of(1920, 1080);
    const RecordingSink sink;
    EXPECT_EQ(check_px_h265_profile_level(4, 6, &vps, &base, &half, nullptr, 24), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_EQ(check_px_h265_profile_level(4, 6, &vps, &base, &base, nullptr, 24),
              Status::kRuleBroken);
    EXPECT_EQ(check_px_h265_profile_level(4, 7, &vps, &base, &half, nullptr, 24),
              Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), (std::vector<int>{4252, 4253}));
}

}  // namespace
}  // namespace mediasplit
