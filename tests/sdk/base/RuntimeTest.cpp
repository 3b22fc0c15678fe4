#include "base/Runtime.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

std::string str(const String& s) {
    return static_cast<const char*>(s);
}

struct RunResult {
    bool started = false;
    int exitValue = -1;
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
    result.started = true;
    EXPECT_EQ(0, process->waitFor()) << command;
    result.exitValue = process->exitValue();
    process->release();
    result.output = process->getInputStream()->readAll();
    return result;
}

class TempDir {
  public:
    TempDir() {
        char pattern[] = "/tmp/runtimetest.XXXXXX";
        const char* made = ::mkdtemp(pattern);
        m_path = made != nullptr ? made : "";
        char* real = ::realpath(m_path.c_str(), nullptr);
        if (real != nullptr) {
            m_path = real;
            std::free(real);
        }
    }
    ~TempDir() { std::system(("rm -rf '" + m_path + "'").c_str()); }
    const std::string& path() const { return m_path; }
    void write(const std::string& name, const std::string& data, mode_t mode) const {
        const std::string full = m_path + "/" + name;
        std::FILE* f = std::fopen(full.c_str(), "wb");
        ASSERT_NE(nullptr, f);
        std::fwrite(data.data(), 1, data.size(), f);
        std::fclose(f);
        ::chmod(full.c_str(), mode);
    }

  private:
    std::string m_path;
};

TEST(RuntimeTest, SplitCommand) {
    const struct {
        const char* command;
        bool ok;
        const char* words;  // joined with "|"
    } cases[] = {
        {"a b  c", true, "a|b|c"},
        {"  \ta\t ", true, "a"},
        {"", true, ""},
        {"/bin/sh -c '. ./pdx_env.sh ; pdxcat -p'", true, "/bin/sh|-c|. ./pdx_env.sh ; pdxcat -p"},
        {"'a \"b\" \\c'", true, "a \"b\" \\c"},
        {"\"a \\\"b\\\" \\\\ \\$ \\` \\n 'c'\"", true, "a \"b\" \\ $ ` \\n 'c'"},
        {"a\\ b c\\'d", true, "a b|c'd"},
        {"x'y'\"z\"w", true, "xyzw"},
        {"'' \"\"", true, "|"},
        {"'open", false, ""},
        {"\"open", false, ""},
        {"\"a\\\"", false, ""},
        {"trailing\\", false, ""},
    };
    for (const auto& c : cases) {
        ObjectArray<String> words;
        EXPECT_EQ(c.ok, Runtime::splitCommand(String(c.command), words)) << c.command;
        std::string got;
        for (int i = 0; i < words.size(); ++i) {
            got += (i == 0 ? "" : "|") + str(words[i]);
        }
        if (c.ok) {
            EXPECT_EQ(c.words, got) << c.command;
        } else {
            EXPECT_TRUE(words.isEmpty()) << c.command;
        }
    }
}

TEST(RuntimeTest, QuotedArgumentsReachTheChild) {
    const RunResult r = run("/bin/sh -c 'printf \"[%s]\" \"$@\"' x 'a b' \"c\\\"d\" e\\ f ''");
    ASSERT_TRUE(r.started);
    EXPECT_EQ("[a b][c\"d][e f][]", r.output);
}

TEST(RuntimeTest, CapturesLargeOutputByteExact) {
    TempDir dir;
    std::string data(1500000, '\0');
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>((i * 7919u) >> 3);
    }
    dir.write("big", data, 0644);
    const RunResult r = run("cat '" + dir.path() + "/big'");
    ASSERT_TRUE(r.started);
    EXPECT_EQ(0, r.exitValue);
    ASSERT_EQ(data.size(), r.output.size());
    EXPECT_TRUE(data == r.output);
}

TEST(RuntimeTest, ReadDecodesUtf8OneCharacterAtATime) {
    std::unique_ptr<Process> p(
        Runtime::getRuntime()->exec(String("printf 'a\\303\\251\\342\\202\\254\\377\\n'"), nullptr,
                                    nullptr, Runtime::EXEC_CAPTURE_OUTPUT));
    ASSERT_NE(nullptr, p);
    ASSERT_EQ(0, p->waitFor());
    p->release();
    InputStream* in = p->getInputStream();
    const int expected[] = {'a', 0xE9, 0x20AC, 0xDCFF, '\n'};
    for (int c : expected) {
        EXPECT_EQ(c, in->read());
    }
    EXPECT_LT(in->read(), 0);
    EXPECT_LT(in->read(), 0);
}

TEST(RuntimeTest, StartFailuresGiveNull) {
    TempDir dir;
    dir.write("noexec", "#!/bin/sh\necho hi\n", 0644);
    const String missingDir((dir.path() + "/missing").c_str());
    const struct {
        std::string command;
        const String* workingDirectory;
    } cases[] = {
        {"/nonexistent/program", nullptr},
        {"no-such-program-anywhere-xyz", nullptr},
        {dir.path() + "/noexec", nullptr},
        {dir.path(), nullptr},
        {"/bin/true", &missingDir},
        {"", nullptr},
        {"   ", nullptr},
        {"'unterminated", nullptr},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(run(c.command, nullptr, c.workingDirectory).started) << c.command;
    }
}

TEST(RuntimeTest, ExitValues) {
    const struct {
        const char* command;
        int expected;
    } cases[] = {
        {"/bin/true", 0},
        {"/bin/sh -c 'exit 3'", 3},
        {"/bin/sh -c 'exit 255'", 255},
        {"/bin/sh -c 'kill -9 $$'", 128 + SIGKILL},
        {"/bin/sh -c 'kill -TERM $$'", 128 + SIGTERM},
    };
    for (const auto& c : cases) {
        const RunResult r = run(c.command);
        ASSERT_TRUE(r.started) << c.command;
        EXPECT_EQ(c.expected, r.exitValue) << c.command;
    }
}

TEST(RuntimeTest, EnvironmentAndPathLookupComeFromTheChildEnvironment) {
    TempDir dir;
    dir.write("only-here", "#!/bin/sh\necho \"$FOO|$PATH\"\n", 0755);
    ObjectArray<String> env;
    env.add(String(("PATH=/nonexistent:" + dir.path()).c_str()));
    env.add(String("FOO=b\xC3\xA4r"));
    const RunResult r = run("only-here", &env);
    ASSERT_TRUE(r.started);
    EXPECT_EQ("b\xC3\xA4r|/nonexistent:" + dir.path() + "\n", r.output);
    // Not found through this process's PATH.
    EXPECT_FALSE(run("only-here").started);

    ObjectArray<String> bare;
    bare.add(String("ONLY=1"));
    const RunResult clean = run("/usr/bin/env", &bare);
    EXPECT_EQ("ONLY=1\n", clean.output);
}

TEST(RuntimeTest, WorkingDirectoryAndStdoutOnly) {
    TempDir dir;
    const String wd(dir.path().c_str());
    const RunResult r =
        run("/bin/sh -c 'pwd; echo err >&2; read x || echo no-input'", nullptr, &wd);
    ASSERT_TRUE(r.started);
    EXPECT_EQ(dir.path() + "\nno-input\n", r.output);
}

TEST(RuntimeTest, WaitDoesNotWaitForGrandchildrenHoldingThePipe) {
    const auto start = std::chrono::steady_clock::now();
    const RunResult r = run("/bin/sh -c 'exec 2>/dev/null; sleep 3 & echo done'");
    ASSERT_TRUE(r.started);
    EXPECT_EQ("done\n", r.output);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(RuntimeTest, DeletingAnUnwaitedProcessKillsAndReapsIt) {
    Process* p = Runtime::getRuntime()->exec(String("sleep 30"), nullptr, nullptr, 0);
    ASSERT_NE(nullptr, p);
    const pid_t pid = p->getPid();
    EXPECT_EQ(-1, p->exitValue());
    delete p;
    errno = 0;
    EXPECT_EQ(-1, ::kill(pid, 0));
    EXPECT_EQ(ESRCH, errno);
}

TEST(RuntimeTest, GetEnvironment) {
    ASSERT_EQ(0, ::setenv("RUNTIMETEST_VAR", "a=b=c", 1));
    ObjectArray<String> list;
    ASSERT_EQ(0, Runtime::getRuntime()->getEnvironment(list));
    int count = 0;
    while (environ[count] != nullptr) {
        ++count;
    }
    ASSERT_EQ(count, list.size());
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(environ[i], str(list[i]));
    }
    StringMap map;
    ASSERT_EQ(0, Runtime::getRuntime()->getEnvironment(map));
    String value;
    EXPECT_TRUE(map.getEntry(String("RUNTIMETEST_VAR"), value));
    EXPECT_EQ("a=b=c", str(value));
    ::unsetenv("RUNTIMETEST_VAR");
}

}  // namespace
