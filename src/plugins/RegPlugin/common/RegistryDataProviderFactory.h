// Owns the one provider of each provider class for the life of the loaded
// library, and translates between classes and the keywords that queries use.
#ifndef REGPLUGIN_COMMON_REGISTRYDATAPROVIDERFACTORY_H
#define REGPLUGIN_COMMON_REGISTRYDATAPROVIDERFACTORY_H

#include <cstdint>

#include "common/RegistryDataProvider.h"

namespace RegPlugin {

class RegistryDataProviderFactory {
  public:
    enum DataProviderClass : int32_t {
        OS_PROVIDER = 0,        // "os": the rpm database
        ISMP_PROVIDER = 1,      // "ismp"
        CORVU_PROVIDER = 2,     // "corvu"
        TESSEL_PROVIDER = 3,    // "tessel"
        RPM_PROVIDER = 4,       // "rpm": the rpm database, a second instance
        ANYWHERE_PROVIDER = 5,  // "any": the InstallAnywhere registry
        DPKG_PROVIDER = 6,      // no keyword
        ORLO_PROVIDER = 7,      // "orlo"
        INVALID_PROVIDER = 8,
    };

    RegistryDataProviderFactory() = delete;

    // The provider of `which`, created on the first request; null for a class whose
    // registry this build does not read. A class outside the table ends the process
    // (assertion "which < m_MaxDataProviders").
    static RegistryDataProvider* getDataProvider(DataProviderClass which);
    // The class a keyword names: "ismp", "corvu", "tessel", "any", "os", "orlo",
    // "rpm", compared exactly; INVALID_PROVIDER for null or any other text.
    static DataProviderClass getDataProviderClass(const wchar_t* keyword);
    // The keyword of `which`; null for DPKG_PROVIDER, for a class outside the table,
    // and for every class while the table is not allocated (before the first
    // getDataProvider and after cleanup).
    static const wchar_t* getDataProviderName(DataProviderClass which);
    // Destroys every provider (and their packages) and the table; harmless when there
    // is none. Pointers handed out earlier dangle afterwards.
    static void cleanup();

    // Tests: installs `provider` (owned from now on) as the provider of `which`,
    // destroying the one there before (unless it is `provider` itself). Installing
    // null leaves the class without a provider: getDataProvider returns null for it
    // until cleanup() or another setDataProvider for the class. Allocates the table
    // when needed; a class outside the table ends the process.
    static void setDataProvider(DataProviderClass which, RegistryDataProvider* provider);

    static uint32_t m_MaxDataProviders;
    static RegistryDataProvider** m_DataProviders;
};

}  // namespace RegPlugin

#endif
