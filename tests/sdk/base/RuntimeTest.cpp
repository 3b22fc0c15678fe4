#include "base/Runtime.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "../TempDir.h"

namespace {

struct RunResult {
    int exitValue = -1;  // also when exec gave no process
    std::string output;
};

RunResult run(const std::string& command, const ObjectArray<String>* env = nullptr,
              const String* dir = nullptr) {
    RunResult result;
    std::unique_ptr<Process> process(Runtime::getRuntime()->exec(String(command.c_str()), env, dir,
                                                                 Runtime::EXEC_CAPTURE_OUTPUT));
    if (process == nullptr) {
        return result;
    }
    EXPECT_EQ(0, process->waitFor()) << command;
    result.exitValue = process->exitValue();
    process->release();
    result.output = process->getInputStream()->readAll();
    return result;
}

TEST(RuntimeTest, SplitCommand) {
    const struct {
        const char* command;
        bool ok;
        const char* words;  // joined with "|"
    } cases[] = {
        {"  \ta\t b", true, "a|b"},
        {"/bin/sh -c '. ./env.sh ; cat -p'", true, "/bin/sh|-c|. ./env.sh ; cat -p"},
        {"\"a \\\"b\\\" \\\\ \\$ \\` \\n 'c'\"", true, "a \"b\" \\ $ ` \\n 'c'"},
        {"a\\ b c\\'d", true, "a b|c'd"},
        {"'' \"\"", true, "|"},
        {"\"a\\\"", false, ""},
        {"trailing\\", false, ""},
    };
    for (const auto& c : cases) {
        ObjectArray<String> words;
        EXPECT_EQ(c.ok, Runtime::splitCommand(String(c.command), words)) << c.command;
        std::string got;
        for (int i = 0; i < words.size(); ++i) {
            got += (i == 0 ? "" : "|") + std::string(static_cast<const char*>(words[i]));
        }
        EXPECT_EQ(c.words, got) << c.command;
    }
}

TEST(RuntimeTest, CapturesLargeOutputByteExact) {
    const TempDir dir;
    std::string data(1500000, '\0');
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>((i * 7919u) >> 3);
    }
    const RunResult r = run("cat '" + dir.write("big", data) + "'");
    EXPECT_EQ(data.size(), r.output.size());
    EXPECT_TRUE(data == r.output);  // no gtest diff of 1.5 MB
}

// Whole, after some characters, and again at the end: each byte is handed out once.
TEST(RuntimeTest, ReadAllGivesWhatWasNotRead) {
    // Characters read first, and the byte where the rest starts.
    for (const auto& [first, restStart] : {std::pair<int, int>{0, 0}, {1, 1}, {3, 4}, {4, 5}}) {
        std::unique_ptr<Process> process(Runtime::getRuntime()->exec(
            String("printf 'ab\\303\\251c'"), nullptr, nullptr, Runtime::EXEC_CAPTURE_OUTPUT));
        ASSERT_NE(process, nullptr);
        ASSERT_EQ(process->waitFor(), 0);
        InputStream* stream = process->getInputStream();
        std::wstring read;
        for (int i = 0; i < first; ++i) {
            read += static_cast<wchar_t>(stream->read());
        }
        const std::string rest = stream->readAll();
        EXPECT_EQ(std::wstring(L"ab\u00e9c").substr(0, first), read);
        EXPECT_EQ(std::string("ab\xc3\xa9"
                              "c")
                      .substr(restStart),
                  rest)
            << first;
        EXPECT_EQ(stream->readAll(), "");
        EXPECT_LT(stream->read(), 0);
    }
}

// The same with the output handed over as a buffer.
TEST(RuntimeTest, TakeAllGivesWhatWasNotRead) {
    for (const auto& [first, restStart] : {std::pair<int, int>{0, 0}, {1, 1}, {3, 4}, {4, 5}}) {
        std::unique_ptr<Process> process(Runtime::getRuntime()->exec(
            String("printf 'ab\\303\\251c'"), nullptr, nullptr, Runtime::EXEC_CAPTURE_OUTPUT));
        ASSERT_NE(process, nullptr);
        ASSERT_EQ(process->waitFor(), 0);
        InputStream* stream = process->getInputStream();
        for (int i = 0; i < first; ++i) {
            stream->read();
        }
        const ByteBuffer rest = stream->takeAll();
        EXPECT_EQ(std::string("ab\xc3\xa9"
                              "c")
                      .substr(restStart),
                  std::string(rest.data() == nullptr ? "" : rest.data(), rest.size()))
            << first;
        EXPECT_TRUE(stream->takeAll().empty());
        EXPECT_EQ(stream->readAll(), "");
        EXPECT_LT(stream->read(), 0);
    }
}

// -1: the program is not started and exec gives null.
TEST(RuntimeTest, ExitValuesAndStartFailures) {
    const TempDir dir;
    dir.write("noexec", "#!/bin/sh\necho hi\n");
    const String missingDir((dir.path() + "/missing").c_str());
    const struct {
        std::string command;
        const String* workingDirectory;
        int exitValue;
    } cases[] = {
        {"/bin/sh -c 'exit 255'", nullptr, 255},
        {"/bin/sh -c 'kill -9 $$'", nullptr, 128 + SIGKILL},
        {"/nonexistent/program", nullptr, -1},
        {dir.path() + "/noexec", nullptr, -1},
        {"/bin/true", &missingDir, -1},
        {"'unterminated", nullptr, -1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.exitValue, run(c.command, nullptr, c.workingDirectory).exitValue) << c.command;
    }
}

TEST(RuntimeTest, EnvironmentPathLookupAndWorkingDirectory) {
    const TempDir dir;
    dir.write("only-here", "#!/bin/sh\necho \"$FOO|$PATH\"\n", 0755);
    ObjectArray<String> env;
    env.add(String(("PATH=/nonexistent:" + dir.path()).c_str()));
    env.add(String("FOO=b\xC3\xA4r"));
    EXPECT_EQ("b\xC3\xA4r|/nonexistent:" + dir.path() + "\n", run("only-here", &env).output);
    EXPECT_EQ(-1, run("only-here").exitValue);  // not found through this process's PATH
    ObjectArray<String> bare;
    bare.add(String("ONLY=1"));
    EXPECT_EQ("ONLY=1\n", run("/usr/bin/env", &bare).output);
    // Only stdout is captured, and stdin is empty.
    const String wd(dir.path().c_str());
    EXPECT_EQ(dir.path() + "\nno-input\n",
              run("/bin/sh -c 'pwd; echo err >&2; read x || echo no-input'", nullptr, &wd).output);
}

TEST(RuntimeTest, WaitDoesNotWaitForGrandchildrenHoldingThePipe) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("done\n", run("/bin/sh -c 'exec 2>/dev/null; sleep 3 & echo done'").output);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(RuntimeTest, DeletingAnUnwaitedProcessKillsAndReapsIt) {
    Process* p = Runtime::getRuntime()->exec(String("sleep 30"), nullptr, nullptr, 0);
    ASSERT_NE(nullptr, p);
    const pid_t pid = p->getPid();
    delete p;
    errno = 0;
    EXPECT_EQ(-1, ::kill(pid, 0));
    EXPECT_EQ(ESRCH, errno);
}

}  // namespace
