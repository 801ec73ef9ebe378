// Presentations that are read once.
#include "src/dash_thread/walk.h"

#include "src/dash_thread/media_segment.h"
#include "tests/support/mp4_builder.h"
#include "tests/unit/dash_thread/dash_run.h"

namespace mediasplit {
namespace {

class Walk : public DashRun {
protected:
    static std::string list(const std::string& entries) {
        return R"(<SegmentList duration="2"><Initialization sourceURL="init.mp4"/>)" + entries +
               "</SegmentList>";
    }
    // "init.mp4" holds all: initialization, index, and three segments.
    void add_indexed_file() {
        const std::string init = init_segment();
        const std::string references[] = {mp4_segment(0), mp4_segment(1), mp4_segment(2)};
        std::vector<mp4::Bytes> parts = {mp4::u32(0),  // version and flags
                                         mp4::u32(1), mp4::u32(1000), mp4::u32(0),
                                         mp4::u32(0), mp4::u16(0),    mp4::u16(3)};
        for (const std::string& reference : references) {
            parts.push_back(mp4::u32(reference.size()));
            parts.push_back(mp4::zeros(8));
        }
        const mp4::Bytes sidx = mp4::box("sidx", parts);
        first_ = init.size();
        last_ = first_ + sidx.size() - 1;
        add("init.mp4", init + std::string(sidx.begin(), sidx.end()) + references[0] +
                            references[1] + references[2]);
    }
    [[nodiscard]] std::string indexed(const std::string& index_range) const {
        return R"(<BaseURL>init.mp4</BaseURL><SegmentBase indexRange=")" + index_range +
               R"("><Initialization range="0-)" + std::to_string(first_ - 1) +
               R"("/></SegmentBase>)";
    }

    std::size_t first_ = 0;
    std::size_t last_ = 0;
};

TEST_F(Walk, NumberedSegmentsEndWithThePeriod) {
    add_segments(7);
    play(manifest(R"(minBufferTime="PT1S")", R"(duration="PT10S")", kNumbers));
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(1, 5));
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 5U);
    for (std::size_t i = 0; i < timing.size(); ++i) {
        EXPECT_DOUBLE_EQ(timing[i].duration, 2.0);
        EXPECT_EQ(timing[i].end, i == 4 ? 1U : 0U);
    }
}

TEST_F(Walk, LastSampleCountsForTheEndOnly) {
    add_segments(7);
    // Each segment's 2 s don't hold the last sample of 1 s: 5 segments of 2 s are 10 s, but the
    // test sees 11 s behind the fifth, and 9 s behind the fourth.
    add("init.mp4", init_segment(1000));
    play(manifest("", R"(duration="PT9S")", kNumbers));
    EXPECT_EQ(output(), samples(1, 4));
    add("init.mp4", init_segment(0));
    play(manifest("", R"(duration="PT9S")", kNumbers));
    EXPECT_EQ(output(), samples(1, 4) + samples(1, 5));
}

TEST_F(Walk, LastSampleIsTakenOffTheListEvenIfItWasNotAdded) {
    add_segments(4);
    // A sample duration above the segment's own isn't added, but taken off 2 s each time.
    add("init.mp4", init_segment(3000));
    const std::string entries =
        R"(<SegmentURL media="s1.mp4"/><SegmentURL media="s2.mp4"/><SegmentURL media="s3.mp4"/>)"
        R"(<SegmentURL media="s4.mp4"/>)";
    play(manifest("", R"(duration="PT4S")", list(entries)));
    EXPECT_EQ(output(), samples(1, 4));
}

TEST_F(Walk, PeriodThatOutlastsItsFilesEndsWithAWarning) {
    add_segments(3);
    play(manifest("", R"(duration="PT10S")", kNumbers));
    EXPECT_EQ(ids(), Ids{2009});
    EXPECT_NE(texts(2009)[0].find("[id : r] is 6.000000 seconds"), std::string::npos);
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(), samples(1, 3));
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 3U);
    EXPECT_EQ(timing[2].end, 1U);
}

TEST_F(Walk, StartOfAPeriodIsTakenInMillisecondsForSeconds) {
    add_segments(3);
    play(manifest("", R"(start="PT60S" duration="PT10S")", kNumbers));
    EXPECT_EQ(ids(), Ids{2009});
    EXPECT_EQ(output(), "");
    // 60,000 of 2 s each: number 30,001 would come first.
    add("s30001.mp4", mp4_segment(7));
    play(manifest("", R"(start="PT60S" duration="PT2S")", kNumbers));
    EXPECT_EQ(output(), samples(7, 7));
}

TEST_F(Walk, LocalDynamicManifestPlaysUntilAFileIsMissing) {
    add_segments(8);
    play(manifest(R"(type="dynamic" minimumUpdatePeriod="PT1S" publishTime="2026-01-01T00:01:00Z"
                     availabilityStartTime="2026-01-01T00:00:00Z")",
                  "", kNumbers));
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(output(), samples(1, 8));
    EXPECT_EQ(ids(), Ids{2009});
    EXPECT_TRUE(TestClock::sleeps.empty());
}

TEST_F(Walk, TimelineEndsWithItsEntries) {
    add_segments(4);
    play(manifest("", "", R"(<SegmentTemplate initialization="init.mp4" media="s$Number$.mp4">
        <SegmentTimeline><S t="0" d="2" r="2"/></SegmentTimeline></SegmentTemplate>)"));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(1, 3));
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 3U);
    EXPECT_EQ(timing[1].end, 0U);
    EXPECT_EQ(timing[2].end, 1U);
}

TEST_F(Walk, TimesOfATimelineAreUsed) {
    add("init.mp4", init_segment());
    add("t5.mp4", mp4_segment(0));
    add("t7.mp4", mp4_segment(1));
    play(manifest("", "", R"(<SegmentTemplate initialization="init.mp4" media="t$Time$.mp4">
        <SegmentTimeline><S t="5" d="2" r="1"/></SegmentTimeline></SegmentTemplate>)"));
    EXPECT_EQ(output(), samples(0, 1));
    EXPECT_EQ(ids(), Ids{});
}

TEST_F(Walk, ListIsPlayedToItsEnd) {
    add_segments(3);
    play(manifest("", R"(duration="PT60S")",
                  list(R"(<SegmentURL media="s2.mp4"/><SegmentURL media="s1.mp4"/>)")));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), sample_text(2) + sample_text(1));
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 3U);
    EXPECT_EQ(timing[0].end, 0U);
    EXPECT_EQ(timing[1].end, 1U);
    EXPECT_DOUBLE_EQ(timing[2].duration, -1.0);
    EXPECT_EQ(timing[2].end, 1U);
}

TEST_F(Walk, ListEndsWithThePeriod) {
    add_segments(3);
    play(manifest("", R"(duration="PT3S")",
                  list(R"(<SegmentURL media="s1.mp4"/><SegmentURL media="s2.mp4"/>
                          <SegmentURL media="s3.mp4"/>)")));
    EXPECT_EQ(output(), samples(1, 2));
}

TEST_F(Walk, UnknownDurationEndsAListBehindItsFirstSegment) {
    add_segments(3);
    play(manifest("", "", list(R"(<SegmentURL media="s1.mp4"/><SegmentURL media="s2.mp4"/>)")));
    EXPECT_EQ(output(), samples(1, 1));
}

TEST_F(Walk, RangesOfOneFileAreSegments) {
    const std::string init = init_segment();
    const std::string first = mp4_segment(1);
    const std::string second = mp4_segment(2);
    add("init.mp4", init + first + second);
    const auto range = [](std::size_t begin, std::size_t size) {
        return std::to_string(begin) + "-" + std::to_string(begin + size - 1);
    };
    const std::size_t at = init.size() + first.size();
    const std::string ranges = R"(<BaseURL>init.mp4</BaseURL><SegmentList duration="2">
        <Initialization range=")" +
                               range(0, init.size()) + R"("/><SegmentURL mediaRange=")" +
                               range(init.size(), first.size()) + R"("/><SegmentURL mediaRange=")";
    play(manifest("", R"(duration="PT60S")",
                  ranges + range(at, second.size()) + R"("/></SegmentList>)"));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(1, 2));
    // Without a last byte the range runs to the end of the file, and dashes in a row are one.
    play(manifest("", R"(duration="PT60S")",
                  ranges + std::to_string(at) + R"(--"/></SegmentList>)"));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(1, 2) + samples(1, 2));
}

TEST_F(Walk, FileThatInitializesItselfIsWrittenOnceByItsList) {
    const std::string init = init_segment();
    const std::string first = mp4_segment(1);
    const std::string second = mp4_segment(2);
    add("init.mp4", init + first + second);
    const auto ranges = [&](const std::string& attributes) {
        const std::size_t at = init.size() + first.size();
        return "<SegmentURL " + attributes + R"(mediaRange=")" + std::to_string(init.size()) + "-" +
               std::to_string(at - 1) + R"("/><SegmentURL )" + attributes + R"(mediaRange=")" +
               std::to_string(at) + R"(-"/></SegmentList>)";
    };
    const std::string base = "<BaseURL>init.mp4</BaseURL>";
    const std::string list = R"(<SegmentList duration="2">)";
    play(manifest("", R"(duration="PT60S")", base + list + ranges("")));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(1, 2));
    // Told as a name, without a range.
    play(manifest(
        "", R"(duration="PT60S")",
        list + R"(<Initialization sourceURL="init.mp4"/>)" + ranges(R"(media="init.mp4" )")));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(1, 2) + samples(1, 2));
}

TEST_F(Walk, InitializationOfAFileOfItsOwnIsPlayedWhole) {
    add_segments(1);
    add("media.mp4", std::string(8, '\0') + mp4_segment(1));
    play(manifest("", R"(duration="PT60S")",
                  list(R"(<SegmentURL media="media.mp4" mediaRange="8-"/>)")));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(1, 1));
}

TEST_F(Walk, RangeThatEndsBeforeItBeginsIsHarmless) {
    add_segments(1);
    const auto play_range = [this](const std::string& range) {
        sink_.clear();
        play(manifest("", R"(duration="PT60S")",
                      list(R"(<SegmentURL media="s1.mp4" mediaRange=")" + range + R"("/>)")));
        EXPECT_EQ(result_, 0) << range;
        EXPECT_EQ(output(), "") << range;
        return sink_.count(4065);
    };
    for (const char* range : {"9-3", "-", "", "x-y"}) {
        EXPECT_EQ(play_range(range), 0U) << range;
    }
    EXPECT_FALSE(has_failed(status_));
    EXPECT_EQ(play_range("9223372036854775809-3"), 1U);
    EXPECT_EQ(play_range("5000-6000"), 1U) << "the file is shorter";
    EXPECT_TRUE(has_failed(status_));
    // Whether a file can be positioned there is for its file system to say.
    for (const char* range : {"99999999999999999999-", "9223372036854775807-3"}) {
        EXPECT_LE(play_range(range), 1U) << range;
    }
}

TEST_F(Walk, RangeOfAnIndexThatIsNoneIsToldAndHarmless) {
    add_indexed_file();
    for (const char* range : {"9-3", "-", "", "99999999999999999999-", "900000-900100", "x-y",
                              "9223372036854775807-9223372036854775809"}) {
        sink_.clear();
        status_ = Status::kOk;
        play(manifest("", R"(duration="PT60S")", indexed(range)));
        EXPECT_EQ(result_, 0) << range;
        EXPECT_TRUE(has_failed(status_)) << range;
        EXPECT_EQ(output(), "") << range;
    }
}

TEST_F(Walk, IndexedFileIsWalkedByItsIndex) {
    add_indexed_file();
    play(manifest("", R"(duration="PT2S")",
                  indexed(std::to_string(first_) + "-" + std::to_string(last_))));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(status_, Status::kOk);
    EXPECT_EQ(output(), samples(0, 2));
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 4U);
    EXPECT_EQ(timing[2].end, 1U);
    EXPECT_DOUBLE_EQ(timing[3].duration, -1.0);
}

TEST_F(Walk, IndexedFileThatInitializesItselfIsWrittenOnce) {
    add_indexed_file();
    const std::string range = std::to_string(first_) + "-" + std::to_string(last_);
    play(manifest("", R"(duration="PT2S")",
                  R"(<BaseURL>init.mp4</BaseURL><SegmentBase indexRange=")" + range + R"("/>)"));
    EXPECT_EQ(ids(), Ids{});
    EXPECT_EQ(output(), samples(0, 2));
}

TEST_F(Walk, RangeWithoutAnIndexIsReported) {
    add_indexed_file();
    play(manifest("", R"(duration="PT2S")", indexed("0-15")));
    EXPECT_EQ(ids(), Ids{4061});
    EXPECT_EQ(output(), "");
}

TEST_F(Walk, RepresentationWithoutAddressingEndsAtOnce) {
    play(manifest("", "", ""));
    EXPECT_EQ(ids(), Ids{});
    const auto timing = take_timing();
    ASSERT_EQ(timing.size(), 1U);
    EXPECT_DOUBLE_EQ(timing[0].duration, -1.0);
    EXPECT_EQ(timing[0].is_last_kind, 1U);
    EXPECT_EQ(timing[0].end, 1U);
}

TEST_F(Walk, AddressThatRepeatsForEverIsPlayedTwiceAtMost) {
    add("init.mp4", init_segment());
    add("s.mp4", mp4_segment(0));
    play(manifest("", "", R"(<SegmentTemplate initialization="init.mp4" media="s.mp4"/>)"));
    EXPECT_EQ(output(), sample_text(0) + sample_text(0));
}

TEST_F(Walk, AddressThatRepeatsWithADurationIsPlayedTwiceAtMost) {
    add("init.mp4", init_segment());
    add("s.mp4", mp4_segment(0));
    const std::string constant =
        R"(<SegmentTemplate initialization="init.mp4" media="s.mp4" duration="2"/>)";
    play(manifest("", "", constant));
    EXPECT_EQ(output(), sample_text(0) + sample_text(0));
    // A Period of known duration is filled.
    play(manifest("", R"(duration="PT8S")", constant));
    EXPECT_EQ(output(), sample_text(0) + sample_text(0) + sample_text(0) + sample_text(0) +
                            sample_text(0) + sample_text(0));
}

TEST_F(Walk, AddressThatRepeatsWithoutPracticalEndIsLeft) {
    add("init.mp4", init_segment());
    add("s.mp4", mp4_segment(0));
    const std::string start = R"(<SegmentTemplate initialization="init.mp4" media="s.mp4")";
    const std::size_t one = sample_text(0).size();
    play(manifest("", R"(duration="P99999Y")", start + R"( duration="2"/>)"));
    EXPECT_EQ(output().size(), 1001 * one);
    play(manifest("", R"(duration="P99999Y")",
                  start + R"(><SegmentTimeline><S d="1" r="16000000"/></SegmentTimeline>
                            </SegmentTemplate>)"));
    EXPECT_EQ(output().size(), 2 * 1001 * one);
}

TEST_F(Walk, TimelineOfOutsizedRepeatsIsNotPlayedForEver) {
    add("init.mp4", init_segment());
    add("s.mp4", mp4_segment(0));
    add("t0.mp4", mp4_segment(1));
    for (const char* media : {"s.mp4", "t$Time$.mp4"}) {
        play(manifest("", "",
                      std::string(R"(<SegmentTemplate initialization="init.mp4" media=")") + media +
                          R"("><SegmentTimeline><S d="0" r="18446744073709551615"/>
                                  </SegmentTimeline></SegmentTemplate>)"));
    }
    EXPECT_EQ(output(), sample_text(0) + sample_text(0) + sample_text(1) + sample_text(1));
}

TEST_F(Walk, TimelineOfOneAddressIsPlayedAsOftenAsItSays) {
    add("init.mp4", init_segment());
    add("s.mp4", mp4_segment(0));
    play(manifest("", "", R"(<SegmentTemplate initialization="init.mp4" media="s.mp4">
        <SegmentTimeline><S d="2" r="2"/></SegmentTimeline></SegmentTemplate>)"));
    EXPECT_EQ(output(), sample_text(0) + sample_text(0) + sample_text(0));
}

TEST_F(Walk, StartBeyond64BitsEnds) {
    add("init.mp4", init_segment());
    // Number 1 and the last index make 0.
    add("s0.mp4", mp4_segment(0));
    add("s" + std::to_string(~std::uint64_t{0}) + ".mp4", mp4_segment(1));
    for (const char* period : {R"(start="PT99999999999999999999999S")",
                               R"(start="PT99999999999999999999999S" duration="PT4S")"}) {
        play(manifest("", period,
                      R"(<SegmentTemplate initialization="init.mp4" media="s$Number$.mp4"
                          duration="1"/>)"));
        EXPECT_EQ(result_, 0);
        EXPECT_EQ(server_.requests("/init.mp4"), 0U);
    }
    EXPECT_EQ(output(), sample_text(0) + samples(1, 1) + sample_text(1) + samples(0, 1));
}

TEST_F(Walk, SegmentsWithoutDurationDoNotGoOnForEver) {
    server_.serve("/init.mp4", init_segment());
    for (int i = 1; i < 50; ++i) {
        server_.serve("/s" + std::to_string(i) + ".mp4", empty_segment());
    }
    play_address(manifest("", R"(duration="PT10S")", kNumbers));
    EXPECT_EQ(server_.requests("/s5.mp4"), 1U);
    EXPECT_EQ(server_.requests("/s6.mp4"), 0U) << "the period is over by the manifest's durations";
    play_address(manifest("", "", kNumbers));
    EXPECT_EQ(server_.requests("/s2.mp4"), 2U);
    EXPECT_EQ(server_.requests("/s3.mp4"), 1U) << "nothing tells an end";
}

TEST_F(Walk, NullListIsAccepted) {
    segment_duration_list_end(nullptr);
    DashPlayer player;
    player.last_duration = std::make_unique<SegmentTiming>();
    release_last_segment_duration(player, nullptr);
    EXPECT_EQ(player.last_duration, nullptr);
}

}  // namespace
}  // namespace mediasplit
