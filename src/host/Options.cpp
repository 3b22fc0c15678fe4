#include "Options.h"

#include <algorithm>
#include <cctype>

#include <CLI/CLI.hpp>

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

namespace {

const char* const kExitStatusText =
    "Exit status: 0 success; 1 batch input had bad lines, or catalog entries were\n"
    "invalid; 2 usage error (also: the catalog cannot be read, the --root view\n"
    "cannot be made); 3 the plug-in answered with an error code (inventory: no\n"
    "registry could be listed); 4 the plug-in cannot be loaded; 5 internal error.\n";

// The command line's grammar. Options of the whole program may also follow the
// command word (fallthrough); a command's own options only follow it.
class CommandLine {
  public:
    explicit CommandLine(Options& options) : options_(options) {
        app_.description(
            "Lists and evaluates the software inventory of this machine (or of a\n"
            "system mounted at --root) through the RegPlugin plug-in.");
        app_.footer(kExitStatusText);
        app_.fallthrough();
        app_.get_formatter()->column_width(24);
        app_.require_subcommand(0, 1);
        app_.set_help_flag("-h,--help", "show this text (after a command: the command's)");
        app_.add_option("--plugin", options_.pluginPath,
                        "the plug-in library (default: lib/regscan/ of the\n"
                        "installation, or ../lib/ beside the program)")
            ->type_name("PATH")
            ->check(nonEmpty("--plugin needs a path"));
        app_.add_option("--set", settings_,
                        "set a plug-in configuration property (repeatable);\n"
                        "truth values: true/yes/1, false/no/0, in any case")
            ->type_name("NAME=VALUE")
            ->allow_extra_args(false);
        app_.add_option("--trace", options_.traceLevel,
                        "write trace lines up to LEVEL (1 failures, 2 warnings,\n3 information)")
            ->type_name("LEVEL")
            ->check(traceLevel());
        app_.add_option("--trace-file", options_.traceFile,
                        "append trace lines to PATH (default: standard error)")
            ->type_name("PATH")
            ->check(nonEmpty("--trace-file needs a path"));
        app_.add_option("--root", options_.rootDir,
                        "answer for the system mounted at DIR (an image or an\n"
                        "unpacked container root); never runs its programs,\n"
                        "so not with --set pdxDirectory")
            ->type_name("DIR")
            ->check(nonEmpty("--root needs a directory"));
        app_.add_flag("--quiet", options_.quiet, "no progress lines on a terminal");
        app_.add_flag("--version", options_.version,
                      "show the versions of regscan and of the plug-in");

        CLI::App* names =
            app_.add_subcommand("names", "the plug-in's expression names, one a line");
        names->callback([this] { options_.command = Command::Names; });

        CLI::App* eval =
            app_.add_subcommand("eval", "evaluate one expression with the given properties");
        eval->add_option("NAME", options_.expressionName, "the expression's name")->required();
        eval->add_option("PROPERTY", properties_, "the expression's properties, NAME=VALUE");
        eval->callback([this] { options_.command = Command::Eval; });

        CLI::App* batch =
            app_.add_subcommand("batch", "answer JSON requests, one a line, from FILE or stdin");
        batch->add_option("FILE", options_.batchFile, "the requests");
        batch->callback([this, batch] {
            options_.command = Command::Batch;
            options_.batchFromFile = batch->count("FILE") > 0;
        });

        CLI::App* inventory =
            app_.add_subcommand("inventory", "list the packages of every known registry");
        inventory->footer(
            "The Tessel catalog is listed only with --set pdxDirectory=DIR (the product\n"
            "directory); its uncommitted and removed packages only with --set\n"
            "showUncommittedPackages=true and --set showRemovedPackages=true. Its state\n"
            "fields (isInstalled, isCommitted, backupState, rebootRequired, isDiscovered,\n"
            "isHidden, errorState, uninstData), and an Orlo product's kind and TAG_FILE,\n"
            "appear in json output only. cyclonedx and spdx write a software bill of\n"
            "materials (CycloneDX 1.5 JSON, SPDX 2.3 JSON).");
        addFormat(inventory, {"table", "json", "csv", "cyclonedx", "spdx"});
        inventory->add_option("--sbom-timestamp", options_.sbomTimestamp,
                              "the SBOM's creation time (default: now), "
                              "e.g.\n2026-01-01T00:00:00Z, so that output can be compared");
        inventory->add_option("--sbom-serial", options_.sbomSerial,
                              "the SBOM's serial number, a UUID (default: a random one)");
        inventory->callback([this] { options_.command = Command::Inventory; });

        CLI::App* match =
            app_.add_subcommand("match",
                                "recognise software by a catalog of signatures, then list\n"
                                "the packages that no signature recognised");
        match->footer(
            "The catalog is a JSON array of objects {\"id\", \"vendor\", \"name\",\n"
            "\"version\", \"ignoreCase\"}; vendor, name and version are glob patterns,\n"
            "each signature evaluated as PackageInfoMatch.");
        match->add_option("--catalog", options_.catalogFile, "the signatures")
            ->type_name("FILE")
            ->required()
            ->check(nonEmpty("--catalog needs a path"));
        addFormat(match, {"table", "json", "csv"});
        match->callback([this] { options_.command = Command::Match; });
    }

    void parse(const std::vector<std::string>& args) {
        // CLI11 takes the arguments last first.
        std::vector<std::string> reversed(args.rbegin(), args.rend());
        try {
            app_.parse(reversed);
        } catch (const CLI::CallForHelp&) {
            options_.help = true;
            options_.helpText = app_.help();
            return;
        } catch (const CLI::ParseError& e) {
            throw UsageError(e.what());
        }
        options_.traceFileGiven = app_.count("--trace-file") > 0;
        for (const std::string& setting : settings_) {
            std::pair<std::string, std::string> pair = splitAssignment(setting, "--set");
            options_.settings.emplace_back(pair.first, configurationValue(pair.first, pair.second));
        }
        for (const std::string& property : properties_) {
            options_.properties.push_back(splitAssignment(property, "a property"));
        }
        if (options_.command == Command::None && !options_.version) {
            throw UsageError("no command given");
        }
    }

  private:
    static CLI::Validator nonEmpty(const std::string& message) {
        return CLI::Validator(
            [message](std::string& value) { return value.empty() ? message : std::string(); }, "");
    }

    static CLI::Validator traceLevel() {
        return CLI::Validator(
            [](std::string& value) {
                return value == "1" || value == "2" || value == "3"
                           ? std::string()
                           : "--trace takes a level from 1 to 3, not '" + value + "'";
            },
            "");
    }

    void addFormat(CLI::App* command, const std::vector<std::string>& formats) {
        std::string list;
        for (const std::string& format : formats) {
            list += (list.empty() ? "" : "|") + format;
        }
        command
            ->add_option_function<std::string>(
                "--format",
                [this](const std::string& value) {
                    static const std::pair<const char*, InventoryFormat> kFormats[] = {
                        {"table", InventoryFormat::Table},
                        {"json", InventoryFormat::Json},
                        {"csv", InventoryFormat::Csv},
                        {"cyclonedx", InventoryFormat::CycloneDx},
                        {"spdx", InventoryFormat::Spdx},
                    };
                    for (const auto& format : kFormats) {
                        if (value == format.first) {
                            options_.format = format.second;
                        }
                    }
                },
                "the output format (default: table)")
            ->type_name(list)
            ->check(CLI::IsMember(formats).description(""));
    }

    Options& options_;
    CLI::App app_{"", "regscan"};
    std::vector<std::string> settings_;
    std::vector<std::string> properties_;
};

}  // namespace

Options parseOptions(const std::vector<std::string>& args) {
    Options options;
    CommandLine(options).parse(args);
    return options;
}

std::string usageText() {
    Options options;
    CommandLine line(options);
    line.parse({"--help"});
    return options.helpText;
}

}  // namespace regscan
