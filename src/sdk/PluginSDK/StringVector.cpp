#include "PluginSDK/StringVector.h"

namespace PluginSDK {

namespace {

// Handed out for an index out of range; never modified.
const String& emptyString() {
    static const String empty;
    return empty;
}

}  // namespace

const String& StringVector::operator[](int index) const {
    if (index < 0 || index >= size()) {
        return emptyString();
    }
    return m_items[static_cast<std::size_t>(index)];
}

int StringVector::removeString(int index) {
    if (index < 0 || index >= size()) {
        return -1;
    }
    m_items.erase(m_items.begin() + index);
    return 0;
}

}  // namespace PluginSDK
