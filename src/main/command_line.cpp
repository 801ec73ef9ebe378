#include "src/main/command_line.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "base/ascii.h"
#include "src/log/logging.h"
#include "src/main/checkpoints.h"
#include "src/main/input_format.h"
#include "src/main/option_table.h"
#include "src/main/usage.h"
#include "src/records/run_options.h"
#include "src/util/text.h"

namespace mediasplit {

namespace {

enum class After : std::uint8_t {
    kGoOn,
    kReturnStatus,  // reading ends with the status so far
    kReturnZero,    // reading ends with 0, whatever was raised
};

struct ParseState {
    Status status = Status::kOk;
    bool has_start_index = false;
};

// `value` is the next word, nullptr if there is none or the option takes none.
using OptionHandler = After (*)(ParseState& state, const char* value);

std::optional<std::string> text_or_none(const char* value) {
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

// Converts like strtol and keeps the low 32 bits. Without a value the selection stays as it was.
void set_selection(std::int32_t& selection, const char* value) {
    if (value != nullptr) {
        selection = static_cast<std::int32_t>(std::strtol(value, nullptr, 10));
    }
}

After take_input(ParseState& /*state*/, const char* value) {
    g_input = text_or_none(value);
    return After::kGoOn;
}

After take_output_dir(ParseState& /*state*/, const char* value) {
    g_output_dir = text_or_none(value);
    return After::kGoOn;
}

After take_start_index(ParseState& state, const char* value) {
    if (value == nullptr) {
        state.status |= Logging_err_type_check(nullptr, 4005, {});
        return After::kReturnStatus;
    }
    state.has_start_index = true;
    const std::string_view text = value;
    const auto bad = std::count_if(text.begin(), text.end(), [](char c) { return !is_digit(c); });
    for (auto i = bad; i > 0; --i) {
        state.status |= Logging_err_type_check(nullptr, 4006, {});
    }
    if (bad == 0) {
        g_startIndex = static_cast<std::uint32_t>(std::strtoul(value, nullptr, 10));
    }
    return After::kGoOn;
}

After take_decryption_keys(ParseState& /*state*/, const char* value) {
    g_keypairs = text_or_none(value);
    return After::kGoOn;
}

After take_track_id(ParseState& /*state*/, const char* value) {
    set_selection(g_track_id, value);
    return After::kGoOn;
}

After take_pid(ParseState& /*state*/, const char* value) {
    set_selection(g_pid, value);
    return After::kGoOn;
}

After show_version(ParseState& /*state*/, const char* /*value*/) {
    print_version();
    return After::kReturnZero;
}

After show_help(ParseState& /*state*/, const char* /*value*/) {
    cmdShowUsage();
    return After::kReturnZero;
}

// Characters of a number that aren't allowed where they stand: neither digit nor ".", or behind the
// first "." and its fraction.
int count_bad_number_characters(std::string_view text) {
    int bad = 0;
    int points = 0;
    for (const char c : text) {
        points += c == '.' ? 1 : 0;
        const bool allowed = (is_digit(c) || c == '.') && points < 2;
        bad += allowed ? 0 : 1;
    }
    return bad;
}

After take_live_duration(ParseState& state, const char* value) {
    if (value == nullptr) {
        state.status |= Logging_err_type_check(nullptr, 4009, {});
        return After::kReturnStatus;
    }
    const std::string_view text = value;
    const int bad = count_bad_number_characters(text);
    for (int i = 0; i < bad; ++i) {
        state.status |= Logging_err_type_check(nullptr, 4010, {});
    }
    if (bad == 0) {
        g_tested_duration_in_live = stringtodouble(text);
    }
    return After::kGoOn;
}

struct HandledOption {
    std::string_view word{};
    bool takes_value = false;
    OptionHandler handle = nullptr;
};

constexpr HandledOption kOptions[] = {
    {"-i", true, take_input},
    {"-o", true, take_output_dir},
    {"-s", true, take_start_index},
    {"--decryption-keys", true, take_decryption_keys},
    {"--track-id", true, take_track_id},
    {"--pid", true, take_pid},
    {"-v", false, show_version},
    {"-h", false, show_help},
    {"--live-duration", true, take_live_duration},
};
static_assert(std::size(kOptions) == std::size(kRunOptions));
static_assert(std::all_of(std::begin(kOptions), std::end(kOptions), [](const HandledOption& row) {
    return has_run_option(row.word, row.takes_value);
}));

// Reads all words behind the program's name.
After read_words(int count, const char* const* arguments, ParseState& state) {
    for (int i = 1; i < count; ++i) {
        const std::string_view word = arguments[i];
        const auto* row = std::find_if(std::begin(kOptions), std::end(kOptions),
                                       [word](const HandledOption& r) { return r.word == word; });
        if (row == std::end(kOptions)) {
            state.status |= Logging_err_type_check(nullptr, 4001, {}, word);
            return After::kReturnStatus;
        }
        const char* value = nullptr;
        if (row->takes_value && i + 1 < count) {
            value = arguments[++i];
        }
        if (const After after = row->handle(state, value); after != After::kGoOn) {
            return after;
        }
    }
    return After::kGoOn;
}

void fill_checkpoint_list() {
    binary_checkpoint_init(g_check_point_num, g_checkpoint_list.data());
    force_checkpoint_init(g_check_point_num, g_checkpoint_list.data());
}

// Formats for which a start index gets a warning; the others just don't use it.
bool warns_of_start_index(FormatId format) {
    return format == FormatId::kHls || format == FormatId::kDash || format == FormatId::kMp4;
}

}  // namespace

int cmdParse(int count, const char* const* arguments) {
    if (count <= 1) {
        return kNoArguments;
    }
    ParseState state;
    switch (read_words(count, arguments, state)) {
        case After::kReturnZero:
            return 0;
        case After::kReturnStatus:
            return static_cast<int>(state.status);
        case After::kGoOn:
            break;
    }
    fill_checkpoint_list();
    if (!g_input) {
        state.status |= Logging_err_type_check(nullptr, 4002, {});
        return static_cast<int>(state.status);
    }
    g_file_format = format_of_input(*g_input);
    if (state.has_start_index && warns_of_start_index(g_file_format)) {
        state.status |= Logging_err_type_check(nullptr, 2001, {});
    }
    if (g_file_format == FormatId::kTsSeries && !state.has_start_index) {
        g_startIndex = 0;
    }
    return static_cast<int>(state.status);
}

}  // namespace mediasplit
