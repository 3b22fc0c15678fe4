// A software-distribution product directory made by the tests: "pdx_env.sh" puts
// the product's bin directory on PATH and exports PDX_HOME; "bin/pdxcat" insists on
// both, prints the file "listing" and then runs the shell text `tail`.
#ifndef TESTS_PLUGINS_REGPLUGIN_CROSS_TESSEL_TESSELPRODUCT_H
#define TESTS_PLUGINS_REGPLUGIN_CROSS_TESSEL_TESSELPRODUCT_H

#include <stdlib.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "../../PluginTestSupport.h"
#include "PluginSDK/Configuration.h"
#include "RegPluginConstants.h"

namespace RegPluginTest {

// One catalog record as the listing tool prints it: message lines ended by CR LF.
// An empty `uninstData` or `state` leaves that line out.
inline std::string tesselRecord(const std::string& name, const std::string& version,
                                const std::string& uninstData, const std::string& state) {
    std::string text = "PDXMS0164I Package name: " + name + "\r\n" +
                       "PDXMS0165I Package version: " + version + "\r\n";
    if (!uninstData.empty())
        text += "PDXMS0804I Uninstall data: " + uninstData + "\r\n";
    if (!state.empty())
        text += "PDXMS0166I Package state: " + state + "\r\n";
    // The tool separates records with a message line and a blank line.
    return text + "PDXMS0167I ----------\r\n\r\n";
}

// The header the tool prints before the records.
inline std::string tesselHeader() {
    return "PDXMS0001I Catalog listing of PDX_HOME\r\n\r\n";
}

class TesselProduct {
  public:
    // `directoryName` is the product directory's name inside the scratch directory.
    explicit TesselProduct(const std::string& listing = "", const std::string& tail = "exit 0",
                           const std::string& directoryName = "product")
        : m_path(m_dir.path() + "/" + directoryName) {
        ::mkdir(m_path.c_str(), 0755);
        ::mkdir((m_path + "/bin").c_str(), 0755);
        setEnvScript(
            "PDX_HOME=\"$PWD\"; export PDX_HOME\n"
            "PATH=\"$PWD/bin:$PATH\"; export PATH\n");
        setListing(listing);
        setPdxcat(
            "#!/bin/sh\n"
            "[ \"$1\" = -p ] || { echo 'usage: pdxcat -p' >&2; exit 2; }\n"
            "[ -n \"$PDX_HOME\" ] || { echo 'PDX_HOME is not set' >&2; exit 3; }\n"
            "cat \"$PDX_HOME/listing\"\n" +
            tail + "\n");
    }

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

    void setListing(const std::string& listing) const { write("listing", listing, 0644); }
    void setEnvScript(const std::string& script) const { write("pdx_env.sh", script, 0644); }
    void setPdxcat(const std::string& script) const { write("bin/pdxcat", script, 0755); }

    // The text of a file of the product directory ("" when it is missing).
    std::string read(const std::string& name) const {
        std::ifstream in(file(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

  private:
    void write(const std::string& name, const std::string& content, mode_t mode) const {
        const std::string target = file(name);
        std::ofstream(target, std::ios::binary) << content;
        ::chmod(target.c_str(), mode);
    }

    TempDir m_dir;
    std::string m_path;
};

// Properties of the plug-in's configuration store, discarded with the store when
// this object goes.
class ScopedConfiguration {
  public:
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

// Sets an environment variable while it lives (null removes it), then restores it.
class ScopedEnv {
  public:
    ScopedEnv(const char* name, const char* value) : m_name(name) {
        const char* old = std::getenv(name);
        m_had = old != nullptr;
        if (m_had)
            m_old = old;
        if (value != nullptr)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }
    ~ScopedEnv() {
        if (m_had)
            ::setenv(m_name, m_old.c_str(), 1);
        else
            ::unsetenv(m_name);
    }

  private:
    const char* m_name;
    bool m_had;
    std::string m_old;
};

}  // namespace RegPluginTest

#endif
