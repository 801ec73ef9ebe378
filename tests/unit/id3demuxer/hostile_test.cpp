// Damaged segments: whatever stands in them, they end with a status and an output no longer than
// the input.
#include <gtest/gtest.h>

#include "tests/support/ac4_builder.h"
#include "tests/support/eac3_builder.h"
#include "tests/unit/id3demuxer/packed_run.h"

namespace mediasplit {
namespace {

Bytes eac3_segment() {
    test_support::Eac3Spec spec;
    spec.words = 64;
    spec.acmod = 2;
    spec.lfeon = 0;
    spec.addbsi = Bytes{1, 16};
    return joined({id3_tag(90000), repeated(test_support::build_eac3_frame(spec), 2)});
}

Bytes ac4_segment() {
    const Bytes frame = write_ac4_frame(simple_stereo_frame(8));
    return joined(
        {id3_tag(90000), write_syncframe(frame, true), write_syncframe(frame, false, true)});
}

void expect_survived(PackedRun& run, const Bytes& segment) {
    (void)run.segment(segment);
    for (const std::string& name : run.output_names()) {
        EXPECT_LE(run.output(name).value_or(Bytes{}).size(), segment.size());
    }
}

void cut_everywhere(const Bytes& segment, std::uint32_t parsed) {
    PackedRun run;
    run.context.channels_text = "2/IMSA";
    run.context.channels_parsed = parsed;
    for (std::size_t size = 0; size <= segment.size(); ++size) {
        expect_survived(
            run, Bytes(segment.begin(), segment.begin() + static_cast<std::ptrdiff_t>(size)));
    }
}

void flip_everywhere(const Bytes& segment, std::uint32_t parsed) {
    PackedRun run;
    run.context.channels_text = "16/JOC";
    run.context.channels_parsed = parsed;
    for (std::size_t at = 0; at < segment.size(); ++at) {
        for (const int mask : {0xFF, 0x01, 0x80}) {
            Bytes changed = segment;
            changed[at] = static_cast<std::uint8_t>(changed[at] ^ mask);
            expect_survived(run, changed);
        }
    }
}

TEST(DamagedPackedAudio, CutAtEveryByte) {
    for (const std::uint32_t parsed : {0U, 1U}) {
        cut_everywhere(eac3_segment(), parsed);
        cut_everywhere(ac4_segment(), parsed);
    }
}

TEST(DamagedPackedAudio, ChangedAtEveryByte) {
    for (const std::uint32_t parsed : {0U, 1U}) {
        flip_everywhere(eac3_segment(), parsed);
        flip_everywhere(ac4_segment(), parsed);
    }
}

}  // namespace
}  // namespace mediasplit
