#include "RegscanRunner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

namespace e2e {

namespace fs = std::filesystem;

namespace {

std::string makeTempDir() {
    char pattern[] = "/tmp/regscan-e2e-XXXXXX";
    const char* dir = mkdtemp(pattern);
    return dir == nullptr ? std::string() : std::string(dir);
}

void writeFile(const std::string& path, const std::string& content) {
    std::error_code ignored;
    fs::create_directories(fs::path(path).parent_path(), ignored);
    std::ofstream(path, std::ios::binary) << content;
}

// sh in a private mount namespace: an overlay over each of `tops` (layers under
// `dir`), then `setup`, then the command given after it.
std::string inNamespace(const std::string& dir, const std::set<std::string>& tops,
                        const std::vector<std::string>& setup) {
    std::string script = "set -e\n";
    for (const std::string& top : tops) {
        std::error_code ignored;
        fs::create_directories(dir + "/upper" + top, ignored);
        fs::create_directories(dir + "/work" + top, ignored);
        script += "mount -t overlay overlay -o lowerdir=" + top + ",upperdir=" + dir + "/upper" +
                  top + ",workdir=" + dir + "/work" + top + " " + top + "\n";
    }
    for (const std::string& command : setup) {
        script += command + "\n";
    }
    script += "exec \"$@\"\n";
    return "/usr/bin/unshare -m --propagation private /bin/sh -c " + quote(script) + " sh";
}

}  // namespace

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

std::string quote(const std::string& word) {
    std::string quoted = "'";
    for (char c : word) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

RunResult runRegscan(const std::vector<std::string>& args, const RunOptions& options) {
    RunResult result;
    const std::string dir = makeTempDir();
    if (dir.empty()) {
        result.err = "cannot make a temporary directory";
        return result;
    }
    writeFile(dir + "/input", options.input);

    std::string command =
        options.timeoutSeconds > 0
            ? "/usr/bin/timeout -s KILL " + std::to_string(options.timeoutSeconds) + " env"
            : "env";
    for (const auto& [name, value] : options.environment) {
        command += " " + quote(name + "=" + value);
    }
    if (!options.files.empty() || !options.setup.empty()) {
        std::set<std::string> tops;
        for (const auto& [path, content] : options.files) {
            tops.insert(path.substr(0, path.find('/', 1)));
            writeFile(dir + "/upper" + path, content);
        }
        command += " " + inNamespace(dir, tops, options.setup);
    }
    command += " " + options.prefix + " " + quote(REGSCAN_PROGRAM_PATH);
    for (const std::string& arg : args) {
        command += " " + quote(arg);
    }
    command +=
        " <" + quote(dir + "/input") + " >" + quote(dir + "/out") + " 2>" + quote(dir + "/err");
    const int status = std::system(command.c_str());
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.out = readFile(dir + "/out");
    result.err = readFile(dir + "/err");
    std::error_code error;
    fs::remove_all(dir, error);
    if (error) {
        result.err += "\n(could not remove " + dir + ")";
    }
    return result;
}

bool namespacesAvailable() {
    static const bool available = [] {
        if (geteuid() != 0 || access("/usr/bin/unshare", X_OK) != 0) {
            return false;
        }
        const std::string dir = makeTempDir();
        if (dir.empty()) {
            return false;
        }
        const std::string probe = inNamespace(dir, {"/etc"}, {}) + " true >/dev/null 2>&1";
        const bool ok = std::system(probe.c_str()) == 0;
        std::error_code ignored;
        fs::remove_all(dir, ignored);
        return ok;
    }();
    return available;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::stringstream stream(text);
    std::string line;
    while (std::getline(stream, line)) {
        result.push_back(line);
    }
    return result;
}

}  // namespace e2e
