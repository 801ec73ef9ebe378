// Putting the fields of a parsed structure into an XML tree. Every call takes a null node and does
// nothing then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/xml_tree.h"
#include "src/util/opt_text.h"

namespace mediasplit {

// Set the text of a node, or an attribute of it, to a decimal number or to a copy of a text. A
// missing text changes nothing.
void int2txt(Ezxml* node, std::int32_t value);
void uint2txt(Ezxml* node, std::uint32_t value);
void longlong2txt(Ezxml* node, std::int64_t value);
void ulonglong2txt(Ezxml* node, std::uint64_t value);
void string2txt(Ezxml* node, OptText text);
void int2attr(Ezxml* node, std::string_view name, std::int32_t value);
void uint2attr(Ezxml* node, std::string_view name, std::uint32_t value);
void longlong2attr(Ezxml* node, std::string_view name, std::int64_t value);
void ulonglong2attr(Ezxml* node, std::string_view name, std::uint64_t value);
void string2attr(Ezxml* node, std::string_view name, OptText text);

// Sets the attribute "ui-id" to the decimal value of `address`: the identity of the record that the
// node tells about.
void ptr2id(Ezxml* node, const void* address);

// Add a child named by a copy of `name` at `position` of its parent's text, with the decimal value
// as text and the identity of the value. Return the child, none for a null node.
Ezxml* add_uchar_to_xml(Ezxml* node, std::string_view name, const std::uint8_t* value,
                        std::uint64_t position);
Ezxml* add_ushort_to_xml(Ezxml* node, std::string_view name, const std::uint16_t* value,
                         std::uint64_t position);
Ezxml* add_int_to_xml(Ezxml* node, std::string_view name, const std::int32_t* value,
                      std::uint64_t position);
Ezxml* add_long_to_xml(Ezxml* node, std::string_view name, const long* value,
                       std::uint64_t position);
Ezxml* add_uint_to_xml(Ezxml* node, std::string_view name, const std::uint32_t* value,
                       std::uint64_t position);
Ezxml* add_ulong_to_xml(Ezxml* node, std::string_view name, const unsigned long* value,
                        std::uint64_t position);
Ezxml* add_longlong_to_xml(Ezxml* node, std::string_view name, const long long* value,
                           std::uint64_t position);
Ezxml* add_ulonglong_to_xml(Ezxml* node, std::string_view name, const unsigned long long* value,
                            std::uint64_t position);

// A child with the first `length` characters of `text`.
Ezxml* add_string_to_xml(Ezxml* node, std::string_view name, OptText text, std::size_t length,
                         std::uint64_t position);
// A child with an attribute "size", the number of bytes.
Ezxml* add_mem_to_xml(Ezxml* node, std::string_view name, std::span<const std::uint8_t> data,
                      std::uint64_t position);
// The same with the 16 bytes of a UUID (RFC 4122 3) as text; shorter data gives no text.
Ezxml* add_uuid_to_xml(Ezxml* node, std::string_view name, std::span<const std::uint8_t> data,
                       std::uint64_t position);

}  // namespace mediasplit
