#include "src/log/expand.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

namespace mediasplit {

namespace {

constexpr std::string_view kPrefixes[] = {
    "INFO: ", "WARNING: ", "FATAL ERROR: ", "ERROR: ", "DEBUG: "};

constexpr std::string_view prefix_of(MessageType type) {
    const auto index = static_cast<std::size_t>(type);
    return index == 0 || index > std::size(kPrefixes) ? std::string_view() : kPrefixes[index - 1];
}

// Bytes of the finished line that don't come from values; 0 if a placeholder is malformed.
constexpr std::size_t fixed_length(const CatalogueRow& row) {
    std::size_t length = prefix_of(row.type).size() + 1;
    const std::string_view reference = row.reference;
    if (!reference.empty()) {
        length += reference.size() + 3;
    }
    for (const char* at = row.message; *at != 0;) {
        if (*at != '%') {
            ++at;
            ++length;
            continue;
        }
        const Placeholder placeholder = read_placeholder(at);
        if (placeholder.kind == ValueKind::kNone) {
            return 0;
        }
        at += placeholder.length;
    }
    return length;
}

// In pieces, each an evaluation of its own, to keep within the step limits of the compilers.
constexpr int kPiece = 100;

constexpr bool rows_are_sound(const CatalogueTable& table, int first) {
    for (int i = first; i < table.row_count && i < first + kPiece; ++i) {
        const CatalogueRow& row = table.rows[i];
        const std::size_t fixed = fixed_length(row);
        if (row.id != table.first_id + i || fixed == 0 || fixed >= kLineCapacity) {
            return false;
        }
    }
    return true;
}

template <std::size_t kTable, int kFirst>
constexpr bool kPieceIsSound = rows_are_sound(kCatalogueTables[kTable], kFirst);

template <std::size_t kTable, int kFirst = 0>
consteval bool table_is_sound() {
    if constexpr (kFirst < kCatalogueTables[kTable].row_count) {
        return kPieceIsSound<kTable, kFirst> && table_is_sound<kTable, kFirst + kPiece>();
    } else {
        return true;
    }
}

template <std::size_t... kTables>
consteval bool tables_are_sound(std::index_sequence<kTables...>) {
    return (table_is_sound<kTables>() && ...);
}
static_assert(tables_are_sound(std::make_index_sequence<std::size(kCatalogueTables)>()));

// Bytes that the values of a message usually take.
constexpr std::size_t kUsualValues = 128;

// Holds any number: the largest double has 309 digits before the point and six behind it.
using NumberBuffer = std::array<char, 352>;

std::string_view integer_text(const Placeholder& placeholder, std::uint64_t value,
                              NumberBuffer& buffer) {
    // As the placeholder's type, not the argument's, tells: %d shows the low 32 bits, signed.
    char* const end = buffer.data() + buffer.size();
    std::to_chars_result result{};
    if (placeholder.conversion == 'd') {
        result = placeholder.is_long
                     ? std::to_chars(buffer.data(), end, static_cast<std::int64_t>(value))
                     : std::to_chars(buffer.data(), end, static_cast<std::int32_t>(value));
    } else {
        const std::uint64_t shown = placeholder.is_long ? value : static_cast<std::uint32_t>(value);
        result = std::to_chars(buffer.data(), end, shown, placeholder.conversion == 'x' ? 16 : 10);
    }
    return {buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data())};
}

std::string_view value_text(const Placeholder& placeholder, const MessageValue& value,
                            NumberBuffer& buffer) {
    switch (value.kind) {
        case ValueKind::kInteger:
            return integer_text(placeholder, value.integer, buffer);
        case ValueKind::kCharacter:
            buffer[0] = static_cast<char>(value.integer);
            return {buffer.data(), buffer[0] == 0 ? std::size_t{0} : std::size_t{1}};
        case ValueKind::kFloating: {
            const int length = std::snprintf(buffer.data(), buffer.size(), "%f", value.floating);
            return {buffer.data(), static_cast<std::size_t>(length)};
        }
        default:
            return value.text.substr(0, value.text.find('\0'));
    }
}

}  // namespace

std::optional<ExpandedMessage> expand_message(const CatalogueRow& row, const MessageValue* values,
                                              std::size_t count) {
    const std::size_t fixed = fixed_length(row);
    if (fixed == 0 || fixed >= kLineCapacity) {
        return std::nullopt;
    }
    std::size_t room = kLineCapacity - 1 - fixed;
    ExpandedMessage result;
    result.line.reserve(fixed + kUsualValues);
    result.line.append(prefix_of(row.type));
    result.text_begin = result.line.size();
    NumberBuffer buffer;
    std::size_t used = 0;
    for (const char* at = row.message; *at != 0;) {
        if (*at != '%') {
            const std::size_t run = std::strcspn(at, "%");
            result.line.append(at, run);
            at += run;
            continue;
        }
        const Placeholder placeholder = read_placeholder(at);
        if (used == count || values[used].kind != placeholder.kind) {
            return std::nullopt;
        }
        const std::string_view shown =
            value_text(placeholder, values[used], buffer).substr(0, room);
        room -= shown.size();
        result.line.append(shown);
        ++used;
        at += placeholder.length;
    }
    if (used != count) {
        return std::nullopt;
    }
    result.text_size = result.line.size() - result.text_begin;
    const std::string_view reference = row.reference;
    if (!reference.empty()) {
        result.line.append(" (").append(reference).append(")");
    }
    result.line.push_back('\n');
    return result;
}

std::string written_form(std::string line) {
    std::size_t kept = line.find("%%");
    if (kept == std::string::npos) {
        return line;
    }
    for (std::size_t at = kept; at < line.size(); ++at) {
        line[kept++] = line[at];
        if (line[at] == '%' && at + 1 < line.size() && line[at + 1] == '%') {
            ++at;
        }
    }
    line.resize(kept);
    return line;
}

}  // namespace mediasplit
