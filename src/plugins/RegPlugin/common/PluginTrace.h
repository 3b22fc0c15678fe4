// Tracing and assertions inside the plug-in.
//
// A function that logs opens one scope with REG_TRACE_SCOPE and writes each line
// with one REG_TRACE statement:
//
//     REG_TRACE_SCOPE("Foo::bar(int)");
//     REG_TRACE(1, "cannot open ", path, " ( err = ", code, " )");
//
// The pieces are streamed into the host's Trace one after the other; when the
// level is filtered out nothing is formatted or allocated.
#ifndef REGPLUGIN_COMMON_PLUGINTRACE_H
#define REGPLUGIN_COMMON_PLUGINTRACE_H

#include "trace/Trace.h"
#include "trace/Tracer.h"

namespace RegPlugin {

// The tracer of the plug-in's component (5).
inline Tracer& pluginTracer() {
    return Tracer::getInstance(Tracer::COMPONENT_PLUGIN);
}

template <class... Pieces>
inline void traceLine(Trace& trace, int level, const char* file, int line,
                      const Pieces&... pieces) {
    if (!Tracer::isEnabled(level)) {
        return;
    }
    trace.level = level;
    trace << trace.pos(file, line);
    (trace << ... << pieces);
    trace << Trace::Modifier(0);
}

// Ends the process after reporting a broken invariant: the expression's text, the
// source position and the function, on standard error and as a level 1 trace line.
[[noreturn]] void assertionFailed(const char* expression, const char* file, int line,
                                  const char* function);

}  // namespace RegPlugin

#define REG_TRACE_SCOPE(signature) Trace regTrace_(::RegPlugin::pluginTracer(), signature)
#define REG_TRACE(level, ...) \
    ::RegPlugin::traceLine(regTrace_, level, __FILE__, __LINE__, __VA_ARGS__)

// Checked in every build; the text of `expression` is the message.
#define REG_ASSERT(expression)  \
    ((expression)               \
         ? static_cast<void>(0) \
         : ::RegPlugin::assertionFailed(#expression, __FILE__, __LINE__, __PRETTY_FUNCTION__))

#endif
