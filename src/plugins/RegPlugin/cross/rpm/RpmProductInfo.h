// "RpmProductInfo": the property "field" of the package of the rpm database whose key
// is "code". The provider is the factory's RPM_PROVIDER
// (LegacyRpmDataProvider).
#ifndef REGPLUGIN_CROSS_RPM_RPMPRODUCTINFO_H
#define REGPLUGIN_CROSS_RPM_RPMPRODUCTINFO_H

#include "common/ProviderProductInfo.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class RpmProductInfo : public ProviderProductInfo<RegistryDataProviderFactory::RPM_PROVIDER> {
  public:
    RpmProductInfo();
    ~RpmProductInfo() override;
};

}  // namespace RegPlugin

#endif
