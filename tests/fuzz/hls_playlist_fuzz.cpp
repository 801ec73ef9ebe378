// The playlist reader, with a tree, and the rules of master playlists on what it read.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "src/main/checks/master_playlist.h"
#include "tests/support/playlist_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    const EzxmlPtr root = ezxml_new("playlist");
    auto read = read_playlist(std::string(data, data + size), "dir/list.m3u8", root.get());
    PlaylistRecord& playlist = read.playlist;
    if (playlist.is_master != 0 && !playlist.slots.empty()) {
        std::abort();
    }
    Loglist loglist;
    std::uint32_t groups = 0;
    static_cast<void>(master_manifest_validation(playlist, &loglist, groups));
    if (groups > playlist.streams.size()) {
        std::abort();
    }
    for (const MediaRendition& media : playlist.media) {
        if (media.group > groups || (playlist.is_master != 0 && media.enabled > 1)) {
            std::abort();
        }
    }
    for (const VariantStream& stream : playlist.streams) {
        if (stream.group > groups || (stream.enabled != 0 && !stream.uri)) {
            std::abort();
        }
    }
    destroy(playlist);
    return 0;
}
