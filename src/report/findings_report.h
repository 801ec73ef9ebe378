// What a run found, as the writers take it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "src/report/rule_class.h"

namespace mediasplit::report {

/// Reports of one message with the same text, at the same place of the same stream.
struct Finding {
    int id = 0;
    std::size_t stream = 0;   ///< place in `FindingsReport::streams`
    std::string element{};    ///< identity of the manifest element, or empty
    std::string attribute{};  ///< name of the attribute, or empty
    std::string text{};       ///< the message with its values
    std::uint64_t count = 0;  ///< how often it was reported
    /// Stands for all further texts of its message in its stream, which were not kept; `text` is
    /// the message as the catalogue has it.
    bool stands_for_more = false;
};

struct Output {
    std::string file{};  ///< path as it was opened
    std::string kind{};  ///< extension of the name, without the "."
    std::uint64_t bytes = 0;
};

/// Something worth knowing that is no message of the catalogue.
struct Note {
    std::size_t stream = 0;
    std::string text{};
    std::uint64_t count = 0;
};

struct Stream {
    std::string name{};  ///< address of the playlist, id of the Representation, "" for the main one
    std::vector<Output> outputs{};
    std::array<std::uint64_t, kLevelCount> counts{};  ///< findings of each level, repetitions once
};

/// Texts are as the run gave them: not all of them need be UTF-8.
struct FindingsReport {
    std::string input{};
    bool failed = false;
    std::vector<Stream> streams{};    ///< the main one first, then in the order of the manifest
    std::vector<Finding> findings{};  ///< in order of first appearance
    std::vector<int> evaluated{};     ///< numbers of the rules that were tested, ascending
    std::vector<Note> notes{};        ///< in order of first appearance
};

/// The catalogue row of a finding.
const CatalogueRow& row_of(const Finding& finding);

/// How many findings of `level` or above there are.
std::uint64_t count_from(const FindingsReport& report, Level level);

/// The findings of each stream, in their order.
std::vector<std::vector<const Finding*>> findings_of_streams(const FindingsReport& report);

/// A report without the findings below `level`. What the streams count stays as it is.
FindingsReport with_level(FindingsReport report, Level level);

}  // namespace mediasplit::report
