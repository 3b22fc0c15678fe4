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

// kOwnNotFound: getPackage fails with a registry's own not-found code, no package;
// kOddCode: getPackage finds the package but returns a code that is no not-found one.
enum Setup { kNoTable, kNoProvider, kFake, kFailing, kOwnNotFound, kOddCode };

const TErrorCode kOdd = -13999;

// getPackage answers as the fake provider, then returns `code` instead, with the
// package found (or none) left as it is.
class FakeLookupProvider : public FakePreloadedProvider {
  public:
    FakeLookupProvider(Registry r, TErrorCode code, bool keepPackage)
        : FakePreloadedProvider(std::move(r)), code(code), keepPackage(keepPackage) {}
    TErrorCode getPackage(const PluginSDK::String& key, RegistryPackage** package) override {
        FakePreloadedProvider::getPackage(key, package);
        if (!keepPackage)
            *package = nullptr;
        return code;
    }
    TErrorCode code;
    bool keepPackage;
};

// Only the family's own class gets a provider: asking another class finds none.
void setUp(Setup setup, Factory::DataProviderClass own) {
    Factory::cleanup();
    if (setup == kNoTable)
        return;
    for (int which = 0; which < 8; ++which)
        Factory::setDataProvider(static_cast<Factory::DataProviderClass>(which), nullptr);
    if (setup != kNoProvider) {
        Registry registry = {{L"bash", RegistryPackage::PRODUCT}, {L"fix", RegistryPackage::PATCH}};
        RegPlugin::RegistryDataProvider* provider;
        if (setup == kOwnNotFound)
            provider = new FakeLookupProvider(registry,
                                              REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST, false);
        else if (setup == kOddCode)
            provider = new FakeLookupProvider(registry, kOdd, true);
        else
            provider = new FakePreloadedProvider(registry, setup == kFake ? 0 : -1);
        Factory::setDataProvider(own, provider);
    }
}

// kFiltered: the family's Info with the filtered pass-through, which passes on only
// the "does not exist" codes of getPackage.
enum Kind { kExists, kInfo, kFiltered };

TYPED_TEST(ProviderFamiliesTest, ResultsAndErrors) {
    const struct {
        Setup setup;
        Kind kind;
        const wchar_t *code, *field;
        TErrorCode expected;
        const wchar_t* result;
    } cases[] = {
        {kNoTable, kExists, nullptr, nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_CODE, L""},
        {kNoTable, kInfo, nullptr, L"name", REG_PLUGIN_ERROR_UNSPECIFIED_CODE, L""},
        {kNoTable, kInfo, L"bash", nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_FIELD, L""},
        {kNoProvider, kExists, L"bash", nullptr, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, L""},
        {kNoProvider, kInfo, L"bash", L"name", REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER, L""},
        {kFake, kExists, L"bash", nullptr, 0, PLUGIN_RESULT_TRUE},
        {kFake, kExists, L"Bash", nullptr, 0, PLUGIN_RESULT_FALSE},
        {kFake, kInfo, L"fix", L"name", 0, L"fix"},
        {kFake, kInfo, L"bash", L"Name", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L""},
        {kFake, kInfo, L"zsh", L"name", REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST, L""},
        {kFailing, kExists, L"bash", nullptr, REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST, L""},
        {kFailing, kInfo, L"bash", L"name", REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST, L""},
        {kFake, kFiltered, L"fix", L"name", 0, L"fix"},
        {kFake, kFiltered, L"zsh", L"name", REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST, L""},
        {kFailing, kFiltered, L"bash", L"name", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L""},
        // A registry's own not-found code is passed on by both; another code only by
        // the plain Info, while the filtered one goes on to the package it was given.
        {kOwnNotFound, kInfo, L"bash", L"name", REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST, L""},
        {kOwnNotFound, kFiltered, L"bash", L"name", REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST,
         L""},
        {kOddCode, kInfo, L"bash", L"name", kOdd, L""},
        {kOddCode, kFiltered, L"bash", L"name", 0, L"bash"},
    };
    for (const auto& c : cases) {
        const std::string label = std::to_string(c.setup) + "|" + std::to_string(c.kind) + "|" +
                                  PluginSDK::String(c.code).toUtf8() + "|" +
                                  PluginSDK::String(c.field).toUtf8();
        setUp(c.setup, TypeParam::kClass);
        typename TypeParam::Exists exists;
        typename TypeParam::Info info;
        RegPlugin::ProviderProductInfo<TypeParam::kClass, true> filtered;
        PluginSDK::ScalarOperand* const expressions[] = {&exists, &info, &filtered};
        PluginSDK::ScalarOperand& expression = *expressions[c.kind];
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

}  // namespace
}  // namespace RegPluginTest
