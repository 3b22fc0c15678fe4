// CSV, table and JSON output, and the inventory collected from the fake plug-in.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "FakePlugin.h"
#include "Inventory.h"
#include "OutputFormats.h"

namespace {

TEST(OutputFormatsTest, CsvQuotesFieldsAndEndsLinesWithCrLf) {
    struct Case {
        const char *in, *out;
    } cases[] = {
        {"", ""},           {"plain text", "plain text"},     {"a,b", "\"a,b\""},
        {"\"", "\"\"\"\""}, {"two\nlines", "\"two\nlines\""}, {"cr\r", "\"cr\r\""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::csvField(c.in), c.out) << c.in;
    }
    std::ostringstream out;
    regscan::writeCsv(out, {{"rpm", "k", "n", "1,0", "", "/opt/", "x\"y"}});
    EXPECT_EQ(out.str(),
              "registry,key,name,version,vendor,installDir,description\r\n"
              "rpm,k,n,\"1,0\",,/opt/,\"x\"\"y\"\r\n");
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
    // Cutting counts characters, and an invalid byte as one.
    EXPECT_EQ(regscan::truncateToWidth("\u00e9\u00e9\u00e9\u00e9", 3), "\u00e9\u00e9\u2026");
    EXPECT_EQ(regscan::truncateToWidth("ab\xff\xfe"
                                       "cd",
                                       4),
              "ab\xff\u2026");
}

TEST(OutputFormatsTest, JsonKeepsKeyOrderAndReplacesBadBytes) {
    std::ostringstream out;
    regscan::writeJson(out, {{"rpm", "k", "n\xff", "1", "v", "/d", "d"}});
    EXPECT_EQ(nlohmann::ordered_json::parse(out.str()), nlohmann::ordered_json::parse(R"([{
        "registry":"rpm","key":"k","name":"n\uFFFD","version":"1","vendor":"v",
        "installDir":"/d","description":"d"}])"));
}

TEST(InventoryTest, ListsGoodRegistriesAndReportsFailedOnes) {
    fake::Plugin plugin;
    regscan::CodeNames names;
    names.load([](const char* symbol) -> const void* {
        static const TErrorCode code = -13111;
        return std::string(symbol) == "REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST" ? &code
                                                                                    : nullptr;
    });
    regscan::Inventory inventory = regscan::collectInventory(
        plugin,
        {{"broken", "Broken", "Info", "the broken store could not be read", {}},
         {"good", "List", "Info", "unused", {}},
         {"missing", "NoSuchList", "Info", "unused", {}},
         {"noinfo", "Keys", "NoSuchInfo", "unused", {{"keys", "only"}}}},
        names);

    EXPECT_EQ(inventory.listedRegistries, 2);
    ASSERT_EQ(inventory.records.size(), 3u);
    const regscan::InventoryRecord& first = inventory.records[0];
    EXPECT_EQ(first.registry + "|" + first.key + "|" + first.name + "|" + first.vendor + "|" +
                  first.installDir + "|" + first.description,
              "good|k1|name of k1||installDir of k1|description of k1")
        << "a failing field gives an empty cell";
    EXPECT_EQ(first.version, "version of k1") << "without a display form, the version";
    EXPECT_EQ(inventory.records[1].version, "displayVersion of k2") << "the display form wins";
    EXPECT_EQ(inventory.records[2].key + "|" + inventory.records[2].name, "only|");

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
