#include "cross/rpm/LegacyRpmUtil.h"

#include <fcntl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "RegPluginConstants.h"
#include "common/PluginTrace.h"

namespace RegPlugin {

namespace {

// Owns a malloc'ed narrow string.
class MallocText {
  public:
    explicit MallocText(char* text) : m_text(text) {}
    ~MallocText() { std::free(m_text); }
    MallocText(const MallocText&) = delete;
    MallocText& operator=(const MallocText&) = delete;
    char* get() const { return m_text; }

  private:
    char* m_text;
};

// The child's side, between fork() and exec: only async-signal-safe calls, since
// the parent may have other threads. Never returns.
[[noreturn]] void runChild(int readEnd, int writeEnd, const char* cmd) {
    ::close(readEnd);
    if (writeEnd != STDOUT_FILENO) {
        ::dup2(writeEnd, STDOUT_FILENO);
        ::close(writeEnd);
    } else {
        // Already in place; only the close-on-exec flag has to go.
        ::fcntl(STDOUT_FILENO, F_SETFD, 0);
    }
    // Error output is thrown away. It goes to /dev/null rather than to a closed
    // descriptor, which the command could reuse for a file it opens.
    const int devNull = ::open("/dev/null", O_WRONLY);
    if (devNull < 0) {
        ::close(STDERR_FILENO);
    } else if (devNull != STDERR_FILENO) {
        ::dup2(devNull, STDERR_FILENO);
        ::close(devNull);
    }
    ::execl("/bin/sh", "sh", "-c", cmd, static_cast<char*>(nullptr));
    // No shell: die by a signal, so that the parent reports a failed child.
    ::raise(SIGKILL);
    ::_exit(127);
}

// Called when a read has emptied the pipe. A child that writes many small pieces
// (rpm writes one per package) would otherwise wake the reader, and be interrupted
// itself, once per piece; waiting a moment lets its output gather in the pipe, which
// holds far more than such a child writes in that time. The delay is bounded: at
// most one pause per read that returned data.
void pauseAfterDrainingPipe() {
    const timespec pause = {0, 1000000};  // 1 ms
    ::nanosleep(&pause, nullptr);
}

}  // namespace

CommandOutputListener::~CommandOutputListener() = default;

TErrorCode LegacyRpmUtil::execCommand(const PluginSDK::String& command, MemoryBuffer& output) {
    std::size_t length = 0;
    return execCommand(command, output, length, nullptr);
}

TErrorCode LegacyRpmUtil::execCommand(const PluginSDK::String& command, MemoryBuffer& output,
                                      std::size_t& o_Length) {
    return execCommand(command, output, o_Length, nullptr);
}

TErrorCode LegacyRpmUtil::execCommand(const PluginSDK::String& command, MemoryBuffer& output,
                                      std::size_t& o_Length, CommandOutputListener* listener) {
    REG_TRACE_SCOPE("LegacyRpmUtil::execCommand(const PluginSDK::String&, MemoryBuffer&)");
    o_Length = 0;
    if (command.length() == 0) {
        REG_TRACE(1, "invalid command requested");
        return REG_PLUGIN_ERROR_INVALID_COMMAND;
    }
    // Converted before fork(): the child must not allocate.
    char* const cmd = PluginSDK::String::getMultibyteString(command);
    const MallocText cmdOwner(cmd);
    REG_ASSERT(cmd);

    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) {
        const int error = errno;
        REG_TRACE(1, "failure while creating the pipe, error ", error);
        return REG_PLUGIN_ERROR_PIPE_CREATION_FAILURE;
    }
    const pid_t pid = ::fork();
    if (pid == -1) {
        const int error = errno;
        ::close(fds[0]);
        ::close(fds[1]);
        REG_TRACE(1, "fork() failed with error ", error);
        return REG_PLUGIN_ERROR_FORK_FAILURE;
    }
    if (pid == 0) {
        runChild(fds[0], fds[1], cmd);
    }
    ::close(fds[1]);

    // Read until the end of the output, keeping at least one free (zero) byte
    // behind the data.
    bool outputFits = true;
    std::size_t offset = 0;
    for (;;) {
        if (offset >= output.size) {
            if (offset >= UINT32_MAX ||
                output.resize(static_cast<unsigned int>(offset) + 1) == nullptr) {
                outputFits = false;
                break;
            }
        }
        const std::size_t room = output.size - offset;
        const ssize_t count = ::read(fds[0], output.data + offset, room);
        if (count > 0) {
            offset += static_cast<std::size_t>(count);
            if (listener != nullptr) {
                listener->onOutput(output, offset);
            }
            if (static_cast<std::size_t>(count) < room) {
                pauseAfterDrainingPipe();
            }
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    // Closing here also ends a child that is still writing (with SIGPIPE) when its
    // output was not read to the end.
    ::close(fds[0]);
    if (!outputFits) {
        // The last byte read gives way to the terminating zero.
        offset = output.size == 0 ? 0 : output.size - 1;
        REG_TRACE(1, "the output of the command does not fit in memory, stopped reading at ",
                  static_cast<unsigned long>(offset), " bytes");
    }
    if (output.data != nullptr) {
        output.data[offset] = 0;
    }
    o_Length = offset;

    REG_TRACE(3, "finished reading from the pipe");
    REG_TRACE(3, "waiting for child ", static_cast<int>(pid));
    int status = 0;
    pid_t waited;
    do {
        waited = ::waitpid(pid, &status, 0);
    } while (waited == -1 && errno == EINTR);
    if (waited == -1) {
        return REG_PLUGIN_ERROR_WAIT_CHILD_FAILURE;
    }

    TErrorCode result = outputFits ? PluginSDK::RESULT_OK : REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE;
    const bool stopped = (status & 0xff) == 0x7f;
    const bool exited = (status & 0x7f) == 0;
    if (!stopped && !exited) {
        REG_TRACE(1, "child process failed");
        result = REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE;
    }
    if (!exited) {
        return result;
    }
    const int exitStatus = (status >> 8) & 0xff;
    if (exitStatus != 0) {
        result = REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE;
        REG_TRACE(3, "child process exited with code ", exitStatus);
    } else {
        REG_TRACE(3, "child process exited correctly");
    }
    return result;
}

}  // namespace RegPlugin
