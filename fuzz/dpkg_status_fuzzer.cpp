// The dpkg provider's status-file reader on an arbitrary status file.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"
#include "cross/dpkg/DpkgDataProvider.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static fuzz::MemoryFile file;
    file.write(data, size);
    RegPlugin::DpkgDataProvider provider(file.path().c_str());
    // The first query loads the registry.
    fuzz::walkPackages(provider);
    return 0;
}
