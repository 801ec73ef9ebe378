#include <gtest/gtest.h>

#include <string>

#include "base/xml_tree.h"

namespace mediasplit {
namespace {

EzxmlPtr parse(const std::string& subset, const std::string& body) {
    return ezxml_parse_str("<!DOCTYPE r [" + subset + "]>" + body);
}

std::string entity(const std::string& name, const std::string& value) {
    return "<!ENTITY " + name + " \"" + value + "\">\n";
}

TEST(XmlEntities, AreReplacedInTextAndAttributes) {
    const EzxmlPtr root =
        parse("<!ENTITY a 'x'> <!ENTITY b \"[&a;&a;]\">", "<r c='&b;-&a;'>1&b;2</r>");
    EXPECT_STREQ(root->txt, "1[xx]2");
    EXPECT_STREQ(ezxml_attr(root.get(), "c"), "[xx]-x");
    EXPECT_STREQ(ezxml_error(root.get()), "");
}

TEST(XmlEntities, FirstDeclarationCounts) {
    EXPECT_STREQ(parse(entity("a", "1") + entity("a", "2"), "<r>&a;</r>")->txt, "1");
}

TEST(XmlEntities, PredefinedOnesCannotBeChanged) {
    EXPECT_STREQ(parse(entity("lt", "x") + entity("a", "&lt;"), "<r>&lt;&a;</r>")->txt, "<<");
}

TEST(XmlEntities, CharacterReferencesInValuesAreReplacedAtTheirDeclaration) {
    // XML 1.0 appendix D: the first step leaves "&#60;", the second "<".
    EXPECT_STREQ(parse(entity("a", "&#38;#60;b"), "<r>&a;</r>")->txt, "<b");
}

TEST(XmlEntities, ValuesAreTextAndNoMarkup) {
    const EzxmlPtr root = parse("<!ENTITY a '<b/>'>", "<r>&a;</r>");
    EXPECT_STREQ(root->txt, "<b/>");
    EXPECT_EQ(root->child, nullptr);
}

TEST(XmlEntities, TextGoesOnBehindALongReplacement) {
    const EzxmlPtr root = parse(entity("a", std::string(5000, 'x')), "<r>1<c/>&a;<d/>2&a;</r>");
    EXPECT_EQ(std::string(root->txt), "1" + std::string(5000, 'x') + "2" + std::string(5000, 'x'));
    EXPECT_EQ(ezxml_child(root.get(), "d")->off, 5001U);
}

TEST(XmlEntities, OtherDeclarationsArePassedOver) {
    const EzxmlPtr root = parse(
        "<!ELEMENT r (a|b)*> <!-- ]> <!ENTITY a 'c'> --> <?pi ]> ?> %pe; <!ENTITY % p 'x'>"
        "<!ENTITY e SYSTEM 'file:///etc/passwd'> <!NOTATION n PUBLIC '>'> <!ENTITY a 'ok'>",
        "<r>&a;&e;&p;</r>");
    EXPECT_STREQ(root->txt, "ok&e;&p;");
}

TEST(XmlEntities, DoctypeWithoutASubsetIsPassedOver) {
    EXPECT_STREQ(ezxml_parse_str("<!DOCTYPE r SYSTEM 'a>b'><r>x</r>")->txt, "x");
    EXPECT_STREQ(ezxml_error(ezxml_parse_str("<!DOCTYPE r [").get()),
                 "[error near line 1]: missing >");
    EXPECT_STREQ(ezxml_error(ezxml_parse_str("<!DOCTYPE r").get()),
                 "[error near line 1]: missing >");
}

TEST(XmlEntities, OnlyTheFirstDoctypeAheadOfTheRootCounts) {
    const EzxmlPtr root = ezxml_parse_str(
        "<!DOCTYPE r [<!ENTITY a '&b;'>]><!DOCTYPE r [<!ENTITY b '&a;'>]><r>&a;</r>");
    EXPECT_STREQ(root->txt, "&b;");
    EXPECT_STREQ(ezxml_parse_str("<r><!DOCTYPE r [<!ENTITY b 'x'>]>&b;</r>")->txt, "&b;");
}

TEST(XmlEntities, CircularDeclarationEndsTheParsing) {
    const EzxmlPtr root =
        parse(entity("a", "&b;") + entity("b", "&c;") + entity("c", "&a;"), "<r/>");
    EXPECT_EQ(root->name, nullptr);
    EXPECT_EQ(std::string(ezxml_error(root.get()))
                  .rfind("[error near line 4]: circular entity "
                         "declaration &",
                         0),
              0U);
    EXPECT_EQ(parse(entity("a", "&#38;a;"), "<r/>")->name, nullptr);
}

// e1 is plain, each further one holds the one ahead of it.
std::string chain(int count) {
    std::string subset = entity("e1", "x");
    for (int i = 2; i <= count; ++i) {
        subset += entity("e" + std::to_string(i), "&e" + std::to_string(i - 1) + ";");
    }
    return subset;
}

TEST(XmlEntities, NestSixteenDeepAndNoDeeper) {
    EXPECT_STREQ(parse(chain(16), "<r>&e16;</r>")->txt, "x");
    const EzxmlPtr root = parse(chain(17), "<r>&e1;</r>");
    EXPECT_EQ(root->name, nullptr);
    EXPECT_NE(std::string(ezxml_error(root.get())).find("circular"), std::string::npos);
    EXPECT_EQ(parse(chain(100000), "<r/>")->name, nullptr);
}

// Each level holds the one below `fan` times.
std::string bomb(int levels, int fan) {
    std::string subset = entity("l1", "0123456789");
    for (int i = 2; i <= levels; ++i) {
        std::string value;
        for (int n = 0; n < fan; ++n) {
            value += "&l" + std::to_string(i - 1) + ";";
        }
        subset += entity("l" + std::to_string(i), value);
    }
    return subset;
}

constexpr std::size_t kMebibyte = 1048576;

TEST(XmlEntities, ABombEndsTheParsing) {
    const EzxmlPtr root = parse(bomb(10, 10), "<r><a/>&l10;<b/></r>");
    EXPECT_STREQ(root->name, "r");
    EXPECT_NE(ezxml_child(root.get(), "a"), nullptr);
    EXPECT_EQ(ezxml_child(root.get(), "b"), nullptr);
    EXPECT_STREQ(root->txt, "");
    EXPECT_STREQ(ezxml_error(root.get()), "[error near line 11]: circular entity declaration &l10");
}

// Whether entity "a" of `size` bytes may be used `count` times in a document of about `length`
// bytes, half of the uses in attributes.
bool may_expand(std::size_t size, std::size_t count, std::size_t length = 0) {
    const std::string subset = entity("a", std::string(size, 'x'));
    std::string body;
    for (std::size_t i = 0; i < count; ++i) {
        body += i % 2 == 0 ? "<c>&a;</c>" : "<c d='&a;'/>";
    }
    const std::size_t used = subset.size() + body.size();
    const std::string filling(length > used ? length - used : 0, ' ');
    return *ezxml_error(parse(subset, "<r>" + body + filling + "</r>").get()) == '\0';
}

TEST(XmlEntities, ExpandToAMebibyteInAnyDocument) {
    EXPECT_TRUE(may_expand(1000, 1000));
    EXPECT_FALSE(may_expand(1000, 1100));
}

TEST(XmlEntities, ExpandToFourTimesALongDocument) {
    EXPECT_TRUE(may_expand(1000, 3900, kMebibyte));
    EXPECT_FALSE(may_expand(1000, 4300, kMebibyte));
}

TEST(XmlEntities, ExpandTo16MebibytesAtTheMost) {
    EXPECT_TRUE(may_expand(kMebibyte, 15, 8 * kMebibyte));
    EXPECT_FALSE(may_expand(kMebibyte, 17, 8 * kMebibyte));
}

TEST(XmlEntities, ExpansionToNothingIsBoundedToo) {
    std::string subset = "<!ENTITY l1 ''>";
    for (int i = 2; i <= 16; ++i) {
        std::string value;
        for (int n = 0; n < 100; ++n) {
            value += "&l" + std::to_string(i - 1) + ";";
        }
        subset += entity("l" + std::to_string(i), value);
    }
    EXPECT_STRNE(ezxml_error(parse(subset, "<r>&l16;</r>").get()), "");
}

TEST(XmlEntities, BombInADefaultValueEndsTheParsing) {
    const EzxmlPtr root = parse(bomb(10, 10) + "<!ATTLIST r a CDATA '&l10;'>", "<r/>");
    EXPECT_EQ(root->name, nullptr);
    EXPECT_STRNE(ezxml_error(root.get()), "");
}

TEST(XmlAttributes, DefaultsOfTheDtdAreFound) {
    const EzxmlPtr root = parse(
        "<!ENTITY e 'E'><!ATTLIST r a CDATA 'da&e;' b CDATA #FIXED \"db\" c ID #IMPLIED\n d "
        "(x|y) 'y' e NOTATION (n) 'n' f CDATA #REQUIRED><!ATTLIST r a CDATA 'later'>",
        "<r b='own'><s/></r>");
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "daE");
    EXPECT_STREQ(ezxml_attr(root.get(), "b"), "own");
    EXPECT_EQ(ezxml_attr(root.get(), "c"), nullptr);
    EXPECT_STREQ(ezxml_attr(root.get(), "d"), "y");
    EXPECT_STREQ(ezxml_attr(root.get(), "e"), "n");
    EXPECT_EQ(ezxml_attr(root.get(), "f"), nullptr);
    EXPECT_EQ(ezxml_attr(ezxml_child(root.get(), "s"), "a"), nullptr);
}

TEST(XmlAttributes, TokenTypesHaveTheirBlanksCollapsed) {
    const EzxmlPtr root = parse("<!ATTLIST r a NMTOKENS #IMPLIED d NMTOKENS '  p   q '>",
                                "<r a='  x \n y\t ' b='  x  '/>");
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "x y");
    EXPECT_STREQ(ezxml_attr(root.get(), "b"), "  x  ");
    EXPECT_STREQ(ezxml_attr(root.get(), "d"), "p q");
    EXPECT_STREQ(ezxml_attr(parse("<!ATTLIST r a NMTOKENS #IMPLIED>", "<r a='  '/>").get(), "a"),
                 "");
}

TEST(XmlAttributes, BrokenDeclarationsAreMalformed) {
    for (const char* const subset :
         {"<!ATTLIST>", "<!ATTLIST r a>", "<!ATTLIST r a (x|y 'x'>", "<!ATTLIST r a CDATA #FIXED>",
          "<!ATTLIST r a CDATA x>", "<!ATTLIST r a NOTATION n 'n'>"}) {
        EXPECT_STREQ(ezxml_error(parse(subset, "<r/>").get()),
                     "[error near line 1]: malformed <!ATTLIST")
            << subset;
    }
}

}  // namespace
}  // namespace mediasplit
