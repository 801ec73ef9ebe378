// HRD parameters of ITU-T H.265 E.2.2 and E.2.3.
#include "src/video/bit_cursor.h"
#include "src/video/hevc_parameter_sets.h"

namespace mediasplit {
namespace {

void read_common_part(HevcHrd& hrd, BitCursor& bits) {
    hrd.nal_hrd_parameters_present_flag = bits.flag();
    hrd.vcl_hrd_parameters_present_flag = bits.flag();
    if (hrd.nal_hrd_parameters_present_flag == 0 && hrd.vcl_hrd_parameters_present_flag == 0) {
        return;
    }
    hrd.sub_pic_hrd_params_present_flag = bits.flag();
    if (hrd.sub_pic_hrd_params_present_flag != 0) {
        hrd.tick_divisor_minus2 = bits.u8(8);
        hrd.du_cpb_removal_delay_increment_length_minus1 = bits.u8(5);
        hrd.sub_pic_cpb_params_in_pic_timing_sei_flag = bits.flag();
        hrd.dpb_output_delay_du_length_minus1 = bits.u8(5);
    }
    hrd.bit_rate_scale = bits.u8(4);
    hrd.cpb_size_scale = bits.u8(4);
    if (hrd.sub_pic_hrd_params_present_flag != 0) {
        hrd.cpb_size_du_scale = bits.u8(4);
    }
    hrd.initial_cpb_removal_delay_length_minus1 = bits.u8(5);
    hrd.au_cpb_removal_delay_length_minus1 = bits.u8(5);
    hrd.dpb_output_delay_length_minus1 = bits.u8(5);
}

}  // namespace

Status parse_hevc_sub_layer_hrd_parameters(std::vector<HevcCpbEntry>* cpb, ByteSpan data,
                                           std::uint32_t& position, std::uint32_t cpb_cnt_minus1,
                                           bool sub_pic_hrd_params_present) {
    if (cpb == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    for_each_counted(bits, std::uint64_t{cpb_cnt_minus1} + 1, [&](std::uint32_t) {
        HevcCpbEntry entry;
        entry.bit_rate_value_minus1 = bits.ue();
        entry.cpb_size_value_minus1 = bits.ue();
        if (sub_pic_hrd_params_present) {
            entry.cpb_size_du_value_minus1 = bits.ue();
            entry.bit_rate_du_value_minus1 = bits.ue();
        }
        entry.cbr_flag = bits.flag();
        if (cpb->size() < kMaxHevcCpbEntries) {
            cpb->push_back(entry);
        }
    });
    return Status::kOk;
}

Status parse_hevc_hrd_layer(HevcHrdLayer* layer, const HevcHrd& hrd, ByteSpan data,
                            std::uint32_t& position) {
    if (layer == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    layer->fixed_pic_rate_general_flag = bits.flag();
    layer->fixed_pic_rate_within_cvs_flag = 1;  // inferred with a fixed general rate
    if (layer->fixed_pic_rate_general_flag == 0) {
        layer->fixed_pic_rate_within_cvs_flag = bits.flag();
    }
    if (layer->fixed_pic_rate_within_cvs_flag != 0) {
        layer->elemental_duration_in_tc_minus1 = bits.ue();
    } else {
        layer->low_delay_hrd_flag = bits.flag();
    }
    if (layer->low_delay_hrd_flag == 0) {
        layer->cpb_cnt_minus1 = bits.ue();
    }
    const bool sub_pic = hrd.sub_pic_hrd_params_present_flag != 0;
    Status status = Status::kOk;
    if (hrd.nal_hrd_parameters_present_flag != 0) {
        status |= parse_hevc_sub_layer_hrd_parameters(&layer->nal_cpb, data, position,
                                                      layer->cpb_cnt_minus1, sub_pic);
    }
    if (hrd.vcl_hrd_parameters_present_flag != 0) {
        status |= parse_hevc_sub_layer_hrd_parameters(&layer->vcl_cpb, data, position,
                                                      layer->cpb_cnt_minus1, sub_pic);
    }
    return status;
}

Status parse_hevc_hrd_parameters(HevcHrd* hrd, ByteSpan data, std::uint32_t& position,
                                 bool common_inf_present, std::uint32_t max_sub_layers_minus1) {
    if (hrd == nullptr || data.data() == nullptr) {
        return Status::kFailed;
    }
    BitCursor bits(data, position);
    if (common_inf_present) {
        read_common_part(*hrd, bits);
    }
    Status status = Status::kOk;
    hrd->layers.clear();
    for (std::uint32_t i = 0; i <= max_sub_layers_minus1 && i < kMaxHevcSubLayers && !bits.at_end();
         ++i) {
        hrd->layers.emplace_back();
        status |= parse_hevc_hrd_layer(&hrd->layers.back(), *hrd, data, position);
    }
    return status;
}

}  // namespace mediasplit
