// "IsmpProductList": the keys of the packages of the ISMP registry, selected by "type"
// ("product" or "subproduct" for features) and "filter". The provider is the
// factory's ISMP_PROVIDER (IsmpDataProvider).
#ifndef REGPLUGIN_CROSS_ISMP_ISMPPRODUCTLIST_H
#define REGPLUGIN_CROSS_ISMP_ISMPPRODUCTLIST_H

#include "common/ProviderProductList.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class IsmpProductList : public ProviderProductList<RegistryDataProviderFactory::ISMP_PROVIDER> {
  public:
    IsmpProductList();
    ~IsmpProductList() override;
};

}  // namespace RegPlugin

#endif
