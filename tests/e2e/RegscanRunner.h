// Runs the built regscan program for end-to-end tests.
//
// Fixture files can be placed at their real, fixed locations (the dpkg status
// file, say) without touching the machine: regscan then runs in a private mount
// namespace where an overlay mount covers the top directory of each fixture path
// (/var, /etc, /opt, /root), and the fixture sits in the overlay's upper layer.
#ifndef REGSCAN_TESTS_E2E_REGSCANRUNNER_H
#define REGSCAN_TESTS_E2E_REGSCANRUNNER_H

#include <map>
#include <string>
#include <vector>

namespace e2e {

struct RunOptions {
    // Environment entries that replace or add to the test's own environment.
    std::map<std::string, std::string> environment;
    // Standard input.
    std::string input;
    // Absolute path -> content, placed through overlays.
    std::map<std::string, std::string> files;
    // Shell commands run inside the namespace before regscan starts (after the
    // overlays are mounted), e.g. "mount -t tmpfs tmpfs /var/lib/dpkg".
    std::vector<std::string> setup;
    // Shell words put right before the program, e.g. a setpriv command.
    std::string prefix;
    // When above 0, regscan (with every process it started) is killed after this
    // many seconds; the result's exit status is then 137.
    int timeoutSeconds = 0;
};

struct RunResult {
    int exitStatus = -1;  // the exit status, or 128 + signal
    std::string out;
    std::string err;
};

// Runs regscan with `args`. Fixture files or setup commands need namespaces: check
// namespacesAvailable() first.
RunResult runRegscan(const std::vector<std::string>& args, const RunOptions& options = {});

// True when this process may make a private mount namespace with overlay mounts
// (root, unshare and overlayfs available); probed once.
bool namespacesAvailable();

// Splits text into lines (without their line ends).
std::vector<std::string> lines(const std::string& text);

}  // namespace e2e

#endif
