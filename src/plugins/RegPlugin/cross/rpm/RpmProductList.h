// "RpmProductList": the keys of the packages of the rpm database, selected by "type"
// and "filter". The provider is the factory's RPM_PROVIDER
// (LegacyRpmDataProvider).
#ifndef REGPLUGIN_CROSS_RPM_RPMPRODUCTLIST_H
#define REGPLUGIN_CROSS_RPM_RPMPRODUCTLIST_H

#include "common/ProviderProductList.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class RpmProductList : public ProviderProductList<RegistryDataProviderFactory::RPM_PROVIDER> {
  public:
    RpmProductList();
    ~RpmProductList() override;
};

}  // namespace RegPlugin

#endif
