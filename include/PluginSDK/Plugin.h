// The base of a plug-in object, and the entry points a plug-in library exports.
//
// A plug-in library exports, unmangled:
//     PluginSDK::Plugin* createPlugin();
//     void destroyPlugin(PluginSDK::Plugin*);
// The host calls createPlugin, setProperty for each configured property,
// initializePlugin (which announces the expression names with addExpression),
// createExpression / destroyExpression for each evaluation, and at the end
// cleanupPlugin and destroyPlugin.
#ifndef PLUGINSDK_PLUGIN_H
#define PLUGINSDK_PLUGIN_H

#include <string>
#include <vector>

#include "PluginSDK/Expression.h"
#include "PluginSDK/Types.h"
#include "PluginSDK/UnknownSoftwareRepository.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API Plugin {
  public:
    Plugin();
    virtual ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    virtual void setProperty(const wchar_t* name, const wchar_t* value) = 0;
    virtual PluginVersion getVersion() const = 0;
    virtual const wchar_t* getName() const = 0;
    // A new iterator, owned by the caller.
    virtual UnknownSoftwareRepository* getUnknownSoftware() = 0;
    virtual TErrorCode initializePlugin() = 0;
    virtual TErrorCode cleanupPlugin() = 0;
    // Sets `*out` to a new expression owned by the caller until destroyExpression.
    virtual TErrorCode createExpression(const wchar_t* name, Expression** out) = 0;
    virtual TErrorCode destroyExpression(Expression* expression) = 0;

    // Announces one expression name. Returns 0; ERROR_NULL_ARGUMENT for a null name.
    // A name announced again keeps its first place.
    TErrorCode addExpression(const wchar_t* name);
    // Host side: the announced names, in the order of their first announcement.
    const std::vector<std::wstring>& getExpressionNames() const { return m_expressionNames; }

  private:
    std::vector<std::wstring> m_expressionNames;
};

typedef Plugin* (*CreatePluginFunction)();
typedef void (*DestroyPluginFunction)(Plugin*);

}  // namespace PluginSDK

#endif
