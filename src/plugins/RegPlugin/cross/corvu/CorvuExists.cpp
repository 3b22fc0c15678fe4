#include "cross/corvu/CorvuExists.h"

namespace RegPlugin {

template class ProviderProductExists<RegistryDataProviderFactory::CORVU_PROVIDER>;

CorvuExists::CorvuExists() = default;

CorvuExists::~CorvuExists() = default;

}  // namespace RegPlugin
