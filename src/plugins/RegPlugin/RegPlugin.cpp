#include "RegPlugin.h"

#include <cwchar>

#include "ExpressionTable.h"
#include "PluginSDK/Configuration.h"
#include "PluginSDK/PluginResult.h"
#include "PluginSDK/String.h"
#include "RegPluginConstants.h"
#include "common/PluginTrace.h"
#include "cross/package/PackageInfoUnknown.h"

namespace PluginSDK {

namespace {

bool equals(const wchar_t* left, const wchar_t* right) {
    return std::wcscmp(left, right) == 0;
}

// True when the property may be stored with this value. Both are non-null.
bool isAcceptedProperty(const wchar_t* name, const wchar_t* value) {
    if (equals(name, REG_PLUGIN_PROPERTY_UPDATE_CABINET_PATH) ||
        equals(name, REG_PLUGIN_PROPERTY_PDX_DIRECTORY)) {
        return true;
    }
    const wchar_t* const truthValued[] = {
        REG_PLUGIN_PROPERTY_SHOW_SUPERSEDED_WINDOWS_UPDATES,
        REG_PLUGIN_PROPERTY_SHOW_UNCOMMITTED_PDX_PKG,
        REG_PLUGIN_PROPERTY_SHOW_REMOVED_PDX_PKG,
        REG_PLUGIN_PROPERTY_LIST_UNMATCHED_SOFTWARE,
        REG_PLUGIN_PROPERTY_FAIL_ON_BROKEN_CAB,
    };
    for (const wchar_t* truthName : truthValued) {
        if (equals(name, truthName)) {
            return equals(value, PLUGIN_RESULT_FALSE) || equals(value, PLUGIN_RESULT_TRUE);
        }
    }
    return false;
}

}  // namespace

RegPlugin::RegPlugin() = default;

RegPlugin::~RegPlugin() = default;

void RegPlugin::setProperty(const wchar_t* name, const wchar_t* value) {
    REG_TRACE_SCOPE("RegPlugin::setProperty(const wchar_t *, const wchar_t *)");
    if (name == nullptr || value == nullptr || !isAcceptedProperty(name, value)) {
        REG_TRACE(2, "Unexpected plugin property, skipping. ", "plugin=[", REG_PLUGIN_NAME, "] ",
                  "name=[", name, "] ", "value=[", value, "]");
        return;
    }
    Configuration* configuration = nullptr;
    Configuration::get(REG_PLUGIN_NAME, configuration);
    REG_ASSERT(configuration != 0);
    configuration->setProperty(String(name), String(value));
}

PluginVersion RegPlugin::getVersion() const {
    PluginVersion version;
    version.version = 1;
    version.release = 1;
    version.modification = 1;
    version.fixLevel = 1;
    return version;
}

const wchar_t* RegPlugin::getName() const {
    return REG_PLUGIN_NAME;
}

UnknownSoftwareRepository* RegPlugin::getUnknownSoftware() {
    return new ::RegPlugin::PackageInfoUnknown();
}

TErrorCode RegPlugin::initializePlugin() {
    // The announcement order is part of the interface. "OrloProductExists" is
    // left out on purpose.
    const wchar_t* const names[] = {
        REG_PLUGIN_EXPRESSION_PACKAGEINFOEQUAL,  REG_PLUGIN_EXPRESSION_PACKAGEINFOMATCH,
        REG_PLUGIN_EXPRESSION_ISMPPRODUCTLIST,   REG_PLUGIN_EXPRESSION_ISMPPRODUCTEXISTS,
        REG_PLUGIN_EXPRESSION_ISMPPRODUCTINFO,   REG_PLUGIN_EXPRESSION_VOIDPRODUCTLIST,
        REG_PLUGIN_EXPRESSION_VOIDPRODUCTEXISTS, REG_PLUGIN_EXPRESSION_VOIDPRODUCTINFO,
        REG_PLUGIN_EXPRESSION_RPMPRODUCTLIST,    REG_PLUGIN_EXPRESSION_RPMPRODUCTEXISTS,
        REG_PLUGIN_EXPRESSION_RPMPRODUCTINFO,    REG_PLUGIN_EXPRESSION_DPKGPRODUCTLIST,
        REG_PLUGIN_EXPRESSION_DPKGPRODUCTEXISTS, REG_PLUGIN_EXPRESSION_DPKGPRODUCTINFO,
        REG_PLUGIN_EXPRESSION_CORVULIST,         REG_PLUGIN_EXPRESSION_CORVUEXISTS,
        REG_PLUGIN_EXPRESSION_CORVUINFO,         REG_PLUGIN_EXPRESSION_TESSELLIST,
        REG_PLUGIN_EXPRESSION_TESSELEXISTS,      REG_PLUGIN_EXPRESSION_TESSELINFO,
        REG_PLUGIN_EXPRESSION_ANYLIST,           REG_PLUGIN_EXPRESSION_ANYEXISTS,
        REG_PLUGIN_EXPRESSION_ANYINFO,           REG_PLUGIN_EXPRESSION_ORLOPRODUCTLIST,
        REG_PLUGIN_EXPRESSION_ORLOPRODUCTINFO,
    };
    TErrorCode result = RESULT_OK;
    for (const wchar_t* name : names) {
        result = addExpression(name);
    }
    return result;
}

TErrorCode RegPlugin::cleanupPlugin() {
    return Configuration::cleanup(REG_PLUGIN_NAME);
}

TErrorCode RegPlugin::createExpression(const wchar_t* name, Expression** out) {
    if (name == nullptr || out == nullptr) {
        return ERROR_NULL_ARGUMENT;
    }
    const ::RegPlugin::ExpressionTableRow* row = ::RegPlugin::findExpression(name);
    if (row == nullptr) {
        *out = nullptr;
        return ERROR_NO_SUCH_EXPRESSION;
    }
    *out = row->create();
    return RESULT_OK;
}

TErrorCode RegPlugin::destroyExpression(Expression* expression) {
    delete expression;
    return RESULT_OK;
}

}  // namespace PluginSDK
