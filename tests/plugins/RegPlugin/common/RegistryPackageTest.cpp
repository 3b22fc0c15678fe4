#include "common/RegistryPackage.h"

#include <gtest/gtest.h>

#include "CommonFakes.h"

namespace RegPluginTest {
namespace {

TEST(RegistryPackageTest, GetPropertyFindsStoredOrRetrievedValuesOnly) {
    const struct {
        const char* what;
        const wchar_t *stored, *lazy;
        TErrorCode retrieveResult, expected;
        const wchar_t* value;
        int retrieveCalls;
    } cases[] = {
        {"stored", L"1.0", nullptr, -1, 0, L"1.0", 0},
        {"stored empty", L"", nullptr, -1, 0, L"", 0},
        {"retrieved lazily", nullptr, L"2.0", 0, 0, L"2.0", 1},
        {"absent", nullptr, nullptr, REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND,
         REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L"old", 1},
        {"retrieve error", nullptr, nullptr, -13999, -13999, L"old", 1},
        {"retrieve 0, nothing stored", nullptr, nullptr, 0, REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND,
         L"old", 1},
    };
    for (const auto& c : cases) {
        FakePackage package(L"key");
        package.retrieveResult = c.retrieveResult;
        if (c.stored)
            package.setProperty(L"version", c.stored);
        if (c.lazy)
            package.lazy[L"version"] = c.lazy;
        PluginSDK::String value(L"old");
        EXPECT_EQ(package.getProperty(L"version", value), c.expected) << c.what;
        EXPECT_EQ(value, c.value) << c.what;
        EXPECT_EQ(package.getProperty(L"version", value), c.expected) << c.what << ", again";
        EXPECT_EQ(package.retrieveCalls, c.retrieveCalls * (c.lazy ? 1 : 2)) << c.what;
    }
}

TEST(RegistryPackageTest, SetPropertyReplacesAndNamesAreCaseSensitive) {
    FakePackage package(L"key");  // holds "name"
    package.setProperty(L"Version", L"1");
    package.setProperty(L"version", L"2");
    package.setProperty(L"version", L"3");
    EXPECT_EQ(package.properties.size(), 3u);
    EXPECT_EQ(package.properties[L"version"], L"3");
}

}  // namespace
}  // namespace RegPluginTest
