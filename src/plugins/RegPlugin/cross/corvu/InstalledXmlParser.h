// Loads the Corvu installer's "installed.xml": the XML loading pattern of
// XmlDocumentParser (see there for the contract) with an InstalledXmlNodeSink.
#ifndef REGPLUGIN_CROSS_CORVU_INSTALLEDXMLPARSER_H
#define REGPLUGIN_CROSS_CORVU_INSTALLEDXMLPARSER_H

#include <cstddef>

#include "base/String.h"
#include "common/XmlDocumentParser.h"

namespace RegPlugin {

class InstalledXmlParser : public XmlDocumentParser {
  public:
    // Reads and parses the file at `path` completely.
    explicit InstalledXmlParser(const String& path);
    // Parses the `size` bytes at `data` (tests, fuzzing).
    InstalledXmlParser(const char* data, std::size_t size);
    ~InstalledXmlParser() override;
};

}  // namespace RegPlugin

#endif
