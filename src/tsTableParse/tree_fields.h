// Hanging fields of program tables into an optional tree.
#pragma once

#include <cstdint>

#include "base/xml_tree.h"
#include "src/util/tree_text.h"

namespace mediasplit {

// Adds a number under `name`; nothing for a null node.
inline void add_field(Ezxml* node, const char* name, std::int64_t value) {
    const long copy = static_cast<long>(value);
    add_long_to_xml(node, name, &copy, 0);
}

// Adds an element; nothing, and nullptr, for a null node.
inline Ezxml* add_element(Ezxml* node, const char* name) {
    return ezxml_add_child(node, name, 0);
}

}  // namespace mediasplit
