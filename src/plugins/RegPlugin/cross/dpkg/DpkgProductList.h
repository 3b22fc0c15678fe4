// "DpkgProductList": the keys of the packages of the dpkg status file, selected by "type"
// and "filter". The provider is the factory's DPKG_PROVIDER
// (DpkgDataProvider).
#ifndef REGPLUGIN_CROSS_DPKG_DPKGPRODUCTLIST_H
#define REGPLUGIN_CROSS_DPKG_DPKGPRODUCTLIST_H

#include "common/ProviderProductList.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class DpkgProductList : public ProviderProductList<RegistryDataProviderFactory::DPKG_PROVIDER> {
  public:
    DpkgProductList();
    ~DpkgProductList() override;
};

}  // namespace RegPlugin

#endif
