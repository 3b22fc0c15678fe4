// "DpkgProductInfo": the property "field" of the package of the dpkg status file whose key
// is "code". The provider is the factory's DPKG_PROVIDER
// (DpkgDataProvider).
#ifndef REGPLUGIN_CROSS_DPKG_DPKGPRODUCTINFO_H
#define REGPLUGIN_CROSS_DPKG_DPKGPRODUCTINFO_H

#include "common/ProviderProductInfo.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class DpkgProductInfo : public ProviderProductInfo<RegistryDataProviderFactory::DPKG_PROVIDER> {
  public:
    DpkgProductInfo();
    ~DpkgProductInfo() override;
};

}  // namespace RegPlugin

#endif
