#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/xml_tree.h"

namespace mediasplit {
namespace {

std::string order_of(const Ezxml* parent) {
    std::string text;
    for (const Ezxml* node = parent->child; node != nullptr; node = node->ordered) {
        text += node->name;
        text += std::to_string(node->off) + " ";
    }
    return text;
}

// Walks `sibling` and `next`: the children name by name.
std::string by_name(const Ezxml* parent) {
    std::string text;
    for (const Ezxml* first = parent->child; first != nullptr; first = first->sibling) {
        for (const Ezxml* node = first; node != nullptr; node = node->next) {
            text += node->name;
            text += std::to_string(node->off) + " ";
        }
        text += "| ";
    }
    return text;
}

TEST(XmlBuild, ChildrenStandByTheirOffset) {
    const EzxmlPtr root = ezxml_new("r");
    ezxml_add_child(root.get(), "b", 5);
    ezxml_add_child(root.get(), "a", 9);
    ezxml_add_child(root.get(), "b", 1);
    ezxml_add_child(root.get(), "b", 7);
    EXPECT_EQ(order_of(root.get()), "b1 b5 b7 a9 ");
    EXPECT_EQ(by_name(root.get()), "b1 b5 b7 | a9 | ");
    ezxml_add_child(root.get(), "a", 0);
    EXPECT_EQ(order_of(root.get()), "a0 b1 b5 b7 a9 ");
    EXPECT_EQ(by_name(root.get()), "a0 a9 | b1 b5 b7 | ");
}

TEST(XmlBuild, EqualOffsetsKeepTheOrderOfAdding) {
    const EzxmlPtr root = ezxml_new("r");
    Ezxml* const first = ezxml_add_child(root.get(), "a", 3);
    Ezxml* const second = ezxml_add_child(root.get(), "b", 3);
    ezxml_add_child(root.get(), "z", 9);
    Ezxml* const third = ezxml_add_child(root.get(), "c", 3);
    EXPECT_EQ(first->ordered, second);
    EXPECT_EQ(second->ordered, third);
}

TEST(XmlBuild, NewChildHasNoAttributesAndAnEmptyText) {
    const EzxmlPtr root = ezxml_new(nullptr);
    EXPECT_EQ(root->name, nullptr);
    const Ezxml* const child = ezxml_add_child(root.get(), "a", 0);
    EXPECT_STREQ(child->txt, "");
    EXPECT_EQ(child->attr[0], nullptr);
    EXPECT_EQ(child->parent, root.get());
    EXPECT_EQ(ezxml_add_child(nullptr, "a", 0), nullptr);
    EXPECT_EQ(ezxml_add_child_copy(nullptr, "a", 0), nullptr);
}

TEST(XmlBuild, AttributeSetTwiceKeepsOneEntryWithTheLastValue) {
    const EzxmlPtr root = ezxml_new("r");
    ezxml_set_attr(root.get(), "a", "1");
    ezxml_set_attr(root.get(), "b", "2");
    ezxml_set_attr(root.get(), "a", "3");
    EXPECT_EQ(ezxml_toxml(root.get()), R"(<r a="3" b="2"></r>)");
    EXPECT_EQ(root->attr[4], nullptr);
}

TEST(XmlBuild, NullValueRemovesAnAttribute) {
    const EzxmlPtr root = ezxml_parse_str("<r a='1' b='2' c='3'/>");
    ezxml_set_attr(root.get(), "b", nullptr);
    EXPECT_EQ(ezxml_toxml(root.get()), R"(<r a="1" c="3"></r>)");
    ezxml_set_attr(root.get(), "none", nullptr);
    ezxml_set_attr(root.get(), "a", nullptr);
    ezxml_set_attr(root.get(), "c", nullptr);
    EXPECT_EQ(root->attr[0], nullptr);
    ezxml_set_attr(root.get(), "d", "4");
    EXPECT_STREQ(ezxml_attr(root.get(), "d"), "4");
    EXPECT_EQ(ezxml_set_attr(nullptr, "a", "b"), nullptr);
}

TEST(XmlBuild, NamesAndTextsAreStoredAsGiven) {
    const char* const name = "n";
    const char* const value = "v";
    const EzxmlPtr root = ezxml_new("r");
    const Ezxml* const child = ezxml_add_child(root.get(), name, 0);
    EXPECT_EQ(child->name, name);
    ezxml_set_attr(root.get(), name, value);
    EXPECT_EQ(root->attr[0], name);
    EXPECT_EQ(root->attr[1], value);
    ezxml_set_txt(root.get(), value);
    EXPECT_EQ(root->txt, value);
    EXPECT_EQ(root->flags & kEzxmlOwnsText, 0);
    ezxml_set_txt(root.get(), nullptr);
    EXPECT_STREQ(root->txt, "");
    EXPECT_EQ(ezxml_set_txt(nullptr, "x"), nullptr);
}

TEST(XmlBuild, CopiesOutliveTheirSourceAndAreFreedWithTheNode) {
    const EzxmlPtr root = ezxml_new("r");
    Ezxml* child = nullptr;
    {
        std::string text(100, 'x');
        child = ezxml_add_child_copy(root.get(), text, 0);
        ezxml_set_txt_copy(child, text);
        for (int i = 0; i < 10; ++i) {
            ezxml_set_attr_copy(child, "name", text + std::to_string(i));
        }
        text.assign(100, '?');
    }
    EXPECT_EQ(std::string(child->name), std::string(100, 'x'));
    EXPECT_EQ(std::string(child->txt), std::string(100, 'x'));
    EXPECT_EQ(std::string(ezxml_attr(child, "name")), std::string(100, 'x') + "9");
    EXPECT_EQ(child->attr[2], nullptr);
    EXPECT_EQ(child->flags, kEzxmlOwnsName | kEzxmlOwnsText | kEzxmlOwnsAttributes);
    ezxml_set_attr(child, "name", "borrowed");
    EXPECT_STREQ(ezxml_attr(child, "name"), "borrowed");
    ezxml_set_txt(child, "borrowed");
    EXPECT_EQ(child->flags & kEzxmlOwnsText, 0);
}

TEST(XmlBuild, FlagsSetByHandFreeNothingThatIsBorrowed) {
    const EzxmlPtr root = ezxml_new("r");
    Ezxml* const child = ezxml_add_child(root.get(), "literal", 0);
    ezxml_set_txt(child, "literal");
    ezxml_set_attr(child, "literal", "literal");
    EXPECT_EQ(ezxml_set_flag(child, 0x20 | 0x40 | 0x80), child);
    EXPECT_EQ(child->flags, 0xE0);
    EXPECT_EQ(ezxml_set_flag(nullptr, 0x20), nullptr);
}

TEST(XmlBuild, FreeingAChildTakesItOutOfItsTree) {
    const EzxmlPtr root =
        ezxml_parse_str("<r><a i='1'><x><y/></x></a><b/><a i='2'/><c/><a i='3'/></r>");
    ezxml_free(root->child);
    EXPECT_EQ(by_name(root.get()), "b0 | a0 a0 | c0 | ");
    EXPECT_STREQ(ezxml_attr(ezxml_child(root.get(), "a"), "i"), "2");
    ezxml_free(ezxml_child(root.get(), "c"));
    ezxml_free(ezxml_child(root.get(), "b"));
    ezxml_free(ezxml_child(root.get(), "a"));
    ezxml_free(ezxml_child(root.get(), "a"));
    EXPECT_EQ(root->child, nullptr);
    // The memory of freed nodes is used again, and as new.
    const Ezxml* const again = ezxml_add_child(root.get(), "z", 0);
    EXPECT_EQ(again->child, nullptr);
    EXPECT_EQ(again->attr[0], nullptr);
    EXPECT_EQ(again->next, nullptr);
    EXPECT_EQ(order_of(root.get()), "z0 ");
}

TEST(XmlBuild, TextIsEscapedWhenWritten) {
    const EzxmlPtr root = ezxml_new("r");
    ezxml_set_txt(root.get(), "<&>\"\n\r");
    ezxml_set_attr(root.get(), "a", "<&>\"\n\t\r");
    EXPECT_EQ(ezxml_toxml(root.get()),
              "<r a=\"&lt;&amp;&gt;&quot;&#xA;&#x9;&#xD;\">&lt;&amp;&gt;\"\n&#xD;</r>");
    EXPECT_EQ(ezxml_toxml(nullptr), "");
}

TEST(XmlBuild, WrittenTreeReadsBackAsItWas) {
    const EzxmlPtr root = ezxml_new("r");
    Ezxml* const child = ezxml_add_child(root.get(), "c", 2);
    ezxml_set_txt(root.get(), "abcd");
    ezxml_set_txt(child, "<in>");
    ezxml_set_attr(child, "q", "a\nb\"");
    const std::string text = ezxml_toxml(root.get());
    const EzxmlPtr again = ezxml_parse_str(text);
    EXPECT_STREQ(again->txt, "abcd");
    EXPECT_EQ(ezxml_child(again.get(), "c")->off, 2U);
    EXPECT_STREQ(ezxml_child(again.get(), "c")->txt, "<in>");
    EXPECT_STREQ(ezxml_attr(ezxml_child(again.get(), "c"), "q"), "a\nb\"");
    EXPECT_EQ(ezxml_toxml(again.get()), text);
}

// With few and with many names, in any order of offsets: the three chains agree.
TEST(XmlBuild, ChainsAgreeForAnyOrderOfAdding) {
    std::vector<std::string> names;
    names.reserve(40);
    for (int i = 0; i < 40; ++i) {
        names.push_back("n" + std::to_string(i));
    }
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round) {
        const EzxmlPtr root = ezxml_new("r");
        const std::size_t count = random() % 60;
        const std::size_t variety = 1 + random() % names.size();
        for (std::size_t i = 0; i < count; ++i) {
            ezxml_add_child(root.get(), names[random() % variety].c_str(), random() % 20);
            if (random() % 10 == 0) {
                ezxml_free(root->child);
            }
        }
        std::size_t ordered = 0;
        for (const Ezxml* node = root->child; node != nullptr; node = node->ordered) {
            ++ordered;
            if (node->ordered != nullptr) {
                ASSERT_LE(node->off, node->ordered->off);
            }
        }
        std::size_t chained = 0;
        for (const Ezxml* first = root->child; first != nullptr; first = first->sibling) {
            ASSERT_EQ(ezxml_child(root.get(), first->name), first);
            for (const Ezxml* node = first; node != nullptr; node = node->next) {
                ++chained;
                ASSERT_STREQ(node->name, first->name);
                if (node->next != nullptr) {
                    ASSERT_LE(node->off, node->next->off);
                }
            }
        }
        ASSERT_EQ(ordered, chained);
    }
}

}  // namespace
}  // namespace mediasplit
