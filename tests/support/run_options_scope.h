#pragma once

#include <cstdint>
#include <memory>

#include "src/file_util/output_file.h"
#include "src/log/loglist.h"
#include "src/main/checkpoints.h"
#include "src/records/run_options.h"

namespace mediasplit {

inline void reset_run_options() {
    g_input.reset();
    g_output_dir.reset();
    g_startIndex = 0;
    g_file_format = FormatId::kUnknown;
    g_keypairs.reset();
    g_tested_duration_in_live = kDefaultLiveDuration;
    g_track_id = kNoSelection;
    g_pid = kNoSelection;
    g_check_point_num = 0;
    g_checkpoint_list = {};
}

// The run options as they are at the start of a program, before and after a test.
struct RunOptionsScope {
    RunOptionsScope() { reset_run_options(); }
    RunOptionsScope(const RunOptionsScope&) = delete;
    RunOptionsScope& operator=(const RunOptionsScope&) = delete;
    ~RunOptionsScope() { reset_run_options(); }
};

// Sets what a run into the folder "out" begins with, and makes its collector.
inline std::unique_ptr<Loglist> begin_run(FormatId format) {
    begin_outputs();
    g_output_dir = "out";
    g_file_format = format;
    binary_checkpoint_init(g_check_point_num, g_checkpoint_list.data());
    force_checkpoint_init(g_check_point_num, g_checkpoint_list.data());
    return init_loglist(static_cast<std::uint32_t>(g_check_point_num), g_checkpoint_list.data());
}

}  // namespace mediasplit
