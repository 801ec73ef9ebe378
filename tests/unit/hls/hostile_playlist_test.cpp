// Playlists that are no playlists, cut, damaged, or very long.
#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "tests/support/playlist_input.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

constexpr std::string_view kEverything =
    "#EXTM3U\n#EXT-X-VERSION:7\n#EXT-X-TARGETDURATION:6\n#EXT-X-MEDIA-SEQUENCE:3\n"
    "#EXT-X-KEY:METHOD=SAMPLE-AES,URI=\"data:text/plain;base64,AAEC\",IV=0x0102\n"
    "#EXT-X-MAP:URI=\"i.mp4\",BYTERANGE=\"7@0\"\n#EXTINF:1.5,t\n#EXT-X-BYTERANGE:9\ns.mp4\n"
    "#EXT-X-DISCONTINUITY\n#EXTINF:2,\n#EXT-X-PROGRAM-DATE-TIME:2020\nt.mp4\n#EXT-X-ENDLIST\n"
    "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",NAME=\"n,m\",URI=\"a.m3u8\"\n"
    "#EXT-X-I-FRAME-STREAM-INF:CODECS=\"avc1,hvc1\",URI=\"i.m3u8\"\n";

constexpr std::string_view kStreams =
    "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"avc1.640028,ec-3\",AUDIO=\"a\"\nv.m3u8\n"
    "#EXT-X-STREAM-INF:CODECS=\"\"hvc1\",CHANNELS=\"2\"\nw.m3u8\n";

TEST(HostilePlaylistTest, CutAtEveryByte) {
    for (const std::string_view text : {kEverything, kStreams}) {
        for (std::size_t size = 0; size <= text.size(); ++size) {
            const auto read = read_playlist(text.substr(0, size));
            EXPECT_LE(read.playlist.slots.size(), 5U);
        }
    }
}

TEST(HostilePlaylistTest, EveryByteFlipped) {
    for (const std::string_view text : {kEverything, kStreams}) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            for (const int mask : {0x01, 0x20, 0x80, 0xFF}) {
                std::string damaged(text);
                damaged[at] = static_cast<char>(damaged[at] ^ mask);
                const auto read = read_playlist(damaged);
                EXPECT_LE(read.playlist.slots.size(), 6U);
            }
        }
    }
}

TEST(HostilePlaylistTest, EveryByteZero) {
    for (const std::string_view text : {kEverything, kStreams}) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string damaged(text);
            damaged[at] = '\0';
            const auto read = read_playlist(damaged);
            EXPECT_LE(read.playlist.slots.size(), 5U);
        }
    }
}

TEST(HostilePlaylistTest, BinaryFileHoldsNothing) {
    std::string bytes;
    std::uint32_t value = 1;
    for (int i = 0; i < 100000; ++i) {
        value = value * 1664525U + 1013904223U;
        bytes += static_cast<char>(value >> 24);
    }
    const auto read = read_playlist(bytes);
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_TRUE(read.playlist.slots.empty());
    EXPECT_EQ(read.playlist.is_master, 0U);
}

TEST(HostilePlaylistTest, OneLineOfAMegabyteHoldsNothing) {
    const auto read = read_playlist(std::string(1 << 20, '#'));
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_TRUE(read.playlist.slots.empty());
}

TEST(HostilePlaylistTest, TagThatOnlyTheSecondPassSeesIsDropped) {
    // The first pass takes the line for a sequence number, by what stands further on in it.
    const auto read =
        read_playlist("#EXT-X-DISCONTINUITY #EXT-X-DISCONTINUITY-SEQUENCE\n#EXTINF:1,\na\n");
    ASSERT_EQ(read.playlist.slots.size(), 1U);
    EXPECT_EQ(read.playlist.slots[0].kind, kSlotDiscontinuity);
    EXPECT_EQ(read.playlist.has_discontinuity, 1U);
}

TEST(HostilePlaylistTest, AttributeListsOfCommasAndQuotes) {
    for (const char* list : {",", ",,,,", "\"", "\"\"\"", "=", "=,=,=", "URI", "URI=", "CODECS=",
                             "CODECS=\"", "CODECS=\"\"", "CODECS=\",", "CODECS=\"\"\"",
                             "IV=", "BYTERANGE=", "BYTERANGE=\"", "NAME=\",,,\",NAME=\""}) {
        for (const char* tag : {"#EXT-X-MEDIA:", "#EXT-X-STREAM-INF:", "#EXT-X-I-FRAME-STREAM-INF:",
                                "#EXT-X-MAP:", "#EXT-X-KEY:", "#EXTINF:", "#EXT-X-BYTERANGE:"}) {
            const auto read = read_playlist(std::string(tag) + list + "\n#EXTINF:1,\na\n");
            EXPECT_LE(read.playlist.slots.size(), 2U);
        }
    }
}

TEST(HostilePlaylistTest, MasterPlaylistOfMoreThan100000RecordsIsInvalid) {
    std::string text = "#EXT-X-STREAM-INF:BANDWIDTH=1\nv.m3u8\n";
    for (int i = 1; i < 100'000; ++i) {
        text += "#EXT-X-MEDIA:\n";
    }
    EXPECT_EQ(read_playlist(text).playlist.media.size(), 99'999U);
    const RecordingSink sink;
    const auto read = read_playlist(text + "#EXT-X-MEDIA:\n");
    EXPECT_EQ(read.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{4059});
    EXPECT_TRUE(read.playlist.media.empty());
}

TEST(HostilePlaylistTest, LongFolderBeforeVeryManySegmentsIsInvalid) {
    // 70,000 copies of a folder's name of 4,000 characters would take 280 MB, and more than 256
    // MiB.
    std::string text;
    for (int i = 0; i < 70'000; ++i) {
        text += "#EXTINF:\nx\n";
    }
    const RecordingSink sink;
    const auto read = read_playlist(text, "http://h/" + std::string(4000, 'f') + "/list.m3u8");
    EXPECT_EQ(read.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{4059});
}

// Milliseconds of the processor that a playlist of `count` segments takes.
double time_segments(std::size_t count) {
    std::string text = "#EXTM3U\n#EXT-X-KEY:METHOD=AES-128,URI=\"k\"\n";
    for (std::size_t i = 0; i < count; ++i) {
        text += "#EXTINF:6.006,\n#EXT-X-BYTERANGE:1000";
        text += i == 0 ? "@0\n" : "\n";
        text += "segment.ts\n#EXT-X-DISCONTINUITY\n";
    }
    const std::clock_t start = std::clock();
    const auto read = read_playlist(text);
    const std::clock_t time = std::clock() - start;
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(read.playlist.slots.size(), 2 * count);
    EXPECT_EQ(read.playlist.slots.at(2 * count - 2).byte_range->offset,
              std::to_string((count - 1) * 1000));
    return 1000.0 * static_cast<double>(time) / CLOCKS_PER_SEC;
}

TEST(HostilePlaylistTest, TimeIsLinearInTheNumberOfSegments) {
    const double few = time_segments(10000);
    const double many = time_segments(100000);
    RecordProperty("milliseconds_of_100000_segments", static_cast<int>(many));
    // Quadratic time would take a hundred times as long.
    EXPECT_LT(many, 40 * few + 100);
}

TEST(HostilePlaylistTest, DiscontinuitiesAheadOfARangeAreLookedAtOnce) {
    std::string text = "#EXTINF:1,\n#EXT-X-BYTERANGE:1@0\na\n";
    for (int i = 0; i < 100000; ++i) {
        text += "#EXT-X-DISCONTINUITY\n";
    }
    for (int i = 0; i < 100000; ++i) {
        text += "#EXTINF:1,\n#EXT-X-BYTERANGE:1\na\n";
    }
    const auto read = read_playlist(text);
    EXPECT_EQ(read.playlist.slots.back().byte_range->offset, "100000");
}

}  // namespace
}  // namespace mediasplit
