#include "Match.h"

#include <nlohmann/json.hpp>

#include "CodeNames.h"
#include "OutputFormats.h"
#include "PluginSDK/PluginResult.h"
#include "base/GlobFilter.h"
#include "base/Utf8.h"

namespace regscan {

namespace {

typedef nlohmann::ordered_json Json;

const char* globProblem(int code) {
    switch (code) {
        case GlobFilter::GLOB_UNTERMINATED_CLASS:
            return "a \"[\" without its \"]\"";
        case GlobFilter::GLOB_TRAILING_ESCAPE:
            return "a \"\\\" at the end";
        default:
            return "not a valid pattern";
    }
}

// Text shown for an entry in messages: its id and position.
std::string entryName(std::size_t index, const std::string& id) {
    std::string text = "entry " + std::to_string(index + 1);
    if (!id.empty() && id[0] != '#') {
        text += " (id \"" + id + "\")";
    }
    return text;
}

Signature readEntry(const Json& entry, std::size_t index) {
    Signature signature;
    signature.id = "#" + std::to_string(index + 1);
    if (!entry.is_object()) {
        signature.problem = entryName(index, "") + ": not an object";
        return signature;
    }
    if (entry.contains("id")) {
        if (!entry["id"].is_string()) {
            signature.problem = entryName(index, "") + ": \"id\" must be a string";
            return signature;
        }
        signature.id = entry["id"].get<std::string>();
    }
    const std::string name = entryName(index, signature.id);
    const std::pair<const char*, std::string*> patterns[] = {
        {"vendor", &signature.vendor},
        {"name", &signature.name},
        {"version", &signature.version},
    };
    for (const auto& [field, target] : patterns) {
        if (!entry.contains(field)) {
            signature.problem = name + ": no \"" + field + "\"";
            return signature;
        }
        if (!entry[field].is_string()) {
            signature.problem = name + ": \"" + field + "\" must be a string";
            return signature;
        }
        *target = entry[field].get<std::string>();
    }
    if (entry.contains("ignoreCase")) {
        const Json& value = entry["ignoreCase"];
        if (value.is_boolean()) {
            signature.ignoreCase = value.get<bool>() ? "true" : "false";
        } else if (value.is_string()) {
            signature.ignoreCase = value.get<std::string>();
        } else {
            signature.problem = name + ": \"ignoreCase\" must be true or false";
            return signature;
        }
    }
    for (const auto& [field, target] : patterns) {
        GlobFilter filter;
        const std::wstring pattern = Utf8::decode(target->data(), target->size());
        const int code = filter.compile(pattern.c_str(), false);
        if (code != GlobFilter::GLOB_OK) {
            signature.problem =
                name + ": the " + field + " pattern does not compile (" + globProblem(code) + ")";
            return signature;
        }
    }
    return signature;
}

const char* recognisedText(const SignatureResult& result) {
    if (!result.evaluated) {
        return "invalid";
    }
    if (result.code != 0) {
        return "error";
    }
    return result.recognised ? "yes" : "no";
}

std::string noteOf(const SignatureResult& result, const CodeNames& names) {
    if (!result.evaluated) {
        return result.signature.problem;
    }
    return result.code != 0 ? names.describe(result.code) : std::string();
}

std::string withoutVendorLine(const std::string& provider, int count) {
    return provider + ": " + std::to_string(count) + (count == 1 ? " package" : " packages") +
           " without a vendor cannot be recognised";
}

}  // namespace

std::vector<Signature> readCatalog(std::istream& in) {
    Json catalog;
    try {
        catalog = Json::parse(in);
    } catch (const Json::parse_error& e) {
        throw CatalogError(std::string("not JSON: ") + e.what());
    }
    if (!catalog.is_array()) {
        throw CatalogError("not a JSON array of signatures");
    }
    std::vector<Signature> signatures;
    signatures.reserve(catalog.size());
    for (std::size_t i = 0; i < catalog.size(); ++i) {
        signatures.push_back(readEntry(catalog[i], i));
    }
    return signatures;
}

MatchReport runMatch(PluginSDK::Plugin& plugin, const std::vector<Signature>& catalog,
                     const ProgressCallback& progress) {
    plugin.setProperty(L"listUnmatchedSoftware", PLUGIN_RESULT_TRUE);
    MatchReport report;
    report.signatures.reserve(catalog.size());
    // One expression serves every signature; "ignoreCase" is removed where a
    // signature has none.
    ExpressionHandle expression(plugin, "PackageInfoMatch");
    std::size_t done = 0;
    for (const Signature& signature : catalog) {
        if (progress) {
            // Before the evaluation: the first one reads every registry.
            progress(done == 0 ? "reading the registries" : "evaluating signatures", done,
                     catalog.size());
        }
        ++done;
        SignatureResult result;
        result.signature = signature;
        if (signature.problem.empty()) {
            result.evaluated = true;
            expression.setProperty("vendor", signature.vendor);
            expression.setProperty("name", signature.name);
            expression.setProperty("version", signature.version);
            expression.removeProperty("ignoreCase");
            if (signature.ignoreCase) {
                expression.setProperty("ignoreCase", *signature.ignoreCase);
            }
            Evaluation evaluation = expression.evaluate();
            result.code = evaluation.code;
            result.recognised = evaluation.kind == Evaluation::Kind::Scalar &&
                                evaluation.scalar == Utf8::encode(PLUGIN_RESULT_TRUE);
        }
        report.signatures.push_back(std::move(result));
    }
    if (progress) {
        progress("listing unrecognised software", 0, 0);
    }
    report.unknown = listUnknownSoftware(plugin);
    for (const UnknownPackage& package : report.unknown.packages) {
        if (!package.vendor) {
            ++report.withoutVendor[package.provider.value_or("?")];
        }
    }
    return report;
}

void writeMatchTable(std::ostream& out, const MatchReport& report, const CodeNames& names) {
    std::vector<std::vector<std::string>> rows = {
        {"SIGNATURE", "RECOGNISED", "VENDOR", "NAME", "VERSION", "NOTE"}};
    for (const SignatureResult& result : report.signatures) {
        const Signature& s = result.signature;
        rows.push_back(
            {s.id, recognisedText(result), s.vendor, s.name, s.version, noteOf(result, names)});
    }
    writeColumns(out, rows);
    out << '\n';
    rows = {{"PROVIDER", "VENDOR", "NAME", "VERSION", "INSTALL DIRECTORY"}};
    for (const UnknownPackage& package : report.unknown.packages) {
        rows.push_back({package.provider.value_or(""), package.vendor.value_or(""),
                        package.name.value_or(""), package.version.value_or(""),
                        package.installDir.value_or("")});
    }
    writeColumns(out, rows);
    for (const auto& [provider, count] : report.withoutVendor) {
        out << '\n' << withoutVendorLine(provider, count);
    }
    if (!report.withoutVendor.empty()) {
        out << '\n';
    }
}

void writeMatchJson(std::ostream& out, const MatchReport& report, const CodeNames& names) {
    Json signatures = Json::array();
    for (const SignatureResult& result : report.signatures) {
        const Signature& s = result.signature;
        Json entry = {{"id", s.id}, {"vendor", s.vendor}, {"name", s.name}, {"version", s.version}};
        if (s.ignoreCase) {
            entry["ignoreCase"] = *s.ignoreCase;
        }
        if (!result.evaluated) {
            entry["recognised"] = nullptr;
            entry["error"] = s.problem;
        } else {
            entry["recognised"] = result.code == 0 && result.recognised;
            entry["code"] = result.code;
            if (result.code != 0) {
                entry["error"] = names.describe(result.code);
            }
        }
        signatures.push_back(std::move(entry));
    }
    Json unrecognised = Json::array();
    for (const UnknownPackage& package : report.unknown.packages) {
        Json entry = Json::object();
        const std::pair<const char*, const std::optional<std::string>*> fields[] = {
            {"provider", &package.provider},
            {"vendor", &package.vendor},
            {"name", &package.name},
            {"version", &package.version},
            {"installDir", &package.installDir}};
        for (const auto& [field, value] : fields) {
            if (*value) {
                entry[field] = **value;
            }
        }
        unrecognised.push_back(std::move(entry));
    }
    Json withoutVendor = Json::object();
    for (const auto& [provider, count] : report.withoutVendor) {
        withoutVendor[provider] = count;
    }
    Json document = {{"signatures", std::move(signatures)},
                     {"unrecognised", std::move(unrecognised)},
                     {"withoutVendor", std::move(withoutVendor)}};
    out << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void writeMatchCsv(std::ostream& out, const MatchReport& report, const CodeNames& names) {
    auto row = [&out](std::initializer_list<std::string> cells) {
        bool first = true;
        for (const std::string& cell : cells) {
            out << (first ? "" : ",") << csvField(cell);
            first = false;
        }
        out << "\r\n";
    };
    row({"kind", "id", "recognised", "provider", "vendor", "name", "version", "installDir",
         "note"});
    for (const SignatureResult& result : report.signatures) {
        const Signature& s = result.signature;
        row({"signature", s.id, recognisedText(result), "", s.vendor, s.name, s.version, "",
             noteOf(result, names)});
    }
    for (const UnknownPackage& package : report.unknown.packages) {
        const std::string provider = package.provider.value_or("");
        row({"unrecognised", "", "no", provider, package.vendor.value_or(""),
             package.name.value_or(""), package.version.value_or(""),
             package.installDir.value_or(""),
             package.vendor ? "" : "no vendor: cannot be recognised"});
    }
}

}  // namespace regscan
