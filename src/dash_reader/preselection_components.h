// What a Preselection is made of (ISO/IEC 23009-1 5.3.11).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "src/log/loglist.h"
#include "src/log/status.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// The numbers among the words of `components`; other words raise 4361 for an AC-4 preselection,
// whose identity is `ui_id`. Nothing for more than 100 characters.
Status get_all_adaptation_set_ids_from_preselection_components(OptText components,
                                                               std::vector<std::uint32_t>& ids,
                                                               bool is_ac4, Loglist* loglist,
                                                               std::string_view ui_id = {});

// The first word of `components`: 1 if it is the only one, else 0; -1 if there is no text.
int select_main_ac4_audio_component_from_preselectionComponents(OptText components,
                                                                std::string& word);

}  // namespace mediasplit
