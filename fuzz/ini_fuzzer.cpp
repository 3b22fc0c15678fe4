// The host layer's INI reader on an arbitrary file, and lookups of the keys the
// Corvu chain reads.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "PluginSDK/IniFileReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static fuzz::MemoryFile file;
    static const std::wstring path = file.widePath();
    file.write(data, size);
    PluginSDK::IniFileReader reader(path.c_str());
    if (!reader.isLoaded()) {
        __builtin_trap();  // a readable regular file always loads
    }
    static const wchar_t* const kLookups[][2] = {
        {L"", L"location"}, {L"", L"cic.appDataLocation"}, {L"main", L"key"}, {L"a", L"b"}};
    for (const auto& lookup : kLookups) {
        std::wstring value;
        reader.getProperty(lookup[0], lookup[1], value);
    }
    return 0;
}
