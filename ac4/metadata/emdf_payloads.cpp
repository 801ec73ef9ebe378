#include "ac4/metadata/emdf_payloads.h"

#include "ac4/metadata/metadata_codes.h"
#include "ac4/oamd/field_forms.h"

namespace mediasplit {
namespace {

constexpr std::uint8_t kUnknownImsVersion = 3;

// `emdf_payload_config`, from `b_smpoffst` to `proc_allowed`.
void skip_payload_config(FieldReader& in) {
    const bool b_smpoffst = read_flag(in);
    if (b_smpoffst) {
        read_variable_bits(in, 11);
    }
    if (read_flag(in)) {
        read_variable_bits(in, 11);  // duration
    }
    if (read_flag(in)) {
        read_variable_bits(in, 2);  // groupid
    }
    if (read_flag(in)) {
        skip_field(in, 8);  // codecdata
    }
    const bool b_discard_unknown_payload = read_flag(in);
    if (b_discard_unknown_payload) {
        return;
    }
    const bool b_payload_frame_aligned = !b_smpoffst && read_flag(in);
    if (b_payload_frame_aligned) {
        skip_field(in, 2);  // b_create_duplicate, b_remove_duplicate
    }
    if (b_smpoffst || b_payload_frame_aligned) {
        skip_field(in, 5 + 2);  // priority, proc_allowed
    }
}

}  // namespace

std::uint32_t ac4analyse_ims_parse_frame(FieldReader& in, ImsInfo* out) {
    *out = {};
    out->version = read_byte(in, 2);
    if (out->version == kUnknownImsVersion) {
        return kMetadataImsVersion;
    }
    out->code_3 = read_byte(in, 3);
    out->flag_1 = read_flag(in);
    out->has_code_5 = read_flag(in);
    out->code_5 = out->has_code_5 ? read_byte(in, 5) : std::uint8_t{0};
    out->code_2 = read_byte(in, 2);
    out->flag_2 = read_flag(in);
    out->has_tail = read_flag(in);
    if (out->has_tail) {
        out->tail_code_2 = read_byte(in, 2);
        out->tail_flag = read_flag(in);
    }
    out->present = field_ok(in);
    return metadata_code(in);
}

std::uint32_t ac4analyze_parse_emdf_payload(Ac4MetadataState* state, int substream, FieldReader& in,
                                            const EmdfPayload& payload) {
    if (payload.id != kEmdfPayloadIms) {
        return kMetadataOk;
    }
    ImsInfo ims;
    const std::uint32_t code = ac4analyse_ims_parse_frame(in, &ims);
    MetadataSlot* slot = metadata_substream_slot(state, substream);
    if (slot != nullptr && code == kMetadataOk) {
        slot->ims = ims;
    }
    return code;
}

std::uint32_t parse_emdf_payloads_substream(Ac4MetadataState* state, int substream, FieldReader& in,
                                            EmdfContext* context) {
    std::uint32_t code = kMetadataOk;
    while (field_ok(in) && code == kMetadataOk) {
        EmdfPayload payload;
        payload.id = read_extended(in, 5, 31, 5);
        if (payload.id == 0 || !field_ok(in)) {
            break;
        }
        skip_payload_config(in);
        payload.size = read_variable_bits(in, 8);
        read_enclosed(in, std::uint64_t{payload.size} * 8, [&](FieldReader& inner) {
            code = ac4analyze_parse_emdf_payload(state, substream, inner, payload);
        });
        if (field_ok(in)) {
            metadata_count_bits(state, -std::int64_t{payload.size} * 8);
            ++context->payload_count;
            context->ims_present = context->ims_present || payload.id == kEmdfPayloadIms;
        }
    }
    align_field(in);
    return code != kMetadataOk ? code : metadata_code(in);
}

std::uint32_t ac4analyze_parse_emdf_payloads_substream(Ac4MetadataState* state, int substream,
                                                       const std::uint8_t* data, std::size_t size,
                                                       EmdfContext* context) {
    *context = {};
    if (size == 0) {
        return kMetadataOk;
    }
    SubstreamReader reader(data, size);
    FieldReader& in = reader.in;
    const std::uint32_t code = parse_emdf_payloads_substream(state, substream, in, context);
    metadata_count_bits(state, field_position(in));
    return code;
}

}  // namespace mediasplit
