// Progress lines appear on a terminal only, and never in redirected output.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "Progress.h"

namespace {

// A pseudo-terminal: `terminal` is the side a program writes to, `reader` the side
// that sees what it wrote.
struct Pty {
    int reader = -1;
    int terminal = -1;
    Pty() {
        reader = posix_openpt(O_RDWR | O_NOCTTY);
        if (reader >= 0 && grantpt(reader) == 0 && unlockpt(reader) == 0) {
            terminal = open(ptsname(reader), O_RDWR | O_NOCTTY);
        }
    }
    ~Pty() {
        close(terminal);
        close(reader);
    }
    // Everything written so far (waits briefly for it to arrive).
    std::string drain() const {
        std::string text;
        char buffer[4096];
        pollfd ready = {reader, POLLIN, 0};
        while (poll(&ready, 1, 200) > 0 && (ready.revents & POLLIN)) {
            ssize_t n = read(reader, buffer, sizeof buffer);
            if (n <= 0) {
                break;
            }
            text.append(buffer, static_cast<std::size_t>(n));
        }
        return text;
    }
};

TEST(ProgressTest, ShowsOnATerminalOnlyAndRateLimitsCounts) {
    Pty pty;
    ASSERT_GE(pty.terminal, 0) << "no pseudo-terminal";
    {
        regscan::ProgressLine line(pty.terminal, true, std::chrono::hours(1));
        ASSERT_TRUE(line.active());
        line.update("reading rpm", 0, 0);
        line.update("reading rpm", 1, 40);  // within the interval: not shown
        line.update("reading dpkg", 7, 0);  // a new step always shows
    }                                       // the destructor erases the line
    EXPECT_EQ(pty.drain(), "\rreading rpm\033[K\rreading dpkg: 7\033[K\r\033[K");
    {
        regscan::ProgressLine line(pty.terminal, true, std::chrono::milliseconds(0));
        line.update("reading dpkg", 8, 12);
        line.update("reading dpkg", 9, 12);
        line.clear();
        line.clear();  // nothing shown since: nothing to erase
    }
    EXPECT_EQ(pty.drain(), "\rreading dpkg: 8 / 12\033[K\rreading dpkg: 9 / 12\033[K\r\033[K");

    int pipeFds[2];
    ASSERT_EQ(pipe(pipeFds), 0);
    struct Case {
        int fd;
        bool enabled;
    } silent[] = {{pty.terminal, false}, {pipeFds[1], true}};
    for (const Case& c : silent) {
        regscan::ProgressLine line(c.fd, c.enabled);
        EXPECT_FALSE(line.active());
        EXPECT_FALSE(line.callback());
        line.update("reading rpm", 1, 2);
    }
    close(pipeFds[1]);
    char byte;
    EXPECT_EQ(read(pipeFds[0], &byte, 1), 0);
    close(pipeFds[0]);
    EXPECT_EQ(pty.drain(), "");
}

// The real program with its standard error on a terminal.
TEST(ProgressTest, InventoryShowsProgressUnlessQuiet) {
    struct Case {
        const char* quiet;
        bool shown;
    } cases[] = {{nullptr, true}, {"--quiet", false}};
    for (const Case& c : cases) {
        Pty pty;
        ASSERT_GE(pty.terminal, 0);
        pid_t child = fork();
        if (child == 0) {
            int null = open("/dev/null", O_RDWR);
            dup2(null, STDIN_FILENO);
            dup2(null, STDOUT_FILENO);
            dup2(pty.terminal, STDERR_FILENO);
            if (c.quiet) {
                execl(REGSCAN_PROGRAM_PATH, "regscan", c.quiet, "inventory",
                      static_cast<char*>(nullptr));
            }
            execl(REGSCAN_PROGRAM_PATH, "regscan", "inventory", static_cast<char*>(nullptr));
            _exit(127);
        }
        std::string seen;
        int status = 0;
        for (;;) {
            seen += pty.drain();
            if (waitpid(child, &status, WNOHANG) == child) {
                break;
            }
        }
        seen += pty.drain();
        EXPECT_EQ(seen.find("\rreading dpkg") != std::string::npos, c.shown) << seen;
    }
}

}  // namespace
