// Parses an XML file into a tree of Nodes and hands the tree to a NodeSink.
//
// The reader refuses what a hostile file could abuse: no external entity or DTD is
// ever loaded, and entity expansion is bounded (a file that expands into a huge
// text is refused with an error). Any depth of nesting is parsed without deep
// recursion.
#ifndef HOSTSDK_XML_NODEREADER_H
#define HOSTSDK_XML_NODEREADER_H

#include <cstddef>

#include "base/Export.h"
#include "base/String.h"
#include "xml/NodeSink.h"

class HOSTSDK_API NodeReader {
  public:
    enum Status {
        STATUS_OK = 0,           // the tree was handed to the sink
        STATUS_PARSE_ERROR = 1,  // malformed or refused document; no tree handed over
        STATUS_IO_ERROR = 2,     // the file could not be opened or read
    };

    explicit NodeReader(NodeSink& sink);
    ~NodeReader();
    NodeReader(const NodeReader&) = delete;
    NodeReader& operator=(const NodeReader&) = delete;

    // Reads and parses the whole file at `path`, which must be a regular file. On
    // success hands the root element's tree to the sink's onNodeTree (exactly once)
    // and returns STATUS_OK. Otherwise no tree is handed over and everything built
    // so far is freed:
    //  - a file that cannot be opened, is not a regular file or cannot be read gives
    //    STATUS_IO_ERROR, reported through onError (opening) or onCriticalError
    //    (reading), line 0, with the path and the system's reason;
    //  - a malformed or refused document gives STATUS_PARSE_ERROR, reported through
    //    onError with the parser's message and the line (counted from 1);
    //  - running out of memory gives STATUS_PARSE_ERROR, reported through
    //    onCriticalError.
    // An entity reference that cannot be expanded because its declaration was never
    // read is left out and reported through onWarning. A non-zero result of
    // onWarning stops the parse (STATUS_PARSE_ERROR, no further callback). Comments
    // and processing instructions outside the root element are dropped; the XML
    // declaration and the document type declaration make no nodes. An exception
    // thrown by a sink callback reaches the caller after the parser is released
    // (std::bad_alloc is reported as running out of memory instead). `flags` is
    // reserved: pass 0. Returns the status, which getStatus() also gives afterwards.
    int process(const String& path, int flags);
    // As process, for a document already in memory: the `size` bytes at `data`
    // (null only with size 0). Messages name the document "(buffer)"; there is no
    // STATUS_IO_ERROR. Lets a caller (a fuzzing harness, a test) feed bytes without
    // a file.
    int processBuffer(const char* data, std::size_t size, int flags);
    int getStatus() const { return m_status; }

  private:
    NodeSink& m_sink;
    int m_status;
};

#endif
