#include "cross/package/PackageDescription.h"

#include "RegPluginConstants.h"
#include "common/PluginTrace.h"

namespace RegPlugin {

TErrorCode appendPackageDescription(RegistryPackage& package, PluginSDK::String& description,
                                    Trace& regTrace_) {
    static const struct {
        const wchar_t* const* field;
        const char* failure;
        bool blankBefore;
    } parts[] = {
        {&REG_PLUGIN_PROPERTY_FIELD_NAME, "cannot retrieve property \"name\"", false},
        {&REG_PLUGIN_PROPERTY_FIELD_VERSION, "cannot retrieve property \"version\"", true},
        {&REG_PLUGIN_PROPERTY_FIELD_VENDOR, "cannot retrieve property \"vendor\"", true},
    };
    PluginSDK::String values[3];
    for (int i = 0; i < 3; ++i) {
        const TErrorCode rc = package.getProperty(*parts[i].field, values[i]);
        if (rc != PluginSDK::RESULT_OK) {
            REG_TRACE(1, parts[i].failure);
            return rc;
        }
    }
    for (int i = 0; i < 3; ++i) {
        if (!values[i].trim().empty()) {
            if (parts[i].blankBefore) {
                description += L' ';
            }
            description += values[i];
        }
    }
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
