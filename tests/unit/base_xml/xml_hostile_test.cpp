#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "base/xml_tree.h"

namespace mediasplit {
namespace {

const char* const kDocument =
    "<?xml version='1.0'?><!DOCTYPE MPD [<!ENTITY e 'E&amp;'><!ATTLIST S d NMTOKEN '1'>]>\n"
    "<MPD type=\"static\"><!-- c --><Period id='&e;'>\n te&e;xt<S t=' 0 ' r=\"2\"/><S/>"
    "<![CDATA[x<y]]><BaseURL>a/&#98;</BaseURL></Period></MPD>\n";

// Reads all that a tree shows.
std::size_t walk(const Ezxml* root) {
    std::size_t count = 0;
    for (const Ezxml* node = root; node != nullptr;) {
        count += std::string_view(node->txt).size() + ezxml_toxml(nullptr).size() + 1;
        for (const char* const* text = node->attr; *text != nullptr; ++text) {
            count += std::string_view(*text).size();
        }
        (void)ezxml_attr(node, "d");
        if (node->child != nullptr) {
            node = node->child;
            continue;
        }
        while (node != nullptr && node->ordered == nullptr) {
            node = node->parent;
        }
        node = node == nullptr ? nullptr : node->ordered;
    }
    return count;
}

TEST(XmlHostile, DocumentCutAtAnyByteStandsAsFarAsItGoes) {
    const std::string whole = kDocument;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const EzxmlPtr root = ezxml_parse_str(whole.substr(0, size));
        ASSERT_TRUE(root);
        walk(root.get());
        (void)ezxml_toxml(root.get());
    }
}

TEST(XmlHostile, DocumentWithAnyByteChangedIsRead) {
    const std::string whole = kDocument;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int change : {0x01, 0x80, 0xFF, 0x1D, '<' ^ '>', '&' ^ ';'}) {
            std::string text = whole;
            text[at] = static_cast<char>(text[at] ^ change);
            const EzxmlPtr root = ezxml_parse_str(text);
            ASSERT_TRUE(root);
            walk(root.get());
        }
        for (const char c : std::string("<>&;'\"/!?[]- =%#")) {
            std::string text = whole;
            text[at] = c;
            walk(ezxml_parse_str(text).get());
            text = whole;
            text.insert(at, 1, c);
            walk(ezxml_parse_str(text).get());
        }
    }
}

TEST(XmlHostile, NestingIsBoundedByMemoryOnly) {
    constexpr std::size_t kDepth = 1000000;
    std::string text;
    for (std::size_t i = 0; i < kDepth; ++i) {
        text += "<a>";
    }
    const EzxmlPtr open = ezxml_parse_str(text);
    EXPECT_STREQ(ezxml_error(open.get()), "[error near line 1]: unclosed tag <a>");
    EXPECT_EQ(ezxml_toxml(open.get()).size(), 7 * kDepth);
    for (std::size_t i = 0; i < kDepth; ++i) {
        text += "</a>";
    }
    const EzxmlPtr closed = ezxml_parse_str(text);
    EXPECT_STREQ(ezxml_error(closed.get()), "");
    EXPECT_EQ(walk(closed.get()), kDepth);
    ezxml_free(closed->child);
    EXPECT_EQ(walk(closed.get()), 1U);
}

// Would take minutes if a child were found by walking its siblings.
TEST(XmlHostile, ManySiblingsBesideVeryLongNamesAreRead) {
    std::string text = "<r>";
    for (const char first : {'a', 'b', 'c', 'd', 'e', 'f'}) {
        text += "<" + std::string(200'000, first) + "/>";
    }
    for (int i = 0; i < 300'000; ++i) {
        text += "<q/>";
    }
    const EzxmlPtr root = ezxml_parse_str(text + "</r>");
    std::size_t count = 0;
    for (const Ezxml* node = ezxml_child(root.get(), "q"); node != nullptr; node = node->next) {
        ++count;
    }
    EXPECT_EQ(count, 300'000U);
}

TEST(XmlHostile, ManySiblingsOfOneNameAreRead) {
    std::string text = "<r>";
    for (int i = 0; i < 300000; ++i) {
        text += "\n <S d='1' r='2'/>";
    }
    const EzxmlPtr root = ezxml_parse_str(text + "</r>");
    std::size_t count = 0;
    for (const Ezxml* node = ezxml_child(root.get(), "S"); node != nullptr; node = node->next) {
        ++count;
    }
    EXPECT_EQ(count, 300000U);
    EXPECT_EQ(std::string_view(root->txt).size(), 600000U);
}

TEST(XmlHostile, ManySiblingsOfDifferentNamesAreRead) {
    std::string text = "<r>";
    for (int i = 0; i < 200000; ++i) {
        text += "<n" + std::to_string(i) + "/>";
    }
    const EzxmlPtr root = ezxml_parse_str(text + "</r>");
    for (int i = 0; i < 200000; i += 7) {
        ASSERT_NE(ezxml_child(root.get(), "n" + std::to_string(i)), nullptr);
    }
    EXPECT_EQ(ezxml_child(root.get(), "n200000"), nullptr);
}

TEST(XmlHostile, ManyChildrenAddedByHandInOrder) {
    const EzxmlPtr root = ezxml_new("r");
    for (std::uint64_t i = 0; i < 300000; ++i) {
        ezxml_add_child(root.get(), i % 2 == 0 ? "a" : "b", i);
    }
    EXPECT_EQ(walk(root.get()), 300001U);
}

TEST(XmlHostile, ManyDeclarationsAndAttributesAreRead) {
    std::string text = "<!DOCTYPE r [";
    for (int i = 0; i < 50000; ++i) {
        const std::string n = std::to_string(i);
        text += "<!ENTITY e" + n + " 'x'><!ATTLIST r a" + n + " CDATA 'd'>";
    }
    text += "]><r";
    for (int i = 0; i < 50000; ++i) {
        text += " b" + std::to_string(i) + "='&e" + std::to_string(i) + ";'";
    }
    const EzxmlPtr root = ezxml_parse_str(text + "/>");
    EXPECT_STREQ(ezxml_attr(root.get(), "b49999"), "x");
    EXPECT_STREQ(ezxml_attr(root.get(), "a49999"), "d");
}

// Would take very long if each declaration worked the entities out anew.
TEST(XmlHostile, ManyDocumentTypesBehindManyEntitiesAreRead) {
    std::string text = "<!DOCTYPE r [";
    for (int i = 0; i < 10000; ++i) {
        text += "<!ENTITY e" + std::to_string(i) + " 'x'>";
    }
    text += "]>";
    for (int i = 0; i < 200000; ++i) {
        text += "<!DOCTYPE a[]>";
    }
    const EzxmlPtr root = ezxml_parse_str(text + "<r>&e9999;</r>");
    EXPECT_STREQ(ezxml_error(root.get()), "");
    EXPECT_STREQ(root->txt, "x");
}

TEST(XmlHostile, SecondInternalSubsetEndsTheParsing) {
    for (const char* text :
         {"<!DOCTYPE r [<!ENTITY a 'x'>][]><r/>", "<!DOCTYPE r []><!DOCTYPE r [] []><r/>"}) {
        const EzxmlPtr root = ezxml_parse_str(text);
        EXPECT_TRUE(std::string_view(ezxml_error(root.get())).ends_with("missing >")) << text;
        EXPECT_EQ(root->name, nullptr) << text;
    }
    EXPECT_STREQ(ezxml_error(ezxml_parse_str("<!DOCTYPE r SYSTEM '[][]' []><r/>").get()), "");
}

constexpr std::size_t kElements = 20000;

// kElements elements "S", whose attribute "d" has a default of `size` characters.
std::string document_with_default(std::size_t size) {
    std::string text = "<!DOCTYPE r [<!ATTLIST S d CDATA '" + std::string(size, '1') + "'>]><r>";
    for (std::size_t i = 0; i < kElements; ++i) {
        text += "<S/>";
    }
    return text + "</r>";
}

// The lengths of the "d" of all elements "S".
std::vector<std::size_t> lengths_of_defaults(const Ezxml* root) {
    std::vector<std::size_t> lengths;
    for (const Ezxml* node = ezxml_child(root, "S"); node != nullptr; node = node->next) {
        if (const char* const value = ezxml_attr(node, "d"); value != nullptr) {
            lengths.push_back(std::string_view(value).size());
        }
    }
    return lengths;
}

TEST(XmlHostile, LongDefaultIsNotGivenToAllElements) {
    const std::string text = document_with_default(100000);
    const EzxmlPtr root = ezxml_parse_str(text);
    const std::vector<std::size_t> lengths = lengths_of_defaults(root.get());
    // Four times this document is less than a mebibyte, which is enough for ten.
    EXPECT_EQ(lengths, std::vector<std::size_t>(10, 100000));
    EXPECT_LE(lengths.size() * 100000, std::max<std::size_t>(1 << 20, 4 * text.size()));
    EXPECT_EQ(ezxml_attr(ezxml_child(root.get(), "S"), "d"), nullptr) << "nor later";
}

TEST(XmlHostile, DefaultThatIsNotLongIsGivenToAllElements) {
    for (const std::size_t size : {20U, 256U}) {
        const EzxmlPtr root = ezxml_parse_str(document_with_default(size));
        EXPECT_EQ(lengths_of_defaults(root.get()), std::vector<std::size_t>(kElements, size));
    }
    const EzxmlPtr root = ezxml_parse_str(document_with_default(257));
    EXPECT_EQ(lengths_of_defaults(root.get()).size(), (std::size_t{1} << 20) / 257);
}

TEST(XmlHostile, ManyReferencesWithoutAnEndAreRead) {
    const EzxmlPtr root =
        ezxml_parse_str("<!DOCTYPE r [<!ENTITY e 'x'>]><r>" + std::string(1000000, '&') +
                        std::string(100000, 'a') + "</r>");
    EXPECT_EQ(std::string_view(root->txt).size(), 1100000U);
}

}  // namespace
}  // namespace mediasplit
