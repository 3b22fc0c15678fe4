// UTF-8 <-> wide-character conversion shared by both string types.
//
// The conversion does not depend on the process locale. Bytes that are not part of
// a well-formed UTF-8 sequence (stray continuation bytes, overlong forms, encoded
// surrogates, code points above U+10FFFF, sequences cut short) are each decoded to
// one character in U+DC80..U+DCFF (the byte value plus 0xDC00), and encoding turns
// such a character back into its original byte. Text read from a file with bad
// bytes therefore survives a round trip unchanged, and a bad byte never hides the
// rest of the text. Other lone surrogates are encoded as U+FFFD.
#ifndef HOSTSDK_BASE_UTF8_H
#define HOSTSDK_BASE_UTF8_H

#include <cstddef>
#include <string>

#include "base/Export.h"

class HOSTSDK_API Utf8 {
  public:
    // Decodes `length` bytes of `text` and appends the characters to `out`.
    static void decode(const char* text, std::size_t length, std::wstring& out);
    static std::wstring decode(const char* text, std::size_t length);
    // Decodes a NUL-terminated text; null gives the empty string.
    static std::wstring decode(const char* text);
    // Decodes the first character of the `length` (> 0) bytes at `text` into `out`
    // and returns the number of bytes it took (1 to 4; 1 for an undecodable byte).
    static std::size_t decodeChar(const char* text, std::size_t length, wchar_t& out);

    // Encodes `length` characters of `text` and appends the bytes to `out`.
    static void encode(const wchar_t* text, std::size_t length, std::string& out);
    static std::string encode(const wchar_t* text, std::size_t length);
    // Encodes a NUL-terminated text; null gives the empty string.
    static std::string encode(const wchar_t* text);

    // True when `c` stands for an undecodable byte (see above).
    static bool isEscapedByte(wchar_t c) { return c >= 0xDC80 && c <= 0xDCFF; }
};

#endif
