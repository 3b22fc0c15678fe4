#include "Sbom.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <map>
#include <random>
#include <set>

#include "Program.h"
#include "base/Utf8.h"

namespace regscan {

namespace {

typedef nlohmann::ordered_json Json;

const char kRegistryProperty[] = "regscan:registry";
const char kKeyProperty[] = "regscan:key";
const char kInstallDirProperty[] = "regscan:installDir";

bool isHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

// True when `text` is hex digits in groups of 8-4-4-4-12.
bool isUuid(const std::string& text) {
    if (text.size() != 36) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? text[i] != '-' : !isHex(text[i])) {
            return false;
        }
    }
    return true;
}

std::string withoutUrnPrefix(const std::string& serial) {
    static const std::string prefix = "urn:uuid:";
    if (serial.size() >= prefix.size()) {
        std::string head = serial.substr(0, prefix.size());
        std::transform(head.begin(), head.end(), head.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (head == prefix) {
            return serial.substr(prefix.size());
        }
    }
    return serial;
}

bool isTimestamp(const std::string& text) {
    static const char shape[] = "dddd-dd-ddTdd:dd:ddZ";
    if (text.size() != sizeof shape - 1) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool digit = std::isdigit(static_cast<unsigned char>(text[i])) != 0;
        if (shape[i] == 'd' ? !digit : text[i] != shape[i]) {
            return false;
        }
    }
    return true;
}

std::string nowUtc() {
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

std::string randomUuid() {
    std::random_device device;  // /dev/urandom or the processor's generator
    unsigned char bytes[16];
    for (std::size_t i = 0; i < sizeof bytes; i += 4) {
        unsigned int word = device();
        for (std::size_t j = 0; j < 4; ++j) {
            bytes[i + j] = static_cast<unsigned char>(word >> (8 * j));
        }
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant
    std::string uuid;
    char hex[3];
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            uuid += '-';
        }
        std::snprintf(hex, sizeof hex, "%02x", bytes[i]);
        uuid += hex;
    }
    return uuid;
}

// Control characters would not survive a one-line field (SPDX's supplier).
std::string oneLine(std::string text) {
    for (char& c : text) {
        unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            c = ' ';
        }
    }
    std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        return std::string();
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// rpm prints "(none)" for a tag the package lacks.
bool known(const std::string& value) {
    return !value.empty() && value != "(none)";
}

std::string extraField(const InventoryRecord& record, const char* name) {
    for (const auto& field : record.extraFields) {
        if (field.first == name) {
            return field.second;
        }
    }
    return std::string();
}

// A record with every text made valid UTF-8 and the name filled in from the key.
InventoryRecord cleaned(const InventoryRecord& record) {
    InventoryRecord clean;
    clean.registry = validUtf8(record.registry);
    clean.key = validUtf8(record.key);
    clean.name = validUtf8(record.name.empty() ? record.key : record.name);
    clean.version = validUtf8(record.version);
    clean.vendor = validUtf8(record.vendor);
    clean.installDir = validUtf8(record.installDir);
    clean.description = validUtf8(record.description);
    for (const auto& field : record.extraFields) {
        clean.extraFields.emplace_back(field.first, validUtf8(field.second));
    }
    return clean;
}

// The records cleaned and in output order: registries as they first appear, keys in
// byte order within a registry; equal keys keep their order.
std::vector<InventoryRecord> ordered(const std::vector<InventoryRecord>& records) {
    std::map<std::string, std::size_t> rank;
    for (const InventoryRecord& record : records) {
        rank.emplace(record.registry, rank.size());
    }
    std::vector<InventoryRecord> result;
    result.reserve(records.size());
    for (const InventoryRecord& record : records) {
        result.push_back(cleaned(record));
    }
    std::vector<std::size_t> order(records.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        std::size_t rankA = rank[records[a].registry], rankB = rank[records[b].registry];
        return rankA != rankB ? rankA < rankB : records[a].key < records[b].key;
    });
    std::vector<InventoryRecord> sorted;
    sorted.reserve(order.size());
    for (std::size_t i : order) {
        sorted.push_back(std::move(result[i]));
    }
    return sorted;
}

// Hands out identifiers that are unique within one document: a taken one gets
// "<separator>2", "<separator>3", ... appended.
class UniqueIds {
  public:
    explicit UniqueIds(std::string separator) : m_Separator(std::move(separator)) {}
    std::string take(const std::string& wanted) {
        std::string id = wanted;
        for (unsigned long n = 2; !m_Taken.insert(id).second; ++n) {
            id = wanted + m_Separator + std::to_string(n);
        }
        return id;
    }

  private:
    std::string m_Separator;
    std::set<std::string> m_Taken;
};

// The record's properties for people and programs that read them back: registry,
// key, and the install directory when there is one.
std::vector<std::pair<const char*, std::string>> properties(const InventoryRecord& record) {
    std::vector<std::pair<const char*, std::string>> result = {{kRegistryProperty, record.registry},
                                                               {kKeyProperty, record.key}};
    if (!record.installDir.empty()) {
        result.emplace_back(kInstallDirProperty, record.installDir);
    }
    return result;
}

void writeDocument(std::ostream& out, const Json& document) {
    out << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace

std::string checkSbomSettings(const SbomSettings& settings) {
    if (!settings.timestamp.empty() && !isTimestamp(settings.timestamp)) {
        return "--sbom-timestamp wants a UTC time like 2026-11-23T10:00:00Z, not \"" +
               settings.timestamp + "\"";
    }
    if (!settings.serial.empty() && !isUuid(withoutUrnPrefix(settings.serial))) {
        return "--sbom-serial wants a UUID like 3e671687-395b-41f5-a30f-a58921a69b79, not \"" +
               settings.serial + "\"";
    }
    return std::string();
}

SbomSettings completeSbomSettings(const SbomSettings& settings) {
    SbomSettings complete = settings;
    if (complete.timestamp.empty()) {
        complete.timestamp = nowUtc();
    }
    complete.serial = complete.serial.empty() ? randomUuid() : withoutUrnPrefix(complete.serial);
    std::transform(complete.serial.begin(), complete.serial.end(), complete.serial.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return complete;
}

std::vector<RegistrySource> withSbomFields(std::vector<RegistrySource> registries) {
    for (RegistrySource& source : registries) {
        // rpm's key ends in the architecture too, but a name, version or release
        // holding "-" makes the key ambiguous; its own field is not.
        if (std::string(source.registry) == "rpm") {
            source.extraFields.push_back("arch");
        }
    }
    return registries;
}

std::string validUtf8(const std::string& text) {
    std::wstring wide = Utf8::decode(text.data(), text.size());
    bool replaced = false;
    for (wchar_t& c : wide) {
        if (Utf8::isEscapedByte(c)) {
            c = L'\xFFFD';
            replaced = true;
        }
    }
    return replaced ? Utf8::encode(wide.data(), wide.size()) : text;
}

std::string purlEncode(const std::string& text) {
    static const char hex[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (char c : text) {
        unsigned char byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 && byte < 0x80) {
            encoded += c;
        } else if (c == '.' || c == '-' || c == '_' || c == '~' || c == ':') {
            encoded += c;
        } else {
            encoded += '%';
            encoded += hex[byte >> 4];
            encoded += hex[byte & 0x0F];
        }
    }
    return encoded;
}

std::string packageUrl(const InventoryRecord& record) {
    std::string name = validUtf8(record.name.empty() ? record.key : record.name);
    if (name.empty()) {
        return std::string();
    }
    std::string type = "generic";
    // Qualifiers in key order.
    std::vector<std::pair<const char*, std::string>> qualifiers;
    if (record.registry == "rpm") {
        type = "rpm";
        std::string arch = extraField(record, "arch");
        if (known(arch)) {
            qualifiers.emplace_back("arch", arch);
        }
    } else if (record.registry == "dpkg") {
        type = "deb";
        // Debian package names are lower case; the package URL type says so too.
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) {
            return c < 0x80 ? static_cast<char>(std::tolower(c)) : static_cast<char>(c);
        });
    } else {
        qualifiers.emplace_back("registry", record.registry);
    }
    std::string url = "pkg:" + type + "/" + purlEncode(name);
    if (!record.version.empty()) {
        url += "@" + purlEncode(validUtf8(record.version));
    }
    for (std::size_t i = 0; i < qualifiers.size(); ++i) {
        url += (i == 0 ? "?" : "&") + std::string(qualifiers[i].first) + "=" +
               purlEncode(validUtf8(qualifiers[i].second));
    }
    return url;
}

std::string spdxId(const std::string& text) {
    std::string id = "SPDXRef-";
    for (char c : text) {
        unsigned char byte = static_cast<unsigned char>(c);
        bool allowed = (std::isalnum(byte) != 0 && byte < 0x80) || c == '.' || c == '-';
        id += allowed ? c : '-';
    }
    return id;
}

void writeCycloneDx(std::ostream& out, const std::vector<InventoryRecord>& records,
                    const SbomSettings& settings) {
    SbomSettings complete = completeSbomSettings(settings);
    Json tool = {{"type", "application"}, {"name", "regscan"}, {"version", kRegscanVersion}};
    Json document = {
        {"$schema", "http://cyclonedx.org/schema/bom-1.5.schema.json"},
        {"bomFormat", "CycloneDX"},
        {"specVersion", "1.5"},
        {"serialNumber", "urn:uuid:" + complete.serial},
        {"version", 1},
        {"metadata",
         {{"timestamp", complete.timestamp}, {"tools", {{"components", Json::array({tool})}}}}},
    };
    Json components = Json::array();
    UniqueIds refs("#");
    for (const InventoryRecord& record : ordered(records)) {
        Json component = Json::object();
        component["bom-ref"] = refs.take(record.registry + ":" + record.key);
        component["type"] = "application";
        std::string vendor = oneLine(record.vendor);
        if (known(vendor)) {
            component["supplier"] = {{"name", vendor}};
        }
        component["name"] = record.name;
        if (!record.version.empty()) {
            component["version"] = record.version;
        }
        if (!record.description.empty()) {
            component["description"] = record.description;
        }
        std::string purl = packageUrl(record);
        if (!purl.empty()) {
            component["purl"] = purl;
        }
        Json list = Json::array();
        for (const auto& property : properties(record)) {
            list.push_back({{"name", property.first}, {"value", property.second}});
        }
        component["properties"] = std::move(list);
        components.push_back(std::move(component));
    }
    document["components"] = std::move(components);
    writeDocument(out, document);
}

void writeSpdx(std::ostream& out, const std::vector<InventoryRecord>& records,
               const SbomSettings& settings) {
    SbomSettings complete = completeSbomSettings(settings);
    const std::string creator = std::string("Tool: regscan-") + kRegscanVersion;
    Json document = {
        {"spdxVersion", "SPDX-2.3"},
        {"dataLicense", "CC0-1.0"},
        {"SPDXID", "SPDXRef-DOCUMENT"},
        {"name", "regscan-inventory"},
        {"documentNamespace", "urn:uuid:" + complete.serial},
        {"creationInfo", {{"created", complete.timestamp}, {"creators", Json::array({creator})}}},
    };
    Json packages = Json::array();
    Json relationships = Json::array();
    UniqueIds ids("-");
    ids.take("SPDXRef-DOCUMENT");
    for (const InventoryRecord& record : ordered(records)) {
        Json package = Json::object();
        std::string id = ids.take(spdxId("Package-" + record.registry + "-" + record.key));
        package["SPDXID"] = id;
        package["name"] = record.name;
        if (!record.version.empty()) {
            package["versionInfo"] = record.version;
        }
        std::string vendor = oneLine(record.vendor);
        package["supplier"] = known(vendor) ? "Organization: " + vendor : "NOASSERTION";
        package["downloadLocation"] = "NOASSERTION";
        package["filesAnalyzed"] = false;
        if (!record.description.empty()) {
            package["description"] = record.description;
        }
        std::string purl = packageUrl(record);
        if (!purl.empty()) {
            package["externalRefs"] = Json::array({{{"referenceCategory", "PACKAGE-MANAGER"},
                                                    {"referenceType", "purl"},
                                                    {"referenceLocator", purl}}});
        }
        // SPDX has no free properties: each one is an annotation by this tool.
        Json annotations = Json::array();
        for (const auto& property : properties(record)) {
            annotations.push_back(
                {{"annotationDate", complete.timestamp},
                 {"annotationType", "OTHER"},
                 {"annotator", creator},
                 {"comment", std::string(property.first) + "=" + property.second}});
        }
        package["annotations"] = std::move(annotations);
        packages.push_back(std::move(package));
        relationships.push_back({{"spdxElementId", "SPDXRef-DOCUMENT"},
                                 {"relationshipType", "DESCRIBES"},
                                 {"relatedSpdxElement", id}});
    }
    document["packages"] = std::move(packages);
    document["relationships"] = std::move(relationships);
    writeDocument(out, document);
}

}  // namespace regscan
