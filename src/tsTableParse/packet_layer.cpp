#include "src/log/logging.h"
#include "src/tsTableParse/es_output.h"
#include "src/tsTableParse/pes_assembly.h"
#include "src/tsTableParse/pmt_checks.h"
#include "src/tsTableParse/section_assembly.h"
#include "src/tsTableParse/ts_demux.h"

namespace mediasplit {

namespace {

// Values of adaptation_field_control by the two header bits: reserved, payload, field, both.
constexpr std::uint32_t kControlFieldOnly = 2;
constexpr std::uint32_t kControlBoth = 3;

bool is_synchronised(const TsContext& context) {
    return context.packet.bytes[0] == kTsSyncByte;
}

int audio_index_of(const TsContext& context) {
    return tsPacketParserGetAudioStreamIdx(context, context.pid);
}

Status parse_pes_payload(TsOutputFiles& files, std::size_t offset, PesBuffer& pes,
                         std::uint32_t& pes_count, TsContext& context, const TsTables& tables) {
    context.table_kind = TsTableKind::kPes;
    const Status status = tsPacketParsePESData(files, offset, pes, context, tables);
    if (context.payload_unit_start_indicator) {
        ++pes_count;
    }
    return status;
}

Status parse_program_table(TsOutputFiles& files, std::size_t offset, std::int64_t program_number,
                           TsContext& context, TsTables& tables) {
    context.table_kind = program_number == 0 ? TsTableKind::kNetworkInformation : TsTableKind::kPmt;
    const Status status = tsTableParse(files, offset, context, tables);
    if (status != Status::kOk || context.table_kind != TsTableKind::kPmt) {
        return status;
    }
    // Deliberate: judged at every packet of a PMT, whether its section is complete or not.
    return check_pmt(context, tables);
}

void flush_all(TsOutputFiles& files, TsContext& context) {
    for (std::uint32_t i = 0; i < context.stream_info.audio_count; ++i) {
        tsPacketFlushPESData(files, context.audio_pes[i], context,
                             context.stream_info.audio_pid[i]);
    }
    tsPacketFlushPESData(files, context.video_pes, context, context.video_pid);
}

void fill_summary(const TsStreamInfo& info, TsSegmentSummary& summary) {
    summary.count = info.audio_count;
    for (std::uint32_t i = 0; i < info.audio_count; ++i) {
        summary.audio[i] = {info.audio_type[i], info.audio_first_pts[i], info.audio_end_pts[i]};
    }
    if (info.video_pes_count > 1) {
        const std::int64_t span = info.video_last_pts - info.video_first_pts;
        summary.first_video_pts = info.video_first_pts;
        summary.video_end_pts =
            info.video_last_pts + span / static_cast<std::int64_t>(info.video_pes_count - 1);
    }
}

}  // namespace

void tsPacketParseHeader(TsContext& context) {
    const auto& p = context.packet.bytes;
    context.transport_error_indicator = (p[1] & 0x80) != 0;
    context.payload_unit_start_indicator = (p[1] & 0x40) != 0;
    context.transport_priority = (p[1] & 0x20) != 0;
    context.pid = (p[1] & 0x1F) << 8 | p[2];
    context.adaptation_field_control = (p[3] >> 4) & 3U;
    context.continuity_counter = p[3] & 0x0F;
}

void tsPacketParseAdaptationField(TsContext& context) {
    const auto& p = context.packet.bytes;
    const bool has_field = (context.adaptation_field_control & kControlFieldOnly) != 0;
    context.adaptation_field_length = has_field ? p[4] : 0;
    context.pcr_flag = 0;
    context.pcr_base = 0;
    context.pcr_extension = 0;
    if (context.adaptation_field_length == 0) {
        return;
    }
    context.pcr_flag = p[5] & 0x10;
    if (context.pcr_flag != 0) {
        // Deliberate: 32-bit arithmetic loses the top bit of the base; nothing depends on it.
        const std::uint32_t base = (std::uint32_t{p[6]} << 25) + (std::uint32_t{p[7]} << 17) +
                                   (std::uint32_t{p[8]} << 9) + (std::uint32_t{p[9]} << 1) +
                                   (p[10] >> 7);
        context.pcr_base = static_cast<std::int32_t>(base);
        context.pcr_extension = ((p[10] & 1) << 8) + p[11];
    }
}

Status tsPacketParseDataByte(TsOutputFiles& files, TsContext& context, TsTables& tables) {
    context.table_kind = TsTableKind::kNothing;
    if (context.adaptation_field_control == kControlFieldOnly) {
        return Status::kOk;
    }
    std::size_t offset = 4;
    if (context.adaptation_field_control == kControlBoth) {
        offset = static_cast<std::size_t>(context.adaptation_field_length) + 5;
    }
    if (context.pid == 0) {
        context.table_kind = TsTableKind::kPat;
        return tsTableParse(files, offset, context, tables);
    }
    std::int64_t program_number = -1;
    if (tsTableCheckProgramPID(context.pid, tables, program_number) == 0) {
        return parse_program_table(files, offset, program_number, context, tables);
    }
    TsStreamInfo& info = context.stream_info;
    if (context.pid == context.video_pid) {
        return parse_pes_payload(files, offset, context.video_pes, info.video_pes_count, context,
                                 tables);
    }
    if (const int index = audio_index_of(context); index >= 0) {
        const auto i = static_cast<std::size_t>(index);
        return parse_pes_payload(files, offset, context.audio_pes[i], info.audio_pes_count[i],
                                 context, tables);
    }
    return Status::kOk;
}

Status tsProcess(TsOutputFiles& files, TsContext& context, TsTables& tables) {
    tsPacketParseHeader(context);
    tsPacketParseAdaptationField(context);
    return tsPacketParseDataByte(files, context, tables);
}

Status processTransporStream(TsContext& context, TsOutputFiles& files) {
    Status status = Status::kOk;
    const auto tables = std::make_unique<TsTables>();
    while (true) {
        // Deliberate: a packet behind a good one is taken as it is, and no byte is ever searched
        // for the sync word. Only two packets in a row without it end the run, and then nothing
        // that is under assembly is written.
        const bool was_synchronised = is_synchronised(context);
        const bool at_end = ioReadPacket(context.packet, *files.input, context.packet_count) != 0;
        if (was_synchronised && at_end) {
            break;
        }
        if (!was_synchronised && (at_end || !is_synchronised(context))) {
            return status | Logging_err_type_check(context.loglist, 4074, {});
        }
        status |= tsProcess(files, context, *tables);
    }
    flush_all(files, context);
    return status;
}

std::unique_ptr<TsContext> tsOpen(std::int64_t selected_program, ManifestContext* manifest,
                                  bool is_hls, Loglist* loglist) {
    // Not value-initialised: the PES buffers are large, and their bytes are written before use.
    auto context = std::make_unique_for_overwrite<TsContext>();
    context->selected_program = selected_program;
    context->manifest = manifest;
    context->is_hls = is_hls;
    context->loglist = loglist;
    context->video_pes.kind = 1;
    TsStreamInfo& info = context->stream_info;
    info.audio_pid.fill(-1);
    info.audio_first_pts.fill(-1);
    info.audio_last_pts.fill(-1);
    info.audio_end_pts.fill(-1);
    context->ec3_parser_pids.fill(-1);
    return context;
}

Status tsdemux(InputFile& input, const std::string& output_folder, const std::string& name_prefix,
               bool first, ManifestContext* manifest, TsSegmentSummary* summary, bool is_hls,
               Loglist* loglist, std::int64_t pid_filter, OutputRegistry* outputs) {
    TsOutputFiles files;
    files.pid_filter = pid_filter;
    files.input = &input;
    files.table.truncate = first ? 1 : 0;
    files.table.registry = outputs;
    files.output_folder = output_folder;
    files.name_prefix = name_prefix;
    const auto context = tsOpen(1, manifest, is_hls, loglist);
    Status status = processTransporStream(*context, files);
    if (status == Status::kOk && summary != nullptr) {
        fill_summary(context->stream_info, *summary);
    }
    if (!ioCloseFiles(files.table)) {
        files.status |= Status::kFailed;
    }
    return status | files.status;
}

}  // namespace mediasplit
