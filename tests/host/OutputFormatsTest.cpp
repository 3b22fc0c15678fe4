// CSV quoting, table alignment and cutting, and the JSON form of the inventory;
// the inventory collected from the fake plug-in.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "FakePlugin.h"
#include "Inventory.h"
#include "OutputFormats.h"

namespace {

using regscan::InventoryRecord;

TEST(OutputFormatsTest, CsvFieldQuoting) {
    struct Case {
        const char* in;
        const char* out;
    } cases[] = {
        {"", ""},
        {"plain text", "plain text"},
        {"a,b", "\"a,b\""},
        {"say \"hi\"", "\"say \"\"hi\"\"\""},
        {"two\nlines", "\"two\nlines\""},
        {"cr\r", "\"cr\r\""},
        {"\"", "\"\"\"\""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::csvField(c.in), c.out) << c.in;
    }
}

TEST(OutputFormatsTest, CsvHasHeaderAndCrLfLines) {
    std::ostringstream out;
    regscan::writeCsv(out, {{"rpm", "k", "n", "1,0", "", "/opt/", "x\"y"}});
    EXPECT_EQ(out.str(),
              "registry,key,name,version,vendor,installDir,description\r\n"
              "rpm,k,n,\"1,0\",,/opt/,\"x\"\"y\"\r\n");
}

TEST(OutputFormatsTest, TruncationCountsCharactersNotBytes) {
    struct Case {
        std::string in;
        std::size_t width;
        std::string out;
    } cases[] = {
        {"abcdef", 6, "abcdef"},
        {"abcdefg", 6, "abcde\u2026"},
        {"\u00e9\u00e9\u00e9\u00e9", 3, "\u00e9\u00e9\u2026"},
        {"ab\xff\xfe"
         "cd",
         4, "ab\xff\u2026"},
        {"abc", 0, ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::truncateToWidth(c.in, c.width), c.out) << c.in << " / " << c.width;
    }
    EXPECT_EQ(regscan::displayWidth("\u00e9t\u00e9"), 3u);
    EXPECT_EQ(regscan::displayWidth("a\xff"), 2u);
}

TEST(OutputFormatsTest, TableColumnsAlignOnCharacters) {
    std::ostringstream out;
    regscan::writeTable(out,
                        {{"rpm", "k\u00e9y", "n", "1", "v", "/d", "long description"},
                         {"dpkg", "k", "name\tx", "22", "", "", ""}},
                        8);
    EXPECT_EQ(out.str(),
              "REGISTRY  KEY  NAME    VERSION  VENDOR  INSTALL DIRECTORY  DESCRIPTION\n"
              "rpm       k\u00e9y  n       1        v       /d                 long de\u2026\n"
              "dpkg      k    name x  22\n");
}

TEST(OutputFormatsTest, JsonKeepsKeyOrderAndReplacesBadBytes) {
    std::ostringstream out;
    regscan::writeJson(out, {{"rpm", "k", "n\xff", "1", "v", "/d", "d"}});
    nlohmann::ordered_json parsed = nlohmann::ordered_json::parse(out.str());
    ASSERT_EQ(parsed.size(), 1u);
    std::vector<std::string> keys;
    for (const auto& item : parsed[0].items()) {
        keys.push_back(item.key());
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"registry", "key", "name", "version", "vendor",
                                              "installDir", "description"}));
    EXPECT_EQ(parsed[0]["name"], "n\uFFFD");
}

TEST(InventoryTest, ListsGoodRegistriesAndReportsFailedOnes) {
    fake::Plugin plugin;
    regscan::CodeNames names;
    names.load([](const char* symbol) -> const void* {
        static const TErrorCode code = -13111;
        return std::string(symbol) == "REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST" ? &code
                                                                                    : nullptr;
    });
    std::vector<regscan::RegistrySource> registries = {
        {"broken", "Broken", "Info", "the broken store could not be read", {}},
        {"good", "List", "Info", "unused", {}},
        {"missing", "NoSuchList", "Info", "unused", {}},
        {"noinfo", "Keys", "NoSuchInfo", "unused", {{"keys", "only"}}},
    };
    regscan::Inventory inventory = regscan::collectInventory(plugin, registries, names);

    EXPECT_EQ(inventory.listedRegistries, 2);
    ASSERT_EQ(inventory.records.size(), 3u);
    const InventoryRecord& first = inventory.records[0];
    EXPECT_EQ(first.registry, "good");
    EXPECT_EQ(first.key, "k1");
    EXPECT_EQ(first.name, "name of k1");
    EXPECT_EQ(first.vendor, "") << "a failing field gives an empty cell";
    EXPECT_EQ(first.installDir, "installDir of k1");
    EXPECT_EQ(first.description, "description of k1");
    EXPECT_EQ(first.version, "version of k1") << "without a display form, the version";
    EXPECT_EQ(inventory.records[1].version, "displayVersion of k2") << "the display form wins";
    EXPECT_EQ(inventory.records[2].key, "only");
    EXPECT_EQ(inventory.records[2].name, "");

    ASSERT_EQ(inventory.failures.size(), 2u);
    EXPECT_EQ(inventory.failures[0].message,
              "broken: cannot list packages (-13111 REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST): "
              "the broken store could not be read");
    EXPECT_EQ(inventory.failures[1].message,
              "missing: cannot list packages (-10008 ERROR_NO_SUCH_EXPRESSION): this plug-in "
              "cannot create the expression NoSuchList");
    EXPECT_EQ(plugin.liveExpressions, 0);
}

}  // namespace
