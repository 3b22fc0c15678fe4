// "CorvuList": the keys ("id#version@path") of the Corvu installer's packages, selected by "type"
// and "filter". The provider is the factory's CORVU_PROVIDER (CorvuDataProvider).
#ifndef REGPLUGIN_CROSS_CORVU_CORVULIST_H
#define REGPLUGIN_CROSS_CORVU_CORVULIST_H

#include "common/ProviderProductList.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class CorvuList : public ProviderProductList<RegistryDataProviderFactory::CORVU_PROVIDER> {
  public:
    CorvuList();
    ~CorvuList() override;
};

}  // namespace RegPlugin

#endif
