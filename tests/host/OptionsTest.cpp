// Command-line parsing and the truth-value mapping of --set.
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "Options.h"

namespace {

using regscan::Command;
using regscan::parseOptions;
using regscan::PropertyList;

TEST(OptionsTest, TruthValuedPropertiesMapToTheHostTexts) {
    struct Case {
        const char *name, *value, *expected;
    } cases[] = {
        {"listUnmatchedSoftware", "YES", "TRUE"},
        {"failOnBrokenCab", "1", "TRUE"},
        {"showRemovedPackages", "False", "FALSE"},
        {"showSupersededWindowsUpdates", "0", "FALSE"},
        // Anything else goes through as given, so that the plug-in rejects it.
        {"showRemovedPackages", "maybe", "maybe"},
        {"showRemovedPackages", " true", " true"},
        {"pdxDirectory", "yes", "yes"},
        {"ListUnmatchedSoftware", "yes", "yes"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::configurationValue(c.name, c.value), c.expected)
            << c.name << "=" << c.value;
    }
}

TEST(OptionsTest, GoodCommandLines) {
    regscan::Options o = parseOptions(
        {"--plugin", "/x/lib.so", "--set", "a=b=c", "--set=listUnmatchedSoftware=yes", "--trace=2",
         "--trace-file", "/tmp/t", "eval", "Info", "code=k", "field=", "code=k2"});
    EXPECT_EQ(o.pluginPath, "/x/lib.so");
    EXPECT_EQ(o.settings, (PropertyList{{"a", "b=c"}, {"listUnmatchedSoftware", "TRUE"}}));
    EXPECT_EQ(o.traceLevel, 2);
    EXPECT_TRUE(o.traceFileGiven);
    EXPECT_EQ(o.traceFile, "/tmp/t");
    EXPECT_EQ(o.command, Command::Eval);
    EXPECT_EQ(o.expressionName, "Info");
    EXPECT_EQ(o.properties, (PropertyList{{"code", "k"}, {"field", ""}, {"code", "k2"}}));

    o = parseOptions({"inventory", "--format", "csv", "--trace", "3"});
    EXPECT_EQ(o.command, Command::Inventory);
    EXPECT_EQ(o.format, regscan::InventoryFormat::Csv);
    EXPECT_EQ(o.traceLevel, 3);
    o = parseOptions({"batch", "-"});
    EXPECT_TRUE(o.batchFromFile);
    EXPECT_EQ(o.batchFile, "-");
    // After "--" everything is an argument, even what looks like an option.
    EXPECT_EQ(parseOptions({"eval", "X", "--", "--odd=1"}).properties,
              (PropertyList{{"--odd", "1"}}));
}

TEST(OptionsTest, UsageErrors) {
    // Words split at spaces; "--plugin=" gives an empty value.
    for (const char* line :
         {"", "--trace 2", "frobnicate", "names extra", "eval", "eval X noequals", "eval X =v",
          "inventory --format xml", "--format csv names", "--set novalue names", "--trace 4 names",
          "--plugin= names", "--trace-file= names", "names --plugin", "--unknown names",
          "--version=maybe", "batch a b", "match", "match --catalog c --format spdx"}) {
        std::istringstream words(line);
        std::vector<std::string> args{std::istream_iterator<std::string>(words), {}};
        EXPECT_THROW(parseOptions(args), regscan::UsageError) << "[" << line << "]";
    }
}

}  // namespace
