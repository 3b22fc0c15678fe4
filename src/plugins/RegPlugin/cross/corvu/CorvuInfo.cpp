#include "cross/corvu/CorvuInfo.h"

namespace RegPlugin {

template class ProviderProductInfo<RegistryDataProviderFactory::CORVU_PROVIDER, true>;

CorvuInfo::CorvuInfo() = default;

CorvuInfo::~CorvuInfo() = default;

}  // namespace RegPlugin
