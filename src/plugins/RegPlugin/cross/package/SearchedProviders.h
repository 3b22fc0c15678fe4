// The registries that the pattern query searches and the unknown-software
// repository lists, in their order; a trace line names a registry by its position
// in this list.
#ifndef REGPLUGIN_CROSS_PACKAGE_SEARCHEDPROVIDERS_H
#define REGPLUGIN_CROSS_PACKAGE_SEARCHEDPROVIDERS_H

#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

// OS_PROVIDER, ISMP_PROVIDER, CORVU_PROVIDER, ANYWHERE_PROVIDER, TESSEL_PROVIDER,
// DPKG_PROVIDER, ended by INVALID_PROVIDER. The rpm database is reached through
// OS_PROVIDER only; the Orlo tags are not searched.
extern const RegistryDataProviderFactory::DataProviderClass searchedProviders[];

}  // namespace RegPlugin

#endif
