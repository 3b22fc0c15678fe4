// The provider on the machine's dpkg status file and a large generated one, against
// what dpkg-query reports from the same file.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <map>
#include <set>
#include <sstream>
#include <string>

#include "RealComponents.h"
#include "RegPluginConstants.h"
#include "common/RegistryPackage.h"
#include "cross/dpkg/DpkgDataProvider.h"

namespace {

using RegPlugin::RegistryPackage;

struct Installed {
    std::set<std::string> versions;  // one per architecture instance, usually one
    std::string summary;
};

// name -> versions and summary of what dpkg-query reports as installed from
// `admindir`; false when it cannot run.
bool queryInstalled(const std::string& admindir, std::map<std::string, Installed>& out) {
    const std::string command =
        "dpkg-query --admindir='" + admindir +
        "' -W -f '${Package}\\t${db:Status-Status}\\t${Version}\\t${binary:Summary}\\n' "
        "2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return false;
    }
    std::string text;
    char chunk[65536];
    for (size_t n; (n = fread(chunk, 1, sizeof chunk, pipe)) > 0;) {
        text.append(chunk, n);
    }
    std::istringstream lines(text);
    for (std::string name, status, version, summary;
         std::getline(lines, name, '\t') && std::getline(lines, status, '\t') &&
         std::getline(lines, version, '\t') && std::getline(lines, summary);) {
        if (status == "installed") {
            out[name].versions.insert(version);
            out[name].summary = summary;
        }
    }
    return ::pclose(pipe) == 0;
}

std::string property(RegistryPackage* package, const wchar_t* name) {
    PluginSDK::String value(L"(missing)");
    package->getProperty(name, value);
    return value.toUtf8();
}

// Loads `statusFile` and compares every installed package with `expected`.
void expectSameAsDpkgQuery(const char* statusFile,
                           const std::map<std::string, Installed>& expected) {
    RegPlugin::DpkgDataProvider provider(statusFile);
    PluginSDK::StringVector keys;
    ASSERT_EQ(provider.enumPackages(RegistryPackage::ANY, keys), 0);
    std::set<std::string> names;
    for (const PluginSDK::String& key : keys) {
        names.insert(key.toUtf8());
    }
    EXPECT_EQ(static_cast<size_t>(keys.size()), names.size()) << "a key came twice";
    std::set<std::string> expectedNames;
    for (const auto& entry : expected)
        expectedNames.insert(entry.first);
    ASSERT_EQ(names, expectedNames);

    for (const auto& entry : expected) {
        RegistryPackage* package = nullptr;
        ASSERT_EQ(provider.getPackage(PluginSDK::String(entry.first.c_str()), &package), 0)
            << entry.first;
        const std::string version = property(package, REG_PLUGIN_PROPERTY_FIELD_VERSION);
        EXPECT_EQ(entry.second.versions.count(version), 1u) << entry.first << " " << version;
        EXPECT_EQ(property(package, REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION), version)
            << entry.first;
        EXPECT_EQ(property(package, REG_PLUGIN_PROPERTY_FIELD_NAME), entry.first);
        EXPECT_EQ(property(package, REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION), entry.second.summary)
            << entry.first;
    }
}

TEST(DpkgRealStatusTest, MatchesDpkgQuery) {
    REGSCAN_REQUIRE_COMPONENT(::access(RegPlugin::DPKG_STATUS_FILE, R_OK) == 0,
                              RegPlugin::DPKG_STATUS_FILE << " is not readable");
    std::map<std::string, Installed> expected;
    REGSCAN_REQUIRE_COMPONENT(queryInstalled("/var/lib/dpkg", expected),
                              "dpkg-query cannot be run");
    ASSERT_FALSE(expected.empty());
    expectSameAsDpkgQuery(nullptr, expected);  // the default: the real status file
}

// 20,000 generated paragraphs: every state, epochs and revisions, descriptions whose
// continuation lines look like fields.
TEST(DpkgRealStatusTest, MatchesDpkgQueryOnAGeneratedStatusFile) {
    char pattern[] = "/tmp/regscan-dpkg-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    const std::string admin = pattern;
    const std::string make = "mkdir -p '" + admin + "/info' '" + admin + "/updates' && python3 '" +
                             REGSCAN_TOOLS_DIR + "/make-dpkg-status.py' 20000 '" + admin +
                             "/status'";
    const bool made = std::system(make.c_str()) == 0;
    std::map<std::string, Installed> expected;
    const bool queried = made && queryInstalled(admin, expected);
    if (queried) {
        EXPECT_GT(expected.size(), 10000u);
        expectSameAsDpkgQuery((admin + "/status").c_str(), expected);
    }
    std::system(("rm -rf '" + admin + "'").c_str());
    REGSCAN_REQUIRE_COMPONENT(made, "python3 cannot run tools/make-dpkg-status.py");
    REGSCAN_REQUIRE_COMPONENT(queried, "dpkg-query cannot be run");
}

}  // namespace
