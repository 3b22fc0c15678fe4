// The plug-in SDK's wide string: every key, property name and property value.
//
// A value type with shared, reference-counted storage: copying is cheap and copies
// of one string share their characters until one of them is modified. Safe to copy
// between threads; one object must not be modified by two threads at once.
// Conversions from and to narrow text are UTF-8 (see base/Utf8.h).
#ifndef PLUGINSDK_STRING_H
#define PLUGINSDK_STRING_H

#include <cstddef>
#include <string>

#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API String {
  public:
    String() noexcept : m_rep(nullptr) {}
    String(const String& other) noexcept;
    String(String&& other) noexcept : m_rep(other.m_rep) { other.m_rep = nullptr; }
    // From UTF-8; null gives the empty string.
    String(const char* text);  // NOLINT(google-explicit-constructor)
    String(const char* text, std::size_t length);
    // Null gives the empty string.
    String(const wchar_t* text);  // NOLINT(google-explicit-constructor)
    String(const wchar_t* text, std::size_t length);
    explicit String(const std::wstring& text);
    ~String();

    String& operator=(const String& other) noexcept;
    String& operator=(String&& other) noexcept;
    String& operator=(const char* text);
    // A null pointer yields the empty string.
    String& operator=(const wchar_t* text);

    // The characters, NUL-terminated; never null. Valid until this string is
    // modified or destroyed.
    operator const wchar_t*() const noexcept;  // NOLINT(google-explicit-constructor)
    const wchar_t* c_str() const noexcept { return *this; }
    int length() const noexcept;
    bool empty() const noexcept { return length() == 0; }

    bool operator==(const String& other) const noexcept;
    bool operator!=(const String& other) const noexcept { return !(*this == other); }
    // A null `other` counts as the empty string.
    bool operator==(const wchar_t* other) const noexcept;
    bool operator!=(const wchar_t* other) const noexcept { return !(*this == other); }
    // Order by character value; the order of every keyed map of strings.
    bool operator<(const String& other) const noexcept;

    String operator+(const String& other) const;
    String operator+(const wchar_t* other) const;
    String& operator+=(const String& other);
    String& operator+=(const wchar_t* other);
    String& operator+=(wchar_t c);

    // Removes leading and trailing white space (space, tab, line feed, vertical tab,
    // form feed, carriage return) in place and returns this string.
    String& trim();

    // The UTF-8 form.
    std::string toUtf8() const;
    // A newly allocated UTF-8 copy of `text`, to be released with free(); null when
    // `text` is null or memory runs out.
    static char* getMultibyteString(const wchar_t* text);

  private:
    struct Rep;
    void assign(const wchar_t* text, std::size_t length);
    void append(const wchar_t* text, std::size_t length);
    Rep* m_rep;  // null for the empty string
};

HOSTSDK_API bool operator==(const wchar_t* left, const String& right) noexcept;
HOSTSDK_API bool operator!=(const wchar_t* left, const String& right) noexcept;
HOSTSDK_API String operator+(const wchar_t* left, const String& right);

}  // namespace PluginSDK

#endif
