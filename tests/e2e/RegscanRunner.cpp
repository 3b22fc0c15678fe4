#include "RegscanRunner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

extern char** environ;

namespace e2e {

namespace {

std::string makeTempDir() {
    char pattern[] = "/tmp/regscan-e2e-XXXXXX";
    const char* dir = mkdtemp(pattern);
    return dir == nullptr ? std::string() : std::string(dir);
}

void makeDirs(const std::string& path) {
    std::string partial;
    std::stringstream parts(path);
    std::string part;
    while (std::getline(parts, part, '/')) {
        if (part.empty()) {
            continue;
        }
        partial += "/" + part;
        mkdir(partial.c_str(), 0755);
    }
}

void writeFile(const std::string& path, const std::string& content) {
    makeDirs(path.substr(0, path.rfind('/')));
    std::ofstream(path, std::ios::binary) << content;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

// Single-quotes `word` for sh.
std::string quote(const std::string& word) {
    std::string quoted = "'";
    for (char c : word) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

std::string topDirectory(const std::string& path) {
    std::size_t end = path.find('/', 1);
    return end == std::string::npos ? path : path.substr(0, end);
}

int runProcess(const std::vector<std::string>& argv, const std::map<std::string, std::string>& env,
               const std::string& inputPath, const std::string& outPath,
               const std::string& errPath) {
    std::map<std::string, std::string> merged;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        std::string text(*entry);
        std::size_t equals = text.find('=');
        if (equals != std::string::npos) {
            merged[text.substr(0, equals)] = text.substr(equals + 1);
        }
    }
    for (const auto& [name, value] : env) {
        merged[name] = value;
    }
    std::vector<std::string> envText;
    for (const auto& [name, value] : merged) {
        envText.push_back(name + "=" + value);
    }
    std::vector<char*> envp;
    for (std::string& entry : envText) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    std::vector<std::string> args = argv;
    std::vector<char*> cargs;
    for (std::string& arg : args) {
        cargs.push_back(arg.data());
    }
    cargs.push_back(nullptr);

    pid_t pid = fork();
    if (pid == 0) {
        int in = open(inputPath.c_str(), O_RDONLY);
        int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (in < 0 || out < 0 || err < 0) {
            _exit(126);
        }
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        execve(cargs[0], cargs.data(), envp.data());
        _exit(127);
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status)) {
        return WEXITSTATUS(status);
    }
    return 128 + WTERMSIG(status);
}

}  // namespace

RunResult runRegscan(const std::vector<std::string>& args, const RunOptions& options) {
    RunResult result;
    std::string dir = makeTempDir();
    if (dir.empty()) {
        result.err = "cannot make a temporary directory";
        return result;
    }
    writeFile(dir + "/input", options.input);

    std::vector<std::string> argv;
    if (options.files.empty() && options.setup.empty()) {
        argv.push_back(REGSCAN_PROGRAM_PATH);
        argv.insert(argv.end(), args.begin(), args.end());
    } else {
        std::string script = "set -e\n";
        std::set<std::string> tops;
        for (const auto& [path, content] : options.files) {
            std::string top = topDirectory(path);
            tops.insert(top);
            writeFile(dir + "/upper" + path, content);
        }
        for (const std::string& top : tops) {
            makeDirs(dir + "/upper" + top);
            makeDirs(dir + "/work" + top);
            script += "mount -t overlay overlay -o lowerdir=" + top + ",upperdir=" + dir +
                      "/upper" + top + ",workdir=" + dir + "/work" + top + " " + top + "\n";
        }
        for (const std::string& command : options.setup) {
            script += command + "\n";
        }
        script += "exec \"$@\"\n";
        argv = {"/usr/bin/unshare",  "-m", "--propagation", "private",
                "/bin/sh",           "-c", script,          "sh",
                REGSCAN_PROGRAM_PATH};
        argv.insert(argv.end(), args.begin(), args.end());
    }
    result.exitStatus =
        runProcess(argv, options.environment, dir + "/input", dir + "/out", dir + "/err");
    result.out = readFile(dir + "/out");
    result.err = readFile(dir + "/err");
    std::string cleanup = "rm -rf " + quote(dir);
    if (std::system(cleanup.c_str()) != 0) {
        result.err += "\n(could not remove " + dir + ")";
    }
    return result;
}

bool namespacesAvailable() {
    static const bool available = [] {
        if (geteuid() != 0 || access("/usr/bin/unshare", X_OK) != 0) {
            return false;
        }
        std::string dir = makeTempDir();
        makeDirs(dir + "/u");
        makeDirs(dir + "/w");
        std::string probe =
            "/usr/bin/unshare -m --propagation private /bin/sh -c "
            "'mount -t overlay overlay -o lowerdir=/etc,upperdir=" +
            dir + "/u,workdir=" + dir + "/w /etc' >/dev/null 2>&1";
        bool ok = std::system(probe.c_str()) == 0;
        std::string cleanup = "rm -rf " + quote(dir);
        ok = std::system(cleanup.c_str()) == 0 && ok;
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
