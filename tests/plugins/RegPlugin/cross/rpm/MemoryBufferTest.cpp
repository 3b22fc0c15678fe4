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

// A row of resizes on a heap full of used memory, every byte of the content written
// before each: the size rounds up to whole steps, what a step adds reads as zeros, and
// a size of zero or one that does not fit is refused.
TEST(MemoryBufferTest, ResizeRoundsToStepsAndZeroFillsWhatItAdds) {
    const struct {
        unsigned int initial, step;
        std::vector<std::pair<unsigned int, unsigned int>> resizes;  // new size, size after
    } cases[] = {
        // execCommand's pattern: 16 KiB, then one step more each time the data fills it.
        {16384,
         4096,
         {{16385, 20480}, {20481, 24576}, {65536, 65536}, {65537, 69632}, {1200000, 1200128}}},
        {0, 8, {{10, 16}, {16, 16}, {5, 8}, {20, 24}, {17, 24}, {1000, 1000}, {5000, 5000}}},
        {0, 64, {{100, 128}, {4000, 4032}, {50, 64}, {6000, 6016}, {200000, 200000}}},
        {10, 4096, {{0, 0}}},
        {10, 4096, {{UINT_MAX, 4096}}},  // rounded up, needs 33 bits: buffer untouched
    };
    for (const auto& c : cases) {
        dirtyTheHeap();
        MemoryBuffer buffer(c.initial, c.step);
        for (const auto& resize : c.resizes) {
            const unsigned int old = buffer.size;
            if (old != 0)
                std::memset(buffer.data, 0xab, old);
            const bool refused = resize.first == 0 || resize.first == UINT_MAX;
            const std::string label = "step " + std::to_string(c.step) + ": " +
                                      std::to_string(old) + " -> " + std::to_string(resize.first);
            EXPECT_EQ(buffer.resize(resize.first) == nullptr, refused) << label;
            ASSERT_EQ(buffer.size, resize.second) << label;
            const unsigned int kept = refused ? buffer.size : std::min(old, resize.first);
            const unsigned char* data = buffer.data;
            EXPECT_EQ(std::count(data, data + kept, 0xab), std::ptrdiff_t{kept}) << label;
            EXPECT_EQ(std::count(data + kept, data + buffer.size, 0),
                      std::ptrdiff_t{buffer.size - kept})
                << label;
        }
        EXPECT_EQ(buffer.zero(), buffer.data);
        EXPECT_EQ(std::count(buffer.data, buffer.data + buffer.size, 0),
                  std::ptrdiff_t{buffer.size});
    }
    EXPECT_EQ(MemoryBuffer(0, 4096).data, nullptr);
}

}  // namespace
