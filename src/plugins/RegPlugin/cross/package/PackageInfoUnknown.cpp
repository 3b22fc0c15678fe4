#include "cross/package/PackageInfoUnknown.h"

#include "PluginSDK/Configuration.h"
#include "PluginSDK/PluginResult.h"
#include "PluginSDK/StringVector.h"
#include "RegPluginConstants.h"
#include "common/PluginTrace.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/package/SearchedProviders.h"

namespace RegPlugin {

PackageInfoUnknown::PackageInfoUnknown() : position(unknownPackages.end()) {}

PackageInfoUnknown::~PackageInfoUnknown() = default;

TErrorCode PackageInfoUnknown::init() {
    unknownPackages.clear();
    position = unknownPackages.end();
    REG_TRACE_SCOPE("PackageInfoUnknown::init()");
    PluginSDK::Configuration* configuration = nullptr;
    PluginSDK::Configuration::get(REG_PLUGIN_NAME, configuration);
    if (configuration == nullptr) {
        REG_TRACE(3, "Configuration for RegPlugin doesnt exists");
        return PluginSDK::RESULT_OK;
    }
    PluginSDK::String value;
    const TErrorCode rc =
        configuration->getProperty(REG_PLUGIN_PROPERTY_LIST_UNMATCHED_SOFTWARE, value);
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(3, "Parameter ", REG_PLUGIN_PROPERTY_LIST_UNMATCHED_SOFTWARE,
                  "does not exists, so skipping");
        return rc;
    }
    if (value == PLUGIN_RESULT_TRUE) {
        return fetchData();
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::fetchData() {
    REG_TRACE_SCOPE("PackageInfoUnknown::fetchData()");
    for (int i = 0; searchedProviders[i] != RegistryDataProviderFactory::INVALID_PROVIDER; ++i) {
        RegistryDataProvider* provider =
            RegistryDataProviderFactory::getDataProvider(searchedProviders[i]);
        if (provider == nullptr) {
            REG_TRACE(1, "cannot access provider [", i, "]");
            continue;
        }
        REG_TRACE(3, "Provider [", i, "] available, extracting data");
        PluginSDK::StringVector keys;
        if (provider->enumPackages(RegistryPackage::ANY, keys) != PluginSDK::RESULT_OK) {
            REG_TRACE(1, "enumeration of provider [", i, "] failed");
            continue;
        }
        const int count = keys.size();
        for (int k = 0; k < count; ++k) {
            RegistryPackage* package = nullptr;
            if (provider->getPackage(keys[k], &package) == PluginSDK::RESULT_OK &&
                package != nullptr && package->matchCount == 0) {
                unknownPackages.push_back(package);
            } else {
                // Written for recognised packages too.
                REG_TRACE(1, "cant retrieve data abour ptovider: ", keys[k]);
            }
        }
    }
    position = unknownPackages.begin();
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getNext() {
    if (position == unknownPackages.end()) {
        return PluginSDK::ERROR_NO_MORE_ITEMS;
    }
    ++position;
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getProvider(PluginSDK::String* out) {
    if (position != unknownPackages.end()) {
        *out = (*position)->provider;
    }
    return PluginSDK::RESULT_OK;
}

void PackageInfoUnknown::copyProperty(const wchar_t* name, PluginSDK::String* out) {
    if (position == unknownPackages.end()) {
        return;
    }
    PluginSDK::String value;
    if ((*position)->getProperty(name, value) == PluginSDK::RESULT_OK) {
        *out = value;
    }
}

TErrorCode PackageInfoUnknown::getVendor(PluginSDK::String* out) {
    copyProperty(REG_PLUGIN_PROPERTY_FIELD_VENDOR, out);
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getName(PluginSDK::String* out) {
    copyProperty(REG_PLUGIN_PROPERTY_FIELD_NAME, out);
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getVersion(PluginSDK::String* out) {
    copyProperty(REG_PLUGIN_PROPERTY_FIELD_VERSION, out);
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoUnknown::getInstallDir(PluginSDK::String* out) {
    copyProperty(REG_PLUGIN_PROPERTY_FIELD_INSTDIR, out);
    return PluginSDK::RESULT_OK;
}

int PackageInfoUnknown::getSize() {
    int size = 0;
    for (auto it = unknownPackages.begin(); it != unknownPackages.end(); ++it) {
        ++size;
    }
    return size;
}

}  // namespace RegPlugin
