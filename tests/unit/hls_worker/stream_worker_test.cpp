// Playlists of local files.
#include "src/hls/stream_worker.h"

#include <gtest/gtest.h>

#include "tests/support/ts_builder.h"
#include "tests/unit/hls_worker/stream_run.h"

namespace mediasplit {
namespace {

constexpr const char* kData = "list_init_track_id_1.out.data";
constexpr const char* kAdts = "list_PID_257.out.adts";

class LocalStream : public StreamRun {
protected:
    LocalStream() {
        (void)folder_.write("init.mp4", mp4_init());
        for (int i = 0; i < 4; ++i) {
            (void)folder_.write(std::to_string(i) + ".m4s", mp4_segment(i));
            (void)folder_.write(std::to_string(i) + ".ts", ts_segment(sample_text(i)));
        }
    }
};

// A packed audio segment: an ID3 tag with a time stamp of 0, and `audio`.
std::string packed(const std::string& audio) {
    using namespace std::string_literals;
    const std::string owner = "com.apple.streaming.transportStreamTimestamp\0"s;
    const std::string frame = "PRIV\0\0\0\x35\0\0"s + owner + std::string(8, '\0');
    return "ID3\4\0\0\0\0\0"s + static_cast<char>(frame.size()) + frame + audio;
}

TEST_F(LocalStream, FragmentedSegmentsAreJoined) {
    follow_local(
        "#EXTM3U\n#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n#EXTINF:2,\n1.m4s\n"
        "#EXT-X-ENDLIST\n");
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(kData), samples(0, 1));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(texts(3), (std::vector<std::string>{"init.mp4:", "0.m4s:", "1.m4s:"}));
}

TEST_F(LocalStream, EndRecordIsTheLastSegmentsOwn) {
    follow_local("#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n#EXTINF:2,\n1.m4s\n");
    const auto records = take_timing();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_DOUBLE_EQ(records[0].duration, 2.0);
    EXPECT_EQ(records[0].end, 0U);
    EXPECT_DOUBLE_EQ(records[1].duration, 2.0);
    EXPECT_EQ(records[1].end, 1U);
}

TEST_F(LocalStream, StreamWithoutTimingEndsWithARecordOfItsOwn) {
    follow_local("#EXT-X-MAP:URI=\"init.mp4\"\n");
    const auto records = take_timing();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].duration, -1.0);
    EXPECT_EQ(records[0].end, 1U);
}

TEST_F(LocalStream, TransportStreamSegmentsAreJoined) {
    follow_local("#EXTINF:2,\n0.ts\n#EXTINF:2,\n1.ts\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(kAdts), samples(0, 1));
    EXPECT_EQ(take_timing().at(0).duration, -1.0);
}

TEST_F(LocalStream, PlaylistWithoutEndTagEndsAtItsLastSlot) {
    follow_local("#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n0.ts\n");
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(output(kAdts), samples(0, 0));
}

TEST_F(LocalStream, FirstSegmentOfARunReplacesFormerFiles) {
    (void)folder_.write(std::string("out/") + kAdts, "old");
    (void)folder_.write(std::string("out/") + kData, "old");
    follow_local("#EXTINF:2,\n0.ts\n");
    EXPECT_EQ(output(kAdts), samples(0, 0));
    follow_local("#EXTINF:2,\n1.ts\n#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n1.m4s\n");
    EXPECT_EQ(output(kAdts), samples(0, 1));
    EXPECT_EQ(output(kData), samples(1, 1));
    // What this job wrote is added to, also behind a new initialization section.
    follow_local(
        "#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n2.m4s\n#EXT-X-MAP:URI=\"init.mp4\"\n"
        "#EXTINF:2,\n3.m4s\n");
    EXPECT_EQ(output(kData), samples(1, 3));
}

TEST_F(LocalStream, FileThatComesUpInALaterSegmentReplacesAFormerOneToo) {
    TsBuilder later = one_program({{0x0F, 258}});
    PesDescription pes;
    pes.stream_id = 0xC0;
    pes.payload = {'n', 'e', 'w'};
    later.pes(258, pes);
    (void)folder_.write("late.ts", as_text(later.bytes()));
    constexpr const char* kLate = "list_PID_258.out.adts";
    constexpr const char* kPacked = "list.out.aac";
    (void)folder_.write(std::string("out/") + kLate, "old");
    (void)folder_.write(std::string("out/") + kPacked, "old");
    (void)folder_.write("packed.aac", packed("\xFF\xF1 frame"));
    follow_local("#EXTINF:2,\n0.ts\n#EXTINF:2,\nlate.ts\n#EXTINF:2,\npacked.aac\n");
    EXPECT_EQ(output(kAdts), samples(0, 0));
    EXPECT_EQ(output(kLate), "new");
    EXPECT_EQ(output(kPacked), "\xFF\xF1 frame");
    // ... and is added to from then on.
    follow_local("#EXTINF:2,\nlate.ts\n#EXTINF:2,\n1.ts\n#EXTINF:2,\npacked.aac\n");
    EXPECT_EQ(output(kLate), "newnew");
    EXPECT_EQ(output(kPacked), "\xFF\xF1 frame\xFF\xF1 frame");
    EXPECT_EQ(output(kAdts), samples(0, 1));
}

TEST_F(LocalStream, FirstDemultiplexedSegmentCountsWhateverItsSlot) {
    (void)folder_.write(std::string("out/") + kAdts, "old");
    follow_local("#EXT-X-DISCONTINUITY\n#EXTINF:2,\n0.ts\n#EXTINF:2,\n1.ts\n");
    EXPECT_EQ(output(kAdts), samples(0, 1));
}

TEST_F(LocalStream, ByteRangesOfFragmentedFile) {
    const std::string init = mp4_init();
    std::string text =
        "#EXT-X-MAP:URI=\"all.mp4\",BYTERANGE=\"" + std::to_string(init.size()) + "@0\"\n";
    std::string all = init;
    for (int i = 0; i < 3; ++i) {
        const std::string segment = mp4_segment(i);
        text += "#EXTINF:2,\n#EXT-X-BYTERANGE:" + std::to_string(segment.size()) + "@" +
                std::to_string(all.size()) + "\nall.mp4\n";
        all += segment;
    }
    (void)folder_.write("all.mp4", all);
    follow_local(text + "#EXT-X-ENDLIST\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output("list_all_track_id_1.out.data"), samples(0, 2));
    EXPECT_EQ(texts(3), std::vector<std::string>{"all.mp4:"});
}

TEST_F(LocalStream, ByteRangeBehindTheEndOfAFragmentedFileFailsTheRun) {
    const std::string init = mp4_init();
    const std::string first = mp4_segment(0);
    const std::size_t end = init.size() + first.size();
    (void)folder_.write("all.mp4", init + first);
    follow_local("#EXT-X-MAP:URI=\"all.mp4\",BYTERANGE=\"" + std::to_string(init.size()) +
                 "@0\"\n#EXTINF:2,\n#EXT-X-BYTERANGE:" + std::to_string(first.size()) + "@" +
                 std::to_string(init.size()) + "\nall.mp4\n#EXTINF:2,\n#EXT-X-BYTERANGE:9@" +
                 std::to_string(end) + "\nall.mp4\n#EXT-X-ENDLIST\n");
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(texts(4065),
              std::vector<std::string>{
                  "Fail to read the data specified by the byte range [start : " +
                  std::to_string(end) + ", length : 9] in the segment file [all.mp4] ."});
    EXPECT_EQ(output("list_all_track_id_1.out.data"), samples(0, 0));
}

TEST_F(LocalStream, ByteRangesOfTransportStream) {
    const std::string first = ts_segment(sample_text(0));
    const std::string second = ts_segment(sample_text(1));
    (void)folder_.write("all.ts", first + second + ts_segment("not wanted"));
    follow_local("#EXTINF:2,\n#EXT-X-BYTERANGE:" + std::to_string(first.size()) +
                 "@0\nall.ts\n#EXTINF:2,\n#EXT-X-BYTERANGE:" + std::to_string(second.size()) +
                 "\nall.ts\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(kAdts), samples(0, 1));
}

TEST_F(LocalStream, ByteRangeThatCannotBeReachedIsReported) {
    follow_local("#EXTINF:2,\n#EXT-X-BYTERANGE:188@18446744073709551615\n0.ts\n#EXTINF:2,\n1.ts\n");
    EXPECT_EQ(ids(), Ids{4065});
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(output(kAdts), samples(1, 1));
}

TEST_F(LocalStream, EndTagAheadOfAllSegmentsReadsNone) {
    follow_local("#EXT-X-ENDLIST\n#EXTINF:2,\n0.ts\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(texts(3), std::vector<std::string>{});
    EXPECT_EQ(take_timing().size(), 1U);
}

TEST_F(LocalStream, DiscontinuityLeavesTheDemultiplexerAlone) {
    context_.emplace();
    follow_local(
        "#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n#EXT-X-DISCONTINUITY\n#EXTINF:2,\n1.m4s\n"
        "#EXT-X-DISCONTINUITY\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(kData), samples(0, 1));
}

TEST_F(LocalStream, DiscontinuityWithoutContextFailsDeliberately) {
    follow_local("#EXTINF:2,\n0.ts\n#EXT-X-DISCONTINUITY\n#EXTINF:2,\n1.ts\n");
    EXPECT_EQ(status_, Status::kFailed);
    EXPECT_EQ(output(kAdts), samples(0, 1));
}

TEST_F(LocalStream, ChannelsAreReadOnlyWithADiscontinuity) {
    context_.emplace();
    context_->channels_text = "16/JOC,-";
    const std::string text = "#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n";
    follow_local(text);
    EXPECT_EQ(ids(), Ids{});
    follow_local("#EXT-X-DISCONTINUITY-SEQUENCE:1\n" + text);
    EXPECT_EQ(ids(), (Ids{4103, 2020}));
}

TEST_F(LocalStream, PlaylistWithoutSegmentsIsReported) {
    follow_local("#EXTM3U\n");
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(status_, Status::kFailed);
    EXPECT_EQ(texts(2014), std::vector<std::string>{
                               "In the HLS variant-playlist, no segments found in the playlist: "
                               "list.m3u8."});
    const auto records = take_timing();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].duration, -1.0);
    EXPECT_EQ(records[0].is_last_kind, 1U);
}

TEST_F(LocalStream, PlaylistThatNamesStreamsIsNotFollowed) {
    follow_local("#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"ec-3\"\nlist.m3u8\n");
    EXPECT_EQ(ids(), Ids{2014});
    EXPECT_EQ(status_, Status::kFailed);
    EXPECT_EQ(take_timing().size(), 1U);
}

TEST_F(LocalStream, PlaylistThatDoesNotParseIsNotFollowed) {
    follow_local("#EXT-X-KEY:METHOD=AES-128,IV=0x1\n#EXTINF:2,\n0.ts\n");
    EXPECT_EQ(ids(), Ids{4015});
    EXPECT_EQ(status_, Status::kFailed);
    EXPECT_EQ(take_timing().size(), 1U);
    EXPECT_EQ(files("out"), std::vector<std::string>{});
}

TEST_F(LocalStream, MissingSegmentEndsTheStream) {
    follow_local("#EXTINF:2,\n0.ts\n#EXTINF:2,\nnone.ts\n#EXTINF:2,\n2.ts\n");
    EXPECT_EQ(texts(4063), std::vector<std::string>{"Fail to get segment: none.ts"});
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(output(kAdts), samples(0, 0));
}

TEST_F(LocalStream, MediaSegmentWithoutInitializationSectionIsReportedAndPassedOver) {
    follow_local(
        "#EXTINF:2,\n0.m4s\n#EXTINF:2,\n1.m4s\n#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n2.m4s\n");
    EXPECT_EQ(ids(), (Ids{4067, 4067}));
    EXPECT_TRUE(has_failed(status_));
    EXPECT_EQ(output(kData), samples(2, 2));
}

TEST_F(LocalStream, RulesThatHoldCountAsEvaluated) {
    follow_local("#EXTINF:2,\n0.ts\n");
    EXPECT_TRUE(sink_.was_evaluated(2014));
    EXPECT_FALSE(sink_.was_evaluated(4067));
    follow_local("#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n");
    EXPECT_TRUE(sink_.was_evaluated(4067));
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(LocalStream, UnsupportedSegmentIsReportedAndPassedOver) {
    (void)folder_.write("a.b.ac3", "\x0B\x77 raw frames are no segments");
    (void)folder_.write("bare", "");
    follow_local("#EXTINF:2,\na.b.ac3\n#EXTINF:2,\nbare\n#EXTINF:2,\n0.ts\n");
    const std::string text =
        "In the HLS variant-playlist, the format of the segment is unsupported: ";
    EXPECT_EQ(texts(2015), (std::vector<std::string>{text + ".ac3", text + "bare"}));
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(kAdts), samples(0, 0));
}

TEST_F(LocalStream, IframeListWantsItsTag) {
    context_.emplace();
    context_->is_iframe_stream = 1;
    follow_local("#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n");
    EXPECT_EQ(ids(), Ids{4054});
    EXPECT_EQ(status_, Status::kRuleBroken);
    sink_.clear();
    follow_local("#EXT-X-I-FRAMES-ONLY\n#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n");
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(LocalStream, IframeListIsNotDemultiplexed) {
    follow_local(
        "#EXT-X-I-FRAMES-ONLY\n#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n#EXTINF:2,\n0.m4s\n"
        "#EXTINF:2,\n1.m4s\n#EXTINF:2,\n0.ts\n");
    EXPECT_EQ(status_, Status::kOk);
    // Entries of one file are taken as one.
    EXPECT_EQ(texts(3), (std::vector<std::string>{"init.mp4:", "0.m4s:", "1.m4s:", "0.ts:"}));
    EXPECT_EQ(output(kData), "");
    EXPECT_EQ(output(kAdts), "");
}

// A transport stream whose E-AC-3 frame begins `late` ticks behind its picture.
std::string timed_ts(std::int64_t video, std::int64_t late) {
    TsBuilder stream = one_program({{0x1B, 257}, {0x87, 258}});
    PesDescription picture;
    picture.pts = static_cast<std::uint64_t>(video);
    picture.payload = {0, 0, 0, 1, 9, 0x10};
    stream.pes(257, picture);
    picture.pts = static_cast<std::uint64_t>(video + 90000);
    stream.pes(257, picture);
    PesDescription sound;
    sound.stream_id = 0xBD;
    sound.bounded = false;  // the frame isn't looked at
    sound.pts = static_cast<std::uint64_t>(video + late);
    sound.payload = {0x0B, 0x77};
    stream.pes(258, sound);
    return as_text(stream.bytes());
}

TEST_F(LocalStream, AudioIsTimedAgainstVideoFromTheSecondTransportStreamOn) {
    const std::string text = "#EXTINF:2,\n0.ts\n#EXTINF:2,\n1.ts\n";
    (void)folder_.write("0.ts", timed_ts(90000, -1));
    (void)folder_.write("1.ts", timed_ts(270000, 0));
    follow_local(text);
    EXPECT_EQ(sink_.count(4106) + sink_.count(4107), 0U);
    // Audio ended with 89999, video with 270000, a picture behind its last: 0 - 89999 + 270000 is
    // more than a tick.
    EXPECT_EQ(sink_.count(4108), 1U);
    (void)folder_.write("1.ts", timed_ts(270000, -1));
    follow_local(text);
    EXPECT_EQ(sink_.count(4106), 1U);
    (void)folder_.write("1.ts", timed_ts(270000, 2880));
    follow_local(text);
    EXPECT_EQ(sink_.count(4107), 1U);
    EXPECT_EQ(status_, Status::kRuleBroken);
    sink_.clear();
    (void)folder_.write("0.ts", timed_ts(90000, 180000));
    (void)folder_.write("1.ts", timed_ts(270000, 0));
    follow_local(text);
    EXPECT_EQ(sink_.count(4106) + sink_.count(4107) + sink_.count(4108), 0U);
}

TEST_F(LocalStream, KeyOfTheDataAddressIsLookedUp) {
    // The id is 00 01 ... 0f; the pair's key is no hexadecimal text, which tells that it was found.
    keypairs_ = "000102030405060708090a0b0c0d0e0f:zz00";
    const std::string rest = "#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n";
    const std::string key = "#EXT-X-KEY:METHOD=SAMPLE-AES-CTR,URI=\"data:text/plain;base64,";
    follow_local(key + "AAECAwQFBgcICQoLDA0ODw==\"\n" + rest);
    EXPECT_EQ(ids(), (Ids{4016, 4014}));
    EXPECT_TRUE(has_failed(status_));
    sink_.clear();
    status_ = Status::kOk;
    for (const char* other :
         {"AAECAwQFBgcICQoLDA0ODg==", "!!!", "AAECAwQFBgcICQoLDA0ODxAREhM=", ""}) {
        follow_local(key + other + "\"\n" + rest);
        EXPECT_EQ(ids(), Ids{}) << other;
        EXPECT_EQ(status_, Status::kOk) << other;
    }
    follow_local("#EXT-X-KEY:METHOD=AES-128,URI=\"http://127.0.0.1:1/key\"\n" + rest);
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(LocalStream, LaterKeyIsLookedUpAnew) {
    keypairs_ = "000102030405060708090a0b0c0d0e0f:zz00";
    follow_local(
        "#EXTINF:2,\n0.ts\n#EXT-X-KEY:METHOD=SAMPLE-AES-CTR,URI=\"data:text/plain;base64,"
        "AAECAwQFBgcICQoLDA0ODw==\"\n#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n");
    EXPECT_EQ(ids(), (Ids{4016, 4014}));
    EXPECT_EQ(output(kAdts), samples(0, 0));
}

TEST_F(LocalStream, ContextWithoutCodecsOfAnAudioStreamUsesThoseOfTheVariant) {
    context_.emplace();
    context_->variant_codecs = "ec-3";
    const std::string text = "#EXT-X-MAP:URI=\"init.mp4\"\n#EXTINF:2,\n0.m4s\n";
    follow_local(text);
    EXPECT_EQ(ids(), Ids{});
    context_->audio_only = 1;
    follow_local(text);
    EXPECT_EQ(ids(), Ids{4494});  // "ec-3" was told, another entry was found
    sink_.clear();
    context_->codecs = "other";
    follow_local(text);
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(LocalStream, HostileDurationsChangeNothing) {
    follow_local("#EXTINF:nan,\n0.ts\n#EXTINF:inf,\n1.ts\n#EXTINF:-5,\n2.ts\n#EXTINF:,\n3.ts\n");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(kAdts), samples(0, 3));
}

TEST_F(LocalStream, DamagedPlaylistsEndByThemselves) {
    const std::string whole =
        "#EXTM3U\n#EXT-X-MAP:URI=\"init.mp4\",BYTERANGE=\"9@0\"\n#EXT-X-KEY:METHOD=NONE,URI="
        "\"data:text/plain;base64,AAEC\",IV=0x00\n#EXTINF:2,\n#EXT-X-BYTERANGE:9@1\n0.m4s\n"
        "#EXT-X-DISCONTINUITY\n#EXTINF:2,\n1.ts\n#EXT-X-ENDLIST\n";
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (std::size_t i = 0; i < whole.size(); ++i) {
        follow_local(whole.substr(0, i));
        std::string flipped = whole;
        flipped[i] = static_cast<char>(flipped[i] ^ 0x55);
        follow_local(flipped);
        EXPECT_EQ(result_, 0);
        EXPECT_GE(take_timing().size(), 2U) << i;
    }
    (void)testing::internal::GetCapturedStdout();
    (void)testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace mediasplit
