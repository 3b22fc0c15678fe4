#include "cross/dpkg/DpkgProductExists.h"

namespace RegPlugin {

template class ProviderProductExists<RegistryDataProviderFactory::DPKG_PROVIDER>;

DpkgProductExists::DpkgProductExists() = default;

DpkgProductExists::~DpkgProductExists() = default;

}  // namespace RegPlugin
