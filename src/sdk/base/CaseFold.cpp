#include "CaseFold.h"

#include <clocale>
#include <cwctype>

#include <locale.h>

namespace hostsdk {
namespace {

// Created once and kept for the life of the process (never freed, so that the
// mapping stays usable from static destructors).
locale_t unicodeLocale() {
    static const locale_t locale = [] {
        locale_t made = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
        if (made == static_cast<locale_t>(nullptr)) {
            made = newlocale(LC_CTYPE_MASK, "C.utf8", static_cast<locale_t>(nullptr));
        }
        return made;
    }();
    return locale;
}

inline bool outsideTables(wchar_t c) {
    return c < 0x80 || c > 0x10FFFF;
}

}  // namespace

wchar_t foldCase(wchar_t c) {
    if (outsideTables(c)) {
        return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c + 32) : c;
    }
    const locale_t locale = unicodeLocale();
    if (locale == static_cast<locale_t>(nullptr)) {
        return c;
    }
    return static_cast<wchar_t>(towlower_l(static_cast<wint_t>(c), locale));
}

wchar_t upperCase(wchar_t c) {
    if (outsideTables(c)) {
        return (c >= L'a' && c <= L'z') ? static_cast<wchar_t>(c - 32) : c;
    }
    const locale_t locale = unicodeLocale();
    if (locale == static_cast<locale_t>(nullptr)) {
        return c;
    }
    return static_cast<wchar_t>(towupper_l(static_cast<wint_t>(c), locale));
}

}  // namespace hostsdk
