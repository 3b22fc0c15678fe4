// The sink of AnywhereXmlParser: keeps the InstallAnywhere registry's tree and
// traces the reader's problems under the scopes
// "AnywhereXmlParser::XmlNodeSink::onWarning(const String& ,int)" and its
// onError / onCriticalError siblings (see XmlDocumentSink).
#ifndef REGPLUGIN_CROSS_ANY_ANYWHEREXMLNODESINK_H
#define REGPLUGIN_CROSS_ANY_ANYWHEREXMLNODESINK_H

#include "common/XmlDocumentSink.h"

namespace RegPlugin {

class AnywhereXmlNodeSink : public XmlDocumentSink {
  public:
    AnywhereXmlNodeSink();
    ~AnywhereXmlNodeSink() override;
};

}  // namespace RegPlugin

#endif
