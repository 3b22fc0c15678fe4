#include "base/StringMap.h"

#include <cstring>

#include "base/Utf8.h"

StringMap::StringMap() : m_size(0) {}

StringMap::StringMap(const StringMap& other) : m_data(other.m_data), m_size(other.m_size) {}

StringMap& StringMap::operator=(const StringMap& other) {
    if (this != &other) {
        m_data = other.m_data;
        m_size = other.m_size;
        m_entries.reset();
    }
    return *this;
}

StringMap::~StringMap() = default;

std::size_t StringMap::lengthAt(std::size_t offset) const {
    std::size_t length;
    std::memcpy(&length, m_data.data() + offset, sizeof length);
    return length;
}

void StringMap::append(const char* bytes, std::size_t length) {
    m_data.append(reinterpret_cast<const char*>(&length), sizeof length);
    m_data.append(bytes, length);
}

bool StringMap::find(const std::string& key, std::size_t* valueField) const {
    std::size_t at = 0;
    while (at < m_data.size()) {
        const std::size_t keyLength = lengthAt(at);
        const std::size_t keyAt = at + sizeof(std::size_t);
        const std::size_t valueAt = keyAt + keyLength;
        if (keyLength == key.size() &&
            std::memcmp(m_data.data() + keyAt, key.data(), keyLength) == 0) {
            *valueField = valueAt;
            return true;
        }
        at = valueAt + sizeof(std::size_t) + lengthAt(valueAt);
    }
    return false;
}

bool StringMap::getEntry(const String& key, String& value) const {
    std::size_t field = 0;
    if (!find(Utf8::encode(key.getWideString(), static_cast<std::size_t>(key.length())), &field)) {
        value = L"";
        return false;
    }
    value = String(Utf8::decode(m_data.data() + field + sizeof(std::size_t), lengthAt(field)));
    return true;
}

bool StringMap::hasEntry(const String& key) const {
    std::size_t field = 0;
    return find(Utf8::encode(key.getWideString(), static_cast<std::size_t>(key.length())), &field);
}

void StringMap::setEntry(const String& key, const String& value) {
    const std::string keyBytes =
        Utf8::encode(key.getWideString(), static_cast<std::size_t>(key.length()));
    const std::string valueBytes =
        Utf8::encode(value.getWideString(), static_cast<std::size_t>(value.length()));
    std::size_t field = 0;
    if (find(keyBytes, &field)) {
        const std::size_t end = field + sizeof(std::size_t) + lengthAt(field);
        std::string replaced = m_data.substr(0, field);
        const std::size_t length = valueBytes.size();
        replaced.append(reinterpret_cast<const char*>(&length), sizeof length);
        replaced += valueBytes;
        replaced.append(m_data, end, std::string::npos);
        m_data.swap(replaced);
        m_entries.reset();
        return;
    }
    addEntryUtf8(keyBytes.data(), keyBytes.size(), valueBytes.data(), valueBytes.size());
}

void StringMap::addEntryUtf8(const char* key, std::size_t keyLength, const char* value,
                             std::size_t valueLength) {
    append(key, keyLength);
    append(value, valueLength);
    ++m_size;
    m_entries.reset();
}

void StringMap::reserveUtf8(std::size_t entries, std::size_t bytes) {
    m_data.reserve(m_data.size() + entries * 2 * sizeof(std::size_t) + bytes);
}

const StringMap::Entries& StringMap::entries() const {
    if (!m_entries) {
        std::unique_ptr<Entries> made(new Entries());
        std::size_t at = 0;
        while (at < m_data.size()) {
            const std::size_t keyLength = lengthAt(at);
            const std::size_t valueAt = at + sizeof(std::size_t) + keyLength;
            const std::size_t valueLength = lengthAt(valueAt);
            (*made)[Utf8::decode(m_data.data() + at + sizeof(std::size_t), keyLength)] =
                Utf8::decode(m_data.data() + valueAt + sizeof(std::size_t), valueLength);
            at = valueAt + sizeof(std::size_t) + valueLength;
        }
        m_entries = std::move(made);
    }
    return *m_entries;
}
