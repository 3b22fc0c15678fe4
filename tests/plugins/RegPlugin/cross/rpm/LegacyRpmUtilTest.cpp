#include "cross/rpm/LegacyRpmUtil.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "../../PluginTestSupport.h"
#include "RegPluginConstants.h"

namespace {

using RegPlugin::LegacyRpmUtil;
using RegPlugin::MemoryBuffer;

TEST(LegacyRpmUtilTest, ExecCommand) {
    std::string megabyte(1 << 20, '\0');  // every byte value, zero and CR included
    for (std::size_t i = 0; i < megabyte.size(); ++i)
        megabyte[i] = static_cast<char>((i * 7919) >> 3);
    struct Case {
        std::string command;  // "@" is replaced by the path of a file holding `output`
        std::string output;   // what the command prints
        TErrorCode expected;
        int traceLevel;
        std::string traceLine;
    };
    const TErrorCode kFailed = REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE;
    const std::vector<Case> cases = {
        {"echo noise >&2; printf 'a\\nb'", "a\nb", 0, 3, "child process exited correctly"},
        {"printf partial; exit 1", "partial", kFailed, 3, "child process exited with code 1"},
        {"/nonexistent/command", "", kFailed, 3, "child process exited with code 127"},
        {"printf x; kill -9 $$", "x", kFailed, 1, "child process failed"},
        {"", "", REG_PLUGIN_ERROR_INVALID_COMMAND, 1, "invalid command requested"},
        {"cat @", megabyte, 0, 3, "child process exited correctly"},
    };
    for (const Case& c : cases) {
        RegPluginTest::TempDir dir;
        std::string command = c.command;
        const std::size_t at = command.find('@');
        if (at != std::string::npos)
            command.replace(at, 1, dir.write("output", c.output));
        RegPluginTest::TraceCapture trace;
        MemoryBuffer buffer(64, 4096);
        std::size_t length = 99;
        EXPECT_EQ(LegacyRpmUtil::execCommand(command.c_str(), buffer, length), c.expected)
            << c.command;
        ASSERT_EQ(length, c.output.size()) << c.command;
        EXPECT_TRUE(length == 0 || std::memcmp(buffer.data, c.output.data(), length) == 0)
            << c.command;
        ASSERT_GT(buffer.size, length) << c.command << ": no room for the terminating zero";
        EXPECT_EQ(buffer.data[length], 0) << c.command;
        const std::vector<std::string> messages = trace.sink().messages(c.traceLevel);
        ASSERT_FALSE(messages.empty()) << c.command;
        EXPECT_EQ(messages.back(), c.traceLine) << c.command;
        if (c.command.empty()) {
            EXPECT_EQ(trace.sink().lines().size(), 1u) << "an empty command starts nothing";
        }
    }
}

TEST(LegacyRpmUtilTest, OutputFillingTheBufferGrowsItByOneStep) {
    MemoryBuffer buffer(16384, 4096);
    EXPECT_EQ(LegacyRpmUtil::execCommand("head -c 16384 /dev/zero | tr '\\0' x", buffer), 0);
    EXPECT_EQ(buffer.size, 16384u + 4096u);
    EXPECT_EQ(std::strlen(reinterpret_cast<char*>(buffer.data)), 16384u);
}

}  // namespace
