#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace mediasplit {

// Arena for libraries that never call the system allocator.
//
// A library walks one sequence of memlib_block_start, memlib_alloc... and memlib_block_end calls
// three times: sizing, to learn how many bytes it needs; assigning, over a block that its caller
// brings; releasing, to undo the accounting at close. Query, open and close thus cannot drift
// apart. Sizing charges worst-case padding, so a block of the reported size always suffices,
// however it is aligned. The record is a plain value; no call reports an error.
enum class MemPhase : int { kSizing = 0, kAssigning = 1, kReleasing = 2 };

struct MemlibSection {
    std::byte* base = nullptr;    // start of the caller's block
    std::byte* next = nullptr;    // next free byte
    std::uint64_t size = 0;       // bytes needed, summed up while sizing
    std::uint64_t used = 0;       // bytes assigned so far, padding included
    std::uint64_t alignment = 1;  // alignment known to hold at `next`
};

inline constexpr std::size_t kMemlibSectionCount = 3;
inline constexpr int kMemlibPermanent = 0;  // blocks stand one behind the other
inline constexpr int kMemlibScratch = 1;    // blocks lie over one another

struct memlib {
    std::array<MemlibSection, kMemlibSectionCount> sections{};
    std::byte* block_start = nullptr;
    std::uint64_t block_bytes = 0;     // charged to the open block
    std::uint64_t block_assigned = 0;  // really taken by it
    std::uint64_t block_alignment = 0;
};

struct MemlibVersion {
    std::uint32_t major_number = 0;
    std::uint32_t minor_number = 0;
    std::uint32_t patch_number = 0;
};

// Clears the sections; alignment 1.
void memlib_init(memlib* mem);

// Ties a section to the caller's `memory` (assigning), or unties it (releasing).
void memlib_alloc_mem_section(memlib* mem, int section, void* memory, MemPhase phase);

// Opens a block; its allocations are charged together.
void memlib_block_start(memlib* mem, int section, MemPhase phase);

// Charges `size` bytes at `alignment`, a power of two, and while assigning stores the place through
// `out`. `out` may be null in the other phases.
void memlib_alloc(memlib* mem, int section, void** out, std::uint64_t size, std::uint64_t alignment,
                  MemPhase phase);

// Closes the block: sums its bytes up (sizing), moves behind all that it was charged (assigning),
// or takes them back (releasing). Scratch blocks take the largest size instead of the sum.
void memlib_block_end(memlib* mem, int section, MemPhase phase);

// Bytes that the sizing pass found necessary.
std::uint64_t memlib_get_mem_section_size(const memlib* mem, int section);

MemlibVersion memlib_get_version();

// memlib_alloc for `count` objects of one type, value-initialised in place while assigning. The
// caller of the arena owns the memory; only trivially destructible types belong there.
template <typename T>
void memlib_alloc_objects(memlib* mem, int section, T** out, std::uint64_t count, MemPhase phase) {
    static_assert(std::is_trivially_destructible_v<T>, "an arena never runs destructors");
    void* place = nullptr;
    memlib_alloc(mem, section, &place, count * sizeof(T), alignof(T), phase);
    if (phase == MemPhase::kAssigning && out != nullptr) {
        *out = static_cast<T*>(place);
        if (place != nullptr) {
            std::uninitialized_value_construct_n(*out, count);
        }
    }
}

// The three passes of a library whose allocations make one permanent block. `allocate(mem, phase)`
// is its sequence of memlib_alloc calls, the same in all three.

template <typename Allocate>
void memlib_run_block(memlib* mem, const Allocate& allocate, MemPhase phase) {
    memlib_block_start(mem, kMemlibPermanent, phase);
    allocate(mem, phase);
    memlib_block_end(mem, kMemlibPermanent, phase);
}

// Bytes that memlib_open will need.
template <typename Allocate>
std::uint64_t memlib_query(const Allocate& allocate) {
    memlib mem;
    memlib_init(&mem);
    memlib_run_block(&mem, allocate, MemPhase::kSizing);
    return memlib_get_mem_section_size(&mem, kMemlibPermanent);
}

// Places the block in `memory`; the record returned belongs into the object just placed.
template <typename Allocate>
memlib memlib_open(void* memory, const Allocate& allocate) {
    memlib mem;
    memlib_init(&mem);
    memlib_run_block(&mem, allocate, MemPhase::kSizing);
    memlib_alloc_mem_section(&mem, kMemlibPermanent, memory, MemPhase::kAssigning);
    memlib_run_block(&mem, allocate, MemPhase::kAssigning);
    return mem;
}

// Undoes the accounting of `mem`, a copy of the object's record; the caller then frees its memory.
template <typename Allocate>
memlib memlib_close(memlib mem, const Allocate& allocate) {
    memlib_run_block(&mem, allocate, MemPhase::kReleasing);
    memlib_alloc_mem_section(&mem, kMemlibPermanent, nullptr, MemPhase::kReleasing);
    return mem;
}

}  // namespace mediasplit
