#include "src/dash_reader/base_url.h"

#include <gtest/gtest.h>

#include "tests/support/mpd_reading.h"

namespace mediasplit {
namespace {

using testing::in_mpd;
using testing::MpdReading;

std::string simply(OptText base, OptText relative) {
    std::string out = "unset";
    EXPECT_EQ(merge_url_simply(base, relative, &out), 0);
    return out;
}

TEST(AbsoluteUrl, IsToldByItsFirstCharacters) {
    EXPECT_EQ(check_absolute_url(nullptr), -1);
    EXPECT_EQ(check_absolute_url("/a"), 0);
    EXPECT_EQ(check_absolute_url("/"), 0);
    EXPECT_EQ(check_absolute_url("http://a"), 0);
    EXPECT_EQ(check_absolute_url("httpd/a"), 0);
    EXPECT_EQ(check_absolute_url("c:\\a"), 0);
    EXPECT_EQ(check_absolute_url(""), 1);
    EXPECT_EQ(check_absolute_url("a"), 1);
    EXPECT_EQ(check_absolute_url(":"), 1);
    EXPECT_EQ(check_absolute_url("a/b:c"), 1);
    EXPECT_EQ(check_absolute_url("HTTP://a"), 1);
}

TEST(MergeUrlSimply, KeepsTheBaseUpToItsLastSeparator) {
    EXPECT_EQ(simply("http://h/d/m.mpd", "v/1.mp4"), "http://h/d/v/1.mp4");
    EXPECT_EQ(simply("dir\\m.mpd", "a"), "dir\\a");
    EXPECT_EQ(simply("a/b\\c/d", "e"), "a/b\\c/e");
    EXPECT_EQ(simply("dir/", ""), "dir/");
}

TEST(MergeUrlSimply, IgnoresASeparatorAtTheStart) {
    EXPECT_EQ(simply("manifest.mpd", "a"), "a");
    EXPECT_EQ(simply("/manifest.mpd", "a"), "a");
    EXPECT_EQ(simply("", "a"), "a");
}

TEST(MergeUrlSimply, TakesAtMost1024CharactersOfTheRelativeText) {
    EXPECT_EQ(simply("d/", std::string(1025, 'x')), "d/" + std::string(1024, 'x'));
}

TEST(MergeUrlSimply, TellsWhatIsMissing) {
    std::string out = "kept";
    EXPECT_EQ(merge_url_simply(nullptr, "a", &out), -1);
    EXPECT_EQ(merge_url_simply("a", nullptr, &out), -1);
    EXPECT_EQ(merge_url_simply("a", "a", nullptr), 1);
    EXPECT_EQ(out, "kept");
}

TEST(MergeBaseUrl, GivesTheBaseForAMissingAddress) {
    std::string out;
    EXPECT_EQ(merge_baseURL("http://h/a.mp4", nullptr, &out), 0);
    EXPECT_EQ(out, "http://h/a.mp4");
}

TEST(MergeBaseUrl, KeepsAbsoluteAddressesAndMergesOthers) {
    std::string out;
    EXPECT_EQ(merge_baseURL("http://h/a", "/b", &out), 0);
    EXPECT_EQ(out, "/b");
    EXPECT_EQ(merge_baseURL("http://h/a", "b", &out), 0);
    EXPECT_EQ(out, "http://h/b");
}

TEST(MergeBaseUrl, RefusesMoreThan1024Characters) {
    std::string out = "kept";
    EXPECT_EQ(merge_baseURL("d/", std::string(1025, 'x'), &out), -1);
    EXPECT_EQ(merge_baseURL(nullptr, "x", &out), -1);
    EXPECT_EQ(merge_baseURL("d/", "x", nullptr), -1);
    EXPECT_EQ(out, "kept");
    EXPECT_EQ(merge_baseURL("d/", std::string(1024, 'x'), &out), 0);
    EXPECT_EQ(out, "d/" + std::string(1024, 'x'));
}

TEST(BaseUrls, AreTheManifestsAddressWithoutAnElement) {
    MpdReading mpd(in_mpd("<Period/>"));
    mpd.read();
    ASSERT_NE(mpd.info, nullptr);
    ASSERT_EQ(mpd.info->base_urls.size(), 1U);
    EXPECT_EQ(mpd.info->base_urls[0], "http://host/dir/m.mpd");
    EXPECT_EQ(mpd.info->periods[0].base_urls[0], "http://host/dir/m.mpd");
}

TEST(BaseUrls, MultiplyALevelsRelativeTextsWithItsParents) {
    MpdReading mpd(
        in_mpd("<BaseURL>http://a/x/</BaseURL><BaseURL>sub/</BaseURL>"
               "<Period><BaseURL>p/</BaseURL></Period>"));
    mpd.read();
    const BaseUrls& period = mpd.info->periods[0].base_urls;
    ASSERT_EQ(mpd.info->base_urls.size(), 2U);
    EXPECT_EQ(mpd.info->base_urls[1], "http://host/dir/sub/");
    ASSERT_EQ(period.size(), 2U);
    EXPECT_EQ(period[0], "http://a/x/p/");
    EXPECT_EQ(period[1], "http://host/dir/sub/p/");
}

TEST(BaseUrls, AnAbsoluteOneAtRepresentationLevelCutsAllParentsOff) {
    MpdReading mpd(
        in_mpd("<BaseURL>a/</BaseURL><BaseURL>b/</BaseURL><Period><BaseURL>p/</BaseURL>"
               "<AdaptationSet><BaseURL>s/</BaseURL><Representation id='1' "
               "bandwidth='1'><BaseURL>http://z/</BaseURL></Representation>"
               "</AdaptationSet></Period>"));
    mpd.read();
    const DashPeriodInfo& period = mpd.info->periods[0];
    EXPECT_EQ(period.adaptation_sets[0].base_urls[0], "http://host/dir/a/p/s/");
    EXPECT_EQ(period.adaptation_sets[0].base_urls.size(), 2U);
    ASSERT_EQ(period.representations[0].base_urls.size(), 1U);
    EXPECT_EQ(period.representations[0].base_urls[0], "http://z/");
}

TEST(BaseUrls, AnEmptyElementIsTheParentsFolder) {
    MpdReading mpd(in_mpd("<BaseURL/><Period><BaseURL></BaseURL></Period>"));
    mpd.read();
    EXPECT_EQ(mpd.info->base_urls[0], "http://host/dir/");
    EXPECT_EQ(mpd.info->periods[0].base_urls[0], "http://host/dir/");
}

TEST(BaseUrls, BlanksAroundAnAddressAreLayout) {
    MpdReading mpd(
        in_mpd("<BaseURL>\n\t a b/\r\n </BaseURL><BaseURL>\n http://z/ </BaseURL>"
               "<Period><BaseURL> \n </BaseURL><AdaptationSet><BaseURL>\n  /abs/\n</BaseURL>"
               "<Representation id='1' bandwidth='1'><BaseURL>\n  v.mp4\n</BaseURL>"
               "</Representation></AdaptationSet></Period>"));
    mpd.read();
    EXPECT_EQ(mpd.info->base_urls[0], "http://host/dir/a b/");
    EXPECT_EQ(mpd.info->base_urls[1], "http://z/");
    const DashPeriodInfo& period = mpd.info->periods[0];
    EXPECT_EQ(period.base_urls[0], "http://host/dir/a b/");
    EXPECT_EQ(period.adaptation_sets[0].base_urls[0], "/abs/");
    EXPECT_EQ(period.representations[0].base_urls[0], "/abs/v.mp4");
}

TEST(BaseUrls, StopGrowingWhenLevelsMultiply) {
    std::string many;
    for (int i = 0; i < 1000; ++i) {
        many += "<BaseURL>x/</BaseURL>";
    }
    MpdReading mpd(in_mpd(many + "<Period>" + many + "<AdaptationSet>" + many +
                          "<Representation id='1' bandwidth='1'>" + many +
                          "</Representation></AdaptationSet></Period>"));
    mpd.read();
    const BaseUrls& urls = mpd.info->periods[0].representations[0].base_urls;
    EXPECT_LE(urls.size(), kMostBaseUrls);
    EXPECT_EQ(urls[0], "http://host/dir/x/x/x/x/");
}

TEST(BaseUrls, KeepOneLongEntryAndCutItsPrefixBelow) {
    MpdReading mpd(in_mpd("<BaseURL>http://" + std::string(100000, 'a') +
                          "/</BaseURL><BaseURL>b/</BaseURL><Period><BaseURL>p</BaseURL></Period>"));
    mpd.read();
    EXPECT_EQ(mpd.info->base_urls.size(), 1U);
    EXPECT_EQ(mpd.info->periods[0].base_urls[0].size(), kLongestUrlPrefix + 1);
}

}  // namespace
}  // namespace mediasplit
