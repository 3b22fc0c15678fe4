// The packages that the Corvu installer has installed, found through a chain of
// three files: the registry file (CORVU_REGISTRY_FILE, key "location": the
// installer's directory) -> "<location>/eclipse/configuration/config.ini" (key
// "cic.appDataLocation": the installer's data directory) ->
// "<appDataLocation>/installed.xml" (install locations and their packages).
#ifndef REGPLUGIN_CROSS_CORVU_CORVUDATAPROVIDER_H
#define REGPLUGIN_CROSS_CORVU_CORVUDATAPROVIDER_H

#include "PluginSDK/String.h"
#include "RegPluginExport.h"
#include "base/String.h"
#include "common/PreloadedDataProvider.h"
#include "trace/Trace.h"
#include "xml/Node.h"

namespace RegPlugin {

// The first file of the chain, read by the factory's provider.
REG_PLUGIN_EXPORT extern const wchar_t* const
    CORVU_REGISTRY_FILE;  // "/etc/.kelvo/registry/Corvu.dat"

class CorvuDataProvider : public PreloadedDataProvider {
  public:
    // Starts the chain at `registryFile` (tests pass fixtures; the factory uses the
    // default; null stands for the default). Nothing is read before the first query.
    explicit CorvuDataProvider(const wchar_t* registryFile = CORVU_REGISTRY_FILE);
    ~CorvuDataProvider() override;

    // Reads the registry file (an INI file; the key "location" in the section with
    // the empty name, i.e. before any section header) and sets `o_Path` to
    // location + "/" (unless it ends with one) + "eclipse/configuration/config.ini".
    // Returns false, with `o_Path` untouched and a level 1 trace line, when the file
    // does not load, has no such key, or the key is empty.
    bool findConfigIniFilePath(String& o_Path);
    // The same one link further: the key "cic.appDataLocation" of `i_ConfigIni`
    // (section with the empty name), then "/" unless there is one, then
    // "installed.xml".
    bool findInstalledXmlFilePath(const String& i_ConfigIni, String& o_Path);

    // Follows the chain and reads installed.xml into the cache. Always returns 0:
    // each broken link is traced at level 1 with its own message and leaves the
    // cache empty.
    TErrorCode load() override;

    // The last step of load(): adds the packages of a parsed installed.xml whose
    // root element is `root` (null adds nothing). Root-level "location" elements
    // (attributes id, path) hold "package" elements (kind, name, id, version) whose
    // "property" children with name "vendor.name" give the vendor in their "value"
    // (the last one wins). Keys are "id#version@path"; the first package of a key
    // wins, later ones are traced and dropped. Root and location children are
    // traced at level 3 ("Found node name='...'"). The tree is only read.
    void loadTree(const Node* root);

  private:
    // The packages of one "location" element, traced into `regTrace_` (the load's
    // scope).
    void addLocation(Trace& regTrace_, const Node& location);

    PluginSDK::String m_RegistryFile;
};

}  // namespace RegPlugin

#endif
