// The base library's wide string, used by the file, XML, process and tracing calls.
//
// Holds wide characters; its narrow form (operator const char*) is UTF-8 (see
// base/Utf8.h). Positions and lengths count wide characters.
#ifndef HOSTSDK_BASE_STRING_H
#define HOSTSDK_BASE_STRING_H

#include <string>

#include "base/Export.h"

class HOSTSDK_API String {
  public:
    String();
    String(const String& other);
    String(String&& other) noexcept;
    // From UTF-8; null gives the empty string.
    String(const char* text);  // NOLINT(google-explicit-constructor)
    // Null gives the empty string.
    String(const wchar_t* text);  // NOLINT(google-explicit-constructor)
    explicit String(const std::wstring& text);
    explicit String(std::wstring&& text) noexcept;
    ~String();

    String& operator=(const String& other);
    String& operator=(String&& other) noexcept;
    String& operator=(const char* text);
    String& operator=(const wchar_t* text);

    // The UTF-8 form. The pointer stays valid until this string is modified or
    // destroyed; it is never null.
    operator const char*() const;  // NOLINT(google-explicit-constructor)
    // The wide characters, NUL-terminated; valid until this string is modified or
    // destroyed; never null.
    const wchar_t* getWideString() const { return m_text.c_str(); }
    const std::wstring& wide() const { return m_text; }

    int length() const { return static_cast<int>(m_text.size()); }
    // The character at `index`, or 0 when `index` is out of range.
    wchar_t charAt(int index) const;
    // Position of the first `c` at or after `from`, or -1 when there is none.
    int indexOf(wchar_t c, int from = 0) const;
    // Characters from `begin` to the end / from `begin` up to, not including, `end`.
    // Out-of-range positions are clamped to the string.
    String substring(int begin) const;
    String substring(int begin, int end) const;
    // Three-way comparison by character value: negative, 0 (equal) or positive.
    // A non-zero `ignoreCase` compares case-insensitively, by simple one-to-one case
    // folding that does not depend on the process locale.
    int compareTo(const String& other, int ignoreCase) const;
    int compareTo(const wchar_t* other) const;
    // Appends and returns this string.
    String& concat(const String& other);
    String& concat(const char* text);
    String& concat(wchar_t c);

    bool operator==(const String& other) const { return m_text == other.m_text; }
    bool operator!=(const String& other) const { return m_text != other.m_text; }
    bool operator==(const wchar_t* other) const;
    bool operator!=(const wchar_t* other) const { return !(*this == other); }
    bool operator==(const char* other) const;
    bool operator!=(const char* other) const { return !(*this == other); }
    bool operator<(const String& other) const { return m_text < other.m_text; }

  private:
    void invalidate() { m_narrowValid = false; }

    std::wstring m_text;
    mutable std::string m_narrow;
    mutable bool m_narrowValid = false;
};

#endif
