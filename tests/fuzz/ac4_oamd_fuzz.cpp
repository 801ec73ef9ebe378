#include <array>
#include <span>
#include <vector>

#include "ac4/metadata/oamd_substream.h"
#include "tests/fuzz/ac4_fuzz_facts.h"

// An AC-4 object metadata substream into a block that may be too small for it, and the same bytes
// as the object data inside another substream.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    constexpr std::array<OamdObjectKind, 5> kObjects = {
        OamdObjectKind::kLfeBed, OamdObjectKind::kDynamic, OamdObjectKind::kBed,
        OamdObjectKind::kIsf, OamdObjectKind::kDynamic};
    FuzzFacts fuzz(data, size);
    const auto count = static_cast<std::size_t>(fuzz.number(5));
    const auto first = static_cast<std::size_t>(fuzz.number(5 - static_cast<int>(count)));
    OamdObjectFacts facts;
    facts.objects = std::span(kObjects).subspan(first, count);
    facts.num_obj_info_blocks = fuzz.number(8);
    facts.b_ndot = fuzz.flag();
    facts.b_alternative = fuzz.flag();
    const int objects = 1 + fuzz.number(4);
    const int blocks = 1 + fuzz.number(7);
    std::vector<std::uint8_t> memory(AC4_ANALYZE_oamdi_query_mem(objects, 1, blocks));
    oamdi* info = AC4_ANALYZE_oamdi_init(memory.data(), objects, 1, blocks);
    OamdSubstream out;
    ac4analyze_parse_oamd_substream(fuzz.data(), fuzz.size(), facts, &out, info);
    orv_bitbuf bits;
    orv_bitbuf_init(&bits, fuzz.data(), static_cast<std::int64_t>(fuzz.size()) * 8);
    FieldReader in{&bits, nullptr, FieldError::kNone};
    oamd_read_dyndata(in, facts, true, info);
    return 0;
}
