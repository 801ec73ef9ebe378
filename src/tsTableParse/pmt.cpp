#include "src/tsTableParse/pmt.h"

#include <algorithm>
#include <array>

#include "src/log/logging.h"
#include "src/tsTableParse/descriptors.h"
#include "src/tsTableParse/tree_fields.h"

namespace mediasplit {

namespace {

constexpr std::array<std::int64_t, 10> kKnownStreamTypes = {
    kTypeMpeg1Video, kTypeMpeg2Video, kTypeMpegAudio, kTypePrivateData, kTypeAdts,
    kTypeLatm,       kTypeAvc,        kTypeHevc,      kTypeAc3,         kTypeEc3};

// Reads the descriptors that fill `length` bytes and keeps the first `limit` of them. The first one
// that is beyond use ends the reading with its result.
Status read_descriptors(SectionBytes bytes, std::int64_t length, std::size_t limit, Ezxml* tree,
                        Loglist* loglist, std::vector<TsDescriptor>& descriptors) {
    std::size_t position = 0;
    while (static_cast<std::int64_t>(position) < length) {
        TsDescriptor descriptor;
        std::size_t consumed = 0;
        const Status status = tsTableParseDescriptor(bytes.from(position), descriptor, consumed,
                                                     add_element(tree, "descriptor"), loglist);
        if (status != Status::kOk) {
            return status;
        }
        if (descriptors.size() < limit) {
            descriptors.push_back(std::move(descriptor));
        }
        position += consumed;
    }
    return Status::kOk;
}

Status read_stream(SectionBytes bytes, Ezxml* tree, Loglist* loglist, TsElementaryStream& stream) {
    stream.stream_type = bytes[0];
    stream.elementary_pid = bytes.field(1, 13);
    stream.es_info_length = bytes.field(3, 12);
    add_field(tree, "streamType", stream.stream_type);
    add_field(tree, "elementaryPID", stream.elementary_pid);
    add_field(tree, "esInfoLength", stream.es_info_length);
    const bool is_known = std::find(kKnownStreamTypes.begin(), kKnownStreamTypes.end(),
                                    stream.stream_type) != kKnownStreamTypes.end();
    const Status status = check(is_known, loglist, 2022, {}, stream.stream_type);
    return status | read_descriptors(bytes.from(5), stream.es_info_length, kMaxTsStreamDescriptors,
                                     tree, loglist, stream.descriptors);
}

}  // namespace

Status tsTableParsePMT(const TsContext& context, TsProgram& program, const TsSection& section,
                       Ezxml* tree) {
    const SectionBytes bytes{
        {section.buffer.data(), static_cast<std::size_t>(section.bytes_collected)}};
    program.program_number = bytes.field(3, 16);
    program.version_number = (bytes[5] >> 1) & 0x1F;
    program.current_next_indicator = bytes[5] & 1;
    program.section_number = bytes[6];
    program.last_section_number = bytes[7];
    program.pcr_pid = bytes.field(8, 13);
    program.program_info_length = bytes.field(10, 12);
    Status status =
        read_descriptors(bytes.from(12), program.program_info_length, kMaxTsProgramDescriptors,
                         tree, context.loglist, program.descriptors);

    auto position = static_cast<std::size_t>(program.program_info_length) + 12;
    while (status == Status::kOk &&
           static_cast<std::int64_t>(position) < section.section_length - 1) {
        TsElementaryStream stream;
        status =
            read_stream(bytes.from(position), add_element(tree, "stream"), context.loglist, stream);
        position += 5 + static_cast<std::size_t>(stream.es_info_length);
        if (program.streams.size() < kMaxTsProgramStreams) {
            program.streams.push_back(std::move(stream));
        } else {
            note_remark("A program has more than 100 streams; the others were dropped.");
        }
    }
    const auto add = [tree](const char* name, std::int64_t value) { add_field(tree, name, value); };
    add("programNumber", program.program_number);
    add("versionNumber", program.version_number);
    add("currentNextIndicator", program.current_next_indicator);
    add("sectionNumber", program.section_number);
    add("lastSectionNumber", program.last_section_number);
    add("PCR_PID", program.pcr_pid);
    add("programInfoLength", program.program_info_length);
    add("descriptorCount", static_cast<std::int64_t>(program.descriptors.size()));
    add("streamCount", static_cast<std::int64_t>(program.streams.size()));
    return status;
}

}  // namespace mediasplit
