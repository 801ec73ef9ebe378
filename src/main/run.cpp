#include "src/main/run.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <memory>
#include <optional>

#include "src/file_util/output_folder.h"
#include "src/log/logging.h"
#include "src/log/rule_families.h"
#include "src/main/command_line.h"
#include "src/main/interruption.h"
#include "src/main/process.h"
#include "src/main/usage.h"
#include "src/records/run_options.h"
#include "src/util/address.h"
#include "src/util/fetcher.h"

namespace mediasplit {

namespace {

bool is_ts(FormatId format) {
    return format == FormatId::kTsSeries || format == FormatId::kTsFile;
}

// Makes the folders of the run. An exit status if that fails.
std::optional<int> prepare_folders() {
    if (is_url(*g_input) && recursive_create_path("tmp") != 0) {
        static_cast<void>(Logging_err_type_check(nullptr, 4062, {}));
        return 1;
    }
    if (!g_output_dir) {
        static_cast<void>(Logging_err_type_check(nullptr, 4007, {}));
        return 1;
    }
    const Status status = open_output_folder(*g_output_dir);
    return status == Status::kOk ? std::nullopt : std::optional(static_cast<int>(status));
}

// Tells of options that the input makes no use of. Results are dropped: a track id that can't be
// one is deliberately an error that doesn't end or fail the run.
void report_idle_options(const Loglist* loglist) {
    if (has_checkpoint_set(loglist, kAc4BroadcastRules) && g_file_format != FormatId::kDash &&
        g_file_format != FormatId::kMp4) {
        static_cast<void>(Logging_err_type_check(nullptr, 2004, {}));
    }
    if (g_track_id != kNoSelection && g_file_format != FormatId::kMp4) {
        static_cast<void>(Logging_err_type_check(nullptr, 2002, {}));
    }
    if (g_pid != kNoSelection && !is_ts(g_file_format)) {
        static_cast<void>(Logging_err_type_check(nullptr, 2003, {}));
    }
    if (g_track_id != kNoSelection && g_track_id <= 0) {
        static_cast<void>(Logging_err_type_check(nullptr, 4008, {}));
    }
}

int run_with_loglist(int parse_result, Loglist* loglist) {
    if (parse_result != 0) {
        cmdShowUsage();
        return parse_result == kNoArguments ? 0 : 1;
    }
    if (!g_input) {
        return 0;
    }
    if (const std::optional<int> exit_status = prepare_folders()) {
        return *exit_status;
    }
    report_idle_options(loglist);
    return process(nullptr, 0, loglist);
}

// Each stream of a manifest holds some files open, and there may be hundreds of streams.
void raise_open_file_limit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        // A limit that stays as it was shows as files that can't be opened.
        static_cast<void>(::setrlimit(RLIMIT_NOFILE, &limit));
    }
}

// Parsers of about half a megabyte come and go with each segment: their memory is kept for the next
// one instead of being handed back, and cleared anew, each time.
void keep_freed_memory() {
    constexpr int kLargestKept = 1'000'000;
    constexpr int kMostKept = 4 << 20;
    static_cast<void>(::mallopt(M_MMAP_THRESHOLD, kLargestKept));
    static_cast<void>(::mallopt(M_TRIM_THRESHOLD, kMostKept));
}

}  // namespace

void open_standard_descriptors() {
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = ::dup(descriptor);
    }
    if (descriptor >= 0) {
        static_cast<void>(::close(descriptor));
    }
}

int run_program(int count, const char* const* arguments) {
    open_standard_descriptors();
    prepare_for_signals();
    prepare_for_want_of_memory();
    keep_freed_memory();
    raise_open_file_limit();
    const int parse_result = cmdParse(count, arguments);
    std::unique_ptr<Loglist> loglist =
        init_loglist(static_cast<std::uint32_t>(g_check_point_num), g_checkpoint_list.data());
    urlinit();
    const int exit_status = run_with_loglist(parse_result, loglist.get());
    urluninit();
    destroy_loglist(loglist);
    return exit_status;
}

}  // namespace mediasplit
