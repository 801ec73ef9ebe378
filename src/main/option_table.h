// The words that the command line knows. What reads it, help texts, manual pages and completions
// all stand on these rows.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace mediasplit {

/// What the word behind an option is, if there is one.
enum class OptionValue : std::uint8_t { kNone, kText, kNumber, kFile, kFolder, kChoice };

struct OptionRow {
    std::string_view word{};  ///< with its dashes
    OptionValue value = OptionValue::kNone;
    std::string_view value_name{};  ///< as help texts name it, or the choices, "a|b|c"
    std::string_view help{};        ///< a sentence or two, without line ends
};

/// All that a run takes.
inline constexpr OptionRow kRunOptions[] = {
    {"-i", OptionValue::kFile, "INPUT",
     "The input: a file, an http(s) address, or for a series of MPEG-2 TS files a name with a "
     "number such as %d or %04d."},
    {"-o", OptionValue::kFolder, "FOLDER",
     "The folder of the elementary streams. It is created if its parent exists."},
    {"-s", OptionValue::kNumber, "NUMBER",
     "The first number of a series of MPEG-2 TS files; 0 unless given."},
    {"--decryption-keys", OptionValue::kText, "ID:KEY,...",
     "Pairs of key id and key, 32 hexadecimal digits each."},
    {"--track-id", OptionValue::kNumber, "ID", "Takes one track out of an MP4 file."},
    {"--pid", OptionValue::kNumber, "PID", "Takes one stream out of an MPEG-2 TS file."},
    {"--live-duration", OptionValue::kNumber, "SECONDS",
     "How long a live presentation is followed; 10 seconds unless given."},
    {"-h", OptionValue::kNone, "", "Prints version and usage."},
    {"-v", OptionValue::kNone, "", "Prints the version."},
};

/// Whether a run takes an option of this word, and whether it has a value.
constexpr bool has_run_option(std::string_view word, bool takes_value) {
    return std::any_of(std::begin(kRunOptions), std::end(kRunOptions), [=](const OptionRow& row) {
        return row.word == word && (row.value != OptionValue::kNone) == takes_value;
    });
}

}  // namespace mediasplit
