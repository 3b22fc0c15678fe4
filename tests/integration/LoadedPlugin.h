// The built plug-in loaded with dlopen, as a host loads it. Objects made from the
// library must be destroyed before the LoadedPlugin: declare it first.
#ifndef REGSCAN_TESTS_INTEGRATION_LOADEDPLUGIN_H
#define REGSCAN_TESTS_INTEGRATION_LOADEDPLUGIN_H

#include <dlfcn.h>

#include <functional>
#include <memory>
#include <string>

#include "PluginSDK/Plugin.h"

class LoadedPlugin {
  public:
    typedef std::unique_ptr<PluginSDK::Plugin, PluginSDK::DestroyPluginFunction> PluginPtr;
    typedef std::unique_ptr<PluginSDK::Expression, std::function<void(PluginSDK::Expression*)>>
        ExpressionPtr;

    LoadedPlugin()
        : m_handle(dlopen(REGSCAN_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL)),
          m_error(m_handle != nullptr ? "" : dlerror()) {}
    ~LoadedPlugin() {
        if (m_handle != nullptr) {
            dlclose(m_handle);
        }
    }

    bool loaded() const { return m_handle != nullptr; }
    const std::string& error() const { return m_error; }
    // The exported variable `name` of type T, or null.
    template <class T>
    const T* variable(const char* name) const {
        return static_cast<const T*>(symbol(name));
    }
    void* symbol(const char* name) const {
        return m_handle == nullptr ? nullptr : dlsym(m_handle, name);
    }
    // A new plug-in object from createPlugin, released through destroyPlugin.
    PluginPtr create() const {
        auto create = reinterpret_cast<PluginSDK::CreatePluginFunction>(symbol("createPlugin"));
        auto destroy = reinterpret_cast<PluginSDK::DestroyPluginFunction>(symbol("destroyPlugin"));
        return create && destroy ? PluginPtr(create(), destroy) : PluginPtr(nullptr, nullptr);
    }

    // The expression `name`, released through destroyExpression; null when
    // createExpression fails, its code then in `*code` when given.
    static ExpressionPtr createExpression(PluginSDK::Plugin& plugin, const wchar_t* name,
                                          TErrorCode* code = nullptr) {
        PluginSDK::Expression* expression = nullptr;
        TErrorCode result = plugin.createExpression(name, &expression);
        if (code != nullptr) {
            *code = result;
        }
        return ExpressionPtr(result == 0 ? expression : nullptr,
                             [&plugin](PluginSDK::Expression* e) { plugin.destroyExpression(e); });
    }

  private:
    void* m_handle;
    std::string m_error;
};

#endif
