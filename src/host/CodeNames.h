// Names of result codes: the plug-in's exported error-code constants, whose values
// are read from the loaded plug-in, and the host's own codes.
#ifndef REGSCAN_CODENAMES_H
#define REGSCAN_CODENAMES_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "PluginSDK/Types.h"

namespace regscan {

class CodeNames {
  public:
    // The address of an exported symbol, or null when there is none.
    typedef std::function<const void*(const char* symbol)> SymbolLookup;

    // Knows the host's codes (-101, -10008, -10009, -10010) only.
    CodeNames();

    // Reads the value of each of the plug-in's error-code constants through
    // `lookup`; a constant the plug-in does not export is skipped. When two names
    // give one value, the first in pluginCodeSymbols() order names it.
    void load(const SymbolLookup& lookup);

    // The name of `code`, or empty when it has none.
    std::string nameOf(TErrorCode code) const;
    // "<code> <name>", e.g. "-13000 REG_PLUGIN_ERROR_UNSPECIFIED_CODE"; a code
    // without a name gives "<code> (unnamed code)".
    std::string describe(TErrorCode code) const;
    // The value of a constant read by load(), or of a host code's name.
    std::optional<TErrorCode> valueOf(const std::string& name) const;

    // The names of the plug-in's error-code constants, in a fixed order.
    static const std::vector<const char*>& pluginCodeSymbols();

  private:
    void add(const std::string& name, TErrorCode code);
    std::map<TErrorCode, std::string> m_names;
    std::map<std::string, TErrorCode> m_values;
};

}  // namespace regscan

#endif
