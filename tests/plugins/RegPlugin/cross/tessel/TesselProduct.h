// A product directory made by the tests: "pdx_env.sh" puts bin on PATH and exports
// PDX_HOME; "bin/pdxcat -p" insists on both, prints "listing", then runs `tail`.
#ifndef TESTS_PLUGINS_REGPLUGIN_CROSS_TESSEL_TESSELPRODUCT_H
#define TESTS_PLUGINS_REGPLUGIN_CROSS_TESSEL_TESSELPRODUCT_H

#include <stdlib.h>
#include <sys/stat.h>

#include <fstream>
#include <string>

#include "../../PluginTestSupport.h"
#include "PluginSDK/Configuration.h"
#include "RegPluginConstants.h"

namespace RegPluginTest {

// One catalog record as the tool prints it (CR LF lines); an empty `uninstData` or
// `state` leaves that line out.
inline std::string tesselRecord(const std::string& name, const std::string& version,
                                const std::string& uninstData, const std::string& state) {
    std::string text = "PDXMS0164I Package name: " + name + "\r\n" +
                       "PDXMS0165I Package version: " + version + "\r\n";
    if (!uninstData.empty())
        text += "PDXMS0804I Uninstall data: " + uninstData + "\r\n";
    if (!state.empty())
        text += "PDXMS0166I Package state: " + state + "\r\n";
    return text + "PDXMS0167I ----------\r\n\r\n";
}

const char kTesselHeader[] = "PDXMS0001I Catalog listing of PDX_HOME\r\n\r\n";

class TesselProduct {
  public:
    explicit TesselProduct(const std::string& listing = "", const std::string& tail = "exit 0",
                           const std::string& directoryName = "product")
        : m_path(m_dir.path() + "/" + directoryName) {
        ::mkdir(m_path.c_str(), 0755);
        ::mkdir((m_path + "/bin").c_str(), 0755);
        setEnvScript("PDX_HOME=\"$PWD\"; export PDX_HOME\nPATH=\"$PWD/bin:$PATH\"; export PATH\n");
        setListing(listing);
        write("bin/pdxcat",
              "#!/bin/sh\n[ \"$1\" = -p ] || { echo 'usage: pdxcat -p' >&2; exit 2; }\n"
              "[ -n \"$PDX_HOME\" ] || { echo 'PDX_HOME is not set' >&2; exit 3; }\n"
              "cat \"$PDX_HOME/listing\"\n" +
                  tail + "\n");
        ::chmod(file("bin/pdxcat").c_str(), 0755);
    }

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }
    void setListing(const std::string& listing) const { write("listing", listing); }
    void setEnvScript(const std::string& script) const { write("pdx_env.sh", script); }

  private:
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
    }

    TempDir m_dir;
    std::string m_path;
};

// The plug-in's configuration store, emptied before and after.
struct ScopedConfiguration {
    ScopedConfiguration() { PluginSDK::Configuration::cleanup(REG_PLUGIN_NAME); }
    ~ScopedConfiguration() { PluginSDK::Configuration::cleanup(REG_PLUGIN_NAME); }
    // A null value leaves the property out.
    ScopedConfiguration& set(const wchar_t* name, const wchar_t* value) {
        if (value != nullptr)
            store()->setProperty(name, value);
        return *this;
    }
    ScopedConfiguration& set(const wchar_t* name, const std::string& value) {
        store()->setProperty(name, PluginSDK::String(value.c_str()));
        return *this;
    }
    static PluginSDK::Configuration* store() {
        PluginSDK::Configuration* configuration = nullptr;
        PluginSDK::Configuration::get(REG_PLUGIN_NAME, configuration);
        return configuration;
    }
};

// Sets (null: removes) an environment variable while it lives.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const char* value) : m_name(name) {
        const char* old = std::getenv(name);
        if (old != nullptr)
            m_old = old;
        m_had = old != nullptr;
        value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
    }
    ~ScopedEnv() { m_had ? ::setenv(m_name, m_old.c_str(), 1) : ::unsetenv(m_name); }

  private:
    const char* m_name;
    bool m_had;
    std::string m_old;
};

}  // namespace RegPluginTest

#endif
