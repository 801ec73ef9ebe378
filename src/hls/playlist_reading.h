// The state of reading one playlist, shared by the tags.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/xml_tree.h"
#include "src/hls/playlist_record.h"
#include "src/log/status.h"

namespace mediasplit {

struct PlaylistReading {
    std::FILE* file;
    PlaylistRecord& playlist;
    std::string base;  // what a relative URI is put behind
    Ezxml* tree;
    std::uint64_t tree_position = 0;

    // Records used up so far.
    std::size_t media_used = 0;
    std::size_t streams_used = 0;
    std::size_t iframes_used = 0;
    std::size_t slots_used = 0;

    SegmentKeyText key{};              // in force for the segments that follow
    std::uint32_t sequence_start = 0;  // number of the first segment
    std::optional<std::string> held_line{};
    std::size_t base_bytes = 0;  // of `base`, in all the URIs that it was put before
    bool is_invalid = false;     // 4059 was raised
    bool ended = false;          // the rest of the file isn't read
    Status status = Status::kOk;
};

// Raises 4059, once for a playlist.
void report_invalid(PlaylistReading& reading);

// A URI behind the playlist's own folder, unless it is an address. A long folder before very many
// URIs makes the playlist invalid and ends its reading.
std::string make_absolute(PlaylistReading& reading, std::string_view uri);

// The next line; nothing at the end of the file.
std::optional<std::string> next_line(PlaylistReading& reading);

// The next of the records that the first pass has counted; nullptr if all are used, which takes a
// file that changed since then or a line that the two passes see differently.
template <typename Record>
Record* take_record(std::vector<Record>& records, std::size_t& used) {
    return used < records.size() ? &records[used++] : nullptr;
}

// Tags of a master playlist; `text` is the line behind the tag.
void read_media(PlaylistReading& reading, std::string_view text);
void read_stream_inf(PlaylistReading& reading, std::string_view text);
void read_iframe_stream_inf(PlaylistReading& reading, std::string_view text);

// Tags of a media playlist.
void read_map(PlaylistReading& reading, std::string_view text);
void read_segment(PlaylistReading& reading, std::string_view text);
void read_key(PlaylistReading& reading, std::string_view text);
void read_media_sequence(PlaylistReading& reading, std::string_view text);

}  // namespace mediasplit
