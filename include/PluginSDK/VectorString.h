// Builds the text form of a list of strings, and splits such a text again.
//
// Text form: the elements in order, separated by ";". Inside an element "\" is
// written "\\" and ";" is written "\;"; nothing else is escaped, so a list of one
// plain element (a single path, say) is that element's text. The empty list is the
// empty text. A list of exactly one empty element, which would otherwise also be
// the empty text, is written "\0" (that escape appears nowhere else). toVector
// reverses the form exactly for any element texts; where it meets "\" followed by
// another character it keeps that character, and a "\" at the very end is kept.
//
//     ["a", "b;c", "d\e"]  <->  a;b\;c;d\\e
//     ["", ""]             <->  ;
//     [""]                 <->  \0
//     []                   <->  (empty)
#ifndef PLUGINSDK_VECTORSTRING_H
#define PLUGINSDK_VECTORSTRING_H

#include <string>

#include "PluginSDK/StringVector.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API VectorString {
  public:
    VectorString() : m_count(0) {}

    // Appends one element, given as UTF-8 / as wide text; null counts as empty.
    VectorString& operator+=(const char* element);
    VectorString& operator+=(const wchar_t* element);

    // The text form; valid until the next append or destruction.
    operator const wchar_t*() const;  // NOLINT(google-explicit-constructor)
    int size() const { return m_count; }

    // Replaces the contents of `out` with the elements of the text form `text`;
    // null counts as the empty text. Returns 0.
    static int toVector(const wchar_t* text, StringVector& out);

  private:
    void appendElement(const wchar_t* element, std::size_t length);
    std::wstring m_text;
    int m_count;
};

}  // namespace PluginSDK

#endif
