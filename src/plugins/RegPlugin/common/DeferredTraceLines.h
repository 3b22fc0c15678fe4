// Trace lines held back while a command's output is read as it arrives, and
// written once the command has ended: where they would be if the output were read
// only then.
#ifndef REGPLUGIN_COMMON_DEFERREDTRACELINES_H
#define REGPLUGIN_COMMON_DEFERREDTRACELINES_H

#include <vector>

#include "PluginSDK/String.h"
#include "common/PluginTrace.h"

namespace RegPlugin {

class DeferredTraceLines {
  public:
    // Holds "`text``value``suffix`" as a line of `level` from `file`:`line`, when
    // that level is traced. The texts must outlive the object (string literals).
    void add(int level, const char* file, int line, const char* text,
             const PluginSDK::String& value, const char* suffix = "") {
        if (Tracer::isEnabled(level)) {
            m_lines.push_back({level, file, line, text, value, suffix});
        }
    }

    // Writes the held lines into `trace`, under its signature, and forgets them.
    void write(Trace& trace) {
        for (const Line& held : m_lines) {
            traceLine(trace, held.level, held.file, held.line, held.text, held.value, held.suffix);
        }
        discard();
    }

    void discard() { std::vector<Line>().swap(m_lines); }

  private:
    struct Line {
        int level;
        const char* file;
        int line;
        const char* text;
        PluginSDK::String value;
        const char* suffix;
    };
    std::vector<Line> m_lines;
};

}  // namespace RegPlugin

#endif
