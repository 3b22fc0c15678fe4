// The packages that dpkg records as installed, read from its status file.
#ifndef REGPLUGIN_CROSS_DPKG_DPKGDATAPROVIDER_H
#define REGPLUGIN_CROSS_DPKG_DPKGDATAPROVIDER_H

#include <string>

#include "common/PreloadedDataProvider.h"

namespace RegPlugin {

// The status file that the factory's provider reads.
extern const char* const DPKG_STATUS_FILE;  // "/var/lib/dpkg/status"

class DpkgDataProvider : public PreloadedDataProvider {
public:
    // Reads `statusFile` (tests pass fixtures; the factory uses the default).
    explicit DpkgDataProvider(const char* statusFile = DPKG_STATUS_FILE);
    ~DpkgDataProvider() override;

    // Reads the status file and stores one DpkgPackage per installed package,
    // keyed by its bare name; the first paragraph of a name wins. Returns 0, or
    // REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND when the file cannot be opened.
    TErrorCode load() override;

private:
    std::string m_statusFile;
};

}  // namespace RegPlugin

#endif
