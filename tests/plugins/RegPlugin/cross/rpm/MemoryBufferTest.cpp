#include "cross/rpm/MemoryBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string>

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

}  // namespace
