#include "PluginSDK/IniFileReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/Utf8.h"

namespace PluginSDK {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v';
}

// Narrows [*begin, *end) of `text` by the blanks at both ends. Blanks are ASCII, and
// no byte of a multi-byte UTF-8 sequence is ASCII, so trimming the bytes trims the
// decoded characters.
void trim(const std::string& text, std::size_t* begin, std::size_t* end) {
    while (*begin < *end && isBlank(text[*begin])) {
        ++*begin;
    }
    while (*end > *begin && isBlank(text[*end - 1])) {
        --*end;
    }
}

// True when the bytes [begin, end) of `text` decode to `expected`.
bool decodesTo(const std::string& text, std::size_t begin, std::size_t end,
               const std::wstring& expected, std::wstring& scratch) {
    if (end - begin < expected.size() || end - begin > 4 * expected.size()) {
        return false;  // every character takes one to four bytes
    }
    scratch.clear();
    Utf8::decode(text.data() + begin, end - begin, scratch);
    return scratch == expected;
}

// Reads the whole regular file at `path` into `out`; false when it cannot be opened,
// is not a regular file or a read fails.
bool readFile(const std::string& path, std::string& out) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        return false;
    }
    struct stat info;
    bool ok = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    if (ok && info.st_size > 0) {
        out.reserve(static_cast<std::size_t>(info.st_size));
    }
    char buffer[16384];
    while (ok) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got > 0) {
            out.append(buffer, static_cast<std::size_t>(got));
        } else if (got == 0) {
            break;
        } else if (errno != EINTR) {
            ok = false;
        }
    }
    ::close(fd);
    return ok;
}

}  // namespace

IniFileReader::IniFileReader(const wchar_t* path) : m_loaded(false), m_start(0) {
    if (path == nullptr || *path == L'\0') {
        return;
    }
    if (!readFile(Utf8::encode(path), m_text)) {
        m_text.clear();
        m_text.shrink_to_fit();
        return;
    }
    if (m_text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        m_start = 3;  // byte order mark
    }
    m_loaded = true;
}

bool IniFileReader::getProperty(const std::wstring& section, const std::wstring& key,
                                std::wstring& value) const {
    if (key.empty()) {
        return false;  // lines with an empty key are never stored
    }
    // Lines before the first header belong to the section with the empty name.
    bool inSection = section.empty();
    bool found = false;
    std::size_t valueBegin = 0;
    std::size_t valueEnd = 0;
    std::wstring scratch;
    const std::size_t size = m_text.size();
    std::size_t next = m_start;
    while (next < size) {
        std::size_t stop = m_text.find('\n', next);
        if (stop == std::string::npos) {
            stop = size;
        }
        std::size_t first = next;
        std::size_t last = stop;
        next = stop + 1;
        trim(m_text, &first, &last);
        if (first == last || m_text[first] == '#' || m_text[first] == ';') {
            continue;
        }
        if (m_text[first] == '[') {
            if (last - first >= 2 && m_text[last - 1] == ']') {
                std::size_t nameBegin = first + 1;
                std::size_t nameEnd = last - 1;
                trim(m_text, &nameBegin, &nameEnd);
                inSection = decodesTo(m_text, nameBegin, nameEnd, section, scratch);
            }
            continue;
        }
        if (!inSection) {
            continue;
        }
        const std::size_t equals = m_text.find('=', first);
        if (equals >= stop) {
            continue;
        }
        std::size_t keyBegin = first;
        std::size_t keyEnd = equals;
        trim(m_text, &keyBegin, &keyEnd);
        if (decodesTo(m_text, keyBegin, keyEnd, key, scratch)) {
            // A later line of the same key replaces an earlier one.
            found = true;
            valueBegin = equals + 1;
            valueEnd = stop;
            trim(m_text, &valueBegin, &valueEnd);
        }
    }
    if (!found) {
        return false;
    }
    value.clear();
    Utf8::decode(m_text.data() + valueBegin, valueEnd - valueBegin, value);
    return true;
}

}  // namespace PluginSDK
