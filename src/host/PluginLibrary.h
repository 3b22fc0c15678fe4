// The plug-in library, loaded the way a host agent loads it: dlopen, the entry
// points createPlugin / destroyPlugin found with dlsym, one plug-in object.
#ifndef REGSCAN_PLUGINLIBRARY_H
#define REGSCAN_PLUGINLIBRARY_H

#include <memory>
#include <string>

#include "PluginSDK/Plugin.h"

namespace regscan {

class PluginLibrary {
  public:
    // Loads the library at `path`, resolves its entry points and creates the plug-in
    // object. On failure returns null, sets `error` to a plain-words reason (with
    // dlerror's text where there is one) and leaves nothing loaded.
    static std::unique_ptr<PluginLibrary> open(const std::string& path, std::string& error);

    // Calls cleanupPlugin, hands the object to destroyPlugin and unloads the library.
    // Every pointer obtained from the plug-in (expressions, iterators, names, symbol
    // addresses) must be released or dropped before.
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    // The plug-in object; valid for the life of this PluginLibrary.
    PluginSDK::Plugin& plugin() { return *m_plugin; }
    const std::string& path() const { return m_path; }
    // The address of the exported symbol `name`, or null when the library has none;
    // valid for the life of this PluginLibrary.
    const void* findSymbol(const char* name) const;

  private:
    PluginLibrary() = default;
    std::string m_path;
    void* m_handle = nullptr;
    PluginSDK::Plugin* m_plugin = nullptr;
    PluginSDK::DestroyPluginFunction m_destroy = nullptr;
};

// The plug-in regscan loads without --plugin, the first that exists of
// libRegPlugin.so in ../lib relative to the running program (the build tree), in
// ../LIBDIR/regscan (an installed tree: REGSCAN_PLUGIN_INSTALL_DIR) and beside the
// program; the first when none exists (so the load error names it).
std::string defaultPluginPath();

}  // namespace regscan

#endif
