// A whole vpd.properties file through the ISMP provider's stream reader (readLine
// with its growing buffer, then the entry parser line by line), from memory.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "FuzzSupport.h"
#include "cross/ismp/IsmpDataProvider.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    // fmemopen refuses an empty buffer; an empty file is read through one byte of
    // room opened for nothing.
    std::vector<char> bytes(data, data + size);
    bytes.push_back('\0');
    FILE* stream = size == 0 ? fmemopen(bytes.data(), 1, "r") : fmemopen(bytes.data(), size, "r");
    if (stream == nullptr) {
        return 0;
    }
    if (size == 0) {
        std::fgetc(stream);  // at the end from the start
    }
    fuzz::Parsed<RegPlugin::IsmpDataProvider> provider("/nonexistent/vpd.properties");
    provider.parseRegistryStream(stream);
    std::fclose(stream);
    provider.markLoaded();
    fuzz::walkPackages(provider);
    return 0;
}
