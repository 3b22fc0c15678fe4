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
    // Extra fields stay out of the columns.
    regscan::InventoryRecord tessel{"tessel", "a.1", "a", "1", "", "", ""};
    tessel.extraFields = {{"isInstalled", "true"}};
    std::ostringstream out;
    regscan::writeCsv(out, {{"rpm", "k", "n", "1,0", "", "/opt/", "x\"y"}, tessel});
    EXPECT_EQ(out.str(),
              "registry,key,name,version,vendor,installDir,description\r\n"
              "rpm,k,n,\"1,0\",,/opt/,\"x\"\"y\"\r\n"
              "tessel,a.1,a,1,,,\r\n");
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
    regscan::writeJson(out,
                       {{"rpm", "k", "n\xff", "1", "v", "/d", "d"},
                        {"orlo", "k2", "", "", "", "", "", {{"kind", "Fix"}, {"TAG_FILE", ""}}}});
    EXPECT_EQ(out.str(), nlohmann::ordered_json::parse(R"([{
        "registry":"rpm","key":"k","name":"n\uFFFD","version":"1","vendor":"v",
        "installDir":"/d","description":"d"}, {
        "registry":"orlo","key":"k2","name":"","version":"","vendor":"",
        "installDir":"","description":"","kind":"Fix","TAG_FILE":""}])")
                                 .dump(2) +
                             "\n");
}

TEST(InventoryTest, RegistriesNeedingASettingAreListedOnlyWithIt) {
    const std::vector<regscan::RegistrySource> registries = {
        {"always", "Keys", "Info", "", {}},
        {"catalog", "Keys", "Info", "", {}, "pdxDirectory"},
    };
    struct Case {
        regscan::PropertyList settings;
        std::vector<std::string> listed;
    } cases[] = {
        {{}, {"always"}},
        {{{"showRemovedPackages", "TRUE"}}, {"always"}},
        {{{"PDXDirectory", "/x"}}, {"always"}},
        {{{"pdxDirectory", ""}}, {"always", "catalog"}},
        {{{"listUnmatchedSoftware", "TRUE"}, {"pdxDirectory", "/opt/p"}}, {"always", "catalog"}},
    };
    for (const Case& c : cases) {
        std::vector<std::string> listed;
        for (const regscan::RegistrySource& source :
             regscan::configuredRegistries(registries, c.settings)) {
            listed.push_back(source.registry);
        }
        EXPECT_EQ(listed, c.listed) << c.settings.size();
    }
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
        {{"broken", "Keys", "Info", "the broken store could not be read", {{"rc", "-13111"}}},
         {"good", "Keys", "Info", "unused", {{"keys", "k1,k2"}}},
         {"missing", "NoSuchList", "Info", "unused", {}},
         {"other", "Keys", "Info", "unused", {{"rc", "-13006"}}},
         {"noinfo", "Keys", "NoSuchInfo", "unused", {{"keys", "only"}}},
         {"extra", "Keys", "Info", "unused", {{"keys", "k3,blank"}}, nullptr, {"kind", "vendor"}}},
        names);

    EXPECT_EQ(inventory.listedRegistries, 3);
    std::vector<std::string> rows, failures;
    for (const regscan::InventoryRecord& r : inventory.records) {
        rows.push_back(r.registry + "|" + r.key + "|" + r.name + "|" + r.version + "|" + r.vendor +
                       "|" + r.installDir + "|" + r.description);
    }
    EXPECT_EQ(rows,
              (std::vector<std::string>{
                  // A failing field gives an empty cell; without a display form, the version.
                  "good|k1|name of k1|version of k1||installDir of k1|description of k1",
                  // The display form wins.
                  "good|k2|name of k2|displayVersion of k2||installDir of k2|description of k2",
                  "noinfo|only|||||",
                  "extra|k3|name of k3|displayVersion of k3||installDir of k3|description of k3",
                  // An empty display form does not hide the version.
                  "extra|blank|name of blank|version of blank||installDir of blank|description "
                  "of blank"}));
    // Extra fields are read per key; a failing one is left out.
    ASSERT_EQ(inventory.records.size(), 5u);
    EXPECT_EQ(inventory.records[3].extraFields,
              (std::vector<std::pair<std::string, std::string>>{{"kind", "kind of k3"}}));
    EXPECT_EQ(inventory.records[4].extraFields,
              (std::vector<std::pair<std::string, std::string>>{{"kind", "kind of blank"}}));
    for (const regscan::RegistryFailure& f : inventory.failures) {
        failures.push_back(f.message);
    }
    EXPECT_EQ(
        failures,
        (std::vector<std::string>{
            "broken: cannot list packages (-13111 REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST): "
            "the broken store could not be read",
            "missing: cannot list packages (-10008 ERROR_NO_SUCH_EXPRESSION): this plug-in "
            "cannot create the expression NoSuchList",
            "other: cannot list packages (-13006 (unnamed code)): the plug-in could not list this "
            "registry"}));
    EXPECT_EQ(plugin.liveExpressions, 0);
}

}  // namespace
