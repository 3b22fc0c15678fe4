#include "cross/any/InstallAnywhereExists.h"

namespace RegPlugin {

template class ProviderProductExists<RegistryDataProviderFactory::ANYWHERE_PROVIDER>;

InstallAnywhereExists::InstallAnywhereExists() = default;

InstallAnywhereExists::~InstallAnywhereExists() = default;

}  // namespace RegPlugin
