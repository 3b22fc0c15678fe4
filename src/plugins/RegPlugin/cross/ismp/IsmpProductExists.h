// "IsmpProductExists": whether the ISMP registry holds the package whose key
// ("identifier@version") is "code"; the host's true or false text. The provider is
// the factory's ISMP_PROVIDER (IsmpDataProvider).
#ifndef REGPLUGIN_CROSS_ISMP_ISMPPRODUCTEXISTS_H
#define REGPLUGIN_CROSS_ISMP_ISMPPRODUCTEXISTS_H

#include "common/ProviderProductExists.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

class IsmpProductExists : public ProviderProductExists<RegistryDataProviderFactory::ISMP_PROVIDER> {
  public:
    IsmpProductExists();
    ~IsmpProductExists() override;
};

}  // namespace RegPlugin

#endif
