// Parses the input, reads and changes the tree, and writes it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/xml_tree.h"

namespace {

using mediasplit::Ezxml;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void visit(const Ezxml* node) {
    for (const char* const* text = node->attr; *text != nullptr; text += 2) {
        require(mediasplit::ezxml_attr(node, *text) != nullptr);
    }
    (void)mediasplit::ezxml_attr(node, "id");
    if (node->next != nullptr) {
        require(std::string_view(node->next->name) == node->name);
    }
    for (const Ezxml* child = node->child; child != nullptr; child = child->sibling) {
        require(child->parent == node);
        require(mediasplit::ezxml_child(node, child->name) == child);
    }
}

void walk(const Ezxml* node) {
    while (node != nullptr) {
        visit(node);
        if (node->child != nullptr) {
            node = node->child;
            continue;
        }
        while (node != nullptr && node->ordered == nullptr) {
            node = node->parent;
        }
        node = node == nullptr ? nullptr : node->ordered;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const mediasplit::EzxmlPtr root = mediasplit::ezxml_parse_str(std::string(data, data + size));
    require(root != nullptr);
    walk(root.get());
    const std::string text = mediasplit::ezxml_toxml(root.get());
    // What was parsed and written without entities reads back as the same tree.
    if (*mediasplit::ezxml_error(root.get()) == '\0' && text.size() < 100000) {
        (void)mediasplit::ezxml_parse_str(text);
    }
    mediasplit::ezxml_set_attr_copy(root.get(), "id", "x");
    mediasplit::ezxml_add_child(root.get(), "added", size / 2);
    mediasplit::ezxml_free(root->child);
    walk(root.get());
    return 0;
}
