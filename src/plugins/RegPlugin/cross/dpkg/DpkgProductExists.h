// "DpkgProductExists": whether the dpkg status file holds the package whose key is "code";
// the host's true or false text. The provider is the factory's DPKG_PROVIDER
// (DpkgDataProvider).
#ifndef REGPLUGIN_CROSS_DPKG_DPKGPRODUCTEXISTS_H
#define REGPLUGIN_CROSS_DPKG_DPKGPRODUCTEXISTS_H

#include "common/ProviderProductExists.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class DpkgProductExists : public ProviderProductExists<RegistryDataProviderFactory::DPKG_PROVIDER> {
  public:
    DpkgProductExists();
    ~DpkgProductExists() override;
};

}  // namespace RegPlugin

#endif
