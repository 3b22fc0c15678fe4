// The built plug-in loaded with dlopen and driven through its entry points, as a
// host does. Nothing of the plug-in is linked into the test; the test and the
// plug-in share libhostsdk (configuration stores, tracer).
//
//     LoadedPlugin library;                    // dlopen(REGSCAN_PLUGIN_PATH)
//     ASSERT_TRUE(library.loaded()) << library.error();
//     LoadedPlugin::PluginPtr plugin = library.create();
//     LoadedPlugin::ExpressionPtr e = LoadedPlugin::createExpression(*plugin, L"...");
//
// Objects made from the library must be destroyed before the LoadedPlugin: declare
// it first.
#ifndef REGSCAN_TESTS_INTEGRATION_LOADEDPLUGIN_H
#define REGSCAN_TESTS_INTEGRATION_LOADEDPLUGIN_H

#include <dlfcn.h>

#include <memory>
#include <string>

#include "PluginSDK/Plugin.h"

class LoadedPlugin {
  public:
    struct PluginDeleter {
        PluginSDK::DestroyPluginFunction destroy = nullptr;
        void operator()(PluginSDK::Plugin* plugin) const { destroy(plugin); }
    };
    typedef std::unique_ptr<PluginSDK::Plugin, PluginDeleter> PluginPtr;

    struct ExpressionDeleter {
        PluginSDK::Plugin* plugin = nullptr;
        void operator()(PluginSDK::Expression* expression) const {
            plugin->destroyExpression(expression);
        }
    };
    typedef std::unique_ptr<PluginSDK::Expression, ExpressionDeleter> ExpressionPtr;

    explicit LoadedPlugin(const char* path = REGSCAN_PLUGIN_PATH)
        : m_handle(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (m_handle == nullptr) {
            m_error = dlerror();
            return;
        }
        m_create = reinterpret_cast<PluginSDK::CreatePluginFunction>(symbol("createPlugin"));
        m_destroy = reinterpret_cast<PluginSDK::DestroyPluginFunction>(symbol("destroyPlugin"));
        if (m_create == nullptr || m_destroy == nullptr) {
            m_error = std::string("entry points missing in ") + path;
        }
    }
    ~LoadedPlugin() {
        if (m_handle != nullptr) {
            dlclose(m_handle);
        }
    }
    LoadedPlugin(const LoadedPlugin&) = delete;
    LoadedPlugin& operator=(const LoadedPlugin&) = delete;

    // True when the library and both entry points were found; error() says why not.
    bool loaded() const { return m_error.empty(); }
    const std::string& error() const { return m_error; }

    // The address of the exported symbol `name`, or null.
    void* symbol(const char* name) const {
        return m_handle == nullptr ? nullptr : dlsym(m_handle, name);
    }
    // The exported variable `name` of type T, or null.
    template <class T>
    const T* variable(const char* name) const {
        return static_cast<const T*>(symbol(name));
    }

    PluginSDK::CreatePluginFunction createFunction() const { return m_create; }
    PluginSDK::DestroyPluginFunction destroyFunction() const { return m_destroy; }

    // A new plug-in object, released through destroyPlugin.
    PluginPtr create() const { return PluginPtr(m_create(), PluginDeleter{m_destroy}); }

    // The expression `name` of `plugin`, released through destroyExpression; null
    // when createExpression fails (its code then in `*code` when given).
    static ExpressionPtr createExpression(PluginSDK::Plugin& plugin, const wchar_t* name,
                                          TErrorCode* code = nullptr) {
        PluginSDK::Expression* expression = nullptr;
        TErrorCode result = plugin.createExpression(name, &expression);
        if (code != nullptr) {
            *code = result;
        }
        return ExpressionPtr(result == 0 ? expression : nullptr, ExpressionDeleter{&plugin});
    }

  private:
    void* m_handle;
    std::string m_error;
    PluginSDK::CreatePluginFunction m_create = nullptr;
    PluginSDK::DestroyPluginFunction m_destroy = nullptr;
};

#endif
