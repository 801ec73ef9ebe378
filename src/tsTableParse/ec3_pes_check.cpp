#include "src/tsTableParse/ec3_pes_check.h"

#include <algorithm>
#include <array>

#include "src/audio/ec3_extension.h"
#include "src/log/logging.h"
#include "src/tsTableParse/pes_assembly.h"

namespace mediasplit {

namespace {

// Deliberate: every frame counts as 1536 samples at 48 kHz, whatever its rate.
constexpr std::uint32_t kFrameTicks = 2880;

struct Ec3Check {
    const Ec3TsDescriptor& descriptor;
    const OapEsInfo& info;
    Loglist* loglist;
};

Status check_access_unit(const Ec3Check& at) {
    const bool whole = at.info.framesets != 0 && at.info.remainder_blocks == 0;
    return check(whole, at.loglist, 4331, {});
}

Status check_byte_order(const Ec3Check& at) {
    return check(at.info.byte_swapped == 0, at.loglist, 4335, {});
}

Status check_substream_flags(const Ec3Check& at) {
    const std::array<std::uint8_t, 3> flags = {at.descriptor.substream1_flag,
                                               at.descriptor.substream2_flag,
                                               at.descriptor.substream3_flag};
    const std::size_t last = std::min<std::size_t>(at.info.num_programs, flags.size() + 1);
    for (std::uint32_t i = 1; i < last; ++i) {
        const bool holds = at.info.program[i].substreamid != i || flags[i - 1] == 1;
        if (const Status status = check(holds, at.loglist, 4336, {}, i, 1, flags[i - 1]);
            status != Status::kOk) {
            return status;
        }
    }
    return Status::kOk;
}

Status check_channels(const Ec3Check& at) {
    note_evaluated(4338);
    const std::uint32_t acmod = at.info.program[0].acmod;
    const auto matches = [&at, acmod](bool holds, const char* field) {
        return check(holds, at.loglist, 4337, {}, field, acmod);
    };
    switch (at.descriptor.number_of_channels) {
        case 1:
            return matches(acmod == 0, "001");
        case 2:
            return matches(acmod == 2, "010");
        case 4:
            return matches(acmod > 2, "100");
        case 5: {
            const Status status = matches(acmod > 2, "101");
            const bool complete_main =
                at.descriptor.full_service_flag == 1 && at.descriptor.service_type == 0;
            return status != Status::kOk ? status : check(complete_main, at.loglist, 4334, {});
        }
        case 6:
        case 7:
            return Logging_err_type_check(at.loglist, 4338, {});
        default:
            return Status::kOk;
    }
}

Status check_extension(const Ec3Check& at) {
    const bool has_program = at.info.program[0].num_dependent != 0 || at.info.num_programs != 0;
    if (const Status status = check(has_program, at.loglist, 4325, {}); status != Status::kOk) {
        return status;
    }
    const AdditionalBsi addbsi = extension_of(at.info.program[0]);
    const std::uint32_t flag = at.descriptor.flag_ec3_extension_type_a;
    if (flag == 0) {
        return check(addbsi.bytes[0] == 0 || addbsi.length == 0, at.loglist, 4329, {});
    }
    Status status = check(addbsi.exists && addbsi.length > 1, at.loglist, 4326, {});
    if (status == Status::kOk) {
        status = check(addbsi.bytes[0] == flag, at.loglist, 4327, {}, addbsi.bytes[0], flag);
    }
    if (status == Status::kOk) {
        const std::uint32_t complexity = at.descriptor.complexity_index_type_a;
        status =
            check(addbsi.bytes[1] == complexity, at.loglist, 4328, {}, addbsi.bytes[1], complexity);
    }
    return status;
}

void note_frames(const OapEsInfo& info, TsContext& context) {
    if (const int index = tsPacketParserGetAudioStreamIdx(context, context.pid); index >= 0) {
        const auto i = static_cast<std::size_t>(index);
        context.stream_info.audio_frames[i] = info.framesets;
        context.stream_info.audio_frame_ticks[i] = kFrameTicks;
    }
}

}  // namespace

OapParserState* tsPacketParserGetOAPinfo(TsContext& context, std::int64_t pid) {
    for (std::uint32_t i = 0; i < context.ec3_parser_count; ++i) {
        if (context.ec3_parser_pids[i] == pid) {
            return context.ec3_parsers[i].get();
        }
    }
    if (context.ec3_parser_count == context.ec3_parsers.size()) {
        return nullptr;
    }
    const std::uint32_t free_place = context.ec3_parser_count++;
    context.ec3_parser_pids[free_place] = pid;
    context.ec3_parsers[free_place] = oap_es_parser_new(1);
    return context.ec3_parsers[free_place].get();
}

Status tsPacketParsePESData_EC3(const Ec3TsDescriptor& descriptor, const PesBuffer& pes,
                                TsContext& context) {
    OapEsInfo info;
    OapParserState* parser = tsPacketParserGetOAPinfo(context, context.pid);
    const bool parsed =
        parser != nullptr &&
        oap_es_parser(pes.data.data(), static_cast<std::uint32_t>(pes.bytes_collected), parser,
                      &info) == kOapGood;
    if (const Status status = check(parsed, context.loglist, 4333, {}); status != Status::kOk) {
        return status;
    }
    const Ec3Check at{descriptor, info, context.loglist};
    if (const Status status = check_access_unit(at); status != Status::kOk) {
        return status;
    }
    note_frames(info, context);
    constexpr Status (*kRules[])(const Ec3Check&) = {check_byte_order, check_substream_flags,
                                                     check_channels, check_extension};
    for (const auto rule : kRules) {
        if (const Status status = rule(at); status != Status::kOk) {
            return status;
        }
    }
    return Status::kOk;
}

}  // namespace mediasplit
