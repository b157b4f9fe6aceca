/// Strings that tests of the types begin with.
#pragma once

#include <string.h>

#include <string>
#include <vector>

#include "types/DString.h"

/// A string whose last owner has released it.
inline DString NullString() {
    DString text("gone");
    text.Release();
    return text;
}

/// The three states that mean an empty text: null, the shared empty block, a block of its own.
inline std::vector<DString> EmptyStrings() { return {NullString(), DString(), DString("")}; }

/// A string of exactly these bytes, zero bytes included.
inline DString StringOf(const std::string& bytes) {
    DString text;
    memcpy(text.GetBuffer(static_cast<int>(bytes.size())), bytes.data(), bytes.size());
    return text;
}

/// Where the text stands; two strings that share a block stand at the same place.
inline const char* Place(const DString& text) { return text; }
