#include "src/dash_reader/broadcast_rules.h"

#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

DashInfo broadcast_info() {
    DashInfo info;
    info.ui_id = "mpd";
    info.type = "dynamic";
    info.profiles = "urn:x,urn:mpeg:dash:profile:isoff-broadcast:2015";
    info.publishTime = "2020-01-01T00:00:00Z";
    info.availabilityStartTime = "2020-01-01T00:00:00Z";
    info.minimumUpdatePeriod = "PT1S";
    return info;
}

TEST(BroadcastMpd, PassesWithAllItNeeds) {
    const RecordingSink sink;
    EXPECT_EQ(broadcast_mpd_validation(broadcast_info(), nullptr), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_TRUE(sink.was_evaluated(4094) && sink.was_evaluated(4095) && sink.was_evaluated(4096));
}

TEST(BroadcastMpd, NeedsTheProfile) {
    for (const bool is_there : {false, true}) {
        const RecordingSink sink;
        DashInfo info = broadcast_info();
        info.profiles = is_there ? std::optional<std::string>("urn:other") : std::nullopt;
        EXPECT_EQ(broadcast_mpd_validation(info, nullptr), Status::kRuleBroken);
        EXPECT_EQ(sink.ids(), std::vector<int>{4094});
        EXPECT_EQ(sink.reports()[0].element, "mpd");
    }
}

TEST(BroadcastMpd, MustBeDynamic) {
    const RecordingSink sink;
    DashInfo info = broadcast_info();
    info.type = "static";
    EXPECT_EQ(broadcast_mpd_validation(info, nullptr), Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), std::vector<int>{4095});
}

TEST(BroadcastMpd, NeedsEachOfTheThreeTimes) {
    for (const auto field : {&DashInfo::publishTime, &DashInfo::availabilityStartTime,
                             &DashInfo::minimumUpdatePeriod}) {
        const RecordingSink sink;
        DashInfo info = broadcast_info();
        (info.*field).reset();
        EXPECT_EQ(broadcast_mpd_validation(info, nullptr), Status::kRuleBroken);
        EXPECT_EQ(sink.ids(), std::vector<int>{4096});
    }
}

}  // namespace
}  // namespace mediasplit
