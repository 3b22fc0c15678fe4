#include "base/Utf8.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

template <typename Text>
std::string hex(const Text& text) {
    std::string out;
    char buffer[16];
    for (auto c : text) {
        std::snprintf(buffer, sizeof buffer, sizeof c == 1 ? "%02X " : "U+%04X ",
                      sizeof c == 1 ? static_cast<unsigned char>(c) : static_cast<unsigned>(c));
        out += buffer;
    }
    return out;
}

// Every input must also come back byte for byte from encode(decode(x)).
TEST(Utf8Test, DecodesAndRoundTrips) {
    const struct {
        std::string bytes;
        std::wstring expected;
    } cases[] = {
        {"A\xC3\xA9\xE2\x82\xAC", L"A\u00E9\u20AC"},
        {"\xF0\x9F\x98\x80!", L"\U0001F600!"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        // Stray continuation and bytes that never start a sequence.
        {"\x80\xFF", L"\xDC80\xDCFF"},
        // Overlong forms, encoded surrogates, code points above U+10FFFF.
        {"\xF0\x8F\xBF\xBF", L"\xDCF0\xDC8F\xDCBF\xDCBF"},
        {"\xED\xA0\x80", L"\xDCED\xDCA0\xDC80"},
        {"\xF4\x90\x80\x80", L"\xDCF4\xDC90\xDC80\xDC80"},
        // Truncated sequences, at the end and followed by more text.
        {"\xE2\x82Z\xC3", L"\xDCE2\xDC82Z\xDCC3"},
        // A bad byte in a long run of ASCII keeps everything after it.
        {"0123456789abcdef\xFF"
         "0123456789abcdef\xC3\xA9tail",
         L"0123456789abcdef\xDCFF"
         L"0123456789abcdef\u00E9tail"},
    };
    for (const auto& c : cases) {
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
        {L"\x7F\x80\x7FF\x800", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80"},
        {L"a\xD800z", "a\xEF\xBF\xBDz"},
        {L"\xDC7F", "\xEF\xBF\xBD"},  // only U+DC80..U+DCFF stand for bytes
        {std::wstring(1, static_cast<wchar_t>(0x110000)), "\xEF\xBF\xBD"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(hex(c.expected), hex(Utf8::encode(c.text.data(), c.text.size())))
            << "input: " << hex(c.text);
    }
}

}  // namespace
