// Cross-registry queries and `regscan match` in one regscan process: the test rpm
// database, and dpkg and ISMP fixtures at their fixed places.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "RealComponents.h"
#include "RegscanRunner.h"
#include "Requests.h"

namespace {

using e2e::expr;
using e2e::kRpmHome;
using nlohmann::json;

struct RpmPackage {
    std::string key, name, version, vendor;  // version as the provider gives it
};

std::vector<RpmPackage> rpmPackages() {
    const std::string command = "HOME='" + kRpmHome +
                                "' rpm -qa --queryformat "
                                "'%{NAME}|%{VERSION}|%{RELEASE}|%{ARCH}|%{VENDOR}\\n' 2>/dev/null";
    std::vector<RpmPackage> packages;
    FILE* pipe = popen(command.c_str(), "r");
    char line[4096];
    while (pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr) {
        std::istringstream text(line);
        std::vector<std::string> f;
        for (std::string field; std::getline(text, field, '|');)
            f.push_back(field);
        if (f.size() == 5) {
            f[4].erase(f[4].find_last_not_of('\n') + 1);
            packages.push_back(
                {f[0] + "-" + f[1] + "-" + f[2] + "-" + f[3], f[0], f[1] + "." + f[2], f[4]});
        }
    }
    if (pipe != nullptr)
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

const char* kStatusFixture =
    "Package: alpha\nStatus: install ok installed\nVersion: 1.0-1\nDescription: alpha\n\n"
    "Package: beta\nStatus: install ok installed\nVersion: 2.0-1\nDescription: beta\n";

const json kReportServer = {{"code", "0a1b2c3d"},
                            {"value", "Report Server 4.2.0.1 Example Software Inc."}};

json with(json properties, const char* name, const std::string& value) {
    properties[name] = value;
    return properties;
}

json equal(json properties) {
    return expr("PackageInfoEqual", std::move(properties));
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

    std::vector<RpmPackage> packages;
    e2e::RunOptions options;
};

TEST_F(CrossRegistryTest, IsmpFamilyReadsRootsRegistry) {
    const e2e::RunResult run = e2e::expectReplies(
        {{"all, in file order", expr("IsmpProductList"), 0, nullptr},
         {"features", expr("IsmpProductList", {{"type", "subproduct"}}), 0,
          json::array({"0a1b2c3d-f1@4.2.0.1"})},
         {"vendor", expr("IsmpProductInfo", {{"code", "0a1b2c3d@4.2.0.1"}, {"field", "vendor"}}), 0,
          "Example Software Inc."},
         {"install dir",
          expr("IsmpProductInfo", {{"code", "9f8e7d6c@2.0"}, {"field", "installDir"}}), 0,
          "/opt/northwind/agent"},
         {"uninstaller",
          expr("IsmpProductInfo", {{"code", "0a1b2c3d@4.2.0.1"}, {"field", "uninstData"}}), 0,
          "/opt/example/report/_uninst/uninstaller.bin"},
         {"short version", expr("IsmpProductExists", {{"code", "9f8e7d6c@2"}}), 0, "FALSE"},
         {"unknown key", expr("IsmpProductInfo", {{"code", "nope"}, {"field", "name"}}), -13100,
          nullptr}},
        options);
    EXPECT_EQ(e2e::lines(run.out).at(0),
              R"({"code":0,"result":["0a1b2c3d@4.2.0.1","0a1b2c3d-f1@4.2.0.1","9f8e7d6c@2.0"]})");
    // root's home comes from the password file.
    options.files.erase("/root/vpd.properties");
    options.files["/etc/passwd"] = "root:x:0:0:root:/srv/home-of-root:/bin/sh\n";
    options.files["/srv/home-of-root/vpd.properties"] = kVpdFixture;
    e2e::expectReplies(
        {{"home from passwd", expr("IsmpProductExists", {{"code", "9f8e7d6c@2.0"}}), 0, "TRUE"}},
        options);
}

TEST_F(CrossRegistryTest, AMalformedLineFailsTheIsmpRegistry) {
    // The malformed uninstaller field fails the load: the package before it stays unserved.
    options.files["/root/vpd.properties"] =
        "9f8e7d6c|2|0|0|0|0|1=Data Agent|Data agent|1|Northwind Systems|null|1|"
        "/opt/northwind/agent|0|0|0|0|0| \n"
        "5e5e5e5e|1|0|0|0|0|1=Broken Tool|Broken|1|Example Software Inc.|null|1|"
        "/opt/example/broken|0|0|0|0|0|no-quotes-here|1|0|true|false|en|1|0|1|0\n";
    e2e::expectReplies(
        {{"list", expr("IsmpProductList"), -13111, nullptr},
         {"equal",
          expr("PackageInfoEqual", {{"code", "9f8e7d6c"},
                                    {"value", "Data Agent 2.0.0.0 Northwind Systems"},
                                    {"provider", "ismp"}}),
          -13111, "FALSE"}},
        options);
}

TEST_F(CrossRegistryTest, EqualityInTheNativeAndTheIsmpRegistry) {
    const RpmPackage& p = packages.front();
    const json native = {
        {"code", p.key}, {"value", p.name + " " + p.version + " " + p.vendor}, {"provider", "os"}};
    e2e::expectReplies(
        {{"native", equal(native), 0, "TRUE"},
         {"trailing blank", equal(with(native, "value", native["value"].get<std::string>() + " ")),
          0, "FALSE"},
         {"absent package is the empty text",
          equal({{"code", "absent-1-1-noarch"}, {"value", ""}, {"provider", "os"}}), 0, "TRUE"},
         {"ismp", equal(with(kReportServer, "provider", "ismp")), 0, "TRUE"},
         {"any", equal(with(kReportServer, "provider", "any")), 0, "TRUE"},
         {"blank version part",
          equal({{"code", "9f8e7d6c"},
                 {"value", "Data Agent 2.0 Northwind Systems"},
                 {"provider", "ismp"}}),
          0, "TRUE"},
         {"rpm is no provider keyword", equal(with(native, "provider", "rpm")), -13005, "FALSE"},
         {"no provider", equal({{"code", p.key}, {"value", native["value"]}}), -13003, "FALSE"}},
        options);
}

TEST_F(CrossRegistryTest, NativeErrorThenIsmpMatch) {
    e2e::FakeRpm rpm;
    options.environment["PATH"] = rpm.path();
    e2e::expectReplies(
        {{"native error replaced by the ISMP answer", equal(with(kReportServer, "provider", "any")),
          0, "TRUE"},
         {"native error alone", equal({{"code", "0a1b2c3d"}, {"value", "x"}, {"provider", "os"}}),
          -13111, "FALSE"}},
        options);
}

TEST_F(CrossRegistryTest, MatchesMarkPackagesForTheUnknownList) {
    const json unknown = {{"unknown", true}};
    const json all = expr("PackageInfoMatch", {{"vendor", "*"}, {"name", "*"}, {"version", "*"}});
    std::vector<json> replies;
    e2e::runBatch({{{"config", {{"listUnmatchedSoftware", "TRUE"}}}},
                   unknown,
                   all,
                   // each request takes a new snapshot
                   unknown,
                   expr("PackageInfoMatch", {{"vendor", "EXAMPLE*"},
                                             {"name", "report*"},
                                             {"version", "4.*"},
                                             {"ignoreCase", "TRUE"}}),
                   expr("PackageInfoMatch", with(all["properties"], "vendor", "["))},
                  options, replies);
    EXPECT_EQ(replies[1]["size"], packages.size() + 3 + 2);
    std::set<std::string> providers;
    for (const json& package : replies[1]["packages"])
        providers.insert(package.value("provider", "?"));
    EXPECT_EQ(providers, (std::set<std::string>{"RPM", "ISMP", "DPKG"}));
    EXPECT_EQ(replies[2]["result"], "TRUE");
    // Everything with a vendor was recognised; dpkg packages have none.
    EXPECT_EQ(replies[3], json::parse(R"({"code":0,"size":2,"packages":[
        {"provider":"DPKG","name":"alpha","version":"1.0-1"},
        {"provider":"DPKG","name":"beta","version":"2.0-1"}]})"));
    EXPECT_EQ(replies[4]["code"], -13010);
    EXPECT_EQ(replies[5], json::parse(R"({"code":3,"result":"FALSE"})"));
}

// A catalog made from the database's own packages recognises them; dpkg packages
// are reported as unrecognisable.
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
    catalog.push_back(json::parse(
        R"({"id":"ismp","vendor":"example*","name":"Report*","version":"*","ignoreCase":true})"));
    catalog.push_back(
        json::parse(R"({"id":"none","vendor":"*","name":"no-such-*","version":"*"})"));
    std::ofstream(dir + "/catalog.json") << catalog.dump();
    std::ofstream(dir + "/bad.json")
        << json::array({json::parse(R"({"id":"v","name":"x","version":"1"})"),
                        json::parse(R"({"id":"p","vendor":"*","name":"a\\","version":"1"})"),
                        catalog[0]})
               .dump();
    std::ofstream(dir + "/object.json") << "{\"id\": 1}";
    std::ofstream(dir + "/truncated.json") << "[{\"id\": \"x\", ";

    e2e::RunResult run =
        e2e::runRegscan({"match", "--catalog", dir + "/catalog.json", "--format", "json"}, options);
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    const json report = json::parse(run.out, nullptr, false);
    std::vector<std::pair<std::string, bool>> recognised;
    for (const json& s : report["signatures"])
        recognised.emplace_back(s["id"], s["recognised"]);
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
