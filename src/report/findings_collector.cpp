#include "src/report/findings_collector.h"

#include <filesystem>
#include <iterator>
#include <system_error>

namespace mediasplit::report {

namespace {

std::uint64_t size_of_file(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<std::uint64_t>(size);
}

std::string kind_of_file(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string() : std::string(name.substr(dot + 1));
}

}  // namespace

std::size_t FindingsCollector::PlaceHash::operator()(const Place& place) const {
    constexpr std::size_t kFactor = 1099511628211ULL;
    std::size_t hash = place.stream * kFactor + static_cast<std::size_t>(place.id);
    for (const std::string_view text : {place.element, place.attribute, place.text}) {
        hash = hash * kFactor ^ std::hash<std::string_view>{}(text);
    }
    return hash;
}

FindingsCollector::FindingsCollector(const CollectorLimits& limits) : limits_(limits) {
    std::size_t main = 0;
    stream_at("", main);
}

FindingsCollector::StreamState& FindingsCollector::stream_at(std::string_view name,
                                                             std::size_t& index) {
    if (const auto found = stream_index_.find(name); found != stream_index_.end()) {
        index = found->second;
        return streams_[index];
    }
    index = streams_.size();
    StreamState& state = streams_.emplace_back();
    state.stream.name = name;
    stream_index_.emplace(state.stream.name, index);
    return state;
}

// The name of the stream stands beside each finding in most reports, so it counts each time.
std::size_t FindingsCollector::size_of(const Place& place) const {
    return streams_[place.stream].stream.name.size() + place.element.size() +
           place.attribute.size() + place.text.size();
}

Finding& FindingsCollector::keep(const Place& place) {
    bytes_ += size_of(place);
    Finding& finding = findings_.emplace_back();
    finding.id = place.id;
    finding.stream = place.stream;
    finding.element = place.element;
    finding.attribute = place.attribute;
    finding.text = place.text;
    ++streams_[place.stream].stream.counts[static_cast<std::size_t>(level_of(row_of(finding)))];
    return finding;
}

Finding& FindingsCollector::entry_of(const Place& place) {
    if (const auto found = entries_.find(place); found != entries_.end()) {
        return *found->second;
    }
    MessageTexts& texts = messages_[{place.stream, place.id}];
    if (texts.kept < limits_.texts_of_a_message && bytes_ + size_of(place) <= limits_.bytes) {
        ++texts.kept;
        Finding& finding = keep(place);
        entries_.emplace(
            Place{place.stream, place.id, finding.element, finding.attribute, finding.text},
            &finding);
        return finding;
    }
    if (texts.further == nullptr) {
        texts.further =
            &keep({place.stream, place.id, {}, {}, find_catalogue_row(place.id)->message});
        texts.further->stands_for_more = true;
    }
    return *texts.further;
}

void FindingsCollector::report(const Report& report) {
    const CatalogueRow* row = find_catalogue_row(report.id);
    if (row == nullptr || !is_finding(*row) || report.outcome == Outcome::kGated) {
        return;
    }
    const std::lock_guard lock(mutex_);
    std::size_t index = 0;
    ++stream_at(report.stream, index).reports;
    ++entry_of({index, report.id, report.context.element, report.context.attribute, report.text})
          .count;
}

void FindingsCollector::evaluated(int id) {
    const int index = catalogue_index(id);
    if (index < 0) {
        return;
    }
    // Read first: memory that all threads only read stays with all of them.
    std::atomic<bool>& flag = evaluated_[static_cast<std::size_t>(index)];
    if (!flag.load(std::memory_order_relaxed)) {
        flag.store(true, std::memory_order_relaxed);
    }
}

void FindingsCollector::stream_announced(std::string_view stream) {
    const std::lock_guard lock(mutex_);
    std::size_t index = 0;
    stream_at(stream, index);
}

void FindingsCollector::output_opened(std::string_view stream, std::string_view path) {
    const std::lock_guard lock(mutex_);
    std::size_t index = 0;
    StreamState& state = stream_at(stream, index);
    if (state.paths.emplace(path).second) {
        state.stream.outputs.push_back({std::string(path), kind_of_file(path), 0});
    }
}

void FindingsCollector::segment_done(std::string_view stream) {
    const std::lock_guard lock(mutex_);
    std::size_t index = 0;
    ++stream_at(stream, index).segments;
}

void FindingsCollector::note(std::string_view stream, std::string_view text) {
    const std::lock_guard lock(mutex_);
    std::size_t index = 0;
    stream_at(stream, index);
    add_note(index, text);
}

void FindingsCollector::add_note(std::size_t stream, std::string_view text) {
    NoteKey key(stream, text);
    if (const auto found = note_index_.find(key); found != note_index_.end()) {
        ++found->second->count;
        return;
    }
    const std::size_t size = streams_[stream].stream.name.size() + text.size();
    if (notes_.size() < limits_.notes && bytes_ + size <= limits_.bytes) {
        bytes_ += size;
        note_index_.emplace(std::move(key),
                            &notes_.emplace_back(Note{stream, std::string(text), 1}));
    }
}

std::vector<StreamProgress> FindingsCollector::progress() const {
    const std::lock_guard lock(mutex_);
    std::vector<StreamProgress> result;
    for (const StreamState& state : streams_) {
        StreamProgress& stream = result.emplace_back();
        stream.name = state.stream.name;
        stream.segments = state.segments;
        stream.findings = state.reports;
        for (const Output& output : state.stream.outputs) {
            stream.outputs.push_back(output.file);
        }
    }
    return result;
}

FindingsReport FindingsCollector::take_report(std::string input, bool failed) {
    const std::lock_guard lock(mutex_);
    FindingsReport result;
    result.input = std::move(input);
    result.failed = failed;
    for (std::size_t i = 0; i < streams_.size(); ++i) {
        Stream& stream = result.streams.emplace_back(streams_[i].stream);
        for (Output& output : stream.outputs) {
            output.bytes = size_of_file(output.file);
            if (output.bytes == 0) {
                add_note(i, "Nothing was written to " + output.file + ": its stream gave no data.");
            }
        }
    }
    result.findings.assign(findings_.begin(), findings_.end());
    result.notes.assign(notes_.begin(), notes_.end());
    for (const CatalogueTable& table : kCatalogueTables) {
        for (int i = 0; i < table.row_count; ++i) {
            const CatalogueRow& row = table.rows[i];
            if (is_rule(row) && evaluated_[static_cast<std::size_t>(catalogue_index(row.id))]) {
                result.evaluated.push_back(row.id);
            }
        }
    }
    return result;
}

}  // namespace mediasplit::report
