// AC-4 sample entries of renditions.
#include <gtest/gtest.h>

#include "tests/unit/audio_entry/dash_entry.h"

namespace mediasplit {
namespace {

ManifestContext playlist_with(const char* channels) {
    ManifestContext playlist;
    playlist.codecs = "avc1.640028,ac-4.02.01.03";
    playlist.rendition_index = 5;
    playlist.stream_index = 3;
    if (channels != nullptr) {
        playlist.channels_text = channels;
    }
    return playlist;
}

ManifestContext parsed_playlist(const char* channels, std::uint32_t count) {
    ManifestContext playlist = playlist_with(channels);
    playlist.channels_parsed = 1;
    playlist.channel_count = count;
    return playlist;
}

Findings find(const DsiRecord& record, ManifestContext& playlist) {
    return find_in_playlist(ac4_track(record), playlist);
}

Ids ids_of(const DsiRecord& record, ManifestContext playlist) {
    return find(record, playlist).ids();
}

// 5.1.4: L/R, C, Ls/Rs, two pairs of top channels, LFE.
DsiRecord immersive_record(bool indicated) {
    DsiRecord record = stereo_record();
    DsiPresentation& presentation = record.presentations[0];
    presentation.dsi_presentation_ch_mode = 12;
    presentation.pres_top_channel_pairs = 2;
    presentation.presentation_channel_mask_v1 = 0x77;
    presentation.orvel_sphere_indicator = indicated ? 1 : 0;
    return record;
}

TEST(Ac4Playlist, CodecsMustHaveTheOneOfTheBox) {
    EXPECT_EQ(ids_of(stereo_record(), playlist_with("2")), Ids{});
    ManifestContext playlist = playlist_with("2");
    playlist.codecs = "ac-4.02.01.00";
    const Findings findings = find(stereo_record(), playlist);
    ASSERT_EQ(findings.ids(), Ids{4387});
    EXPECT_NE(findings.text(4387).find("[index : 3] must include \"ac-4.02.01.03\""),
              std::string::npos);
    playlist.codecs.reset();
    EXPECT_EQ(ids_of(stereo_record(), playlist), Ids{4387});
}

TEST(Ac4Playlist, ChannelsMustBeThere) {
    const Findings findings = [] {
        ManifestContext playlist = playlist_with(nullptr);
        return find(stereo_record(), playlist);
    }();
    ASSERT_EQ(findings.ids(), Ids{4388});
    EXPECT_EQ(findings.reports[0].position, 5U);
    EXPECT_EQ(findings.reports[0].attribute, "CHANNELS");
}

TEST(Ac4Playlist, ChannelsMustBeTheCountOfTheMask) {
    DsiRecord record = stereo_record();
    record.presentations[0].dsi_presentation_ch_mode = 4;
    record.presentations[0].presentation_channel_mask_v1 = 0x47;
    EXPECT_EQ(ids_of(record, playlist_with("6")), Ids{});
    ManifestContext playlist = playlist_with("2");
    const Findings findings = find(record, playlist);
    ASSERT_EQ(findings.ids(), Ids{4389});
    EXPECT_NE(findings.text(4389).find("[index : 5]"), std::string::npos);
    EXPECT_TRUE(findings.text(4389).ends_with("(expected CHANNELS value: 6; actual value: 2)"));
}

TEST(Ac4Playlist, ImmersiveAudioIsNamedInChannels) {
    EXPECT_EQ(ids_of(immersive_record(true), playlist_with("10/IMSA")), Ids{});
    EXPECT_EQ(ids_of(immersive_record(true), playlist_with("10")), Ids{4389});
    EXPECT_EQ(ids_of(immersive_record(false), playlist_with("10")), Ids{});
    EXPECT_EQ(ids_of(immersive_record(false), playlist_with("10/IMSA")), Ids{4389});
}

TEST(Ac4Playlist, ImmersiveStereoHasTwoChannels) {
    ManifestContext playlist = playlist_with("2/IMSA");
    playlist.codecs = "ac-4.02.02.03";
    EXPECT_EQ(ids_of(ims_record(), playlist), Ids{});
    playlist.channels_text = "2";
    EXPECT_EQ(ids_of(ims_record(), playlist), Ids{4389});
}

TEST(Ac4Playlist, ParsedChannelsMustBeEnough) {
    ManifestContext playlist = parsed_playlist("10/IMSA", 10);
    playlist.channels_have_identifier = 1;
    playlist.channels_imsa = 1;
    EXPECT_EQ(find(immersive_record(true), playlist).ids(), Ids{});
    EXPECT_EQ(playlist.found_channels_max, 10U);
    EXPECT_EQ(playlist.found_channels_valid, 1U);
    EXPECT_EQ(playlist.found_imsa, 1U);
    playlist.channel_count = 9;
    const Findings findings = find(immersive_record(true), playlist);
    ASSERT_EQ(findings.ids(), Ids{4390});
    EXPECT_NE(findings.text(4390).find("requires 10 channels"), std::string::npos);
}

TEST(Ac4Playlist, ParsedChannelsMustNameImmersiveAudio) {
    ManifestContext playlist = parsed_playlist("10/JOC", 10);
    playlist.channels_have_identifier = 1;
    EXPECT_EQ(ids_of(immersive_record(true), playlist), Ids{4391});
    EXPECT_EQ(ids_of(immersive_record(false), playlist), Ids{});
}

TEST(Ac4Playlist, ObjectsHaveNoRuleOnChannels) {
    DsiRecord record = stereo_record();
    record.presentations[0].b_presentation_channel_coded = 0;
    EXPECT_EQ(ids_of(record, playlist_with(nullptr)), Ids{});
    EXPECT_EQ(ids_of(record, playlist_with("99")), Ids{});
}

TEST(Ac4Playlist, MissingBoxSkipsAllOfIt) {
    EntryTrack track = ac4_track(stereo_record());
    track.boxes.clear();
    ManifestContext playlist;
    EXPECT_EQ(find_in_playlist(track, playlist).ids(), Ids{4402});
}

TEST(Ac4Playlist, BoxWithoutAPresentationHasNoCodecs) {
    DsiRecord record = stereo_record();
    record.n_presentations = 0;
    record.presentations.clear();
    EXPECT_EQ(ids_of(record, playlist_with("2")), Ids{4387});
}

}  // namespace
}  // namespace mediasplit
