// AC-4 samples held against a `dac4` payload. An input is the payload and then frames, each behind
// a 16-bit length. Frames of odd size are taken as first samples.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "src/ac4analyze_impl/ac4_dsi.h"
#include "src/ac4analyze_impl/dsi_compare.h"
#include "src/ac4analyze_impl/es_parser.h"
#include "tests/fuzz/frame_sequence.h"

namespace {

using namespace mediasplit;

struct Track {
    std::unique_ptr<Ac4EsParser> parser = ac4_es_parser_new(nullptr);
    std::unique_ptr<ReferenceDsi> reference = ac4_es_parser_ref_dsi_init();
    std::unique_ptr<AnalysisRecord> analysis = ac4_es_parser_init();
    DsiRecord box;
};

void check_reference(const ReferenceDsi& reference) {
    const bool sane = reference.presentations.size() <= kAnalysisPresentations &&
                      reference.sampling_frequency <= 0xFFFF;
    if (!sane) {
        std::abort();
    }
    for (const DsiPresentation& presentation : reference.presentations) {
        if (presentation.groups.size() > kMaxPresentationGroups) {
            std::abort();
        }
    }
}

void compare(Track& track, const std::vector<std::uint8_t>& frame) {
    const std::uint32_t number = (frame.size() & 1U) != 0 ? 1 : 2;
    if (ac4_es_parser_ref_dsi(*track.parser, frame, *track.reference, *track.analysis, number,
                              nullptr) != Status::kOk) {
        return;
    }
    check_reference(*track.reference);
    static_cast<void>(
        ac4_Ac4SpecificBox_comp(track.reference.get(), &track.box,
                                ac4_get_bitstream_b_iframe_global(track.analysis.get()), nullptr));
    static_cast<void>(ac4_get_top_channel_layout_count(track.analysis.get()));
    ac4_es_parser_ref_dsi_clear(*track.reference);
    ac4_es_parser_clear(*track.analysis);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = std::freopen("/dev/null", "w", stdout) != nullptr;
    (void)quiet;
    Track track;
    bool has_box = false;
    for_each_frame(data, size, [&](const std::vector<std::uint8_t>& part) {
        if (has_box) {
            compare(track, part);
        } else {
            static_cast<void>(ac4_dsi_parser(part, track.box, nullptr));
        }
        has_box = true;
    });
    static_cast<void>(ac4_check_sphere_indicators(track.box, nullptr));
    return 0;
}
