#include "common/PreloadedDataProvider.h"

#include <gtest/gtest.h>

#include "CommonFakes.h"

namespace RegPluginTest {
namespace {

const Registry kRegistry = {{L"p1", RegistryPackage::PRODUCT},
                            {L"s1", RegistryPackage::SUBPRODUCT},
                            {L"x1", RegistryPackage::PATCH},
                            {L"p2", RegistryPackage::PRODUCT}};
const TErrorCode kLatched = REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST;

TEST(PreloadedDataProviderTest, FailedLoadRunsOnceLatchesAndLeavesOutputs) {
    TraceCapture trace;
    FakePreloadedProvider provider(kRegistry, -42);
    PluginSDK::StringVector keys;
    keys.addString(L"before");
    FakePackage marker(L"marker");
    RegistryPackage* package = &marker;
    bool exists = true;
    EXPECT_EQ(provider.enumPackages(RegistryPackage::ANY, keys), kLatched);
    EXPECT_EQ(provider.getPackage(L"p1", &package), kLatched);
    EXPECT_EQ(provider.packageExists(L"p1", exists), kLatched);
    EXPECT_EQ(provider.loadCalls, 1);
    EXPECT_EQ(keysOf(keys), Lines{"before"});
    EXPECT_EQ(package, &marker);
    EXPECT_TRUE(exists);
    EXPECT_EQ(trace.sink.messages(1),
              (Lines{"Unable to preload packages ( err = -42 )",
                     "program preload previously failed", "program preload previously failed"}));
    EXPECT_EQ(trace.sink.messages(3), Lines{"going to preload packages"});
    EXPECT_EQ(trace.sink.lines().at(0).signature, "PreloadedDataProvider::preload()");
}

TEST(PreloadedDataProviderTest, EnumPackagesAppendsTheSelectedKindInLoadOrder) {
    const struct {
        RegistryPackage::Type type;
        Lines expected;
    } cases[] = {{RegistryPackage::ANY, {"old", "p1", "s1", "x1", "p2"}},
                 {RegistryPackage::PRODUCT, {"old", "p1", "p2"}},
                 {RegistryPackage::SUBPRODUCT, {"old", "s1"}},
                 {RegistryPackage::PATCH, {"old", "x1"}}};
    FakePreloadedProvider provider(kRegistry);
    for (const auto& c : cases) {
        PluginSDK::StringVector keys;
        keys.addString(L"old");
        EXPECT_EQ(provider.enumPackages(c.type, keys), 0) << "type " << c.type;
        EXPECT_EQ(keysOf(keys), c.expected) << "type " << c.type;
    }
    EXPECT_EQ(provider.loadCalls, 1);
}

TEST(PreloadedDataProviderTest, LookupsAnswerFromTheCache) {
    TraceCapture trace;
    FakePreloadedProvider provider(kRegistry);
    EXPECT_EQ(provider.getPackage(L"p1", nullptr), -101);  // refused before loading
    EXPECT_EQ(provider.loadCalls, 0);
    RegistryPackage* package = nullptr;
    bool exists = false;
    EXPECT_EQ(provider.getPackage(L"s1", &package), 0);
    EXPECT_EQ(package->key, L"s1");
    EXPECT_EQ(provider.packageExists(L"p2", exists), 0);
    EXPECT_TRUE(exists);
    EXPECT_EQ(provider.packageExists(L"P2", exists), 0);
    EXPECT_FALSE(exists);
    EXPECT_EQ(trace.sink.messages(1), Lines{"invalid parameters"});
    EXPECT_EQ(trace.sink.messages(3),
              (Lines{"going to preload packages", "4 packages successfully preloaded"}));
}

TEST(PreloadedDataProviderTest, ZeroPackagesAnswerNotFound) {
    TraceCapture trace;
    FakePreloadedProvider provider;
    FakePackage marker(L"marker");
    RegistryPackage* package = &marker;
    EXPECT_EQ(provider.getPackage(L"p1", &package), REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST);
    EXPECT_EQ(package, nullptr);
    EXPECT_EQ(trace.sink.messages(3),
              (Lines{"going to preload packages", "0 packages successfully preloaded",
                     "package does not exist"}));
}

}  // namespace
}  // namespace RegPluginTest
