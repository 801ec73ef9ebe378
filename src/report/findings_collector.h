// Gathers what a run tells while it works.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "src/log/catalogue.h"
#include "src/log/findings.h"
#include "src/report/findings_report.h"

namespace mediasplit::report {

/// What a collector keeps at most. Beyond it, the further texts of a message in a stream become one
/// entry that counts them.
struct CollectorLimits {
    std::size_t texts_of_a_message = 1000;       ///< for each stream
    std::size_t bytes = std::size_t{64} << 20U;  ///< of all texts together
    std::size_t notes = 1000;                    ///< further ones are dropped
};

/// How far a stream has come.
struct StreamProgress {
    std::string name{};
    std::uint64_t segments = 0;
    std::uint64_t findings = 0;  ///< reports, repetitions included
    std::vector<std::string> outputs{};
};

/// A findings sink that merges reports of the same message, text and place and counts them: what it
/// holds grows with the number of different findings, within `CollectorLimits`. All its operations
/// may be called by any number of threads at the same time.
class FindingsCollector : public FindingsSink {
public:
    explicit FindingsCollector(const CollectorLimits& limits = {});

    void report(const Report& report) override;
    void evaluated(int id) override;
    void stream_announced(std::string_view stream) override;
    void output_opened(std::string_view stream, std::string_view path) override;
    void segment_done(std::string_view stream) override;
    void note(std::string_view stream, std::string_view text) override;

    /// How far the streams are, in the order of the manifest.
    [[nodiscard]] std::vector<StreamProgress> progress() const;

    /// All that was gathered. The sizes of the outputs are those of the files as they are now; an
    /// empty one gets a note.
    [[nodiscard]] FindingsReport take_report(std::string input, bool failed);

private:
    struct Place {
        std::size_t stream = 0;
        int id = 0;
        std::string_view element{};
        std::string_view attribute{};
        std::string_view text{};

        bool operator==(const Place&) const = default;
    };
    struct PlaceHash {
        std::size_t operator()(const Place& place) const;
    };
    struct MessageTexts {
        std::size_t kept = 0;
        Finding* further = nullptr;
    };
    struct StreamState {
        Stream stream{};
        std::uint64_t segments = 0;
        std::uint64_t reports = 0;
        std::unordered_set<std::string> paths{};
    };
    using NoteKey = std::pair<std::size_t, std::string>;

    StreamState& stream_at(std::string_view name, std::size_t& index);
    Finding& entry_of(const Place& place);
    [[nodiscard]] std::size_t size_of(const Place& place) const;
    Finding& keep(const Place& place);
    void add_note(std::size_t stream, std::string_view text);

    const CollectorLimits limits_;
    mutable std::mutex mutex_;
    // Deques keep what they hold in place: keys and pointers into them stay valid.
    std::deque<StreamState> streams_;
    std::unordered_map<std::string_view, std::size_t> stream_index_;
    std::deque<Finding> findings_;
    std::unordered_map<Place, Finding*, PlaceHash> entries_;
    std::map<std::pair<std::size_t, int>, MessageTexts> messages_;
    std::size_t bytes_ = 0;
    std::deque<Note> notes_;
    std::map<NoteKey, Note*> note_index_;
    std::array<std::atomic<bool>, kCatalogueRowCount> evaluated_{};
};

}  // namespace mediasplit::report
