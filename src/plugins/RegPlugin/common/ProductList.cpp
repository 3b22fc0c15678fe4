#include "common/ProductList.h"

#include <cwchar>

#include "RegPluginConstants.h"
#include "base/GlobFilter.h"

namespace RegPlugin {

ProductList::ProductList() = default;

ProductList::~ProductList() = default;

TErrorCode ProductList::getVectorResult(PluginSDK::StringVector& out) {
    out.removeAll();
    RegistryPackage::Type type = RegistryPackage::ANY;
    TErrorCode rc = getProductType(type);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    const wchar_t* filter = getProperty(REG_PLUGIN_PROPERTY_FILTER);
    if (filter == nullptr) {
        return enumPackages(type, out);
    }
    GlobFilter glob;
    const int compiled = glob.compile(filter, false);
    if (compiled != GlobFilter::GLOB_OK) {
        return compiled;
    }
    PluginSDK::StringVector scratch;
    rc = enumPackages(type, scratch);
    if (rc == PluginSDK::RESULT_OK) {
        for (const PluginSDK::String& key : scratch) {
            if (glob.match(key) == GlobFilter::GLOB_OK) {
                out.addString(key);
            }
        }
    }
    return rc;
}

TErrorCode ProductList::getProductType(RegistryPackage::Type& type) {
    const wchar_t* text = getProperty(REG_PLUGIN_PROPERTY_TYPE);
    if (text == nullptr || std::wcscmp(text, REG_PLUGIN_PROPERTY_TYPE_ANY) == 0) {
        type = RegistryPackage::ANY;
    } else if (std::wcscmp(text, REG_PLUGIN_PROPERTY_TYPE_PRODUCT) == 0) {
        type = RegistryPackage::PRODUCT;
    } else if (std::wcscmp(text, REG_PLUGIN_PROPERTY_TYPE_SUBPRODUCT) == 0) {
        type = RegistryPackage::SUBPRODUCT;
    } else if (std::wcscmp(text, REG_PLUGIN_PROPERTY_TYPE_PATCH) == 0) {
        type = RegistryPackage::PATCH;
    } else {
        return REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE;
    }
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
