#include "base/list.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <thread>
#include <vector>

namespace mediasplit {
namespace {

struct Meter {
    int open = 0;
    int budget = 100000;
};

void* metered_alloc(void* context, std::size_t size) {
    auto* const meter = static_cast<Meter*>(context);
    if (meter->budget == 0) {
        return nullptr;
    }
    --meter->budget;
    ++meter->open;
    return cb_malloc(nullptr, size);
}

void metered_release(void* context, void* pointer) {
    --static_cast<Meter*>(context)->open;
    cb_free(nullptr, pointer);
}

class ListTest : public testing::Test {
protected:
    ListTest() {
        osal_init(&osal_);
        const OsalContext callbacks{nullptr, cb_malloc, cb_free};
        osal_register_callbacks(&osal_, &callbacks);
        create(0);
    }
    ~ListTest() override {
        EXPECT_EQ(list_destroy(&list_), kListOk);
        EXPECT_EQ(meter_.open, 0);
    }
    void create(std::uint32_t max_size) {
        const ListParams params{&osal_, max_size};
        ASSERT_EQ(list_create(&list_, &params), kListOk);
        const ListCallbacks callbacks{metered_alloc, metered_release, &meter_, &meter_};
        ASSERT_EQ(list_register_callbacks(&list_, &callbacks), kListOk);
    }
    int insert(std::uint32_t where, int& payload) {
        return list_insert_element(&list_, where, &payload);
    }
    // The payload taken out, or -1; `result` tells why.
    int remove(std::uint32_t where) {
        void* payload = &result_;
        result_ = list_remove_element(&list_, where, &payload);
        return payload == nullptr ? -1 : *static_cast<int*>(payload);
    }
    [[nodiscard]] std::vector<int> forward() const {
        std::vector<int> values;
        for (const ListNode* node = list_.head; node != nullptr; node = node->next) {
            values.push_back(*static_cast<int*>(node->payload));
        }
        return values;
    }
    [[nodiscard]] std::vector<int> backward() const {
        std::vector<int> values;
        for (const ListNode* node = list_.tail; node != nullptr; node = node->prev) {
            values.push_back(*static_cast<int*>(node->payload));
        }
        return values;
    }
    [[nodiscard]] int current() const { return *static_cast<int*>(list_.current->payload); }
    void expect(const std::vector<int>& values) const {
        EXPECT_EQ(forward(), values);
        EXPECT_EQ(backward(), std::vector<int>(values.rbegin(), values.rend()));
        EXPECT_EQ(list_.count, values.size());
    }

    OsalContext osal_;
    Meter meter_;
    List list_;
    int result_ = 0;
    int one_ = 1;
    int two_ = 2;
    int three_ = 3;
    int four_ = 4;
};

TEST(ListVersion, IsFixed) {
    EXPECT_STREQ(list_get_version(), "LIST_v2.9");
}

TEST_F(ListTest, RemovingFromAnEmptyListGivesEmptyAndANullPayload) {
    for (std::uint32_t where = 0; where <= 4; ++where) {
        EXPECT_EQ(remove(where), -1);
        EXPECT_EQ(result_, 0x18001);
    }
}

TEST_F(ListTest, InsertsAtBothEnds) {
    EXPECT_EQ(insert(kListTail, one_), kListOk);
    EXPECT_EQ(insert(kListTail, two_), kListOk);
    EXPECT_EQ(insert(kListHead, three_), kListOk);
    expect({3, 1, 2});
}

TEST_F(ListTest, FirstInsertSetsCurrentWhateverThePlace) {
    EXPECT_EQ(insert(kListInsertAheadOfCurrent, one_), kListOk);
    EXPECT_EQ(current(), 1);
    insert(kListHead, two_);
    EXPECT_EQ(current(), 1);
}

TEST_F(ListTest, InsertsAroundCurrent) {
    insert(kListTail, one_);
    insert(kListInsertBehindCurrent, two_);
    insert(kListInsertBehindCurrent, three_);
    insert(kListInsertAheadOfCurrent, four_);
    expect({4, 1, 3, 2});
}

TEST_F(ListTest, RemovingTheCurrentHeadMovesCurrentOn) {
    insert(kListTail, one_);
    insert(kListTail, two_);
    EXPECT_EQ(remove(kListHead), 1);
    EXPECT_EQ(result_, kListOk);
    EXPECT_EQ(current(), 2);
    expect({2});
}

TEST_F(ListTest, RemovesAroundCurrent) {
    insert(kListTail, two_);
    insert(kListHead, one_);
    insert(kListTail, three_);
    EXPECT_EQ(remove(kListRemoveBehindCurrent), 3);
    EXPECT_EQ(remove(kListRemoveBehindCurrent), -1);
    EXPECT_EQ(result_, 0x18001);
    EXPECT_EQ(remove(kListRemoveAheadOfCurrent), 1);
    EXPECT_EQ(remove(kListRemoveAheadOfCurrent), -1);
    EXPECT_EQ(result_, 0x18001);
    EXPECT_EQ(remove(kListRemoveCurrent), 2);
    expect({});
}

TEST_F(ListTest, RemovesTheTail) {
    insert(kListTail, one_);
    insert(kListTail, two_);
    EXPECT_EQ(remove(kListTail), 2);
    EXPECT_EQ(remove(kListTail), 1);
    expect({});
}

TEST_F(ListTest, WithoutACurrentElementItsNeighboursAreNone) {
    insert(kListTail, one_);
    insert(kListTail, two_);
    insert(kListInsertBehindCurrent, three_);
    // Taking the current last element leaves no current one.
    remove(kListHead);
    remove(kListHead);
    EXPECT_EQ(current(), 2);
    insert(kListHead, four_);
    EXPECT_EQ(remove(kListRemoveCurrent), 2);
    EXPECT_EQ(list_.current, nullptr);
    for (const std::uint32_t where :
         {kListRemoveCurrent, kListRemoveBehindCurrent, kListRemoveAheadOfCurrent}) {
        EXPECT_EQ(remove(where), -1);
        EXPECT_EQ(result_, 0x18009);
    }
    const int open = meter_.open;
    EXPECT_EQ(insert(kListInsertBehindCurrent, one_), 0x18009);
    EXPECT_EQ(insert(kListInsertAheadOfCurrent, one_), 0x18009);
    EXPECT_EQ(meter_.open, open);
    expect({4});
}

TEST_F(ListTest, FullListRefuses) {
    EXPECT_EQ(list_destroy(&list_), kListOk);
    create(2);
    insert(kListTail, one_);
    insert(kListTail, two_);
    EXPECT_EQ(insert(kListTail, three_), 0x18008);
    remove(kListHead);
    EXPECT_EQ(insert(kListTail, three_), kListOk);
    expect({2, 3});
}

TEST_F(ListTest, NoMemoryForANodeRefuses) {
    meter_.budget = 0;
    EXPECT_EQ(insert(kListTail, one_), 0x18002);
    expect({});
    meter_.budget = 10;
}

TEST_F(ListTest, InvalidArgumentsAreRefused) {
    void* payload = nullptr;
    EXPECT_EQ(insert(4, one_), 0x18000);
    EXPECT_EQ(list_remove_element(&list_, 5, &payload), 0x18000);
    EXPECT_EQ(list_remove_element(&list_, 0, nullptr), 0x18000);
    EXPECT_EQ(list_insert_element(nullptr, 0, &one_), 0x18000);
    EXPECT_EQ(list_remove_element(nullptr, 0, &payload), 0x18000);
    EXPECT_EQ(list_create(nullptr, nullptr), 0x18000);
    EXPECT_EQ(list_register_callbacks(nullptr, nullptr), 0x18000);
    EXPECT_EQ(list_destroy(nullptr), 0x18000);
}

TEST_F(ListTest, ListWithoutAMutexCannotBeLocked) {
    List empty;
    void* payload = nullptr;
    EXPECT_EQ(list_insert_element(&empty, 0, &one_), 0x18004);
    EXPECT_EQ(list_remove_element(&empty, 0, &payload), 0x18004);
    EXPECT_EQ(list_destroy(&empty), 0x18004);
    OsalContext none;
    const ListParams params{&none, 0};
    EXPECT_EQ(list_create(&empty, &params), 0x18003);
}

TEST_F(ListTest, CallbackLeftNoneKeepsTheFormerOne) {
    const ListCallbacks none;
    EXPECT_EQ(list_register_callbacks(&list_, &none), kListOk);
    EXPECT_EQ(insert(kListTail, one_), kListOk);
    EXPECT_EQ(meter_.open, 1);
}

TEST_F(ListTest, WithoutCallbacksNothingCanBeInserted) {
    list_destroy(&list_);
    const ListParams params{&osal_, 0};
    list_create(&list_, &params);
    EXPECT_EQ(insert(kListTail, one_), 0x18002);
}

TEST_F(ListTest, DestroyFreesTheNodesThatAreLeft) {
    for (int i = 0; i < 1000; ++i) {
        insert(kListTail, one_);
    }
    EXPECT_EQ(meter_.open, 1000);
}

TEST(ListThreads, NothingIsLostBetweenWritersAndAReader) {
    OsalContext osal{nullptr, cb_malloc, cb_free};
    List list;
    const ListParams params{&osal, 0};
    ASSERT_EQ(list_create(&list, &params), kListOk);
    const ListCallbacks callbacks{cb_malloc, cb_free, nullptr, nullptr};
    ASSERT_EQ(list_register_callbacks(&list, &callbacks), kListOk);
    constexpr int kWriters = 4;
    constexpr int kEach = 3000;
    std::vector<std::vector<int>> values(kWriters);
    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w) {
        values[w].resize(kEach);
        writers.emplace_back([&list, &values, w] {
            for (int i = 0; i < kEach; ++i) {
                values[w][i] = w * kEach + i;
                ASSERT_EQ(list_insert_element(&list, kListTail, &values[w][i]), kListOk);
            }
        });
    }
    std::set<int> seen;
    std::vector<int> last(kWriters, -1);
    while (seen.size() < kWriters * kEach) {
        void* payload = nullptr;
        if (list_remove_element(&list, kListHead, &payload) != kListOk) {
            std::this_thread::yield();
            continue;
        }
        const int value = *static_cast<int*>(payload);
        EXPECT_TRUE(seen.insert(value).second);
        EXPECT_GT(value, last[value / kEach]);
        last[value / kEach] = value;
    }
    for (auto& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(list_destroy(&list), kListOk);
}

}  // namespace
}  // namespace mediasplit
