#include "CodeNames.h"

#include <cstring>

namespace regscan {

CodeNames::CodeNames() {
    add("ERROR_NULL_ARGUMENT", PluginSDK::ERROR_NULL_ARGUMENT);
    add("ERROR_NO_SUCH_EXPRESSION", PluginSDK::ERROR_NO_SUCH_EXPRESSION);
    add("ERROR_NO_MORE_ITEMS", PluginSDK::ERROR_NO_MORE_ITEMS);
    add("ERROR_PROPERTY_NOT_FOUND", PluginSDK::ERROR_PROPERTY_NOT_FOUND);
}

const std::vector<const char*>& CodeNames::pluginCodeSymbols() {
    static const std::vector<const char*> symbols = {
        "REG_PLUGIN_ERROR_UNSPECIFIED_CODE",
        "REG_PLUGIN_ERROR_UNSPECIFIED_FIELD",
        "REG_PLUGIN_ERROR_UNSPECIFIED_VALUE",
        "REG_PLUGIN_ERROR_UNSPECIFIED_PROVIDER",
        "REG_PLUGIN_ERROR_UNSUPPORTED_FIELD",
        "REG_PLUGIN_ERROR_INVALID_PROVIDER",
        "REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE",
        "REG_PLUGIN_ERROR_UNSPECIFIED_VENDOR",
        "REG_PLUGIN_ERROR_UNSPECIFIED_NAME",
        "REG_PLUGIN_ERROR_UNSPECIFIED_VERSION",
        "REG_PLUGIN_ERROR_INVALID_IGNORECASE",
        "REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST",
        "REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST",
        "REG_PLUGIN_ERROR_PLUGIN_PROPERTY_NOT_FOUND",
        "REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND",
        "REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER",
        "REG_PLUGIN_ERROR_CANNOT_INSTANTIATE_PACKAGE",
        "REG_PLUGIN_ERROR_PROPERTY_FILE_NOT_FOUND",
        "REG_PLUGIN_ERROR_STAT_FAILED",
        "REG_PLUGIN_ERROR_INVALID_PATH_TO_ISMP_REGISTRY",
        "REG_PLUGIN_ERROR_UNABLE_TO_OPEN_ISMP_REGISTRY",
        "REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST",
        "REG_PLUGIN_ERROR_ISMP_FEATURE_NOT_PRODUCT",
        "REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY",
        "REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_ENTRY",
        "REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD",
        "REG_PLUGIN_ERROR_NO_VALID_ISMP_REGISTRY_FILE",
        "REG_PLUGIN_ERROR_INVALID_COMMAND",
        "REG_PLUGIN_ERROR_PIPE_CREATION_FAILURE",
        "REG_PLUGIN_ERROR_FORK_FAILURE",
        "REG_PLUGIN_ERROR_WAIT_CHILD_FAILURE",
        "REG_PLUGIN_ERROR_CHILD_EXEC_FAILURE",
        "REG_PLUGIN_ERROR_PDX_CLI_UNSPECIFIED",
        "REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI",
        "REG_PLUGIN_ERROR_UNABLE_TO_OPEN_SUN_PKG_DIRECTORY",
        "REG_PLUGIN_ERROR_SUN_PRODUCT_DOES_NOT_EXIST",
        "REG_PLUGIN_ERROR_UNABLE_TO_OPEN_HP_PKG_DIRECTORY",
        "REG_PLUGIN_ERROR_INVALID_SOFTWARE_KEY",
        "REG_PLUGIN_ERROR_SOFTWARE_PROPERTY_NOT_FOUND",
        "REG_PLUGIN_ERROR_RESERVED_13500",
        "REG_PLUGIN_ERROR_RESERVED_13501",
        "REG_PLUGIN_ERROR_RESERVED_13502",
        "REG_PLUGIN_ERROR_RESERVED_13503",
        "REG_PLUGIN_ERROR_RESERVED_13504",
        "REG_PLUGIN_ERROR_RESERVED_13505",
        "REG_PLUGIN_ERROR_RESERVED_13506",
        "REG_PLUGIN_ERROR_RESERVED_13507",
        "REG_PLUGIN_ERROR_RESERVED_13508",
        "REG_PLUGIN_ERROR_UNABLE_TO_GET_OBJECT",
        "REG_PLUGIN_ERROR_UNABLE_TO_GET_REGISTRY_VALUE",
        "REG_PLUGIN_ERROR_NO_MORE_REGISTRY_ITEMS",
        "REG_PLUGIN_ERROR_COM_FAILURE",
        "REG_PLUGIN_ERROR_UNABLE_TO_GET_LONG_PATH",
        "REG_PLUGIN_ERROR_UNABLE_TO_ENUM_MSI_ITEMS",
        "REG_PLUGIN_ERROR_UNABLE_TO_GET_MSI_INFO",
        "REG_PLUGIN_MSI_ERROR_BAD_CONFIGURATION",
        "REG_PLUGIN_MSI_ERROR_INVALID_PARAMETER",
        "REG_PLUGIN_MSI_ERROR_NOT_ENOUGH_MEMORY",
        "REG_PLUGIN_ERROR_UNABLE_TO_GET_FILE_INFO",
    };
    return symbols;
}

void CodeNames::load(const SymbolLookup& lookup) {
    for (const char* symbol : pluginCodeSymbols()) {
        const void* address = lookup(symbol);
        if (address != nullptr) {
            TErrorCode value;
            std::memcpy(&value, address, sizeof value);
            add(symbol, value);
        }
    }
}

void CodeNames::add(const std::string& name, TErrorCode code) {
    m_names.emplace(code, name);
    m_values[name] = code;
}

std::string CodeNames::nameOf(TErrorCode code) const {
    auto found = m_names.find(code);
    return found != m_names.end() ? found->second : std::string();
}

std::string CodeNames::describe(TErrorCode code) const {
    std::string name = nameOf(code);
    return std::to_string(code) + " " + (name.empty() ? "(unnamed code)" : name);
}

std::optional<TErrorCode> CodeNames::valueOf(const std::string& name) const {
    auto found = m_values.find(name);
    if (found == m_values.end()) {
        return std::nullopt;
    }
    return found->second;
}

}  // namespace regscan
