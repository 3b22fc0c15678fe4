#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../PluginTestSupport.h"
#include "PluginSDK/PluginResult.h"
#include "RegPluginConstants.h"
#include "common/RegistryDataProviderFactory.h"
#include "cross/ismp/IsmpDataProvider.h"
#include "cross/ismp/IsmpPackage.h"
#include "cross/ismp/IsmpProductExists.h"
#include "cross/ismp/IsmpProductInfo.h"
#include "cross/ismp/IsmpProductList.h"

namespace RegPluginTest {
namespace {

using Factory = RegPlugin::RegistryDataProviderFactory;
using RegPlugin::RegistryPackage;
using Lines = std::vector<std::string>;

const std::string kTail =
    "|0|0|0|0|4|\"_uninst\" \"uninstall.jar\" \"uninstall.dat\" \"\"|1|2|3|4|5|6|7|8|9\n";

// Two products and a feature of the ISMP registry.
const std::string kRegistry =
    "P1|1|2|0|3|x|1=Alpha|Alpha suite|true|Example Vendor|url|1.2.0.3|/opt/alpha" + kTail +
    "F1|1|2|0|3|x|1=Alpha help|Help files|true|Example Vendor|url|1.2.0.3|/opt/alpha/help"
    "|0|0|0|0|4| \n"
    "P2|2|0| | |x|1=Beta|Beta|true|Other Vendor|url|2.0|/opt/beta" +
    kTail;

// getPackage answers with a fixed code and no package.
class RefusingProvider : public RegPlugin::RegistryDataProvider {
  public:
    explicit RefusingProvider(TErrorCode code) : m_code(code) {}
    TErrorCode enumPackages(RegistryPackage::Type, PluginSDK::StringVector&) override {
        return m_code;
    }
    TErrorCode getPackage(const PluginSDK::String&, RegistryPackage**) override { return m_code; }
    TErrorCode packageExists(const PluginSDK::String&, bool&) override { return m_code; }

  private:
    TErrorCode m_code;
};

Lines keysOf(const PluginSDK::StringVector& keys) {
    Lines out;
    for (const PluginSDK::String& key : keys)
        out.push_back(key.toUtf8());
    return out;
}

class IsmpExpressionsTest : public ::testing::Test {
  protected:
    void TearDown() override { Factory::cleanup(); }

    // The factory's ISMP provider reads `text` as its registry file.
    void useRegistry(const std::string& text) {
        Factory::cleanup();
        Factory::setDataProvider(Factory::ISMP_PROVIDER, new RegPlugin::IsmpDataProvider(
                                                             m_dir.write("vpd.properties", text)));
    }
    void useProvider(RegPlugin::RegistryDataProvider* provider) {
        Factory::cleanup();
        Factory::setDataProvider(Factory::ISMP_PROVIDER, provider);
    }

    TempDir m_dir;
};

enum Kind { kExists, kInfo };
enum Registry { kRegistryFile, kBadLine, kMissingFile, kRefuses13303, kRefuses13201 };

TEST_F(IsmpExpressionsTest, ExistsAndInfo) {
    const struct {
        Registry setup;
        Kind kind;
        const wchar_t *code, *field;
        TErrorCode expected;
        const wchar_t* result;
    } cases[] = {
        {kRegistryFile, kExists, nullptr, nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_CODE, L""},
        {kRegistryFile, kInfo, nullptr, L"name", REG_PLUGIN_ERROR_UNSPECIFIED_CODE, L""},
        {kRegistryFile, kInfo, L"P1@1.2.0.3", nullptr, REG_PLUGIN_ERROR_UNSPECIFIED_FIELD, L""},
        {kRegistryFile, kExists, L"P1@1.2.0.3", nullptr, 0, PLUGIN_RESULT_TRUE},
        {kRegistryFile, kExists, L"F1@1.2.0.3", nullptr, 0, PLUGIN_RESULT_TRUE},
        {kRegistryFile, kExists, L"P1", nullptr, 0, PLUGIN_RESULT_FALSE},
        {kRegistryFile, kExists, L"p1@1.2.0.3", nullptr, 0, PLUGIN_RESULT_FALSE},
        {kRegistryFile, kInfo, L"P1@1.2.0.3", L"name", 0, L"Alpha"},
        {kRegistryFile, kInfo, L"F1@1.2.0.3", L"uninstData", 0, L""},
        {kRegistryFile, kInfo, L"P2@2.0", L"version", 0, L"2.0"},
        {kRegistryFile, kInfo, L"P1@1.2.0.3", L"Name", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L""},
        {kRegistryFile, kInfo, L"P3@1", L"name", REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST, L""},
        {kMissingFile, kExists, L"P1@1.2.0.3", nullptr, 0, PLUGIN_RESULT_FALSE},
        {kMissingFile, kInfo, L"P1@1.2.0.3", L"name", REG_PLUGIN_ERROR_PRODUCT_DOES_NOT_EXIST, L""},
        // A failed load: Exists passes the error on, Info filters it out and looks the
        // field up on no package.
        {kBadLine, kExists, L"P1@1.2.0.3", nullptr, REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST,
         L""},
        {kBadLine, kInfo, L"P1@1.2.0.3", L"name", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L""},
        {kRefuses13303, kInfo, L"P1@1.2.0.3", L"name", REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST,
         L""},
        {kRefuses13201, kInfo, L"P1@1.2.0.3", L"name", REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND, L""},
        {kRefuses13201, kExists, L"P1@1.2.0.3", nullptr, REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER,
         L""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        switch (c.setup) {
            case kRegistryFile:
                useRegistry(kRegistry);
                break;
            case kBadLine:
                useRegistry(kRegistry + "=\n");
                break;
            case kMissingFile:
                useProvider(new RegPlugin::IsmpDataProvider(m_dir.path() + "/missing"));
                break;
            case kRefuses13303:
                useProvider(new RefusingProvider(REG_PLUGIN_ERROR_ISMP_PRODUCT_DOES_NOT_EXIST));
                break;
            case kRefuses13201:
                useProvider(new RefusingProvider(REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER));
                break;
        }
        RegPlugin::IsmpProductExists exists;
        RegPlugin::IsmpProductInfo info;
        PluginSDK::ScalarOperand& expression =
            c.kind == kExists ? static_cast<PluginSDK::ScalarOperand&>(exists) : info;
        expression.setProperty(L"code", c.code);
        expression.setProperty(L"field", c.field);
        PluginSDK::String result(L"old");
        EXPECT_EQ(expression.getScalarResult(result), c.expected);
        EXPECT_EQ(result, c.result);
    }
}

TEST_F(IsmpExpressionsTest, ListSelectsProductsAndFeatures) {
    const struct {
        const char* registry;  // "good", "bad" (a failing line after the good ones), "missing"
        const wchar_t *type, *filter;
        TErrorCode expected;
        Lines keys;
    } cases[] = {
        {"good", nullptr, nullptr, 0, {"P1@1.2.0.3", "F1@1.2.0.3", "P2@2.0"}},
        {"good", L"product", nullptr, 0, {"P1@1.2.0.3", "P2@2.0"}},
        {"good", L"subproduct", nullptr, 0, {"F1@1.2.0.3"}},
        {"good", L"patch", nullptr, 0, {}},
        {"good", L"any", L"P*", 0, {"P1@1.2.0.3", "P2@2.0"}},
        {"good", L"software", nullptr, REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE, {}},
        {"missing", nullptr, nullptr, 0, {}},
        {"bad", nullptr, nullptr, REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST, {}},
    };
    for (const auto& c : cases) {
        const std::string registry = c.registry;
        if (registry == "missing")
            useProvider(new RegPlugin::IsmpDataProvider(m_dir.path() + "/missing"));
        else
            useRegistry(registry == "good" ? kRegistry : kRegistry + "=\n");
        RegPlugin::IsmpProductList list;
        list.setProperty(L"type", c.type);
        list.setProperty(L"filter", c.filter);
        PluginSDK::StringVector keys;
        EXPECT_EQ(list.getVectorResult(keys), c.expected) << &c - cases;
        EXPECT_EQ(keysOf(keys), c.keys) << &c - cases;
    }
}

// A package asked for a property it does not have answers from the factory's ISMP
// provider: its load failure, or "not found" once it is loaded.
TEST_F(IsmpExpressionsTest, MissingPropertiesAskTheFactorysProvider) {
    RegPlugin::IsmpPackage package;
    PluginSDK::String value(L"old");
    useRegistry("=\n");
    EXPECT_EQ(package.getProperty(L"vendor", value), REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST);
    useRegistry(kRegistry);
    EXPECT_EQ(package.getProperty(L"vendor", value), REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
    useProvider(new RefusingProvider(REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER));
    EXPECT_EQ(package.getProperty(L"vendor", value), REG_PLUGIN_ERROR_INVALID_DATA_PROVIDER);
    EXPECT_EQ(value, L"old");
    package.setProperty(L"vendor", L"V");
    EXPECT_EQ(package.getProperty(L"vendor", value), 0);
    EXPECT_EQ(value, L"V");
}

}  // namespace
}  // namespace RegPluginTest
