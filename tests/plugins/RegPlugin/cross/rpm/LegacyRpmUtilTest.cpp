#include "cross/rpm/LegacyRpmUtil.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "RegPluginConstants.h"
#include "RpmTestSupport.h"

namespace {

using RegPlugin::LegacyRpmUtil;
using RegPlugin::MemoryBuffer;

// 1 MiB in which every byte value occurs, zero and carriage return included.
std::string megabyte() {
    std::string bytes(1 << 20, '\0');
    unsigned int state = 12345;
    for (char& c : bytes) {
        state = state * 1103515245u + 12345u;
        c = static_cast<char>(state >> 16);
    }
    return bytes;
}

TEST(LegacyRpmUtilTest, ExecCommand) {
    struct Case {
        const char* what;
        std::string command;  // "@" is replaced by the path of a file holding `output`
        std::string output;   // what the command prints
        unsigned int initialSize, step;
        TErrorCode expected;
        int traceLevel;
        std::string traceLine;
    };
    const std::vector<Case> cases = {
        {"success", "printf 'a\\nb'", "a\nb", 64, 16, 0, 3, "child process exited correctly"},
        {"standard error is not captured", "echo noise >&2; printf ok", "ok", 64, 16, 0, 3,
         "child process exited correctly"},
        {"exit 1 keeps the output", "printf partial; exit 1", "partial", 64, 16,
         REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE, 3, "child process exited with code 1"},
        {"missing command", "/nonexistent/command", "", 64, 16, REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE,
         3, "child process exited with code 127"},
        {"killed by a signal", "printf x; kill -9 $$", "x", 64, 16,
         REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE, 1, "child process failed"},
        {"empty command", "", "", 64, 16, REG_PLUGIN_ERROR_INVALID_COMMAND, 1,
         "invalid command requested"},
        {"1 MiB byte-exact", "cat @", megabyte(), 16384, 4096, 0, 3,
         "child process exited correctly"},
        {"starts without storage", "cat @", std::string(100, 'y'), 0, 16, 0, 3,
         "child process exited correctly"},
    };
    for (const Case& c : cases) {
        rpmtest::TempDir dir;
        std::string command = c.command;
        const std::size_t at = command.find('@');
        if (at != std::string::npos) {
            command.replace(at, 1, dir.write("output", c.output));
        }
        rpmtest::TraceCapture trace;
        MemoryBuffer buffer(c.initialSize, c.step);
        std::size_t length = 99;
        EXPECT_EQ(LegacyRpmUtil::execCommand(command.c_str(), buffer, length), c.expected)
            << c.what;
        ASSERT_EQ(length, c.output.size()) << c.what;
        if (length != 0) {
            EXPECT_TRUE(std::memcmp(buffer.data, c.output.data(), length) == 0) << c.what;
        }
        ASSERT_GT(buffer.size, length) << c.what << ": no room for the terminating zero";
        EXPECT_EQ(buffer.data[length], 0) << c.what;
        EXPECT_EQ(buffer.size % c.step, 0u) << c.what;
        const std::vector<std::string> messages = trace.sink().messages(c.traceLevel);
        ASSERT_FALSE(messages.empty()) << c.what;
        EXPECT_EQ(messages.back(), c.traceLine) << c.what;
        for (const MemoryTraceSink::Line& line : trace.sink().lines()) {
            EXPECT_EQ(line.signature,
                      "LegacyRpmUtil::execCommand(const PluginSDK::String&, MemoryBuffer&)");
        }
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
