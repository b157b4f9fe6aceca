// DFile: text files as lines and tables, and copying files of any size.
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "system/DFile.h"
#include "system/DSystem.h"
#include "system/FolderEntries.h"
#include "types/MemoryWatch.h"

namespace {

constexpr int OpenToRead = 5;
constexpr int OpenToWrite = 6;

void WriteText(DFile& file, const DString& text) { file.DSWrite(text, 0); }

// The cell of a table whose count may be short of its shape.
DString CellOf(const DStringArray& table, int row, int column) {
    const int64_t index = row + column * table.m_Rows;
    return index < table.m_Count ? table.m_Data[index] : DString();
}

bool IsSameFile(const DString& a, const DString& b) {
    DString first(a);
    DString second(b);
    struct stat firstStatus;
    struct stat secondStatus;
    return FileExists(first) && FileExists(second) && stat(first, &firstStatus) == 0 &&
           stat(second, &secondStatus) == 0 && IsSameFile(firstStatus, secondStatus);
}

// Copies `size` bytes in blocks. Bytes that the source doesn't deliver any more are zeros.
void CopyBlocks(DFile& source, DFile& target, int size) {
    constexpr int BlockSize = 1048576;
    static char block[BlockSize];  // no memory that could be refused
    for (int left = size; left > 0;) {
        const int count = std::min(left, BlockSize);
        const int delivered = source.BRead(block, count);
        memset(block + delivered, 0, static_cast<size_t>(count - delivered));
        target.BWrite(block, count);
        left -= count;
    }
}

}  // namespace

void DFile::ReadLineArray(DStringArray& result, int bufferSize, const char* delim) {
    if (!m_Stream) return;
    DString line;
    ReadLine(line, bufferSize);
    result.Clear();
    result.split(line, delim, -1);
}

void DFile::GetLines(const DString& name, DStringArray& lines) {
    const DString text = GetText(name);
    lines.Clear();
    lines.split(text, LDelim, -1);
}

void DFile::GetStringTable(const DString& name, DArray<DStringArray>& rows, const char* delim) {
    DStringArray lines;
    GetLines(name, lines);
    lines.MakeTable(rows, delim, -1);
}

void DFile::GetArray(const DString& name, DStringArray& table, const char* delim) {
    table.Split2D(GetText(name), delim, -1);
}

bool DFile::WriteLines(const DString& name, DStringArray& lines) {
    DFile file;
    if (!file.Open(name, OpenToWrite)) return false;
    for (int i = 0; i < lines.Count(); ++i) {
        if (i > 0) ::WriteText(file, LDelim);
        ::WriteText(file, lines[i]);
    }
    return true;
}

bool DFile::WriteArray(const DString& name, DStringArray& table, const char* delim) {
    DFile file;
    if (!file.Open(name, OpenToWrite)) return false;
    const DString separator(delim);
    for (int row = 0; row < table.RCount(); ++row) {
        if (row > 0) ::WriteText(file, LDelim);
        for (int column = 0; column < table.CCount(); ++column) {
            if (column > 0) ::WriteText(file, separator);
            ::WriteText(file, CellOf(table, row, column));
        }
    }
    return true;
}

bool DFile::CopyLargeFile(DString& source, DString& target) {
    DFile reader;
    DFile writer;
    if (reader.Open(source, OpenToRead) && !IsSameFile(source, target) &&
        writer.Open(target, OpenToWrite)) {
        CopyBlocks(reader, writer, GetFileLen(source));
    }
    return true;
}
