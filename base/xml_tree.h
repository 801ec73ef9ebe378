// A small XML document tree: parses leniently (XML 1.0 without namespaces), and can be built by
// hand. All texts are C texts.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace mediasplit {

struct EzxmlDocument;
struct EzxmlExtra;

// Flags of a node: what of it is an owned copy, freed with it.
inline constexpr std::uint16_t kEzxmlOwnsAttributes = 0x20;
inline constexpr std::uint16_t kEzxmlOwnsText = 0x40;
inline constexpr std::uint16_t kEzxmlOwnsName = 0x80;

// An element. The first part is for everyone to read; it is changed through the operations below.
struct Ezxml {
    const char* name = nullptr;         // null on a root without a tag
    const char* const* attr = nullptr;  // name, value, name, value ..., null
    const char* txt = "";               // character content without that of the children
    std::uint64_t off = 0;              // place in the parent's text; order of the siblings
    Ezxml* next = nullptr;              // next sibling of this name
    Ezxml* sibling = nullptr;           // first sibling of the next name
    Ezxml* ordered = nullptr;           // next sibling in document order
    Ezxml* child = nullptr;             // first child
    Ezxml* parent = nullptr;            // null on the root
    std::uint16_t flags = 0;

    // Bookkeeping.
    EzxmlDocument* document = nullptr;
    Ezxml* last_child = nullptr;        // in document order
    Ezxml* last_of_name = nullptr;      // on the first of a name: end of its `next` chain
    std::unique_ptr<EzxmlExtra> extra;  // owned copies, index of children

    Ezxml();
    ~Ezxml();
    Ezxml(const Ezxml&) = delete;
    Ezxml& operator=(const Ezxml&) = delete;
};

// Frees the subtree of a node: for a root the whole document, else the node is taken out of its
// tree first. None is allowed.
void ezxml_free(Ezxml* node);

struct EzxmlFree {
    void operator()(Ezxml* root) const { ezxml_free(root); }
};
// A root and with it its document.
using EzxmlPtr = std::unique_ptr<Ezxml, EzxmlFree>;

// An empty document for building by hand; `name` is copied, null for a root without a tag.
EzxmlPtr ezxml_new(const char* name);

// Parses a text, which the tree keeps and changes. Never null: after a syntax error the tree holds
// what came ahead of it, and ezxml_error tells what is wrong. UTF-16 is told by its byte order
// mark. A zero byte ends the text. Entities of an internal DTD may expand to four times the
// document (1 MiB in any case, 16 MiB at the most) and refer to each other 16 deep; what goes
// beyond ends the parsing like a circular one. Attribute defaults of more than 256 bytes are handed
// out until their lengths come to as much; beyond that there are none.
EzxmlPtr ezxml_parse_str(std::string text);
// The same for the rest of an open file, which stays open. Null for none.
EzxmlPtr ezxml_parse_fp(std::FILE* file);
// The same for a file. Null if it can't be opened.
EzxmlPtr ezxml_parse_file(const char* path);

// The first child of this name, or null; the others hang behind it by `next`.
Ezxml* ezxml_child(const Ezxml* node, std::string_view name);
// The value of an attribute, else the default that the DTD declares for it, else null. A long
// default is charged to the document: trees are for one thread.
const char* ezxml_attr(const Ezxml* node, std::string_view name);

// Adds a child behind those with the same or a smaller `offset`. `name` must outlive the tree.
// Null for a null parent.
Ezxml* ezxml_add_child(Ezxml* parent, const char* name, std::uint64_t offset);
// The same with a copy of the name.
Ezxml* ezxml_add_child_copy(Ezxml* parent, std::string_view name, std::uint64_t offset);

// Replaces the text; `text` must outlive the tree. Returns the node.
Ezxml* ezxml_set_txt(Ezxml* node, const char* text);
// The same with a copy of the text.
Ezxml* ezxml_set_txt_copy(Ezxml* node, std::string_view text);

// Adds or replaces an attribute, or removes it if `value` is null. Both must outlive the tree.
// Returns the node.
Ezxml* ezxml_set_attr(Ezxml* node, const char* name, const char* value);
// The same with copies of both texts.
Ezxml* ezxml_set_attr_copy(Ezxml* node, std::string_view name, std::string_view value);

// ORs flags in; returns the node. What is freed follows from the copying operations, not from a
// flag set by hand.
Ezxml* ezxml_set_flag(Ezxml* node, std::uint16_t flags);

// The subtree as XML text.
std::string ezxml_toxml(const Ezxml* node);
// What ended the parsing of the node's document: "[error near line %d]: %s", or "".
const char* ezxml_error(const Ezxml* node);

}  // namespace mediasplit
