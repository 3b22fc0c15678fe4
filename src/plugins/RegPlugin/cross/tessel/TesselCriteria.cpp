#include "cross/tessel/TesselCriteria.h"

#include "PluginSDK/Configuration.h"
#include "RegPluginConstants.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPlugin {

TesselDataProvider* TesselCriteria::getProvider() {
    return dynamic_cast<TesselDataProvider*>(
        RegistryDataProviderFactory::getDataProvider(RegistryDataProviderFactory::TESSEL_PROVIDER));
}

TErrorCode TesselCriteria::read(const PluginSDK::Expression& expression,
                                TesselDataProvider& provider, bool& showUncommitted,
                                bool& showRemoved) {
    PluginSDK::Configuration* configuration = nullptr;
    PluginSDK::Configuration::get(REG_PLUGIN_NAME, configuration);
    showUncommitted = false;
    showRemoved = false;
    return provider.getProperties(
        configuration, expression.getProperty(REG_PLUGIN_PROPERTY_SHOW_UNCOMMITTED_PDX_PKG),
        expression.getProperty(REG_PLUGIN_PROPERTY_SHOW_REMOVED_PDX_PKG), &showUncommitted,
        &showRemoved);
}

}  // namespace RegPlugin
