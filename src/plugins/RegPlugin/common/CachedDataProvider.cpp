#include "common/CachedDataProvider.h"

#include <iterator>
#include <unordered_map>
#include <unordered_set>

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
    if (m_lastFound != nullptr && key == m_lastKey) {
        return m_lastFound;
    }
    auto found = index.find(key);
    if (found == index.end()) {
        return nullptr;
    }
    m_lastKey = found->first;
    m_lastFound = found->second;
    return m_lastFound;
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
    m_lastFound = nullptr;
    dropMatchFields();
    return PluginSDK::RESULT_OK;
}

void CachedDataProvider::dropPackagesFrom(std::size_t count) {
    if (packages.size() <= count) {
        return;
    }
    const auto first = std::next(packages.begin(), static_cast<std::ptrdiff_t>(count));
    const std::unordered_set<RegistryPackage*> dropped(first, packages.end());
    for (auto entry = index.begin(); entry != index.end();) {
        if (dropped.count(entry->second) != 0) {
            entry = index.erase(entry);
        } else {
            ++entry;
        }
    }
    for (auto package = first; package != packages.end(); ++package) {
        delete *package;
    }
    packages.erase(first, packages.end());
    cursor = packages.begin();
    m_lastFound = nullptr;
    dropMatchFields();
}

const std::vector<CachedDataProvider::MatchFields>& CachedDataProvider::matchFields() {
    if (m_matchFieldsMade) {
        return m_matchFields;
    }
    const PluginSDK::String names[3] = {REG_PLUGIN_PROPERTY_FIELD_NAME,
                                        REG_PLUGIN_PROPERTY_FIELD_VERSION,
                                        REG_PLUGIN_PROPERTY_FIELD_VENDOR};
    // Texts are appended to one buffer, each equal text once; the fields hold
    // offsets until the buffer has stopped growing.
    std::unordered_map<std::wstring, std::size_t> offsets;
    const auto place = [&](const PluginSDK::String& text) {
        auto found =
            offsets.emplace(std::wstring(text.c_str(), text.length()), m_matchTexts.size());
        if (found.second) {
            m_matchTexts.append(text.c_str(), text.length());
            m_matchTexts.push_back(L'\0');
        }
        return found.first->second;
    };
    m_matchFields.clear();
    m_matchTexts.clear();
    const std::size_t empty = place(PluginSDK::String());
    std::vector<std::size_t> at;
    at.reserve(packages.size() * 3);
    for (RegistryPackage* package : packages) {
        if (package == nullptr) {
            continue;
        }
        PluginSDK::String values[3];
        int read = 0;
        while (read < 3 &&
               package->getProperty(names[read], values[read]) == PluginSDK::RESULT_OK) {
            ++read;
        }
        MatchFields fields{package, nullptr, nullptr, nullptr, 0, 0, 0, read == 3};
        if (fields.complete) {
            fields.nameLength = static_cast<uint32_t>(values[0].length());
            fields.versionLength = static_cast<uint32_t>(values[1].length());
            fields.vendorLength = static_cast<uint32_t>(values[2].length());
        }
        at.push_back(fields.complete ? place(values[2]) : empty);
        at.push_back(fields.complete ? place(values[0]) : empty);
        at.push_back(fields.complete ? place(values[1]) : empty);
        m_matchFields.push_back(fields);
    }
    const wchar_t* base = m_matchTexts.c_str();
    for (std::size_t i = 0; i < m_matchFields.size(); ++i) {
        m_matchFields[i].vendor = base + at[3 * i];
        m_matchFields[i].name = base + at[3 * i + 1];
        m_matchFields[i].version = base + at[3 * i + 2];
    }
    m_matchFieldsMade = true;
    return m_matchFields;
}

void CachedDataProvider::dropMatchFields() {
    if (m_matchFieldsMade) {
        std::vector<MatchFields>().swap(m_matchFields);
        std::wstring().swap(m_matchTexts);
        m_matchFieldsMade = false;
    }
}

}  // namespace RegPlugin
