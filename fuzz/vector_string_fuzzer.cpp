// The host's list text form: any text splits (toVector), and the split elements,
// joined again and split again, come back exactly. The input's 4-byte units are the
// characters, so every wide-character value is tried.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "PluginSDK/StringVector.h"
#include "PluginSDK/VectorString.h"

namespace {

void join(const PluginSDK::StringVector& elements, PluginSDK::VectorString& out) {
    for (const PluginSDK::String& element : elements) {
        out += static_cast<const wchar_t*>(element);
    }
}

bool same(const PluginSDK::StringVector& a, const PluginSDK::StringVector& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (int i = 0; i < a.size(); ++i) {
        if (!(a[i] == b[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    std::wstring text(size / sizeof(wchar_t), L'\0');
    std::memcpy(&text[0], data, text.size() * sizeof(wchar_t));
    // The text form ends at the first NUL character.
    text.resize(std::wcslen(text.c_str()));

    PluginSDK::StringVector elements;
    PluginSDK::VectorString::toVector(text.c_str(), elements);
    PluginSDK::VectorString joined;
    join(elements, joined);
    if (joined.size() != elements.size()) {
        __builtin_trap();
    }
    PluginSDK::StringVector again;
    PluginSDK::VectorString::toVector(joined, again);
    if (!same(elements, again)) {
        __builtin_trap();  // the text form must reverse exactly
    }

    // Elements cut out of the text at its first few characters' values, as
    // arbitrary element texts (with ';', '\' and empty ones).
    PluginSDK::VectorString built;
    PluginSDK::StringVector pieces;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || text[i] == L'|') {
            const std::wstring piece = text.substr(start, i - start);
            built += piece.c_str();
            pieces.addString(piece.c_str());
            start = i + 1;
        }
    }
    PluginSDK::StringVector split;
    PluginSDK::VectorString::toVector(built, split);
    if (!same(pieces, split)) {
        __builtin_trap();
    }
    return 0;
}
