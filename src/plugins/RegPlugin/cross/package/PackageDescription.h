// The text that the equality query compares: a package's name, version and vendor.
#ifndef REGPLUGIN_CROSS_PACKAGE_PACKAGEDESCRIPTION_H
#define REGPLUGIN_CROSS_PACKAGE_PACKAGEDESCRIPTION_H

#include "PluginSDK/String.h"
#include "PluginSDK/Types.h"
#include "common/RegistryPackage.h"
#include "trace/Trace.h"

namespace RegPlugin {

// Reads "name", "version" and "vendor" of `package`, in that order, and appends them
// to `description`: the name when its trimmed text is not empty, then " " and the
// version, then " " and the vendor, each only when its trimmed text is not empty
// (the blank is written even when nothing precedes it). The trimmed text is what is
// appended. The first property that cannot be read writes its level 1 line
// ("cannot retrieve property \"name\"", ...) into `trace` and returns its code;
// `description` then holds what was appended before it.
TErrorCode appendPackageDescription(RegistryPackage& package, PluginSDK::String& description,
                                    Trace& trace);

}  // namespace RegPlugin

#endif
