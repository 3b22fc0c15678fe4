#include "common/RegistryDataProviderFactory.h"

#include "RegPluginConstants.h"
#include "base/String.h"
#include "common/PluginTrace.h"
#include "cross/any/InstallAnywhereDataProvider.h"
#include "cross/corvu/CorvuDataProvider.h"
#include "cross/dpkg/DpkgDataProvider.h"
#include "cross/ismp/IsmpDataProvider.h"
#include "cross/orlo/OrloDataProvider.h"
#include "cross/rpm/LegacyRpmDataProvider.h"
#include "cross/tessel/TesselDataProvider.h"

namespace RegPlugin {

uint32_t RegistryDataProviderFactory::m_MaxDataProviders = 8;
RegistryDataProvider** RegistryDataProviderFactory::m_DataProviders = nullptr;

namespace {

// The keyword of the Orlo class; no exported constant names it.
const wchar_t* const PROVIDER_KEYWORD_ORLO = L"orlo";

// Classes whose provider a test removed with setDataProvider(which, nullptr): they
// stay without provider until cleanup() or another setDataProvider.
uint32_t s_Suppressed = 0;

bool isSuppressed(uint32_t which) {
    return which < 32 && (s_Suppressed & (1u << which)) != 0;
}

void setSuppressed(uint32_t which, bool suppressed) {
    if (which >= 32) {
        return;
    }
    if (suppressed) {
        s_Suppressed |= 1u << which;
    } else {
        s_Suppressed &= ~(1u << which);
    }
}

// A new, unloaded provider of `which`, or null for a class whose registry this build
// does not read. Each registry adds its case here.
RegistryDataProvider* createDataProvider(RegistryDataProviderFactory::DataProviderClass which) {
    switch (which) {
        case RegistryDataProviderFactory::OS_PROVIDER:
        case RegistryDataProviderFactory::RPM_PROVIDER:
            return new LegacyRpmDataProvider();
        case RegistryDataProviderFactory::DPKG_PROVIDER:
            return new DpkgDataProvider();
        case RegistryDataProviderFactory::TESSEL_PROVIDER:
            // The message ids of the name, version, uninstall-data and state lines.
            return new TesselDataProvider(String(L"PDXMS0164I"), String(L"PDXMS0165I"),
                                          String(L"PDXMS0804I"), String(L"PDXMS0166I"));
        case RegistryDataProviderFactory::ISMP_PROVIDER:
            return new IsmpDataProvider();
        case RegistryDataProviderFactory::CORVU_PROVIDER:
            return new CorvuDataProvider();
        case RegistryDataProviderFactory::ANYWHERE_PROVIDER:
            return new InstallAnywhereDataProvider();
        case RegistryDataProviderFactory::ORLO_PROVIDER:
            return new OrloDataProvider();
        case RegistryDataProviderFactory::INVALID_PROVIDER:
            break;
    }
    return nullptr;
}

// Providers live as long as the loaded library: when a host unloads it, they and
// their packages are released with it.
struct ReleaseProvidersAtUnload {
    ~ReleaseProvidersAtUnload() { RegistryDataProviderFactory::cleanup(); }
} releaseProvidersAtUnload;

}  // namespace

RegistryDataProvider* RegistryDataProviderFactory::getDataProvider(DataProviderClass i_Which) {
    if (m_DataProviders == nullptr) {
        REG_ASSERT(m_MaxDataProviders > 0);
        m_DataProviders = new RegistryDataProvider*[m_MaxDataProviders]();
    }
    REG_ASSERT(m_DataProviders != 0);
    // Compared as unsigned: a negative class fails too.
    const uint32_t which = static_cast<uint32_t>(i_Which);
    REG_ASSERT(which < m_MaxDataProviders);
    if (m_DataProviders[which] == nullptr && which <= static_cast<uint32_t>(ORLO_PROVIDER) &&
        !isSuppressed(which)) {
        m_DataProviders[which] = createDataProvider(i_Which);
    }
    return m_DataProviders[which];
}

RegistryDataProviderFactory::DataProviderClass RegistryDataProviderFactory::getDataProviderClass(
    const wchar_t* keyword) {
    if (keyword == nullptr) {
        return INVALID_PROVIDER;
    }
    static const struct {
        const wchar_t* const* keyword;
        DataProviderClass which;
    } keywords[] = {
        {&REG_PLUGIN_PROPERTY_PROVIDER_ISMP, ISMP_PROVIDER},
        {&REG_PLUGIN_PROPERTY_PROVIDER_CORVU, CORVU_PROVIDER},
        {&REG_PLUGIN_PROPERTY_PROVIDER_TESSEL, TESSEL_PROVIDER},
        {&REG_PLUGIN_PROPERTY_PROVIDER_ANY, ANYWHERE_PROVIDER},
        {&REG_PLUGIN_PROPERTY_PROVIDER_OS, OS_PROVIDER},
        {&PROVIDER_KEYWORD_ORLO, ORLO_PROVIDER},
        {&REG_PLUGIN_PROPERTY_PROVIDER_RPM, RPM_PROVIDER},
    };
    const String text(keyword);
    for (const auto& entry : keywords) {
        if (text.compareTo(*entry.keyword) == 0) {
            return entry.which;
        }
    }
    return INVALID_PROVIDER;
}

const wchar_t* RegistryDataProviderFactory::getDataProviderName(DataProviderClass which) {
    if (which < 0 || static_cast<uint32_t>(which) >= m_MaxDataProviders || which > ORLO_PROVIDER ||
        which == DPKG_PROVIDER || m_DataProviders == nullptr) {
        return nullptr;
    }
    switch (which) {
        case OS_PROVIDER:
            return REG_PLUGIN_PROPERTY_PROVIDER_OS;
        case ISMP_PROVIDER:
            return REG_PLUGIN_PROPERTY_PROVIDER_ISMP;
        case CORVU_PROVIDER:
            return REG_PLUGIN_PROPERTY_PROVIDER_CORVU;
        case TESSEL_PROVIDER:
            return REG_PLUGIN_PROPERTY_PROVIDER_TESSEL;
        case RPM_PROVIDER:
            return REG_PLUGIN_PROPERTY_PROVIDER_RPM;
        case ANYWHERE_PROVIDER:
            return REG_PLUGIN_PROPERTY_PROVIDER_ANY;
        case ORLO_PROVIDER:
            return PROVIDER_KEYWORD_ORLO;
        case DPKG_PROVIDER:
        case INVALID_PROVIDER:
            break;
    }
    return nullptr;
}

void RegistryDataProviderFactory::cleanup() {
    s_Suppressed = 0;
    if (m_DataProviders == nullptr) {
        return;
    }
    for (uint32_t which = 0; which < m_MaxDataProviders; ++which) {
        delete m_DataProviders[which];
        m_DataProviders[which] = nullptr;
    }
    delete[] m_DataProviders;
    m_DataProviders = nullptr;
}

void RegistryDataProviderFactory::setDataProvider(DataProviderClass i_Which,
                                                  RegistryDataProvider* provider) {
    if (m_DataProviders == nullptr) {
        REG_ASSERT(m_MaxDataProviders > 0);
        m_DataProviders = new RegistryDataProvider*[m_MaxDataProviders]();
    }
    const uint32_t which = static_cast<uint32_t>(i_Which);
    REG_ASSERT(which < m_MaxDataProviders);
    if (m_DataProviders[which] != provider) {
        delete m_DataProviders[which];
        m_DataProviders[which] = provider;
    }
    setSuppressed(which, provider == nullptr);
}

}  // namespace RegPlugin
