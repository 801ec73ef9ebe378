// Languages by their ISO 639 codes.
#pragma once

#include <span>
#include <string_view>

#include "src/util/opt_text.h"

namespace mediasplit {

struct LanguageRow {
    int id = 0;
    const char* bibliographic = "";  // ISO 639-2/B
    const char* terminology = "";    // ISO 639-2/T
    const char* alpha_2 = "";        // ISO 639-1, empty where there is none
    const char* english = "";
    const char* french = "";
};

// All languages of ISO 639-2 without the range for private use.
std::span<const LanguageRow> iso_639_code_table();

// Compares two language codes: 0 if they name the same language, whichever of the ISO 639-1 and
// 639-2 codes they use. Otherwise the order of the texts like strcmp, -1 if one is missing. Codes
// for private use, and texts that aren't 2 or 3 characters long, are compared as texts.
int language_match(OptText a, OptText b);

// A three-letter code of ISO 639-2/T, or one of its codes for private use ("qaa" to "qtz").
bool is_terminological_code(std::string_view code);

}  // namespace mediasplit
