// "IsmpProductInfo": the property "field" of the package of the ISMP registry whose
// key is "code". The provider is the factory's ISMP_PROVIDER (IsmpDataProvider).
//
// Of the lookup's errors only the two "does not exist" codes are returned; after any
// other (a failed load) the field is looked up on no package, which gives
// REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
#ifndef REGPLUGIN_CROSS_ISMP_ISMPPRODUCTINFO_H
#define REGPLUGIN_CROSS_ISMP_ISMPPRODUCTINFO_H

#include "common/ProviderProductInfo.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class IsmpProductInfo
    : public ProviderProductInfo<RegistryDataProviderFactory::ISMP_PROVIDER, true> {
  public:
    IsmpProductInfo();
    ~IsmpProductInfo() override;
};

}  // namespace RegPlugin

#endif
