// The UTF-8 conversions: any bytes decode, and encode back to the same bytes;
// decodeChar walks the bytes to the same characters; any wide text encodes, and
// decodes back unchanged when it holds only Unicode scalar values.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "base/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const char* bytes = reinterpret_cast<const char*>(data);
    const std::wstring decoded = Utf8::decode(bytes, size);
    if (decoded.size() > size) {
        __builtin_trap();
    }
    if (Utf8::encode(decoded.data(), decoded.size()) != std::string(bytes, size)) {
        __builtin_trap();  // bad bytes survive the round trip
    }
    std::wstring stepped;
    for (std::size_t at = 0; at < size;) {
        wchar_t c = 0;
        const std::size_t taken = Utf8::decodeChar(bytes + at, size - at, c);
        if (taken < 1 || taken > 4 || taken > size - at) {
            __builtin_trap();
        }
        stepped += c;
        at += taken;
    }
    if (stepped != decoded) {
        __builtin_trap();
    }

    std::wstring wide(size / sizeof(wchar_t), L'\0');
    std::memcpy(&wide[0], data, wide.size() * sizeof(wchar_t));
    const std::string encoded = Utf8::encode(wide.data(), wide.size());
    bool scalarsOnly = true;
    for (const wchar_t c : wide) {
        const uint32_t u = static_cast<uint32_t>(c);
        if (u > 0x10FFFF || (u >= 0xD800 && u <= 0xDFFF)) {
            scalarsOnly = false;
        }
    }
    if (scalarsOnly && Utf8::decode(encoded.data(), encoded.size()) != wide) {
        __builtin_trap();
    }
    return 0;
}
