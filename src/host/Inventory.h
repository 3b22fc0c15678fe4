// The inventory: every package of every known registry, read through the
// registry's List and Info expressions.
#ifndef REGSCAN_INVENTORY_H
#define REGSCAN_INVENTORY_H

#include <string>
#include <utility>
#include <vector>

#include "CodeNames.h"
#include "Options.h"
#include "PluginSDK/Plugin.h"
#include "PluginSDK/Types.h"
#include "Progress.h"

namespace regscan {

// One registry the inventory lists.
struct RegistrySource {
    const char* registry;        // the name shown in the "registry" column
    const char* listExpression;  // vector expression giving the package keys
    const char* infoExpression;  // scalar expression taking "code" and "field"
    // Why the List failed when the plug-in could not read the registry, in plain words.
    const char* unreadableReason;
    PropertyList listProperties;  // set on the List expression before evaluating it
    // When not null, the registry is listed only when this configuration property was
    // given (--set NAME=VALUE).
    const char* requiredSetting = nullptr;
    // Further Info fields read for each package (InventoryRecord::extraFields).
    std::vector<const char*> extraFields = {};
};

// The registries `inventory` lists, in output order.
const std::vector<RegistrySource>& knownRegistries();

// The rows of `registries` that `settings` (the --set pairs) lets list: those without
// a required setting, and those whose required setting was given.
std::vector<RegistrySource> configuredRegistries(const std::vector<RegistrySource>& registries,
                                                 const PropertyList& settings);

// One package. A field the registry does not give is empty.
struct InventoryRecord {
    std::string registry;
    std::string key;
    std::string name;
    std::string version;
    std::string vendor;
    std::string installDir;
    std::string description;
    // The source's extra fields that the registry gave, in the source's order, as
    // (field, value); shown in json output only.
    std::vector<std::pair<std::string, std::string>> extraFields = {};
};

// A registry whose List failed; `message` is the complete line for people, e.g.
// "rpm: cannot list packages (-13111 REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST):
// the rpm database could not be read; is rpm installed?".
struct RegistryFailure {
    std::string registry;
    TErrorCode code = 0;
    std::string message;
};

struct Inventory {
    std::vector<InventoryRecord> records;  // registry by registry, keys in List order
    std::vector<RegistryFailure> failures;
    int listedRegistries = 0;  // registries whose List succeeded
};

// Lists every registry of `registries`: the List expression, then for each key the
// Info expression with "code" = key and "field" = name, version, vendor, installDir,
// description. A failed List is recorded in `failures` and the other registries
// are still listed; a failed Info leaves its cell empty. `names` describes codes.
// `progress`, when given, hears of each registry and of the packages read.
Inventory collectInventory(PluginSDK::Plugin& plugin, const std::vector<RegistrySource>& registries,
                           const CodeNames& names, const ProgressCallback& progress = {});

}  // namespace regscan

#endif
