#include "base/ByteBuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

std::string text(const ByteBuffer& buffer) {
    return std::string(buffer.data(), buffer.size());
}

// Growing across the first mapping (256 KiB), the huge-page size (4 MiB) and several
// moves keeps every byte, whatever the sizes of the pieces.
TEST(ByteBufferTest, AppendsKeepEveryByte) {
    const std::size_t k = 1024, m = 1024 * 1024;
    const std::vector<std::vector<std::size_t>> cases = {
        {0},
        {1},
        {256 * k},
        {256 * k, 1},
        {256 * k - 1, 1, 1},
        {100, 5 * m, 3},
        {4 * m + 1, 4 * m, 17},
        {64 * k, 64 * k, 64 * k, 64 * k, 64 * k, 3 * m}};
    for (const auto& pieces : cases) {
        ByteBuffer buffer;
        std::string expected;
        for (std::size_t piece : pieces) {
            // Differs at every position of a page.
            std::string bytes(piece, '\0');
            for (std::size_t i = 0; i < piece; ++i) {
                bytes[i] = static_cast<char>((i + expected.size()) * 131u >> 2);
            }
            ASSERT_TRUE(buffer.append(bytes.data(), bytes.size()));
            expected += bytes;
        }
        ASSERT_EQ(buffer.size(), expected.size());
        EXPECT_EQ(buffer.empty(), expected.empty());
        EXPECT_TRUE(expected.empty() || text(buffer) == expected);  // no huge diffs
    }
}

// Room handed out and partly used: only committed bytes count.
TEST(ByteBufferTest, RoomCommitAndMoves) {
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
    EXPECT_EQ(buffer.room(std::size_t(-1)), nullptr);
    EXPECT_EQ(text(buffer), "abc");

    ByteBuffer moved(std::move(buffer));
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.data(), nullptr);
    ByteBuffer other;
    other.append("xyz", 3);
    other = std::move(moved);
    EXPECT_EQ(text(other), "abc");
    other.clear();
    EXPECT_TRUE(other.empty());
    EXPECT_TRUE(other.append("d", 1));
    EXPECT_EQ(text(other), "d");
}

}  // namespace
