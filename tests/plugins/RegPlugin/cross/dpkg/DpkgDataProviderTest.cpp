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

// Shows bytes that are not printable as \xNN so that failure messages stay readable.
std::string printable(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (c >= 0x20 && c < 0x7f) {
            out += static_cast<char>(c);
        } else {
            static const char kHex[] = "0123456789abcdef";
            out += "\\x";
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out.size() > 200 ? out.substr(0, 200) + "..." : out;
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

    // Loads `text` as a status file; each package in load order as
    // "key|name|version|displayVersion|description" (UTF-8, "-" for a missing
    // property), and the load's result in `rc`.
    Packages load(const std::string& text, TErrorCode* rc = nullptr) {
        {
            std::ofstream out(m_path, std::ios::binary);
            out << text;
        }
        DpkgDataProvider provider(m_path.c_str());
        const TErrorCode result = provider.load();
        if (rc != nullptr) {
            *rc = result;
        }
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
            EXPECT_EQ(p->type, RegistryPackage::PRODUCT);
            EXPECT_TRUE(static_cast<RegPlugin::DpkgPackage*>(p)->isInstalled());
            packages.push_back(line);
        }
        return packages;
    }

    struct Case {
        const char* what;
        std::string input;
        Packages expected;
    };

    void check(const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            TErrorCode rc = -1;
            EXPECT_EQ(load(c.input, &rc), c.expected)
                << c.what << "\ninput: " << printable(c.input);
            EXPECT_EQ(rc, 0) << c.what;
        }
    }

    std::string m_dir;
    std::string m_path;
};

std::string padded(const std::string& head, std::size_t size, char fill) {
    return head + std::string(size - head.size(), fill);
}

TEST_F(DpkgDataProviderTest, ParagraphsBecomeInstalledPackages) {
    const std::vector<Case> cases = {
        {"installed, description cut to its first line",
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
        {"last paragraph without a final empty line",
         "Package: a\n\nPackage: b\n" + kInstalled.substr(0, 28),
         {"b|b|-|-|-"}},
        {"a second Package line only renames",
         "Package: a\n" + kInstalled + "Package: b\nVersion: 2\n",
         {"a|b|2|2|-"}},
        {"the first paragraph of a name wins",
         "Package: lib\n" + kInstalled + "Version: 1\n\nPackage: lib\n" + kInstalled +
             "Version: 2\n",
         {"lib|lib|1|1|-"}},
        {"a paragraph without Package, fields before Package",
         kInstalled +
             "Version: 9\n\nStatus: install ok installed\nPackage: late\n\n"
             "Package: b\n" +
             kInstalled,
         {"b|b|-|-|-"}},
        {"later fields replace earlier ones, Status only sets",
         "Package: a\n" + kInstalled + "Version: 1\nVersion: 2\nStatus: purge ok not-installed\n",
         {"a|a|2|2|-"}},
        {"a line without a colon stores nothing",
         "Package\nVersion\nPackage: a\n" + kInstalled + "Version\n",
         {"a|a|-|-|-"}},
        {"names match exactly",
         "Packages: x\nPackage : y\npackage: z\nPackage: a\n" + kInstalled + "Version 2: 1\n",
         {"a|a|-|-|-"}},
        {"an empty value keeps the line end",
         "Package: a\n" + kInstalled + "Version:\nDescription:  \n",
         {"a|a|\n|\n|\n"}},
        {"empty file", "", {}},
    };
    check(cases);
}

TEST_F(DpkgDataProviderTest, BadInputKeepsEveryGoodParagraph) {
    const std::string a = "Package: a\n" + kInstalled + "Version: 1\n\n";
    const std::string b = "Package: b\n" + kInstalled + "Version: 2\n";
    std::mt19937 random(7);
    std::string garbage;
    for (int i = 0; i < 65536; ++i) {
        garbage += static_cast<char>(random() & 0xff);
    }
    const std::vector<Case> cases = {
        {"CRLF",
         "Package: a\r\n" + std::string("Status: install ok installed\r\n") +
             "Version: 1\r\nDescription: d\r\n more\r\n\r\nPackage: b\r\nStatus: install ok "
             "installed\r\n",
         {"a|a|1|1|d", "b|b|-|-|-"}},
        {"a 2047-byte line",
         a + "Package: c\n" + kInstalled + padded("Depends: x", 2047, 'y') + "\nVersion: 3\n\n" + b,
         {"a|a|1|1|-", "c|c|3|3|-", "b|b|2|2|-"}},
        {"a 2048-byte line",
         a + "Package: c\n" + kInstalled + padded("Depends: x", 2048, 'y') + "\nVersion: 3\n\n" + b,
         {"a|a|1|1|-", "c|c|3|3|-", "b|b|2|2|-"}},
        {"a 100 KB line",
         a + "Package: c\n" + kInstalled + padded("Depends: x", 100000, 'y') + "\nVersion: 3\n\n" +
             b,
         {"a|a|1|1|-", "c|c|3|3|-", "b|b|2|2|-"}},
        {"lines longer than the read buffer",
         a + "Package: c\n" + kInstalled + padded("X-Long: ", 300000, 'y') + "\n" +
             padded(" ", 300000, 'z') + "\nVersion:" + std::string(300000, ' ') + "3\r\n" +
             padded("Description: ", 300000, 'd') + "\n\n" + b,
         {"a|a|1|1|-", "c|c|3|3|" + std::string(300000 - 13, 'd'), "b|b|2|2|-"}},
        {"binary garbage", a + garbage + "\n\n" + b, {"a|a|1|1|-", "b|b|2|2|-"}},
        {"NUL bytes end a line's text",
         a + std::string("Package: c\0junk\n", 16) + kInstalled + std::string("Version: 3\0", 11) +
             std::string(300000, 'v') + "\n" + std::string("\0Package: d\n", 12) + "\n" + b,
         {"a|a|1|1|-", "c|c|3|3|-", "b|b|2|2|-"}},
        {"invalid UTF-8 round-trips",
         "Package: caf\xe9\n" + kInstalled +
             "Version: \xff\xfe"
             "1\nDescription: \xc3\x28 \xed\xa0\x80 ok\n",
         {"caf\xe9|caf\xe9|\xff\xfe"
          "1|\xff\xfe"
          "1|\xc3\x28 \xed\xa0\x80 ok"}},
    };
    check(cases);
}

TEST_F(DpkgDataProviderTest, SharesTheVersionAndNameStrings) {
    load("Package: a\n" + kInstalled + "Version: 1.0\n");
    DpkgDataProvider provider(m_path.c_str());
    RegistryPackage* package = nullptr;
    ASSERT_EQ(provider.getPackage(L"a", &package), 0);
    PluginSDK::String name, version, displayVersion;
    ASSERT_EQ(package->getProperty(REG_PLUGIN_PROPERTY_FIELD_NAME, name), 0);
    ASSERT_EQ(package->getProperty(REG_PLUGIN_PROPERTY_FIELD_VERSION, version), 0);
    ASSERT_EQ(package->getProperty(REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION, displayVersion), 0);
    EXPECT_EQ(name.c_str(), package->key.c_str());
    EXPECT_EQ(version.c_str(), displayVersion.c_str());
    PluginSDK::String untouched(L"x");
    EXPECT_EQ(package->getProperty(L"vendor", untouched), REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(untouched, PluginSDK::String(L"x"));
}

TEST_F(DpkgDataProviderTest, UnreadableFiles) {
    Tracer::setLevel(1);
    MemoryTraceSink sink;
    Tracer::setSink(&sink);
    const std::string missing = m_dir + "/missing";
    DpkgDataProvider direct(missing.c_str());
    EXPECT_EQ(direct.load(), REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(direct.size(), 0);
    ASSERT_FALSE(sink.lines().empty());
    EXPECT_EQ(sink.lines()[0].message, "cannot open " + missing + " ( errno = 2 )");
    EXPECT_EQ(sink.lines()[0].signature, "DpkgDataProvider::load()");

    DpkgDataProvider preloaded(missing.c_str());
    PluginSDK::StringVector keys;
    EXPECT_EQ(preloaded.enumPackages(RegistryPackage::ANY, keys),
              REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
    Tracer::setSink(nullptr);
    Tracer::setLevel(0);

    // A directory opens but cannot be read: reading stops as at the end of a file.
    DpkgDataProvider directory(m_dir.c_str());
    EXPECT_EQ(directory.load(), 0);
    EXPECT_EQ(directory.size(), 0);
}

TEST(DpkgPackageTest, HandleFieldStoresTheKnownFields) {
    RegPlugin::DpkgPackage package(L"k");
    const std::vector<std::pair<std::string, std::string>> fields = {
        {"Version", "1:2-3"},
        {"Package", "n"},
        {"Description", "d"},
        {"Depends", "x"},
        {"Status", "install ok not-installed"},
        {"version", "lower"}};
    for (auto field : fields) {
        EXPECT_EQ(package.handle_field(field.first, field.second), 0) << field.first;
    }
    EXPECT_FALSE(package.isInstalled());
    std::string status = "Status", value = "install ok installed";
    package.handle_field(status, value);
    EXPECT_TRUE(package.isInstalled());
    std::vector<std::string> stored;
    for (const auto& property : package.properties) {
        stored.push_back(property.first.toUtf8() + "=" + property.second.toUtf8());
    }
    EXPECT_EQ(stored, (std::vector<std::string>{"description=d", "displayVersion=1:2-3", "name=n",
                                                "version=1:2-3"}));
}

}  // namespace
