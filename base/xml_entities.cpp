// Text of a document: character references, entities, line ends.
#include <algorithm>
#include <array>

#include "base/ascii.h"
#include "base/xml_document.h"

namespace mediasplit {
namespace {

// What a document's entities may expand to: four times the document, but a mebibyte in any case
// and 16 at the most.
constexpr std::uint64_t kExpansionFactor = 4;
constexpr std::uint64_t kFreeExpansion = 1024 * 1024;
constexpr std::uint64_t kLargestExpansion = 16 * 1024 * 1024;

constexpr std::uint32_t kDeepestEntity = 16;
constexpr std::uint64_t kCostCeiling = 1ULL << 40;
constexpr std::uint32_t kLastCodePoint = 0x10FFFF;

bool is_surrogate(std::uint32_t code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

// Appends a code point as UTF-8 through `put`.
template <typename Put>
void put_utf8(std::uint32_t code, const Put& put) {
    const auto tail = [&](int shift) { put(static_cast<char>(0x80 | (code >> shift & 0x3F))); };
    if (code < 0x80) {
        put(static_cast<char>(code));
    } else if (code < 0x800) {
        put(static_cast<char>(0xC0 | code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        put(static_cast<char>(0xE0 | code >> 12));
        tail(6);
        tail(0);
    } else {
        put(static_cast<char>(0xF0 | code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

// The code point of "#60" or "#x3C", 0 if it is none.
std::uint32_t code_of_reference(std::string_view name) {
    name.remove_prefix(1);
    int base = 10;
    if (name.starts_with('x')) {
        base = 16;
        name.remove_prefix(1);
    }
    std::uint32_t code = 0;
    for (const char c : name) {
        const int digit = digit_value(c, base);
        if (digit < 0) {
            return 0;
        }
        code = code * static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(digit);
        if (code > kLastCodePoint) {
            return 0;
        }
    }
    return is_surrogate(code) ? 0 : code;
}

// The character of a predefined entity, 0 if the name is none (XML 1.0 4.6).
char predefined(std::string_view name) {
    struct Row {
        std::string_view name;
        char character;
    };
    constexpr std::array<Row, 5> kRows = {
        {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}}};
    for (const Row& row : kRows) {
        if (row.name == name) {
            return row.character;
        }
    }
    return 0;
}

// The name of the reference that begins with the "&" at `at`, empty if none does. A longer name
// than this is none.
constexpr std::size_t kLongestName = 1024;

std::string_view reference_at(std::string_view text, std::size_t at) {
    const std::string_view rest = text.substr(at + 1, kLongestName + 1);
    const std::size_t end = rest.find_first_of(";&<> \t\r\n");
    return end == std::string_view::npos || rest[end] != ';' ? std::string_view{}
                                                             : rest.substr(0, end);
}

// Where decoded bytes go: in place, or to a string.
class InPlace {
public:
    explicit InPlace(char* begin) : begin_(begin), at_(begin) {}
    void put(char c) { *at_++ = c; }
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(at_ - begin_); }
    void finish() { *at_ = '\0'; }

private:
    char* begin_;
    char* at_;
};

class ToString {
public:
    explicit ToString(std::string& out) : out_(out) {}
    void put(char c) { out_ += c; }

private:
    std::string& out_;
};

bool is_attribute(XmlTextKind kind) {
    return kind == XmlTextKind::kAttribute || kind == XmlTextKind::kTokens;
}

// One pass over a piece of text.
template <typename Out>
class Decoder {
public:
    Decoder(EzxmlDocument& document, XmlTextKind kind, Out& out, std::string& culprit)
        : document_(document), kind_(kind), out_(out), culprit_(culprit) {}

    bool run(std::string_view text) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            const char c = text[at];
            if (c == '&' && kind_ != XmlTextKind::kCdataSection) {
                if (!reference(text, at)) {
                    return false;
                }
            } else if (c == '\r') {
                // One line feed stands for "\r\n" and for "\r".
                if (at + 1 == text.size() || text[at + 1] != '\n') {
                    put_plain('\n');
                }
            } else {
                put_plain(c);
            }
        }
        return true;
    }

private:
    void put_plain(char c) { out_.put(is_attribute(kind_) && (c == '\n' || c == '\t') ? ' ' : c); }

    // Replaces the reference at `at` and moves to its ";". One that means nothing stays as it is.
    bool reference(std::string_view text, std::size_t& at) {
        const std::string_view name = reference_at(text, at);
        if (name.starts_with('#')) {
            if (const std::uint32_t code = code_of_reference(name); code != 0) {
                at += name.size() + 1;
                put_utf8(code, [this](char c) { out_.put(c); });
                return true;
            }
        } else if (const char c = predefined(name); c != 0) {
            at += name.size() + 1;
            out_.put(c);
            return true;
        } else if (const auto found = document_.entities.find(name);
                   !name.empty() && found != document_.entities.end()) {
            at += name.size() + 1;
            return entity(name, found->second);
        }
        out_.put('&');
        return true;
    }

    bool entity(std::string_view name, const XmlEntity& entity) {
        if (level_ == 0) {
            document_.expanded += entity.cost;
            if (document_.expanded > xml_allowed_expansion(document_)) {
                culprit_ = name;
                return false;
            }
        }
        // Weighed before: no deeper than kDeepestEntity.
        ++level_;
        const bool done = run(entity.value);
        --level_;
        return done;
    }

    EzxmlDocument& document_;
    XmlTextKind kind_;
    Out& out_;
    std::string& culprit_;
    std::uint32_t level_ = 0;
};

// Removes blanks at both ends and leaves one between tokens; returns the new size.
std::size_t collapse_blanks(char* text, std::size_t size) {
    std::size_t kept = 0;
    for (std::size_t at = 0; at < size; ++at) {
        if (text[at] != ' ') {
            text[kept++] = text[at];
        } else if (kept != 0 && text[kept - 1] != ' ') {
            text[kept++] = ' ';
        }
    }
    return kept != 0 && text[kept - 1] == ' ' ? kept - 1 : kept;
}

// Works out the costs entity by entity, each once.
class Weigher {
public:
    Weigher(EzxmlDocument& document, std::string& culprit)
        : document_(document), culprit_(culprit) {}

    bool weigh(std::string_view name, XmlEntity& entity, std::uint32_t level) {
        if (entity.visit == XmlEntity::Visit::kDone) {
            return true;
        }
        if (entity.visit == XmlEntity::Visit::kActive || level > kDeepestEntity) {
            culprit_ = name;
            return false;
        }
        entity.visit = XmlEntity::Visit::kActive;
        entity.cost = entity.value.size() + 1;
        entity.depth = 1;
        const std::string_view value = entity.value;
        for (std::size_t at = value.find('&'); at != std::string_view::npos;
             at = value.find('&', at + 1)) {
            if (!add_reference(reference_at(value, at), entity, level)) {
                return false;
            }
        }
        if (entity.depth > kDeepestEntity) {
            culprit_ = name;
            return false;
        }
        entity.visit = XmlEntity::Visit::kDone;
        return true;
    }

private:
    bool add_reference(std::string_view name, XmlEntity& entity, std::uint32_t level) {
        const auto found = document_.entities.find(name);
        if (name.empty() || predefined(name) != 0 || found == document_.entities.end()) {
            return true;
        }
        if (!weigh(name, found->second, level + 1)) {
            return false;
        }
        entity.cost = std::min(entity.cost + found->second.cost, kCostCeiling);
        entity.depth = std::max(entity.depth, found->second.depth + 1);
        return true;
    }

    EzxmlDocument& document_;
    std::string& culprit_;
};

}  // namespace

std::uint64_t xml_allowed_expansion(const EzxmlDocument& document) {
    return std::clamp(kExpansionFactor * document.buffer.size(), kFreeExpansion, kLargestExpansion);
}

bool xml_decode(EzxmlDocument& document, char* begin, char* end, XmlTextKind kind,
                std::string& spill, XmlDecoded& result, std::string& culprit) {
    const std::string_view text(begin, static_cast<std::size_t>(end - begin));
    // Only entities of the document's own can grow.
    result.in_spill = !document.entities.empty() && kind != XmlTextKind::kCdataSection &&
                      text.find('&') != std::string_view::npos;
    if (result.in_spill) {
        spill.clear();
        ToString out(spill);
        if (!Decoder(document, kind, out, culprit).run(text)) {
            return false;
        }
        if (kind == XmlTextKind::kTokens) {
            spill.resize(collapse_blanks(spill.data(), spill.size()));
        }
        result.text = spill.c_str();
        result.size = spill.size();
        return true;
    }
    InPlace out(begin);
    if (!Decoder(document, kind, out, culprit).run(text)) {
        return false;
    }
    out.finish();
    result.text = begin;
    result.size = out.size();
    if (kind == XmlTextKind::kTokens) {
        result.size = collapse_blanks(begin, result.size);
        begin[result.size] = '\0';
    }
    return true;
}

std::string xml_decode_entity_value(std::string_view raw) {
    std::string value;
    for (std::size_t at = 0; at < raw.size(); ++at) {
        if (raw[at] == '&') {
            const std::string_view name = reference_at(raw, at);
            const std::uint32_t code = name.starts_with('#') ? code_of_reference(name) : 0;
            if (code != 0) {
                put_utf8(code, [&value](char c) { value += c; });
                at += name.size() + 1;
                continue;
            }
        }
        value += raw[at];
    }
    return value;
}

bool xml_weigh_entities(EzxmlDocument& document, std::string& culprit) {
    Weigher weigher(document, culprit);
    return std::all_of(document.entities.begin(), document.entities.end(), [&weigher](auto& each) {
        return weigher.weigh(each.first, each.second, 1);
    });
}

std::string xml_to_utf8(std::string text) {
    const bool big = text.starts_with("\xFE\xFF");
    if (!big && !text.starts_with("\xFF\xFE")) {
        return text;
    }
    const auto unit_at = [&text, big](std::size_t at) {
        const auto first = static_cast<unsigned char>(text[at]);
        const auto second = static_cast<unsigned char>(text[at + 1]);
        return static_cast<std::uint32_t>(big ? first << 8 | second : second << 8 | first);
    };
    constexpr std::uint32_t kReplacement = 0xFFFD;
    std::string result;
    for (std::size_t at = 2; at + 1 < text.size(); at += 2) {
        std::uint32_t code = unit_at(at);
        if (is_surrogate(code)) {
            const std::uint32_t low = at + 3 < text.size() ? unit_at(at + 2) : 0;
            if (code < 0xDC00 && low >= 0xDC00 && low <= 0xDFFF) {
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                at += 2;
            } else {
                code = kReplacement;
            }
        }
        put_utf8(code, [&result](char c) { result += c; });
    }
    return result;
}

}  // namespace mediasplit
