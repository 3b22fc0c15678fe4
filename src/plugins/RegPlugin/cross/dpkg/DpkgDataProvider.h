// The packages that dpkg records as installed, read from its status file.
#ifndef REGPLUGIN_CROSS_DPKG_DPKGDATAPROVIDER_H
#define REGPLUGIN_CROSS_DPKG_DPKGDATAPROVIDER_H

#include <string>

#include "RegPluginExport.h"
#include "common/PreloadedDataProvider.h"

namespace RegPlugin {

// The status file that the factory's provider reads.
REG_PLUGIN_EXPORT extern const char* const DPKG_STATUS_FILE;  // "/var/lib/dpkg/status"

class DpkgDataProvider : public PreloadedDataProvider {
  public:
    // Reads `statusFile` (tests pass fixtures; the factory uses the default). Null
    // stands for the default. Nothing is read before the first query.
    explicit DpkgDataProvider(const char* statusFile = DPKG_STATUS_FILE);
    ~DpkgDataProvider() override;

    // Reads the status file and stores one DpkgPackage per installed package,
    // keyed by its bare name; the first paragraph of a name wins. Returns 0, or
    // REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND when the file cannot be opened (the cache
    // is then untouched, and a level 1 trace line names the path and the errno). A
    // read error ends reading like the end of the file: the packages read up to
    // there are kept, a level 2 trace line tells, and 0 is returned. Lines of any
    // length, CRLF line ends, NUL bytes and bytes that are not UTF-8 are read
    // without loss of the paragraphs around them.
    TErrorCode load() override;

  private:
    std::string m_statusFile;
};

}  // namespace RegPlugin

#endif
