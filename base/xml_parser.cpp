// From text to tree. Nesting lives in the tree, never on the call stack.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "base/xml_document.h"
#include "base/xml_dtd.h"

namespace mediasplit {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kReadStep = 1024;

bool begins_name(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
}

class Parser {
public:
    explicit Parser(EzxmlDocument& document)
        : document_(document), size_(document.buffer.size()), text_(document.buffer) {}

    void run();

private:
    struct Piece {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    struct Attribute {
        Piece name;
        Piece value;
        bool has_value = false;
    };

    bool fail(std::size_t at, const char* format, std::string_view detail = {});
    void count_lines(std::size_t end);
    bool read_markup(std::size_t at);
    bool read_close_tag(std::size_t at);
    bool read_open_tag(std::size_t at);
    bool read_attribute(std::size_t& at, Attribute& attribute);
    bool read_cdata(std::size_t at);
    bool read_doctype(std::size_t at);
    bool pass_to(std::string_view end, const char* format, std::size_t at);
    bool add_text(Piece piece, XmlTextKind kind);
    bool open_node(Piece name, const std::vector<Attribute>& attributes);
    bool attribute_value(Ezxml& node, std::string_view element, const Attribute& attribute,
                         const char*& value);
    Ezxml* place_node(const char* name);
    void close_node();
    const char* terminate(Piece piece);

    EzxmlDocument& document_;
    std::size_t size_;
    std::string_view text_;  // the buffer, which changes under it behind the cursor
    std::size_t next_ = 0;   // where reading goes on
    std::size_t counted_ = 0;
    std::size_t line_ = 1;
    Ezxml* open_ = nullptr;                // innermost open element
    std::vector<std::size_t> text_sizes_;  // of all open elements
    std::vector<Attribute> attributes_;    // of the tag at hand
    std::string spill_;
    bool root_seen_ = false;
    bool doctype_seen_ = false;
};

void Parser::count_lines(std::size_t end) {
    for (; counted_ < end; ++counted_) {
        line_ += text_[counted_] == '\n' ? 1 : 0;
    }
}

bool Parser::fail(std::size_t at, const char* format, std::string_view detail) {
    count_lines(at < size_ ? at : size_);
    std::string message(format);
    const std::size_t hole = message.find('%');
    if (hole != std::string::npos) {
        message.replace(hole, 2, detail);
    }
    auto& error = document_.error;
    (void)std::snprintf(error.data(), error.size(), "[error near line %zu]: %s", line_,
                        message.c_str());
    return false;
}

void Parser::run() {
    if (text_.find('<') == std::string_view::npos) {
        (void)fail(size_, "root tag missing");
        return;
    }
    while (next_ < size_) {
        const std::size_t tag = std::min(text_.find('<', next_), size_);
        count_lines(tag);
        if (!add_text({next_, tag}, XmlTextKind::kContent)) {
            return;
        }
        next_ = tag;
        if (tag == size_) {
            break;
        }
        if (!read_markup(tag + 1)) {
            return;
        }
    }
    if (open_ != nullptr) {
        (void)fail(size_, "unclosed tag <%s>", open_->name);
    } else if (!root_seen_) {
        (void)fail(size_, "root tag missing");
    }
}

// Reads what follows the "<" ahead of `at`.
bool Parser::read_markup(std::size_t at) {
    const std::string_view rest = text_.substr(at);
    if (!rest.empty() && begins_name(rest.front())) {
        return read_open_tag(at);
    }
    if (rest.starts_with('/')) {
        return read_close_tag(at + 1);
    }
    if (rest.starts_with("!--")) {
        return pass_to("-->", "unclosed <!--", at + 3);
    }
    if (rest.starts_with("![CDATA[")) {
        return read_cdata(at + 8);
    }
    if (rest.starts_with("!DOCTYPE")) {
        return read_doctype(at + 8);
    }
    if (rest.starts_with('?')) {
        return pass_to("?>", "missing >", at);
    }
    return fail(at, "missing >");
}

bool Parser::pass_to(std::string_view end, const char* format, std::size_t at) {
    const std::size_t found = text_.find(end, at);
    if (found == std::string_view::npos) {
        return fail(at, format);
    }
    next_ = found + end.size();
    return true;
}

bool Parser::read_doctype(std::size_t at) {
    XmlDtdReader reader(document_, text_);
    XmlProblem problem;
    const bool collect = !doctype_seen_ && !root_seen_;
    doctype_seen_ = true;
    if (!reader.read(at, collect, problem)) {
        return fail(at, problem.format, problem.detail);
    }
    next_ = at;
    return true;
}

bool Parser::read_cdata(std::size_t at) {
    const std::size_t end = text_.find("]]>", at);
    if (end == std::string_view::npos) {
        return fail(at, "unclosed tag <%s>", open_ == nullptr ? "" : open_->name);
    }
    count_lines(end);
    next_ = end + 3;
    return add_text({at, end}, XmlTextKind::kCdataSection);
}

bool Parser::read_close_tag(std::size_t at) {
    const std::size_t name_end = std::min(text_.find_first_of(" \t\r\n>", at), size_);
    const std::string_view name = text_.substr(at, name_end - at);
    if (open_ == nullptr || name != open_->name) {
        return fail(at, "unexpected closing tag </%s>", name);
    }
    const std::size_t end = text_.find_first_not_of(kBlanks, name_end);
    if (end == std::string_view::npos || text_[end] != '>') {
        return fail(at, "missing >");
    }
    close_node();
    next_ = end + 1;
    return true;
}

bool Parser::read_open_tag(std::size_t at) {
    const Piece name{at, std::min(text_.find_first_of(" \t\r\n/>", at), size_)};
    if (root_seen_ && open_ == nullptr) {
        return fail(at, "markup outside of root element");
    }
    at = name.end;
    attributes_.clear();
    for (;;) {
        at = text_.find_first_not_of(kBlanks, at);
        if (at == std::string_view::npos) {
            return fail(size_, "missing >");
        }
        if (text_[at] == '/' || text_[at] == '>') {
            break;
        }
        Attribute attribute;
        if (!read_attribute(at, attribute)) {
            return false;
        }
        attributes_.push_back(attribute);
    }
    const bool empty = text_[at] == '/';
    if (empty && (++at >= size_ || text_[at] != '>')) {
        return fail(at, "missing >");
    }
    // Nothing of the tag is changed before all of it is known to be there.
    count_lines(at);
    if (!open_node(name, attributes_)) {
        return false;
    }
    if (empty) {
        close_node();
    }
    next_ = at + 1;
    return true;
}

bool Parser::read_attribute(std::size_t& at, Attribute& attribute) {
    attribute.name = {at, std::min(text_.find_first_of(" \t\r\n=/>", at), size_)};
    at = attribute.name.end;
    const std::size_t value = text_.find_first_not_of(" \t\r\n=", at);
    if (value == at || value == std::string_view::npos ||
        (text_[value] != '"' && text_[value] != '\'')) {
        // Without a quoted value the attribute is empty.
        at = value == std::string_view::npos ? size_ : value;
        return true;
    }
    const std::size_t end = text_.find(text_[value], value + 1);
    if (end == std::string_view::npos) {
        return fail(value, "missing %c", text_.substr(value, 1));
    }
    attribute.value = {value + 1, end};
    attribute.has_value = true;
    at = end + 1;
    return true;
}

const char* Parser::terminate(Piece piece) {
    document_.buffer[piece.end] = '\0';
    return document_.buffer.data() + piece.begin;
}

bool Parser::attribute_value(Ezxml& node, std::string_view element, const Attribute& attribute,
                             const char*& value) {
    XmlTextKind kind = XmlTextKind::kAttribute;
    if (const auto known = document_.elements.find(element); known != document_.elements.end()) {
        const auto declared = known->second.find(
            text_.substr(attribute.name.begin, attribute.name.end - attribute.name.begin));
        if (declared != known->second.end() && !declared->second.is_cdata) {
            kind = XmlTextKind::kTokens;
        }
    }
    char* const base = document_.buffer.data();
    XmlDecoded decoded;
    std::string culprit;
    if (!xml_decode(document_, base + attribute.value.begin, base + attribute.value.end, kind,
                    spill_, decoded, culprit)) {
        return fail(attribute.value.begin, "circular entity declaration &%s", culprit);
    }
    value = decoded.text;
    if (decoded.in_spill) {
        auto copy = std::make_unique<char[]>(decoded.size + 1);
        std::memcpy(copy.get(), decoded.text, decoded.size);
        value = copy.get();
        extra_of(node).owned.push_back(std::move(copy));
        node.flags |= kEzxmlOwnsAttributes;
    }
    return true;
}

Ezxml* Parser::place_node(const char* name) {
    Ezxml* node = &document_.root;
    if (root_seen_) {
        node = document_.take_node();
        node->off = text_sizes_.back();
    }
    node->name = name;
    if (root_seen_) {
        xml_insert_child(*open_, node);
    }
    root_seen_ = true;
    open_ = node;
    text_sizes_.push_back(0);
    return node;
}

bool Parser::open_node(Piece name, const std::vector<Attribute>& attributes) {
    Ezxml* const node = place_node(terminate(name));
    const std::string_view element(node->name, name.end - name.begin);
    std::vector<const char*> texts;
    for (const Attribute& attribute : attributes) {
        const char* value = "";
        if (attribute.has_value && !attribute_value(*node, element, attribute, value)) {
            return false;
        }
        texts.push_back(terminate(attribute.name));
        texts.push_back(value);
    }
    node->attr = document_.keep_attributes(texts);
    return true;
}

void Parser::close_node() {
    open_ = open_->parent;
    text_sizes_.pop_back();
}

bool Parser::add_text(Piece piece, XmlTextKind kind) {
    if (open_ == nullptr || piece.begin == piece.end) {
        return true;
    }
    char* const base = document_.buffer.data();
    XmlDecoded decoded;
    std::string culprit;
    if (!xml_decode(document_, base + piece.begin, base + piece.end, kind, spill_, decoded,
                    culprit)) {
        return fail(piece.begin, "circular entity declaration &%s", culprit);
    }
    std::size_t& size = text_sizes_.back();
    if (size == 0 && !decoded.in_spill) {
        open_->txt = decoded.text;
    } else if (decoded.size != 0) {
        std::string& whole = extra_of(*open_).text;
        if (whole.empty()) {
            whole.assign(open_->txt, size);
        }
        whole.append(decoded.text, decoded.size);
        open_->txt = whole.c_str();
        open_->flags |= kEzxmlOwnsText;
    }
    size += decoded.size;
    return true;
}

}  // namespace

EzxmlPtr ezxml_parse_str(std::string text) {
    auto document = std::make_unique<EzxmlDocument>();
    document->buffer = xml_to_utf8(std::move(text));
    document->buffer.resize(std::min(document->buffer.find('\0'), document->buffer.size()));
    Parser(*document).run();
    return EzxmlPtr(&document.release()->root);
}

EzxmlPtr ezxml_parse_fp(std::FILE* file) {
    if (file == nullptr) {
        return nullptr;
    }
    std::string text;
    std::size_t got = 0;
    do {
        const std::size_t old = text.size();
        text.resize(old + kReadStep);
        got = std::fread(text.data() + old, 1, kReadStep, file);
        text.resize(old + got);
    } while (got == kReadStep);
    return ezxml_parse_str(std::move(text));
}

EzxmlPtr ezxml_parse_file(const char* path) {
    std::FILE* const file = path == nullptr ? nullptr : std::fopen(path, "rb");
    if (file == nullptr) {
        return nullptr;
    }
    EzxmlPtr root = ezxml_parse_fp(file);
    (void)std::fclose(file);
    return root;
}

}  // namespace mediasplit
