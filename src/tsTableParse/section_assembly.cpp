#include "src/tsTableParse/section_assembly.h"

#include <algorithm>
#include <cstring>

#include "src/log/findings.h"
#include "src/tsTableParse/pmt.h"
#include "src/tsTableParse/stream_selection.h"

namespace mediasplit {

namespace {

constexpr std::uint64_t kRepeatsOfShortStreams = 1U << 18;
constexpr std::uint64_t kRepeatsOfAPacket = 8;

// The section buffer of the packet's PID, a fresh one if there is none yet; nullptr when all are
// taken.
TsSection* section_of(std::int64_t pid, TsTables& tables) {
    TsSection* section = nullptr;
    if (tsTableGetTableForPID(pid, tables, section) == 0) {
        return section;
    }
    if (tables.section_count == tables.sections.size()) {
        return nullptr;
    }
    section = &tables.sections[tables.section_count++];
    section->pid = pid;
    tsTableFlushData(*section);
    return section;
}

// Deliberate: the pointer field is read on every packet, a new start doesn't begin the collection
// anew, and `section_length` bytes are collected from the table id on, which leaves out the last
// three bytes of the CRC. Sections are expected to fit one packet.
void collect(std::size_t offset, const TsContext& context, TsSection& section) {
    const std::size_t start = offset + context.byte_at(offset);
    if (context.payload_unit_start_indicator) {
        const std::uint8_t flags = context.byte_at(start + 2);
        section.table_id = context.byte_at(start + 1);
        section.syntax_flag = (flags >> 6) & 1U;
        section.section_length = (flags & 0x0F) << 8 | context.byte_at(start + 3);
    }
    const std::int64_t wanted = section.section_length - section.bytes_collected;
    const auto available = static_cast<std::int64_t>(
        start + 1 < kTransportPacketSize ? kTransportPacketSize - start - 1 : 0);
    const std::int64_t taken = std::clamp<std::int64_t>(wanted, 0, available);
    if (taken > 0) {
        std::memcpy(section.buffer.data() + section.bytes_collected,
                    context.packet.bytes.data() + start + 1, static_cast<std::size_t>(taken));
        section.bytes_collected += taken;
    }
    // A section that never had its start has no length yet, so it can't be complete.
    const bool has_length = section.section_length > 0 || context.payload_unit_start_indicator;
    if (has_length && section.bytes_collected >= section.section_length) {
        section.complete = 1;
    }
}

bool is_known_pmt(std::int64_t pid, const TsTables& tables) {
    return std::any_of(tables.programs.begin(), tables.programs.end(),
                       [pid](const TsProgram& program) { return program.pmt_pid == pid; });
}

// Reads a PMT the first time that its PID has one; later versions are not looked at.
Status add_program(const TsSection& section, TsContext& context, TsTables& tables) {
    if (is_known_pmt(context.pid, tables) || tables.program_count == tables.programs.size()) {
        return Status::kOk;
    }
    if (!may_repeat_tables(context)) {
        return Status::kRuleBroken;
    }
    TsProgram program;
    const Status status = tsTableParsePMT(context, program, section);
    if (status != Status::kOk) {
        context.repeated_work += static_cast<std::uint64_t>(section.bytes_collected);
    } else {
        program.pmt_pid = context.pid;
        tables.programs[tables.program_count++] = std::move(program);
    }
    return status;
}

Status parse_pmt_section(TsOutputFiles& files, TsSection& section, TsContext& context,
                         TsTables& tables) {
    if (const Status status = add_program(section, context, tables); status != Status::kOk) {
        // Deliberate: the section stays complete and is judged again at the next packet.
        return status;
    }
    if (tables.pat_entry_count == 1) {
        context.selected_program = tables.pat_entries[0].program_number;
    }
    Status status = Status::kOk;
    if (const int index = tsGetTablePMTindex(tables, context.selected_program); index >= 0) {
        for (const auto& stream : tables.programs[static_cast<std::size_t>(index)].streams) {
            status |= select_stream(files, stream, context);
        }
    }
    tsTableFlushData(section);
    return status;
}

}  // namespace

bool may_repeat_tables(const TsContext& context) {
    const std::uint64_t allowed = kRepeatsOfShortStreams + kRepeatsOfAPacket * context.packet_count;
    if (context.repeated_work <= allowed) {
        return true;
    }
    note_remark("Program tables were no longer judged: they came too often for their size.");
    return false;
}

int tsTableCheckProgramPID(std::int64_t pid, const TsTables& tables, std::int64_t& program_number) {
    const auto count = std::clamp<std::int64_t>(tables.pat_entry_count, 0, kMaxTsPatEntries);
    for (std::int64_t i = 0; i < count; ++i) {
        const TsPatEntry& entry = tables.pat_entries[static_cast<std::size_t>(i)];
        if (entry.pid == pid) {
            program_number = entry.program_number;
            return 0;
        }
    }
    program_number = -1;
    return 1;
}

int tsTableGetTableForPID(std::int64_t pid, TsTables& tables, TsSection*& section) {
    for (std::size_t i = 0; i < tables.section_count; ++i) {
        if (tables.sections[i].pid == pid) {
            section = &tables.sections[i];
            return 0;
        }
    }
    section = nullptr;
    return 1;
}

int tsGetTablePMTindex(const TsTables& tables, std::int64_t program_number) {
    for (std::size_t i = 0; i < tables.program_count; ++i) {
        if (tables.programs[i].program_number == program_number) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void tsTableFlushData(TsSection& section) {
    section.bytes_collected = 0;
    section.complete = 0;
}

void tsTableParsePAT(TsTables& tables, const TsSection& section) {
    // The bytes of the section; zeros behind what was collected.
    const auto at = [&section](std::size_t index) -> std::int64_t {
        return static_cast<std::int64_t>(index) < section.bytes_collected ? section.buffer[index]
                                                                          : 0;
    };
    tables.transport_stream_id = at(3) << 8 | at(4);
    tables.version_number = (at(5) >> 1) & 0x1F;
    tables.current_next_indicator = at(5) & 1;
    tables.section_number = at(6);
    tables.last_section_number = at(7);
    tables.pat_entry_count = (section.section_length - 9) / 4;
    const auto kept = std::clamp<std::int64_t>(tables.pat_entry_count, 0, kMaxTsPatEntries);
    if (kept < tables.pat_entry_count) {
        note_remark("The transport stream has more than 10 programs; the others were dropped.");
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(kept); ++i) {
        const std::size_t entry = 8 + 4 * i;
        tables.pat_entries[i] = {at(entry) << 8 | at(entry + 1),
                                 (at(entry + 2) & 0x1F) << 8 | at(entry + 3)};
    }
}

Status tsTableParse(TsOutputFiles& files, std::size_t offset, TsContext& context,
                    TsTables& tables) {
    TsSection* section = section_of(context.pid, tables);
    if (section == nullptr) {
        return Status::kOk;
    }
    collect(offset, context, *section);
    if (section->complete == 0) {
        return Status::kOk;
    }
    if (context.table_kind == TsTableKind::kPmt) {
        return parse_pmt_section(files, *section, context, tables);
    }
    if (context.table_kind == TsTableKind::kPat) {
        tsTableParsePAT(tables, *section);
    }
    tsTableFlushData(*section);
    return Status::kOk;
}

}  // namespace mediasplit
