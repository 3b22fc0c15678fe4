// The provider on the machine's own dpkg status file, against what dpkg-query
// reports from the same file.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <map>
#include <set>
#include <string>

#include "RegPluginConstants.h"
#include "common/RegistryPackage.h"
#include "cross/dpkg/DpkgDataProvider.h"

namespace {

using RegPlugin::RegistryPackage;

struct Installed {
    std::set<std::string> versions;  // one per architecture instance, usually one
    std::string summary;
};

// name -> versions and summary of the instances that dpkg-query reports as
// installed. False when the command cannot be run.
bool queryInstalled(std::map<std::string, Installed>& out) {
    FILE* pipe = ::popen(
        "dpkg-query --admindir=/var/lib/dpkg -W -f "
        "'${Package}\\t${db:Status-Status}\\t${Version}\\t${binary:Summary}\\n' 2>/dev/null",
        "r");
    if (pipe == nullptr) {
        return false;
    }
    std::string text;
    char chunk[65536];
    for (size_t n; (n = fread(chunk, 1, sizeof chunk, pipe)) > 0;) {
        text.append(chunk, n);
    }
    if (::pclose(pipe) != 0) {
        return false;
    }
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        const std::string line = text.substr(start, end - start);
        const size_t t1 = line.find('\t');
        const size_t t2 = line.find('\t', t1 + 1);
        const size_t t3 = line.find('\t', t2 + 1);
        if (t3 == std::string::npos || line.compare(t1 + 1, t2 - t1 - 1, "installed") != 0) {
            continue;
        }
        Installed& entry = out[line.substr(0, t1)];
        entry.versions.insert(line.substr(t2 + 1, t3 - t2 - 1));
        entry.summary = line.substr(t3 + 1);
    }
    return true;
}

std::string property(RegistryPackage* package, const wchar_t* name) {
    PluginSDK::String value(L"(missing)");
    package->getProperty(name, value);
    return value.toUtf8();
}

TEST(DpkgRealStatusTest, MatchesDpkgQuery) {
    if (::access(RegPlugin::DPKG_STATUS_FILE, R_OK) != 0) {
        GTEST_SKIP() << RegPlugin::DPKG_STATUS_FILE << " is not readable on this machine";
    }
    std::map<std::string, Installed> expected;
    if (!queryInstalled(expected)) {
        GTEST_SKIP() << "dpkg-query cannot be run on this machine";
    }

    RegPlugin::DpkgDataProvider provider;  // the default: the real status file
    PluginSDK::StringVector keys;
    ASSERT_EQ(provider.enumPackages(RegistryPackage::ANY, keys), 0);
    std::set<std::string> names;
    for (const PluginSDK::String& key : keys) {
        names.insert(key.toUtf8());
    }
    EXPECT_EQ(static_cast<size_t>(keys.size()), names.size()) << "a key came twice";
    std::set<std::string> expectedNames;
    for (const auto& entry : expected) {
        expectedNames.insert(entry.first);
    }
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

}  // namespace
