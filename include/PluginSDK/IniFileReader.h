// Reads an INI-style file of sections and key = value lines.
//
// Format: "[name]" starts section `name` (blanks around the name are trimmed);
// lines before the first header belong to the section with the empty name, and a
// section named twice continues where it left off. A line "key = value" stores
// `value` under `key`, both trimmed of surrounding blanks; the first "=" separates
// them, so values may hold "=". Lines whose first non-blank character is "#" or ";"
// are comments; blank lines, lines without "=", lines with an empty key and a "["
// line without its closing "]" are ignored; a later key of the same name in one
// section replaces the earlier one. Names are case-sensitive. Line ends may be LF
// or CRLF; text is UTF-8 (a leading byte order mark is skipped, bad bytes are kept
// as described in base/Utf8.h).
//
// The reader keeps the file's bytes and nothing else; each getProperty reads them
// through once. So a reader costs the file's size in memory, whatever the number of
// keys, and a lookup costs one pass over the file.
#ifndef PLUGINSDK_INIFILEREADER_H
#define PLUGINSDK_INIFILEREADER_H

#include <string>

#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API IniFileReader {
  public:
    // Reads the whole file now; a null path, or a path that is not a readable regular
    // file, leaves the reader not loaded and empty.
    explicit IniFileReader(const wchar_t* path);

    bool isLoaded() const { return m_loaded; }
    // Copies the value of `key` in `section` into `value` and returns true; returns
    // false and leaves `value` untouched when there is no such key.
    bool getProperty(const std::wstring& section, const std::wstring& key,
                     std::wstring& value) const;

  private:
    bool m_loaded;
    std::string m_text;   // the file's bytes
    std::size_t m_start;  // where the lines begin (after a byte order mark)
};

}  // namespace PluginSDK

#endif
