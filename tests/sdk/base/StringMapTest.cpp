#include "base/StringMap.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string narrow(const String& text) {
    return static_cast<const char*>(text);
}

TEST(StringMapTest, SetReplaceLookUpAndList) {
    StringMap map;
    map.setEntry("b", "two");
    map.addEntryUtf8("a\xc3\xa9", 3, "first", 5);
    map.setEntry(L"c", L"");
    map.setEntry("b", "replaced, and longer than before");
    map.setEntry(String(L"\xDCFF"), "escaped byte");  // a byte that was not UTF-8
    EXPECT_EQ(map.size(), 4);
    const struct {
        String key;
        bool found;
        const char* value;
    } lookups[] = {
        {"b", true, "replaced, and longer than before"},
        {L"a\u00E9", true, "first"},
        {"c", true, ""},
        {String(L"\xDCFF"), true, "escaped byte"},
        {"B", false, ""},
        {"", false, ""},
    };
    for (const auto& l : lookups) {
        String value = "untouched";
        EXPECT_EQ(map.getEntry(l.key, value), l.found) << narrow(l.key);
        EXPECT_EQ(narrow(value), l.value) << narrow(l.key);
        EXPECT_EQ(map.hasEntry(l.key), l.found) << narrow(l.key);
    }
    // Listed in ascending key order; a copy is independent of the original.
    StringMap copy = map;
    map.setEntry("b", "changed after the copy");
    std::string listed;
    for (const auto& entry : copy.entries())
        listed += narrow(String(entry.first)) + "=" + narrow(String(entry.second)) + ";";
    EXPECT_EQ(listed, "a\xc3\xa9=first;b=replaced, and longer than before;c=;\xff=escaped byte;");
    EXPECT_EQ(map.entries().at(L"b"), L"changed after the copy");
}

}  // namespace
