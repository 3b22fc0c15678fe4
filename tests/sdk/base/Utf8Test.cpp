#include "base/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string hex(const std::string& bytes) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char b : bytes) {
        out += digits[b >> 4];
        out += digits[b & 15];
        out += ' ';
    }
    return out;
}

std::string hex(const std::wstring& text) {
    std::string out;
    char buffer[16];
    for (wchar_t c : text) {
        std::snprintf(buffer, sizeof buffer, "U+%04X ", static_cast<unsigned>(c));
        out += buffer;
    }
    return out;
}

struct DecodeCase {
    std::string bytes;
    std::wstring expected;
};

// Every input must also come back byte for byte from encode(decode(x)).
TEST(Utf8Test, DecodesAndRoundTrips) {
    const DecodeCase cases[] = {
        {"plain ascii text", L"plain ascii text"},
        {"A\xC3\xA9", L"A\u00E9"},
        {"\xE2\x82\xAC", L"\u20AC"},
        {"\xF0\x9F\x98\x80!", L"\U0001F600!"},
        {"\xF4\x8F\xBF\xBF", L"\U0010FFFF"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        // Stray continuation and bytes that never start a sequence.
        {"\x80", L"\xDC80"},
        {"\xFF\xFE", L"\xDCFF\xDCFE"},
        {"\xF5\x80\x80\x80", L"\xDCF5\xDC80\xDC80\xDC80"},
        // Overlong forms.
        {"\xC0\xAF", L"\xDCC0\xDCAF"},
        {"\xC1\xBF", L"\xDCC1\xDCBF"},
        {"\xE0\x80\xAF", L"\xDCE0\xDC80\xDCAF"},
        {"\xF0\x8F\xBF\xBF", L"\xDCF0\xDC8F\xDCBF\xDCBF"},
        // Encoded surrogates and code points above U+10FFFF.
        {"\xED\xA0\x80", L"\xDCED\xDCA0\xDC80"},
        {"\xED\xBF\xBF", L"\xDCED\xDCBF\xDCBF"},
        {"\xF4\x90\x80\x80", L"\xDCF4\xDC90\xDC80\xDC80"},
        // Truncated sequences, at the end and followed by more text.
        {"ab\xE2\x82", L"ab\xDCE2\xDC82"},
        {"\xE2\x82Z\xC3", L"\xDCE2\xDC82Z\xDCC3"},
        {"\xF0\x9F\x98", L"\xDCF0\xDC9F\xDC98"},
        // A bad byte in a long run of ASCII keeps everything after it.
        {"0123456789abcdef\xFF"
         "0123456789abcdef\xC3\xA9tail",
         L"0123456789abcdef\xDCFF"
         L"0123456789abcdef\u00E9tail"},
    };
    for (const DecodeCase& c : cases) {
        const std::wstring decoded = Utf8::decode(c.bytes.data(), c.bytes.size());
        EXPECT_EQ(hex(c.expected), hex(decoded)) << "input: " << hex(c.bytes);
        EXPECT_EQ(hex(c.bytes), hex(Utf8::encode(decoded.data(), decoded.size())))
            << "round trip of: " << hex(c.bytes);
    }
}

TEST(Utf8Test, EncodesLoneSurrogatesAndOutOfRangeAsReplacement) {
    const struct {
        std::wstring text;
        std::string expected;
    } cases[] = {
        {L"\u00E9\u20AC\U0001F600", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {L"\x7F\x80\x7FF\x800", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80"},
        {L"a\xD800z", "a\xEF\xBF\xBDz"},
        {L"\xDBFF", "\xEF\xBF\xBD"},
        {L"\xDC7F", "\xEF\xBF\xBD"},
        {L"\xDD00", "\xEF\xBF\xBD"},
        {std::wstring(1, static_cast<wchar_t>(0x110000)), "\xEF\xBF\xBD"},
        {std::wstring(1, static_cast<wchar_t>(-1)), "\xEF\xBF\xBD"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(hex(c.expected), hex(Utf8::encode(c.text.data(), c.text.size())))
            << "input: " << hex(c.text);
    }
}

TEST(Utf8Test, DecodeCharReportsBytesUsed) {
    const struct {
        std::string bytes;
        wchar_t expected;
        std::size_t used;
    } cases[] = {
        {"A\xC3", L'A', 1},          {"\xC3\xA9x", 0xE9, 2},
        {"\xE2\x82\xAC", 0x20AC, 3}, {"\xF0\x9F\x98\x80", 0x1F600, 4},
        {"\xE2\x82", 0xDCE2, 1},     {"\xC0\x80", 0xDCC0, 1},
    };
    for (const auto& c : cases) {
        wchar_t out = 0;
        EXPECT_EQ(c.used, Utf8::decodeChar(c.bytes.data(), c.bytes.size(), out))
            << "input: " << hex(c.bytes);
        EXPECT_EQ(static_cast<unsigned>(c.expected), static_cast<unsigned>(out))
            << "input: " << hex(c.bytes);
    }
}

}  // namespace
