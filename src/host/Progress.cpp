#include "Progress.h"

#include <unistd.h>

#include <cerrno>

namespace regscan {

ProgressLine::ProgressLine(int fd, bool enabled, std::chrono::milliseconds interval)
    : fd_(fd), active_(enabled && isatty(fd) == 1), interval_(interval) {}

ProgressLine::~ProgressLine() {
    clear();
}

void ProgressLine::update(const std::string& what, std::size_t done, std::size_t total) {
    if (!active_) {
        return;
    }
    auto now = std::chrono::steady_clock::now();
    if (what == lastWhat_ && now - lastTime_ < interval_) {
        return;
    }
    lastWhat_ = what;
    lastTime_ = now;
    std::string text = what;
    if (done > 0 || total > 0) {
        text += ": " + std::to_string(done);
        if (total > 0) {
            text += " / " + std::to_string(total);
        }
    }
    // Carriage return, the text, then erase the rest of the line.
    write("\r" + text + "\033[K");
    shown_ = true;
}

void ProgressLine::clear() {
    if (shown_) {
        write("\r\033[K");
        shown_ = false;
        lastWhat_.clear();
    }
}

ProgressCallback ProgressLine::callback() {
    if (!active_) {
        return {};
    }
    return [this](const std::string& what, std::size_t done, std::size_t total) {
        update(what, done, total);
    };
}

void ProgressLine::write(const std::string& text) {
    const char* data = text.data();
    std::size_t left = text.size();
    while (left > 0) {
        ssize_t written = ::write(fd_, data, left);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            active_ = false;  // the terminal went away: stop trying
            return;
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
}

}  // namespace regscan
