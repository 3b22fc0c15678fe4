// Helpers shared by the fuzz harnesses: inputs as files the parsers open by path,
// and a walk over what a provider loaded, the way a query reads it.
#ifndef REGSCAN_FUZZ_FUZZSUPPORT_H
#define REGSCAN_FUZZ_FUZZSUPPORT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"
#include "RegPluginConstants.h"
#include "common/PreloadedDataProvider.h"
#include "common/RegistryDataProvider.h"
#include "common/RegistryPackage.h"

namespace fuzz {

// Trace lines at level 3 go to /dev/null: the harnesses then also run the code that
// formats them, without flooding the output. Call from LLVMFuzzerInitialize, before
// the first tracer is made.
inline void traceEverythingToNowhere() {
    setenv("HOSTSDK_TRACE_LEVEL", "3", 1);
    setenv("HOSTSDK_TRACE_FILE", "/dev/null", 1);
}

// An in-memory file that parsers open by path (/proc/self/fd/N); its content is
// replaced by each write().
class MemoryFile {
  public:
    MemoryFile() : m_fd(memfd_create("fuzz-input", 0)) {
        if (m_fd < 0) {
            std::perror("memfd_create");
            std::abort();
        }
        m_path = "/proc/self/fd/" + std::to_string(m_fd);
    }
    ~MemoryFile() { close(m_fd); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void write(const uint8_t* data, std::size_t size) {
        if (ftruncate(m_fd, 0) != 0) {
            std::abort();
        }
        std::size_t done = 0;
        while (done < size) {
            const ssize_t n = pwrite(m_fd, data + done, size - done, static_cast<off_t>(done));
            if (n <= 0) {
                std::abort();
            }
            done += static_cast<std::size_t>(n);
        }
    }

    const std::string& path() const { return m_path; }
    std::wstring widePath() const { return std::wstring(m_path.begin(), m_path.end()); }

  private:
    int m_fd;
    std::string m_path;
};

// A provider whose harness parses the input itself: marked loaded, so that the
// queries of walkPackages read what was parsed instead of running the real load.
template <class Provider>
class Parsed : public Provider {
  public:
    using Provider::Provider;
    void markLoaded() { this->preloadState = RegPlugin::PreloadedDataProvider::LOADED; }
};

// Lists every package of `provider` and reads the fields that queries and the
// inventory read, so that values made on demand are made too.
inline void walkPackages(RegPlugin::RegistryDataProvider& provider) {
    static const wchar_t* const kFields[] = {REG_PLUGIN_PROPERTY_FIELD_NAME,
                                             REG_PLUGIN_PROPERTY_FIELD_VERSION,
                                             REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION,
                                             REG_PLUGIN_PROPERTY_FIELD_VENDOR,
                                             REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION,
                                             REG_PLUGIN_PROPERTY_FIELD_INSTDIR,
                                             REG_PLUGIN_PROPERTY_FIELD_UNINSTDATA,
                                             REG_PLUGIN_PROPERTY_FIELD_TYPE};
    PluginSDK::StringVector keys;
    if (provider.enumPackages(RegPlugin::RegistryPackage::ANY, keys) != 0) {
        return;
    }
    for (const PluginSDK::String& key : keys) {
        RegPlugin::RegistryPackage* package = nullptr;
        if (provider.getPackage(key, &package) != 0 || package == nullptr) {
            continue;
        }
        for (const wchar_t* field : kFields) {
            PluginSDK::String value;
            package->getProperty(PluginSDK::String(field), value);
        }
    }
}

}  // namespace fuzz

#endif
