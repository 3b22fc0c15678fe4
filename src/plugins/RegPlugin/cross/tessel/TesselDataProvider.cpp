#include "cross/tessel/TesselDataProvider.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "PluginSDK/PluginResult.h"
#include "RegPluginConstants.h"
#include "base/Utf8.h"
#include "common/DeferredTraceLines.h"
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

using Field = TesselPackage::Field;
using Span = TesselPackage::Span;

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

// The character at `p` (of the `length` > 0 bytes there) into `c`; returns the
// bytes it takes. Decodes as the host's UTF-8 decoder does.
inline std::size_t stepChar(const char* p, std::size_t length, wchar_t& c) {
    const auto first = static_cast<unsigned char>(*p);
    if (first < 0x80) {
        c = static_cast<wchar_t>(first);
        return 1;
    }
    return Utf8::decodeChar(p, length, c);
}

// What matchLine looks at in a line of UTF-8 bytes: its first nine characters and
// where its eleventh character starts (the colon is looked for from there).
struct LineHead {
    bool ascii;                // the line's first eleven bytes are ASCII: they are its characters
    wchar_t chars[kIdLength];  // without `ascii`, the first `count` characters
    std::size_t count;         // how many of the nine the line has
    std::size_t from;          // byte offset of character 10, or the line's length
    bool longEnough;           // whether the line has more than ten characters
};

void readHead(const char* line, std::size_t length, LineHead& head) {
    const auto from = static_cast<std::size_t>(kColonFrom);
    if (length > from) {
        unsigned char bits = 0;
        for (std::size_t i = 0; i <= from; ++i) {
            bits |= static_cast<unsigned char>(line[i]);
        }
        if (bits < 0x80) {
            head.ascii = true;
            head.count = kIdLength;
            head.from = from;
            head.longEnough = true;
            return;
        }
    }
    head.ascii = false;
    head.count = 0;
    std::size_t offset = 0;
    std::size_t characters = 0;
    while (offset < length && characters < from) {
        wchar_t c;
        offset += stepChar(line + offset, length - offset, c);
        if (characters < kIdLength) {
            head.chars[characters] = c;
            head.count = characters + 1;
        }
        ++characters;
    }
    head.from = offset;
    head.longEnough = characters == from && offset < length;
}

// The four message ids as the listing's lines are compared with them: their first
// nine characters.
class IdHeads {
  public:
    explicit IdHeads(const std::wstring* const (&ids)[4]) {
        for (int i = 0; i < 4; ++i) {
            m_wide[i] = ids[i]->substr(0, kIdLength);
            m_ascii[i] = m_wide[i].size() == kIdLength;
            for (std::size_t c = 0; c < m_wide[i].size(); ++c) {
                m_ascii[i] = m_ascii[i] && m_wide[i][c] >= 0 && m_wide[i][c] < 0x80;
                m_bytes[i][c] = static_cast<char>(m_wide[i][c]);
            }
        }
    }

    // The first id whose head equals the line's, or -1.
    int find(const char* line, const LineHead& head) const {
        for (int i = 0; i < 4; ++i) {
            if (head.ascii) {
                // A character outside ASCII never equals one of the line's.
                if (m_ascii[i] && std::memcmp(line, m_bytes[i], kIdLength) == 0) {
                    return i;
                }
            } else if (head.count == m_wide[i].size() &&
                       std::wmemcmp(head.chars, m_wide[i].data(), head.count) == 0) {
                return i;
            }
        }
        return -1;
    }

  private:
    std::wstring m_wide[4];
    bool m_ascii[4];
    char m_bytes[4][kIdLength];
};

// The value of a line whose head matched an id: true, and `value` set to the bytes
// of the value within the line, when a ':' follows at character 10 or later.
bool lineValue(const char* line, std::size_t length, const LineHead& head, Span& value) {
    if (!head.longEnough) {
        return false;
    }
    const void* colon = std::memchr(line + head.from, ':', length - head.from);
    if (colon == nullptr) {
        return false;
    }
    // The colon and the character after it are skipped.
    std::size_t start = static_cast<std::size_t>(static_cast<const char*>(colon) - line) + 1;
    if (start < length) {
        wchar_t skipped;
        start += stepChar(line + start, length - start, skipped);
    }
    value.offset = start;
    value.length = length - start;
    return true;
}

// The end of a line: the next line feed or carriage return. Each is looked for
// only once, with memchr, however many lines the other one ends meanwhile.
class LineEnds {
  public:
    // `end` is where the bytes end.
    explicit LineEnds(const char* end) : m_end(end), m_feed(nullptr), m_return(nullptr) {}

    // The end of the bytes: next() gives it when no line end follows.
    const char* end() const { return m_end; }

    const char* next(const char* from) {
        if (m_feed != m_end && m_feed < from) {
            m_feed = find(from, '\n');
        }
        if (m_return != m_end && m_return < from) {
            m_return = find(from, '\r');
        }
        return m_feed < m_return ? m_feed : m_return;
    }

  private:
    const char* find(const char* from, char c) const {
        const void* found = std::memchr(from, c, static_cast<std::size_t>(m_end - from));
        return found == nullptr ? m_end : static_cast<const char*>(found);
    }

    const char* const m_end;
    const char* m_feed;
    const char* m_return;
};

// The trace signature of the lines about records not stored.
const char kAddPackageSignature[] =
    "TesselDataProvider::addPackage(String &, String &, String &, String &)";

// The line "`text``value``suffix`" of `level` about a record addPackage did not
// store: held in `deferred` when given, otherwise written now.
void traceNotStored(DeferredTraceLines* deferred, int level, int line, const char* text,
                    const PluginSDK::String& value = PluginSDK::String(), const char* suffix = "") {
    if (deferred != nullptr) {
        deferred->add(level, __FILE__, line, text, value, suffix);
        return;
    }
    Trace trace(pluginTracer(), kAddPackageSignature);
    traceLine(trace, level, __FILE__, line, text, value, suffix);
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
    explicit RecordReader(TesselDataProvider& provider) : m_provider(provider), m_pending(false) {}

    void onLine(const wchar_t* text, std::size_t length) override {
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
        if (m_pending) {
            m_provider.storePackage(m_name, m_version, m_uninstData, m_state);
            m_pending = false;
        }
    }

  private:
    TesselDataProvider& m_provider;
    // Deliberately kept from one record to the next: a record without one of the
    // lines inherits the previous record's value.
    std::wstring m_name;
    std::wstring m_version;
    std::wstring m_uninstData;
    std::wstring m_state;
    bool m_pending;
};

// Turns the listing command's output into packages as it arrives: its complete
// lines while the command runs (it is a listener of the command's output), the rest
// once the command has ended. The trace lines of the records it skips are kept for
// finish(), so that they come after the command's own lines, where they would be if
// the output were read only once the command had ended.
class TesselDataProvider::ListingReader : public OutputListener {
  public:
    explicit ListingReader(TesselDataProvider& provider)
        : m_provider(provider),
          m_listing(std::make_shared<ByteBuffer>()),
          m_shared(m_listing),
          m_heads({&provider.m_NameId.wide(), &provider.m_VersionId.wide(),
                   &provider.m_UninstDataId.wide(), &provider.m_StateId.wide()}),
          m_values{{0, 0}, {0, 0}, {0, 0}, {0, 0}},
          m_pending(false),
          m_parsed(0),
          m_searched(0),
          m_last(provider.index.end()),
          m_packagesBefore(provider.packages.size()) {}

    void onOutput(const ByteBuffer& output, std::size_t /*from*/) override {
        parse(output.data(), output.size(), false);
    }

    // `output` is the whole output, of which onOutput saw a beginning (or nothing):
    // reads the rest, the last line even without a line end, stores the last
    // record and writes the trace lines kept so far. The packages keep `output`.
    void finish(ByteBuffer output) {
        parse(output.data(), output.size(), true);
        if (m_pending) {
            store(output.data());
        }
        *m_listing = std::move(output);
        Trace trace(pluginTracer(), kAddPackageSignature);
        m_deferred.write(trace);
    }

    // The command failed: takes back every package stored so far; the trace lines
    // kept are dropped.
    void discard() {
        m_provider.dropPackagesFrom(m_packagesBefore);
        m_deferred.discard();
    }

  private:
    // Reads the lines of the `size` bytes at `data` that were not read yet. A line
    // without a line end is read only `atEnd`: more of it may follow.
    void parse(const char* data, std::size_t size, bool atEnd) {
        // A line feed or a carriage return ends a line; empty lines are skipped (CR
        // and LF are single bytes that never occur inside a UTF-8 sequence).
        LineEnds ends(data + size);
        const char* line = data + m_parsed;
        // The current line's end is not before m_searched (a long line arriving in
        // pieces is searched once).
        const char* searchFrom = data + m_searched;
        while (line < ends.end()) {
            const char* const lineEnd = ends.next(searchFrom);
            if (lineEnd == ends.end() && !atEnd) {
                m_searched = size;
                break;
            }
            const auto length = static_cast<std::size_t>(lineEnd - line);
            if (length > 0) {
                readLine(data, line, length);
            }
            if (lineEnd == ends.end()) {
                line = lineEnd;
                break;
            }
            line = lineEnd + 1;
            searchFrom = line;
        }
        m_parsed = static_cast<std::size_t>(line - data);
        if (m_searched < m_parsed) {
            m_searched = m_parsed;
        }
    }

    void readLine(const char* data, const char* line, std::size_t length) {
        readHead(line, length, m_head);
        const int matched = m_heads.find(line, m_head);
        Span value{0, 0};
        if (matched >= 0 && lineValue(line, length, m_head, value)) {
            value.offset += static_cast<std::size_t>(line - data);
            m_values[matched] = value;
            m_pending = true;
        } else if (m_pending) {
            store(data);
            m_pending = false;
        }
    }

    void store(const char* data) {
        m_provider.storePackage(data, m_shared, m_values[0], m_values[1], m_values[2], m_values[3],
                                m_last, m_deferred);
    }

    TesselDataProvider& m_provider;
    // The output once it is complete; the packages make their fields from it.
    std::shared_ptr<ByteBuffer> m_listing;
    std::shared_ptr<const ByteBuffer> m_shared;  // the same, as the packages hold it
    const IdHeads m_heads;
    LineHead m_head;
    // The current record's values: deliberately kept from one record to the next,
    // so a record without one of the lines inherits the previous record's value.
    Span m_values[4];
    bool m_pending;
    std::size_t m_parsed;    // the lines before this offset have been read
    std::size_t m_searched;  // no line end between m_parsed and this offset
    IndexPosition m_last;    // where the previous package went into the index
    std::size_t m_packagesBefore;
    DeferredTraceLines m_deferred;
};

TErrorCode TesselDataProvider::loadInformation(TesselHandler* handler) {
    REG_TRACE_SCOPE("TesselDataProvider::loadInformation()");
    if (handler == nullptr) {
        return PluginSDK::ERROR_NULL_ARGUMENT;
    }
    // The output is read into packages while the command runs; they stay only when
    // the command succeeds.
    ListingReader reader(*this);
    ByteBuffer output;
    const TErrorCode rc = handler->runCommand(String(kListCommand), output, &reader);
    if (rc != PluginSDK::RESULT_OK) {
        reader.discard();
        return rc;
    }
    REG_TRACE(3, "Parsing output from list command");
    reader.finish(std::move(output));
    return PluginSDK::RESULT_OK;
}

void TesselDataProvider::parseLines(const ObjectArray<String>& lines) {
    RecordReader reader(*this);
    for (int i = 0; i < lines.size(); ++i) {
        const std::wstring& line = lines[i].wide();
        reader.onLine(line.data(), line.size());
    }
    reader.finish();
}

void TesselDataProvider::parseListing(const char* data, std::size_t size) {
    ByteBuffer copy;
    if (data != nullptr && !copy.append(data, size)) {
        return;
    }
    parseListing(std::move(copy));
}

void TesselDataProvider::parseListing(ByteBuffer output) {
    ListingReader(*this).finish(std::move(output));
}

void TesselDataProvider::parseListing(ByteBuffer output,
                                      const std::vector<std::size_t>& pieceEnds) {
    ListingReader reader(*this);
    ByteBuffer arrived;
    for (const std::size_t end : pieceEnds) {
        const std::size_t before = arrived.size();
        if (end <= before || end > output.size() ||
            !arrived.append(output.data() + before, end - before)) {
            continue;
        }
        reader.onOutput(arrived, before);
    }
    reader.finish(std::move(output));
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

template <typename Make>
bool TesselDataProvider::storeNew(const std::wstring& keyText, Make make, IndexPosition* last,
                                  DeferredTraceLines* deferred) {
    const PluginSDK::String key(keyText.data(), keyText.size());
    // find(key), then add(package) below, with one look into the index: the place
    // where the key is, or where it goes.
    IndexPosition place = index.end();
    if (last != nullptr && *last != index.end() && (*last)->first < key) {
        place = std::next(*last);
        if (place != index.end() && place->first < key) {
            place = index.lower_bound(key);
        }
    } else {
        place = index.lower_bound(key);
    }
    if (place != index.end() && !(key < place->first)) {
        traceNotStored(deferred, 1, __LINE__, "Skipped duplicate package with key='", key, "'");
        return false;
    }
    TesselPackage* package = make(key);
    if (package == nullptr) {
        traceNotStored(deferred, 2, __LINE__, "Failed to allocate memory for new package");
        return false;
    }
    // What add(package) does for a key that is not there yet; it cannot fail.
    packages.push_back(package);
    const IndexPosition added = index.emplace_hint(place, package->key, package);
    if (last != nullptr) {
        *last = added;
    }
    return true;
}

bool TesselDataProvider::storePackage(const std::wstring& name, const std::wstring& version,
                                      const std::wstring& uninstData, const std::wstring& state) {
    wchar_t letters[TesselPackage::kStateLetters];
    for (std::size_t i = 0; i < TesselPackage::kStateLetters; ++i) {
        letters[i] = i < state.size() ? state[i] : L'\0';
    }
    std::wstring keyText(name);
    keyText += L'.';
    keyText += version;
    return storeNew(
        keyText,
        [&](const PluginSDK::String& key) -> TesselPackage* {
            TesselPackage* package = new (std::nothrow) TesselPackage(key);
            if (package == nullptr) {
                return nullptr;
            }
            const PluginSDK::String texts[] = {toPluginString(name), toPluginString(version),
                                               toPluginString(uninstData)};
            for (int field = 0; field < TesselPackage::FIELD_COUNT; ++field) {
                const auto which = static_cast<Field>(field);
                package->setProperty(
                    TesselPackage::fieldName(which),
                    field < 3 ? texts[field] : TesselPackage::stateValue(which, letters));
            }
            return package;
        },
        nullptr, nullptr);
}

bool TesselDataProvider::storePackage(const char* data,
                                      const std::shared_ptr<const ByteBuffer>& listing,
                                      const Span& name, const Span& version, const Span& uninstData,
                                      const Span& state, IndexPosition& last,
                                      DeferredTraceLines& deferred) {
    // The first five letters; a missing one is 0, one outside ASCII matches none.
    char letters[TesselPackage::kStateLetters] = {};
    std::size_t offset = state.offset;
    const std::size_t end = state.offset + state.length;
    for (std::size_t i = 0; i < TesselPackage::kStateLetters && offset < end; ++i) {
        wchar_t c;
        offset += stepChar(data + offset, end - offset, c);
        letters[i] = c < 0x80 ? static_cast<char>(c) : '\0';
    }
    m_keyText.clear();
    Utf8::decode(data + name.offset, name.length, m_keyText);
    m_keyText += L'.';
    Utf8::decode(data + version.offset, version.length, m_keyText);
    return storeNew(
        m_keyText,
        [&](const PluginSDK::String& key) -> TesselPackage* {
            return new (std::nothrow)
                TesselPackage(key, listing, name, version, uninstData, letters);
        },
        &last, &deferred);
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
    PluginSDK::String installed;
    TErrorCode rc = package->getProperty(
        TesselPackage::fieldName(TesselPackage::FIELD_IS_INSTALLED), installed);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    if (installed == REG_PLUGIN_FALSE) {
        // A removed package.
        *matches = showRemoved;
        return PluginSDK::RESULT_OK;
    }
    PluginSDK::String committed;
    rc = package->getProperty(TesselPackage::fieldName(TesselPackage::FIELD_IS_COMMITTED),
                              committed);
    if (rc != PluginSDK::RESULT_OK) {
        return rc;
    }
    *matches = committed == REG_PLUGIN_TRUE || showUncommitted;
    return PluginSDK::RESULT_OK;
}

}  // namespace RegPlugin
