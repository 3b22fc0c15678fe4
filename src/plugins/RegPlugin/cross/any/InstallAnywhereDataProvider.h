// The products and components that InstallAnywhere installers record in their
// global XML registry.
#ifndef REGPLUGIN_CROSS_ANY_INSTALLANYWHEREDATAPROVIDER_H
#define REGPLUGIN_CROSS_ANY_INSTALLANYWHEREDATAPROVIDER_H

#include "PluginSDK/String.h"
#include "RegPluginExport.h"
#include "common/PreloadedDataProvider.h"
#include "trace/Trace.h"
#include "xml/Node.h"

namespace RegPlugin {

// The registry file that the factory's provider reads.
REG_PLUGIN_EXPORT extern const wchar_t* const
    ANYWHERE_REGISTRY_FILE;  // "/var/.com.zerog.registry.xml"

class InstallAnywhereDataProvider : public PreloadedDataProvider {
  public:
    // Reads the registry at `registryFile` (tests pass fixtures; the factory uses
    // the default; null stands for the default). Nothing is read before the first
    // query; the registry path stays empty until findRegistry().
    explicit InstallAnywhereDataProvider(const wchar_t* registryFile = ANYWHERE_REGISTRY_FILE);
    ~InstallAnywhereDataProvider() override;

    // Sets the registry path to the one fixed place (the constructor's file) and
    // traces it at level 3 ("registry location='" path "'"). Always true: this is
    // where another search would go.
    bool findRegistry();

    // Reads the registry into the cache. Always returns 0: a missing registry
    // (level 2 "Registry not found in expected location."), a document that does
    // not parse (level 1 "Failed to parse registry") or a tree without the expected
    // shape leaves the cache empty or partial, and only the trace tells.
    TErrorCode load() override;

    // The second half of load(): adds the products and components of a parsed
    // registry document whose root element is `root` (null adds nothing).
    // Root-level "products" hold "product" elements (attributes id, name, version,
    // location, last_modified; "vendor" children with id and name, the last one
    // wins); root-level "components" hold "component" elements (id, name, version,
    // location, vendor). Products and components share one key space, the "id"
    // attribute: the first occurrence of a key in document order wins and later
    // ones are traced and dropped. Every child met is traced at level 3 ("Found node
    // name='...'"). The tree is only read; the caller keeps it.
    void loadTree(const Node* root);

    // The registry path found by findRegistry(); empty before.
    const PluginSDK::String& getRegistryPath() const { return path; }

  private:
    // The children of one "products" / "components" element, traced into
    // `regTrace_` (the load's scope).
    void addProducts(Trace& regTrace_, const Node& products);
    void addComponents(Trace& regTrace_, const Node& components);
    // Adds `package` unless its key is taken; a package not taken is destroyed.
    // `what` names it in the trace ("package" or "component").
    void store(Trace& regTrace_, RegistryPackage* package, const char* what);

    PluginSDK::String m_RegistryFile;
    PluginSDK::String path;
};

}  // namespace RegPlugin

#endif
