#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "oapinfolib/src/oapinfo_api.h"
#include "tests/support/eac3_builder.h"
#include "tests/unit/oapinfolib/oap_test_support.h"

// Allocation is replaced for the whole test program, so that it can be counted and made to fail.

namespace {

std::atomic<long> allocations{0};
std::atomic<int> fails_at{0};  // the how-manyth allocation without exception fails, 0 for none

void* take(std::size_t size) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

void* operator new(std::size_t size) {
    void* memory = take(size);
    if (memory == nullptr) {
        std::abort();
    }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (fails_at > 0 && --fails_at == 0) {
        return nullptr;
    }
    return take(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace mediasplit {
namespace {

using test_support::build_eac3_frame;
using test_support::Bytes;
using test_support::Eac3Spec;
using test_support::join;

TEST(Memory, EachFailedAllocationIsTold) {
    const int lines[] = {129, 146, 161};
    for (int allocation = 1; allocation <= 3; ++allocation) {
        ExpectText text;
        fails_at = allocation;
        const OapParser parser = oap_es_parser_new(1);
        fails_at = 0;
        EXPECT_EQ(parser, nullptr);
        EXPECT_EQ(text.err(), fatal_text("Cannot allocate the necessary memory", "oapinfo_api",
                                         lines[allocation - 1]));
    }
}

TEST(Memory, NothingIsAllocatedAfterTheParserStands) {
    Eac3Spec spec;
    Bytes block;
    for (unsigned i = 0; i < 50; ++i) {
        spec.words = 300 + i % 7;
        spec.fscod = i % 2;
        spec.strmtyp = 0;
        block = join({block, build_eac3_frame(spec)});
        spec.strmtyp = 1;
        block = join({block, build_eac3_frame(spec)});
    }
    const OapParser parser = oap_es_parser_new(1);
    OapEsInfo info;
    ExpectText text;
    const long before = allocations;
    for (int call = 0; call < 20; ++call) {
        oap_es_parser(block.data(), static_cast<std::uint32_t>(block.size()), parser.get(), &info);
    }
    const long after = allocations;
    EXPECT_EQ(after, before);
    EXPECT_NE(text.out(), "") << "the report is part of it";
}

}  // namespace
}  // namespace mediasplit
