// Locale-independent simple case mapping shared by String and GlobFilter.
#ifndef HOSTSDK_BASE_CASEFOLD_H
#define HOSTSDK_BASE_CASEFOLD_H

namespace hostsdk {

// The lower-case form of `c` (simple one-to-one mapping from the Unicode tables of
// the C.UTF-8 locale, whatever the process locale is); `c` itself when it has none.
// When no such locale is installed only A-Z are mapped.
wchar_t foldCase(wchar_t c);
// The upper-case form of `c`, under the same rules.
wchar_t upperCase(wchar_t c);

}  // namespace hostsdk

#endif
