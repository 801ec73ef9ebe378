#include "src/util/tree_text.h"

#include <string>

#include "src/util/text.h"

namespace mediasplit {
namespace {

template <typename Number>
Ezxml* add_number(Ezxml* node, std::string_view name, const Number* value, std::uint64_t position) {
    if (node == nullptr || value == nullptr) {
        return nullptr;
    }
    Ezxml* const child = ezxml_add_child_copy(node, name, position);
    ezxml_set_txt_copy(child, std::to_string(*value));
    ptr2id(child, value);
    return child;
}

}  // namespace

void int2txt(Ezxml* node, std::int32_t value) {
    ezxml_set_txt_copy(node, std::to_string(value));
}

void uint2txt(Ezxml* node, std::uint32_t value) {
    ezxml_set_txt_copy(node, std::to_string(value));
}

void longlong2txt(Ezxml* node, std::int64_t value) {
    ezxml_set_txt_copy(node, std::to_string(value));
}

void ulonglong2txt(Ezxml* node, std::uint64_t value) {
    ezxml_set_txt_copy(node, std::to_string(value));
}

void string2txt(Ezxml* node, OptText text) {
    if (text) {
        ezxml_set_txt_copy(node, *text);
    }
}

void int2attr(Ezxml* node, std::string_view name, std::int32_t value) {
    ezxml_set_attr_copy(node, name, std::to_string(value));
}

void uint2attr(Ezxml* node, std::string_view name, std::uint32_t value) {
    ezxml_set_attr_copy(node, name, std::to_string(value));
}

void longlong2attr(Ezxml* node, std::string_view name, std::int64_t value) {
    ezxml_set_attr_copy(node, name, std::to_string(value));
}

void ulonglong2attr(Ezxml* node, std::string_view name, std::uint64_t value) {
    ezxml_set_attr_copy(node, name, std::to_string(value));
}

void string2attr(Ezxml* node, std::string_view name, OptText text) {
    if (text) {
        ezxml_set_attr_copy(node, name, *text);
    }
}

void ptr2id(Ezxml* node, const void* address) {
    if (node != nullptr && address != nullptr) {
        // Only the number is used, to tell one record from another.
        ulonglong2attr(node, "ui-id", reinterpret_cast<std::uintptr_t>(address));
    }
}

Ezxml* add_uchar_to_xml(Ezxml* node, std::string_view name, const std::uint8_t* value,
                        std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_ushort_to_xml(Ezxml* node, std::string_view name, const std::uint16_t* value,
                         std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_int_to_xml(Ezxml* node, std::string_view name, const std::int32_t* value,
                      std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_long_to_xml(Ezxml* node, std::string_view name, const long* value,
                       std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_uint_to_xml(Ezxml* node, std::string_view name, const std::uint32_t* value,
                       std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_ulong_to_xml(Ezxml* node, std::string_view name, const unsigned long* value,
                        std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_longlong_to_xml(Ezxml* node, std::string_view name, const long long* value,
                           std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_ulonglong_to_xml(Ezxml* node, std::string_view name, const unsigned long long* value,
                            std::uint64_t position) {
    return add_number(node, name, value, position);
}

Ezxml* add_string_to_xml(Ezxml* node, std::string_view name, OptText text, std::size_t length,
                         std::uint64_t position) {
    Ezxml* const child = ezxml_add_child_copy(node, name, position);
    ezxml_set_txt_copy(child, text.view().substr(0, length));
    return child;
}

Ezxml* add_mem_to_xml(Ezxml* node, std::string_view name, std::span<const std::uint8_t> data,
                      std::uint64_t position) {
    Ezxml* const child = ezxml_add_child_copy(node, name, position);
    ulonglong2attr(child, "size", data.size());
    return child;
}

Ezxml* add_uuid_to_xml(Ezxml* node, std::string_view name, std::span<const std::uint8_t> data,
                       std::uint64_t position) {
    constexpr std::size_t kUuidSize = 16;
    Ezxml* const child = add_mem_to_xml(node, name, data, position);
    if (data.size() < kUuidSize) {
        return child;
    }
    std::string text;
    for (std::size_t i = 0; i < kUuidSize; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        append_hex_byte(text, data[i]);
    }
    ezxml_set_txt_copy(child, text);
    return child;
}

}  // namespace mediasplit
