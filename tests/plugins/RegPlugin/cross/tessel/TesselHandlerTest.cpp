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
#include "base/Utf8.h"

namespace RegPluginTest {
namespace {

using RegPlugin::TesselHandler;

const char kShellLine[] = "/bin/sh -c '. ./pdx_env.sh ; pdxcat -p'";

std::vector<std::wstring> wideLines(const ObjectArray<String>& lines) {
    std::vector<std::wstring> out;
    for (int i = 0; i < lines.size(); ++i)
        out.push_back(lines[i].wide());
    return out;
}

std::vector<std::string> narrowLines(const ObjectArray<String>& lines) {
    std::vector<std::string> out;
    for (int i = 0; i < lines.size(); ++i)
        out.push_back(static_cast<const char*>(lines[i]));
    return out;
}

// True when no child of this process is left to reap (none running, no zombie).
bool noChildrenLeft() {
    int status = 0;
    return ::waitpid(-1, &status, WNOHANG) < 0 && errno == ECHILD;
}

TEST(TesselHandlerTest, SplitsOutputIntoLines) {
    struct Case {
        std::string bytes;
        std::vector<std::wstring> lines;
    };
    const std::vector<Case> cases = {
        {"a\r\nb", {L"a", L"b"}},
        {"\n\n", {}},
        {"\r\n\r\n\r", {}},
        {"", {}},
        {"a\rb\n\n\nc\n", {L"a", L"b", L"c"}},
        {"no line end", {L"no line end"}},
        {"  padded  \r\n", {L"  padded  "}},
        {std::string("a\0b\n", 4), {std::wstring(L"a\0b", 3)}},
        {"caf\xc3\xa9\n", {L"caf\u00e9"}},
        // Bytes that are not UTF-8, and a sequence cut by a line end, are kept.
        {"\xff\xfe\n", {L"\xdcff\xdcfe"}},
        {"x\xc3\ny", {L"x\xdcc3", L"y"}},
        {"\xe2\x82\r\xac", {L"\xdce2\xdc82", L"\xdcac"}},
    };
    for (const Case& c : cases) {
        ObjectArray<String> lines;
        lines.add(String("kept"));
        TesselHandler::appendLines(c.bytes.data(), c.bytes.size(), lines);
        std::vector<std::wstring> expected = c.lines;
        expected.insert(expected.begin(), L"kept");
        EXPECT_EQ(wideLines(lines), expected) << printable(c.bytes);
    }
    ObjectArray<String> lines;
    TesselHandler::appendLines(nullptr, 10, lines);
    EXPECT_EQ(lines.size(), 0);
}

TEST(TesselHandlerTest, RunsTheCommandInTheProduct) {
    const std::string listing = "PDXMS0001I first\r\nsecond\n";
    struct Case {
        const char* what;
        std::string envScript;  // empty: the product's own
        std::string tail;       // shell text after the listing is printed
        const char* pdxcatOverride;
        TErrorCode expected;
        std::vector<std::string> lines;  // after the one line the caller had
        std::string traceLine;           // a line (or the start of one) that must be written
    };
    const TErrorCode kFailed = REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI;
    const std::vector<Case> cases = {
        {"the environment script is sourced",
         "",
         "exit 0",
         nullptr,
         0,
         {"PDXMS0001I first", "second"},
         std::string("Preparing process environment for command ") + kShellLine + "\n"},
        {"without the script's PATH the command is not found",
         "PDX_HOME=\"$PWD\"; export PDX_HOME\n",
         "",
         nullptr,
         kFailed,
         {},
         "Process exited with 127 exit code"},
        {"without the script's variable the command refuses",
         "PATH=\"$PWD/bin:$PATH\"\n",
         "",
         nullptr,
         kFailed,
         {},
         "Process exited with 3 exit code"},
        {"a script that writes to standard error still counts",
         "echo warming up >&2\nPDX_HOME=\"$PWD\"; export PDX_HOME\nPATH=\"$PWD/bin:$PATH\"\n",
         "exit 0",
         nullptr,
         0,
         {"PDXMS0001I first", "second"},
         "Process exited; code: 0"},
        {"a script that fails",
         "echo broken >&2; exit 4\n",
         "",
         nullptr,
         kFailed,
         {},
         "Process exited with 4 exit code"},
        {"a script that exits successfully ends the shell: no lines",
         "exit 0\n",
         "",
         nullptr,
         0,
         {},
         "Process exited; code: 0"},
        {"exit status 1: nothing is read",
         "",
         "exit 1",
         nullptr,
         kFailed,
         {},
         "Process exited with 1 exit code"},
        {"killed by a signal",
         "",
         "kill -9 $$",
         nullptr,
         kFailed,
         {},
         "Process exited with 137 exit code"},
        {"closes its output early and keeps running",
         "",
         "exec >&-; sleep 1",
         nullptr,
         0,
         {"PDXMS0001I first", "second"},
         "Reading output from child process"},
        {"PDXCAT replaces the whole line, without the script",
         "",
         "",
         "/bin/echo replaced  line",
         0,
         {"replaced line"},
         "Preparing process environment for command /bin/echo replaced  line\n"},
        {"PDXCAT runs as it stands: the product's command lacks its environment",
         "",
         "",
         "bin/pdxcat -p",
         kFailed,
         {},
         "Process exited with 3 exit code"},
        {"an empty PDXCAT is ignored",
         "",
         "exit 0",
         "",
         0,
         {"PDXMS0001I first", "second"},
         "Process exited; code: 0"},
        {"a PDXCAT that cannot start",
         "",
         "",
         "/nonexistent/pdxcat -p",
         kFailed,
         {},
         "Unable to create the process for command /nonexistent/pdxcat -p"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TesselProduct product(listing, c.tail);
        if (!c.envScript.empty())
            product.setEnvScript(c.envScript);
        ScopedEnv override("PDXCAT", c.pdxcatOverride);
        TraceCapture trace;
        TesselHandler handler(product.path().c_str());
        ObjectArray<String> lines;
        lines.add(String("before"));
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(handler.runCommand(String("pdxcat -p"), lines), c.expected);
        std::vector<std::string> expected = c.lines;
        expected.insert(expected.begin(), "before");
        EXPECT_EQ(narrowLines(lines), expected);
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
        TesselHandler handler(directory.c_str());
        ObjectArray<String> lines;
        EXPECT_EQ(handler.runCommand(String("pdxcat -p"), lines),
                  REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI);
        EXPECT_EQ(lines.size(), 0);
        EXPECT_EQ(trace.sink().messages(1),
                  (std::vector<std::string>{
                      std::string("Unable to create the process for command ") + kShellLine,
                      "Unable to run the listing command"}));
        const auto& traced = trace.sink().lines();
        ASSERT_FALSE(traced.empty());
        EXPECT_EQ(traced.front().signature, "TesselHandler::runCommand(const String &)");
        EXPECT_EQ(traced.back().signature,
                  "TesselHandler::runCommand(const String &, ObjectArray<String> &)");
        Process* process = reinterpret_cast<Process*>(&lines);
        EXPECT_EQ(handler.createProcess(String("pdxcat -p"), &process),
                  REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI);
        EXPECT_EQ(process, nullptr);
        EXPECT_EQ(handler.createProcess(String("pdxcat -p"), nullptr),
                  PluginSDK::ERROR_NULL_ARGUMENT);
    }
}

TEST(TesselHandlerTest, ChildSeesTheProductDirectoryAndTheWholeEnvironment) {
    ScopedEnv mark("TESSEL_TEST_MARK", "a b;'c'");
    TesselProduct product("", "pwd; echo \"$TESSEL_TEST_MARK\"; echo \"$PDX_HOME\"");
    TraceCapture trace;
    TesselHandler handler(product.path().c_str());
    ObjectArray<String> lines;
    ASSERT_EQ(handler.runCommand(String("pdxcat -p"), lines), 0);
    EXPECT_EQ(narrowLines(lines),
              (std::vector<std::string>{product.path(), "a b;'c'", product.path()}));
    // One line: the command, then a tab-indented line per environment entry.
    const std::vector<std::string> info = trace.sink().messages(3);
    ASSERT_FALSE(info.empty());
    const std::string& environment = info.front();
    EXPECT_EQ(
        environment.rfind(
            std::string("Preparing process environment for command ") + kShellLine + "\n\t", 0),
        0u);
    EXPECT_NE(environment.find("\n\tTESSEL_TEST_MARK=a b;'c'\n"), std::string::npos);
    EXPECT_EQ(environment.back(), '\n');
    std::size_t entries = 0;
    for (char** entry = environ; *entry != nullptr; ++entry)
        ++entries;
    std::size_t tabs = 0;
    for (std::size_t at = environment.find("\n\t"); at != std::string::npos;
         at = environment.find("\n\t", at + 1))
        ++tabs;
    EXPECT_EQ(tabs, entries);
}

// The product directory is only ever the child's working directory: names that a
// shell would read as several words, quotes or further commands change nothing.
TEST(TesselHandlerTest, ProductDirectoryCannotInjectCommands) {
    const std::vector<std::string> names = {
        "with spaces",
        "quote'; touch INJECTED; echo '",
        "double\"; touch INJECTED; echo \"",
        "semi;touch INJECTED",
        "$(touch INJECTED)",
        "`touch INJECTED`",
        "'$(touch INJECTED)'",
        "new\nline\ntouch INJECTED",
    };
    char cwd[4096];
    ASSERT_NE(::getcwd(cwd, sizeof cwd), nullptr);
    const std::string here = std::string(cwd) + "/INJECTED";
    ::unlink(here.c_str());
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        TesselProduct product("PDXMS0001I listed\n", "pwd", name);
        struct stat info;
        ASSERT_EQ(::stat(product.path().c_str(), &info), 0);
        TesselHandler handler(product.path().c_str());
        ObjectArray<String> lines;
        ASSERT_EQ(handler.runCommand(String("pdxcat -p"), lines), 0);
        std::vector<std::string> expected = {"PDXMS0001I listed"};
        // pwd prints the name; its line feeds split it like any output.
        std::istringstream parts(product.path());
        for (std::string part; std::getline(parts, part);)
            expected.push_back(part);
        EXPECT_EQ(narrowLines(lines), expected);
        const std::string parent = product.path().substr(0, product.path().rfind('/'));
        for (const std::string& marker :
             {here, parent + "/INJECTED", product.path() + "/INJECTED"}) {
            EXPECT_NE(::stat(marker.c_str(), &info), 0) << marker;
        }
    }
}

// 50 MB of output in a 64 KB pipe: read while the child writes, delivered after it
// ended, child reaped.
TEST(TesselHandlerTest, LargeOutputIsReadWithoutDeadlock) {
    const std::string line(99, 'x');
    const std::size_t count = 50 * 1024 * 1024 / (line.size() + 1);
    TesselProduct product("", "yes '" + line + "' | head -n " + std::to_string(count));
    TesselHandler handler(product.path().c_str());
    ObjectArray<String> lines;
    ASSERT_EQ(handler.runCommand(String("pdxcat -p"), lines), 0);
    ASSERT_EQ(static_cast<std::size_t>(lines.size()), count);
    EXPECT_EQ(lines[0].wide(), std::wstring(line.begin(), line.end()));
    EXPECT_EQ(lines[lines.size() - 1].wide(), lines[0].wide());
    EXPECT_TRUE(noChildrenLeft());
}

TEST(TesselHandlerTest, OneLineOfTenMegabytes) {
    TesselProduct product("", "head -c 10485760 /dev/zero | tr '\\0' z; printf '\\r\\nend'");
    TesselHandler handler(product.path().c_str());
    ObjectArray<String> lines;
    ASSERT_EQ(handler.runCommand(String("pdxcat -p"), lines), 0);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0].length(), 10485760);
    EXPECT_EQ(lines[1].wide(), L"end");
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
    TesselHandler handler(product.path().c_str());
    ObjectArray<String> lines;
    const TErrorCode rc = handler.runCommand(String("pdxcat -p"), lines);
    Tracer::setLevel(0);
    Tracer::setOutputFile(nullptr);
    ASSERT_EQ(rc, 0);
    std::vector<std::string> leaked;
    int seen = 0;
    for (const std::string& entry : narrowLines(lines)) {
        const std::size_t arrow = entry.find(" -> ");
        if (arrow == std::string::npos)
            continue;
        ++seen;
        const std::string fd =
            entry.substr(entry.rfind(' ', arrow - 1) + 1, arrow - entry.rfind(' ', arrow - 1) - 1);
        const std::string target = entry.substr(arrow + 4);
        if (fd == "0" || fd == "2" || (fd == "1" && target.rfind("pipe:", 0) == 0) ||
            inheritable.count(fd) != 0 || target == product.file("bin/pdxcat"))
            continue;
        leaked.push_back(entry);
    }
    EXPECT_GE(seen, 3);
    EXPECT_TRUE(leaked.empty()) << ::testing::PrintToString(leaked);
    for (const std::string& entry : narrowLines(lines))
        EXPECT_EQ(entry.find(traceFile), std::string::npos) << entry;
}

}  // namespace
}  // namespace RegPluginTest
