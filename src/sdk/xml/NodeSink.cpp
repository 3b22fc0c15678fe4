#include "xml/NodeSink.h"

NodeSink::NodeSink() = default;

NodeSink::~NodeSink() = default;

int NodeSink::onWarning(const String& /*message*/, int /*line*/) {
    return 0;
}

int NodeSink::onError(const String& /*message*/, int /*line*/) {
    return 0;
}

int NodeSink::onCriticalError(const String& /*message*/, int /*line*/) {
    return 0;
}
