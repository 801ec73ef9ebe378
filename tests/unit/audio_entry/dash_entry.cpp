#include "tests/unit/audio_entry/dash_entry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/support/dsi_builder.h"

namespace mediasplit {

namespace {

Findings walk(DemuxRun& run, const EntryTrack& track) {
    Findings findings;
    findings.status = run.walk(track.segment());
    findings.reports = run.sink.reports();
    return findings;
}

DsiPresentation stereo_presentation() {
    DsiPresentation presentation;
    presentation.version = 1;
    presentation.presentation_config_v1 = kDsiConfigSingle;
    presentation.mdcompat = 3;
    presentation.b_presentation_id = 1;
    presentation.presentation_id = 7;
    presentation.b_presentation_channel_coded = 1;
    presentation.dsi_presentation_ch_mode = 1;
    presentation.presentation_channel_mask_v1 = 1;
    presentation.groups.resize(1);
    DsiSubstreamGroup& group = presentation.groups[0];
    group.b_substreams_present = 1;
    group.b_channel_coded = 1;
    group.n_substreams = 1;
    group.substreams.resize(1);
    group.substreams[0].dsi_substream_channel_mask = 1;
    return presentation;
}

}  // namespace

std::string descriptor(const std::string& name, const std::string& scheme,
                       const std::optional<std::string>& value) {
    return "<" + name + " schemeIdUri=\"" + scheme + "\"" +
           (value ? " value=\"" + *value + "\"" : "") + "/>";
}

std::string vendor_scheme(const std::string& ending) {
    return "tag:" MEDIASPLIT_TAG_AUTHORITY "," + ending;
}

std::string AudioMpd::text() const {
    return R"(<MPD profiles=")" + profiles + R"("><Period><AdaptationSet )" +
           (set_has_id ? R"(id="1" )" : "") + set_attributes + ">" + set_children +
           R"(<Representation id="2" bandwidth="1" )" + representation_attributes + ">" +
           representation_children + "</Representation>" + more_representations +
           "</AdaptationSet>" + more_elements + "</Period></MPD>";
}

std::unique_ptr<Loglist> over_the_top_list() {
    return run_loglist();
}

std::unique_ptr<Loglist> broadcast_list() {
    constexpr std::array<CheckpointText, 2> kActive{{{"210000"}, {"320000"}}};
    return init_loglist(kActive.size(), kActive.data());
}

Ids Findings::ids() const {
    Ids ids;
    for (const RecordedReport& report : reports) {
        ids.push_back(report.id);
    }
    return ids;
}

std::string Findings::text(int id) const {
    std::string text;
    for (const RecordedReport& report : reports) {
        if (report.id == id) {
            EXPECT_EQ(text, "") << id << " was raised more than once";
            text = report.text;
        }
    }
    return text;
}

mp4::Bytes EntryTrack::segment() const {
    mp4::Bytes entry = mp4::audio_entry(type, channels, sample_size, sample_rate);
    entry = mp4::box(type, {mp4::Bytes(entry.begin() + 8, entry.end()), mp4::join(boxes)});
    if (reserved_at) {
        entry[*reserved_at] = 1;
    }
    mp4::TrackSpec track;
    track.handler = handler;
    track.time_scale = time_scale;
    track.entries = {entry};
    mp4::MovieSpec movie;
    movie.tracks = {track};
    mp4::Bytes bytes = mp4::initialization_segment(movie);
    constexpr std::string_view kSmhd = "smhd";
    const auto at = std::search(bytes.begin(), bytes.end(), kSmhd.begin(), kSmhd.end());
    if (!has_smhd && at != bytes.end()) {
        std::copy_n("free", 4, at);
    }
    return bytes;
}

EntryTrack ec3_track(const std::string& dec3) {
    EntryTrack track;
    track.boxes = {mp4::box("dec3", {mp4::hex(dec3)})};
    return track;
}

EntryTrack ac4_track(const DsiRecord& record) {
    EntryTrack track;
    track.type = "ac-4";
    track.boxes = {mp4::box("dac4", {write_dac4(record)})};
    return track;
}

DsiRecord stereo_record() {
    DsiRecord record;
    record.dsi_version = 1;
    record.bitstream_version = 2;
    record.fs_index = 1;
    record.frame_rate_index = 13;
    record.n_presentations = 1;
    record.presentations = {stereo_presentation()};
    return record;
}

DsiRecord ims_record() {
    DsiRecord record = stereo_record();
    record.n_presentations = 2;
    record.presentations.push_back(record.presentations[0]);
    record.presentations[0].version = 2;
    return record;
}

Findings find_in_file(const EntryTrack& track, std::unique_ptr<Loglist> loglist) {
    DemuxRun run;
    run.loglist = std::move(loglist);
    return walk(run, track);
}

Findings find_in_dash(const EntryTrack& track, const AudioMpd& mpd,
                      std::unique_ptr<Loglist> loglist) {
    testing::MpdReading reading(mpd.text());
    reading.read("2", 0, "http://host/dir/m.mpd", loglist.get());
    const DashPeriodInfo& period = reading.info->periods.at(0);
    DashContext context;
    context.mpd = reading.info.get();
    context.period = &period;
    context.adaptation_set = &period.adaptation_sets.at(0);
    context.representation = &period.representations.at(0);
    DemuxRun run;
    run.loglist = std::move(loglist);
    run.dash = &context;
    return walk(run, track);
}

Findings find_in_playlist(const EntryTrack& track, ManifestContext& playlist) {
    DemuxRun run;
    run.manifest = &playlist;
    return walk(run, track);
}

}  // namespace mediasplit
