#include "cross/package/SearchedProviders.h"

namespace RegPlugin {

const RegistryDataProviderFactory::DataProviderClass searchedProviders[] = {
    RegistryDataProviderFactory::OS_PROVIDER,      RegistryDataProviderFactory::ISMP_PROVIDER,
    RegistryDataProviderFactory::CORVU_PROVIDER,   RegistryDataProviderFactory::ANYWHERE_PROVIDER,
    RegistryDataProviderFactory::TESSEL_PROVIDER,  RegistryDataProviderFactory::DPKG_PROVIDER,
    RegistryDataProviderFactory::INVALID_PROVIDER,
};

}  // namespace RegPlugin
