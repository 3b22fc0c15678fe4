#include "Program.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "Batch.h"
#include "CodeNames.h"
#include "Evaluation.h"
#include "Inventory.h"
#include "Match.h"
#include "Options.h"
#include "OutputFormats.h"
#include "PluginLibrary.h"
#include "Progress.h"
#include "RootView.h"
#include "Sbom.h"
#include "base/Utf8.h"
#include "trace/Tracer.h"

namespace regscan {

const char* const kRegscanVersion = "1.1.1.1";

namespace {

std::string versionText(const PluginSDK::PluginVersion& version) {
    return std::to_string(version.version) + "." + std::to_string(version.release) + "." +
           std::to_string(version.modification) + "." + std::to_string(version.fixLevel);
}

int runNames(PluginSDK::Plugin& plugin, TErrorCode initCode, const CodeNames& names,
             std::ostream& out, std::ostream& err) {
    for (const std::wstring& name : plugin.getExpressionNames()) {
        out << Utf8::encode(name.data(), name.size()) << '\n';
    }
    if (initCode != 0) {
        err << "regscan: initializePlugin: " << names.describe(initCode) << '\n';
        return EXIT_STATUS_CODE;
    }
    return EXIT_STATUS_OK;
}

int runEval(PluginSDK::Plugin& plugin, const Options& options, const CodeNames& names,
            std::ostream& out, std::ostream& err) {
    Evaluation evaluation = evaluateExpression(plugin, options.expressionName, options.properties);
    switch (evaluation.kind) {
        case Evaluation::Kind::NotCreated:
            if (evaluation.code == 0) {
                err << "regscan: the plug-in created no expression " << options.expressionName
                    << '\n';
                return EXIT_STATUS_CODE;
            }
            break;
        case Evaluation::Kind::Unsupported:
            err << "regscan: expression " << options.expressionName
                << " is neither scalar nor vector\n";
            return EXIT_STATUS_CODE;
        case Evaluation::Kind::Scalar:
            if (evaluation.code == 0 || !evaluation.scalar.empty()) {
                out << evaluation.scalar << '\n';
            }
            break;
        case Evaluation::Kind::Vector:
            for (const std::string& key : evaluation.keys) {
                out << key << '\n';
            }
            break;
    }
    if (evaluation.code != 0) {
        err << names.describe(evaluation.code) << '\n';
        return EXIT_STATUS_CODE;
    }
    return EXIT_STATUS_OK;
}

// Opens a file named on the command line; false, with the message, when it cannot
// be read. Done before --root replaces the root, so the name is this machine's.
bool openInput(const std::string& path, const char* what, std::ifstream& file, std::ostream& err) {
    struct stat info;
    if (stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        err << "regscan: cannot read " << what << path << ": it is a directory\n";
        return false;
    }
    file.open(path, std::ios::binary);
    if (!file) {
        err << "regscan: cannot open " << what << path << ": " << std::strerror(errno) << '\n';
        return false;
    }
    return true;
}

int runBatch(PluginSDK::Plugin& plugin, const Options& options, std::istream& in,
             std::istream& file, std::ostream& out) {
    BatchSession session(plugin);
    return session.run(options.batchFromFile ? file : in, out);
}

// Progress goes to standard error, when it is a terminal, unless --quiet was given
// or trace lines are written there.
bool showProgress(const Options& options) {
    return !options.quiet && !(options.traceLevel > 0 && !options.traceFileGiven);
}

int runInventory(PluginSDK::Plugin& plugin, const Options& options, const CodeNames& names,
                 std::ostream& out, std::ostream& err) {
    const bool sbom =
        options.format == InventoryFormat::CycloneDx || options.format == InventoryFormat::Spdx;
    const SbomSettings sbomSettings = {options.sbomTimestamp, options.sbomSerial};
    if (sbom) {
        std::string problem = checkSbomSettings(sbomSettings);
        if (!problem.empty()) {
            err << "regscan: " << problem << '\n';
            return EXIT_STATUS_USAGE;
        }
    }
    std::vector<RegistrySource> registries =
        configuredRegistries(knownRegistries(), options.settings);
    ProgressLine progress(STDERR_FILENO, showProgress(options));
    Inventory inventory = collectInventory(plugin, sbom ? withSbomFields(registries) : registries,
                                           names, progress.callback());
    progress.clear();
    for (const RegistryFailure& failure : inventory.failures) {
        err << failure.message << '\n';
    }
    switch (options.format) {
        case InventoryFormat::Table:
            writeTable(out, inventory.records);
            break;
        case InventoryFormat::Json:
            writeJson(out, inventory.records);
            break;
        case InventoryFormat::Csv:
            writeCsv(out, inventory.records);
            break;
        case InventoryFormat::CycloneDx:
            writeCycloneDx(out, inventory.records, sbomSettings);
            break;
        case InventoryFormat::Spdx:
            writeSpdx(out, inventory.records, sbomSettings);
            break;
    }
    out.flush();
    return inventory.listedRegistries > 0 ? EXIT_STATUS_OK : EXIT_STATUS_CODE;
}

int runMatchCommand(PluginSDK::Plugin& plugin, const Options& options, const CodeNames& names,
                    std::istream& file, std::ostream& out, std::ostream& err) {
    std::vector<Signature> catalog;
    try {
        catalog = readCatalog(file);
    } catch (const CatalogError& e) {
        err << "regscan: cannot read catalog " << options.catalogFile << ": " << e.what() << '\n';
        return EXIT_STATUS_USAGE;
    }
    bool invalid = false;
    for (const Signature& signature : catalog) {
        if (!signature.problem.empty()) {
            err << "regscan: " << options.catalogFile << ": " << signature.problem << '\n';
            invalid = true;
        }
    }
    ProgressLine progress(STDERR_FILENO, showProgress(options));
    MatchReport report = runMatch(plugin, catalog, progress.callback());
    progress.clear();
    bool failed = !report.unknown.available || report.unknown.initCode != 0;
    for (const SignatureResult& result : report.signatures) {
        if (result.evaluated && result.code != 0) {
            err << "regscan: signature " << result.signature.id << ": "
                << names.describe(result.code) << '\n';
            failed = true;
        }
    }
    if (report.unknown.available && report.unknown.initCode != 0) {
        err << "regscan: unknown software: " << names.describe(report.unknown.initCode) << '\n';
    }
    switch (options.format) {
        case InventoryFormat::Table:
            writeMatchTable(out, report, names);
            break;
        case InventoryFormat::Json:
            writeMatchJson(out, report, names);
            break;
        case InventoryFormat::Csv:
        case InventoryFormat::CycloneDx:  // refused by the option parser
        case InventoryFormat::Spdx:
            writeMatchCsv(out, report, names);
            break;
    }
    out.flush();
    if (invalid) {
        return EXIT_STATUS_BAD_REQUEST;
    }
    return failed ? EXIT_STATUS_CODE : EXIT_STATUS_OK;
}

}  // namespace

int runProgram(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
               std::ostream& err) {
    Options options;
    try {
        options = parseOptions(args);
    } catch (const UsageError& e) {
        err << "regscan: " << e.what() << "\n"
            << "usage: regscan [OPTIONS] names | eval NAME [PROP=VALUE ...] | batch [FILE] |\n"
            << "       inventory [--format table|json|csv|cyclonedx|spdx] |\n"
            << "       match --catalog FILE [--format table|json|csv]\n"
            << "Try 'regscan --help' or 'regscan COMMAND --help' for more.\n";
        return EXIT_STATUS_USAGE;
    }
    if (options.help) {
        out << options.helpText;
        return EXIT_STATUS_OK;
    }

    // The command line overrides the tracer's environment settings: --trace without
    // --trace-file writes to standard error.
    if (options.traceFileGiven || options.traceLevel > 0) {
        int error =
            Tracer::setOutputFile(options.traceFileGiven ? options.traceFile.c_str() : nullptr);
        if (error != 0) {
            err << "regscan: cannot open trace file " << options.traceFile << ": "
                << std::strerror(error) << '\n';
            return EXIT_STATUS_USAGE;
        }
    }
    if (options.traceLevel > 0) {
        Tracer::setLevel(options.traceLevel);
    }

    if (options.version) {
        out << "regscan " << kRegscanVersion << '\n';
    }
    // The plug-in is loaded from this machine, before the view of the root is made.
    std::string path = options.pluginPath.empty() ? defaultPluginPath() : options.pluginPath;
    std::string loadError;
    std::unique_ptr<PluginLibrary> library = PluginLibrary::open(path, loadError);
    if (!library) {
        err << "regscan: " << loadError << '\n';
        return EXIT_STATUS_NO_PLUGIN;
    }
    PluginSDK::Plugin& plugin = library->plugin();
    if (options.version) {
        const wchar_t* name = plugin.getName();
        out << "plug-in " << Utf8::encode(name) << ' ' << versionText(plugin.getVersion()) << " ("
            << library->path() << ")\n";
        if (options.command == Command::None) {
            return EXIT_STATUS_OK;
        }
    }

    std::ifstream inputFile;
    if ((options.command == Command::Batch && options.batchFromFile &&
         !openInput(options.batchFile, "", inputFile, err)) ||
        (options.command == Command::Match &&
         !openInput(options.catalogFile, "catalog ", inputFile, err))) {
        return EXIT_STATUS_USAGE;
    }

    if (!options.rootDir.empty()) {
        int status = enterRoot(options, err);
        if (status != 0) {
            return status;
        }
    }

    CodeNames names;
    names.load([&library](const char* symbol) { return library->findSymbol(symbol); });

    for (const auto& setting : options.settings) {
        std::wstring name = Utf8::decode(setting.first.data(), setting.first.size());
        std::wstring value = Utf8::decode(setting.second.data(), setting.second.size());
        plugin.setProperty(name.c_str(), value.c_str());
    }
    TErrorCode initCode = plugin.initializePlugin();
    if (initCode != 0 && options.command != Command::Names) {
        err << "regscan: initializePlugin: " << names.describe(initCode) << '\n';
    }

    switch (options.command) {
        case Command::Names:
            return runNames(plugin, initCode, names, out, err);
        case Command::Eval:
            return runEval(plugin, options, names, out, err);
        case Command::Batch:
            return runBatch(plugin, options, in, inputFile, out);
        case Command::Inventory:
            return runInventory(plugin, options, names, out, err);
        case Command::Match:
            return runMatchCommand(plugin, options, names, inputFile, out, err);
        case Command::None:
            break;
    }
    return EXIT_STATUS_OK;
}

}  // namespace regscan
