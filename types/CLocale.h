/// Numbers as text in the C locale, whatever locale the host has set: a decimal comma there must
/// not change a file or a result. Internal to the library.
#pragma once

#include <locale.h>
#include <stdlib.h>

/// The C locale, made at the first use and kept to the end of the process.
inline locale_t CLocale() {
    static const locale_t Locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return Locale;
}

/// strtod in the C locale: leading blanks, hexadecimal, "inf" and "nan" are accepted.
inline double ParseDouble(const char* text, char** end) { return strtod_l(text, end, CLocale()); }

/// Puts the calling thread into the C locale for the life of the object.
class ScopedCLocale {
public:
    ScopedCLocale() : m_Previous(uselocale(CLocale())) {}
    ~ScopedCLocale() { uselocale(m_Previous); }
    ScopedCLocale(const ScopedCLocale&) = delete;
    ScopedCLocale& operator=(const ScopedCLocale&) = delete;

private:
    locale_t m_Previous;
};
