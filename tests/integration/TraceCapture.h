// Sends every trace line of levels 1 to 3 into memory for the life of the object,
// then restores the previous level and the stream output.
#ifndef REGSCAN_TESTS_INTEGRATION_TRACECAPTURE_H
#define REGSCAN_TESTS_INTEGRATION_TRACECAPTURE_H

#include "trace/Tracer.h"

class TraceCapture {
  public:
    TraceCapture() : m_previousLevel(Tracer::getLevel()) {
        Tracer::setSink(&m_sink);
        Tracer::setLevel(Tracer::MAX_LEVEL);
    }
    ~TraceCapture() {
        Tracer::setLevel(m_previousLevel);
        Tracer::setSink(nullptr);
    }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    MemoryTraceSink& sink() { return m_sink; }

  private:
    MemoryTraceSink m_sink;
    int m_previousLevel;
};

#endif
