// Loads one dpkg status file with the plug-in's provider and prints the number of
// installed packages it kept. bench/dpkg.sh times it against dpkg-query.
//
//     dpkg_load STATUS_FILE
#include <cstdio>

#include "PluginSDK/StringVector.h"
#include "common/RegistryPackage.h"
#include "cross/dpkg/DpkgDataProvider.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s STATUS_FILE\n", argv[0]);
        return 2;
    }
    // Like the factory's providers, this one lives until the process ends: it is
    // never destroyed, so the timing is the load and nothing else.
    auto* provider = new RegPlugin::DpkgDataProvider(argv[1]);
    PluginSDK::StringVector keys;
    const TErrorCode rc = provider->enumPackages(RegPlugin::RegistryPackage::ANY, keys);
    if (rc != 0) {
        std::fprintf(stderr, "%s: cannot load %s (error %d)\n", argv[0], argv[1], rc);
        return 1;
    }
    std::printf("%d\n", keys.size());
    return 0;
}
