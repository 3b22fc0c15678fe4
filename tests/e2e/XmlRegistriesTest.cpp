// The InstallAnywhere and Corvu families through regscan, with the registries at
// their fixed places.
#include <gtest/gtest.h>

#include <map>
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

const char* const kAnywhereFile = "/var/.com.zerog.registry.xml";
const char* const kCorvuFile = "/etc/.kelvo/registry/Corvu.dat";
const char* const kConfigIni = "/opt/Kelvo/Corvu/eclipse/configuration/config.ini";
const char* const kInstalledXml = "/var/kelvo/CorvuData/installed.xml";

const std::string kHarbor = "3f1c6a2e-0b1d-4e8a-9c55-7a1e2b3c4d01";
const std::string kBuero = "7b8e9f00-2222-4c3d-9e4f-000000000202";
const std::string kLibraries = "5c9d2f7a-1111-4a2b-8c3d-000000000101";
const std::string kJre = "jre-1.8.0_392-x64";
const std::string kFonts = "fonts-zw-0003";
const std::string kPlain = "plain-tool-0001";

const std::string kAgent = "com.kelvo.corvu.agent#1.8.2.20240301_1200@/opt/Kelvo/Shared";
const std::string kServer = "com.kelvo.orbit.server#9.0.5.20231120_0815@/opt/Kelvo/Orbit/";
const std::string kFix = "9.0.5-Orbit-IF0003#9.0.5.20240110_1500@/opt/Kelvo/Orbit/";
const std::string kTestServer = "com.kelvo.orbit.server#9.0.5.20231120_0815@/opt/Kelvo/OrbitTest";
const std::string kDashboards = "com.kelvo.orbit.dashboards#2.0.0@/opt/Kelvo/OrbitTest";

class XmlRegistriesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!e2e::namespacesAvailable())
            GTEST_SKIP() << "needs root with mount namespaces and overlay mounts";
        options.files = e2e::xmlRegistryFiles();
    }

    e2e::RunResult expectReplies(const std::vector<e2e::Case>& cases) {
        return e2e::expectReplies(cases, options, {"--trace", "3", "batch"});
    }

    e2e::RunOptions options;
};

TEST_F(XmlRegistriesTest, InstallAnywhereFamilyAnswersFromTheRegistry) {
    const e2e::RunResult run = expectReplies({
        {"every product and component", expr("InstallAnywhereList"), 0,
         json::array({kHarbor, kBuero, kPlain, kLibraries, kJre, kFonts})},
        {"products", expr("InstallAnywhereList", {{"type", "product"}}), 0,
         json::array({kHarbor, kBuero, kPlain})},
        {"components", expr("InstallAnywhereList", {{"type", "subproduct"}}), 0,
         json::array({kLibraries, kJre, kFonts})},
        {"filter", expr("InstallAnywhereList", {{"filter", "*-0001"}}), 0, json::array({kPlain})},
        {"bad type", expr("InstallAnywhereList", {{"type", "software"}}), -13006, json::array()},
        {"product", expr("InstallAnywhereExists", {{"code", kHarbor}}), 0, "TRUE"},
        {"nested list not read", expr("InstallAnywhereExists", {{"code", "nested-0001"}}), 0,
         "FALSE"},
        {"no code", expr("InstallAnywhereExists"), -13000, ""},
        {"vendor", expr("InstallAnywhereInfo", {{"code", kHarbor}, {"field", "vendor"}}), 0,
         "Harbor & Sons Software"},
        {"install date from last_modified",
         expr("InstallAnywhereInfo", {{"code", kHarbor}, {"field", "installDate"}}), 0,
         "2024-03-11 14:02:53"},
        {"non-ASCII name", expr("InstallAnywhereInfo", {{"code", kBuero}, {"field", "name"}}), 0,
         "B\xc3\xbcro Suite \xe2\x80\x93 Zeitwerk"},
        {"unknown key", expr("InstallAnywhereInfo", {{"code", "nope"}, {"field", "name"}}), -13100,
         ""},
        {"unknown field", expr("InstallAnywhereInfo", {{"code", kHarbor}, {"field", "colour"}}),
         -13200, ""},
        {"no field", expr("InstallAnywhereInfo", {{"code", kHarbor}}), -13001, ""},
    });
    EXPECT_TRUE(contains(traceLines(run.err, 3),
                         "[InstallAnywhereDataProvider::findRegistry()] registry location='" +
                             std::string(kAnywhereFile) + "'"))
        << run.err;
}

TEST_F(XmlRegistriesTest, CorvuFamilyFollowsTheChain) {
    const e2e::RunResult run = expectReplies({
        {"every package", expr("CorvuList"), 0,
         json::array({kAgent, kServer, kFix, kTestServer, kDashboards})},
        {"filter by location", expr("CorvuList", {{"filter", "*@/opt/Kelvo/OrbitTest"}}), 0,
         json::array({kTestServer, kDashboards})},
        {"no sub-products", expr("CorvuList", {{"type", "subproduct"}}), 0, json::array()},
        {"same id and version, other location", expr("CorvuExists", {{"code", kTestServer}}), 0,
         "TRUE"},
        {"without the location", expr("CorvuExists", {{"code", "com.kelvo.corvu.agent"}}), 0,
         "FALSE"},
        {"stray package", expr("CorvuExists", {{"code", "com.kelvo.stray#0.1@"}}), 0, "FALSE"},
        {"last vendor.name", expr("CorvuInfo", {{"code", kServer}, {"field", "vendor"}}), 0,
         "Kelvo Corp. & Orbit"},
        {"kind", expr("CorvuInfo", {{"code", kFix}, {"field", "kind"}}), 0, "fix"},
        {"no vendor", expr("CorvuInfo", {{"code", kDashboards}, {"field", "vendor"}}), 0, ""},
        {"unknown key", expr("CorvuInfo", {{"code", "x#1@/y"}, {"field", "name"}}), -13100, ""},
        {"unknown field", expr("CorvuInfo", {{"code", kAgent}, {"field", "description"}}), -13200,
         ""},
    });
    const Lines info = traceLines(run.err, 3);
    for (const std::string& line :
         {std::string("[CorvuDataProvider::findConfigIniFilePath()] config.ini file location='") +
              kConfigIni + "'",
          std::string("[CorvuDataProvider::findInstalledXmlFilePath()] installed.xml file "
                      "location='") +
              kInstalledXml + "'"})
        EXPECT_TRUE(contains(info, line)) << line << "\n" << run.err;
}

// A link of the chain that is not a regular file: CorvuList answers an empty list
// with code 0, and the trace tells which link broke.
TEST_F(XmlRegistriesTest, EachBrokenCorvuLinkIsTraced) {
    const std::string findConfig = "[CorvuDataProvider::findConfigIniFilePath()] ";
    const std::string findInstalled = "[CorvuDataProvider::findInstalledXmlFilePath()] ";
    const std::string load = "[CorvuDataProvider::load()] ";
    const std::string sink = "[InstalledXmlParser::XmlNodeSink::onError(const String& ,int)] ";
    const struct {
        const char* what;
        const char* file;   // the link removed
        const char* setup;  // what takes its place
        Lines lines;        // level 1 lines
    } cases[] = {
        {"registry file a FIFO",
         kCorvuFile,
         "mkfifo /etc/.kelvo/registry/Corvu.dat",
         {findConfig + "Failed to load Corvu registry file (" + kCorvuFile + ")",
          load + "Failed to find config.ini location"}},
        {"config.ini a directory",
         kConfigIni,
         "mkdir /opt/Kelvo/Corvu/eclipse/configuration/config.ini",
         {findInstalled + "Failed to load config='" + kConfigIni + "'",
          load + "Failed to find installed.xml location"}},
        {"installed.xml a FIFO",
         kInstalledXml,
         "mkfifo /var/kelvo/CorvuData/installed.xml",
         {sink + "Error parsing XML file at line 0 message is: Cannot read XML file '" +
              kInstalledXml + "': not a regular file",
          load + "Failed to parse installed.xml"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        e2e::RunOptions run = options;
        run.files.erase(kAnywhereFile);
        run.files["/etc/.regscan-e2e"] = "keeps an overlay on /etc\n";
        run.files.erase(c.file);
        run.files[std::string(c.file).substr(0, std::string(c.file).rfind('/')) + "/.keep"] = "";
        run.setup.push_back(c.setup);
        run.input = expr("CorvuList").dump() + "\n" + expr("CorvuList").dump() + "\n";
        const e2e::RunResult result = e2e::runRegscan({"--trace", "1", "batch"}, run);
        EXPECT_EQ(e2e::lines(result.out),
                  (Lines{R"({"code":0,"result":[]})", R"({"code":0,"result":[]})"}));
        EXPECT_EQ(traceLines(result.err, 1), c.lines);
    }
}

TEST_F(XmlRegistriesTest, InventoryListsBothRegistriesWhenPresentAndNothingWhenAbsent) {
    e2e::RunResult present = e2e::runRegscan({"inventory", "--format", "json"}, options);
    const json records = json::parse(present.out, nullptr, false);
    ASSERT_TRUE(records.is_array()) << present.out << present.err;
    std::map<std::string, int> perRegistry;
    for (const json& record : records)
        ++perRegistry[record.value("registry", "")];
    EXPECT_EQ(perRegistry["any"], 6);
    EXPECT_EQ(perRegistry["corvu"], 5);
    const auto server = std::find_if(records.begin(), records.end(), [](const json& record) {
        return record.value("key", "") == kServer;
    });
    ASSERT_NE(server, records.end());
    EXPECT_EQ((*server)["vendor"], "Kelvo Corp. & Orbit");
    EXPECT_EQ((*server)["installDir"], "/opt/Kelvo/Orbit/");
    EXPECT_EQ((*server)["version"], "9.0.5.20231120_0815");

    e2e::RunOptions none;
    none.files["/etc/.regscan-e2e"] = "";
    none.files["/var/.regscan-e2e"] = "";
    none.setup = {"rm -rf /etc/.kelvo /var/.com.zerog.registry.xml"};
    e2e::RunResult absent = e2e::runRegscan({"inventory", "--format", "json"}, none);
    const json empty = json::parse(absent.out, nullptr, false);
    ASSERT_TRUE(empty.is_array()) << absent.out << absent.err;
    for (const json& record : empty) {
        EXPECT_NE(record.value("registry", ""), "any");
        EXPECT_NE(record.value("registry", ""), "corvu");
    }
    for (const std::string& line : e2e::lines(absent.err))
        EXPECT_TRUE(line.rfind("any:", 0) != 0 && line.rfind("corvu:", 0) != 0) << line;
}

}  // namespace
