// Sends trace lines of every level into memory for the life of the object.
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
    MemoryTraceSink& sink() { return m_sink; }

  private:
    MemoryTraceSink m_sink;
    int m_previousLevel;
};

#endif
