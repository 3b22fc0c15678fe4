#include "PluginSDK/VectorString.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PluginSDK/StringVector.h"

using PluginSDK::String;
using PluginSDK::StringVector;
using PluginSDK::VectorString;
using List = std::vector<std::wstring>;
using testing::PrintToString;

namespace {

List elements(const wchar_t* text) {
    StringVector parsed;
    parsed.addString(L"stale");
    EXPECT_EQ(VectorString::toVector(text, parsed), 0);
    List out;
    for (const String& s : parsed) {
        out.emplace_back(s.c_str(), s.length());
    }
    return out;
}

TEST(VectorString, RoundTripsAndKnownForms) {
    const std::pair<List, const wchar_t*> cases[] = {
        {{}, L""},
        {{L""}, L"\\0"},
        {{L"", L""}, L";"},
        {{L";"}, L"\\;"},
        {{L"\\"}, L"\\\\"},
        {{L"\\0"}, L"\\\\0"},
        {{L"\\", L"", L";;", L"\u00FC\U0001D11E"}, L"\\\\;;\\;\\;;\u00FC\U0001D11E"},
    };
    for (const auto& c : cases) {
        VectorString built;
        for (const std::wstring& e : c.first) {
            built += e.c_str();
        }
        EXPECT_EQ(std::wstring(built), c.second) << PrintToString(c.first);
        EXPECT_EQ(elements(built), c.first) << PrintToString(c.first);
    }
}

TEST(VectorString, NarrowNullForeignTextsAndBadIndexes) {
    VectorString built;
    built += "gr\xC3\xBC\xC3\x9F;";
    built += static_cast<const char*>(nullptr);
    EXPECT_EQ(std::wstring(built), L"gr\u00FC\u00DF\\;;");
    // Texts that VectorString would not write still split predictably.
    const std::pair<const wchar_t*, List> foreign[] = {
        {nullptr, {}},
        {L"\\x;\\", {L"x", L"\\"}},
        {L"a;\\0", {L"a", L"0"}},
    };
    for (const auto& c : foreign) {
        EXPECT_EQ(elements(c.first), c.second) << PrintToString(c.first);
    }
    // Out of range: an empty string, and nothing removed.
    StringVector v;
    v.addString(L"a");
    EXPECT_EQ(v[1], String());
    EXPECT_EQ(v.removeString(1), -1);
    EXPECT_EQ(v.removeString(0), 0);
    EXPECT_EQ(v.size(), 0);
}

}  // namespace
