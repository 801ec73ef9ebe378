// State of one transport stream run: the current packet, PES packets under assembly, output files.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "oapinfolib/src/oapinfo_api.h"
#include "src/commonfileio/packet_reader.h"
#include "src/file_util/output_table.h"
#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/records/manifest_context.h"
#include "src/records/ts_segment_summary.h"

namespace mediasplit {

inline constexpr std::uint8_t kTsSyncByte = 0x47;
inline constexpr std::size_t kMaxTsAudioStreams = kTsAudioSummaries;
inline constexpr std::int64_t kPesCapacity = 1000000;

// One PES packet under assembly.
struct PesBuffer {
    std::array<std::uint8_t, kPesCapacity> data;  // left as it is until bytes arrive
    std::int64_t bytes_collected = 0;
    std::int64_t payload_target = 0;  // bytes expected; 0 when idle
    std::int64_t pes_packet_length = 0;
    std::int64_t stream_id = 0;
    std::int64_t header_data_length = 0;
    std::uint32_t complete = 0;  // payload_target was reached
    std::uint32_t idle = 1;
    std::int64_t pts_dts_flags = 0;
    std::int64_t pts = -1;   // -1 if absent
    std::int64_t dts = 0;    // kept from the last packet that had one
    std::uint32_t kind = 0;  // 0 audio, 1 video
    std::int64_t total_bytes = 0;
};

// What is known of the selected streams; arrays in the order of discovery.
struct TsStreamInfo {
    std::array<std::int32_t, kMaxTsAudioStreams> audio_pid{};  // -1 when unused
    std::array<std::uint32_t, kMaxTsAudioStreams> audio_type{};
    std::uint32_t audio_count = 0;
    std::array<std::uint32_t, kMaxTsAudioStreams> audio_pes_count{};
    // Whole frames of the last PES packet that was checked, and ticks of one of them.
    std::array<std::uint32_t, kMaxTsAudioStreams> audio_frames{};
    std::array<std::uint32_t, kMaxTsAudioStreams> audio_frame_ticks{};
    std::array<std::int64_t, kMaxTsAudioStreams> audio_first_pts{};
    std::array<std::int64_t, kMaxTsAudioStreams> audio_last_pts{};
    std::array<std::int64_t, kMaxTsAudioStreams> audio_end_pts{};
    std::int64_t video_first_pts = -1;
    std::int64_t video_last_pts = -1;
    std::uint32_t video_pes_count = 0;
};

// Output files of one tsdemux call.
struct TsOutputFiles {
    std::int64_t pid_filter = -1;  // only this PID is written; -1 for all
    InputFile* input = nullptr;
    OutputTable table;  // audio is kind 1, video kind 2
    std::string output_folder;
    std::string name_prefix;
    Status status = Status::kOk;  // kFailed once a file couldn't be opened or written
};

// Where a packet was routed to.
enum class TsTableKind : std::uint8_t { kNothing, kPes, kPat, kPmt, kNetworkInformation };

struct TsContext {
    TransportPacket packet;
    std::uint64_t packet_count = 0;
    TsTableKind table_kind = TsTableKind::kNothing;
    std::int64_t selected_program = 1;
    bool transport_error_indicator = false;  // stored, never acted on
    bool payload_unit_start_indicator = false;
    bool transport_priority = false;  // stored, never acted on
    std::int64_t pid = 0;
    std::uint32_t adaptation_field_control = 0;
    std::uint32_t continuity_counter = 0;  // stored, never compared
    std::int64_t adaptation_field_length = 0;
    std::int64_t pcr_flag = 0;
    std::int64_t pcr_base = 0;
    std::int64_t pcr_extension = 0;
    std::array<PesBuffer, kMaxTsAudioStreams> audio_pes;
    PesBuffer video_pes;
    std::int64_t video_pid = -1;
    TsStreamInfo stream_info;
    bool is_hls = false;
    std::array<OapParser, kMaxTsAudioStreams> ec3_parsers{};
    std::uint32_t ec3_parser_count = 0;
    std::array<std::int64_t, kMaxTsAudioStreams> ec3_parser_pids{};
    std::uint64_t repeated_work = 0;  // see may_repeat_tables
    ManifestContext* manifest = nullptr;
    Loglist* loglist = nullptr;

    // The byte of the packet at `index`, 0 behind its end.
    [[nodiscard]] std::uint8_t byte_at(std::size_t index) const {
        return index < kTransportPacketSize ? packet.bytes[index] : std::uint8_t{0};
    }
};

// False, with a note, once tables were gone through again for longer than the packets so far
// warrant: refused tables and the rules on programs are, at packets of their PID, so that a large
// table and many small packets could take any time. Sound streams stay far below. What a repetition
// goes through, in bytes or descriptors, is added to `repeated_work` by its caller.
[[nodiscard]] bool may_repeat_tables(const TsContext& context);

}  // namespace mediasplit
