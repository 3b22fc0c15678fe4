// Software recognition, the job a host agent does with the plug-in: every signature
// of a catalog is evaluated as one "PackageInfoMatch", then the unknown-software
// iterator lists what no signature recognised.
#ifndef REGSCAN_MATCH_H
#define REGSCAN_MATCH_H

#include <istream>
#include <map>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CodeNames.h"
#include "Evaluation.h"
#include "Options.h"
#include "PluginSDK/Plugin.h"
#include "PluginSDK/Types.h"
#include "Progress.h"

namespace regscan {

// One catalog entry. The patterns are in the host's glob language.
struct Signature {
    std::string id;  // the entry's "id", or "#N" (its position from 1) without one
    std::string vendor;
    std::string name;
    std::string version;
    std::optional<std::string> ignoreCase;  // "true" / "false", or a text as given
    std::string problem;  // why the entry is not evaluated; empty for a good entry
};

// The catalog could not be read at all (not JSON, not an array); what() says why.
class CatalogError : public std::runtime_error {
  public:
    explicit CatalogError(const std::string& message) : std::runtime_error(message) {}
};

// Reads a catalog: a JSON array of objects {"id", "vendor", "name", "version",
// "ignoreCase"}. "vendor", "name" and "version" are required strings; "id" is an
// optional string; "ignoreCase" an optional boolean (or the text "true" / "false",
// which is passed on as it is). An entry that breaks these rules, or whose pattern
// does not compile, is kept with its `problem` set, naming the entry. Throws
// CatalogError when the text is not a JSON array.
std::vector<Signature> readCatalog(std::istream& in);

struct SignatureResult {
    Signature signature;
    bool evaluated = false;  // false: the entry has a problem
    TErrorCode code = 0;
    bool recognised = false;
};

struct MatchReport {
    std::vector<SignatureResult> signatures;
    UnknownListing unknown;
    // Unrecognised packages without a vendor, by provider tag: PackageInfoMatch
    // cannot recognise them whatever the catalog says.
    std::map<std::string, int> withoutVendor;
};

// Turns "listUnmatchedSoftware" on, evaluates every good signature in catalog order
// and then walks the unknown-software iterator. `progress`, when given, hears of
// each signature evaluated (the first one loads the registries) and of the walk.
MatchReport runMatch(PluginSDK::Plugin& plugin, const std::vector<Signature>& catalog,
                     const ProgressCallback& progress = {});

// The report for people: the signatures with recognised yes / no / error / invalid,
// then the unrecognised packages, then one line per registry whose packages carry no
// vendor.
void writeMatchTable(std::ostream& out, const MatchReport& report, const CodeNames& names);
// {"signatures": [...], "unrecognised": [...], "withoutVendor": {TAG: N}}.
void writeMatchJson(std::ostream& out, const MatchReport& report, const CodeNames& names);
// One CSV table, lines ended by CR LF: a "kind" column ("signature" or
// "unrecognised") and the columns of both.
void writeMatchCsv(std::ostream& out, const MatchReport& report, const CodeNames& names);

}  // namespace regscan

#endif
