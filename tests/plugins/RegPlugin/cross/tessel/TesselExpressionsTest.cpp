// The three catalog expressions against a product directory made by the tests, with
// the provider the factory makes.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "PluginSDK/PluginResult.h"
#include "PluginSDK/StringVector.h"
#include "RegPluginConstants.h"
#include "TesselProduct.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/rpm/RpmProductList.h"
#include "cross/tessel/TesselDataProvider.h"
#include "cross/tessel/TesselExists.h"
#include "cross/tessel/TesselInfo.h"
#include "cross/tessel/TesselList.h"

namespace RegPluginTest {
namespace {

using RegPlugin::RegistryDataProviderFactory;
using Strings = std::vector<std::string>;

struct Property {
    const wchar_t* name;
    const wchar_t* value;  // null: not set
};

std::string text(const PluginSDK::String& value) {
    return value.toUtf8();
}

template <class T>
std::unique_ptr<T> make(const std::vector<Property>& properties) {
    std::unique_ptr<T> expression(new T());
    for (const Property& p : properties) {
        if (p.value != nullptr)
            expression->setProperty(p.name, p.value);
    }
    return expression;
}

// The code, and the result or the list joined by ",".
std::string list(const std::vector<Property>& properties) {
    auto expression = make<RegPlugin::TesselList>(properties);
    PluginSDK::StringVector out;
    out.addString(L"stale");
    const TErrorCode rc = expression->getVectorResult(out);
    std::string joined;
    for (const PluginSDK::String& key : out)
        joined += (joined.empty() ? "" : ",") + text(key);
    return std::to_string(rc) + " " + joined;
}

template <class T>
std::string scalar(const std::vector<Property>& properties) {
    auto expression = make<T>(properties);
    PluginSDK::String result(L"stale");
    const TErrorCode rc = expression->getScalarResult(result);
    return std::to_string(rc) + " " + text(result);
}

// A fresh factory for each test: the catalog is read again.
class TesselExpressionsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        RegistryDataProviderFactory::cleanup();
        PluginSDK::Configuration::cleanup(REG_PLUGIN_NAME);
    }
    void TearDown() override {
        RegistryDataProviderFactory::cleanup();
        PluginSDK::Configuration::cleanup(REG_PLUGIN_NAME);
    }
};

// Installed and committed, installed but uncommitted, removed (committed or not), and
// a second version of one name.
const std::string kListing =
    tesselHeader() + tesselRecord("base", "1", "u1", "IC---") +
    tesselRecord("beta", "2", "u2", "I-P--") + tesselRecord("gone", "3", "u3", "-C---") +
    tesselRecord("old", "4", "u4", "-----") + tesselRecord("base", "2", "u5", "ICU--");

TEST_F(TesselExpressionsTest, StateCriteriaFromConfigurationAndOverrides) {
    TesselProduct product(kListing);
    const std::wstring directory(product.path().begin(), product.path().end());
    const wchar_t* const T = PLUGIN_RESULT_TRUE;
    const wchar_t* const kStored[] = {nullptr, T, PLUGIN_RESULT_FALSE};
    const wchar_t* const kOverrides[] = {nullptr, L"true", L"false"};
    struct Package {
        const wchar_t* key;
        const char* version;
        int shownBy;  // 0 always, 1 with uncommitted ones, 2 with removed ones
    };
    const Package packages[] = {{L"base.1", "1", 0},
                                {L"beta.2", "2", 1},
                                {L"gone.3", "3", 2},
                                {L"old.4", "4", 2},
                                {L"base.2", "2", 0}};
    for (const wchar_t* storedUncommitted : kStored) {
        for (const wchar_t* storedRemoved : kStored) {
            for (const wchar_t* uncommitted : kOverrides) {
                for (const wchar_t* removed : kOverrides) {
                    ScopedConfiguration configuration;
                    configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, directory.c_str())
                        .set(REG_PLUGIN_PROPERTY_SHOW_UNCOMMITTED_PDX_PKG, storedUncommitted)
                        .set(REG_PLUGIN_PROPERTY_SHOW_REMOVED_PDX_PKG, storedRemoved);
                    const bool showUncommitted = uncommitted != nullptr
                                                     ? std::wstring(uncommitted) == L"true"
                                                     : storedUncommitted == T;
                    const bool showRemoved =
                        removed != nullptr ? std::wstring(removed) == L"true" : storedRemoved == T;
                    SCOPED_TRACE(::testing::Message()
                                 << "stored "
                                 << ::String(storedUncommitted ? storedUncommitted : L"-") << "/"
                                 << ::String(storedRemoved ? storedRemoved : L"-") << ", overrides "
                                 << ::String(uncommitted ? uncommitted : L"-") << "/"
                                 << ::String(removed ? removed : L"-"));
                    const std::vector<Property> flags = {{L"showUncommittedPackages", uncommitted},
                                                         {L"showRemovedPackages", removed}};
                    std::string expectedList = "0 ";
                    for (const Package& p : packages) {
                        const bool shown = p.shownBy == 0 || (p.shownBy == 1 && showUncommitted) ||
                                           (p.shownBy == 2 && showRemoved);
                        if (shown)
                            expectedList += text(p.key) + ",";
                        std::vector<Property> query = flags;
                        query.push_back({L"code", p.key});
                        EXPECT_EQ(scalar<RegPlugin::TesselExists>(query),
                                  "0 " + text(shown ? PLUGIN_RESULT_TRUE : PLUGIN_RESULT_FALSE))
                            << text(p.key);
                        query.push_back({L"field", L"version"});
                        EXPECT_EQ(
                            scalar<RegPlugin::TesselInfo>(query),
                            shown ? std::string("0 ") + p.version
                                  : std::to_string(REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST) + " ")
                            << text(p.key);
                    }
                    expectedList.pop_back();
                    EXPECT_EQ(list(flags), expectedList == "0" ? "0 " : expectedList);
                    std::vector<Property> byName = flags;
                    byName.push_back({L"name", L"beta"});
                    EXPECT_EQ(list(byName), showUncommitted ? "0 beta.2" : "0 ");
                    byName.back().value = L"base";
                    EXPECT_EQ(list(byName), "0 base.1,base.2");
                }
            }
        }
    }
}

TEST_F(TesselExpressionsTest, PropertiesAndCodes) {
    TesselProduct product(kListing);
    ScopedConfiguration configuration;
    configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, product.path());
    const std::string notThere = std::to_string(REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST) + " ";
    const std::string T = "0 " + text(PLUGIN_RESULT_TRUE);
    const std::string F = "0 " + text(PLUGIN_RESULT_FALSE);
    const std::vector<Property> all = {{L"showUncommittedPackages", L"true"},
                                       {L"showRemovedPackages", L"true"}};
    struct Case {
        const char* what;
        std::string actual;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"Exists without code", scalar<RegPlugin::TesselExists>({}), "-13000 "},
        {"Exists of an unknown key", scalar<RegPlugin::TesselExists>({{L"code", L"base"}}), F},
        {"Exists ignores name",
         scalar<RegPlugin::TesselExists>({{L"code", L"base.1"}, {L"name", L"x"}}), T},
        {"Info without code", scalar<RegPlugin::TesselInfo>({{L"field", L"name"}}), "-13000 "},
        {"Info without field", scalar<RegPlugin::TesselInfo>({{L"code", L"base.1"}}), "-13001 "},
        {"Info of an unknown key",
         scalar<RegPlugin::TesselInfo>({{L"code", L"nothing.0"}, {L"field", L"name"}}), notThere},
        {"Info of a field the catalog does not give",
         scalar<RegPlugin::TesselInfo>({{L"code", L"base.1"}, {L"field", L"installDir"}}),
         "-13200 "},
        {"Info of each state field",
         scalar<RegPlugin::TesselInfo>({{L"code", L"base.2"}, {L"field", L"backupState"}}),
         "0 undoable"},
        {"Info of an uncommitted package when shown",
         scalar<RegPlugin::TesselInfo>({{L"code", L"beta.2"},
                                        {L"field", L"isCommitted"},
                                        {L"showUncommittedPackages", L"true"}}),
         "0 false"},
        {"Info of the uninstall data",
         scalar<RegPlugin::TesselInfo>({{L"code", L"base.1"}, {L"field", L"uninstData"}}), "0 u1"},
        {"List by type product", list({{L"type", L"product"}}), "0 base.1,base.2"},
        {"List by type patch", list({{L"type", L"patch"}}), "0 "},
        {"List by an unknown type", list({{L"type", L"PTF"}}), "-13006 "},
        {"List with a filter, everything shown", list({{L"filter", L"b*"}, all[0], all[1]}),
         "0 base.1,beta.2,base.2"},
        {"List with a filter that matches nothing", list({{L"filter", L"z*"}}), "0 "},
        {"List by a name nothing has", list({{L"name", L"nothing"}, all[0], all[1]}), "0 "},
        {"List by an empty name", list({{L"name", L""}}), "0 "},
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.actual, c.expected) << c.what;
}

TEST_F(TesselExpressionsTest, WithoutProductDirectory) {
    TraceCapture trace;
    const std::string unreadable =
        std::to_string(REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST) + " ";
    EXPECT_EQ(list({}), unreadable);
    EXPECT_EQ(list({{L"showUncommittedPackages", L"true"}, {L"showRemovedPackages", L"true"}}),
              unreadable);
    EXPECT_EQ(scalar<RegPlugin::TesselExists>({{L"code", L"base.1"}}), unreadable);
    // Info looks only at packageExists' answer.
    EXPECT_EQ(scalar<RegPlugin::TesselInfo>({{L"code", L"base.1"}, {L"field", L"name"}}),
              std::to_string(REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST) + " ");
    EXPECT_TRUE(
        trace.sink().contains("Property pdxDirectory not found. Skipping finding any software "));
    EXPECT_TRUE(trace.sink().contains("Unable to preload packages ( err = -13870 )"));
}

TEST_F(TesselExpressionsTest, WithoutProvider) {
    RegistryDataProviderFactory::setDataProvider(RegistryDataProviderFactory::TESSEL_PROVIDER,
                                                 nullptr);
    RegistryDataProviderFactory::setDataProvider(RegistryDataProviderFactory::RPM_PROVIDER,
                                                 nullptr);
    const std::string invalid = std::to_string(REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER) + " ";
    EXPECT_EQ(list({}), "0 ");
    EXPECT_EQ(list({{L"filter", L"*"}}), "0 ");
    EXPECT_EQ(scalar<RegPlugin::TesselExists>({{L"code", L"base.1"}}), invalid);
    EXPECT_EQ(scalar<RegPlugin::TesselInfo>({{L"code", L"base.1"}, {L"field", L"name"}}), invalid);
    // Every other List reports the missing provider.
    RegPlugin::RpmProductList rpm;
    PluginSDK::StringVector out;
    EXPECT_EQ(rpm.getVectorResult(out), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
    // Validation comes before the provider.
    EXPECT_EQ(scalar<RegPlugin::TesselExists>({}), "-13000 ");
    EXPECT_EQ(scalar<RegPlugin::TesselInfo>({{L"code", L"x"}}), "-13001 ");
}

TEST_F(TesselExpressionsTest, FactoryMakesTheCatalog) {
    TesselProduct product(tesselRecord("a", "1", "u", "IC---"));
    ScopedConfiguration configuration;
    configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, product.path());
    RegPlugin::RegistryDataProvider* provider =
        RegistryDataProviderFactory::getDataProvider(RegistryDataProviderFactory::TESSEL_PROVIDER);
    ASSERT_NE(dynamic_cast<RegPlugin::TesselDataProvider*>(provider), nullptr);
    EXPECT_EQ(provider, RegistryDataProviderFactory::getDataProvider(
                            RegistryDataProviderFactory::TESSEL_PROVIDER));
    // Read once: a changed listing is not seen.
    EXPECT_EQ(list({}), "0 a.1");
    product.setListing(tesselRecord("b", "1", "u", "IC---"));
    EXPECT_EQ(list({}), "0 a.1");
}

}  // namespace
}  // namespace RegPluginTest
