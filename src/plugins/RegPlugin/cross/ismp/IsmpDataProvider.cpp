#include "cross/ismp/IsmpDataProvider.h"

#include <pwd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "RegPluginConstants.h"
#include "base/File.h"
#include "common/PluginTrace.h"

// Layout of a registry line, as far as this reader uses it. Fields are separated by
// "|" and numbered from 1; empty fields do not count (strtok), so two adjacent "|"
// move every later field forward by one.
//
//   KEY  = 1 identifier | 2..5 version parts | 6 (unused) | 7 instance
//   INFO = 1 name | 2 description | 3 | 4 vendor | 5 | 6 | 7 install directory
//          | 8  count N, then N single fields
//          | 9  count N, then N records of 10 fields
//          | 10 count N, then N records of 7 fields
//          | 11 count N, then N records of 5 fields
//          | 12
//          | 13 uninstaller: blank for a feature; for a product at least five
//               '"'-separated tokens, of which the 1st (a directory below the install
//               directory) and the 5th (a file in it) make uninstData
//          | 14..22 (products only; nothing may follow them)
//
// The KEY half ends at the first "=" of the line and INFO at the next one, if any.

namespace RegPlugin {

namespace {

const char kFieldDelimiter[] = "|";
const char kEntryDelimiter[] = "=";
const char kUninstallerDelimiter[] = "\"";
const char kRegistryFileName[] = "vpd.properties";

// Starting size and growth step of the line buffer.
const unsigned int kLineBufferSize = 256;
const unsigned int kLineBufferStep = 32;

// The fields of a line kept as separate pieces; KEY has seven of them.
const int kKeyFields = 7;
const int kVersionParts = 4;  // KEY fields 2 to 5
const int kProductTrailingFields = 9;

// The property names, made once: every package's map shares their storage.
struct PropertyNames {
    PluginSDK::String name{REG_PLUGIN_PROPERTY_FIELD_NAME};
    PluginSDK::String version{REG_PLUGIN_PROPERTY_FIELD_VERSION};
    PluginSDK::String instance{REG_PLUGIN_PROPERTY_FIELD_INSTANCE};
    PluginSDK::String description{REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION};
    PluginSDK::String vendor{REG_PLUGIN_PROPERTY_FIELD_VENDOR};
    PluginSDK::String installDir{REG_PLUGIN_PROPERTY_FIELD_INSTDIR};
    PluginSDK::String uninstData{REG_PLUGIN_PROPERTY_FIELD_UNINSTDATA};
};

const PropertyNames& names() {
    static const PropertyNames names;
    return names;
}

// The text of a field (null: missing, counted as empty) without leading and
// trailing white space.
PluginSDK::String trimmed(const char* field) {
    PluginSDK::String text(field);
    text.trim();
    return text;
}

// True when `text` holds nothing but the white space that trim() removes.
bool isBlank(const char* text) {
    return text[std::strspn(text, " \t\n\v\f\r")] == '\0';
}

// The next field of the line being cut up, or null.
char* nextField() {
    return std::strtok(nullptr, kFieldDelimiter);
}

// Frees a strdup copy.
struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};

// Closes a stdio stream.
struct CloseDeleter {
    void operator()(FILE* file) const { std::fclose(file); }
};

}  // namespace

IsmpDataProvider::IsmpDataProvider() : m_rootHome(true) {}

IsmpDataProvider::IsmpDataProvider(const std::string& registryFile)
    : m_rootHome(false), m_registryFile(registryFile) {}

IsmpDataProvider::~IsmpDataProvider() = default;

TErrorCode IsmpDataProvider::load() {
    REG_TRACE_SCOPE("IsmpDataProvider::load(ProductList::ProductType)");
    PluginSDK::StringVector paths;
    if (getVitalDataPaths(paths) != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "no valid path to ISMP registry");
        return REG_PLUGIN_ERROR_INVALID_PATH_TO_ISMP_REGISTRY;
    }
    TErrorCode result = PluginSDK::RESULT_OK;
    int parsed = 0;
    for (const PluginSDK::String& path : paths) {
        result = parseRegistry(path);
        if (result == PluginSDK::RESULT_OK) {
            REG_TRACE(3, "ISMP registry file parsed: ", path);
            ++parsed;
        } else if (result == REG_PLUGIN_ERROR_NO_VALID_ISMP_REGISTRY_FILE) {
            REG_TRACE(3, "ISMP registry file does not exist: ", path);
            result = PluginSDK::RESULT_OK;
        } else {
            REG_TRACE(1, "parsing of file failed: ", path);
        }
    }
    return parsed > 0 ? PluginSDK::RESULT_OK : result;
}

TErrorCode IsmpDataProvider::getVitalDataPaths(PluginSDK::StringVector& paths) {
    if (!m_rootHome) {
        paths.addString(PluginSDK::String(m_registryFile.data(), m_registryFile.size()));
        return PluginSDK::RESULT_OK;
    }
    const struct passwd* root = ::getpwnam("root");
    if (root == nullptr) {
        return PluginSDK::RESULT_OK;
    }
    const std::string path = registryPathInHome(root->pw_dir != nullptr ? root->pw_dir : "");
    paths.addString(PluginSDK::String(path.data(), path.size()));
    return PluginSDK::RESULT_OK;
}

std::string IsmpDataProvider::registryPathInHome(const std::string& home) {
    std::string path = home;
    if (!path.empty() && path.back() != '/') {
        path += '/';
    }
    return path + kRegistryFileName;
}

TErrorCode IsmpDataProvider::parseRegistry(const PluginSDK::String& path) {
    REG_TRACE_SCOPE("IsmpDataProvider::parseRegistry(const PluginSDK::String &)");
    const std::unique_ptr<char, FreeDeleter> narrow(PluginSDK::String::getMultibyteString(path));
    if (narrow == nullptr || !File(narrow.get()).isFile()) {
        // isFile() follows symbolic links and is false for a missing path.
        REG_TRACE(1, "not a valid file");
        return REG_PLUGIN_ERROR_NO_VALID_ISMP_REGISTRY_FILE;
    }
    const std::unique_ptr<FILE, CloseDeleter> file(std::fopen(narrow.get(), "r"));
    if (file == nullptr) {
        REG_TRACE(1, "file cannot be opened");
        return REG_PLUGIN_ERROR_UNABLE_TO_OPEN_ISMP_REGISTRY;
    }
    return parseRegistryStream(file.get());
}

TErrorCode IsmpDataProvider::parseRegistryStream(void* i_File) {
    FILE* file = static_cast<FILE*>(i_File);
    MemoryBuffer buffer(kLineBufferSize, kLineBufferStep);
    if (buffer.data == nullptr) {
        return REG_PLUGIN_ERROR_UNABLE_TO_OPEN_ISMP_REGISTRY;
    }
    TErrorCode result = PluginSDK::RESULT_OK;
    // A read error ends the input like its end (fgets would keep failing).
    while (result == PluginSDK::RESULT_OK && !std::feof(file) && !std::ferror(file)) {
        readLine(file, buffer);
        result = parseRegistryEntry(reinterpret_cast<char*>(buffer.data));
    }
    return result;
}

int IsmpDataProvider::readLine(void* i_File, MemoryBuffer& buffer) {
    FILE* file = static_cast<FILE*>(i_File);
    if (buffer.data == nullptr || buffer.size == 0) {
        return 0;
    }
    buffer.data[0] = '\0';
    std::size_t length = 0;
    for (;;) {
        char* room = reinterpret_cast<char*>(buffer.data) + length;
        std::size_t available = buffer.size - length;
        if (available > INT_MAX) {
            available = INT_MAX;
        }
        // fgets ends what it read with a NUL byte, but the line itself may hold NUL
        // bytes: with the room filled with non-zero bytes first, its last NUL byte is
        // the end.
        std::memset(room, '\n', available);
        if (std::fgets(room, static_cast<int>(available), file) == nullptr) {
            // End of the input or a read error: nothing (usable) was read.
            std::memset(room, 0, available);
            break;
        }
        const char* end = static_cast<const char*>(memrchr(room, '\0', available));
        const std::size_t read = static_cast<std::size_t>(end - room);
        // Keep the buffer zero beyond the text.
        std::memset(room + read, 0, available - read);
        length += read;
        if (buffer.data[length - 1] == '\n') {
            break;
        }
        if (length == buffer.size - 1 && buffer.resize(buffer.size + 1) == nullptr) {
            break;  // cannot grow: the rest of the line comes as the next one
        }
    }
    if (length > 0 && buffer.data[length - 1] == '\n') {
        buffer.data[--length] = '\0';
    }
    return length > INT_MAX ? INT_MAX : static_cast<int>(length);
}

TErrorCode IsmpDataProvider::parseRegistryEntry(char* line) {
    const std::unique_ptr<char, FreeDeleter> copy(line != nullptr ? ::strdup(line) : nullptr);
    if (copy == nullptr || isBlank(copy.get())) {
        return PluginSDK::RESULT_OK;
    }
    char* key = std::strtok(copy.get(), kEntryDelimiter);
    char* info = std::strtok(nullptr, kEntryDelimiter);
    if (key == nullptr || info == nullptr) {
        return REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_ENTRY;
    }
    std::unique_ptr<IsmpPackage> package(new (std::nothrow) IsmpPackage());
    if (package == nullptr) {
        return REG_PLUGIN_ERROR_CANNOT_INSTANTIATE_PACKAGE;
    }
    TErrorCode result = parseRegistryEntryKey(key, *package);
    if (result == PluginSDK::RESULT_OK) {
        result = parseRegistryEntryInfo(info, *package);
    }
    if (result == REG_PLUGIN_ERROR_ISMP_FEATURE_NOT_PRODUCT) {
        return PluginSDK::RESULT_OK;
    }
    if (result != PluginSDK::RESULT_OK) {
        return result;
    }
    add(package.get());
    // The cache takes the first package of a key and leaves a later one to us.
    if (find(package->key) == package.get()) {
        package.release();
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode IsmpDataProvider::parseRegistryEntryKey(char* key, IsmpPackage& package) {
    REG_TRACE_SCOPE("IsmpDataProvider::parseRegistryEntryKey(char *, IsmpPackage &)");
    const char* fields[kKeyFields];
    fields[0] = std::strtok(key, kFieldDelimiter);
    for (int i = 1; i < kKeyFields; ++i) {
        fields[i] = nextField();
    }
    const PluginSDK::String identifier = trimmed(fields[0]);
    // The version parts up to the first blank one, joined by ".".
    PluginSDK::String version;
    for (int part = 0; part < kVersionParts; ++part) {
        const PluginSDK::String text = trimmed(fields[1 + part]);
        if (text.empty()) {
            break;
        }
        if (part > 0) {
            version += L'.';
        }
        version += text;
    }
    REG_TRACE(3, "package ", identifier, " version is: ", version);
    package.key = identifier + L"@" + version;
    package.setProperty(names().version, version);
    package.setProperty(names().instance, trimmed(fields[6]));
    return PluginSDK::RESULT_OK;
}

TErrorCode IsmpDataProvider::parseRegistryEntryInfo(char* info, IsmpPackage& package) {
    const PluginSDK::String name = trimmed(std::strtok(info, kFieldDelimiter));
    if (name.empty()) {
        return REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD;
    }
    package.setProperty(names().name, name);
    package.setProperty(names().description, trimmed(nextField()));
    nextField();
    package.setProperty(names().vendor, trimmed(nextField()));
    nextField();
    nextField();
    const PluginSDK::String installDir = trimmed(nextField());
    package.setProperty(names().installDir, installDir);

    // A missing or malformed field from here on ends the entry, which keeps what it
    // has (the file goes on).
    if (skip(SKIP_COUNTED_LIST, 1) != PluginSDK::RESULT_OK ||
        skip(SKIP_TEN_FIELD_LIST, 0) != PluginSDK::RESULT_OK ||
        skip(SKIP_COUNTED_LIST, 7) != PluginSDK::RESULT_OK ||
        skip(SKIP_COUNTED_LIST, 5) != PluginSDK::RESULT_OK ||
        skip(SKIP_FIELDS, 1) != PluginSDK::RESULT_OK) {
        return PluginSDK::RESULT_OK;
    }
    char* uninstaller = nextField();
    if (trimmed(uninstaller).empty()) {
        package.type = RegistryPackage::SUBPRODUCT;
        package.setProperty(names().uninstData, PluginSDK::String());
        return PluginSDK::RESULT_OK;
    }
    package.type = RegistryPackage::PRODUCT;
    if (skip(SKIP_FIELDS, kProductTrailingFields) != PluginSDK::RESULT_OK) {
        return PluginSDK::RESULT_OK;
    }
    if (nextField() != nullptr) {
        return REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY;
    }
    // Only now: this takes strtok's state off the line.
    const char* directory = std::strtok(uninstaller, kUninstallerDelimiter);
    std::strtok(nullptr, kUninstallerDelimiter);
    const char* third = std::strtok(nullptr, kUninstallerDelimiter);
    std::strtok(nullptr, kUninstallerDelimiter);
    const char* file = std::strtok(nullptr, kUninstallerDelimiter);
    std::strtok(nullptr, kUninstallerDelimiter);
    if (directory == nullptr || third == nullptr || file == nullptr) {
        return REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY;
    }
    package.setProperty(names().uninstData, installDir + L"/" + PluginSDK::String(directory) +
                                                L"/" + PluginSDK::String(file));
    return PluginSDK::RESULT_OK;
}

TErrorCode IsmpDataProvider::skip(SkipTarget target, int count) {
    switch (target) {
        case SKIP_FIELDS:
            for (int i = 0; i < count; ++i) {
                if (nextField() == nullptr) {
                    return REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD;
                }
            }
            return PluginSDK::RESULT_OK;
        case SKIP_COUNTED_LIST: {
            const char* field = nextField();
            if (field == nullptr) {
                return REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD;
            }
            char* end = nullptr;
            // Out of range counts come back clamped; the records then run out first.
            const long records = std::strtol(field, &end, 10);
            if (end == field || *end != '\0') {
                return REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD;
            }
            if (count <= 0) {
                return PluginSDK::RESULT_OK;  // empty records: nothing to pass over
            }
            for (long record = 0; record < records; ++record) {
                const TErrorCode result = skip(SKIP_FIELDS, count);
                if (result != PluginSDK::RESULT_OK) {
                    return result;
                }
            }
            return PluginSDK::RESULT_OK;
        }
        case SKIP_TEN_FIELD_LIST:
            return skip(SKIP_COUNTED_LIST, 10);
    }
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
