// Reads one Orlo tag file into OrloProduct records.
//
// The document is loaded with the plug-in's XML loading pattern (XmlDocumentParser,
// with the nested OrloXmlNodeSink naming the trace scopes), then walked once: a
// "ProductInventory" root gives one record per "Product", "Component" or "Fix"
// child; a root that is itself such an element gives one record. A record holds
// the text of each child element (joined from that child's own text nodes only,
// no recursion, no trimming) under the child's name, plus the derived "name",
// "version" and "fmidx". Nothing here fails visibly: an unreadable or malformed
// file simply yields no records, and the reader's problems are traced.
#ifndef REGPLUGIN_CROSS_ORLO_ORLOXMLPARSER_H
#define REGPLUGIN_CROSS_ORLO_ORLOXMLPARSER_H

#include <cstdint>
#include <vector>

#include "PluginSDK/String.h"
#include "common/XmlDocumentParser.h"
#include "common/XmlDocumentSink.h"
#include "cross/orlo/OrloProduct.h"
#include "xml/Node.h"

namespace RegPlugin {

class OrloXmlParser : public XmlDocumentParser {
  public:
    // Keeps the tag file's tree; traces under "OrloXmlParser::XmlNodeSink::...".
    class OrloXmlNodeSink : public XmlDocumentSink {
      public:
        OrloXmlNodeSink();
        ~OrloXmlNodeSink() override;
    };

    // Loads the tag file at `file` and walks it; the records are then in the parser.
    explicit OrloXmlParser(const PluginSDK::String& file);
    ~OrloXmlParser() override;

    // Parses the tag file at `file` and appends copies of its records to
    // `products`, in document order. True when at least one was appended.
    static bool parse(const wchar_t* file, std::vector<OrloProduct>& products);

    // Turns the element `node` into a record when it is named "Product",
    // "Component" or "Fix" and has a child list; `file` becomes the record's tag
    // file path. True when a record was added.
    bool parseNode(const wchar_t* file, const Node* node);

    // The records found, in document order.
    const std::vector<OrloProduct>& getProducts() const { return products; }

  private:
    // Never raised by the sink's callbacks: a document the reader could not build
    // shows as a missing root instead.
    int32_t errorCount;
    std::vector<OrloProduct> products;
};

}  // namespace RegPlugin

#endif
