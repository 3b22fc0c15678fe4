// The tracing library: one tracer per component, one global filter and output.
//
// A trace line is written when its level is at or below the current level: 1 for
// failures, 2 for warnings, 3 for information. The default level is 0: nothing is
// written. The host program sets level and output with setLevel / setOutputFile;
// other hosts and tests may use the environment instead, read once when the first
// tracer is asked for (or a setter below is first called, so that what a host sets
// always wins over the environment):
//   HOSTSDK_TRACE_LEVEL  0 to 3 (anything else counts as 0)
//   HOSTSDK_TRACE_FILE   the file that lines are appended to (default: standard error;
//                        a file that cannot be opened leaves standard error)
//
// Lines are written whole, one write each, under one process-wide lock, so lines of
// several threads never mix; a line written to a file is there when emit returns.
//
// Each line reads
//   2026-11-22T03:14:15.123456Z L2 C5 src/plugins/RegPlugin/RegPlugin.cpp:42 [signature] message
// with the UTC time, the level, the component, the source position, the scope's
// signature in brackets and, last and verbatim, the message.
#ifndef HOSTSDK_TRACE_TRACER_H
#define HOSTSDK_TRACE_TRACER_H

#include <atomic>
#include <string>
#include <vector>

#include "base/Export.h"

// One finished trace line. The pointers are valid only during TraceSink::write.
struct TraceRecord {
    long long timeMicros;  // microseconds since the epoch, UTC
    int level;
    int component;
    const char* signature;  // UTF-8
    const char* file;
    int line;
    const std::string* message;  // UTF-8
};

// Receives every line that passes the level filter.
class HOSTSDK_API TraceSink {
  public:
    virtual ~TraceSink();
    virtual void write(const TraceRecord& record) = 0;
};

// Keeps the lines in memory (tests).
class HOSTSDK_API MemoryTraceSink : public TraceSink {
  public:
    struct Line {
        int level;
        int component;
        std::string signature;
        std::string file;
        int line;
        std::string message;
    };
    void write(const TraceRecord& record) override;
    const std::vector<Line>& lines() const { return m_lines; }
    // The messages of the lines written at `level`, in order.
    std::vector<std::string> messages(int level) const;
    // True when some line's message equals `message`.
    bool contains(const std::string& message) const;
    void clear() { m_lines.clear(); }

  private:
    std::vector<Line> m_lines;
};

class HOSTSDK_API Tracer {
  public:
    // Any int value names a component; these are the ones in use.
    enum Component : int {
        COMPONENT_HOST = 1,
        COMPONENT_SDK = 2,
        COMPONENT_PLUGIN = 5,
    };
    enum { MAX_LEVEL = 3 };

    // The tracer of `component`; the same object for every call.
    static Tracer& getInstance(Component component);

    Component getComponent() const { return m_component; }
    // True when a line of `level` is written.
    static bool isEnabled(int level) {
        return level > 0 && level <= s_level.load(std::memory_order_relaxed);
    }

    // Host configuration. Lines of `level` and below are written; 0 turns tracing off.
    // Values outside 0..MAX_LEVEL are clamped.
    static void setLevel(int level);
    static int getLevel() { return s_level.load(std::memory_order_relaxed); }
    // Lines go to `sink` (not owned; it must stay alive until it is replaced; null
    // restores the stream output). A sink is called under the output lock and must
    // not trace itself.
    static void setSink(TraceSink* sink);
    // The stream output, used while no sink is set: lines are appended to the file at
    // `path` (created when missing); null means standard error. Returns 0 or the
    // errno value of a file that cannot be opened (the output is then unchanged).
    static int setOutputFile(const char* path);
    // Formats a record as one line without its line end.
    static std::string format(const TraceRecord& record);

    // Hands one finished line to the sink (used by Trace).
    static void emit(const TraceRecord& record);

  private:
    explicit Tracer(Component component) : m_component(component) {}
    static void configureFromEnvironment();
    static std::atomic<int> s_level;
    Component m_component;
};

#endif
