#include "cross/any/InstallAnywhereList.h"

namespace RegPlugin {

template class ProviderProductList<RegistryDataProviderFactory::ANYWHERE_PROVIDER>;

InstallAnywhereList::InstallAnywhereList() = default;

InstallAnywhereList::~InstallAnywhereList() = default;

}  // namespace RegPlugin
