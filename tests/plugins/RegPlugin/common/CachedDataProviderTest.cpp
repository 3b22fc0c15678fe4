#include "common/CachedDataProvider.h"

#include <gtest/gtest.h>

#include "CommonFakes.h"

namespace RegPluginTest {
namespace {

class Cache : public RegPlugin::CachedDataProvider {
  public:
    TErrorCode enumPackages(RegistryPackage::Type, PluginSDK::StringVector&) override { return 0; }
    TErrorCode getPackage(const PluginSDK::String&, RegistryPackage**) override { return 0; }
    TErrorCode packageExists(const PluginSDK::String&, bool&) override { return 0; }
};

TEST(CachedDataProviderTest, FirstOfAKeyWinsAliasesAreNeitherCountedNorIterated) {
    int destroyed = 0;
    {
        Cache cache;
        EXPECT_EQ(cache.getFirst(), nullptr);
        EXPECT_EQ(cache.getNext(), nullptr);
        auto* a = new FakePackage(L"a", RegistryPackage::PRODUCT, &destroyed);
        auto* b = new FakePackage(L"b", RegistryPackage::PRODUCT, &destroyed);
        FakePackage rejected(L"a");  // not taken: stays ours
        EXPECT_EQ(cache.add(a), 0);
        EXPECT_EQ(cache.add(&rejected), 0);
        EXPECT_EQ(cache.add(b), 0);
        EXPECT_EQ(cache.add(nullptr), -101);
        EXPECT_EQ(cache.addToMap(a, L"alias"), 0);
        EXPECT_EQ(cache.addToMap(a, L"b"), 0);  // existing mapping kept
        EXPECT_EQ(cache.addToMap(nullptr, L"c"), -101);
        EXPECT_EQ(cache.find(L"a"), a);
        EXPECT_EQ(cache.find(L"alias"), a);
        EXPECT_EQ(cache.find(L"b"), b);
        EXPECT_EQ(cache.find(L"c"), nullptr);
        EXPECT_EQ(cache.size(), 2);
        EXPECT_EQ(cache.getFirst(), a);
        EXPECT_EQ(cache.getNext(), b);
        EXPECT_EQ(cache.getNext(), nullptr);
        EXPECT_EQ(cache.getNext(), nullptr);
    }
    EXPECT_EQ(destroyed, 2);  // `a`, reachable twice, destroyed once
}

TEST(CachedDataProviderTest, ClearEmptiesElementsButKeepsThem) {
    int destroyed = 0;
    Cache cache;
    cache.add(new FakePackage(L"a", RegistryPackage::PRODUCT, &destroyed));
    cache.add(new FakePackage(L"b", RegistryPackage::PRODUCT, &destroyed));
    EXPECT_EQ(cache.clear(), 0);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(cache.size(), 2);
    EXPECT_EQ(cache.find(L"a"), nullptr);
    auto* late = new FakePackage(L"late");
    cache.add(late);
    EXPECT_EQ(cache.find(L"late"), late);
    EXPECT_EQ(cache.getFirst(), nullptr);  // iteration never reaches it
}

}  // namespace
}  // namespace RegPluginTest
