#include "cross/dpkg/DpkgProductList.h"

namespace RegPlugin {

template class ProviderProductList<RegistryDataProviderFactory::DPKG_PROVIDER>;

DpkgProductList::DpkgProductList() = default;

DpkgProductList::~DpkgProductList() = default;

}  // namespace RegPlugin
