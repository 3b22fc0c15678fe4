// The plug-in object driven through the host interface: configuration properties,
// announcement, expression dispatch, the Void family and the unknown-software
// iterator.
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

const wchar_t* const kStoreName = L"RegPlugin";
const char* const kWarning = "Unexpected plugin property, skipping. ";

class RegPluginTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(library_.loaded()) << library_.error();
        PluginSDK::Configuration::cleanup(kStoreName);
        plugin_ = library_.create();
        ASSERT_NE(plugin_, nullptr);
    }
    void TearDown() override { PluginSDK::Configuration::cleanup(kStoreName); }

    // The stored value of `name`, or null when the store does not hold it.
    static std::unique_ptr<std::wstring> stored(const wchar_t* name) {
        PluginSDK::Configuration* store = nullptr;
        PluginSDK::Configuration::get(kStoreName, store);
        PluginSDK::String value;
        if (store == nullptr || store->getProperty(name, value) != 0) {
            return nullptr;
        }
        return std::unique_ptr<std::wstring>(new std::wstring(value.c_str()));
    }

    LoadedPlugin library_;  // first: outlives every object made from it
    LoadedPlugin::PluginPtr plugin_{nullptr, {}};
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
        L"OrloProductInfo",
    };
    EXPECT_EQ(plugin_->initializePlugin(), 0);
    EXPECT_EQ(plugin_->getExpressionNames(), expected);
}

struct PropertyCase {
    const wchar_t* name;
    const wchar_t* value;
    bool accepted;
};

std::vector<PropertyCase> propertyCases() {
    std::vector<PropertyCase> cases = {
        {L"updateCabinetPath", L"/opt/cab files", true},
        {L"pdxDirectory", L"/opt/pdx", true},
        {L"pdxDirectory", L"", true},
        {L"pdxDirectory", L"\u00e9t\u00e9/\u4e2d", true},
        {L"PdxDirectory", L"/opt/pdx", false},
        {L"UPDATECABINETPATH", L"/x", false},
        {L"showremovedpackages", L"TRUE", false},
        {L"colour", L"red", false},
        {L"", L"TRUE", false},
    };
    for (const wchar_t* name :
         {L"showSupersededWindowsUpdates", L"showUncommittedPackages", L"showRemovedPackages",
          L"listUnmatchedSoftware", L"failOnBrokenCab"}) {
        cases.push_back({name, L"TRUE", true});
        cases.push_back({name, L"FALSE", true});
        for (const wchar_t* wrong : {L"true", L"false", L"yes", L"", L" TRUE", L"TRUE "}) {
            cases.push_back({name, wrong, false});
        }
    }
    return cases;
}

TEST_F(RegPluginTest, SetPropertyStoresAcceptedAndWarnsAboutRejected) {
    for (const PropertyCase& c : propertyCases()) {
        PluginSDK::Configuration::cleanup(kStoreName);
        TraceCapture capture;
        plugin_->setProperty(c.name, c.value);
        std::unique_ptr<std::wstring> value = stored(c.name);
        size_t warnings = capture.sink().messages(2).size();
        if (c.accepted) {
            ASSERT_NE(value, nullptr) << "name=[" << c.name << "] value=[" << c.value << "]";
            EXPECT_EQ(*value, c.value) << "name=[" << c.name << "]";
            EXPECT_EQ(warnings, 0u) << "name=[" << c.name << "] value=[" << c.value << "]";
        } else {
            EXPECT_EQ(value, nullptr) << "name=[" << c.name << "] value=[" << c.value << "]";
            EXPECT_EQ(warnings, 1u) << "name=[" << c.name << "] value=[" << c.value << "]";
        }
    }
}

TEST_F(RegPluginTest, RejectedPropertyWritesTheExactWarningLine) {
    TraceCapture capture;
    plugin_->setProperty(L"colour", L"red");
    plugin_->setProperty(L"listUnmatchedSoftware", L"\u00e9");
    std::vector<MemoryTraceSink::Line> warnings;
    for (const MemoryTraceSink::Line& line : capture.sink().lines()) {
        if (line.level == 2) {
            warnings.push_back(line);
        }
    }
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[0].message,
              std::string(kWarning) + "plugin=[RegPlugin] name=[colour] value=[red]");
    EXPECT_EQ(warnings[1].message, std::string(kWarning) +
                                       "plugin=[RegPlugin] name=[listUnmatchedSoftware] "
                                       "value=[\xc3\xa9]");
    for (const MemoryTraceSink::Line& line : warnings) {
        EXPECT_EQ(line.component, 5);
        EXPECT_EQ(line.signature, "RegPlugin::setProperty(const wchar_t *, const wchar_t *)");
        EXPECT_EQ(line.file, "src/plugins/RegPlugin/RegPlugin.cpp");
    }
}

TEST_F(RegPluginTest, RejectedValueLeavesTheEarlierValue) {
    plugin_->setProperty(L"showRemovedPackages", L"TRUE");
    plugin_->setProperty(L"showRemovedPackages", L"maybe");
    plugin_->setProperty(L"pdxDirectory", L"/first");
    plugin_->setProperty(L"pdxdirectory", L"/second");
    ASSERT_NE(stored(L"showRemovedPackages"), nullptr);
    EXPECT_EQ(*stored(L"showRemovedPackages"), L"TRUE");
    ASSERT_NE(stored(L"pdxDirectory"), nullptr);
    EXPECT_EQ(*stored(L"pdxDirectory"), L"/first");
}

TEST_F(RegPluginTest, NullPropertyNameOrValueIsRejected) {
    TraceCapture capture;
    plugin_->setProperty(nullptr, L"TRUE");
    plugin_->setProperty(L"pdxDirectory", nullptr);
    EXPECT_EQ(stored(L"pdxDirectory"), nullptr);
    EXPECT_EQ(capture.sink().messages(2).size(), 2u);
}

TEST_F(RegPluginTest, CleanupDiscardsTheStore) {
    plugin_->setProperty(L"pdxDirectory", L"/opt/pdx");
    EXPECT_EQ(plugin_->cleanupPlugin(), 0);
    EXPECT_EQ(stored(L"pdxDirectory"), nullptr);
}

struct CreatableCase {
    const wchar_t* name;
    int type;
};

// Every name the dispatch knows so far.
const CreatableCase kCreatableExpressions[] = {
    {L"VoidProductList", PluginSDK::EXPRESSION_TYPE_VECTOR},
    {L"VoidProductExists", PluginSDK::EXPRESSION_TYPE_SCALAR},
    {L"VoidProductInfo", PluginSDK::EXPRESSION_TYPE_SCALAR},
    {L"RpmProductList", PluginSDK::EXPRESSION_TYPE_VECTOR},
    {L"RpmProductExists", PluginSDK::EXPRESSION_TYPE_SCALAR},
    {L"RpmProductInfo", PluginSDK::EXPRESSION_TYPE_SCALAR},
    {L"DpkgProductList", PluginSDK::EXPRESSION_TYPE_VECTOR},
    {L"DpkgProductExists", PluginSDK::EXPRESSION_TYPE_SCALAR},
    {L"DpkgProductInfo", PluginSDK::EXPRESSION_TYPE_SCALAR},
};

TEST_F(RegPluginTest, KnownNamesCreateNewExpressionsOfTheirKind) {
    for (const CreatableCase& c : kCreatableExpressions) {
        TErrorCode code = 1;
        LoadedPlugin::ExpressionPtr first = LoadedPlugin::createExpression(*plugin_, c.name, &code);
        EXPECT_EQ(code, 0) << c.name;
        ASSERT_NE(first, nullptr) << c.name;
        LoadedPlugin::ExpressionPtr second = LoadedPlugin::createExpression(*plugin_, c.name);
        ASSERT_NE(second, nullptr) << c.name;
        EXPECT_NE(first.get(), second.get()) << c.name;
        if (c.type == PluginSDK::EXPRESSION_TYPE_SCALAR) {
            auto* scalar = dynamic_cast<PluginSDK::ScalarExpression*>(first.get());
            ASSERT_NE(scalar, nullptr) << c.name;
            EXPECT_EQ(scalar->getType(), c.type) << c.name;
            EXPECT_EQ(scalar->isReady(), 1) << c.name;
        } else {
            auto* vector = dynamic_cast<PluginSDK::VectorExpression*>(first.get());
            ASSERT_NE(vector, nullptr) << c.name;
            EXPECT_EQ(vector->getType(), c.type) << c.name;
            EXPECT_EQ(vector->isReady(), 1) << c.name;
        }
    }
}

TEST_F(RegPluginTest, UnknownNamesGiveNoExpression) {
    for (const wchar_t* name :
         {L"OrloProductExists", L"voidproductexists", L"VOIDPRODUCTLIST", L"VoidProductInfo ",
          L" VoidProductInfo", L"VoidProduct", L"VoidProductListX", L"", L"colour",
          L"rpmProductList", L"DpkgProductinfo"}) {
        int marker = 0;
        PluginSDK::Expression* out = reinterpret_cast<PluginSDK::Expression*>(&marker);
        EXPECT_EQ(plugin_->createExpression(name, &out), -10008) << "name=[" << name << "]";
        EXPECT_EQ(out, nullptr) << "name=[" << name << "]";
    }
}

TEST_F(RegPluginTest, NullArgumentsLeaveTheOutputUntouched) {
    int marker = 0;
    PluginSDK::Expression* const sentinel = reinterpret_cast<PluginSDK::Expression*>(&marker);
    PluginSDK::Expression* out = sentinel;
    EXPECT_EQ(plugin_->createExpression(nullptr, &out), -101);
    EXPECT_EQ(out, sentinel);
    EXPECT_EQ(plugin_->createExpression(L"VoidProductExists", nullptr), -101);
    EXPECT_EQ(plugin_->createExpression(nullptr, nullptr), -101);
    EXPECT_EQ(plugin_->destroyExpression(nullptr), 0);
}

TEST_F(RegPluginTest, VoidExpressionsGiveConstantAnswers) {
    LoadedPlugin::ExpressionPtr exists =
        LoadedPlugin::createExpression(*plugin_, L"VoidProductExists");
    LoadedPlugin::ExpressionPtr info = LoadedPlugin::createExpression(*plugin_, L"VoidProductInfo");
    LoadedPlugin::ExpressionPtr list = LoadedPlugin::createExpression(*plugin_, L"VoidProductList");
    ASSERT_TRUE(exists && info && list);

    PluginSDK::String result = L"stale";
    auto* existsScalar = dynamic_cast<PluginSDK::ScalarExpression*>(exists.get());
    EXPECT_EQ(existsScalar->getScalarResult(result), 0);
    EXPECT_EQ(std::wstring(result.c_str()), PLUGIN_RESULT_FALSE) << "without \"code\"";
    exists->setProperty(L"code", L"bash-5.2-1.x86_64");
    result = L"stale";
    EXPECT_EQ(existsScalar->getScalarResult(result), 0);
    EXPECT_EQ(std::wstring(result.c_str()), PLUGIN_RESULT_FALSE) << "with \"code\"";

    info->setProperty(L"code", L"bash");
    info->setProperty(L"field", L"installDir");
    result = L"stale";
    EXPECT_EQ(dynamic_cast<PluginSDK::ScalarExpression*>(info.get())->getScalarResult(result), 0);
    EXPECT_EQ(result.length(), 0);

    PluginSDK::StringVector keys;
    keys.addString(L"stale");
    EXPECT_EQ(dynamic_cast<PluginSDK::VectorExpression*>(list.get())->getVectorResult(keys), 0);
    EXPECT_TRUE(keys.empty());
}

TEST_F(RegPluginTest, EachUnknownSoftwareCallGivesANewIterator) {
    plugin_->setProperty(L"listUnmatchedSoftware", L"FALSE");
    std::unique_ptr<PluginSDK::UnknownSoftwareRepository> first(plugin_->getUnknownSoftware());
    std::unique_ptr<PluginSDK::UnknownSoftwareRepository> second(plugin_->getUnknownSoftware());
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first.get(), second.get());

    // Listing switched off: an empty repository.
    EXPECT_EQ(first->init(), 0);
    EXPECT_EQ(first->getSize(), 0);
    PluginSDK::String name = L"kept";
    EXPECT_EQ(first->getName(&name), 0);
    EXPECT_EQ(std::wstring(name.c_str()), L"kept");
    EXPECT_EQ(first->getNext(), -10009);
    EXPECT_EQ(first->getNext(), -10009);
}

}  // namespace
