// A map from String to String: XML attributes and process environments.
#ifndef HOSTSDK_BASE_STRINGMAP_H
#define HOSTSDK_BASE_STRINGMAP_H

#include <map>
#include <string>

#include "base/Export.h"
#include "base/String.h"

class HOSTSDK_API StringMap {
  public:
    using Entries = std::map<std::wstring, std::wstring>;

    // Copies the value of `key` into `value` and returns true; when the key is
    // absent, `value` is made empty and the result is false.
    bool getEntry(const String& key, String& value) const;
    bool hasEntry(const String& key) const;
    // Stores `value` under `key`, replacing an earlier value.
    void setEntry(const String& key, const String& value);
    int size() const { return static_cast<int>(m_entries.size()); }
    // All entries in ascending key order.
    const Entries& entries() const { return m_entries; }

  private:
    Entries m_entries;
};

#endif
