#include "Options.h"

#include <algorithm>
#include <cctype>

#include "PluginSDK/PluginResult.h"
#include "base/Utf8.h"

namespace regscan {

namespace {

const char* const kTruthProperties[] = {
    "showSupersededWindowsUpdates", "showUncommittedPackages", "showRemovedPackages",
    "listUnmatchedSoftware",        "failOnBrokenCab",
};

std::string lowerAscii(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// Splits "NAME=VALUE" at the first "="; throws when there is no "=" or no name.
std::pair<std::string, std::string> splitAssignment(const std::string& text,
                                                    const std::string& what) {
    std::string::size_type equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw UsageError(what + " must look like NAME=VALUE, not '" + text + "'");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

struct OptionInfo {
    const char* name;
    bool takesValue;
};

const OptionInfo kOptions[] = {
    {"--plugin", true},      {"--set", true},     {"--trace", true},
    {"--trace-file", true},  {"--format", true},  {"--help", false},
    {"--version", false},    {"--catalog", true}, {"--sbom-timestamp", true},
    {"--sbom-serial", true}, {"--root", true},    {"--quiet", false},
};

}  // namespace

bool isTruthProperty(const std::string& name) {
    return std::find_if(std::begin(kTruthProperties), std::end(kTruthProperties),
                        [&name](const char* p) { return name == p; }) != std::end(kTruthProperties);
}

std::string configurationValue(const std::string& name, const std::string& value) {
    if (!isTruthProperty(name)) {
        return value;
    }
    std::string lower = lowerAscii(value);
    if (lower == "true" || lower == "yes" || lower == "1") {
        return Utf8::encode(PLUGIN_RESULT_TRUE);
    }
    if (lower == "false" || lower == "no" || lower == "0") {
        return Utf8::encode(PLUGIN_RESULT_FALSE);
    }
    return value;
}

Options parseOptions(const std::vector<std::string>& args) {
    Options options;
    std::vector<std::string> positional;
    bool formatGiven = false;
    bool optionsEnded = false;

    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || arg.size() < 2 || arg[0] != '-') {
            positional.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        if (arg == "-h") {
            options.help = true;
            continue;
        }
        std::string name = arg;
        std::string value;
        bool inlineValue = false;
        std::string::size_type equals = arg.find('=');
        if (arg.compare(0, 2, "--") == 0 && equals != std::string::npos) {
            name = arg.substr(0, equals);
            value = arg.substr(equals + 1);
            inlineValue = true;
        }
        const OptionInfo* info = nullptr;
        for (const OptionInfo& candidate : kOptions) {
            if (name == candidate.name) {
                info = &candidate;
            }
        }
        if (info == nullptr) {
            throw UsageError("unknown option '" + name + "'");
        }
        if (info->takesValue && !inlineValue) {
            if (i + 1 >= args.size()) {
                throw UsageError("option " + name + " needs a value");
            }
            value = args[++i];
        } else if (!info->takesValue && inlineValue) {
            throw UsageError("option " + name + " takes no value");
        }

        if (name == "--plugin") {
            if (value.empty()) {
                throw UsageError("--plugin needs a path");
            }
            options.pluginPath = value;
        } else if (name == "--set") {
            std::pair<std::string, std::string> setting = splitAssignment(value, "--set");
            options.settings.emplace_back(setting.first,
                                          configurationValue(setting.first, setting.second));
        } else if (name == "--trace") {
            if (value != "1" && value != "2" && value != "3") {
                throw UsageError("--trace takes a level from 1 to 3, not '" + value + "'");
            }
            options.traceLevel = value[0] - '0';
        } else if (name == "--trace-file") {
            if (value.empty()) {
                throw UsageError("--trace-file needs a path");
            }
            options.traceFileGiven = true;
            options.traceFile = value;
        } else if (name == "--format") {
            if (value == "table") {
                options.format = InventoryFormat::Table;
            } else if (value == "json") {
                options.format = InventoryFormat::Json;
            } else if (value == "csv") {
                options.format = InventoryFormat::Csv;
            } else if (value == "cyclonedx") {
                options.format = InventoryFormat::CycloneDx;
            } else if (value == "spdx") {
                options.format = InventoryFormat::Spdx;
            } else {
                throw UsageError("--format takes table, json, csv, cyclonedx or spdx, not '" +
                                 value + "'");
            }
            formatGiven = true;
        } else if (name == "--catalog") {
            if (value.empty()) {
                throw UsageError("--catalog needs a path");
            }
            options.catalogFile = value;
        } else if (name == "--sbom-timestamp") {
            options.sbomTimestamp = value;
        } else if (name == "--sbom-serial") {
            options.sbomSerial = value;
        } else if (name == "--root") {
            if (value.empty()) {
                throw UsageError("--root needs a directory");
            }
            options.rootDir = value;
        } else if (name == "--quiet") {
            options.quiet = true;
        } else if (name == "--help") {
            options.help = true;
        } else if (name == "--version") {
            options.version = true;
        }
    }

    if (positional.empty()) {
        if (options.help || options.version) {
            return options;
        }
        throw UsageError("no command given");
    }
    const std::string& command = positional[0];
    std::size_t extra = positional.size() - 1;
    if (command == "names") {
        options.command = Command::Names;
        if (extra != 0) {
            throw UsageError("names takes no arguments");
        }
    } else if (command == "eval") {
        options.command = Command::Eval;
        if (extra == 0) {
            throw UsageError("eval needs an expression name");
        }
        options.expressionName = positional[1];
        for (std::size_t i = 2; i < positional.size(); ++i) {
            options.properties.push_back(splitAssignment(positional[i], "a property"));
        }
    } else if (command == "batch") {
        options.command = Command::Batch;
        if (extra > 1) {
            throw UsageError("batch takes at most one file");
        }
        if (extra == 1) {
            options.batchFromFile = true;
            options.batchFile = positional[1];
        }
    } else if (command == "inventory") {
        options.command = Command::Inventory;
        if (extra != 0) {
            throw UsageError("inventory takes no arguments");
        }
    } else if (command == "match") {
        options.command = Command::Match;
        if (extra != 0) {
            throw UsageError("match takes no arguments; the catalog comes with --catalog FILE");
        }
        if (options.catalogFile.empty()) {
            throw UsageError("match needs --catalog FILE");
        }
    } else {
        throw UsageError("unknown command '" + command + "'");
    }
    if (formatGiven && options.command != Command::Inventory && options.command != Command::Match) {
        throw UsageError("--format applies to inventory and match only");
    }
    if (options.command == Command::Match &&
        (options.format == InventoryFormat::CycloneDx || options.format == InventoryFormat::Spdx)) {
        throw UsageError("--format cyclonedx and spdx apply to inventory only");
    }
    if (!options.catalogFile.empty() && options.command != Command::Match) {
        throw UsageError("--catalog applies to match only");
    }
    return options;
}

std::string usageText() {
    return "usage: regscan [OPTIONS] COMMAND [ARGUMENTS]\n"
           "\n"
           "Commands:\n"
           "  names                       the plug-in's expression names, one a line\n"
           "  eval NAME [PROP=VALUE ...]  evaluate one expression with the given properties\n"
           "  batch [FILE]                answer JSON requests, one a line (standard input\n"
           "                              without FILE)\n"
           "  inventory [--format table|json|csv]\n"
           "                              list the packages of every known registry; the\n"
           "                              Tessel catalog only with --set pdxDirectory=DIR\n"
           "                              (the product directory), its uncommitted and\n"
           "                              removed packages only with --set\n"
           "                              showUncommittedPackages=true and\n"
           "                              showRemovedPackages=true, and its state fields\n"
           "                              (isInstalled, isCommitted, backupState, ...) in\n"
           "                              json output\n"
           "  match --catalog FILE [--format table|json|csv]\n"
           "                              evaluate every signature of FILE (a JSON array of\n"
           "                              {\"id\", \"vendor\", \"name\", \"version\",\n"
           "                              \"ignoreCase\"} glob patterns) as PackageInfoMatch, "
           "then\n"
           "                              list the packages that no signature recognised\n"
           "\n"
           "Options:\n"
           "  --plugin PATH        the plug-in library (default: ../lib/libRegPlugin.so\n"
           "                       beside the program, then libRegPlugin.so beside it)\n"
           "  --set NAME=VALUE     set a plug-in configuration property (repeatable); for\n"
           "                       truth-valued properties true/yes/1 and false/no/0 are\n"
           "                       accepted in any case\n"
           "  --trace LEVEL        write trace lines of level 1 to 3 (1 failures, 2 warnings,\n"
           "                       3 information)\n"
           "  --trace-file PATH    append trace lines to PATH (default: standard error)\n"
           "  --help               show this text\n"
           "  --version            show the versions of regscan and of the plug-in\n"
           "\n"
           "Exit status: 0 success; 1 batch input had bad lines, or catalog entries were\n"
           "invalid; 2 usage error (also: the catalog cannot be read); 3 the plug-in\n"
           "answered with an error code (inventory: no registry could be listed); 4 the\n"
           "plug-in cannot be loaded; 5 internal error.\n";
}

}  // namespace regscan
