#include "src/report/findings_report.h"

#include <numeric>

#include "src/log/catalogue.h"

namespace mediasplit::report {

const CatalogueRow& row_of(const Finding& finding) {
    static constexpr CatalogueRow kNoRow{};
    const CatalogueRow* row = find_catalogue_row(finding.id);
    return row == nullptr ? kNoRow : *row;
}

std::uint64_t count_from(const FindingsReport& report, Level level) {
    std::uint64_t count = 0;
    for (const Stream& stream : report.streams) {
        count = std::accumulate(stream.counts.begin() + static_cast<std::ptrdiff_t>(level),
                                stream.counts.end(), count);
    }
    return count;
}

std::vector<std::vector<const Finding*>> findings_of_streams(const FindingsReport& report) {
    std::vector<std::vector<const Finding*>> found(report.streams.size());
    for (const Finding& finding : report.findings) {
        found[finding.stream].push_back(&finding);
    }
    return found;
}

FindingsReport with_level(FindingsReport report, Level level) {
    std::erase_if(report.findings,
                  [level](const Finding& finding) { return level_of(row_of(finding)) < level; });
    return report;
}

}  // namespace mediasplit::report
