#include "cross/corvu/CorvuDataProvider.h"

#include <new>
#include <string>

#include "PluginSDK/IniFileReader.h"
#include "common/PluginTrace.h"
#include "common/XmlNodes.h"
#include "cross/corvu/CorvuPackage.h"
#include "cross/corvu/InstalledXmlParser.h"

namespace RegPlugin {

const wchar_t* const CORVU_REGISTRY_FILE = L"/etc/.kelvo/registry/Corvu.dat";

namespace {

// Names made once: attribute keys for the lookups, property names shared by every
// package's map.
struct Names {
    // Attributes.
    String id{L"id"};
    String path{L"path"};
    String kind{L"kind"};
    String name{L"name"};
    String version{L"version"};
    String value{L"value"};
    // Properties.
    PluginSDK::String kindProperty{L"kind"};
    PluginSDK::String nameProperty{L"name"};
    PluginSDK::String idProperty{L"id"};
    PluginSDK::String versionProperty{L"version"};
    PluginSDK::String installDirProperty{L"installDir"};
    PluginSDK::String vendorProperty{L"vendor"};
};

const Names& names() {
    static const Names instance;
    return instance;
}

// `directory`, then "/" unless it already ends with one, then `name`.
String pathIn(const std::wstring& directory, const wchar_t* name) {
    std::wstring path = directory;
    if (path.empty() || path.back() != L'/') {
        path += L'/';
    }
    path += name;
    return String(path);
}

}  // namespace

CorvuDataProvider::CorvuDataProvider(const wchar_t* registryFile)
    : m_RegistryFile(registryFile != nullptr ? registryFile : CORVU_REGISTRY_FILE) {}

CorvuDataProvider::~CorvuDataProvider() = default;

bool CorvuDataProvider::findConfigIniFilePath(String& o_Path) {
    REG_TRACE_SCOPE("CorvuDataProvider::findConfigIniFilePath()");
    const PluginSDK::IniFileReader registry(m_RegistryFile.c_str());
    if (!registry.isLoaded()) {
        REG_TRACE(1, "Failed to load Corvu registry file (", m_RegistryFile, ")");
        return false;
    }
    std::wstring location;
    if (!registry.getProperty(L"", L"location", location)) {
        REG_TRACE(1, "Failed to find 'location' key in Corvu registry");
        return false;
    }
    if (location.empty()) {
        // The file read is the registry file; the message has always said config.ini.
        REG_TRACE(1, "Empty key 'location' in config.ini");
        return false;
    }
    o_Path = pathIn(location, L"eclipse/configuration/config.ini");
    REG_TRACE(3, "config.ini file location='", o_Path, "'");
    return true;
}

bool CorvuDataProvider::findInstalledXmlFilePath(const String& i_ConfigIni, String& o_Path) {
    REG_TRACE_SCOPE("CorvuDataProvider::findInstalledXmlFilePath()");
    const PluginSDK::IniFileReader config(i_ConfigIni.getWideString());
    if (!config.isLoaded()) {
        REG_TRACE(1, "Failed to load config='", i_ConfigIni, "'");
        return false;
    }
    std::wstring dataLocation;
    if (!config.getProperty(L"", L"cic.appDataLocation", dataLocation)) {
        REG_TRACE(1, "Failed to find 'cic.appDataLocation' key in config.ini");
        return false;
    }
    if (dataLocation.empty()) {
        REG_TRACE(1, "Empty key 'cic.appDataLocation' in config.ini");
        return false;
    }
    o_Path = pathIn(dataLocation, L"installed.xml");
    REG_TRACE(3, "installed.xml file location='", o_Path, "'");
    return true;
}

TErrorCode CorvuDataProvider::load() {
    REG_TRACE_SCOPE("CorvuDataProvider::load()");
    String configIni;
    if (!findConfigIniFilePath(configIni)) {
        REG_TRACE(1, "Failed to find config.ini location");
        return PluginSDK::RESULT_OK;
    }
    String installedXml;
    if (!findInstalledXmlFilePath(configIni, installedXml)) {
        REG_TRACE(1, "Failed to find installed.xml location");
        return PluginSDK::RESULT_OK;
    }
    InstalledXmlParser parser(installedXml);
    if (parser.getStatus() > 0) {
        REG_TRACE(1, "Failed to parse installed.xml");
        return PluginSDK::RESULT_OK;
    }
    loadTree(parser.getRootNode());
    return PluginSDK::RESULT_OK;
}

void CorvuDataProvider::loadTree(const Node* root) {
    REG_TRACE_SCOPE("CorvuDataProvider::load()");
    const std::list<Node*>* children = childrenOf(root);
    if (children == nullptr) {
        return;
    }
    for (const Node* child : *children) {
        if (REG_TRACE_FOUND_NODE(child) && child->getName() == L"location") {
            addLocation(regTrace_, *child);
        }
    }
}

void CorvuDataProvider::addLocation(Trace& regTrace_, const Node& location) {
    const Names& n = names();
    const PluginSDK::String locationId = attributeOf(location, n.id);
    const PluginSDK::String path = attributeOf(location, n.path);
    REG_TRACE(3, "Found location tag id='", locationId, "' path='", path, "'");
    const std::list<Node*>* children = childrenOf(&location);
    if (children == nullptr) {
        return;
    }
    for (const Node* child : *children) {
        if (!REG_TRACE_FOUND_NODE(child) || child->getName() != L"package") {
            continue;
        }
        const PluginSDK::String kind = attributeOf(*child, n.kind);
        const PluginSDK::String name = attributeOf(*child, n.name);
        const PluginSDK::String id = attributeOf(*child, n.id);
        const PluginSDK::String version = attributeOf(*child, n.version);
        PluginSDK::String vendor;
        if (const std::list<Node*>* properties = childrenOf(child)) {
            String propertyName;
            for (const Node* property : *properties) {
                if (isElementNamed(property, L"property") &&
                    property->getAttributes().getEntry(n.name, propertyName) &&
                    propertyName == L"vendor.name") {
                    vendor = attributeOf(*property, n.value);
                }
            }
        }
        REG_TRACE(3, "Found package tag kind='", kind, "' name='", name, "' id='", id,
                  "' version='", version, "' vendor='", vendor, "'");

        PluginSDK::String key = id;
        key += L"#";
        key += version;
        key += L"@";
        key += path;
        CorvuPackage* package = new (std::nothrow) CorvuPackage(key);
        if (package == nullptr) {
            REG_TRACE(1, "Failed to allocate memory for new package");
            continue;
        }
        package->setProperty(n.kindProperty, kind);
        package->setProperty(n.nameProperty, name);
        package->setProperty(n.idProperty, id);
        package->setProperty(n.versionProperty, version);
        package->setProperty(n.installDirProperty, path);
        package->setProperty(n.vendorProperty, vendor);

        if (find(key) != nullptr) {
            REG_TRACE(1, "Skipped duplicate package with key='", key, "'");
            delete package;
        } else if (add(package) != PluginSDK::RESULT_OK) {
            REG_TRACE(1, "Failed to add package key='", key, "'");
            delete package;
        }
    }
}

}  // namespace RegPlugin
