// The rpm provider on the test rpm database, against what rpm itself prints.
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <map>
#include <sstream>
#include <string>

#include "PluginSDK/VectorString.h"
#include "RealComponents.h"
#include "RegPluginConstants.h"
#include "cross/rpm/LegacyRpmDataProvider.h"

namespace {

using RegPlugin::RegistryPackage;

const char kHome[] = REGSCAN_RPMDB_DIR "/home";

std::string run(const char* command) {
    std::string output;
    FILE* pipe = ::popen(command, "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return output;
    }
    char chunk[4096];
    for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;) {
        output.append(chunk, n);
    }
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return output;
}

std::string property(RegistryPackage* package, const wchar_t* name) {
    PluginSDK::String value(L"(missing)");
    EXPECT_EQ(package->getProperty(name, value), 0) << package->key.toUtf8();
    return value.toUtf8();
}

TEST(RpmRealDatabaseTest, ProviderAgreesWithRpm) {
    REGSCAN_REQUIRE_COMPONENT(::access((std::string(kHome) + "/.rpmmacros").c_str(), R_OK) == 0,
                              "no rpm database at " REGSCAN_RPMDB_DIR
                              " (the make_rpmdb test makes it with rpm and rpmbuild)");
    // rpm reads ~/.rpmmacros, which points it at the test database.
    const char* oldHome = std::getenv("HOME");
    const std::string savedHome = oldHome != nullptr ? oldHome : "/root";
    ::setenv("HOME", kHome, 1);

    // key -> "version|displayVersion|vendor|summary", as rpm prints them.
    std::map<std::string, std::string> expected;
    std::istringstream lines(
        run("rpm -qa --queryformat '%{NAME}-%{VERSION}-%{RELEASE}-%{ARCH}\\t"
            "%{VERSION}.%{RELEASE}|%{VERSION}-%{RELEASE}|%{VENDOR}|%{SUMMARY}\\n'"));
    for (std::string line; std::getline(lines, line);) {
        expected[line.substr(0, line.find('\t'))] = line.substr(line.find('\t') + 1);
    }
    ASSERT_GE(expected.size(), 10u);

    RegPlugin::LegacyRpmDataProvider provider;
    PluginSDK::StringVector keys;
    ASSERT_EQ(provider.enumPackages(RegistryPackage::ANY, keys), 0);
    std::map<std::string, std::string> loaded;
    int synthetic = 0;
    for (const PluginSDK::String& key : keys) {
        RegistryPackage* package = provider.find(key);
        loaded[key.toUtf8()] = property(package, REG_PLUGIN_PROPERTY_FIELD_VERSION) + "|" +
                               property(package, REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION) + "|" +
                               property(package, REG_PLUGIN_PROPERTY_FIELD_VENDOR) + "|" +
                               property(package, REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION);
        const std::string fullKey = key.toUtf8();
        EXPECT_EQ(provider.find(fullKey.substr(0, fullKey.rfind('-')).c_str()), package);
        // synthN installs under /opt/synthN/{bin,lib} and /usr/share/doc/synthN, or,
        // when N%4 == 0, under /etc/synthN, /usr/share/synthN and /usr/share/doc/synthN.
        const std::string name = property(package, REG_PLUGIN_PROPERTY_FIELD_NAME);
        if (name.rfind("synth", 0) == 0) {
            ++synthetic;
            PluginSDK::VectorString dirs;
            if (std::stoi(name.substr(5)) % 4 != 0) {
                dirs += ("/opt/" + name + "/").c_str();
                dirs += ("/usr/share/doc/" + name + "/").c_str();
            } else {
                dirs += ("/etc/" + name + "/").c_str();
                dirs += "/usr/share/";
            }
            EXPECT_EQ(property(package, REG_PLUGIN_PROPERTY_FIELD_INSTDIR),
                      PluginSDK::String(static_cast<const wchar_t*>(dirs)).toUtf8())
                << fullKey;
        }
    }
    EXPECT_EQ(loaded, expected);
    EXPECT_EQ(synthetic, static_cast<int>(expected.size()));
    ::setenv("HOME", savedHome.c_str(), 1);
}

}  // namespace
