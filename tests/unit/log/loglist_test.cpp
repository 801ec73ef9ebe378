#include "src/log/loglist.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace mediasplit {
namespace {

std::vector<CheckpointText> checkpoints(const std::vector<std::string_view>& texts) {
    std::vector<CheckpointText> list;
    for (const std::string_view text : texts) {
        CheckpointText entry{};
        text.copy(entry.data(), entry.size());
        list.push_back(entry);
    }
    return list;
}

std::unique_ptr<Loglist> make_loglist(const std::vector<std::string_view>& texts) {
    auto list = checkpoints(texts);
    list.emplace_back();
    return init_loglist(static_cast<std::uint32_t>(texts.size()), list.data());
}

const std::vector<std::string_view> kFixedList = {"210000", "330000", "430000", "310000",
                                                  "410000", "440000", "450000"};

TEST(Loglist, NoListMakesNoCollector) {
    EXPECT_EQ(init_loglist(3, nullptr), nullptr);
}

TEST(Loglist, HoldsItsOwnCopyOfTheList) {
    auto list = checkpoints({"210000", "330000"});
    const auto loglist = init_loglist(2, list.data());
    list[0][0] = '9';
    ASSERT_EQ(get_loglist_checkpoints_count(loglist.get()), 2U);
    EXPECT_STREQ(get_loglist_checkpoints(loglist.get())[0].data(), "210000");
    EXPECT_STREQ(get_loglist_checkpoints(loglist.get())[1].data(), "330000");
}

TEST(Loglist, EntryThatIsTooLongEndsTheCopyingAndIsCounted) {
    const auto loglist = make_loglist({"21", "4300001", "310000"});
    EXPECT_EQ(get_loglist_checkpoints_count(loglist.get()), 2U);
    EXPECT_EQ(loglist->checkpoints.size(), 1U);
    EXPECT_TRUE(checkpoint_should_check(loglist.get(), 200000));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 310000));
    EXPECT_FALSE(has_checkpoint_set(loglist.get(), 1));
}

TEST(Loglist, EntryThatFillsItsEightBytesIsTooLong) {
    const auto loglist = make_loglist({"43000012"});
    EXPECT_EQ(get_loglist_checkpoints_count(loglist.get()), 1U);
    EXPECT_EQ(get_loglist_checkpoints(loglist.get()), nullptr);
}

TEST(Loglist, NoneHasNoCheckpoints) {
    EXPECT_EQ(get_loglist_checkpoints_count(nullptr), 0U);
    EXPECT_EQ(get_loglist_checkpoints(nullptr), nullptr);
}

TEST(Loglist, IsFreed) {
    auto loglist = make_loglist({"210000"});
    destroy_loglist(loglist);
    EXPECT_EQ(loglist, nullptr);
    destroy_loglist(loglist);
}

TEST(CheckpointGate, IsOpenWithoutLoglist) {
    EXPECT_TRUE(checkpoint_should_check(nullptr, 0));
    EXPECT_TRUE(checkpoint_should_check(nullptr, 1000000));
}

TEST(CheckpointGate, IsShutForAnEmptyList) {
    const auto loglist = make_loglist({});
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 0));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 210000));
}

TEST(CheckpointGate, PassesZeroAndSixDigitsOfAnActiveFamilyOnly) {
    const auto loglist = make_loglist({"210000", "430000"});
    EXPECT_TRUE(checkpoint_should_check(loglist.get(), 0));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 1));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 99999));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 100000));
    EXPECT_TRUE(checkpoint_should_check(loglist.get(), 200000));
    EXPECT_TRUE(checkpoint_should_check(loglist.get(), 215101));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 303101));
    EXPECT_TRUE(checkpoint_should_check(loglist.get(), 499999));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 500000));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 999999));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), 1000000));
    EXPECT_FALSE(checkpoint_should_check(loglist.get(), -1));
}

TEST(CheckpointGate, FixedListPassesAllThreeFamilies) {
    const auto loglist = make_loglist(kFixedList);
    for (const int number : {203001, 215101, 301003, 321004, 411002, 453123}) {
        EXPECT_TRUE(checkpoint_should_check(loglist.get(), number)) << number;
    }
}

TEST(PrintMessage, MissingLineFailsAndMissingLoglistDropsTheLine) {
    const auto loglist = make_loglist(kFixedList);
    EXPECT_EQ(print_message(loglist.get(), nullptr), Status::kFailed);
    EXPECT_EQ(print_message(nullptr, "line"), Status::kOk);
    EXPECT_EQ(loglist->message_count, 0);
}

TEST(PrintMessage, KeepsEachLineOnceInOrderOfArrival) {
    const auto loglist = make_loglist(kFixedList);
    for (const char* line : {"b\n", "a\n", "b\n", "a \n", "a\n"}) {
        EXPECT_EQ(print_message(loglist.get(), line), Status::kOk);
    }
    EXPECT_EQ(loglist->message_count, 3);
    EXPECT_EQ(std::vector<std::string>(loglist->messages.begin(), loglist->messages.end()),
              (std::vector<std::string>{"b\n", "a\n", "a \n"}));
}

TEST(PrintMessage, LinesThatContainTheInfoMarkAreKeptEachTimeWhereverItStands) {
    const auto loglist = make_loglist(kFixedList);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(print_message(loglist.get(), "INFO: a\n"), Status::kOk);
        EXPECT_EQ(print_message(loglist.get(), "ERROR: INFO: b\n"), Status::kOk);
        EXPECT_EQ(print_message(loglist.get(), "INFO:c\n"), Status::kOk);
    }
    EXPECT_EQ(loglist->message_count, 5);
}

TEST(PrintMessage, ManyLinesStayFindable) {
    const auto loglist = make_loglist(kFixedList);
    constexpr int kLines = 20000;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < kLines; ++i) {
            static_cast<void>(
                print_message(loglist.get(), ("finding " + std::to_string(i)).c_str()));
        }
    }
    EXPECT_EQ(loglist->message_count, kLines);
    EXPECT_EQ(loglist->messages.front(), "finding 0");
    EXPECT_EQ(loglist->messages.back(), "finding 19999");
}

TEST(PrintMessage, WhatGoesBeyondTheCapacityIsLost) {
    const auto loglist = make_loglist(kFixedList);
    ASSERT_EQ(print_message(loglist.get(), "finding"), Status::kOk);
    const std::string info = "INFO: " + std::string(100'000, 'x');
    const std::size_t enough = kLoglistCapacity / info.size() + 1;
    Status last = Status::kOk;
    for (std::size_t i = 0; i < enough; ++i) {
        last = print_message(loglist.get(), info.c_str());
    }
    EXPECT_EQ(last, Status::kFailed);
    EXPECT_LE(static_cast<std::size_t>(loglist->message_count), enough);
    EXPECT_EQ(loglist->messages.size(), static_cast<std::size_t>(loglist->message_count));
    EXPECT_EQ(print_message(loglist.get(), "finding"), Status::kOk);
}

TEST(CheckpointMask, FixedListActivatesItsFamilies) {
    const auto loglist = make_loglist(kFixedList);
    for (const std::uint32_t mask : {0U, 1U, 2U, 8U, 32U, 64U, 128U, 6U, 248U}) {
        EXPECT_TRUE(has_checkpoint_set(loglist.get(), mask)) << mask;
    }
    for (const std::uint32_t mask : {4U, 16U, 3U, 7U, 255U, 256U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(has_checkpoint_set(loglist.get(), mask)) << mask;
    }
}

TEST(CheckpointMask, NeedsEntriesOfSixCharacters) {
    EXPECT_FALSE(has_checkpoint_set(make_loglist({"21", "3", "43000"}).get(), 1));
    EXPECT_TRUE(has_checkpoint_set(make_loglist({"21", "320000"}).get(), 4));
    EXPECT_TRUE(has_checkpoint_set(make_loglist({"21", "320000"}).get(), 6));
    EXPECT_TRUE(has_checkpoint_set(make_loglist({"420000"}).get(), 16));
}

TEST(CheckpointMask, NothingIsActiveWithoutEntries) {
    EXPECT_FALSE(has_checkpoint_set(nullptr, 0));
    EXPECT_FALSE(has_checkpoint_set(make_loglist({}).get(), 0));
    EXPECT_FALSE(input_has_checkpoint_set(3, nullptr, 0));
    const auto list = checkpoints({"210000"});
    EXPECT_FALSE(input_has_checkpoint_set(0, list.data(), 1));
    EXPECT_TRUE(input_has_checkpoint_set(1, list.data(), 1));
}

}  // namespace
}  // namespace mediasplit
