#include "PluginSDK/IniFileReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/Utf8.h"

namespace PluginSDK {

namespace {

bool isBlank(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\r' || c == L'\f' || c == L'\v';
}

std::wstring trimmed(const std::wstring& text, std::size_t begin, std::size_t end) {
    while (begin < end && isBlank(text[begin])) {
        ++begin;
    }
    while (end > begin && isBlank(text[end - 1])) {
        --end;
    }
    return text.substr(begin, end - begin);
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

IniFileReader::IniFileReader(const wchar_t* path) : m_loaded(false) {
    if (path == nullptr || *path == L'\0') {
        return;
    }
    std::string bytes;
    if (!readFile(Utf8::encode(path), bytes)) {
        return;
    }
    std::size_t start = 0;
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        start = 3;  // byte order mark
    }
    std::wstring section;
    std::wstring line;
    while (start < bytes.size()) {
        std::size_t stop = bytes.find('\n', start);
        if (stop == std::string::npos) {
            stop = bytes.size();
        }
        line.clear();
        Utf8::decode(bytes.data() + start, stop - start, line);
        start = stop + 1;

        std::size_t first = 0;
        while (first < line.size() && isBlank(line[first])) {
            ++first;
        }
        if (first == line.size() || line[first] == L'#' || line[first] == L';') {
            continue;
        }
        if (line[first] == L'[') {
            std::size_t last = line.size();
            while (last > first && isBlank(line[last - 1])) {
                --last;
            }
            if (last - first >= 2 && line[last - 1] == L']') {
                section = trimmed(line, first + 1, last - 1);
            }
            continue;
        }
        const std::size_t equals = line.find(L'=', first);
        if (equals == std::wstring::npos) {
            continue;
        }
        std::wstring key = trimmed(line, first, equals);
        if (key.empty()) {
            continue;
        }
        m_sections[section][key] = trimmed(line, equals + 1, line.size());
    }
    m_loaded = true;
}

bool IniFileReader::getProperty(const std::wstring& section, const std::wstring& key,
                                std::wstring& value) const {
    auto foundSection = m_sections.find(section);
    if (foundSection == m_sections.end()) {
        return false;
    }
    auto foundKey = foundSection->second.find(key);
    if (foundKey == foundSection->second.end()) {
        return false;
    }
    value = foundKey->second;
    return true;
}

}  // namespace PluginSDK
