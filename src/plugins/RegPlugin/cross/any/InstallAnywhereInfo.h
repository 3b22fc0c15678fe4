// "InstallAnywhereInfo": the property "field" of the InstallAnywhere product or component whose key
// (its id) is "code". Only the two not-found codes of the lookup are returned (filtered error
// pass-through). The provider is the factory's ANYWHERE_PROVIDER (InstallAnywhereDataProvider).
#ifndef REGPLUGIN_CROSS_ANY_INSTALLANYWHEREINFO_H
#define REGPLUGIN_CROSS_ANY_INSTALLANYWHEREINFO_H

#include "common/ProviderProductInfo.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class InstallAnywhereInfo
    : public ProviderProductInfo<RegistryDataProviderFactory::ANYWHERE_PROVIDER, true> {
  public:
    InstallAnywhereInfo();
    ~InstallAnywhereInfo() override;
};

}  // namespace RegPlugin

#endif
