// The products and features that ISMP installers record in their registry file,
// "vpd.properties" in the home directory of the user "root".
//
// The file holds one entry per line, KEY "=" INFO, each half a list of fields
// separated by "|" (the layout is written down in IsmpDataProvider.cpp). Fields are
// taken with strtok, whose one hidden state is shared by every parse* and skip
// operation of a line: the order of their calls is part of the format, and nothing
// else may use strtok while a file or a line is parsed (which also makes the parser
// single-threaded).
#ifndef REGPLUGIN_CROSS_ISMP_ISMPDATAPROVIDER_H
#define REGPLUGIN_CROSS_ISMP_ISMPDATAPROVIDER_H

#include <string>

#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"
#include "common/PreloadedDataProvider.h"
#include "cross/ismp/IsmpPackage.h"
#include "cross/rpm/MemoryBuffer.h"

namespace RegPlugin {

class IsmpDataProvider : public PreloadedDataProvider {
  public:
    // What skip() passes over.
    enum SkipTarget : int32_t {
        SKIP_FIELDS = 0,          // `count` fields
        SKIP_COUNTED_LIST = 1,    // a count field N, then N records of `count` fields
        SKIP_TEN_FIELD_LIST = 2,  // a counted list of 10-field records
    };

    // Reads root's registry file: its path is looked up (getpwnam) when the registry
    // is loaded. Nothing is read before the first query.
    IsmpDataProvider();
    // Reads `registryFile` instead (tests and tools pass fixtures).
    explicit IsmpDataProvider(const std::string& registryFile);
    ~IsmpDataProvider() override;

    // Parses every registry file of getVitalDataPaths into the cache. A missing file,
    // or a path that is not a regular file, is not an error (0, nothing added).
    // Returns 0 when some file was parsed whole; otherwise the last file's error:
    // REG_PLUGIN_ERROR_UNABLE_TO_OPEN_ISMP_REGISTRY, or the error of its first bad
    // line (see parseRegistryEntry). The packages read before a bad line stay in the
    // cache even then.
    TErrorCode load() override;

    // Appends the registry files to read: the constructor's file, or
    // registryPathInHome(root's home directory); none when there is no user "root".
    // Always returns 0.
    TErrorCode getVitalDataPaths(PluginSDK::StringVector& paths);

    // `home` + "/" + "vpd.properties", without the "/" when `home` is empty or
    // already ends with one: "/root" and "/root/" give "/root/vpd.properties", "/"
    // gives "/vpd.properties", "" gives "vpd.properties".
    static std::string registryPathInHome(const std::string& home);

    // Parses the file at `path` line by line (parseRegistryStream). Returns
    // REG_PLUGIN_ERROR_NO_VALID_ISMP_REGISTRY_FILE when it does not exist or is not a
    // regular file, REG_PLUGIN_ERROR_UNABLE_TO_OPEN_ISMP_REGISTRY when it cannot be
    // opened, else parseRegistryStream's result.
    TErrorCode parseRegistry(const PluginSDK::String& path);

    // Reads the open stdio stream `file` (a FILE*; not closed here) with readLine and
    // hands each line to parseRegistryEntry until the end of the input, a read error
    // or the first line whose entry fails; returns that entry's error, or 0. The
    // packages of the lines before stay in the cache. A fuzz harness can drive the
    // whole file parser through this with fmemopen, without touching the disk.
    TErrorCode parseRegistryStream(void* file);

    // Parses one line (without its newline; the text ends at its first NUL byte) and
    // adds the package to the cache. `line` is not modified. Returns 0 for a blank
    // line, for a package added (or dropped because the cache already has its key)
    // and for a feature; REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_ENTRY without KEY or
    // INFO half; REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD for an empty name;
    // REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY for a product line with extra fields or a
    // malformed uninstaller field; nothing is added on an error.
    TErrorCode parseRegistryEntry(char* line);

    // The KEY half (cut up in place with strtok): sets the package's key, version and
    // instance. Always returns 0.
    TErrorCode parseRegistryEntryKey(char* key, IsmpPackage& package);

    // The INFO half (cut up in place with strtok): sets name, description, vendor,
    // installDir, and for a product that is read to its end, uninstData; a feature
    // becomes a SUBPRODUCT with an empty uninstData. Returns 0 (also when a skipped
    // field or list is missing or malformed: the package keeps what was read up to
    // there), REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD for an empty name, or
    // REG_PLUGIN_ERROR_PARSING_ISMP_REGISTRY.
    TErrorCode parseRegistryEntryInfo(char* info, IsmpPackage& package);

    // Passes over fields of the line being cut up (strtok's state, delimiter "|").
    // SKIP_FIELDS: `count` fields (none for a count of 0 or less). SKIP_COUNTED_LIST:
    // one field read as a decimal count N, then N records of `count` fields (none for
    // N <= 0). SKIP_TEN_FIELD_LIST: a counted list of 10-field records (`count` is
    // ignored). Returns REG_PLUGIN_ERROR_INVALID_ISMP_REGISTRY_FIELD when a field is
    // missing or a count is not a decimal number, 0 otherwise and for any other
    // `target`.
    TErrorCode skip(SkipTarget target, int count);

    // Reads one whole line of any length from the stdio stream `file` (a FILE*) into
    // `buffer`, which grows one step at a time (resize(size + 1)) while the line does
    // not fit, and returns its length without the newline, which is removed. The text
    // is NUL-terminated; a NUL byte inside the line is kept (and counted), so the line
    // ends at its newline, not at the NUL. At the end of the input or on a read error
    // the text is what was read (possibly empty). `buffer` must not be empty.
    int readLine(void* file, MemoryBuffer& buffer);

  private:
    bool m_rootHome;             // look root's home up at load time
    std::string m_registryFile;  // otherwise the one file to read
};

}  // namespace RegPlugin

#endif
