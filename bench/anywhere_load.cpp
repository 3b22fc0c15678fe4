// Loads one InstallAnywhere registry with the plug-in's provider (the host XML
// reader, the tree, the walk and the records) and prints the number of packages it
// kept. bench/anywhere.sh times it against expat_floor on the same file.
//
//     anywhere_load REGISTRY_FILE
#include <cstdio>
#include <string>

#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"
#include "common/RegistryPackage.h"
#include "cross/any/InstallAnywhereDataProvider.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s REGISTRY_FILE\n", argv[0]);
        return 2;
    }
    const PluginSDK::String path(argv[1]);
    // Like the factory's providers, this one lives until the process ends.
    auto* provider = new RegPlugin::InstallAnywhereDataProvider(path.c_str());
    PluginSDK::StringVector keys;
    const TErrorCode rc = provider->enumPackages(RegPlugin::RegistryPackage::ANY, keys);
    if (rc != 0) {
        std::fprintf(stderr, "%s: cannot load %s (error %d)\n", argv[0], argv[1], rc);
        return 1;
    }
    std::printf("%d\n", keys.size());
    return 0;
}
