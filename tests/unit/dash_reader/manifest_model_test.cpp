// From the tree to the records.
#include <gtest/gtest.h>

#include "src/log/catalogue_row.h"
#include "src/log/loglist.h"
#include "tests/support/mpd_reading.h"
#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using testing::in_mpd;
using testing::in_set;
using testing::MpdReading;
using testing::one_representation;
using testing::representation;

constexpr const char* kVendor2018 = "tag:" MEDIASPLIT_TAG_AUTHORITY ",2018:dash:";

std::string property(const std::string& element, const std::string& scheme,
                     const std::string& value) {
    return "<" + element + " schemeIdUri=\"" + scheme + "\" value=\"" + value + "\"/>";
}

TEST(DashInfo, HoldsTheAttributesOfTheMpd) {
    MpdReading mpd(in_mpd("<Period/>",
                          "type='dynamic' availabilityStartTime='A' availabilityEndTime='B' "
                          "publishTime='C' minimumUpdatePeriod='D' profiles='E' "
                          "mediaPresentationDuration='F' xmlns:scte214='G'"));
    mpd.read();
    const DashInfo& info = *mpd.info;
    EXPECT_EQ(info.url, "http://host/dir/m.mpd");
    EXPECT_EQ(info.type, "dynamic");
    EXPECT_EQ(info.availabilityStartTime, "A");
    EXPECT_EQ(info.availabilityEndTime, "B");
    EXPECT_EQ(info.publishTime, "C");
    EXPECT_EQ(info.minimumUpdatePeriod, "D");
    EXPECT_EQ(info.profiles, "E");
    EXPECT_EQ(info.mediaPresentationDuration, "F");
    EXPECT_EQ(info.xmlns_scte214, "G");
    EXPECT_EQ(info.ui_id, "mpd");
    EXPECT_STREQ(ezxml_attr(mpd.root.get(), "ui-id"), "mpd");
}

TEST(DashInfo, IsStaticWithoutAType) {
    MpdReading mpd(in_mpd("<Period/>"));
    mpd.read();
    EXPECT_EQ(mpd.info->type, "static");
    EXPECT_FALSE(mpd.info->profiles);
    EXPECT_FALSE(mpd.info->utc_timing_value);
}

TEST(DashInfo, NeedsAPeriod) {
    const RecordingSink sink;
    MpdReading mpd(in_mpd(""));
    mpd.read();
    EXPECT_EQ(mpd.status, Status::kFailed);
    EXPECT_EQ(mpd.info, nullptr);
    EXPECT_EQ(sink.ids(), std::vector<int>{4026});
}

TEST(DashInfo, RefusesMissingArgumentsAndPeriods) {
    const RecordingSink sink;
    MpdReading mpd(in_mpd("<Period/><Period/>"));
    for (const std::int32_t index : {2, -2}) {
        mpd.read({}, index);
        EXPECT_EQ(mpd.status, Status::kFailed);
        EXPECT_EQ(mpd.info, nullptr);
    }
    EXPECT_EQ(get_dash_info(nullptr, mpd.root.get(), "u", -1, {}, nullptr), Status::kFailed);
    EXPECT_EQ(get_dash_info(&mpd.info, nullptr, "u", -1, {}, nullptr), Status::kFailed);
    EXPECT_EQ(get_dash_info(&mpd.info, mpd.root.get(), nullptr, -1, {}, nullptr), Status::kFailed);
    EXPECT_EQ(init_dash_info(nullptr, nullptr), Status::kFailed);
    EXPECT_EQ(sink.count(3006), 6U);
}

TEST(DashInfo, KeepsAPeriodsOwnIndexWhenReadAlone) {
    MpdReading mpd(in_mpd("<Period id='a'/><Period id='b'>" + std::string("<AdaptationSet>") +
                          representation("1", "i") + "</AdaptationSet></Period><Period/>"));
    mpd.read({}, 1);
    ASSERT_EQ(mpd.info->periods.size(), 1U);
    EXPECT_EQ(mpd.info->periods[0].index, 1);
    EXPECT_EQ(mpd.info->periods[0].id, "b");
    EXPECT_EQ(mpd.info->periods[0].ui_id, "period1");
    EXPECT_EQ(mpd.info->periods[0].representations[0].ui_id, "period1-as0-rep-id1");
    mpd.read();
    ASSERT_EQ(mpd.info->periods.size(), 3U);
    EXPECT_EQ(mpd.info->periods[2].ui_id, "period2");
}

TEST(UtcTiming, IsKeptForTheDirectSchemeOnly) {
    const RecordingSink sink;
    MpdReading mpd(
        in_mpd("<UTCTiming schemeIdUri='urn:mpeg:dash:utc:direct:2014' value='T'/>"
               "<UTCTiming schemeIdUri='urn:other' value='U'/><Period/>"));
    mpd.read();
    EXPECT_EQ(mpd.info->utc_timing_value, "T");
    EXPECT_TRUE(sink.ids().empty());
}

TEST(UtcTiming, OfAnotherSchemeWarnsWhenAllPeriodsAreRead) {
    const RecordingSink sink;
    MpdReading mpd(in_mpd("<UTCTiming schemeIdUri='urn:other' value='U'/><Period/>"));
    mpd.read();
    EXPECT_EQ(mpd.status, Status::kOk);
    EXPECT_FALSE(mpd.info->utc_timing_value);
    ASSERT_EQ(sink.ids(), std::vector<int>{2010});
    EXPECT_EQ(sink.reports()[0].text,
              "In DASH manifest, in the <UTCTiming>, the schemeIdUri \"urn:other\" currently is "
              "not supported.");
}

TEST(UtcTiming, OfAnotherSchemeIsQuietWhenOnePeriodIsRead) {
    const RecordingSink sink;
    MpdReading mpd(in_mpd("<UTCTiming schemeIdUri='urn:other' value='U'/><Period/>"));
    mpd.read({}, 0);
    EXPECT_EQ(mpd.status, Status::kOk);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(AdaptationSet, HoldsItsAttributesAndDescriptors) {
    MpdReading good(in_mpd(
        "<Period><AdaptationSet id='7' mimeType='a' contentType='b' codecs='c' startWithSAP='d' "
        "subsegmentStartsWithSAP='e' subsegmentAlignment='f' lang='g' "
        "scte214:supplementalCodecs='h' scte214:supplementalProfiles='i' segmentProfiles='j' "
        "audioSamplingRate='k' width='16' height='9' sar='l' frameRate='m'>"
        "<Role schemeIdUri='r1' value='r2'/><Role schemeIdUri='x'/>"
        "<Language schemeIdUri='l1' value='l2'/><Accessibility schemeIdUri='a1' value='a2'/>"
        "<AudioChannelConfiguration schemeIdUri='c1' value='c2'/>" +
        representation("1", "i") + representation("2", "j") + "</AdaptationSet></Period>"));
    good.read("2");
    const DashAdaptationSetInfo& set = good.info->periods[0].adaptation_sets.at(0);
    EXPECT_EQ(set.id, "7");
    EXPECT_EQ(set.mimeType, "a");
    EXPECT_EQ(set.contentType, "b");
    EXPECT_EQ(set.codecs, "c");
    EXPECT_EQ(set.startWithSAP, "d");
    EXPECT_EQ(set.subsegmentStartsWithSAP, "e");
    EXPECT_EQ(set.subsegmentAlignment, "f");
    EXPECT_EQ(set.lang, "g");
    EXPECT_EQ(set.supplementalCodecs, "h");
    EXPECT_EQ(set.supplementalProfiles, "i");
    EXPECT_EQ(set.segmentProfiles, "j");
    EXPECT_EQ(set.audioSamplingRate, "k");
    EXPECT_EQ(set.width, 16U);
    EXPECT_EQ(set.height, 9U);
    EXPECT_EQ(set.sar, "l");
    EXPECT_EQ(set.frameRate, "m");
    EXPECT_EQ(set.role.scheme_id_uri, "r1");
    EXPECT_EQ(set.role.value, "r2");
    EXPECT_EQ(set.language.value, "l2");
    EXPECT_EQ(set.accessibility.scheme_id_uri, "a1");
    EXPECT_EQ(set.audio_channel_configuration.value, "c2");
    EXPECT_EQ(set.representation_count, 2U);
    EXPECT_EQ(set.ui_id, "period0-as-id7");
}

TEST(Representation, HoldsItsAttributesAndDescriptors) {
    MpdReading mpd(in_mpd(in_set(
        "<Representation id='r' dependencyId='a' mimeType='b' subsegmentAlignment='c' "
        "subsegmentStartsWithSAP='d' contentType='e' codecs='f' bandwidth='12' startWithSAP='g' "
        "scte214:supplementalCodecs='h' scte214:supplementalProfiles='i' segmentProfiles='j' "
        "audioSamplingRate='k' width='16' height='9' sar='l' frameRate='m'>"
        "<AudioChannelConfiguration schemeIdUri='c1' value='c2'/></Representation>")));
    mpd.read();
    const DashRepresentationInfo& it = mpd.info->periods[0].representations.at(0);
    EXPECT_EQ(it.id, "r");
    EXPECT_EQ(it.dependencyId, "a");
    EXPECT_EQ(it.mimeType, "b");
    EXPECT_EQ(it.subsegmentAlignment, "c");
    EXPECT_EQ(it.subsegmentStartsWithSAP, "d");
    EXPECT_EQ(it.contentType, "e");
    EXPECT_EQ(it.codecs, "f");
    EXPECT_EQ(it.bandwidth, 12U);
    EXPECT_EQ(it.startWithSAP, "g");
    EXPECT_EQ(it.supplementalCodecs, "h");
    EXPECT_EQ(it.supplementalProfiles, "i");
    EXPECT_EQ(it.segmentProfiles, "j");
    EXPECT_EQ(it.audioSamplingRate, "k");
    EXPECT_EQ(it.width, 16U);
    EXPECT_EQ(it.height, 9U);
    EXPECT_EQ(it.sar, "l");
    EXPECT_EQ(it.frameRate, "m");
    EXPECT_EQ(it.audio_channel_configuration.scheme_id_uri, "c1");
    EXPECT_EQ(it.ui_id, "period0-as0-rep-idr");
    EXPECT_EQ(it.duplicate_id, 0U);
    EXPECT_FALSE(it.init_segment_url);
}

TEST(Representation, NeedsIdAndBandwidth) {
    for (const char* missing : {"id", "bandwidth"}) {
        const RecordingSink sink;
        const std::string other = std::string(missing) == "id" ? "bandwidth" : "id";
        MpdReading mpd(in_mpd(in_set("<Representation " + other + "='1'/>")));
        mpd.read();
        EXPECT_EQ(mpd.status, Status::kRuleBroken);
        EXPECT_EQ(mpd.info, nullptr);
        ASSERT_EQ(sink.ids(), std::vector<int>{4090});
        EXPECT_EQ(sink.reports()[0].text, std::string("In DASH manifest, the mandatory attribute "
                                                      "\"") +
                                              missing +
                                              "\" is missing in <Representation> element.");
        EXPECT_EQ(sink.reports()[0].attribute, missing);
    }
}

TEST(Representation, IsRefusedForANumberThatIsNone) {
    for (const char* name : {"width", "height", "bandwidth"}) {
        const RecordingSink sink;
        const std::string first = std::string(name) == "bandwidth" ? "" : "bandwidth='1' ";
        MpdReading mpd(in_mpd(in_set("<Representation id='a' " + first + name + "='1920x'/>")));
        mpd.read();
        EXPECT_EQ(mpd.status, Status::kRuleBroken);
        ASSERT_EQ(sink.ids(), std::vector<int>{4092}) << name;
        EXPECT_EQ(sink.reports()[0].element, "period0-as0-rep-ida");
        EXPECT_NE(sink.reports()[0].text.find("the invalid value: 1920x"), std::string::npos);
    }
}

TEST(AdaptationSet, IsRefusedForANumberThatIsNone) {
    const RecordingSink sink;
    MpdReading mpd(in_mpd("<Period><AdaptationSet width=''>" + representation("1", "i") +
                          "</AdaptationSet></Period>"));
    mpd.read();
    EXPECT_EQ(mpd.status, Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), std::vector<int>{4092});
}

TEST(AdaptationSet, WithoutAKeptRepresentationIsDropped) {
    MpdReading mpd(in_mpd("<Period><AdaptationSet id='a'/><AdaptationSet id='b'>" +
                          representation("1", "i") + "</AdaptationSet></Period>"));
    mpd.read();
    const DashPeriodInfo& period = mpd.info->periods[0];
    ASSERT_EQ(period.adaptation_sets.size(), 1U);
    EXPECT_EQ(period.adaptation_sets[0].id, "b");
    EXPECT_EQ(period.representations[0].adaptation_set_index, 0U);
    // Identities count dropped elements too.
    EXPECT_EQ(period.representations[0].ui_id, "period0-as1-rep-id1");
}

TEST(SharedInit, GathersRepresentationsWithOneInitializationSegment) {
    MpdReading mpd(in_mpd("<Period><AdaptationSet>" + representation("1", "init.mp4") +
                          representation("2", "other") + "</AdaptationSet><AdaptationSet>" +
                          representation("3", "init.mp4") + representation("1", "other") +
                          "</AdaptationSet></Period>"));
    mpd.read();
    const DashPeriodInfo& period = mpd.info->periods[0];
    ASSERT_EQ(period.representations.size(), 2U);
    EXPECT_EQ(period.adaptation_sets.size(), 2U);
    const auto& shared = period.representations[0].shared_init_representations;
    ASSERT_EQ(shared.size(), 1U);
    EXPECT_EQ(shared[0].id, "3");
    EXPECT_EQ(shared[0].adaptation_set_index, 1U);
    EXPECT_EQ(period.representations[1].shared_init_representations.at(0).id, "1");
    // Attached before ids are compared.
    EXPECT_EQ(period.representations[1].shared_init_representations.at(0).duplicate_id, 0U);
}

TEST(SharedInit, TellsRangesOfOneFileApart) {
    const auto with_range = [](const std::string& id, const std::string& range) {
        return "<Representation id='" + id +
               "' bandwidth='1'><SegmentBase><Initialization range='" + range +
               "'/></SegmentBase></Representation>";
    };
    MpdReading mpd(
        in_mpd(in_set(with_range("1", "0-9") + with_range("2", "10-19") + with_range("3", "0-9"))));
    mpd.read();
    const DashPeriodInfo& period = mpd.info->periods[0];
    ASSERT_EQ(period.representations.size(), 2U);
    EXPECT_EQ(period.representations[0].init_range, "0-9");
    EXPECT_EQ(period.representations[0].init_segment_url, "http://host/dir/m.mpd");
    EXPECT_EQ(period.representations[0].shared_init_representations.size(), 1U);
}

TEST(SharedInit, CountsTwoWithoutAnInitializationSegmentAsEqual) {
    MpdReading mpd(
        in_mpd(in_set("<Representation id='1' bandwidth='1'/>"
                      "<Representation id='2' bandwidth='1'/>")));
    mpd.read();
    ASSERT_EQ(mpd.info->periods[0].representations.size(), 1U);
    EXPECT_EQ(mpd.info->periods[0].representations[0].shared_init_representations.size(), 1U);
}

TEST(DuplicateId, MarksTheLaterRepresentation) {
    MpdReading mpd(in_mpd(
        in_set(representation("1", "a") + representation("2", "b") + representation("1", "c")) +
        in_set(representation("1", "d"))));
    mpd.read();
    const auto& first = mpd.info->periods[0].representations;
    ASSERT_EQ(first.size(), 3U);
    EXPECT_EQ(first[0].duplicate_id, 0U);
    EXPECT_EQ(first[1].duplicate_id, 0U);
    EXPECT_EQ(first[2].duplicate_id, 1U);
    EXPECT_EQ(mpd.info->periods[1].representations[0].duplicate_id, 0U);
}

TEST(RepresentationFilter, KeepsTheIdAndWhatSharesItsInitializationSegment) {
    MpdReading mpd(in_mpd(in_set(representation("0", "x") + representation("1", "x") +
                                 representation("2", "x") + representation("3", "y"))));
    mpd.read("1");
    const auto& kept = mpd.info->periods[0].representations;
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0].id, "1");
    ASSERT_EQ(kept[0].shared_init_representations.size(), 1U);
    EXPECT_EQ(kept[0].shared_init_representations[0].id, "2");
}

TEST(RepresentationFilter, ThatMatchesNothingLeavesAnEmptyPeriod) {
    MpdReading mpd(in_mpd(in_set(representation("0", "x"))));
    mpd.read("none");
    EXPECT_EQ(mpd.status, Status::kOk);
    EXPECT_TRUE(mpd.info->periods[0].representations.empty());
    EXPECT_TRUE(mpd.info->periods[0].adaptation_sets.empty());
}

TEST(ContentProtection, GivesTheDefaultKeyOfTheFirstElement) {
    struct Row {
        const char* elements;
        std::optional<std::string> kid;
    };
    const Row rows[] = {
        {"<ContentProtection value='cenc' cenc:default_KID='k'/>", "k"},
        {"<ContentProtection value='cbcs' cenc:default_KID='k'/>", "k"},
        {"<ContentProtection value='cbc1' cenc:default_KID='k'/>", "k"},
        {"<ContentProtection value='cens' cenc:default_KID='k'/>", "k"},
        {"<ContentProtection value='cenc'/>", std::nullopt},
        {"<ContentProtection value='CENC' cenc:default_KID='k'/>", std::nullopt},
        {"<ContentProtection cenc:default_KID='k'/>", std::nullopt},
        {"<ContentProtection/><ContentProtection value='cenc' cenc:default_KID='k'/>",
         std::nullopt}};
    for (const Row& row : rows) {
        MpdReading mpd(in_mpd("<Period><AdaptationSet>" + std::string(row.elements) +
                              "<Representation id='1' bandwidth='1'>" + row.elements +
                              "</Representation></AdaptationSet></Period>"));
        mpd.read();
        EXPECT_EQ(mpd.info->periods[0].adaptation_sets[0].default_kid, row.kid) << row.elements;
        EXPECT_EQ(mpd.info->periods[0].representations[0].default_kid, row.kid) << row.elements;
    }
}

struct SchemeCase {
    std::string scheme;
    DashDescriptorText DashAdaptationSetInfo::*in_set;
    DashDescriptorText DashRepresentationInfo::*in_representation;
    // Elements that count: as SupplementalProperty in a set, in a Representation, as
    // EssentialProperty in both.
    bool set_supplemental;
    bool representation_supplemental;
    bool essential;
    int set_message;
    int representation_message;
};

std::vector<SchemeCase> scheme_cases() {
    using Set = DashAdaptationSetInfo;
    using Rep = DashRepresentationInfo;
    const std::string vendor = kVendor2018;
    return {
        {vendor + "EC3_ExtensionType:2018", &Set::ec3_extension_type, &Rep::ec3_extension_type,
         true, true, false, 2005, 2006},
        {vendor + "EC3_ExtensionComplexityIndex:2018", &Set::ec3_complexity_index,
         &Rep::ec3_complexity_index, true, true, false, 2005, 2006},
        {"tag:" MEDIASPLIT_TAG_AUTHORITY ",2016:dash:virtualized_content:2016",
         &Set::virtualized_content, &Rep::virtualized_content, true, true, false, 2005, 2006},
        {"urn:mpeg:dash:preselection:2016", &Set::preselection, &Rep::preselection, false, false,
         true, 2007, 2008},
        {"urn:mpeg:mpegB:cicp:MatrixCoefficients", &Set::matrix_coefficients,
         &Rep::matrix_coefficients, true, false, true, 2007, 2008},
        {"urn:mpeg:mpegB:cicp:ColourPrimaries", &Set::colour_primaries, &Rep::colour_primaries,
         true, false, true, 2007, 2008},
        {"urn:mpeg:mpegB:cicp:TransferCharacteristics", &Set::transfer_characteristics,
         &Rep::transfer_characteristics, true, false, true, 2007, 2008},
    };
}

MpdReading read_properties(const std::string& in_set, const std::string& in_representation) {
    MpdReading mpd(in_mpd("<Period><AdaptationSet>" + in_set +
                          "<Representation id='1' bandwidth='1'>" + in_representation +
                          "</Representation></AdaptationSet></Period>"));
    mpd.read();
    EXPECT_EQ(mpd.status, Status::kOk);
    return mpd;
}

TEST(PropertySchemes, AreFoundInTheElementsOfTheirLevel) {
    for (const SchemeCase& it : scheme_cases()) {
        for (const bool essential : {false, true}) {
            const RecordingSink sink;
            const std::string text =
                property(essential ? "EssentialProperty" : "SupplementalProperty", it.scheme, "v");
            const MpdReading mpd = read_properties(text, text);
            const DashPeriodInfo& period = mpd.info->periods[0];
            EXPECT_EQ((period.adaptation_sets[0].*it.in_set).scheme_id_uri.has_value(),
                      essential ? it.essential : it.set_supplemental)
                << it.scheme;
            EXPECT_EQ((period.representations[0].*it.in_representation).scheme_id_uri.has_value(),
                      essential ? it.essential : it.representation_supplemental)
                << it.scheme;
            EXPECT_TRUE(sink.ids().empty());
        }
    }
}

TEST(PropertySchemes, KeepTheFirstOfTwoAndWarn) {
    for (const SchemeCase& it : scheme_cases()) {
        const std::string element = it.essential ? "EssentialProperty" : "SupplementalProperty";
        const std::string two =
            property(element, it.scheme, "1") + property(element, it.scheme, "2");
        {
            const RecordingSink sink;
            const MpdReading mpd = read_properties(two, "");
            EXPECT_EQ((mpd.info->periods[0].adaptation_sets[0].*it.in_set).value, "1");
            ASSERT_EQ(sink.ids(), std::vector<int>{it.set_message}) << it.scheme;
            const std::string text = sink.reports()[0].text;
            EXPECT_NE(text.find("\"" + it.scheme + "\" in the AdaptationSet [index : 0]"),
                      std::string::npos);
        }
        const RecordingSink sink;
        const MpdReading mpd = read_properties("", two);
        EXPECT_EQ((mpd.info->periods[0].representations[0].*it.in_representation).value, "1");
        ASSERT_EQ(sink.ids(), std::vector<int>{it.representation_message}) << it.scheme;
        EXPECT_NE(
            sink.reports()[0].text.find("\"" + it.scheme + "\" in the Representation [id : 1]"),
            std::string::npos);
    }
}

TEST(PropertySchemes, WithoutASchemeAreNothing) {
    const RecordingSink sink;
    const std::string text = "<SupplementalProperty value='1'/><EssentialProperty/>";
    const MpdReading mpd = read_properties(text, text);
    EXPECT_FALSE(mpd.info->periods[0].adaptation_sets[0].preselection.scheme_id_uri);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(Preselection, HoldsItsAttributesAndDescriptors) {
    MpdReading mpd(in_mpd(
        "<Period><Preselection id='1' preselectionComponents='2 3' tag='t' codecs='c' "
        "audioSamplingRate='a' frameRate='f' lang='l'><Language schemeIdUri='1' value='2'/>"
        "<Role schemeIdUri='3' value='4'/><Label id='5' lang='6' value='7'/><Label id='x'/>"
        "<AudioChannelConfiguration schemeIdUri='8' value='9'/>"
        "<SupplementalProperty schemeIdUri='any' value='10'/><SupplementalProperty/>"
        "<Accessibility schemeIdUri='11' value='12'/><Accessibility schemeIdUri='13' value='14'/>"
        "</Preselection><Preselection preselectionComponents='4'/><Preselection "
        "id='9'/></Period>"));
    mpd.read();
    EXPECT_EQ(mpd.status, Status::kOk);
    const auto& all = mpd.info->periods[0].preselections;
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].id, "1");
    EXPECT_EQ(all[0].preselectionComponents, "2 3");
    EXPECT_EQ(all[0].tag, "t");
    EXPECT_EQ(all[0].codecs, "c");
    EXPECT_EQ(all[0].audioSamplingRate, "a");
    EXPECT_EQ(all[0].frameRate, "f");
    EXPECT_EQ(all[0].lang, "l");
    EXPECT_EQ(all[0].language.value, "2");
    EXPECT_EQ(all[0].role.scheme_id_uri, "3");
    EXPECT_EQ(all[0].label_id, "5");
    EXPECT_EQ(all[0].label_lang, "6");
    EXPECT_EQ(all[0].label_value, "7");
    EXPECT_EQ(all[0].audio_channel_configuration.value, "9");
    EXPECT_EQ(all[0].supplemental_property.scheme_id_uri, "any");
    EXPECT_EQ(all[0].accessibility.value, "12");
    EXPECT_EQ(all[0].accessibility_2.value, "14");
    EXPECT_EQ(all[0].ui_id, "period0-id1-preselectionComponents2 3");
    EXPECT_EQ(all[1].ui_id, "period0-preselectionComponents4");
    EXPECT_FALSE(all[1].accessibility_2.scheme_id_uri);
    EXPECT_EQ(all[2].ui_id, "");
}

TEST(Preselection, IsKeptForOneRepresentationByTheBroadcastRulesAlone) {
    MpdReading mpd(in_mpd("<Period><AdaptationSet>" + representation("r", "i") +
                          "</AdaptationSet><Preselection id='1'/></Period>"));
    const auto kept = [&mpd](OptText filter, const CheckpointText& rule) {
        const auto loglist = init_loglist(1, &rule);
        EXPECT_EQ(get_dash_info(&mpd.info, mpd.root.get(), "u", 0, filter, loglist.get()),
                  Status::kOk);
        return mpd.info->periods[0].preselections.size();
    };
    constexpr CheckpointText kOverTheTop{"310000"};
    constexpr CheckpointText kBroadcast{"320000"};
    EXPECT_EQ(kept("r", kOverTheTop), 0U);
    EXPECT_EQ(kept("r", kBroadcast), 1U);
    EXPECT_EQ(kept({}, kOverTheTop), 1U);
}

TEST(UiId, StandsInTheTreeAndIsCut) {
    const std::string id(600, 'x');
    MpdReading mpd(in_mpd("<Period><AdaptationSet id='" + id + "'>" + representation(id, "i") +
                          "</AdaptationSet></Period>"));
    mpd.read();
    const DashPeriodInfo& period = mpd.info->periods[0];
    EXPECT_EQ(period.adaptation_sets[0].ui_id.size(), kLongestUiId);
    EXPECT_EQ(period.representations[0].ui_id.size(), kLongestRepresentationUiId);
    const Ezxml* const set = ezxml_child(ezxml_child(mpd.root.get(), "Period"), "AdaptationSet");
    EXPECT_EQ(period.adaptation_sets[0].ui_id, ezxml_attr(set, "ui-id"));
    EXPECT_EQ(period.representations[0].ui_id,
              ezxml_attr(ezxml_child(set, "Representation"), "ui-id"));
}

TEST(InitSegment, FollowsTheElementNearestToTheRepresentation) {
    MpdReading mpd(in_mpd(
        "<Period><BaseURL>p/</BaseURL><SegmentTemplate initialization='$RepresentationID$-p'/>"
        "<AdaptationSet><BaseURL>s/</BaseURL>"
        "<Representation id='1' bandwidth='5'><BaseURL>r/</BaseURL><SegmentBase/>"
        "</Representation><Representation id='2' bandwidth='5'><BaseURL>r/</BaseURL>"
        "<SegmentTemplate initialization='$Bandwidth%03d$'/></Representation></AdaptationSet>"
        "<AdaptationSet><SegmentTemplate initialization='/abs'/>"
        "<Representation id='3' bandwidth='5'><BaseURL>r/</BaseURL></Representation>"
        "</AdaptationSet></Period>"));
    mpd.read();
    const auto& all = mpd.info->periods[0].representations;
    ASSERT_EQ(all.size(), 3U);
    // A template of the Period beats the SegmentBase of the Representation.
    EXPECT_EQ(all[0].init_segment_url, "http://host/dir/p/1-p");
    EXPECT_EQ(all[1].init_segment_url, "http://host/dir/p/s/r/005");
    EXPECT_EQ(all[2].init_segment_url, "/abs");
}

TEST(InitSegment, IsUnsetForATemplateWithoutTheAttribute) {
    MpdReading mpd(
        in_mpd("<Period><SegmentTemplate initialization='x'/><AdaptationSet>"
               "<Representation id='1' bandwidth='5'><SegmentTemplate/>"
               "</Representation></AdaptationSet></Period>"));
    mpd.read();
    EXPECT_FALSE(mpd.info->periods[0].representations[0].init_segment_url);
}

TEST(InitSegment, OfASegmentListIsntFoundAtTheAdaptationSet) {
    const std::string list =
        "<SegmentList><Initialization sourceURL='i' range='0-1'/></SegmentList>";
    const std::string plain = "<Representation id='1' bandwidth='5'/>";
    struct Row {
        std::string mpd;
        std::optional<std::string> url;
    };
    const Row rows[] = {
        {in_mpd("<Period>" + list + "<AdaptationSet>" + plain + "</AdaptationSet></Period>"),
         "http://host/dir/i"},
        {in_mpd("<Period><AdaptationSet>" + list + plain + "</AdaptationSet></Period>"),
         std::nullopt},
        {one_representation(list), "http://host/dir/i"}};
    for (const Row& row : rows) {
        MpdReading mpd(row.mpd);
        mpd.read();
        const DashRepresentationInfo& it = mpd.info->periods[0].representations[0];
        EXPECT_EQ(it.init_segment_url, row.url);
        EXPECT_EQ(it.init_range.has_value(), row.url.has_value());
    }
}

TEST(InitSegment, OfMoreThan1024CharactersIsAnEmptyAddress) {
    MpdReading mpd(one_representation("<SegmentBase><Initialization sourceURL='" +
                                      std::string(1025, 'x') + "'/></SegmentBase>"));
    mpd.read();
    EXPECT_EQ(mpd.info->periods[0].representations[0].init_segment_url, "");
}

TEST(InitSegment, DropsABaseOf1024Characters) {
    MpdReading mpd(one_representation("<BaseURL>/" + std::string(1022, 'x') +
                                      "/</BaseURL><SegmentBase><Initialization/></SegmentBase>"));
    mpd.read();
    EXPECT_EQ(mpd.info->periods[0].representations[0].init_segment_url, "");
}

TEST(InitSegment, WithAnIdentifierOfMediaRefusesTheRepresentation) {
    const RecordingSink sink;
    MpdReading mpd(one_representation("<SegmentTemplate initialization='$Number$'/>"));
    mpd.read();
    EXPECT_EQ(mpd.status, Status::kFailed);
    EXPECT_EQ(sink.ids(), std::vector<int>{4038});
}

TEST(SegmentElement, NeedsAllLevels) {
    const RecordingSink sink;
    const EzxmlPtr node = ezxml_new("n");
    EXPECT_EQ(get_segment_element_type(node.get(), node.get(), nullptr, nullptr),
              SegmentElementType::kNone);
    EXPECT_EQ(sink.ids(), std::vector<int>{3006});
    EXPECT_EQ(get_segment_element_type(node.get(), node.get(), node.get(), nullptr),
              SegmentElementType::kNone);
    ezxml_add_child(node.get(), "SegmentList", 0);
    EXPECT_EQ(get_segment_element_type(node.get(), node.get(), node.get(), nullptr),
              SegmentElementType::kList);
    ezxml_add_child(node.get(), "SegmentBase", 0);
    EXPECT_EQ(get_segment_element_type(node.get(), node.get(), node.get(), nullptr),
              SegmentElementType::kBase);
    EXPECT_EQ(sink.ids().size(), 1U);
}

}  // namespace
}  // namespace mediasplit
