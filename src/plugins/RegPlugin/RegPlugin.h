// The plug-in object that the host drives, and the library's two entry points.
//
// The host calls createPlugin, setProperty for each configured property,
// initializePlugin, then createExpression / destroyExpression around each
// evaluation, and finally cleanupPlugin and destroyPlugin. The object keeps no
// state of its own: configuration lives in the host's store named REG_PLUGIN_NAME,
// package data in the providers, which outlive the object.
#ifndef REGPLUGIN_REGPLUGIN_H
#define REGPLUGIN_REGPLUGIN_H

#include "PluginSDK/Plugin.h"
#include "RegPluginExport.h"

namespace PluginSDK {

class RegPlugin : public Plugin {
  public:
    RegPlugin();
    ~RegPlugin() override;

    // Stores an accepted property in the configuration store REG_PLUGIN_NAME.
    // Accepted: "updateCabinetPath" and "pdxDirectory" with any value; the
    // truth-valued names ("showSupersededWindowsUpdates", "showUncommittedPackages",
    // "showRemovedPackages", "listUnmatchedSoftware", "failOnBrokenCab") only with
    // PLUGIN_RESULT_TRUE or PLUGIN_RESULT_FALSE. Names compare exactly. Anything
    // else, including a null name or value, stores nothing and writes one level 2
    // trace line naming the property and its value.
    void setProperty(const wchar_t* name, const wchar_t* value) override;
    // 1.1.1.1.
    PluginVersion getVersion() const override;
    // REG_PLUGIN_NAME; valid for as long as the library is loaded.
    const wchar_t* getName() const override;
    // A new iterator over unmatched software, owned by the caller.
    UnknownSoftwareRepository* getUnknownSoftware() override;
    // Announces the expression names in their fixed order; returns the result of
    // the last announcement.
    TErrorCode initializePlugin() override;
    // Discards the configuration store; returns Configuration::cleanup's result.
    // Providers are left alone.
    TErrorCode cleanupPlugin() override;
    // Sets `*out` to a new expression of the class registered for `name` (exact,
    // case-sensitive) and returns 0. Unknown name: `*out` null, ERROR_NO_SUCH_EXPRESSION
    // (-10008). Null `name` or `out`: ERROR_NULL_ARGUMENT (-101), `*out` untouched.
    // The expression belongs to the caller until destroyExpression.
    TErrorCode createExpression(const wchar_t* name, Expression** out) override;
    // Deletes `expression` (null is ignored); returns 0.
    TErrorCode destroyExpression(Expression* expression) override;
};

}  // namespace PluginSDK

extern "C" {

// A new plug-in object, to be released with destroyPlugin. An exception from the
// constructor passes on; nothing is leaked then.
REG_PLUGIN_EXPORT PluginSDK::Plugin* createPlugin();
// Deletes a plug-in from createPlugin; null is ignored.
REG_PLUGIN_EXPORT void destroyPlugin(PluginSDK::Plugin* plugin);

}  // extern "C"

#endif
