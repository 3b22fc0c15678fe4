// The Orlo tag inventory end to end: tag files under /opt trees found through the
// install directories of a real rpm database (built here from real packages), the
// InstallAnywhere registry and root's ISMP registry at their fixed places, through
// `regscan batch` and `regscan inventory` in a private mount namespace.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "RegscanRunner.h"

namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;

// One database per test process: ctest runs the cases of this file in parallel.
const std::string kRpmDir =
    std::string(REGSCAN_BINARY_DIR) + "/testdata/orlo-rpmdb-" + std::to_string(::getpid());
const std::string kTagDir = "/properties/version/";

const std::string kApp = "OrloApp#1.0@/opt/orloapp";
const std::string kAppFix = "OrloApp-Fix1#1.0.0.1@/opt/orloapp";
const std::string kSvc = "OrloSvc#2.0@/opt/orlosvc";
const std::string kTool = "OrloTool#3.1@/opt/orlotool";
const std::string kIsmp = "OrloIsmp#4.0@/opt/orloismp";

json expr(const char* name, json properties = json::object()) {
    return json{{"expression", name}, {"properties", properties}};
}

json list(json properties = json::object()) {
    return expr("OrloProductList", std::move(properties));
}

Lines traceLines(const std::string& err, int level) {
    Lines out;
    const std::string mark = " L" + std::to_string(level) + " C5 ";
    for (const std::string& line : e2e::lines(err)) {
        const std::size_t at = line.find(mark);
        if (at != std::string::npos && line.find(" [", at) != std::string::npos)
            out.push_back(line.substr(line.find(" [", at) + 1));
    }
    return out;
}

bool contains(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

class OrloTagInventoryTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        const std::string command = "bash '" + std::string(REGSCAN_SOURCE_DIR) +
                                    "/tests/e2e/make-orlo-rpmdb.sh' '" + kRpmDir +
                                    "' >/dev/null 2>&1";
        rpmBuilt =
            std::system("command -v rpmbuild >/dev/null") == 0 && std::system(command.c_str()) == 0;
    }

    static void TearDownTestSuite() { std::system(("rm -rf '" + kRpmDir + "'").c_str()); }

    void SetUp() override {
        if (!e2e::namespacesAvailable())
            GTEST_SKIP() << "needs root with mount namespaces and overlay mounts";
        if (!rpmBuilt)
            GTEST_SKIP() << "no rpmbuild here";
        options.environment["HOME"] = kRpmDir + "/home";
        options.files["/opt/orloapp" + kTagDir + "app.xml"] =
            "<?xml version='1.0'?>\n<ProductInventory>\n"
            "  <Product><ProductName>OrloApp</ProductName><ProductVersion>1.0</ProductVersion>"
            "<ORLOFMIDX>A1</ORLOFMIDX></Product>\n"
            "  <Fix><FixName>OrloApp-Fix1</FixName><FixVersion>1.0<!-- - -->.0.1</FixVersion>"
            "</Fix>\n</ProductInventory>\n";
        // The package's own file: its directory is the install directory rpm reports.
        options.files["/opt/orloapp/bin/orloapp"] = "orloapp\n";
        options.files["/opt/orlosvc" + kTagDir + "svc.tag"] =
            "<Component><ComponentName>OrloSvc</ComponentName>"
            "<ComponentVersion><![CDATA[2.0]]></ComponentVersion></Component>";
        options.files["/opt/orlotool" + kTagDir + "tool.xml"] =
            "<Product><ProductName>OrloTool</ProductName><ProductVersion>3.1</ProductVersion>"
            "</Product>";
        options.files["/opt/orlotool" + kTagDir + "readme.txt"] = "not a tag file\n";
        options.files["/opt/orloismp" + kTagDir + "ismp.xml"] =
            "<Product><ProductName>OrloIsmp</ProductName><ProductVersion>4.0</ProductVersion>"
            "</Product>";
        options.files["/var/.com.zerog.registry.xml"] =
            "<registry><products>"
            "<product id='tool' name='Tool' version='3.1' location='/opt/orlotool'/>"
            "<product id='tool-again' name='Tool' version='3.1' location='/opt/../opt//orlotool/'/>"
            "<product id='relative' name='R' version='1' location='opt/orlotool'/>"
            "<product id='nowhere' name='N' version='1' location='/opt/nowhere'/>"
            "<product id='empty' name='E' version='1' location=''/>"
            "</products></registry>";
        options.files["/root/vpd.properties"] =
            "I1|4|0|0|0|x|1=OrloIsmp|Orlo ISMP product|true|Vendor|url|4.0|/opt/orloismp"
            "|0|0|0|0|4|\"_uninst\" \"uninstall.jar\" \"uninstall.dat\" \"\"|1|2|3|4|5|6|7|8|9\n";
        const std::string tagDir = "/opt/orlotool" + kTagDir;
        options.setup = {"mkfifo " + tagDir + "pipe", "mkdir " + tagDir + "sub",
                         "ln -s /dev/zero " + tagDir + "zero", "ln -s loop " + tagDir + "loop",
                         "ln -s /proc/self/status " + tagDir + "proc"};
    }

    static bool rpmBuilt;
    e2e::RunOptions options;
};

bool OrloTagInventoryTest::rpmBuilt = false;

TEST_F(OrloTagInventoryTest, ListsAndInfoThroughBatch) {
    const struct {
        const char* what;
        json request;
        int code;
        json result;
    } cases[] = {
        {"rpm install directories", list({{"provider", "rpm"}}), 0, {kApp, kAppFix, kSvc}},
        {"asked again: served from the inventory",
         list({{"provider", "rpm"}}),
         0,
         {kApp, kAppFix, kSvc}},
        {"the os keyword: the rpm database again",
         list({{"provider", "os"}, {"type", "product"}}),
         0,
         {kApp}},
        {"InstallAnywhere", list({{"provider", "any"}}), 0, {kTool}},
        {"ISMP", list({{"provider", "ismp"}}), 0, {kIsmp}},
        {"Corvu: no registry here", list({{"provider", "corvu"}}), 0, json::array()},
        {"itself", list({{"provider", "orlo"}}), -13005, json::array()},
        {"unknown keyword", list({{"provider", "dpkg"}}), -13201, json::array()},
        {"every provider", list(), 0, {kApp, kAppFix, kIsmp, kSvc, kTool}},
        {"empty provider: every provider",
         list({{"provider", ""}, {"type", "patch"}}),
         0,
         {kAppFix}},
        {"components", list({{"type", "subproduct"}}), 0, {kSvc}},
        {"filter", list({{"filter", "OrloApp*"}}), 0, {kApp, kAppFix}},
        {"tag file", expr("OrloProductInfo", {{"code", kSvc}, {"field", "TAG_FILE"}}), 0,
         "/opt/orlosvc" + kTagDir + "svc.tag"},
        {"kind", expr("OrloProductInfo", {{"code", kAppFix}, {"field", "kind"}}), 0, "Fix"},
        {"fmidx", expr("OrloProductInfo", {{"code", kApp}, {"field", "fmidx"}}), 0, "A1"},
        {"install root", expr("OrloProductInfo", {{"code", kApp}, {"field", "installDir"}}), 0,
         "/opt/orloapp"},
        {"unknown field", expr("OrloProductInfo", {{"code", kApp}, {"field", "colour"}}), 0, ""},
        {"unknown key", expr("OrloProductInfo", {{"code", "x#1@/y"}, {"field", "name"}}), -13100,
         ""},
        {"no field", expr("OrloProductInfo", {{"code", kApp}}), -13001, ""},
        {"no Exists", expr("OrloProductExists", {{"code", kApp}}), -10008, nullptr},
    };
    e2e::RunOptions run = options;
    for (const auto& c : cases)
        run.input += c.request.dump() + "\n";
    const e2e::RunResult result = e2e::runRegscan({"--trace", "3", "batch"}, run);
    const Lines replies = e2e::lines(result.out);
    ASSERT_EQ(replies.size(), std::size(cases)) << result.out << result.err;
    for (std::size_t i = 0; i < replies.size(); ++i) {
        SCOPED_TRACE(std::string(cases[i].what) + " -> " + replies[i]);
        const json reply = json::parse(replies[i], nullptr, false);
        EXPECT_EQ(reply.value("code", 1), cases[i].code);
        json actual = reply.value("result", json());
        json expected = cases[i].result;
        if (actual.is_array() && expected.is_array())
            std::sort(expected.begin(), expected.end());
        EXPECT_EQ(actual, expected);
    }

    const Lines info = traceLines(result.err, 3), warnings = traceLines(result.err, 2),
                failures = traceLines(result.err, 1);
    EXPECT_EQ(std::count(info.begin(), info.end(),
                         "[OrloDataProvider::updateInventory()] About to query provider rpm"),
              1);
    EXPECT_TRUE(contains(failures,
                         "[OrloDataProvider::enumerate()] It is impossible to ask this provider to "
                         "query itself. Choose another provider or none."));
    EXPECT_TRUE(contains(failures,
                         "[OrloDataProvider::enumerate()] Failed to find inventory for provider "
                         "corvu"));
    const std::string tagDir = "/opt/orlotool" + kTagDir;
    for (const std::string& line :
         {"[OrloInventory::scanFile()] The file is not regular: " + tagDir + "pipe, skipping",
          "[OrloInventory::scanFile()] The file is not regular: " + tagDir + "sub, skipping",
          "[OrloInventory::scanFile()] The file is not regular: " + tagDir + "zero, skipping",
          "[OrloInventory::scanFile()] The file does not exist: " + tagDir + "loop, skipping",
          std::string("[OrloDataProvider::updateInventory()] Path: /opt/nowhere doesn't exist, "
                      "skipping the path"),
          std::string("[OrloDataProvider::updateInventory()] Path:  doesn't exist, skipping the "
                      "path")})
        EXPECT_TRUE(contains(warnings, line)) << line;
    EXPECT_TRUE(contains(info,
                         "[OrloDataProvider::updateInventory()] Adding directory one level "
                         "up: /opt/orloapp"));
}

TEST_F(OrloTagInventoryTest, InventoryShowsKindAndTagFile) {
    const e2e::RunResult result = e2e::runRegscan({"inventory", "--format", "json"}, options);
    const json records = json::parse(result.out, nullptr, false);
    ASSERT_TRUE(records.is_array()) << result.out << result.err;
    json orlo = json::array();
    for (const json& record : records)
        if (record.value("registry", "") == "orlo")
            orlo.push_back(record);
    ASSERT_EQ(orlo.size(), 5u) << orlo.dump(1);
    EXPECT_EQ(orlo[0], (json{{"registry", "orlo"},
                             {"key", kApp},
                             {"name", "OrloApp"},
                             {"version", "1.0"},
                             {"vendor", ""},
                             {"installDir", "/opt/orloapp"},
                             {"description", ""},
                             {"kind", "Product"},
                             {"TAG_FILE", "/opt/orloapp" + kTagDir + "app.xml"}}));
}

}  // namespace
