// One vpd.properties line through the ISMP provider's entry parser (the whole
// strtok walk of its KEY and INFO halves).
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "cross/ismp/IsmpDataProvider.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    // The line ends at its first NUL byte, as the file reader hands it over.
    std::string line(reinterpret_cast<const char*>(data), size);
    const std::string before = line;
    fuzz::Parsed<RegPlugin::IsmpDataProvider> provider("/nonexistent/vpd.properties");
    provider.parseRegistryEntry(&line[0]);
    provider.markLoaded();
    if (line != before) {
        __builtin_trap();  // the entry parser promises to leave the line alone
    }
    fuzz::walkPackages(provider);
    return 0;
}
