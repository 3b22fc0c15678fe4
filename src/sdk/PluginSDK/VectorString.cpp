#include "PluginSDK/VectorString.h"

#include <cwchar>

#include "base/Utf8.h"

namespace PluginSDK {

namespace {

// The text form of a list holding one empty element.
const wchar_t kSingleEmpty[] = L"\\0";

}  // namespace

VectorString& VectorString::operator+=(const char* element) {
    if (element == nullptr) {
        appendElement(L"", 0);
    } else {
        const std::wstring wide = Utf8::decode(element);
        appendElement(wide.data(), wide.size());
    }
    return *this;
}

VectorString& VectorString::operator+=(const wchar_t* element) {
    if (element == nullptr) {
        appendElement(L"", 0);
    } else {
        appendElement(element, std::wcslen(element));
    }
    return *this;
}

VectorString::operator const wchar_t*() const {
    return m_text.c_str();
}

void VectorString::appendElement(const wchar_t* element, std::size_t length) {
    if (m_count > 0) {
        // A single escaped "\0" means exactly one empty element; with a second
        // element that first one is written as nothing.
        if (m_count == 1 && m_text == kSingleEmpty) {
            m_text.clear();
        }
        m_text += L';';
    }
    ++m_count;
    if (length == 0) {
        if (m_count == 1) {
            m_text = kSingleEmpty;
        }
        return;
    }
    m_text.reserve(m_text.size() + length);
    for (std::size_t i = 0; i < length; ++i) {
        const wchar_t c = element[i];
        if (c == L'\\' || c == L';') {
            m_text += L'\\';
        }
        m_text += c;
    }
}

int VectorString::toVector(const wchar_t* text, StringVector& out) {
    out.removeAll();
    if (text == nullptr || *text == L'\0') {
        return 0;
    }
    if (std::wcscmp(text, kSingleEmpty) == 0) {
        out.addString(String());
        return 0;
    }
    std::wstring element;
    for (const wchar_t* p = text; *p != L'\0'; ++p) {
        if (*p == L'\\') {
            if (p[1] == L'\0') {
                element += L'\\';  // a trailing "\" stands for itself
            } else {
                ++p;
                element += *p;
            }
        } else if (*p == L';') {
            out.addString(String(element));
            element.clear();
        } else {
            element += *p;
        }
    }
    out.addString(String(element));
    return 0;
}

}  // namespace PluginSDK
