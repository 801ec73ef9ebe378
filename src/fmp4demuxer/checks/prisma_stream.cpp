#include "src/fmp4demuxer/checks/prisma_stream.h"

#include <algorithm>

#include "src/dash_reader/inherited.h"

namespace mediasplit {
namespace {

constexpr std::size_t kLongestSharedCodecs = 99;
constexpr std::size_t kLongestJoinedList = 511;

MessageValue value_of(const PrismaStream& prisma, const RuleDetail& detail, RuleValue wanted) {
    const ManifestContext* context = prisma.manifest.context;
    switch (wanted) {
        case RuleValue::kProfile:
            return make_message_value(prisma.config.profile);
        case RuleValue::kCompatibleId:
            return make_message_value(prisma.config.bl_compatible_id);
        case RuleValue::kLevel:
            return make_message_value(prisma.config.level);
        case RuleValue::kProfileText:
            return make_message_value(prisma.profile_text);
        case RuleValue::kRepresentation:
            return prisma.manifest.representation != nullptr
                       ? make_message_value(prisma.manifest.representation->id)
                       : make_message_value(std::string_view{});
        case RuleValue::kStreamIndex:
            return make_message_value(context != nullptr ? context->stream_index : 0U);
        case RuleValue::kStreamIndices:
            return context != nullptr ? make_message_value(context->duplicate_index_text)
                                      : make_message_value(std::string_view{});
        case RuleValue::kCodecs:
            return make_message_value(prisma.codecs);
        case RuleValue::kExpected:
            return make_message_value(detail.expected);
        case RuleValue::kActual:
            return make_message_value(detail.actual);
        case RuleValue::kScheme:
            return make_message_value(detail.scheme);
        case RuleValue::kExpectedNumber:
            return make_message_value(detail.expected_number);
        case RuleValue::kActualNumber:
            return make_message_value(detail.actual_number);
    }
    return {};
}

}  // namespace

const DashAdaptationSetInfo* adaptation_set_of(const ManifestRecords& records,
                                               const DashRepresentationInfo& shared) {
    const auto& sets = records.period->adaptation_sets;
    return shared.adaptation_set_index < sets.size() ? &sets[shared.adaptation_set_index] : nullptr;
}

std::string join_dash_codecs(const ManifestRecords& records) {
    std::string list(get_dash_rep_attr_str(records.representation, records.adaptation_set, "codecs")
                         .value_or(std::string_view{}));
    for (const auto& shared : records.representation->shared_init_representations) {
        const DashAdaptationSetInfo* set = adaptation_set_of(records, shared);
        if (set == nullptr) {
            continue;
        }
        list += ',';
        const auto codecs = get_dash_rep_attr_str(&shared, set, "codecs");
        if (codecs && codecs->size() <= kLongestSharedCodecs) {
            list += *codecs;
        }
        if (list.size() > kLongestJoinedList) {
            break;
        }
    }
    list.resize(std::min(list.size(), kLongestJoinedList));
    return list;
}

bool is_prisma_track(const Mp4Demuxer& demuxer, std::uint32_t stream_index) {
    return stream_index < demuxer.streams.size() &&
           demuxer.streams[stream_index]->px_config != nullptr;
}

PrismaStream::PrismaStream(const Mp4Demuxer& from, std::uint32_t stream_index)
    : demuxer(from),
      stream(*from.streams[stream_index]),
      config(*stream.px_config),
      profile_text(std::to_string(config.profile) + "." + std::to_string(config.bl_compatible_id)) {
}

Status PrismaStream::find_manifest() {
    const Status status = find_manifest_records(demuxer, manifest);
    if (status != Status::kOk) {
        return status;
    }
    if (manifest.is_dash()) {
        codecs = join_dash_codecs(manifest);
    } else if (manifest.is_hls()) {
        codecs = manifest.context->variant_codecs.value_or("").substr(0, kLongestJoinedList);
    }
    return status;
}

Status PrismaStream::check(bool holds, const RuleMessage& message, const RuleDetail& detail) const {
    if (message.number == 0) {
        return Status::kOk;
    }
    note_evaluated(message.number);
    if (holds) {
        return Status::kOk;
    }
    std::array<MessageValue, 5> values{};
    for (std::size_t i = 0; i < message.value_count; ++i) {
        values[i] = value_of(*this, detail, message.values[i]);
    }
    return report_message(loglist(), message.number, {}, values.data(), message.value_count);
}

Status PrismaStream::check(bool holds, const ManifestRule& manifest_rule,
                           const RuleDetail& detail) const {
    switch (manifest.mode) {
        case kInputDash:
            return check(holds, manifest_rule.dash, detail);
        case kInputHls:
            return check(holds, manifest_rule.variant, detail);
        case kInputHlsIframe:
            return check(holds, manifest_rule.iframe, detail);
        default:
            return Status::kOk;
    }
}

}  // namespace mediasplit
