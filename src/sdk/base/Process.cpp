#include "base/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

#include "base/Utf8.h"

// ---------------------------------------------------------------------------
// InputStream

InputStream::InputStream() : m_position(0) {}

InputStream::~InputStream() = default;

int InputStream::read() {
    if (m_position >= m_data.size()) {
        return -1;
    }
    wchar_t c;
    m_position += Utf8::decodeChar(m_data.data() + m_position, m_data.size() - m_position, c);
    return static_cast<int>(c);
}

std::string InputStream::readAll() {
    std::string rest;
    if (m_position < m_data.size()) {
        rest.assign(m_data.data() + m_position, m_data.size() - m_position);
    }
    m_position = m_data.size();
    return rest;
}

ByteBuffer InputStream::takeAll() {
    ByteBuffer rest;
    if (m_position == 0) {
        // Nothing read yet: hand the whole output over instead of copying it.
        rest = std::move(m_data);
        m_position = 0;
        return rest;
    }
    if (m_position < m_data.size()) {
        rest.append(m_data.data() + m_position, m_data.size() - m_position);
    }
    m_position = m_data.size();
    return rest;
}

// ---------------------------------------------------------------------------
// Process

OutputListener::~OutputListener() = default;

namespace {

// At most this much is read at once when the pipe cannot tell how much it holds.
constexpr std::size_t kReadChunk = 65536;
// Without a process descriptor, how often waitFor looks whether the child ended
// while something else keeps its output pipe open.
constexpr int kExitPollMillis = 20;
// With a pipe of at least kPausePipeSize bytes, after a read that left the pipe
// empty waitFor lets the child write for this long before it reads again (unless
// the child ends first): the child then rarely waits for the pipe, and the output
// is read in a few large pieces instead of thousands of small ones.
constexpr int kPauseMillis = 1;
constexpr int kPausePipeSize = 1 << 20;

void closeFd(int& fd) {
    if (fd >= 0) {
        ::close(fd);
        fd = -1;
    }
}

// A descriptor that becomes readable when `pid` ends, or -1 where the kernel has
// none to give.
int openPidFd(pid_t pid) {
#ifdef SYS_pidfd_open
    const long fd = ::syscall(SYS_pidfd_open, pid, 0);
    if (fd >= 0) {
        ::fcntl(static_cast<int>(fd), F_SETFD, FD_CLOEXEC);
        return static_cast<int>(fd);
    }
#else
    (void)pid;
#endif
    return -1;
}

// Reads what is available from `fd` once, at most `limit` bytes, and appends it to
// `out`, straight into its room. Returns the byte count, 0 at end of file, -1 on
// an error other than EINTR (errno is kept; ENOMEM when `out` cannot grow).
ssize_t readOnce(int fd, ByteBuffer& out, std::size_t limit) {
    int pending = 0;
    std::size_t want = kReadChunk;
    if (::ioctl(fd, FIONREAD, &pending) == 0 && pending > 0) {
        want = static_cast<std::size_t>(pending);
    }
    if (want > limit) {
        want = limit;
    }
    char* room = out.room(want);
    if (room == nullptr) {
        errno = ENOMEM;
        return -1;
    }
    for (;;) {
        const ssize_t got = ::read(fd, room, want);
        if (got >= 0) {
            out.commit(static_cast<std::size_t>(got));
            return got;
        }
        if (errno != EINTR) {
            return -1;
        }
    }
}

// Waits up to `millis` for `pidFd` to become readable (the child ended), or simply
// sleeps without one.
void pause(int pidFd, int millis) {
    pollfd fds[1];
    fds[0].fd = pidFd;
    fds[0].events = POLLIN;
    fds[0].revents = 0;
    ::poll(fds, pidFd >= 0 ? 1 : 0, millis);
}

}  // namespace

Process::Process(pid_t pid, int outputFd)
    : m_pid(pid), m_outputFd(outputFd), m_exitValue(-1), m_waited(false) {}

Process::~Process() {
    closeFd(m_outputFd);
    if (!m_waited && m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        while (::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

int Process::waitFor() {
    return waitAndCollect(nullptr);
}

int Process::waitFor(OutputListener& listener) {
    return waitAndCollect(&listener);
}

int Process::waitAndCollect(OutputListener* listener) {
    if (m_waited) {
        return 0;
    }
    if (m_pid <= 0) {
        return ECHILD;
    }
    int status = 0;
    bool exited = false;
    if (m_outputFd >= 0) {
        int pidFd = openPidFd(m_pid);
        const bool mayPause = ::fcntl(m_outputFd, F_GETPIPE_SZ) >= kPausePipeSize;
        while (!exited) {
            pollfd fds[2];
            fds[0].fd = m_outputFd;
            fds[0].events = POLLIN;
            fds[0].revents = 0;
            fds[1].fd = pidFd;
            fds[1].events = POLLIN;
            fds[1].revents = 0;
            const nfds_t count = pidFd >= 0 ? 2 : 1;
            const int ready = ::poll(fds, count, pidFd >= 0 ? -1 : kExitPollMillis);
            if (ready < 0 && errno != EINTR) {
                break;  // Fall back to a plain wait below.
            }
            bool drained = false;
            if (ready > 0 && (fds[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
                const std::size_t before = m_output.m_data.size();
                const ssize_t got = readOnce(m_outputFd, m_output.m_data, SIZE_MAX);
                if (got <= 0) {
                    // End of output (or a broken pipe): nothing more to collect.
                    closeFd(m_outputFd);
                    break;
                }
                drained = true;
                if (listener != nullptr) {
                    // The listener's work is a pause of its own, during which the child
                    // fills the pipe: read on at once unless the pipe is still empty.
                    listener->onOutput(m_output.m_data, before);
                    int pending = 0;
                    drained = ::ioctl(m_outputFd, FIONREAD, &pending) != 0 || pending == 0;
                }
            }
            const pid_t done = ::waitpid(m_pid, &status, WNOHANG);
            if (done == m_pid) {
                exited = true;
            } else if (done < 0 && errno != EINTR) {
                const int error = errno;
                closeFd(pidFd);
                forget();
                return error;
            } else if (drained && mayPause) {
                pause(pidFd, kPauseMillis);
            }
        }
        closeFd(pidFd);
        if (exited && m_outputFd >= 0) {
            // Collect what the child left in the pipe, but not what its own children
            // may still be writing: take the bytes buffered now and stop.
            const std::size_t before = m_output.m_data.size();
            int pending = 0;
            if (::ioctl(m_outputFd, FIONREAD, &pending) == 0 && pending > 0) {
                const int flags = ::fcntl(m_outputFd, F_GETFL);
                ::fcntl(m_outputFd, F_SETFL, flags | O_NONBLOCK);
                auto remaining = static_cast<std::size_t>(pending);
                while (remaining > 0) {
                    const ssize_t got = readOnce(m_outputFd, m_output.m_data, remaining);
                    if (got <= 0) {
                        break;
                    }
                    remaining -= static_cast<std::size_t>(got);
                }
            }
            if (listener != nullptr && m_output.m_data.size() > before) {
                listener->onOutput(m_output.m_data, before);
            }
        }
        closeFd(m_outputFd);
    }
    while (!exited) {
        const pid_t done = ::waitpid(m_pid, &status, 0);
        if (done == m_pid) {
            exited = true;
        } else if (errno != EINTR) {
            const int error = errno;
            forget();
            return error;
        }
    }
    m_waited = true;
    if (WIFEXITED(status)) {
        m_exitValue = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        m_exitValue = 128 + WTERMSIG(status);
    } else {
        m_exitValue = -1;
    }
    return 0;
}

void Process::release() {
    closeFd(m_outputFd);
}

void Process::forget() {
    // The child can no longer be waited for (reaped elsewhere, or never ours): its
    // number may already belong to another process, which must never be killed.
    m_pid = -1;
}
