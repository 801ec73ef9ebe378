#include "src/util/language.h"

#include <string_view>
#include <unordered_map>

#include "src/util/language_codes.h"

namespace mediasplit {
namespace {

bool has_code_length(std::string_view code) {
    return code.size() == 2 || code.size() == 3;
}

// "qaa" to "qtz".
bool is_private_use(std::string_view code) {
    return code.size() == 3 && code >= "qaa" && code <= "qtz";
}

struct CodeMeaning {
    int id = 0;                   // of the last row that has the code
    bool is_terminology = false;  // whether some row has it as its code of ISO 639-2/T
};

// What the code stands for; none for an unknown one.
CodeMeaning look_up(std::string_view code) {
    static const std::unordered_map<std::string_view, CodeMeaning> meanings = [] {
        std::unordered_map<std::string_view, CodeMeaning> made;
        for (const LanguageRow& row : Iso639CodeTable) {
            for (const std::string_view name : {row.bibliographic, row.terminology, row.alpha_2}) {
                made[name].id = row.id;
            }
            made[row.terminology].is_terminology = true;
        }
        return made;
    }();
    const auto found = meanings.find(code);
    return found == meanings.end() ? CodeMeaning{} : found->second;
}

}  // namespace

std::span<const LanguageRow> iso_639_code_table() {
    return Iso639CodeTable;
}

int language_match(OptText a, OptText b) {
    if (!a || !b) {
        return -1;
    }
    const int order = a->compare(*b);
    if (!has_code_length(*a) || !has_code_length(*b) || is_private_use(*a) || is_private_use(*b)) {
        return order;
    }
    const int id = look_up(*a).id;
    return id != 0 && id == look_up(*b).id ? 0 : order;
}

bool is_terminological_code(std::string_view code) {
    return is_private_use(code) || (code.size() == 3 && look_up(code).is_terminology);
}

}  // namespace mediasplit
