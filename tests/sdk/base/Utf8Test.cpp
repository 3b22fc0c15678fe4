#include "base/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using testing::PrintToString;

// Bytes and text convert both ways unless `encodeOnly`. Bad bytes (stray
// continuations, never-leading bytes, overlong forms, encoded surrogates, values above
// U+10FFFF, truncated sequences) decode to U+DC80..U+DCFF and come back unchanged; a
// malformed sequence gives up its lead byte only, so the character after it is read as
// itself. Other surrogates and values above U+10FFFF encode as U+FFFD.
TEST(Utf8Test, DecodesAndEncodes) {
    const struct {
        std::string bytes;
        std::wstring text;
        bool encodeOnly = false;
    } cases[] = {{"A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80!", L"A\u00E9\u20AC\U0001F600!"},
                 {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
                 {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80", L"\x7F\x80\x7FF\x800"},
                 {"\x80\xFF\xC0\x80\xE0\x9F\xBF\xF0\x8F\xBF\xBF",
                  L"\xDC80\xDCFF\xDCC0\xDC80\xDCE0\xDC9F\xDCBF\xDCF0\xDC8F\xDCBF\xDCBF"},
                 {"\xED\xA0\x80\xF4\x90\x80\x80", L"\xDCED\xDCA0\xDC80\xDCF4\xDC90\xDC80\xDC80"},
                 {"\xE2\x82Z\xC3", L"\xDCE2\xDC82Z\xDCC3"},
                 {"\xF0\x9F\x98Z!", L"\xDCF0\xDC9F\xDC98Z!"},
                 {"\xF0\x9FZ\x80", L"\xDCF0\xDC9FZ\xDC80"},
                 {"\xF0Z", L"\xDCF0Z"},
                 {"\xF4\x8F\xBF\xC3\xA9", L"\xDCF4\xDC8F\xDCBF\u00E9"},
                 {"\xF0\x9F\x98\xF0\x9F\x98\x80", L"\xDCF0\xDC9F\xDC98\U0001F600"},
                 {"\xE2\x82\xE2\x82\xAC", L"\xDCE2\xDC82\u20AC"},
                 {"\xC3\xC3\xA9", L"\xDCC3\u00E9"},
                 {"0123456789abcdef\xFF"
                  "0123456789abcdef\xC3\xA9tail",
                  L"0123456789abcdef\xDCFF"
                  L"0123456789abcdef\u00E9tail"},
                 {"a\xEF\xBF\xBDz", L"a\xD800z", true},
                 {"\xEF\xBF\xBD", L"\xDC7F", true},
                 {"\xEF\xBF\xBD", std::wstring(1, static_cast<wchar_t>(0x110000)), true}};
    for (const auto& c : cases) {
        if (!c.encodeOnly) {
            EXPECT_EQ(c.text, Utf8::decode(c.bytes.data(), c.bytes.size()))
                << "decoding " << PrintToString(c.bytes);
        }
        EXPECT_EQ(c.bytes, Utf8::encode(c.text.data(), c.text.size()))
            << "encoding " << PrintToString(c.text);
    }
}

}  // namespace
