// The rpm provider's record parser on arbitrary command output, fed the way the
// streaming load reads the pipe: the first byte picks the size of each read, the rest
// is the output. Then the root-directory merge on the output as a list text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "base/Utf8.h"
#include "cross/rpm/LegacyRpmDataProvider.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    // 0 reads everything at once; otherwise reads of 1 to 255 bytes.
    const std::size_t readSize = data[0];
    const char* output = reinterpret_cast<const char*>(data + 1);
    const std::size_t length = size - 1;
    {
        fuzz::Parsed<RegPlugin::LegacyRpmDataProvider> provider;
        provider.parseOutput(output, length, readSize);
        provider.markLoaded();
        fuzz::walkPackages(provider);
    }
    {
        RegPlugin::LegacyRpmDataProvider provider;
        std::wstring dirs = Utf8::decode(output, length);
        std::free(provider.getRpmRootDirs(&dirs[0]));
        std::string field(output, length);
        std::free(provider.parseRpmArray(&field[0]));
    }
    return 0;
}
