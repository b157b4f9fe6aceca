/// The pieces of which the binary data formats are made (docs/formats.md), read and written through
/// a DFile: plain little-endian numbers, alone and in blocks, seeks, and long runs of floats. A
/// closed stream delivers and takes nothing. String records are DFile's own (DSRead, DSWrite).
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <type_traits>

#include "system/DFile.h"
#include "types/DArray.h"

/// A data file that is open for reading, with the buffer of its stream on the stack: room for the
/// header and a small object, so that these cost one read.
class DataFileReader {
public:
    bool Open(const DString& name) {
        constexpr int OpenToRead = 5;
        if (!m_File.Open(name, OpenToRead)) return false;
        setvbuf(m_File.m_Stream, m_Buffer, _IOFBF, sizeof m_Buffer);
        return true;
    }

    operator DFile&() { return m_File; }

private:
    char m_Buffer[8192];  // outlives the stream
    DFile m_File;
};

/// Reads one number. True if all of its bytes were delivered; `field` stays as it was otherwise.
template <typename T>
bool ReadField(DFile& file, T& field) {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    if (file.BRead(&value, sizeof value) != static_cast<int>(sizeof value)) return false;
    field = value;
    return true;
}

/// Numbers that stand one behind the other in a file: read at once, and delivered one by one just
/// as ReadField delivers them.
class FieldBlock {
public:
    FieldBlock(DFile& file, int bytes)
        : m_Left(file.BRead(m_Bytes, std::min(bytes, int{sizeof m_Bytes}))) {}

    template <typename T>
    bool Read(T& field) {
        static_assert(std::is_trivially_copyable_v<T>);
        constexpr int Size = sizeof field;
        if (m_Left < Size) {
            m_Left = 0;
            return false;
        }
        memcpy(&field, m_Next, sizeof field);
        m_Next += Size;
        m_Left -= Size;
        return true;
    }

private:
    char m_Bytes[96];
    const char* m_Next = m_Bytes;
    int m_Left;
};

template <typename T>
bool ReadField(FieldBlock& block, T& field) {
    return block.Read(field);
}

/// A length or count that steers the reading; 0 where it isn't delivered.
template <typename T, typename Source>
T ReadLengthField(Source& source) {
    T length = 0;
    ReadField(source, length);
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

/// The bytes of a regular file behind the position of the stream; 0 where they can't be told.
inline int64_t BytesAhead(const DFile& file) {
    const int64_t bytes = FileBytes(file);
    return bytes == INT64_MAX ? 0 : bytes - ftello64(file.m_Stream);
}

/// The most floats that one block transfer takes: the 60,000,000 bytes in which DFile moves blocks.
constexpr int FloatsPerTransfer = 15000000;

/// Reads up to FloatsPerTransfer floats; the number of those that the file had. One that its end
/// cuts in two counts, with zeros for the bytes that are missing; the others stay as they were.
inline int ReadFloats(DFile& file, float* values, int count) {
    constexpr int FloatBytes = sizeof(float);
    const int bytes = file.BRead(values, count * FloatBytes);
    const int floats = (bytes + FloatBytes - 1) / FloatBytes;
    memset(reinterpret_cast<char*>(values) + bytes, 0,
           static_cast<size_t>(floats * FloatBytes - bytes));
    return floats;
}

/// Makes an array of `count` floats and reads them; those that the file doesn't have are 0. Empty
/// where memory is refused.
inline void ReadArray(DFile& file, DArray<float>& values, int count) {
    // From here on zeros that are read over at once cost more than the look at the file's size.
    constexpr int ManyFloats = 4096;
    const int64_t bytes = int64_t{sizeof(float)} * count;
    const bool isHeld = count >= ManyFloats && bytes <= BytesAhead(file);
    values.Clear();
    if (isHeld) {
        values.m_Data = values.alloc(count);
        values.m_Cols = values.m_Count = values.m_Data ? count : 0;
    } else {
        values.Size(count);
    }
    for (int64_t done = 0; done < values.m_Count; done += FloatsPerTransfer) {
        const int n = static_cast<int>(std::min<int64_t>(FloatsPerTransfer, values.m_Count - done));
        float* const piece = values.m_Data + done;
        const int delivered = ReadFloats(file, piece, n);
        // Another process may have cut the file meanwhile.
        if (isHeld) std::fill(piece + delivered, piece + n, 0.0f);
    }
}

/// Writes `count` floats in as many transfers as they need. A count below 1 writes nothing.
inline void WriteFloats(DFile& file, const float* values, int64_t count) {
    for (int64_t done = 0; done < count; done += FloatsPerTransfer) {
        const int64_t n = std::min<int64_t>(FloatsPerTransfer, count - done);
        file.BWrite(values + done, static_cast<int>(n * int64_t{sizeof(float)}));
    }
}
