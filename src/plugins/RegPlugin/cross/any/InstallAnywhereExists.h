// "InstallAnywhereExists": whether the InstallAnywhere registry holds the product or component
// whose key (its id) is "code"; the host's true or false text. The provider is the factory's
// ANYWHERE_PROVIDER (InstallAnywhereDataProvider).
#ifndef REGPLUGIN_CROSS_ANY_INSTALLANYWHEREEXISTS_H
#define REGPLUGIN_CROSS_ANY_INSTALLANYWHEREEXISTS_H

#include "common/ProviderProductExists.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class InstallAnywhereExists
    : public ProviderProductExists<RegistryDataProviderFactory::ANYWHERE_PROVIDER> {
  public:
    InstallAnywhereExists();
    ~InstallAnywhereExists() override;
};

}  // namespace RegPlugin

#endif
