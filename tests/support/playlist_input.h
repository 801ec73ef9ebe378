#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "src/hls/playlist_reader.h"

namespace mediasplit {

struct FileClose {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};
using FilePtr = std::unique_ptr<std::FILE, FileClose>;

/// An open file with the text as its content; the text must outlive it.
inline FilePtr open_text(std::string& text) {
    return FilePtr(fmemopen(text.data(), text.size(), "rb"));
}

/// A playlist read from a text.
struct ReadPlaylist {
    PlaylistRecord playlist{};
    Status status = Status::kOk;
};

inline ReadPlaylist read_playlist(std::string_view text, OptText url = "dir/list.m3u8",
                                  Ezxml* tree = nullptr) {
    std::string content(text);
    const FilePtr file = open_text(content);
    ReadPlaylist result;
    result.status = parse_file(file.get(), url, result.playlist, tree);
    return result;
}

}  // namespace mediasplit
