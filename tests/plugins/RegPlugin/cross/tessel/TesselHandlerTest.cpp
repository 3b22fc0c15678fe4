#include "cross/tessel/TesselHandler.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "RegPluginConstants.h"
#include "TesselProduct.h"

namespace RegPluginTest {
namespace {

using RegPlugin::TesselHandler;
using Strings = std::vector<std::string>;

const char kShellLine[] = "/bin/sh -c '. ./pdx_env.sh ; pdxcat -p'";
const TErrorCode kFailed = REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI;

Strings narrowLines(const ObjectArray<String>& lines) {
    Strings out;
    for (int i = 0; i < lines.size(); ++i)
        out.push_back(static_cast<const char*>(lines[i]));
    return out;
}

// True when no child of this process is left to reap (none running, no zombie).
bool noChildrenLeft() {
    int status = 0;
    return ::waitpid(-1, &status, WNOHANG) < 0 && errno == ECHILD;
}

// Runs the listing command in `product`; its lines after the one the caller had.
TErrorCode run(const std::string& product, Strings& lines) {
    TesselHandler handler(product.c_str());
    ObjectArray<String> got;
    got.add(String("before"));
    const TErrorCode rc = handler.runCommand(String("pdxcat -p"), got);
    lines = narrowLines(got);
    EXPECT_EQ(lines.front(), "before");
    lines.erase(lines.begin());
    return rc;
}

TEST(TesselHandlerTest, SplitsOutputIntoLines) {
    const std::vector<std::pair<std::string, std::vector<std::wstring>>> cases = {
        {"a\r\nb", {L"a", L"b"}},
        {"\r\n\r\n\r", {}},
        {"a\rb\n\n\nc\n", {L"a", L"b", L"c"}},
        {"  padded  \r\n", {L"  padded  "}},
        {std::string("a\0b\n", 4), {std::wstring(L"a\0b", 3)}},
        {"caf\xc3\xa9\n", {L"caf\u00e9"}},
        // Bytes that are not UTF-8, and a sequence cut by a line end, are kept.
        {"\xff\xfe\n", {L"\xdcff\xdcfe"}},
        {"\xe2\x82\r\xac", {L"\xdce2\xdc82", L"\xdcac"}},
    };
    for (const auto& c : cases) {
        ObjectArray<String> lines;
        lines.add(String("kept"));
        TesselHandler::appendLines(c.first.data(), c.first.size(), lines);
        std::vector<std::wstring> got;
        for (int i = 1; i < lines.size(); ++i)
            got.push_back(lines[i].wide());
        EXPECT_EQ(lines[0].wide(), L"kept");
        EXPECT_EQ(got, c.second) << printable(c.first);
    }
    ObjectArray<String> lines;
    TesselHandler::appendLines(nullptr, 10, lines);
    EXPECT_EQ(lines.size(), 0);
}

TEST(TesselHandlerTest, RunsTheCommandInTheProduct) {
    const Strings listed = {"PDXMS0001I first", "second"};
    const Strings none, replaced = {"replaced line"};
    const std::string env = "PDX_HOME=\"$PWD\"; export PDX_HOME\n";
    struct Case {
        const char* what;
        std::string envScript;  // empty: the product's own
        std::string tail;       // shell text after the listing is printed
        const char* pdxcat;     // PDXCAT; null: unset
        TErrorCode expected;
        Strings lines;
        std::string traceLine;  // the start of a line that must be written
    };
    const std::vector<Case> cases = {
        {"the environment script is sourced", "", "exit 0", nullptr, 0, listed,
         std::string("Preparing process environment for command ") + kShellLine + "\n"},
        {"without the script's PATH the command is not found", env, "", nullptr, kFailed, none,
         "Process exited with 127 exit code"},
        {"without the script's variable the command refuses", "PATH=\"$PWD/bin:$PATH\"\n", "",
         nullptr, kFailed, none, "Process exited with 3 exit code"},
        {"a script writing to standard error", "echo up >&2\n" + env + "PATH=\"$PWD/bin:$PATH\"\n",
         "exit 0", nullptr, 0, listed, "Process exited; code: 0"},
        {"a script that fails", "echo broken >&2; exit 4\n", "", nullptr, kFailed, none,
         "Process exited with 4 exit code"},
        {"a script that exits successfully ends the shell", "exit 0\n", "", nullptr, 0, none,
         "Process exited; code: 0"},
        {"exit status 1: nothing is read", "", "exit 1", nullptr, kFailed, none,
         "Process exited with 1 exit code"},
        {"killed by a signal", "", "kill -9 $$", nullptr, kFailed, none,
         "Process exited with 137 exit code"},
        {"closes its output early and keeps running", "", "exec >&-; sleep 1", nullptr, 0, listed,
         "Reading output from child process"},
        {"PDXCAT replaces the whole line", "", "", "/bin/echo replaced  line", 0, replaced,
         "Preparing process environment for command /bin/echo replaced  line\n"},
        {"PDXCAT runs without the script", "", "", "bin/pdxcat -p", kFailed, none,
         "Process exited with 3 exit code"},
        {"an empty PDXCAT is ignored", "", "exit 0", "", 0, listed, "Process exited; code: 0"},
        {"a PDXCAT that cannot start", "", "", "/nonexistent/pdxcat -p", kFailed, none,
         "Unable to create the process for command /nonexistent/pdxcat -p"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TesselProduct product("PDXMS0001I first\r\nsecond\n", c.tail);
        if (!c.envScript.empty())
            product.setEnvScript(c.envScript);
        ScopedEnv override("PDXCAT", c.pdxcat);
        TraceCapture trace;
        const auto start = std::chrono::steady_clock::now();
        Strings lines;
        EXPECT_EQ(run(product.path(), lines), c.expected);
        EXPECT_EQ(lines, c.lines);
        bool found = false;
        for (const MemoryTraceSink::Line& line : trace.sink().lines())
            found = found || line.message.compare(0, c.traceLine.size(), c.traceLine) == 0;
        EXPECT_TRUE(found) << "no trace line starting with: " << c.traceLine;
        if (c.tail == "exec >&-; sleep 1") {
            EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900))
                << "the child must have been waited for";
        }
        EXPECT_TRUE(noChildrenLeft());
    }
}

TEST(TesselHandlerTest, CannotStartOutsideAnExistingDirectory) {
    for (const std::string directory : {"/nonexistent/product", ""}) {
        SCOPED_TRACE(directory);
        TraceCapture trace;
        Strings lines;
        EXPECT_EQ(run(directory, lines), kFailed);
        EXPECT_TRUE(lines.empty());
        EXPECT_EQ(trace.sink().messages(1),
                  (Strings{std::string("Unable to create the process for command ") + kShellLine,
                           "Unable to run the listing command"}));
        EXPECT_EQ(trace.sink().lines().front().signature,
                  "TesselHandler::runCommand(const String &)");
        EXPECT_EQ(trace.sink().lines().back().signature,
                  "TesselHandler::runCommand(const String &, ObjectArray<String> &)");
        TesselHandler handler(directory.c_str());
        Process* process = reinterpret_cast<Process*>(&lines);
        EXPECT_EQ(handler.createProcess(String("pdxcat -p"), &process), kFailed);
        EXPECT_EQ(process, nullptr);
        EXPECT_EQ(handler.createProcess(String("pdxcat -p"), nullptr),
                  PluginSDK::ERROR_NULL_ARGUMENT);
    }
}

TEST(TesselHandlerTest, ChildSeesTheProductDirectoryAndTheWholeEnvironment) {
    ScopedEnv mark("TESSEL_TEST_MARK", "a b;'c'");
    TesselProduct product("", "pwd; echo \"$TESSEL_TEST_MARK\"; echo \"$PDX_HOME\"");
    TraceCapture trace;
    Strings lines;
    ASSERT_EQ(run(product.path(), lines), 0);
    EXPECT_EQ(lines, (Strings{product.path(), "a b;'c'", product.path()}));
    // One line: the command, then a tab-indented line per environment entry.
    const Strings info = trace.sink().messages(3);
    ASSERT_FALSE(info.empty());
    const std::string& environment = info.front();
    EXPECT_EQ(
        environment.rfind(
            std::string("Preparing process environment for command ") + kShellLine + "\n\t", 0),
        0u);
    EXPECT_NE(environment.find("\n\tTESSEL_TEST_MARK=a b;'c'\n"), std::string::npos);
    EXPECT_EQ(environment.back(), '\n');
    std::size_t entries = 0, tabs = 0;
    for (char** entry = environ; *entry != nullptr; ++entry)
        ++entries;
    for (std::size_t at = environment.find("\n\t"); at != std::string::npos;
         at = environment.find("\n\t", at + 1))
        ++tabs;
    EXPECT_EQ(tabs, entries);
}

// The product directory is only ever the child's working directory: names a shell
// would read as several words, quotes or further commands change nothing.
TEST(TesselHandlerTest, ProductDirectoryCannotInjectCommands) {
    char cwd[4096];
    ASSERT_NE(::getcwd(cwd, sizeof cwd), nullptr);
    const std::string here = std::string(cwd) + "/INJECTED";
    ::unlink(here.c_str());
    for (const std::string name :
         {"with spaces", "quote'; touch INJECTED; echo '", "double\"; touch INJECTED; echo \"",
          "semi;touch INJECTED", "$(touch INJECTED)", "`touch INJECTED`", "'$(touch INJECTED)'",
          "new\nline\ntouch INJECTED"}) {
        SCOPED_TRACE(name);
        TesselProduct product("PDXMS0001I listed\n", "pwd", name);
        Strings lines;
        ASSERT_EQ(run(product.path(), lines), 0);
        // pwd prints the name; its line feeds split it like any output.
        Strings expected = {"PDXMS0001I listed"};
        std::istringstream parts(product.path());
        for (std::string part; std::getline(parts, part);)
            expected.push_back(part);
        EXPECT_EQ(lines, expected);
        const std::string parent = product.path().substr(0, product.path().rfind('/'));
        struct stat info;
        for (const std::string& marker : {here, parent + "/INJECTED", product.file("INJECTED")})
            EXPECT_NE(::stat(marker.c_str(), &info), 0) << marker;
    }
}

// 50 MB of output in a 64 KB pipe, and one line of 10 MB: read while the child
// writes, delivered after it ended, child reaped.
TEST(TesselHandlerTest, LargeOutputIsReadWithoutDeadlock) {
    const std::string line(99, 'x');
    const std::size_t count = 50 * 1024 * 1024 / (line.size() + 1);
    const struct {
        std::string tail;
        std::size_t count, firstLength;
        std::string last;
    } cases[] = {
        {"yes '" + line + "' | head -n " + std::to_string(count), count, 99, line},
        {"head -c 10485760 /dev/zero | tr '\\0' z; printf '\\r\\nend'", 2, 10485760, "end"},
    };
    for (const auto& c : cases) {
        TesselProduct product("", c.tail);
        TesselHandler handler(product.path().c_str());
        ObjectArray<String> lines;
        ASSERT_EQ(handler.runCommand(String("pdxcat -p"), lines), 0);
        ASSERT_EQ(static_cast<std::size_t>(lines.size()), c.count);
        EXPECT_EQ(static_cast<std::size_t>(lines[0].length()), c.firstLength);
        EXPECT_EQ(static_cast<const char*>(lines[lines.size() - 1]), c.last);
        EXPECT_TRUE(noChildrenLeft());
    }
}

// The child holds its three standard descriptors and whatever the host itself left
// inheritable: no pipe, process descriptor or trace file of ours.
TEST(TesselHandlerTest, NoDescriptorLeaksIntoTheChild) {
    std::set<std::string> inheritable;
    for (int fd = 3; fd < 1024; ++fd) {
        const int flags = ::fcntl(fd, F_GETFD);
        if (flags >= 0 && (flags & FD_CLOEXEC) == 0)
            inheritable.insert(std::to_string(fd));
    }
    TempDir traceDir;
    const std::string traceFile = traceDir.path() + "/trace.log";
    ASSERT_EQ(Tracer::setOutputFile(traceFile.c_str()), 0);
    Tracer::setLevel(3);
    // ls runs as the shell's child and shows the shell's descriptors with their
    // targets; dash keeps its script open on a descriptor of its own.
    TesselProduct product("", "ls -l /proc/$$/fd");
    Strings lines;
    const TErrorCode rc = run(product.path(), lines);
    Tracer::setLevel(0);
    Tracer::setOutputFile(nullptr);
    ASSERT_EQ(rc, 0);
    Strings leaked;
    int seen = 0;
    for (const std::string& entry : lines) {
        EXPECT_EQ(entry.find(traceFile), std::string::npos) << entry;
        const std::size_t arrow = entry.find(" -> ");
        if (arrow == std::string::npos)
            continue;
        ++seen;
        const std::size_t space = entry.rfind(' ', arrow - 1);
        const std::string fd = entry.substr(space + 1, arrow - space - 1);
        const std::string target = entry.substr(arrow + 4);
        if (fd == "0" || fd == "2" || (fd == "1" && target.rfind("pipe:", 0) == 0) ||
            inheritable.count(fd) != 0 || target == product.file("bin/pdxcat"))
            continue;
        leaked.push_back(entry);
    }
    EXPECT_GE(seen, 3);
    EXPECT_TRUE(leaked.empty()) << ::testing::PrintToString(leaked);
}

}  // namespace
}  // namespace RegPluginTest
