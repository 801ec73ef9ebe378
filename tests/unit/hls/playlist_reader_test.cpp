#include "src/hls/playlist_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

#include "tests/support/playlist_input.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

TEST(PlaylistReaderTest, EmptyFileHoldsNothing) {
    const RecordingSink sink;
    const auto read = read_playlist("");
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(read.playlist.is_master, 0U);
    EXPECT_TRUE(read.playlist.slots.empty());
    EXPECT_EQ(read.playlist.url, "dir/list.m3u8");
    EXPECT_EQ(sink.ids(), Ids{});
}

TEST(PlaylistReaderTest, NoFileRaises4022) {
    const RecordingSink sink;
    PlaylistRecord playlist;
    EXPECT_EQ(parse_file(nullptr, "a.m3u8", playlist, nullptr), Status::kFailed);
    EXPECT_EQ(sink.ids(), Ids{4022});
    EXPECT_EQ(sink.reports()[0].text, "Fail to open the file : a.m3u8");
}

TEST(PlaylistReaderTest, SegmentsAndStreamsInOnePlaylistRaise4059) {
    const RecordingSink sink;
    const auto read = read_playlist(
        "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\nv.m3u8\n#EXTINF:1,\na.ts\n", "m.m3u8");
    EXPECT_EQ(read.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), Ids{4059});
    EXPECT_EQ(sink.reports()[0].text, "In HLS, the playlist is invalid: m.m3u8");
    EXPECT_TRUE(read.playlist.streams.empty());
    EXPECT_TRUE(read.playlist.slots.empty());
    EXPECT_EQ(read.playlist.is_master, 0U);
}

TEST(PlaylistReaderTest, AnySlotTagBesideAStreamRaises4059) {
    for (const char* tag :
         {"#EXTINF:1,\na.ts", "#EXT-X-MAP:URI=\"i\"", "#EXT-X-ENDLIST", "#EXT-X-DISCONTINUITY"}) {
        const RecordingSink sink;
        const auto read = read_playlist("#EXT-X-STREAM-INF:\nv\n" + std::string(tag) + "\n");
        EXPECT_EQ(sink.ids(), Ids{4059}) << tag;
        EXPECT_EQ(read.status, Status::kFailed) << tag;
    }
    const RecordingSink sink;
    EXPECT_EQ(read_playlist("#EXT-X-STREAM-INF:\nv\n#EXT-X-DISCONTINUITY-SEQUENCE:4\n").status,
              Status::kOk);
    EXPECT_EQ(sink.ids(), Ids{});
    EXPECT_TRUE(sink.was_evaluated(4059));
}

TEST(PlaylistReaderTest, FileThatCannotBeRewoundFailsWithoutAMessage) {
    const RecordingSink sink;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    constexpr std::string_view kText = "#EXTM3U\n";
    ASSERT_EQ(write(ends[1], kText.data(), kText.size()), static_cast<ssize_t>(kText.size()));
    close(ends[1]);
    const FilePtr file(fdopen(ends[0], "rb"));
    PlaylistRecord playlist;
    EXPECT_EQ(parse_file(file.get(), "a.m3u8", playlist, nullptr), Status::kFailed);
    EXPECT_EQ(sink.ids(), Ids{});
}

TEST(PlaylistReaderTest, IframeStreamsAloneMakeNoMasterPlaylist) {
    const auto read =
        read_playlist("#EXTM3U\n#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=1,URI=\"i.m3u8\"\n");
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(read.playlist.is_master, 0U);
    EXPECT_EQ(read.playlist.iframes.size(), 1U);
    EXPECT_TRUE(read.playlist.slots.empty());
}

TEST(PlaylistReaderTest, FormerContentOfTheRecordIsDropped) {
    std::string text = "#EXTINF:1,\na.ts\n";
    const FilePtr file = open_text(text);
    PlaylistRecord playlist;
    playlist.url = "old.m3u8";
    playlist.total_ms = 7;
    playlist.slots.resize(5);
    playlist.version = "3";
    EXPECT_EQ(parse_file(file.get(), playlist.url, playlist, nullptr), Status::kOk);
    EXPECT_EQ(playlist.url, "old.m3u8");
    EXPECT_EQ(playlist.slots.size(), 1U);
    EXPECT_EQ(playlist.total_ms, 0);
    EXPECT_FALSE(playlist.version);
}

TEST(PlaylistReaderTest, DestroyLeavesAnEmptyRecord) {
    for (const char* text : {"#EXT-X-STREAM-INF:BANDWIDTH=1\nv\n#EXT-X-MEDIA:TYPE=AUDIO\n",
                             "#EXT-X-KEY:METHOD=NONE\n#EXTINF:1\na.ts\n"}) {
        auto read = read_playlist(text);
        destroy(read.playlist);
        EXPECT_FALSE(read.playlist.url);
        EXPECT_EQ(read.playlist.is_master, 0U);
        EXPECT_TRUE(read.playlist.streams.empty());
        EXPECT_TRUE(read.playlist.media.empty());
        EXPECT_TRUE(read.playlist.slots.empty());
    }
}

TEST(PlaylistReaderTest, TagsOfTheWholePlaylistAreKept) {
    const auto read = read_playlist(
        "#EXTM3U\n#EXT-X-VERSION:7\n  #EXT-X-TARGETDURATION:6 \r\n#EXT-X-MEDIA-SEQUENCE:12\n"
        "#EXT-X-PLAYLIST-TYPE:VOD\n#EXT-X-INDEPENDENT-SEGMENTS\n#EXT-X-I-FRAMES-ONLY\n"
        "#EXT-X-DISCONTINUITY-SEQUENCE:1\n#EXT-X-PROGRAM-DATE-TIME:2020\n#EXT-X-DATERANGE:ID=1\n"
        "#EXT-X-SESSION-DATA:X\n#EXT-X-SESSION-KEY:X\n#EXT-X-UNKNOWN:X\n# comment\nfree text\n");
    EXPECT_EQ(read.status, Status::kOk);
    EXPECT_EQ(read.playlist.version, "7");
    EXPECT_FALSE(read.playlist.master_version);
    EXPECT_EQ(read.playlist.target_duration, "6");
    EXPECT_EQ(read.playlist.media_sequence, "12");
    EXPECT_EQ(read.playlist.playlist_type, "VOD");
    EXPECT_EQ(read.playlist.independent_segments, 1U);
    EXPECT_EQ(read.playlist.iframes_only, 1U);
    EXPECT_EQ(read.playlist.has_discontinuity, 1U);
    EXPECT_TRUE(read.playlist.slots.empty());
}

TEST(PlaylistReaderTest, VersionOfAMasterPlaylistHasItsOwnPlace) {
    const auto read = read_playlist("#EXT-X-VERSION:12\n#EXT-X-STREAM-INF:\nv.m3u8\n");
    EXPECT_EQ(read.playlist.is_master, 1U);
    EXPECT_EQ(read.playlist.master_version, "12");
    EXPECT_FALSE(read.playlist.version);
}

TEST(PlaylistReaderTest, TagsThatAreMissingLeaveNothing) {
    const auto read = read_playlist("#EXTM3U\n");
    EXPECT_FALSE(read.playlist.version);
    EXPECT_FALSE(read.playlist.target_duration);
    EXPECT_FALSE(read.playlist.media_sequence);
    EXPECT_FALSE(read.playlist.playlist_type);
    EXPECT_EQ(read.playlist.independent_segments, 0U);
    EXPECT_EQ(read.playlist.iframes_only, 0U);
    EXPECT_EQ(read.playlist.has_discontinuity, 0U);
}

TEST(PlaylistReaderTest, DiscontinuityIsASlotAndItsSequenceNumberIsNot) {
    const auto read =
        read_playlist("#EXT-X-DISCONTINUITY-SEQUENCE:1\n#EXT-X-DISCONTINUITY\n#EXT-X-ENDLIST\n");
    ASSERT_EQ(read.playlist.slots.size(), 2U);
    EXPECT_EQ(read.playlist.slots[0].kind, kSlotDiscontinuity);
    EXPECT_FALSE(read.playlist.slots[0].uri);
    EXPECT_FALSE(read.playlist.slots[0].duration);
    EXPECT_EQ(read.playlist.slots[1].kind, kSlotEndOfList);
    EXPECT_EQ(read.playlist.has_discontinuity, 1U);
}

TEST(PlaylistReaderTest, UrisStandBehindTheFolderOfThePlaylist) {
    constexpr const char* kText =
        "#EXTINF:1,\na.ts\n#EXTINF:1,\nhttp://h/b.ts\n#EXTINF:1,\nhttps://h/c.ts\n"
        "#EXTINF:1,\n../d.ts\n#EXTINF:1,\nftp://h/e.ts\n";
    const auto local = read_playlist(kText, "x/y/list.m3u8");
    ASSERT_EQ(local.playlist.slots.size(), 5U);
    EXPECT_EQ(local.playlist.slots[0].uri, "x/y/a.ts");
    EXPECT_EQ(local.playlist.slots[1].uri, "http://h/b.ts");
    EXPECT_EQ(local.playlist.slots[2].uri, "https://h/c.ts");
    EXPECT_EQ(local.playlist.slots[3].uri, "x/y/../d.ts");
    EXPECT_EQ(local.playlist.slots[4].uri, "x/y/ftp://h/e.ts");
    const auto address = read_playlist(kText, "http://host/x/list.m3u8");
    EXPECT_EQ(address.playlist.slots[0].uri, "http://host/x/a.ts");
    const auto bare = read_playlist(kText, "list.m3u8");
    EXPECT_EQ(bare.playlist.slots[0].uri, "a.ts");
    const auto none = read_playlist(kText, nullptr);
    EXPECT_FALSE(none.playlist.url);
    EXPECT_EQ(none.playlist.slots[0].uri, "a.ts");
}

}  // namespace
}  // namespace mediasplit
