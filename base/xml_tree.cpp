#include "base/xml_tree.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "base/xml_document.h"

namespace mediasplit {
namespace {

constexpr const char* kNoAttributes[] = {nullptr};

// Up to this many different names among its children are searched one by one.
constexpr std::size_t kFewNames = 8;

constexpr std::size_t kFirstNodeBlock = 8;
constexpr std::size_t kLargestNodeBlock = 512;
constexpr std::size_t kAttributeBlock = 2048;

std::string_view name_of(const Ezxml& node) {
    return node.name == nullptr ? std::string_view{} : std::string_view(node.name);
}

// Looks no further than the names differ: one may be very long, and looked at very often.
bool has_name(const Ezxml& node, std::string_view name) {
    return node.name == nullptr
               ? name.empty()
               : std::string_view(node.name, ::strnlen(node.name, name.size() + 1)) == name;
}

bool has_index(const Ezxml& parent) {
    return parent.extra && parent.extra->by_name;
}

void build_index(Ezxml& parent) {
    EzxmlExtra& extra = extra_of(parent);
    extra.by_name = std::make_unique<std::map<std::string_view, Ezxml*>>();
    for (Ezxml* first = parent.child; first != nullptr; first = first->sibling) {
        extra.by_name->emplace(name_of(*first), first);
        extra.last_first_of_name = first;
    }
}

// Links `node` as the new first of its name behind the present firsts.
void append_first_of_name(Ezxml& parent, Ezxml* node) {
    node->last_of_name = node;
    if (has_index(parent)) {
        EzxmlExtra& extra = *parent.extra;
        extra.last_first_of_name->sibling = node;
        extra.last_first_of_name = node;
        extra.by_name->emplace(name_of(*node), node);
        return;
    }
    if (parent.child == node) {
        return;
    }
    Ezxml* last = parent.child;
    std::size_t names = 1;
    for (; last->sibling != nullptr; last = last->sibling) {
        ++names;
    }
    last->sibling = node;
    if (names >= kFewNames) {
        build_index(parent);
    }
}

Ezxml* find_first_of_name(const Ezxml& parent, std::string_view name) {
    if (has_index(parent)) {
        const auto found = parent.extra->by_name->find(name);
        return found == parent.extra->by_name->end() ? nullptr : found->second;
    }
    Ezxml* node = parent.child;
    while (node != nullptr && !has_name(*node, name)) {
        node = node->sibling;
    }
    return node;
}

// Links `node` behind all other children.
void append_child(Ezxml& parent, Ezxml* node) {
    Ezxml* const first = find_first_of_name(parent, name_of(*node));
    node->parent = &parent;
    (parent.child == nullptr ? parent.child : parent.last_child->ordered) = node;
    parent.last_child = node;
    if (first == nullptr) {
        append_first_of_name(parent, node);
        return;
    }
    first->last_of_name->next = node;
    first->last_of_name = node;
}

std::vector<Ezxml*> children_of(const Ezxml& parent) {
    std::vector<Ezxml*> children;
    for (Ezxml* node = parent.child; node != nullptr; node = node->ordered) {
        children.push_back(node);
    }
    return children;
}

// Links the children of `parent` anew, in the order given.
void relink(Ezxml& parent, const std::vector<Ezxml*>& children) {
    parent.child = nullptr;
    parent.last_child = nullptr;
    if (parent.extra) {
        parent.extra->by_name.reset();
        parent.extra->last_first_of_name = nullptr;
    }
    for (Ezxml* const node : children) {
        node->next = nullptr;
        node->sibling = nullptr;
        node->ordered = nullptr;
        node->last_of_name = nullptr;
        append_child(parent, node);
    }
}

const char* keep_copy(Ezxml& node, std::string_view text) {
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::copy(text.begin(), text.end(), copy.get());
    const char* const result = copy.get();
    extra_of(node).owned.push_back(std::move(copy));
    return result;
}

void drop_copy(Ezxml& node, const char* text) {
    if (node.extra) {
        std::erase_if(node.extra->owned, [text](const auto& copy) { return copy.get() == text; });
    }
}

// The node's attributes as an array of its own that can change.
std::vector<const char*>& own_attributes(Ezxml& node) {
    std::vector<const char*>& texts = extra_of(node).attributes;
    if (texts.empty()) {
        const char* const* end = node.attr;
        while (*end != nullptr) {
            end += 2;
        }
        texts.assign(node.attr, end + 1);
    }
    return texts;
}

// Index of an attribute in the array, or of its end.
std::size_t find_attribute(const Ezxml& node, std::string_view name) {
    std::size_t at = 0;
    while (node.attr[at] != nullptr && node.attr[at] != name) {
        at += 2;
    }
    return at;
}

// A default is declared once and stands on every element: a long one is charged each time that it
// is handed out, up to what entities may expand to.
bool may_hand_out(EzxmlDocument& document, std::size_t size) {
    constexpr std::size_t kLongestFreeDefault = 256;
    if (size <= kLongestFreeDefault) {
        return true;
    }
    document.defaulted += size;
    return document.defaulted <= xml_allowed_expansion(document);
}

const char* declared_default(const Ezxml& node, std::string_view name) {
    const auto element = node.document->elements.find(name_of(node));
    if (element == node.document->elements.end()) {
        return nullptr;
    }
    const auto attribute = element->second.find(name);
    if (attribute == element->second.end() || !attribute->second.default_value) {
        return nullptr;
    }
    const std::string& value = *attribute->second.default_value;
    return may_hand_out(*node.document, value.size()) ? value.c_str() : nullptr;
}

}  // namespace

Ezxml::Ezxml() : attr(static_cast<const char* const*>(kNoAttributes)) {}

Ezxml::~Ezxml() = default;

EzxmlExtra& extra_of(Ezxml& node) {
    if (!node.extra) {
        node.extra = std::make_unique<EzxmlExtra>();
    }
    return *node.extra;
}

EzxmlDocument::EzxmlDocument() {
    root.document = this;
}

Ezxml* EzxmlDocument::take_node() {
    if (free_nodes_ != nullptr) {
        Ezxml* const node = free_nodes_;
        free_nodes_ = node->next;
        node->next = nullptr;
        return node;
    }
    if (block_used_ == block_size_) {
        block_size_ =
            block_size_ == 0 ? kFirstNodeBlock : std::min(block_size_ * 2, kLargestNodeBlock);
        node_blocks_.push_back(std::make_unique<Ezxml[]>(block_size_));
        block_used_ = 0;
    }
    Ezxml* const node = &node_blocks_.back()[block_used_++];
    node->document = this;
    return node;
}

void EzxmlDocument::give_back(Ezxml* node) {
    node->name = nullptr;
    node->attr = static_cast<const char* const*>(kNoAttributes);
    node->txt = "";
    node->off = 0;
    node->sibling = nullptr;
    node->ordered = nullptr;
    node->child = nullptr;
    node->parent = nullptr;
    node->flags = 0;
    node->last_child = nullptr;
    node->last_of_name = nullptr;
    node->extra.reset();
    node->next = free_nodes_;
    free_nodes_ = node;
}

const char* const* EzxmlDocument::keep_attributes(const std::vector<const char*>& texts) {
    if (texts.empty()) {
        return static_cast<const char* const*>(kNoAttributes);
    }
    const std::size_t needed = texts.size() + 1;
    if (needed > attributes_left_) {
        const std::size_t room = std::max(needed, kAttributeBlock);
        attribute_blocks_.push_back(std::make_unique<const char*[]>(room));
        attributes_next_ = attribute_blocks_.back().get();
        attributes_left_ = room;
    }
    const char** const place = attributes_next_;
    std::copy(texts.begin(), texts.end(), place);
    place[texts.size()] = nullptr;
    attributes_next_ += needed;
    attributes_left_ -= needed;
    return place;
}

void xml_insert_child(Ezxml& parent, Ezxml* node) {
    if (parent.child == nullptr || parent.last_child->off <= node->off) {
        append_child(parent, node);
        return;
    }
    std::vector<Ezxml*> children = children_of(parent);
    const auto place =
        std::upper_bound(children.begin(), children.end(), node,
                         [](const Ezxml* a, const Ezxml* b) { return a->off < b->off; });
    children.insert(place, node);
    relink(parent, children);
}

void ezxml_free(Ezxml* node) {
    if (node == nullptr) {
        return;
    }
    EzxmlDocument* const document = node->document;
    if (node == &document->root) {
        const std::unique_ptr<EzxmlDocument> last_owner(document);
        return;
    }
    std::vector<Ezxml*> siblings = children_of(*node->parent);
    std::erase(siblings, node);
    relink(*node->parent, siblings);
    std::vector<Ezxml*> doomed{node};
    for (std::size_t i = 0; i < doomed.size(); ++i) {
        for (Ezxml* child = doomed[i]->child; child != nullptr; child = child->ordered) {
            doomed.push_back(child);
        }
    }
    for (Ezxml* const each : doomed) {
        document->give_back(each);
    }
}

EzxmlPtr ezxml_new(const char* name) {
    auto document = std::make_unique<EzxmlDocument>();
    Ezxml& root = document->root;
    if (name != nullptr) {
        root.name = keep_copy(root, name);
        root.flags |= kEzxmlOwnsName;
    }
    return EzxmlPtr(&document.release()->root);
}

Ezxml* ezxml_child(const Ezxml* node, std::string_view name) {
    return node == nullptr ? nullptr : find_first_of_name(*node, name);
}

const char* ezxml_attr(const Ezxml* node, std::string_view name) {
    if (node == nullptr) {
        return nullptr;
    }
    const std::size_t at = find_attribute(*node, name);
    return node->attr[at] != nullptr ? node->attr[at + 1] : declared_default(*node, name);
}

Ezxml* ezxml_add_child(Ezxml* parent, const char* name, std::uint64_t offset) {
    if (parent == nullptr) {
        return nullptr;
    }
    Ezxml* const node = parent->document->take_node();
    node->name = name;
    node->off = offset;
    xml_insert_child(*parent, node);
    return node;
}

Ezxml* ezxml_add_child_copy(Ezxml* parent, std::string_view name, std::uint64_t offset) {
    if (parent == nullptr) {
        return nullptr;
    }
    Ezxml* const node = parent->document->take_node();
    node->name = keep_copy(*node, name);
    node->flags |= kEzxmlOwnsName;
    node->off = offset;
    xml_insert_child(*parent, node);
    return node;
}

Ezxml* ezxml_set_txt(Ezxml* node, const char* text) {
    if (node == nullptr) {
        return nullptr;
    }
    node->txt = text == nullptr ? "" : text;
    if (node->extra) {
        std::string().swap(node->extra->text);
    }
    node->flags &= static_cast<std::uint16_t>(~kEzxmlOwnsText);
    return node;
}

Ezxml* ezxml_set_txt_copy(Ezxml* node, std::string_view text) {
    if (node == nullptr) {
        return nullptr;
    }
    std::string& copy = extra_of(*node).text;
    copy = std::string(text);
    node->txt = copy.c_str();
    node->flags |= kEzxmlOwnsText;
    return node;
}

Ezxml* ezxml_set_attr(Ezxml* node, const char* name, const char* value) {
    if (node == nullptr || name == nullptr) {
        return node;
    }
    const std::size_t at = find_attribute(*node, name);
    const bool exists = node->attr[at] != nullptr;
    if (!exists && value == nullptr) {
        return node;
    }
    std::vector<const char*>& texts = own_attributes(*node);
    const auto place = texts.begin() + static_cast<std::ptrdiff_t>(at);
    if (!exists) {
        texts.insert(place, {name, value});
    } else if (value != nullptr) {
        if (texts[at + 1] != value) {
            drop_copy(*node, texts[at + 1]);
        }
        texts[at + 1] = value;
    } else {
        drop_copy(*node, texts[at]);
        drop_copy(*node, texts[at + 1]);
        texts.erase(place, place + 2);
    }
    node->attr = texts.data();
    return node;
}

Ezxml* ezxml_set_attr_copy(Ezxml* node, std::string_view name, std::string_view value) {
    if (node == nullptr) {
        return nullptr;
    }
    const std::size_t at = find_attribute(*node, name);
    const char* const known = node->attr[at];
    const char* const kept_name = known != nullptr ? known : keep_copy(*node, name);
    node->flags |= kEzxmlOwnsAttributes;
    return ezxml_set_attr(node, kept_name, keep_copy(*node, value));
}

Ezxml* ezxml_set_flag(Ezxml* node, std::uint16_t flags) {
    if (node != nullptr) {
        node->flags |= flags;
    }
    return node;
}

const char* ezxml_error(const Ezxml* node) {
    return node == nullptr ? "" : node->document->error.data();
}

}  // namespace mediasplit
