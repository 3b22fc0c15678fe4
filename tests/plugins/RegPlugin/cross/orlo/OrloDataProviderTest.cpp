#include "cross/orlo/OrloDataProvider.h"

#include <gtest/gtest.h>

#include "../package/CrossFakes.h"
#include "OrloTestSupport.h"
#include "cross/orlo/OrloProductInfo.h"
#include "cross/orlo/OrloProductList.h"

namespace RegPluginTest {
namespace {

using RegPlugin::OrloDataProvider;
using Strings = std::vector<std::string>;

// Packages whose install directories are `dirs` (paths relative to the tree when
// they start with "/", else as given).
std::vector<Row> packagesAt(const TagTree& tree, const std::vector<std::string>& dirs) {
    static std::vector<std::wstring> texts;  // keeps the rows' pointers alive
    std::vector<Row> rows;
    for (std::size_t i = 0; i < dirs.size(); ++i) {
        texts.push_back(wide("pkg" + std::to_string(i)));
        const wchar_t* key = texts.back().c_str();
        texts.push_back(
            wide(dirs[i].empty() || dirs[i][0] != '/' ? dirs[i] : tree.path() + dirs[i]));
        rows.push_back({key, key, L"1", L"v", texts.back().c_str()});
    }
    return rows;
}

class OrloDataProviderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        clearFactory();
        orlo = new OrloDataProvider();
        Factory::setDataProvider(Factory::ORLO_PROVIDER, orlo);
        const std::string inventory =
            "<ProductInventory>" + tagRecord("Product", "P1", "1.0", "<ORLOFMIDX>X1</ORLOFMIDX>") +
            tagRecord("Component", "C1", "1.0") + tagRecord("Fix", "F1", "1.0.1") +
            "</ProductInventory>";
        tree.tag("app1", "p1.xml", inventory);
        tree.mkdirs("app2/bin");
        tree.tag("app2", "p2.xml", tagRecord("Product", "P2", "2.0"));
        tree.tag("app3", "p3.xml", tagRecord("Product", "P3", "3.0"));
        tree.write("app3/setup.sh", "#!/bin/sh\n");
        tree.tag("twin1", "p.xml", tagRecord("Product", "P1", "1.0"));
        tree.tag("twin2", "p.xml", tagRecord("Product", "P1", "1.0"));
    }
    void TearDown() override { Factory::cleanup(); }

    // The keys of `which`'s inventory, with the tree's path removed.
    Strings list(Factory::DataProviderClass which,
                 RegistryPackage::Type type = RegistryPackage::ANY, TErrorCode expected = 0) {
        PluginSDK::StringVector keys;
        keys.addString(L"stale");
        EXPECT_EQ(orlo->enumPackages(type, keys, which), expected);
        Strings out;
        for (const std::string& key : keysOf(keys))
            out.push_back(without(key, tree.path()));
        return out;
    }
    std::string root(const std::string& relative) const { return tree.path() + relative; }

    TagTree tree;
    OrloDataProvider* orlo = nullptr;
};

TEST_F(OrloDataProviderTest, InventoriesEveryProviderButTesselAndItself) {
    install(Factory::OS_PROVIDER,
            packagesAt(tree, {"/app1", "/app2/bin", "/app3/setup.sh", "/missing", ""}));
    install(Factory::ANYWHERE_PROVIDER, packagesAt(tree, {"/twin1/", "//twin2/./x/.."}));
    install(Factory::TESSEL_PROVIDER, packagesAt(tree, {"/app1"}))->enumResult = -1;
    TraceCapture capture;
    EXPECT_EQ(list(Factory::INVALID_PROVIDER),
              (Strings{"C1#1.0@/app1", "F1#1.0.1@/app1", "P1#1.0@/app1", "P1#1.0@/twin1",
                       "P1#1.0@/twin2", "P2#2.0@/app2", "P3#3.0@/app3"}));
    EXPECT_EQ(list(Factory::INVALID_PROVIDER, RegistryPackage::PATCH), Strings{"F1#1.0.1@/app1"});
    EXPECT_EQ(list(Factory::INVALID_PROVIDER, RegistryPackage::SUBPRODUCT),
              Strings{"C1#1.0@/app1"});
    EXPECT_EQ(list(Factory::OS_PROVIDER, RegistryPackage::PRODUCT),
              (Strings{"P1#1.0@/app1", "P2#2.0@/app2", "P3#3.0@/app3"}));

    const MemoryTraceSink& sink = capture.sink();
    Strings skipped;
    for (const std::string& line : tracedWith(sink, 2, "Path: ", tree.path()))
        if (line.find("properties/version") == std::string::npos)
            skipped.push_back(line);
    EXPECT_EQ(skipped, (Strings{"Path: /app3/setup.sh is not directory...",
                                "Path: /missing doesn't exist, skipping the path",
                                "Path:  doesn't exist, skipping the path"}));
    EXPECT_EQ(tracedWith(sink, 2, "...using parent: ", tree.path()),
              Strings{"...using parent: /app3"});
    // Classes are asked in order; the missing ones (no provider) are named, and,
    // having no inventory, asked again by each enumeration of every class.
    const Strings missing = {"Failed to get provider ismp", "Failed to get provider corvu",
                             "Failed to get provider rpm", "Failed to get provider (null)"};
    Strings missingThrice = missing;
    for (int i = 0; i < 2; ++i)
        missingThrice.insert(missingThrice.end(), missing.begin(), missing.end());
    EXPECT_EQ(tracedWith(sink, 2, "Failed to get provider "), missingThrice);
    EXPECT_EQ(tracedWith(sink, 3, "About to query provider "),
              (Strings{"About to query provider os", "About to query provider any"}));
    EXPECT_EQ(tracedWith(sink, 3, "Successfully queried provider: "),
              (Strings{"Successfully queried provider: os. Number of paths found: 5",
                       "Successfully queried provider: any. Number of paths found: 2"}));
    EXPECT_TRUE(sink.contains("Adding package name='P1' version='1.0' installDir='" +
                              root("/twin1") + "' key='P1#1.0@" + root("/twin1") + "'"));
    EXPECT_TRUE(sink.contains("Returning 7 packages"));
    EXPECT_TRUE(sink.contains("Returning 1 packages"));
    EXPECT_EQ(sink.messages(1), Strings{});
}

TEST_F(OrloDataProviderTest, CandidateDirectoriesAndTheSeenSet) {
    tree.mkdirs("a/x/s1");
    tree.mkdirs("a/x/s2");
    tree.mkdirs("a/y");
    tree.tag("a", "a.xml", tagRecord("Product", "A", "1"));
    install(Factory::OS_PROVIDER, packagesAt(tree, {"/a/x", "/a/y", "/a/x/"}));
    // A second class reaching a directory the first one saw adds only its parent.
    install(Factory::RPM_PROVIDER, packagesAt(tree, {"/a/y", "/app1/"}));
    TraceCapture capture;
    EXPECT_EQ(list(Factory::OS_PROVIDER), Strings{"A#1@/a"});
    Strings candidates;
    for (const std::string& line : capture.sink().messages(3))
        if (line.rfind("Directory: ", 0) == 0 || line.rfind("Subdirectory: ", 0) == 0 ||
            line.rfind("Adding directory one level up: ", 0) == 0)
            candidates.push_back(without(line, tree.path()));
    EXPECT_EQ(candidates,
              (Strings{"Directory: /a/x added to list", "Subdirectory: /a/x/s1 added to list",
                       "Subdirectory: /a/x/s2 added to list", "Adding directory one level up: /a",
                       "Directory: /a added to list", "Directory: /a/y added to list",
                       "Adding directory one level up: /a", "Directory: /a added to list",
                       "Adding directory one level up: /a", "Directory: /a added to list"}));
    // The parent was scanned three times: the later copies replace the first.
    EXPECT_EQ(tracedWith(capture.sink(), 2, "Package with key=", tree.path()),
              (Strings{"Package with key='A#1@/a' already there, replacing",
                       "Package with key='A#1@/a' already there, replacing"}));

    capture.sink().clear();
    EXPECT_EQ(list(Factory::RPM_PROVIDER),
              (Strings{"A#1@/a", "C1#1.0@/app1", "F1#1.0.1@/app1", "P1#1.0@/app1"}));
    EXPECT_FALSE(capture.sink().contains("Directory: " + root("/a/y") + " added to list"));
    EXPECT_TRUE(capture.sink().contains("Directory: " + root("/a") + " added to list"));
    EXPECT_TRUE(capture.sink().contains("Package with key='A#1@" + root("/a") +
                                        "' already there, replacing"));
}

TEST_F(OrloDataProviderTest, EachClassIsInventoriedOnce) {
    install(Factory::OS_PROVIDER, packagesAt(tree, {"/app2/bin"}));
    install(Factory::CORVU_PROVIDER, packagesAt(tree, {"/missing"}));
    TraceCapture capture;
    EXPECT_EQ(list(Factory::OS_PROVIDER), Strings{"P2#2.0@/app2"});
    tree.tag("app2", "late.xml", tagRecord("Product", "Late", "1"));
    EXPECT_EQ(list(Factory::OS_PROVIDER), Strings{"P2#2.0@/app2"});
    EXPECT_EQ(list(Factory::INVALID_PROVIDER), Strings{"P2#2.0@/app2"});
    EXPECT_EQ(tracedWith(capture.sink(), 3, "About to query provider os").size(), 1u);

    // A class whose query found nothing has no inventory: it is asked again each time.
    capture.sink().clear();
    EXPECT_EQ(list(Factory::CORVU_PROVIDER), Strings{});
    EXPECT_EQ(capture.sink().messages(1), Strings{"Failed to find inventory for provider corvu"});
    tree.tag("missing", "m.xml", tagRecord("Product", "M", "1"));
    EXPECT_EQ(list(Factory::CORVU_PROVIDER), Strings{"M#1@/missing"});
    EXPECT_EQ(tracedWith(capture.sink(), 3, "About to query provider corvu").size(), 2u);
}

TEST_F(OrloDataProviderTest, RefusalsLookupsAndFailures) {
    RowProvider* os = install(Factory::OS_PROVIDER, packagesAt(tree, {"/app1"}));
    install(Factory::ISMP_PROVIDER, {{L"nodir", L"n", L"1", L"v"}});
    install(Factory::RPM_PROVIDER, packagesAt(tree, {"/app2"}))->enumResult = -13111;
    TraceCapture capture;

    RegistryPackage* package = nullptr;
    const PluginSDK::String key(wide("P1#1.0@" + root("/app1")));
    EXPECT_EQ(orlo->getPackage(key, &package), 0) << "found only after an enumeration";
    EXPECT_EQ(package, nullptr);
    EXPECT_EQ(orlo->getPackage(key, nullptr), -101);
    EXPECT_EQ(list(Factory::ORLO_PROVIDER, RegistryPackage::ANY, REG_PLUGIN_ERROR_INVALID_PROVIDER),
              Strings{});
    EXPECT_EQ(capture.sink().messages(1),
              (Strings{"invalid parameters",
                       "It is impossible to ask this provider to query itself. Choose another "
                       "provider or none."}));
    EXPECT_EQ(os->loadCalls, 0);

    list(Factory::INVALID_PROVIDER);
    EXPECT_EQ(orlo->getPackage(key, &package), 0);
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(package->provider, L"ORLOINV");
    EXPECT_EQ(package->type, RegistryPackage::PRODUCT);
    const std::pair<const wchar_t*, std::string> fields[] = {
        {L"installDir", root("/app1")},
        {L"kind", "Product"},
        {L"TAG_FILE", root("/app1/properties/version/p1.xml")},
        {L"fmidx", "X1"},
        {L"ORLOFMIDX", "X1"},
        {L"ProductVersion", "1.0"}};
    for (const auto& [field, value] : fields) {
        PluginSDK::String text;
        EXPECT_EQ(package->getProperty(field, text), 0);
        EXPECT_EQ(text.toUtf8(), value);
    }
    package = reinterpret_cast<RegistryPackage*>(1);
    EXPECT_EQ(orlo->get(key, package, Factory::RPM_PROVIDER), 0);
    EXPECT_EQ(package, nullptr);
    EXPECT_EQ(orlo->get(key, package, Factory::OS_PROVIDER), 0);
    EXPECT_NE(package, nullptr);

    for (const bool initial : {true, false}) {
        bool found = initial;
        EXPECT_EQ(orlo->packageExists(key, found), 0);
        EXPECT_EQ(found, initial) << "exists() leaves the flag alone";
    }
    const Strings warnings = capture.sink().messages(2);
    for (const char* expected :
         {"Failed to get installDir for package with key: nodir", "Failed to query provider ismp",
          "Failed to enumerate provider", "Failed to query provider rpm"})
        EXPECT_NE(std::find(warnings.begin(), warnings.end(), expected), warnings.end())
            << expected;
}

class OrloExpressionTest : public OrloDataProviderTest {
  protected:
    void SetUp() override {
        OrloDataProviderTest::SetUp();
        install(Factory::OS_PROVIDER, packagesAt(tree, {"/app1"}));
        install(Factory::RPM_PROVIDER, packagesAt(tree, {"/app2"}));
    }
};

TEST_F(OrloExpressionTest, ListByProviderKeyword) {
    const struct {
        const wchar_t* provider;
        const wchar_t* type;
        TErrorCode code;
        Strings keys;
    } cases[] = {
        {nullptr, nullptr, 0, {"C1#1.0@/app1", "F1#1.0.1@/app1", "P1#1.0@/app1", "P2#2.0@/app2"}},
        {L"", L"patch", 0, {"F1#1.0.1@/app1"}},
        {L"rpm", nullptr, 0, {"P2#2.0@/app2"}},
        {L"os", L"subproduct", 0, {"C1#1.0@/app1"}},
        {L"any", nullptr, 0, {}},
        {L"orlo", nullptr, REG_PLUGIN_ERROR_INVALID_PROVIDER, {}},
        {L"dpkg", nullptr, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, {}},
        {L"RPM", nullptr, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, {}},
        {L" rpm", nullptr, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, {}},
    };
    for (const auto& c : cases) {
        RegPlugin::OrloProductList expression;
        expression.setProperty(L"provider", c.provider);
        expression.setProperty(L"type", c.type);
        PluginSDK::StringVector out;
        EXPECT_EQ(expression.getVectorResult(out), c.code)
            << narrow(c.provider ? c.provider : L"-");
        Strings keys;
        for (const std::string& key : keysOf(out))
            keys.push_back(without(key, tree.path()));
        EXPECT_EQ(keys, c.keys) << narrow(c.provider ? c.provider : L"-");
    }
}

TEST_F(OrloExpressionTest, InfoReadsFieldsOfListedKeys) {
    const std::wstring key = wide("C1#1.0@" + root("/app1"));
    const struct {
        const wchar_t* code;
        const wchar_t* field;
        TErrorCode expected;
        std::string result;
    } cases[] = {
        {nullptr, L"name", REG_PLUGIN_ERROR_UNSPECIFIED_CODE, ""},
        {key.c_str(), nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_FIELD, ""},
        {key.c_str(), L"kind", 0, "Component"},
        {key.c_str(), L"ComponentName", 0, "C1"},
        {key.c_str(), L"noSuchField", 0, ""},
        {L"C1#1.0@/elsewhere", L"name", REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST, ""},
    };
    RegPlugin::OrloProductList list;
    PluginSDK::StringVector keys;
    ASSERT_EQ(list.getVectorResult(keys), 0);
    for (const auto& c : cases) {
        RegPlugin::OrloProductInfo info;
        info.setProperty(L"code", c.code);
        info.setProperty(L"field", c.field);
        PluginSDK::String result(L"stale");
        EXPECT_EQ(info.getScalarResult(result), c.expected) << narrow(c.field ? c.field : L"-");
        EXPECT_EQ(result.toUtf8(), c.result) << narrow(c.field ? c.field : L"-");
    }
}

TEST_F(OrloExpressionTest, WithoutTheOrloProvider) {
    Factory::setDataProvider(Factory::ORLO_PROVIDER, nullptr);
    RegPlugin::OrloProductList list;
    PluginSDK::StringVector keys;
    EXPECT_EQ(list.getVectorResult(keys), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
    RegPlugin::OrloProductInfo info;
    info.setProperty(L"code", L"x");
    info.setProperty(L"field", L"name");
    PluginSDK::String result;
    EXPECT_EQ(info.getScalarResult(result), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
}

}  // namespace
}  // namespace RegPluginTest
