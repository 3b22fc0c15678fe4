// A map from String to String: XML attributes and process environments.
//
// Entries are kept as UTF-8 bytes in one buffer, in the order they were first set,
// and looked up by a linear scan: the maps in use hold a handful of entries (an
// element's attributes, an environment), and one buffer per map instead of two
// strings and a tree node per entry keeps a large XML tree small and quick to
// build and free. Keys compare by their UTF-8 form (see base/Utf8.h), which equals
// comparing the characters.
#ifndef HOSTSDK_BASE_STRINGMAP_H
#define HOSTSDK_BASE_STRINGMAP_H

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "base/Export.h"
#include "base/String.h"

class HOSTSDK_API StringMap {
  public:
    using Entries = std::map<std::wstring, std::wstring>;

    StringMap();
    StringMap(const StringMap& other);
    StringMap& operator=(const StringMap& other);
    ~StringMap();

    // Copies the value of `key` into `value` and returns true; when the key is
    // absent, `value` is made empty and the result is false.
    bool getEntry(const String& key, String& value) const;
    bool hasEntry(const String& key) const;
    // Stores `value` under `key`, replacing an earlier value.
    void setEntry(const String& key, const String& value);
    // Adds an entry from UTF-8 bytes without looking for an earlier one: the caller
    // guarantees that `key` is not in the map yet (an XML element's attributes,
    // which the parser has already checked for repeats).
    void addEntryUtf8(const char* key, std::size_t keyLength, const char* value,
                      std::size_t valueLength);
    // Makes room for `entries` more entries of `bytes` UTF-8 bytes in all, so that
    // adding them allocates once.
    void reserveUtf8(std::size_t entries, std::size_t bytes);
    int size() const { return m_size; }
    // All entries in ascending key order; made on first use after a change, valid
    // until the next change.
    const Entries& entries() const;

  private:
    // Finds the entry of the UTF-8 `key`: sets the offset of its value's length
    // field and returns true.
    bool find(const std::string& key, std::size_t* valueField) const;
    void append(const char* bytes, std::size_t length);
    std::size_t lengthAt(std::size_t offset) const;

    // Per entry: key length, key bytes, value length, value bytes; each length is a
    // std::size_t in native byte order.
    std::string m_data;
    int m_size;
    mutable std::unique_ptr<Entries> m_entries;  // entries(), made on demand
};

#endif
