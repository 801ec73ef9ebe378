#include <memory>

#include "ac4/metadata/presentation_substream.h"
#include "tests/fuzz/ac4_fuzz_facts.h"

// An AC-4 presentation substream, read twice over one slot so that what frames carry over is used.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    FuzzFacts fuzz(data, size);
    PresentationFacts facts;
    facts.b_alternative = fuzz.flag();
    facts.b_pres_ndot = fuzz.flag();
    facts.n_substreams = fuzz.number(128);
    facts.n_substream_groups = fuzz.number(9);
    facts.ch_mode = fuzz.number(17) - 1;
    facts.core_ch_mode = fuzz.number(7) - 1;
    facts.b_4_back_channels_present = fuzz.flag();
    facts.top_channel_pairs = fuzz.number(3);
    facts.b_objects = fuzz.flag();
    facts.frame_length = fuzz.frame_length();
    const auto state = std::make_unique<Ac4MetadataState>();
    PresentationMetadata out;
    for (int frame = 0; frame < 2; ++frame) {
        ac4analyze_parse_ac4_presentation_substream(state.get(), 0, fuzz.data(), fuzz.size(), facts,
                                                    &out);
        facts.b_pres_ndot = false;
    }
    return 0;
}
