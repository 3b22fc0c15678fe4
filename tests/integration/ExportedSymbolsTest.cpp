// The library's dynamic symbol table and the values of its exported constants.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "LoadedPlugin.h"

namespace {

class ExportedSymbolsTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(library_.loaded()) << library_.error(); }
    LoadedPlugin library_;
};

TEST_F(ExportedSymbolsTest, DynamicTableHoldsOnlyEntryPointsAndConstants) {
    std::string command = std::string("nm -D --defined-only -C '") + REGSCAN_PLUGIN_PATH + "'";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr) << command;
    int entryPoints = 0;
    for (char line[4096]; std::fgets(line, sizeof line, pipe) != nullptr;) {
        // "<address> <type> <demangled name>"
        std::string text(line, std::strcspn(line, "\n"));
        std::size_t space = text.find(' ');
        ASSERT_TRUE(space != std::string::npos && text.size() > space + 3) << text;
        char type = text[space + 1];
        std::string name = text.substr(space + 3);
        bool entryPoint = (name == "createPlugin" || name == "destroyPlugin") && type == 'T';
        bool constant = (name.rfind("REG_PLUGIN_", 0) == 0 || name.rfind("RegPlugin::", 0) == 0) &&
                        std::strchr("BbDdRrVv", type) != nullptr;
        EXPECT_TRUE(entryPoint || constant) << "unexpected exported symbol: " << text;
        entryPoints += entryPoint;
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    EXPECT_EQ(entryPoints, 2);
}

TEST_F(ExportedSymbolsTest, ConstantsReadBackAsTheirValues) {
    const std::pair<const char*, TErrorCode> codes[] = {
        {"REG_PLUGIN_ERROR_UNSPECIFIED_CODE", -13000},
        {"REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE", -13006},
        {"REG_PLUGIN_ERROR_PLUGIN_PROPERTY_NOT_FOUND", -13112},
        {"REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND", -13200},
        {"REG_PLUGIN_ERROR_RESERVED_13500", -13500},
        {"REG_PLUGIN_ERROR_RESERVED_13508", -13508},
        {"REG_PLUGIN_MSI_ERROR_BAD_CONFIGURATION", -13852},
        {"REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI", -13871},
    };
    for (const auto& [name, expected] : codes) {
        const TErrorCode* value = library_.variable<TErrorCode>(name);
        ASSERT_NE(value, nullptr) << name;
        EXPECT_EQ(*value, expected) << name;
    }
    const std::pair<const char*, const wchar_t*> texts[] = {
        {"REG_PLUGIN_NAME", L"RegPlugin"},
        {"REG_PLUGIN_PROPERTY_LIST_UNMATCHED_SOFTWARE", L"listUnmatchedSoftware"},
        {"REG_PLUGIN_EXPRESSION_ORLOPRODUCTEXISTS", L"OrloProductExists"},
        {"REG_PLUGIN_PROPERTY_FIELD_INSTDIR", L"installDir"},
        {"REG_PLUGIN_PROPERTY_FIELD_PACTHED_PACKAGES", L"patchedPackages"},
        {"REG_PLUGIN_PROPERTY_FIELD_UNPACTHED_PACKAGES", L"unpatchedPackages"},
        {"REG_PLUGIN_PROPERTY_FIELD_PATCHID", L"name"},
        {"REG_PLUGIN_PROPERTY_TYPE_PTF", L"PTF"},
        {"REG_PLUGIN_TRUE", L"true"},
    };
    for (const auto& [name, expected] : texts) {
        const wchar_t* const* text = library_.variable<const wchar_t*>(name);
        ASSERT_TRUE(text != nullptr && *text != nullptr) << name;
        EXPECT_EQ(std::wstring(*text), expected) << name;
    }
}

TEST_F(ExportedSymbolsTest, EntryPointsCreateAndDestroyThePlugin) {
    LoadedPlugin::PluginPtr plugin = library_.create(), second = library_.create();
    ASSERT_TRUE(plugin != nullptr && second != nullptr);
    EXPECT_NE(second.get(), plugin.get());
    EXPECT_EQ(plugin->getName(), *library_.variable<const wchar_t*>("REG_PLUGIN_NAME"))
        << "getName must hand out the exported constant";
    plugin.get_deleter()(nullptr);
}

}  // namespace
