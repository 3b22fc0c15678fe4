#include "base/StringMap.h"

bool StringMap::getEntry(const String& key, String& value) const {
    const auto found = m_entries.find(key.wide());
    if (found == m_entries.end()) {
        value = L"";
        return false;
    }
    value = String(found->second);
    return true;
}

bool StringMap::hasEntry(const String& key) const {
    return m_entries.find(key.wide()) != m_entries.end();
}

void StringMap::setEntry(const String& key, const String& value) {
    m_entries[key.wide()] = value.wide();
}
