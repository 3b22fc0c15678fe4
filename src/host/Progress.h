// One line of progress for people watching a long command on a terminal.
#ifndef REGSCAN_PROGRESS_H
#define REGSCAN_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace regscan {

// Reports how far a long step is: what is being done, and `done` of `total` units
// (total 0: unknown).
typedef std::function<void(const std::string& what, std::size_t done, std::size_t total)>
    ProgressCallback;

// Shows progress as one line on a terminal, rewritten in place. Does nothing when
// `fd` is not a terminal or when `enabled` is false, so that redirected output and
// scripts never see it. The line is removed when the object goes away.
class ProgressLine {
  public:
    // Counts of the same step are shown at most once per `interval`.
    ProgressLine(int fd, bool enabled,
                 std::chrono::milliseconds interval = std::chrono::milliseconds(100));
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    bool active() const { return active_; }

    // Shows "what: done / total" (or "what: done", or only "what" when both are 0).
    // A new `what` always shows.
    void update(const std::string& what, std::size_t done, std::size_t total);

    // Removes the line (before other output goes to the same terminal).
    void clear();

    // A callback that updates this line; an empty one when the line is not active.
    ProgressCallback callback();

  private:
    void write(const std::string& text);

    int fd_;
    bool active_;
    std::chrono::milliseconds interval_;
    bool shown_ = false;
    std::string lastWhat_;
    std::chrono::steady_clock::time_point lastTime_;
};

}  // namespace regscan

#endif
