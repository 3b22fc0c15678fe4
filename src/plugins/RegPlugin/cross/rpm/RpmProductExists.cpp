#include "cross/rpm/RpmProductExists.h"

namespace RegPlugin {

template class ProviderProductExists<RegistryDataProviderFactory::RPM_PROVIDER>;

RpmProductExists::RpmProductExists() = default;

RpmProductExists::~RpmProductExists() = default;

}  // namespace RegPlugin
