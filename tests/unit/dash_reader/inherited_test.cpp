#include "src/dash_reader/inherited.h"

#include <gtest/gtest.h>

#include "src/log/catalogue_row.h"

namespace mediasplit {
namespace {

DashRepresentationInfo representation() {
    DashRepresentationInfo record;
    record.ui_id = "rep";
    return record;
}

DashAdaptationSetInfo adaptation_set() {
    DashAdaptationSetInfo record;
    record.ui_id = "set";
    return record;
}

TEST(InheritedText, IsTheRepresentationsElseTheAdaptationSets) {
    struct Row {
        const char* name;
        std::optional<std::string> DashRepresentationInfo::*own;
        std::optional<std::string> DashAdaptationSetInfo::*inherited;
    };
    using Rep = DashRepresentationInfo;
    using Set = DashAdaptationSetInfo;
    const Row rows[] = {
        {"mimeType", &Rep::mimeType, &Set::mimeType},
        {"contentType", &Rep::contentType, &Set::contentType},
        {"codecs", &Rep::codecs, &Set::codecs},
        {"startWithSAP", &Rep::startWithSAP, &Set::startWithSAP},
        {"subsegmentStartsWithSAP", &Rep::subsegmentStartsWithSAP, &Set::subsegmentStartsWithSAP},
        {"subsegmentAlignment", &Rep::subsegmentAlignment, &Set::subsegmentAlignment},
        {"audioSamplingRate", &Rep::audioSamplingRate, &Set::audioSamplingRate},
        {"sar", &Rep::sar, &Set::sar},
        {"frameRate", &Rep::frameRate, &Set::frameRate},
        {"kid", &Rep::default_kid, &Set::default_kid},
        {"scte214:supplementalCodecs", &Rep::supplementalCodecs, &Set::supplementalCodecs},
        {"scte214:supplementalProfiles", &Rep::supplementalProfiles, &Set::supplementalProfiles},
        {"segmentProfiles", &Rep::segmentProfiles, &Set::segmentProfiles}};
    for (const Row& row : rows) {
        DashRepresentationInfo own = representation();
        DashAdaptationSetInfo set = adaptation_set();
        std::string ui_id;
        EXPECT_EQ(get_dash_rep_attr_str(&own, &set, row.name, &ui_id), std::nullopt) << row.name;
        EXPECT_EQ(ui_id, "set");
        set.*row.inherited = "s";
        EXPECT_EQ(get_dash_rep_attr_str(&own, &set, row.name, &ui_id), "s") << row.name;
        EXPECT_EQ(ui_id, "set");
        own.*row.own = "r";
        EXPECT_EQ(get_dash_rep_attr_str(&own, &set, row.name, &ui_id), "r") << row.name;
        EXPECT_EQ(ui_id, "rep");
        EXPECT_EQ(get_dash_rep_attr_str(&own, nullptr, row.name), "r") << row.name;
    }
}

TEST(InheritedText, ThatIsEmptyStaysButPointsAtTheAdaptationSet) {
    DashRepresentationInfo own = representation();
    DashAdaptationSetInfo set = adaptation_set();
    own.codecs = "";
    set.codecs = "s";
    std::string ui_id;
    EXPECT_EQ(get_dash_rep_attr_str(&own, &set, "codecs", &ui_id), "");
    EXPECT_EQ(ui_id, "set");
}

TEST(InheritedText, OfAnotherNameIsNone) {
    const DashRepresentationInfo own = representation();
    EXPECT_EQ(get_dash_rep_attr_str(&own, nullptr, "id"), std::nullopt);
    EXPECT_EQ(get_dash_rep_attr_str(nullptr, nullptr, "codecs"), std::nullopt);
}

TEST(InheritedNumber, TakesZeroAsMissing) {
    DashRepresentationInfo own = representation();
    DashAdaptationSetInfo set = adaptation_set();
    set.width = 5;
    set.height = 6;
    std::string ui_id;
    EXPECT_EQ(get_dash_rep_attr_int(&own, &set, "width", &ui_id), 5U);
    EXPECT_EQ(ui_id, "set");
    own.height = 7;
    EXPECT_EQ(get_dash_rep_attr_int(&own, &set, "height", &ui_id), 7U);
    EXPECT_EQ(ui_id, "rep");
    EXPECT_EQ(get_dash_rep_attr_int(&own, &set, "bandwidth"), 0U);
    EXPECT_EQ(get_dash_rep_attr_int(nullptr, nullptr, "width"), 0U);
}

TEST(InheritedDescriptor, GivesThePairAndTheWayToIt) {
    struct Row {
        const char* name;
        DashDescriptorText DashRepresentationInfo::*own;
        DashDescriptorText DashAdaptationSetInfo::*inherited;
        const char* path;
    };
    using Rep = DashRepresentationInfo;
    using Set = DashAdaptationSetInfo;
    const Row rows[] = {
        {"AudioChannelConfiguration", &Rep::audio_channel_configuration,
         &Set::audio_channel_configuration, ">AudioChannelConfiguration"},
        {"OrvelAudioPlusExtensionType", &Rep::ec3_extension_type, &Set::ec3_extension_type,
         ">SupplementalProperty[schemeIdUri=tag:" MEDIASPLIT_TAG_AUTHORITY
         ",2018:dash:EC3_ExtensionType:2018]"},
        {"ComplexityIndexTypeA", &Rep::ec3_complexity_index, &Set::ec3_complexity_index,
         ">SupplementalProperty[schemeIdUri=tag:" MEDIASPLIT_TAG_AUTHORITY
         ",2018:dash:EC3_ExtensionComplexityIndex:2018]"},
        {"IMSVirtualized", &Rep::virtualized_content, &Set::virtualized_content,
         ">SupplementalProperty[schemeIdUri=tag:" MEDIASPLIT_TAG_AUTHORITY
         ",2016:dash:virtualized_content:2016]"},
        {"DashPreselection", &Rep::preselection, &Set::preselection,
         ">EssentialProperty[schemeIdUri=urn:mpeg:dash:preselection:2016]"},
        {"MatrixCoefficients", &Rep::matrix_coefficients, &Set::matrix_coefficients,
         ">EssentialProperty[schemeIdUri=urn:mpeg:mpegB:cicp:MatrixCoefficients]"},
        {"ColourPrimaries", &Rep::colour_primaries, &Set::colour_primaries,
         ">EssentialProperty[schemeIdUri=urn:mpeg:mpegB:cicp:ColourPrimaries]"},
        {"TransferCharacteristics", &Rep::transfer_characteristics, &Set::transfer_characteristics,
         ">EssentialProperty[schemeIdUri=urn:mpeg:mpegB:cicp:TransferCharacteristics]"}};
    for (const Row& row : rows) {
        DashRepresentationInfo own = representation();
        DashAdaptationSetInfo set = adaptation_set();
        (own.*row.own).value = "no scheme";
        set.*row.inherited = {"s", "1"};
        std::string path;
        EXPECT_EQ(get_dash_rep_attr_descriptor(&own, &set, row.name, &path).value, "1");
        EXPECT_EQ(path, std::string("set") + row.path);
        own.*row.own = {"r", "2"};
        EXPECT_EQ(get_dash_rep_attr_descriptor(&own, &set, row.name, &path).scheme_id_uri, "r");
        EXPECT_EQ(path, std::string("rep") + row.path);
    }
}

TEST(InheritedDescriptor, HasNoPathBeyond512Characters) {
    DashRepresentationInfo own = representation();
    own.audio_channel_configuration.scheme_id_uri = "s";
    own.ui_id = std::string(500, 'x');
    std::string path = "old";
    EXPECT_EQ(get_dash_rep_attr_descriptor(&own, nullptr, "AudioChannelConfiguration", &path)
                  .scheme_id_uri,
              "s");
    EXPECT_EQ(path, "");
}

TEST(InheritedDescriptor, OfAnotherNameIsAPairOfNulls) {
    const DashRepresentationInfo own = representation();
    const DashDescriptorText text = get_dash_rep_attr_descriptor(&own, nullptr, "Role");
    EXPECT_FALSE(text.scheme_id_uri || text.value);
}

}  // namespace
}  // namespace mediasplit
