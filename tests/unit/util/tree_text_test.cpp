#include "src/util/tree_text.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

namespace mediasplit {
namespace {

class TreeTextTest : public testing::Test {
protected:
    static std::string id_of(const void* address) {
        return std::to_string(reinterpret_cast<std::uintptr_t>(address));
    }
    [[nodiscard]] std::string text(const char* name) const {
        return ezxml_child(root_.get(), name)->txt;
    }

    EzxmlPtr root_ = ezxml_new("root");
};

TEST_F(TreeTextTest, NumbersBecomeDecimalTexts) {
    int2txt(root_.get(), -5);
    EXPECT_STREQ(root_->txt, "-5");
    int2txt(root_.get(), 0);
    EXPECT_STREQ(root_->txt, "0");
    uint2txt(root_.get(), 4294967295U);
    EXPECT_STREQ(root_->txt, "4294967295");
    longlong2txt(root_.get(), std::numeric_limits<std::int64_t>::min());
    EXPECT_STREQ(root_->txt, "-9223372036854775808");
    ulonglong2txt(root_.get(), 18446744073709551615ULL);
    EXPECT_STREQ(root_->txt, "18446744073709551615");
    string2txt(root_.get(), "abc");
    EXPECT_STREQ(root_->txt, "abc");
    string2txt(root_.get(), nullptr);
    EXPECT_STREQ(root_->txt, "abc");
}

TEST_F(TreeTextTest, NumbersBecomeAttributes) {
    int2attr(root_.get(), "a", -1);
    uint2attr(root_.get(), "b", 2);
    longlong2attr(root_.get(), "c", -3);
    ulonglong2attr(root_.get(), "d", 4);
    string2attr(root_.get(), "e", std::string("five"));
    string2attr(root_.get(), "f", nullptr);
    EXPECT_EQ(ezxml_toxml(root_.get()), R"(<root a="-1" b="2" c="-3" d="4" e="five"></root>)");
    uint2attr(root_.get(), "b", 0);
    EXPECT_STREQ(ezxml_attr(root_.get(), "b"), "0");
}

TEST_F(TreeTextTest, ChildrenHoldTheValueAndItsIdentity) {
    const std::uint8_t byte = 255;
    const std::uint16_t word = 65535;
    const std::int32_t number = -7;
    const long more = -8;
    const std::uint32_t plain = 9;
    const unsigned long much = 10;
    const long long wide = -11;
    const unsigned long long widest = 12;
    add_uchar_to_xml(root_.get(), "byte", &byte, 0);
    add_ushort_to_xml(root_.get(), "word", &word, 1);
    add_int_to_xml(root_.get(), "number", &number, 2);
    add_long_to_xml(root_.get(), "more", &more, 3);
    add_uint_to_xml(root_.get(), "plain", &plain, 4);
    add_ulong_to_xml(root_.get(), "much", &much, 5);
    add_longlong_to_xml(root_.get(), "wide", &wide, 6);
    add_ulonglong_to_xml(root_.get(), "widest", &widest, 7);
    EXPECT_EQ(text("byte"), "255");
    EXPECT_EQ(text("word"), "65535");
    EXPECT_EQ(text("number"), "-7");
    EXPECT_EQ(text("more"), "-8");
    EXPECT_EQ(text("plain"), "9");
    EXPECT_EQ(text("much"), "10");
    EXPECT_EQ(text("wide"), "-11");
    EXPECT_EQ(text("widest"), "12");
    EXPECT_EQ(ezxml_attr(ezxml_child(root_.get(), "plain"), "ui-id"), id_of(&plain));
}

TEST_F(TreeTextTest, StringChildHasTheFirstCharacters) {
    add_string_to_xml(root_.get(), "s", "abcdef", 3, 0);
    add_string_to_xml(root_.get(), "t", "ab", 30, 1);
    EXPECT_EQ(text("s"), "abc");
    EXPECT_EQ(text("t"), "ab");
}

TEST_F(TreeTextTest, MemoryChildHasItsSize) {
    const std::array<std::uint8_t, 3> data{1, 2, 3};
    add_mem_to_xml(root_.get(), "m", data, 0);
    EXPECT_STREQ(ezxml_attr(ezxml_child(root_.get(), "m"), "size"), "3");
}

TEST_F(TreeTextTest, UuidChildHasTheUsualForm) {
    std::array<std::uint8_t, 16> data{};
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<std::uint8_t>(i * 17);
    }
    add_uuid_to_xml(root_.get(), "u", data, 0);
    EXPECT_EQ(text("u"), "00112233-4455-6677-8899-aabbccddeeff");
    EXPECT_STREQ(ezxml_attr(ezxml_child(root_.get(), "u"), "size"), "16");
    add_uuid_to_xml(root_.get(), "short", std::span(data).first(15), 1);
    EXPECT_EQ(text("short"), "");
}

TEST_F(TreeTextTest, IdentityNeedsBoth) {
    ptr2id(root_.get(), nullptr);
    EXPECT_EQ(ezxml_attr(root_.get(), "ui-id"), nullptr);
    ptr2id(nullptr, this);
    ptr2id(root_.get(), this);
    EXPECT_EQ(ezxml_attr(root_.get(), "ui-id"), id_of(this));
}

TEST_F(TreeTextTest, NullNodeDoesNothing) {
    const std::uint32_t value = 1;
    const std::array<std::uint8_t, 16> data{};
    int2txt(nullptr, 1);
    string2txt(nullptr, "a");
    uint2attr(nullptr, "a", 1);
    string2attr(nullptr, "a", "b");
    EXPECT_EQ(add_uint_to_xml(nullptr, "a", &value, 0), nullptr);
    EXPECT_EQ(add_uint_to_xml(root_.get(), "a", nullptr, 0), nullptr);
    EXPECT_EQ(add_string_to_xml(nullptr, "a", "b", 1, 0), nullptr);
    EXPECT_EQ(add_mem_to_xml(nullptr, "a", data, 0), nullptr);
    EXPECT_EQ(add_uuid_to_xml(nullptr, "a", data, 0), nullptr);
    EXPECT_EQ(root_->child, nullptr);
}

}  // namespace
}  // namespace mediasplit
