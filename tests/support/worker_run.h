// What tests of stream workers need around them: a working folder, a server, a clock of its own, a
// Loglist, a list for segment durations, and segments whose samples can be told apart.
#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "base/list.h"
#include "base/osal.h"
#include "src/log/loglist.h"
#include "src/records/segment_timing.h"
#include "src/util/player_clock.h"
#include "tests/support/http_server.h"
#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {

using Ids = std::vector<int>;

std::string as_text(const std::vector<std::uint8_t>& bytes);

// A fragmented presentation of one track of unknown coding, whose samples come out as they are: the
// bytes of sample `number`, those of samples `first` to `last`, its initialization section, and its
// segments of one sample of 2 s.
std::string sample_text(int number);
std::string samples(int first, int last);
std::string mp4_init();
std::string mp4_segment(int number);

// A clock that stands still but for what is slept.
struct TestClock {
    TestClock();
    TestClock(const TestClock&) = delete;
    TestClock& operator=(const TestClock&) = delete;
    ~TestClock();

    static std::atomic<std::time_t> time;
    static std::vector<std::uint32_t> sleeps;  // to be read when no worker runs

private:
    PlayerClock former_ = player_clock();
};

// Lives in a temporary working folder with empty folders "tmp" and "out".
class WorkerRun {
public:
    WorkerRun(const WorkerRun&) = delete;
    WorkerRun& operator=(const WorkerRun&) = delete;

protected:
    WorkerRun();
    ~WorkerRun();

    // Writes a file of the working folder and serves it below "/".
    void add(const std::string& name, const std::string& content);
    // Texts of all reports of an id.
    [[nodiscard]] std::vector<std::string> texts(int id) const;
    // Ids of all reports but those left out.
    [[nodiscard]] Ids ids_without(const Ids& left_out) const;
    // What was put on the list.
    std::vector<SegmentTiming> take_timing();

    TempFolder folder_;
    WorkingDirectory directory_{folder_.path()};
    HttpServer server_;
    RecordingSink sink_;
    TestClock clock_;
    std::unique_ptr<Loglist> loglist_;
    OsalContext osal_{nullptr, cb_malloc, cb_free};
    List list_;
};

}  // namespace mediasplit
