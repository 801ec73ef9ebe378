#pragma once

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

}  // namespace mediasplit
