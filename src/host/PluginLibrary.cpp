#include "PluginLibrary.h"

#include <dlfcn.h>
#include <unistd.h>

#include <exception>
#include <vector>

namespace regscan {

namespace {

std::string lastDlError(const char* fallback) {
    const char* text = dlerror();
    return text != nullptr ? text : fallback;
}

}  // namespace

std::unique_ptr<PluginLibrary> PluginLibrary::open(const std::string& path, std::string& error) {
    dlerror();
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = "cannot load plug-in " + path + ": " + lastDlError("dlopen failed");
        return nullptr;
    }
    dlerror();
    void* create = dlsym(handle, "createPlugin");
    if (create == nullptr) {
        error = "cannot load plug-in " + path +
                ": no entry point createPlugin: " + lastDlError("symbol not found");
        dlclose(handle);
        return nullptr;
    }
    dlerror();
    void* destroy = dlsym(handle, "destroyPlugin");
    if (destroy == nullptr) {
        error = "cannot load plug-in " + path +
                ": no entry point destroyPlugin: " + lastDlError("symbol not found");
        dlclose(handle);
        return nullptr;
    }
    PluginSDK::Plugin* plugin = nullptr;
    try {
        plugin = reinterpret_cast<PluginSDK::CreatePluginFunction>(create)();
    } catch (const std::exception& e) {
        error = "cannot load plug-in " + path + ": createPlugin failed: " + e.what();
        dlclose(handle);
        return nullptr;
    } catch (...) {
        error = "cannot load plug-in " + path + ": createPlugin failed";
        dlclose(handle);
        return nullptr;
    }
    if (plugin == nullptr) {
        error = "cannot load plug-in " + path + ": createPlugin gave no plug-in object";
        dlclose(handle);
        return nullptr;
    }
    std::unique_ptr<PluginLibrary> library(new PluginLibrary);
    library->m_path = path;
    library->m_handle = handle;
    library->m_plugin = plugin;
    library->m_destroy = reinterpret_cast<PluginSDK::DestroyPluginFunction>(destroy);
    return library;
}

PluginLibrary::~PluginLibrary() {
    m_plugin->cleanupPlugin();
    m_destroy(m_plugin);
    dlclose(m_handle);
}

const void* PluginLibrary::findSymbol(const char* name) const {
    return dlsym(m_handle, name);
}

std::string defaultPluginPath() {
    static const char kLibraryName[] = "libRegPlugin.so";
    std::vector<char> buffer(4096);
    ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size() - 1);
    if (length <= 0) {
        return kLibraryName;
    }
    std::string program(buffer.data(), static_cast<std::size_t>(length));
    std::string directory = program.substr(0, program.rfind('/') + 1);  // ends in "/"
    std::string::size_type parentEnd = directory.rfind('/', directory.size() - 2);
    std::string parent =
        parentEnd == std::string::npos ? directory + "../" : directory.substr(0, parentEnd + 1);
    // The build tree, an installed tree, then beside the program.
    const std::string candidates[] = {
        parent + "lib/" + kLibraryName,
        parent + REGSCAN_PLUGIN_INSTALL_DIR + "/" + kLibraryName,
        directory + kLibraryName,
    };
    for (const std::string& candidate : candidates) {
        if (access(candidate.c_str(), F_OK) == 0) {
            return candidate;
        }
    }
    return candidates[0];
}

}  // namespace regscan
