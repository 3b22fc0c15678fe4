#include "cross/package/PackageInfoEqual.h"

#include <cstdlib>
#include <cwchar>

#include "PluginSDK/PluginResult.h"
#include "PluginSDK/StringVector.h"
#include "RegPluginConstants.h"
#include "common/PluginTrace.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/package/PackageDescription.h"

namespace RegPlugin {

PackageInfoEqual::PackageInfoEqual() {
    REG_TRACE_SCOPE("PackageInfoEqual::PackageInfoEqual()");
}

PackageInfoEqual::~PackageInfoEqual() {
    REG_TRACE_SCOPE("PackageInfoEqual::~PackageInfoEqual()");
}

void PackageInfoEqual::disposeExpression() {}

TErrorCode PackageInfoEqual::validateProperties() {
    REG_TRACE_SCOPE("PackageInfoEqual::validateProperties()");
    TErrorCode rc = PluginSDK::RESULT_OK;
    if (getProperty(REG_PLUGIN_PROPERTY_CODE) == nullptr) {
        REG_TRACE(1, "cannot retrieve \"code\" property");
        rc = REG_PLUGIN_ERROR_UNSPECIFIED_CODE;
    } else if (getProperty(REG_PLUGIN_PROPERTY_VALUE) == nullptr) {
        REG_TRACE(1, "cannot retrieve \"value\" property");
        rc = REG_PLUGIN_ERROR_UNSPECIFIED_VALUE;
    }
    const wchar_t* provider = getProperty(REG_PLUGIN_PROPERTY_PROVIDER);
    if (provider == nullptr) {
        REG_TRACE(1, "cannot retrieve \"provider\" property");
        return REG_PLUGIN_ERROR_UNSPECIFIED_PROVIDER;
    }
    if (std::wcscmp(provider, REG_PLUGIN_PROPERTY_PROVIDER_ANY) == 0 ||
        std::wcscmp(provider, REG_PLUGIN_PROPERTY_PROVIDER_ISMP) == 0 ||
        std::wcscmp(provider, REG_PLUGIN_PROPERTY_PROVIDER_OS) == 0) {
        return rc;
    }
    REG_TRACE(1, "\"provider\" property is invalid:", provider);
    return REG_PLUGIN_ERROR_INVALID_PROVIDER;
}

TErrorCode PackageInfoEqual::getScalarResult(PluginSDK::String& result) {
    REG_TRACE_SCOPE("PackageInfoEqual::getScalarResult(PluginSDK::String&)");
    result = static_cast<const wchar_t*>(nullptr);
    bool found = false;
    TErrorCode rc = validateProperties();
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "invalid properties");
    } else {
        const wchar_t* code = getProperty(REG_PLUGIN_PROPERTY_CODE);
        const wchar_t* value = getProperty(REG_PLUGIN_PROPERTY_VALUE);
        const wchar_t* provider = getProperty(REG_PLUGIN_PROPERTY_PROVIDER);
        if (code == nullptr || value == nullptr || provider == nullptr) {
            REG_TRACE(1, "at least a necessary field was missing");
        } else {
            const PluginSDK::String codeText(code);
            const PluginSDK::String valueText(value);
            const bool any = std::wcscmp(provider, REG_PLUGIN_PROPERTY_PROVIDER_ANY) == 0;
            if (any || std::wcscmp(provider, REG_PLUGIN_PROPERTY_PROVIDER_OS) == 0) {
                rc = lookupPackageInNativeRegistry(codeText, valueText, found);
                if (rc != PluginSDK::RESULT_OK) {
                    REG_TRACE(1, "error looking up package in native registry");
                }
            }
            if (!found && (any || std::wcscmp(provider, REG_PLUGIN_PROPERTY_PROVIDER_ISMP) == 0)) {
                rc = lookupPackageInISMPRegistry(codeText, valueText, found);
                if (rc != PluginSDK::RESULT_OK) {
                    REG_TRACE(1, "error looking up package in ISMP registry");
                }
            }
        }
    }
    if (found) {
        REG_TRACE(3, "package with matching characteristics found");
        result = PLUGIN_RESULT_TRUE;
    } else {
        REG_TRACE(3, "no match found for given package");
        result = PLUGIN_RESULT_FALSE;
    }
    return rc;
}

TErrorCode PackageInfoEqual::lookupPackageInNativeRegistry(const PluginSDK::String& code,
                                                           const PluginSDK::String& value,
                                                           bool& found) {
    REG_TRACE_SCOPE(
        "PackageInfoEqual::lookupPackageInNativeRegistry(const PluginSDK::String&, const "
        "PluginSDK::String&)");
    found = false;
    PluginSDK::String description;
    RegistryDataProvider* provider =
        RegistryDataProviderFactory::getDataProvider(RegistryDataProviderFactory::OS_PROVIDER);
    if (provider == nullptr) {
        REG_TRACE(1, "cannot access OS provider");
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    REG_TRACE(3, "OS provider available");
    bool exists = false;
    TErrorCode rc = provider->packageExists(code, exists);
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(3, "processing error");
        return rc;
    }
    if (!exists) {
        // Compared as the empty description: kept as the query has always answered.
        REG_TRACE(3, "package NOT found in this registry");
    } else {
        REG_TRACE(3, "package found");
        RegistryPackage* package = nullptr;
        rc = provider->getPackage(code, &package);
        if (rc != PluginSDK::RESULT_OK) {
            REG_TRACE(1, "package retrieval failed");
            return rc;
        }
        REG_TRACE(3, "package retrieved");
        REG_ASSERT(package != 0);
        rc = appendPackageDescription(*package, description, regTrace_);
        if (rc != PluginSDK::RESULT_OK) {
            return rc;
        }
    }
    REG_TRACE(3, "processing completed with success, checking value: ", value, " against ",
              description);
    found = description == value;
    return PluginSDK::RESULT_OK;
}

TErrorCode PackageInfoEqual::lookupPackageInISMPRegistry(const PluginSDK::String& code,
                                                         const PluginSDK::String& value,
                                                         bool& found) {
    REG_TRACE_SCOPE(
        "PackageInfoEqual::lookupPackageInISMPRegistry(const PluginSDK::String&, const "
        "PluginSDK::String&)");
    found = false;
    // One description for the whole walk: each candidate appends to it.
    PluginSDK::String description;
    RegistryDataProvider* provider =
        RegistryDataProviderFactory::getDataProvider(RegistryDataProviderFactory::ISMP_PROVIDER);
    if (provider == nullptr) {
        REG_TRACE(1, "cannot access ISMP provider");
        return REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER;
    }
    REG_TRACE(3, "ISMP provider available");
    PluginSDK::StringVector keys;
    TErrorCode rc = provider->enumPackages(RegistryPackage::ANY, keys);
    if (rc == REG_PLUGIN_ERROR_NO_VALID_ISMP_REGISTRY_FILE) {
        return PluginSDK::RESULT_OK;
    }
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "cannot get list of packages");
        return rc;
    }
    REG_TRACE(3, "list of packages available");
    for (int i = 0; i < keys.size() && rc == PluginSDK::RESULT_OK; ++i) {
        const PluginSDK::String& key = keys[i];
        REG_ASSERT(key.length() > 0);
        REG_TRACE(3, "checking package ", key);
        wchar_t* uuid = wcsdup(key);
        REG_ASSERT(uuid != 0);
        if (wchar_t* at = std::wcsrchr(uuid, L'@')) {
            *at = L'\0';
        }
        const bool candidate = code == uuid;
        std::free(uuid);
        if (!candidate) {
            continue;
        }
        RegistryPackage* package = nullptr;
        rc = provider->getPackage(key, &package);
        if (rc != PluginSDK::RESULT_OK) {
            REG_TRACE(1, "package retrieval failed");
            break;
        }
        REG_TRACE(3, "package retrieved");
        REG_ASSERT(package != 0);
        rc = appendPackageDescription(*package, description, regTrace_);
        if (rc != PluginSDK::RESULT_OK) {
            break;
        }
        if (description == value) {
            REG_TRACE(3, "matching item found");
            found = true;
            break;
        }
        REG_TRACE(3, "no matching item found so far");
    }
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "processing aborted, existing...");
        return rc;
    }
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
