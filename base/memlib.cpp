#include "base/memlib.h"

namespace mediasplit {
namespace {

MemlibSection& section_of(memlib* mem, int section) {
    return mem->sections[static_cast<std::size_t>(section)];
}

}  // namespace

void memlib_init(memlib* mem) {
    mem->sections.fill(MemlibSection{});
}

void memlib_alloc_mem_section(memlib* mem, int section, void* memory, MemPhase phase) {
    MemlibSection& area = section_of(mem, section);
    if (phase == MemPhase::kSizing) {
        return;
    }
    area.base = phase == MemPhase::kAssigning ? static_cast<std::byte*>(memory) : nullptr;
    area.next = area.base;
    area.used = 0;
    area.alignment = 1;
}

void memlib_block_start(memlib* mem, int section, MemPhase phase) {
    const MemlibSection& area = section_of(mem, section);
    mem->block_bytes = 0;
    mem->block_assigned = 0;
    mem->block_alignment = area.alignment;
    mem->block_start = phase == MemPhase::kAssigning ? area.next : nullptr;
}

void memlib_alloc(memlib* mem, int section, void** out, std::uint64_t size, std::uint64_t alignment,
                  MemPhase phase) {
    mem->block_bytes += size;
    if (alignment > mem->block_alignment) {
        mem->block_bytes += alignment - mem->block_alignment;
    }
    const std::uint64_t known = (size & (alignment - 1)) | alignment;
    mem->block_alignment = known & (~known + 1);

    MemlibSection& area = section_of(mem, section);
    if (phase != MemPhase::kAssigning || out == nullptr) {
        return;
    }
    if (area.next == nullptr) {
        *out = nullptr;
        return;
    }
    void* place = area.next;
    std::size_t room = static_cast<std::size_t>(size + alignment);
    *out = std::align(static_cast<std::size_t>(alignment), static_cast<std::size_t>(size), place,
                      room);
    const std::uint64_t taken = alignment - (room - size) + size;
    area.next += static_cast<std::ptrdiff_t>(taken);
    area.used += taken;
    mem->block_assigned += taken;
}

void memlib_block_end(memlib* mem, int section, MemPhase phase) {
    MemlibSection& area = section_of(mem, section);
    const std::uint64_t bytes = mem->block_bytes;
    const bool scratch = section == kMemlibScratch;
    area.alignment = 1;
    switch (phase) {
        case MemPhase::kSizing:
            if (!scratch) {
                area.size += bytes;
            } else if (bytes > area.size) {
                area.size = bytes;
            }
            break;
        case MemPhase::kAssigning:
            if (area.base != nullptr) {
                area.next = mem->block_start + static_cast<std::ptrdiff_t>(bytes);
            }
            area.used += bytes - mem->block_assigned;
            break;
        case MemPhase::kReleasing:
            if (scratch) {
                area.next = area.base;
                area.used = 0;
            } else {
                area.used -= bytes;
                if (area.base != nullptr) {
                    area.next -= static_cast<std::ptrdiff_t>(bytes);
                }
            }
            break;
    }
    mem->block_bytes = 0;
}

std::uint64_t memlib_get_mem_section_size(const memlib* mem, int section) {
    return mem->sections[static_cast<std::size_t>(section)].size;
}

MemlibVersion memlib_get_version() {
    return MemlibVersion{1, 0, 0};
}

}  // namespace mediasplit
