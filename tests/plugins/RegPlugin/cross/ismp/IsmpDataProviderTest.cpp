#include "cross/ismp/IsmpDataProvider.h"

#include <gtest/gtest.h>
#include <pwd.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "../../PluginTestSupport.h"
#include "RegPluginConstants.h"
#include "common/RegistryDataProviderFactory.h"

namespace RegPluginTest {
namespace {

using RegPlugin::IsmpDataProvider;
using RegPlugin::RegistryPackage;
using Packages = std::vector<std::string>;
using Strings = Packages;

// Fixture lines as the installers write them. KEY: identifier, four version parts, a
// field the reader ignores, instance. INFO: name, description, a flag, vendor, a URL, a
// version text, install directory, the four counted lists, one field, the uninstaller
// field (blank for features) and, for products, nine trailing fields.
std::string fields(const std::string& prefix, int count) {
    std::string out;
    for (int i = 1; i <= count; ++i)
        out += (i > 1 ? "|" : "") + prefix + std::to_string(i);
    return out;
}

std::string key(const std::string& id, const std::string& parts = "1|2|0|3") {
    return id + "|" + parts + "|ignored|1";
}

std::string head(const std::string& name, const std::string& dir = "/opt/app") {
    return name + "|" + name + " description|true|Example Vendor|http://www.example.com|1.2.0.3|" +
           dir;
}

// The four counted lists: two single fields, one 10-field record, no 7-field record,
// two 5-field records.
const std::string kLists =
    "2|lib/a.jar|lib/b.jar|1|" + fields("d", 10) + "|0|2|" + fields("p", 5) + "|" + fields("q", 5);
const std::string kUninstaller = "\"_uninst\" \"uninstall.jar\" \"uninstall.dat\" \"\"";
const std::string kProductTail = "|" + kLists + "|4|" + kUninstaller + "|" + fields("t", 9);
const std::string kFeatureTail = "|" + kLists + "|4| ";

std::string product(const std::string& id, const std::string& name) {
    return key(id) + "=" + head(name) + kProductTail + "\n";
}

std::string feature(const std::string& id, const std::string& name) {
    return key(id) + "=" + head(name) + kFeatureTail + "\n";
}

// "key|type|name|version|instance|description|vendor|installDir|uninstData", "-" for a
// property that is not there.
std::string describe(RegistryPackage& package) {
    std::string out = package.key.toUtf8() + "|" + std::to_string(package.type);
    for (const wchar_t* name :
         {REG_PLUGIN_PROPERTY_FIELD_NAME, REG_PLUGIN_PROPERTY_FIELD_VERSION,
          REG_PLUGIN_PROPERTY_FIELD_INSTANCE, REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION,
          REG_PLUGIN_PROPERTY_FIELD_VENDOR, REG_PLUGIN_PROPERTY_FIELD_INSTDIR,
          REG_PLUGIN_PROPERTY_FIELD_UNINSTDATA}) {
        auto found = package.properties.find(name);
        out += "|" + (found == package.properties.end() ? "-" : found->second.toUtf8());
    }
    return out;
}

std::string productOf(const std::string& id, const std::string& name) {
    return id + "@1.2.0.3|1|" + name + "|1.2.0.3|1|" + name +
           " description|Example Vendor|/opt/app|/opt/app/_uninst/uninstall.dat";
}

std::string featureOf(const std::string& id, const std::string& name) {
    return id + "@1.2.0.3|2|" + name + "|1.2.0.3|1|" + name +
           " description|Example Vendor|/opt/app|";
}

// A package whose line ended early: what was read before the missing or bad field.
std::string shortProductOf(const std::string& id, const std::string& name) {
    return id + "@1.2.0.3|1|" + name + "|1.2.0.3|1|" + name +
           " description|Example Vendor|/opt/app|-";
}

struct Loaded {
    TErrorCode code;
    Packages packages;
};

Loaded load(const std::string& path) {
    IsmpDataProvider provider(path);
    Loaded loaded{provider.load(), {}};
    for (RegistryPackage* p = provider.getFirst(); p != nullptr; p = provider.getNext()) {
        EXPECT_EQ(p->provider, PluginSDK::String(L"ISMP"));
        loaded.packages.push_back(describe(*p));
    }
    return loaded;
}

TEST(IsmpDataProviderTest, LinesBecomePackages) {
    const std::string a = product("A1", "Alpha");
    const std::string b = product("B2", "Beta");
    const std::string crlfFeature = key("F9") + "=" + head("Feat") + kFeatureTail + "\r\n";
    // A line of exactly 1000 characters, most of them the description.
    const std::string longHead = key("L") + "=Long|";
    const std::string longTail =
        "|true|Example Vendor|http://www.example.com|1.2.0.3|/opt/app" + kProductTail;
    const std::string longDescription(1000 - longHead.size() - longTail.size(), 'd');
    const struct {
        const char* what;
        std::string input;
        Packages expected;
    } cases[] = {
        {"products and features",
         a + feature("F1", "Feat") + key("F2") + "=" + head("Bare") + "|" + kLists + "|4\n" + b,
         {productOf("A1", "Alpha"), featureOf("F1", "Feat"), featureOf("F2", "Bare"),
          productOf("B2", "Beta")}},
        {"counted lists of every length, negative counts skip nothing, a leading blank is fine",
         key("C1") + "=" + head("Zero") + "|0|0|0|0|4|" + kUninstaller + "|" + fields("t", 9) +
             "\n" + key("C2") + "=" + head("Neg") + "|-1|-5|-2|-99999999999|4|" + kUninstaller +
             "|" + fields("t", 9) + "\n" + key("C3") + "=" + head("Many") + "| 3|x|y|z|2|" +
             fields("d", 20) + "|1|" + fields("s", 7) + "|1|" + fields("p", 5) + "|4|" +
             kUninstaller + "|" + fields("t", 9) + "\n",
         {productOf("C1", "Zero"), productOf("C2", "Neg"), productOf("C3", "Many")}},
        {"bad, huge or blank-ended counts end the entry, which is kept; the file goes on",
         key("H1") + "=" + head("Huge") + "|99999999999|" + fields("x", 40) + "\n" + key("H2") +
             "=" + head("Word") + "|two|a|b\n" + key("H3") + "=" + head("Hex") +
             "|2|a|b|0x0|0|0|4|" + kUninstaller + "|" + fields("t", 9) + "\n" + key("H4") + "=" +
             head("Tail") + "|2|a|b|1|" + fields("d", 10) + "|0|0|4|" + kUninstaller + "|" +
             fields("t", 8) + "\n" + key("H5") + "=" + head("Blank") + "|1 |a|0|0|0|4|" +
             kUninstaller + "|" + fields("t", 9) + "\n" + a,
         {shortProductOf("H1", "Huge"), shortProductOf("H2", "Word"), shortProductOf("H3", "Hex"),
          shortProductOf("H4", "Tail"), shortProductOf("H5", "Blank"), productOf("A1", "Alpha")}},
        {"blank version parts end the version",
         "V1|1|2| |3|x|1=" + head("Third") + kProductTail + "\nV2| \t|2|3|4|x|1=" + head("None") +
             "\nV3|7|8|9| |x| i2 =" + head("Three") + "\n",
         {"V1@1.2|1|Third|1.2|1|Third description|Example Vendor|/opt/app|"
          "/opt/app/_uninst/uninstall.dat",
          "V2@|1|None||1|None description|Example Vendor|/opt/app|-",
          "V3@7.8.9|1|Three|7.8.9|i2|Three description|Example Vendor|/opt/app|-"}},
        {"adjacent | are one separator: later fields move forward",
         "J1|1||2|3|4|5|6=Name||flag|Vendor|url|ver|/opt/j|0|0|0|0|4|" + kUninstaller + "|" +
             fields("t", 9) + "\n",
         {"J1@1.2.3.4|1|Name|1.2.3.4|6|flag|url|0|-"}},
        {"a second = ends INFO; leading = are skipped",
         key("E1") + "=Name|a=b|flag|Vendor" + kProductTail + "\n==" + key("E2") +
             "==" + head("Lead") + kProductTail + "\n",
         {"E1@1.2.0.3|1|Name|1.2.0.3|1|a|||-", productOf("E2", "Lead")}},
        {"a 1000-character line",
         longHead + longDescription + longTail + "\n" + b,
         {"L@1.2.0.3|1|Long|1.2.0.3|1|" + longDescription +
              "|Example Vendor|/opt/app|/opt/app/_uninst/uninstall.dat",
          productOf("B2", "Beta")}},
        {"CRLF: the CR belongs to the last field; trimmed fields lose it",
         "\r\n" + product("A1", "Alpha").insert(product("A1", "Alpha").size() - 1, "\r") +
             crlfFeature + key("D1") + "=" + head("Dir", "/opt/d") + "\r\n" + key("D2") + "=" +
             head("Count") + "|0\r\n",
         {productOf("A1", "Alpha"), featureOf("F9", "Feat"),
          "D1@1.2.0.3|1|Dir|1.2.0.3|1|Dir description|Example Vendor|/opt/d|-",
          shortProductOf("D2", "Count")}},
        {"blank lines are skipped",
         "\n   \n\t\r\n" + a + "\n\n" + b,
         {productOf("A1", "Alpha"), productOf("B2", "Beta")}},
        {"no final newline",
         a + product("B2", "Beta").substr(0, product("B2", "Beta").size() - 1),
         {productOf("A1", "Alpha"), productOf("B2", "Beta")}},
        {"the first line of a key wins",
         a + product("A1", "Other") + b,
         {productOf("A1", "Alpha"), productOf("B2", "Beta")}},
        {"a feature is not checked for extra fields",
         key("F1") + "=" + head("Feat") + kFeatureTail + "|more|fields|" + fields("t", 12) + "\n" +
             b,
         {featureOf("F1", "Feat"), productOf("B2", "Beta")}},
        {"a NUL byte ends the line's text; the next line is whole",
         key("Z1") + "=Name|de" + std::string(1, '\0') + "sc|flag" + kProductTail + "\n" + b,
         {"Z1@1.2.0.3|1|Name|1.2.0.3|1|de|||-", productOf("B2", "Beta")}},
        {"invalid UTF-8 is kept byte for byte",
         key("\xff\xfe") + "=" + head("caf\xe9 \xc3\x28", "/opt/\xed\xa0\x80") + kProductTail +
             "\n",
         {"\xff\xfe@1.2.0.3|1|caf\xe9 \xc3\x28|1.2.0.3|1|caf\xe9 \xc3\x28 description|"
          "Example Vendor|/opt/\xed\xa0\x80|/opt/\xed\xa0\x80/_uninst/uninstall.dat"}},
        {"a 10 MB field in the first counted list",
         a + key("M1") + "=" + head("Big") + "|1|" + std::string(10 * 1024 * 1024, 'j') + "|1|" +
             fields("d", 10) + "|0|0|4|" + kUninstaller + "|" + fields("t", 9) + "\n" + b,
         {productOf("A1", "Alpha"), productOf("M1", "Big"), productOf("B2", "Beta")}},
        {"empty file", "", {}},
    };
    const TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.what) + "\ninput: " + printable(c.input));
        const Loaded loaded = load(dir.write("vpd.properties", c.input));
        EXPECT_EQ(loaded.code, 0);
        EXPECT_EQ(loaded.packages, c.expected);
    }
}

// A refused line ends the load with its code; the packages before it stay, the
// rest of the file is not read.
TEST(IsmpDataProviderTest, RefusedLinesStopTheLoad) {
    const struct {
        const char* what;
        std::string line;
        TErrorCode code;
    } cases[] = {
        {"one field too many: refused, the rest of the file is not read",
         key("X1") + "=" + head("Extra") + kProductTail + "|extra\n",
         REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY},
        {"an uninstaller field without a fifth token",
         key("U1") + "=" + head("Uninst") + "|" + kLists + "|4|\"_uninst\" \"x.jar\"|" +
             fields("t", 9) + "\n",
         REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY},
        {"a line without =", key("N1") + "|" + head("NoEquals") + "\n",
         REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_ENTRY},
        {"only = characters", "=====\n", REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_ENTRY},
        {"nothing after =", key("N2") + "=\n", REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_ENTRY},
        {"an empty name", key("N3") + "= \t|desc|x\n",
         REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD},
        {"INFO of separators only", key("N4") + "=|||\n",
         REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD},
    };
    const TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Loaded loaded = load(
            dir.write("vpd.properties", product("A1", "Alpha") + c.line + product("B2", "Beta")));
        EXPECT_EQ(loaded.code, c.code);
        EXPECT_EQ(loaded.packages, Packages{productOf("A1", "Alpha")});
    }
}

TEST(IsmpDataProviderTest, GarbageNeverLosesThePackagesBefore) {
    const std::string a = product("A1", "Alpha");
    const std::string b = product("B2", "Beta");
    std::mt19937 random(11);
    const TempDir dir;
    // Garbage of every byte value: whatever it parses to, the line before it stays.
    for (int round = 0; round < 20; ++round) {
        std::string garbage;
        for (int i = 0; i < 4096; ++i)
            garbage += static_cast<char>(random() & 0xff);
        const Loaded loaded = load(dir.write("vpd.properties", a + garbage + "\n" + b));
        ASSERT_FALSE(loaded.packages.empty()) << "round " << round;
        EXPECT_EQ(loaded.packages[0], productOf("A1", "Alpha")) << "round " << round;
        if (loaded.code == 0) {
            EXPECT_EQ(loaded.packages.back(), productOf("B2", "Beta")) << "round " << round;
        }
    }
}

// The trace lines of a load, and the file that even root cannot open (a write-only
// sysctl).
TEST(IsmpDataProviderTest, LoadOutcomesAndTheirTraceLines) {
    const TempDir dir;
    const std::string good = dir.write("good", product("A1", "Alpha"));
    const std::string bad = dir.write("bad", "=\n");
    const std::string missing = dir.path() + "/missing";
    const std::string sysctl = "/proc/sys/vm/drop_caches";
    const struct {
        std::string path;
        TErrorCode code;
        Strings lines;  // level, message
    } cases[] = {
        {good, 0, {"3 package A1 version is: 1.2.0.3", "3 ISMP registry file parsed: " + good}},
        {missing, 0, {"1 not a valid file", "3 ISMP registry file does not exist: " + missing}},
        {dir.path(),
         0,
         {"1 not a valid file", "3 ISMP registry file does not exist: " + dir.path()}},
        {bad, REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_ENTRY, {"1 parsing of file failed: " + bad}},
        {sysctl,
         REG_PLUGIN_ERROR_UNABLE_TO_OPEN_ISMP_REGISTRY,
         {"1 file cannot be opened", "1 parsing of file failed: " + sysctl}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        TraceCapture trace;
        IsmpDataProvider provider(c.path);
        EXPECT_EQ(provider.load(), c.code);
        EXPECT_EQ(provider.size(), c.path == good ? 1 : 0);
        Strings lines;
        for (const auto& line : trace.sink().lines()) {
            lines.push_back(std::to_string(line.level) + " " + line.message);
            if (c.path == good) {
                EXPECT_EQ(line.signature, line.message == "package A1 version is: 1.2.0.3"
                                              ? "IsmpDataProvider::parseRegistryEntryKey(char *, "
                                                "IsmpPackage &)"
                                              : "IsmpDataProvider::load(ProductList::ProductType)");
                EXPECT_EQ(line.component, 5);
            }
        }
        EXPECT_EQ(lines, c.lines);
    }
    // A failed load is remembered: the packages before the bad line stay in the
    // cache, but queries get the load failure.
    IsmpDataProvider provider(dir.write("stops", product("A1", "Alpha") + "=\n"));
    PluginSDK::StringVector keys;
    EXPECT_EQ(provider.enumPackages(RegistryPackage::ANY, keys),
              REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
    EXPECT_EQ(provider.size(), 1);
}

TEST(IsmpDataProviderTest, RegistryPathIsInRootsHome) {
    const struct {
        const char* home;
        const char* path;
    } cases[] = {
        {"/root", "/root/vpd.properties"},
        {"/root/", "/root/vpd.properties"},
        {"/", "/vpd.properties"},
        {"", "vpd.properties"},
        {"/home/admin", "/home/admin/vpd.properties"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(IsmpDataProvider::registryPathInHome(c.home), c.path) << "home " << c.home;

    const struct passwd* root = ::getpwnam("root");
    ASSERT_NE(root, nullptr);
    IsmpDataProvider provider;
    PluginSDK::StringVector paths;
    EXPECT_EQ(provider.getVitalDataPaths(paths), 0);
    ASSERT_EQ(paths.size(), 1);
    EXPECT_EQ(paths[0].toUtf8(), IsmpDataProvider::registryPathInHome(root->pw_dir));
}

// readLine: the buffer starts at 256 bytes and grows by 32-byte steps while the line
// does not fit with its NUL byte.
TEST(IsmpDataProviderTest, ReadLineReadsWholeLinesOfAnyLength) {
    const struct {
        std::string input;
        std::vector<std::string> lines;  // what successive calls give
        unsigned int size;               // the buffer's size after the last call
    } cases[] = {
        {"short\nsecond", {"short", "second", ""}, 256},
        {std::string(254, 'a') + "\n", {std::string(254, 'a')}, 256},
        {std::string(255, 'a') + "\n", {std::string(255, 'a')}, 288},
        {std::string(255, 'a'), {std::string(255, 'a')}, 288},
        {std::string(1000, 'a') + "\nb\n", {std::string(1000, 'a'), "b", ""}, 1024},
        {"a\r\n\nb", {"a\r", "", "b"}, 256},
        {std::string("nul\0inside\n\0\nend", 16),
         {std::string("nul\0inside", 10), std::string(1, '\0'), "end"},
         256},
    };
    for (const auto& c : cases) {
        FILE* file = std::tmpfile();
        ASSERT_NE(file, nullptr);
        std::fwrite(c.input.data(), 1, c.input.size(), file);
        std::rewind(file);
        IsmpDataProvider provider("unused");
        RegPlugin::MemoryBuffer buffer(256, 32);
        std::vector<std::string> lines;
        for (std::size_t i = 0; i < c.lines.size(); ++i) {
            const int length = provider.readLine(file, buffer);
            lines.emplace_back(reinterpret_cast<const char*>(buffer.data), length);
            // Zero beyond the text: the line is a NUL-terminated string.
            for (unsigned int at = static_cast<unsigned int>(length); at < buffer.size; ++at)
                ASSERT_EQ(buffer.data[at], 0) << printable(c.input) << " at " << at;
        }
        EXPECT_EQ(lines, c.lines) << printable(c.input);
        EXPECT_EQ(buffer.size, c.size) << printable(c.input);
        std::fclose(file);
    }
}

}  // namespace
}  // namespace RegPluginTest
