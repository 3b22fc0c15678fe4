#include "cross/any/AnywhereXmlNodeSink.h"

namespace RegPlugin {

namespace {

const XmlDocumentSink::ScopeNames kScopes = {
    "AnywhereXmlParser::XmlNodeSink::onWarning(const String& ,int)",
    "AnywhereXmlParser::XmlNodeSink::onError(const String& ,int)",
    "AnywhereXmlParser::XmlNodeSink::onCriticalError(const String& ,int)",
};

}  // namespace

AnywhereXmlNodeSink::AnywhereXmlNodeSink() : XmlDocumentSink(kScopes) {}

AnywhereXmlNodeSink::~AnywhereXmlNodeSink() = default;

}  // namespace RegPlugin
