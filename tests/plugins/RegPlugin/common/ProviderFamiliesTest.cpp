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

// Only the family's own class has a provider: asking another class finds none.
template <class F>
class ProviderFamiliesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Factory::cleanup();
        for (int which = 0; which < 8; ++which) {
            Factory::setDataProvider(static_cast<Factory::DataProviderClass>(which), nullptr);
        }
        Factory::setDataProvider(F::kClass, new FakePreloadedProvider({
                                                {L"bash", RegistryPackage::PRODUCT},
                                                {L"fix", RegistryPackage::PATCH},
                                            }));
    }
    void TearDown() override { Factory::cleanup(); }
    // Sets "code" and "field" (null: absent) and evaluates.
    TErrorCode info(const wchar_t* code, const wchar_t* field, PluginSDK::String& result) {
        typename F::Info expression;
        expression.setProperty(L"code", code);
        expression.setProperty(L"field", field);
        result = L"old";
        return expression.getScalarResult(result);
    }
    TErrorCode exists(const wchar_t* code, PluginSDK::String& result) {
        typename F::Exists expression;
        expression.setProperty(L"code", code);
        result = L"old";
        return expression.getScalarResult(result);
    }
};
TYPED_TEST_SUITE(ProviderFamiliesTest, Families);

TYPED_TEST(ProviderFamiliesTest, MissingPropertiesAndMissingProvider) {
    Factory::cleanup();  // validation fails before the factory is asked
    PluginSDK::String result;
    EXPECT_EQ(this->exists(nullptr, result), REG_PLUGIN_ERROR_UNSPECIFIED_CODE);
    EXPECT_EQ(this->info(nullptr, L"name", result), REG_PLUGIN_ERROR_UNSPECIFIED_CODE);
    EXPECT_EQ(this->info(L"bash", nullptr, result), REG_PLUGIN_ERROR_UNSPECIFIED_FIELD);
    EXPECT_EQ(Factory::m_DataProviders, nullptr);
    Factory::setDataProvider(TypeParam::kClass, nullptr);
    PluginSDK::StringVector keys;
    EXPECT_EQ(this->exists(L"bash", result), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
    EXPECT_EQ(this->info(L"bash", L"name", result), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
    EXPECT_EQ(result, L"");
    EXPECT_EQ(typename TypeParam::List().getVectorResult(keys),
              REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
}

TYPED_TEST(ProviderFamiliesTest, ResultsAndErrors) {
    const struct {
        bool isInfo;
        const wchar_t *code, *field;
        TErrorCode expected;
        const wchar_t* result;
    } cases[] = {
        {false, L"bash", nullptr, 0, PLUGIN_RESULT_TRUE},
        {false, L"Bash", nullptr, 0, PLUGIN_RESULT_FALSE},
        {false, L"", nullptr, 0, PLUGIN_RESULT_FALSE},
        {true, L"fix", L"name", 0, L"fix"},
        {true, L"bash", L"Name", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L""},
        {true, L"zsh", L"name", REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST, L""},
    };
    for (const auto& c : cases) {
        const std::string label =
            PluginSDK::String(c.code).toUtf8() + "|" + PluginSDK::String(c.field).toUtf8();
        PluginSDK::String result;
        const TErrorCode rc =
            c.isInfo ? this->info(c.code, c.field, result) : this->exists(c.code, result);
        EXPECT_EQ(rc, c.expected) << label;
        EXPECT_EQ(result, c.result) << label;
    }
    PluginSDK::StringVector keys;
    typename TypeParam::List list;
    list.setProperty(L"type", L"patch");
    EXPECT_EQ(list.getVectorResult(keys), 0);
    EXPECT_EQ(keysOf(keys), Lines{"fix"});

    Factory::setDataProvider(TypeParam::kClass, new FakePreloadedProvider({}, -1));
    PluginSDK::String result;
    EXPECT_EQ(this->exists(L"bash", result), REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
    EXPECT_EQ(result, L"");
}

TEST(ProviderProductInfoTest, FilteredPassThroughReturnsOnlyNotFoundCodes) {
    FakePackage package(L"prod");
    const struct {
        TErrorCode getResult;
        bool leavesPackage;
        TErrorCode plain, filtered;
    } cases[] = {
        {0, true, 0, 0},
        {-13100, false, -13100, -13100},
        {-13303, false, -13303, -13303},
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
        for (PluginSDK::Expression* info :
             std::initializer_list<PluginSDK::Expression*>{&plain, &filtered}) {
            info->setProperty(L"code", L"prod");
            info->setProperty(L"field", L"name");
        }
        PluginSDK::String plainResult, filteredResult;
        EXPECT_EQ(plain.getScalarResult(plainResult), c.plain) << "getPackage " << c.getResult;
        EXPECT_EQ(filtered.getScalarResult(filteredResult), c.filtered)
            << "getPackage " << c.getResult;
        EXPECT_EQ(filteredResult, c.filtered == 0 ? L"prod" : L"") << "getPackage " << c.getResult;
    }
    Factory::cleanup();
}

}  // namespace
}  // namespace RegPluginTest
