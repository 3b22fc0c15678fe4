#include <gtest/gtest.h>

#include "CommonFakes.h"
#include "PluginSDK/PluginResult.h"
#include "common/ProviderProductInfo.h"
#include "cross/dpkg/DpkgProductExists.h"
#include "cross/dpkg/DpkgProductInfo.h"
#include "cross/dpkg/DpkgProductList.h"
#include "cross/rpm/RpmProductExists.h"
#include "cross/rpm/RpmProductInfo.h"
#include "cross/rpm/RpmProductList.h"

namespace RegPluginTest {
namespace {

using Factory = RegPlugin::RegistryDataProviderFactory;

template <class E, class I, class L, Factory::DataProviderClass C>
struct Family {
    using Exists = E;
    using Info = I;
    using List = L;
    static constexpr Factory::DataProviderClass kClass = C;
};
using Families = ::testing::Types<Family<RegPlugin::RpmProductExists, RegPlugin::RpmProductInfo,
                                         RegPlugin::RpmProductList, Factory::RPM_PROVIDER>,
                                  Family<RegPlugin::DpkgProductExists, RegPlugin::DpkgProductInfo,
                                         RegPlugin::DpkgProductList, Factory::DPKG_PROVIDER>>;

template <class F>
class ProviderFamiliesTest : public ::testing::Test {
  protected:
    void TearDown() override { Factory::cleanup(); }
};
TYPED_TEST_SUITE(ProviderFamiliesTest, Families);

enum Setup { kNoTable, kNoProvider, kFake, kFailing };

// Only the family's own class gets a provider: asking another class finds none.
void setUp(Setup setup, Factory::DataProviderClass own) {
    Factory::cleanup();
    if (setup == kNoTable)
        return;
    for (int which = 0; which < 8; ++which)
        Factory::setDataProvider(static_cast<Factory::DataProviderClass>(which), nullptr);
    if (setup != kNoProvider) {
        Registry registry = {{L"bash", RegistryPackage::PRODUCT}, {L"fix", RegistryPackage::PATCH}};
        Factory::setDataProvider(own, new FakePreloadedProvider(registry, setup == kFake ? 0 : -1));
    }
}

TYPED_TEST(ProviderFamiliesTest, ResultsAndErrors) {
    const struct {
        Setup setup;
        bool isInfo;
        const wchar_t *code, *field;
        TErrorCode expected;
        const wchar_t* result;
    } cases[] = {
        {kNoTable, false, nullptr, nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_CODE, L""},
        {kNoTable, true, nullptr, L"name", REG_PLUGIN_ERROR_UNSPECIFIED_CODE, L""},
        {kNoTable, true, L"bash", nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_FIELD, L""},
        {kNoProvider, false, L"bash", nullptr, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, L""},
        {kNoProvider, true, L"bash", L"name", REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, L""},
        {kFake, false, L"bash", nullptr, 0, PLUGIN_RESULT_TRUE},
        {kFake, false, L"Bash", nullptr, 0, PLUGIN_RESULT_FALSE},
        {kFake, true, L"fix", L"name", 0, L"fix"},
        {kFake, true, L"bash", L"Name", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L""},
        {kFake, true, L"zsh", L"name", REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST, L""},
        {kFailing, false, L"bash", nullptr, REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST, L""},
    };
    for (const auto& c : cases) {
        const std::string label = std::to_string(c.setup) + "|" + (c.isInfo ? "info|" : "exists|") +
                                  PluginSDK::String(c.code).toUtf8() + "|" +
                                  PluginSDK::String(c.field).toUtf8();
        setUp(c.setup, TypeParam::kClass);
        typename TypeParam::Info info;
        typename TypeParam::Exists exists;
        PluginSDK::ScalarOperand& expression =
            c.isInfo ? static_cast<PluginSDK::ScalarOperand&>(info) : exists;
        expression.setProperty(L"code", c.code);
        expression.setProperty(L"field", c.field);
        PluginSDK::String result(L"old");
        EXPECT_EQ(expression.getScalarResult(result), c.expected) << label;
        EXPECT_EQ(result, c.result) << label;
        if (c.setup == kNoTable) {
            EXPECT_EQ(Factory::m_DataProviders, nullptr) << label << ": factory asked";
        }
    }
    for (Setup setup : {kFake, kNoProvider}) {
        setUp(setup, TypeParam::kClass);
        typename TypeParam::List list;
        list.setProperty(L"type", L"patch");
        PluginSDK::StringVector keys;
        EXPECT_EQ(list.getVectorResult(keys),
                  setup == kFake ? 0 : REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
        EXPECT_EQ(keysOf(keys), setup == kFake ? Lines{"fix"} : Lines{});
    }
}

// getPackage answers `getResult` and `package` (not owned) for every key.
class ScriptedProvider : public RegPlugin::RegistryDataProvider {
  public:
    TErrorCode enumPackages(RegistryPackage::Type, PluginSDK::StringVector&) override { return 0; }
    TErrorCode getPackage(const PluginSDK::String&, RegistryPackage** out) override {
        *out = package;
        return getResult;
    }
    TErrorCode packageExists(const PluginSDK::String&, bool&) override { return 0; }
    TErrorCode getResult = 0;
    RegistryPackage* package = nullptr;
};

TEST(ProviderProductInfoTest, FilteredPassThroughReturnsOnlyNotFoundCodes) {
    FakePackage package(L"prod");
    const struct {
        TErrorCode getResult;
        bool leavesPackage;
        TErrorCode plain, filtered;
    } cases[] = {
        {0, true, 0, 0},
        {-13100, false, -13100, -13100},
        {-13111, false, -13111, REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND},  // no package left
        {-13305, true, -13305, 0},
    };
    for (const auto& c : cases) {
        auto* provider = new ScriptedProvider();
        provider->getResult = c.getResult;
        provider->package = c.leavesPackage ? &package : nullptr;
        Factory::setDataProvider(Factory::ISMP_PROVIDER, provider);
        RegPlugin::ProviderProductInfo<Factory::ISMP_PROVIDER> plain;
        RegPlugin::ProviderProductInfo<Factory::ISMP_PROVIDER, true> filtered;
        PluginSDK::String plainResult, filteredResult;
        for (PluginSDK::Expression* info : {static_cast<PluginSDK::Expression*>(&plain),
                                            static_cast<PluginSDK::Expression*>(&filtered)}) {
            info->setProperty(L"code", L"prod");
            info->setProperty(L"field", L"name");
        }
        EXPECT_EQ(plain.getScalarResult(plainResult), c.plain) << "getPackage " << c.getResult;
        EXPECT_EQ(filtered.getScalarResult(filteredResult), c.filtered)
            << "getPackage " << c.getResult;
        EXPECT_EQ(filteredResult, c.filtered == 0 ? L"prod" : L"") << "getPackage " << c.getResult;
    }
    Factory::cleanup();
}

}  // namespace
}  // namespace RegPluginTest
