// Broken and outsized manifests.
#include <gtest/gtest.h>

#include "tests/support/mpd_reading.h"

namespace mediasplit {
namespace {

using testing::MpdReading;

const char* const kManifest =
    "<?xml version='1.0'?><MPD type='dynamic' mediaPresentationDuration='PT9S'>"
    "<BaseURL>b/</BaseURL><UTCTiming schemeIdUri='urn:mpeg:dash:utc:direct:2014' value='T'/>"
    "<Period start='PT1S'><AdaptationSet lang='en'><SegmentTemplate timescale='10' "
    "initialization='$RepresentationID$' media='$Number%03d$-$Time$'><SegmentTimeline>"
    "<S t='5' d='3' r='2'/><S d='4'/></SegmentTimeline></SegmentTemplate>"
    "<SupplementalProperty schemeIdUri='urn:mpeg:mpegB:cicp:ColourPrimaries' value='1'/>"
    "<Representation id='v' bandwidth='9' width='16'/></AdaptationSet><AdaptationSet>"
    "<Representation id='l' bandwidth='1'><SegmentList><Initialization range='0-9'/>"
    "<SegmentURL media='a' mediaRange='9-5'/></SegmentList></Representation>"
    "<Representation id='b' bandwidth='1'><SegmentBase indexRange='5-'/></Representation>"
    "</AdaptationSet><Preselection preselectionComponents='1 2'/></Period></MPD>";

void read_and_play(const std::string& text) {
    MpdReading mpd(text);
    mpd.read();
    for (const char* id : {"v", "l", "b"}) {
        mpd.play(id);
        for (int i = 0; mpd.player != nullptr && i < 8; ++i) {
            (void)mpd.next(nullptr, i == 1 ? std::optional<std::uint64_t>(3) : std::nullopt);
        }
    }
}

TEST(HostileMpd, IsReadWholeBeforeItIsBroken) {
    MpdReading mpd(kManifest);
    mpd.read();
    ASSERT_EQ(mpd.status, Status::kOk);
    EXPECT_EQ(mpd.info->periods[0].representations.size(), 3U);
}

TEST(HostileMpd, CutAtEveryByteIsHarmless) {
    const std::string text = kManifest;
    for (std::size_t size = 0; size < text.size(); ++size) {
        read_and_play(text.substr(0, size));
    }
}

TEST(HostileMpd, ChangedAtEveryByteIsHarmless) {
    std::string text = kManifest;
    for (char& c : text) {
        const char kept = c;
        for (const char other : {'\0', '<', '>', '"', '9', '-', static_cast<char>(0xFF)}) {
            c = other;
            read_and_play(text);
        }
        c = kept;
    }
}

std::string large_manifest(int representations, int entries) {
    std::string text = "<MPD><Period><AdaptationSet>";
    for (int i = 0; i < representations; ++i) {
        const std::string id = std::to_string(i);
        text += "<Representation id='" + id +
                "' bandwidth='1000'><SegmentTemplate initialization='" + id +
                ".mp4' media='$Number$'><SegmentTimeline>";
        for (int j = 0; j < entries; ++j) {
            text += "<S t='" + std::to_string(100000000000LL + j * 1000LL) +
                    "' d='1000' r='0' padding='" + std::string(150, 'x') + "'/>";
        }
        text += "</SegmentTimeline></SegmentTemplate></Representation>";
    }
    return text + "</AdaptationSet></Period></MPD>";
}

TEST(HostileMpd, OfTwentyMegabytesIsRead) {
    const std::string text = large_manifest(2000, 50);
    EXPECT_GT(text.size(), 20000000U);
    MpdReading mpd(text);
    mpd.read();
    ASSERT_EQ(mpd.status, Status::kOk);
    EXPECT_EQ(mpd.info->periods[0].representations.size(), 2000U);
    mpd.play("1999");
    EXPECT_EQ(mpd.player->timeline.size(), 50U);
}

TEST(HostileMpd, WithManyRepresentationsOfOneIdIsRead) {
    std::string text = "<MPD><Period><AdaptationSet>";
    for (int i = 0; i < 50000; ++i) {
        text += "<Representation id='a' bandwidth='1'><SegmentTemplate initialization='" +
                std::to_string(i / 2) + "'/></Representation>";
    }
    MpdReading mpd(text);
    mpd.read();
    ASSERT_NE(mpd.info, nullptr);
    const auto& kept = mpd.info->periods[0].representations;
    EXPECT_EQ(kept.size(), 25000U);
    EXPECT_EQ(kept[24999].duplicate_id, 1U);
    EXPECT_EQ(kept[24999].shared_init_representations.size(), 1U);
}

TEST(HostileMpd, WithOneOutsizedTemplateAboveManyRepresentationsIsRead) {
    std::string text = "<MPD><Period><SegmentTemplate initialization='$RepresentationID$'";
    for (int i = 0; i < 50000; ++i) {
        text += " a" + std::to_string(i) + "='1'";
    }
    text += "/><AdaptationSet>";
    for (int i = 0; i < 20000; ++i) {
        text += "<Representation id='" + std::to_string(i) + "' bandwidth='1'/>";
    }
    MpdReading mpd(text);
    mpd.read();
    ASSERT_NE(mpd.info, nullptr);
    EXPECT_EQ(mpd.info->periods[0].representations.size(), 20000U);
}

}  // namespace
}  // namespace mediasplit
