// An ordered list of strings: the result of list expressions and enumerations.
#ifndef PLUGINSDK_STRINGVECTOR_H
#define PLUGINSDK_STRINGVECTOR_H

#include <vector>

#include "PluginSDK/String.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API StringVector {
  public:
    void addString(const String& text) { m_items.push_back(text); }
    void addString(const wchar_t* text) { m_items.emplace_back(text); }
    // The element at `index`; an empty string when `index` is out of range.
    const String& operator[](int index) const;
    // Removes the element at `index`; returns 0, or -1 when `index` is out of range
    // (nothing is removed then).
    int removeString(int index);
    void removeAll() { m_items.clear(); }
    int size() const { return static_cast<int>(m_items.size()); }
    bool empty() const { return m_items.empty(); }

    std::vector<String>::const_iterator begin() const { return m_items.begin(); }
    std::vector<String>::const_iterator end() const { return m_items.end(); }

  private:
    std::vector<String> m_items;
};

}  // namespace PluginSDK

#endif
