// From a text or file to the tree.
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/mpd_reading.h"
#include "tests/support/recording_sink.h"
#include "tests/support/temp_folder.h"

namespace mediasplit {
namespace {

TEST(ParseDashData, ReadsATextAFileOrAPath) {
    const TempFolder folder;
    const std::string path = folder.write("m.mpd", "<MPD><Period/></MPD>");
    EzxmlPtr root;
    EXPECT_EQ(parse_dash_data(nullptr, nullptr, path, &root, nullptr), Status::kOk);
    EXPECT_NE(ezxml_child(root.get(), "Period"), nullptr);
    EXPECT_EQ(parse_dash_data("<MPD a='b'/>", nullptr, path, &root, nullptr), Status::kOk);
    EXPECT_STREQ(ezxml_attr(root.get(), "a"), "b");
    std::FILE* const file = std::fopen(path.c_str(), "r");
    std::fgetc(file);  // it is read from its start all the same
    EXPECT_EQ(parse_dash_data(nullptr, file, "x", &root, nullptr), Status::kOk);
    EXPECT_NE(ezxml_child(root.get(), "Period"), nullptr);
    std::fclose(file);
}

TEST(ParseDashData, RefusesMissingArguments) {
    const RecordingSink sink;
    EzxmlPtr root;
    EXPECT_EQ(parse_dash_data("<MPD/>", nullptr, nullptr, &root, nullptr), Status::kFailed);
    EXPECT_EQ(parse_dash_data("<MPD/>", nullptr, "p", nullptr, nullptr), Status::kFailed);
    EXPECT_EQ(sink.ids(), (std::vector<int>{3006, 3006}));
}

TEST(ParseDashData, NamesAFileThatCantBeOpened) {
    const RecordingSink sink;
    EzxmlPtr root;
    EXPECT_EQ(parse_dash_data(nullptr, nullptr, "/nowhere/m.mpd", &root, nullptr), Status::kFailed);
    ASSERT_EQ(sink.ids(), std::vector<int>{4024});
    EXPECT_EQ(sink.reports()[0].text, "Fail to parse the MPD: /nowhere/m.mpd");
}

TEST(ParseDashData, WantsAnMpdAsRoot) {
    for (const char* text : {"", "<mpd/>", "<MPDs/>", "text", "<Period/>"}) {
        const RecordingSink sink;
        EzxmlPtr root;
        EXPECT_EQ(parse_dash_data(text, nullptr, "p", &root, nullptr), Status::kFailed) << text;
        EXPECT_EQ(sink.ids(), std::vector<int>{4026}) << text;
        EXPECT_NE(root, nullptr);
    }
}

TEST(ParseDashData, UsesABrokenDocumentAsFarAsItGoes) {
    const RecordingSink sink;
    testing::MpdReading mpd(
        "<MPD><Period id='a'><AdaptationSet><Representation id='1' "
        "bandwidth='1'/></AdaptationSet></Period><Period id='b'");
    EXPECT_EQ(mpd.status, Status::kOk);
    mpd.read();
    EXPECT_EQ(mpd.status, Status::kOk);
    EXPECT_EQ(mpd.info->periods[0].representations.size(), 1U);
    EXPECT_TRUE(sink.ids().empty());
}

TEST(ParseDashData, ReadsUtf16) {
    std::string text = "\xFF\xFE";
    for (const char c : std::string("<MPD type='x'><Period/></MPD>")) {
        text += c;
        text += '\0';
    }
    testing::MpdReading mpd(text);
    EXPECT_EQ(mpd.status, Status::kOk);
    EXPECT_STREQ(ezxml_attr(mpd.root.get(), "type"), "x");
}

TEST(AttributeNumbers, FollowStrtoul) {
    struct Row {
        const char* text;
        std::uint32_t value;
        Status status;
    };
    const Row rows[] = {{"1920", 1920, Status::kOk},
                        {" +7", 7, Status::kOk},
                        {"-1", 0xFFFFFFFF, Status::kOk},
                        {"4294967301", 5, Status::kOk},
                        {"99999999999999999999999", 0xFFFFFFFF, Status::kOk},
                        {"1920x", 1920, Status::kRuleBroken},
                        {"1920 ", 1920, Status::kRuleBroken},
                        {"0x10", 0, Status::kRuleBroken},
                        {" ", 0, Status::kRuleBroken},
                        {"", 0, Status::kRuleBroken}};
    for (const Row& row : rows) {
        const RecordingSink sink;
        const EzxmlPtr node = ezxml_new("n");
        ezxml_set_attr(node.get(), "a", row.text);
        std::uint32_t value = 3;
        EXPECT_EQ(get_attribute_uint32(node.get(), "a", value), row.status) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
        EXPECT_EQ(sink.count(4092), row.status == Status::kOk ? 0U : 1U) << row.text;
    }
    const EzxmlPtr node = ezxml_new("n");
    std::uint32_t value = 3;
    EXPECT_EQ(get_attribute_uint32(node.get(), "a", value), Status::kOk);
    EXPECT_EQ(value, 3U);
}

TEST(AttributeNumbers, Of64BitsAreReadWithoutATest) {
    const EzxmlPtr node = ezxml_new("n");
    ezxml_set_attr(node.get(), "a", "18446744073709551615");
    ezxml_set_attr(node.get(), "b", "12x");
    std::uint64_t value = 1;
    EXPECT_EQ(get_attribute_uint64(node.get(), "a", value), Status::kOk);
    EXPECT_EQ(value, ~std::uint64_t{0});
    EXPECT_EQ(get_attribute_uint64(node.get(), "b", value), Status::kOk);
    EXPECT_EQ(value, 0U);
    value = 1;
    EXPECT_EQ(get_attribute_uint64(node.get(), "c", value), Status::kOk);
    EXPECT_EQ(value, 0U);
}

}  // namespace
}  // namespace mediasplit
