#include "ExpressionTable.h"

#include <cwchar>

#include "RegPluginConstants.h"
#include "cross/any/InstallAnywhereExists.h"
#include "cross/any/InstallAnywhereInfo.h"
#include "cross/any/InstallAnywhereList.h"
#include "cross/corvu/CorvuExists.h"
#include "cross/corvu/CorvuInfo.h"
#include "cross/corvu/CorvuList.h"
#include "cross/dpkg/DpkgProductExists.h"
#include "cross/dpkg/DpkgProductInfo.h"
#include "cross/dpkg/DpkgProductList.h"
#include "cross/ismp/IsmpProductExists.h"
#include "cross/ismp/IsmpProductInfo.h"
#include "cross/ismp/IsmpProductList.h"
#include "cross/orlo/OrloProductInfo.h"
#include "cross/orlo/OrloProductList.h"
#include "cross/package/PackageInfoEqual.h"
#include "cross/package/PackageInfoMatch.h"
#include "cross/rpm/RpmProductExists.h"
#include "cross/rpm/RpmProductInfo.h"
#include "cross/rpm/RpmProductList.h"
#include "cross/tessel/TesselExists.h"
#include "cross/tessel/TesselInfo.h"
#include "cross/tessel/TesselList.h"
#include "cross/void/VoidProductExists.h"
#include "cross/void/VoidProductInfo.h"
#include "cross/void/VoidProductList.h"

namespace RegPlugin {

namespace {

template <class T>
PluginSDK::Expression* create() {
    return new T();
}

}  // namespace

const ExpressionTableRow* expressionTable(std::size_t& count) {
    // Built on first use: the names are the exported constants of another unit.
    // "OrloProductExists" is exported but deliberately never creatable.
    static const ExpressionTableRow rows[] = {
        {REG_PLUGIN_EXPRESSION_PACKAGEINFOEQUAL, &create<PackageInfoEqual>},
        {REG_PLUGIN_EXPRESSION_PACKAGEINFOMATCH, &create<PackageInfoMatch>},
        {REG_PLUGIN_EXPRESSION_VOIDPRODUCTLIST, &create<VoidProductList>},
        {REG_PLUGIN_EXPRESSION_VOIDPRODUCTEXISTS, &create<VoidProductExists>},
        {REG_PLUGIN_EXPRESSION_VOIDPRODUCTINFO, &create<VoidProductInfo>},
        {REG_PLUGIN_EXPRESSION_RPMPRODUCTLIST, &create<RpmProductList>},
        {REG_PLUGIN_EXPRESSION_RPMPRODUCTEXISTS, &create<RpmProductExists>},
        {REG_PLUGIN_EXPRESSION_RPMPRODUCTINFO, &create<RpmProductInfo>},
        {REG_PLUGIN_EXPRESSION_DPKGPRODUCTLIST, &create<DpkgProductList>},
        {REG_PLUGIN_EXPRESSION_DPKGPRODUCTEXISTS, &create<DpkgProductExists>},
        {REG_PLUGIN_EXPRESSION_DPKGPRODUCTINFO, &create<DpkgProductInfo>},
        {REG_PLUGIN_EXPRESSION_CORVULIST, &create<CorvuList>},
        {REG_PLUGIN_EXPRESSION_CORVUEXISTS, &create<CorvuExists>},
        {REG_PLUGIN_EXPRESSION_CORVUINFO, &create<CorvuInfo>},
        {REG_PLUGIN_EXPRESSION_ANYLIST, &create<InstallAnywhereList>},
        {REG_PLUGIN_EXPRESSION_ANYEXISTS, &create<InstallAnywhereExists>},
        {REG_PLUGIN_EXPRESSION_ANYINFO, &create<InstallAnywhereInfo>},
        {REG_PLUGIN_EXPRESSION_ORLOPRODUCTLIST, &create<OrloProductList>},
        {REG_PLUGIN_EXPRESSION_ORLOPRODUCTINFO, &create<OrloProductInfo>},
        {REG_PLUGIN_EXPRESSION_ISMPPRODUCTLIST, &create<IsmpProductList>},
        {REG_PLUGIN_EXPRESSION_ISMPPRODUCTEXISTS, &create<IsmpProductExists>},
        {REG_PLUGIN_EXPRESSION_ISMPPRODUCTINFO, &create<IsmpProductInfo>},
        {REG_PLUGIN_EXPRESSION_TESSELLIST, &create<TesselList>},
        {REG_PLUGIN_EXPRESSION_TESSELEXISTS, &create<TesselExists>},
        {REG_PLUGIN_EXPRESSION_TESSELINFO, &create<TesselInfo>},
    };
    count = sizeof(rows) / sizeof(rows[0]);
    return rows;
}

const ExpressionTableRow* findExpression(const wchar_t* name) {
    if (name == nullptr) {
        return nullptr;
    }
    std::size_t count = 0;
    const ExpressionTableRow* rows = expressionTable(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (std::wcscmp(rows[i].name, name) == 0) {
            return &rows[i];
        }
    }
    return nullptr;
}

}  // namespace RegPlugin
