// A path on the local file system, and the questions asked about it.
//
// A File only holds its path; every query goes to the disk when it is asked and
// follows symbolic links. Paths are UTF-8 on the disk (see base/Utf8.h).
#ifndef HOSTSDK_BASE_FILE_H
#define HOSTSDK_BASE_FILE_H

#include "base/Export.h"
#include "base/ObjectArray.h"
#include "base/String.h"

class HOSTSDK_API File {
  public:
    enum ListTypes {
        LIST_ALL = 0,          // every entry
        LIST_FILES = 1,        // entries that are not directories
        LIST_DIRECTORIES = 2,  // sub-directories only
    };

    explicit File(const String& path);
    explicit File(const char* path);
    explicit File(const wchar_t* path);
    // `directory` joined with `name` by one "/": no "/" is doubled when `directory`
    // already ends with one, and an empty `directory` gives `name` alone.
    File(const String& directory, const String& name);
    File(const char* directory, const char* name);
    File(const wchar_t* directory, const wchar_t* name);

    bool exists() const;
    // A regular file.
    bool isFile() const;
    bool isDirectory() const;

    // The path as built, not normalised.
    const String& getPath() const { return m_path; }
    // The path without its last component and without trailing separators:
    // "/a/b" and "/a/b/" give "/a", "/a" gives "/", "/" gives "/", "a" gives "".
    String getParent() const;

    // Appends the names of the directory's entries (relative to the directory,
    // "." and ".." excluded) of the kind `type` selects, in ascending byte order of
    // their names. Returns 0, or the errno value when the directory cannot be read
    // (nothing is appended then).
    int list(ObjectArray<String>& out, ListTypes type) const;

    // Resolves "." and ".." components and doubled separators without touching the
    // disk. ".." at the root stays at the root; a relative path keeps the leading
    // ".." components it cannot resolve, and one that resolves to nothing ("a/..")
    // gives "."; a trailing separator is kept; "" stays "".
    static String NormalizePath(const String& path);

  private:
    String m_path;
};

#endif
