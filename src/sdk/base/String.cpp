#include "base/String.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <utility>

#include "CaseFold.h"
#include "base/Utf8.h"

String::String() = default;

String::String(const String& other) : m_text(other.m_text) {}

String::String(String&& other) noexcept
    : m_text(std::move(other.m_text)),
      m_narrow(std::move(other.m_narrow)),
      m_narrowValid(other.m_narrowValid) {
    other.m_text.clear();
    other.m_narrow.clear();
    other.m_narrowValid = false;
}

String::String(const char* text) : m_text(Utf8::decode(text)) {}

String::String(const wchar_t* text) {
    if (text != nullptr) {
        m_text = text;
    }
}

String::String(const std::wstring& text) : m_text(text) {}

String::String(std::wstring&& text) noexcept : m_text(std::move(text)) {}

String::~String() = default;

String& String::operator=(const String& other) {
    if (this != &other) {
        m_text = other.m_text;
        invalidate();
    }
    return *this;
}

String& String::operator=(String&& other) noexcept {
    if (this != &other) {
        m_text = std::move(other.m_text);
        m_narrow = std::move(other.m_narrow);
        m_narrowValid = other.m_narrowValid;
        other.m_text.clear();
        other.m_narrow.clear();
        other.m_narrowValid = false;
    }
    return *this;
}

String& String::operator=(const char* text) {
    // Decode first: `text` may point into this string's own narrow form.
    std::wstring decoded = Utf8::decode(text);
    m_text.swap(decoded);
    invalidate();
    return *this;
}

String& String::operator=(const wchar_t* text) {
    if (text == nullptr) {
        m_text.clear();
    } else if (text != m_text.c_str()) {
        m_text.assign(text);
    }
    invalidate();
    return *this;
}

String::operator const char*() const {
    if (!m_narrowValid) {
        m_narrow.clear();
        Utf8::encode(m_text.data(), m_text.size(), m_narrow);
        m_narrowValid = true;
    }
    return m_narrow.c_str();
}

wchar_t String::charAt(int index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= m_text.size()) {
        return 0;
    }
    return m_text[static_cast<std::size_t>(index)];
}

int String::indexOf(wchar_t c, int from) const {
    const std::size_t start = from < 0 ? 0 : static_cast<std::size_t>(from);
    if (start >= m_text.size()) {
        return -1;
    }
    const std::size_t found = m_text.find(c, start);
    return found == std::wstring::npos ? -1 : static_cast<int>(found);
}

String String::substring(int begin) const {
    return substring(begin, length());
}

String String::substring(int begin, int end) const {
    const int size = length();
    const int from = std::clamp(begin, 0, size);
    const int to = std::clamp(end, from, size);
    return String(
        m_text.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)));
}

namespace {

int compareChars(const wchar_t* a, std::size_t aLength, const wchar_t* b, std::size_t bLength,
                 bool ignoreCase) {
    const std::size_t common = std::min(aLength, bLength);
    for (std::size_t i = 0; i < common; ++i) {
        wchar_t x = a[i];
        wchar_t y = b[i];
        if (x != y && ignoreCase) {
            x = hostsdk::foldCase(x);
            y = hostsdk::foldCase(y);
        }
        if (x != y) {
            // Character values compare as unsigned code points.
            return static_cast<std::uint32_t>(x) < static_cast<std::uint32_t>(y) ? -1 : 1;
        }
    }
    if (aLength == bLength) {
        return 0;
    }
    return aLength < bLength ? -1 : 1;
}

}  // namespace

int String::compareTo(const String& other, int ignoreCase) const {
    return compareChars(m_text.data(), m_text.size(), other.m_text.data(), other.m_text.size(),
                        ignoreCase != 0);
}

int String::compareTo(const wchar_t* other) const {
    if (other == nullptr) {
        other = L"";
    }
    return compareChars(m_text.data(), m_text.size(), other, std::wcslen(other), false);
}

String& String::concat(const String& other) {
    m_text.append(other.m_text);  // Safe also when `other` is this string.
    invalidate();
    return *this;
}

String& String::concat(const char* text) {
    std::wstring decoded = Utf8::decode(text);
    m_text.append(decoded);
    invalidate();
    return *this;
}

String& String::concat(wchar_t c) {
    m_text.push_back(c);
    invalidate();
    return *this;
}

bool String::operator==(const wchar_t* other) const {
    if (other == nullptr) {
        return m_text.empty();
    }
    return m_text.compare(other) == 0;
}

bool String::operator==(const char* other) const {
    if (other == nullptr) {
        return m_text.empty();
    }
    return m_text == Utf8::decode(other);
}
