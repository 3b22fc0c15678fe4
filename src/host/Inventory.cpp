#include "Inventory.h"

#include "Evaluation.h"

namespace regscan {

const std::vector<RegistrySource>& knownRegistries() {
    // One row per registry; adding a registry is adding a row.
    static const std::vector<RegistrySource> registries = {
        {"rpm",
         "RpmProductList",
         "RpmProductInfo",
         "the rpm database could not be read; is rpm installed?",
         {}},
        {"dpkg",
         "DpkgProductList",
         "DpkgProductInfo",
         "the dpkg status file /var/lib/dpkg/status could not be read",
         {}},
        // A missing vpd.properties is no failure: the List is empty then.
        {"ismp",
         "IsmpProductList",
         "IsmpProductInfo",
         "root's ISMP registry file vpd.properties could not be opened or has a malformed line",
         {}},
        {"any",
         "InstallAnywhereList",
         "InstallAnywhereInfo",
         "the InstallAnywhere registry /var/.com.zerog.registry.xml could not be read",
         {}},
        {"corvu",
         "CorvuList",
         "CorvuInfo",
         "the Corvu registry chain from /etc/.kelvo/registry/Corvu.dat could not be read",
         {}},
        {"tessel",
         "TesselCatalogList",
         "TesselCatalogInfo",
         "the Tessel catalog could not be listed; is pdxDirectory the product directory?",
         {},
         "pdxDirectory",
         {"uninstData", "isInstalled", "isCommitted", "backupState", "rebootRequired",
          "isDiscovered", "isHidden", "errorState"}},
        // Tag files under the install directories the other registries report.
        {"orlo",
         "OrloProductList",
         "OrloProductInfo",
         "the Orlo tag files could not be searched",
         {},
         nullptr,
         {"kind", "TAG_FILE"}},
    };
    return registries;
}

std::vector<RegistrySource> configuredRegistries(const std::vector<RegistrySource>& registries,
                                                 const PropertyList& settings) {
    std::vector<RegistrySource> selected;
    for (const RegistrySource& source : registries) {
        bool given = source.requiredSetting == nullptr;
        for (const auto& setting : settings) {
            given = given || setting.first == source.requiredSetting;
        }
        if (given) {
            selected.push_back(source);
        }
    }
    return selected;
}

namespace {

std::string failureReason(const RegistrySource& source, const Evaluation& list,
                          const CodeNames& names) {
    if (list.kind == Evaluation::Kind::NotCreated) {
        if (list.code == PluginSDK::ERROR_NO_SUCH_EXPRESSION) {
            return std::string("this plug-in cannot create the expression ") +
                   source.listExpression;
        }
        return std::string("the expression ") + source.listExpression + " could not be created";
    }
    if (list.kind != Evaluation::Kind::Vector) {
        return std::string("the expression ") + source.listExpression + " does not give a list";
    }
    if (names.valueOf("REG_PLUGIN_ERROR_UNABLE_TO_GET_PROGRAM_LIST") == list.code) {
        return source.unreadableReason;
    }
    return "the plug-in could not list this registry";
}

}  // namespace

Inventory collectInventory(PluginSDK::Plugin& plugin, const std::vector<RegistrySource>& registries,
                           const CodeNames& names, const ProgressCallback& progress) {
    Inventory inventory;
    for (const RegistrySource& source : registries) {
        const std::string what = std::string("reading ") + source.registry;
        if (progress) {
            progress(what, 0, 0);
        }
        Evaluation list = evaluateExpression(plugin, source.listExpression, source.listProperties);
        if (list.kind != Evaluation::Kind::Vector || list.code != 0) {
            RegistryFailure failure;
            failure.registry = source.registry;
            failure.code = list.code;
            failure.message = std::string(source.registry) + ": cannot list packages";
            if (list.code != 0) {
                failure.message += " (" + names.describe(list.code) + ")";
            }
            failure.message += ": " + failureReason(source, list, names);
            inventory.failures.push_back(std::move(failure));
            continue;
        }
        ++inventory.listedRegistries;

        // One Info expression serves every key and field: its properties are replaced
        // before each evaluation.
        ExpressionHandle info(plugin, source.infoExpression);
        inventory.records.reserve(inventory.records.size() + list.keys.size());
        std::size_t done = 0;
        for (std::string& key : list.keys) {
            if (progress) {
                progress(what, ++done, list.keys.size());
            }
            InventoryRecord record;
            record.registry = source.registry;
            std::pair<const char*, std::string*> fields[] = {
                {"name", &record.name},
                {"version", &record.version},
                // People read versions as the registry displays them (rpm's
                // version-release); where a registry has a display form it wins.
                {"displayVersion", &record.version},
                {"vendor", &record.vendor},
                {"installDir", &record.installDir},
                {"description", &record.description},
            };
            if (info.created()) {
                info.setProperty("code", key);
                for (auto& field : fields) {
                    info.setProperty("field", field.first);
                    Evaluation value = info.evaluate();
                    // An empty answer (a registry that answers every field, even one
                    // it lacks) does not replace a value read before.
                    if (value.kind == Evaluation::Kind::Scalar && value.code == 0 &&
                        (field.second->empty() || !value.scalar.empty())) {
                        *field.second = std::move(value.scalar);
                    }
                }
                for (const char* extra : source.extraFields) {
                    info.setProperty("field", extra);
                    Evaluation value = info.evaluate();
                    if (value.kind == Evaluation::Kind::Scalar && value.code == 0) {
                        record.extraFields.emplace_back(extra, std::move(value.scalar));
                    }
                }
            }
            record.key = std::move(key);
            inventory.records.push_back(std::move(record));
        }
    }
    return inventory;
}

}  // namespace regscan
