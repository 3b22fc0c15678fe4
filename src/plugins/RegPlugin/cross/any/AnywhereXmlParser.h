// Loads the InstallAnywhere registry document: the XML loading pattern of
// XmlDocumentParser (see there for the contract) with an AnywhereXmlNodeSink.
#ifndef REGPLUGIN_CROSS_ANY_ANYWHEREXMLPARSER_H
#define REGPLUGIN_CROSS_ANY_ANYWHEREXMLPARSER_H

#include <cstddef>

#include "PluginSDK/String.h"
#include "common/XmlDocumentParser.h"

namespace RegPlugin {

class AnywhereXmlParser : public XmlDocumentParser {
  public:
    // Reads and parses the file at `path` completely.
    explicit AnywhereXmlParser(const PluginSDK::String& path);
    // Parses the `size` bytes at `data` (tests, fuzzing).
    AnywhereXmlParser(const char* data, std::size_t size);
    ~AnywhereXmlParser() override;
};

}  // namespace RegPlugin

#endif
