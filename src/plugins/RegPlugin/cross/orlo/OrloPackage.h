// One product, component or fix found in an Orlo tag file, as the Orlo provider
// serves it: keyed name "#" version "@" installation root, provider tag "ORLOINV",
// type from the record's kind. Every property is set at creation.
#ifndef REGPLUGIN_CROSS_ORLO_ORLOPACKAGE_H
#define REGPLUGIN_CROSS_ORLO_ORLOPACKAGE_H

#include "common/RegistryPackage.h"
#include "cross/orlo/OrloProduct.h"

namespace RegPlugin {

class OrloPackage : public RegistryPackage {
  public:
    // The package of `product`: "installDir" = its installation root, "kind" = its
    // kind, "TAG_FILE" = its tag file, then each of its properties in ascending
    // name order (a later one replacing an earlier one of the same name). Type
    // PRODUCT for "Product" and unknown kinds, SUBPRODUCT for "Component", PATCH for
    // "Fix".
    explicit OrloPackage(const OrloProduct& product);
    ~OrloPackage() override;

    // Nothing is computed later: always REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND.
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // name "#" version "@" root; a missing name or version gives an empty part.
    static PluginSDK::String makeKey(const OrloProduct& product);
};

}  // namespace RegPlugin

#endif
