// The options of a run, written once while the command line is read, before any worker starts, and
// only read afterwards.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "src/log/loglist.h"

namespace mediasplit {

// Kind of the input, told by the extension of its name.
enum class FormatId : std::int32_t {
    kUnknown = -1,
    kHls = 1,
    kTsSeries = 2,
    kTsFile = 3,
    kDash = 4,
    kMp4 = 5,
    kEac3 = 6,
    kAc4 = 7,
};

inline constexpr std::size_t kCheckpointCapacity = 1000;
inline constexpr double kDefaultLiveDuration = 10.0;
// Value of `g_track_id` and `g_pid` without a selection.
inline constexpr std::int32_t kNoSelection = -1;

inline std::optional<std::string> g_input;       // file name, template of a series, or address
inline std::optional<std::string> g_output_dir;  // folder of the elementary streams
inline std::uint32_t g_startIndex = 0;           // first number of a TS series
inline FormatId g_file_format = FormatId::kUnknown;
inline std::optional<std::string> g_keypairs;                    // "keyID:key,...", as given
inline double g_tested_duration_in_live = kDefaultLiveDuration;  // seconds
inline std::int32_t g_track_id = kNoSelection;
inline std::int32_t g_pid = kNoSelection;
inline std::int32_t g_check_point_num = 0;  // entries of the list below
inline std::array<CheckpointText, kCheckpointCapacity> g_checkpoint_list{};

}  // namespace mediasplit
