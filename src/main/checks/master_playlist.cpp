#include "src/main/checks/master_playlist.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "src/log/logging.h"
#include "src/main/checks/master_duplicates.h"
#include "src/util/text.h"
#include "src/video/codec_text.h"

namespace mediasplit {

namespace {

constexpr std::string_view kAudio = "AUDIO";
constexpr std::string_view kVideo = "VIDEO";
constexpr std::string_view kAc4 = "ac-4";
constexpr double kHighestFrameRate = 60.0;

bool has_text(const std::optional<std::string>& text) {
    return text && !text->empty();
}

bool holds(const std::optional<std::string>& text, std::string_view part) {
    return text && text->find(part) != std::string::npos;
}

void enable_all(PlaylistRecord& playlist) {
    for (MediaRendition& media : playlist.media) {
        media.enabled = 1;
    }
    for (VariantStream& stream : playlist.streams) {
        stream.enabled = 1;
    }
    for (VariantStream& iframe : playlist.iframes) {
        iframe.enabled = 1;
    }
}

// --- Renditions ---

// What the streams of a group say together.
struct GroupSummary {
    std::optional<std::string> codecs;
    std::uint32_t stream_index = 0;
    std::size_t renditions = 0;  // that looked at the streams
};
// How many renditions of a group look at its streams, each with its own reports. No playlist has as
// many; the bound keeps the time linear in its length.
constexpr std::size_t kMostLooks = 64;

// The streams by the group that they name.
struct StreamGroups {
    std::map<std::string_view, std::vector<const VariantStream*>> audio;
    std::map<std::string_view, std::uint32_t> video;     // index of the last stream
    std::map<std::string_view, GroupSummary> summaries;  // of the AUDIO groups
};

StreamGroups group_streams(const PlaylistRecord& playlist) {
    StreamGroups groups;
    for (const VariantStream& stream : playlist.streams) {
        if (stream.audio) {
            groups.audio[*stream.audio].push_back(&stream);
        }
        if (stream.video) {
            groups.video[*stream.video] = stream.index;
        }
    }
    return groups;
}

// Gathers the audio codecs of the streams that name the group.
GroupSummary summarize(const std::vector<const VariantStream*>& streams, std::string_view group_id,
                       PlaylistRecord& playlist, Status& status, Loglist* loglist) {
    GroupSummary summary;
    for (const VariantStream* stream : streams) {
        summary.stream_index = stream->index;
        if (summary.codecs && summary.codecs->size() >= kLongestGatheredCodecs) {
            continue;
        }
        const auto former = summary.codecs;
        splitcodec_audio(stream->codecs, summary.codecs, status, loglist);
        if (summary.codecs && summary.codecs->starts_with(kAc4)) {
            playlist.has_ac4 |= 1;
        }
        status |= check(!former || former == summary.codecs, loglist, 4050, {}, group_id);
    }
    return summary;
}

// Links the rendition with the streams that name its group. False if there are none.
bool link_streams(MediaRendition& media, StreamGroups& groups, PlaylistRecord& playlist,
                  Status& status, Loglist* loglist) {
    if (!media.group_id) {
        return false;
    }
    const std::string_view group_id = *media.group_id;
    if (media.type == kAudio) {
        const auto streams = groups.audio.find(group_id);
        if (streams == groups.audio.end()) {
            return false;
        }
        GroupSummary& summary = groups.summaries[group_id];
        if (summary.renditions < kMostLooks) {
            const std::size_t renditions = summary.renditions + 1;
            summary = summarize(streams->second, group_id, playlist, status, loglist);
            summary.renditions = renditions;
        }
        media.codecs = summary.codecs;
        media.stream_index = summary.stream_index;
        return true;
    }
    if (media.type == kVideo) {
        const auto stream = groups.video.find(group_id);
        if (stream == groups.video.end()) {
            return false;
        }
        media.stream_index = stream->second;
        return true;
    }
    return false;
}

Status check_renditions(PlaylistRecord& playlist, Loglist* loglist) {
    Status status = Status::kOk;
    StreamGroups groups = group_streams(playlist);
    for (MediaRendition& media : playlist.media) {
        const bool has_uri = has_text(media.uri);
        status |= check(has_uri, loglist, 2011, {}, media.index);
        status |= check(media.name.has_value(), loglist, 4047, {}, media.index);
        const bool linked = link_streams(media, groups, playlist, status, loglist);
        const bool lost_audio = !linked && media.group_id && media.type == kAudio;
        const bool lost_video = !linked && media.group_id && media.type == kVideo;
        status |= check(!lost_audio, loglist, 2012, {}, media.index, media.group_id);
        status |= check(!lost_video, loglist, 2013, {}, media.index, media.group_id);
        if (!has_uri || lost_audio || lost_video) {
            media.enabled = 0;
        }
    }
    return status;
}

// --- Streams ---

Status check_frame_rate(const VariantStream& stream, Loglist* loglist) {
    Status status = check(stream.frame_rate.has_value(), loglist, 4098, {});
    if (stream.frame_rate) {
        // Comes as written; some playlists quote it.
        const double rate = stringtodouble(unquoted(*stream.frame_rate));
        status |= check(rate <= kHighestFrameRate, loglist, 4099, {});
    }
    return status;
}

Status check_stream(VariantStream& stream, Loglist* loglist) {
    Status status = check(has_text(stream.codecs), loglist, 4048, {}, stream.index);
    if (!has_text(stream.codecs)) {
        stream.enabled = 0;
        return status;
    }
    std::optional<std::string> audio;
    if (splitcodec_audio(stream.codecs, audio, status, loglist)) {
        stream.audio_only = audio == stream.codecs && stream.audio ? 1 : 0;
    }
    std::optional<std::string> video;
    if (splitcodec_video(stream.codecs, video, status, loglist)) {
        status |= check_frame_rate(stream, loglist);
    }
    status |= check(stream.uri.has_value(), loglist, 4051, {}, stream.index);
    if (!stream.uri) {
        stream.enabled = 0;
    }
    status |= check(has_text(stream.bandwidth), loglist, 4049, {}, stream.index);
    // Deliberate: of the names in the text only these two are looked for.
    status |=
        check(!holds(stream.codecs, "hev1") && !holds(stream.codecs, "pxhe"), loglist, 2016, {});
    return status;
}

Status check_streams(PlaylistRecord& playlist, Loglist* loglist) {
    Status status = Status::kOk;
    for (VariantStream& stream : playlist.streams) {
        status |= check_stream(stream, loglist);
    }
    return status;
}

Status check_iframe_streams(PlaylistRecord& playlist, Loglist* loglist) {
    Status status = Status::kOk;
    for (VariantStream& iframe : playlist.iframes) {
        status |= check(has_text(iframe.uri), loglist, 4052, {}, iframe.index);
        if (!has_text(iframe.uri)) {
            iframe.enabled = 0;
        }
        status |= check(has_text(iframe.bandwidth), loglist, 4053, {}, iframe.index);
        iframe.variant_codecs = iframe.codecs;
    }
    return status;
}

// --- Timing groups ---

// The followed renditions of one type and GROUP-ID.
struct RenditionGroup {
    std::size_t first = 0;  // place of its first rendition
    std::uint32_t number = 0;
};
using RenditionGroups = std::map<std::pair<std::string_view, std::string_view>, RenditionGroup>;

bool is_groupable(const MediaRendition& media) {
    return media.enabled != 0 && media.group_id && (media.type == kAudio || media.type == kVideo);
}

RenditionGroups group_renditions(const PlaylistRecord& playlist) {
    RenditionGroups groups;
    for (std::size_t i = 0; i < playlist.media.size(); ++i) {
        const MediaRendition& media = playlist.media[i];
        if (is_groupable(media)) {
            groups.try_emplace({*media.type, *media.group_id}, RenditionGroup{i, 0});
        }
    }
    return groups;
}

RenditionGroup* find_group(RenditionGroups& groups, std::string_view type,
                           const std::optional<std::string>& group_id) {
    const auto found = group_id ? groups.find({type, *group_id}) : groups.end();
    return found == groups.end() ? nullptr : &found->second;
}

// The number of the first numbered rendition that belongs to one of the groups, or 0.
std::uint32_t number_of(const RenditionGroup* audio, const RenditionGroup* video) {
    const std::uint32_t audio_number = audio == nullptr ? 0 : audio->number;
    const std::uint32_t video_number = video == nullptr ? 0 : video->number;
    if (audio_number == 0 || video_number == 0) {
        return audio_number + video_number;
    }
    return audio->first < video->first ? audio_number : video_number;
}

void number_timing_groups(PlaylistRecord& playlist, std::uint32_t& group_count) {
    RenditionGroups groups = group_renditions(playlist);
    for (VariantStream& stream : playlist.streams) {
        if (stream.enabled == 0 || stream.merged != 0 || !holds(stream.codecs, kAc4) ||
            stream.has_renditions == 0) {
            continue;
        }
        RenditionGroup* const audio = find_group(groups, kAudio, stream.audio);
        RenditionGroup* const video = find_group(groups, kVideo, stream.video);
        stream.group = number_of(audio, video);
        if (stream.group == 0) {
            stream.group = ++group_count;
        }
        for (RenditionGroup* group : {audio, video}) {
            if (group != nullptr && group->number == 0) {
                group->number = stream.group;
            }
        }
    }
    for (MediaRendition& media : playlist.media) {
        if (is_groupable(media)) {
            media.group = groups.at({*media.type, *media.group_id}).number;
        }
    }
}

}  // namespace

Status master_manifest_validation(PlaylistRecord& playlist, Loglist* loglist,
                                  std::uint32_t& group_count) {
    if (playlist.is_master == 0) {
        return Status::kOk;
    }
    // Later steps read what earlier ones set.
    group_count = 0;
    enable_all(playlist);
    Status status = check_renditions(playlist, loglist);
    status |= check_streams(playlist, loglist);
    status |= check_iframe_streams(playlist, loglist);
    status |= merge_same_streams(playlist, loglist);
    status |= check_single_bit_rate(playlist, loglist);
    status |= drop_repeated_streams(playlist, loglist);
    number_timing_groups(playlist, group_count);
    return status;
}

}  // namespace mediasplit
