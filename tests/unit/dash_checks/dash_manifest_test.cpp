#include "src/main/checks/dash_manifest.h"

#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

DashInfo with_periods(const std::vector<std::optional<std::string>>& ids) {
    DashInfo info;
    for (const auto& id : ids) {
        DashPeriodInfo period;
        period.index = static_cast<std::int32_t>(info.periods.size());
        period.id = id;
        period.ui_id = "period" + std::to_string(period.index);
        info.periods.push_back(std::move(period));
    }
    return info;
}

DashRepresentationInfo representation(const std::string& id) {
    DashRepresentationInfo record;
    record.id = id;
    record.ui_id = "rep" + id;
    return record;
}

DashAdaptationSetInfo adaptation_set(const std::string& id) {
    DashAdaptationSetInfo record;
    record.id = id;
    record.ui_id = "set" + id;
    return record;
}

DashPreselectionInfo preselection(std::optional<std::string> components,
                                  const std::string& codecs) {
    DashPreselectionInfo record;
    record.preselectionComponents = std::move(components);
    record.codecs = codecs;
    return record;
}

Status validate(const DashPeriodInfo& period) {
    DashInfo info;
    info.periods.push_back(period);
    return broadcast_dash_manifest_validation(&info, 0, nullptr);
}

TEST(DashManifest, HasNothingToCheckWithoutPeriods) {
    const RecordingSink sink;
    const DashInfo info;
    EXPECT_EQ(dash_manifest_validation(&info, nullptr), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_EQ(dash_manifest_validation(nullptr, nullptr), Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{3006});
}

TEST(DashManifest, PeriodsWithDifferentOrMissingIdsPass) {
    const RecordingSink sink;
    const DashInfo info = with_periods({"a", std::nullopt, "b", std::nullopt});
    EXPECT_EQ(dash_manifest_validation(&info, nullptr), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_TRUE(sink.was_evaluated(4086));
}

TEST(DashManifest, TwoPeriodsOfOneIdAreBothNamed) {
    const RecordingSink sink;
    const DashInfo info = with_periods({"a", "b", "a"});
    EXPECT_EQ(dash_manifest_validation(&info, nullptr), Status::kRuleBroken);
    ASSERT_EQ(sink.ids(), (std::vector<int>{4086, 4086}));
    EXPECT_EQ(sink.reports()[0].element, "period0");
    EXPECT_EQ(sink.reports()[1].element, "period2");
    EXPECT_EQ(sink.reports()[0].attribute, "id");
    EXPECT_EQ(sink.reports()[0].text,
              "In DASH manifest, the id of the Periods must be unique. Multiple Periods use the "
              "same id \"a\".");
}

TEST(DashManifest, ThreePeriodsOfOneIdMakeSixMessages) {
    const RecordingSink sink;
    const DashInfo info = with_periods({"a", "a", "a"});
    EXPECT_EQ(dash_manifest_validation(&info, nullptr), Status::kRuleBroken);
    std::vector<std::string> elements;
    for (const RecordedReport& report : sink.reports()) {
        elements.push_back(report.element);
    }
    EXPECT_EQ(elements, (std::vector<std::string>{"period0", "period1", "period0", "period2",
                                                  "period1", "period2"}));
}

TEST(DashManifest, ManyPeriodsOfOneIdAreAllNamedInLinearTime) {
    const DashInfo info = with_periods(std::vector<std::optional<std::string>>(20000, "a"));
    const RecordingSink sink;
    EXPECT_EQ(dash_manifest_validation(&info, nullptr), Status::kRuleBroken);
    EXPECT_LT(sink.ids().size(), 2 * kMostPairReports + 100000);
    EXPECT_EQ(sink.reports().back().element, "period19999");
}

TEST(DashManifest, DuplicateRepresentationsAreNamed) {
    const RecordingSink sink;
    DashInfo info = with_periods({"a", "b"});
    info.periods[1].representations = {representation("1"), representation("1")};
    EXPECT_EQ(dash_manifest_validation(&info, nullptr), Status::kOk);
    info.periods[1].representations[1].duplicate_id = 1;
    EXPECT_EQ(dash_manifest_validation(&info, nullptr), Status::kRuleBroken);
    ASSERT_EQ(sink.ids(), std::vector<int>{4091});
    EXPECT_EQ(sink.reports()[0].text,
              "In DASH manifest, in Period[index:1], Representation id [1] are duplicated, the "
              "latter ones are ignored.");
}

TEST(BroadcastIds, NeedThePeriod) {
    const RecordingSink sink;
    const DashInfo info = with_periods({"a"});
    EXPECT_EQ(broadcast_dash_manifest_validation(&info, 1, nullptr), Status::kFailed);
    EXPECT_EQ(broadcast_dash_manifest_validation(&info, -1, nullptr), Status::kFailed);
    EXPECT_EQ(broadcast_dash_manifest_validation(nullptr, 0, nullptr), Status::kFailed);
    EXPECT_EQ(sink.ids(), (std::vector<int>{3006, 3006, 3006}));
}

TEST(BroadcastIds, PassWhenTheyAreDifferentNumbers) {
    const RecordingSink sink;
    DashPeriodInfo period;
    period.id = "main";
    period.representations = {representation("1")};
    period.representations[0].shared_init_representations = {representation("2")};
    period.adaptation_sets = {adaptation_set("3"), DashAdaptationSetInfo{}};
    period.preselections = {preselection("3", "ac-4.02.01.00")};
    period.preselections[0].id = "4";
    EXPECT_EQ(validate(period), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
    for (const int id : {4352, 4353, 4354, 4355, 4356, 4361, 4362}) {
        EXPECT_TRUE(sink.was_evaluated(id)) << id;
    }
}

TEST(BroadcastIds, MustBeNumbers) {
    const RecordingSink sink;
    DashPeriodInfo period;
    period.representations = {representation("r")};
    period.representations[0].shared_init_representations = {representation("-1")};
    period.adaptation_sets = {adaptation_set("s")};
    period.preselections = {preselection("", "")};
    period.preselections[0].id = "p";
    EXPECT_EQ(validate(period), Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), (std::vector<int>{4353, 4353, 4352, 4354}));
    EXPECT_EQ(sink.reports()[1].element, "rep-1");
    EXPECT_NE(sink.reports()[2].text.find("[id : s]"), std::string::npos);
}

TEST(BroadcastIds, ThePeriodsNumberTakesPart) {
    const RecordingSink sink;
    DashPeriodInfo period;
    period.id = "1";
    period.adaptation_sets = {adaptation_set("1")};
    EXPECT_EQ(validate(period), Status::kRuleBroken);
    ASSERT_EQ(sink.ids(), std::vector<int>{4356});
    EXPECT_NE(sink.reports()[0].text.find("the duplicate id : 1."), std::string::npos);
}

TEST(BroadcastIds, AValueThatOccursFourTimesMakesSixMessages) {
    const RecordingSink sink;
    DashPeriodInfo period;
    period.representations = {representation("5"), representation("05")};
    period.representations[0].shared_init_representations = {representation("5")};
    period.adaptation_sets = {adaptation_set("5")};
    EXPECT_EQ(validate(period), Status::kRuleBroken);
    EXPECT_EQ(sink.count(4356), 6U);
}

TEST(BroadcastIds, PreselectionsNeedComponents) {
    const RecordingSink sink;
    DashPeriodInfo period;
    period.preselections = {preselection(std::nullopt, "mp4a")};
    EXPECT_EQ(validate(period), Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), std::vector<int>{4362});
}

TEST(BroadcastIds, ComponentsOfAc4AreLookedUp) {
    const RecordingSink sink;
    DashPeriodInfo period;
    period.adaptation_sets = {adaptation_set("1")};
    period.preselections = {preselection("1 x 2", "ac-4.02.01.00")};
    period.preselections[0].ui_id = "period0-preselectionComponents1 x 2";
    EXPECT_EQ(validate(period), Status::kRuleBroken);
    ASSERT_EQ(sink.ids(), (std::vector<int>{4361, 4355}));
    EXPECT_NE(sink.reports()[0].text.find("The invalid id: x"), std::string::npos);
    EXPECT_NE(sink.reports()[1].text.find("[value: 2]"), std::string::npos);
    for (const RecordedReport& report : sink.reports()) {
        EXPECT_EQ(report.element, "period0-preselectionComponents1 x 2");
        EXPECT_EQ(report.attribute, "preselectionComponents");
    }
}

TEST(BroadcastIds, ComponentsOfOthersArent) {
    const RecordingSink sink;
    DashPeriodInfo period;
    period.preselections = {preselection("8 x", "mp4a.40.2")};
    period.preselections.push_back(preselection("8 x", ""));
    period.preselections[1].codecs.reset();
    EXPECT_EQ(validate(period), Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
}

}  // namespace
}  // namespace mediasplit
