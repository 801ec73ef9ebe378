#include "src/main/workers/thread_func.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "src/main/workers/stream_job.h"
#include "src/records/run_options.h"
#include "tests/support/run_options_scope.h"
#include "tests/support/ts_builder.h"
#include "tests/support/worker_run.h"

namespace mediasplit {
namespace {

class Worker : public testing::Test, protected WorkerRun {
protected:
    Worker() {
        job_.name = "list";
        job_.output_dir = "out";
        job_.sync_list = &list_;
    }

    void run(const std::string& url) {
        job_.url = url;
        EXPECT_EQ(ThreadFunc(&job_), 0U);
    }
    [[nodiscard]] bool has_end_record() {
        const auto records = take_timing();
        return !records.empty() && (records.back().duration == -1.0 || records.back().end == 1);
    }
    static std::string ts() { return as_text(adts_stream("abc")); }

    RunOptionsScope scope_;
    StreamJob job_;
};

TEST_F(Worker, MissingLocalPlaylistIsReported) {
    run("none.m3u8");
    ASSERT_EQ(sink_.ids(), Ids{4022});
    EXPECT_EQ(sink_.reports()[0].text, "Fail to open the file : none.m3u8");
    EXPECT_EQ(sink_.reports()[0].stream, "none.m3u8");
    EXPECT_EQ(job_.status, Status::kFailed);
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, FolderInPlaceOfThePlaylistOrManifestIsReported) {
    std::filesystem::create_directory("list.m3u8");
    for (const FormatId format : {FormatId::kHls, FormatId::kDash}) {
        sink_.clear();
        job_.format = static_cast<std::int32_t>(format);
        job_.status = Status::kOk;
        run("list.m3u8");
        ASSERT_EQ(sink_.ids(), Ids{4022});
        EXPECT_EQ(sink_.reports()[0].text, "Fail to open the file : list.m3u8");
        EXPECT_EQ(job_.status, Status::kFailed);
        EXPECT_TRUE(has_end_record());
    }
}

TEST_F(Worker, MissingAddressIsReported) {
    run(server_.url("/none.m3u8"));
    EXPECT_EQ(sink_.ids(), (Ids{2054, 4021}));
    EXPECT_EQ(sink_.reports()[1].text, "Fail to fetch: " + server_.url("/none.m3u8"));
    EXPECT_EQ(job_.status, Status::kFailed);
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, LocalPlaylistIsFollowed) {
    (void)folder_.write("0.ts", ts());
    (void)folder_.write("list.m3u8", "#EXTINF:1,\n0.ts\n");
    run("list.m3u8");
    EXPECT_EQ(sink_.ids(), (Ids{3, 3}));
    EXPECT_EQ(job_.status, Status::kOk);
    EXPECT_EQ(read_file("out/list_PID_257.out.adts"), "abc");
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, GrowingPlaylistIsLoadedUntilItsEnd) {
    server_.serve("/0.ts", ts());
    server_.serve("/1.ts", ts());
    const std::string first = "#EXT-X-TARGETDURATION:1\n#EXTINF:0.5,\n0.ts\n";
    server_.serve("/list.m3u8",
                  {{.body = first}, {.body = first + "#EXTINF:0.5,\n1.ts\n#EXT-X-ENDLIST\n"}});
    run(server_.url("/list.m3u8"));
    EXPECT_EQ(server_.requests("/list.m3u8"), 2U);
    EXPECT_EQ(sink_.count(1024), 1U);
    EXPECT_EQ(read_file("out/list_PID_257.out.adts"), "abcabcabc");
    EXPECT_EQ(job_.status, Status::kOk);
    EXPECT_TRUE(std::filesystem::is_empty("tmp"));
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, WantedDurationEndsALivePlaylist) {
    g_tested_duration_in_live = 1.2;
    server_.serve("/0.ts", ts());
    server_.serve("/list.m3u8", "#EXT-X-TARGETDURATION:1\n#EXTINF:0.5,\n0.ts\n");
    run(server_.url("/list.m3u8"));
    EXPECT_EQ(server_.requests("/list.m3u8"), 3U);
    EXPECT_EQ(sink_.count(1024), 2U);
    EXPECT_EQ(job_.status, Status::kOk);
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, PlaylistThatGoesAwayEndsTheStream) {
    server_.serve("/0.ts", ts());
    server_.serve("/list.m3u8",
                  {{.body = "#EXT-X-TARGETDURATION:1\n#EXTINF:0.5,\n0.ts\n"}, {.status = 404}});
    run(server_.url("/list.m3u8"));
    EXPECT_EQ(sink_.count(4021), 1U);
    EXPECT_TRUE(has_failed(job_.status));
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, CopyOfThePlaylistThatCannotBeRemovedIsReported) {
    HttpReply segment{.body = ts()};
    segment.on_request = [] { remove_files("tmp", "playlist_manifest"); };
    server_.serve("/0.ts", {segment});
    server_.serve("/list.m3u8", "#EXTINF:1,\n0.ts\n#EXT-X-ENDLIST\n");
    run(server_.url("/list.m3u8"));
    ASSERT_EQ(sink_.ids(), (Ids{3, 3, 11}));
    EXPECT_TRUE(sink_.reports()[2].text.starts_with("Fail to remove tmp/playlist_manifest_"));
    EXPECT_TRUE(sink_.reports()[2].text.ends_with(" (" + server_.url("/list.m3u8") + ")"));
    EXPECT_EQ(job_.status, Status::kOk);
    EXPECT_EQ(read_file("out/list_PID_257.out.adts"), "abc");
}

TEST_F(Worker, CopyOfThePlaylistThatIsGoneEndsTheStream) {
    HttpReply list{.body = "#EXTINF:1,\n0.ts\n"};
    list.on_request = [] { remove_files("tmp", "playlist_manifest"); };
    server_.serve("/list.m3u8", {list});
    run(server_.url("/list.m3u8"));
    EXPECT_EQ(sink_.ids(), (Ids{3, 4022, 2014, 11}));
    EXPECT_TRUE(has_failed(job_.status));
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, TemporaryFolderThatIsMissingEndsTheStream) {
    std::filesystem::remove("tmp");
    server_.serve("/list.m3u8", "#EXTINF:1,\n0.ts\n");
    run(server_.url("/list.m3u8"));
    EXPECT_EQ(sink_.ids(), Ids{4021});
    EXPECT_TRUE(has_end_record());
}

TEST_F(Worker, EveryEndOfAPlaylistLeavesAnEndRecord) {
    (void)folder_.write("0.ts", ts());
    for (const char* text :
         {"", "#EXTM3U\n", "#EXT-X-ENDLIST\n", "#EXTINF:1,\nnone.ts\n", "#EXT-X-DISCONTINUITY\n",
          "#EXTINF:1,\n0.ts\n", "#EXT-X-STREAM-INF:\nx\n#EXTINF:1,\n0.ts\n",
          "#EXT-X-MAP:URI=\"0.ts\"\n"}) {
        (void)folder_.write("list.m3u8", text);
        run("list.m3u8");
        EXPECT_TRUE(has_end_record()) << text;
    }
}

}  // namespace
}  // namespace mediasplit
