// What stands behind a tree: its buffer, its memory and what its DTD declares.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/xml_tree.h"

namespace mediasplit {

// The rarer parts of a node.
struct EzxmlExtra {
    std::string text;  // the text, if it isn't in place in the buffer
    std::vector<std::unique_ptr<char[]>> owned;
    std::vector<const char*> attributes;
    // First child of each name; kept only once there are many names.
    std::unique_ptr<std::map<std::string_view, Ezxml*>> by_name;
    Ezxml* last_first_of_name = nullptr;  // end of the `sibling` chain, kept with `by_name`
};

// An entity of the internal DTD. Its value has its character references replaced.
struct XmlEntity {
    enum class Visit : std::uint8_t { kNone, kActive, kDone };
    std::string value;
    std::uint64_t cost = 0;   // what one use of it charges, in bytes
    std::uint32_t depth = 0;  // levels of entities inside it, itself included
    Visit visit = Visit::kNone;
};

struct XmlAttributeDeclaration {
    bool is_cdata = true;  // else its value is a list of tokens
    std::optional<std::string> default_value;
};

using XmlElementDeclaration = std::map<std::string_view, XmlAttributeDeclaration>;

struct EzxmlDocument {
    EzxmlDocument();

    Ezxml* take_node();
    void give_back(Ezxml* node);
    // A lasting copy of an array of attribute texts, with the null that ends it.
    const char* const* keep_attributes(const std::vector<const char*>& texts);

    std::string buffer;
    std::map<std::string_view, XmlEntity> entities;
    std::map<std::string_view, XmlElementDeclaration> elements;
    std::uint64_t expanded = 0;   // charged by entities so far
    std::uint64_t defaulted = 0;  // charged by long defaults so far
    std::array<char, 128> error{};

    Ezxml root;

private:
    std::vector<std::unique_ptr<Ezxml[]>> node_blocks_;
    std::size_t block_size_ = 0;
    std::size_t block_used_ = 0;
    Ezxml* free_nodes_ = nullptr;
    std::vector<std::unique_ptr<const char*[]>> attribute_blocks_;
    std::size_t attributes_left_ = 0;
    const char** attributes_next_ = nullptr;
};

EzxmlExtra& extra_of(Ezxml& node);

// Puts `node`, whose name and `off` are set, among the children of `parent`.
void xml_insert_child(Ezxml& parent, Ezxml* node);

// What the entities of a document may expand to, in bytes, and its long defaults come to.
std::uint64_t xml_allowed_expansion(const EzxmlDocument& document);

// How a piece of a document turns into text (XML 1.0 2.11, 3.3.3).
enum class XmlTextKind : std::uint8_t { kContent, kCdataSection, kAttribute, kTokens };

// Decodes the bytes from `begin` to `end`; the byte at `end` may be overwritten. The result lies in
// place, or in `spill` if it is longer than its source. False, with `culprit` set, if an entity
// expands too far.
struct XmlDecoded {
    const char* text = "";
    std::size_t size = 0;
    bool in_spill = false;
};
bool xml_decode(EzxmlDocument& document, char* begin, char* end, XmlTextKind kind,
                std::string& spill, XmlDecoded& result, std::string& culprit);

// Replaces the character references of an entity's value.
std::string xml_decode_entity_value(std::string_view raw);

// Works out what each entity costs. False, with `culprit` set, if one contains itself or is nested
// too deep.
bool xml_weigh_entities(EzxmlDocument& document, std::string& culprit);

// UTF-16 with a byte order mark to UTF-8; other texts stay as they are.
std::string xml_to_utf8(std::string text);

}  // namespace mediasplit
