#include "base/ByteBuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

// A text of `count` bytes that differs at every position of a page.
std::string pattern(std::size_t count, std::size_t seed) {
    std::string text(count, '\0');
    for (std::size_t i = 0; i < count; ++i) {
        text[i] = static_cast<char>((i + seed) * 131u >> 2);
    }
    return text;
}

// Growing across the first mapping, the huge-page size and several moves keeps
// every byte, whatever the sizes of the pieces.
TEST(ByteBufferTest, AppendsKeepEveryByte) {
    const std::size_t kib = 1024;
    const std::vector<std::vector<std::size_t>> cases = {
        {0},
        {1},
        {256 * kib},
        {256 * kib, 1},
        {256 * kib - 1, 1, 1},
        {100, 5 * 1024 * kib, 3},
        {4 * 1024 * kib + 1, 4 * 1024 * kib, 17},
        {65536, 65536, 65536, 65536, 65536, 3 * 1024 * kib},
    };
    for (const auto& pieces : cases) {
        ByteBuffer buffer;
        std::string expected;
        for (std::size_t piece : pieces) {
            const std::string text = pattern(piece, expected.size());
            ASSERT_TRUE(buffer.append(text.data(), text.size()));
            expected += text;
        }
        ASSERT_EQ(buffer.size(), expected.size());
        EXPECT_EQ(buffer.empty(), expected.empty());
        EXPECT_TRUE(expected.empty() ||
                    std::string(buffer.data(), buffer.size()) == expected);  // no huge diffs
    }
}

// Room handed out and partly used: only committed bytes count.
TEST(ByteBufferTest, RoomAndCommit) {
    ByteBuffer buffer;
    char* room = buffer.room(10);
    ASSERT_NE(room, nullptr);
    room[0] = 'a';
    room[1] = 'b';
    buffer.commit(2);
    room = buffer.room(1 << 20);
    ASSERT_NE(room, nullptr);
    room[0] = 'c';
    buffer.commit(1);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "abc");
    EXPECT_EQ(buffer.room(std::size_t(-1)), nullptr);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "abc");

    ByteBuffer moved(std::move(buffer));
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(std::string(moved.data(), moved.size()), "abc");
    ByteBuffer other;
    other.append("xyz", 3);
    other = std::move(moved);
    EXPECT_EQ(std::string(other.data(), other.size()), "abc");
    other.clear();
    EXPECT_TRUE(other.empty());
    EXPECT_TRUE(other.append("d", 1));
    EXPECT_EQ(std::string(other.data(), other.size()), "d");
}

}  // namespace
