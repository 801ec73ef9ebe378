// What the tests of the box reader share.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "src/mp4demuxer/mp4demuxer.h"
#include "tests/support/mp4_builder.h"
#include "tests/support/mp4_input.h"

namespace mediasplit::mp4 {

// A walk, and the lines that it printed to standard output.
struct WalkResult {
    std::unique_ptr<Mp4Demuxer> demuxer;
    std::string lines;

    [[nodiscard]] Mp4Stream& stream(std::size_t index = 0) const {
        return *demuxer->streams.at(index);
    }
    [[nodiscard]] Mp4Sample sample(std::uint32_t index, std::uint32_t stream_index = 0) const {
        Mp4Sample out;
        EXPECT_NE(mp4demuxer_get_sample(*demuxer, stream_index, index, out), nullptr);
        return out;
    }
};

// The lines of a walk.
inline std::string lines_of(Mp4Demuxer& demuxer, const Bytes& bytes) {
    ::testing::internal::CaptureStdout();
    walk_again(demuxer, bytes);
    return ::testing::internal::GetCapturedStdout();
}

inline WalkResult walk_and_listen(const Bytes& bytes) {
    WalkResult result;
    result.demuxer = mp4demuxer_create();
    result.lines = lines_of(*result.demuxer, bytes);
    return result;
}

// A track whose `stbl` holds these boxes.
inline Bytes track_of(std::string_view handler, std::initializer_list<Bytes> tables) {
    return box(
        "trak",
        {tkhd(1), box("mdia", {mdhd(1000), hdlr(handler), box("minf", {box("stbl", tables)})})});
}

inline Bytes movie_of(std::initializer_list<Bytes> tables) {
    return box("moov", {mvhd(), track_of("vide", tables)});
}

inline Bytes entry_movie(std::string_view handler, const Bytes& entry) {
    return box("moov", {mvhd(), track_of(handler, {stsd({entry})})});
}

// A movie of an empty track 1, and fragments behind it.
inline Bytes fragment_movie(std::initializer_list<Bytes> rest) {
    return join({box("moov", {mvhd(), track_of("vide", {})}), join(rest)});
}

inline Bytes moof_of(std::initializer_list<Bytes> traf_boxes) {
    return box("moof", {box("traf", traf_boxes)});
}

}  // namespace mediasplit::mp4
