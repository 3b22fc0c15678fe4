#include "base/Runtime.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "base/Utf8.h"

extern char** environ;

namespace {

bool isBlank(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r';
}

void closeFd(int& fd) {
    if (fd >= 0) {
        ::close(fd);
        fd = -1;
    }
}

// Moves `fd` to a number above the standard streams, so that setting up the
// child's descriptors 0 and 1 can never overwrite it. Keeps close-on-exec.
bool moveAboveStandard(int& fd) {
    if (fd > 2) {
        return true;
    }
    const int moved = ::fcntl(fd, F_DUPFD_CLOEXEC, 3);
    if (moved < 0) {
        return false;
    }
    ::close(fd);
    fd = moved;
    return true;
}

// The size asked for the pipe of a captured output (the usual limit for
// unprivileged processes).
const int kOutputPipeSize = 1 << 20;

bool makePipe(int fds[2]) {
    if (::pipe2(fds, O_CLOEXEC) != 0) {
        return false;
    }
    if (!moveAboveStandard(fds[0]) || !moveAboveStandard(fds[1])) {
        closeFd(fds[0]);
        closeFd(fds[1]);
        return false;
    }
    return true;
}

// Writes all of `size` bytes; async-signal-safe.
void writeAll(int fd, const void* data, std::size_t size) {
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = ::write(fd, p, size);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        p += written;
        size -= static_cast<std::size_t>(written);
    }
}

// Everything the child needs, prepared before fork so that the child only makes
// async-signal-safe calls.
struct ChildPlan {
    std::vector<std::string> args;
    std::vector<std::string> env;
    std::vector<std::string> candidates;  // paths to try with execve, in order
    std::string workingDirectory;
    bool changeDirectory = false;
    std::vector<char*> argv;
    std::vector<char*> envp;
};

// The candidates for program `name` in the search path `path` (":"-separated; an
// empty element is the working directory).
void searchCandidates(const std::string& name, const std::string& path,
                      std::vector<std::string>& out) {
    std::size_t pos = 0;
    for (;;) {
        std::size_t colon = path.find(':', pos);
        if (colon == std::string::npos) {
            colon = path.size();
        }
        std::string dir = path.substr(pos, colon - pos);
        if (dir.empty()) {
            out.push_back(name);
        } else {
            if (dir.back() != '/') {
                dir.push_back('/');
            }
            out.push_back(dir + name);
        }
        if (colon == path.size()) {
            break;
        }
        pos = colon + 1;
    }
}

[[noreturn]] void runChild(const ChildPlan& plan, int nullFd, int outputFd, int errorFd) {
    // Only async-signal-safe calls from here on.
    sigset_t all;
    sigemptyset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    struct sigaction deflt;
    std::memset(&deflt, 0, sizeof deflt);
    deflt.sa_handler = SIG_DFL;
    sigaction(SIGPIPE, &deflt, nullptr);

    int error = 0;
    if (::dup2(nullFd, STDIN_FILENO) < 0) {
        error = errno;
    } else if (outputFd >= 0 && ::dup2(outputFd, STDOUT_FILENO) < 0) {
        error = errno;
    } else if (plan.changeDirectory && ::chdir(plan.workingDirectory.c_str()) != 0) {
        error = errno;
    } else {
        error = ENOENT;
        bool denied = false;
        for (const std::string& candidate : plan.candidates) {
            ::execve(candidate.c_str(), plan.argv.data(), plan.envp.data());
            const int failed = errno;
            if (failed == EACCES) {
                denied = true;
            } else if (failed != ENOENT && failed != ENOTDIR) {
                error = failed;
                break;
            }
        }
        if (error == ENOENT && denied) {
            error = EACCES;
        }
    }
    writeAll(errorFd, &error, sizeof error);
    ::_exit(127);
}

}  // namespace

Runtime* Runtime::getRuntime() {
    static Runtime runtime;
    return &runtime;
}

bool Runtime::splitCommand(const String& command, ObjectArray<String>& words) {
    const std::wstring& text = command.wide();
    std::vector<std::wstring> found;
    std::wstring word;
    bool inWord = false;
    std::size_t i = 0;
    const std::size_t n = text.size();
    while (i < n) {
        const wchar_t c = text[i];
        if (isBlank(c)) {
            if (inWord) {
                found.push_back(word);
                word.clear();
                inWord = false;
            }
            ++i;
            continue;
        }
        inWord = true;
        if (c == L'\'') {
            const std::size_t close = text.find(L'\'', i + 1);
            if (close == std::wstring::npos) {
                return false;
            }
            word.append(text, i + 1, close - i - 1);
            i = close + 1;
        } else if (c == L'"') {
            ++i;
            for (;;) {
                if (i >= n) {
                    return false;
                }
                const wchar_t q = text[i];
                if (q == L'"') {
                    ++i;
                    break;
                }
                if (q == L'\\' && i + 1 < n &&
                    (text[i + 1] == L'"' || text[i + 1] == L'\\' || text[i + 1] == L'$' ||
                     text[i + 1] == L'`')) {
                    word.push_back(text[i + 1]);
                    i += 2;
                    continue;
                }
                word.push_back(q);
                ++i;
            }
        } else if (c == L'\\') {
            if (i + 1 >= n) {
                return false;
            }
            word.push_back(text[i + 1]);
            i += 2;
        } else {
            word.push_back(c);
            ++i;
        }
    }
    if (inWord) {
        found.push_back(word);
    }
    for (const std::wstring& w : found) {
        words.add(String(w));
    }
    return true;
}

Process* Runtime::exec(const String& command, const ObjectArray<String>* environment,
                       const String* workingDirectory, int flags) {
    ObjectArray<String> words;
    if (!splitCommand(command, words) || words.isEmpty()) {
        return nullptr;
    }

    ChildPlan plan;
    for (int i = 0; i < words.size(); ++i) {
        plan.args.emplace_back(static_cast<const char*>(words[i]));
    }
    std::string searchPath;
    bool havePath = false;
    if (environment != nullptr) {
        for (int i = 0; i < environment->size(); ++i) {
            plan.env.emplace_back(static_cast<const char*>((*environment)[i]));
            if (plan.env.back().compare(0, 5, "PATH=") == 0) {
                searchPath = plan.env.back().substr(5);
                havePath = true;
            }
        }
    } else {
        for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
            plan.env.emplace_back(*entry);
        }
    }
    if (!havePath) {
        const char* own = ::getenv("PATH");
        searchPath = own != nullptr ? own : "/usr/local/bin:/usr/bin:/bin";
    }
    const std::string& program = plan.args.front();
    if (program.empty()) {
        return nullptr;
    }
    if (program.find('/') != std::string::npos) {
        plan.candidates.push_back(program);
    } else {
        searchCandidates(program, searchPath, plan.candidates);
    }
    if (workingDirectory != nullptr) {
        plan.workingDirectory = static_cast<const char*>(*workingDirectory);
        plan.changeDirectory = true;
    }
    for (std::string& arg : plan.args) {
        plan.argv.push_back(&arg[0]);
    }
    plan.argv.push_back(nullptr);
    for (std::string& entry : plan.env) {
        plan.envp.push_back(&entry[0]);
    }
    plan.envp.push_back(nullptr);

    int nullFd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nullFd < 0 || !moveAboveStandard(nullFd)) {
        closeFd(nullFd);
        return nullptr;
    }
    int output[2] = {-1, -1};
    int error[2] = {-1, -1};
    const bool capture = (flags & EXEC_CAPTURE_OUTPUT) != 0;
    if ((capture && !makePipe(output)) || !makePipe(error)) {
        closeFd(nullFd);
        closeFd(output[0]);
        closeFd(output[1]);
        return nullptr;
    }
    if (capture) {
        // A larger pipe lets the child write on while the output is collected; the
        // system's default size stays when it refuses.
        ::fcntl(output[0], F_SETPIPE_SZ, kOutputPipeSize);
    }

    const pid_t pid = ::fork();
    if (pid == 0) {
        runChild(plan, nullFd, output[1], error[1]);
    }
    closeFd(nullFd);
    closeFd(output[1]);
    closeFd(error[1]);
    if (pid < 0) {
        closeFd(output[0]);
        closeFd(error[0]);
        return nullptr;
    }

    // The error pipe closes on a successful execve; otherwise the child sends errno.
    int childError = 0;
    std::size_t got = 0;
    while (got < sizeof childError) {
        const ssize_t n =
            ::read(error[0], reinterpret_cast<char*>(&childError) + got, sizeof childError - got);
        if (n > 0) {
            got += static_cast<std::size_t>(n);
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    closeFd(error[0]);
    if (got != 0) {
        closeFd(output[0]);
        while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
        }
        return nullptr;
    }
    Process* process = new (std::nothrow) Process(pid, output[0]);
    if (process == nullptr) {
        closeFd(output[0]);
        ::kill(pid, SIGKILL);
        while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    return process;
}

int Runtime::getEnvironment(ObjectArray<String>& out) const {
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        out.add(String(*entry));
    }
    return 0;
}

int Runtime::getEnvironment(StringMap& out) const {
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const char* text = *entry;
        const char* equals = std::strchr(text, '=');
        if (equals == nullptr) {
            out.setEntry(String(text), String());
            continue;
        }
        out.setEntry(String(Utf8::decode(text, static_cast<std::size_t>(equals - text))),
                     String(equals + 1));
    }
    return 0;
}
