#include "common/PreloadedDataProvider.h"

#include "RegPluginConstants.h"
#include "common/PluginTrace.h"

namespace RegPlugin {

PreloadedDataProvider::PreloadedDataProvider() : preloadState(NOT_LOADED) {}

PreloadedDataProvider::~PreloadedDataProvider() {
    preloadState = NOT_LOADED;
}

TErrorCode PreloadedDataProvider::preload() {
    // The common case in lookup loops: loaded, nothing to trace.
    if (preloadState == LOADED) {
        return PluginSDK::RESULT_OK;
    }
    REG_TRACE_SCOPE("PreloadedDataProvider::preload()");
    if (preloadState == LOAD_FAILED) {
        REG_TRACE(1, "program preload previously failed");
        return REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST;
    }
    REG_TRACE(3, "going to preload packages");
    const TErrorCode rc = load();
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "Unable to preload packages ( err = ", rc, " )");
        preloadState = LOAD_FAILED;
        return REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST;
    }
    if (Tracer::isEnabled(3)) {
        REG_TRACE(3, size(), " packages successfully preloaded");
    }
    preloadState = LOADED;
    return PluginSDK::RESULT_OK;
}

TErrorCode PreloadedDataProvider::enumPackages(RegistryPackage::Type type,
                                               PluginSDK::StringVector& keys) {
    REG_TRACE_SCOPE(
        "PreloadedDataProvider::enumPackages(RegistryPackage::Type, PluginSDK::StringVector&)");
    const TErrorCode rc = preload();
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    for (RegistryPackage* package = getFirst(); package != nullptr; package = getNext()) {
        if (type == RegistryPackage::ANY || package->type == type) {
            keys.addString(package->key);
        }
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode PreloadedDataProvider::getPackage(const PluginSDK::String& key,
                                             RegistryPackage** package) {
    REG_TRACE_SCOPE(
        "PreloadedDataProvider::getPackage(const PluginSDK::String&, RegistryPackage**)");
    if (package == nullptr) {
        REG_TRACE(1, "invalid parameters");
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    const TErrorCode rc = preload();
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    *package = find(key);
    if (*package == nullptr) {
        REG_TRACE(3, "package does not exist");
        return REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST;
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode PreloadedDataProvider::packageExists(const PluginSDK::String& key, bool& exists) {
    REG_TRACE_SCOPE("PreloadedDataProvider::packageExists(const PluginSDK::String&, bool)");
    const TErrorCode rc = preload();
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    exists = find(key) != nullptr;
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
