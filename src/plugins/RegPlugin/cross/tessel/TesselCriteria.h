// What the three Tessel expressions share: the catalog provider and the show flags
// of one evaluation.
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELCRITERIA_H
#define REGPLUGIN_CROSS_TESSEL_TESSELCRITERIA_H

#include "PluginSDK/Expression.h"
#include "PluginSDK/Types.h"
#include "cross/tessel/TesselDataProvider.h"

namespace RegPlugin {

class TesselCriteria {
  public:
    TesselCriteria() = delete;

    // The factory's TESSEL_PROVIDER as the catalog provider; null when there is
    // none (or the class holds a provider of another kind).
    static TesselDataProvider* getProvider();

    // Both flags start false; then the provider's getProperties with the plug-in's
    // configuration store and the expression's "showUncommittedPackages" and
    // "showRemovedPackages" properties as overrides. Returns getProperties' code.
    static TErrorCode read(const PluginSDK::Expression& expression, TesselDataProvider& provider,
                           bool& showUncommitted, bool& showRemoved);
};

}  // namespace RegPlugin

#endif
