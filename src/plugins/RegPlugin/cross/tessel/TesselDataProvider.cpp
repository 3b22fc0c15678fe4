#include "cross/tessel/TesselDataProvider.h"

#include <algorithm>
#include <cwchar>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "PluginSDK/PluginResult.h"
#include "RegPluginConstants.h"
#include "common/PluginTrace.h"
#include "cross/tessel/TesselPackage.h"

namespace RegPlugin {

namespace {

// The listing command, run in the product directory.
const wchar_t kListCommand[] = L"pdxcat -p";
// How many characters of a line are compared with a message id.
const std::size_t kIdLength = 9;
// A value starts two characters after the first ':' at or after this position.
const int kColonFrom = 10;
// The number of state letters read.
const std::size_t kStateLetters = 5;

// The fields of a package, in the order in which they are set.
enum Field {
    F_NAME,
    F_VERSION,
    F_UNINST_DATA,
    F_IS_INSTALLED,
    F_IS_COMMITTED,
    F_BACKUP_STATE,
    F_REBOOT_REQUIRED,
    F_IS_DISCOVERED,
    F_IS_HIDDEN,
    F_ERROR_STATE,
    FIELD_COUNT
};

// The field names and the fixed values, made once and shared by every package (the
// host's strings are reference-counted); also the order in which a package's map
// sorts the names, so that its map is built by appending at the end.
class SharedTexts {
  public:
    static const SharedTexts& get() {
        static const SharedTexts texts;
        return texts;
    }

    PluginSDK::String names[FIELD_COUNT];
    int sorted[FIELD_COUNT];
    PluginSDK::String yes{REG_PLUGIN_TRUE};
    PluginSDK::String no{REG_PLUGIN_FALSE};
    PluginSDK::String none;
    PluginSDK::String prepared{L"prepared"};
    PluginSDK::String restored{L"restored"};
    PluginSDK::String undoable{L"undoable"};
    PluginSDK::String changing{L"changing"};
    PluginSDK::String error{L"error"};

  private:
    SharedTexts() {
        const wchar_t* const texts[FIELD_COUNT] = {
            REG_PLUGIN_PROPERTY_FIELD_NAME,
            REG_PLUGIN_PROPERTY_FIELD_VERSION,
            REG_PLUGIN_PROPERTY_FIELD_UNINSTDATA,
            REG_PLUGIN_PROPERTY_FIELD_IS_INSTALLED,
            REG_PLUGIN_PROPERTY_FIELD_IS_COMMITTED,
            REG_PLUGIN_PROPERTY_FIELD_BACKUP_STATE,
            REG_PLUGIN_PROPERTY_FIELD_REBOOT_REQUIRED,
            REG_PLUGIN_PROPERTY_FIELD_IS_DISCOVERED,
            REG_PLUGIN_PROPERTY_FIELD_IS_HIDDEN,
            REG_PLUGIN_PROPERTY_FIELD_ERROR,
        };
        for (int i = 0; i < FIELD_COUNT; ++i) {
            names[i] = texts[i];
            sorted[i] = i;
        }
        std::sort(sorted, sorted + FIELD_COUNT,
                  [this](int a, int b) { return names[a] < names[b]; });
    }
};

PluginSDK::String toPluginString(const String& text) {
    const std::wstring& wide = text.wide();
    return PluginSDK::String(wide.data(), wide.size());
}

bool equals(const wchar_t* left, const wchar_t* right) {
    return std::wcscmp(left, right) == 0;
}

// The flag an override gives: "true" or "false"; any other text is a broken rule
// definition and ends the process.
bool overrideValue(const wchar_t* text) {
    const bool isTrue = equals(text, REG_PLUGIN_TRUE);
    const bool isFalse = equals(text, REG_PLUGIN_FALSE);
    REG_ASSERT(isTrue || isFalse);
    return isTrue;
}

}  // namespace

TesselDataProvider::TesselDataProvider(const String& nameId, const String& versionId,
                                       const String& uninstDataId, const String& stateId)
    : m_NameId(nameId), m_VersionId(versionId), m_UninstDataId(uninstDataId), m_StateId(stateId) {}

TesselDataProvider::~TesselDataProvider() = default;

TErrorCode TesselDataProvider::load() {
    REG_TRACE_SCOPE("TesselDataProvider::load()");
    PluginSDK::Configuration* configuration = nullptr;
    PluginSDK::Configuration::get(REG_PLUGIN_NAME, configuration);
    REG_ASSERT(configuration != 0);

    REG_TRACE(3, "Retrieving the ", REG_PLUGIN_PROPERTY_PDX_DIRECTORY, " property");
    PluginSDK::String directory;
    if (configuration->getProperty(REG_PLUGIN_PROPERTY_PDX_DIRECTORY, directory) !=
        PluginSDK::RESULT_OK) {
        REG_TRACE(3, "Property ", REG_PLUGIN_PROPERTY_PDX_DIRECTORY, " not found. ",
                  "Skipping finding any software ", directory);
        return REG_PLUGIN_ERROR_PDX_CLI_UNSPECIFIED;
    }
    REG_TRACE(3, "The ", REG_PLUGIN_PROPERTY_PDX_DIRECTORY, " property is ", directory);
    std::unique_ptr<TesselHandler> handler(
        new TesselHandler(String(static_cast<const wchar_t*>(directory))));
    return loadInformation(handler.get());
}

TErrorCode TesselDataProvider::loadInformation(TesselHandler* handler) {
    REG_TRACE_SCOPE("TesselDataProvider::loadInformation()");
    if (handler == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    ObjectArray<String> lines;
    const TErrorCode rc = handler->runCommand(String(kListCommand), lines);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    REG_TRACE(3, "Parsing output from list command");
    parseLines(lines);
    return PluginSDK::RESULT_OK;
}

void TesselDataProvider::parseLines(const ObjectArray<String>& lines) {
    // Deliberately kept from one record to the next: a record without one of the
    // lines inherits the previous record's value.
    String name;
    String version;
    String uninstData;
    String state;
    bool pending = false;
    for (int i = 0; i < lines.size(); ++i) {
        const String& line = lines[i];
        if (matchResultLine(m_NameId, line, name) != 0 ||
            matchResultLine(m_VersionId, line, version) != 0 ||
            matchResultLine(m_UninstDataId, line, uninstData) != 0 ||
            matchResultLine(m_StateId, line, state) != 0) {
            pending = true;
        } else if (pending) {
            addPackage(name, version, uninstData, state);
            pending = false;
        }
    }
    if (pending) {
        addPackage(name, version, uninstData, state);
    }
}

int TesselDataProvider::matchResultLine(const String& id, const String& line, String& value) {
    const std::wstring& text = line.wide();
    const std::wstring& wanted = id.wide();
    const std::size_t headLength = std::min(text.size(), kIdLength);
    const std::size_t idLength = std::min(wanted.size(), kIdLength);
    if (headLength != idLength || text.compare(0, headLength, wanted, 0, idLength) != 0) {
        return 0;
    }
    const int colon = line.indexOf(L':', kColonFrom);
    if (colon <= 0) {
        return 0;
    }
    value = line.substring(colon + 2);
    return 1;
}

bool TesselDataProvider::addPackage(String& name, String& version, String& uninstData,
                                    String& state) {
    REG_TRACE_SCOPE("TesselDataProvider::addPackage(String &, String &, String &, String &)");
    wchar_t letters[kStateLetters];
    for (std::size_t i = 0; i < kStateLetters; ++i) {
        letters[i] = state.charAt(static_cast<int>(i));
    }

    std::wstring keyText(name.wide());
    keyText += L'.';
    keyText += version.wide();
    const PluginSDK::String key(keyText.data(), keyText.size());
    if (find(key) != nullptr) {
        REG_TRACE(1, "Skipped duplicate package with key='", key, "'");
        return false;
    }
    TesselPackage* package = new (std::nothrow) TesselPackage(key);
    if (package == nullptr) {
        REG_TRACE(2, "Failed to allocate memory for new package");
        return false;
    }

    const SharedTexts& texts = SharedTexts::get();
    const auto flag = [&texts](bool set) -> const PluginSDK::String& {
        return set ? texts.yes : texts.no;
    };
    PluginSDK::String values[FIELD_COUNT];
    values[F_NAME] = toPluginString(name);
    values[F_VERSION] = toPluginString(version);
    values[F_UNINST_DATA] = toPluginString(uninstData);
    values[F_IS_INSTALLED] = flag(letters[0] == L'I');
    values[F_IS_COMMITTED] = flag(letters[1] == L'C');
    values[F_BACKUP_STATE] = letters[2] == L'P'   ? texts.prepared
                             : letters[2] == L'R' ? texts.restored
                             : letters[2] == L'U' ? texts.undoable
                                                  : texts.none;
    // The three flags share the fourth letter: at most one of them is true.
    values[F_REBOOT_REQUIRED] = flag(letters[3] == L'B');
    values[F_IS_DISCOVERED] = flag(letters[3] == L'D');
    values[F_IS_HIDDEN] = flag(letters[3] == L'H');
    values[F_ERROR_STATE] = letters[4] == L'C'   ? texts.changing
                            : letters[4] == L'E' ? texts.error
                                                 : texts.none;
    // The same map as setting the fields one by one builds, filled in its own order.
    std::map<PluginSDK::String, PluginSDK::String>& properties = package->properties;
    for (int i = 0; i < FIELD_COUNT; ++i) {
        const int field = texts.sorted[i];
        properties.emplace_hint(properties.end(), texts.names[field], std::move(values[field]));
    }

    if (add(package) != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "Failed to add package key='", key, "'");
        return false;
    }
    return true;
}

TErrorCode TesselDataProvider::getProperties(PluginSDK::Configuration* configuration,
                                             const wchar_t* showUncommittedOverride,
                                             const wchar_t* showRemovedOverride,
                                             bool* showUncommitted, bool* showRemoved) {
    REG_TRACE_SCOPE("TesselDataProvider::getProperties()");
    REG_ASSERT(configuration != 0);
    if (showUncommitted == nullptr || showRemoved == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    const struct {
        const wchar_t* override;
        const wchar_t* property;
        bool* flag;
    } flags[] = {
        {showUncommittedOverride, REG_PLUGIN_PROPERTY_SHOW_UNCOMMITTED_PDX_PKG, showUncommitted},
        {showRemovedOverride, REG_PLUGIN_PROPERTY_SHOW_REMOVED_PDX_PKG, showRemoved},
    };
    for (const auto& entry : flags) {
        if (entry.override != nullptr) {
            *entry.flag = overrideValue(entry.override);
            continue;
        }
        REG_TRACE(3, "Retrieving the ", entry.property, " property");
        PluginSDK::String value;
        if (configuration->getProperty(entry.property, value) != PluginSDK::RESULT_OK) {
            REG_TRACE(3, "Property ", entry.property, " not found");
        } else if (value == PLUGIN_RESULT_TRUE) {
            *entry.flag = true;
        }
    }
    REG_TRACE(3, *showUncommitted ? "Listing uncommitted Tessel packages"
                                  : "Skipping uncommitted Tessel packages");
    REG_TRACE(
        3, *showRemoved ? "Listing removed Tessel packages" : "Skipping removed Tessel packages");
    return PluginSDK::RESULT_OK;
}

TErrorCode TesselDataProvider::checkCriteria(RegistryPackage* package, bool* matches,
                                             bool showUncommitted, bool showRemoved) {
    if (matches == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    if (showUncommitted && showRemoved) {
        *matches = true;
        return PluginSDK::RESULT_OK;
    }
    if (package == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    const SharedTexts& texts = SharedTexts::get();
    PluginSDK::String installed;
    TErrorCode rc = package->getProperty(texts.names[F_IS_INSTALLED], installed);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    if (installed == texts.no) {
        // A removed package.
        *matches = showRemoved;
        return PluginSDK::RESULT_OK;
    }
    PluginSDK::String committed;
    rc = package->getProperty(texts.names[F_IS_COMMITTED], committed);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    *matches = committed == texts.yes || showUncommitted;
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
