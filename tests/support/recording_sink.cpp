#include "tests/support/recording_sink.h"

#include <algorithm>

namespace mediasplit {

void RecordingSink::report(const Report& report) {
    const std::scoped_lock lock(mutex_);
    reports_.push_back({report.id, std::string(report.text), report.context.position,
                        std::string(report.context.element), std::string(report.context.attribute),
                        std::string(report.stream), report.outcome});
}

void RecordingSink::evaluated(int id) {
    const std::scoped_lock lock(mutex_);
    evaluated_.insert(id);
}

void RecordingSink::note(std::string_view /*stream*/, std::string_view text) {
    const std::scoped_lock lock(mutex_);
    notes_.emplace_back(text);
}

std::vector<std::string> RecordingSink::notes() const {
    const std::scoped_lock lock(mutex_);
    return notes_;
}

std::vector<RecordedReport> RecordingSink::reports() const {
    const std::scoped_lock lock(mutex_);
    return reports_;
}

std::vector<int> RecordingSink::ids() const {
    const std::scoped_lock lock(mutex_);
    std::vector<int> result;
    result.reserve(reports_.size());
    for (const RecordedReport& report : reports_) {
        result.push_back(report.id);
    }
    return result;
}

std::size_t RecordingSink::count(int id) const {
    const std::scoped_lock lock(mutex_);
    return static_cast<std::size_t>(
        std::count_if(reports_.begin(), reports_.end(),
                      [id](const RecordedReport& report) { return report.id == id; }));
}

bool RecordingSink::was_evaluated(int id) const {
    const std::scoped_lock lock(mutex_);
    return evaluated_.count(id) != 0;
}

void RecordingSink::clear() {
    const std::scoped_lock lock(mutex_);
    reports_.clear();
    evaluated_.clear();
}

}  // namespace mediasplit
