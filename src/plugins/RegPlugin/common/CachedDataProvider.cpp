#include "common/CachedDataProvider.h"

#include "RegPluginConstants.h"

namespace RegPlugin {

CachedDataProvider::CachedDataProvider() : cursor(packages.begin()) {}

CachedDataProvider::~CachedDataProvider() {
    CachedDataProvider::clear();
}

TErrorCode CachedDataProvider::add(RegistryPackage* package) {
    if (package == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    if (find(package->key) != nullptr) {
        return PluginSDK::RESULT_OK;
    }
    packages.push_back(package);
    index.emplace(package->key, package);
    dropMatchFields();
    return PluginSDK::RESULT_OK;
}

TErrorCode CachedDataProvider::addToMap(RegistryPackage* package, const PluginSDK::String& key) {
    if (package == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    if (find(key) != nullptr) {
        return PluginSDK::RESULT_OK;
    }
    index.emplace(key, package);
    return PluginSDK::RESULT_OK;
}

RegistryPackage* CachedDataProvider::find(const PluginSDK::String& key) {
    auto found = index.find(key);
    return found == index.end() ? nullptr : found->second;
}

RegistryPackage* CachedDataProvider::getFirst() {
    cursor = packages.begin();
    return cursor == packages.end() ? nullptr : *cursor;
}

RegistryPackage* CachedDataProvider::getNext() {
    if (cursor == packages.end()) {
        return nullptr;
    }
    ++cursor;
    return cursor == packages.end() ? nullptr : *cursor;
}

int32_t CachedDataProvider::size() {
    return static_cast<int32_t>(packages.size());
}

TErrorCode CachedDataProvider::clear() {
    // The list owns the packages; the index only points at them (aliases included),
    // so each package is destroyed exactly once here.
    for (RegistryPackage*& package : packages) {
        if (package != nullptr) {
            delete package;
            package = nullptr;
        }
    }
    if (!index.empty()) {
        index.clear();
    }
    dropMatchFields();
    return PluginSDK::RESULT_OK;
}

const std::vector<CachedDataProvider::MatchFields>& CachedDataProvider::matchFields() {
    if (m_matchFieldsMade) {
        return m_matchFields;
    }
    const PluginSDK::String names[3] = {REG_PLUGIN_PROPERTY_FIELD_NAME,
                                        REG_PLUGIN_PROPERTY_FIELD_VERSION,
                                        REG_PLUGIN_PROPERTY_FIELD_VENDOR};
    m_matchFields.clear();
    m_matchFields.reserve(packages.size());
    for (RegistryPackage* package : packages) {
        if (package == nullptr) {
            continue;
        }
        MatchFields fields{package, {}, {}, {}, false};
        PluginSDK::String* values[3] = {&fields.name, &fields.version, &fields.vendor};
        int read = 0;
        while (read < 3 &&
               package->getProperty(names[read], *values[read]) == PluginSDK::RESULT_OK) {
            ++read;
        }
        fields.complete = read == 3;
        m_matchFields.push_back(std::move(fields));
    }
    m_matchFieldsMade = true;
    return m_matchFields;
}

void CachedDataProvider::dropMatchFields() {
    if (m_matchFieldsMade) {
        std::vector<MatchFields>().swap(m_matchFields);
        m_matchFieldsMade = false;
    }
}

}  // namespace RegPlugin
