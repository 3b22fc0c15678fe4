#include <gtest/gtest.h>

#include <algorithm>

#include "CommonFakes.h"
#include "common/UnpreloadedDataProvider.h"

namespace RegPluginTest {
namespace {

TEST(RegistryPackageTest, GetPropertyFindsStoredOrRetrievedValuesOnly) {
    const struct {
        const char* what;
        const wchar_t *stored, *lazy;
        TErrorCode retrieveResult, expected;
        const wchar_t* value;
    } cases[] = {
        {"stored", L"1.0", nullptr, -1, 0, L"1.0"},
        {"stored empty", L"", nullptr, -1, 0, L""},
        {"retrieved lazily", nullptr, L"2.0", 0, 0, L"2.0"},
        {"retrieve error", nullptr, nullptr, -13999, -13999, L"old"},
        {"retrieve 0, nothing stored", nullptr, nullptr, 0, REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND,
         L"old"},
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
        EXPECT_EQ(package.retrieveCalls, c.stored ? 0 : c.lazy ? 1 : 2) << c.what;
    }
}

class Cache : public RegPlugin::CachedDataProvider {
  public:
    TErrorCode enumPackages(RegistryPackage::Type, PluginSDK::StringVector&) override { return 0; }
    TErrorCode getPackage(const PluginSDK::String&, RegistryPackage**) override { return 0; }
    TErrorCode packageExists(const PluginSDK::String&, bool&) override { return 0; }
    using CachedDataProvider::dropPackagesFrom;
};

TEST(CachedDataProviderTest, FirstOfAKeyWinsAndClearEmptiesElementsButKeepsThem) {
    int destroyed = 0;
    {
        Cache cache;
        auto* a = new FakePackage(L"a", RegistryPackage::PRODUCT, &destroyed);
        auto* b = new FakePackage(L"b", RegistryPackage::PRODUCT, &destroyed);
        FakePackage rejected(L"a");  // not taken: stays ours
        EXPECT_EQ(cache.add(a), 0);
        EXPECT_EQ(cache.add(&rejected), 0);
        EXPECT_EQ(cache.add(b), 0);
        EXPECT_EQ(cache.add(nullptr), -101);
        EXPECT_EQ(cache.addToMap(a, L"alias"), 0);
        EXPECT_EQ(cache.addToMap(a, L"b"), 0);  // existing mapping kept
        EXPECT_EQ(cache.find(L"a"), a);
        EXPECT_EQ(cache.find(L"alias"), a);
        EXPECT_EQ(cache.find(L"b"), b);
        EXPECT_EQ(cache.size(), 2);
        EXPECT_EQ(cache.getFirst(), a);
        EXPECT_EQ(cache.getNext(), b);
        EXPECT_EQ(cache.getNext(), nullptr);
        EXPECT_EQ(cache.getNext(), nullptr);
        EXPECT_EQ(cache.clear(), 0);
        EXPECT_EQ(destroyed, 2);  // `a`, reachable twice, destroyed once
        EXPECT_EQ(cache.size(), 2);
        EXPECT_EQ(cache.find(L"b"), nullptr);  // the key found last, too
        EXPECT_EQ(cache.find(L"alias"), nullptr);
        auto* late = new FakePackage(L"late", RegistryPackage::PRODUCT, &destroyed);
        cache.add(late);
        EXPECT_EQ(cache.find(L"late"), late);
        EXPECT_EQ(cache.getFirst(), nullptr);  // iteration never reaches it
    }
    EXPECT_EQ(destroyed, 3);
}

// A failed load takes back what it stored: the packages after a count, with every
// key that leads to them, also the one found last.
TEST(CachedDataProviderTest, DropPackagesFromTakesBackLaterPackagesAndTheirKeys) {
    int destroyed = 0;
    Cache cache;
    auto* a = new FakePackage(L"a", RegistryPackage::PRODUCT, &destroyed);
    auto* b = new FakePackage(L"b", RegistryPackage::PRODUCT, &destroyed);
    auto* c = new FakePackage(L"c", RegistryPackage::PRODUCT, &destroyed);
    cache.add(a);
    cache.add(b);
    cache.add(c);
    cache.addToMap(b, L"bee");
    cache.addToMap(a, L"ay");
    EXPECT_EQ(cache.find(L"bee"), b);
    cache.dropPackagesFrom(3);  // nothing after the third
    cache.dropPackagesFrom(1);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(cache.size(), 1);
    for (const wchar_t* gone : {L"bee", L"b", L"c"}) {
        EXPECT_EQ(cache.find(gone), nullptr) << PluginSDK::String(gone);
    }
    EXPECT_EQ(cache.find(L"ay"), a);
    EXPECT_EQ(cache.getFirst(), a);
    EXPECT_EQ(cache.getNext(), nullptr);
}

const Registry kRegistry = {{L"p1", RegistryPackage::PRODUCT},
                            {L"s1", RegistryPackage::SUBPRODUCT},
                            {L"x1", RegistryPackage::PATCH},
                            {L"p2", RegistryPackage::PRODUCT}};

TEST(PreloadedDataProviderTest, FailedLoadRunsOnceLatchesAndLeavesOutputs) {
    const TErrorCode kLatched = REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST;
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
    EXPECT_EQ(trace.sink().messages(1),
              (Lines{"Unable to preload packages ( err = -42 )",
                     "program preload previously failed", "program preload previously failed"}));
}

TEST(PreloadedDataProviderTest, EnumeratesAndLooksUpFromTheCache) {
    const struct {
        RegistryPackage::Type type;
        Lines expected;
    } cases[] = {{RegistryPackage::ANY, {"old", "p1", "s1", "x1", "p2"}},
                 {RegistryPackage::PRODUCT, {"old", "p1", "p2"}},
                 {RegistryPackage::SUBPRODUCT, {"old", "s1"}},
                 {RegistryPackage::PATCH, {"old", "x1"}}};
    FakePreloadedProvider provider(kRegistry);
    EXPECT_EQ(provider.getPackage(L"p1", nullptr), -101);  // refused before loading
    EXPECT_EQ(provider.loadCalls, 0);
    for (const auto& c : cases) {
        PluginSDK::StringVector keys;
        keys.addString(L"old");
        EXPECT_EQ(provider.enumPackages(c.type, keys), 0) << "type " << c.type;
        EXPECT_EQ(keysOf(keys), c.expected) << "type " << c.type;
    }
    EXPECT_EQ(provider.loadCalls, 1);
    RegistryPackage* package = nullptr;
    bool exists = false;
    EXPECT_EQ(provider.getPackage(L"s1", &package), 0);
    EXPECT_EQ(package->key, L"s1");
    EXPECT_EQ(provider.getPackage(L"S1", &package), REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST);
    EXPECT_EQ(package, nullptr);
    EXPECT_EQ(provider.packageExists(L"p2", exists), 0);
    EXPECT_TRUE(exists);
    EXPECT_EQ(provider.packageExists(L"P2", exists), 0);
    EXPECT_FALSE(exists);
}

// get() makes a package (keyed `madeKey`, or the asked key) for a key in `registry`.
class FakeUnpreloadedProvider : public RegPlugin::UnpreloadedDataProvider {
  public:
    TErrorCode enumerate(RegistryPackage::Type type, PluginSDK::StringVector& keys) override {
        for (const auto& [key, kind] : kRegistry) {
            if (type == RegistryPackage::ANY || kind == type)
                keys.addString(key);
        }
        return 0;
    }
    TErrorCode get(const PluginSDK::String& key, RegistryPackage*& package) override {
        ++getCalls;
        if (getResult == 0 && holds(key))
            package = new FakePackage(madeKey ? madeKey : key.c_str(), RegistryPackage::PRODUCT,
                                      destroyed);
        return getResult;
    }
    TErrorCode exists(const PluginSDK::String& key, bool& found) override {
        ++existsCalls;
        found = holds(key);
        return existsResult;
    }
    static bool holds(const PluginSDK::String& key) {
        return std::any_of(kRegistry.begin(), kRegistry.end(),
                           [&key](const auto& entry) { return key == entry.first; });
    }
    TErrorCode getResult = 0, existsResult = 0;
    const wchar_t* madeKey = nullptr;
    int getCalls = 0, existsCalls = 0;
    int* destroyed = nullptr;
};

TEST(UnpreloadedDataProviderTest, ReplacesKeysGetsOncePerKeyAndPassesFailuresOn) {
    int destroyed = 0;
    FakeUnpreloadedProvider provider;
    provider.destroyed = &destroyed;
    PluginSDK::StringVector keys;
    keys.addString(L"stale");
    EXPECT_EQ(provider.enumPackages(RegistryPackage::PATCH, keys), 0);
    EXPECT_EQ(keysOf(keys), Lines{"x1"});
    RegistryPackage* first = nullptr;
    RegistryPackage* second = nullptr;
    bool exists = false;
    EXPECT_EQ(provider.getPackage(L"p1", nullptr), -101);
    EXPECT_EQ(provider.getPackage(L"zz", &first), REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST);
    EXPECT_EQ(provider.packageExists(L"p1", exists), 0);
    EXPECT_TRUE(exists);
    EXPECT_EQ(provider.getPackage(L"p1", &first), 0);
    EXPECT_EQ(provider.getPackage(L"p1", &second), 0);
    EXPECT_EQ(first, second);
    EXPECT_EQ(provider.getCalls, 2);  // "zz" and the first "p1"
    provider.existsResult = -8;
    EXPECT_EQ(provider.packageExists(L"p1", exists), 0);  // cached now
    EXPECT_EQ(provider.packageExists(L"p2", exists), -8);
    EXPECT_EQ(provider.existsCalls, 2);
    provider.madeKey = L"p1";  // get("p2") now makes a second package keyed "p1"
    EXPECT_EQ(provider.getPackage(L"p2", &second), 0);
    EXPECT_EQ(second, first);
    EXPECT_EQ(destroyed, 1);  // the rejected package is freed
    provider.getResult = -7;
    EXPECT_EQ(provider.getPackage(L"s1", &second), -7);
    EXPECT_EQ(second, nullptr);
}

}  // namespace
}  // namespace RegPluginTest
