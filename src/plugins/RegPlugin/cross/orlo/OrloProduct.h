// One product, component or fix record read from an Orlo tag file: the element's
// child elements and their text, plus where the record was found.
//
// A plain value: copied freely into and out of vectors.
#ifndef REGPLUGIN_CROSS_ORLO_ORLOPRODUCT_H
#define REGPLUGIN_CROSS_ORLO_ORLOPRODUCT_H

#include <map>
#include <string>

#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"

namespace RegPlugin {

class OrloProduct {
  public:
    // Empties `names`, then adds every property name in ascending order. Always true.
    bool getPropertiesNames(PluginSDK::StringVector& names) const;
    // Copies the property `name` into `value` and returns true; false (and `value`
    // untouched) when there is no such property or `name` is null.
    bool getProperty(const wchar_t* name, PluginSDK::String& value) const;

    // The candidate directory under which the tag file was found; empty until the
    // scanner (OrloInventory) fills it in.
    std::wstring installRoot;
    // The tag file's full path.
    std::wstring tagFile;
    // Left empty by the parser.
    std::string reserved;
    // The record element's name: "Product", "Component" or "Fix".
    std::string kind;
    // Element name -> text, with the derived "name", "version" and "fmidx" always
    // present (empty when the file had no such element).
    std::map<std::wstring, std::wstring> properties;
};

}  // namespace RegPlugin

#endif
