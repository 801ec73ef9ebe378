// Writes the message catalogue as a page of Markdown tables (docs/messages.md) to standard output.
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "src/log/catalogue.h"
#include "src/report/rule_class.h"

namespace mediasplit {
namespace {

constexpr std::string_view kIntroduction =
    R"(<!-- Written by the program message_table; `cmake --build build/release --target docs` writes it anew. -->
# Messages

Every message of the programs, from the catalogue in `src/log/catalogue_rows.h`. `%s`, `%d` and the like stand for
values.

- **Number** names the message for good; reports of `mediasplit-report` carry it as `id`.
- **Level** is the level of a finding. Only the errors under [Errors that fail the run](#errors-that-fail-the-run) and
  the fatal errors make a run end "Failed"; a broken rule never does.
- **Rule** is the checkpoint of a rule: its first digit is the family (2 E-AC-3, 3 AC-4, 4 Orvel Prisma), the
  second the profile of delivery, the third the layer (1 DASH manifest, 2 HLS playlist, 3 MP4, 4 transport stream,
  5 elementary stream).
- **Clause** is where the rule comes from.

Messages of the first part are printed at once. Those of the second part are gathered stream by stream; `mediasplit`
prints none of them, `mediasplit-report` all.

)";

enum class Place : std::uint8_t { kPrinted, kGeneral, kRule };

/// One table of the page: the rows that `place`, `type`, `family` and `layer` tell.
struct Section {
    std::string_view title;
    Place place;
    MessageType type = MessageType::kPlain;  // of printed rows
    int family = 0;                          // first digit of a rule's checkpoint
    int layer = 0;                           // its third digit
};

constexpr Section kSections[] = {
    {"Errors that fail the run", Place::kPrinted, MessageType::kError},
    {"Fatal errors", Place::kPrinted, MessageType::kFatalError},
    {"Warnings", Place::kPrinted, MessageType::kWarning},
    {"Information", Place::kPrinted, MessageType::kInfo},
    {"Plain lines", Place::kPrinted, MessageType::kPlain},
    {"General findings", Place::kGeneral},
    {"Orvel Prisma in DASH manifests", Place::kRule, MessageType::kPlain, 4, 1},
    {"Orvel Prisma in HLS playlists", Place::kRule, MessageType::kPlain, 4, 2},
    {"Orvel Prisma in MP4", Place::kRule, MessageType::kPlain, 4, 3},
    {"Orvel Prisma in transport streams", Place::kRule, MessageType::kPlain, 4, 4},
    {"Orvel Prisma elementary streams", Place::kRule, MessageType::kPlain, 4, 5},
    {"E-AC-3 in DASH manifests", Place::kRule, MessageType::kPlain, 2, 1},
    {"E-AC-3 in HLS playlists", Place::kRule, MessageType::kPlain, 2, 2},
    {"E-AC-3 in MP4", Place::kRule, MessageType::kPlain, 2, 3},
    {"E-AC-3 in transport streams", Place::kRule, MessageType::kPlain, 2, 4},
    {"E-AC-3 elementary streams", Place::kRule, MessageType::kPlain, 2, 5},
    {"AC-4 in DASH manifests", Place::kRule, MessageType::kPlain, 3, 1},
    {"AC-4 in HLS playlists", Place::kRule, MessageType::kPlain, 3, 2},
    {"AC-4 in MP4", Place::kRule, MessageType::kPlain, 3, 3},
    {"AC-4 in transport streams", Place::kRule, MessageType::kPlain, 3, 4},
    {"AC-4 elementary streams", Place::kRule, MessageType::kPlain, 3, 5},
};

bool belongs(const CatalogueRow& row, const Section& section) {
    if (row.collect == 0) {
        return section.place == Place::kPrinted && section.type == row.type;
    }
    if (row.checkpoint == 0) {
        return section.place == Place::kGeneral;
    }
    return section.place == Place::kRule && row.checkpoint / 100000 == section.family &&
           row.checkpoint / 1000 % 10 == section.layer;
}

std::vector<const CatalogueRow*> rows_of(const Section& section) {
    std::vector<const CatalogueRow*> found;
    for (const CatalogueTable& table : kCatalogueTables) {
        for (int at = 0; at < table.row_count; ++at) {
            if (belongs(table.rows[at], section)) {
                found.push_back(&table.rows[at]);
            }
        }
    }
    return found;
}

std::string_view level_text(const CatalogueRow& row) {
    return report::is_finding(row) ? report::name_of(report::level_of(row)) : "";
}

/// What a row without a checkpoint is about, as reports tell.
std::string subject_of(const CatalogueRow& row) {
    std::string subject(report::name_of(report::family_of(row)));
    return (subject += ", ") += report::name_of(report::layer_of(row));
}

/// The text as a Markdown table shows it unchanged. The authority of vendor tags is a value of the
/// build; the page shows the one it has when nobody sets another.
std::string shown(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        if (text.starts_with(MEDIASPLIT_TAG_AUTHORITY)) {
            result += "orvel.example";
            text.remove_prefix(std::string_view(MEDIASPLIT_TAG_AUTHORITY).size());
            continue;
        }
        const char c = text.front();
        text.remove_prefix(1);
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '|':
            case '*':
            case '_':
            case '[':
            case ']':
            case '`':
            case '#':
            case '\\':
                (result += '\\') += c;
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string anchor_of(std::string_view title) {
    std::string anchor;
    for (const char c : title) {
        if (c == ' ') {
            anchor += '-';
        } else if (c >= 'A' && c <= 'Z') {
            anchor += static_cast<char>(c - 'A' + 'a');
        } else {
            anchor += c;
        }
    }
    return anchor;
}

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void print_contents() {
    print("| | Messages |\n|---|--:|\n");
    for (const Section& section : kSections) {
        const std::size_t count = rows_of(section).size();
        if (count > 0) {
            print("| [" + std::string(section.title) + "](#" + anchor_of(section.title) + ") | " +
                  std::to_string(count) + " |\n");
        }
    }
    print("| all | " + std::to_string(kCatalogueRowCount) + " |\n");
}

void print_section(const Section& section) {
    const std::vector<const CatalogueRow*> rows = rows_of(section);
    if (rows.empty()) {
        return;
    }
    const bool rules = section.place == Place::kRule;
    const bool general = section.place == Place::kGeneral;
    print("\n## " + std::string(section.title) + "\n\n| Number | Level | " +
          (rules ? "Rule | " : "") + (general ? "Family, layer | " : "") +
          "Message | Clause |\n|--:|---|" + (rules ? "--:|" : "") + (general ? "---|" : "") +
          "---|---|\n");
    for (const CatalogueRow* row : rows) {
        const std::string number = std::to_string(row->id);
        print("| <a id=\"m" + number + "\"></a>" + number + " | " + std::string(level_text(*row)) +
              " | " + (rules ? std::to_string(row->checkpoint) + " | " : "") +
              (general ? subject_of(*row) + " | " : "") + shown(row->message) + " | " +
              shown(row->reference) + " |\n");
    }
}

int write_page() {
    print(std::string(kIntroduction));
    print_contents();
    for (const Section& section : kSections) {
        print_section(section);
    }
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}

}  // namespace
}  // namespace mediasplit

int main() {
    return mediasplit::write_page();
}
