// "CorvuInfo": the property "field" of the Corvu package whose key ("id#version@path") is "code".
// Only the two not-found codes of the lookup are returned (filtered error pass-through). The
// provider is the factory's CORVU_PROVIDER (CorvuDataProvider).
#ifndef REGPLUGIN_CROSS_CORVU_CORVUINFO_H
#define REGPLUGIN_CROSS_CORVU_CORVUINFO_H

#include "common/ProviderProductInfo.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class CorvuInfo : public ProviderProductInfo<RegistryDataProviderFactory::CORVU_PROVIDER, true> {
  public:
    CorvuInfo();
    ~CorvuInfo() override;
};

}  // namespace RegPlugin

#endif
