#include "base/xml_dtd.h"

#include <utility>

namespace mediasplit {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool is_quote(char c) {
    return c == '"' || c == '\'';
}

void skip_blanks(std::string_view& body) {
    const std::size_t at = body.find_first_not_of(kBlanks);
    body.remove_prefix(at == std::string_view::npos ? body.size() : at);
}

// Cuts the next word off the front, up to a blank, quote or parenthesis.
std::string_view take_word(std::string_view& body) {
    skip_blanks(body);
    const std::string_view word = body.substr(0, body.find_first_of(" \t\r\n\"'("));
    body.remove_prefix(word.size());
    return word;
}

// Cuts a quoted text off the front. False if there is none.
bool take_quoted(std::string_view& body, std::string_view& value) {
    skip_blanks(body);
    if (body.empty() || !is_quote(body.front())) {
        return false;
    }
    const std::size_t end = body.find(body.front(), 1);
    if (end == std::string_view::npos) {
        return false;
    }
    value = body.substr(1, end - 1);
    body.remove_prefix(end + 1);
    return true;
}

// Cuts the type of an attribute off the front (XML 1.0 3.3.1). False if there is none.
bool take_type(std::string_view& body, bool& is_cdata) {
    const std::string_view word = take_word(body);
    is_cdata = word == "CDATA";
    skip_blanks(body);
    const bool listed = word.empty() || word == "NOTATION";
    if (!listed) {
        return true;
    }
    const std::size_t end = body.find(')');
    if (!body.starts_with('(') || end == std::string_view::npos) {
        return false;
    }
    body.remove_prefix(end + 1);
    return true;
}

// Cuts the default of an attribute off the front (XML 1.0 3.3.2). False if there is none.
bool take_default(std::string_view& body, bool& has_value, std::string_view& value) {
    const std::string_view word = take_word(body);
    has_value = word.empty() || word == "#FIXED";
    return has_value ? take_quoted(body, value) : word.starts_with('#');
}

}  // namespace

bool XmlDtdReader::fail(const char* format, std::string detail) {
    problem_ = {format, std::move(detail)};
    return false;
}

bool XmlDtdReader::read(std::size_t& at, bool collect, XmlProblem& problem) {
    collect_ = collect;
    char quote = 0;
    bool done = false;
    bool has_subset = false;
    while (!done && at < text_.size()) {
        const char c = text_[at++];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (is_quote(c)) {
            quote = c;
        } else if (c == '[') {
            // A second internal subset isn't markup of the declaration (XML 1.0 production 28).
            const bool is_sound =
                has_subset ? fail("missing >") : read_subset(at) && (!collect_ || finish());
            if (!is_sound) {
                problem = problem_;
                return false;
            }
            has_subset = true;
        } else {
            done = c == '>';
        }
    }
    if (!done) {
        fail("missing >");
        problem = problem_;
    }
    return done;
}

bool XmlDtdReader::read_subset(std::size_t& at) {
    while (at < text_.size()) {
        if (text_[at] == ']') {
            ++at;
            return true;
        }
        if (text_[at] != '<') {
            ++at;
        } else if (!read_markup(at)) {
            return false;
        }
    }
    return fail("missing >");
}

bool XmlDtdReader::read_markup(std::size_t& at) {
    const std::string_view rest = text_.substr(at);
    constexpr std::string_view kComment = "<!--";
    constexpr std::string_view kEntity = "<!ENTITY";
    constexpr std::string_view kAttributes = "<!ATTLIST";
    std::string_view body;
    if (rest.starts_with(kComment)) {
        at += kComment.size();
        return pass_to("-->", "unclosed <!--", at);
    }
    if (rest.starts_with("<?")) {
        return pass_to("?>", "missing >", at);
    }
    if (rest.starts_with(kEntity)) {
        at += kEntity.size();
        if (!declaration_body(at, body, "missing >")) {
            return false;
        }
        read_entity(body);
        return true;
    }
    if (rest.starts_with(kAttributes)) {
        at += kAttributes.size();
        return declaration_body(at, body, "unclosed <!ATTLIST") && read_attributes(body);
    }
    ++at;
    return declaration_body(at, body, "missing >");
}

bool XmlDtdReader::pass_to(std::string_view end, const char* format, std::size_t& at) {
    const std::size_t found = text_.find(end, at);
    if (found == std::string_view::npos) {
        return fail(format);
    }
    at = found + end.size();
    return true;
}

bool XmlDtdReader::declaration_body(std::size_t& at, std::string_view& body, const char* format) {
    char quote = 0;
    for (std::size_t i = at; i < text_.size(); ++i) {
        const char c = text_[i];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (is_quote(c)) {
            quote = c;
        } else if (c == '>') {
            body = text_.substr(at, i - at);
            at = i + 1;
            return true;
        }
    }
    return fail(format);
}

// Parameter entities and external ones aren't followed.
void XmlDtdReader::read_entity(std::string_view body) {
    const std::string_view name = take_word(body);
    std::string_view value;
    if (collect_ && !name.empty() && name != "%" && take_quoted(body, value)) {
        document_.entities.try_emplace(name, XmlEntity{xml_decode_entity_value(value)});
    }
}

bool XmlDtdReader::read_attributes(std::string_view body) {
    const std::string_view element = take_word(body);
    if (element.empty()) {
        return fail("malformed <!ATTLIST");
    }
    for (skip_blanks(body); !body.empty(); skip_blanks(body)) {
        const std::string_view name = take_word(body);
        XmlAttributeDeclaration declaration;
        bool has_value = false;
        std::string_view value;
        if (name.empty() || !take_type(body, declaration.is_cdata) ||
            !take_default(body, has_value, value)) {
            return fail("malformed <!ATTLIST");
        }
        if (!collect_) {
            continue;
        }
        // The first declaration of an attribute counts (XML 1.0 3.3).
        const auto [place, is_new] =
            document_.elements[element].try_emplace(name, std::move(declaration));
        if (is_new && has_value) {
            defaults_.push_back({&place->second, value});
        }
    }
    return true;
}

// Once all entities are known the default values can be worked out.
bool XmlDtdReader::finish() {
    std::string culprit;
    if (!xml_weigh_entities(document_, culprit)) {
        return fail("circular entity declaration &%s", culprit);
    }
    for (const Default& each : defaults_) {
        const XmlTextKind kind =
            each.declaration->is_cdata ? XmlTextKind::kAttribute : XmlTextKind::kTokens;
        std::string raw(each.raw);
        std::string spill;
        XmlDecoded decoded;
        if (!xml_decode(document_, raw.data(), raw.data() + raw.size(), kind, spill, decoded,
                        culprit)) {
            return fail("circular entity declaration &%s", culprit);
        }
        each.declaration->default_value = std::string(decoded.text, decoded.size);
    }
    defaults_.clear();
    return true;
}

}  // namespace mediasplit
