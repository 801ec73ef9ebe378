// "ac-4" sample entries with their box.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/dsi_builder.h"
#include "tests/unit/audio_entry/dash_entry.h"

namespace mediasplit {
namespace {

Ids ids_of(const EntryTrack& track, std::unique_ptr<Loglist> loglist = over_the_top_list()) {
    return find_in_file(track, std::move(loglist)).ids();
}

Ids ids_of(const DsiRecord& record, std::unique_ptr<Loglist> loglist = over_the_top_list()) {
    return ids_of(ac4_track(record), std::move(loglist));
}

TEST(Ac4Entry, GoodEntryHasNoFinding) {
    for (const DsiRecord& record : {stereo_record(), ims_record()}) {
        const Findings findings = find_in_file(ac4_track(record), over_the_top_list());
        EXPECT_EQ(findings.ids(), Ids{});
        EXPECT_EQ(findings.status, Status::kOk);
    }
}

TEST(Ac4Entry, EachFieldOfTheEntryHasItsRow) {
    struct Row {
        int id;
        std::function<void(EntryTrack&)> change;
    };
    const std::vector<Row> rows = {
        {4402, [](EntryTrack& track) { track.boxes.clear(); }},
        {4404, [](EntryTrack& track) { track.has_smhd = false; }},
        {4405, [](EntryTrack& track) { track.reserved_at = 8; }},
        {4406, [](EntryTrack& track) { track.boxes.push_back(track.boxes[0]); }},
        {4408, [](EntryTrack& track) { track.sample_size = 24; }},
    };
    for (const Row& row : rows) {
        EntryTrack track = ac4_track(stereo_record());
        row.change(track);
        const Findings findings = find_in_file(track, over_the_top_list());
        EXPECT_EQ(findings.ids(), Ids{row.id});
        EXPECT_EQ(findings.status, Status::kRuleBroken);
    }
}

TEST(Ac4Entry, HandlerIsSound) {
    EntryTrack track = ac4_track(stereo_record());
    track.handler = "text";
    track.has_smhd = false;  // a track of another handler has none in these files
    EXPECT_EQ(ids_of(track), (Ids{4403, 4404}));
}

TEST(Ac4Entry, MissingBoxSkipsTheRowsThatNeedIt) {
    EntryTrack track = ac4_track(stereo_record());
    track.boxes.clear();
    track.sample_rate = 8000;
    track.time_scale = 90000;
    EXPECT_EQ(ids_of(track), Ids{4402});
}

TEST(Ac4Entry, MediaSegmentsDoNotJudgeItAgain) {
    EntryTrack track = ac4_track(stereo_record());
    track.sample_size = 24;
    DemuxRun run;
    SegmentSlot slot;
    slot.kind = kSlotMedia;
    (void)run.walk(track.segment(), &slot);
    EXPECT_EQ(run.sink.ids(), Ids{});
    slot.kind = kSlotInitialization;
    (void)run.walk(track.segment(), &slot);
    EXPECT_NE(run.sink.count(4408), 0U);
}

TEST(Ac4Entry, ReservedBitsOfTheBoxAreZero) {
    DsiRecord record = stereo_record();
    record.presentations[0].reserved_field_1 = 8;
    EXPECT_EQ(ids_of(record), Ids{4407});
    record = stereo_record();
    record.presentations[0].reserved_field_2 = 1;
    EXPECT_EQ(ids_of(record), Ids{4407});
    record = stereo_record();
    DsiPresentation& objects = record.presentations[0];
    objects.b_presentation_channel_coded = 0;
    objects.groups[0].b_channel_coded = 0;
    EXPECT_EQ(ids_of(record), Ids{});
    objects.groups[0].substreams[0].reserved = 1;
    EXPECT_EQ(ids_of(record), Ids{4407});
}

// --- Timing --------------------------------------------------------------------------------------

TEST(Ac4EntryTiming, SamplingRateIsThatOfTheBox) {
    EntryTrack track = ac4_track(stereo_record());
    track.sample_rate = 44100;
    const Findings findings = find_in_file(track, over_the_top_list());
    ASSERT_EQ(findings.ids(), Ids{4410});
    EXPECT_TRUE(
        findings.text(4410).ends_with("(expected SamplingRate value: 48000; actual value: 44100)"));
    DsiRecord record = stereo_record();
    record.fs_index = 0;
    track = ac4_track(record);
    track.sample_rate = 44100;
    EXPECT_EQ(ids_of(track), Ids{});
    track.sample_rate = 48000;
    EXPECT_EQ(ids_of(track), Ids{4410});
}

TEST(Ac4EntryTiming, TimescaleGoesWithTheFrameRate) {
    struct Row {
        std::uint32_t frame_rate_index;
        bool takes_48000;
        bool takes_240000;
    };
    constexpr Row kRows[] = {
        {0, true, false},  {1, true, false},  {2, true, false},  {3, true, true},
        {4, true, false},  {5, true, false},  {6, true, false},  {7, true, false},
        {8, false, true},  {9, true, false},  {10, true, false}, {11, false, true},
        {12, true, false}, {13, true, false}, {14, true, true},  {15, true, true},
    };
    for (const Row& row : kRows) {
        DsiRecord record = stereo_record();
        record.frame_rate_index = row.frame_rate_index;
        EntryTrack track = ac4_track(record);
        EXPECT_EQ(ids_of(track), row.takes_48000 ? Ids{} : Ids{4409}) << row.frame_rate_index;
        track.time_scale = 240000;
        EXPECT_EQ(ids_of(track), row.takes_240000 ? Ids{} : Ids{4409}) << row.frame_rate_index;
        track.time_scale = 90000;
        EXPECT_EQ(ids_of(track), row.frame_rate_index > 13 ? Ids{} : Ids{4409});
    }
}

TEST(Ac4EntryTiming, TimescaleMessageTellsWhatIsAllowed) {
    const std::pair<std::uint32_t, std::string> rows[] = {
        {2, "48000"}, {8, "240000"}, {3, "48000 or 240000"}};
    for (const auto& [frame_rate_index, expected] : rows) {
        DsiRecord record = stereo_record();
        record.frame_rate_index = frame_rate_index;
        EntryTrack track = ac4_track(record);
        track.time_scale = 90000;
        EXPECT_TRUE(
            find_in_file(track, over_the_top_list())
                .text(4409)
                .ends_with("(expected timescale value: " + expected + "; actual value: 90000)"));
    }
}

TEST(Ac4EntryTiming, OtherBaseFrequencyHasNoTimescale) {
    DsiRecord record = stereo_record();
    record.fs_index = 0;
    EntryTrack track = ac4_track(record);
    track.sample_rate = 44100;
    track.time_scale = 90000;
    EXPECT_EQ(ids_of(track), Ids{});
}

// --- Presentations -------------------------------------------------------------------------------

TEST(Ac4EntryPresentations, Version0IsDeprecated) {
    EntryTrack track = ac4_track(stereo_record());
    mp4::Bytes payload = write_dac4(stereo_record());
    // 25 bits of the head, 66 of the bit rate and what fills the last byte stand ahead.
    ASSERT_EQ(payload.at(12), 1);
    payload[12] = 0;
    track.boxes = {mp4::box("dac4", {payload})};
    EXPECT_EQ(ids_of(track), Ids{4489});
    EXPECT_EQ(ids_of(track, broadcast_list()), (Ids{4489, 4413}));
}

TEST(Ac4EntryPresentations, ToldSizeHoldsWhatIsUsed) {
    DsiRecord record = stereo_record();
    record.n_presentations = 2;
    record.presentations.push_back(record.presentations[0]);
    int asked = 0;
    EntryTrack track = ac4_track(record);
    DsiWriting writing;
    writing.told_bytes = [&](std::uint32_t size) { return asked++ == 1 ? size - 2 : size; };
    track.boxes = {mp4::box("dac4", {write_dac4(record, writing)})};
    const Findings findings = find_in_file(track, over_the_top_list());
    ASSERT_EQ(findings.ids(), Ids{4411});
    EXPECT_NE(findings.text(4411).find("[index : 1]"), std::string::npos);
    writing.told_bytes = [](std::uint32_t size) { return size; };
    writing.padding = 3;
    track.boxes = {mp4::box("dac4", {write_dac4(record, writing)})};
    EXPECT_EQ(ids_of(track), Ids{});
}

TEST(Ac4EntryPresentations, ImmersiveStereoOverTheTopHasALegacyPresentation) {
    EXPECT_EQ(ids_of(ims_record()), Ids{});
    DsiRecord record = ims_record();
    std::swap(record.presentations[0], record.presentations[1]);
    EXPECT_EQ(ids_of(record), Ids{4412});
    record = ims_record();
    record.presentations[1].version = 2;
    EXPECT_EQ(ids_of(record), Ids{4412});
    record = ims_record();
    record.n_presentations = 1;
    record.presentations.pop_back();
    EXPECT_EQ(ids_of(record), Ids{4412});
    record = ims_record();
    record.n_presentations = 3;
    record.presentations.push_back(record.presentations[1]);
    EXPECT_EQ(ids_of(record), Ids{4412});
    EXPECT_EQ(ids_of(record, broadcast_list()), Ids{4413});
}

TEST(Ac4EntryPresentations, BroadcastHasNoImmersiveStereo) {
    EXPECT_EQ(ids_of(ims_record(), broadcast_list()), Ids{4413});
    EXPECT_EQ(ids_of(stereo_record(), broadcast_list()), Ids{});
}

DsiRecord two_presentations(std::optional<std::uint32_t> first,
                            std::optional<std::uint32_t> second) {
    DsiRecord record = stereo_record();
    record.n_presentations = 2;
    record.presentations.push_back(record.presentations[0]);
    const std::optional<std::uint32_t> numbers[] = {first, second};
    for (std::size_t i = 0; i < 2; ++i) {
        record.presentations[i].b_presentation_id = numbers[i] ? 1 : 0;
        record.presentations[i].presentation_id = numbers[i].value_or(0);
    }
    return record;
}

TEST(Ac4EntryPresentations, OverTheTopHasOneGroupOfThem) {
    EXPECT_EQ(ids_of(two_presentations(3, 3)), Ids{});
    EXPECT_EQ(ids_of(two_presentations(3, 4)), Ids{4400});
    EXPECT_EQ(ids_of(two_presentations(3, 4), broadcast_list()), Ids{});
}

TEST(Ac4EntryPresentations, GroupsAreToldApartByNumber) {
    EXPECT_EQ(ids_of(two_presentations(3, {})), (Ids{4401, 4400}));
    EXPECT_EQ(ids_of(two_presentations({}, {})), (Ids{4401, 4400}));
    EXPECT_EQ(ids_of(two_presentations({}, {}), broadcast_list()), Ids{4401});
    DsiRecord record = stereo_record();
    record.presentations[0].b_presentation_id = 0;
    EXPECT_EQ(ids_of(record), Ids{}) << "a presentation alone needs no number";
    // The extended number goes before the short one.
    record = two_presentations(3, 3);
    record.presentations[1].b_extended_presentation_id = 1;
    record.presentations[1].extended_presentation_id = 300;
    EXPECT_EQ(ids_of(record), Ids{4400});
}

// --- Bad boxes -----------------------------------------------------------------------------------

TEST(Ac4EntryHostile, OldBitstreamVersionTellsNoRate) {
    DsiRecord record = stereo_record();
    record.bitstream_version = 1;
    EXPECT_EQ(ids_of(record), Ids{});
}

TEST(Ac4EntryHostile, BoxesCutAtEachByteAreToldAndNothingElse) {
    const mp4::Bytes whole = write_dac4(full_dsi_record());
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        EntryTrack track = ac4_track(stereo_record());
        track.boxes = {
            mp4::box("dac4", {mp4::Bytes(whole.begin(), whole.begin() + static_cast<long>(size))})};
        for (const bool broadcast : {false, true}) {
            const Findings findings =
                find_in_dash(track, AudioMpd{}, broadcast ? broadcast_list() : over_the_top_list());
            EXPECT_FALSE(has_failed(findings.status)) << size;
        }
        ManifestContext playlist;
        EXPECT_FALSE(has_failed(find_in_playlist(track, playlist).status)) << size;
    }
}

TEST(Ac4EntryHostile, ManyToldPresentationsInFewBytes) {
    DsiRecord record = stereo_record();
    record.n_presentations = 511;
    EXPECT_EQ(ids_of(record), Ids{});
    EXPECT_EQ(ids_of(record, broadcast_list()), Ids{});
}

}  // namespace
}  // namespace mediasplit
