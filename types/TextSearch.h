/// The search that replacing and splitting share. Internal to the library.
#pragma once

#include <stddef.h>
#include <string.h>

/// The first `pattern`, `length` bytes long and at least one, at or behind `start` in a text whose
/// first zero byte is at `end`; null if there is none.
inline const char* FindText(const char* start, const char* end, const char* pattern,
                            size_t length) {
    // strstr is slower where it has one byte to look for.
    if (length > 1) return strstr(start, pattern);
    return static_cast<const char*>(memchr(start, *pattern, static_cast<size_t>(end - start)));
}
