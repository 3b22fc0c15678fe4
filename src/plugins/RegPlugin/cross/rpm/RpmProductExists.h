// "RpmProductExists": whether the rpm database holds the package whose key is "code";
// the host's true or false text. The provider is the factory's RPM_PROVIDER
// (LegacyRpmDataProvider).
#ifndef REGPLUGIN_CROSS_RPM_RPMPRODUCTEXISTS_H
#define REGPLUGIN_CROSS_RPM_RPMPRODUCTEXISTS_H

#include "common/ProviderProductExists.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class RpmProductExists : public ProviderProductExists<RegistryDataProviderFactory::RPM_PROVIDER> {
  public:
    RpmProductExists();
    ~RpmProductExists() override;
};

}  // namespace RegPlugin

#endif
