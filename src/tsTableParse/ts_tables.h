// Program tables of a transport stream and what their descriptors say (ISO/IEC 13818-1 2.4.4).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace mediasplit {

inline constexpr std::size_t kMaxTsSections = 20;
inline constexpr std::size_t kMaxTsPatEntries = 10;
inline constexpr std::size_t kMaxTsPrograms = 10;
inline constexpr std::size_t kMaxTsProgramDescriptors = 100;
inline constexpr std::size_t kMaxTsProgramStreams = 100;
inline constexpr std::size_t kMaxTsStreamDescriptors = 10;
inline constexpr std::size_t kTsSectionCapacity = 10000;

// Enhanced AC-3 descriptor in the ATSC layout (ATSC A/52 Annex G).
struct Ec3TsDescriptor {
    std::uint8_t bsid_flag = 0;
    std::uint8_t mainid_flag = 0;
    std::uint8_t asvc_flag = 0;
    std::uint8_t mixinfoexists_flag = 0;
    std::uint8_t substream1_flag = 0;
    std::uint8_t substream2_flag = 0;
    std::uint8_t substream3_flag = 0;
    std::uint8_t full_service_flag = 0;
    std::uint8_t service_type = 0;
    std::uint8_t number_of_channels = 0;
    std::uint8_t language_flag = 0;
    std::uint8_t language_flag_2 = 0;
    std::uint8_t bsid = 0;
    std::uint8_t priority = 0;
    std::uint8_t mainid = 0;
    std::uint8_t asvc = 0;
    std::uint8_t substream1 = 0;
    std::uint8_t substream2 = 0;
    std::uint8_t substream3 = 0;
    std::array<std::uint8_t, 3> language{};
    std::array<std::uint8_t, 3> language_2{};
    std::array<std::uint8_t, 3> substream1_lang{};
    std::array<std::uint8_t, 3> substream2_lang{};
    std::array<std::uint8_t, 3> substream3_lang{};
    std::uint8_t flag_ec3_extension_type_a = 0;
    std::uint8_t complexity_index_type_a = 0;
};

// Enhancement-layer video descriptor.
struct PrsmTsDescriptor {
    std::uint8_t px_version_major = 0;
    std::uint8_t px_version_minor = 0;
    std::uint8_t px_profile = 0;
    std::uint8_t px_level = 0;
    std::uint8_t rpu_present_flag = 0;
    std::uint8_t el_present_flag = 0;
    std::uint8_t bl_present_flag = 0;
    std::uint32_t dependency_pid = 0;
    std::uint8_t px_bl_signal_compatibility_id = 0;
};

// Stream types that are known (ISO/IEC 13818-1 2.4.4.9, ATSC A/53 Part 3).
enum TsStreamType : std::int64_t {
    kTypeMpeg1Video = 0x01,
    kTypeMpeg2Video = 0x02,
    kTypeMpegAudio = 0x04,
    kTypePrivateData = 0x06,
    kTypeAdts = 0x0F,
    kTypeLatm = 0x11,
    kTypeAvc = 0x1B,
    kTypeHevc = 0x24,
    kTypeAc3 = 0x81,
    kTypeEc3 = 0x87,
};

// Descriptor tags that have a meaning here.
enum TsDescriptorTag : std::int64_t {
    kTagRegistration = 0x05,
    kTagAvcVideo = 0x28,
    kTagHevcVideo = 0x38,
    kTagAc3 = 0x6A,
    kTagEc3Dvb = 0x7A,
    kTagAc4 = 0x7F,
    kTagPrsm = 0xB0,
    kTagEc3Atsc = 0xCC,
};

struct TsDescriptor {
    std::int64_t tag = 0;
    std::int64_t length = 0;
    std::string name;               // label of the tag
    std::vector<std::uint8_t> raw;  // tag, length and body as read
    Ec3TsDescriptor ec3;            // tags 0x7A and 0xCC
    PrsmTsDescriptor prsm;          // tag 0xB0
};

struct TsElementaryStream {
    std::int64_t stream_type = 0;
    std::int64_t elementary_pid = 0;
    std::int64_t es_info_length = 0;
    std::vector<TsDescriptor> descriptors;  // the first kMaxTsStreamDescriptors
};

struct TsSection {
    std::int64_t table_id = 0;
    std::uint32_t syntax_flag = 0;
    std::int64_t section_length = 0;
    std::int64_t pid = 0;
    std::array<std::uint8_t, kTsSectionCapacity> buffer{};  // from table_id on
    std::int64_t bytes_collected = 0;
    std::uint32_t complete = 0;
};

struct TsPatEntry {
    std::int64_t program_number = 0;
    std::int64_t pid = 0;
};

struct TsProgram {
    std::int64_t program_number = 0;
    std::int64_t version_number = 0;
    std::int64_t current_next_indicator = 0;
    std::int64_t section_number = 0;
    std::int64_t last_section_number = 0;
    std::int64_t pcr_pid = 0;
    std::int64_t program_info_length = 0;
    std::vector<TsDescriptor> descriptors;    // the first kMaxTsProgramDescriptors
    std::vector<TsElementaryStream> streams;  // the first kMaxTsProgramStreams
    std::int64_t pmt_pid = -1;                // -1 until the record is filled
};

// Lives for one tsdemux call.
struct TsTables {
    std::size_t section_count = 0;
    std::array<TsSection, kMaxTsSections> sections{};  // one for each PID that carried a section
    std::int64_t transport_stream_id = 0;
    std::int64_t version_number = 0;
    std::int64_t current_next_indicator = 0;
    std::int64_t section_number = 0;
    std::int64_t last_section_number = 0;
    std::int64_t pat_entry_count = 0;  // as the section length tells; only ten are kept
    std::array<TsPatEntry, kMaxTsPatEntries> pat_entries{};
    std::size_t program_count = 0;
    std::array<TsProgram, kMaxTsPrograms> programs{};
};

// The program number of the PAT entry with this PID, among the first ten: 0 and the number, or 1
// and -1.
int tsTableCheckProgramPID(std::int64_t pid, const TsTables& tables, std::int64_t& program_number);

// The section buffer of a PID: 0, or 1 and none.
int tsTableGetTableForPID(std::int64_t pid, TsTables& tables, TsSection*& section);

// Index in `programs` of the parsed program with this number, or -1.
int tsGetTablePMTindex(const TsTables& tables, std::int64_t program_number);

// Forgets what was collected.
void tsTableFlushData(TsSection& section);

}  // namespace mediasplit
