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

PluginSDK::String toPluginString(const std::wstring& text) {
    return PluginSDK::String(text.data(), text.size());
}

// matchResultLine on a line of `length` characters at `line`: true, and `value` set,
// when the line carries `id`.
bool matchLine(const std::wstring& id, const wchar_t* line, std::size_t length,
               std::wstring& value) {
    const std::size_t headLength = std::min(length, kIdLength);
    const std::size_t idLength = std::min(id.size(), kIdLength);
    if (headLength != idLength || std::wmemcmp(line, id.data(), headLength) != 0) {
        return false;
    }
    const std::size_t from = static_cast<std::size_t>(kColonFrom);
    if (length <= from) {
        return false;
    }
    const wchar_t* colon = std::wmemchr(line + from, L':', length - from);
    if (colon == nullptr) {
        return false;
    }
    const std::size_t start = std::min(static_cast<std::size_t>(colon - line) + 2, length);
    value.assign(line + start, length - start);
    return true;
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

// Collects the values of the current record and stores it when a line that
// carries none of the ids ends it.
class TesselDataProvider::RecordReader : public TesselLineSink {
  public:
    // With `trace`, the line that parsing starts is written there before the first
    // line is read (or by finish() when there was none).
    RecordReader(TesselDataProvider& provider, Trace* trace)
        : m_provider(provider), m_trace(trace), m_pending(false) {}

    void onLine(const wchar_t* text, std::size_t length) override {
        announce();
        if (matchLine(m_provider.m_NameId.wide(), text, length, m_name) ||
            matchLine(m_provider.m_VersionId.wide(), text, length, m_version) ||
            matchLine(m_provider.m_UninstDataId.wide(), text, length, m_uninstData) ||
            matchLine(m_provider.m_StateId.wide(), text, length, m_state)) {
            m_pending = true;
        } else if (m_pending) {
            m_provider.storePackage(m_name, m_version, m_uninstData, m_state);
            m_pending = false;
        }
    }

    // Stores the last record when no line ended it.
    void finish() {
        announce();
        if (m_pending) {
            m_provider.storePackage(m_name, m_version, m_uninstData, m_state);
            m_pending = false;
        }
    }

  private:
    void announce() {
        if (m_trace != nullptr) {
            Trace& regTrace_ = *m_trace;
            REG_TRACE(3, "Parsing output from list command");
            m_trace = nullptr;
        }
    }

    TesselDataProvider& m_provider;
    Trace* m_trace;
    // Deliberately kept from one record to the next: a record without one of the
    // lines inherits the previous record's value.
    std::wstring m_name;
    std::wstring m_version;
    std::wstring m_uninstData;
    std::wstring m_state;
    bool m_pending;
};

TErrorCode TesselDataProvider::loadInformation(TesselHandler* handler) {
    REG_TRACE_SCOPE("TesselDataProvider::loadInformation()");
    if (handler == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    // Each line is parsed as it is split from the output (all of which was read
    // after the command ended) and not kept.
    RecordReader reader(*this, &regTrace_);
    const TErrorCode rc = handler->runCommand(String(kListCommand), reader);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    reader.finish();
    return PluginSDK::RESULT_OK;
}

void TesselDataProvider::parseLines(const ObjectArray<String>& lines) {
    RecordReader reader(*this, nullptr);
    for (int i = 0; i < lines.size(); ++i) {
        const std::wstring& line = lines[i].wide();
        reader.onLine(line.data(), line.size());
    }
    reader.finish();
}

void TesselDataProvider::parseListing(const char* data, std::size_t size) {
    RecordReader reader(*this, nullptr);
    TesselHandler::splitLines(data, size, reader);
    reader.finish();
}

int TesselDataProvider::matchResultLine(const String& id, const String& line, String& value) {
    const std::wstring& text = line.wide();
    std::wstring found;
    if (!matchLine(id.wide(), text.data(), text.size(), found)) {
        return 0;
    }
    value = String(found);
    return 1;
}

bool TesselDataProvider::addPackage(String& name, String& version, String& uninstData,
                                    String& state) {
    return storePackage(name.wide(), version.wide(), uninstData.wide(), state.wide());
}

bool TesselDataProvider::storePackage(const std::wstring& name, const std::wstring& version,
                                      const std::wstring& uninstData, const std::wstring& state) {
    REG_TRACE_SCOPE("TesselDataProvider::addPackage(String &, String &, String &, String &)");
    wchar_t letters[kStateLetters];
    for (std::size_t i = 0; i < kStateLetters; ++i) {
        letters[i] = i < state.size() ? state[i] : L'\0';
    }

    std::wstring keyText(name);
    keyText += L'.';
    keyText += version;
    const PluginSDK::String key(keyText.data(), keyText.size());
    // find(key), then add(package) below, with one look into the index: the place
    // where the key is, or where it goes.
    const auto place = index.lower_bound(key);
    if (place != index.end() && !(key < place->first)) {
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

    // What add(package) does for a key that is not there yet; it cannot fail.
    packages.push_back(package);
    index.emplace_hint(place, package->key, package);
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
