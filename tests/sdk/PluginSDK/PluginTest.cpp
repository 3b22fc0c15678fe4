// Configuration stores and expression announcement.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PluginSDK/Configuration.h"
#include "PluginSDK/Plugin.h"

using namespace PluginSDK;

namespace {

TEST(Configuration, StoresArePerPluginAndCleanupDiscardsThem) {
    Configuration *first = nullptr, *again = nullptr, *other = nullptr;
    ASSERT_EQ(Configuration::get(L"ConfigTestA", first), RESULT_OK);
    Configuration::get(L"ConfigTestA", again);
    Configuration::get(L"ConfigTestB", other);
    EXPECT_EQ(again, first);
    first->setProperty(L"dir", L"/opt/a");
    EXPECT_EQ(first->setProperty(L"dir", L""), RESULT_OK);
    String value(L"untouched");
    EXPECT_EQ(first->getProperty(L"dir", value), RESULT_OK);
    EXPECT_EQ(value, L"") << "an empty value is a stored value";
    EXPECT_EQ(other->getProperty(L"dir", value), ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(first->getProperty(L"DIR", value), ERROR_PROPERTY_NOT_FOUND);
    EXPECT_EQ(Configuration::cleanup(L"ConfigTestA"), RESULT_OK);
    Configuration::get(L"ConfigTestA", first);
    EXPECT_EQ(first->getProperty(L"dir", value), ERROR_PROPERTY_NOT_FOUND);
    Configuration::cleanup(L"ConfigTestB");
}

class RecordingPlugin : public Plugin {
  public:
    void setProperty(const wchar_t*, const wchar_t*) override {}
    PluginVersion getVersion() const override { return PluginVersion{1, 1, 1, 1}; }
    const wchar_t* getName() const override { return L"Recording"; }
    UnknownSoftwareRepository* getUnknownSoftware() override { return nullptr; }
    TErrorCode initializePlugin() override { return 0; }
    TErrorCode cleanupPlugin() override { return 0; }
    TErrorCode createExpression(const wchar_t*, Expression**) override { return 0; }
    TErrorCode destroyExpression(Expression*) override { return 0; }
};

TEST(Plugin, AddExpressionKeepsFirstAnnouncementOrder) {
    RecordingPlugin plugin;
    for (const wchar_t* name : {L"B", L"A", L"B", L"C"}) {
        EXPECT_EQ(plugin.addExpression(name), RESULT_OK);
    }
    EXPECT_EQ(plugin.addExpression(nullptr), ERROR_NULL_ARGUMENT);
    EXPECT_EQ(plugin.getExpressionNames(), (std::vector<std::wstring>{L"B", L"A", L"C"}));
}

}  // namespace
