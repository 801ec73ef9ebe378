#include "base/memlib.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace mediasplit {
namespace {

struct Placed {
    std::uint8_t* small = nullptr;
    std::uint64_t* wide = nullptr;
    std::uint32_t* table = nullptr;
};

// The one sequence that sizing, assigning and releasing share.
void walk(memlib* mem, Placed* placed, MemPhase phase) {
    memlib_block_start(mem, kMemlibPermanent, phase);
    memlib_alloc_objects(mem, kMemlibPermanent, placed != nullptr ? &placed->small : nullptr, 1,
                         phase);
    memlib_alloc_objects(mem, kMemlibPermanent, placed != nullptr ? &placed->wide : nullptr, 3,
                         phase);
    memlib_block_end(mem, kMemlibPermanent, phase);
    memlib_block_start(mem, kMemlibPermanent, phase);
    memlib_alloc_objects(mem, kMemlibPermanent, placed != nullptr ? &placed->table : nullptr, 5,
                         phase);
    memlib_block_end(mem, kMemlibPermanent, phase);
}

std::uint64_t size_of_one_byte_then(std::uint64_t size, std::uint64_t alignment) {
    memlib mem;
    memlib_init(&mem);
    memlib_block_start(&mem, 0, MemPhase::kSizing);
    memlib_alloc(&mem, 0, nullptr, 1, 1, MemPhase::kSizing);
    memlib_alloc(&mem, 0, nullptr, size, alignment, MemPhase::kSizing);
    memlib_block_end(&mem, 0, MemPhase::kSizing);
    return memlib_get_mem_section_size(&mem, 0);
}

TEST(Memlib, SizingChargesWorstCasePaddingBehindOneByte) {
    EXPECT_EQ(size_of_one_byte_then(8, 8), 1U + 7U + 8U);
    EXPECT_EQ(size_of_one_byte_then(16, 1), 1U + 16U);
}

TEST(Memlib, AlignmentKnownFromTheLastAllocationSavesPadding) {
    memlib mem;
    memlib_init(&mem);
    memlib_block_start(&mem, 0, MemPhase::kSizing);
    memlib_alloc(&mem, 0, nullptr, 20, 8, MemPhase::kSizing);  // 7 + 20, then 4-aligned
    memlib_alloc(&mem, 0, nullptr, 4, 4, MemPhase::kSizing);   // no padding
    memlib_alloc(&mem, 0, nullptr, 8, 8, MemPhase::kSizing);   // 4 of padding
    memlib_block_end(&mem, 0, MemPhase::kSizing);
    EXPECT_EQ(memlib_get_mem_section_size(&mem, 0), 27U + 4U + 12U);
}

TEST(Memlib, AlignmentStartsAtOneAgainInTheNextBlock) {
    memlib mem;
    memlib_init(&mem);
    for (int i = 0; i < 2; ++i) {
        memlib_block_start(&mem, 0, MemPhase::kSizing);
        memlib_alloc(&mem, 0, nullptr, 8, 8, MemPhase::kSizing);
        memlib_block_end(&mem, 0, MemPhase::kSizing);
    }
    EXPECT_EQ(memlib_get_mem_section_size(&mem, 0), 30U);
}

TEST(Memlib, AssignedPointersAreAlignedApartAndInsideABlockOfTheReportedSize) {
    memlib sizing;
    memlib_init(&sizing);
    walk(&sizing, nullptr, MemPhase::kSizing);
    const std::uint64_t size = memlib_get_mem_section_size(&sizing, 0);
    // Every misalignment of the caller's block has to work.
    for (std::size_t shift = 0; shift < 8; ++shift) {
        std::vector<std::byte> block(static_cast<std::size_t>(size) + shift);
        std::byte* const start = block.data() + shift;
        memlib mem;
        memlib_init(&mem);
        walk(&mem, nullptr, MemPhase::kSizing);
        memlib_alloc_mem_section(&mem, 0, start, MemPhase::kAssigning);
        Placed placed;
        walk(&mem, &placed, MemPhase::kAssigning);
        ASSERT_NE(placed.wide, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(placed.wide) % 8, 0U);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(placed.table) % 4, 0U);
        EXPECT_LT(static_cast<void*>(placed.small), static_cast<void*>(placed.wide));
        EXPECT_LE(static_cast<void*>(placed.wide + 3), static_cast<void*>(placed.table));
        EXPECT_LE(static_cast<void*>(placed.table + 5), static_cast<void*>(start + size));
        EXPECT_EQ(placed.wide[2], 0U);
        placed.table[4] = 1;  // a sanitizer sees a write outside the block
        // The assigning pass spans exactly what the sizing pass charged.
        EXPECT_EQ(mem.sections[0].used, size);
        EXPECT_EQ(mem.sections[0].next, start + size);

        walk(&mem, nullptr, MemPhase::kReleasing);
        EXPECT_EQ(mem.sections[0].used, 0U);
        EXPECT_EQ(mem.sections[0].next, start);
        memlib_alloc_mem_section(&mem, 0, nullptr, MemPhase::kReleasing);
        EXPECT_EQ(mem.sections[0].base, nullptr);
        EXPECT_EQ(mem.sections[0].next, nullptr);
        EXPECT_EQ(mem.sections[0].alignment, 1U);
    }
}

TEST(Memlib, ScratchBlocksOverlayOneAnother) {
    memlib mem;
    memlib_init(&mem);
    for (const std::uint64_t size : {100U, 300U, 200U}) {
        memlib_block_start(&mem, kMemlibScratch, MemPhase::kSizing);
        memlib_alloc(&mem, kMemlibScratch, nullptr, size, 1, MemPhase::kSizing);
        memlib_block_end(&mem, kMemlibScratch, MemPhase::kSizing);
    }
    EXPECT_EQ(memlib_get_mem_section_size(&mem, kMemlibScratch), 300U);
    std::array<std::byte, 300> block{};
    memlib_alloc_mem_section(&mem, kMemlibScratch, block.data(), MemPhase::kAssigning);
    void* first = nullptr;
    void* second = nullptr;
    for (void** out : {&first, &second}) {
        memlib_block_start(&mem, kMemlibScratch, MemPhase::kAssigning);
        memlib_alloc(&mem, kMemlibScratch, out, 100, 1, MemPhase::kAssigning);
        memlib_block_end(&mem, kMemlibScratch, MemPhase::kAssigning);
        memlib_block_start(&mem, kMemlibScratch, MemPhase::kReleasing);
        memlib_alloc(&mem, kMemlibScratch, nullptr, 100, 1, MemPhase::kReleasing);
        memlib_block_end(&mem, kMemlibScratch, MemPhase::kReleasing);
    }
    EXPECT_EQ(first, block.data());
    EXPECT_EQ(second, block.data());
}

TEST(Memlib, AssigningWithoutABlockGivesNullPointers) {
    memlib mem;
    memlib_init(&mem);
    Placed placed;
    walk(&mem, &placed, MemPhase::kAssigning);
    EXPECT_EQ(placed.small, nullptr);
    EXPECT_EQ(placed.table, nullptr);
    EXPECT_EQ(memlib_get_version().major_number, 1U);
}

TEST(Memlib, QueryOpenAndCloseRunOneSequence) {
    struct Object {
        memlib arena;
        std::uint8_t* buffer = nullptr;
    };
    Object* object = nullptr;
    std::uint8_t* buffer = nullptr;
    const auto allocate = [&](memlib* mem, MemPhase phase) {
        memlib_alloc_objects(mem, kMemlibPermanent, &object, 1, phase);
        memlib_alloc_objects(mem, kMemlibPermanent, &buffer, 77, phase);
    };
    const std::uint64_t size = memlib_query(allocate);
    EXPECT_GE(size, sizeof(Object) + 77);
    std::vector<std::byte> block(static_cast<std::size_t>(size));
    const memlib arena = memlib_open(block.data(), allocate);
    ASSERT_NE(object, nullptr);
    object->arena = arena;
    buffer[76] = 1;
    EXPECT_EQ(object->arena.sections[0].used, size);
    const memlib closed = memlib_close(object->arena, allocate);
    EXPECT_EQ(closed.sections[0].used, 0U);
    EXPECT_EQ(closed.sections[0].next, nullptr);
}

}  // namespace
}  // namespace mediasplit
