// Short-term reference picture sets of ITU-T H.265 7.3.7, with the prediction of 7.4.8.
#include "src/video/bit_cursor.h"
#include "src/video/hevc_parameter_sets.h"

namespace mediasplit {
namespace {

// Damaged sets reach any distance: the sum wraps instead of overflowing.
std::int32_t wrapping_add(std::int32_t left, std::int32_t right) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(left) +
                                     static_cast<std::uint32_t>(right));
}

// Entries past the capacity are dropped.
void add_negative(HevcShortTermRefPicSet& set, std::int32_t delta_poc, std::uint8_t used) {
    if (set.num_negative_pics < kMaxHevcShortTermPics) {
        set.delta_poc_s0[set.num_negative_pics] = delta_poc;
        set.used_by_curr_pic_s0[set.num_negative_pics++] = used;
    }
}

void add_positive(HevcShortTermRefPicSet& set, std::int32_t delta_poc, std::uint8_t used) {
    if (set.num_positive_pics < kMaxHevcShortTermPics) {
        set.delta_poc_s1[set.num_positive_pics] = delta_poc;
        set.used_by_curr_pic_s1[set.num_positive_pics++] = used;
    }
}

// Flags of each picture of the reference set and of the set itself.
struct PredictionFlags {
    std::array<std::uint8_t, 2 * kMaxHevcShortTermPics + 1> used_by_curr_pic{};
    std::array<std::uint8_t, 2 * kMaxHevcShortTermPics + 1> use_delta{};
};

// Equations 7-61 and 7-62.
void derive_from_reference(HevcShortTermRefPicSet& set, const HevcShortTermRefPicSet& reference,
                           std::int32_t delta_rps, const PredictionFlags& flags) {
    const std::uint32_t negatives = reference.num_negative_pics;
    const std::uint32_t positives = reference.num_positive_pics;
    const std::uint32_t self = reference.num_delta_pocs;
    const auto add_if = [&](bool negative, std::int32_t delta_poc, std::uint32_t flag) {
        if (flags.use_delta[flag] == 0) {
            return;
        }
        if (negative && delta_poc < 0) {
            add_negative(set, delta_poc, flags.used_by_curr_pic[flag]);
        } else if (!negative && delta_poc > 0) {
            add_positive(set, delta_poc, flags.used_by_curr_pic[flag]);
        }
    };
    for (std::uint32_t j = positives; j > 0; --j) {
        add_if(true, wrapping_add(reference.delta_poc_s1[j - 1], delta_rps), negatives + j - 1);
    }
    add_if(true, delta_rps, self);
    for (std::uint32_t j = 0; j < negatives; ++j) {
        add_if(true, wrapping_add(reference.delta_poc_s0[j], delta_rps), j);
    }
    for (std::uint32_t j = negatives; j > 0; --j) {
        add_if(false, wrapping_add(reference.delta_poc_s0[j - 1], delta_rps), j - 1);
    }
    add_if(false, delta_rps, self);
    for (std::uint32_t j = 0; j < positives; ++j) {
        add_if(false, wrapping_add(reference.delta_poc_s1[j], delta_rps), negatives + j);
    }
}

void read_predicted_set(HevcShortTermRefPicSet& set,
                        const std::vector<HevcShortTermRefPicSet>& earlier, BitCursor& bits,
                        bool in_slice_header) {
    if (in_slice_header) {
        set.delta_idx_minus1 = bits.ue();
    }
    set.delta_rps_sign = bits.flag();
    set.abs_delta_rps_minus1 = bits.ue();
    const std::uint32_t distance = set.abs_delta_rps_minus1 + 1;
    const auto delta_rps =
        static_cast<std::int32_t>(set.delta_rps_sign != 0 ? 0U - distance : distance);
    static constexpr HevcShortTermRefPicSet kNoReference;
    const HevcShortTermRefPicSet& reference =
        set.delta_idx_minus1 < earlier.size() ? earlier[earlier.size() - 1 - set.delta_idx_minus1]
                                              : kNoReference;
    PredictionFlags flags;
    for (std::uint32_t j = 0; j <= reference.num_delta_pocs; ++j) {
        flags.used_by_curr_pic[j] = bits.flag();
        flags.use_delta[j] = 1;
        if (flags.used_by_curr_pic[j] == 0) {
            flags.use_delta[j] = bits.flag();
        }
    }
    derive_from_reference(set, reference, delta_rps, flags);
}

void read_explicit_set(HevcShortTermRefPicSet& set, BitCursor& bits) {
    const std::uint32_t negatives = bits.ue();
    const std::uint32_t positives = bits.ue();
    std::uint32_t delta_poc = 0;
    for_each_counted(bits, negatives, [&](std::uint32_t) {
        delta_poc -= bits.ue() + 1;
        add_negative(set, static_cast<std::int32_t>(delta_poc), bits.flag());
    });
    delta_poc = 0;
    for_each_counted(bits, positives, [&](std::uint32_t) {
        delta_poc += bits.ue() + 1;
        add_positive(set, static_cast<std::int32_t>(delta_poc), bits.flag());
    });
}

}  // namespace

Status parse_hevc_st_ref_pic_set(HevcShortTermRefPicSet* set,
                                 const std::vector<HevcShortTermRefPicSet>& earlier, ByteSpan data,
                                 std::uint32_t& position, std::uint32_t index,
                                 std::uint32_t set_count) {
    if (set == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    if (index > 0) {
        set->inter_ref_pic_set_prediction_flag = bits.flag();
    }
    if (set->inter_ref_pic_set_prediction_flag != 0) {
        read_predicted_set(*set, earlier, bits, index == set_count);
    } else {
        read_explicit_set(*set, bits);
    }
    set->num_delta_pocs = set->num_negative_pics + set->num_positive_pics;
    return Status::kOk;
}

}  // namespace mediasplit
