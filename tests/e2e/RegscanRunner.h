// Runs the built regscan program for end-to-end tests. Fixture files sit at their
// real, fixed paths: regscan then runs in a private mount namespace where an overlay
// covers the top directory of each fixture path, the fixture in its upper layer.
#ifndef REGSCAN_TESTS_E2E_REGSCANRUNNER_H
#define REGSCAN_TESTS_E2E_REGSCANRUNNER_H

#include <map>
#include <string>
#include <vector>

namespace e2e {

struct RunOptions {
    std::map<std::string, std::string> environment;  // replaces or adds to the test's own
    std::string input;                               // standard input
    std::map<std::string, std::string> files;        // absolute path -> content
    // Shell commands run inside the namespace after the overlays are mounted.
    std::vector<std::string> setup;
    std::string prefix;  // shell words put right before the program
    // Above 0: regscan and its children are killed after this many seconds (status 137).
    int timeoutSeconds = 0;
};

struct RunResult {
    int exitStatus = -1;  // the exit status, or 128 + signal
    std::string out;
    std::string err;
};

// Fixture files and setup commands need namespacesAvailable().
RunResult runRegscan(const std::vector<std::string>& args, const RunOptions& options = {});

// Root, unshare and overlayfs available; probed once.
bool namespacesAvailable();

std::vector<std::string> lines(const std::string& text);
std::string readFile(const std::string& path);
std::string quote(const std::string& word);  // single-quoted for sh

}  // namespace e2e

#endif
