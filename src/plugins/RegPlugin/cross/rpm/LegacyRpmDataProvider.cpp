#include "cross/rpm/LegacyRpmDataProvider.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <deque>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "PluginSDK/StringVector.h"
#include "PluginSDK/VectorString.h"
#include "RegPluginConstants.h"
#include "base/Utf8.h"
#include "common/DeferredTraceLines.h"
#include "common/PluginTrace.h"
#include "cross/rpm/LegacyRpmPackage.h"
#include "cross/rpm/LegacyRpmUtil.h"
#include "cross/rpm/MemoryBuffer.h"

namespace RegPlugin {

namespace {

// The command, one shell word after --queryformat. Fields end with 0x0B, array
// elements with 0x07, records with 0x0D; ARCH comes before RELEASE.
const char kQueryCommand[] =
    "rpm -qa --queryformat '"
    "%{NAME}\v%{VERSION}\v%{ARCH}\v%{RELEASE}\v%{VENDOR}\v%{INSTALLTIME:date}\v%{SUMMARY}\v"
    "[%{REQUIRENAME}\a]\v[%{REQUIREVERSION}\a]\v[%{REQUIREFLAGS:depflags}\a]\v"
    "[%{CONFLICTNAME}\a]\v[%{CONFLICTVERSION}\a]\v[%{CONFLICTFLAGS:depflags}\a]\v"
    "[%{DIRNAMES}\a]\v[%{DISTRIBUTION}\a]\v\r'";

const char kFieldSeparator = '\v';
const char kArraySeparator = '\a';
const char kRecordTerminator = '\r';
// What rpm prints for a tag that a package does not have.
const char kNone[] = "(none)";

const unsigned int kBufferSize = 16384;
const unsigned int kBufferStep = 4096;

// The fields of a record, in the order of the query format.
enum Field {
    NAME,
    VERSION,
    ARCH,
    RELEASE,
    VENDOR,
    INSTALLTIME,
    SUMMARY,
    REQUIRENAME,
    REQUIREVERSION,
    REQUIREFLAGS,
    CONFLICTNAME,
    CONFLICTVERSION,
    CONFLICTFLAGS,
    DIRNAMES,
    DISTRIBUTION,
    FIELD_COUNT
};

// The properties of a package, in the order in which they are listed.
enum Property {
    P_NAME,
    P_RELEASE,
    P_VERSION,
    P_DISPLAY_VERSION,
    P_VENDOR,
    P_INSTALL_DATE,
    P_DESCRIPTION,
    P_REQUIRE_NAME,
    P_ARCH,
    P_REQUIRE_VERSION,
    P_REQUIRE_FLAGS,
    P_CONFLICT_NAME,
    P_CONFLICT_VERSION,
    P_CONFLICT_FLAGS,
    P_INSTALL_DIR,
    P_DISTRIBUTION,
    PROPERTY_COUNT
};

// The property names, made once: every package's map shares their storage. Also
// the order in which a map sorts them, so that a package's map is built by
// appending at its end.
class PropertyNames {
  public:
    static const PropertyNames& get() {
        static const PropertyNames names;
        return names;
    }

    const PluginSDK::String& operator[](int property) const { return m_names[property]; }
    // The properties in the map's order.
    const int* sorted() const { return m_sorted; }

  private:
    PropertyNames() {
        const wchar_t* const texts[PROPERTY_COUNT] = {REG_PLUGIN_PROPERTY_FIELD_NAME,
                                                      REG_PLUGIN_PROPERTY_FIELD_RELEASE,
                                                      REG_PLUGIN_PROPERTY_FIELD_VERSION,
                                                      REG_PLUGIN_PROPERTY_FIELD_DISPLAY_VERSION,
                                                      REG_PLUGIN_PROPERTY_FIELD_VENDOR,
                                                      REG_PLUGIN_PROPERTY_FIELD_INSTALL_DATE,
                                                      REG_PLUGIN_PROPERTY_FIELD_DESCRIPTION,
                                                      REG_PLUGIN_PROPERTY_FIELD_REQUIRE_NAME,
                                                      REG_PLUGIN_PROPERTY_FIELD_ARCH,
                                                      REG_PLUGIN_PROPERTY_FIELD_REQUIRE_VERSION,
                                                      REG_PLUGIN_PROPERTY_FIELD_REQUIRE_FLAGS,
                                                      REG_PLUGIN_PROPERTY_FIELD_CONFLICT_NAME,
                                                      REG_PLUGIN_PROPERTY_FIELD_CONFLICT_VERSION,
                                                      REG_PLUGIN_PROPERTY_FIELD_CONFLICT_FLAGS,
                                                      REG_PLUGIN_PROPERTY_FIELD_INSTDIR,
                                                      REG_PLUGIN_PROPERTY_FIELD_DISTRIBUTION};
        for (int i = 0; i < PROPERTY_COUNT; ++i) {
            m_names[i] = texts[i];
            m_sorted[i] = i;
        }
        std::sort(m_sorted, m_sorted + PROPERTY_COUNT,
                  [this](int a, int b) { return m_names[a] < m_names[b]; });
    }

    PluginSDK::String m_names[PROPERTY_COUNT];
    int m_sorted[PROPERTY_COUNT];
};

// Appends the characters of the NUL-terminated UTF-8 `text` to `out`.
void decodeInto(const char* text, std::wstring& out) {
    Utf8::decode(text, std::strlen(text), out);
}

wchar_t* duplicate(const wchar_t* text, std::size_t length) {
    wchar_t* copy = static_cast<wchar_t*>(std::malloc((length + 1) * sizeof(wchar_t)));
    if (copy != nullptr) {
        std::wmemcpy(copy, text, length);
        copy[length] = L'\0';
    }
    return copy;
}

// Calls `visit(element)` for each element of the array field `field` (split in
// place), decoded into `scratch`, leaving "(none)" out.
template <class Visit>
void forEachArrayElement(char* field, std::wstring& scratch, Visit visit) {
    char* position = nullptr;
    for (char* element = getToken(field, kArraySeparator, &position); element != nullptr;
         element = getToken(nullptr, kArraySeparator, &position)) {
        if (std::strcmp(element, kNone) == 0) {
            continue;
        }
        scratch.clear();
        decodeInto(element, scratch);
        visit(scratch);
    }
}

// Appends the elements of the array field `field` (split in place) to `out`,
// leaving "(none)" out. `scratch` is working space.
void appendArrayElements(char* field, std::wstring& scratch, PluginSDK::VectorString& out) {
    forEachArrayElement(field, scratch,
                        [&out](const std::wstring& element) { out += element.c_str(); });
}

// Collects the root directories of a list of directories, in linear time.
//
// A directory is merged into the first root whose common leading directory with it
// is longer than "/". That holds exactly when both start with the same first
// component: the text up to and including the first "/" after the first character
// (the "top"). Merging keeps the top, so the live roots always have distinct tops
// and at most one of them can qualify. A root without a top (the directory "/"
// itself) never qualifies. Few roots are searched one by one, many through an
// index by top.
class RootDirs {
  public:
    RootDirs() : m_count(0), m_indexed(false) {}

    // Empties the list; the storage is kept for the next list.
    void clear() {
        m_count = 0;
        if (m_indexed) {
            m_byTop.clear();
            m_indexed = false;
        }
    }

    // Adds one directory of `length` characters; an empty one is ignored.
    void add(const wchar_t* dir, std::size_t length) {
        if (length == 0) {
            return;
        }
        if (m_count == m_roots.size()) {
            m_roots.emplace_back();
        }
        Root& root = m_roots[m_count];
        root.dir.assign(dir, length);
        if (root.dir.back() != L'/') {
            root.dir += L'/';
        }
        const std::size_t topEnd = root.dir.find(L'/', 1);
        root.topLength = topEnd == std::wstring::npos ? 0 : topEnd + 1;
        root.live = true;
        if (root.topLength != 0) {
            const std::size_t match = findTop(root);
            if (match != kNoRoot) {
                Root& merged = m_roots[match];
                // The common part reaches at least to the end of the shared top.
                std::size_t commonLength = root.topLength;
                for (std::size_t i = root.topLength;
                     i < root.dir.size() && i < merged.dir.size() && root.dir[i] == merged.dir[i];
                     ++i) {
                    if (root.dir[i] == L'/') {
                        commonLength = i + 1;
                    }
                }
                root.dir.resize(commonLength);
                merged.live = false;
            }
        }
        ++m_count;
        if (m_indexed) {
            index(m_count - 1);
        } else if (m_count == kIndexFrom) {
            m_indexed = true;
            for (std::size_t i = 0; i < m_count; ++i) {
                index(i);
            }
        }
    }

    // Appends the roots, in list order, to `out`.
    void appendTo(PluginSDK::VectorString& out) const {
        for (std::size_t i = 0; i < m_count; ++i) {
            if (m_roots[i].live) {
                out += m_roots[i].dir.c_str();
            }
        }
    }

  private:
    struct Root {
        std::wstring dir;
        std::size_t topLength;  // 0: no top
        bool live;              // false once merged into a later root
    };

    static constexpr std::size_t kNoRoot = static_cast<std::size_t>(-1);
    static constexpr std::size_t kIndexFrom = 16;  // list entries, merged ones included

    // The live root with the top of `root`, or kNoRoot.
    std::size_t findTop(const Root& root) const {
        if (!m_indexed) {
            for (std::size_t i = 0; i < m_count; ++i) {
                const Root& candidate = m_roots[i];
                if (candidate.live && candidate.topLength == root.topLength &&
                    std::wmemcmp(candidate.dir.data(), root.dir.data(), root.topLength) == 0) {
                    return i;
                }
            }
            return kNoRoot;
        }
        const auto found = m_byTop.find(root.dir.substr(0, root.topLength));
        return found == m_byTop.end() ? kNoRoot : found->second;
    }

    void index(std::size_t position) {
        const Root& root = m_roots[position];
        if (root.live && root.topLength != 0) {
            m_byTop[root.dir.substr(0, root.topLength)] = position;
        }
    }

    std::vector<Root> m_roots;  // the first m_count are the list; the rest are spare
    std::size_t m_count;
    bool m_indexed;                                         // m_byTop is in use
    std::unordered_map<std::wstring, std::size_t> m_byTop;  // top -> live root
};

// Values that many packages share (vendors, dates, dependency lists) are made once
// per load and then shared: the host's strings are reference-counted. Keyed by the
// field's raw bytes, so a repeated value is neither decoded nor split again.
class ValueCache {
  public:
    // The value of `field`, made by `convert(field)` unless an equal field was
    // converted before. Long fields, which rarely repeat, are not kept.
    template <class Convert>
    PluginSDK::String get(char* field, Convert convert) {
        const std::size_t length = std::strlen(field);
        if (length > kLongest) {
            return convert(field);
        }
        const std::string_view raw(field, length);
        const auto found = m_values.find(raw);
        if (found != m_values.end()) {
            return found->second;
        }
        m_keys.emplace_back(raw);  // before `convert` splits the field in place
        PluginSDK::String value = convert(field);
        m_values.emplace(m_keys.back(), value);
        return value;
    }

  private:
    static constexpr std::size_t kLongest = 256;
    std::deque<std::string> m_keys;  // elements never move: the map's keys point here
    std::unordered_map<std::string_view, PluginSDK::String> m_values;
};

// Turns the records of the command's output into packages in `cache`; the lines it
// traces are held in `lines`.
class RecordReader {
  public:
    RecordReader(CachedDataProvider& cache, DeferredTraceLines& lines)
        : m_lines(lines), m_cache(cache), m_names(PropertyNames::get()) {}

    // Reads the record that starts at `record` and is NUL-terminated at `recordEnd`.
    void read(char* record, char* recordEnd) {
        char* fields[FIELD_COUNT];
        char* position = nullptr;
        for (int i = 0; i < FIELD_COUNT; ++i) {
            fields[i] = getToken(i == 0 ? record : nullptr, kFieldSeparator, &position);
            if (fields[i] == nullptr) {
                // Show the whole record, not just its first field.
                for (char* p = record; p < recordEnd; ++p) {
                    if (*p == '\0') {
                        *p = kFieldSeparator;
                    }
                }
                m_lines.add(3, __FILE__, __LINE__, "skipping line ", PluginSDK::String(record));
                return;
            }
        }

        // NAME-VERSION-RELEASE, then -ARCH; the name, the release and the two
        // version texts are cut out of the same text.
        std::wstring& text = m_text;
        text.clear();
        decodeInto(fields[NAME], text);
        const std::size_t nameLength = text.size();
        text += L'-';
        decodeInto(fields[VERSION], text);
        const std::size_t versionEnd = text.size();
        text += L'-';
        decodeInto(fields[RELEASE], text);
        const std::size_t releaseStart = versionEnd + 1;
        const std::size_t shortKeyLength = text.size();
        text += L'-';
        decodeInto(fields[ARCH], text);

        const PluginSDK::String fullKey(text.data(), text.size());
        m_lines.add(3, __FILE__, __LINE__, "creating new package for ", fullKey);
        if (m_cache.find(fullKey) != nullptr) {
            // The cache would not take it; and its short key must not lead to a
            // package that nobody owns.
            m_lines.add(3, __FILE__, __LINE__, "skipping duplicate package ", fullKey);
            return;
        }
        const PluginSDK::String shortKey(text.data(), shortKeyLength);

        PluginSDK::String values[PROPERTY_COUNT];
        values[P_NAME] = PluginSDK::String(text.data(), nameLength);
        values[P_RELEASE] =
            PluginSDK::String(text.data() + releaseStart, shortKeyLength - releaseStart);
        const wchar_t* version = text.data() + nameLength + 1;
        const std::size_t versionLength = shortKeyLength - nameLength - 1;
        text[versionEnd] = L'.';
        values[P_VERSION] = PluginSDK::String(version, versionLength);
        text[versionEnd] = L'-';
        values[P_DISPLAY_VERSION] = PluginSDK::String(version, versionLength);
        const auto toText = [this](char* field) { return single(field); };
        const auto toArray = [this](char* field) { return array(field); };
        values[P_VENDOR] = m_sharedTexts.get(fields[VENDOR], toText);
        values[P_INSTALL_DATE] = m_sharedTexts.get(fields[INSTALLTIME], toText);
        values[P_DESCRIPTION] = single(fields[SUMMARY]);
        values[P_REQUIRE_NAME] = m_sharedArrays.get(fields[REQUIRENAME], toArray);
        values[P_ARCH] = m_sharedArrays.get(fields[ARCH], toArray);
        values[P_REQUIRE_VERSION] = m_sharedArrays.get(fields[REQUIREVERSION], toArray);
        values[P_REQUIRE_FLAGS] = m_sharedArrays.get(fields[REQUIREFLAGS], toArray);
        values[P_CONFLICT_NAME] = m_sharedArrays.get(fields[CONFLICTNAME], toArray);
        values[P_CONFLICT_VERSION] = m_sharedArrays.get(fields[CONFLICTVERSION], toArray);
        values[P_CONFLICT_FLAGS] = m_sharedArrays.get(fields[CONFLICTFLAGS], toArray);
        values[P_DISTRIBUTION] = m_sharedArrays.get(fields[DISTRIBUTION], toArray);
        values[P_INSTALL_DIR] = rootDirs(fields[DIRNAMES]);

        std::unique_ptr<LegacyRpmPackage> package(new LegacyRpmPackage(fullKey));
        // The same map as setProperty would build, filled in its own order.
        std::map<PluginSDK::String, PluginSDK::String>& properties = package->properties;
        const int* sorted = m_names.sorted();
        for (int i = 0; i < PROPERTY_COUNT; ++i) {
            properties.emplace_hint(properties.end(), m_names[sorted[i]],
                                    std::move(values[sorted[i]]));
        }

        m_cache.addToMap(package.get(), shortKey);
        m_cache.add(package.get());
        // Taken: its full key was not known (checked above).
        package.release();
    }

  private:
    PluginSDK::String single(const char* field) {
        m_scratch.clear();
        decodeInto(field, m_scratch);
        return PluginSDK::String(m_scratch.data(), m_scratch.size());
    }

    PluginSDK::String array(char* field) {
        if (*field == '\0') {
            return PluginSDK::String();
        }
        resetElements();
        appendArrayElements(field, m_scratch, m_elements);
        return PluginSDK::String(static_cast<const wchar_t*>(m_elements));
    }

    // Empties m_elements, keeping its storage (copying an empty list in does).
    void resetElements() {
        static const PluginSDK::VectorString kEmpty;
        m_elements = kEmpty;
    }

    PluginSDK::String rootDirs(char* field) {
        m_roots.clear();
        forEachArrayElement(field, m_scratch, [this](const std::wstring& dir) {
            m_roots.add(dir.data(), dir.size());
        });
        resetElements();
        m_roots.appendTo(m_elements);
        return PluginSDK::String(static_cast<const wchar_t*>(m_elements));
    }

    DeferredTraceLines& m_lines;
    CachedDataProvider& m_cache;
    const PropertyNames& m_names;
    std::wstring m_text;     // keys and the values cut out of them
    std::wstring m_scratch;  // one value at a time
    RootDirs m_roots;
    PluginSDK::VectorString m_elements;  // one array value at a time
    // One cache per conversion: equal bytes convert differently as text and as array.
    ValueCache m_sharedTexts;
    ValueCache m_sharedArrays;
};

// Parses the output while it arrives: each record that ends in a carriage return as
// soon as it is complete (the command runs meanwhile), the last one, which has
// none, when the output has ended.
class RecordStream : public CommandOutputListener {
  public:
    explicit RecordStream(RecordReader& reader) : m_reader(reader), m_parsed(0), m_scanned(0) {}

    void onOutput(MemoryBuffer& output, std::size_t length) override {
        char* const data = reinterpret_cast<char*>(output.data);
        while (m_scanned < length) {
            char* const terminator = static_cast<char*>(
                std::memchr(data + m_scanned, kRecordTerminator, length - m_scanned));
            if (terminator == nullptr) {
                m_scanned = length;
                return;
            }
            *terminator = '\0';
            m_reader.read(data + m_parsed, terminator);
            m_parsed = m_scanned = static_cast<std::size_t>(terminator - data) + 1;
        }
    }

    // Reads what is left once the output has ended; `output` is NUL-terminated at
    // `length`.
    void finish(MemoryBuffer& output, std::size_t length) {
        onOutput(output, length);
        if (m_parsed < length) {
            char* const data = reinterpret_cast<char*>(output.data);
            m_reader.read(data + m_parsed, data + length);
            m_parsed = length;
        }
    }

  private:
    RecordReader& m_reader;
    std::size_t m_parsed;   // records before this offset are read
    std::size_t m_scanned;  // no carriage return between m_parsed and this offset
};

}  // namespace

char* getToken(char* str, char separator, char** pString) {
    REG_ASSERT(pString != __null);
    if (str != nullptr) {
        *pString = str;
    }
    REG_ASSERT(*pString != __null);
    char* const start = *pString;
    if (*start == '\0') {
        return nullptr;
    }
    char* end = start;
    while (*end != '\0' && *end != separator) {
        ++end;
    }
    if (*end != '\0') {
        *end = '\0';
        *pString = end + 1;
    } else {
        *pString = end;
    }
    return start;
}

wchar_t* getSlashedDir(const wchar_t* a) {
    REG_ASSERT(a != __null);
    const std::size_t length = std::wcslen(a);
    if (length == 0 || a[length - 1] == L'/') {
        return duplicate(a, length);
    }
    wchar_t* slashed = static_cast<wchar_t*>(std::malloc((length + 2) * sizeof(wchar_t)));
    if (slashed != nullptr) {
        std::wmemcpy(slashed, a, length);
        slashed[length] = L'/';
        slashed[length + 1] = L'\0';
    }
    return slashed;
}

wchar_t* getCommonDir(const wchar_t* a, const wchar_t* b) {
    REG_ASSERT(a != __null && b != __null);
    std::size_t lastSlash = 0;
    bool slashSeen = false;
    for (std::size_t i = 0; a[i] != L'\0' && a[i] == b[i]; ++i) {
        if (a[i] == L'/') {
            lastSlash = i;
            slashSeen = true;
        }
    }
    if (!slashSeen) {
        return nullptr;
    }
    return duplicate(a, lastSlash + 1);
}

LegacyRpmDataProvider::LegacyRpmDataProvider() = default;

LegacyRpmDataProvider::~LegacyRpmDataProvider() = default;

const char* LegacyRpmDataProvider::queryCommand() {
    return kQueryCommand;
}

TErrorCode LegacyRpmDataProvider::load() {
    REG_TRACE_SCOPE("LegacyRpmDataProvider::load()");
    MemoryBuffer buffer(kBufferSize, kBufferStep);
    buffer.zero();

    // Records are read in place in the buffer, while the command still runs. The
    // output's length, not its first zero byte, bounds the walk, so a stray zero
    // byte costs one record, not the rest. The level 3 lines about single records
    // must still follow the load as people read it: they are written after "command
    // executed with success, parsing command output", in record order, and never
    // when the command fails.
    const std::size_t packagesBefore = packages.size();
    DeferredTraceLines lines;
    RecordReader reader(*this, lines);
    RecordStream stream(reader);
    REG_TRACE(3, "Executing rpm command ", kQueryCommand);
    std::size_t length = 0;
    const TErrorCode result =
        LegacyRpmUtil::execCommand(PluginSDK::String(kQueryCommand), buffer, length, &stream);
    if (result != PluginSDK::RESULT_OK) {
        REG_TRACE(1, "Unable to execute rpm command ");
        dropPackagesFrom(packagesBefore);
        return result;
    }
    REG_TRACE(3, "command executed with success, parsing command output");
    stream.finish(buffer, length);
    lines.write(regTrace_);
    return PluginSDK::RESULT_OK;
}

void LegacyRpmDataProvider::parseOutput(const char* data, std::size_t length,
                                        std::size_t readSize) {
    REG_TRACE_SCOPE("LegacyRpmDataProvider::parseOutput()");
    REG_ASSERT(data != __null || length == 0);
    MemoryBuffer buffer(kBufferSize, kBufferStep);
    buffer.zero();
    DeferredTraceLines lines;
    RecordReader reader(*this, lines);
    RecordStream stream(reader);
    if (readSize == 0) {
        readSize = length;
    }
    // As execCommand reads the pipe: at least one free (zero) byte stays behind
    // the data.
    std::size_t offset = 0;
    for (;;) {
        if (offset >= buffer.size &&
            (offset >= UINT32_MAX ||
             buffer.resize(static_cast<unsigned int>(offset) + 1) == nullptr)) {
            REG_TRACE(1, "the output does not fit in memory");
            offset = buffer.size == 0 ? 0 : buffer.size - 1;
            break;
        }
        if (offset == length) {
            break;
        }
        const std::size_t count = std::min({readSize, buffer.size - offset, length - offset});
        std::memcpy(buffer.data + offset, data + offset, count);
        offset += count;
        stream.onOutput(buffer, offset);
    }
    if (buffer.data != nullptr) {
        buffer.data[offset] = 0;
    }
    stream.finish(buffer, offset);
    lines.write(regTrace_);
}

wchar_t* LegacyRpmDataProvider::parseRpmArray(char* i_String) {
    REG_ASSERT(i_String != __null);
    std::wstring scratch;
    PluginSDK::VectorString elements;
    appendArrayElements(i_String, scratch, elements);
    const wchar_t* text = elements;
    return duplicate(text, std::wcslen(text));
}

wchar_t* LegacyRpmDataProvider::getRpmRootDirs(wchar_t* i_DirNames) {
    REG_ASSERT(i_DirNames != __null);
    PluginSDK::StringVector dirs;
    PluginSDK::VectorString::toVector(i_DirNames, dirs);
    RootDirs roots;
    for (const PluginSDK::String& dir : dirs) {
        roots.add(dir, static_cast<std::size_t>(dir.length()));
    }
    PluginSDK::VectorString joined;
    roots.appendTo(joined);
    const wchar_t* text = joined;
    return duplicate(text, std::wcslen(text));
}

}  // namespace RegPlugin
