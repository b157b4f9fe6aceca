// DFile: files as lines and tables, and copies of files of any size.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/Support.h"
#include "system/DFile.h"
#include "tests/system/ScratchPath.h"

namespace fs = std::filesystem;

namespace {

using Strings = std::vector<std::string>;

constexpr size_t BlockSize = 1048576;

// While it lives, the file of that path delivers these bytes to the library, whatever its size.
struct DeliveredBytes {
    DeliveredBytes(const std::string& path, const std::string& bytes);
    ~DeliveredBytes();
    std::string m_Path;
    std::string m_Bytes;
    size_t m_Position = 0;
};

DeliveredBytes* mDelivered = nullptr;

DeliveredBytes::DeliveredBytes(const std::string& path, const std::string& bytes)
    : m_Path(path), m_Bytes(bytes) {
    mDelivered = this;
}

DeliveredBytes::~DeliveredBytes() { mDelivered = nullptr; }

ssize_t Deliver(void* cookie, char* buffer, size_t room) {
    DeliveredBytes& source = *static_cast<DeliveredBytes*>(cookie);
    const size_t count = source.m_Bytes.copy(buffer, room, source.m_Position);
    source.m_Position += count;
    return static_cast<ssize_t>(count);
}

Strings Elements(const DStringArray& array) {
    Strings elements;
    for (int i = 0; i < array.Count(); ++i)
        elements.push_back(Text(array[i]));
    return elements;
}

DStringArray ArrayOf(const Strings& texts) {
    DStringArray array;
    for (const std::string& text : texts) {
        DString element;
        element.AllocCopy(static_cast<int>(text.size()), text.data());
        array.Add(element);
    }
    return array;
}

// A table, given by its rows.
DStringArray TableOf(const std::vector<Strings>& rows) {
    DStringArray table;
    table.Size(static_cast<int>(rows.size()), static_cast<int>(rows[0].size()));
    for (int row = 0; row < table.RCount(); ++row)
        for (int column = 0; column < table.CCount(); ++column)
            table(row, column) =
                rows[static_cast<size_t>(row)][static_cast<size_t>(column)].c_str();
    return table;
}

// The rows of a table, cells parted by "|" and rows by "/".
std::string RowsOf(DStringArray& table) {
    std::string rows;
    for (int row = 0; row < table.RCount(); ++row) {
        if (row > 0) rows += "/";
        for (int column = 0; column < table.CCount(); ++column)
            rows += (column > 0 ? "|" : "") + Text(table(row, column));
    }
    return rows;
}

// The lines of a file of these bytes.
Strings LinesOf(const std::string& bytes) {
    WriteBytes(Scratch("Lines"), bytes);
    DStringArray lines = ArrayOf({"old"});
    DFile::GetLines(ScratchPath("Lines"), lines);
    return Elements(lines);
}

// The file that these lines make.
std::string FileOf(const Strings& texts) {
    DStringArray lines = ArrayOf(texts);
    EXPECT_TRUE(DFile::WriteLines(ScratchPath("Written"), lines));
    return ReadBytes(Scratch("Written"));
}

std::string FileOfTable(DStringArray table, const char* delim) {
    EXPECT_TRUE(DFile::WriteArray(ScratchPath("Table"), table, delim));
    return ReadBytes(Scratch("Table"));
}

std::string TableIn(const std::string& bytes, const char* delim) {
    WriteBytes(Scratch("Cells"), bytes);
    DStringArray table = ArrayOf({"old"});
    DFile::GetArray(ScratchPath("Cells"), table, delim);
    return RowsOf(table);
}

bool CopyLarge(const std::string& source, const std::string& target) {
    DString from = ScratchPath(source);
    DString to = ScratchPath(target);
    return DFile::CopyLargeFile(from, to);
}

// Bytes of which no block equals another.
std::string Pattern(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i % 251 + i / BlockSize);
    return bytes;
}

void ExpectCopied(size_t size) {
    WriteBytes(Scratch("Source"), Pattern(size));
    EXPECT_TRUE(CopyLarge("Source", "Target"));
    EXPECT_TRUE(ReadBytes(Scratch("Target")) == Pattern(size)) << size << " bytes";
}

}  // namespace

// Stands in front of the system's call for the whole program.
extern "C" FILE* fopen64(const char* path, const char* mode) {
    static const auto real = reinterpret_cast<decltype(&fopen64)>(dlsym(RTLD_NEXT, "fopen64"));
    if (!mDelivered || mDelivered->m_Path != path) return real(path, mode);
    return fopencookie(mDelivered, mode, {Deliver, nullptr, nullptr, nullptr});
}

// ---- Reading lines

TEST(DFileLines, EitherLineEndPartsThem) {
    EXPECT_EQ(LinesOf("a\r\nb\nc\r\n"), (Strings{"a", "b", "c"}));
}

TEST(DFileLines, LastOneNeedsNoLineEnd) { EXPECT_EQ(LinesOf("a\nb"), (Strings{"a", "b"})); }

TEST(DFileLines, BlankOnesAreKept) {
    EXPECT_EQ(LinesOf("a\n\nb"), (Strings{"a", "", "b"}));
    EXPECT_EQ(LinesOf("\r\n\r\na\n\n"), (Strings{"", "", "a", ""}));
}

TEST(DFileLines, LineEndAloneIsOneEmptyLine) {
    EXPECT_EQ(LinesOf("\r\n"), Strings{""});
    EXPECT_EQ(LinesOf("\n"), Strings{""});
}

TEST(DFileLines, LoseOneCarriageReturnAndNoBlanks) {
    EXPECT_EQ(LinesOf(" a \r\r\n\tb\rc\n"), (Strings{" a \r", "\tb\rc"}));
}

TEST(DFileLines, AreNotPartedBehindAZeroByte) {
    EXPECT_EQ(LinesOf(std::string("a\nb\0c\nd", 7)), (Strings{"a", std::string("b\0c\nd", 5)}));
}

TEST(DFileLines, OfAMissingOrEmptyFileOrAFolderAreNone) {
    DStringArray lines = ArrayOf({"old"});
    DFile::GetLines(ScratchPath("missing"), lines);
    EXPECT_EQ(lines.Count(), 0);
    EXPECT_EQ(LinesOf(""), Strings());
    lines = ArrayOf({"old"});
    DFile::GetLines(ScratchFolder().c_str(), lines);
    EXPECT_EQ(lines.Count(), 0);
    EXPECT_FALSE(Exists(Scratch("missing")));
}

TEST(DFileLines, NameMayBeOneOfTheLinesAndOfOtherCase) {
    WriteBytes(Scratch("List.txt"), "a\nb");
    DStringArray lines = ArrayOf({Scratch("LIST.TXT")});
    DFile::GetLines(lines[0], lines);
    EXPECT_EQ(Elements(lines), (Strings{"a", "b"}));
}

// ---- Reading one line as cells

TEST(DFileLineArray, IsOneLinePartedAtTheDelimiter) {
    WriteBytes(Scratch("Rows"), "a,b,,c,\r\nd");
    DFile file;
    ASSERT_TRUE(file.Open(ScratchPath("Rows"), 5));
    DStringArray cells = ArrayOf({"old", "older"});
    file.ReadLineArray(cells, 100, ",");
    EXPECT_EQ(Elements(cells), (Strings{"a", "b", "", "c"}));
    file.ReadLineArray(cells, 100, ",");
    EXPECT_EQ(Elements(cells), Strings{"d"});
}

TEST(DFileLineArray, IsEmptyAtABlankLineAndAtTheEnd) {
    WriteBytes(Scratch("Rows"), "\r\n");
    DFile file;
    ASSERT_TRUE(file.Open(ScratchPath("Rows"), 5));
    for (int i = 0; i < 2; ++i) {
        DStringArray cells = ArrayOf({"old"});
        file.ReadLineArray(cells, 100, ",");
        EXPECT_EQ(cells.Count(), 0);
    }
}

TEST(DFileLineArray, TakesALongLineInPieces) {
    WriteBytes(Scratch("Rows"), "ab,cd,ef\n");
    DFile file;
    ASSERT_TRUE(file.Open(ScratchPath("Rows"), 5));
    DStringArray cells;
    file.ReadLineArray(cells, 6, ",");
    EXPECT_EQ(Elements(cells), (Strings{"ab", "c"}));
    file.ReadLineArray(cells, 6, ",");
    EXPECT_EQ(Elements(cells), (Strings{"d", "ef"}));
}

TEST(DFileLineArray, OnAClosedStreamLeavesTheResult) {
    DFile file;
    DStringArray cells = ArrayOf({"old"});
    file.ReadLineArray(cells, 100, ",");
    EXPECT_EQ(Elements(cells), Strings{"old"});
}

// ---- Reading tables

TEST(DFileStringTable, HasARowOfItsOwnWidthForEachLine) {
    WriteBytes(Scratch("Rows"), "a,b,c\r\n\nd,,\n e ");
    DArray<DStringArray> rows(7);
    DFile::GetStringTable(ScratchPath("Rows"), rows, ",");
    ASSERT_EQ(rows.Count(), 4);
    EXPECT_EQ(Elements(rows[0]), (Strings{"a", "b", "c"}));
    EXPECT_EQ(Elements(rows[1]), Strings());
    EXPECT_EQ(Elements(rows[2]), (Strings{"d", ""}));
    EXPECT_EQ(Elements(rows[3]), Strings{" e "});
}

TEST(DFileStringTable, OfAMissingFileHasNoRows) {
    DArray<DStringArray> rows(7);
    DFile::GetStringTable(ScratchPath("missing"), rows, ",");
    EXPECT_EQ(rows.Count(), 0);
}

TEST(DFileArray, HasAColumnForEachLine) {
    EXPECT_EQ(TableIn("a,b\r\nc,d\ne,f", ","), "a|c|e/b|d|f");
}

TEST(DFileArray, ShortLinesAreFilledWithBlanks) {
    EXPECT_EQ(TableIn("a\n\nb,c,d\n", ","), "a||b/||c/||d");
}

TEST(DFileArray, IsAsWideAsTheWidestOfTheFirst100Lines) {
    std::string bytes = "a;b\n";
    for (int i = 0; i < 99; ++i)
        bytes += "x\n";
    WriteBytes(Scratch("Cells"), bytes + "c;d;e\n");
    DStringArray table;
    DFile::GetArray(ScratchPath("Cells"), table, ";");
    EXPECT_EQ(table.RCount(), 2);
    EXPECT_EQ(table.CCount(), 101);
    EXPECT_EQ(Text(table(1, 100)), "d");
}

TEST(DFileArray, OfAMissingFileIsEmpty) {
    DStringArray table = ArrayOf({"old"});
    DFile::GetArray(ScratchPath("missing"), table, ",");
    EXPECT_EQ(table.Count(), 0);
}

TEST(DFileArray, ComesBackTransposedFromWhatWasWritten) {
    DStringArray table = TableOf({{"a", "b", "c"}, {"d", "e", "f"}});
    ASSERT_TRUE(DFile::WriteArray(ScratchPath("Table"), table, ","));
    DFile::GetArray(ScratchPath("Table"), table, ",");
    EXPECT_EQ(RowsOf(table), "a|d/b|e/c|f");
}

// ---- Writing

TEST(DFileWriteLines, PutsALineEndBetweenThemAndNoneBehind) {
    EXPECT_EQ(FileOf({"a", "b"}), "a\r\nb");
    EXPECT_EQ(FileOf({"a"}), "a");
    EXPECT_EQ(FileOf({"", "a", ""}), "\r\na\r\n");
}

TEST(DFileWriteLines, NoLinesMakeAnEmptyFile) {
    WriteBytes(Scratch("Written"), "old and longer");
    EXPECT_EQ(FileOf({}), "");
}

TEST(DFileWriteLines, LinesAreWrittenAsTheyAre) {
    EXPECT_EQ(FileOf({std::string("a\0b", 3), "c\n"}), std::string("a\0b\r\nc\n", 7));
}

TEST(DFileWriteLines, AreReadBackTheSame) {
    DStringArray lines = ArrayOf({"S1;..\\e/Shots", "S2"});
    ASSERT_TRUE(DFile::WriteLines(ScratchPath("Lines"), lines));
    DStringArray back;
    DFile::GetLines(ScratchPath("Lines"), back);
    EXPECT_EQ(Elements(back), Elements(lines));
}

TEST(DFileWriteLines, ReplaceTheFileOfOtherCase) {
    WriteBytes(Scratch("List.txt"), "old");
    DStringArray lines = ArrayOf({"new"});
    EXPECT_TRUE(DFile::WriteLines(ScratchPath("LIST.txt"), lines));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"List.txt"});
    EXPECT_EQ(ReadBytes(Scratch("List.txt")), "new");
}

TEST(DFileWriteLines, FileThatCannotBeOpenedIsFalse) {
    DStringArray lines = ArrayOf({"a"});
    EXPECT_FALSE(DFile::WriteLines(ScratchPath("missing/List.txt"), lines));
    EXPECT_FALSE(DFile::WriteLines(ScratchFolder().c_str(), lines));
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST(DFileWriteArray, WritesRowByRowWithoutALineEndBehind) {
    EXPECT_EQ(FileOfTable(TableOf({{"a", "b"}, {"c", "d"}}), ","), "a,b\r\nc,d");
    EXPECT_EQ(FileOfTable(TableOf({{"a", "b", "c"}, {"", "", ""}}), "; "), "a; b; c\r\n; ; ");
    EXPECT_EQ(FileOfTable(TableOf({{"a"}, {"b"}}), ","), "a\r\nb");
}

TEST(DFileWriteArray, ListIsOneRow) { EXPECT_EQ(FileOfTable(ArrayOf({"a", "b"}), ","), "a,b"); }

TEST(DFileWriteArray, TableWithoutCellsIsAnEmptyFile) {
    WriteBytes(Scratch("Table"), "old");
    EXPECT_EQ(FileOfTable(DStringArray(), ","), "");
}

TEST(DFileWriteArray, RowsWithoutCellsAreBlankLines) {
    DStringArray table;
    table.ReSize(3, 0);
    EXPECT_EQ(FileOfTable(table, ","), "\r\n\r\n");
}

TEST(DFileWriteArray, NullDelimiterIsNone) {
    EXPECT_EQ(FileOfTable(ArrayOf({"a", "b"}), nullptr), "ab");
}

TEST(DFileWriteArray, ShapeBeyondTheElementsIsBlankAndReadsNothing) {
    DStringArray table = ArrayOf({"a", "b", "c"});
    table.m_Rows = 2;
    EXPECT_EQ(FileOfTable(table, ","), "a,c,\r\nb,,");  // three columns of two
    DStringArray pieces = ArrayOf({"a", "b", "c"});
    pieces.m_Cols = 3;
    pieces.m_Rows = 2;
    ASSERT_TRUE(DFile::WriteArray(ScratchPath("Table"), pieces, ","));
    EXPECT_EQ(ReadBytes(Scratch("Table")), "a,c,\r\nb,,");
}

TEST(DFileWriteArray, FileThatCannotBeOpenedIsFalse) {
    DStringArray table = ArrayOf({"a"});
    EXPECT_FALSE(DFile::WriteArray(ScratchPath("missing/Table"), table, ","));
}

// ---- Copies

TEST(DFileCopy, TakesEveryByteAroundTheSizeOfABlock) {
    for (const size_t size : {size_t{0}, size_t{1}, BlockSize - 1, BlockSize, BlockSize + 1,
                              3 * BlockSize, 3 * BlockSize + 7}) {
        ExpectCopied(size);
    }
}

TEST(DFileCopy, ReplacesALongerTargetOfOtherCase) {
    WriteBytes(Scratch("Source"), "new");
    WriteBytes(Scratch("Target"), "old and longer");
    EXPECT_TRUE(CopyLarge("SOURCE", "TARGET"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"Source", "Target"}));
    EXPECT_EQ(ReadBytes(Scratch("Target")), "new");
}

TEST(DFileCopy, LeavesBothNamesAsTheyWereGiven) {
    WriteBytes(Scratch("Source"), "1");
    WriteBytes(Scratch("Target"), "2");
    DString source = ScratchPath("SOURCE");
    DString target = ScratchPath("TARGET");
    EXPECT_TRUE(DFile::CopyLargeFile(source, target));
    EXPECT_EQ(Text(source), Scratch("SOURCE"));
    EXPECT_EQ(Text(target), Scratch("TARGET"));
}

TEST(DFileCopy, MissingSourceIsTrueAndLeavesTheTarget) {
    WriteBytes(Scratch("Target"), "old");
    EXPECT_TRUE(CopyLarge("missing", "Target"));
    EXPECT_TRUE(CopyLarge("missing", "New"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"Target"});
    EXPECT_EQ(ReadBytes(Scratch("Target")), "old");
}

TEST(DFileCopy, TargetInAMissingFolderIsTrueAndMakesNothing) {
    WriteBytes(Scratch("Source"), "1");
    EXPECT_TRUE(CopyLarge("Source", "missing/Target"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"Source"});
}

TEST(DFileCopy, OntoItselfDoesNothing) {
    WriteBytes(Scratch("Source"), "kept");
    fs::create_symlink("Source", Scratch("Link"));
    fs::create_hard_link(Scratch("Source"), Scratch("Second"));
    for (const char* target : {"Source", "SOURCE", "Link", "Second"}) {
        EXPECT_TRUE(CopyLarge("Source", target));
        EXPECT_EQ(ReadBytes(Scratch("Source")), "kept") << target;
    }
    EXPECT_TRUE(fs::is_symlink(Scratch("Link")));
    DString both = ScratchPath("Source");
    EXPECT_TRUE(DFile::CopyLargeFile(both, both));
    EXPECT_EQ(ReadBytes(Scratch("Source")), "kept");
}

TEST(DFileCopy, SizeWhoseLow32BitsAreNegativeMakesAnEmptyFile) {
    WriteBytes(Scratch("Source"), "begin");
    fs::resize_file(Scratch("Source"), 0x80000000ULL);
    WriteBytes(Scratch("Target"), "old");
    EXPECT_TRUE(CopyLarge("Source", "Target"));
    EXPECT_EQ(ReadBytes(Scratch("Target")), "");
}

TEST(DFileCopy, SizeBeyond32BitsCopiesItsLow32Bits) {
    WriteBytes(Scratch("Source"), "begin and more");
    fs::resize_file(Scratch("Source"), 0x100000005ULL);
    EXPECT_TRUE(CopyLarge("Source", "Target"));
    EXPECT_EQ(ReadBytes(Scratch("Target")), "begin");
}

TEST(DFileCopy, BytesThatAShrinkingSourceNoLongerDeliversAreZero) {
    const size_t size = 2 * BlockSize + 10;
    WriteBytes(Scratch("Source"), Pattern(size));
    const std::string left = Pattern(BlockSize + 5);
    const DeliveredBytes delivered(Scratch("Source"), left);
    EXPECT_TRUE(CopyLarge("Source", "Target"));
    EXPECT_TRUE(ReadBytes(Scratch("Target")) == left + std::string(size - left.size(), '\0'));
}
