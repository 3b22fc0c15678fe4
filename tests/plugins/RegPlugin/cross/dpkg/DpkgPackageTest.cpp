#include "cross/dpkg/DpkgPackage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RegPluginConstants.h"

namespace {

using RegPlugin::DpkgPackage;

const wchar_t* const kVersion = REG_PLUGIN_PROPERTY_FIELD_VERSION;
const wchar_t* const kDisplay = REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION;
const wchar_t* const kDescription = REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION;
const wchar_t* const kVendor = REG_PLUGIN_PROPERTY_FIELD_VENDOR;

// Each property in `order` as "value", or "#code" when getProperty fails (the value
// must then be left alone).
std::vector<std::string> ask(DpkgPackage& package, const std::vector<const wchar_t*>& order) {
    std::vector<std::string> answers;
    for (const wchar_t* name : order) {
        PluginSDK::String value(L"untouched");
        const TErrorCode rc = package.getProperty(name, value);
        if (rc == 0) {
            answers.push_back(value.toUtf8());
        } else {
            EXPECT_EQ(value, PluginSDK::String(L"untouched"));
            answers.push_back("#" + std::to_string(rc));
        }
    }
    return answers;
}

// Deferred text must read exactly like properties set while loading, in whatever
// order the properties are asked for, and a value set later must replace it.
TEST(DpkgPackageTest, DeferredTextReadsLikeStoredProperties) {
    const std::string version = "1:2.3-4";
    const std::string description = "caf\xc3\xa9 \xff";
    const std::string empty;
    const std::string missing = "#" + std::to_string(REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND);
    const struct {
        const char* what;
        const std::string* version;
        const std::string* description;
        const char* setVersionAfter;  // null: none
        std::vector<const wchar_t*> order;
        std::vector<std::string> expected;
    } cases[] = {
        {"version first",
         &version,
         &description,
         nullptr,
         {kVersion, kDisplay, kDescription, kVersion},
         {version, version, description, version}},
        {"display version first",
         &version,
         &description,
         nullptr,
         {kDisplay, kDescription, kVersion},
         {version, description, version}},
        {"description alone",
         nullptr,
         &description,
         nullptr,
         {kDescription, kVersion, kDisplay, kDescription},
         {description, missing, missing, description}},
        {"an empty text is a value",
         &empty,
         nullptr,
         nullptr,
         {kDescription, kDisplay, kVersion},
         {missing, "", ""}},
        {"nothing deferred",
         nullptr,
         nullptr,
         nullptr,
         {kVersion, kDescription, kVendor},
         {missing, missing, missing}},
        {"other names stay unknown",
         &version,
         &description,
         nullptr,
         {kVendor, L"Version", kVersion},
         {missing, missing, version}},
        {"a later version replaces the deferred one",
         &version,
         &description,
         "9",
         {kDisplay, kVersion, kDescription},
         {"9", "9", description}},
    };
    for (const auto& c : cases) {
        DpkgPackage package(PluginSDK::String(L"key"));
        package.deferText(c.version, c.description);
        if (c.setVersionAfter != nullptr) {
            package.setVersion(PluginSDK::String(c.setVersionAfter));
        }
        EXPECT_EQ(ask(package, c.order), c.expected) << c.what;
    }
}

}  // namespace
