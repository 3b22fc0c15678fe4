#include "common/UnpreloadedDataProvider.h"

#include "RegPluginConstants.h"
#include "common/PluginTrace.h"

namespace RegPlugin {

UnpreloadedDataProvider::UnpreloadedDataProvider() = default;

// ownPackages and ownIndex own nothing: only their elements go with them.
UnpreloadedDataProvider::~UnpreloadedDataProvider() = default;

TErrorCode UnpreloadedDataProvider::enumPackages(RegistryPackage::Type type,
                                                 PluginSDK::StringVector& keys) {
    REG_TRACE_SCOPE(
        "UnpreloadedDataProvider::enumPackages(RegistryPackage::Type, PluginSDK::StringVector&)");
    keys.removeAll();
    return enumerate(type, keys);
}

TErrorCode UnpreloadedDataProvider::getPackage(const PluginSDK::String& key,
                                               RegistryPackage** o_Package) {
    REG_TRACE_SCOPE(
        "UnpreloadedDataProvider::getPackage(const PluginSDK::String&, RegistryPackage**)");
    if (o_Package == nullptr) {
        REG_TRACE(1, "invalid parameters");
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    *o_Package = find(key);
    if (*o_Package != nullptr) {
        return PluginSDK::RESULT_OK;
    }
    const TErrorCode rc = get(key, *o_Package);
    if (rc != PluginSDK::RESULT_OK) {
        REG_ASSERT(*o_Package == 0);
        REG_TRACE(1, "Unable to get the package for key ", key);
        return rc;
    }
    RegistryPackage* fetched = *o_Package;
    if (fetched == nullptr) {
        REG_TRACE(3, "package ", key, " does not exist");
        return REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
    }
    add(fetched);
    RegistryPackage* held = find(fetched->key);
    if (held != fetched) {
        // The cache already held a package under the fetched package's own key and
        // kept it (the first package of a key wins). Nobody would own the fetched
        // one, so it goes, and the caller gets the one the cache holds.
        delete fetched;
        *o_Package = held;
        if (held == nullptr) {
            REG_TRACE(3, "package ", key, " does not exist");
            return REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
        }
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode UnpreloadedDataProvider::packageExists(const PluginSDK::String& key, bool& found) {
    REG_TRACE_SCOPE("UnpreloadedDataProvider::packageExists(const PluginSDK::String&, bool)");
    if (find(key) != nullptr) {
        found = true;
        return PluginSDK::RESULT_OK;
    }
    const TErrorCode rc = exists(key, found);
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "Unable to check the package for key ", key);
    }
    return rc;
}

}  // namespace RegPlugin
