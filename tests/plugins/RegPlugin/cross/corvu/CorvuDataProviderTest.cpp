#include "cross/corvu/CorvuDataProvider.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../../XmlRegistrySupport.h"
#include "RegPluginConstants.h"

namespace RegPluginTest {
namespace {

using RegPlugin::CorvuDataProvider;
using RegPlugin::RegistryPackage;
using Keys = std::vector<std::string>;

const std::string kAgent = "com.kelvo.corvu.agent#1.8.2.20240301_1200@/opt/Kelvo/Shared";
const std::string kServer = "com.kelvo.orbit.server#9.0.5.20231120_0815@/opt/Kelvo/Orbit/";
const std::string kFix = "9.0.5-Orbit-IF0003#9.0.5.20240110_1500@/opt/Kelvo/Orbit/";
const std::string kTestServer = "com.kelvo.orbit.server#9.0.5.20231120_0815@/opt/Kelvo/OrbitTest";
const std::string kDashboards = "com.kelvo.orbit.dashboards#2.0.0@/opt/Kelvo/OrbitTest";

const char* const kFindConfig = "CorvuDataProvider::findConfigIniFilePath()";
const char* const kFindInstalled = "CorvuDataProvider::findInstalledXmlFilePath()";
const char* const kLoad = "CorvuDataProvider::load()";
const char* const kSinkError = "InstalledXmlParser::XmlNodeSink::onError(const String& ,int)";

// The hand-written chain placed under a private root: the absolute paths in the
// registry file and config.ini are moved under it.
class Chain {
  public:
    Chain() {
        registry = place("/etc/.kelvo/registry/Corvu.dat", underRoot("corvu/Corvu.dat"));
        configIni = place("/opt/Kelvo/Corvu/eclipse/configuration/config.ini",
                          underRoot("corvu/config.ini"));
        installedXml =
            place("/var/kelvo/CorvuData/installed.xml", readFixture("corvu/installed.xml"));
    }
    // The fixture `name` with every "=/" value moved under the root.
    std::string underRoot(const std::string& name) const {
        std::string text = readFixture(name);
        for (std::size_t at = text.find("=/"); at != std::string::npos;
             at = text.find("=/", at + 1))
            text.replace(at + 1, 0, dir.path());
        return text;
    }
    // Writes `content` at `path` below the root (directories made); returns the full path.
    std::string place(const std::string& path, const std::string& content) const {
        const std::string full = dir.path() + path;
        EXPECT_EQ(std::system(("mkdir -p '" + full.substr(0, full.rfind('/')) + "'").c_str()), 0);
        write(full, content);
        return full;
    }
    void write(const std::string& full, const std::string& content) const {
        std::ofstream(full, std::ios::binary | std::ios::trunc) << content;
    }
    void replaceBy(const std::string& full, const std::string& kind) const {
        ASSERT_EQ(std::remove(full.c_str()), 0) << full;
        ASSERT_EQ(kind == "directory" ? mkdir(full.c_str(), 0755)
                  : kind == "fifo"    ? mkfifo(full.c_str(), 0644)
                                      : 0,
                  0);
    }
    std::string root() const { return dir.path(); }

    TempDir dir;
    std::string registry, configIni, installedXml;
};

class CorvuDataProviderTest : public ::testing::Test {
  protected:
    void load() {
        provider.reset(new CorvuDataProvider(wide(chain.registry).c_str()));
        PluginSDK::StringVector keys;
        ASSERT_EQ(provider->enumPackages(RegistryPackage::ANY, keys), 0);
        ASSERT_EQ(keys.size(), provider->size());
    }
    // Level 1 and 2 lines as "scope: message".
    Keys failures() {
        Keys out;
        for (const auto& line : trace.sink().lines())
            if (line.level < 3)
                out.push_back(line.signature + ": " + line.message.substr(0, 300));
        return out;
    }

    TraceCapture trace;
    Chain chain;
    std::unique_ptr<CorvuDataProvider> provider;
};

TEST_F(CorvuDataProviderTest, PackagesAreKeyedByIdVersionAndLocation) {
    load();
    EXPECT_EQ(cachedKeys(*provider), (Keys{kAgent, kServer, kFix, kTestServer, kDashboards}));
    EXPECT_TRUE(failures() ==
                Keys{std::string(kLoad) + ": Skipped duplicate package with key='" + kServer + "'"})
        << joined(failures());
    const struct {
        std::string key;
        const wchar_t* field;
        std::string value;
    } cases[] = {
        {kAgent, L"kind", "offering"},
        {kAgent, L"name", "Corvu Installer"},
        {kAgent, L"id", "com.kelvo.corvu.agent"},
        {kAgent, L"version", "1.8.2.20240301_1200"},
        {kAgent, L"installDir", "/opt/Kelvo/Shared"},
        {kAgent, L"vendor", "Kelvo Corp."},
        // The last vendor.name property wins; the first package of a key stays.
        {kServer, L"vendor", "Kelvo Corp. & Orbit"},
        {kServer, L"name", "Orbit Server"},
        {kServer, L"installDir", "/opt/Kelvo/Orbit/"},
        {kFix, L"kind", "fix"},
        {kTestServer, L"installDir", "/opt/Kelvo/OrbitTest"},
        {kDashboards, L"name", "Orbit Dashboards f\xc3\xbcr B\xc3\xbcros"},
        {kDashboards, L"vendor", ""},
        {kDashboards, L"description",
         "<" + std::to_string(REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND) + ">"},
    };
    for (const auto& c : cases) {
        RegistryPackage* p = provider->find(c.key.c_str());
        ASSERT_NE(p, nullptr) << c.key;
        EXPECT_EQ(propertyOf(*p, c.field), c.value)
            << c.key << " " << PluginSDK::String(c.field).toUtf8();
        EXPECT_EQ(p->provider, PluginSDK::String(L"CORVU"));
        EXPECT_EQ(p->type, RegistryPackage::PRODUCT);
    }
    for (const char* absent : {"com.kelvo.stray#0.1@", "nested.package#1@/opt/nested"})
        EXPECT_EQ(provider->find(absent), nullptr) << absent;
}

TEST_F(CorvuDataProviderTest, TraceFollowsTheChain) {
    load();
    const std::string root = chain.root();
    EXPECT_EQ(scopeMessages(trace.sink(), 3, kFindConfig),
              Keys{"config.ini file location='" + root +
                   "/opt/Kelvo/Corvu/eclipse/configuration/config.ini'"});
    EXPECT_EQ(scopeMessages(trace.sink(), 3, kFindInstalled),
              Keys{"installed.xml file location='" + root + "/var/kelvo/CorvuData/installed.xml'"});
    const Keys info = scopeMessages(trace.sink(), 3, kLoad);
    for (const std::string& line : Keys{
             "Found node name='-not-a-node-actually-'",
             "Found node name='location'",
             "Found node name='settings'",
             "Found location tag id='Orbit Server' path='/opt/Kelvo/Orbit/'",
             "Found node name='bundle'",
             "Found package tag kind='offering' name='Orbit Server' id='com.kelvo.orbit.server' "
             "version='9.0.5.20231120_0815' vendor='Kelvo Corp. & Orbit'",
             "Found package tag kind='feature' name='Orbit Dashboards f\xc3\xbcr B\xc3\xbcros' "
             "id='com.kelvo.orbit.dashboards' version='2.0.0' vendor=''",
         })
        EXPECT_NE(std::find(info.begin(), info.end(), line), info.end()) << line << joined(info);
    // A package's own children are not traced; a stray root-level package is met
    // as a node only.
    EXPECT_EQ(std::count(info.begin(), info.end(), "Found node name='property'"), 1);
    EXPECT_EQ(std::count(info.begin(), info.end(), "Found node name='package'"), 7);
}

TEST_F(CorvuDataProviderTest, PathsJoinWithOneSlash) {
    const struct {
        const char* location;      // the value after the root
        const char* dataLocation;  // the same
        const char* blanks;        // around both values
    } cases[] = {
        {"/opt/Kelvo/Corvu/", "/var/kelvo/CorvuData", ""},
        {"/opt/Kelvo/Corvu", "/var/kelvo/CorvuData/", ""},
        {"/opt/Kelvo/Corvu", "/var/kelvo/CorvuData", " \t\r"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.location) + " " + c.dataLocation);
        chain.write(chain.registry, std::string("location=") + c.blanks + chain.root() +
                                        c.location + c.blanks + "\n");
        chain.write(chain.configIni, std::string("cic.appDataLocation=") + c.blanks + chain.root() +
                                         c.dataLocation + c.blanks + "\n");
        provider.reset(new CorvuDataProvider(wide(chain.registry).c_str()));
        String configIni = "untouched";
        String installedXml = "untouched";
        ASSERT_TRUE(provider->findConfigIniFilePath(configIni));
        ASSERT_TRUE(provider->findInstalledXmlFilePath(configIni, installedXml));
        EXPECT_EQ(std::string(configIni), chain.configIni);
        EXPECT_EQ(std::string(installedXml), chain.installedXml);
    }
    // A path that fails leaves the output as it was.
    chain.write(chain.registry, "");
    String untouched = "untouched";
    EXPECT_FALSE(provider->findConfigIniFilePath(untouched));
    EXPECT_FALSE(provider->findInstalledXmlFilePath(String(chain.registry.c_str()), untouched));
    EXPECT_EQ(std::string(untouched), "untouched");
}

// Every link of the chain broken in turn: the load ends with an empty cache, code 0
// and the lines a user reads in the trace ("{registry}", "{config}" and
// "{installed}" stand for the paths; "..." ends a prefix).
TEST_F(CorvuDataProviderTest, EachBrokenLinkHasItsOwnMessage) {
    const std::string findConfigFailed =
        std::string(kLoad) + ": Failed to find config.ini location";
    const std::string findInstalledFailed =
        std::string(kLoad) + ": Failed to find installed.xml location";
    const std::string parseFailed = std::string(kLoad) + ": Failed to parse installed.xml";
    const std::string noLocation =
        std::string(kFindConfig) + ": Failed to find 'location' key in Corvu registry";
    const std::string noDataLocation =
        std::string(kFindInstalled) + ": Failed to find 'cic.appDataLocation' key in config.ini";
    const std::string registryUnread =
        std::string(kFindConfig) + ": Failed to load Corvu registry file ({registry})";
    const std::string configUnread =
        std::string(kFindInstalled) + ": Failed to load config='{config}'";
    const std::string sink = std::string(kSinkError) + ": Error parsing XML file at line ";
    using Edit = std::function<void(Chain&)>;
    auto content = [](std::string Chain::*file, std::string text) {
        return Edit([file, text](Chain& c) { c.write(c.*file, text); });
    };
    auto kind = [](std::string Chain::*file, const char* kind) {
        return Edit([file, kind](Chain& c) { c.replaceBy(c.*file, kind); });
    };
    struct Case {
        std::string what;
        Edit edit;
        Keys lines;
    };
    std::vector<Case> cases = {
        {"registry file empty", content(&Chain::registry, ""), {noLocation, findConfigFailed}},
        {"location only inside a section", content(&Chain::registry, "[main]\nlocation=/opt\n"),
         Keys{noLocation, findConfigFailed}},
        {"registry file not INI", content(&Chain::registry, std::string("\177ELF\0\1\2\xff=", 10)),
         Keys{noLocation, findConfigFailed}},
        {"location empty",
         content(&Chain::registry, "version=1\nlocation =   \n[a]\nlocation=/x\n"),
         Keys{std::string(kFindConfig) + ": Empty key 'location' in config.ini", findConfigFailed}},
        {"config.ini empty", content(&Chain::configIni, ""), {noDataLocation, findInstalledFailed}},
        {"key only inside a section", content(&Chain::configIni, "[x]\ncic.appDataLocation=/var\n"),
         Keys{noDataLocation, findInstalledFailed}},
        {"key empty", content(&Chain::configIni, "cic.appDataLocation=\n"),
         Keys{std::string(kFindInstalled) + ": Empty key 'cic.appDataLocation' in config.ini",
              findInstalledFailed}},
        {"installed.xml missing", kind(&Chain::installedXml, "missing"),
         Keys{sink + "0 message is: Cannot open XML file '{installed}': No such file or directory",
              parseFailed}},
        {"installed.xml is a directory", kind(&Chain::installedXml, "directory"),
         Keys{sink + "0 message is: Cannot read XML file '{installed}': not a regular file",
              parseFailed}},
        {"installed.xml is a FIFO", kind(&Chain::installedXml, "fifo"),
         Keys{sink + "0 message is: Cannot read XML file '{installed}': not a regular file",
              parseFailed}},
        {"installed.xml empty", content(&Chain::installedXml, ""),
         Keys{sink + "1 message is: {installed}: no element found...", parseFailed}},
        {"installed.xml cut in the middle",
         content(&Chain::installedXml, readFixture("corvu/installed.xml").substr(0, 1000)),
         Keys{sink + "...", parseFailed}},
        {"installed.xml with mismatched tags",
         content(&Chain::installedXml, "<i>\n<location>\n</i>"),
         Keys{sink + "3 message is: {installed}: mismatched tag...", parseFailed}},
        {"installed.xml not UTF-8",
         content(&Chain::installedXml, "<i>\n<location path='\xc3\x28'/></i>"),
         Keys{sink + "2 message is: {installed}: not well-formed...", parseFailed}},
        {"installed.xml expanding entities",
         content(&Chain::installedXml, entityBomb("i", "<i><location path='&h;'/></i>")),
         Keys{sink + "2 message is: ...", parseFailed}},
        {"installed.xml without locations",
         content(&Chain::installedXml, "<installInfo><x/>text</installInfo>"), Keys{}},
    };
    for (const char* k : {"missing", "directory", "fifo"}) {
        cases.push_back({std::string("registry ") + k,
                         kind(&Chain::registry, k),
                         {registryUnread, findConfigFailed}});
        cases.push_back({std::string("config.ini ") + k,
                         kind(&Chain::configIni, k),
                         {configUnread, findInstalledFailed}});
    }
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Chain broken;
        c.edit(broken);
        chain.registry = broken.registry;
        trace.sink().clear();
        const auto start = std::chrono::steady_clock::now();
        load();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
        EXPECT_EQ(provider->size(), 0);
        Keys expected = c.lines;
        for (std::string& line : expected)
            for (const auto& [name, path] : {std::make_pair("{registry}", broken.registry),
                                             std::make_pair("{config}", broken.configIni),
                                             std::make_pair("{installed}", broken.installedXml)})
                if (line.find(name) != std::string::npos)
                    line.replace(line.find(name), std::string(name).size(), path);
        expectLines(failures(), expected);
    }
}

TEST_F(CorvuDataProviderTest, ALargeConfigIniIsReadInBoundedTimeAndMemory) {
    std::string config;
    for (int i = 0; config.size() < (50u << 20); ++i)
        config += "osgi.bundle." + std::to_string(i) + "=reference:file:plugins/com.kelvo.b" +
                  std::to_string(i) + "_1.0.0.jar@4\n";
    config += "cic.appDataLocation=" + chain.root() + "/var/kelvo/CorvuData\n";
    chain.write(chain.configIni, config);
    config.clear();
    config.shrink_to_fit();
    const auto start = std::chrono::steady_clock::now();
    load();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_EQ(provider->size(), 5);
}

TEST(CorvuRegistryFileTest, TheFactoryStartsTheChainAtTheFixedPlace) {
    TraceCapture trace;
    CorvuDataProvider provider(nullptr);
    String out;
    EXPECT_TRUE(provider.findConfigIniFilePath(out) ||
                trace.sink().contains(
                    "Failed to load Corvu registry file (/etc/.kelvo/registry/Corvu.dat)"));
}

}  // namespace
}  // namespace RegPluginTest
