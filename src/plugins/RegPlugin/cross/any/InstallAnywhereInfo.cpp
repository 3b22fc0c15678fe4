#include "cross/any/InstallAnywhereInfo.h"

namespace RegPlugin {

template class ProviderProductInfo<RegistryDataProviderFactory::ANYWHERE_PROVIDER, true>;

InstallAnywhereInfo::InstallAnywhereInfo() = default;

InstallAnywhereInfo::~InstallAnywhereInfo() = default;

}  // namespace RegPlugin
