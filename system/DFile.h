/// DFile: a thin wrapper over one C stream, through which the library does all its file input and
/// output, and calls that read or write a whole file. Errors show in the boolean and count results
/// alone, and nothing is logged here.
///
/// Names go through FileExists first, so a file whose name differs in case alone is opened, and
/// not created beside it.
#pragma once

#include <stdio.h>
#include <wchar.h>

#include "types/DStringArray.h"

class DFile {
public:
    FILE* m_Stream = nullptr;  ///< the open stream; null when closed

    DFile() = default;
    DFile(const DFile&) = delete;
    DFile& operator=(const DFile&) = delete;
    /// The same as Close.
    ~DFile();

    /// Opens a file, after closing what was open. `mode` is the sum of 1 (read), 2 (write) and
    /// 4 (binary): 5 reads a data file, 6 creates or replaces one, 7 updates one in place. Modes 0
    /// and 4 are refused. A folder opens for reading and delivers nothing. A FIFO waits for its
    /// other end.
    bool Open(DString name, int mode);
    void Close();

    /// Block transfers. A closed stream or a count below 1 transfers nothing. BRead returns the
    /// bytes delivered, fewer than `count` at the end of the file.
    int BRead(void* buffer, int count);
    void BWrite(const void* buffer, int count);

    /// The string record of the binary formats (docs/formats.md): a length of 2 bytes
    /// (`shortLength`) or 4, then the text. A length of 0 or below, or one that isn't delivered,
    /// leaves the target as it was. A text cut short by the end of the file is filled up with zero
    /// bytes, 65,536 at most: further ones that are missing are undefined and cost no memory.
    void DSRead(DString& target, bool shortLength);
    /// Writes that record with a length of `width` 2 or 4 bytes; any other width writes the bare
    /// text. A width of 2 keeps the low 16 bits of the length.
    void DSWrite(const DString& text, int width);

    /// fgetws; false if the stream is closed or nothing is delivered.
    bool ReadWString(wchar_t* buffer, int count);
    /// One line, without its line feed and without one carriage return before that. At most
    /// `bufferSize` - 2 bytes are taken; a longer line arrives in pieces. The end of the file and a
    /// blank line both give an empty text, and so does a `bufferSize` of 2 or less. A closed stream
    /// leaves the target as it was.
    void ReadLine(DString& target, int bufferSize);

    /// ReadLine, split at `delim` into `result`, which is emptied first; nothing happens on a
    /// closed stream.
    void ReadLineArray(DStringArray& result, int bufferSize, const char* delim);

    /// The whole file; empty if it is missing, empty or a folder. Its length is the low 32 bits of
    /// its size: a negative one gives an empty text, and beyond 4 GiB only the beginning is read.
    static DString GetText(const DString& name);
    /// Replaces the file by `text`. True if it could be opened, whatever the write then did.
    static bool WriteText(const DString& name, DString text);
    /// Appends `text` and LDelim. True if the file could be opened.
    static bool WriteLine(const DString& name, const DString& text);

    /// The lines of a file, with either kind of line end; none if it is missing. A line end at the
    /// very end adds no line.
    static void GetLines(const DString& name, DStringArray& lines);
    /// The lines, each split at `delim` into a row.
    static void GetStringTable(const DString& name, DArray<DStringArray>& rows, const char* delim);
    /// The lines, each split at `delim` into a column: what WriteArray wrote comes back transposed.
    static void GetArray(const DString& name, DStringArray& table, const char* delim);
    /// Replace a file by lines, or by the rows of a table with `delim` between their cells; LDelim
    /// stands between lines and not behind the last. True if the file could be opened.
    static bool WriteLines(const DString& name, DStringArray& lines);
    static bool WriteArray(const DString& name, DStringArray& table, const char* delim);
    /// Copies a file block by block; one whose size doesn't fit an int is copied in part or not at
    /// all. Nothing happens if one of the two can't be opened, or both are the same file. Always
    /// true.
    static bool CopyLargeFile(DString& source, DString& target);
};
