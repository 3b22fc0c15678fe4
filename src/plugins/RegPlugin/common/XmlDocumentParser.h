// The loading half of the plug-in's XML loading pattern: a parser object that
// reads one XML document completely while it is being built, through the host's
// NodeReader, into the tree its sink keeps.
//
// Each XML registry derives its own parser from this class and hands it a new
// sink of its own class (an XmlDocumentSink subclass naming its trace scopes):
//
//     class AnywhereXmlParser : public XmlDocumentParser {
//       public:
//         explicit AnywhereXmlParser(const PluginSDK::String& path)
//             : XmlDocumentParser(new (std::nothrow) AnywhereXmlNodeSink(), String(path)) {}
//     };
//
// Contract for users:
//  - Construction reads and parses the whole document and never fails visibly:
//    a file that cannot be read or parsed shows as a null getRootNode() and a
//    non-zero getStatus(), and the reader's problems are in the trace (written by
//    the sink). Nothing throws.
//  - getStatus() is the reader's status (NodeReader::Status): 0 after a clean
//    parse, 1 or more after a failed one (1 malformed or refused, 2 unreadable).
//  - getRootNode() is the document's root element, or null. The tree belongs to
//    the sink, which belongs to the parser: a user must not keep the root or any
//    node of the tree beyond the parser's life.
//  - The document may come from a file path (the registries) or from memory
//    (tests, fuzzing harnesses); the two give the same tree for the same bytes.
#ifndef REGPLUGIN_COMMON_XMLDOCUMENTPARSER_H
#define REGPLUGIN_COMMON_XMLDOCUMENTPARSER_H

#include <cstddef>
#include <cstdint>

#include "base/String.h"
#include "common/XmlDocumentSink.h"
#include "xml/Node.h"

namespace RegPlugin {

class XmlDocumentParser {
  public:
    // Destroys the sink, which destroys the tree.
    virtual ~XmlDocumentParser();
    XmlDocumentParser(const XmlDocumentParser&) = delete;
    XmlDocumentParser& operator=(const XmlDocumentParser&) = delete;

    // The root element, or null; see above.
    Node* getRootNode() const;
    // The reader's status at the end of the load; see above.
    int32_t getStatus() const { return status; }

  protected:
    // Takes `sink` (owned from now on) and reads the file at `path` into it. A null
    // `sink` (it could not be allocated) reads nothing: status 1, no root.
    XmlDocumentParser(XmlDocumentSink* sink, const String& path);
    // The same for the `size` bytes at `data`.
    XmlDocumentParser(XmlDocumentSink* sink, const char* data, std::size_t size);

    int32_t status;
    XmlDocumentSink* sink;
};

}  // namespace RegPlugin

#endif
