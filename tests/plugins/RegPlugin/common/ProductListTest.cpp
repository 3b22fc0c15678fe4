#include "common/ProductList.h"

#include <gtest/gtest.h>

#include "CommonFakes.h"
#include "base/GlobFilter.h"

namespace RegPluginTest {
namespace {

const auto kNotAsked = static_cast<RegistryPackage::Type>(-1);

// Lists three keys (and then fails with `result`), recording the type asked for.
class TestList : public RegPlugin::ProductList {
  public:
    void disposeExpression() override {}
    TErrorCode enumPackages(RegistryPackage::Type type, PluginSDK::StringVector& out) override {
        asked = type;
        for (const wchar_t* key : {L"libc", L"bash", L"libz"})
            out.addString(key);
        return result;
    }
    RegistryPackage::Type asked = kNotAsked;
    TErrorCode result = 0;
};

TEST(ProductListTest, TypeAndFilterSelectTheKeys) {
    const TErrorCode kBadType = REG_PLUGIN_ERROR_INVALID_PRODUCT_TYPE;
    const Lines kAll = {"libc", "bash", "libz"};
    const struct {
        const wchar_t *type, *filter;  // null: property absent
        TErrorCode result, expected;
        RegistryPackage::Type asked;
        Lines keys;
    } cases[] = {
        {nullptr, nullptr, 0, 0, RegistryPackage::ANY, kAll},
        {L"any", nullptr, 0, 0, RegistryPackage::ANY, kAll},
        {L"product", nullptr, 0, 0, RegistryPackage::PRODUCT, kAll},
        {L"subproduct", nullptr, 0, 0, RegistryPackage::SUBPRODUCT, kAll},
        {L"patch", nullptr, 0, 0, RegistryPackage::PATCH, kAll},
        {L"PTF", nullptr, 0, kBadType, kNotAsked, {}},
        {L"Product", nullptr, 0, kBadType, kNotAsked, {}},
        {nullptr, L"lib*", 0, 0, RegistryPackage::ANY, {"libc", "libz"}},
        // Filters match case-sensitively.
        {nullptr, L"LIB*", 0, 0, RegistryPackage::ANY, {}},
        {nullptr, L"Bash", 0, 0, RegistryPackage::ANY, {}},
        {nullptr, L"[B]a?h", 0, 0, RegistryPackage::ANY, {}},
        {nullptr, L"[b]a?h", 0, 0, RegistryPackage::ANY, {"bash"}},
        {L"patch", L"zzz*", 0, 0, RegistryPackage::PATCH, {}},
        {nullptr, L"*", -5, -5, RegistryPackage::ANY, {}},
        {nullptr, L"[abc", 0, GlobFilter::GLOB_UNTERMINATED_CLASS, kNotAsked, {}},
    };
    for (const auto& c : cases) {
        const std::string label =
            PluginSDK::String(c.type).toUtf8() + "|" + PluginSDK::String(c.filter).toUtf8();
        TestList list;
        list.result = c.result;
        list.setProperty(L"type", c.type);
        list.setProperty(L"filter", c.filter);
        PluginSDK::StringVector out;
        out.addString(L"stale");
        EXPECT_EQ(list.getVectorResult(out), c.expected) << label;
        EXPECT_EQ(list.asked, c.asked) << label;
        EXPECT_EQ(keysOf(out), c.keys) << label;
    }
}

}  // namespace
}  // namespace RegPluginTest
