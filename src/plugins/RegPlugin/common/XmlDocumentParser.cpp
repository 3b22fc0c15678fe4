#include "common/XmlDocumentParser.h"

#include "xml/NodeReader.h"

namespace RegPlugin {

XmlDocumentParser::XmlDocumentParser(XmlDocumentSink* i_Sink, const String& i_Path)
    : status(0), sink(i_Sink) {
    if (sink == nullptr) {
        status = NodeReader::STATUS_PARSE_ERROR;
        return;
    }
    NodeReader reader(*sink);
    reader.process(i_Path, 0);
    status = reader.getStatus();
}

XmlDocumentParser::XmlDocumentParser(XmlDocumentSink* i_Sink, const char* i_Data,
                                     std::size_t i_Size)
    : status(0), sink(i_Sink) {
    if (sink == nullptr) {
        status = NodeReader::STATUS_PARSE_ERROR;
        return;
    }
    NodeReader reader(*sink);
    reader.processBuffer(i_Data, i_Size, 0);
    status = reader.getStatus();
}

XmlDocumentParser::~XmlDocumentParser() {
    delete sink;
}

Node* XmlDocumentParser::getRootNode() const {
    return sink != nullptr ? sink->getRootNode() : nullptr;
}

}  // namespace RegPlugin
