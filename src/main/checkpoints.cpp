#include "src/main/checkpoints.h"

#include <cstddef>
#include <string_view>

#include "src/log/rule_families.h"
#include "src/records/run_options.h"

namespace mediasplit {

namespace {

void append(std::int32_t& count, CheckpointText* list, std::string_view text) {
    if (static_cast<std::size_t>(count) >= kCheckpointCapacity) {
        return;
    }
    CheckpointText& entry = list[count++];
    entry = {};
    text.copy(entry.data(), entry.size() - 1);
}

bool has_family(std::int32_t count, const CheckpointText* list, std::uint32_t mask) {
    return input_has_checkpoint_set(static_cast<std::uint32_t>(count), list, mask);
}

}  // namespace

void binary_checkpoint_init(std::int32_t& count, CheckpointText* list) {
    append(count, list, "210000");
    append(count, list, "330000");
    append(count, list, "430000");
}

void force_checkpoint_init(std::int32_t& count, CheckpointText* list) {
    if (!has_family(count, list, kAc4BroadcastRules)) {
        append(count, list, "310000");
    }
    if (!has_family(count, list, kPrismaBroadcastRules)) {
        append(count, list, "410000");
    }
    append(count, list, "440000");
    append(count, list, "450000");
}

}  // namespace mediasplit
