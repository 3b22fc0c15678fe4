#include "common/RegistryDataProviderFactory.h"

#include <gtest/gtest.h>

#include "CommonFakes.h"
#include "cross/any/InstallAnywhereDataProvider.h"
#include "cross/corvu/CorvuDataProvider.h"
#include "cross/dpkg/DpkgDataProvider.h"
#include "cross/ismp/IsmpDataProvider.h"
#include "cross/orlo/OrloDataProvider.h"
#include "cross/rpm/LegacyRpmDataProvider.h"

namespace RegPluginTest {
namespace {

using Factory = RegPlugin::RegistryDataProviderFactory;
using Rpm = RegPlugin::LegacyRpmDataProvider;

std::string text(const wchar_t* name) {
    return name ? PluginSDK::String(name).toUtf8() : "null";
}

class RegistryDataProviderFactoryTest : public ::testing::Test {
  protected:
    void SetUp() override { Factory::cleanup(); }
    void TearDown() override { Factory::cleanup(); }
};

template <class T>
bool makes(Factory::DataProviderClass which) {
    return dynamic_cast<T*>(Factory::getDataProvider(which)) != nullptr;
}

TEST_F(RegistryDataProviderFactoryTest, CreatesOneProviderPerClass) {
    EXPECT_TRUE(makes<Rpm>(Factory::OS_PROVIDER));
    EXPECT_TRUE(makes<Rpm>(Factory::RPM_PROVIDER));
    auto* os = Factory::getDataProvider(Factory::OS_PROVIDER);
    EXPECT_EQ(Factory::getDataProvider(Factory::OS_PROVIDER), os);
    EXPECT_NE(Factory::getDataProvider(Factory::RPM_PROVIDER), os);
    EXPECT_TRUE(makes<RegPlugin::DpkgDataProvider>(Factory::DPKG_PROVIDER));
    EXPECT_TRUE(makes<RegPlugin::IsmpDataProvider>(Factory::ISMP_PROVIDER));
    EXPECT_TRUE(makes<RegPlugin::InstallAnywhereDataProvider>(Factory::ANYWHERE_PROVIDER));
    EXPECT_TRUE(makes<RegPlugin::CorvuDataProvider>(Factory::CORVU_PROVIDER));
    EXPECT_TRUE(makes<RegPlugin::OrloDataProvider>(Factory::ORLO_PROVIDER));
}

TEST_F(RegistryDataProviderFactoryTest, KeywordsAndNames) {
    const struct {
        const wchar_t* keyword;
        Factory::DataProviderClass which;
    } keywords[] = {{L"ismp", Factory::ISMP_PROVIDER},     {L"corvu", Factory::CORVU_PROVIDER},
                    {L"tessel", Factory::TESSEL_PROVIDER}, {L"any", Factory::ANYWHERE_PROVIDER},
                    {L"os", Factory::OS_PROVIDER},         {L"orlo", Factory::ORLO_PROVIDER},
                    {L"rpm", Factory::RPM_PROVIDER},       {L"dpkg", Factory::INVALID_PROVIDER},
                    {L"ANY", Factory::INVALID_PROVIDER},   {nullptr, Factory::INVALID_PROVIDER}};
    for (const auto& k : keywords)
        EXPECT_EQ(Factory::getDataProviderClass(k.keyword), k.which) << text(k.keyword);
    const wchar_t* const names[] = {L"os",  L"ismp", L"corvu", L"tessel", L"rpm",
                                    L"any", nullptr, L"orlo",  nullptr};
    for (int round = 0; round < 2; ++round) {  // no names before the table exists
        for (int which = -1; which <= 8; ++which) {
            const wchar_t* name =
                Factory::getDataProviderName(static_cast<Factory::DataProviderClass>(which));
            EXPECT_EQ(text(name), text(round && which >= 0 ? names[which] : nullptr))
                << "class " << which << ", round " << round;
        }
        Factory::getDataProvider(Factory::ISMP_PROVIDER);
    }
}

TEST_F(RegistryDataProviderFactoryTest, CleanupDestroysAllAndStartsAfresh) {
    int destroyed = 0;
    auto* fake = new FakePreloadedProvider();
    fake->add(new FakePackage(L"k", RegistryPackage::PRODUCT, &destroyed));
    Factory::setDataProvider(Factory::RPM_PROVIDER, fake);
    Factory::setDataProvider(Factory::RPM_PROVIDER, fake);  // same object: kept
    EXPECT_EQ(Factory::getDataProvider(Factory::RPM_PROVIDER), fake);
    Factory::cleanup();
    Factory::cleanup();
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(Factory::m_DataProviders, nullptr);
    EXPECT_TRUE(makes<Rpm>(Factory::RPM_PROVIDER));
}

}  // namespace
}  // namespace RegPluginTest
