// E-AC-3 sample entries of Representations.
#include <gtest/gtest.h>

#include "tests/unit/audio_entry/dash_entry.h"

namespace mediasplit {
namespace {

// 3/2 with LFE, F801; 3/0 with LFE, E001, which ISO/IEC 23091-3 doesn't have.
const std::string kSurround = "0600 20 0f 00";
const std::string kOther = "0600 20 07 00";
const std::string kObjects = "0600 20 0f 00 01 10";

const std::string kVendorScheme = vendor_scheme("2014:dash:audio_channel_configuration:2011");
const std::string kCicpScheme = "urn:mpeg:mpegB:cicp:ChannelConfiguration";
const std::string kTypeScheme = vendor_scheme("2018:dash:EC3_ExtensionType:2018");
const std::string kComplexityScheme = vendor_scheme("2018:dash:EC3_ExtensionComplexityIndex:2018");

std::string channels(const std::string& scheme, const std::optional<std::string>& value) {
    return descriptor("AudioChannelConfiguration", scheme, value);
}

// A manifest that breaks no rule for kSurround.
AudioMpd good_mpd() {
    AudioMpd mpd;
    mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ec-3")";
    mpd.set_children = channels(kCicpScheme, "6");
    return mpd;
}

Ids ids_with_channels(const std::string& dec3, const std::string& element) {
    AudioMpd mpd = good_mpd();
    mpd.set_children = element;
    return find_in_dash(ec3_track(dec3), mpd).ids();
}

TEST(Ec3Representation, GoodManifestHasNoFinding) {
    const Findings findings = find_in_dash(ec3_track(kSurround), good_mpd());
    EXPECT_EQ(findings.ids(), Ids{});
    EXPECT_EQ(findings.status, Status::kOk);
}

TEST(Ec3Representation, CodecsMustHaveEc3) {
    AudioMpd mpd = good_mpd();
    mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-3")";
    Findings findings = find_in_dash(ec3_track(kSurround), mpd);
    ASSERT_EQ(findings.ids(), Ids{4269});
    EXPECT_EQ(findings.status, Status::kRuleBroken);
    EXPECT_EQ(findings.reports[0].element, "period0-as-id1");
    EXPECT_EQ(findings.reports[0].attribute, "codecs");
    mpd.representation_attributes = R"(codecs="ec-3")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{});
    mpd.representation_attributes = R"(codecs="avc1.640028,ec-3")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{});
    mpd.set_attributes = R"(mimeType="audio/mp4")";
    mpd.representation_attributes = "";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{4269});
}

// --- Channels ------------------------------------------------------------------------------------

TEST(Ec3RepresentationChannels, SchemeMustBeOneOfTwo) {
    EXPECT_EQ(ids_with_channels(kSurround, channels("urn:other", "6")), Ids{4270});
    EXPECT_EQ(ids_with_channels(kSurround, ""), Ids{4270});
    EXPECT_EQ(ids_with_channels(kSurround, "<AudioChannelConfiguration/>"), Ids{4270});
    const std::string other_authority =
        "tag:other.example,2014:dash:audio_channel_configuration:2011";
    EXPECT_EQ(ids_with_channels(kSurround, channels(other_authority, "F801")), Ids{4270});
}

TEST(Ec3RepresentationChannels, CicpValueIsDecimalAndThatOfTheBox) {
    EXPECT_EQ(ids_with_channels(kSurround, channels(kCicpScheme, "06")), Ids{});
    EXPECT_EQ(ids_with_channels(kSurround, channels(kCicpScheme, "2")), Ids{4273});
    // What isn't a number isn't the right one, either.
    EXPECT_EQ(ids_with_channels(kSurround, channels(kCicpScheme, "six")), (Ids{4274, 4273}));
    EXPECT_EQ(ids_with_channels(kSurround, channels(kCicpScheme, "")), (Ids{4274, 4273}));
    EXPECT_EQ(ids_with_channels(kSurround, channels(kCicpScheme, {})), (Ids{4274, 4273}));
    AudioMpd mpd = good_mpd();
    mpd.set_children = channels(kCicpScheme, "2");
    const Findings findings = find_in_dash(ec3_track(kSurround), mpd);
    EXPECT_TRUE(findings.text(4273).ends_with(
        "(expected AudioChannelConfiguration value: 6; actual value: 2)"));
}

TEST(Ec3RepresentationChannels, CicpMustBeAbleToDescribeThem) {
    AudioMpd mpd = good_mpd();
    mpd.set_children = channels(kCicpScheme, "6");
    const Findings findings = find_in_dash(ec3_track(kOther), mpd);
    ASSERT_EQ(findings.ids(), Ids{4271});
    EXPECT_NE(findings.text(4271).find("you can use the schemeIdUri \"" + kVendorScheme +
                                       "\" and the value \"E001\""),
              std::string::npos);
}

TEST(Ec3RepresentationChannels, VendorValueIsHexAndThatOfTheBox) {
    for (const char* value : {"E001", "e001", "0000E001"}) {
        EXPECT_EQ(ids_with_channels(kOther, channels(kVendorScheme, value)), Ids{}) << value;
    }
    // The last one would be the right value modulo 2^32.
    for (const char* value : {"F801", "1E001", "10000E001"}) {
        EXPECT_EQ(ids_with_channels(kOther, channels(kVendorScheme, value)), Ids{4273}) << value;
    }
    EXPECT_EQ(ids_with_channels(kOther, channels(kVendorScheme, "0xE001")), (Ids{4272, 4273}));
    EXPECT_EQ(ids_with_channels(kOther, channels(kVendorScheme, "")), (Ids{4272, 4273}));
    EXPECT_EQ(ids_with_channels(kOther, channels(kVendorScheme, {})), (Ids{4272, 4273}));
}

TEST(Ec3RepresentationChannels, CicpIsBetterWhereItCan) {
    AudioMpd mpd = good_mpd();
    mpd.set_children = channels(kVendorScheme, "F801");
    const Findings findings = find_in_dash(ec3_track(kSurround), mpd);
    ASSERT_EQ(findings.ids(), Ids{2036});
    EXPECT_EQ(findings.status, Status::kOk);
    EXPECT_NE(findings.text(2036).find("and the value \"6\" are better"), std::string::npos);
    EXPECT_NE(findings.text(2036).find(kVendorScheme + "\" and the value \"F801\""),
              std::string::npos);
}

TEST(Ec3RepresentationChannels, RepresentationGoesBeforeItsSet) {
    AudioMpd mpd = good_mpd();
    mpd.representation_children = channels(kCicpScheme, "2");
    const Findings findings = find_in_dash(ec3_track(kSurround), mpd);
    ASSERT_EQ(findings.ids(), Ids{4273});
    EXPECT_EQ(findings.reports[0].element, "period0-as0-rep-id2>AudioChannelConfiguration");
}

// --- Attributes ----------------------------------------------------------------------------------

TEST(Ec3RepresentationAttributes, MimeTypeIsAudio) {
    AudioMpd mpd = good_mpd();
    mpd.set_attributes = R"(mimeType="video/mp4" codecs="ec-3")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{4275});
    mpd.set_attributes = R"(codecs="ec-3")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{4275});
    mpd.representation_attributes = R"(mimeType="audio/mp4")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{});
}

TEST(Ec3RepresentationAttributes, LiveSegmentsStartWithSap1) {
    AudioMpd mpd = good_mpd();
    mpd.profiles = "urn:x," + kLive;
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{4276});
    mpd.representation_attributes = R"(startWithSAP="2")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{4276});
    mpd.representation_attributes = R"(startWithSAP="1")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{});
}

TEST(Ec3RepresentationAttributes, OnDemandSubsegmentsStartWithSap1) {
    AudioMpd mpd = good_mpd();
    mpd.profiles = kOnDemand;
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{4277});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="0")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{4277});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="1")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="1" startWithSAP="1")";
    EXPECT_EQ(find_in_dash(ec3_track(kSurround), mpd).ids(), Ids{});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="1" startWithSAP="3")";
    const Findings findings = find_in_dash(ec3_track(kSurround), mpd);
    EXPECT_EQ(findings.ids(), Ids{2037});
    EXPECT_EQ(findings.status, Status::kOk);
}

// --- Object audio --------------------------------------------------------------------------------

std::string type(const std::optional<std::string>& value) {
    return descriptor("SupplementalProperty", kTypeScheme, value);
}

std::string complexity(const std::optional<std::string>& value) {
    return descriptor("SupplementalProperty", kComplexityScheme, value);
}

Ids ids_with_properties(const std::string& dec3, const std::string& properties) {
    AudioMpd mpd = good_mpd();
    mpd.set_children += properties;
    return find_in_dash(ec3_track(dec3), mpd).ids();
}

TEST(Ec3RepresentationObjects, PropertiesMustTellOfThem) {
    EXPECT_EQ(ids_with_properties(kObjects, type("JOC") + complexity("16")), Ids{});
    EXPECT_EQ(ids_with_properties(kObjects, ""), (Ids{4278, 4279}));
    EXPECT_EQ(ids_with_properties(kObjects, type("JOC")), Ids{4278});
    EXPECT_EQ(ids_with_properties(kObjects, complexity("16")), Ids{4279});
}

TEST(Ec3RepresentationObjects, ValuesMustBeThoseOfTheBox) {
    EXPECT_EQ(ids_with_properties(kObjects, type("joc") + complexity("16")), Ids{4281});
    EXPECT_EQ(ids_with_properties(kObjects, type({}) + complexity("16")), Ids{4281});
    EXPECT_EQ(ids_with_properties(kObjects, type("JOC") + complexity("12")), Ids{4280});
    EXPECT_EQ(ids_with_properties(kObjects, type("JOC") + complexity({})), Ids{4280});
    AudioMpd mpd = good_mpd();
    mpd.representation_children = type("JOC") + complexity("12");
    const Findings findings = find_in_dash(ec3_track(kObjects), mpd);
    EXPECT_TRUE(findings.text(4280).ends_with(
        "(expected SupplementalProperty value: 16; actual value: 12)"));
    EXPECT_EQ(findings.reports.at(0).element,
              "period0-as0-rep-id2>SupplementalProperty[schemeIdUri=" + kComplexityScheme + "]");
}

TEST(Ec3RepresentationObjects, OtherStreamsHaveNoneOfThem) {
    EXPECT_EQ(ids_with_properties(kSurround, type("JOC")), Ids{4282});
    EXPECT_EQ(ids_with_properties(kSurround, complexity("16")), Ids{4282});
    EXPECT_EQ(ids_with_properties(kSurround, type("JOC") + complexity("16")), Ids{4282});
}

// --- What isn't there ----------------------------------------------------------------------------

TEST(Ec3Representation, MissingBoxSkipsWhatIsTakenFromIt) {
    EntryTrack track = ec3_track(kObjects);
    track.boxes.clear();
    AudioMpd mpd = good_mpd();
    mpd.set_children = channels(kCicpScheme, "99");
    EXPECT_EQ(find_in_dash(track, mpd).ids(), Ids{4299});
    mpd.set_children = channels(kCicpScheme, "x");
    EXPECT_EQ(find_in_dash(track, mpd).ids(), (Ids{4299, 4274}));
}

TEST(Ec3Representation, MissingManifestRecordsEndTheWalk) {
    DashContext nothing;
    DemuxRun run;
    run.dash = &nothing;
    EXPECT_TRUE(has_failed(run.walk(ec3_track(kSurround).segment())));
    EXPECT_EQ(run.sink.ids(), Ids{3006});
}

TEST(Ec3Representation, MediaSegmentsDoNotHoldItAgainstTheManifestAgain) {
    DashContext dash = resolved_dash();
    DemuxRun run;
    run.dash = &dash;
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    (void)run.walk(ec3_track(kSurround).segment(), &slot);
    EXPECT_EQ(run.sink.ids(), Ids{});
}

TEST(Ec3Representation, EmptyManifestRecordsAreToldRowByRow) {
    DashContext dash = resolved_dash();
    DemuxRun run;
    run.dash = &dash;
    EXPECT_EQ(run.walk(ec3_track(kSurround).segment()), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), (Ids{4269, 4270, 4275}));
}

}  // namespace
}  // namespace mediasplit
