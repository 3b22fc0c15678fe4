#include "cross/dpkg/DpkgProductInfo.h"

namespace RegPlugin {

template class ProviderProductInfo<RegistryDataProviderFactory::DPKG_PROVIDER>;

DpkgProductInfo::DpkgProductInfo() = default;

DpkgProductInfo::~DpkgProductInfo() = default;

}  // namespace RegPlugin
