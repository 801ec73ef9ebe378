#include "src/dash_thread/segment_file.h"

#include <new>

#include "tests/unit/dash_thread/dash_run.h"

namespace {

// Blocks of this size and more can't be had on the thread that sets it; 0 for no limit.
thread_local std::size_t refused_size = 0;

}  // namespace

// Allocation is replaced for the whole test program, so that it can be made to fail.
void* operator new(std::size_t size) {
    if (refused_size != 0 && size >= refused_size) {
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size); memory != nullptr) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size == 0 ? 1 : size);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace mediasplit {
namespace {

class SegmentFile : public DashRun {
protected:
    SegmentFile() {
        player_.representation_id = "r";
        player_.template_id = "r";
        player_.template_bandwidth = "1";
    }
    void number_template(const std::string& base) {
        player_.segment_type = SegmentElementType::kTemplate;
        player_.template_initialization = base + "init.mp4";
        player_.template_media = base + "s$Number$.mp4";
        player_.template_duration = 2;
    }
    void segment_list(const std::string& base) {
        player_.segment_type = SegmentElementType::kList;
        player_.list_base_url = base;
        player_.list_init_url = base + "init.mp4";
        player_.list = {{"s1.mp4", "3-7"}};
    }
    SegmentFileResult get() {
        return get_segment_file(player_, nullptr, status_, file_, range_, loglist_.get());
    }

    DashPlayer player_;
    InputFile file_;
    std::optional<std::string> range_;
};

TEST_F(SegmentFile, LocalSegmentsAreOpenedOneByOne) {
    add_segments(1);
    segment_list("");
    player_.list_base_url = "x.mpd";
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_EQ(file_.name, "init.mp4");
    EXPECT_FALSE(range_);
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_EQ(file_.name, "s1.mp4");
    EXPECT_EQ(range_, "3-7");
    EXPECT_EQ(get(), SegmentFileResult::kNoMore);
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(status_, Status::kOk);
}

TEST_F(SegmentFile, FetchedCopyGoesWithTheNextSegment) {
    add_segments(1);
    number_template(server_.url("/"));
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_EQ(file_.name, server_.url("/init.mp4"));
    const auto copy = file_.temp_name;
    ASSERT_TRUE(copy);
    EXPECT_TRUE(std::filesystem::exists(*copy));
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_FALSE(std::filesystem::exists(*copy));
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_TRUE(std::filesystem::is_empty("tmp"));
}

TEST_F(SegmentFile, MissingTemplateSegmentIsAnEndBehindAWarning) {
    number_template(server_.url("/"));
    add_segments(0);
    player_.played_ms = 4500;
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_EQ(ids(), (Ids{2052, 2052, 2052, 2009}));
    EXPECT_EQ(texts(2052)[2],
              "Try to download segment " + server_.url("/s1.mp4") + " failed, times : 3");
    EXPECT_EQ(texts(2009)[0],
              "In DASH manifest, the total duration of the Representation [id : r] is 4.500000 "
              "seconds which is less than the total media duration.");
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(server_.requests("/s1.mp4"), 3U);
}

TEST_F(SegmentFile, RuleOnTheTotalDurationIsEvaluatedWhereADurationCountsTheSegments) {
    add_segments(1);
    segment_list("");
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_FALSE(sink_.was_evaluated(2009));
    player_.next_segment = 0;
    number_template("");
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_TRUE(sink_.was_evaluated(2009));
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(SegmentFile, DurationOfEarlierReadingsCountsInTheWarning) {
    number_template("");
    player_.played_ms = 1000;
    player_.minimum_update_period_ms = 1500;
    player_.reload_count = &reload_count_;
    reload_count_ = 2;
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_EQ(ids(), Ids{2009});
    EXPECT_NE(texts(2009)[0].find("is 4.000000 seconds"), std::string::npos);
}

TEST_F(SegmentFile, OtherMissingSegmentFails) {
    segment_list(server_.url("/"));
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_EQ(ids(), (Ids{2052, 2052, 2052, 4063}));
    EXPECT_EQ(texts(4063)[0], "Fail to get segment: " + server_.url("/init.mp4"));
    EXPECT_EQ(status_, Status::kFailed);
}

TEST_F(SegmentFile, MissingLocalFileIsNotTriedAgain) {
    segment_list("");
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_EQ(ids(), Ids{4063});
    EXPECT_TRUE(TestClock::sleeps.empty());
}

TEST_F(SegmentFile, MissingTimelineSegmentFails) {
    number_template("");
    player_.template_duration = 0;
    player_.has_timeline = true;
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_EQ(ids(), Ids{4063});
}

TEST_F(SegmentFile, LaterTrySucceeds) {
    HttpReply missing;
    missing.status = 404;
    HttpReply there;
    there.body = "x";
    server_.serve("/init.mp4", {missing, there});
    number_template(server_.url("/"));
    EXPECT_EQ(get(), SegmentFileResult::kReady);
    EXPECT_EQ(ids(), Ids{2052});
    EXPECT_EQ(status_, Status::kOk);
}

TEST_F(SegmentFile, PauseIsHalfTheBufferTimeInWholeSeconds) {
    using Sleeps = std::vector<std::uint32_t>;
    const auto sleeps_with = [this](double buffer_time) {
        TestClock::sleeps.clear();
        player_.next_segment = 0;
        player_.min_buffer_time_ms = buffer_time;
        (void)get();
        return TestClock::sleeps;
    };
    number_template(server_.url("/"));
    EXPECT_EQ(sleeps_with(kNoTime), (Sleeps{2, 2, 2}));
    EXPECT_EQ(sleeps_with(1500), (Sleeps{0, 0, 0}));
    EXPECT_EQ(sleeps_with(7000), (Sleeps{3, 3, 3}));
    EXPECT_EQ(sleeps_with(1e300), (Sleeps{300, 300, 300}));
}

TEST_F(SegmentFile, SegmentWithoutAnAddressStops) {
    player_.segment_type = SegmentElementType::kTemplate;
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_EQ(ids(), Ids{4043});
    EXPECT_NE(status_, Status::kOk);
}

TEST_F(SegmentFile, FileWithoutMemoryForItIsReported) {
    add_segments(1);
    for (const std::string& base : {std::string(), server_.url("/")}) {
        segment_list(base);
        player_.next_segment = 0;
        status_ = Status::kOk;
        refused_size = 100000;
        const SegmentFileResult result = get();
        refused_size = 0;
        EXPECT_EQ(result, SegmentFileResult::kStop);
        EXPECT_TRUE(has_failed(status_));
        ASSERT_EQ(sink_.count(3004), 1U);
        EXPECT_NE(texts(3004)[0].find("dash_thread"), std::string::npos);
        EXPECT_TRUE(std::filesystem::is_empty("tmp")) << "the copy is gone";
        sink_.clear();
        player_.next_segment = 0;
        EXPECT_EQ(get(), SegmentFileResult::kReady);
        EXPECT_EQ(sink_.count(3004), 0U);
    }
}

TEST_F(SegmentFile, FolderIsNoSegment) {
    std::filesystem::create_directory("init.mp4");
    segment_list("");
    EXPECT_EQ(get(), SegmentFileResult::kStop);
    EXPECT_EQ(ids(), Ids{4063});
}

TEST_F(SegmentFile, WithoutAddressingThereIsNothing) {
    EXPECT_EQ(get(), SegmentFileResult::kNoMore);
    EXPECT_EQ(ids(), Ids{});
}

}  // namespace
}  // namespace mediasplit
