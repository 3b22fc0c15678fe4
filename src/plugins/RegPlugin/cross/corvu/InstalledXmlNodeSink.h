// The sink of InstalledXmlParser: keeps the tree of the Corvu installer's
// "installed.xml" and traces the reader's problems under the scopes
// "InstalledXmlParser::XmlNodeSink::onWarning(const String& ,int)" and its
// onError / onCriticalError siblings (see XmlDocumentSink).
#ifndef REGPLUGIN_CROSS_CORVU_INSTALLEDXMLNODESINK_H
#define REGPLUGIN_CROSS_CORVU_INSTALLEDXMLNODESINK_H

#include "common/XmlDocumentSink.h"

namespace RegPlugin {

class InstalledXmlNodeSink : public XmlDocumentSink {
  public:
    InstalledXmlNodeSink();
    ~InstalledXmlNodeSink() override;
};

}  // namespace RegPlugin

#endif
