#include "src/dash_reader/preselection_components.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/recording_sink.h"

namespace mediasplit {
namespace {

TEST(PreselectionComponents, SplitAtBlanks) {
    std::vector<std::uint32_t> ids = {9};
    const RecordingSink sink;
    EXPECT_EQ(get_all_adaptation_set_ids_from_preselection_components("  1   22 x 3 ", ids, false,
                                                                      nullptr),
              Status::kOk);
    EXPECT_EQ(ids, (std::vector<std::uint32_t>{1, 22, 3}));
    EXPECT_TRUE(sink.ids().empty());
    EXPECT_EQ(get_all_adaptation_set_ids_from_preselection_components("x y", ids, true, nullptr),
              Status::kRuleBroken);
    EXPECT_EQ(sink.count(4361), 2U);
    EXPECT_TRUE(ids.empty());
    EXPECT_EQ(get_all_adaptation_set_ids_from_preselection_components({}, ids, true, nullptr),
              Status::kOk);
}

TEST(PreselectionComponents, OfMoreThan100CharactersArePassedOver) {
    std::vector<std::uint32_t> ids;
    const RecordingSink sink;
    const std::string text = "1 x" + std::string(97, ' ');
    EXPECT_EQ(get_all_adaptation_set_ids_from_preselection_components(text, ids, true, nullptr),
              Status::kRuleBroken);
    EXPECT_EQ(ids.size(), 1U);
    EXPECT_EQ(
        get_all_adaptation_set_ids_from_preselection_components(text + " ", ids, true, nullptr),
        Status::kOk);
    EXPECT_TRUE(ids.empty());
    EXPECT_EQ(sink.count(4361), 1U);
}

TEST(PreselectionComponents, BeginWithTheMainOne) {
    std::string word;
    EXPECT_EQ(select_main_ac4_audio_component_from_preselectionComponents("12", word), 1);
    EXPECT_EQ(word, "12");
    EXPECT_EQ(select_main_ac4_audio_component_from_preselectionComponents("3 4", word), 0);
    EXPECT_EQ(word, "3");
    EXPECT_EQ(select_main_ac4_audio_component_from_preselectionComponents({}, word), -1);
}

}  // namespace
}  // namespace mediasplit
