#include "cross/rpm/MemoryBuffer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

using RegPlugin::MemoryBuffer;

TEST(MemoryBufferTest, ResizeRoundsToStepsAndZeroesTheTail) {
    struct Case {
        const char* what;
        unsigned int initial, step, filled, newSize;
        unsigned int expectedSize;
        unsigned int keptBytes;  // leading bytes that keep the fill; the rest are 0
    };
    const std::vector<Case> cases = {
        {"rounds up to the step", 0, 8, 0, 10, 16, 0},
        {"an exact multiple stays", 0, 8, 0, 16, 16, 0},
        {"shrinking clears beyond the request", 16, 8, 16, 5, 8, 5},
        {"growing zero-fills the new bytes", 8, 8, 8, 20, 24, 8},
        {"same capacity still clears beyond the request", 16, 8, 16, 11, 16, 11},
        {"a step of one", 0, 1, 0, 3, 3, 0},
    };
    for (const Case& c : cases) {
        MemoryBuffer buffer(c.initial, c.step);
        if (c.filled != 0) {
            std::memset(buffer.data, 0xab, c.filled);
        }
        ASSERT_NE(buffer.resize(c.newSize), nullptr) << c.what;
        EXPECT_EQ(buffer.size, c.expectedSize) << c.what;
        for (unsigned int i = 0; i < buffer.size; ++i) {
            EXPECT_EQ(buffer.data[i], i < c.keptBytes ? 0xab : 0) << c.what << ", byte " << i;
        }
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
    for (unsigned int i = 0; i < buffer.size; ++i) {
        buffer.data[i] = static_cast<unsigned char>('a' + i);
    }
    testing::internal::CaptureStdout();
    EXPECT_GT(buffer.dump(), 0);
    std::fflush(stdout);
    const std::string out = testing::internal::GetCapturedStdout();

    std::vector<std::string> lines;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), 4u) << out;
    EXPECT_EQ(lines[0], "size: 20 (step 4)");
    EXPECT_EQ(lines[1], "61 (a) 62 (b) 63 (c) 64 (d) 65 (e) 66 (f) 67 (g) 68 (h) 69 (i) ");
    EXPECT_EQ(lines[2].size(), 8 * std::strlen("6a (j) ")) << lines[2];
    EXPECT_EQ(lines[3], "72 (r) 73 (s) 74 (t) ");
    EXPECT_EQ(out.back(), '\n');
}

}  // namespace
