// Video parameter sets of ITU-T H.265 7.3.2.1.
#include <algorithm>

#include "src/video/bit_cursor.h"
#include "src/video/hevc_ordering.h"
#include "src/video/hevc_parameter_sets.h"
#include "src/video/nal_parsing.h"

namespace mediasplit {
namespace {

Status read_hrds(HevcVps& vps, BitCursor& bits) {
    Status status = Status::kOk;
    vps.vps_num_hrd_parameters = bits.ue();
    const std::uint64_t count = std::min<std::uint64_t>(vps.vps_num_hrd_parameters, kMaxHevcHrds);
    for_each_counted(bits, count, [&](std::uint32_t i) {
        HevcVpsHrd entry;
        entry.hrd_layer_set_idx = bits.ue();
        entry.cprms_present_flag = i == 0 ? 1 : bits.flag();
        if (entry.cprms_present_flag == 0) {
            entry.hrd = vps.hrds.back().hrd;  // the common part is that of the set before
        }
        status |=
            parse_hevc_hrd_parameters(&entry.hrd, bits.data(), bits.position(),
                                      entry.cprms_present_flag != 0, vps.vps_max_sub_layers_minus1);
        vps.hrds.push_back(std::move(entry));
    });
    return status;
}

Status read_timing(HevcVps& vps, BitCursor& bits) {
    vps.vps_timing_info_present_flag = bits.flag();
    if (vps.vps_timing_info_present_flag == 0) {
        return Status::kOk;
    }
    vps.vps_num_units_in_tick = bits.u32(32);
    vps.vps_time_scale = bits.u32(32);
    vps.vps_poc_proportional_to_timing_flag = bits.flag();
    if (vps.vps_poc_proportional_to_timing_flag != 0) {
        vps.vps_num_ticks_poc_diff_one_minus1 = bits.ue();
    }
    return read_hrds(vps, bits);
}

Status read_vps(HevcVps& vps, BitCursor& bits) {
    Status status = parse_hevc_nal_header(&vps.header, bits.data(), bits.position());
    vps.vps_video_parameter_set_id = bits.u8(4);
    vps.vps_base_layer_internal_flag = bits.flag();
    vps.vps_base_layer_available_flag = bits.flag();
    vps.vps_max_layers_minus1 = bits.u8(6);
    vps.vps_max_sub_layers_minus1 = bits.u8(3);
    vps.vps_temporal_id_nesting_flag = bits.flag();
    vps.vps_reserved_0xffff_16bits = bits.u16(16);
    status |= parse_hevc_profile_tier_level(&vps.profile_tier_level, bits.data(), bits.position(),
                                            vps.vps_max_sub_layers_minus1);
    vps.vps_sub_layer_ordering_info_present_flag = bits.flag();
    read_sub_layer_ordering(vps.ordering, bits, vps.vps_sub_layer_ordering_info_present_flag != 0,
                            vps.vps_max_sub_layers_minus1);
    vps.vps_max_layer_id = bits.u8(6);
    vps.vps_num_layer_sets_minus1 = bits.ue();
    // layer_id_included_flag
    bits.skip(std::uint64_t{vps.vps_num_layer_sets_minus1} * (vps.vps_max_layer_id + 1U));
    status |= read_timing(vps, bits);
    return status;
}

}  // namespace

Status parse_hevc_vps_nal(const NalBuffer* nal, HevcVps* vps, [[maybe_unused]] Loglist* loglist) {
    return parse_nal(nal, vps, read_vps);
}

}  // namespace mediasplit
