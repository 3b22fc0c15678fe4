#include "base/File.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace {

String joinPath(const String& directory, const String& name) {
    const std::wstring& dir = directory.wide();
    if (dir.empty()) {
        return name;
    }
    std::wstring joined = dir;
    if (joined.back() != L'/') {
        joined.push_back(L'/');
    }
    joined.append(name.wide());
    return String(joined);
}

bool statPath(const String& path, struct stat& info) {
    const char* narrow = path;
    return ::stat(narrow, &info) == 0;
}

}  // namespace

File::File(const String& path) : m_path(path) {}
File::File(const char* path) : m_path(path) {}
File::File(const wchar_t* path) : m_path(path) {}
File::File(const String& directory, const String& name) : m_path(joinPath(directory, name)) {}
File::File(const char* directory, const char* name)
    : m_path(joinPath(String(directory), String(name))) {}
File::File(const wchar_t* directory, const wchar_t* name)
    : m_path(joinPath(String(directory), String(name))) {}

bool File::exists() const {
    struct stat info;
    return statPath(m_path, info);
}

bool File::isFile() const {
    struct stat info;
    return statPath(m_path, info) && S_ISREG(info.st_mode);
}

bool File::isDirectory() const {
    struct stat info;
    return statPath(m_path, info) && S_ISDIR(info.st_mode);
}

String File::getParent() const {
    const std::wstring& path = m_path.wide();
    std::size_t end = path.size();
    // Drop trailing separators, keeping a lone root.
    while (end > 1 && path[end - 1] == L'/') {
        --end;
    }
    if (end == 0) {
        return String();
    }
    if (end == 1 && path[0] == L'/') {
        return String(L"/");
    }
    const std::size_t slash = path.rfind(L'/', end - 1);
    if (slash == std::wstring::npos) {
        return String();
    }
    std::size_t parentEnd = slash;
    while (parentEnd > 0 && path[parentEnd - 1] == L'/') {
        --parentEnd;
    }
    if (parentEnd == 0) {
        return String(L"/");
    }
    return String(path.substr(0, parentEnd));
}

int File::list(ObjectArray<String>& out, ListTypes type) const {
    const char* narrow = m_path;
    DIR* dir = ::opendir(narrow);
    if (dir == nullptr) {
        return errno;
    }
    const int dirFd = ::dirfd(dir);
    std::vector<std::string> names;
    int error = 0;
    for (;;) {
        errno = 0;
        const struct dirent* entry = ::readdir(dir);
        if (entry == nullptr) {
            error = errno;
            break;
        }
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
            continue;
        }
        if (type != LIST_ALL) {
            bool isDir;
            if (entry->d_type == DT_DIR) {
                isDir = true;
            } else if (entry->d_type != DT_UNKNOWN && entry->d_type != DT_LNK) {
                isDir = false;
            } else {
                // Follows links: a link to a directory counts as a directory, a
                // dangling link as a non-directory.
                struct stat info;
                isDir = ::fstatat(dirFd, name, &info, 0) == 0 && S_ISDIR(info.st_mode);
            }
            if (isDir != (type == LIST_DIRECTORIES)) {
                continue;
            }
        }
        names.emplace_back(name);
    }
    ::closedir(dir);
    if (error != 0) {
        return error;
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        out.add(String(name.c_str()));
    }
    return 0;
}

String File::NormalizePath(const String& path) {
    const std::wstring& text = path.wide();
    if (text.empty()) {
        return String();
    }
    const bool absolute = text[0] == L'/';
    const bool trailing = text.back() == L'/';
    std::vector<std::wstring> parts;
    std::size_t pos = 0;
    while (pos <= text.size()) {
        std::size_t next = text.find(L'/', pos);
        if (next == std::wstring::npos) {
            next = text.size();
        }
        std::wstring part = text.substr(pos, next - pos);
        pos = next + 1;
        if (part.empty() || part == L".") {
            continue;
        }
        if (part == L"..") {
            if (!parts.empty() && parts.back() != L"..") {
                parts.pop_back();
            } else if (!absolute) {
                parts.push_back(part);
            }
            continue;
        }
        parts.push_back(std::move(part));
    }
    std::wstring result;
    if (absolute) {
        result.push_back(L'/');
    }
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i != 0) {
            result.push_back(L'/');
        }
        result.append(parts[i]);
    }
    if (result.empty()) {
        return String(L".");
    }
    if (trailing && result.back() != L'/') {
        result.push_back(L'/');
    }
    return String(result);
}
