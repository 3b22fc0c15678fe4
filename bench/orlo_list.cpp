// Lists the Orlo tag inventory found under the install directories of one
// InstallAnywhere registry, through the "OrloProductList" expression (provider
// "any"), and prints the number of keys. Loading the registry, deriving the
// candidate directories, listing the tag directories and parsing every tag file are
// all timed. bench/orlo.sh times it against `find` over the same tag directories.
//
//     orlo_list REGISTRY_FILE
#include <cstdio>
#include <cstdlib>

#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/any/InstallAnywhereDataProvider.h"
#include "cross/orlo/OrloProductList.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s REGISTRY_FILE\n", argv[0]);
        return 2;
    }
    using Factory = RegPlugin::RegistryDataProviderFactory;
    const PluginSDK::String path(argv[1]);
    Factory::setDataProvider(Factory::ANYWHERE_PROVIDER,
                             new RegPlugin::InstallAnywhereDataProvider(path.c_str()));
    RegPlugin::OrloProductList expression;
    expression.setProperty(L"provider", L"any");
    PluginSDK::StringVector keys;
    const TErrorCode rc = expression.getVectorResult(keys);
    if (rc != 0) {
        std::fprintf(stderr, "%s: cannot list the tag inventory of %s (error %d)\n", argv[0],
                     argv[1], rc);
        return 1;
    }
    std::printf("%d\n", keys.size());
    // A host keeps the plug-in loaded between queries: the providers' teardown at
    // unload is not part of a listing, so the process ends without it.
    std::fflush(stdout);
    std::_Exit(0);
}
