#include "PluginSDK/String.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using PluginSDK::String;

namespace {

std::wstring wide(const String& s) {
    return std::wstring(s.c_str(), s.length());
}

TEST(PluginSdkString, DecodesUtf8) {
    const std::vector<std::pair<const char*, std::wstring>> cases = {
        {"", L""},
        {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC", L"gr\u00FC\u00DF \u20AC"},
        {"clef \xF0\x9D\x84\x9E", L"clef \U0001D11E"},
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
        ASSERT_NE(narrow, nullptr);
        EXPECT_STREQ(narrow, c.first);
        std::free(narrow);
    }
}

TEST(PluginSdkString, NullAndEmptyAreTheEmptyString) {
    const wchar_t* nullWide = nullptr;
    String assigned(L"x");
    assigned = nullWide;
    const String all[] = {String(nullWide), String(static_cast<const char*>(nullptr)), String(""),
                          assigned, String(L"abc", 0)};
    for (const String& s : all) {
        ASSERT_NE(static_cast<const wchar_t*>(s), nullptr);
        EXPECT_EQ(s.length(), 0);
        EXPECT_TRUE(s == nullWide);
        EXPECT_TRUE(s == L"");
        EXPECT_FALSE(s < String());
    }
    EXPECT_EQ(String::getMultibyteString(nullptr), nullptr);
    // Text with an embedded NUL is not equal to its prefix.
    const String embedded(L"a\0b", 3);
    EXPECT_EQ(embedded.length(), 3);
    EXPECT_FALSE(embedded == L"a");
}

TEST(PluginSdkString, CopiesShareUntilModified) {
    const String original(L" shared ");
    const wchar_t* characters = original;
    struct Mutation {
        const char* name;
        void (*apply)(String&);
    };
    const std::vector<Mutation> mutations = {
        {"+= String", [](String& s) { s += String(L"!"); }},
        {"+= self", [](String& s) { s += s; }},
        {"+= wchar_t*", [](String& s) { s += L"!"; }},
        {"+= own tail", [](String& s) { s += s.c_str() + 1; }},
        {"+= wchar_t", [](String& s) { s += L'!'; }},
        {"= wchar_t*", [](String& s) { s = L"other"; }},
        {"= own tail", [](String& s) { s = s.c_str() + 1; }},
        {"= char*", [](String& s) { s = "other"; }},
        {"trim", [](String& s) { s.trim(); }},
    };
    for (const Mutation& m : mutations) {
        String copy(original);
        const String second = copy;
        EXPECT_EQ(static_cast<const wchar_t*>(copy), characters) << m.name << ": not shared";
        m.apply(copy);
        EXPECT_EQ(wide(original), L" shared ") << m.name;
        EXPECT_EQ(wide(second), L" shared ") << m.name;
        EXPECT_NE(copy, original) << m.name;
    }
}

TEST(PluginSdkString, AppendsAndConcatenation) {
    String s(L"ab");
    s += s;
    s += s.c_str() + 1;  // a pointer into its own characters, unshared
    EXPECT_EQ(wide(s), L"ababbab");
    std::wstring expected = L"ababbab";
    for (int i = 0; i < 1000; ++i) {
        s += static_cast<wchar_t>(L'a' + i % 26);
        expected += static_cast<wchar_t>(L'a' + i % 26);
    }
    EXPECT_EQ(wide(s), expected);
    EXPECT_EQ(s.c_str()[s.length()], L'\0');

    const String key(L"key");
    EXPECT_EQ(wide(key + String(L"-1")), L"key-1");
    EXPECT_EQ(wide(key + L"-2"), L"key-2");
    EXPECT_EQ(wide(L"pre-" + key), L"pre-key");
    EXPECT_EQ(wide(String() + key), L"key");
    EXPECT_EQ(wide(key + static_cast<const wchar_t*>(nullptr)), L"key");
}

TEST(PluginSdkString, Trim) {
    const std::vector<std::pair<std::wstring, std::wstring>> cases = {
        {L"", L""},           {L" \t\r\n\v\f", L""},      {L"a", L"a"},
        {L"  a b  ", L"a b"}, {L"\tvalue\r\n", L"value"}, {L"x\u00A0", L"x\u00A0"},
    };
    for (const auto& c : cases) {
        String s(c.first);
        EXPECT_EQ(wide(s.trim()), c.second) << "input: [" << String(c.first).toUtf8() << "]";
    }
}

TEST(PluginSdkString, OrderAndEqualityMatchCharacterOrder) {
    const std::vector<std::wstring> texts = {
        L"",       L"a",          L"ab",      L"abc",          L"b",    L"B", L"Z",
        L"\u00FC", L"\U0001D11E", L"a\u00FC", L"ab\U0001D11E", L"a\tb",
    };
    for (const std::wstring& x : texts) {
        for (const std::wstring& y : texts) {
            const String sx(x);
            const String sy(y);
            const std::string pair = sx.toUtf8() + " / " + sy.toUtf8();
            EXPECT_EQ(sx < sy, x < y) << pair;
            EXPECT_EQ(sx == sy, x == y) << pair;
            EXPECT_EQ(sx == y.c_str(), x == y) << pair;
            EXPECT_EQ(y.c_str() != sx, x != y) << pair;
        }
    }
}

}  // namespace
