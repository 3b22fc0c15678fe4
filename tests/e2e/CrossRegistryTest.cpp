// The cross-registry queries and `regscan match` end to end: a real rpm database
// built from real packages, dpkg status and vpd.properties fixtures at their fixed
// places, all read by one regscan process.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "RealComponents.h"
#include "RegscanRunner.h"
#include "Requests.h"

namespace {

using e2e::expr;
using nlohmann::json;

const std::string kRpmHome = std::string(REGSCAN_RPMDB_DIR) + "/home";

// One package of the test rpm database, as `rpm -qa` prints it.
struct RpmPackage {
    std::string key;                    // name-version-release-arch
    std::string name, version, vendor;  // version as the provider gives it: version.release
};

std::vector<RpmPackage> rpmPackages() {
    const std::string command = "HOME='" + kRpmHome +
                                "' rpm -qa --queryformat "
                                "'%{NAME}|%{VERSION}|%{RELEASE}|%{ARCH}|%{VENDOR}\\n' 2>/dev/null";
    std::vector<RpmPackage> packages;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return packages;
    }
    char line[4096];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        std::vector<std::string> f;
        std::string text(line);
        text.erase(text.find_last_not_of('\n') + 1);
        std::size_t start = 0;
        for (std::size_t bar; (bar = text.find('|', start)) != std::string::npos; start = bar + 1) {
            f.push_back(text.substr(start, bar - start));
        }
        f.push_back(text.substr(start));
        if (f.size() == 5) {
            packages.push_back(
                {f[0] + "-" + f[1] + "-" + f[2] + "-" + f[3], f[0], f[1] + "." + f[2], f[4]});
        }
    }
    pclose(pipe);
    std::sort(packages.begin(), packages.end(),
              [](const RpmPackage& a, const RpmPackage& b) { return a.key < b.key; });
    return packages;
}

// Two products and a feature of one product line, and a product of another vendor
// whose third version part is blank and whose line ends in CR LF.
const char* kVpdFixture =
    "0a1b2c3d|4|2|0|1|0|1=Report Server|Reporting server|1|Example Software Inc.|null|1|"
    "/opt/example/report|1|true|0|0|0|0|_uninst\"-cp\"uninstall.jar\"-run\"uninstaller.bin|"
    "1|0|true|false|en|1|0|1|0\n"
    "0a1b2c3d-f1|4|2|0|1|0|1=Report Server Help|Online help|1|Example Software Inc.|null|1|"
    "/opt/example/report/help|0|0|0|0|0| \n"
    "9f8e7d6c|2|0| |7|0|1=Data Agent|Data agent|1|Northwind Systems|null|1|/opt/northwind/agent|"
    "0|0|0|0|0|_uninst\"-cp\"uninstall.jar\"-run\"uninstaller.bin|1|0|true|false|en|1|0|1|0\r\n";

// A malformed uninstaller field ends the file and fails the registry's load: the
// package before it stays unserved.
const char* kBrokenVpdFixture =
    "9f8e7d6c|2|0|0|0|0|1=Data Agent|Data agent|1|Northwind Systems|null|1|/opt/northwind/agent|"
    "0|0|0|0|0| \n"
    "5e5e5e5e|1|0|0|0|0|1=Broken Tool|Broken|1|Example Software Inc.|null|1|/opt/example/broken|"
    "0|0|0|0|0|no-quotes-here|1|0|true|false|en|1|0|1|0\n";

const char* kStatusFixture =
    "Package: alpha\nStatus: install ok installed\nVersion: 1.0-1\nDescription: alpha\n\n"
    "Package: beta\nStatus: install ok installed\nVersion: 2.0-1\nDescription: beta\n";

json match(const std::string& vendor, const std::string& name, const std::string& version) {
    return expr("PackageInfoMatch", {{"vendor", vendor}, {"name", name}, {"version", version}});
}

class CrossRegistryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        REGSCAN_REQUIRE_COMPONENT(e2e::namespacesAvailable(),
                                  "root with mount namespaces and overlay mounts");
        packages = rpmPackages();
        REGSCAN_REQUIRE_COMPONENT(packages.size() >= 10, "the test rpm database at " + kRpmHome);
        options.environment["HOME"] = kRpmHome;
        options.files["/var/lib/dpkg/status"] = kStatusFixture;
        options.files["/root/vpd.properties"] = kVpdFixture;
    }

    std::vector<json> batch(const std::vector<json>& requests, int* status = nullptr) {
        e2e::RunOptions run = options;
        for (const json& request : requests) {
            run.input += request.dump() + "\n";
        }
        e2e::RunResult result = e2e::runRegscan({"batch"}, run);
        if (status != nullptr) {
            *status = result.exitStatus;
        }
        std::vector<json> replies;
        for (const std::string& line : e2e::lines(result.out)) {
            replies.push_back(json::parse(line, nullptr, false));
        }
        EXPECT_EQ(replies.size(), requests.size()) << result.err;
        replies.resize(requests.size());
        return replies;
    }

    std::vector<RpmPackage> packages;
    e2e::RunOptions options;
};

TEST_F(CrossRegistryTest, IsmpFamilyReadsRootsRegistry) {
    const std::vector<json> replies = batch({
        expr("IsmpProductList"),
        expr("IsmpProductList", {{"type", "subproduct"}}),
        expr("IsmpProductInfo", {{"code", "0a1b2c3d@4.2.0.1"}, {"field", "vendor"}}),
        expr("IsmpProductInfo", {{"code", "9f8e7d6c@2.0"}, {"field", "installDir"}}),
        expr("IsmpProductInfo", {{"code", "0a1b2c3d@4.2.0.1"}, {"field", "uninstData"}}),
        expr("IsmpProductExists", {{"code", "9f8e7d6c@2"}}),
        expr("IsmpProductInfo", {{"code", "nope"}, {"field", "name"}}),
    });
    EXPECT_EQ(replies[0]["result"],
              json::array({"0a1b2c3d@4.2.0.1", "0a1b2c3d-f1@4.2.0.1", "9f8e7d6c@2.0"}));
    EXPECT_EQ(replies[0]["code"], 0);
    EXPECT_EQ(replies[1]["result"], json::array({"0a1b2c3d-f1@4.2.0.1"}));
    EXPECT_EQ(replies[2]["result"], "Example Software Inc.");
    EXPECT_EQ(replies[3]["result"], "/opt/northwind/agent");
    EXPECT_EQ(replies[4]["result"], "/opt/example/report/_uninst/uninstaller.bin");
    EXPECT_EQ(replies[5]["result"], "FALSE");
    EXPECT_EQ(replies[6]["code"], -13100);
}

TEST_F(CrossRegistryTest, AMalformedLineFailsTheIsmpRegistry) {
    options.files["/root/vpd.properties"] = kBrokenVpdFixture;
    const std::vector<json> replies = batch({
        expr("IsmpProductList"),
        expr("PackageInfoEqual", {{"code", "9f8e7d6c"},
                                  {"value", "Data Agent 2.0.0.0 Northwind Systems"},
                                  {"provider", "ismp"}}),
    });
    EXPECT_EQ(replies[0]["code"], -13111);
    EXPECT_EQ(replies[1]["code"], -13111);
    EXPECT_EQ(replies[1]["result"], "FALSE");
}

TEST_F(CrossRegistryTest, EqualityInTheNativeAndTheIsmpRegistry) {
    const RpmPackage& p = packages.front();
    const std::string description = p.name + " " + p.version + " " + p.vendor;
    struct Case {
        json properties;
        int code;
        const char* result;
    } cases[] = {
        {{{"code", p.key}, {"value", description}, {"provider", "os"}}, 0, "TRUE"},
        {{{"code", p.key}, {"value", description + " "}, {"provider", "os"}}, 0, "FALSE"},
        // An absent package is compared as the empty text.
        {{{"code", "absent-1-1-noarch"}, {"value", ""}, {"provider", "os"}}, 0, "TRUE"},
        {{{"code", "0a1b2c3d"},
          {"value", "Report Server 4.2.0.1 Example Software Inc."},
          {"provider", "ismp"}},
         0,
         "TRUE"},
        {{{"code", "0a1b2c3d"},
          {"value", "Report Server 4.2.0.1 Example Software Inc."},
          {"provider", "any"}},
         0,
         "TRUE"},
        {{{"code", "9f8e7d6c"},
          {"value", "Data Agent 2.0 Northwind Systems"},
          {"provider", "ismp"}},
         0,
         "TRUE"},
        {{{"code", p.key}, {"value", description}, {"provider", "rpm"}}, -13005, "FALSE"},
        {{{"code", p.key}, {"value", description}}, -13003, "FALSE"},
    };
    std::vector<json> requests;
    for (const Case& c : cases) {
        requests.push_back(expr("PackageInfoEqual", c.properties));
    }
    const std::vector<json> replies = batch(requests);
    for (std::size_t i = 0; i < replies.size(); ++i) {
        EXPECT_EQ(replies[i]["code"], cases[i].code) << requests[i].dump();
        EXPECT_EQ(replies[i]["result"], cases[i].result) << requests[i].dump();
    }
}

TEST_F(CrossRegistryTest, NativeErrorThenIsmpMatch) {
    // An rpm that fails: the native lookup's error is replaced by the ISMP answer.
    char pattern[] = "/tmp/regscan-fake-rpm-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const std::string dir = pattern;
    std::ofstream(dir + "/rpm") << "#!/bin/sh\nexit 1\n";
    chmod((dir + "/rpm").c_str(), 0755);
    options.environment["PATH"] = dir + ":" + std::getenv("PATH");
    const std::vector<json> replies = batch({
        expr("PackageInfoEqual", {{"code", "0a1b2c3d"},
                                  {"value", "Report Server 4.2.0.1 Example Software Inc."},
                                  {"provider", "any"}}),
        expr("PackageInfoEqual", {{"code", "0a1b2c3d"}, {"value", "x"}, {"provider", "os"}}),
    });
    EXPECT_EQ(replies[0]["code"], 0);
    EXPECT_EQ(replies[0]["result"], "TRUE");
    EXPECT_EQ(replies[1]["code"], -13111);
    EXPECT_EQ(replies[1]["result"], "FALSE");
    std::system(("rm -rf '" + dir + "'").c_str());
}

TEST_F(CrossRegistryTest, MatchesMarkPackagesForTheUnknownList) {
    const json config = {{"config", {{"listUnmatchedSoftware", "TRUE"}}}};
    const json unknown = {{"unknown", true}};
    const std::vector<json> replies = batch({
        config,
        unknown,
        match("*", "*", "*"),
        // Listed until the next init(): the iterator of the previous request is gone,
        // each request takes a new snapshot.
        unknown,
        expr("PackageInfoMatch", {{"vendor", "EXAMPLE*"},
                                  {"name", "report*"},
                                  {"version", "4.*"},
                                  {"ignoreCase", "TRUE"}}),
        match("[", "*", "*"),
    });
    const std::size_t all = packages.size() + 3 + 2;
    EXPECT_EQ(replies[1]["size"], all);
    std::set<std::string> providers;
    for (const json& package : replies[1]["packages"]) {
        providers.insert(package.value("provider", "?"));
    }
    EXPECT_EQ(providers, (std::set<std::string>{"RPM", "ISMP", "DPKG"}));
    EXPECT_EQ(replies[2]["result"], "TRUE");
    // Everything with a vendor was recognised; dpkg packages have none.
    EXPECT_EQ(replies[3]["size"], 2);
    EXPECT_EQ(replies[3]["packages"],
              json::array({{{"provider", "DPKG"}, {"name", "alpha"}, {"version", "1.0-1"}},
                           {{"provider", "DPKG"}, {"name", "beta"}, {"version", "2.0-1"}}}));
    EXPECT_EQ(replies[4]["code"], -13010);
    EXPECT_EQ(replies[5]["code"], 3);
    EXPECT_EQ(replies[5]["result"], "FALSE");
}

TEST_F(CrossRegistryTest, RootsHomeComesFromThePasswordFile) {
    options.files.erase("/root/vpd.properties");
    options.files["/etc/passwd"] = "root:x:0:0:root:/srv/home-of-root:/bin/sh\n";
    options.files["/srv/home-of-root/vpd.properties"] = kVpdFixture;
    const std::vector<json> replies =
        batch({expr("IsmpProductExists", {{"code", "9f8e7d6c@2.0"}})});
    EXPECT_EQ(replies[0]["result"], "TRUE");
}

// `regscan match` over the same registries: a catalog made from the database's own
// packages recognises them; dpkg packages are reported as unrecognisable.
TEST_F(CrossRegistryTest, MatchCommand) {
    char pattern[] = "/tmp/regscan-catalog-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const std::string dir = pattern;
    json catalog = json::array();
    for (std::size_t i = 0; i < 3; ++i) {
        catalog.push_back({{"id", "rpm" + std::to_string(i)},
                           {"vendor", packages[i].vendor},
                           {"name", packages[i].name},
                           {"version", "*"}});
    }
    catalog.push_back({{"id", "ismp"},
                       {"vendor", "example*"},
                       {"name", "Report*"},
                       {"version", "*"},
                       {"ignoreCase", true}});
    catalog.push_back({{"id", "none"}, {"vendor", "*"}, {"name", "no-such-*"}, {"version", "*"}});
    std::ofstream(dir + "/catalog.json") << catalog.dump();
    std::ofstream(dir + "/bad.json")
        << json::array({{{"id", "v"}, {"name", "x"}, {"version", "1"}},
                        {{"id", "p"}, {"vendor", "*"}, {"name", "a\\"}, {"version", "1"}},
                        catalog[0]})
               .dump();
    std::ofstream(dir + "/object.json") << "{\"id\": 1}";
    std::ofstream(dir + "/truncated.json") << "[{\"id\": \"x\", ";

    e2e::RunResult run =
        e2e::runRegscan({"match", "--catalog", dir + "/catalog.json", "--format", "json"}, options);
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    const json report = json::parse(run.out, nullptr, false);
    std::vector<std::pair<std::string, bool>> recognised;
    for (const json& s : report["signatures"]) {
        recognised.emplace_back(s["id"], s["recognised"]);
    }
    EXPECT_EQ(
        recognised,
        (std::vector<std::pair<std::string, bool>>{
            {"rpm0", true}, {"rpm1", true}, {"rpm2", true}, {"ismp", true}, {"none", false}}));
    EXPECT_EQ(report["withoutVendor"], json({{"DPKG", 2}}));
    // The rest of the database, the ISMP product of another vendor, the dpkg packages.
    EXPECT_EQ(report["unrecognised"].size(), packages.size() - 3 + 1 + 2) << run.out;

    run = e2e::runRegscan({"match", "--catalog", dir + "/catalog.json"}, options);
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_NE(run.out.find("DPKG: 2 packages without a vendor cannot be recognised"),
              std::string::npos)
        << run.out;

    const struct {
        const char* file;
        int status;
        const char* message;
    } failures[] = {
        {"bad.json", 1, "entry 1 (id \"v\"): no \"vendor\""},
        {"bad.json", 1, "entry 2 (id \"p\"): the name pattern does not compile"},
        {"object.json", 2, "not a JSON array"},
        {"truncated.json", 2, "not JSON"},
        {"missing.json", 2, "cannot open catalog"},
        {"", 2, "cannot read catalog"},  // the directory itself
    };
    for (const auto& f : failures) {
        run = e2e::runRegscan({"match", "--catalog", dir + "/" + f.file}, options);
        EXPECT_EQ(run.exitStatus, f.status) << f.file << "\n" << run.err;
        EXPECT_NE(run.err.find(f.message), std::string::npos) << f.file << "\n" << run.err;
    }
    // The good entry after the bad ones is still evaluated.
    run = e2e::runRegscan({"match", "--catalog", dir + "/bad.json", "--format", "csv"}, options);
    EXPECT_NE(run.out.find("signature,rpm0,yes,"), std::string::npos) << run.out;
    std::system(("rm -rf '" + dir + "'").c_str());
}

}  // namespace
