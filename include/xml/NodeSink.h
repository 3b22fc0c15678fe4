// Receives what a NodeReader produces.
#ifndef HOSTSDK_XML_NODESINK_H
#define HOSTSDK_XML_NODESINK_H

#include "base/Export.h"
#include "base/String.h"
#include "xml/Node.h"

class HOSTSDK_API NodeSink {
  public:
    NodeSink();
    // Receives the finished document tree (its root element); the sink owns it from
    // then on. Returns 0.
    virtual int onNodeTree(Node* tree) = 0;
    // The three problem callbacks below do nothing and return 0 unless overridden.
    // A problem that did not stop the parse, with its line number; a non-zero result
    // stops the parse.
    virtual int onWarning(const String& message, int line);
    // A problem that made the document unusable (malformed XML, a refused entity,
    // a missing file), with its line number (0 when no line applies).
    virtual int onError(const String& message, int line);
    // A failure of the reader itself (reading the file, memory).
    virtual int onCriticalError(const String& message, int line);
    virtual ~NodeSink();
    NodeSink(const NodeSink&) = delete;
    NodeSink& operator=(const NodeSink&) = delete;
};

#endif
