// Timing groups of AC-4 streams and their renditions.
#include <gtest/gtest.h>

#include "tests/unit/master_checks/master_input.h"

namespace mediasplit {
namespace {

constexpr const char* kAc4Video = "avc1,ac-4.02.01.00";

TEST(TimingGroupTest, Eac3HasNone) {
    const auto checked =
        check_master(media("AUDIO", "a", "a") + stream("avc1,ec-3", "v", "AUDIO=\"a\""));
    EXPECT_EQ(checked.group_count, 0U);
    EXPECT_EQ(checked.playlist.streams[0].group, 0U);
    EXPECT_EQ(checked.playlist.media[0].group, 0U);
}

TEST(TimingGroupTest, Ac4StreamAndItsRenditionsFormOne) {
    const auto checked =
        check_master(media("AUDIO", "a", "a") + media("AUDIO", "b", "b") +
                     media("AUDIO", "a", "c") + media("VIDEO", "vid", "d") +
                     media("SUBTITLES", "a", "e") + stream("avc1,ec-3", "w", "AUDIO=\"b\"") +
                     stream(kAc4Video, "v", "AUDIO=\"a\",VIDEO=\"vid\""));
    EXPECT_EQ(checked.group_count, 1U);
    const auto& renditions = checked.playlist.media;
    EXPECT_EQ(renditions[0].group, 1U);
    EXPECT_EQ(renditions[1].group, 0U);
    EXPECT_EQ(renditions[2].group, 1U);
    EXPECT_EQ(renditions[3].group, 1U);
    EXPECT_EQ(renditions[4].group, 0U);
    EXPECT_EQ(checked.playlist.streams[0].group, 0U);
    EXPECT_EQ(checked.playlist.streams[1].group, 1U);
}

TEST(TimingGroupTest, StreamsWithACommonRenditionShareOne) {
    const auto checked = check_master(
        media("AUDIO", "a", "a") + media("AUDIO", "b", "b") + media("VIDEO", "vid", "c") +
        stream(kAc4Video, "v", "AUDIO=\"a\"") +
        stream(kAc4Video, "w", "AUDIO=\"b\",VIDEO=\"vid\"") +
        stream(kAc4Video, "x", "AUDIO=\"a\"") + stream("hvc1,ac-4.02.01.00", "y", "AUDIO=\"b\""));
    EXPECT_EQ(checked.group_count, 2U);
    const auto& streams = checked.playlist.streams;
    EXPECT_EQ(streams[0].group, 1U);
    EXPECT_EQ(streams[1].group, 2U);
    EXPECT_EQ(streams[2].group, 1U);
    EXPECT_EQ(streams[3].group, 2U);
    EXPECT_EQ(checked.playlist.media[0].group, 1U);
    EXPECT_EQ(checked.playlist.media[1].group, 2U);
    EXPECT_EQ(checked.playlist.media[2].group, 2U);
}

TEST(TimingGroupTest, StreamTakesTheGroupOfItsFirstNumberedRendition) {
    // The VIDEO rendition stands first; each of the two has a group of its own already.
    const auto checked =
        check_master(media("VIDEO", "vid", "c") + media("AUDIO", "a", "a") +
                     media("AUDIO", "b", "b") + stream(kAc4Video, "v", "AUDIO=\"a\"") +
                     stream(kAc4Video, "w", "AUDIO=\"b\",VIDEO=\"vid\"") +
                     stream(kAc4Video, "x", "AUDIO=\"a\",VIDEO=\"vid\""));
    EXPECT_EQ(checked.group_count, 2U);
    EXPECT_EQ(checked.playlist.streams[2].group, 2U);
    EXPECT_EQ(checked.playlist.media[1].group, 1U);
}

TEST(TimingGroupTest, RenditionTakesTheGroupThatItsStreamFound) {
    const auto checked = check_master(media("AUDIO", "a", "a") + media("VIDEO", "vid", "c") +
                                      stream(kAc4Video, "v", "AUDIO=\"a\"") +
                                      stream(kAc4Video, "w", "AUDIO=\"a\",VIDEO=\"vid\""));
    EXPECT_EQ(checked.group_count, 1U);
    EXPECT_EQ(checked.playlist.media[1].group, 1U);
}

TEST(TimingGroupTest, StreamWithoutRenditionsOrNotFollowedHasNone) {
    const auto checked = check_master(media("AUDIO", "a", "a") + stream(kAc4Video, "v") +
                                      stream(kAc4Video, "w", "AUDIO=\"a\"") +
                                      stream(kAc4Video, "w", "AUDIO=\"a\",RESOLUTION=1x1"));
    EXPECT_EQ(checked.group_count, 1U);
    EXPECT_EQ(checked.playlist.streams[0].group, 0U);
    EXPECT_EQ(checked.playlist.streams[1].group, 1U);
    EXPECT_EQ(checked.playlist.streams[2].enabled, 0U);
    EXPECT_EQ(checked.playlist.streams[2].group, 0U);
}

TEST(TimingGroupTest, RenditionThatIsNotFollowedHasNone) {
    const auto checked =
        check_master("#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"n\"\n" +
                     media("AUDIO", "a", "b") + stream(kAc4Video, "w", "AUDIO=\"a\""));
    EXPECT_EQ(checked.group_count, 1U);
    EXPECT_EQ(checked.playlist.media[0].group, 0U);
    EXPECT_EQ(checked.playlist.media[1].group, 1U);
}

}  // namespace
}  // namespace mediasplit
