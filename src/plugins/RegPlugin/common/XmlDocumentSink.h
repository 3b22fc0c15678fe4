// The receiving half of the plug-in's XML loading pattern: a NodeSink that keeps
// the document tree the host's reader delivers and writes the reader's problems
// as trace lines.
//
// Every XML registry has its own sink class derived from this one (for example
// AnywhereXmlNodeSink, InstalledXmlNodeSink); the subclass only names the trace
// scopes of the three problem callbacks, so that a user reading the trace can
// tell which parser spoke. An XmlDocumentParser owns the sink; the sink owns the
// tree. Nothing here throws or stops the reader.
#ifndef REGPLUGIN_COMMON_XMLDOCUMENTSINK_H
#define REGPLUGIN_COMMON_XMLDOCUMENTSINK_H

#include "base/String.h"
#include "xml/Node.h"
#include "xml/NodeSink.h"

namespace RegPlugin {

class XmlDocumentSink : public NodeSink {
  public:
    // The trace scope texts of onWarning, onError and onCriticalError. They must
    // outlive the sink (string literals).
    struct ScopeNames {
        const char* onWarning;
        const char* onError;
        const char* onCriticalError;
    };

    // No tree yet.
    explicit XmlDocumentSink(const ScopeNames& scopes);
    // Destroys the tree, if any.
    ~XmlDocumentSink() override;

    // Takes `tree` as the root, destroying a tree received before (the last one
    // wins, none leaks). Returns 0.
    int onNodeTree(Node* tree) override;
    // Each writes one line and returns 0, so the reader goes on as far as it can:
    //   level 2 "Warning parsing XML file at line " line " message is: " message
    //   level 1 "Error parsing XML file at line " line " message is: " message
    //   level 1 "Critical error parsing XML file at line " line " message is: " message
    // None of them clears the root.
    int onWarning(const String& message, int line) override;
    int onError(const String& message, int line) override;
    int onCriticalError(const String& message, int line) override;

    // The tree kept, or null; it stays the sink's and lives as long as the sink.
    Node* getRootNode() const { return m_root; }

  private:
    Node* m_root;
    ScopeNames m_scopes;
};

}  // namespace RegPlugin

#endif
