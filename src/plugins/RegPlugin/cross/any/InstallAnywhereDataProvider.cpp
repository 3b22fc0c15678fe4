#include "cross/any/InstallAnywhereDataProvider.h"

#include <new>

#include "RegPluginConstants.h"
#include "base/File.h"
#include "common/PluginTrace.h"
#include "common/XmlNodes.h"
#include "cross/any/AnywhereXmlParser.h"
#include "cross/any/InstallAnywherePackage.h"

namespace RegPlugin {

const wchar_t* const ANYWHERE_REGISTRY_FILE = L"/var/.com.zerog.registry.xml";

namespace {

// Names made once: attribute keys for the lookups, property names shared by every
// package's map.
struct Names {
    // Attributes.
    String id{L"id"};
    String name{L"name"};
    String version{L"version"};
    String location{L"location"};
    String lastModified{L"last_modified"};
    String vendor{L"vendor"};
    // Properties.
    PluginSDK::String idProperty{L"id"};
    PluginSDK::String nameProperty{REG_PLUGIN_PROPERTY_FIELD_NAME};
    PluginSDK::String versionProperty{REG_PLUGIN_PROPERTY_FIELD_VERSION};
    PluginSDK::String installDirProperty{REG_PLUGIN_PROPERTY_FIELD_INSTDIR};
    PluginSDK::String lastModifiedProperty{REG_PLUGIN_PROPERTY_FIELD_LAST_MODIFIED_DATE};
    PluginSDK::String installDateProperty{REG_PLUGIN_PROPERTY_FIELD_INSTALL_DATE};
    PluginSDK::String vendorProperty{REG_PLUGIN_PROPERTY_FIELD_VENDOR};
    PluginSDK::String vendorIdProperty{REG_PLUGIN_PROPERTY_FIELD_VENDOR_ID};
    // A component's properties go by these literal names.
    PluginSDK::String componentInstallDirProperty{L"installDir"};
    PluginSDK::String componentVendorProperty{L"vendor"};
    PluginSDK::String componentVendorIdProperty{L"vendorId"};
    PluginSDK::String componentLastModifiedProperty{L"lastModified"};
};

const Names& names() {
    static const Names instance;
    return instance;
}

}  // namespace

InstallAnywhereDataProvider::InstallAnywhereDataProvider(const wchar_t* registryFile)
    : m_RegistryFile(registryFile != nullptr ? registryFile : ANYWHERE_REGISTRY_FILE) {}

InstallAnywhereDataProvider::~InstallAnywhereDataProvider() = default;

bool InstallAnywhereDataProvider::findRegistry() {
    REG_TRACE_SCOPE("InstallAnywhereDataProvider::findRegistry()");
    path = m_RegistryFile;
    REG_TRACE(3, "registry location='", path, "'");
    return true;
}

TErrorCode InstallAnywhereDataProvider::load() {
    REG_TRACE_SCOPE("InstallAnywhereDataProvider::load()");
    if (!findRegistry()) {
        REG_TRACE(2, "Failed to find registry location");
        return PluginSDK::RESULT_OK;
    }
    if (!File(path.c_str()).exists()) {
        REG_TRACE(2, "Registry not found in expected location.");
        return PluginSDK::RESULT_OK;
    }
    AnywhereXmlParser parser(path);
    if (parser.getStatus() >= 1) {
        REG_TRACE(1, "Failed to parse registry");
        return PluginSDK::RESULT_OK;
    }
    loadTree(parser.getRootNode());
    return PluginSDK::RESULT_OK;
}

void InstallAnywhereDataProvider::loadTree(const Node* root) {
    REG_TRACE_SCOPE("InstallAnywhereDataProvider::load()");
    const std::list<Node*>* children = childrenOf(root);
    if (children == nullptr) {
        return;
    }
    for (const Node* child : *children) {
        if (!REG_TRACE_FOUND_NODE(child)) {
            continue;
        }
        if (child->getName() == L"products") {
            addProducts(regTrace_, *child);
        } else if (child->getName() == L"components") {
            addComponents(regTrace_, *child);
        }
    }
}

void InstallAnywhereDataProvider::addProducts(Trace& regTrace_, const Node& products) {
    REG_TRACE(3, "Found <products>");
    const std::list<Node*>* children = childrenOf(&products);
    if (children == nullptr) {
        return;
    }
    const Names& n = names();
    for (const Node* child : *children) {
        if (!REG_TRACE_FOUND_NODE(child) || child->getName() != L"product") {
            continue;
        }
        const PluginSDK::String id = attributeOf(*child, n.id);
        const PluginSDK::String name = attributeOf(*child, n.name);
        const PluginSDK::String version = attributeOf(*child, n.version);
        const PluginSDK::String location = attributeOf(*child, n.location);
        const PluginSDK::String lastModified = attributeOf(*child, n.lastModified);
        PluginSDK::String vendorId;
        PluginSDK::String vendorName;
        if (const std::list<Node*>* details = childrenOf(child)) {
            for (const Node* detail : *details) {
                if (REG_TRACE_FOUND_NODE(detail) && detail->getName() == L"vendor") {
                    vendorId = attributeOf(*detail, n.id);
                    vendorName = attributeOf(*detail, n.name);
                }
            }
        }
        REG_TRACE(3, "Found product", " name='", name, "' id='", id, "' version='", version,
                  "' location='", location, "' last modified='", lastModified, "' vendor name ='",
                  vendorName, "' vendor id ='", vendorId, "'");

        InstallAnywherePackage* package = new (std::nothrow) InstallAnywherePackage(id);
        if (package == nullptr) {
            REG_TRACE(2, "Failed to allocate memory for new package");
            continue;
        }
        package->setProperty(n.idProperty, id);
        package->setProperty(n.nameProperty, name);
        package->setProperty(n.versionProperty, version);
        package->setProperty(n.installDirProperty, location);
        package->setProperty(n.lastModifiedProperty, lastModified);
        // The registry keeps no install date of its own.
        package->setProperty(n.installDateProperty, lastModified);
        package->setProperty(n.vendorProperty, vendorName);
        package->setProperty(n.vendorIdProperty, vendorId);
        store(regTrace_, package, "package");
    }
}

void InstallAnywhereDataProvider::addComponents(Trace& regTrace_, const Node& components) {
    REG_TRACE(3, "Found <components>");
    const std::list<Node*>* children = childrenOf(&components);
    if (children == nullptr) {
        return;
    }
    const Names& n = names();
    const PluginSDK::String empty;
    for (const Node* child : *children) {
        if (!REG_TRACE_FOUND_NODE(child) || child->getName() != L"component") {
            continue;
        }
        const PluginSDK::String id = attributeOf(*child, n.id);
        const PluginSDK::String name = attributeOf(*child, n.name);
        const PluginSDK::String version = attributeOf(*child, n.version);
        const PluginSDK::String location = attributeOf(*child, n.location);
        const PluginSDK::String vendor = attributeOf(*child, n.vendor);
        REG_TRACE(3, "Found component", " name='", name, "' id='", id, "' version='", version,
                  "' location='", location, "' vendor='", vendor, "'");

        InstallAnywherePackage* package = new (std::nothrow) InstallAnywherePackage(id);
        if (package == nullptr) {
            REG_TRACE(2, "Failed to allocate memory for new component");
            continue;
        }
        package->type = RegistryPackage::SUBPRODUCT;
        package->setProperty(n.idProperty, id);
        package->setProperty(n.nameProperty, name);
        package->setProperty(n.versionProperty, version);
        package->setProperty(n.componentInstallDirProperty, location);
        package->setProperty(n.componentVendorProperty, vendor);
        package->setProperty(n.componentVendorIdProperty, empty);
        package->setProperty(n.componentLastModifiedProperty, empty);
        store(regTrace_, package, "component");
    }
}

void InstallAnywhereDataProvider::store(Trace& regTrace_, RegistryPackage* package,
                                        const char* what) {
    if (find(package->key) != nullptr) {
        REG_TRACE(1, "Skipped duplicate ", what, " with key='", package->key, "'");
        delete package;
        return;
    }
    if (add(package) != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "Failed to add ", what, " key='", package->key, "'");
        delete package;
    }
}

}  // namespace RegPlugin
