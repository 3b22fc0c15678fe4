// "InstallAnywhereList": the keys (ids) of the InstallAnywhere registry's products and components,
// selected by "type" and "filter". The provider is the factory's ANYWHERE_PROVIDER
// (InstallAnywhereDataProvider).
#ifndef REGPLUGIN_CROSS_ANY_INSTALLANYWHERELIST_H
#define REGPLUGIN_CROSS_ANY_INSTALLANYWHERELIST_H

#include "common/ProviderProductList.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class InstallAnywhereList
    : public ProviderProductList<RegistryDataProviderFactory::ANYWHERE_PROVIDER> {
  public:
    InstallAnywhereList();
    ~InstallAnywhereList() override;
};

}  // namespace RegPlugin

#endif
