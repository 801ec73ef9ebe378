#include "src/tsTableParse/pmt_checks.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "src/log/logging.h"
#include "src/video/codec_text.h"

namespace mediasplit {

namespace {

// One judgement of a PMT: what was seen so far, and whether the rest is to be looked at.
struct PmtCheck {
    TsContext& context;
    ManifestContext* manifest;
    Loglist* loglist;
    Status status = Status::kOk;
    bool ended = false;          // a rule that ends the judgement was broken
    bool prsm_on_video = false;  // tag 0xB0 on an AVC or HEVC stream
    bool registration = false;   // registration descriptor of the enhancement layer

    void end_with(Status result) {
        status |= result;
        ended = true;
    }
};

constexpr const char* kPrsmWords[] = {"pxav", "pxa1", "pxhe", "pxh1"};

bool codecs_contain(const PmtCheck& pmt, const char* codec) {
    return codec_is_contained(pmt.manifest->codecs, codec);
}

bool is_audio_rendition(const PmtCheck& pmt) {
    return pmt.manifest->group_id.has_value();
}

bool codecs_hold_text(const PmtCheck& pmt, std::string_view text) {
    return pmt.manifest->codecs && pmt.manifest->codecs->find(text) != std::string::npos;
}

void check_ec3_channels(const Ec3TsDescriptor& ec3, PmtCheck& pmt) {
    ManifestContext& manifest = *pmt.manifest;
    if (manifest.channels_parsed == 0) {
        const std::string actual = std::to_string(ec3.number_of_channels);
        pmt.status |= check(actual == *manifest.channels_text, pmt.loglist, 4286, {},
                            manifest.rendition_index, actual, *manifest.channels_text);
        return;
    }
    const std::uint32_t channels = ec3.number_of_channels;
    manifest.found_channels = 1;
    manifest.found_channels_max = std::max(manifest.found_channels_max, channels);
    if (channels >= manifest.channel_count) {
        manifest.found_channels_valid = 1;
    }
    pmt.status |= check(channels <= manifest.channel_count, pmt.loglist, 4289, {},
                        *manifest.channels_text, manifest.rendition_index, channels);
}

// What holds for every E-AC-3 descriptor.
void check_ec3(const Ec3TsDescriptor& ec3, PmtCheck& pmt) {
    note_evaluated(4292);
    if (ec3.flag_ec3_extension_type_a == 0) {
        if (pmt.manifest != nullptr && !is_audio_rendition(pmt)) {
            pmt.status |= check(codecs_contain(pmt, "ec-3"), pmt.loglist, 4283, {},
                                pmt.manifest->stream_index);
        }
    } else if (pmt.context.is_hls) {
        pmt.end_with(Logging_err_type_check(pmt.loglist, 4292, {}));
        return;
    }
    if (pmt.manifest != nullptr && pmt.manifest->channels_text) {
        check_ec3_channels(ec3, pmt);
    }
}

void check_ec3_service(const Ec3TsDescriptor& ec3, PmtCheck& pmt) {
    const bool plain = ec3.mainid_flag == 0 && ec3.asvc_flag == 0 && ec3.mixinfoexists_flag == 0 &&
                       ec3.language_flag_2 == 0;
    pmt.status |= check(plain, pmt.loglist, 4320, {});
    if (!plain) {
        return;
    }
    const bool full = ec3.full_service_flag == 1;
    const bool mono = ec3.number_of_channels == 0;
    switch (ec3.service_type) {
        case 0:
            pmt.status |= check(full, pmt.loglist, 4321, {});
            break;
        case 1:
        case 4:
            pmt.status |= check(!full, pmt.loglist, 4322, {});
            break;
        case 5:
            pmt.status |= check(mono, pmt.loglist, 4323, {});
            break;
        case 6:
            pmt.status |= check(full && mono, pmt.loglist, 4324, {});
            break;
        default:
            break;
    }
}

void check_prsm_fields(const PrsmTsDescriptor& prsm, PmtCheck& pmt) {
    pmt.status |= check(prsm.px_version_major == 1, pmt.loglist, 4257, {}, prsm.px_version_major);
    pmt.status |= check(prsm.px_version_minor == 0, pmt.loglist, 4258, {}, prsm.px_version_minor);
    pmt.status |= check(prsm.rpu_present_flag == 1, pmt.loglist, 4259, {});
    pmt.status |= check(prsm.bl_present_flag == 1, pmt.loglist, 4260, {});
}

// The enhancement layer has no place in a transport stream of HLS.
bool prsm_is_forbidden(PmtCheck& pmt) {
    note_evaluated(4169);
    if (pmt.context.is_hls) {
        pmt.end_with(Logging_err_type_check(pmt.loglist, 4169, {}));
        return true;
    }
    return false;
}

void check_ec3_stream(const TsElementaryStream& stream, PmtCheck& pmt) {
    note_evaluated(4318);
    for (const auto& descriptor : stream.descriptors) {
        if (descriptor.tag == kTagEc3Dvb) {
            pmt.status |= Logging_err_type_check(pmt.loglist, 4318, {});
        } else if (descriptor.tag == kTagEc3Atsc) {
            check_ec3(descriptor.ec3, pmt);
            if (!pmt.ended) {
                check_ec3_service(descriptor.ec3, pmt);
            }
            return;
        }
    }
}

void check_aac_stream(const TsElementaryStream&, PmtCheck& pmt) {
    if (pmt.manifest != nullptr && !is_audio_rendition(pmt)) {
        pmt.status |= check(codecs_contain(pmt, "mp4a"), pmt.loglist, 4492, {});
    }
}

// Judges the enhancement descriptors of a video stream, at most `limit` of them. False if it has
// none.
bool check_video_prsm(const TsElementaryStream& stream, std::size_t limit, PmtCheck& pmt) {
    std::size_t seen = 0;
    for (const auto& descriptor : stream.descriptors) {
        if (descriptor.tag != kTagPrsm || seen == limit) {
            continue;
        }
        ++seen;
        pmt.prsm_on_video = true;
        if (prsm_is_forbidden(pmt)) {
            break;
        }
        check_prsm_fields(descriptor.prsm, pmt);
    }
    return seen != 0;
}

void check_avc_stream(const TsElementaryStream& stream, PmtCheck& pmt) {
    if (!check_video_prsm(stream, 1, pmt) && pmt.manifest != nullptr) {
        pmt.status |= check(codecs_hold_text(pmt, "avc"), pmt.loglist, 4111, {});
    }
}

void check_hevc_stream(const TsElementaryStream& stream, PmtCheck& pmt) {
    if (!check_video_prsm(stream, stream.descriptors.size(), pmt) && pmt.manifest != nullptr) {
        const bool named = codecs_hold_text(pmt, "hvc1") || codecs_hold_text(pmt, "hev1");
        pmt.status |= check(named, pmt.loglist, 4112, {});
    }
}

bool is_prsm_registration(const TsDescriptor& descriptor) {
    return descriptor.tag == kTagRegistration && descriptor.length == 4 &&
           std::equal(descriptor.raw.begin() + 2, descriptor.raw.end(), "PRSM");
}

void check_private_prsm(const PrsmTsDescriptor& prsm, PmtCheck& pmt) {
    if (prsm_is_forbidden(pmt)) {
        return;
    }
    check_prsm_fields(prsm, pmt);
    if (pmt.registration) {
        pmt.status |= check(prsm.el_present_flag == 0, pmt.loglist, 4262, {});
    }
    if (pmt.prsm_on_video) {
        pmt.status |= check(prsm.el_present_flag == 1, pmt.loglist, 4263, {});
    }
}

void check_private_stream(const TsElementaryStream& stream, PmtCheck& pmt) {
    note_evaluated(4319);
    for (const auto& descriptor : stream.descriptors) {
        if (is_prsm_registration(descriptor)) {
            pmt.registration = true;
            prsm_is_forbidden(pmt);
        } else if (descriptor.tag == kTagEc3Dvb) {
            check_ec3(descriptor.ec3, pmt);
        } else if (descriptor.tag == kTagPrsm) {
            check_private_prsm(descriptor.prsm, pmt);
        } else if (descriptor.tag == kTagAc4) {
            pmt.status |= check(!pmt.context.is_hls, pmt.loglist, 4395, {});
        } else if (descriptor.tag == kTagEc3Atsc) {
            pmt.status |= Logging_err_type_check(pmt.loglist, 4319, {});
        }
        if (pmt.ended) {
            return;
        }
    }
}

struct StreamRule {
    std::int64_t stream_type;
    void (*check)(const TsElementaryStream&, PmtCheck&);
};

constexpr StreamRule kStreamRules[] = {
    {kTypeEc3, check_ec3_stream},   {kTypeAdts, check_aac_stream},
    {kTypeLatm, check_aac_stream},  {kTypeAvc, check_avc_stream},
    {kTypeHevc, check_hevc_stream}, {kTypePrivateData, check_private_stream},
};

// A manifest that speaks of the enhancement layer, or of no codec, needs to see one.
void check_prsm_is_there(PmtCheck& pmt) {
    if (pmt.manifest == nullptr) {
        return;
    }
    const bool expected =
        !pmt.manifest->codecs ||
        std::any_of(std::begin(kPrsmWords), std::end(kPrsmWords),
                    [&pmt](const char* word) { return codecs_hold_text(pmt, word); });
    if (expected) {
        pmt.status |= check(pmt.prsm_on_video || pmt.registration, pmt.loglist, 4156, {},
                            pmt.manifest->duplicate_index_text);
    }
}

}  // namespace

Status check_pmt(TsContext& context, const TsTables& tables) {
    if (!may_repeat_tables(context)) {
        return Status::kOk;
    }
    PmtCheck pmt{context, context.manifest, context.loglist};
    for (const auto& stream : tables.programs[0].streams) {
        context.repeated_work += 1 + stream.descriptors.size();
        for (const auto& rule : kStreamRules) {
            if (rule.stream_type == stream.stream_type) {
                rule.check(stream, pmt);
            }
        }
        if (pmt.ended) {
            return pmt.status;
        }
    }
    check_prsm_is_there(pmt);
    return pmt.status;
}

}  // namespace mediasplit
