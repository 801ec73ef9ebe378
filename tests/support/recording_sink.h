#pragma once

#include <cstddef>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "src/log/findings.h"

namespace mediasplit {

/// A report with its texts copied.
struct RecordedReport {
    int id = 0;
    std::string text{};
    std::uint32_t position = 0;
    std::string element{};
    std::string attribute{};
    std::string stream{};
    Outcome outcome = Outcome::kPrinted;
};

/// Installs itself as the findings sink as long as it lives and remembers all it is told; safe to
/// use while workers run.
class RecordingSink : public FindingsSink {
public:
    RecordingSink() { set_findings_sink(this); }
    ~RecordingSink() override { set_findings_sink(nullptr); }

    void report(const Report& report) override;
    void evaluated(int id) override;
    void note(std::string_view stream, std::string_view text) override;

    [[nodiscard]] std::vector<RecordedReport> reports() const;
    /// Numbers of all reports in the order in which they came.
    [[nodiscard]] std::vector<int> ids() const;
    [[nodiscard]] std::size_t count(int id) const;
    [[nodiscard]] bool was_evaluated(int id) const;
    /// Texts of all notes, in the order in which they came.
    [[nodiscard]] std::vector<std::string> notes() const;
    void clear();

private:
    mutable std::mutex mutex_;
    std::vector<RecordedReport> reports_;
    std::set<int> evaluated_;
    std::vector<std::string> notes_;
};

}  // namespace mediasplit
