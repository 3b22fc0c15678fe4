// "CorvuExists": whether the Corvu installer's registry holds the package whose key
// ("id#version@path") is "code"; the host's true or false text. The provider is the factory's
// CORVU_PROVIDER (CorvuDataProvider).
#ifndef REGPLUGIN_CROSS_CORVU_CORVUEXISTS_H
#define REGPLUGIN_CROSS_CORVU_CORVUEXISTS_H

#include "common/ProviderProductExists.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class CorvuExists : public ProviderProductExists<RegistryDataProviderFactory::CORVU_PROVIDER> {
  public:
    CorvuExists();
    ~CorvuExists() override;
};

}  // namespace RegPlugin

#endif
