// How far a run is, on a terminal while it goes on.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

#include "src/log/output.h"
#include "src/report/findings_collector.h"

namespace mediasplit::report {

/// A line for each stream, with its segments, written bytes and findings. `columns` is the width of
/// the terminal, `rows` how many lines there may be; streams beyond them are counted in the last.
std::string live_text(const std::vector<StreamProgress>& streams, std::size_t columns,
                      std::size_t rows);

/// Keeps such lines at the lower end of the terminal on standard error, on a thread of its own,
/// from the beginning to the end of its life; what the run prints stands above them.
class LiveLines : public OutputObserver {
public:
    explicit LiveLines(const FindingsCollector& collector);
    ~LiveLines() override;

    void before_write() override;
    void after_write() override;

    /// Whether standard error is a terminal that can show them.
    static bool can_be_shown();

private:
    void keep_up();
    void erase();

    const FindingsCollector& collector_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool is_over_ = false;
    std::size_t shown_ = 0;  // lines on the terminal
    std::thread thread_;
};

}  // namespace mediasplit::report
