// The InstallAnywhere provider's load on an arbitrary registry document: the XML
// reader, then the provider's walk of the tree into packages.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "cross/any/InstallAnywhereDataProvider.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static fuzz::MemoryFile file;
    static const std::wstring path = file.widePath();
    file.write(data, size);
    RegPlugin::InstallAnywhereDataProvider provider(path.c_str());
    // The first query loads the registry.
    fuzz::walkPackages(provider);
    return 0;
}
