// The InstallAnywhere and Corvu expression families through `regscan batch` and
// `regscan inventory`, with the hand-written registries at their fixed places
// (overlay mounts in a private mount namespace), and the trace lines a user reads
// when a link of the Corvu chain is broken.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "RegscanRunner.h"

namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;

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

std::string fixture(const std::string& name) {
    std::ifstream in(std::string(REGSCAN_SOURCE_DIR) + "/tests/fixtures/" + name, std::ios::binary);
    EXPECT_TRUE(in.good()) << name;
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

json expr(const char* name, json properties = json::object()) {
    return json{{"expression", name}, {"properties", properties}};
}

struct Case {
    const char* what;
    json request;
    int code;
    json result;  // lists compare as sets
};

// "[scope] message" of each trace line of `level` on regscan's standard error.
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

std::string joined(const Lines& lines) {
    std::string out;
    for (const std::string& line : lines)
        out += "\n  " + line;
    return out;
}

class XmlRegistriesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!e2e::namespacesAvailable())
            GTEST_SKIP() << "needs root with mount namespaces and overlay mounts";
        options.files[kAnywhereFile] = fixture("anywhere/registry.xml");
        options.files[kCorvuFile] = fixture("corvu/Corvu.dat");
        options.files[kConfigIni] = fixture("corvu/config.ini");
        options.files[kInstalledXml] = fixture("corvu/installed.xml");
    }

    // Runs the requests in one `regscan --trace 3 batch` and checks each reply.
    e2e::RunResult expectReplies(const std::vector<Case>& cases) {
        e2e::RunOptions run = options;
        for (const Case& c : cases)
            run.input += c.request.dump() + "\n";
        e2e::RunResult result = e2e::runRegscan({"--trace", "3", "batch"}, run);
        const Lines replies = e2e::lines(result.out);
        EXPECT_EQ(replies.size(), cases.size()) << result.out << result.err;
        for (std::size_t i = 0; i < cases.size() && i < replies.size(); ++i) {
            const json reply = json::parse(replies[i], nullptr, false);
            SCOPED_TRACE(std::string(cases[i].what) + ": " + cases[i].request.dump() + " -> " +
                         replies[i]);
            EXPECT_EQ(reply.value("code", 1), cases[i].code);
            json expected = cases[i].result;
            json actual = reply.value("result", json());
            if (expected.is_array() && actual.is_array()) {
                std::sort(expected.begin(), expected.end());
                std::sort(actual.begin(), actual.end());
            }
            EXPECT_EQ(actual, expected);
        }
        return result;
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
        {"component", expr("InstallAnywhereExists", {{"code", kJre}}), 0, "TRUE"},
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
        {"Windows location",
         expr("InstallAnywhereInfo", {{"code", kBuero}, {"field", "installDir"}}), 0,
         "C:\\Program Files\\Zeitwerk\\B\xc3\xbcro Suite"},
        {"component vendorId empty",
         expr("InstallAnywhereInfo", {{"code", kLibraries}, {"field", "vendorId"}}), 0, ""},
        {"unknown key", expr("InstallAnywhereInfo", {{"code", "nope"}, {"field", "name"}}), -13100,
         ""},
        {"unknown field", expr("InstallAnywhereInfo", {{"code", kHarbor}, {"field", "colour"}}),
         -13200, ""},
        {"no field", expr("InstallAnywhereInfo", {{"code", kHarbor}}), -13001, ""},
    });
    const Lines info = traceLines(run.err, 3);
    for (const std::string& line :
         {"[InstallAnywhereDataProvider::findRegistry()] registry location='" +
              std::string(kAnywhereFile) + "'",
          std::string("[InstallAnywhereDataProvider::load()] Found <components>"),
          std::string("[PreloadedDataProvider::preload()] 6 packages successfully preloaded")})
        EXPECT_NE(std::find(info.begin(), info.end(), line), info.end()) << line << joined(info);
    EXPECT_EQ(
        traceLines(run.err, 1),
        (Lines{"[InstallAnywhereDataProvider::load()] Skipped duplicate package with key='" +
                   kHarbor + "'",
               "[InstallAnywhereDataProvider::load()] Skipped duplicate component with "
               "key='plain-tool-0001'",
               "[InstallAnywhereDataProvider::load()] Skipped duplicate component with key='" +
                   kJre + "'"}))
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
        {"install directory", expr("CorvuInfo", {{"code", kFix}, {"field", "installDir"}}), 0,
         "/opt/Kelvo/Orbit/"},
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
              kInstalledXml + "'",
          std::string("[CorvuDataProvider::load()] Found location tag id='Orbit Test Instance' "
                      "path='/opt/Kelvo/OrbitTest'")})
        EXPECT_NE(std::find(info.begin(), info.end(), line), info.end()) << line << joined(info);
    const Lines failures = traceLines(run.err, 1);
    EXPECT_NE(std::find(failures.begin(), failures.end(),
                        "[CorvuDataProvider::load()] Skipped duplicate package with key='" +
                            kServer + "'"),
              failures.end())
        << joined(failures);
}

// Each link of the chain broken in turn, as a user would meet it: CorvuList answers
// an empty list with code 0, and the trace tells which link broke.
TEST_F(XmlRegistriesTest, EachBrokenCorvuLinkIsTraced) {
    const std::string findConfig = "[CorvuDataProvider::findConfigIniFilePath()] ";
    const std::string findInstalled = "[CorvuDataProvider::findInstalledXmlFilePath()] ";
    const std::string load = "[CorvuDataProvider::load()] ";
    const std::string sink = "[InstalledXmlParser::XmlNodeSink::onError(const String& ,int)] ";
    const std::string configFailed = load + "Failed to find config.ini location";
    const std::string installedFailed = load + "Failed to find installed.xml location";
    const std::string parseFailed = load + "Failed to parse installed.xml";
    const struct {
        const char* what;
        const char* file;     // the link changed
        const char* content;  // its new content, or null to remove it
        const char* setup;    // a command run in the namespace, or null
        Lines lines;          // level 1 lines; "..." ends a prefix
    } cases[] = {
        {"registry file missing",
         kCorvuFile,
         nullptr,
         nullptr,
         {findConfig + "Failed to load Corvu registry file (" + kCorvuFile + ")", configFailed}},
        {"registry file a FIFO",
         kCorvuFile,
         nullptr,
         "mkfifo /etc/.kelvo/registry/Corvu.dat",
         {findConfig + "Failed to load Corvu registry file (" + kCorvuFile + ")", configFailed}},
        {"registry file empty",
         kCorvuFile,
         "",
         nullptr,
         {findConfig + "Failed to find 'location' key in Corvu registry", configFailed}},
        {"location empty",
         kCorvuFile,
         "location=\n[a]\nlocation=/opt\n",
         nullptr,
         {findConfig + "Empty key 'location' in config.ini", configFailed}},
        {"config.ini missing",
         kConfigIni,
         nullptr,
         nullptr,
         {findInstalled + "Failed to load config='" + kConfigIni + "'", installedFailed}},
        {"config.ini a directory",
         kConfigIni,
         nullptr,
         "mkdir /opt/Kelvo/Corvu/eclipse/configuration/config.ini",
         {findInstalled + "Failed to load config='" + kConfigIni + "'", installedFailed}},
        {"config.ini without the key",
         kConfigIni,
         "osgi.instance.area=@noDefault\n",
         nullptr,
         {findInstalled + "Failed to find 'cic.appDataLocation' key in config.ini",
          installedFailed}},
        {"config.ini with the key empty",
         kConfigIni,
         "cic.appDataLocation=  \n",
         nullptr,
         {findInstalled + "Empty key 'cic.appDataLocation' in config.ini", installedFailed}},
        {"installed.xml missing",
         kInstalledXml,
         nullptr,
         nullptr,
         {sink + "Error parsing XML file at line 0 message is: Cannot open XML file '" +
              kInstalledXml + "': No such file or directory",
          parseFailed}},
        {"installed.xml a FIFO",
         kInstalledXml,
         nullptr,
         "mkfifo /var/kelvo/CorvuData/installed.xml",
         {sink + "Error parsing XML file at line 0 message is: Cannot read XML file '" +
              kInstalledXml + "': not a regular file",
          parseFailed}},
        {"installed.xml empty",
         kInstalledXml,
         "",
         nullptr,
         {sink + "Error parsing XML file at line 1 message is: " + kInstalledXml +
              ": no element found...",
          parseFailed}},
        {"installed.xml not well-formed",
         kInstalledXml,
         "<installInfo>\n<location path='/opt'>\n<package id='a'>\n</location>",
         nullptr,
         {sink + "Error parsing XML file at line 4 message is: " + kInstalledXml +
              ": mismatched tag...",
          parseFailed}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        e2e::RunOptions run = options;
        run.files.erase(kAnywhereFile);
        run.files["/etc/.regscan-e2e"] = "keeps an overlay on /etc\n";
        if (c.content != nullptr) {
            run.files[c.file] = c.content;
        } else {
            run.files.erase(c.file);
            run.files[std::string(c.file).substr(0, std::string(c.file).rfind('/')) + "/.keep"] =
                "";
        }
        if (c.setup != nullptr)
            run.setup.push_back(c.setup);
        run.input = expr("CorvuList").dump() + "\n" + expr("CorvuList").dump() + "\n";
        const e2e::RunResult result = e2e::runRegscan({"--trace", "1", "batch"}, run);
        EXPECT_EQ(e2e::lines(result.out),
                  (Lines{R"({"code":0,"result":[]})", R"({"code":0,"result":[]})"}));
        const Lines lines = traceLines(result.err, 1);
        ASSERT_EQ(lines.size(), c.lines.size()) << joined(lines);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::string& expected = c.lines[i];
            const bool prefix =
                expected.size() > 3 && expected.substr(expected.size() - 3) == "...";
            EXPECT_EQ(prefix ? lines[i].substr(0, expected.size() - 3) : lines[i],
                      prefix ? expected.substr(0, expected.size() - 3) : expected);
        }
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
