// The plug-in object driven through the host interface: configuration properties,
// announcement, expression dispatch, the Void family and the unknown-software iterator.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "LoadedPlugin.h"
#include "PluginSDK/Configuration.h"
#include "PluginSDK/PluginResult.h"
#include "PluginSDK/ScalarExpression.h"
#include "PluginSDK/VectorExpression.h"
#include "TraceCapture.h"

namespace {

const wchar_t* const kStore = L"RegPlugin";

class RegPluginTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(library_.loaded()) << library_.error();
        PluginSDK::Configuration::cleanup(kStore);
        plugin_ = library_.create();
        ASSERT_NE(plugin_, nullptr);
    }

    // The stored value of `name`, or "<none>" when the store does not hold it.
    static std::wstring stored(const wchar_t* name) {
        PluginSDK::Configuration* store = nullptr;
        PluginSDK::Configuration::get(kStore, store);
        PluginSDK::String value;
        if (store == nullptr || store->getProperty(name, value) != 0) {
            return L"<none>";
        }
        return value.c_str();
    }

    LoadedPlugin library_;  // first: outlives every object made from it
    LoadedPlugin::PluginPtr plugin_{nullptr, nullptr};
};

TEST_F(RegPluginTest, InitializeAnnouncesTheNamesInOrder) {
    const std::vector<std::wstring> expected = {
        L"PackageInfoEqual",      L"PackageInfoMatch",    L"IsmpProductList",
        L"IsmpProductExists",     L"IsmpProductInfo",     L"VoidProductList",
        L"VoidProductExists",     L"VoidProductInfo",     L"RpmProductList",
        L"RpmProductExists",      L"RpmProductInfo",      L"DpkgProductList",
        L"DpkgProductExists",     L"DpkgProductInfo",     L"CorvuList",
        L"CorvuExists",           L"CorvuInfo",           L"TesselCatalogList",
        L"TesselCatalogExists",   L"TesselCatalogInfo",   L"InstallAnywhereList",
        L"InstallAnywhereExists", L"InstallAnywhereInfo", L"OrloProductList",
        L"OrloProductInfo"};
    EXPECT_EQ(plugin_->initializePlugin(), 0);
    EXPECT_EQ(plugin_->getExpressionNames(), expected);
}

TEST_F(RegPluginTest, SetPropertyStoresAcceptedValuesAndWarnsAboutRejectedOnes) {
    struct Case {
        const wchar_t *name, *value;
        bool accepted;
    };
    std::vector<Case> cases = {
        {L"updateCabinetPath", L"/opt/cab files", true},
        {L"pdxDirectory", L"", true},
        {L"pdxDirectory", L"\u00e9t\u00e9/\u4e2d", true},
        {L"PdxDirectory", L"/opt/pdx", false},
        {L"showremovedpackages", L"TRUE", false},
        {L"colour", L"red", false},
        {L"", L"TRUE", false},
    };
    for (const wchar_t* name :
         {L"showSupersededWindowsUpdates", L"showUncommittedPackages", L"showRemovedPackages",
          L"listUnmatchedSoftware", L"failOnBrokenCab"}) {
        cases.insert(cases.end(), {{name, L"TRUE", true}, {name, L"FALSE", true}});
        for (const wchar_t* wrong : {L"true", L"yes", L"", L"TRUE "}) {
            cases.push_back({name, wrong, false});
        }
    }
    for (const Case& c : cases) {
        PluginSDK::Configuration::cleanup(kStore);
        TraceCapture capture;
        plugin_->setProperty(c.name, c.value);
        std::wstring what = L"name=[" + std::wstring(c.name) + L"] value=[" + c.value + L"]";
        EXPECT_EQ(stored(c.name), c.accepted ? c.value : L"<none>") << what;
        EXPECT_EQ(capture.sink().messages(2).size(), c.accepted ? 0u : 1u) << what;
    }
}

TEST_F(RegPluginTest, RejectedPropertyWritesTheExactWarningLine) {
    TraceCapture capture;
    plugin_->setProperty(L"colour", L"red");
    plugin_->setProperty(L"listUnmatchedSoftware", L"\u00e9");
    const std::string prefix = "Unexpected plugin property, skipping. plugin=[RegPlugin] ";
    EXPECT_EQ(capture.sink().messages(2),
              (std::vector<std::string>{prefix + "name=[colour] value=[red]",
                                        prefix + "name=[listUnmatchedSoftware] value=[\xc3\xa9]"}));
    for (const MemoryTraceSink::Line& line : capture.sink().lines()) {
        if (line.level == 2) {
            EXPECT_EQ(std::to_string(line.component) + " " + line.file + " " + line.signature,
                      "5 src/plugins/RegPlugin/RegPlugin.cpp "
                      "RegPlugin::setProperty(const wchar_t *, const wchar_t *)");
        }
    }
}

TEST_F(RegPluginTest, RejectedOrNullSettingsKeepTheEarlierValueAndCleanupDiscardsIt) {
    TraceCapture capture;
    plugin_->setProperty(L"showRemovedPackages", L"TRUE");
    plugin_->setProperty(L"showRemovedPackages", L"maybe");
    plugin_->setProperty(L"pdxDirectory", L"/first");
    plugin_->setProperty(L"pdxdirectory", L"/second");
    plugin_->setProperty(L"pdxDirectory", nullptr);
    plugin_->setProperty(nullptr, L"TRUE");
    EXPECT_EQ(stored(L"showRemovedPackages"), L"TRUE");
    EXPECT_EQ(stored(L"pdxDirectory"), L"/first");
    EXPECT_EQ(capture.sink().messages(2).size(), 4u);
    EXPECT_EQ(plugin_->cleanupPlugin(), 0);
    EXPECT_EQ(stored(L"pdxDirectory"), L"<none>");
}

TEST_F(RegPluginTest, KnownNamesCreateNewExpressionsOfTheirKind) {
    const std::pair<const wchar_t*, bool> known[] = {
        // name, scalar
        {L"VoidProductList", false}, {L"VoidProductExists", true}, {L"VoidProductInfo", true},
        {L"RpmProductList", false},  {L"RpmProductExists", true},  {L"RpmProductInfo", true},
        {L"DpkgProductList", false}, {L"DpkgProductExists", true}, {L"DpkgProductInfo", true},
    };
    for (const auto& [name, scalar] : known) {
        TErrorCode code = 1;
        auto first = LoadedPlugin::createExpression(*plugin_, name, &code);
        auto second = LoadedPlugin::createExpression(*plugin_, name);
        ASSERT_TRUE(code == 0 && first && second) << name << " code " << code;
        EXPECT_NE(first.get(), second.get()) << name;
        auto* s = dynamic_cast<PluginSDK::ScalarExpression*>(first.get());
        auto* v = dynamic_cast<PluginSDK::VectorExpression*>(first.get());
        ASSERT_TRUE(scalar ? s != nullptr : v != nullptr) << name;
        EXPECT_EQ(scalar ? s->getType() : v->getType(),
                  scalar ? PluginSDK::EXPRESSION_TYPE_SCALAR : PluginSDK::EXPRESSION_TYPE_VECTOR)
            << name;
        EXPECT_EQ(scalar ? s->isReady() : v->isReady(), 1) << name;
    }
}

TEST_F(RegPluginTest, UnknownNamesAndNullArgumentsGiveNoExpression) {
    int marker = 0;
    PluginSDK::Expression* const sentinel = reinterpret_cast<PluginSDK::Expression*>(&marker);
    for (const wchar_t* name : {L"OrloProductExists", L"voidproductexists", L"VOIDPRODUCTLIST",
                                L"VoidProductInfo ", L"VoidProduct", L"", L"rpmProductList"}) {
        PluginSDK::Expression* out = sentinel;
        EXPECT_EQ(plugin_->createExpression(name, &out), -10008) << "name=[" << name << "]";
        EXPECT_EQ(out, nullptr) << "name=[" << name << "]";
    }
    PluginSDK::Expression* out = sentinel;
    EXPECT_EQ(plugin_->createExpression(nullptr, &out), -101);
    EXPECT_EQ(out, sentinel);
    EXPECT_EQ(plugin_->createExpression(L"VoidProductExists", nullptr), -101);
    EXPECT_EQ(plugin_->destroyExpression(nullptr), 0);
}

TEST_F(RegPluginTest, VoidExpressionsGiveConstantAnswers) {
    auto exists = LoadedPlugin::createExpression(*plugin_, L"VoidProductExists");
    auto info = LoadedPlugin::createExpression(*plugin_, L"VoidProductInfo");
    auto list = LoadedPlugin::createExpression(*plugin_, L"VoidProductList");
    ASSERT_TRUE(exists && info && list);
    exists->setProperty(L"code", L"bash-5.2-1.x86_64");
    info->setProperty(L"code", L"bash");
    info->setProperty(L"field", L"installDir");
    PluginSDK::String result = L"stale", empty = L"stale";
    EXPECT_EQ(dynamic_cast<PluginSDK::ScalarExpression&>(*exists).getScalarResult(result), 0);
    EXPECT_EQ(std::wstring(result.c_str()), PLUGIN_RESULT_FALSE);
    EXPECT_EQ(dynamic_cast<PluginSDK::ScalarExpression&>(*info).getScalarResult(empty), 0);
    EXPECT_EQ(empty.length(), 0);
    PluginSDK::StringVector keys;
    keys.addString(L"stale");
    EXPECT_EQ(dynamic_cast<PluginSDK::VectorExpression&>(*list).getVectorResult(keys), 0);
    EXPECT_TRUE(keys.empty());
}

TEST_F(RegPluginTest, EachUnknownSoftwareCallGivesANewIterator) {
    plugin_->setProperty(L"listUnmatchedSoftware", L"FALSE");
    std::unique_ptr<PluginSDK::UnknownSoftwareRepository> first(plugin_->getUnknownSoftware());
    std::unique_ptr<PluginSDK::UnknownSoftwareRepository> second(plugin_->getUnknownSoftware());
    ASSERT_TRUE(first != nullptr && second != nullptr);
    EXPECT_NE(first.get(), second.get());
    // Listing switched off: an empty repository that leaves the caller's strings alone.
    EXPECT_EQ(first->init(), 0);
    EXPECT_EQ(first->getSize(), 0);
    PluginSDK::String name = L"kept";
    EXPECT_EQ(first->getName(&name), 0);
    EXPECT_EQ(std::wstring(name.c_str()), L"kept");
    EXPECT_EQ(first->getNext(), -10009);
    EXPECT_EQ(first->getNext(), -10009);
}

}  // namespace
