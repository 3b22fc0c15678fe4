#include "cross/corvu/InstalledXmlParser.h"

#include <new>

#include "cross/corvu/InstalledXmlNodeSink.h"

namespace RegPlugin {

InstalledXmlParser::InstalledXmlParser(const String& path)
    : XmlDocumentParser(new (std::nothrow) InstalledXmlNodeSink(), path) {}

InstalledXmlParser::InstalledXmlParser(const char* data, std::size_t size)
    : XmlDocumentParser(new (std::nothrow) InstalledXmlNodeSink(), data, size) {}

InstalledXmlParser::~InstalledXmlParser() = default;

}  // namespace RegPlugin
