#include "cross/dpkg/DpkgDataProvider.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "RegPluginConstants.h"
#include "cross/dpkg/DpkgPackage.h"
#include "trace/Tracer.h"

namespace {

using RegPlugin::DpkgDataProvider;
using RegPlugin::RegistryPackage;
using Packages = std::vector<std::string>;

const std::string kInstalled = "Status: install ok installed\n";

// The first 200 bytes of `text`, bytes that are not printable shown as \xNN.
std::string printable(const std::string& text) {
    std::string out;
    for (unsigned char c : text.substr(0, 200)) {
        if (c >= 0x20 && c < 0x7f)
            out += static_cast<char>(c);
        else
            out += {'\\', 'x', "0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15]};
    }
    return out;
}

std::string padded(const std::string& head, std::size_t size) {
    return head + std::string(size - head.size(), 'y');
}

class DpkgDataProviderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/dpkg-provider-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        m_dir = pattern;
        m_path = m_dir + "/status";
    }
    void TearDown() override {
        ::unlink(m_path.c_str());
        ::rmdir(m_dir.c_str());
    }

    // Loads `text` as a status file (expecting success); each package in load order as
    // "key|name|version|displayVersion|description" ("-" for a missing property).
    Packages load(const std::string& text) {
        std::ofstream(m_path, std::ios::binary) << text;
        DpkgDataProvider provider(m_path.c_str());
        EXPECT_EQ(provider.load(), 0);
        Packages packages;
        for (RegistryPackage* p = provider.getFirst(); p != nullptr; p = provider.getNext()) {
            std::string line = p->key.toUtf8();
            for (const wchar_t* name :
                 {REG_PLUGIN_PROPERTY_FIELD_NAME, REG_PLUGIN_PROPERTY_FIELD_VERSION,
                  REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION,
                  REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION}) {
                PluginSDK::String value(L"-");
                p->getProperty(name, value);
                line += "|" + value.toUtf8();
            }
            EXPECT_EQ(p->provider, PluginSDK::String(L"DPKG"));
            EXPECT_TRUE(static_cast<RegPlugin::DpkgPackage*>(p)->isInstalled());
            packages.push_back(line);
        }
        return packages;
    }

    std::string m_dir;
    std::string m_path;
};

TEST_F(DpkgDataProviderTest, ParagraphsBecomeInstalledPackages) {
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
        {"names match exactly",
         "Packages: x\npackage: z\nPackage: a\n" + kInstalled + "Version 2: 1\n",
         {"a|a|-|-|-"}},
        {"CRLF",
         "Package: a\r\nStatus: install ok installed\r\nVersion: 1\r\nDescription: d\r\n more\r\n"
         "\r\nPackage: b\r\nStatus: install ok installed\r\n",
         {"a|a|1|1|d", "b|b|-|-|-"}},
        {"a 2047-byte line",
         a + "Package: c\n" + kInstalled + padded("Depends: x", 2047) + "\nVersion: 3\n\n" + b,
         abc},
        {"a 2048-byte line",
         a + "Package: c\n" + kInstalled + padded("Depends: x", 2048) + "\nVersion: 3\n\n" + b,
         abc},
        {"a 100 KB line",
         a + "Package: c\n" + kInstalled + padded("Depends: x", 100000) + "\nVersion: 3\n\n" + b,
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
        {"a value that is only the line end; an empty one at the end of the input",
         "Package: a\n" + kInstalled + "Version:\nDescription:",
         {"a|a|\n|\n|"}},
        {"empty file", "", {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(load(c.input), c.expected) << c.what << "\ninput: " << printable(c.input);
}

TEST_F(DpkgDataProviderTest, MissingFileIsTracedAndLatched) {
    Tracer::setLevel(1);
    MemoryTraceSink sink;
    Tracer::setSink(&sink);
    const std::string missing = m_dir + "/missing";
    DpkgDataProvider direct(missing.c_str());
    EXPECT_EQ(direct.load(), REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(direct.size(), 0);
    DpkgDataProvider preloaded(missing.c_str());
    PluginSDK::StringVector keys;
    EXPECT_EQ(preloaded.enumPackages(RegistryPackage::ANY, keys),
              REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
    Tracer::setSink(nullptr);
    Tracer::setLevel(0);
    ASSERT_FALSE(sink.lines().empty());
    EXPECT_EQ(sink.lines()[0].message, "cannot open " + missing + " ( errno = 2 )");
}

}  // namespace
