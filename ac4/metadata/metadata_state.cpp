#include "ac4/metadata/metadata_state.h"

#include <algorithm>
#include <cstddef>

namespace mediasplit {
namespace {

template <typename Slots>
auto find_slot(Slots& slots, int number) -> decltype(&slots[0]) {
    const auto index = static_cast<std::size_t>(number);
    return number >= 0 && index < slots.size() ? &slots[index] : nullptr;
}

// The slot, from now on counted as used.
template <typename Slots>
MetadataSlot* use_slot(Slots& slots, int number, std::size_t& used) {
    MetadataSlot* const slot = find_slot(slots, number);
    if (slot != nullptr) {
        used = std::max(used, static_cast<std::size_t>(number) + 1);
    }
    return slot;
}

}  // namespace

void ac4_metadata_state_reset(Ac4MetadataState* state) {
    std::fill_n(state->substreams.begin(), state->used_substreams, MetadataSlot{});
    std::fill_n(state->presentations.begin(), state->used_presentations, MetadataSlot{});
    state->used_substreams = 0;
    state->used_presentations = 0;
}

void metadata_count_bits(Ac4MetadataState* state, std::int64_t bits) {
    if (state != nullptr) {
        state->bits_read += bits;
    }
}

MetadataSlot* metadata_substream_slot(Ac4MetadataState* state, int substream) {
    return state != nullptr ? use_slot(state->substreams, substream, state->used_substreams)
                            : nullptr;
}

MetadataSlot* metadata_presentation_slot(Ac4MetadataState* state, int presentation) {
    return state != nullptr
               ? use_slot(state->presentations, presentation, state->used_presentations)
               : nullptr;
}

LoudnessCarried metadata_carry_loudness(MetadataSlot& slot, const CodedField& dialnorm_bits,
                                        const FurtherLoudness& loudness) {
    LoudnessCarried carried;
    if (dialnorm_bits.present) {
        slot.dialnorm_seen = true;
        slot.dialnorm = kDialnormStep * static_cast<float>(dialnorm_bits.value);
    }
    if (loudness.present) {
        carried.changed = slot.loudness_seen && slot.loudness != loudness;
        slot.loudness_seen = true;
        slot.loudness = loudness;
    }
    carried.dialnorm = slot.dialnorm;
    carried.loudness = slot.loudness;
    return carried;
}

const ImsInfo* ac4analyze_get_ims_info(const Ac4MetadataState* state, int substream) {
    const MetadataSlot* slot = state != nullptr ? find_slot(state->substreams, substream) : nullptr;
    return slot != nullptr && slot->ims.present ? &slot->ims : nullptr;
}

}  // namespace mediasplit
