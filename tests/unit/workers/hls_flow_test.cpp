#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "src/main/flows/flows.h"
#include "src/records/run_options.h"
#include "tests/support/encrypted_track.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/ts_builder.h"
#include "tests/support/worker_run.h"

namespace mediasplit {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

class HlsFlow : public testing::Test, protected WorkerRun {
protected:
    HlsFlow() {
        loglist_ = begin_run(FormatId::kHls);
        for (const char* name : {"audio", "video", "other"}) {
            add_ts(name);
        }
    }

    // A media playlist of one transport stream segment.
    void add_ts(const std::string& name) {
        add(name + ".ts", as_text(adts_stream(name)));
        add(name + ".m3u8", "#EXTINF:2,\n" + name + ".ts\n#EXT-X-ENDLIST\n");
    }
    // A playlist of fragments of one AC-4 track without any bytes, `duration` ms each.
    void add_mp4(const std::string& name, std::string_view entry, std::uint32_t duration) {
        mp4::MovieSpec movie;
        mp4::TrackSpec track;
        track.entries = {mp4::box(entry, {mp4::zeros(8)})};
        std::string text = "#EXT-X-MAP:URI=\"" + name + "_init.mp4\"\n";
        for (std::size_t i = 0; i < 4; ++i) {
            mp4::SampleSpec sample;
            sample.data = mp4::text(name);
            sample.duration = duration;
            track.samples.push_back(sample);
        }
        movie.tracks = {track};
        add(name + "_init.mp4", as_text(mp4::initialization_segment(movie)));
        for (std::size_t i = 0; i < 4; ++i) {
            const std::string file = name + "_" + std::to_string(i) + ".m4s";
            add(file, as_text(mp4::media_segment(movie, i, 1, 0)));
            text += "#EXTINF:2,\n" + file + "\n";
        }
        add(name + ".m3u8", text);
    }

    Status run_local(const std::string& text) {
        (void)folder_.write("master.m3u8", text);
        g_input = "master.m3u8";
        return run_hls(loglist_.get());
    }
    Status run_address(const std::string& text) {
        server_.serve("/master.m3u8", text);
        g_input = server_.url("/master.m3u8");
        return run_hls(loglist_.get());
    }
    [[nodiscard]] static Names outputs() { return file_names("out"); }

    RunOptionsScope scope_;
};

const std::string kMedia =
    "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"g\",LANGUAGE=\"en\",NAME=\"n\",CHANNELS=\"2\",URI=\"audio."
    "m3u8\"\n";
const std::string kVideo =
    "#EXT-X-STREAM-INF:BANDWIDTH=1000,FRAME-RATE=25,CODECS=\"avc1.42c00d,mp4a.40.2\",AUDIO=\"g\"\n"
    "video.m3u8\n";
const std::string kOther =
    "#EXT-X-STREAM-INF:BANDWIDTH=2000,FRAME-RATE=25,CODECS=\"avc1.42c00d,mp4a.40.2\",AUDIO=\"g\"\n"
    "other.m3u8\n";

TEST_F(HlsFlow, StreamsOfAMasterPlaylistAreSplit) {
    EXPECT_FALSE(has_failed(run_local(kMedia + kVideo + kOther)));
    EXPECT_EQ(outputs(), (Names{"audio_PID_257.out.adts", "other_PID_257_Bitrate_2000bps.out.adts",
                                "video_PID_257_Bitrate_1000bps.out.adts"}));
    EXPECT_EQ(read_file("out/audio_PID_257.out.adts"), "audio");
}

TEST_F(HlsFlow, AddressGivesWhatTheFolderGives) {
    (void)run_local(kMedia + kVideo + kOther);
    std::map<std::string, std::string> local;
    for (const std::string& name : outputs()) {
        local[name] = read_file("out/" + name);
        fs::remove("out/" + name);
    }
    EXPECT_FALSE(has_failed(run_address(kMedia + kVideo + kOther)));
    std::map<std::string, std::string> fetched;
    for (const std::string& name : outputs()) {
        fetched[name] = read_file("out/" + name);
    }
    EXPECT_EQ(fetched, local);
    EXPECT_TRUE(fs::is_empty("tmp"));
}

TEST_F(HlsFlow, OnlyStreamRunsWithoutThreads) {
    EXPECT_FALSE(has_failed(run_local(
        "#EXT-X-STREAM-INF:BANDWIDTH=1000,FRAME-RATE=25,CODECS=\"mp4a.40.2\"\nvideo.m3u8\n")));
    EXPECT_EQ(outputs(), Names{"video_PID_257_Bitrate_1000bps.out.adts"});
    // The main list has the worker's findings.
    EXPECT_FALSE(loglist_->messages.empty());
}

TEST_F(HlsFlow, MediaPlaylistIsFollowedByItself) {
    (void)folder_.write("m.m3u8", "#EXTINF:2,\naudio.ts\n");
    g_input = "m.m3u8";
    EXPECT_EQ(run_hls(loglist_.get()), Status::kOk);
    EXPECT_EQ(outputs(), Names{"m_PID_257.out.adts"});
}

TEST_F(HlsFlow, MissingInputIsReported) {
    g_input = "none.m3u8";
    EXPECT_EQ(run_hls(loglist_.get()), Status::kFailed);
    EXPECT_EQ(sink_.ids(), Ids{4022});
    sink_.clear();
    g_input = server_.url("/none.m3u8");
    EXPECT_EQ(run_hls(loglist_.get()), Status::kFailed);
    EXPECT_EQ(sink_.ids(), (Ids{2054, 4021}));
    EXPECT_TRUE(fs::is_empty("tmp"));
}

TEST_F(HlsFlow, CopyOfTheMasterPlaylistThatIsGoneIsReported) {
    HttpReply master{.body = kMedia + kVideo};
    master.on_request = [] { remove_files("tmp", "master_manifest"); };
    server_.serve("/master.m3u8", {master});
    g_input = server_.url("/master.m3u8");
    EXPECT_EQ(run_hls(loglist_.get()), Status::kFailed);
    ASSERT_EQ(sink_.ids(), (Ids{4022, 11}));
    EXPECT_TRUE(sink_.reports()[1].text.starts_with("Fail to remove tmp/master_manifest_"));
    EXPECT_TRUE(sink_.reports()[1].text.ends_with(" (" + *g_input + ")"));
}

TEST_F(HlsFlow, PlaylistOfStreamsAndSegmentsIsRefused) {
    EXPECT_EQ(run_local(kVideo + "#EXTINF:2,\naudio.ts\n"), Status::kFailed);
    EXPECT_EQ(sink_.ids(), Ids{4059});
}

TEST_F(HlsFlow, LongNameOfAMediaPlaylistEndsTheRun) {
    std::string folder;
    for (int i = 0; i < 12; ++i) {
        folder += std::string(99, 'x') + "/";
    }
    fs::create_directories(folder);
    fs::copy("audio.ts", folder + "audio.ts");
    (void)folder_.write(folder + "m.m3u8", "#EXTINF:2,\naudio.ts\n");
    g_input = folder + "m.m3u8";
    EXPECT_EQ(run_hls(loglist_.get()), Status::kFailed);
    EXPECT_EQ(outputs(), Names{});
}

TEST_F(HlsFlow, StreamWithoutANameIsPassedOver) {
    fs::copy("audio.m3u8", "bare");
    EXPECT_FALSE(has_failed(run_local(
        kVideo + "#EXT-X-STREAM-INF:BANDWIDTH=3000,FRAME-RATE=25,CODECS=\"mp4a.40.2\"\nbare\n")));
    EXPECT_EQ(outputs(), Names{"video_PID_257_Bitrate_1000bps.out.adts"});
}

TEST_F(HlsFlow, MasterThatNamesItselfEnds) {
    const std::string self =
        "#EXT-X-STREAM-INF:BANDWIDTH=3000,FRAME-RATE=25,CODECS=\"mp4a.40.2\"\n"
        "master.m3u8\n";
    EXPECT_TRUE(has_failed(run_local(self + kVideo)));
    EXPECT_EQ(sink_.count(2014), 1U);
    EXPECT_EQ(outputs(), Names{"video_PID_257_Bitrate_1000bps.out.adts"});
}

TEST_F(HlsFlow, IframeStreamsAreCheckedButNotWritten) {
    add_mp4("frames", "zzzz", 2000);
    const Status status = run_local(
        kVideo +
        "#EXT-X-I-FRAME-STREAM-INF:BANDWIDTH=100,CODECS=\"avc1.42c00d\",URI=\"frames.m3u8\"\n");
    EXPECT_FALSE(has_failed(status));
    EXPECT_EQ(sink_.count(4054), 1U);
    EXPECT_EQ(outputs(), Names{"video_PID_257_Bitrate_1000bps.out.adts"});
}

TEST_F(HlsFlow, RenditionsOfAc4AreTimedAgainstEachOther) {
    add_mp4("one", "zzzz", 2000);
    add_mp4("two", "zzzz", 2500);
    const std::string codecs = "avc1.42c00d,ac-4.02.01.00";
    std::string text;
    for (const char* name : {"one", "two"}) {
        text += std::string("#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"g\",LANGUAGE=\"en\",NAME=\"") +
                name + "\",CHANNELS=\"2\",URI=\"" + name + ".m3u8\"\n";
    }
    text += "#EXT-X-STREAM-INF:BANDWIDTH=1000,FRAME-RATE=25,CODECS=\"" + codecs +
            "\",AUDIO=\"g\"\nvideo.m3u8\n";
    (void)run_local(text);
    EXPECT_EQ(sink_.count(4109), 3U) << "three segments before the last one";
    EXPECT_EQ(sink_.count(2050), 0U);
    sink_.clear();
    add_mp4("two", "zzzz", 2000);
    (void)run_local(text);
    EXPECT_EQ(sink_.count(4109), 0U);
    EXPECT_TRUE(sink_.was_evaluated(4109));
}

// Two groups of AC-4 renditions, whose first streams differ from the others; each stream has a
// segment that it can't read, too.
TEST_F(HlsFlow, ManyStreamsWithFindingsRunInTimingGroups) {
    constexpr std::size_t kRenditions = 15;  // of each group
    constexpr std::size_t kPairsOfTheFirst = kRenditions - 1;
    constexpr std::size_t kSegmentsButTheLast = 3;
    std::string text;
    (void)folder_.write("raw.ac3", "\x0B\x77 raw frames");
    for (const std::string group : {"g", "h"}) {
        for (std::size_t i = 0; i < kRenditions; ++i) {
            const std::string name = group + std::to_string(i);
            add_mp4(name, "zzzz", i == 0 ? 2500 : 2000);
            const std::string list = read_file(folder_.path(name + ".m3u8"));
            (void)folder_.write(name + ".m3u8", "#EXTINF:1,\nraw.ac3\n" + list);
            text += "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"" + group + "\",NAME=\"" + name +
                    "\",URI=\"" + name + ".m3u8\"\n";
        }
        // The stream itself has no timing.
        add_ts("v" + group);
        text +=
            "#EXT-X-STREAM-INF:BANDWIDTH=1,FRAME-RATE=25,CODECS=\"avc1.42c00d,ac-4.02.01.00\"," +
            ("AUDIO=\"" + group + "\"\nv" + group + ".m3u8\n");
    }
    EXPECT_FALSE(has_failed(run_local(text)));
    EXPECT_EQ(sink_.count(2015), 2 * kRenditions);
    EXPECT_EQ(sink_.count(4109), 2 * kPairsOfTheFirst * kSegmentsButTheLast);
    EXPECT_EQ(sink_.count(2050), 0U);
    // What stands on the disk is whole: one file for each stream.
    EXPECT_EQ(outputs().size(), 2 * kRenditions + 2);
    EXPECT_EQ(read_file("out/" + outputs().front()).size(), 4 * std::string("g0").size());
}

// Renditions with keys of their own, on a thread each.
TEST_F(HlsFlow, EncryptedRenditionsAreDecryptedSideBySide) {
    std::string text;
    const mp4::Bytes clear = plain_text(100);
    for (const std::string name : {"one", "two", "three"}) {
        mp4::TrackSpec track = video("cenc", tenc_spec(8));
        mp4::Bytes data = clear;
        ctr(data, 10, 90, kIv8, 0);
        mediasplit::add(track, data, kIv8, {{10, 90}});
        mp4::MovieSpec movie;
        movie.tracks = {track};
        add(name + "_init.mp4", as_text(mp4::initialization_segment(movie)));
        add(name + ".m4s", as_text(mp4::media_segment(movie, 0, 1, 0)));
        add(name + ".m3u8", "#EXT-X-MAP:URI=\"" + name + "_init.mp4\"\n#EXTINF:2,\n" + name +
                                ".m4s\n#EXT-X-ENDLIST\n");
        text += "#EXT-X-STREAM-INF:BANDWIDTH=1,FRAME-RATE=25,CODECS=\"s263\"\n" + name + ".m3u8\n";
    }
    g_keypairs = kPair;
    EXPECT_FALSE(has_failed(run_address(text)));
    EXPECT_EQ(outputs().size(), 3U);
    for (const std::string& name : outputs()) {
        EXPECT_EQ(read_file("out/" + name), as_text(clear)) << name;
    }
    g_keypairs = "ffffffffffffffffffffffffffffffff:00";
    sink_.clear();
    EXPECT_TRUE(has_failed(run_address(text)));
    EXPECT_EQ(sink_.count(4012), 6U);  // of each file
}

}  // namespace
}  // namespace mediasplit
