#include "ac4/metadata/oamd_substream.h"

#include "ac4/metadata/metadata_codes.h"

namespace mediasplit {
namespace {

void store_common(const OamdCommonData& common, oamdi* info) {
    if (info == nullptr || !common.b_trim_present) {
        return;
    }
    info->warp_mode = common.warp_mode;
    info->global_trim_mode = common.global_trim_mode;
    for (int config = 0; config < kOamdTrimConfigs; ++config) {
        AC4_ANALYZE_oamdi_set_trim_config(info, config,
                                          common.trim_config[static_cast<std::size_t>(config)]);
    }
}

}  // namespace

std::uint32_t ac4analyze_parse_oamd_substream(const std::uint8_t* data, std::size_t size,
                                              const OamdObjectFacts& facts, OamdSubstream* out,
                                              oamdi* info) {
    *out = {};
    if (size == 0) {
        return kMetadataOk;
    }
    SubstreamReader reader(data, size);
    FieldReader& in = reader.in;
    out->b_oamd_common_data_present = read_flag(in);
    if (out->b_oamd_common_data_present) {
        oamd_read_common_data(in, out->common);
        store_common(out->common, info);
    }
    OamdObjectFacts objects = facts;
    out->b_oamd_timing_present = read_flag(in);
    if (out->b_oamd_timing_present) {
        oamd_read_timing(in, out->timing);
        objects.num_obj_info_blocks = out->timing.num_obj_info_blocks;
    }
    if (!facts.b_alternative) {
        oamd_read_dyndata(in, objects, false, info);
    }
    if (out->b_oamd_timing_present) {
        AC4_ANALYZE_oamdi_set_sample_offset(info, out->timing.sample_offset);
        AC4_ANALYZE_oamdi_set_md_update_info(info, out->timing.update,
                                             out->timing.num_obj_info_blocks);
    }
    align_field(in);
    return metadata_code(in);
}

}  // namespace mediasplit
