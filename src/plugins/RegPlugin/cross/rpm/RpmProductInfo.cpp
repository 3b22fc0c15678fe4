#include "cross/rpm/RpmProductInfo.h"

namespace RegPlugin {

template class ProviderProductInfo<RegistryDataProviderFactory::RPM_PROVIDER>;

RpmProductInfo::RpmProductInfo() = default;

RpmProductInfo::~RpmProductInfo() = default;

}  // namespace RegPlugin
