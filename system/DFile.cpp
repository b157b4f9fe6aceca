// DFile: streams, blocks, records and lines, and whole text files.
#include "system/DFile.h"

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <bit>
#include <limits>

#include "system/DSystem.h"
#include "system/FolderEntries.h"
#include "types/MemoryWatch.h"

static_assert(std::endian::native == std::endian::little,
              "the binary formats are little-endian, and so are the transfers of them");

namespace {

constexpr int ReadMode = 1;
constexpr int WriteMode = 2;
constexpr int BinaryMode = 4;

// The most zero bytes in place of text that wasn't delivered. Touching all that a corrupt length
// asks for would cost gigabytes.
constexpr int MostZeros = 65536;

// A longer one has no block; asking for it would count as refused memory.
constexpr int LongestText = std::numeric_limits<int>::max() - 64;

// The mode text of the C library; modes without reading and writing give one that it refuses.
DString ModeText(int mode) {
    DString text;
    if (mode & ReadMode) {
        text = mode & WriteMode ? "r+" : "r";
    } else if (mode & WriteMode) {
        text = "w";
    }
    if (mode & BinaryMode) text += "b";
    return text;
}

// What an open stream stands for. The C library opens folders too, to deliver nothing.
EntryKind KindOf(FILE* stream) {
    struct stat status;
    return fstat(fileno(stream), &status) == 0 ? KindOf(status) : EntryKind::None;
}

// Calls `transfer(piece, bytes)` for each chunk of a block and adds up what it delivers. A short
// chunk doesn't end the block.
template <typename Byte, typename Transfer>
int InChunks(Byte* block, int count, Transfer transfer) {
    constexpr int ChunkSize = 60000000;
    int delivered = 0;
    for (int done = 0; done < count;) {
        const int size = std::min(ChunkSize, count - done);
        delivered += static_cast<int>(transfer(block + done, static_cast<size_t>(size)));
        done += size;
    }
    return delivered;
}

// The length in front of a string record; 0 where it isn't delivered whole.
template <typename Length>
int ReadLength(DFile& file) {
    Length length = 0;
    return file.BRead(&length, sizeof length) == sizeof length ? length : 0;
}

bool WriteWhole(const DString& name, const char* mode, const DString& text,
                const DString& lineEnd) {
    const MemoryWatch memory;
    DString corrected(name);
    FileExists(corrected);
    if (!memory.Whole()) return false;
    DFile file;
    file.m_Stream = fopen64(corrected, mode);
    if (!file.m_Stream) return false;
    file.DSWrite(text, 0);
    file.DSWrite(lineEnd, 0);
    return true;
}

}  // namespace

// ---- Streams

DFile::~DFile() { Close(); }

bool DFile::Open(DString name, int mode) {
    Close();
    const MemoryWatch memory;
    const DString text = ModeText(mode);
    // Where a plain file opens under the name as it is, nothing was there to correct.
    if (mode & ReadMode) m_Stream = fopen64(name, text);
    if (m_Stream && KindOf(m_Stream) == EntryKind::File) return true;
    Close();
    FileExists(name);
    if (!memory.Whole()) return false;
    m_Stream = fopen64(name, text);
    if (!m_Stream) {
        NoteFailedOpen();
        return false;
    }
    return true;
}

void DFile::Close() {
    if (m_Stream) fclose(m_Stream);
    m_Stream = nullptr;
}

int DFile::BRead(void* buffer, int count) {
    if (!m_Stream) return 0;
    return InChunks(static_cast<char*>(buffer), count,
                    [this](char* piece, size_t size) { return fread(piece, 1, size, m_Stream); });
}

void DFile::BWrite(const void* buffer, int count) {
    if (!m_Stream) return;
    InChunks(static_cast<const char*>(buffer), count,
             [this](const char* piece, size_t size) { return fwrite(piece, 1, size, m_Stream); });
}

// ---- String records

void DFile::DSRead(DString& target, bool shortLength) {
    const int length = shortLength ? ReadLength<int16_t>(*this) : ReadLength<int32_t>(*this);
    if (length <= 0) return;
    char* text = length <= LongestText ? target.GetBuffer(length) : nullptr;
    if (!text) {
        fseeko64(m_Stream, length, SEEK_CUR);  // what stands behind the text is read all the same
        return;
    }
    const int delivered = BRead(text, length);
    memset(text + delivered, 0, static_cast<size_t>(std::min(length - delivered, MostZeros)));
}

void DFile::DSWrite(const DString& text, int width) {
    const int32_t length = text.GetLength();
    if (width == 2 || width == 4) BWrite(&length, width);
    BWrite(static_cast<const char*>(text), length);
}

// ---- Lines

bool DFile::ReadWString(wchar_t* buffer, int count) {
    return m_Stream && buffer && count > 0 && fgetws(buffer, count, m_Stream);
}

void DFile::ReadLine(DString& target, int bufferSize) {
    if (!m_Stream) return;
    target = DString();
    if (bufferSize <= 2) return;
    char* line = target.GetBuffer(bufferSize);
    if (!line) return;
    if (!fgets(line, bufferSize - 1, m_Stream)) {
        target = DString();
        return;
    }
    int length = static_cast<int>(strlen(line));
    if (length > 0 && line[length - 1] == '\n') --length;
    if (length > 0 && line[length - 1] == '\r') --length;
    target.Truncate(length);
}

// ---- Whole text files

DString DFile::GetText(const DString& name) {
    DString text;
    const int length = GetFileLen(name);
    if (length <= 0) return text;
    DFile file;
    if (!file.Open(name, ReadMode | BinaryMode)) return text;
    char* buffer = text.GetBuffer(length);
    if (!buffer) return DString();
    // A file that another process cuts meanwhile ends where it does now: a settings document that
    // is being rewritten must read as empty and not as zero bytes, so that it is read again.
    text.Truncate(file.BRead(buffer, length));
    return text;
}

bool DFile::WriteText(const DString& name, DString text) {
    return WriteWhole(name, "wb", text, DString());
}

bool DFile::WriteLine(const DString& name, const DString& text) {
    return WriteWhole(name, "a+b", text, LDelim);
}
