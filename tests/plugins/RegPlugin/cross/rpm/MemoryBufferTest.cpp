#include "cross/rpm/MemoryBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

using RegPlugin::MemoryBuffer;

TEST(MemoryBufferTest, ResizeRoundsToStepsAndZeroesTheTail) {
    const struct {
        unsigned int initial, step, newSize, expectedSize;
    } cases[] = {{0, 8, 10, 16}, {0, 8, 16, 16}, {16, 8, 5, 8}, {8, 8, 20, 24}, {16, 8, 11, 16}};
    for (const auto& c : cases) {
        const std::string label = std::to_string(c.initial) + "/" + std::to_string(c.step) +
                                  " -> " + std::to_string(c.newSize);
        MemoryBuffer buffer(c.initial, c.step);
        if (c.initial != 0)
            std::memset(buffer.data, 0xab, c.initial);
        ASSERT_NE(buffer.resize(c.newSize), nullptr) << label;
        EXPECT_EQ(buffer.size, c.expectedSize) << label;
        const unsigned int kept = std::min(c.initial, c.newSize);  // the rest is zero
        for (unsigned int i = 0; i < buffer.size; ++i)
            EXPECT_EQ(buffer.data[i], i < kept ? 0xab : 0) << label << ", byte " << i;
    }
}

TEST(MemoryBufferTest, EmptyBuffersAndRefusedSizes) {
    MemoryBuffer empty(0, 4096);
    EXPECT_EQ(empty.data, nullptr);
    EXPECT_EQ(empty.zero(), nullptr);
    MemoryBuffer buffer(10, 4096);
    buffer.data[0] = 'x';
    // Rounded up, UINT_MAX would need 33 bits: refused, buffer untouched.
    EXPECT_EQ(buffer.resize(UINT_MAX), nullptr);
    EXPECT_EQ(buffer.size, 4096u);
    EXPECT_EQ(buffer.data[0], 'x');
    EXPECT_EQ(buffer.zero(), buffer.data);
    EXPECT_EQ(buffer.data[0], 0);
    EXPECT_EQ(buffer.resize(0), nullptr);
    EXPECT_EQ(buffer.size, 0u);
}

TEST(MemoryBufferTest, DumpPrintsNineBytesThenEightPerLine) {
    MemoryBuffer buffer(20, 4);
    for (unsigned int i = 0; i < buffer.size; ++i)
        buffer.data[i] = static_cast<unsigned char>('a' + i);
    testing::internal::CaptureStdout();
    EXPECT_GT(buffer.dump(), 0);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "size: 20 (step 4)\n"
              "61 (a) 62 (b) 63 (c) 64 (d) 65 (e) 66 (f) 67 (g) 68 (h) 69 (i) \n"
              "6a (j) 6b (k) 6c (l) 6d (m) 6e (n) 6f (o) 70 (p) 71 (q) \n"
              "72 (r) 73 (s) 74 (t) \n");
}

}  // namespace
