// A `dac4` payload read with and without a tree, taken in sum, and compared with itself and with an
// empty stream.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "src/ac4analyze_impl/ac4_dsi.h"
#include "src/ac4analyze_impl/dsi_compare.h"
#include "src/ac4analyze_impl/dsi_values.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mediasplit;
    const ByteSpan payload(data, size);
    DsiRecord record;
    const EzxmlPtr tree = ezxml_new("dac4");
    if (ac4_dsi_parser(payload, record, tree.get()) != (size == 0 ? 1U : 0U)) {
        std::abort();
    }
    ac4_dsi_parser(payload, record, nullptr);
    if (record.presentations.size() > record.n_presentations) {
        std::abort();
    }
    Ac4CodecProfile profile;
    std::uint32_t mask = 0;
    extract_value_dac4(record, &profile, &mask, true);
    ReferenceDsi reference;
    static_cast<void>(ac4_Ac4SpecificBox_comp(&reference, &record, true, nullptr));
    static_cast<DsiHead&>(reference) = record;
    reference.presentations = record.presentations;
    static_cast<void>(ac4_Ac4SpecificBox_comp(&reference, &record, true, nullptr));
    static_cast<void>(ac4_check_sphere_indicators(record, nullptr));
    return 0;
}
