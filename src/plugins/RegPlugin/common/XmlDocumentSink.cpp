#include "common/XmlDocumentSink.h"

#include "common/PluginTrace.h"

namespace RegPlugin {

XmlDocumentSink::XmlDocumentSink(const ScopeNames& scopes) : m_root(nullptr), m_scopes(scopes) {}

XmlDocumentSink::~XmlDocumentSink() {
    delete m_root;
}

int XmlDocumentSink::onNodeTree(Node* tree) {
    if (m_root != nullptr && m_root != tree) {
        delete m_root;
    }
    m_root = tree;
    return 0;
}

int XmlDocumentSink::onWarning(const String& message, int line) {
    REG_TRACE_SCOPE(m_scopes.onWarning);
    REG_TRACE(2, "Warning parsing XML file at line ", line, " message is: ", message);
    return 0;
}

int XmlDocumentSink::onError(const String& message, int line) {
    REG_TRACE_SCOPE(m_scopes.onError);
    REG_TRACE(1, "Error parsing XML file at line ", line, " message is: ", message);
    return 0;
}

int XmlDocumentSink::onCriticalError(const String& message, int line) {
    REG_TRACE_SCOPE(m_scopes.onCriticalError);
    REG_TRACE(1, "Critical error parsing XML file at line ", line, " message is: ", message);
    return 0;
}

}  // namespace RegPlugin
