// The library's dynamic symbol table and the values of its exported constants.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include "LoadedPlugin.h"

namespace {

// The defined dynamic symbols, demangled, with their nm type letters.
std::map<std::string, char> definedDynamicSymbols(const char* path) {
    std::map<std::string, char> symbols;
    std::string command = std::string("nm -D --defined-only -C '") + path + "'";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return symbols;
    }
    char line[4096];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        // "<address> <type> <name>"
        std::string text(line);
        if (!text.empty() && text.back() == '\n') {
            text.pop_back();
        }
        std::size_t first = text.find(' ');
        if (first != std::string::npos && first + 3 < text.size() && text[first + 2] == ' ') {
            symbols[text.substr(first + 3)] = text[first + 1];
        }
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return symbols;
}

// True for the nm type letters of variables (initialised, read-only or zeroed data).
bool isData(char type) {
    return std::strchr("BbDdRrVv", type) != nullptr;
}

bool startsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

struct CodeCase {
    const char* name;
    TErrorCode value;
};

const CodeCase kErrorCodes[] = {
    {"REG_PLUGIN_ERROR_UNSPECIFIED_CODE", -13000},
    {"REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE", -13006},
    {"REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST", -13100},
    {"REG_PLUGIN_ERROR_PLUGIN_PROPERTY_NOT_FOUND", -13112},
    {"REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND", -13200},
    {"REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER", -13201},
    {"REG_PLUGIN_ERROR_INVALID_PATH_TO_ISMP_REGISTRY", -13301},
    {"REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST", -13303},
    {"REG_PLUGIN_ERROR_UNABLE_TO_OPEN_SUN_PKG_DIRECTORY", -13400},
    {"REG_PLUGIN_ERROR_RESERVED_13500", -13500},
    {"REG_PLUGIN_ERROR_RESERVED_13501", -13501},
    {"REG_PLUGIN_ERROR_RESERVED_13502", -13502},
    {"REG_PLUGIN_ERROR_RESERVED_13503", -13503},
    {"REG_PLUGIN_ERROR_RESERVED_13504", -13504},
    {"REG_PLUGIN_ERROR_RESERVED_13505", -13505},
    {"REG_PLUGIN_ERROR_RESERVED_13506", -13506},
    {"REG_PLUGIN_ERROR_RESERVED_13507", -13507},
    {"REG_PLUGIN_ERROR_RESERVED_13508", -13508},
    {"REG_PLUGIN_ERROR_UNABLE_TO_OPEN_HP_PKG_DIRECTORY", -13600},
    {"REG_PLUGIN_ERROR_INVALID_COMMAND", -13700},
    {"REG_PLUGIN_ERROR_UNABLE_TO_GET_OBJECT", -13800},
    {"REG_PLUGIN_ERROR_UNABLE_TO_ENUM_MSI_ITEMS", -13850},
    {"REG_PLUGIN_MSI_ERROR_BAD_CONFIGURATION", -13852},
    {"REG_PLUGIN_ERROR_UNABLE_TO_GET_FILE_INFO", -13860},
    {"REG_PLUGIN_ERROR_PDX_CLI_UNSPECIFIED", -13870},
    {"REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI", -13871},
};

struct TextCase {
    const char* name;
    const wchar_t* text;
};

const TextCase kTexts[] = {
    {"REG_PLUGIN_NAME", L"RegPlugin"},
    {"REG_PLUGIN_PROPERTY_UPDATE_CABINET_PATH", L"updateCabinetPath"},
    {"REG_PLUGIN_PROPERTY_SHOW_SUPERSEDED_WINDOWS_UPDATES", L"showSupersededWindowsUpdates"},
    {"REG_PLUGIN_PROPERTY_PDX_DIRECTORY", L"pdxDirectory"},
    {"REG_PLUGIN_PROPERTY_SHOW_UNCOMMITTED_PDX_PKG", L"showUncommittedPackages"},
    {"REG_PLUGIN_PROPERTY_SHOW_REMOVED_PDX_PKG", L"showRemovedPackages"},
    {"REG_PLUGIN_PROPERTY_LIST_UNMATCHED_SOFTWARE", L"listUnmatchedSoftware"},
    {"REG_PLUGIN_PROPERTY_FAIL_ON_BROKEN_CAB", L"failOnBrokenCab"},
    {"REG_PLUGIN_EXPRESSION_ORLOPRODUCTEXISTS", L"OrloProductExists"},
    {"REG_PLUGIN_PROPERTY_FIELD_INSTDIR", L"installDir"},
    {"REG_PLUGIN_PROPERTY_FIELD_PACTHED_PACKAGES", L"patchedPackages"},
    {"REG_PLUGIN_PROPERTY_FIELD_UNPACTHED_PACKAGES", L"unpatchedPackages"},
    {"REG_PLUGIN_PROPERTY_FIELD_ERROR", L"errorState"},
    {"REG_PLUGIN_PROPERTY_FIELD_HOTFIXID", L"HotFixID"},
    {"REG_PLUGIN_PROPERTY_FIELD_PATCHID", L"name"},
    {"REG_PLUGIN_PROPERTY_FIELD_PATCHLOADSTATUS", L"loaded_status"},
    {"REG_PLUGIN_PROPERTY_TYPE_PTF", L"PTF"},
    {"REG_PLUGIN_TRUE", L"true"},
    {"REG_PLUGIN_FALSE", L"false"},
};

class ExportedSymbolsTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(library_.loaded()) << library_.error(); }
    LoadedPlugin library_;
};

TEST_F(ExportedSymbolsTest, DynamicTableHoldsOnlyEntryPointsAndConstants) {
    std::map<std::string, char> symbols = definedDynamicSymbols(REGSCAN_PLUGIN_PATH);
    ASSERT_FALSE(symbols.empty());
    for (const auto& [name, type] : symbols) {
        bool entryPoint = (name == "createPlugin" || name == "destroyPlugin") && type == 'T';
        bool constant =
            (startsWith(name, "REG_PLUGIN_") || startsWith(name, "RegPlugin::")) && isData(type);
        EXPECT_TRUE(entryPoint || constant)
            << "unexpected exported symbol: " << type << " " << name;
    }
    for (const char* required : {"createPlugin", "destroyPlugin"}) {
        EXPECT_EQ(symbols.count(required), 1u) << required;
    }
    for (const CodeCase& c : kErrorCodes) {
        EXPECT_EQ(symbols.count(c.name), 1u) << c.name;
    }
    for (const TextCase& c : kTexts) {
        EXPECT_EQ(symbols.count(c.name), 1u) << c.name;
    }
}

TEST_F(ExportedSymbolsTest, ErrorCodesReadBackAsTheirNegativeValues) {
    for (const CodeCase& c : kErrorCodes) {
        const TErrorCode* value = library_.variable<TErrorCode>(c.name);
        ASSERT_NE(value, nullptr) << c.name;
        EXPECT_EQ(*value, c.value) << c.name;
    }
}

TEST_F(ExportedSymbolsTest, TextConstantsReadBackAsTheirTexts) {
    for (const TextCase& c : kTexts) {
        const wchar_t* const* text = library_.variable<const wchar_t*>(c.name);
        ASSERT_NE(text, nullptr) << c.name;
        ASSERT_NE(*text, nullptr) << c.name;
        EXPECT_EQ(std::wstring(*text), c.text) << c.name;
    }
}

TEST_F(ExportedSymbolsTest, EntryPointsCreateAndDestroyThePlugin) {
    LoadedPlugin::PluginPtr plugin = library_.create();
    ASSERT_NE(plugin, nullptr);
    const wchar_t* const* name = library_.variable<const wchar_t*>("REG_PLUGIN_NAME");
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(plugin->getName(), *name) << "getName must hand out the exported constant";
    PluginSDK::PluginVersion version = plugin->getVersion();
    EXPECT_EQ(version.version, 1);
    EXPECT_EQ(version.release, 1);
    EXPECT_EQ(version.modification, 1);
    EXPECT_EQ(version.fixLevel, 1);

    LoadedPlugin::PluginPtr second = library_.create();
    EXPECT_NE(second.get(), plugin.get());
    library_.destroyFunction()(nullptr);
}

}  // namespace
