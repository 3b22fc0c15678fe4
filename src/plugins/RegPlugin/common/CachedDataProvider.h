// The package storage shared by all concrete providers: packages in load order
// (owned) and an index by key (and alias keys, owning nothing).
#ifndef REGPLUGIN_COMMON_CACHEDDATAPROVIDER_H
#define REGPLUGIN_COMMON_CACHEDDATAPROVIDER_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "common/RegistryDataProvider.h"

namespace RegPlugin {

class CachedDataProvider : public RegistryDataProvider {
  public:
    CachedDataProvider();
    // Calls clear(), which destroys every package.
    ~CachedDataProvider() override;

    // Stores a newly read package: appends it and indexes it under its key. -101 for
    // null. When the key is already there, returns 0 and changes nothing: the
    // package is not taken and stays the caller's (the first package of a key wins).
    virtual TErrorCode add(RegistryPackage* package);
    // Indexes `package` also under `key`; the list is untouched. -101 for null; an
    // existing mapping of `key` is kept (returns 0).
    virtual TErrorCode addToMap(RegistryPackage* package, const PluginSDK::String& key);
    // The package indexed under `key`, or null.
    virtual RegistryPackage* find(const PluginSDK::String& key);
    // Iteration in load order; one cursor per provider. Null at the end.
    virtual RegistryPackage* getFirst();
    virtual RegistryPackage* getNext();
    // The number of list elements (aliases do not count).
    virtual int32_t size();
    // Destroys every package and empties the index. The list keeps its (now null)
    // elements, so getFirst() gives null afterwards and size() is unchanged; only
    // the destructor calls it. Returns 0.
    virtual TErrorCode clear();

    // One package with the three fields the pattern query compares: NUL-terminated
    // copies kept side by side (equal texts once), so that walking them touches
    // little memory.
    struct MatchFields {
        RegistryPackage* package;
        const wchar_t* vendor;
        const wchar_t* name;
        const wchar_t* version;
        uint32_t vendorLength;
        uint32_t nameLength;
        uint32_t versionLength;
        bool complete;  // all three were read; otherwise the texts are empty
    };
    // The packages in load order with "name", "version" and "vendor" read through
    // getProperty, in that order, stopping at the first that fails. Made on the
    // first call and again after the list changed (add, clear, dropMatchFields).
    // For a loaded registry, whose packages and values no longer change, it holds
    // what walking the keys with getPackage and getProperty would give, without a
    // key lookup and three property lookups per package and evaluation. Valid until
    // the next change of the cache.
    const std::vector<MatchFields>& matchFields();

  protected:
    // Forgets the view of matchFields(); call it after changing `packages` directly.
    void dropMatchFields();
    // Removes and destroys the packages stored after the first `count`, with every
    // key that leads to them (aliases too), and rewinds the cursor: a load that
    // failed takes back what it stored. The only way, besides clear(), in which
    // packages or keys go.
    void dropPackagesFrom(std::size_t count);

    std::list<RegistryPackage*> packages;
    std::map<PluginSDK::String, RegistryPackage*> index;
    std::list<RegistryPackage*>::iterator cursor;

  private:
    // The package find() found last, under m_lastKey: hosts ask for several fields
    // of one package in a row, each time by its key. Only packages found are kept
    // (a key missing now may be added later); packages never go but through
    // clear() and dropPackagesFrom(), which forget it.
    RegistryPackage* m_lastFound = nullptr;
    PluginSDK::String m_lastKey;
    std::vector<MatchFields> m_matchFields;
    std::wstring m_matchTexts;  // the texts m_matchFields point into
    bool m_matchFieldsMade = false;
};

}  // namespace RegPlugin

#endif
