#include "common/UnpreloadedDataProvider.h"

#include <gtest/gtest.h>

#include "CommonFakes.h"

namespace RegPluginTest {
namespace {

const Registry kRegistry = {{L"a", RegistryPackage::PRODUCT}, {L"b", RegistryPackage::PATCH}};

TEST(UnpreloadedDataProviderTest, EnumPackagesReplaces) {
    FakeUnpreloadedProvider provider(kRegistry);
    PluginSDK::StringVector keys;
    keys.addString(L"stale");
    EXPECT_EQ(provider.enumPackages(RegistryPackage::PATCH, keys), 0);
    EXPECT_EQ(keysOf(keys), Lines{"b"});
}

TEST(UnpreloadedDataProviderTest, GetRunsOncePerKeyExistsEveryTimeUntilCached) {
    FakeUnpreloadedProvider provider(kRegistry);
    bool exists = false;
    EXPECT_EQ(provider.packageExists(L"a", exists), 0);
    EXPECT_EQ(provider.packageExists(L"a", exists), 0);
    EXPECT_TRUE(exists);
    EXPECT_EQ(provider.existsCalls, 2);
    RegistryPackage* first = nullptr;
    RegistryPackage* second = nullptr;
    EXPECT_EQ(provider.getPackage(L"a", &first), 0);
    EXPECT_EQ(provider.getPackage(L"a", &second), 0);
    EXPECT_EQ(provider.getCalls, 1);
    EXPECT_EQ(first, second);
    EXPECT_EQ(provider.packageExists(L"a", exists), 0);
    EXPECT_EQ(provider.existsCalls, 2);
}

TEST(UnpreloadedDataProviderTest, FailuresAreTracedAndPassedOn) {
    TraceCapture trace;
    FakeUnpreloadedProvider provider(kRegistry);
    RegistryPackage* package = nullptr;
    bool exists = false;
    EXPECT_EQ(provider.getPackage(L"zz", nullptr), -101);
    EXPECT_EQ(provider.getPackage(L"zz", &package), REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST);
    provider.getResult = -7;
    EXPECT_EQ(provider.getPackage(L"a", &package), -7);
    EXPECT_EQ(package, nullptr);
    provider.existsResult = -8;
    EXPECT_EQ(provider.packageExists(L"a", exists), -8);
    EXPECT_EQ(trace.sink.messages(1),
              (Lines{"invalid parameters", "Unable to get the package for key a",
                     "Unable to check the package for key a"}));
    EXPECT_EQ(trace.sink.messages(3), Lines{"package zz does not exist"});
}

TEST(UnpreloadedDataProviderTest, FetchedPackageUnderAHeldKeyIsNotLeaked) {
    FakeUnpreloadedProvider provider(kRegistry);
    RegistryPackage* held = nullptr;
    RegistryPackage* package = nullptr;
    ASSERT_EQ(provider.getPackage(L"a", &held), 0);
    provider.madeKey = L"a";  // get("b") now makes a second package keyed "a"
    EXPECT_EQ(provider.getPackage(L"b", &package), 0);
    EXPECT_EQ(package, held);
}

}  // namespace
}  // namespace RegPluginTest
