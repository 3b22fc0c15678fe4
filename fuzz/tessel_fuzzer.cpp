// The Tessel catalog's listing parser on arbitrary command output, then every
// package through the state criteria under the four flag combinations.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"
#include "base/String.h"
#include "cross/tessel/TesselDataProvider.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz::Parsed<RegPlugin::TesselDataProvider> provider(
        String(L"PDXMS0164I"), String(L"PDXMS0165I"), String(L"PDXMS0804I"), String(L"PDXMS0166I"));
    provider.parseListing(reinterpret_cast<const char*>(data), size);
    provider.markLoaded();
    fuzz::walkPackages(provider);
    for (RegPlugin::RegistryPackage* package = provider.getFirst(); package != nullptr;
         package = provider.getNext()) {
        for (int flags = 0; flags < 4; ++flags) {
            bool matches = false;
            provider.checkCriteria(package, &matches, (flags & 1) != 0, (flags & 2) != 0);
        }
    }
    return 0;
}
