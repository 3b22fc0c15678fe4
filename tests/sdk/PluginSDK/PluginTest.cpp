// Configuration stores and expression announcement.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PluginSDK/Configuration.h"
#include "PluginSDK/Plugin.h"

using namespace PluginSDK;

namespace {

TEST(Configuration, StoresArePerPluginAndCleanupDiscardsThem) {
    Configuration* first = nullptr;
    Configuration* again = nullptr;
    Configuration* other = nullptr;
    ASSERT_EQ(Configuration::get(L"ConfigTestA", first), RESULT_OK);
    Configuration::get(L"ConfigTestA", again);
    Configuration::get(L"ConfigTestB", other);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(again, first);
    EXPECT_NE(other, first);

    first->setProperty(L"pdxDirectory", L"/opt/a");
    EXPECT_EQ(first->setProperty(L"pdxDirectory", L""), RESULT_OK);
    String value(L"untouched");
    EXPECT_EQ(first->getProperty(L"pdxDirectory", value), RESULT_OK);
    EXPECT_EQ(value, L"") << "an empty value is a stored value";
    value = L"untouched";
    EXPECT_EQ(other->getProperty(L"pdxDirectory", value), ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(first->getProperty(L"PDXDIRECTORY", value), ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(value, L"untouched");

    EXPECT_EQ(Configuration::cleanup(L"ConfigTestA"), RESULT_OK);
    Configuration::get(L"ConfigTestA", first);
    EXPECT_EQ(first->getProperty(L"pdxDirectory", value), ERROR_PROPERTY_NOT_FOUND);
    Configuration::cleanup(L"ConfigTestA");
    Configuration::cleanup(L"ConfigTestB");
    EXPECT_EQ(Configuration::get(nullptr, first), ERROR_NULL_ARGUMENT);
    EXPECT_EQ(first, nullptr);
}

class RecordingPlugin : public Plugin {
  public:
    void setProperty(const wchar_t*, const wchar_t*) override {}
    PluginVersion getVersion() const override { return PluginVersion{1, 1, 1, 1}; }
    const wchar_t* getName() const override { return L"Recording"; }
    UnknownSoftwareRepository* getUnknownSoftware() override { return nullptr; }
    TErrorCode initializePlugin() override {
        addExpression(L"B");
        addExpression(L"A");
        addExpression(L"B");
        return addExpression(L"C");
    }
    TErrorCode cleanupPlugin() override { return 0; }
    TErrorCode createExpression(const wchar_t*, Expression** out) override {
        *out = nullptr;
        return ERROR_NO_SUCH_EXPRESSION;
    }
    TErrorCode destroyExpression(Expression*) override { return 0; }
};

TEST(Plugin, AddExpressionKeepsFirstAnnouncementOrder) {
    RecordingPlugin plugin;
    EXPECT_EQ(plugin.initializePlugin(), RESULT_OK);
    EXPECT_EQ(plugin.getExpressionNames(), (std::vector<std::wstring>{L"B", L"A", L"C"}));
    EXPECT_EQ(plugin.addExpression(nullptr), ERROR_NULL_ARGUMENT);
    EXPECT_EQ(plugin.getExpressionNames().size(), 3u);
}

}  // namespace
