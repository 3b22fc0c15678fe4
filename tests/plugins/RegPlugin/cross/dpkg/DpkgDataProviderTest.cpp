#include "cross/dpkg/DpkgDataProvider.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "../../PluginTestSupport.h"
#include "RegPluginConstants.h"
#include "cross/dpkg/DpkgPackage.h"

namespace RegPluginTest {
namespace {

using RegPlugin::DpkgDataProvider;
using RegPlugin::RegistryPackage;
using Packages = std::vector<std::string>;

const std::string kInstalled = "Status: install ok installed\n";

std::string padded(const std::string& head, std::size_t size) {
    return head + std::string(size - head.size(), 'y');
}

// "|name|version|displayVersion|description" of `package` ("-" for a missing one),
// asked for in this order or, when `backwards`, in the reverse one.
std::string fields(RegistryPackage& package, bool backwards) {
    const wchar_t* const names[] = {
        REG_PLUGIN_PROPERTY_FIELD_NAME, REG_PLUGIN_PROPERTY_FIELD_VERSION,
        REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION, REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION};
    std::string values[4];
    for (int i = 0; i < 4; ++i) {
        const int field = backwards ? 3 - i : i;
        PluginSDK::String value(L"-");
        package.getProperty(names[field], value);
        values[field] = value.toUtf8();
    }
    return "|" + values[0] + "|" + values[1] + "|" + values[2] + "|" + values[3];
}

// Loads `text` as a status file (expecting success); each package in load order as
// "key|name|version|displayVersion|description". Version and description are made
// from the file's text when first asked for, so every package must read the same
// whichever property is asked for first, and when asked again.
Packages load(const TempDir& dir, const std::string& text) {
    const std::string path = dir.write("status", text);
    Packages packages[2];
    for (const bool backwards : {false, true}) {
        DpkgDataProvider provider(path.c_str());
        EXPECT_EQ(provider.load(), 0);
        for (RegistryPackage* p = provider.getFirst(); p != nullptr; p = provider.getNext()) {
            PluginSDK::String unknown;
            EXPECT_EQ(p->getProperty(L"Version", unknown), REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
            packages[backwards].push_back(p->key.toUtf8() + fields(*p, backwards));
            EXPECT_EQ(p->key.toUtf8() + fields(*p, !backwards), packages[backwards].back());
            EXPECT_EQ(p->provider, PluginSDK::String(L"DPKG"));
            EXPECT_TRUE(static_cast<RegPlugin::DpkgPackage*>(p)->isInstalled());
        }
    }
    EXPECT_EQ(packages[0], packages[1]) << "the order of the questions changed the answers";
    return packages[0];
}

TEST(DpkgDataProviderTest, ParagraphsBecomeInstalledPackages) {
    const std::string a = "Package: a\n" + kInstalled + "Version: 1\n\n";
    const std::string b = "Package: b\n" + kInstalled + "Version: 2\n";
    const Packages abc = {"a|a|1|1|-", "c|c|3|3|-", "b|b|2|2|-"};
    std::mt19937 random(7);
    std::string garbage;
    for (int i = 0; i < 65536; ++i)
        garbage += static_cast<char>(random() & 0xff);
    const struct {
        const char* what;
        std::string input;
        Packages expected;
    } cases[] = {
        {"description cut to its first line",
         "Package: a\n" + kInstalled + "Version: 1.0\nDescription: first line\n more\n .\n end\n",
         {"a|a|1.0|1.0|first line"}},
        {"continuation lines that look like fields belong to the description",
         "Package: a\n" + kInstalled + "Version: 1.0\nDescription: first line\n Version: 9\n" +
             " Description: other\n Package: b\n Status: deinstall ok config-files\n",
         {"a|a|1.0|1.0|first line"}},
        {"a repeated field: the last one wins",
         "Package: a\n" + kInstalled + "Version: 1\nDescription: one\nVersion: 2\n" +
             "Description: two\nVersion: 3\n",
         {"a|a|3|3|two"}},
        {"a repeated Status: an installed one counts wherever it is",
         "Package: a\n" + kInstalled + "Status: deinstall ok config-files\n\n" +
             "Package: b\nStatus: deinstall ok config-files\n" + kInstalled,
         {"a|a|-|-|-", "b|b|-|-|-"}},
        {"epoch and revision kept",
         "Package: a\n" + kInstalled + "Version: 1:2.3-4ubuntu1\n",
         {"a|a|1:2.3-4ubuntu1|1:2.3-4ubuntu1|-"}},
        {"states: only \" installed\" counts",
         "Package: ok\nStatus: install ok installed\n\n"
         "Package: notinst\nStatus: install ok not-installed\n\n"
         "Package: half\nStatus: install ok half-installed\n\n"
         "Package: conf\nStatus: deinstall ok config-files\n\n"
         "Package: hold\nStatus: hold ok installed\n\n"
         "Package: deinst\nStatus: deinstall ok installed\n\n"
         "Package: nostatus\nVersion: 1\n",
         {"ok|ok|-|-|-", "hold|hold|-|-|-", "deinst|deinst|-|-|-"}},
        {"no final newline",
         "Package: a\n\nPackage: b\n" + kInstalled.substr(0, 28),
         {"b|b|-|-|-"}},
        {"a second Package line only renames",
         "Package: a\n" + kInstalled + "Package: b\nVersion: 2\n",
         {"a|b|2|2|-"}},
        {"the first paragraph of a name wins",
         "Package: lib\n" + kInstalled + "Version: 1\n\nPackage: lib\n" + kInstalled +
             "Version: 2\n",
         {"lib|lib|1|1|-"}},
        {"fields before the Package line are dropped, Status included",
         "Version: 0\nDescription: early\nPackage: a\n" + kInstalled + "\n" + kInstalled +
             "Package: b\nVersion: 1\n",
         {"a|a|-|-|-"}},
        {"leading colons are not part of the name",
         "::Package: a\n:" + kInstalled + ":::Version: 2\n:Description:: d\n",
         {"a|a|2|2|: d"}},
        {"names match exactly; a description without a version",
         "Packages: x\npackage: z\nPackage: a\n" + kInstalled + "Version 2: 1\nDescription: d\n",
         {"a|a|-|-|d"}},
        {"CRLF",
         "Package: a\r\nStatus: install ok installed\r\nVersion: 1\r\nDescription: d\r\n more\r\n"
         "\r\nPackage: b\r\nStatus: install ok installed\r\n",
         {"a|a|1|1|d", "b|b|-|-|-"}},
        {"lines of 2047 and 2048 bytes and one longer than the read buffer",
         a + "Package: c\n" + kInstalled + padded("Depends: x", 2047) + "\n" +
             padded("Depends: x", 2048) + "\nVersion: 3\n" + padded("Depends: x", 200000) + "\n\n" +
             b,
         abc},
        {"binary garbage", a + garbage + "\n\n" + b, {"a|a|1|1|-", "b|b|2|2|-"}},
        {"NUL bytes end a line's text",
         a + std::string("Package: c\0junk\n", 16) + kInstalled + std::string("Version: 3\0", 11) +
             std::string(300000, 'v') + "\n" + std::string("\0Package: d\n", 12) + "\n" + b,
         abc},
        {"invalid UTF-8 round-trips",
         "Package: caf\xe9\n" + kInstalled + "Version: \xff\xfe" +
             "1\nDescription: \xc3\x28 \xed\xa0\x80 ok\n",
         {"caf\xe9|caf\xe9|\xff\xfe" + std::string("1|\xff\xfe") + "1|\xc3\x28 \xed\xa0\x80 ok"}},
        {"a value that is only the line end; empty ones cut by a NUL byte or the input's end",
         "Package: a\n" + kInstalled + std::string("Version:\0x\n", 11) + "Description:\n\n" +
             "Package: b\n" + kInstalled + "Version:\nDescription:",
         {"a|a|||\n", "b|b|\n|\n|"}},
        {"empty file", "", {}},
    };
    const TempDir dir;
    for (const auto& c : cases)
        EXPECT_EQ(load(dir, c.input), c.expected) << c.what << "\ninput: " << printable(c.input);
}

TEST(DpkgDataProviderTest, MissingFileIsTracedAndLatched) {
    TempDir dir;
    const std::string missing = dir.path() + "/missing";
    TraceCapture trace;
    DpkgDataProvider direct(missing.c_str());
    EXPECT_EQ(direct.load(), REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(direct.size(), 0);
    EXPECT_TRUE(trace.sink().contains("cannot open " + missing + " ( errno = 2 )"));
    DpkgDataProvider preloaded(missing.c_str());
    PluginSDK::StringVector keys;
    EXPECT_EQ(preloaded.enumPackages(RegistryPackage::ANY, keys),
              REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
}

}  // namespace
}  // namespace RegPluginTest
