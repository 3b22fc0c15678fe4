#include "base/Runtime.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>

#include "../TempDir.h"

namespace {

struct RunResult {
    int exitValue = -1;  // also when exec gave no process
    std::string output;
};

// What a listener is told: the pieces must join up to the output, in order.
class Recorder : public OutputListener {
  public:
    void onOutput(const ByteBuffer& output, std::size_t from) override {
        EXPECT_EQ(from, seen.size());
        seen.append(output.data() + from, output.size() - from);
        ++calls;
    }
    std::string seen;
    int calls = 0;
};

std::unique_ptr<Process> start(const std::string& command, const ObjectArray<String>* env = nullptr,
                               const String* dir = nullptr) {
    return std::unique_ptr<Process>(Runtime::getRuntime()->exec(String(command.c_str()), env, dir,
                                                                Runtime::EXEC_CAPTURE_OUTPUT));
}

RunResult run(const std::string& command, const ObjectArray<String>* env = nullptr,
              const String* dir = nullptr, Recorder* recorder = nullptr) {
    RunResult result;
    std::unique_ptr<Process> process = start(command, env, dir);
    if (process == nullptr) {
        return result;
    }
    EXPECT_EQ(0, recorder != nullptr ? process->waitFor(*recorder) : process->waitFor()) << command;
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

// With or without a listener: the output byte for byte, and the listener told of
// every byte once, in order, while the child still runs (a call per pause). A
// grandchild still holding the pipe is not waited for.
TEST(RuntimeTest, CapturesOutputByteExact) {
    const TempDir dir;
    std::string big(1500000, '\0');
    for (std::size_t i = 0; i < big.size(); ++i) {
        big[i] = static_cast<char>((i * 7919u) >> 3);
    }
    const struct {
        std::string command;
        std::string output;
        int exitValue;
        int listenerCalls;  // at least
    } cases[] = {
        {"cat '" + dir.write("big", big) + "'", big, 0, 1},
        {"/bin/sh -c 'printf a; sleep 0.1; printf b; sleep 0.1; printf c; exit 3'", "abc", 3, 3},
        {"/bin/true", "", 0, 0},
        {"/bin/sh -c 'exec 2>/dev/null; (sleep 2; echo late) & echo done'", "done\n", 0, 1},
    };
    for (const auto& c : cases) {
        for (const bool listen : {false, true}) {
            SCOPED_TRACE(c.command.substr(0, 60) + (listen ? " with a listener" : ""));
            Recorder recorder;
            const auto begin = std::chrono::steady_clock::now();
            const RunResult r = run(c.command, nullptr, nullptr, listen ? &recorder : nullptr);
            EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1500));
            EXPECT_EQ(r.exitValue, c.exitValue);
            EXPECT_EQ(r.output.size(), c.output.size());
            EXPECT_TRUE(r.output == c.output);  // no gtest diff of 1.5 MB
            EXPECT_TRUE(recorder.seen == (listen ? c.output : ""));
            EXPECT_GE(recorder.calls, listen ? c.listenerCalls : 0);
        }
    }
}

// After some characters read, readAll and takeAll hand out the rest once.
TEST(RuntimeTest, ReadAllAndTakeAllGiveWhatWasNotRead) {
    const std::string bytes =
        "ab\xc3\xa9"
        "c";
    // Characters read first, and the byte where the rest starts.
    for (const auto& [first, restStart] : {std::pair<int, int>{0, 0}, {1, 1}, {3, 4}, {4, 5}}) {
        for (const bool take : {false, true}) {
            SCOPED_TRACE(std::to_string(first) + (take ? " takeAll" : " readAll"));
            std::unique_ptr<Process> process = start("printf 'ab\\303\\251c'");
            ASSERT_NE(process, nullptr);
            ASSERT_EQ(process->waitFor(), 0);
            InputStream* stream = process->getInputStream();
            std::wstring read;
            for (int i = 0; i < first; ++i) {
                read += static_cast<wchar_t>(stream->read());
            }
            EXPECT_EQ(std::wstring(L"ab\u00e9c").substr(0, first), read);
            if (take) {
                const ByteBuffer rest = stream->takeAll();
                EXPECT_EQ(bytes.substr(restStart),
                          std::string(rest.data() == nullptr ? "" : rest.data(), rest.size()));
                EXPECT_TRUE(stream->takeAll().empty());
            } else {
                EXPECT_EQ(bytes.substr(restStart), stream->readAll());
            }
            EXPECT_EQ(stream->readAll(), "");
            EXPECT_LT(stream->read(), 0);
        }
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
