// GlobFilter compile and match: the first byte picks case folding, the rest is the
// pattern and the text (UTF-8), separated by the first NUL byte. A pattern without
// special characters must match its own text.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "base/GlobFilter.h"
#include "base/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool ignoreCase = (data[0] & 1) != 0;
    const char* rest = reinterpret_cast<const char*>(data + 1);
    const std::size_t restSize = size - 1;
    const char* split = static_cast<const char*>(std::memchr(rest, '\0', restSize));
    const std::size_t patternSize = split == nullptr ? restSize : split - rest;
    const std::wstring pattern = Utf8::decode(rest, patternSize);
    const std::wstring text =
        split == nullptr ? std::wstring() : Utf8::decode(split + 1, restSize - patternSize - 1);

    GlobFilter filter;
    const int compiled = filter.compile(pattern.c_str(), ignoreCase);
    const int result = filter.match(text.c_str());
    if (compiled != GlobFilter::GLOB_OK) {
        if (result != GlobFilter::GLOB_NOT_COMPILED) {
            __builtin_trap();
        }
        return 0;
    }
    if (result != GlobFilter::GLOB_OK && result != GlobFilter::GLOB_NO_MATCH) {
        __builtin_trap();
    }
    if (pattern.find_first_of(L"*?[\\") == std::wstring::npos &&
        filter.match(pattern.c_str()) != GlobFilter::GLOB_OK) {
        __builtin_trap();  // a plain pattern matches itself
    }
    if (!pattern.empty() && pattern.back() == L'*' &&
        pattern.find_first_of(L"?[\\") == std::wstring::npos) {
        // "abc*" also matches "abc": the trailing star takes an empty rest.
        std::wstring stem = pattern;
        while (!stem.empty() && stem.back() == L'*') {
            stem.pop_back();
        }
        if (stem.find(L'*') == std::wstring::npos &&
            filter.match(stem.c_str()) != GlobFilter::GLOB_OK) {
            __builtin_trap();
        }
    }
    return 0;
}
