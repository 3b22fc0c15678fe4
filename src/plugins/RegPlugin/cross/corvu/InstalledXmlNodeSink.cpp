#include "cross/corvu/InstalledXmlNodeSink.h"

namespace RegPlugin {

namespace {

const XmlDocumentSink::ScopeNames kScopes = {
    "InstalledXmlParser::XmlNodeSink::onWarning(const String& ,int)",
    "InstalledXmlParser::XmlNodeSink::onError(const String& ,int)",
    "InstalledXmlParser::XmlNodeSink::onCriticalError(const String& ,int)",
};

}  // namespace

InstalledXmlNodeSink::InstalledXmlNodeSink() : XmlDocumentSink(kScopes) {}

InstalledXmlNodeSink::~InstalledXmlNodeSink() = default;

}  // namespace RegPlugin
