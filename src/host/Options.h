// The command line of regscan: global options, the command and its arguments.
#ifndef REGSCAN_OPTIONS_H
#define REGSCAN_OPTIONS_H

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace regscan {

// The program's exit statuses.
enum ExitStatus {
    EXIT_STATUS_OK = 0,
    EXIT_STATUS_BAD_REQUEST = 1,  // batch: a line was not a valid request; match: an entry
    EXIT_STATUS_USAGE = 2,        // the command line is wrong, or its input cannot be opened
    EXIT_STATUS_CODE = 3,         // the plug-in answered with a non-zero code / nothing listed
    EXIT_STATUS_NO_PLUGIN = 4,    // the plug-in cannot be loaded
    EXIT_STATUS_INTERNAL = 5,     // regscan itself failed (out of memory, ...)
};

enum class Command { None, Names, Eval, Batch, Inventory, Match };
// Table, Json and Csv are also the formats of match; the two SBOM formats are the
// inventory's only.
enum class InventoryFormat { Table, Json, Csv, CycloneDx, Spdx };

typedef std::vector<std::pair<std::string, std::string>> PropertyList;

struct Options {
    std::string pluginPath;  // empty: the default location
    // --set NAME=VALUE pairs in command-line order, values already mapped by
    // configurationValue().
    PropertyList settings;
    int traceLevel = 0;  // 0: --trace not given
    bool traceFileGiven = false;
    std::string traceFile;
    bool help = false;
    std::string helpText;  // with help: the text of the program or of its command
    bool version = false;

    Command command = Command::None;
    std::string expressionName;  // eval
    PropertyList properties;     // eval, in command-line order
    bool batchFromFile = false;  // batch: false reads standard input
    std::string batchFile;
    InventoryFormat format = InventoryFormat::Table;
    std::string catalogFile;  // match
    // inventory --format cyclonedx|spdx: fixed document timestamp and serial number
    // (empty: the current time, a random serial), so that output can be compared.
    std::string sbomTimestamp;
    std::string sbomSerial;
    std::string rootDir;  // --root DIR: answer for the system mounted at DIR
    bool quiet = false;   // --quiet: no progress on a terminal
};

// A command line that cannot be run; what() says what is wrong.
class UsageError : public std::runtime_error {
  public:
    explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

// Parses the arguments that follow the program name. The program's options may come
// before or after the command word, a command's own options (--format, --catalog,
// ...) after it; "--" ends option processing. Both "--opt VALUE" and "--opt=VALUE"
// are accepted. Throws UsageError; with --help or --version the command may be
// missing.
Options parseOptions(const std::vector<std::string>& args);

// True for the plug-in's five truth-valued configuration properties.
bool isTruthProperty(const std::string& name);

// The value that --set passes to the plug-in: for a truth-valued property,
// true/yes/1 and false/no/0 (in any case) become the host's true and false texts;
// every other value, and every value of another property, is returned as given so
// that the plug-in's own rejection shows.
std::string configurationValue(const std::string& name, const std::string& value);

// The program's --help text.
std::string usageText();

}  // namespace regscan

#endif
