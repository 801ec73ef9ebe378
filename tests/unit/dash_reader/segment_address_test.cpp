// Segment addresses of one Representation.
#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/mpd_reading.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using testing::in_mpd;
using testing::in_set;
using testing::MpdReading;
using testing::one_representation;

constexpr std::uint64_t kAllOnes = ~std::uint64_t{0};

MpdReading template_player(const std::string& attributes, const std::string& content = "") {
    MpdReading mpd(
        one_representation("<SegmentTemplate initialization='i' media='$Number$-$Time$' " +
                           attributes + ">" + content + "</SegmentTemplate>"));
    mpd.play("v");
    EXPECT_EQ(mpd.status, Status::kOk);
    return mpd;
}

std::string media(const std::string& name) {
    return "http://host/dir/" + name;
}

TEST(DashPlayer, RefusesMissingArguments) {
    const RecordingSink sink;
    MpdReading mpd(one_representation(""));
    for (const auto& status :
         {init_dash_player(nullptr, mpd.root.get(), "u", 0, "v", nullptr),
          init_dash_player(&mpd.player, nullptr, "u", 0, "v", nullptr),
          init_dash_player(&mpd.player, mpd.root.get(), nullptr, 0, "v", nullptr),
          init_dash_player(&mpd.player, mpd.root.get(), "u", -1, "v", nullptr),
          init_dash_player(&mpd.player, mpd.root.get(), "u", 1, "v", nullptr),
          init_dash_player(&mpd.player, mpd.root.get(), "u", 0, "other", nullptr),
          init_dash_player(&mpd.player, mpd.root.get(), "u", 0, nullptr, nullptr)}) {
        EXPECT_EQ(status, Status::kFailed);
        EXPECT_EQ(mpd.player, nullptr);
    }
    EXPECT_EQ(sink.count(3006), 7U);
}

TEST(DashPlayer, TakesTheFirstRepresentationOfTheId) {
    MpdReading mpd(
        in_mpd(in_set("<Representation id='a' bandwidth='1'/>"
                      "<Representation id='b' bandwidth='2'><SegmentTemplate "
                      "initialization='one'/></Representation>"
                      "<Representation id='b' bandwidth='3'><SegmentTemplate "
                      "initialization='two'/></Representation>")));
    mpd.play("b");
    EXPECT_EQ(mpd.player->representation_id, "b");
    EXPECT_EQ(mpd.player->template_bandwidth, "2");
    EXPECT_EQ(mpd.next(), media("one"));
}

TEST(DashPlayer, HoldsTheTimesOfTheManifest) {
    MpdReading mpd(in_mpd(in_set("<Representation id='v' bandwidth='1'/>"),
                          "type='dynamic' publishTime='P' availabilityStartTime='A' "
                          "minBufferTime='PT1.5S' minimumUpdatePeriod='PT2S'"));
    const std::time_t before = std::time(nullptr);
    mpd.play("v");
    const DashPlayer& player = *mpd.player;
    EXPECT_EQ(player.type, "dynamic");
    EXPECT_EQ(player.publishTime, "P");
    EXPECT_EQ(player.availabilityStartTime, "A");
    EXPECT_EQ(player.min_buffer_time_ms, 1500);
    EXPECT_EQ(player.minimum_update_period_ms, 2000);
    EXPECT_FALSE(player.utc_timing_value);
    EXPECT_EQ(player.period_start_ms, 0U);
    EXPECT_EQ(player.period_duration_ms, -1);
    EXPECT_GE(player.started_at, before);
}

TEST(DashPlayer, TakesAnUpdatePeriodOfDynamicManifestsOnly) {
    struct Row {
        const char* attributes;
        double period;
    };
    const Row rows[] = {{"minimumUpdatePeriod='PT2S'", -1},
                        {"type='static' minimumUpdatePeriod='PT2S'", -1},
                        {"type='dynamic'", -1},
                        {"type='dynamic' minimumUpdatePeriod='PT0S'", -1},
                        {"type='dynamic' minimumUpdatePeriod='P1Y'", 360.0 * 24 * 3600 * 1000}};
    for (const Row& row : rows) {
        MpdReading mpd(in_mpd(in_set("<Representation id='v' bandwidth='1'/>"), row.attributes));
        mpd.play("v");
        EXPECT_EQ(mpd.player->minimum_update_period_ms, row.period) << row.attributes;
        EXPECT_EQ(mpd.player->min_buffer_time_ms, -1);
    }
}

TEST(DashPlayer, KeepsUtcTimingOfTheDirectScheme) {
    MpdReading mpd(in_mpd("<UTCTiming schemeIdUri='urn:mpeg:dash:utc:direct:2014' value='T'/>" +
                          in_set("<Representation id='v' bandwidth='1'/>")));
    mpd.play("v");
    EXPECT_EQ(mpd.player->utc_timing_value, "T");
}

TEST(DashPlayer, WorksOutThePeriodsPlace) {
    struct Row {
        const char* mpd;
        std::int32_t period;
        std::uint64_t start;
        double duration;
    };
    const std::string set = "<AdaptationSet><Representation id='v' bandwidth='1'/></AdaptationSet>";
    const Row rows[] = {
        {"<MPD mediaPresentationDuration='PT10S'><Period>@</Period></MPD>", 0, 0, 10000},
        {"<MPD mediaPresentationDuration='PT10S'><Period start='PT4S'>@</Period></MPD>", 0, 4000,
         6000},
        {"<MPD><Period start='PT4S' duration='PT3S'/><Period>@</Period></MPD>", 1, 7000, -1},
        {"<MPD><Period duration='PT3S'>@</Period></MPD>", 0, 0, 3000},
        {"<MPD mediaPresentationDuration='PT9S'><Period>@</Period><Period start='PT5S'/></MPD>", 0,
         0, 5000},
        {"<MPD mediaPresentationDuration='PT9S'><Period start='PT20S'>@</Period></MPD>", 0, 20000,
         -1},
        {"<MPD><Period duration='PT3S'/><Period start='PT1.5S'>@</Period></MPD>", 1, 1500, -1},
        {"<MPD><Period start='soon'>@</Period></MPD>", 0, 0, 0},
        {"<MPD><Period start='P99999999999999999999Y'>@</Period></MPD>", 0, kAllOnes, -1}};
    for (const Row& row : rows) {
        std::string text = row.mpd;
        text.replace(text.find('@'), 1, set);
        MpdReading mpd(text);
        mpd.play("v", row.period);
        ASSERT_NE(mpd.player, nullptr) << row.mpd;
        EXPECT_EQ(mpd.player->period_start_ms, row.start) << row.mpd;
        EXPECT_EQ(mpd.player->period_duration_ms, row.duration) << row.mpd;
    }
}

TEST(DashPlayer, BuildsBaseUrlsOfFourLevels) {
    MpdReading mpd(
        in_mpd("<BaseURL>m/</BaseURL><Period><BaseURL>p/</BaseURL><AdaptationSet>"
               "<BaseURL>s/</BaseURL><SegmentTemplate initialization='i'/>"
               "<Representation id='v' bandwidth='1'><BaseURL>r/</BaseURL>"
               "</Representation></AdaptationSet></Period>"));
    mpd.play("v", 0, "dir/m.mpd");
    EXPECT_EQ(mpd.player->mpd_base_urls[0], "dir/m/");
    EXPECT_EQ(mpd.player->period_base_urls[0], "dir/m/p/");
    EXPECT_EQ(mpd.player->adaptation_set_base_urls[0], "dir/m/p/s/");
    EXPECT_EQ(mpd.player->representation_base_urls[0], "dir/m/p/s/r/");
    // Below the base of the level where the template stands.
    EXPECT_EQ(mpd.next(), "dir/m/p/s/i");
}

TEST(SegmentBase, GivesTheInitializationAndTheWholeFile) {
    const RecordingSink sink;
    MpdReading mpd(
        one_representation("<BaseURL>v.mp4</BaseURL><SegmentBase indexRange='10-19'>"
                           "<Initialization range='0-9'/></SegmentBase>"));
    mpd.play("v");
    std::optional<std::string> range;
    EXPECT_EQ(mpd.next(&range), media("v.mp4"));
    EXPECT_EQ(range, "0-9");
    EXPECT_EQ(mpd.player->next_segment, 1U);
    EXPECT_EQ(mpd.next(&range), media("v.mp4"));
    EXPECT_EQ(range, "10-19");
    EXPECT_EQ(mpd.player->next_segment, 2U);
    EXPECT_EQ(mpd.next(&range), "");
    EXPECT_FALSE(range);
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(SegmentBase, WithoutIndexRangeMakesNoPlayer) {
    const RecordingSink sink;
    MpdReading mpd(one_representation("<SegmentBase/>"));
    mpd.play("v");
    EXPECT_EQ(mpd.status, Status::kFailed);
    EXPECT_EQ(mpd.player, nullptr);
    EXPECT_EQ(sink.ids(), std::vector<int>{4045});
}

TEST(SegmentBase, WithoutAnAddressMakesNoPlayer) {
    const RecordingSink sink;
    MpdReading mpd(one_representation("<SegmentBase indexRange='0-1'/>"));
    mpd.play("v", 0, "");
    EXPECT_EQ(mpd.status, Status::kFailed);
    EXPECT_EQ(mpd.player, nullptr);
    EXPECT_EQ(sink.ids(), std::vector<int>{4043});
}

TEST(SegmentBase, WithoutInitializationStartsWithTheFileItself) {
    MpdReading mpd(one_representation("<BaseURL>v.mp4</BaseURL><SegmentBase indexRange='1-2'/>"));
    mpd.play("v");
    std::optional<std::string> range;
    EXPECT_EQ(mpd.next(&range), media("v.mp4"));
    EXPECT_FALSE(range);
}

TEST(SegmentList, GivesItsEntriesInTurn) {
    MpdReading mpd(one_representation(
        "<SegmentList><Initialization sourceURL='i' range='0-1'/><SegmentURL media='a'/>"
        "<SegmentURL media='/b' mediaRange='5-9'/></SegmentList>"));
    mpd.play("v");
    std::optional<std::string> range;
    EXPECT_EQ(mpd.next(&range), media("i"));
    EXPECT_EQ(range, "0-1");
    EXPECT_EQ(mpd.next(&range), media("a"));
    EXPECT_FALSE(range);
    EXPECT_EQ(mpd.next(&range), "/b");
    EXPECT_EQ(range, "5-9");
    EXPECT_EQ(mpd.player->next_segment, 3U);
    EXPECT_EQ(mpd.next(&range), "");
    EXPECT_EQ(mpd.next(&range), "");
    EXPECT_EQ(mpd.status, Status::kOk);
}

TEST(SegmentList, OfTheAdaptationSetIsFoundByThePlayer) {
    MpdReading mpd(
        in_mpd(in_set("<SegmentList><SegmentURL media='a'/></SegmentList>"
                      "<Representation id='v' bandwidth='1'/>")));
    mpd.play("v");
    EXPECT_EQ(mpd.next(), "http://host/dir/m.mpd");
    EXPECT_EQ(mpd.next(), media("a"));
}

TEST(SegmentList, TakesTheBaseForAnEntryWithARangeOnly) {
    MpdReading mpd(one_representation(
        "<BaseURL>v.mp4</BaseURL><SegmentList><SegmentURL mediaRange='9-5'/></SegmentList>"));
    mpd.play("v");
    mpd.next();
    std::optional<std::string> range;
    EXPECT_EQ(mpd.next(&range), media("v.mp4"));
    // Ranges are handed on as written, also one that ends before it begins.
    EXPECT_EQ(range, "9-5");
}

TEST(SegmentList, HasNoAddressForAnEntryThatIsTooLong) {
    const RecordingSink sink;
    MpdReading mpd(one_representation("<SegmentList><SegmentURL media='" + std::string(1025, 'x') +
                                      "'/></SegmentList>"));
    mpd.play("v");
    mpd.next();
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{4043});
}

TEST(SegmentTemplateAddress, NeedsBothAttributes) {
    const RecordingSink sink;
    MpdReading mpd(one_representation("<SegmentTemplate/>"));
    mpd.play("v");
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kFailed);
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), (std::vector<int>{4043, 4043}));
}

TEST(SegmentTemplateAddress, FillsIdAndBandwidthAsWritten) {
    MpdReading mpd(
        one_representation("<SegmentTemplate initialization='$RepresentationID$/$Bandwidth$' "
                           "media='$RepresentationID$-$Bandwidth%06d$-$Number%03d$' "
                           "startNumber='7' duration='1'/>"));
    mpd.play("v");
    EXPECT_EQ(mpd.next(), media("v/1000"));
    EXPECT_EQ(mpd.next(), media("v-001000-007"));
    EXPECT_EQ(mpd.next(), media("v-001000-008"));
}

TEST(SegmentTemplateAddress, ReportsWhatTheTemplateLacks) {
    const RecordingSink sink;
    MpdReading mpd(
        one_representation("<SegmentTemplate initialization='$Time$' "
                           "media='$Number%021d$' duration='1'/>"));
    mpd.play("v");
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(sink.ids(), (std::vector<int>{4039, 4041}));
}

// The arithmetic that is kept as it is.

TEST(SegmentTemplateAddress, TimeWithADurationIsInSecondsNotInTimescaleUnits) {
    MpdReading mpd = template_player("duration='2000' timescale='1000' startNumber='5'");
    EXPECT_EQ(mpd.next(), media("i"));
    EXPECT_EQ(mpd.next(), media("5-0"));
    EXPECT_EQ(mpd.next(), media("6-2"));
    EXPECT_EQ(mpd.next(), media("7-4"));
    EXPECT_EQ(mpd.player->next_segment, 4U);
}

TEST(SegmentTemplateAddress, TimeWithADurationAndNoTimescaleCountsDurations) {
    MpdReading mpd = template_player("duration='2000'");
    mpd.next();
    EXPECT_EQ(mpd.next(), media("1-0"));
    EXPECT_EQ(mpd.next(), media("2-2000"));
}

TEST(SegmentTemplateAddress, TargetGivesTheIndexAndItselfAsTime) {
    MpdReading mpd = template_player("duration='2000' timescale='1000'");
    mpd.next();
    EXPECT_EQ(mpd.next(nullptr, 11), media("6-11"));
    EXPECT_EQ(mpd.player->next_segment, 7U);
    EXPECT_EQ(mpd.next(), media("7-12"));
}

TEST(SegmentTemplateAddress, TargetWithoutATimescale) {
    MpdReading mpd = template_player("duration='4'");
    mpd.next();
    EXPECT_EQ(mpd.next(nullptr, 11), media("3-11"));
}

TEST(SegmentTemplateAddress, TargetProductWrapsAndTheIndexIsCutTo32Bits) {
    MpdReading mpd = template_player("duration='1' timescale='4294967296'");
    mpd.next();
    // 2^32 * 2^32 is 0 in 64 bits; 2^32 * 3 / 1 loses its upper half as an index.
    EXPECT_EQ(mpd.next(nullptr, std::uint64_t{1} << 32), media("1-0"));
    mpd.player->next_segment = 1;
    EXPECT_EQ(mpd.next(nullptr, 3), media("1-3"));
}

TEST(SegmentTemplateAddress, HugeNumbersStayInRange) {
    MpdReading mpd = template_player(
        "duration='1' timescale='18446744073709551615' startNumber='99999999999999999999'");
    mpd.next();
    mpd.next(nullptr, kAllOnes);
    mpd.next(nullptr, 1);
    EXPECT_EQ(mpd.status, Status::kOk);
    MpdReading wide = template_player("duration='18446744073709551615'");
    wide.next();
    wide.next(nullptr, kAllOnes);
    wide.next();
    EXPECT_EQ(wide.status, Status::kOk);
}

TEST(SegmentTemplateAddress, RepeatsWithoutDurationAndTimeline) {
    MpdReading mpd = template_player("startNumber='3'");
    mpd.next();
    EXPECT_EQ(mpd.next(), media("3-0"));
    EXPECT_EQ(mpd.next(), media("3-0"));
    EXPECT_EQ(mpd.player->next_segment, 2U);
}

TEST(SegmentTemplateAddress, TimelineTimesAreInTimescaleUnits) {
    MpdReading mpd = template_player("timescale='10'",
                                     "<SegmentTimeline><S t='50' d='20' r='1'/></SegmentTimeline>");
    mpd.next();
    EXPECT_EQ(mpd.next(), media("1-50"));
    EXPECT_EQ(mpd.next(), media("2-70"));
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kOk);
    EXPECT_EQ(mpd.player->next_segment, 4U);
}

TEST(SegmentTemplateAddress, DurationBeatsATimeline) {
    MpdReading mpd = template_player("duration='2' timescale='1'",
                                     "<SegmentTimeline><S t='50' d='20'/></SegmentTimeline>");
    mpd.next();
    EXPECT_EQ(mpd.next(), media("1-0"));
}

TEST(SegmentTemplateAddress, AnEmptyTimelineEnds) {
    MpdReading mpd = template_player("", "<SegmentTimeline/>");
    mpd.next();
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kOk);
}

TEST(SegmentTemplateAddress, TimelineIgnoresTheTargetBeforeAReload) {
    MpdReading mpd = template_player("", "<SegmentTimeline><S d='10' r='9'/></SegmentTimeline>");
    mpd.next();
    EXPECT_EQ(mpd.next(nullptr, 45), media("1-0"));
    std::int32_t reloads = 0;
    mpd.player->reload_count = &reloads;
    mpd.player->next_segment = 1;
    EXPECT_EQ(mpd.next(nullptr, 45), media("1-0"));
}

TEST(SegmentTemplateAddress, TimelineSearchesTheTargetAfterAReload) {
    std::int32_t reloads = 1;
    MpdReading mpd =
        template_player("timescale='2'", "<SegmentTimeline><S d='10' r='9'/></SegmentTimeline>");
    mpd.player->reload_count = &reloads;
    mpd.next();
    EXPECT_EQ(mpd.next(nullptr, 22), media("6-50"));
    EXPECT_EQ(mpd.player->next_segment, 7U);
    EXPECT_EQ(mpd.next(), media("7-60"));
}

TEST(SegmentTemplateAddress, TargetPastTheTimelineGivesItsCountAndItsLastTime) {
    std::int32_t reloads = 1;
    MpdReading mpd = template_player("", "<SegmentTimeline><S d='10' r='2'/></SegmentTimeline>");
    mpd.player->reload_count = &reloads;
    mpd.next();
    EXPECT_EQ(mpd.next(nullptr, 1000), media("4-20"));
    // From there on the list is at its end, target or not.
    EXPECT_EQ(mpd.next(nullptr, 1000), "");
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kOk);
}

TEST(SegmentTemplateAddress, RepeatsOf64BitsMakeABoundedList) {
    MpdReading mpd = template_player(
        "", "<SegmentTimeline><S d='1' r='18446744073709551615'/></SegmentTimeline>");
    EXPECT_EQ(mpd.player->timeline.size(), kMostTimelineEntries);
    mpd.player->next_segment = kMostTimelineEntries;
    EXPECT_EQ(mpd.next(), media("16777216-16777215"));
    EXPECT_EQ(mpd.next(), "");
}

TEST(NoAddressing, HasNoSegments) {
    MpdReading mpd(one_representation(""));
    mpd.play("v");
    EXPECT_EQ(mpd.player->segment_type, SegmentElementType::kNone);
    EXPECT_EQ(mpd.next(), "");
    EXPECT_EQ(mpd.status, Status::kOk);
    std::string name;
    EXPECT_EQ(get_init_segment_filename(*mpd.player, name), -1);
}

TEST(InitSegmentName, IsThatOfTheAddressingInForce) {
    for (const std::string& content :
         {std::string("<SegmentTemplate initialization='a/init.mp4'/>"),
          std::string("<SegmentList><Initialization sourceURL='a/init.mp4'/></SegmentList>"),
          std::string("<SegmentBase indexRange='1-2'><Initialization sourceURL='a/init.mp4'/>"
                      "</SegmentBase>")}) {
        MpdReading mpd(one_representation(content));
        mpd.play("v");
        std::string name;
        EXPECT_EQ(get_init_segment_filename(*mpd.player, name), 0);
        EXPECT_EQ(name, "init");
    }
}

}  // namespace
}  // namespace mediasplit
