#include "cross/rpm/RpmProductList.h"

namespace RegPlugin {

template class ProviderProductList<RegistryDataProviderFactory::RPM_PROVIDER>;

RpmProductList::RpmProductList() = default;

RpmProductList::~RpmProductList() = default;

}  // namespace RegPlugin
