#include "cross/any/InstallAnywhereDataProvider.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "../../XmlRegistrySupport.h"
#include "RegPluginConstants.h"
#include "cross/any/AnywhereXmlParser.h"

namespace RegPluginTest {
namespace {

using RegPlugin::InstallAnywhereDataProvider;
using RegPlugin::RegistryPackage;
using Keys = std::vector<std::string>;

const char* const kLoadScope = "InstallAnywhereDataProvider::load()";

const std::string kHarbor = "3f1c6a2e-0b1d-4e8a-9c55-7a1e2b3c4d01";
const std::string kBuero = "7b8e9f00-2222-4c3d-9e4f-000000000202";
const std::string kPlain = "plain-tool-0001";
const std::string kLibraries = "5c9d2f7a-1111-4a2b-8c3d-000000000101";
const std::string kJre = "jre-1.8.0_392-x64";
const std::string kFonts = "fonts-zw-0003";

class InstallAnywhereDataProviderTest : public ::testing::Test {
  protected:
    // Loads the registry at `path` through the provider's query path.
    void loadFrom(const std::string& path) {
        provider.reset(new InstallAnywhereDataProvider(wide(path).c_str()));
        PluginSDK::StringVector keys;
        ASSERT_EQ(provider->enumPackages(RegistryPackage::ANY, keys), 0);
        ASSERT_EQ(keys.size(), provider->size());
    }
    std::string property(const std::string& key, const wchar_t* field) {
        RegistryPackage* found = provider->find(key.c_str());
        if (found == nullptr)
            return "<no package>";
        EXPECT_EQ(found->provider, PluginSDK::String(L"ANYWHERE"));
        return propertyOf(*found, field);
    }

    TraceCapture trace;
    std::unique_ptr<InstallAnywhereDataProvider> provider;
};

TEST_F(InstallAnywhereDataProviderTest, ProductsAndComponentsShareOneKeySpaceInDocumentOrder) {
    loadFrom(fixturePath("anywhere/registry.xml"));
    EXPECT_EQ(cachedKeys(*provider), (Keys{kHarbor, kBuero, kPlain, kLibraries, kJre, kFonts}));
    const std::pair<RegistryPackage::Type, Keys> kinds[] = {
        {RegistryPackage::PRODUCT, {kHarbor, kBuero, kPlain}},
        {RegistryPackage::SUBPRODUCT, {kLibraries, kJre, kFonts}},
        {RegistryPackage::PATCH, {}}};
    for (const auto& [type, expected] : kinds) {
        PluginSDK::StringVector keys;
        ASSERT_EQ(provider->enumPackages(type, keys), 0);
        Keys actual;
        for (int i = 0; i < keys.size(); ++i)
            actual.push_back(keys[i].toUtf8());
        EXPECT_EQ(actual, expected) << "type " << type;
    }
    for (const char* absent : {"nested-0001", "legacy-0001", "bundle-0001", "not-a-component"})
        EXPECT_EQ(provider->find(absent), nullptr) << absent;
    RegistryPackage* missing = nullptr;
    EXPECT_EQ(provider->getPackage(L"nested-0001", &missing),
              REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST);
}

TEST_F(InstallAnywhereDataProviderTest, PropertiesOfProductsAndComponents) {
    loadFrom(fixturePath("anywhere/registry.xml"));
    const std::string notFound = "<" + std::to_string(REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND) + ">";
    const struct {
        std::string key;
        const wchar_t* field;
        std::string value;
    } cases[] = {
        {kHarbor, L"id", kHarbor},
        {kHarbor, L"name", "Harbor Monitor"},
        {kHarbor, L"version", "4.2.0.1"},
        {kHarbor, L"installDir", "/opt/HarborMonitor"},
        {kHarbor, L"lastModified", "2024-03-11 14:02:53"},
        {kHarbor, L"installDate", "2024-03-11 14:02:53"},
        {kHarbor, L"vendor", "Harbor & Sons Software"},
        {kHarbor, L"vendorId", "a1b2c3d4-0000-4000-8000-000000000001"},
        {kHarbor, L"description", notFound},
        {kHarbor, L"Name", notFound},
        // Windows-style location, text beyond ASCII, the last of two vendors.
        {kBuero, L"name", "B\xc3\xbcro Suite \xe2\x80\x93 Zeitwerk"},
        {kBuero, L"installDir", "C:\\Program Files\\Zeitwerk\\B\xc3\xbcro Suite"},
        {kBuero, L"vendor", "Zeitwerk GmbH & Co. KG"},
        {kBuero, L"vendorId", "v-zeitwerk-\xc3\xbc"},
        // No vendor child, no last_modified attribute: empty, but present.
        {kPlain, L"vendor", ""},
        {kPlain, L"vendorId", ""},
        {kPlain, L"lastModified", ""},
        {kPlain, L"installDate", ""},
        // Components: vendor from the attribute, vendorId and lastModified always
        // empty (even when the element has a last_modified), no installDate.
        {kLibraries, L"id", kLibraries},
        {kLibraries, L"name", "Harbor Monitor Libraries"},
        {kLibraries, L"version", "4.2.0.1"},
        {kLibraries, L"installDir", "/opt/HarborMonitor/lib"},
        {kLibraries, L"vendor", "Harbor & Sons Software"},
        {kLibraries, L"vendorId", ""},
        {kLibraries, L"lastModified", ""},
        {kLibraries, L"installDate", notFound},
    };
    for (const auto& c : cases)
        EXPECT_EQ(property(c.key, c.field), c.value)
            << c.key << " " << PluginSDK::String(c.field).toUtf8();
}

TEST_F(InstallAnywhereDataProviderTest, TraceTellsWhatWasFoundAndSkipped) {
    const std::string path = fixturePath("anywhere/registry.xml");
    loadFrom(path);
    const MemoryTraceSink& sink = trace.sink();
    EXPECT_EQ(scopeMessages(sink, 3, "InstallAnywhereDataProvider::findRegistry()"),
              Keys{"registry location='" + path + "'"});
    const Keys info = scopeMessages(sink, 3, kLoadScope);
    for (const std::string& line : Keys{
             "Found <products>",
             "Found <components>",
             "Found product name='Harbor Monitor' id='" + kHarbor +
                 "' version='4.2.0.1' location='/opt/HarborMonitor' last modified='2024-03-11 "
                 "14:02:53' vendor name ='Harbor & Sons Software' vendor id "
                 "='a1b2c3d4-0000-4000-8000-000000000001'",
             "Found product name='Plain Tool' id='plain-tool-0001' version='0.9.1' "
             "location='/usr/local/plaintool' last modified='' vendor name ='' vendor id =''",
             "Found component name='Java Runtime' id='" + kJre +
                 "' version='1.8.0.392' location='/opt/HarborMonitor/jre' vendor=''",
         })
        EXPECT_NE(std::find(info.begin(), info.end(), line), info.end()) << line << joined(info);
    // Every element met on the walk, in order: root children, the children of each
    // products / components list, and the children of each product.
    Keys elements;
    for (const std::string& line : info)
        if (line.rfind("Found node name='", 0) == 0 &&
            line.find("-not-a-node") == std::string::npos)
            elements.push_back(line.substr(17, line.size() - 18));
    EXPECT_EQ(elements, (Keys{"products",       "product",   "vendor", "feature",     "components",
                              "product",        "vendor",    "vendor", "uninstaller", "product",
                              "legacy_product", "product",   "vendor", "components",  "settings",
                              "components",     "component", "bundle", "component",   "component",
                              "component",      "component"}));
    EXPECT_EQ(scopeMessages(sink, 1, kLoadScope),
              (Keys{"Skipped duplicate package with key='" + kHarbor + "'",
                    "Skipped duplicate component with key='plain-tool-0001'",
                    "Skipped duplicate component with key='" + kJre + "'"}));
    EXPECT_TRUE(scopeMessages(sink, 2, kLoadScope).empty());
    EXPECT_TRUE(sink.contains("6 packages successfully preloaded"));
}

TEST_F(InstallAnywhereDataProviderTest, TextChildrenOfTheRootAreTracedAndPassedOver) {
    const std::string xml = "<r>a<!--c--><products/>b<components>x</components></r>";
    RegPlugin::AnywhereXmlParser parser(xml.data(), xml.size());
    InstallAnywhereDataProvider direct;
    direct.loadTree(parser.getRootNode());
    direct.loadTree(nullptr);
    const std::string other = "Found node name='-not-a-node-actually-'";
    EXPECT_EQ(trace.sink().messages(3),
              (Keys{other, other, "Found node name='products'", "Found <products>", other,
                    "Found node name='components'", "Found <components>", other}));
    EXPECT_EQ(direct.size(), 0);
}

TEST_F(InstallAnywhereDataProviderTest, DocumentsInOtherEncodings) {
    const struct {
        const char* fixture;
        std::string key;
        const wchar_t* field;
        std::string value;
    } cases[] = {
        {"registry-bom.xml", "pos-\xc3\xa9-0001", L"name", "Caf\xc3\xa9 Point of Sale"},
        {"registry-latin1.xml", "kuehl-0001", L"vendor", "M\xc3\xbcller & S\xc3\xb6hne"},
        {"registry-latin1.xml", "groessen-0002", L"name", "Gr\303\266\303\237en Tabelle"},
    };
    for (const auto& c : cases) {
        loadFrom(fixturePath(std::string("anywhere/") + c.fixture));
        EXPECT_EQ(property(c.key, c.field), c.value) << c.fixture << " " << c.key;
    }
}

// Hostile or broken registries: each ends the load with the packages read (none or
// the well-formed ones), the level 1 and 2 trace lines in order ("..." ends a
// prefix), and code 0; none crashes, hangs or fetches anything.
TEST_F(InstallAnywhereDataProviderTest, BrokenAndHostileRegistries) {
    const std::string good = readFixture("anywhere/registry.xml");
    const std::string failed = "Failed to parse registry";
    auto atLine = [&](const std::string& line) {
        return Keys{"Error parsing XML file at line " + line + "...", failed};
    };
    const Keys unreadable = atLine("0 message is: Cannot read XML file '"), none, p1 = {"p1"};
    enum Kind { FILE, MISSING, DIRECTORY, FIFO };
    const struct {
        const char* what;
        Kind kind;
        std::string content;
        Keys keys, failures;
    } cases[] = {
        {"missing", MISSING, "", none, Keys{"Registry not found in expected location."}},
        {"directory", DIRECTORY, "", none, unreadable},
        {"FIFO", FIFO, "", none, unreadable},
        {"empty", FILE, "", none, atLine("1 message is: ")},
        {"cut in the middle", FILE, good.substr(0, good.size() / 2), none, atLine("")},
        {"mismatched tags", FILE, "<registry>\n<products>\n<product id='a'>\n</products>", none,
         atLine("4 message is: ")},
        {"invalid UTF-8", FILE, "<registry><products>\n<product id='a\xff\xfe'/></products>", none,
         atLine("2 message is: ")},
        {"entity expansion", FILE,
         entityBomb("registry", "<registry><products><product name='&h;'/></products></registry>"),
         none, atLine("2")},
        {"external entities are never fetched", FILE,
         "<!DOCTYPE registry [<!ENTITY x SYSTEM 'file:///etc/passwd'>]>\n"
         "<registry><products>&x;<product id='p1' name='n'/></products></registry>",
         p1, none},
        {"an external DTD is never read", FILE,
         "<!DOCTYPE registry SYSTEM '/etc/passwd'>\n<registry><products><product "
         "id='p1'/>\n&y;</products></registry>",
         p1, Keys{"Warning parsing XML file at line 3 message is: ..."}},
        {"100,000 levels of nesting", FILE,
         "<registry><products><product id='deep'>" + repeat("<x>", 100000) +
             repeat("</x>", 100000) + "</product></products></registry>",
         Keys{"deep"}, none},
        {"a root of another name", FILE, "<other><products><product id='p1'/></products></other>",
         p1, none},
        {"products without ids share the empty key", FILE,
         "<registry><products><product name='a'/><product name='b'/></products></registry>",
         Keys{""}, Keys{"Skipped duplicate package with key=''"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir dir;
        const std::string path = dir.path() + "/registry.xml";
        if (c.kind == FILE)
            dir.write("registry.xml", c.content);
        ASSERT_EQ(c.kind == DIRECTORY ? mkdir(path.c_str(), 0755)
                  : c.kind == FIFO    ? mkfifo(path.c_str(), 0644)
                                      : 0,
                  0);
        trace.sink().clear();
        const auto start = std::chrono::steady_clock::now();
        loadFrom(path);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
        EXPECT_EQ(cachedKeys(*provider), c.keys);
        Keys failures;
        for (const auto& line : trace.sink().lines())
            if (line.level < 3)
                failures.push_back(line.message.substr(0, 200));
        expectLines(failures, c.failures);
    }
}

TEST_F(InstallAnywhereDataProviderTest, ALargeAttributeIsKeptWhole) {
    TempDir dir;
    const std::string name(10 << 20, 'n');
    loadFrom(dir.write("registry.xml",
                       "<r><products><product id='p' name='" + name + "'/></products></r>"));
    EXPECT_EQ(property("p", L"name").size(), name.size());
}

TEST(InstallAnywhereRegistryFileTest, TheFactoryReadsTheFixedPlace) {
    InstallAnywhereDataProvider byDefault, null(nullptr);
    EXPECT_TRUE(byDefault.getRegistryPath().empty());
    EXPECT_TRUE(byDefault.findRegistry());
    null.findRegistry();
    EXPECT_EQ(byDefault.getRegistryPath(), PluginSDK::String(L"/var/.com.zerog.registry.xml"));
    EXPECT_EQ(null.getRegistryPath(), byDefault.getRegistryPath());
}

}  // namespace
}  // namespace RegPluginTest
