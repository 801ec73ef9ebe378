// The tree that a playlist leaves on request.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/support/playlist_input.h"

namespace mediasplit {
namespace {

std::string id_of(const void* address) {
    return std::to_string(reinterpret_cast<std::uintptr_t>(address));
}

class PlaylistTreeTest : public testing::Test {
protected:
    const PlaylistRecord& read(std::string text) {
        const FilePtr file = open_text(text);
        EXPECT_EQ(parse_file(file.get(), "dir/m.m3u8", playlist_, root_.get()), Status::kOk);
        return playlist_;
    }

    PlaylistRecord playlist_;
    EzxmlPtr root_ = ezxml_new("playlist");
};

TEST_F(PlaylistTreeTest, TagsBecomeChildrenInTheOrderOfTheLines) {
    read(
        "#EXTM3U\n#EXT-X-VERSION:6\n#EXT-X-STREAM-INF:BANDWIDTH=1\na.m3u8\n"
        "#EXT-X-MEDIA:NAME=\"n\"\n#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=2\n"
        "#EXT-X-STREAM-INF:BANDWIDTH=3\nb.m3u8\n");
    std::vector<std::string> names;
    std::vector<std::uint64_t> positions;
    for (const Ezxml* node = root_->child; node != nullptr; node = node->ordered) {
        names.emplace_back(node->name);
        positions.push_back(node->off);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"EXT-X-VERSION", "EXT-X-STREAM-INF", "EXT-X-MEDIA",
                                               "EXT-X-I-FRAME-STREAM-INF", "EXT-X-STREAM-INF"}));
    EXPECT_EQ(positions, (std::vector<std::uint64_t>{0, 1, 2, 3, 4}));
}

TEST_F(PlaylistTreeTest, RecognisedAttributesStandUnderTheirNames) {
    read(
        "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"g\",NAME=\"n\",DEFAULT=YES,AUTOSELECT=NO,"
        "LANGUAGE=\"en\",ASSOC-LANGUAGE=\"de\",CHANNELS=\"2\",URI=\"a.m3u8\",FORCED=NO,"
        "INSTREAM-ID=\"i\",CHARACTERISTICS=\"c\",OTHER=1,NAME=\"second\"\n");
    const Ezxml* node = ezxml_child(root_.get(), "EXT-X-MEDIA");
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(ezxml_attr(node, "TYPE"), "AUDIO");
    EXPECT_STREQ(ezxml_attr(node, "GROUP-ID"), "g");
    EXPECT_STREQ(ezxml_attr(node, "NAME"), "n");
    EXPECT_STREQ(ezxml_attr(node, "DEFAULT"), "YES");
    EXPECT_STREQ(ezxml_attr(node, "AUTOSELECT"), "NO");
    EXPECT_STREQ(ezxml_attr(node, "LANGUAGE"), "en");
    EXPECT_STREQ(ezxml_attr(node, "ASSOC-LANGUAGE"), "de");
    EXPECT_STREQ(ezxml_attr(node, "CHANNELS"), "2");
    EXPECT_STREQ(ezxml_attr(node, "URI"), "a.m3u8");
    EXPECT_STREQ(ezxml_attr(node, "FORCED"), "NO");
    EXPECT_STREQ(ezxml_attr(node, "INSTREAM-ID"), "\"i\"");
    EXPECT_STREQ(ezxml_attr(node, "CHARACTERISTICS"), "\"c\"");
    EXPECT_EQ(ezxml_attr(node, "OTHER"), nullptr);
}

TEST_F(PlaylistTreeTest, UriLineAndVersionAreTexts) {
    read(
        "#EXT-X-VERSION:6\n#EXT-X-STREAM-INF:CODECS=\"avc1,ec-3\"\na.m3u8\n"
        "#EXT-X-STREAM-INF:AUDIO=\"g\"\n");
    EXPECT_STREQ(ezxml_child(root_.get(), "EXT-X-VERSION")->txt, "6");
    const Ezxml* stream = ezxml_child(root_.get(), "EXT-X-STREAM-INF");
    EXPECT_STREQ(stream->txt, "a.m3u8");
    EXPECT_STREQ(ezxml_attr(stream, "CODECS"), "avc1,ec-3");
    ASSERT_NE(stream->next, nullptr);
    EXPECT_STREQ(stream->next->txt, "");
    EXPECT_STREQ(ezxml_attr(stream->next, "AUDIO"), "g");
}

TEST_F(PlaylistTreeTest, IframeUriIsAnAttribute) {
    read("#EXT-X-I-FRAME-STREAM-INF:URI=\"i.m3u8\",VIDEO-RANGE=PQ\n");
    const Ezxml* node = ezxml_child(root_.get(), "EXT-X-I-FRAME-STREAM-INF");
    EXPECT_STREQ(ezxml_attr(node, "URI"), "i.m3u8");
    EXPECT_STREQ(ezxml_attr(node, "VIDEO-RANGE"), "PQ");
}

TEST_F(PlaylistTreeTest, NodesKnowTheirRecords) {
    const PlaylistRecord& playlist = read(
        "#EXT-X-VERSION:6\n#EXT-X-MEDIA:\n#EXT-X-MEDIA:\n#EXT-X-STREAM-INF:\na\n"
        "#EXT-X-I-FRAME-STREAM-INF:\n");
    const auto id = [this](const char* name) {
        return std::string(ezxml_attr(ezxml_child(root_.get(), name), "ui-id"));
    };
    EXPECT_EQ(id("EXT-X-VERSION"), id_of(&playlist));
    EXPECT_EQ(id("EXT-X-MEDIA"), id_of(&playlist.media[0]));
    EXPECT_EQ(ezxml_attr(ezxml_child(root_.get(), "EXT-X-MEDIA")->next, "ui-id"),
              id_of(&playlist.media[1]));
    EXPECT_EQ(id("EXT-X-STREAM-INF"), id_of(playlist.streams.data()));
    EXPECT_EQ(id("EXT-X-I-FRAME-STREAM-INF"), id_of(playlist.iframes.data()));
}

TEST_F(PlaylistTreeTest, SegmentsLeaveNoNodes) {
    read("#EXT-X-TARGETDURATION:6\n#EXT-X-MAP:URI=\"i\"\n#EXTINF:1,\na\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(root_->child, nullptr);
}

}  // namespace
}  // namespace mediasplit
