#include "src/util/fetcher.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <filesystem>
#include <thread>

#include "src/util/fetched_files.h"
#include "tests/support/http_server.h"
#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

class FetcherTest : public testing::Test {
protected:
    static void SetUpTestSuite() { urlinit(); }
    static void TearDownTestSuite() { urluninit(); }
    void TearDown() override { fetch_limits() = FetchLimits{}; }

    static HttpReply redirect(int status, const std::string& location) {
        HttpReply reply;
        reply.status = status;
        reply.location = location;
        return reply;
    }

    TempFolder folder_;
    std::string path_ = folder_.path("fetched");
    HttpServer server_;
    RecordingSink sink_;
};

TEST_F(FetcherTest, FetchesAWholeFile) {
    const std::string body(3000000, 'x');
    server_.serve("/a", body);
    EXPECT_EQ(url2file(server_.url("/a"), path_), 0);
    EXPECT_TRUE(read_file(path_) == body);
    EXPECT_TRUE(sink_.reports().empty());
}

TEST_F(FetcherTest, EmptyBodyIsAnEmptyFile) {
    server_.serve("/a", "");
    EXPECT_EQ(url2file(server_.url("/a"), path_), 0);
    EXPECT_TRUE(std::filesystem::exists(path_));
    EXPECT_EQ(read_file(path_), "");
}

TEST_F(FetcherTest, MissingFileIsReportedAndLeavesNothing) {
    EXPECT_EQ(url2file(server_.url("/none"), path_), CURLE_HTTP_RETURNED_ERROR);
    EXPECT_FALSE(std::filesystem::exists(path_));
    ASSERT_EQ(sink_.ids(), (std::vector<int>{2054}));
    const std::string text = sink_.reports()[0].text;
    const std::string start = "Fail to download file: " + server_.url("/none") + " on GMT: ";
    ASSERT_EQ(text.rfind(start, 0), 0U) << text;
    // The time is in the form of asctime, with its line feed.
    std::tm time{};
    const char* const rest = strptime(text.c_str() + start.size(), "%a %b %e %H:%M:%S %Y\n", &time);
    ASSERT_NE(rest, nullptr) << text;
    EXPECT_STREQ(rest, ", CURL error code: 22");
    EXPECT_LE(std::abs(std::difftime(timegm(&time), std::time(nullptr))), 60);
    EXPECT_NE(text.find("\n, CURL"), std::string::npos);
    EXPECT_EQ(sink_.reports()[0].outcome, Outcome::kPrinted);
    EXPECT_EQ(server_.requests("/none"), 1U);
}

TEST_F(FetcherTest, ServerErrorsFailAndAreNotTriedAgain) {
    HttpReply broken;
    broken.status = 503;
    HttpReply fine;
    fine.body = "fine";
    server_.serve("/a", {broken, fine});
    EXPECT_NE(url2file(server_.url("/a"), path_), 0);
    EXPECT_EQ(server_.requests("/a"), 1U);
    EXPECT_EQ(url2file(server_.url("/a"), path_), 0);
    EXPECT_EQ(read_file(path_), "fine");
}

TEST_F(FetcherTest, RedirectIsFollowed) {
    server_.serve("/old", {redirect(302, "/new")});
    server_.serve("/new", "moved");
    EXPECT_EQ(url2file(server_.url("/old"), path_), 0);
    EXPECT_EQ(read_file(path_), "moved");
}

TEST_F(FetcherTest, RedirectsEndAfterTwenty) {
    server_.serve("/loop", {redirect(301, "/loop")});
    EXPECT_EQ(url2file(server_.url("/loop"), path_), CURLE_TOO_MANY_REDIRECTS);
    EXPECT_EQ(server_.requests("/loop"), 21U);
    EXPECT_FALSE(std::filesystem::exists(path_));
    for (int i = 0; i < 20; ++i) {
        server_.serve("/r" + std::to_string(i), {redirect(301, "/r" + std::to_string(i + 1))});
    }
    server_.serve("/r20", "there");
    EXPECT_EQ(url2file(server_.url("/r0"), path_), 0);
    EXPECT_EQ(read_file(path_), "there");
}

TEST_F(FetcherTest, DotsInTheAddressAreResolved) {
    server_.serve("/a/c.ts", "c");
    EXPECT_EQ(url2file(server_.url("/a/./b/../c.ts"), path_), 0);
    EXPECT_EQ(read_file(path_), "c");
    EXPECT_EQ(server_.requests("/a/c.ts"), 1U);
}

TEST_F(FetcherTest, ConnectionThatClosesEarlyFails) {
    HttpReply reply;
    reply.body = std::string(1000, 'x');
    reply.close_after = 100;
    server_.serve("/a", {reply});
    EXPECT_EQ(url2file(server_.url("/a"), path_), CURLE_PARTIAL_FILE);
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_EQ(sink_.count(2054), 1U);
}

TEST_F(FetcherTest, BodyThatNeverEndsRunsIntoTheTimeOut) {
    EXPECT_EQ(fetch_limits().timeout_seconds, 300);
    fetch_limits().timeout_seconds = 1;
    HttpReply reply;
    reply.body = "begin";
    reply.stall = true;
    server_.serve("/a", {reply});
    EXPECT_EQ(url2file(server_.url("/a"), path_), CURLE_OPERATION_TIMEDOUT);
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_EQ(sink_.count(2054), 1U);
}

TEST_F(FetcherTest, AddressOf1024CharactersFailsAsAnEmptyOne) {
    const std::string url = server_.url("/" + std::string(1024, 'a'));
    EXPECT_EQ(url2file(url, path_), CURLE_URL_MALFORMAT);
    ASSERT_EQ(sink_.count(2054), 1U);
    EXPECT_EQ(sink_.reports()[0].text.rfind("Fail to download file:  on GMT: ", 0), 0U);
}

TEST_F(FetcherTest, MissingArgumentOrPathThatCannotBeOpenedIsMinusOneWithoutAMessage) {
    EXPECT_EQ(url2file(nullptr, path_), -1);
    EXPECT_EQ(url2file(server_.url("/a"), nullptr), -1);
    EXPECT_EQ(url2file(server_.url("/a"), folder_.path("none/x")), -1);
    EXPECT_TRUE(sink_.reports().empty());
    EXPECT_EQ(server_.requests("/a"), 0U);
}

TEST_F(FetcherTest, DiskThatIsFullFails) {
    server_.serve("/a", "some bytes");
    // Removing a device isn't possible without rights, and with them this name is only a link.
    std::filesystem::create_symlink("/dev/full", path_);
    EXPECT_EQ(url2file(server_.url("/a"), path_), CURLE_WRITE_ERROR);
    EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(FetcherTest, FileThatCannotBeRemovedIsReportedAheadOfTheFailure) {
    // Nothing in the folder of a process can be removed.
    EXPECT_NE(url2file(server_.url("/none"), "/proc/self/comm"), 0);
    ASSERT_EQ(sink_.ids(), (std::vector<int>{11, 2054}));
    EXPECT_EQ(sink_.reports()[0].text,
              "Fail to remove /proc/self/comm (" + server_.url("/none") + ")");
}

TEST_F(FetcherTest, ManyThreadsFetchAtOnce) {
    server_.serve("/a", std::string(200000, 'a'));
    std::vector<std::thread> threads;
    std::vector<int> results(16, -1);
    for (std::size_t i = 0; i < results.size(); ++i) {
        threads.emplace_back([this, &results, i] {
            results[i] = url2file(server_.url("/a"), folder_.path(std::to_string(i)));
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results, std::vector<int>(16, 0));
    EXPECT_EQ(read_file(folder_.path("7")).size(), 200000U);
}

std::string cleaned(const std::string& url) {
    std::string out = "before";
    EXPECT_EQ(remove_parent_folder(out, url), 0);
    return out;
}

TEST(RemoveParentFolder, ResolvesDots) {
    EXPECT_EQ(cleaned("http://h/a/./b/../c.ts"), "http://h/a/c.ts");
    EXPECT_EQ(cleaned("http://h/a/././b"), "http://h/a/b");
    EXPECT_EQ(cleaned("http://h/a/b/c/../../d"), "http://h/a/d");
    EXPECT_EQ(cleaned("http://h/a"), "http://h/a");
    EXPECT_EQ(cleaned("a\\b/../c"), "a/c");
}

TEST(RemoveParentFolder, ParentAboveTheFirstFolderEatsTheHostName) {
    EXPECT_EQ(cleaned("http://a/../b"), "http://b");
}

TEST(RemoveParentFolder, TakesEveryOccurrenceOfTheClimbedText) {
    EXPECT_EQ(cleaned("http://h/x/../a/x/../b"), "http://h/a/b");
}

TEST(RemoveParentFolder, StopsWhereThereIsNothingToClimb) {
    EXPECT_EQ(cleaned("/../a"), "/../a");
    EXPECT_EQ(cleaned("a/../b"), "a/../b");
}

TEST(RemoveParentFolder, RefusesMissingAndLongTexts) {
    std::string out = "before";
    EXPECT_EQ(remove_parent_folder(out, nullptr), 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(remove_parent_folder(out, std::string(1023, 'a')), 0);
    EXPECT_EQ(remove_parent_folder(out, std::string(1024, 'a')), 1);
    EXPECT_EQ(out, "");
}

TEST(RemoveParentFolder, EndsForAnyMixOfDots) {
    std::uint32_t state = 7;
    for (int round = 0; round < 3000; ++round) {
        std::string url;
        state = state * 1664525 + 1013904223;
        const std::size_t size = state >> 16 & 0x3FF;
        for (std::size_t i = 0; i < size; ++i) {
            state = state * 1664525 + 1013904223;
            url += "/../.\\a"[(state >> 16) % 7];
        }
        std::string out;
        ASSERT_EQ(remove_parent_folder(out, url), 0);
        ASSERT_LE(out.size(), url.size());
    }
}

TEST_F(FetcherTest, MoreBytesThanAllowedAreAFailedDownload) {
    server_.serve("/a", std::string(100000, 'x'));
    EXPECT_EQ(url2file(server_.url("/a"), path_, 100000), 0);
    EXPECT_EQ(std::filesystem::file_size(path_), 100000U);
    EXPECT_EQ(url2file(server_.url("/a"), path_, 99999), CURLE_WRITE_ERROR);
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_EQ(sink_.ids(), (std::vector<int>{2054}));
}

TEST_F(FetcherTest, FetchedFileGoesWithAllOthersUntilItIsRemoved) {
    server_.serve("/a", "x");
    EXPECT_EQ(url2file(server_.url("/a"), path_), 0);
    remove_all_fetched_files();
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_EQ(url2file(server_.url("/a"), path_), 0);
    EXPECT_EQ(remove_fetched_file(path_), 0);
    // Whatever takes the name afterwards is no fetched file.
    (void)folder_.write("fetched", "mine");
    remove_all_fetched_files();
    EXPECT_TRUE(std::filesystem::exists(path_));
}

TEST_F(FetcherTest, FailedFetchLeavesNoNoteOfItsFile) {
    EXPECT_NE(url2file(server_.url("/none"), path_), 0);
    EXPECT_EQ(url2file(server_.url("/none"), folder_.path("no/such/folder")), -1);
    (void)folder_.write("fetched", "mine");
    remove_all_fetched_files();
    EXPECT_TRUE(std::filesystem::exists(path_));
}

}  // namespace
}  // namespace mediasplit
