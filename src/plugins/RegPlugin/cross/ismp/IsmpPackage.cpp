#include "cross/ismp/IsmpPackage.h"

#include "PluginSDK/StringVector.h"
#include "RegPluginConstants.h"
#include "common/PreloadedDataProvider.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

IsmpPackage::IsmpPackage() : RegistryPackage(PluginSDK::String(), providerTag()) {}

IsmpPackage::~IsmpPackage() = default;

TErrorCode IsmpPackage::retrieveProperty(const PluginSDK::String& name) {
    RegistryDataProvider* provider =
        RegistryDataProviderFactory::getDataProvider(RegistryDataProviderFactory::ISMP_PROVIDER);
    if (provider == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    // Only the load matters, not the keys. A preloaded provider is asked to load
    // directly: enumerating would move its one cursor and cut short a caller that is
    // walking its packages with getFirst / getNext while asking for properties.
    auto* preloaded = dynamic_cast<PreloadedDataProvider*>(provider);
    TErrorCode rc;
    if (preloaded != nullptr) {
        rc = preloaded->preload();
    } else {
        PluginSDK::StringVector scratch;
        rc = provider->enumPackages(RegistryPackage::ANY, scratch);
    }
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    return properties.find(name) != properties.end() ? PluginSDK::RESULT_OK
                                                     : REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
}

const PluginSDK::String& IsmpPackage::providerTag() {
    static const PluginSDK::String tag(L"ISMP");
    return tag;
}

}  // namespace RegPlugin
