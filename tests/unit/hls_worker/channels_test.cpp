#include "src/hls/channels.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

using Ids = std::vector<int>;

ManifestContext context_of(const std::string& channels) {
    ManifestContext context;
    context.channels_text = channels;
    context.rendition_index = 4;
    return context;
}

Ids parse(ManifestContext& context) {
    RecordingSink sink;
    (void)parse_channels_info(&context, nullptr);
    return sink.ids();
}

Ids parse(const std::string& channels) {
    ManifestContext context = context_of(channels);
    return parse(context);
}

TEST(Channels, NoContextFails) {
    EXPECT_EQ(parse_channels_info(nullptr, nullptr), Status::kFailed);
    EXPECT_EQ(check_channels_info(nullptr, nullptr), Status::kOk);
}

TEST(Channels, MissingAttributeIsParsedWithoutAResult) {
    ManifestContext context;
    EXPECT_EQ(parse_channels_info(&context, nullptr), Status::kOk);
    EXPECT_EQ(context.channels_parsed, 1U);
    EXPECT_EQ(context.channel_count, 0U);
}

TEST(Channels, CountAndIdentifiersAreRead) {
    ManifestContext context = context_of("16/JOC,IMSA,other/more");
    EXPECT_EQ(parse(context), Ids{});
    EXPECT_EQ(context.channel_count, 16U);
    EXPECT_EQ(context.channels_have_identifier, 1U);
    EXPECT_EQ(context.channels_joc, 1U);
    EXPECT_EQ(context.channels_imsa, 1U);
    EXPECT_EQ(context.channels_none, 0U);
}

TEST(Channels, CountAloneHasNoIdentifier) {
    ManifestContext context = context_of("6");
    EXPECT_EQ(parse(context), Ids{});
    EXPECT_EQ(context.channel_count, 6U);
    EXPECT_EQ(context.channels_have_identifier, 0U);
}

TEST(Channels, RunsOfSeparatorsCountAsOne) {
    ManifestContext context = context_of("//6//,,JOC,,");
    EXPECT_EQ(parse(context), Ids{});
    EXPECT_EQ(context.channel_count, 6U);
    EXPECT_EQ(context.channels_joc, 1U);
}

TEST(Channels, CountThatIsNoNumberIsReportedWithTheIndex) {
    RecordingSink sink;
    ManifestContext context = context_of("six/JOC");
    EXPECT_EQ(parse_channels_info(&context, nullptr), Status::kRuleBroken);
    EXPECT_EQ(sink.ids(), Ids{4060});
    EXPECT_NE(sink.reports()[0].text.find("[index : 4]"), std::string::npos);
    EXPECT_EQ(context.channel_count, 0U);
    EXPECT_EQ(context.channels_joc, 1U);
    EXPECT_EQ(parse(""), Ids{4060});
    EXPECT_EQ(parse("-1"), Ids{4060});
}

TEST(Channels, DashBesideAnotherIdentifierIsReported) {
    EXPECT_EQ(parse("16/JOC,-"), Ids{4103});
    EXPECT_EQ(parse("16/-,JOC"), Ids{4103});
    EXPECT_EQ(parse("16/-"), Ids{});
    EXPECT_EQ(parse("16/JOC,IMSA"), Ids{});
}

TEST(Channels, TextOf500CharactersFailsUnread) {
    ManifestContext context = context_of("6/" + std::string(498, 'x'));
    EXPECT_EQ(parse_channels_info(&context, nullptr), Status::kFailed);
    EXPECT_EQ(context.channel_count, 0U);
    context = context_of("6/" + std::string(497, 'x'));
    EXPECT_EQ(parse_channels_info(&context, nullptr), Status::kOk);
    EXPECT_EQ(context.channel_count, 6U);
}

Ids hold(const ManifestContext& context) {
    RecordingSink sink;
    EXPECT_EQ(check_channels_info(&context, nullptr), Status::kOk);  // warnings
    return sink.ids();
}

TEST(Channels, CountThatNoStreamReachesIsReported) {
    RecordingSink sink;
    ManifestContext context = context_of("16");
    context.channel_count = 16;
    context.found_channels = 1;
    context.found_channels_max = 6;
    (void)check_channels_info(&context, nullptr);
    ASSERT_EQ(sink.ids(), Ids{2019});
    EXPECT_NE(sink.reports()[0].text.find("(value: 16)"), std::string::npos);
    EXPECT_NE(sink.reports()[0].text.find("requires 6 channels"), std::string::npos);
}

TEST(Channels, CountIsNotHeldAgainstNothing) {
    ManifestContext context = context_of("16");
    context.channel_count = 16;
    EXPECT_EQ(hold(context), Ids{});
    context.found_channels = 1;
    context.found_channels_valid = 1;
    EXPECT_EQ(hold(context), Ids{});
    context.found_channels_valid = 0;
    context.channel_count = 0;
    EXPECT_EQ(hold(context), Ids{});
}

TEST(Channels, IdentifiersWantTheirContent) {
    ManifestContext context = context_of("16/JOC,IMSA");
    context.channels_joc = 1;
    EXPECT_EQ(hold(context), Ids{2020});
    context.found_joc = 1;
    EXPECT_EQ(hold(context), Ids{});
    context.channels_imsa = 1;
    EXPECT_EQ(hold(context), Ids{2020});
    context.found_imsa = 1;
    EXPECT_EQ(hold(context), Ids{});
}

TEST(Channels, IdentifierMessagesNameTheContent) {
    RecordingSink sink;
    ManifestContext context = context_of("16/JOC,IMSA");
    context.channels_joc = 1;
    context.channels_imsa = 1;
    (void)check_channels_info(&context, nullptr);
    ASSERT_EQ(sink.ids(), (Ids{2020, 2020}));
    EXPECT_NE(sink.reports()[0].text.find("\"EC3 JOC\""), std::string::npos);
    EXPECT_NE(sink.reports()[1].text.find("\"AC4 IMSA\""), std::string::npos);
}

TEST(Channels, FindingsAreMergedOnceTheAttributeIsParsed) {
    ManifestContext found;
    found.found_channels = 1;
    found.found_channels_valid = 1;
    found.found_channels_max = 8;
    found.found_joc = 1;
    found.found_imsa = 1;
    ManifestContext context;
    pass_hls_check_channels_info(&context, &found);
    EXPECT_EQ(context.found_channels_max, 0U);
    context.channels_parsed = 1;
    context.found_channels_max = 16;
    pass_hls_check_channels_info(&context, &found);
    EXPECT_EQ(context.found_channels, 1U);
    EXPECT_EQ(context.found_channels_valid, 1U);
    EXPECT_EQ(context.found_channels_max, 16U);
    EXPECT_EQ(context.found_joc, 1U);
    EXPECT_EQ(context.found_imsa, 1U);
    pass_hls_check_channels_info(&context, nullptr);
    pass_hls_check_channels_info(nullptr, &found);
}

}  // namespace
}  // namespace mediasplit
