#include "cross/package/PackageInfoMatch.h"

#include <cwchar>

#include "PluginSDK/PluginResult.h"
#include "PluginSDK/StringVector.h"
#include "RegPluginConstants.h"
#include "base/GlobFilter.h"
#include "common/PluginTrace.h"
#include "common/PreloadedDataProvider.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/package/SearchedProviders.h"

namespace RegPlugin {

namespace {

// A pattern's text and its compiled form. A field passes when it is the pattern's
// text itself, wild cards and all, or when the compiled pattern matches it.
struct Pattern {
    const PluginSDK::String& text;
    GlobFilter filter;

    bool passes(const wchar_t* field, std::size_t length) const {
        return (length == static_cast<std::size_t>(text.length()) &&
                std::wmemcmp(field, text.c_str(), length) == 0) ||
               filter.match(field) == GlobFilter::GLOB_OK;
    }
    bool passes(const PluginSDK::String& field) const {
        return passes(field.c_str(), static_cast<std::size_t>(field.length()));
    }
};

}  // namespace

PackageInfoMatch::PackageInfoMatch() {
    REG_TRACE_SCOPE("PackageInfoMatch::PackageInfoMatch()");
}

PackageInfoMatch::~PackageInfoMatch() {
    REG_TRACE_SCOPE("PackageInfoMatch::~PackageInfoMatch()");
}

void PackageInfoMatch::disposeExpression() {}

TErrorCode PackageInfoMatch::validateProperties() {
    REG_TRACE_SCOPE("PackageInfoMatch::validateProperties()");
    TErrorCode rc = PluginSDK::RESULT_OK;
    if (getProperty(REG_PLUGIN_PROPERTY_VENDOR) == nullptr) {
        REG_TRACE(1, "cannot retrieve \"vendor\" property");
        rc = REG_PLUGIN_ERROR_UNSPECIFIED_VENDOR;
    } else if (getProperty(REG_PLUGIN_PROPERTY_NAME) == nullptr) {
        REG_TRACE(1, "cannot retrieve \"name\" property");
        rc = REG_PLUGIN_ERROR_UNSPECIFIED_NAME;
    } else if (getProperty(REG_PLUGIN_PROPERTY_VERSION) == nullptr) {
        REG_TRACE(1, "cannot retrieve \"version\" property");
        rc = REG_PLUGIN_ERROR_UNSPECIFIED_VERSION;
    }
    const wchar_t* ignoreCase = getProperty(REG_PLUGIN_PROPERTY_IGNORECASE);
    if (ignoreCase == nullptr) {
        return rc;
    }
    const PluginSDK::String text(ignoreCase);
    if (text != REG_PLUGIN_PROPERTY_IGNORECASE_TRUE &&
        text != REG_PLUGIN_PROPERTY_IGNORECASE_FALSE) {
        REG_TRACE(1, "Wrong optional ignoreCase attribute. Should be ", '"',
                  REG_PLUGIN_PROPERTY_IGNORECASE_TRUE, '"', " or ", '"',
                  REG_PLUGIN_PROPERTY_IGNORECASE_FALSE, '"');
        return REG_PLUGIN_ERROR_INVALID_IGNORECASE;
    }
    return rc;
}

TErrorCode PackageInfoMatch::getScalarResult(PluginSDK::String& result) {
    REG_TRACE_SCOPE("PackageInfoMatch::getScalarResult(PluginSDK::String&)");
    result = static_cast<const wchar_t*>(nullptr);
    bool found = false;
    bool ignoreCase = false;
    TErrorCode rc = validateProperties();
    if (rc != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "invalid properties");
    } else {
        const wchar_t* vendor = getProperty(REG_PLUGIN_PROPERTY_VENDOR);
        const wchar_t* name = getProperty(REG_PLUGIN_PROPERTY_NAME);
        const wchar_t* version = getProperty(REG_PLUGIN_PROPERTY_VERSION);
        const wchar_t* ignoreCaseText = getProperty(REG_PLUGIN_PROPERTY_IGNORECASE);
        if (vendor == nullptr || name == nullptr || version == nullptr) {
            REG_TRACE(1, "at least a necessary field was missing");
        } else {
            if (ignoreCaseText != nullptr &&
                PluginSDK::String(ignoreCaseText) == REG_PLUGIN_PROPERTY_IGNORECASE_TRUE) {
                ignoreCase = true;
            }
            rc = lookupPackageInRegistry(vendor, name, version, found, ignoreCase);
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

TErrorCode PackageInfoMatch::lookupPackageInRegistry(const PluginSDK::String& vendor,
                                                     const PluginSDK::String& name,
                                                     const PluginSDK::String& version, bool& found,
                                                     bool ignoreCase) {
    REG_TRACE_SCOPE("PackageInfoMatch::lookupPackageInRegistry()");
    found = false;
    Pattern vendorPattern{vendor, {}};
    Pattern namePattern{name, {}};
    Pattern versionPattern{version, {}};
    TErrorCode rc = vendorPattern.filter.compile(vendor, ignoreCase);
    if (rc != 0) {
        REG_TRACE(1, "Wrong regular expression in vendor");
        return rc;
    }
    rc = namePattern.filter.compile(name, ignoreCase);
    if (rc != 0) {
        REG_TRACE(1, "Wrong regular expression in name");
        return rc;
    }
    rc = versionPattern.filter.compile(version, ignoreCase);
    if (rc != 0) {
        REG_TRACE(1, "Wrong regular expression in version");
        return rc;
    }

    // Made once per evaluation, not once per package.
    const PluginSDK::String nameField(REG_PLUGIN_PROPERTY_FIELD_NAME);
    const PluginSDK::String versionField(REG_PLUGIN_PROPERTY_FIELD_VERSION);
    const PluginSDK::String vendorField(REG_PLUGIN_PROPERTY_FIELD_VENDOR);
    PluginSDK::String packageVendor;
    PluginSDK::String packageName;
    PluginSDK::String packageVersion;
    for (int i = 0; searchedProviders[i] != RegistryDataProviderFactory::INVALID_PROVIDER; ++i) {
        RegistryDataProvider* provider =
            RegistryDataProviderFactory::getDataProvider(searchedProviders[i]);
        if (provider == nullptr) {
            REG_TRACE(1, "cannot access provider [", i, "]");
            continue;
        }
        REG_TRACE(3, "Provider [", i, "] available, extracting data");
        auto* preloaded = dynamic_cast<PreloadedDataProvider*>(provider);
        if (preloaded != nullptr) {
            // A loaded registry no longer changes: its packages' fields are read
            // once, not once per evaluation. Same packages, order and answers as the
            // walk over the keys below.
            if (preloaded->preload() != PluginSDK::RESULT_OK) {
                REG_TRACE(1, "enumeration of provider [", i, "] failed");
                continue;
            }
            for (const CachedDataProvider::MatchFields& fields : preloaded->matchFields()) {
                if (!fields.complete) {
                    REG_TRACE(1, "cant extract all information about package");
                    continue;
                }
                // Vendor first, then name, then version; the first that fails ends
                // the test.
                if (vendorPattern.passes(fields.vendor, fields.vendorLength) &&
                    namePattern.passes(fields.name, fields.nameLength) &&
                    versionPattern.passes(fields.version, fields.versionLength)) {
                    REG_TRACE(3, "Found software: VENDOR [", fields.vendor, "] NAME [", fields.name,
                              "] VERSION [", fields.version, "]");
                    found = true;
                    ++fields.package->matchCount;
                }
            }
            continue;
        }
        PluginSDK::StringVector keys;
        if (provider->enumPackages(RegistryPackage::ANY, keys) != PluginSDK::RESULT_OK) {
            REG_TRACE(1, "enumeration of provider [", i, "] failed");
            continue;
        }
        const int count = keys.size();
        for (int k = 0; k < count; ++k) {
            const PluginSDK::String& key = keys[k];
            RegistryPackage* package = nullptr;
            if (provider->getPackage(key, &package) != PluginSDK::RESULT_OK || package == nullptr) {
                REG_TRACE(1, "cant retrieve data abour ptovider: ", key);
                continue;
            }
            if (package->getProperty(nameField, packageName) != PluginSDK::RESULT_OK ||
                package->getProperty(versionField, packageVersion) != PluginSDK::RESULT_OK ||
                package->getProperty(vendorField, packageVendor) != PluginSDK::RESULT_OK) {
                REG_TRACE(1, "cant extract all information about package");
                continue;
            }
            if (vendorPattern.passes(packageVendor) && namePattern.passes(packageName) &&
                versionPattern.passes(packageVersion)) {
                REG_TRACE(3, "Found software: VENDOR [", packageVendor, "] NAME [", packageName,
                          "] VERSION [", packageVersion, "]");
                found = true;
                ++package->matchCount;
            }
        }
    }
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
