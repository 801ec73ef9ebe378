#include <gtest/gtest.h>

#include <string>

#include "tests/support/playlist_input.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

std::vector<SegmentSlot> read_slots(std::string_view text) {
    auto read = read_playlist(text, "dir/list.m3u8");
    EXPECT_EQ(read.status, Status::kOk);
    return std::move(read.playlist.slots);
}

// --- #EXT-X-MAP ---

TEST(MapTagTest, RangeAndUriAreRead) {
    const auto slots = read_slots("#EXT-X-MAP:URI=\"init.mp4\",BYTERANGE=\"720@16\"\n");
    ASSERT_EQ(slots.size(), 1U);
    EXPECT_EQ(slots[0].kind, kSlotInitialization);
    EXPECT_EQ(slots[0].uri, "dir/init.mp4");
    ASSERT_NE(slots[0].byte_range, nullptr);
    EXPECT_EQ(slots[0].byte_range->length, "720");
    EXPECT_EQ(slots[0].byte_range->offset, "16");
    EXPECT_FALSE(slots[0].duration);
    EXPECT_EQ(slots[0].key, nullptr);
}

TEST(MapTagTest, CommaInTheQuotedUriCutsIt) {
    const auto slots = read_slots("#EXT-X-MAP:URI=\"init,1.mp4\"\n");
    ASSERT_EQ(slots.size(), 1U);
    // The last character of what is left goes in the place of the quote.
    EXPECT_EQ(slots[0].uri, "dir/ini");
}

TEST(MapTagTest, WithoutAttributesTheSlotIsEmpty) {
    const auto slots = read_slots("#EXT-X-MAP:\n");
    ASSERT_EQ(slots.size(), 1U);
    EXPECT_EQ(slots[0].kind, kSlotInitialization);
    EXPECT_FALSE(slots[0].uri);
    EXPECT_EQ(slots[0].byte_range, nullptr);
}

TEST(MapTagTest, UriOf2000CharactersIsRead) {
    const std::string uri(2000, 'u');
    EXPECT_EQ(read_slots("#EXT-X-MAP:URI=\"" + uri + "\"\n").at(0).uri, "dir/" + uri);
}

TEST(MapTagTest, EmptyRangeHasAnEmptyLength) {
    const auto slots = read_slots("#EXT-X-MAP:URI=\"i\",BYTERANGE=\"\"\n");
    ASSERT_NE(slots.at(0).byte_range, nullptr);
    EXPECT_EQ(slots[0].byte_range->length, "");
    EXPECT_FALSE(slots[0].byte_range->offset);
}

TEST(MapTagTest, RangeWithoutOffsetRaises4059) {
    const RecordingSink sink;
    const auto read = read_playlist("#EXT-X-MAP:URI=\"i\",BYTERANGE=\"720\"\n", "m.m3u8");
    EXPECT_EQ(read.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), Ids{4059});
    EXPECT_EQ(sink.reports()[0].text, "In HLS, the playlist is invalid: m.m3u8");
    ASSERT_EQ(read.playlist.slots.size(), 1U);
    EXPECT_EQ(read.playlist.slots[0].byte_range->length, "720");
}

// --- #EXTINF ---

TEST(SegmentTagTest, DurationEndsAtTheFirstComma) {
    const auto slots =
        read_slots("#EXTINF:6.006,Title, with comma\na.ts\n#EXTINF:4\nb.ts\n#EXTINF:,\nc.ts\n");
    ASSERT_EQ(slots.size(), 3U);
    EXPECT_EQ(slots[0].kind, kSlotMedia);
    EXPECT_EQ(slots[0].duration, "6.006");
    EXPECT_EQ(slots[0].uri, "dir/a.ts");
    EXPECT_EQ(slots[0].byte_range, nullptr);
    EXPECT_EQ(slots[1].duration, "4");
    EXPECT_EQ(slots[2].duration, "");
}

TEST(SegmentTagTest, LinesEndInAnyWay) {
    const auto slots = read_slots("#EXTINF:1,\r\n  a.ts\t\r\n#EXT-X-ENDLIST");
    ASSERT_EQ(slots.size(), 2U);
    EXPECT_EQ(slots[0].uri, "dir/a.ts");
    EXPECT_EQ(slots[1].kind, kSlotEndOfList);
}

TEST(SegmentTagTest, RangeWithOffset) {
    const auto slots = read_slots("#EXTINF:1,\n#EXT-X-BYTERANGE:1000@200\na.ts\n");
    ASSERT_EQ(slots.size(), 1U);
    EXPECT_EQ(slots[0].kind, kSlotMediaRange);
    EXPECT_EQ(slots[0].uri, "dir/a.ts");
    ASSERT_NE(slots[0].byte_range, nullptr);
    EXPECT_EQ(slots[0].byte_range->length, "1000");
    EXPECT_EQ(slots[0].byte_range->offset, "200");
}

TEST(SegmentTagTest, RangeWithoutOffsetGoesOnBehindThePreviousOne) {
    const auto slots = read_slots(
        "#EXTINF:1,\n#EXT-X-BYTERANGE:1000@200\na.ts\n"
        "#EXTINF:1,\n#EXT-X-BYTERANGE:30\na.ts\n"
        "#EXTINF:1,\n#EXT-X-BYTERANGE:4\na.ts\n");
    ASSERT_EQ(slots.size(), 3U);
    EXPECT_EQ(slots[1].byte_range->offset, "1200");
    EXPECT_EQ(slots[2].byte_range->offset, "1230");
}

TEST(SegmentTagTest, RangeWithoutOffsetGoesOnBehindAMapAndOverADiscontinuity) {
    const auto slots = read_slots(
        "#EXT-X-MAP:URI=\"a.mp4\",BYTERANGE=\"700@0\"\n"
        "#EXTINF:1,\n#EXT-X-BYTERANGE:30\na.mp4\n#EXT-X-DISCONTINUITY\n#EXT-X-DISCONTINUITY\n"
        "#EXTINF:1,\n#EXT-X-BYTERANGE:4\na.mp4\n");
    ASSERT_EQ(slots.size(), 5U);
    EXPECT_EQ(slots[1].byte_range->offset, "700");
    EXPECT_EQ(slots[4].byte_range->offset, "730");
}

TEST(SegmentTagTest, RangeBeyond32BitsGoesOn) {
    const auto slots = read_slots(
        "#EXTINF:1,\n#EXT-X-BYTERANGE:4294967296@4294967296\na\n"
        "#EXTINF:1,\n#EXT-X-BYTERANGE:1\na\n");
    EXPECT_EQ(slots.at(1).byte_range->offset, "8589934592");
}

TEST(SegmentTagTest, FirstRangeMayLackItsOffset) {
    const RecordingSink sink;
    const auto slots = read_slots(
        "#EXTINF:1,\n#EXT-X-BYTERANGE:1000\na.ts\n#EXTINF:1,\n#EXT-X-BYTERANGE:30\na.ts\n");
    ASSERT_EQ(slots.size(), 2U);
    EXPECT_EQ(slots[0].byte_range->length, "1000");
    EXPECT_FALSE(slots[0].byte_range->offset);
    EXPECT_EQ(slots[1].byte_range->offset, "1000");
    EXPECT_EQ(sink.ids(), Ids{});
}

TEST(SegmentTagTest, RangeWithNothingToGoOnFromRaises4059Once) {
    const RecordingSink sink;
    const auto read = read_playlist(
        "#EXTINF:1,\na.ts\n#EXTINF:1,\n#EXT-X-BYTERANGE:30\na.ts\n#EXT-X-ENDLIST\n"
        "#EXTINF:1,\n#EXT-X-BYTERANGE:30\na.ts\n",
        "m.m3u8");
    EXPECT_EQ(read.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), Ids{4059});
    EXPECT_FALSE(read.playlist.slots.at(1).byte_range->offset);
    EXPECT_EQ(read.playlist.slots[1].uri, "a.ts");
}

TEST(SegmentTagTest, EmptyRangeHasAnEmptyLength) {
    for (const char* line : {"#EXT-X-BYTERANGE:", "#EXT-X-BYTERANGE", "#EXT-X-BYTERANGE:@"}) {
        const auto slots = read_slots("#EXTINF:1,\na\n#EXTINF:1,\n" + std::string(line) + "\nb\n");
        ASSERT_EQ(slots.size(), 2U) << line;
        EXPECT_EQ(slots[1].kind, kSlotMediaRange) << line;
        EXPECT_EQ(slots[1].byte_range->length, "") << line;
        EXPECT_FALSE(slots[1].byte_range->offset) << line;
        EXPECT_EQ(slots[1].uri, "dir/b") << line;
    }
}

TEST(SegmentTagTest, OneDateOrBitRateLineIsPassedOver) {
    for (const std::string line :
         {"#EXT-X-PROGRAM-DATE-TIME:2020-01-01T00:00:00Z", "#EXT-X-BITRATE:100"}) {
        EXPECT_EQ(read_slots("#EXTINF:1,\n" + line + "\na.ts\n").at(0).uri, "dir/a.ts");
        EXPECT_EQ(read_slots("#EXTINF:1,\n" + line + "\n" + line + "\na.ts\n").at(0).uri,
                  "dir/" + line);
    }
}

TEST(SegmentTagTest, DateLineBehindARangeIsTakenAsTheUri) {
    const auto slots =
        read_slots("#EXTINF:1,\n#EXT-X-BYTERANGE:1@0\n#EXT-X-PROGRAM-DATE-TIME:2020\na.ts\n");
    ASSERT_EQ(slots.size(), 1U);
    EXPECT_EQ(slots[0].uri, "dir/#EXT-X-PROGRAM-DATE-TIME:2020");
    EXPECT_EQ(slots[0].kind, kSlotMediaRange);
}

TEST(SegmentTagTest, RangeAheadOfItsSegmentIsPassedOver) {
    const auto slots = read_slots("#EXT-X-BYTERANGE:1@0\n#EXTINF:1,\na.ts\n");
    ASSERT_EQ(slots.size(), 1U);
    EXPECT_EQ(slots[0].kind, kSlotMedia);
    EXPECT_EQ(slots[0].byte_range, nullptr);
}

TEST(SegmentTagTest, TagInThePlaceOfTheUriIsTakenAsTheUriAndLeavesAnUnusedSlot) {
    const auto slots = read_slots("#EXTINF:1,\n#EXT-X-DISCONTINUITY\n#EXTINF:2,\nb.ts\n");
    ASSERT_EQ(slots.size(), 3U);
    EXPECT_EQ(slots[0].uri, "dir/#EXT-X-DISCONTINUITY");
    EXPECT_EQ(slots[1].uri, "dir/b.ts");
    EXPECT_EQ(slots[2].kind, kSlotUnset);
    EXPECT_FALSE(slots[2].uri);
}

TEST(SegmentTagTest, BlankLineIsTheUri) {
    EXPECT_EQ(read_slots("#EXTINF:1,\n\na.ts\n").at(0).uri, "dir/");
}

TEST(SegmentTagTest, EndOfFileLeavesTheSegmentWithoutUri) {
    const auto slots = read_slots("#EXTINF:1,\n");
    ASSERT_EQ(slots.size(), 1U);
    EXPECT_EQ(slots[0].kind, kSlotMedia);
    EXPECT_FALSE(slots[0].uri);
}

TEST(SegmentTagTest, UriOf2000CharactersIsRead) {
    const std::string uri(2000, 'u');
    EXPECT_EQ(read_slots("#EXTINF:1,\n" + uri + "\n").at(0).uri, "dir/" + uri);
}

TEST(SegmentTagTest, LineOverTheBufferComesInPieces) {
    const std::string uri(4095, 'u');
    const auto slots = read_slots("#EXTINF:1,\n" + uri + "#EXTINF:2,\nb.ts\n");
    // The rest of the long line is a line of its own.
    ASSERT_EQ(slots.size(), 2U);
    EXPECT_EQ(slots[0].uri, "dir/" + uri);
    EXPECT_EQ(slots[1].duration, "2");
    EXPECT_EQ(slots[1].uri, "dir/b.ts");
}

// --- #EXT-X-KEY ---

TEST(KeyTagTest, KeyHoldsForAllSegmentsThatFollow) {
    const auto slots = read_slots(
        "#EXTINF:1,\na.ts\n#EXT-X-KEY:METHOD=AES-128,URI=\"k.bin\",IV=0x0A0b4142\n"
        "#EXTINF:1,\nb.ts\n#EXTINF:1,\nc.ts\n#EXT-X-ENDLIST\n");
    ASSERT_EQ(slots.size(), 4U);
    EXPECT_EQ(slots[0].key, nullptr);
    for (const int i : {1, 2}) {
        ASSERT_NE(slots[i].key, nullptr);
        EXPECT_EQ(slots[i].key->method, "AES-128");
        EXPECT_EQ(slots[i].key->uri, "dir/k.bin");
        EXPECT_EQ(slots[i].key->iv, "\x0a\x0b\x41\x42");
    }
    EXPECT_EQ(slots[3].key, nullptr);
    // One tag may speak of a million segments.
    EXPECT_EQ(&*slots[1].key->uri, &*slots[2].key->uri);
    EXPECT_EQ(&*slots[1].key->method, &*slots[2].key->method);
}

TEST(KeyTagTest, KeyAheadOfAMapAndASegmentGoesOnTheMap) {
    const auto slots = read_slots(
        "#EXT-X-KEY:METHOD=SAMPLE-AES,URI=\"k\"\n#EXT-X-MAP:URI=\"i.mp4\"\n#EXTINF:1,\na.mp4\n"
        "#EXTINF:1,\nb.mp4\n");
    ASSERT_EQ(slots.size(), 3U);
    ASSERT_NE(slots[0].key, nullptr);
    EXPECT_EQ(slots[0].key->method, "SAMPLE-AES");
    EXPECT_EQ(slots[0].key->iv, "00000000000000000000000000000000");
    EXPECT_EQ(slots[1].key, nullptr);
    ASSERT_NE(slots[2].key, nullptr);
    EXPECT_EQ(slots[2].key->iv, "00000000000000000000000000000002");
}

TEST(KeyTagTest, KeyBetweenMapAndSegmentGoesOnTheMapToo) {
    const auto slots =
        read_slots("#EXT-X-MAP:URI=\"i.mp4\"\n#EXT-X-KEY:METHOD=SAMPLE-AES\n#EXTINF:1,\na.mp4\n");
    ASSERT_NE(slots.at(0).key, nullptr);
    EXPECT_EQ(slots.at(1).key, nullptr);
}

TEST(KeyTagTest, IvWithoutOneIsTheNumberOfTheSlot) {
    const auto slots = read_slots(
        "#EXT-X-MEDIA-SEQUENCE:250\n#EXT-X-KEY:METHOD=AES-128\n#EXTINF:1,\na\n"
        "#EXT-X-DISCONTINUITY\n#EXTINF:1,\nb\n#EXTINF:1,\nc\n#EXTINF:1,\nd\n#EXTINF:1,\ne\n");
    ASSERT_EQ(slots.size(), 6U);
    EXPECT_EQ(slots[0].key->iv, "000000000000000000000000000000fa");
    EXPECT_EQ(slots[2].key->iv, "000000000000000000000000000000fc");
    EXPECT_EQ(slots[5].key->iv, "000000000000000000000000000000ff");
}

TEST(KeyTagTest, SequenceNumberIsReadAs32Bits) {
    const auto iv = [](const std::string& number) {
        return read_slots("#EXT-X-MEDIA-SEQUENCE:" + number +
                          "\n#EXT-X-KEY:METHOD=NONE\n#EXTINF:1,\na\n")
            .at(0)
            .key->iv;
    };
    EXPECT_EQ(iv("4294967295"), "000000000000000000000000ffffffff");
    EXPECT_EQ(iv("4294967297"), "00000000000000000000000000000001");
    EXPECT_EQ(iv("12x"), "0000000000000000000000000000000c");
    EXPECT_EQ(iv("x"), "00000000000000000000000000000000");
}

TEST(KeyTagTest, IvEndsAtItsFirstZeroByte) {
    const auto slots = read_slots(
        "#EXT-X-KEY:METHOD=AES-128,IV=0x41420043\n#EXTINF:1,\na\n"
        "#EXT-X-KEY:IV=0x00000000000000000000000000000001\n#EXTINF:1,\nb\n");
    EXPECT_EQ(slots.at(0).key->iv, "AB");
    EXPECT_EQ(slots.at(1).key->iv, "");
}

TEST(KeyTagTest, NewValuesReplaceTheOldOnesByOne) {
    const auto slots = read_slots(
        "#EXT-X-KEY:METHOD=AES-128,URI=\"k1\",IV=0x41\n#EXTINF:1,\na\n"
        "#EXT-X-KEY:METHOD=NONE\n#EXTINF:1,\nb\n"
        "#EXT-X-KEY:URI=\"k2\",METHOD=X,METHOD=Y\n#EXTINF:1,\nc\n");
    EXPECT_EQ(slots.at(1).key->method, "NONE");
    EXPECT_EQ(slots.at(1).key->uri, "dir/k1");
    EXPECT_EQ(slots.at(1).key->iv, "A");
    EXPECT_EQ(slots.at(2).key->method, "Y");
    EXPECT_EQ(slots.at(2).key->uri, "dir/k2");
}

TEST(KeyTagTest, AddressesAndDataStandAsTheyAre) {
    const auto uri = [](const std::string& text) {
        return read_slots("#EXT-X-KEY:URI=\"" + text + "\"\n#EXTINF:1,\na\n").at(0).key->uri;
    };
    EXPECT_EQ(uri("data:text/plain;base64,AAECAwQFBgcICQoLDA0ODw=="),
              "data:text/plain;base64,AAECAwQFBgcICQoLDA0ODw==");
    EXPECT_EQ(uri("http://h/k"), "http://h/k");
    EXPECT_EQ(uri("https://h/k"), "https://h/k");
    EXPECT_EQ(uri("skd://k"), "dir/skd://k");
    EXPECT_EQ(uri("a,b,,c"), "dir/a,b,,c");
}

TEST(KeyTagTest, UnknownAttributesMakeNoKey) {
    const auto slots = read_slots("#EXT-X-KEY:KEYFORMAT=\"identity\",METHOD\n#EXTINF:1,\na\n");
    EXPECT_EQ(slots.at(0).key, nullptr);
}

TEST(KeyTagTest, IvWithAnOddNumberOfDigitsRaises4015) {
    const RecordingSink sink;
    const auto read =
        read_playlist("#EXT-X-KEY:METHOD=AES-128,IV=0x123\n#EXTINF:1,\na\n", "m.m3u8");
    EXPECT_EQ(read.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), Ids{4015});
    EXPECT_EQ(sink.reports()[0].text,
              "The length of the input hex string must be even, the invalid string: 123");
    // The number of the slot stands in.
    EXPECT_EQ(read.playlist.slots.at(0).key->iv, "00000000000000000000000000000000");
}

TEST(KeyTagTest, IvWithAnotherCharacterRaises4016) {
    const RecordingSink sink;
    const auto read = read_playlist("#EXT-X-KEY:IV=0x12\n#EXT-X-KEY:IV=0x12g4\n#EXTINF:1,\na\n");
    EXPECT_EQ(read.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), Ids{4016});
    EXPECT_EQ(sink.reports()[0].text,
              "Illegal character has been found when parse hex digit value, the invalid "
              "character: g");
    EXPECT_EQ(read.playlist.slots.at(0).key, nullptr);
}

TEST(KeyTagTest, ShortIvCountsAsNone) {
    for (const char* iv : {"", "0", "0x"}) {
        const RecordingSink sink;
        const auto slots =
            read_slots("#EXT-X-KEY:METHOD=X,IV=" + std::string(iv) + "\n#EXTINF:1,\na\n");
        EXPECT_EQ(slots.at(0).key->iv, "00000000000000000000000000000000") << iv;
        EXPECT_EQ(sink.ids(), Ids{}) << iv;
    }
}

}  // namespace
}  // namespace mediasplit
