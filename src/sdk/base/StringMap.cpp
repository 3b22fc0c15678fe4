#include "base/StringMap.h"

#include <cstring>
#include <limits>
#include <stdexcept>

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
    Length length;
    std::memcpy(&length, m_data.data() + offset, sizeof length);
    return length;
}

void StringMap::append(const char* bytes, std::size_t length) {
    if (length > std::numeric_limits<Length>::max()) {
        throw std::length_error("StringMap: entry too long");
    }
    const Length stored = static_cast<Length>(length);
    m_data.append(reinterpret_cast<const char*>(&stored), sizeof stored);
    m_data.append(bytes, length);
}

bool StringMap::find(const std::string& key, std::size_t* valueField) const {
    std::size_t at = 0;
    while (at < m_data.size()) {
        const std::size_t keyLength = lengthAt(at);
        const std::size_t keyAt = at + sizeof(Length);
        const std::size_t valueAt = keyAt + keyLength;
        if (keyLength == key.size() &&
            std::memcmp(m_data.data() + keyAt, key.data(), keyLength) == 0) {
            *valueField = valueAt;
            return true;
        }
        at = valueAt + sizeof(Length) + lengthAt(valueAt);
    }
    return false;
}

bool StringMap::getEntry(const String& key, String& value) const {
    std::size_t field = 0;
    if (!find(Utf8::encode(key.getWideString(), static_cast<std::size_t>(key.length())), &field)) {
        value = L"";
        return false;
    }
    value.assignUtf8(m_data.data() + field + sizeof(Length), lengthAt(field));
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
        const std::size_t end = field + sizeof(Length) + lengthAt(field);
        std::string rest = m_data.substr(end);
        m_data.resize(field);
        append(valueBytes.data(), valueBytes.size());
        m_data += rest;
        m_entries.reset();
        return;
    }
    addEntryUtf8(keyBytes.data(), keyBytes.size(), valueBytes.data(), valueBytes.size());
}

void StringMap::addEntryUtf8(const char* key, std::size_t keyLength, const char* value,
                             std::size_t valueLength) {
    if (keyLength > std::numeric_limits<Length>::max() ||
        valueLength > std::numeric_limits<Length>::max()) {
        throw std::length_error("StringMap: entry too long");
    }
    append(key, keyLength);
    append(value, valueLength);
    ++m_size;
    m_entries.reset();
}

void StringMap::reserveUtf8(std::size_t entries, std::size_t bytes) {
    m_data.reserve(m_data.size() + entries * 2 * sizeof(Length) + bytes);
}

const StringMap::Entries& StringMap::entries() const {
    if (!m_entries) {
        std::unique_ptr<Entries> made(new Entries());
        std::size_t at = 0;
        while (at < m_data.size()) {
            const std::size_t keyLength = lengthAt(at);
            const std::size_t valueAt = at + sizeof(Length) + keyLength;
            const std::size_t valueLength = lengthAt(valueAt);
            (*made)[Utf8::decode(m_data.data() + at + sizeof(Length), keyLength)] =
                Utf8::decode(m_data.data() + valueAt + sizeof(Length), valueLength);
            at = valueAt + sizeof(Length) + valueLength;
        }
        m_entries = std::move(made);
    }
    return *m_entries;
}
