// Runs the packed audio demultiplexer and the elementary stream readers over bytes of memory and
// shows what came out.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "src/id3demuxer/es_streams.h"
#include "src/id3demuxer/id3demux.h"
#include "tests/support/packed_builder.h"
#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {

using StreamReader = Status (*)(OutputFile*, InputFile&, ManifestContext*, Loglist*);

class PackedRun {
public:
    PackedRun();

    // What the playlist tells. Without `has_context` there is no playlist.
    ManifestContext context;
    bool has_context = true;
    bool has_folder = true;
    bool has_slot = true;
    std::string name = "audio";
    SegmentSlot slot;

    RecordingSink sink;
    std::unique_ptr<Loglist> loglist;
    TempFolder folder;

    // Takes the bytes as one segment.
    Status segment(const Bytes& bytes, bool new_file = true);
    // Reads the bytes as an elementary stream into the file "stream.out".
    Status stream(StreamReader reader, const Bytes& bytes);

    // Content of a file of the folder, none if it isn't there.
    [[nodiscard]] std::optional<Bytes> output(const std::string& name) const;
    [[nodiscard]] std::vector<std::string> output_names() const;
    // The text of the first report of a number, "" if it wasn't raised.
    [[nodiscard]] std::string text_of(int id) const;

private:
    [[nodiscard]] InputFile open(const Bytes& bytes) const;

    TempFolder inputs_;
};

}  // namespace mediasplit
