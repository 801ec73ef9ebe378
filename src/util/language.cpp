#include "src/util/language.h"

#include <string_view>

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

// The id of the last row that has the code, 0 if there is none.
int find_language(std::string_view code) {
    int id = 0;
    for (const LanguageRow& row : Iso639CodeTable) {
        if (code == row.bibliographic || code == row.terminology || code == row.alpha_2) {
            id = row.id;
        }
    }
    return id;
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
    const int id = find_language(*a);
    return id != 0 && id == find_language(*b) ? 0 : order;
}

}  // namespace mediasplit
