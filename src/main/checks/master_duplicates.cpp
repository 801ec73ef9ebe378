#include "src/main/checks/master_duplicates.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/util/text.h"
#include "src/video/codec_text.h"

namespace mediasplit {

namespace {

// The rule family in which duplicates count as one stream.
// With how many alike records another one is compared. No playlist has as many; the bound keeps
// the time linear in its length.
constexpr std::size_t kMostAlike = 64;
constexpr std::string_view kEac3 = "ec-3";
// Channels above which a rendition has to have one bit rate.
constexpr std::uint32_t kStereo = 2;

std::optional<std::string_view> view_of(const std::optional<std::string>& text) {
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}

// What makes two streams the same but for their codecs.
using StreamIdentity = std::array<std::optional<std::string_view>, 5>;

StreamIdentity identity_of(const VariantStream& stream) {
    return {view_of(stream.uri), view_of(stream.audio), view_of(stream.video),
            view_of(stream.subtitle), view_of(stream.closed_captions)};
}

// Notes `duplicate` on `stream`. False if both places are taken.
bool note_duplicate(VariantStream& stream, const VariantStream& duplicate) {
    if (!stream.duplicate_codecs_1) {
        stream.duplicate_codecs_1 = duplicate.codecs;
        stream.first_duplicate_index = duplicate.index;
    } else if (!stream.duplicate_codecs_2) {
        stream.duplicate_codecs_2 = duplicate.codecs;
        stream.second_duplicate_index = duplicate.index;
    } else {
        return false;
    }
    stream.duplicate_index_text += ", " + std::to_string(duplicate.index);
    return true;
}

// What makes two renditions the same content.
using RenditionIdentity = std::array<std::optional<std::string_view>, 3>;

bool is_multichannel_eac3(const MediaRendition& media) {
    return media.codecs == kEac3 && media.channels && str2uint_r10(media.channels) > kStereo;
}

// Whether two streams of one address bring the same. The audio comes from renditions, if there are
// any.
bool bring_the_same(const VariantStream& earlier, const VariantStream& later, Status& status,
                    Loglist* loglist) {
    if (earlier.has_renditions == 0) {
        return codecs_match(earlier.codecs, later.codecs);
    }
    std::optional<std::string> earlier_video;
    splitcodec_video(earlier.codecs, earlier_video, status, loglist);
    std::optional<std::string> later_video;
    splitcodec_video(later.codecs, later_video, status, loglist);
    return codecs_match(earlier_video, later_video);
}

void mark_streams_with_renditions(PlaylistRecord& playlist) {
    std::set<std::string_view> groups;
    for (const MediaRendition& media : playlist.media) {
        if (media.enabled != 0 && media.group_id) {
            groups.insert(*media.group_id);
        }
    }
    for (VariantStream& stream : playlist.streams) {
        if (stream.audio && groups.contains(*stream.audio)) {
            stream.has_renditions = 1;
        }
    }
}

}  // namespace

Status merge_same_streams(PlaylistRecord& playlist, Loglist* loglist) {
    const bool merging = has_checkpoint_set(loglist, kPrismaBroadcastRules);
    Status status = Status::kOk;
    std::map<StreamIdentity, std::vector<VariantStream*>> same_streams;
    for (VariantStream& stream : playlist.streams) {
        if (stream.enabled == 0) {
            continue;
        }
        stream.variant_codecs = stream.codecs;
        auto& earlier_streams = same_streams[identity_of(stream)];
        for (VariantStream* earlier : earlier_streams) {
            if (!stream.codecs || !earlier->codecs || *stream.codecs == *earlier->codecs) {
                continue;
            }
            if (earlier->codecs->size() < kLongestGatheredCodecs) {
                *earlier->codecs += ',' + *stream.codecs;
            }
            if (merging) {
                stream.merged = 1;
            }
            status |= check(note_duplicate(*earlier, stream), loglist, 4101, {}, stream.uri);
        }
        if (stream.merged == 0 && earlier_streams.size() < kMostAlike) {
            earlier_streams.push_back(&stream);
        }
    }
    return status;
}

Status check_single_bit_rate(const PlaylistRecord& playlist, Loglist* loglist) {
    std::map<RenditionIdentity, std::vector<std::size_t>> alike;
    // Per rendition: the places of those alike, and which of these is its own.
    std::vector<std::pair<const std::vector<std::size_t>*, std::size_t>> own(playlist.media.size());
    for (std::size_t i = 0; i < playlist.media.size(); ++i) {
        const MediaRendition& media = playlist.media[i];
        if (is_multichannel_eac3(media)) {
            auto& places =
                alike[{view_of(media.group_id), view_of(media.channels), view_of(media.language)}];
            own[i] = {&places, places.size()};
            places.push_back(i);
        }
    }
    Status status = Status::kOk;
    for (std::size_t i = 0; i < playlist.media.size(); ++i) {
        const auto& [places, at] = own[i];
        note_evaluated(4102);
        const std::size_t end =
            places == nullptr ? 0 : std::min(places->size(), at + 1 + kMostAlike);
        for (std::size_t later = at + 1; later < end; ++later) {
            status |= Logging_err_type_check(loglist, 4102, {}, i, (*places)[later]);
        }
    }
    return status;
}

Status drop_repeated_streams(PlaylistRecord& playlist, Loglist* loglist) {
    mark_streams_with_renditions(playlist);
    Status status = Status::kOk;
    // The streams that are followed, by what else has to be equal.
    using Address = std::pair<std::uint32_t, std::optional<std::string_view>>;
    std::map<Address, std::vector<const VariantStream*>> followed;
    for (VariantStream& stream : playlist.streams) {
        if (stream.enabled == 0 || stream.merged != 0) {
            continue;
        }
        auto& earlier_streams = followed[{stream.has_renditions, view_of(stream.uri)}];
        const bool repeated = std::any_of(
            earlier_streams.begin(), earlier_streams.end(), [&](const VariantStream* earlier) {
                return bring_the_same(*earlier, stream, status, loglist);
            });
        if (repeated) {
            stream.enabled = 0;
        } else if (earlier_streams.size() < kMostAlike) {
            earlier_streams.push_back(&stream);
        }
    }
    return status;
}

}  // namespace mediasplit
