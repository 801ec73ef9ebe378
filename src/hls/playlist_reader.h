// Reading an HLS playlist (RFC 8216 4) into records.
#pragma once

#include <cstdio>
#include <string_view>

#include "base/xml_tree.h"
#include "src/hls/playlist_record.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Reads the master or media playlist in `file`, which stays open, into `playlist`, whatever that
// held. `url` is the name of the playlist, by which its URIs are made absolute. With a `tree` each
// #EXT-X-MEDIA, #EXT-X-STREAM-INF, #EXT-X-I-FRAME-STREAM-INF and #EXT-X-VERSION becomes a child of
// it whose "ui-id" is the address of the record.
// Returns the OR of the reports' results: 4022 for no file, 4059 for segments and streams in one
// playlist or for a byte range without a start, 2017, 2018, 4015 and 4016 for attributes.
// Status::kFailed without a message if the file can't be rewound. May run on any thread.
[[nodiscard]] Status parse_file(std::FILE* file, OptText url, PlaylistRecord& playlist,
                                Ezxml* tree);

// Frees all that the record owns and leaves it empty.
void destroy(PlaylistRecord& playlist);

// Whether the number of double quotes is even.
bool hasPairsDoubleQuotation(std::string_view text);

}  // namespace mediasplit
