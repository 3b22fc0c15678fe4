#include "PluginSDK/String.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

using PluginSDK::String;

namespace {

std::wstring wide(const String& s) {
    return std::wstring(s.c_str(), s.length());
}

TEST(PluginSdkString, DecodesUtf8) {
    const std::vector<std::pair<const char*, std::wstring>> cases = {
        {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC", L"gr\u00FC\u00DF \u20AC"},
        // Bad bytes stand for themselves and never hide what follows.
        {"a\xFF"
         "b",
         std::wstring(L"a") + wchar_t(0xDCFF) + L"b"},
        {"cut \xE2\x82", std::wstring(L"cut ") + wchar_t(0xDCE2) + wchar_t(0xDC82)},
    };
    for (const auto& c : cases) {
        const String s(c.first);
        EXPECT_EQ(wide(s), c.second) << "input: " << c.first;
        EXPECT_EQ(s.toUtf8(), c.first) << "round trip of: " << c.first;
        char* narrow = String::getMultibyteString(s);
        EXPECT_STREQ(narrow, c.first);
        std::free(narrow);
    }
}

TEST(PluginSdkString, NullIsEmptyAndEmbeddedNulCounts) {
    for (const String& s : {String(static_cast<const wchar_t*>(nullptr)),
                            String(static_cast<const char*>(nullptr)), String(L"abc", 0)}) {
        ASSERT_NE(static_cast<const wchar_t*>(s), nullptr);
        EXPECT_EQ(s.length(), 0);
        EXPECT_TRUE(s == static_cast<const wchar_t*>(nullptr));
    }
    EXPECT_FALSE(String(L"a\0b", 3) == L"a");
    EXPECT_TRUE(String(L"\u00FC") < String(L"\U0001D11E"));
    EXPECT_FALSE(String(L"b") < String(L"B"));
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
    const std::vector<std::pair<std::wstring, std::wstring>> cases = {
        {L" \t\r\n\v\f", L""}, {L"  a b  ", L"a b"}, {L"x\u00A0", L"x\u00A0"}};
    for (const auto& c : cases) {
        String s(c.first);
        EXPECT_EQ(wide(s.trim()), c.second) << "input: [" << String(c.first).toUtf8() << "]";
    }
}

}  // namespace
