#include "PluginSDK/String.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

using PluginSDK::String;

namespace {

std::wstring wide(const String& s) {
    return std::wstring(s.c_str(), s.length());
}

// Bad bytes stand for themselves and never hide what follows.
TEST(PluginSdkString, ConversionsNullsAndOrder) {
    const char* bytes =
        "gr\xC3\xBC\xC3\x9F a\xFF"
        "b cut \xE2\x82";
    EXPECT_EQ(wide(String(bytes)),
              L"gr\u00FC\u00DF a\xDCFF"
              L"b cut \xDCE2\xDC82");
    EXPECT_EQ(String(bytes).toUtf8(), bytes);
    char* narrow = String::getMultibyteString(String(bytes));
    EXPECT_STREQ(narrow, bytes);
    std::free(narrow);
    for (const String& s : {String(static_cast<const wchar_t*>(nullptr)),
                            String(static_cast<const char*>(nullptr)), String(L"abc", 0)}) {
        ASSERT_NE(static_cast<const wchar_t*>(s), nullptr);
        EXPECT_EQ(s.length(), 0);
        EXPECT_TRUE(s == static_cast<const wchar_t*>(nullptr));
    }
    EXPECT_FALSE(String(L"a\0b", 3) == L"a");
    EXPECT_TRUE(String(L"\u00FC") < String(L"\U0001D11E"));
    EXPECT_FALSE(String(L"b") < String(L"B"));
    // Decided by the first character, by a later one, or by the length.
    EXPECT_TRUE(String(L"ab") < String(L"b"));
    EXPECT_TRUE(String(L"abc") < String(L"abd"));
    EXPECT_FALSE(String(L"abd") < String(L"abc"));
    EXPECT_TRUE(String(L"ab") < String(L"abc"));
    EXPECT_FALSE(String(L"abc") < String(L"ab"));
    EXPECT_TRUE(String() < String(L"a"));
}

TEST(PluginSdkString, CopiesShareUntilModified) {
    const String original(L" shared ");
    const wchar_t* characters = original;
    const struct {
        const char* name;
        void (*apply)(String&);
    } mutations[] = {
        {"+= self", [](String& s) { s += s; }},
        {"+= wchar_t", [](String& s) { s += L'!'; }},
        {"= own tail", [](String& s) { s = s.c_str() + 1; }},
        {"trim", [](String& s) { s.trim(); }},
    };
    for (const auto& m : mutations) {
        String copy(original);
        const String second = copy;
        EXPECT_EQ(static_cast<const wchar_t*>(copy), characters) << m.name << ": not shared";
        m.apply(copy);
        EXPECT_EQ(wide(original), L" shared ") << m.name;
        EXPECT_EQ(wide(second), L" shared ") << m.name;
        EXPECT_NE(copy, original) << m.name;
    }
}

TEST(PluginSdkString, AppendsGrowAndStayTerminated) {
    String s(L"ab");
    s += s;
    s += s.c_str() + 1;  // a pointer into its own characters, unshared
    std::wstring expected = L"ababbab";
    for (int i = 0; i < 1000; ++i) {
        s += static_cast<wchar_t>(L'a' + i % 26);
        expected += static_cast<wchar_t>(L'a' + i % 26);
    }
    EXPECT_EQ(wide(s), expected);
    EXPECT_EQ(s.c_str()[s.length()], L'\0');
}

TEST(PluginSdkString, Trim) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L" \t\r\n\v\f", L""}, {L"  a b  ", L"a b"}, {L"x\u00A0", L"x\u00A0"}};
    for (const auto& c : cases) {
        String s(c.first);
        EXPECT_EQ(wide(s.trim()), c.second) << testing::PrintToString(c.first);
    }
}

}  // namespace
