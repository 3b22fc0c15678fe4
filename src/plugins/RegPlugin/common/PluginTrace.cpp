#include "common/PluginTrace.h"

#include <cstdio>
#include <cstdlib>

namespace RegPlugin {

void assertionFailed(const char* expression, const char* file, int line, const char* function) {
    std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", file, line, function, expression);
    std::fflush(stderr);
    Trace trace(pluginTracer(), function);
    traceLine(trace, 1, file, line, "Assertion `", expression, "' failed.");
    std::abort();
}

}  // namespace RegPlugin
