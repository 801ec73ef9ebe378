// Table of contents reader with all queries over a sequence of frames, each behind a 16-bit length.
// What a reader that has seen the frames before tells must be what a fresh one tells.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "ac4/toc_reader/toc_reader.h"
#include "tests/fuzz/frame_sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using namespace mediasplit;

class Reader {
public:
    Reader(TocMode mode, std::uint64_t copy_buffer) {
        std::uint64_t size = 0;
        AC4_ANALYZE_ac4toc_reader_query_mem(&size, {copy_buffer});
        memory_.resize(static_cast<std::size_t>(size));
        AC4_ANALYZE_ac4toc_reader_open(&reader_, memory_.data(), {copy_buffer});
        AC4_ANALYZE_ac4toc_reader_set_mode(reader_, mode);
    }
    ~Reader() { AC4_ANALYZE_ac4toc_reader_close(reader_); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // A digest of all that can be asked.
    std::vector<std::int64_t> read(const std::uint8_t* data, std::size_t size) {
        seen_.clear();
        note(AC4_ANALYZE_ac4toc_reader_feed(reader_, data, size, kFrameKindRaw));
        if (seen_[0] != 0) {
            return seen_;
        }
        note(AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info(reader_, &selection_));
        TocInfo toc;
        note(AC4_ANALYZE_ac4toc_reader_get_toc_info(reader_, &toc));
        note(toc.n_presentations);
        for (std::int32_t p = 0; p < std::min(toc.n_presentations, 8); ++p) {
            presentation(toc, p, size);
        }
        for (std::int32_t index = -1; index < 10; ++index) {
            SubstreamSegment found;
            note(AC4_ANALYZE_ac4toc_get_substream_segment_info(reader_, index, &found));
            segment(found, size);
        }
        return seen_;
    }

private:
    void note(std::int64_t value) { seen_.push_back(value); }
    void segment(const SubstreamSegment& found, std::size_t size) {
        if (found.offset > size || found.size > size - found.offset) {
            std::abort();
        }
        note(static_cast<std::int64_t>(found.offset));
        note(static_cast<std::int64_t>(found.size));
    }
    void presentation(const TocInfo& toc, std::int32_t p, std::size_t size) {
        PresentationInfo info;
        note(AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader_, toc, p, &info));
        note(info.channel_mode);
        note(info.core_channel_mode);
        note(info.type_code);
        note(info.substream_total);
        note(info.decodable ? 1 : 0);
        segment(info.presentation_substream, size);
        PresentationInfoExt ext;
        note(AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc, p, &ext));
        note(ext.group_count);
        EmdfInfo emdf;
        note(AC4_ANALYZE_ac4toc_reader_get_emdf_info(reader_, p, &emdf));
        note(emdf.count);
        for (std::int32_t s = 0; s < std::min(info.substream_total + 1, 6); ++s) {
            SubstreamInfo substream;
            SubstreamInfoExt substream_ext;
            note(AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, p, s, &substream));
            note(substream.channel_mode);
            note(substream.substream_index);
            note(AC4_ANALYZE_ac4toc_reader_get_substream_info_ext(reader_, p, s, &substream_ext));
            segment(substream_ext.segment, size);
            segment(substream_ext.oamd_segment, size);
        }
        for (int kind = 0; kind < 4; ++kind) {
            std::int64_t position = 0;
            bool flag = false;
            note(AC4_ANALYZE_ac4toc_reader_get_param_presentation(
                reader_, static_cast<TocParameter>(kind), p, p, &position, &flag));
            note(position);
        }
    }

    std::vector<std::byte> memory_;
    Ac4TocReader* reader_ = nullptr;
    SelectionRecord selection_;
    std::vector<std::int64_t> seen_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    const TocMode mode = (data[0] & 1U) != 0 ? TocMode::kTolerant : TocMode::kStrict;
    const std::uint64_t copy_buffer = (data[0] & 2U) != 0 ? 16 : 4096;
    Reader lasting(mode, copy_buffer);
    for_each_frame(data + 1, size - 1, [&](const std::vector<std::uint8_t>& frame) {
        Reader fresh(mode, copy_buffer);
        if (lasting.read(frame.data(), frame.size()) != fresh.read(frame.data(), frame.size())) {
            std::abort();
        }
    });
    return 0;
}
