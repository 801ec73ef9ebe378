#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ac4/toc_reader/toc_reader.h"
#include "tests/support/ac4_builder.h"

namespace mediasplit {

// A reader over its own memory, with the calls of one frame in short form.
class TocFixture : public testing::Test {
protected:
    explicit TocFixture(std::uint64_t copy_buffer = 65536) {
        std::uint64_t size = 0;
        EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_query_mem(&size, {copy_buffer}), 0);
        memory_.resize(static_cast<std::size_t>(size));
        EXPECT_EQ(AC4_ANALYZE_ac4toc_reader_open(&reader_, memory_.data(), {copy_buffer}), 0);
    }
    ~TocFixture() override { AC4_ANALYZE_ac4toc_reader_close(reader_); }

    int feed(const Ac4Bytes& bytes) {
        bytes_ = Ac4Bytes(bytes.begin(), bytes.end());  // exactly sized
        return AC4_ANALYZE_ac4toc_reader_feed(reader_, bytes_.data(), bytes_.size(), kFrameKindRaw);
    }

    // Feeds, walks and reads the head: the first result that isn't 0.
    int open_frame(const BuildFrame& frame) { return open_bytes(write_ac4_frame(frame)); }
    int open_bytes(const Ac4Bytes& bytes) {
        const int fed = feed(bytes);
        if (fed != 0) {
            return fed;
        }
        const int selected =
            AC4_ANALYZE_ac4toc_reader_get_presentation_selection_info(reader_, &selection_);
        const int head = AC4_ANALYZE_ac4toc_reader_get_toc_info(reader_, &toc_);
        return selected != 0 ? selected : head;
    }

    PresentationInfo presentation(std::int32_t index) {
        PresentationInfo info;
        expect_good(AC4_ANALYZE_ac4toc_reader_get_presentation_info(reader_, toc_, index, &info));
        return info;
    }
    PresentationInfoExt presentation_ext(std::int32_t index) {
        PresentationInfoExt info;
        expect_good(
            AC4_ANALYZE_ac4toc_reader_get_presentation_info_ext(reader_, toc_, index, &info));
        return info;
    }
    SubstreamInfo substream(std::int32_t presentation, std::int32_t index) {
        SubstreamInfo info;
        expect_good(
            AC4_ANALYZE_ac4toc_reader_get_substream_info(reader_, presentation, index, &info));
        return info;
    }
    SubstreamInfoExt substream_ext(std::int32_t presentation, std::int32_t index) {
        SubstreamInfoExt info;
        expect_good(
            AC4_ANALYZE_ac4toc_reader_get_substream_info_ext(reader_, presentation, index, &info));
        return info;
    }

    // Tolerant mode fills records and returns the parked error.
    void expect_good(int result) const {
        EXPECT_TRUE(result == 0 || reader_->mode == TocMode::kTolerant) << result;
    }

    std::vector<std::byte> memory_;
    Ac4TocReader* reader_ = nullptr;
    Ac4Bytes bytes_;
    SelectionRecord selection_;
    TocInfo toc_;
};

// A frame of bitstream_version 0 or 1 with one presentation.
inline BuildFrame old_frame(std::uint32_t version, const BuildPresentation& presentation) {
    BuildFrame frame;
    frame.bitstream_version = version;
    frame.presentations = {presentation};
    frame.groups.clear();
    frame.substreams.assign(4, Ac4Bytes(6, 0));
    return frame;
}

inline BuildPresentation old_presentation(std::size_t n_substreams) {
    BuildPresentation presentation;
    presentation.version = 0;
    presentation.groups.clear();
    presentation.substreams.assign(n_substreams, BuildSubstream{});
    return presentation;
}

}  // namespace mediasplit
