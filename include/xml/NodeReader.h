// Parses an XML file into a tree of Nodes and hands the tree to a NodeSink.
//
// The reader refuses what a hostile file could abuse: no external entity or DTD is
// ever loaded, and entity expansion is bounded (a file that expands into a huge
// text is refused with an error). Any depth of nesting is parsed without deep
// recursion.
#ifndef HOSTSDK_XML_NODEREADER_H
#define HOSTSDK_XML_NODEREADER_H

#include "base/Export.h"
#include "base/String.h"
#include "xml/NodeSink.h"

class HOSTSDK_API NodeReader {
public:
    enum Status {
        STATUS_OK = 0,          // the tree was handed to the sink
        STATUS_PARSE_ERROR = 1, // malformed or refused document; no tree handed over
        STATUS_IO_ERROR = 2,    // the file could not be opened or read
    };

    explicit NodeReader(NodeSink& sink);
    ~NodeReader();
    NodeReader(const NodeReader&) = delete;
    NodeReader& operator=(const NodeReader&) = delete;

    // Reads and parses the whole file at `path`. On success hands the root element's
    // tree to the sink's onNodeTree. Problems go to the sink's onWarning / onError /
    // onCriticalError with their line numbers; the parse stops at the first error,
    // or when a callback returns non-zero. `flags` is reserved: pass 0. Returns the
    // status, which getStatus() also gives afterwards.
    int process(const String& path, int flags);
    int getStatus() const { return m_status; }

private:
    NodeSink& m_sink;
    int m_status;
};

#endif
