#include "cross/any/AnywhereXmlParser.h"

#include <new>

#include "cross/any/AnywhereXmlNodeSink.h"

namespace RegPlugin {

AnywhereXmlParser::AnywhereXmlParser(const PluginSDK::String& path)
    : XmlDocumentParser(new (std::nothrow) AnywhereXmlNodeSink(), String(path.c_str())) {}

AnywhereXmlParser::AnywhereXmlParser(const char* data, std::size_t size)
    : XmlDocumentParser(new (std::nothrow) AnywhereXmlNodeSink(), data, size) {}

AnywhereXmlParser::~AnywhereXmlParser() = default;

}  // namespace RegPlugin
