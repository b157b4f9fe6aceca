/// The pieces of which the binary data formats are made (docs/formats.md), read and written through
/// a DFile: plain little-endian numbers, seeks, and long runs of floats. A closed stream delivers
/// and takes nothing. String records are DFile's own (DSRead, DSWrite).
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <sys/stat.h>

#include <algorithm>
#include <type_traits>

#include "system/DFile.h"

/// Reads one number. True if all of its bytes were delivered; `field` stays as it was otherwise.
template <typename T>
bool ReadField(DFile& file, T& field) {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    if (file.BRead(&value, sizeof value) != static_cast<int>(sizeof value)) return false;
    field = value;
    return true;
}

/// A length or count that steers the reading; 0 where it isn't delivered.
template <typename T>
T ReadLengthField(DFile& file) {
    T length = 0;
    ReadField(file, length);
    return length;
}

/// Writes one number in the size of its type, which callers name where it matters.
template <typename T>
void WriteField(DFile& file, T value) {
    static_assert(std::is_trivially_copyable_v<T>);
    file.BWrite(&value, sizeof value);
}

/// Moves on by `bytes`, which may be negative. False where the stream refuses the seek, which
/// leaves the position.
inline bool SkipBytes(DFile& file, int64_t bytes) {
    return bytes == 0 || (file.m_Stream && fseeko64(file.m_Stream, bytes, SEEK_CUR) == 0);
}

/// The bytes of the file behind the stream; the most that there can be where it is no regular file.
inline int64_t FileBytes(const DFile& file) {
    struct stat status;
    const int descriptor = file.m_Stream ? fileno(file.m_Stream) : -1;
    const bool isRegular =
        descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return isRegular ? int64_t{status.st_size} : INT64_MAX;
}

/// The most floats that one block transfer takes, whose byte count is an int: whole chunks of the
/// 60,000,000 bytes in which DFile moves blocks.
constexpr int64_t FloatsPerTransfer = 525000000;

/// Reads `count` floats in as many transfers as they need. Floats that the file doesn't have stay
/// as they were, but one that the file's end cuts in two becomes 0. A count below 1 reads nothing.
inline void ReadFloats(DFile& file, float* values, int64_t count) {
    for (int64_t done = 0; done < count; done += FloatsPerTransfer) {
        const int64_t n = std::min(FloatsPerTransfer, count - done);
        const int bytes = file.BRead(values + done, static_cast<int>(n * int64_t{sizeof(float)}));
        if (bytes % int{sizeof(float)} != 0) values[done + bytes / int{sizeof(float)}] = 0.0f;
    }
}

/// Writes likewise.
inline void WriteFloats(DFile& file, const float* values, int64_t count) {
    for (int64_t done = 0; done < count; done += FloatsPerTransfer) {
        const int64_t n = std::min(FloatsPerTransfer, count - done);
        file.BWrite(values + done, static_cast<int>(n * int64_t{sizeof(float)}));
    }
}
