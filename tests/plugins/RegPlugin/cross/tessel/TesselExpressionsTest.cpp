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
using RegPlugin::TesselExists;
using RegPlugin::TesselInfo;

struct Property {
    const wchar_t* name;
    const wchar_t* value;  // null: not set
};
using Properties = std::vector<Property>;

template <class T>
std::unique_ptr<T> make(const Properties& properties) {
    std::unique_ptr<T> expression(new T());
    for (const Property& p : properties) {
        if (p.value != nullptr)
            expression->setProperty(p.name, p.value);
    }
    return expression;
}

// The code, and the result or the list joined by ",".
std::string list(const Properties& properties) {
    PluginSDK::StringVector out;
    out.addString(L"stale");
    const TErrorCode rc = make<RegPlugin::TesselList>(properties)->getVectorResult(out);
    std::string joined;
    for (const PluginSDK::String& key : out)
        joined += (joined.empty() ? "" : ",") + key.toUtf8();
    return std::to_string(rc) + " " + joined;
}

template <class T>
std::string scalar(const Properties& properties) {
    PluginSDK::String result(L"stale");
    const TErrorCode rc = make<T>(properties)->getScalarResult(result);
    return std::to_string(rc) + " " + result.toUtf8();
}

const std::string kTrue = "0 " + PluginSDK::String(PLUGIN_RESULT_TRUE).toUtf8();
const std::string kFalse = "0 " + PluginSDK::String(PLUGIN_RESULT_FALSE).toUtf8();
const std::string kNotThere = std::to_string(REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST) + " ";

// A fresh factory for each test: the catalog is read again.
class TesselExpressionsTest : public ::testing::Test {
  protected:
    void SetUp() override { RegistryDataProviderFactory::cleanup(); }
    void TearDown() override { RegistryDataProviderFactory::cleanup(); }
    ScopedConfiguration m_configuration;
};

// Installed and committed, installed but uncommitted, removed (committed or not), and
// a second version of one name.
const std::string kListing =
    kTesselHeader + tesselRecord("base", "1", "u1", "IC---") +
    tesselRecord("beta", "2", "u2", "I-P--") + tesselRecord("gone", "3", "u3", "-C---") +
    tesselRecord("old", "4", "u4", "-----") + tesselRecord("base", "2", "u5", "ICU--");

TEST_F(TesselExpressionsTest, StateCriteriaFromConfigurationAndOverrides) {
    TesselProduct product(kListing);
    const wchar_t* const T = PLUGIN_RESULT_TRUE;
    struct Case {
        const wchar_t *storedUncommitted, *storedRemoved;  // null: not set
        const wchar_t *uncommitted, *removed;              // on the expression; null: not set
        std::string shown;                                 // List's answer
    };
    const std::vector<Case> cases = {
        {nullptr, nullptr, nullptr, nullptr, "base.1,base.2"},
        {T, nullptr, nullptr, nullptr, "base.1,beta.2,base.2"},
        {T, T, L"false", nullptr, "base.1,gone.3,old.4,base.2"},
        {PLUGIN_RESULT_FALSE, nullptr, L"true", L"true", "base.1,beta.2,gone.3,old.4,base.2"},
    };
    const std::vector<std::pair<const wchar_t*, const char*>> versions = {
        {L"base.1", "1"}, {L"beta.2", "2"}, {L"gone.3", "3"}, {L"old.4", "4"}, {L"base.2", "2"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases.data());
        ScopedConfiguration configuration;
        configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, product.path())
            .set(REG_PLUGIN_PROPERTY_SHOW_UNCOMMITTED_PDX_PKG, c.storedUncommitted)
            .set(REG_PLUGIN_PROPERTY_SHOW_REMOVED_PDX_PKG, c.storedRemoved);
        const Properties flags = {{L"showUncommittedPackages", c.uncommitted},
                                  {L"showRemovedPackages", c.removed}};
        EXPECT_EQ(list(flags), "0 " + c.shown);
        for (const auto& v : versions) {
            const std::string key = PluginSDK::String(v.first).toUtf8();
            const bool shown = ("," + c.shown + ",").find("," + key + ",") != std::string::npos;
            Properties query = flags;
            query.push_back({L"code", v.first});
            EXPECT_EQ(scalar<TesselExists>(query), shown ? kTrue : kFalse) << key;
            query.push_back({L"field", L"version"});
            EXPECT_EQ(scalar<TesselInfo>(query), shown ? "0 " + std::string(v.second) : kNotThere)
                << key;
        }
        Properties byName = flags;
        byName.push_back({L"name", L"beta"});
        EXPECT_EQ(list(byName), c.shown.find("beta") != std::string::npos ? "0 beta.2" : "0 ");
        byName.back().value = L"base";
        EXPECT_EQ(list(byName), "0 base.1,base.2");
    }
}

TEST_F(TesselExpressionsTest, PropertiesAndCodes) {
    TesselProduct product(kListing);
    m_configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, product.path());
    const Property showU = {L"showUncommittedPackages", L"true"};
    const Property showR = {L"showRemovedPackages", L"true"};
    const std::vector<std::pair<std::string, std::string>> cases = {
        {scalar<TesselExists>({}), "-13000 "},
        {scalar<TesselExists>({{L"code", L"base"}}), kFalse},
        {scalar<TesselExists>({{L"code", L"base.1"}, {L"name", L"x"}}), kTrue},
        {scalar<TesselInfo>({{L"field", L"name"}}), "-13000 "},
        {scalar<TesselInfo>({{L"code", L"base.1"}}), "-13001 "},
        {scalar<TesselInfo>({{L"code", L"nothing.0"}, {L"field", L"name"}}), kNotThere},
        {scalar<TesselInfo>({{L"code", L"base.1"}, {L"field", L"installDir"}}), "-13200 "},
        {scalar<TesselInfo>({{L"code", L"base.2"}, {L"field", L"backupState"}}), "0 undoable"},
        {scalar<TesselInfo>({{L"code", L"beta.2"}, {L"field", L"isCommitted"}, showU}), "0 false"},
        {scalar<TesselInfo>({{L"code", L"base.1"}, {L"field", L"uninstData"}}), "0 u1"},
        {list({{L"type", L"product"}}), "0 base.1,base.2"},
        {list({{L"type", L"patch"}}), "0 "},
        {list({{L"type", L"PTF"}}), "-13006 "},
        {list({{L"filter", L"b*"}, showU, showR}), "0 base.1,beta.2,base.2"},
        {list({{L"filter", L"z*"}}), "0 "},
        {list({{L"name", L"nothing"}, showU, showR}), "0 "},
        {list({{L"name", L""}}), "0 "},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.first, c.second) << "case " << &c - cases.data();
}

TEST_F(TesselExpressionsTest, WithoutProvider) {
    RegistryDataProviderFactory::setDataProvider(RegistryDataProviderFactory::TESSEL_PROVIDER,
                                                 nullptr);
    const std::string invalid = std::to_string(REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER) + " ";
    RegistryDataProviderFactory::setDataProvider(RegistryDataProviderFactory::RPM_PROVIDER,
                                                 nullptr);
    EXPECT_EQ(list({{L"filter", L"*"}}), "0 ");
    // Every other List reports the missing provider.
    PluginSDK::StringVector out;
    EXPECT_EQ(RegPlugin::RpmProductList().getVectorResult(out),
              REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
    EXPECT_EQ(scalar<TesselExists>({{L"code", L"base.1"}}), invalid);
    EXPECT_EQ(scalar<TesselInfo>({{L"code", L"base.1"}, {L"field", L"name"}}), invalid);
    // Validation comes before the provider.
    EXPECT_EQ(scalar<TesselExists>({}), "-13000 ");
    EXPECT_EQ(scalar<TesselInfo>({{L"code", L"x"}}), "-13001 ");
}

TEST_F(TesselExpressionsTest, FactoryMakesTheCatalogOnce) {
    TesselProduct product(tesselRecord("a", "1", "u", "IC---"));
    m_configuration.set(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, product.path());
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
