// A growable array of values, used for file listings, command output lines and
// process environments.
#ifndef HOSTSDK_BASE_OBJECTARRAY_H
#define HOSTSDK_BASE_OBJECTARRAY_H

#include <vector>

template <class T>
class ObjectArray {
  public:
    // Appends a copy of `item`; stores its position in `*index` when `index` is not
    // null. Returns 0.
    int add(const T& item, int* index) {
        m_items.push_back(item);
        if (index != nullptr) {
            *index = static_cast<int>(m_items.size()) - 1;
        }
        return 0;
    }
    int add(const T& item) { return add(item, nullptr); }
    // The element at `index`; `index` must be in [0, size()).
    const T& operator[](int index) const { return m_items[static_cast<std::size_t>(index)]; }
    T& operator[](int index) { return m_items[static_cast<std::size_t>(index)]; }
    int size() const { return static_cast<int>(m_items.size()); }
    bool isEmpty() const { return m_items.empty(); }
    void clear() { m_items.clear(); }

  private:
    std::vector<T> m_items;
};

#endif
