// The plug-in library's dynamic symbol table.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

TEST(ExportedSymbolsTest, DynamicTableHoldsOnlyEntryPointsAndConstants) {
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
        bool constant =
            (name.rfind("REG_PLUGIN_", 0) == 0 || name == "RegPlugin::DPKG_STATUS_FILE" ||
             name == "RegPlugin::ANYWHERE_REGISTRY_FILE" ||
             name == "RegPlugin::CORVU_REGISTRY_FILE") &&
            std::strchr("BbDdRrVv", type) != nullptr;
        EXPECT_TRUE(entryPoint || constant) << "unexpected exported symbol: " << text;
        entryPoints += entryPoint;
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    EXPECT_EQ(entryPoints, 2);
}

}  // namespace
