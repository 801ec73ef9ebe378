#include "src/hls/playlist_reader.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "src/file_util/path_names.h"
#include "src/hls/playlist_reading.h"
#include "src/log/logging.h"
#include "src/util/address.h"
#include "src/util/tree_text.h"

namespace mediasplit {

namespace {

// Size of the line buffer; a longer line comes in pieces, each taken for a line.
constexpr std::size_t kLineSize = 4096;

// What a playlist may ask for beside its own size: a record of a master playlist takes a kilobyte
// for a line of a few characters, and each relative URI a copy of the folder's name.
constexpr std::size_t kMostMasterRecords = 100'000;
constexpr std::size_t kMostBaseBytes = std::size_t{256} << 20;

constexpr std::string_view kMedia = "#EXT-X-MEDIA:";
constexpr std::string_view kStreamInf = "#EXT-X-STREAM-INF:";
constexpr std::string_view kIframeStreamInf = "#EXT-X-I-FRAME-STREAM-INF:";
constexpr std::string_view kMap = "#EXT-X-MAP:";
constexpr std::string_view kSegment = "#EXTINF:";
constexpr std::string_view kDiscontinuity = "#EXT-X-DISCONTINUITY";
constexpr std::string_view kDiscontinuitySequence = "#EXT-X-DISCONTINUITY-SEQUENCE";
constexpr std::string_view kEndList = "#EXT-X-ENDLIST";

// --- First pass ---

struct RecordCounts {
    std::size_t media = 0;
    std::size_t streams = 0;
    std::size_t iframes = 0;
    std::size_t slots = 0;
};

void count_line(std::string_view line, RecordCounts& counts) {
    if (line.starts_with(kMedia)) {
        ++counts.media;
    } else if (line.starts_with(kStreamInf)) {
        ++counts.streams;
    } else if (line.starts_with(kIframeStreamInf)) {
        ++counts.iframes;
    } else if (line.starts_with(kSegment) || line.starts_with(kMap) || line.starts_with(kEndList) ||
               (line.starts_with(kDiscontinuity) &&
                line.find(kDiscontinuitySequence) == std::string_view::npos)) {
        ++counts.slots;
    }
}

RecordCounts count_records(std::FILE* file) {
    RecordCounts counts;
    while (const auto line = fgetline(kLineSize, file)) {
        count_line(*line, counts);
    }
    return counts;
}

// Deliberate: the counts stand though the second pass may use less records, where a tag stands in
// the place of a URI. What isn't used stays empty.
void allocate_records(const RecordCounts& counts, PlaylistRecord& playlist) {
    playlist.media.resize(counts.media);
    playlist.streams.resize(counts.streams);
    playlist.iframes.resize(counts.iframes);
    playlist.slots.resize(counts.slots);
    playlist.is_master = counts.streams > 0 ? 1 : 0;
}

// --- Second pass ---

void read_version(PlaylistReading& reading, std::string_view text) {
    PlaylistRecord& playlist = reading.playlist;
    (playlist.is_master != 0 ? playlist.master_version : playlist.version) = text;
    Ezxml* const node = ezxml_add_child(reading.tree, "EXT-X-VERSION", reading.tree_position++);
    ptr2id(node, &playlist);
    string2txt(node, text);
}

void read_discontinuity(PlaylistReading& reading, std::string_view /*text*/) {
    reading.playlist.has_discontinuity = 1;
    if (auto* slot = take_record(reading.playlist.slots, reading.slots_used)) {
        slot->kind = kSlotDiscontinuity;
    }
}

void read_end_list(PlaylistReading& reading, std::string_view /*text*/) {
    if (auto* slot = take_record(reading.playlist.slots, reading.slots_used)) {
        slot->kind = kSlotEndOfList;
    }
}

template <std::optional<std::string> PlaylistRecord::*kField>
void keep_text(PlaylistReading& reading, std::string_view text) {
    reading.playlist.*kField = text;
}

template <std::uint32_t PlaylistRecord::*kField>
void set_flag(PlaylistReading& reading, std::string_view /*text*/) {
    reading.playlist.*kField = 1;
}

struct TagRow {
    std::string_view tag;  // what the line begins with
    void (*read)(PlaylistReading&, std::string_view) = nullptr;
};

// The first row that fits counts. Lines of all other tags are passed over.
constexpr TagRow kTags[] = {
    {kMedia, read_media},
    {kStreamInf, read_stream_inf},
    {kIframeStreamInf, read_iframe_stream_inf},
    {kMap, read_map},
    {kSegment, read_segment},
    {"#EXT-X-KEY:", read_key},
    {"#EXT-X-VERSION:", read_version},
    {kDiscontinuitySequence, set_flag<&PlaylistRecord::has_discontinuity>},
    {kDiscontinuity, read_discontinuity},
    {"#EXT-X-TARGETDURATION:", keep_text<&PlaylistRecord::target_duration>},
    {"#EXT-X-MEDIA-SEQUENCE:", read_media_sequence},
    {"#EXT-X-PLAYLIST-TYPE:", keep_text<&PlaylistRecord::playlist_type>},
    {"#EXT-X-INDEPENDENT-SEGMENTS", set_flag<&PlaylistRecord::independent_segments>},
    {"#EXT-X-I-FRAMES-ONLY", set_flag<&PlaylistRecord::iframes_only>},
    {kEndList, read_end_list},
};

void read_line(PlaylistReading& reading, std::string_view line) {
    if (!line.starts_with("#EXT")) {
        return;
    }
    const auto* row = std::find_if(std::begin(kTags), std::end(kTags), [line](const TagRow& entry) {
        return line.starts_with(entry.tag);
    });
    if (row != std::end(kTags)) {
        row->read(reading, line.substr(row->tag.size()));
    }
}

}  // namespace

void report_invalid(PlaylistReading& reading) {
    if (!reading.is_invalid) {
        reading.is_invalid = true;
        reading.status |= Logging_err_type_check(nullptr, 4059, {}, reading.playlist.url);
    }
}

std::string make_absolute(PlaylistReading& reading, std::string_view uri) {
    std::string result;
    if (!is_url(uri)) {
        reading.base_bytes += reading.base.size();
        if (reading.base_bytes > kMostBaseBytes) {
            report_invalid(reading);
            reading.ended = true;
            return result;
        }
        result.reserve(reading.base.size() + uri.size());
        result = reading.base;
    }
    return result.append(uri);
}

std::optional<std::string> next_line(PlaylistReading& reading) {
    if (reading.held_line) {
        return std::exchange(reading.held_line, std::nullopt);
    }
    return fgetline(kLineSize, reading.file);
}

Status parse_file(std::FILE* file, OptText url, PlaylistRecord& playlist, Ezxml* tree) {
    std::optional<std::string> name;
    if (url) {
        name = url.str();
    }
    playlist = PlaylistRecord{};
    playlist.url = std::move(name);
    if (file == nullptr) {
        return Logging_err_type_check(nullptr, 4022, {}, playlist.url);
    }
    const RecordCounts counts = count_records(file);
    const bool is_mixed = counts.slots != 0 && counts.streams != 0;
    const bool is_outsized = counts.media + counts.streams + counts.iframes > kMostMasterRecords;
    if (const Status valid = check(!is_mixed && !is_outsized, nullptr, 4059, {}, playlist.url);
        valid != Status::kOk) {
        return valid;
    }
    if (std::fseek(file, 0, SEEK_SET) != 0) {
        return Status::kFailed;
    }
    allocate_records(counts, playlist);
    PlaylistReading reading{.file = file,
                            .playlist = playlist,
                            .base = splitpath(playlist.url.value_or("")),
                            .tree = tree};
    while (!reading.ended) {
        const auto line = next_line(reading);
        if (!line) {
            break;
        }
        read_line(reading, *line);
    }
    return reading.status;
}

void destroy(PlaylistRecord& playlist) {
    playlist = PlaylistRecord{};
}

}  // namespace mediasplit
