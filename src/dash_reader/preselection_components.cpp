#include "src/dash_reader/preselection_components.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "src/log/logging.h"
#include "src/util/text.h"

namespace mediasplit {
namespace {

constexpr std::size_t kLongestComponents = 100;
constexpr char kBlank = ' ';

// The next word of a text, cut off its front; empty at the end.
std::string_view take_word(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlank), text.size()));
    const std::string_view word = text.substr(0, text.find(kBlank));
    text.remove_prefix(word.size());
    return word;
}

}  // namespace

Status get_all_adaptation_set_ids_from_preselection_components(OptText components,
                                                               std::vector<std::uint32_t>& ids,
                                                               bool is_ac4, Loglist* loglist,
                                                               std::string_view ui_id) {
    ids.clear();
    if (components.view().size() > kLongestComponents) {
        return Status::kOk;
    }
    Status status = Status::kOk;
    std::string_view rest = components.view();
    for (std::string_view word = take_word(rest); !word.empty(); word = take_word(rest)) {
        const bool numeric = check_str_r10(word) == 0;
        if (numeric) {
            ids.push_back(str2uint_r10(word));
        }
        if (is_ac4) {
            status |=
                check(numeric, loglist, 4361, LogContext{0, ui_id, "preselectionComponents"}, word);
        }
    }
    return status;
}

int select_main_ac4_audio_component_from_preselectionComponents(OptText components,
                                                                std::string& word) {
    if (!components) {
        return -1;
    }
    std::string_view rest = *components;
    word = take_word(rest);
    return word.size() == components->size() ? 1 : 0;
}

}  // namespace mediasplit
