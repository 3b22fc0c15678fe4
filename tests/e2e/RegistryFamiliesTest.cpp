// The rpm and dpkg expression families through `regscan batch`: the test rpm
// database, and dpkg status fixtures at the real status file's place.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Inventory.h"
#include "RealComponents.h"
#include "RegscanRunner.h"
#include "Requests.h"

namespace {

using e2e::expectReplies;
using e2e::expr;
using e2e::kRpmHome;
using nlohmann::json;

bool rpmDatabaseBuilt() {
    struct stat info;
    return stat((kRpmHome + "/.rpmmacros").c_str(), &info) == 0;
}

// synthN of the test database (tools/make-rpmdb.sh): version (N%7).(N%13).N,
// release (N%5+1).el9, arch noarch, vendor "Vendor (N%17) Inc." except when
// N%9 == 0 (no vendor); files under /opt/synthN/ and /usr/share/doc/synthN/, or
// when N%4 == 0 under /etc/synthN/, /usr/share/synthN/ and /usr/share/doc/synthN/.
const char* kSynth1 = "synth1-1.1.1-2.el9-noarch";
const char* kSynth9 = "synth9-2.9.9-5.el9-noarch";

std::vector<std::string> synthKeysStartingWith1() {
    std::vector<std::string> keys;
    for (int i : {1, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19}) {
        keys.push_back("synth" + std::to_string(i) + "-" + std::to_string(i % 7) + "." +
                       std::to_string(i % 13) + "." + std::to_string(i) + "-" +
                       std::to_string(i % 5 + 1) + ".el9-noarch");
    }
    return keys;
}

class RpmFamilyTest : public ::testing::Test {
  protected:
    void SetUp() override {
        REGSCAN_REQUIRE_COMPONENT(rpmDatabaseBuilt(), "no test rpm database at " << kRpmHome);
        options.environment["HOME"] = kRpmHome;
    }
    e2e::RunOptions options;
};

TEST_F(RpmFamilyTest, AnswersFromTheRealDatabase) {
    expectReplies(
        {
            {"full key", expr("RpmProductExists", {{"code", kSynth1}}), 0, "TRUE"},
            {"short key", expr("RpmProductExists", {{"code", "synth1-1.1.1-2.el9"}}), 0, "TRUE"},
            {"absent key", expr("RpmProductExists", {{"code", "synth1"}}), 0, "FALSE"},
            {"version joins with a dot",
             expr("RpmProductInfo", {{"code", kSynth1}, {"field", "version"}}), 0, "1.1.1.2.el9"},
            {"display version joins with a hyphen",
             expr("RpmProductInfo", {{"code", kSynth1}, {"field", "displayVersion"}}), 0,
             "1.1.1-2.el9"},
            {"no vendor: rpm's own text for it",
             expr("RpmProductInfo", {{"code", kSynth9}, {"field", "vendor"}}), 0, "(none)"},
            {"arch", expr("RpmProductInfo", {{"code", kSynth1}, {"field", "arch"}}), 0, "noarch"},
            {"info by short key",
             expr("RpmProductInfo", {{"code", "synth9-2.9.9-5.el9"}, {"field", "release"}}), 0,
             "5.el9"},
            {"filter", expr("RpmProductList", {{"filter", "synth1*"}}), 0,
             synthKeysStartingWith1()},
            {"type product and filter",
             expr("RpmProductList", {{"type", "product"}, {"filter", "synth1-*"}}), 0,
             json::array({kSynth1})},
            {"type patch", expr("RpmProductList", {{"type", "patch"}}), 0, json::array()},
            {"type PTF is not a list type", expr("RpmProductList", {{"type", "PTF"}}), -13006,
             json::array()},
            {"type software is not a list type", expr("RpmProductList", {{"type", "software"}}),
             -13006, json::array()},
            {"malformed filter", expr("RpmProductList", {{"filter", "synth["}}), 3, json::array()},
        },
        options);
}

TEST(RpmFamilyFailureTest, AFailingRpmCommandFailsTheFamilyForGood) {
    e2e::FakeRpm rpm("echo run >> \"${0%/rpm}/runs\"\necho broken >&2\nexit 1\n");
    e2e::RunOptions options;
    options.environment["PATH"] = rpm.path();
    expectReplies(
        {
            {"list", expr("RpmProductList"), -13111, json::array()},
            {"exists", expr("RpmProductExists", {{"code", kSynth1}}), -13111, ""},
            {"info", expr("RpmProductInfo", {{"code", kSynth1}, {"field", "name"}}), -13111, ""},
        },
        options);
    EXPECT_EQ(e2e::readFile(rpm.dir + "/runs"), "run\n") << "the rpm command runs once per process";
}

const char* kStatusFixture =
    "Package: alpha\n"
    "Status: install ok installed\n"
    "Priority: optional\n"
    "Version: 1:2.3-4\n"
    "Description: the first line only\n"
    " continuation text\n"
    " .\n"
    " more\n"
    "\n"
    "Package: beta\n"
    "Status: deinstall ok config-files\n"
    "Version: 1.0\n"
    "\n"
    "Package: gamma\n"
    "Status: hold ok installed\n"
    "Version: 0.9\n"
    "Description: gamma tool\n"
    "\n"
    "Package: delta\n"
    "Status: install ok not-installed\n"
    "\n"
    "Package: alpha\n"
    "Architecture: i386\n"
    "Status: install ok installed\n"
    "Version: 9.9\n"
    "Description: the second alpha\n";

class DpkgFamilyTest : public ::testing::Test {
  protected:
    void SetUp() override {
        REGSCAN_REQUIRE_COMPONENT(e2e::namespacesAvailable(),
                                  "needs root with unshare, mount namespaces and overlay mounts");
        options.files["/var/lib/dpkg/status"] = kStatusFixture;
    }
    e2e::RunOptions options;
};

TEST_F(DpkgFamilyTest, AnswersFromTheStatusFile) {
    expectReplies(
        {
            {"installed only, first paragraph of a name", expr("DpkgProductList"), 0,
             json::array({"alpha", "gamma"})},
            {"filter", expr("DpkgProductList", {{"filter", "g*"}}), 0, json::array({"gamma"})},
            {"filters are case-sensitive", expr("DpkgProductList", {{"filter", "G*"}}), 0,
             json::array()},
            {"bad type", expr("DpkgProductList", {{"type", "driver"}}), -13006, json::array()},
            {"installed", expr("DpkgProductExists", {{"code", "gamma"}}), 0, "TRUE"},
            {"config files only", expr("DpkgProductExists", {{"code", "beta"}}), 0, "FALSE"},
            {"not-installed", expr("DpkgProductExists", {{"code", "delta"}}), 0, "FALSE"},
            {"version kept whole",
             expr("DpkgProductInfo", {{"code", "alpha"}, {"field", "version"}}), 0, "1:2.3-4"},
            {"synopsis only",
             expr("DpkgProductInfo", {{"code", "alpha"}, {"field", "description"}}), 0,
             "the first line only"},
            {"no vendor field", expr("DpkgProductInfo", {{"code", "alpha"}, {"field", "vendor"}}),
             -13200, ""},
        },
        options);
}

TEST_F(DpkgFamilyTest, AMissingStatusFileFailsTheFamily) {
    options.files.clear();
    options.setup.push_back("mount -t tmpfs tmpfs /var/lib/dpkg");
    expectReplies(
        {
            {"list", expr("DpkgProductList"), -13111, json::array()},
            {"exists", expr("DpkgProductExists", {{"code", "alpha"}}), -13111, ""},
        },
        options);
}

// `regscan inventory` end to end, each registry readable or not: every package of
// the registries that list, one line on standard error for each that cannot, and
// exit status 0 while at least one registry lists, 3 when none can.
TEST(InventoryTest, ListsWhatItCanAndFailsOnlyWhenNothingLists) {
    REGSCAN_REQUIRE_COMPONENT(rpmDatabaseBuilt(), "no test rpm database at " << kRpmHome);
    REGSCAN_REQUIRE_COMPONENT(e2e::namespacesAvailable(),
                              "needs root with unshare, mount namespaces and overlay mounts");
    const e2e::FakeRpm failingRpm;

    const json rpmRecord = json::parse(R"({"registry":"rpm","key":"synth4-4.4.4-5.el9-noarch",
        "name":"synth4","version":"4.4.4-5.el9","vendor":"Vendor 4 Inc.","installDir":
        "/etc/synth4/;/usr/share/","description":"Synthetic package number 4 for inventory tests"})");
    const json dpkgRecord = json::parse(R"({"registry":"dpkg","key":"alpha","name":"alpha",
        "version":"1:2.3-4","vendor":"","installDir":"","description":"the first line only"})");
    const struct {
        bool rpm, dpkg;  // the registry can be read
    } cases[] = {{true, true}, {true, false}, {false, true}, {false, false}};
    for (const auto& c : cases) {
        e2e::RunOptions options;
        if (c.rpm) {
            options.environment["HOME"] = kRpmHome;
        } else {
            options.environment["PATH"] = failingRpm.path();
        }
        if (c.dpkg) {
            options.files["/var/lib/dpkg/status"] = kStatusFixture;
        } else {
            options.setup.push_back("mount -t tmpfs tmpfs /var/lib/dpkg");
        }
        const e2e::RunResult run = e2e::runRegscan({"inventory", "--format", "json"}, options);
        SCOPED_TRACE(std::string("rpm ") + (c.rpm ? "readable" : "failing") + ", dpkg " +
                     (c.dpkg ? "readable" : "missing") + "\nstderr:\n" + run.err);
        const json records = json::parse(run.out, nullptr, false);
        ASSERT_TRUE(records.is_array()) << run.out;
        std::size_t rpmCount = 0, dpkgCount = 0;
        bool rpmSeen = false, dpkgSeen = false;
        for (const json& record : records) {
            rpmCount += record["registry"] == "rpm";
            dpkgCount += record["registry"] == "dpkg";
            rpmSeen = rpmSeen || record == rpmRecord;
            dpkgSeen = dpkgSeen || record == dpkgRecord;
        }
        EXPECT_EQ(rpmCount, c.rpm ? 40u : 0u);
        EXPECT_EQ(rpmSeen, c.rpm);
        EXPECT_EQ(dpkgCount, c.dpkg ? 2u : 0u);
        EXPECT_EQ(dpkgSeen, c.dpkg);
        EXPECT_EQ(run.err.find("rpm: cannot list packages (-13111 "
                               "REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST): the rpm database "
                               "could not be read; is rpm installed?\n") != std::string::npos,
                  !c.rpm);
        EXPECT_EQ(run.err.find("dpkg: cannot list packages (-13111 "
                               "REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST): the dpkg status file "
                               "/var/lib/dpkg/status could not be read\n") != std::string::npos,
                  !c.dpkg);
        // Registries beyond these two list or fail as this machine has them.
        std::size_t failed = 0;
        for (const std::string& line : e2e::lines(run.err)) {
            failed += line.find(": cannot list packages") != std::string::npos;
        }
        EXPECT_EQ(run.exitStatus, failed == regscan::knownRegistries().size() ? 3 : 0);
    }
}

}  // namespace
