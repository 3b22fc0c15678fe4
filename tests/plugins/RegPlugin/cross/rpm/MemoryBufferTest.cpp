#include "cross/rpm/MemoryBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using RegPlugin::MemoryBuffer;

TEST(MemoryBufferTest, ResizeRoundsToStepsZeroesTheTailAndRefusesWhatDoesNotFit) {
    const struct {
        unsigned int initial, step, newSize, expectedSize;
        bool null;  // resize returns null
    } cases[] = {
        {0, 8, 10, 16, false},
        {0, 8, 16, 16, false},
        {16, 8, 5, 8, false},
        {8, 8, 20, 24, false},
        {16, 8, 11, 16, false},
        {10, 4096, 0, 0, true},
        {10, 4096, UINT_MAX, 4096, true},  // rounded up, needs 33 bits: buffer untouched
    };
    for (const auto& c : cases) {
        const std::string label = std::to_string(c.initial) + "/" + std::to_string(c.step) +
                                  " -> " + std::to_string(c.newSize);
        MemoryBuffer buffer(c.initial, c.step);
        if (c.initial != 0)
            std::memset(buffer.data, 0xab, c.initial);
        EXPECT_EQ(buffer.resize(c.newSize) == nullptr, c.null) << label;
        EXPECT_EQ(buffer.size, c.expectedSize) << label;
        const unsigned int kept = std::min(c.initial, c.newSize);  // the rest is zero
        for (unsigned int i = 0; i < buffer.size; ++i)
            EXPECT_EQ(buffer.data[i], i < kept ? 0xab : 0) << label << ", byte " << i;
        EXPECT_EQ(buffer.zero(), buffer.data) << label;
        EXPECT_EQ(std::count(buffer.data, buffer.data + buffer.size, 0),
                  std::ptrdiff_t{buffer.size})
            << label;
    }
    EXPECT_EQ(MemoryBuffer(0, 4096).data, nullptr);
}

// Leaves freed heap memory of many sizes filled with 0xab, so that memory the buffer
// gets from the allocator next is not zero by chance.
void dirtyTheHeap() {
    std::vector<void*> blocks;
    for (std::size_t size = 64; size <= (std::size_t{1} << 21); size *= 2) {
        blocks.push_back(std::malloc(size));
        std::memset(blocks.back(), 0xab, size);
    }
    for (void* block : blocks)
        std::free(block);
}

// Grown (and shrunk) in a row of steps on a heap full of used memory, with every
// byte of the content written before each step: what a step adds reads as zeros.
TEST(MemoryBufferTest, GrowthZeroFillsMemoryTheAllocatorHadUsed) {
    const struct {
        unsigned int initial, step;
        std::vector<unsigned int> sizes;
    } cases[] = {
        // execCommand's pattern: 16 KiB, then one step more each time the data fills it.
        {16384, 4096, {16385, 20481, 24577, 28673, 32769, 65536, 65537, 300000, 1200000}},
        {8, 8, {9, 17, 100, 1000, 5000}},
        {0, 64, {100, 4000, 50, 6000, 64, 200000}},
    };
    for (const auto& c : cases) {
        dirtyTheHeap();
        MemoryBuffer buffer(c.initial, c.step);
        for (unsigned int next : c.sizes) {
            const unsigned int old = buffer.size;
            if (old != 0)
                std::memset(buffer.data, 0xab, old);
            buffer.resize(next);
            const std::string label = "step " + std::to_string(c.step) + ": " +
                                      std::to_string(old) + " -> " + std::to_string(next);
            ASSERT_EQ(buffer.size, (next + c.step - 1) / c.step * c.step) << label;
            const unsigned int kept = std::min(old, next);
            const unsigned char* data = buffer.data;
            EXPECT_EQ(std::count(data, data + kept, 0xab), std::ptrdiff_t{kept}) << label;
            EXPECT_EQ(std::count(data + kept, data + buffer.size, 0),
                      std::ptrdiff_t{buffer.size - kept})
                << label;
        }
    }
}

}  // namespace
