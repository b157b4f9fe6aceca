/// What the targets of the data files share: bounds that keep a run cheap, and the test that what
/// was written, read and written again stays the same. It goes through streams in memory, since
/// most of a run is file access.
#pragma once

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <string>

#include "support/Fuzzing.h"
#include "system/DFile.h"

/// The most values and characters of an object that a run goes on with.
constexpr int MostValues = 4096;

inline bool IsShort(const DString& text) { return text.GetLength() <= MostValues; }

/// Telling the time reads no file from here on.
inline void FixTimeZone() { REQUIRE(setenv("TZ", "UTC0", 1) == 0); }

/// Reads an object by `read(object, file)` from these bytes. A seek behind their end is refused.
template <typename Object, typename Read>
void ReadFrom(const std::string& bytes, Object& object, const Read& read) {
    DFile file;
    file.m_Stream = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb");
    REQUIRE(file.m_Stream);
    read(object, file);
}

template <typename Object>
std::string Written(Object& object) {
    char* text = nullptr;
    size_t size = 0;
    DFile file;
    file.m_Stream = open_memstream(&text, &size);
    REQUIRE(file.m_Stream);
    object.Write(file);
    file.Close();
    const std::string bytes(text, size);
    free(text);
    return bytes;
}

/// A run of bytes in which two files may differ.
struct Loss {
    size_t m_Begin = 0;
    size_t m_End = 0;
};

inline std::string Without(std::string bytes, Loss loss) {
    return bytes.erase(std::min(loss.m_Begin, bytes.size()), loss.m_End - loss.m_Begin);
}

/// Writes `object` and reads that, twice in turn: the second and the third writing are the same but
/// for `loss`. The result is the second.
template <typename Object, typename Read>
std::string RequireStable(Object& object, const Read& read, Loss loss = {}) {
    Object second;
    ReadFrom(Written(object), second, read);
    const std::string bytes = Written(second);
    Object third;
    ReadFrom(bytes, third, read);
    REQUIRE(third.m_Date == second.m_Date);
    const std::string again = Written(third);
    const bool sameSecond = third.m_Date == second.m_Date;
    REQUIRE(!sameSecond || Without(bytes, loss) == Without(again, loss));
    return bytes;
}
