#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/xml_tree.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

std::vector<std::string> names_in_order(const Ezxml* parent) {
    std::vector<std::string> names;
    for (const Ezxml* node = parent->child; node != nullptr; node = node->ordered) {
        names.emplace_back(node->name);
    }
    return names;
}

std::string error_of(const std::string& text) {
    return ezxml_error(ezxml_parse_str(text).get());
}

TEST(XmlParse, ElementsAttributesAndText) {
    const EzxmlPtr root = ezxml_parse_str(
        "<?xml version=\"1.0\"?>\n<!-- <c> --><MPD type='static' a = \"1\"><P id=\"p1\">x</P>"
        "<Q/><P id=\"p2\" /></MPD>\n");
    EXPECT_STREQ(root->name, "MPD");
    EXPECT_STREQ(ezxml_attr(root.get(), "type"), "static");
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "1");
    EXPECT_EQ(ezxml_attr(root.get(), "b"), nullptr);
    const Ezxml* const first = ezxml_child(root.get(), "P");
    EXPECT_STREQ(first->txt, "x");
    EXPECT_STREQ(ezxml_attr(first, "id"), "p1");
    EXPECT_STREQ(ezxml_attr(first->next, "id"), "p2");
    EXPECT_EQ(first->next->next, nullptr);
    EXPECT_EQ(first->parent, root.get());
    EXPECT_EQ(root->parent, nullptr);
    EXPECT_STREQ(ezxml_child(root.get(), "Q")->txt, "");
    EXPECT_EQ(ezxml_child(root.get(), "R"), nullptr);
    EXPECT_EQ(names_in_order(root.get()), (std::vector<std::string>{"P", "Q", "P"}));
    EXPECT_STREQ(ezxml_error(root.get()), "");
}

TEST(XmlParse, SiblingsOfOtherNamesHangBySibling) {
    const EzxmlPtr root = ezxml_parse_str("<r><a/><b/><a/><c/><b/></r>");
    const Ezxml* const a = root->child;
    EXPECT_STREQ(a->name, "a");
    EXPECT_STREQ(a->sibling->name, "b");
    EXPECT_STREQ(a->sibling->sibling->name, "c");
    EXPECT_EQ(a->sibling->sibling->sibling, nullptr);
    EXPECT_EQ(a->next, a->ordered->ordered);
}

TEST(XmlParse, NullNodeLetsChainsOfLookupsRun) {
    EXPECT_EQ(ezxml_child(nullptr, "a"), nullptr);
    EXPECT_EQ(ezxml_attr(nullptr, "a"), nullptr);
    const EzxmlPtr root = ezxml_parse_str("<r/>");
    EXPECT_EQ(ezxml_attr(ezxml_child(ezxml_child(root.get(), "a"), "b"), "c"), nullptr);
    EXPECT_STREQ(ezxml_error(nullptr), "");
    ezxml_free(nullptr);
}

TEST(XmlParse, PrefixedNamesAreOrdinaryNames) {
    const EzxmlPtr root =
        ezxml_parse_str("<r scte214:supplementalCodecs='x'><cenc:pssh>AA</cenc:pssh></r>");
    EXPECT_STREQ(ezxml_attr(root.get(), "scte214:supplementalCodecs"), "x");
    EXPECT_STREQ(ezxml_child(root.get(), "cenc:pssh")->txt, "AA");
}

TEST(XmlParse, TextIsGatheredAroundTheChildrenAndTellsTheirPlace) {
    const EzxmlPtr root = ezxml_parse_str("<r>ab<a/>cd<b>x</b><c/>ef</r>");
    EXPECT_STREQ(root->txt, "abcdef");
    EXPECT_EQ(ezxml_child(root.get(), "a")->off, 2U);
    EXPECT_EQ(ezxml_child(root.get(), "b")->off, 4U);
    EXPECT_EQ(ezxml_child(root.get(), "c")->off, 4U);
    EXPECT_EQ(ezxml_toxml(root.get()), "<r>ab<a></a>cd<b>x</b><c></c>ef</r>");
}

TEST(XmlParse, CdataStandsAsItIs) {
    const EzxmlPtr root = ezxml_parse_str("<r>a<![CDATA[<b>&amp;\r\n]]>c</r>");
    EXPECT_STREQ(root->txt, "a<b>&amp;\nc");
    EXPECT_EQ(root->child, nullptr);
}

TEST(XmlParse, LineEndsAndBlanksAreNormalised) {
    const EzxmlPtr root = ezxml_parse_str("<r a='x\ty\r\nz\n\r'>1\r\n2\r3\n</r>");
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "x y z  ");
    EXPECT_STREQ(root->txt, "1\n2\n3\n");
}

TEST(XmlParse, ReferencesAreReplaced) {
    const EzxmlPtr root = ezxml_parse_str(
        "<r a='&quot;&apos;&#xA;&#9;'>&lt;&gt;&amp;&#65;&#x42;&#xE9;&#x20AC;&#x1F600;</r>");
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "\"'\n\t");
    EXPECT_STREQ(root->txt, "<>&AB\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(XmlParse, ReferencesThatMeanNothingStand) {
    const EzxmlPtr root =
        ezxml_parse_str("<r>&nbsp; & &; &#; &#x; &#0; &#xD800; &#x110000; &#99999999999; &amp</r>");
    EXPECT_STREQ(root->txt, "&nbsp; & &; &#; &#x; &#0; &#xD800; &#x110000; &#99999999999; &amp");
}

TEST(XmlParse, ReplacedTextIsNotReadAgain) {
    EXPECT_STREQ(ezxml_parse_str("<r>&amp;lt;&#38;gt;</r>")->txt, "&lt;&gt;");
}

TEST(XmlParse, AttributesWithoutAQuotedValueAreEmpty) {
    const EzxmlPtr root = ezxml_parse_str("<r a b=c d='1' =e></r>");
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "");
    EXPECT_STREQ(ezxml_attr(root.get(), "b"), "");
    EXPECT_STREQ(ezxml_attr(root.get(), "c"), "");
    EXPECT_STREQ(ezxml_attr(root.get(), "d"), "1");
}

TEST(XmlParse, BlanksInsideTagsAreAllowed) {
    const EzxmlPtr root = ezxml_parse_str("<r\n a\n=\n'1'\n><b\n/></r\n>");
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "1");
    EXPECT_NE(ezxml_child(root.get(), "b"), nullptr);
    EXPECT_STREQ(ezxml_error(root.get()), "");
}

TEST(XmlParse, EmptyDocumentGivesARootWithoutAName) {
    for (const char* const text : {"", "   ", "no markup", "<!-- only -->", "<?only?>"}) {
        const EzxmlPtr root = ezxml_parse_str(text);
        ASSERT_TRUE(root);
        EXPECT_EQ(root->name, nullptr) << text;
        EXPECT_STREQ(root->txt, "");
        EXPECT_EQ(ezxml_attr(root.get(), "a"), nullptr);
        EXPECT_STREQ(ezxml_error(root.get()), "[error near line 1]: root tag missing") << text;
    }
}

TEST(XmlParse, CutOffDocumentStandsAsFarAsItGoes) {
    const EzxmlPtr root =
        ezxml_parse_str("<MPD a='1'>\n<Period id='1'><S d='2'/><S d=\"3\"/>te\n<S d='4");
    EXPECT_STREQ(root->name, "MPD");
    const Ezxml* const period = ezxml_child(root.get(), "Period");
    ASSERT_NE(period, nullptr);
    EXPECT_STREQ(period->txt, "te\n");
    const Ezxml* const s = ezxml_child(period, "S");
    EXPECT_STREQ(ezxml_attr(s->next, "d"), "3");
    EXPECT_EQ(s->next->next, nullptr);
    EXPECT_STREQ(ezxml_error(root.get()), "[error near line 3]: missing '");
}

TEST(XmlParse, FailuresAreTold) {
    EXPECT_EQ(error_of("<a>\n<b>\n</a>"), "[error near line 3]: unexpected closing tag </a>");
    EXPECT_EQ(error_of("<a></b>"), "[error near line 1]: unexpected closing tag </b>");
    EXPECT_EQ(error_of("</a>"), "[error near line 1]: unexpected closing tag </a>");
    EXPECT_EQ(error_of("<a>\n<b>\ntext"), "[error near line 3]: unclosed tag <b>");
    EXPECT_EQ(error_of("<a><b></b>"), "[error near line 1]: unclosed tag <a>");
    EXPECT_EQ(error_of("<a"), "[error near line 1]: missing >");
    EXPECT_EQ(error_of("<a/"), "[error near line 1]: missing >");
    EXPECT_EQ(error_of("<a/ >"), "[error near line 1]: missing >");
    EXPECT_EQ(error_of("<a></a "), "[error near line 1]: missing >");
    EXPECT_EQ(error_of("<a b=\"1></a>"), "[error near line 1]: missing \"");
    EXPECT_EQ(error_of("<a>\n\n<!-- x</a>"), "[error near line 3]: unclosed <!--");
    EXPECT_EQ(error_of("<a></a>\n<b></b>"), "[error near line 2]: markup outside of root element");
    EXPECT_EQ(error_of("<!DOCTYPE a [<!ATTLIST a b CDATA"),
              "[error near line 1]: unclosed <!ATTLIST");
    EXPECT_EQ(error_of("<!DOCTYPE a [<!ATTLIST a b>]><a/>"),
              "[error near line 1]: malformed <!ATTLIST");
    EXPECT_EQ(error_of("<!DOCTYPE a [<!ENTITY x '&x;'>]><a/>"),
              "[error near line 1]: circular entity declaration &x");
}

TEST(XmlParse, WhatStandsAheadOfAFailureStays) {
    const EzxmlPtr root = ezxml_parse_str("<a><b>1</b></a><c/>");
    EXPECT_STREQ(ezxml_child(root.get(), "b")->txt, "1");
    EXPECT_EQ(ezxml_child(root.get(), "c"), nullptr);
}

TEST(XmlParse, LongNamesInMessagesAreCut) {
    const std::string error = error_of("<" + std::string(500, 'n') + ">");
    EXPECT_EQ(error.size(), 127U);
    EXPECT_EQ(error.rfind("[error near line 1]: unclosed tag <nnn", 0), 0U);
    // A name with a conversion in it is only a name.
    EXPECT_EQ(error_of("<a%s%n>"), "[error near line 1]: unclosed tag <a%s%n>");
}

std::string utf16(const std::u16string& text, bool big) {
    std::string bytes = big ? "\xFE\xFF" : "\xFF\xFE";
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += big ? high : low;
        bytes += big ? low : high;
    }
    return bytes;
}

TEST(XmlParse, Utf16WithAByteOrderMarkIsConverted) {
    for (const bool big : {true, false}) {
        const EzxmlPtr root = ezxml_parse_str(utf16(u"<r a='\u00e9'>\u20ac\U0001F600</r>", big));
        EXPECT_STREQ(root->name, "r");
        EXPECT_STREQ(ezxml_attr(root.get(), "a"), "\xC3\xA9");
        EXPECT_STREQ(root->txt, "\xE2\x82\xAC\xF0\x9F\x98\x80");
    }
}

TEST(XmlParse, BrokenUtf16IsReplaced) {
    std::u16string text = u"<r>xyz</r>";
    text[3] = 0xD800;
    text[4] = 0xDC00;
    text[5] = 0xDC00;
    const EzxmlPtr root = ezxml_parse_str(utf16(text, true) + "\x01");
    EXPECT_STREQ(root->txt, "\xF0\x90\x80\x80\xEF\xBF\xBD");
}

TEST(XmlParse, Utf8ByteOrderMarkIsPassedOver) {
    EXPECT_STREQ(ezxml_parse_str("\xEF\xBB\xBF<r/>")->name, "r");
}

TEST(XmlParse, ZeroByteEndsTheDocument) {
    const EzxmlPtr root = ezxml_parse_str(std::string("<r><a/>\0<b/></r>", 16));
    EXPECT_NE(ezxml_child(root.get(), "a"), nullptr);
    EXPECT_EQ(ezxml_child(root.get(), "b"), nullptr);
}

TEST(XmlParse, FilesOfAnySizeAreRead) {
    const TempFolder folder;
    for (const std::size_t size : {0U, 1U, 1010U, 1017U, 1018U, 2000U, 100000U}) {
        const std::string text = "<r>" + std::string(size, 'x') + "</r>";
        const EzxmlPtr root = ezxml_parse_file(folder.write("x.mpd", text).c_str());
        ASSERT_TRUE(root);
        EXPECT_EQ(std::string(root->txt).size(), size);
    }
    EXPECT_FALSE(ezxml_parse_file(folder.path("none").c_str()));
    EXPECT_FALSE(ezxml_parse_file(nullptr));
    EXPECT_FALSE(ezxml_parse_fp(nullptr));
    const EzxmlPtr empty = ezxml_parse_file(folder.write("empty", "").c_str());
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->name, nullptr);
}

TEST(XmlParse, FileIsReadFromWhereItStands) {
    const TempFolder folder;
    std::FILE* const file = std::fopen(folder.write("x", "skipped<r/>").c_str(), "rb");
    ASSERT_EQ(std::fseek(file, 7, SEEK_SET), 0);
    EXPECT_STREQ(ezxml_parse_fp(file)->name, "r");
    std::fclose(file);
}

}  // namespace
}  // namespace mediasplit
