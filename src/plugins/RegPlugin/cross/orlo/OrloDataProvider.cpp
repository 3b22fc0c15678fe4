#include "cross/orlo/OrloDataProvider.h"

#include "RegPluginConstants.h"
#include "base/File.h"
#include "base/ObjectArray.h"
#include "base/String.h"
#include "common/PluginTrace.h"
#include "cross/orlo/OrloInventory.h"

namespace RegPlugin {

namespace {

void dropTrailingSlash(std::wstring& path) {
    if (path.size() > 1 && path.back() == L'/') {
        path.pop_back();
    }
}

const wchar_t* nameOf(RegistryDataProviderFactory::DataProviderClass which) {
    return RegistryDataProviderFactory::getDataProviderName(which);
}

}  // namespace

OrloDataProvider::OrloDataProvider() = default;

OrloDataProvider::~OrloDataProvider() {
    for (OrloPackage* package : allPackages) {
        delete package;
    }
}

TErrorCode OrloDataProvider::enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& keys,
                                          DataProviderClass which) {
    REG_TRACE_SCOPE(
        "OrloDataProvider::enumPackages(RegistryPackage::Type, PluginSDK::StringVector&, "
        "RegistryDataProviderFactory::DataProviderClass)");
    keys.removeAll();
    return enumerate(type, keys, which);
}

TErrorCode OrloDataProvider::getPackage(const PluginSDK::String& key, RegistryPackage** o_Package,
                                        DataProviderClass which) {
    REG_TRACE_SCOPE(
        "OrloDataProvider::getPackage(const PluginSDK::String&, RegistryPackage**, "
        "RegistryDataProviderFactory::DataProviderClass)");
    if (o_Package == nullptr) {
        REG_TRACE(1, "invalid parameters");
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    return get(key, *o_Package, which);
}

TErrorCode OrloDataProvider::enumerate(RegistryPackage::Type type, PluginSDK::StringVector& keys,
                                       DataProviderClass which) {
    REG_TRACE_SCOPE("OrloDataProvider::enumerate()");
    keys.removeAll();
    if (which == RegistryDataProviderFactory::ORLO_PROVIDER) {
        REG_TRACE(1,
                  "It is impossible to ask this provider to query itself. Choose another provider "
                  "or none.");
        return REG_PLUGIN_ERROR_INVALID_PROVIDER;
    }
    std::vector<DataProviderClass> classes;
    if (which == RegistryDataProviderFactory::INVALID_PROVIDER) {
        for (int i = RegistryDataProviderFactory::OS_PROVIDER;
             i <= RegistryDataProviderFactory::ORLO_PROVIDER; ++i) {
            if (i != RegistryDataProviderFactory::TESSEL_PROVIDER &&
                i != RegistryDataProviderFactory::ORLO_PROVIDER) {
                classes.push_back(static_cast<DataProviderClass>(i));
            }
        }
    } else {
        classes.push_back(which);
    }
    REG_TRACE(3, "Before updateInventory() overall package count is ",
              static_cast<unsigned long>(overallInventory.size()));
    updateInventory(classes);
    REG_TRACE(3, "After updateInventory() overall package count is ",
              static_cast<unsigned long>(overallInventory.size()));

    const Inventory* inventory = &overallInventory;
    if (which != RegistryDataProviderFactory::INVALID_PROVIDER) {
        const auto found = classInventory.find(which);
        if (found == classInventory.end()) {
            REG_TRACE(1, "Failed to find inventory for provider ", nameOf(which));
            inventory = nullptr;
        } else {
            inventory = &found->second;
        }
    }
    int added = 0;
    if (inventory != nullptr) {
        for (const auto& entry : *inventory) {
            if (type == RegistryPackage::ANY || entry.second->type == type) {
                keys.addString(entry.first);
                ++added;
            }
        }
    }
    REG_TRACE(3, "Returning ", added, " packages");
    return PluginSDK::RESULT_OK;
}

TErrorCode OrloDataProvider::get(const PluginSDK::String& key, RegistryPackage*& o_Package,
                                 DataProviderClass which) {
    REG_TRACE_SCOPE("OrloDataProvider::get()");
    REG_TRACE(3, "Looking for product with key: ", key);
    o_Package = nullptr;
    const Inventory* inventory = &overallInventory;
    if (which != RegistryDataProviderFactory::INVALID_PROVIDER) {
        const auto found = classInventory.find(which);
        if (found == classInventory.end()) {
            REG_TRACE(1, "Failed to find inventory for provider ", nameOf(which));
            inventory = nullptr;
        } else {
            inventory = &found->second;
        }
    }
    const auto found = inventory != nullptr ? inventory->find(key) : Inventory::const_iterator();
    if (inventory == nullptr || found == inventory->end()) {
        REG_TRACE(2, "Failed to find product with key: ", key);
    } else {
        o_Package = found->second;
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode OrloDataProvider::enumPackages(RegistryPackage::Type type,
                                          PluginSDK::StringVector& keys) {
    return enumPackages(type, keys, RegistryDataProviderFactory::INVALID_PROVIDER);
}

TErrorCode OrloDataProvider::getPackage(const PluginSDK::String& key, RegistryPackage** o_Package) {
    return getPackage(key, o_Package, RegistryDataProviderFactory::INVALID_PROVIDER);
}

TErrorCode OrloDataProvider::enumerate(RegistryPackage::Type type, PluginSDK::StringVector& keys) {
    return enumerate(type, keys, RegistryDataProviderFactory::INVALID_PROVIDER);
}

TErrorCode OrloDataProvider::get(const PluginSDK::String& key, RegistryPackage*& o_Package) {
    return get(key, o_Package, RegistryDataProviderFactory::INVALID_PROVIDER);
}

TErrorCode OrloDataProvider::exists(const PluginSDK::String& /*key*/, bool& /*exists*/) {
    return PluginSDK::RESULT_OK;
}

bool OrloDataProvider::queryProvider(RegistryDataProvider* provider,
                                     std::vector<std::wstring>& paths) {
    REG_TRACE_SCOPE("OrloDataProvider::queryProvider()");
    PluginSDK::StringVector keys;
    if (provider->enumPackages(RegistryPackage::ANY, keys) != PluginSDK::RESULT_OK) {
        REG_TRACE(2, "Failed to enumerate provider");
        return false;
    }
    bool added = false;
    const PluginSDK::String installDirField(REG_PLUGIN_PROPERTY_FIELD_INSTDIR);
    for (int i = 0; i < keys.size(); ++i) {
        const PluginSDK::String& key = keys[i];
        RegistryPackage* package = nullptr;
        if (provider->getPackage(key, &package) != PluginSDK::RESULT_OK || package == nullptr) {
            REG_TRACE(2, "Failed to get package ", key);
            continue;
        }
        PluginSDK::String installDir;
        if (package->getProperty(installDirField, installDir) != PluginSDK::RESULT_OK) {
            REG_TRACE(2, "Failed to get installDir for package with key: ", key);
            continue;
        }
        REG_TRACE(3, "Added installDir for package with key: ", key, " installDir: ", installDir);
        paths.emplace_back(installDir.c_str(), static_cast<std::size_t>(installDir.length()));
        added = true;
    }
    return added;
}

std::vector<std::wstring> OrloDataProvider::candidateDirectories(
    const std::vector<std::wstring>& installDirs) {
    REG_TRACE_SCOPE("OrloDataProvider::updateInventory()");
    std::vector<std::wstring> candidates;
    for (const std::wstring& installDir : installDirs) {
        std::wstring directory = File::NormalizePath(String(installDir)).wide();
        const File path{String(directory)};
        // A directory, the common case, costs one look at the disk.
        const bool isDirectory = path.isDirectory();
        if (!isDirectory && !path.exists()) {
            REG_TRACE(2, "Path: ", directory.c_str(), " doesn't exist, skipping the path");
            continue;
        }
        if (!isDirectory) {
            REG_TRACE(2, "Path: ", directory.c_str(), " is not directory...");
            directory = path.getParent().wide();
            REG_TRACE(2, "...using parent: ", directory.c_str());
        }
        dropTrailingSlash(directory);
        if (seenDirectories.find(directory) == seenDirectories.end()) {
            REG_TRACE(3, "Directory: ", directory.c_str(), " added to list");
            candidates.push_back(directory);
            seenDirectories[directory] = true;
            ObjectArray<String> subdirectories;
            File(String(directory)).list(subdirectories, File::LIST_DIRECTORIES);
            for (int i = 0; i < subdirectories.size(); ++i) {
                std::wstring subdirectory = directory;
                if (subdirectory.empty() || subdirectory.back() != L'/') {
                    subdirectory += L'/';
                }
                subdirectory += subdirectories[i].wide();
                REG_TRACE(3, "Subdirectory: ", subdirectory.c_str(), " added to list");
                candidates.push_back(std::move(subdirectory));
            }
        }
        const File parent(File(String(directory)).getParent());
        if (parent.isDirectory()) {
            std::wstring parentPath = parent.getPath().wide();
            REG_TRACE(3, "Adding directory one level up: ", parentPath.c_str());
            dropTrailingSlash(parentPath);
            if (seenDirectories.find(parentPath) == seenDirectories.end()) {
                REG_TRACE(3, "Directory: ", parentPath.c_str(), " added to list");
                candidates.push_back(std::move(parentPath));
            }
        }
    }
    return candidates;
}

void OrloDataProvider::updateInventory(const std::vector<DataProviderClass>& classes) {
    REG_TRACE_SCOPE("OrloDataProvider::updateInventory()");
    for (const DataProviderClass which : classes) {
        if (classInventory.find(which) != classInventory.end()) {
            continue;
        }
        RegistryDataProvider* provider = RegistryDataProviderFactory::getDataProvider(which);
        if (provider == nullptr) {
            REG_TRACE(2, "Failed to get provider ", nameOf(which));
            continue;
        }
        REG_TRACE(3, "About to query provider ", nameOf(which));
        std::vector<std::wstring> installDirs;
        if (!queryProvider(provider, installDirs)) {
            REG_TRACE(2, "Failed to query provider ", nameOf(which));
            continue;
        }
        REG_TRACE(3, "Successfully queried provider: ", nameOf(which),
                  ". Number of paths found: ", static_cast<unsigned long>(installDirs.size()));

        std::vector<OrloProduct> products;
        OrloInventory().scanPaths(candidateDirectories(installDirs), products);
        REG_TRACE(3, "Found ", static_cast<unsigned long>(products.size()), " orlo packages");

        for (const OrloProduct& product : products) {
            OrloPackage* package = new OrloPackage(product);
            allPackages.push_back(package);
            PluginSDK::String name;
            PluginSDK::String version;
            product.getProperty(L"name", name);
            product.getProperty(L"version", version);
            REG_TRACE(3, "Adding package", " name='", name, "' version='", version,
                      "' installDir='", product.installRoot.c_str(), "' key='", package->key, "'");
            OrloPackage*& overall = overallInventory[package->key];
            if (overall != nullptr) {
                REG_TRACE(2, "Package with key='", package->key, "' already there, replacing");
            }
            overall = package;
            classInventory[which][package->key] = package;
        }
    }
}

}  // namespace RegPlugin
