// The built plug-in loaded with dlopen, as a host loads it, and driven through the
// host interface: exported constants, configuration properties, announcement and
// expression creation.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "PluginSDK/Configuration.h"
#include "PluginSDK/Plugin.h"
#include "PluginSDK/ScalarExpression.h"
#include "PluginSDK/VectorExpression.h"
#include "base/Utf8.h"
#include "trace/Tracer.h"

namespace {

const wchar_t* const kStore = L"RegPlugin";

class RegPluginTest : public ::testing::Test {
  protected:
    typedef std::unique_ptr<PluginSDK::Plugin, PluginSDK::DestroyPluginFunction> PluginPtr;

    void SetUp() override {
        ASSERT_NE(library_, nullptr) << dlerror();
        auto create = reinterpret_cast<PluginSDK::CreatePluginFunction>(symbol("createPlugin"));
        auto destroy = reinterpret_cast<PluginSDK::DestroyPluginFunction>(symbol("destroyPlugin"));
        ASSERT_TRUE(create != nullptr && destroy != nullptr);
        PluginSDK::Configuration::cleanup(kStore);
        plugin_ = PluginPtr(create(), destroy);
        ASSERT_NE(plugin_, nullptr);
        Tracer::setSink(&trace_);
        Tracer::setLevel(Tracer::MAX_LEVEL);
    }
    void TearDown() override {
        Tracer::setLevel(previousTraceLevel_);
        Tracer::setSink(nullptr);
        plugin_.reset();  // before the library that made it goes
        if (library_ != nullptr) {
            dlclose(library_);
        }
    }
    void* symbol(const char* name) const { return dlsym(library_, name); }

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

    void* library_ = dlopen(REGSCAN_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    PluginPtr plugin_{nullptr, nullptr};
    int previousTraceLevel_ = Tracer::getLevel();
    MemoryTraceSink trace_;  // every line the plug-in writes
};

// Constants whose values no other test pins down through their use.
TEST_F(RegPluginTest, ExportedConstantsReadBackAsTheirValues) {
    const std::pair<const char*, TErrorCode> codes[] = {
        {"REG_PLUGIN_ERROR_PLUGIN_PROPERTY_NOT_FOUND", -13112},
        {"REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND", -13200},
        {"REG_PLUGIN_ERROR_RESERVED_13500", -13500},
        {"REG_PLUGIN_ERROR_RESERVED_13508", -13508},
        {"REG_PLUGIN_MSI_ERROR_BAD_CONFIGURATION", -13852},
        {"REG_PLUGIN_ERROR_UNABLE_TO_INVOKE_PDX_CLI", -13871},
    };
    for (const auto& [name, expected] : codes) {
        const TErrorCode* value = static_cast<const TErrorCode*>(symbol(name));
        ASSERT_NE(value, nullptr) << name;
        EXPECT_EQ(*value, expected) << name;
    }
    const std::pair<const char*, const wchar_t*> texts[] = {
        {"REG_PLUGIN_EXPRESSION_ORLOPRODUCTEXISTS", L"OrloProductExists"},
        {"REG_PLUGIN_PROPERTY_FIELD_PACTHED_PACKAGES", L"patchedPackages"},
        {"REG_PLUGIN_PROPERTY_FIELD_UNPACTHED_PACKAGES", L"unpatchedPackages"},
        {"REG_PLUGIN_PROPERTY_FIELD_PATCHID", L"name"},
        {"REG_PLUGIN_PROPERTY_TYPE_PTF", L"PTF"},
        {"REG_PLUGIN_TRUE", L"true"},
    };
    for (const auto& [name, expected] : texts) {
        const wchar_t* const* text = static_cast<const wchar_t* const*>(symbol(name));
        ASSERT_TRUE(text != nullptr && *text != nullptr) << name;
        EXPECT_EQ(std::wstring(*text), expected) << name;
    }
}

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
        {nullptr, L"TRUE", false},
        {L"pdxDirectory", nullptr, false},
        {L"listUnmatchedSoftware", L"\u00e9", false},
    };
    for (const wchar_t* name :
         {L"showSupersededWindowsUpdates", L"showUncommittedPackages", L"showRemovedPackages",
          L"listUnmatchedSoftware", L"failOnBrokenCab"}) {
        cases.insert(cases.end(), {{name, L"TRUE", true}, {name, L"FALSE", true}});
        for (const wchar_t* wrong : {L"true", L"yes", L"", L"TRUE "}) {
            cases.push_back({name, wrong, false});
        }
    }
    auto utf8 = [](const wchar_t* text) { return text ? Utf8::encode(text) : "(null)"; };
    for (const Case& c : cases) {
        PluginSDK::Configuration::cleanup(kStore);
        trace_.clear();
        plugin_->setProperty(c.name, c.value);
        std::string what = "name=[" + utf8(c.name) + "] value=[" + utf8(c.value) + "]";
        if (c.name != nullptr) {
            EXPECT_EQ(stored(c.name), c.accepted ? c.value : L"<none>") << what;
        }
        // The warning names the plug-in's component and quotes what was rejected.
        std::vector<std::string> warnings, expected;
        for (const MemoryTraceSink::Line& line : trace_.lines()) {
            if (line.level == 2) {
                warnings.push_back(std::to_string(line.component) + " " + line.message);
            }
        }
        if (!c.accepted) {
            expected.push_back("5 Unexpected plugin property, skipping. plugin=[RegPlugin] " +
                               what);
        }
        EXPECT_EQ(warnings, expected);
    }
}

TEST_F(RegPluginTest, RejectedSettingsKeepTheEarlierValueAndCleanupDiscardsThem) {
    plugin_->setProperty(L"showRemovedPackages", L"TRUE");
    plugin_->setProperty(L"showRemovedPackages", L"maybe");
    plugin_->setProperty(L"pdxDirectory", L"/first");
    plugin_->setProperty(L"pdxDirectory", nullptr);
    EXPECT_EQ(stored(L"showRemovedPackages"), L"TRUE");
    EXPECT_EQ(stored(L"pdxDirectory"), L"/first");
    EXPECT_EQ(plugin_->cleanupPlugin(), 0);
    EXPECT_EQ(stored(L"pdxDirectory"), L"<none>");
}

TEST_F(RegPluginTest, KnownNamesCreateNewExpressionsOfTheirKind) {
    const std::pair<const wchar_t*, bool> known[] = {
        // name, scalar
        {L"VoidProductList", false}, {L"VoidProductExists", true}, {L"VoidProductInfo", true},
        {L"RpmProductList", false},  {L"RpmProductExists", true},  {L"RpmProductInfo", true},
        {L"DpkgProductList", false}, {L"DpkgProductExists", true}, {L"DpkgProductInfo", true},
        {L"IsmpProductList", false}, {L"IsmpProductExists", true}, {L"IsmpProductInfo", true},
    };
    for (const auto& [name, scalar] : known) {
        PluginSDK::Expression *first = nullptr, *second = nullptr;
        EXPECT_EQ(plugin_->createExpression(name, &first), 0) << name;
        EXPECT_EQ(plugin_->createExpression(name, &second), 0) << name;
        EXPECT_TRUE(first != nullptr && first != second) << name;
        auto* s = dynamic_cast<PluginSDK::ScalarExpression*>(first);
        auto* v = dynamic_cast<PluginSDK::VectorExpression*>(first);
        EXPECT_TRUE(scalar ? s != nullptr && s->getType() == PluginSDK::EXPRESSION_TYPE_SCALAR
                           : v != nullptr && v->getType() == PluginSDK::EXPRESSION_TYPE_VECTOR)
            << name;
        plugin_->destroyExpression(first);
        plugin_->destroyExpression(second);
    }
}

TEST_F(RegPluginTest, UnknownNamesAndNullArgumentsGiveNoExpression) {
    int marker = 0;
    for (const wchar_t* name : {L"OrloProductExists", L"voidproductexists", L"VOIDPRODUCTLIST",
                                L"VoidProductInfo ", L"VoidProduct", L"", L"rpmProductList"}) {
        PluginSDK::Expression* out = reinterpret_cast<PluginSDK::Expression*>(&marker);
        EXPECT_EQ(plugin_->createExpression(name, &out), -10008) << "name=[" << name << "]";
        EXPECT_EQ(out, nullptr) << "name=[" << name << "]";
    }
    PluginSDK::Expression* out = nullptr;
    EXPECT_EQ(plugin_->createExpression(nullptr, &out), -101);
    EXPECT_EQ(plugin_->createExpression(L"VoidProductExists", nullptr), -101);
}

}  // namespace
