/// A locale with a decimal comma and with letters beyond ASCII, for the tests that need one.
#pragma once

#include <locale.h>
#include <stdlib.h>

#include <string>

#include "support/Support.h"

/// Sets the process to German in ISO 8859-1 for the life of the object. The locale is compiled into
/// the scratch folder, since few machines have it; IsSet is false where that can't be done.
class GermanLocale {
public:
    GermanLocale() {
        const std::string compile =
            "localedef -i de_DE -f ISO-8859-1 '" + Scratch("tarsel_DE") + "' >/dev/null 2>&1";
        if (!Exists(Scratch("tarsel_DE")) && system(compile.c_str()) != 0) return;
        setenv("LOCPATH", ScratchFolder().c_str(), 1);
        m_Set = setlocale(LC_ALL, "tarsel_DE") != nullptr;
    }
    ~GermanLocale() {
        setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }
    GermanLocale(const GermanLocale&) = delete;
    GermanLocale& operator=(const GermanLocale&) = delete;

    bool IsSet() const { return m_Set; }

private:
    bool m_Set = false;
};
