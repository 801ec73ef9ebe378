#include <array>
#include <memory>

#include "ac4/metadata/substream_metadata.h"
#include "tests/fuzz/ac4_fuzz_facts.h"

// An AC-4 substream, read twice over one slot so that what frames carry over is used, then the same
// bytes as an EMDF substream.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    constexpr std::array<OamdObjectKind, 3> kObjects = {
        OamdObjectKind::kLfeBed, OamdObjectKind::kDynamic, OamdObjectKind::kIsf};
    FuzzFacts fuzz(data, size);
    SubstreamFacts facts;
    facts.ch_mode = fuzz.number(17) - 1;
    facts.sus_ver = fuzz.number(1);
    facts.b_iframe = fuzz.flag();
    facts.b_associated = fuzz.flag();
    facts.b_dialog = fuzz.flag();
    facts.b_object_coded = facts.ch_mode < 0;
    facts.b_ajoc = fuzz.flag();
    facts.frame_length = fuzz.frame_length();
    facts.objects = {kObjects, fuzz.number(8), fuzz.flag(), fuzz.flag()};
    const auto state = std::make_unique<Ac4MetadataState>();
    SubstreamMetadata out;
    for (int frame = 0; frame < 2; ++frame) {
        ac4analyze_get_substream_metadata(state.get(), 0, fuzz.data(), fuzz.size(), facts, &out);
        facts.b_iframe = false;
    }
    EmdfContext context;
    ac4analyze_parse_emdf_payloads_substream(state.get(), 1, fuzz.data(), fuzz.size(), &context);
    return 0;
}
