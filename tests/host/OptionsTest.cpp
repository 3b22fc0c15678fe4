// Command-line parsing and the truth-value mapping of --set.
#include <gtest/gtest.h>

#include "Options.h"

namespace {

using regscan::Command;
using regscan::InventoryFormat;
using regscan::Options;
using regscan::parseOptions;

std::string join(const std::vector<std::string>& args) {
    std::string text;
    for (const std::string& arg : args) {
        text += "[" + arg + "]";
    }
    return text;
}

TEST(OptionsTest, TruthValuedPropertiesMapToTheHostTexts) {
    struct Case {
        const char* name;
        const char* value;
        const char* expected;
    } cases[] = {
        {"listUnmatchedSoftware", "true", "TRUE"},
        {"listUnmatchedSoftware", "YES", "TRUE"},
        {"failOnBrokenCab", "1", "TRUE"},
        {"showRemovedPackages", "False", "FALSE"},
        {"showUncommittedPackages", "nO", "FALSE"},
        {"showSupersededWindowsUpdates", "0", "FALSE"},
        // Anything else goes through as given, so that the plug-in rejects it.
        {"showRemovedPackages", "maybe", "maybe"},
        {"showRemovedPackages", "", ""},
        {"showRemovedPackages", " true", " true"},
        // Other properties are never mapped; nor are names in another case.
        {"pdxDirectory", "yes", "yes"},
        {"ListUnmatchedSoftware", "yes", "yes"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(regscan::configurationValue(c.name, c.value), c.expected)
            << c.name << "=" << c.value;
    }
}

TEST(OptionsTest, GoodCommandLines) {
    Options o = parseOptions({"--plugin", "/x/lib.so", "--set", "a=b=c",
                              "--set=listUnmatchedSoftware=yes", "--trace=2", "--trace-file",
                              "/tmp/t", "eval", "Info", "code=k", "field=", "code=k2"});
    EXPECT_EQ(o.pluginPath, "/x/lib.so");
    regscan::PropertyList settings = {{"a", "b=c"}, {"listUnmatchedSoftware", "TRUE"}};
    EXPECT_EQ(o.settings, settings);
    EXPECT_EQ(o.traceLevel, 2);
    EXPECT_TRUE(o.traceFileGiven);
    EXPECT_EQ(o.traceFile, "/tmp/t");
    EXPECT_EQ(o.command, Command::Eval);
    EXPECT_EQ(o.expressionName, "Info");
    regscan::PropertyList properties = {{"code", "k"}, {"field", ""}, {"code", "k2"}};
    EXPECT_EQ(o.properties, properties);

    o = parseOptions({"inventory", "--format", "csv", "--trace", "3"});
    EXPECT_EQ(o.command, Command::Inventory);
    EXPECT_EQ(o.format, InventoryFormat::Csv);
    EXPECT_EQ(o.traceLevel, 3);

    o = parseOptions({"batch", "-"});
    EXPECT_TRUE(o.batchFromFile);
    EXPECT_EQ(o.batchFile, "-");
    EXPECT_FALSE(parseOptions({"batch"}).batchFromFile);

    // After "--" everything is an argument, even what looks like an option.
    o = parseOptions({"eval", "X", "--", "--odd=1"});
    EXPECT_EQ(o.properties, (regscan::PropertyList{{"--odd", "1"}}));

    EXPECT_TRUE(parseOptions({"--help"}).help);
    EXPECT_TRUE(parseOptions({"--version"}).version);
    EXPECT_EQ(parseOptions({"names"}).command, Command::Names);
}

TEST(OptionsTest, UsageErrors) {
    const std::vector<std::vector<std::string>> bad = {
        {},
        {"--trace", "2"},
        {"frobnicate"},
        {"names", "extra"},
        {"eval"},
        {"eval", "X", "noequals"},
        {"eval", "X", "=value"},
        {"batch", "a", "b"},
        {"inventory", "extra"},
        {"inventory", "--format", "xml"},
        {"names", "--format", "json"},
        {"--set", "novalue", "names"},
        {"--set", "=v", "names"},
        {"--set"},
        {"--trace", "0", "names"},
        {"--trace", "4", "names"},
        {"--trace", "two", "names"},
        {"--plugin", "", "names"},
        {"--unknown", "names"},
        {"-x", "names"},
        {"--help=yes"},
        {"-h", "bogus"},
    };
    for (const auto& args : bad) {
        EXPECT_THROW(parseOptions(args), regscan::UsageError) << join(args);
    }
}

}  // namespace
