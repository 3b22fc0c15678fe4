// The hostile-input corpus: each tests/hostile/<registry>/<case>/ is one `regscan
// batch` run on broken, huge or malicious registry data at the registry's real path,
// with a time limit that a hang would exceed. A case directory holds:
//   requests.jsonl   the batch input;
//   expected.out     the exact standard output;
//   expected.trace   optional: trace lines ("[scope] message", or "L2 [scope]
//                    message" to pin the level) that must appear, in this order; a
//                    line ending in "..." matches by prefix, a line starting with
//                    "!" is a text that no trace line may contain;
//   files/           optional: a tree placed at "/" (files/root/vpd.properties is
//                    /root/vpd.properties); executable files stay executable;
//   setup.sh         optional: run by sh -e inside the namespace before regscan, with
//                    $CASE naming the case directory (FIFOs, links, generated data);
//   env              optional: NAME=VALUE lines added to regscan's environment;
//   status           optional: the expected exit status (default 0);
//   limit            optional: the time limit in seconds (default 60).
// /etc, /opt, /root and /var are always overlays, so setup.sh never writes to the
// machine. Trace level 3 goes to standard error.
//
// REGSCAN_HOSTILE_UPDATE=1 writes what regscan answered into expected.out and status
// instead of comparing (for a new case; review the result before keeping it).
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "RealComponents.h"
#include "RegscanRunner.h"
#include "Requests.h"

namespace {

namespace fs = std::filesystem;

// Long enough for a 50 MB input on a busy machine; an endless loop exceeds it.
constexpr int kDefaultTimeLimitSeconds = 60;

const std::string kCorpus = std::string(REGSCAN_SOURCE_DIR) + "/tests/hostile";

std::string readFile(const fs::path& path) {
    return e2e::readFile(path.string());
}

// "registry/case" of every case directory, in order.
std::vector<std::string> caseNames() {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& registry : fs::directory_iterator(kCorpus, error)) {
        for (const auto& entry : fs::directory_iterator(registry.path(), error)) {
            if (fs::exists(entry.path() / "requests.jsonl")) {
                names.push_back(registry.path().filename().string() + "/" +
                                entry.path().filename().string());
            }
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string testName(const ::testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    }
    return name;
}

e2e::RunOptions optionsFor(const fs::path& dir) {
    e2e::RunOptions options;
    const std::string limit = readFile(dir / "limit");
    options.timeoutSeconds = limit.empty() ? kDefaultTimeLimitSeconds : std::stoi(limit);
    options.environment["HOSTSDK_TRACE_LEVEL"] = "3";
    options.environment["HOSTSDK_TRACE_FILE"] = "";
    options.input = readFile(dir / "requests.jsonl");
    for (const char* top : {"/etc", "/opt", "/root", "/var"}) {
        options.files[std::string(top) + "/.hostile-case"] = "";
    }
    const fs::path tree = dir / "files";
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(tree, error);
         !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        if (!it->is_regular_file())
            continue;
        const std::string target = "/" + fs::relative(it->path(), tree).string();
        options.files[target] = readFile(it->path());
        if ((fs::status(it->path()).permissions() & fs::perms::owner_exec) != fs::perms::none)
            options.setup.push_back("chmod 755 " + e2e::quote(target));
    }
    if (fs::exists(dir / "setup.sh")) {
        options.setup.push_back("CASE=" + e2e::quote(dir.string()) + " sh -e " +
                                e2e::quote((dir / "setup.sh").string()));
    }
    std::stringstream env(readFile(dir / "env"));
    std::string line;
    while (std::getline(env, line)) {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos)
            options.environment[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return options;
}

// The trace lines of `err`, in the order written, as "L<level> [scope] message".
std::vector<std::string> traceInOrder(const std::string& err) {
    std::vector<std::string> ordered;
    for (const std::string& line : e2e::lines(err)) {
        for (int level = 1; level <= 3; ++level) {
            for (const std::string& text : e2e::traceLines(line + "\n", level))
                ordered.push_back("L" + std::to_string(level) + " " + text);
        }
    }
    return ordered;
}

// Whether trace line `actual` is `wanted` (level compared only when given; a
// trailing "..." makes a prefix).
bool lineMatches(const std::string& actual, std::string wanted) {
    std::string text = actual;
    if (wanted.rfind("L", 0) != 0)
        text = actual.substr(actual.find(' ') + 1);
    const std::string dots = "...";
    if (wanted.size() >= dots.size() &&
        wanted.compare(wanted.size() - dots.size(), dots.size(), dots) == 0) {
        wanted.resize(wanted.size() - dots.size());
        return text.compare(0, wanted.size(), wanted) == 0;
    }
    return text == wanted;
}

class HostileInputTest : public ::testing::TestWithParam<std::string> {};

TEST_P(HostileInputTest, BatchOutcome) {
    REGSCAN_REQUIRE_COMPONENT(e2e::namespacesAvailable(),
                              "private mount namespaces with overlays (root, unshare)");
    const fs::path dir = fs::path(kCorpus) / GetParam();
    const e2e::RunOptions options = optionsFor(dir);

    const auto start = std::chrono::steady_clock::now();
    const e2e::RunResult run = e2e::runRegscan({"batch"}, options);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const std::string errHead = run.err.substr(0, 4000);

    ASSERT_NE(run.exitStatus, 137)
        << GetParam() << ": killed after " << seconds << " s (hang, or killed by a signal)\n"
        << errHead;
    if (const char* update = std::getenv("REGSCAN_HOSTILE_UPDATE"); update && *update == '1') {
        std::ofstream(dir / "expected.out", std::ios::binary) << run.out;
        if (run.exitStatus != 0)
            std::ofstream(dir / "status") << run.exitStatus << "\n";
        else
            fs::remove(dir / "status");
        // The trace lines, to choose expected.trace lines from.
        for (const std::string& line : traceInOrder(run.err)) {
            std::cout << GetParam() << ": " << line.substr(0, 300) << "\n";
        }
    }
    const std::string status = readFile(dir / "status");
    EXPECT_EQ(run.exitStatus, status.empty() ? 0 : std::stoi(status)) << errHead;
    EXPECT_EQ(run.out, readFile(dir / "expected.out")) << errHead;
    EXPECT_EQ(run.err.find("runtime error:"), std::string::npos) << errHead;
    EXPECT_EQ(run.err.find("Sanitizer"), std::string::npos) << run.err.substr(0, 20000);

    const std::vector<std::string> trace = traceInOrder(run.err);
    std::stringstream wanted(readFile(dir / "expected.trace"));
    std::string line;
    std::size_t next = 0;
    while (std::getline(wanted, line)) {
        if (line.empty())
            continue;
        if (line[0] == '!') {
            const std::string text = line.substr(1);
            for (const std::string& actual : trace)
                EXPECT_EQ(actual.find(text), std::string::npos) << actual;
            continue;
        }
        const auto found = std::find_if(trace.begin() + next, trace.end(),
                                        [&](const std::string& a) { return lineMatches(a, line); });
        EXPECT_NE(found, trace.end()) << "trace line not found (in order): " << line << "\n"
                                      << errHead;
        if (found != trace.end())
            next = static_cast<std::size_t>(found - trace.begin()) + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, HostileInputTest, ::testing::ValuesIn(caseNames()), testName);

}  // namespace
