// The rpm database, listed once with one `rpm -qa --queryformat` command.
#ifndef REGPLUGIN_CROSS_RPM_LEGACYRPMDATAPROVIDER_H
#define REGPLUGIN_CROSS_RPM_LEGACYRPMDATAPROVIDER_H

#include <cstddef>

#include "common/PreloadedDataProvider.h"

namespace RegPlugin {

class LegacyRpmDataProvider : public PreloadedDataProvider {
  public:
    LegacyRpmDataProvider();
    ~LegacyRpmDataProvider() override;

    // Runs the query and stores one LegacyRpmPackage per record, under its full key
    // (name-version-release-arch) and its short key (name-version-release). Returns
    // 0, or the command runner's error (nothing is stored then).
    //
    // A record with fewer than fifteen fields is dropped with a trace line; the
    // others are still read. The first record of a full key wins (later ones are
    // dropped, short key included), and a short key finds the first package stored
    // under it. Records are read while the command runs; when it then fails, the
    // packages read are dropped again. `rpm` is found through PATH and reads the
    // caller's environment (HOME and its ~/.rpmmacros among others).
    TErrorCode load() override;

    // What load() does with the command's output, for `length` bytes already in
    // memory (tests and the fuzz harness): the bytes are handed to the record parser
    // in reads of `readSize` bytes (0: all at once) through a buffer that grows as
    // the command's does, then the rest is read as the last record. The packages are
    // stored as load() stores them; the cache's load state is not changed.
    void parseOutput(const char* data, std::size_t length, std::size_t readSize);

    // One array field (elements each followed by 0x07) as the text form of a
    // PluginSDK::VectorString, "(none)" elements left out. Newly allocated; the
    // caller frees it with free(). The field is split in place.
    wchar_t* parseRpmArray(char* i_String);
    // The root directories of an array of directories (VectorString text form), in
    // the same form. Newly allocated; the caller frees it with free().
    //
    // Each directory, given exactly one trailing "/", is merged into the first root
    // that shares more than "/" with it: that root is replaced by the common leading
    // directory, which moves to the end of the list. A directory that shares only
    // "/" with every root is appended as a root of its own. Empty names are ignored.
    wchar_t* getRpmRootDirs(wchar_t* i_DirNames);

    // The command line that load() runs.
    static const char* queryCommand();
};

// The parsing helpers of the provider.

// Like strtok_r with one separator character, but empty fields are tokens. On the
// first call `str` is the text (split in place); later calls pass null and continue
// from `*pString`. Returns the next token, NUL-terminated in place, or null when the
// text is used up; a separator at the very end gives no further token.
char* getToken(char* str, char separator, char** pString);

// `a` with exactly one trailing "/" added when it does not end with one (an empty
// `a` stays empty). Newly allocated (free()); null when memory runs out.
wchar_t* getSlashedDir(const wchar_t* a);

// The longest leading directory (ending in "/") that `a` and `b` share: "/" when
// they share only the root, null when they share no "/" at all (or memory runs out).
// Newly allocated (free()).
wchar_t* getCommonDir(const wchar_t* a, const wchar_t* b);

}  // namespace RegPlugin

#endif
