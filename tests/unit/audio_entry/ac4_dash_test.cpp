// AC-4 sample entries of Representations.
#include <gtest/gtest.h>

#include "tests/unit/audio_entry/dash_entry.h"

namespace mediasplit {
namespace {

const std::string kVendorScheme = vendor_scheme("2015:dash:audio_channel_configuration:2015");
const std::string kCicpScheme = "urn:mpeg:mpegB:cicp:ChannelConfiguration";
const std::string kVirtualized = vendor_scheme("2016:dash:virtualized_content:2016");

std::string channels(const std::string& scheme, const std::optional<std::string>& value) {
    return descriptor("AudioChannelConfiguration", scheme, value);
}

std::string virtualized(const std::optional<std::string>& value) {
    return descriptor("SupplementalProperty", kVirtualized, value);
}

// A manifest that breaks no rule for stereo_record().
AudioMpd good_mpd() {
    AudioMpd mpd;
    mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.01.03")";
    mpd.set_children = channels(kCicpScheme, "2");
    return mpd;
}

AudioMpd good_ims_mpd() {
    AudioMpd mpd = good_mpd();
    mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.02.03")";
    mpd.set_children = channels(kCicpScheme, "2") + virtualized("1");
    return mpd;
}

Ids ids_of(const DsiRecord& record, const AudioMpd& mpd) {
    return find_in_dash(ac4_track(record), mpd).ids();
}

Ids ids_with_channels(const DsiRecord& record, const std::string& element) {
    AudioMpd mpd = good_mpd();
    mpd.set_children = element;
    return ids_of(record, mpd);
}

// 5.1 as in mask 0x47, and a mask that ISO/IEC 23091-3 has no value for.
DsiRecord record_with_mask(std::uint32_t mask) {
    DsiRecord record = stereo_record();
    record.presentations[0].dsi_presentation_ch_mode = 4;
    record.presentations[0].presentation_channel_mask_v1 = mask;
    return record;
}
constexpr std::uint32_t kOtherMask = 0x9;

TEST(Ac4Representation, GoodManifestHasNoFinding) {
    const Findings findings = find_in_dash(ac4_track(stereo_record()), good_mpd());
    EXPECT_EQ(findings.ids(), Ids{});
    EXPECT_EQ(findings.status, Status::kOk);
    EXPECT_EQ(ids_of(ims_record(), good_ims_mpd()), Ids{});
}

// --- Attributes ----------------------------------------------------------------------------------

TEST(Ac4RepresentationAttributes, MimeTypeIsAudio) {
    AudioMpd mpd = good_mpd();
    mpd.representation_attributes = R"(mimeType="video/mp4")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4339});
    mpd.set_attributes = R"(codecs="ac-4.02.01.03")";
    mpd.representation_attributes = "";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4339});
}

TEST(Ac4RepresentationAttributes, LiveSegmentsStartWithSap1) {
    AudioMpd mpd = good_mpd();
    mpd.profiles = kLive;
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4340});
    mpd.representation_attributes = R"(startWithSAP="2")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4340});
    mpd.representation_attributes = R"(startWithSAP="1")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{});
}

TEST(Ac4RepresentationAttributes, OnDemandSubsegmentsStartWithSap1) {
    AudioMpd mpd = good_mpd();
    mpd.profiles = kOnDemand;
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4341});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="2")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4341});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="1")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="1" startWithSAP="1")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{});
    mpd.representation_attributes = R"(subsegmentStartsWithSAP="1" startWithSAP="0")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{2042});
}

TEST(Ac4RepresentationAttributes, CodecsAreThoseOfTheBoxOverTheTop) {
    AudioMpd mpd = good_mpd();
    mpd.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.01.02")";
    const Findings findings = find_in_dash(ac4_track(stereo_record()), mpd);
    ASSERT_EQ(findings.ids(), Ids{4342});
    EXPECT_TRUE(findings.text(4342).find("must be ac-4.02.01.03.") != std::string::npos);
    mpd.set_attributes = R"(mimeType="audio/mp4")";
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4342});
    // The lowest level of all presentations counts.
    DsiRecord record = ims_record();
    record.presentations[1].mdcompat = 1;
    AudioMpd ims = good_ims_mpd();
    ims.set_attributes = R"(mimeType="audio/mp4" codecs="ac-4.02.02.01")";
    EXPECT_EQ(ids_of(record, ims), Ids{});
}

TEST(Ac4RepresentationAttributes, CodecsAreFreeWithoutOverTheTopRules) {
    AudioMpd mpd = good_mpd();
    mpd.set_attributes = R"(mimeType="audio/mp4" codecs="x")";
    const Findings findings = find_in_dash(ac4_track(stereo_record()), mpd, broadcast_list());
    const Ids ids = findings.ids();
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 4342), 0);
}

// --- Channels ------------------------------------------------------------------------------------

TEST(Ac4RepresentationChannels, SchemeMustBeOneOfTwo) {
    EXPECT_EQ(ids_with_channels(stereo_record(), channels("urn:other", "2")), Ids{4347});
    EXPECT_EQ(ids_with_channels(stereo_record(), ""), Ids{4347});
}

TEST(Ac4RepresentationChannels, CicpValueIsDecimalAndThatOfTheBox) {
    EXPECT_EQ(ids_with_channels(record_with_mask(0x47), channels(kCicpScheme, "6")), Ids{});
    EXPECT_EQ(ids_with_channels(record_with_mask(0x47), channels(kCicpScheme, "2")), Ids{4343});
    EXPECT_EQ(ids_with_channels(record_with_mask(0x47), channels(kCicpScheme, "6h")),
              (Ids{4344, 4343}));
}

TEST(Ac4RepresentationChannels, CicpMustBeAbleToDescribeThem) {
    AudioMpd mpd = good_mpd();
    mpd.set_children = channels(kCicpScheme, "2");
    const Findings findings = find_in_dash(ac4_track(record_with_mask(kOtherMask)), mpd);
    ASSERT_EQ(findings.ids(), Ids{4346});
    EXPECT_NE(findings.text(4346).find(kVendorScheme + "\" and the value \"000009\""),
              std::string::npos);
}

TEST(Ac4RepresentationChannels, VendorValueIsHexAndThatOfTheBox) {
    const DsiRecord record = record_with_mask(kOtherMask);
    EXPECT_EQ(ids_with_channels(record, channels(kVendorScheme, "000009")), Ids{});
    EXPECT_EQ(ids_with_channels(record, channels(kVendorScheme, "000047")), Ids{4343});
    EXPECT_EQ(ids_with_channels(record, channels(kVendorScheme, "00000x")), (Ids{4345, 4343}));
    DsiRecord objects = stereo_record();
    objects.presentations[0].b_presentation_channel_coded = 0;
    EXPECT_EQ(ids_with_channels(objects, channels(kVendorScheme, "800000")), Ids{});
}

TEST(Ac4RepresentationChannels, CicpIsBetterWhereItCan) {
    AudioMpd mpd = good_mpd();
    mpd.set_children = channels(kVendorScheme, "000047");
    const Findings findings = find_in_dash(ac4_track(record_with_mask(0x47)), mpd);
    ASSERT_EQ(findings.ids(), Ids{2041});
    EXPECT_EQ(findings.status, Status::kOk);
    EXPECT_NE(findings.text(2041).find("description \"6\" are better"), std::string::npos);
    EXPECT_NE(findings.text(2041).find("description \"000047\""), std::string::npos);
}

// --- Immersive stereo ----------------------------------------------------------------------------

TEST(Ac4RepresentationIms, ChannelsHaveAFixedValue) {
    AudioMpd mpd = good_ims_mpd();
    mpd.set_children = channels(kVendorScheme, "000001") + virtualized("1");
    EXPECT_EQ(ids_of(ims_record(), mpd), Ids{});
    mpd.set_children = channels(kVendorScheme, "000002") + virtualized("1");
    EXPECT_EQ(ids_of(ims_record(), mpd), Ids{4349});
    mpd.set_children = channels(kCicpScheme, "1") + virtualized("1");
    EXPECT_EQ(ids_of(ims_record(), mpd), Ids{4348});
    mpd.set_children = channels("urn:other", "1") + virtualized("1");
    EXPECT_EQ(ids_of(ims_record(), mpd), Ids{4347});
}

TEST(Ac4RepresentationIms, VirtualizedContentMustBeTold) {
    AudioMpd mpd = good_ims_mpd();
    mpd.set_children = channels(kCicpScheme, "2");
    EXPECT_EQ(ids_of(ims_record(), mpd), Ids{4350});
    mpd.set_children = channels(kCicpScheme, "2") + virtualized("0");
    EXPECT_EQ(ids_of(ims_record(), mpd), Ids{4350});
    mpd.set_children = channels(kCicpScheme, "2") + virtualized({});
    EXPECT_EQ(ids_of(ims_record(), mpd), Ids{4350});
}

TEST(Ac4RepresentationIms, OtherStreamsDoNotTellOfVirtualizedContentOverTheTop) {
    AudioMpd mpd = good_mpd();
    mpd.set_children += virtualized("1");
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4351});
    mpd.set_children = channels(kCicpScheme, "2") + virtualized("0");
    EXPECT_EQ(ids_of(stereo_record(), mpd), Ids{4351});
    const Ids broadcast = find_in_dash(ac4_track(stereo_record()), mpd, broadcast_list()).ids();
    EXPECT_EQ(std::count(broadcast.begin(), broadcast.end(), 4351), 0);
}

// --- What isn't there ----------------------------------------------------------------------------

TEST(Ac4Representation, MissingBoxSkipsWhatIsTakenFromIt) {
    EntryTrack track = ac4_track(stereo_record());
    track.boxes.clear();
    AudioMpd mpd = good_mpd();
    mpd.set_attributes = R"(mimeType="audio/mp4" codecs="x")";
    mpd.set_children = channels(kCicpScheme, "99") + virtualized("1");
    EXPECT_EQ(find_in_dash(track, mpd).ids(), Ids{4402});
}

TEST(Ac4Representation, EmptyManifestRecordsAreToldRowByRow) {
    DashContext dash = resolved_dash();
    DemuxRun run;
    run.dash = &dash;
    EXPECT_EQ(run.walk(ac4_track(stereo_record()).segment()), Status::kRuleBroken);
    EXPECT_EQ(run.sink.ids(), (Ids{4339, 4347, 4342}));
}

TEST(Ac4Representation, MissingManifestRecordsEndTheWalk) {
    DashContext nothing;
    DemuxRun run;
    run.dash = &nothing;
    EXPECT_TRUE(has_failed(run.walk(ac4_track(stereo_record()).segment())));
    EXPECT_EQ(run.sink.ids(), Ids{3006});
}

}  // namespace
}  // namespace mediasplit
