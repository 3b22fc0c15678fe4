// The rpm database, listed once with one `rpm -qa --queryformat` command.
#ifndef REGPLUGIN_CROSS_RPM_LEGACYRPMDATAPROVIDER_H
#define REGPLUGIN_CROSS_RPM_LEGACYRPMDATAPROVIDER_H

#include "common/PreloadedDataProvider.h"

namespace RegPlugin {

class LegacyRpmDataProvider : public PreloadedDataProvider {
public:
    LegacyRpmDataProvider();
    ~LegacyRpmDataProvider() override;

    // Runs the query and stores one LegacyRpmPackage per record, under its full key
    // (name-version-release-arch) and its short key (name-version-release). Returns
    // 0, or the command runner's error (nothing is stored then).
    TErrorCode load() override;

    // One array field (elements each followed by 0x07) as the text form of a
    // PluginSDK::VectorString, "(none)" elements left out. Newly allocated; the
    // caller frees it with free().
    wchar_t* parseRpmArray(char* i_String);
    // The root directories of an array of directories (VectorString text form), in
    // the same form. Newly allocated; the caller frees it with free().
    wchar_t* getRpmRootDirs(wchar_t* i_DirNames);

    // The command line that load() runs.
    static const char* queryCommand();
};

}  // namespace RegPlugin

#endif
