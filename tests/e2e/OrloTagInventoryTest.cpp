// The Orlo tag inventory through regscan: tag files found through the install
// directories of an rpm database built here, and of the InstallAnywhere and ISMP
// registries at their fixed places.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "RegscanRunner.h"
#include "Requests.h"

namespace {

using e2e::contains;
using e2e::expr;
using e2e::Lines;
using e2e::traceLines;
using nlohmann::json;

// One database per test process: ctest runs the cases of this file in parallel.
const std::string kRpmDir =
    std::string(REGSCAN_BINARY_DIR) + "/testdata/orlo-rpmdb-" + std::to_string(::getpid());
const std::string kTagDir = "/properties/version/";

const std::string kApp = "OrloApp#1.0@/opt/orloapp";
const std::string kAppFix = "OrloApp-Fix1#1.0.0.1@/opt/orloapp";
const std::string kSvc = "OrloSvc#2.0@/opt/orlosvc";
const std::string kTool = "OrloTool#3.1@/opt/orlotool";
const std::string kIsmp = "OrloIsmp#4.0@/opt/orloismp";

json list(json properties = json::object()) {
    return expr("OrloProductList", std::move(properties));
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
            "<product id='root' name='S' version='1' location='/'/>"
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
        {"every provider", list(), 0, {kApp, kAppFix, kIsmp, kSvc, kTool}},
        {"components", list({{"type", "subproduct"}}), 0, {kSvc}},
        {"filter", list({{"filter", "OrloApp*"}}), 0, {kApp, kAppFix}},
        {"tag file", expr("OrloProductInfo", {{"code", kSvc}, {"field", "TAG_FILE"}}), 0,
         "/opt/orlosvc" + kTagDir + "svc.tag"},
        {"kind", expr("OrloProductInfo", {{"code", kAppFix}, {"field", "kind"}}), 0, "Fix"},
        {"fmidx", expr("OrloProductInfo", {{"code", kApp}, {"field", "fmidx"}}), 0, "A1"},
        {"install root", expr("OrloProductInfo", {{"code", kApp}, {"field", "installDir"}}), 0,
         "/opt/orloapp"},
    };
    std::vector<json> requests, replies;
    for (const auto& c : cases)
        requests.push_back(c.request);
    const e2e::RunResult result =
        e2e::runBatch(requests, options, replies, {"--trace", "3", "batch"});
    for (std::size_t i = 0; i < replies.size(); ++i) {
        SCOPED_TRACE(std::string(cases[i].what) + " -> " + replies[i].dump());
        EXPECT_EQ(replies[i].value("code", 1), cases[i].code);
        json expected = cases[i].result;
        if (expected.is_array())  // lists come sorted
            std::sort(expected.begin(), expected.end());
        EXPECT_EQ(replies[i].value("result", json()), expected);
    }
    // Asked twice, the rpm registry is queried once; special files in a tag
    // directory are skipped without being opened.
    const Lines info = traceLines(result.err, 3);
    EXPECT_EQ(std::count(info.begin(), info.end(),
                         "[OrloDataProvider::updateInventory()] About to query provider rpm"),
              1);
    const Lines warnings = traceLines(result.err, 2);
    const std::string scan = "[OrloInventory::scanFile()] The file ";
    const std::string tagDir = "/opt/orlotool" + kTagDir;
    for (const std::string& line : {scan + "is not regular: " + tagDir + "pipe, skipping",
                                    scan + "is not regular: " + tagDir + "zero, skipping",
                                    scan + "does not exist: " + tagDir + "loop, skipping"})
        EXPECT_TRUE(contains(warnings, line)) << line;
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
