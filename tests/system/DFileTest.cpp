// DFile: opening, blocks, string records, lines, and whole text files.
#include "system/DFile.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/stat.h>

#include <filesystem>
#include <limits>
#include <memory>
#include <type_traits>

#include "support/ProcessMemory.h"
#include "support/Support.h"
#include "system/DSystem.h"
#include "tests/system/ScratchPath.h"

namespace fs = std::filesystem;

namespace {

// One fread or fwrite call: where it starts, counted from the block's begin, and its sizes.
struct Transfer {
    long m_Start;
    size_t m_ItemSize;
    size_t m_Items;
    bool operator==(const Transfer&) const = default;
};

// While it lives, the calls on one stream are recorded and answered instead of carried out.
struct RecordedTransfers {
    RecordedTransfers(const FILE* stream, const char* block, std::vector<size_t> answers);
    ~RecordedTransfers();
    size_t Record(const void* piece, size_t itemSize, size_t items);

    const FILE* m_Stream;
    const char* m_Block;
    std::vector<size_t> m_Answers;
    std::vector<Transfer> m_Calls;
};

RecordedTransfers* mTransfers = nullptr;

RecordedTransfers::RecordedTransfers(const FILE* stream, const char* block,
                                     std::vector<size_t> answers)
    : m_Stream(stream), m_Block(block), m_Answers(std::move(answers)) {
    mTransfers = this;
}

RecordedTransfers::~RecordedTransfers() { mTransfers = nullptr; }

size_t RecordedTransfers::Record(const void* piece, size_t itemSize, size_t items) {
    m_Calls.push_back({static_cast<const char*>(piece) - m_Block, itemSize, items});
    return m_Calls.size() <= m_Answers.size() ? m_Answers[m_Calls.size() - 1] : 0;
}

bool IsRecorded(const FILE* stream) { return mTransfers && mTransfers->m_Stream == stream; }

std::unique_ptr<char[]> Room(int bytes) {
    return std::make_unique_for_overwrite<char[]>(static_cast<size_t>(bytes));
}

// A file of these bytes in the scratch folder, opened for reading.
struct OpenedBytes {
    explicit OpenedBytes(const std::string& bytes) {
        WriteBytes(Scratch("Bytes"), bytes);
        EXPECT_TRUE(m_File.Open(ScratchPath("Bytes"), 5));
    }
    // What is left behind the read position.
    std::string Rest() {
        char buffer[64];
        const int count = m_File.BRead(buffer, sizeof buffer);
        return {buffer, static_cast<size_t>(count)};
    }
    DFile m_File;
};

std::string RecordOf(const DString& text, int width) {
    DFile file;
    EXPECT_TRUE(file.Open(ScratchPath("Record"), 6));
    file.DSWrite(text, width);
    file.Close();
    return ReadBytes(Scratch("Record"));
}

// The target of a DSRead that held "old" before.
std::string RecordIn(DFile& file, bool shortLength) {
    DString target("old");
    file.DSRead(target, shortLength);
    return Text(target);
}

// The target of a ReadLine that held "old" before.
std::string LineIn(DFile& file, int bufferSize) {
    DString target("old");
    file.ReadLine(target, bufferSize);
    return Text(target);
}

bool IsFullDevice(const char* path) {
    struct stat status;
    return stat(path, &status) == 0 && S_ISCHR(status.st_mode);
}

}  // namespace

// These two stand in front of the system's calls for the whole program.
extern "C" size_t fread(void* block, size_t itemSize, size_t items, FILE* stream) {
    if (IsRecorded(stream)) return mTransfers->Record(block, itemSize, items);
    static const auto real = reinterpret_cast<decltype(&fread)>(dlsym(RTLD_NEXT, "fread"));
    return real(block, itemSize, items, stream);
}

extern "C" size_t fwrite(const void* block, size_t itemSize, size_t items, FILE* stream) {
    if (IsRecorded(stream)) return mTransfers->Record(block, itemSize, items);
    static const auto real = reinterpret_cast<decltype(&fwrite)>(dlsym(RTLD_NEXT, "fwrite"));
    return real(block, itemSize, items, stream);
}

static_assert(!std::is_polymorphic_v<DFile>);
static_assert(sizeof(DFile) == sizeof(FILE*));
static_assert(!std::is_copy_constructible_v<DFile> && !std::is_copy_assignable_v<DFile>);

// ---- Opening and closing

TEST(DFileOpen, NewObjectIsClosed) {
    const DFile file;
    EXPECT_EQ(file.m_Stream, nullptr);
}

TEST(DFileOpen, ModesWithoutReadAndWriteAreRefused) {
    WriteBytes(Scratch("File"), "12");
    for (const int mode : {0, 4}) {
        DFile file;
        EXPECT_FALSE(file.Open(ScratchPath("File"), mode));
        EXPECT_EQ(file.m_Stream, nullptr);
    }
    EXPECT_EQ(ReadBytes(Scratch("File")), "12");
}

TEST(DFileOpen, ReadModesNeitherMakeNorChangeAFile) {
    WriteBytes(Scratch("File"), "12");
    for (const int mode : {1, 5}) {
        DFile file;
        EXPECT_FALSE(file.Open(ScratchPath("missing"), mode));
        EXPECT_EQ(file.m_Stream, nullptr);
        EXPECT_TRUE(file.Open(ScratchPath("File"), mode));
        file.BWrite("xx", 2);
        file.Close();
        EXPECT_EQ(ReadBytes(Scratch("File")), "12");
    }
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"File"});
}

TEST(DFileOpen, WriteModesMakeOrEmptyAFile) {
    for (const int mode : {2, 6}) {
        WriteBytes(Scratch("File"), "12345");
        DFile file;
        EXPECT_TRUE(file.Open(ScratchPath("File"), mode));
        file.BWrite("ab", 2);
        char byte = 'x';
        EXPECT_EQ(file.BRead(&byte, 1), 0);
        file.Close();
        EXPECT_EQ(ReadBytes(Scratch("File")), "ab");
        EXPECT_TRUE(file.Open(ScratchPath("New"), mode));
        EXPECT_TRUE(DeleteFileD(ScratchPath("New")));
    }
}

TEST(DFileOpen, UpdateModesChangeAFileInPlaceAndMakeNone) {
    for (const int mode : {3, 7}) {
        WriteBytes(Scratch("File"), "12345");
        DFile file;
        EXPECT_FALSE(file.Open(ScratchPath("missing"), mode));
        EXPECT_TRUE(file.Open(ScratchPath("File"), mode));
        file.BWrite("ab", 2);
        fseek(file.m_Stream, 0, SEEK_CUR);
        char byte = 'x';
        EXPECT_EQ(file.BRead(&byte, 1), 1);
        EXPECT_EQ(byte, '3');
        file.Close();
        EXPECT_EQ(ReadBytes(Scratch("File")), "ab345");
    }
    EXPECT_FALSE(Exists(Scratch("missing")));
}

TEST(DFileOpen, NameInOtherCaseOpensTheFileOnDisk) {
    WriteBytes(Scratch("trace.wvf"), "12");
    const DString asked = ScratchPath("TRACE.WVF");
    DFile file;
    ASSERT_TRUE(file.Open(asked, 5));
    char bytes[2] = {};
    EXPECT_EQ(file.BRead(bytes, 2), 2);
    EXPECT_EQ(std::string(bytes, 2), "12");
    EXPECT_EQ(Text(asked), Scratch("TRACE.WVF"));
}

TEST(DFileOpen, WritingToANameInOtherCaseMakesNoSecondFile) {
    WriteBytes(Scratch("trace.wvf"), "12");
    DFile file;
    ASSERT_TRUE(file.Open(ScratchPath("TRACE.WVF"), 6));
    file.BWrite("3", 1);
    file.Close();
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"trace.wvf"});
    EXPECT_EQ(ReadBytes(Scratch("trace.wvf")), "3");
}

TEST(DFileOpen, FailsWhereTheFolderIsMissing) {
    DFile file;
    EXPECT_FALSE(file.Open(ScratchPath("missing/File"), 6));
    EXPECT_FALSE(file.Open("", 6));
}

TEST(DFileOpen, FolderOpensForReadingAloneAndDeliversNothing) {
    const std::string folder = MakeFolder(Scratch("Folder"));
    fs::create_directory_symlink(folder, Scratch("Link"));
    for (const char* name : {"Folder", "Link"}) {
        for (int mode = 0; mode <= 7; ++mode) {
            DFile file;
            const bool readOnly = mode == 1 || mode == 5;
            EXPECT_EQ(file.Open(ScratchPath(name), mode), readOnly) << name << " " << mode;
            char bytes[4] = {};
            EXPECT_EQ(file.BRead(bytes, sizeof bytes), 0);
        }
    }
}

TEST(DFileOpen, OpenFileIsClosedFirstEvenIfTheNewOpenFails) {
    DFile file;
    ASSERT_TRUE(file.Open(ScratchPath("First"), 6));
    file.BWrite("ab", 2);
    EXPECT_FALSE(file.Open(ScratchPath("missing/Second"), 5));
    EXPECT_EQ(file.m_Stream, nullptr);
    EXPECT_EQ(ReadBytes(Scratch("First")), "ab");
}

TEST(DFileOpen, SameObjectOpensOneFileAfterAnother) {
    DFile file;
    ASSERT_TRUE(file.Open(ScratchPath("First"), 6));
    file.BWrite("ab", 2);
    ASSERT_TRUE(file.Open(ScratchPath("First"), 5));
    char bytes[4] = {};
    EXPECT_EQ(file.BRead(bytes, 4), 2);
}

TEST(DFileClose, WritesWhatIsBufferedAndMayBeRepeated) {
    DFile file;
    file.Close();
    ASSERT_TRUE(file.Open(ScratchPath("File"), 6));
    file.BWrite("ab", 2);
    file.Close();
    EXPECT_EQ(file.m_Stream, nullptr);
    EXPECT_EQ(ReadBytes(Scratch("File")), "ab");
    file.Close();
    EXPECT_EQ(file.m_Stream, nullptr);
}

TEST(DFileClose, HappensWhenTheObjectDies) {
    const size_t openFiles = Names("/proc/self/fd").size();
    {
        DFile file;
        ASSERT_TRUE(file.Open(ScratchPath("File"), 6));
        file.BWrite("ab", 2);
        EXPECT_EQ(Names("/proc/self/fd").size(), openFiles + 1);
    }
    EXPECT_EQ(Names("/proc/self/fd").size(), openFiles);
    EXPECT_EQ(ReadBytes(Scratch("File")), "ab");
}

// ---- Blocks

TEST(DFileBlocks, ReadGoesInChunksOf60MillionBytes) {
    OpenedBytes opened("");
    const std::unique_ptr<char[]> block = Room(150000000);
    RecordedTransfers recorded(opened.m_File.m_Stream, block.get(), {60000000, 60000000, 30000000});
    EXPECT_EQ(opened.m_File.BRead(block.get(), 150000000), 150000000);
    EXPECT_EQ(recorded.m_Calls,
              (std::vector<Transfer>{
                  {0, 1, 60000000}, {60000000, 1, 60000000}, {120000000, 1, 30000000}}));
}

TEST(DFileBlocks, WriteGoesInChunksOf60MillionBytes) {
    OpenedBytes opened("");
    const std::unique_ptr<char[]> block = Room(60000001);
    RecordedTransfers recorded(opened.m_File.m_Stream, block.get(), {60000000, 1});
    opened.m_File.BWrite(block.get(), 60000001);
    EXPECT_EQ(recorded.m_Calls, (std::vector<Transfer>{{0, 1, 60000000}, {60000000, 1, 1}}));
}

TEST(DFileBlocks, WholeChunkLeavesNoEmptyOneBehind) {
    OpenedBytes opened("");
    const std::unique_ptr<char[]> block = Room(60000000);
    RecordedTransfers recorded(opened.m_File.m_Stream, block.get(), {60000000});
    EXPECT_EQ(opened.m_File.BRead(block.get(), 60000000), 60000000);
    EXPECT_EQ(recorded.m_Calls, (std::vector<Transfer>{{0, 1, 60000000}}));
}

TEST(DFileBlocks, ShortChunkDoesNotEndTheBlock) {
    OpenedBytes opened("");
    const std::unique_ptr<char[]> block = Room(150000000);
    const std::vector<Transfer> all = {
        {0, 1, 60000000}, {60000000, 1, 60000000}, {120000000, 1, 30000000}};
    {
        RecordedTransfers recorded(opened.m_File.m_Stream, block.get(), {7, 0, 30});
        EXPECT_EQ(opened.m_File.BRead(block.get(), 150000000), 37);
        EXPECT_EQ(recorded.m_Calls, all);
    }
    RecordedTransfers recorded(opened.m_File.m_Stream, block.get(), {0, 5, 0});
    opened.m_File.BWrite(block.get(), 150000000);
    EXPECT_EQ(recorded.m_Calls, all);
}

TEST(DFileBlocks, LargestCountDoesNotOverflow) {
    OpenedBytes opened("");
    RecordedTransfers recorded(opened.m_File.m_Stream, nullptr, {});
    // 35 chunks of 60,000,000 bytes and one of 47,483,647; the block itself isn't touched.
    const std::unique_ptr<char[]> block = Room(2147483647);
    recorded.m_Block = block.get();
    EXPECT_EQ(opened.m_File.BRead(block.get(), 2147483647), 0);
    ASSERT_EQ(recorded.m_Calls.size(), 36u);
    EXPECT_EQ(recorded.m_Calls[35], (Transfer{2100000000, 1, 47483647}));
}

TEST(DFileBlocks, ReadPastTheEndDeliversWhatIsThere) {
    OpenedBytes opened("abc");
    char bytes[8] = "xxxxxxx";
    EXPECT_EQ(opened.m_File.BRead(bytes, 7), 3);
    EXPECT_STREQ(bytes, "abcxxxx");
    EXPECT_EQ(opened.m_File.BRead(bytes, 7), 0);
}

TEST(DFileBlocks, CountBelowOneTransfersNothing) {
    OpenedBytes opened("abc");
    char byte = 'x';
    RecordedTransfers recorded(opened.m_File.m_Stream, &byte, {});
    EXPECT_EQ(opened.m_File.BRead(&byte, 0), 0);
    EXPECT_EQ(opened.m_File.BRead(&byte, -1), 0);
    EXPECT_EQ(opened.m_File.BRead(&byte, std::numeric_limits<int>::min()), 0);
    opened.m_File.BWrite(&byte, 0);
    opened.m_File.BWrite(&byte, -1);
    EXPECT_TRUE(recorded.m_Calls.empty());
}

TEST(DFileBlocks, ClosedStreamTransfersNothing) {
    DFile file;
    char byte = 'x';
    EXPECT_EQ(file.BRead(&byte, 1), 0);
    file.BWrite(&byte, 1);
    EXPECT_EQ(byte, 'x');
}

// ---- String records

TEST(DFileRecord, IsWrittenBehindALengthOfTheWidthAsked) {
    EXPECT_EQ(RecordOf("abc", 4), Int32(3) + "abc");
    EXPECT_EQ(RecordOf("abc", 2), Int16(3) + "abc");
}

TEST(DFileRecord, IsBareTextAtAnyOtherWidth) {
    for (const int width : {0, 1, 3, 8, -2})
        EXPECT_EQ(RecordOf("abc", width), "abc");
}

TEST(DFileRecord, OfAnEmptyTextIsTheLengthAlone) {
    EXPECT_EQ(RecordOf("", 2), Int16(0));
    EXPECT_EQ(RecordOf("", 4), Int32(0));
    EXPECT_EQ(RecordOf("", 0), "");
    EXPECT_EQ(RecordOf(DString(), 2), Int16(0));
}

TEST(DFileRecord, KeepsZeroBytesInside) {
    DString text("abc");
    text.SetChar(1, '\0');
    EXPECT_EQ(RecordOf(text, 2), Int16(3) + std::string("a\0c", 3));
    OpenedBytes opened(Int16(3) + std::string("a\0c", 3));
    EXPECT_EQ(RecordIn(opened.m_File, true), std::string("a\0c", 3));
}

TEST(DFileRecord, LongTextStandsWholeBehindTheLow16BitsOfItsLength) {
    EXPECT_EQ(RecordOf(DString('x', 65539), 2), Int16(3) + std::string(65539, 'x'));
}

TEST(DFileRecord, IsReadByTheLengthAhead) {
    OpenedBytes opened(Int16(3) + "abc" + Int32(2) + "de" + "f");
    EXPECT_EQ(RecordIn(opened.m_File, true), "abc");
    EXPECT_EQ(RecordIn(opened.m_File, false), "de");
    EXPECT_EQ(opened.Rest(), "f");
}

TEST(DFileRecord, LongerThanTheTargetAndShorterAreBothReadWhole) {
    const std::string longText(32767, 'x');
    OpenedBytes opened(Int16(32767) + longText + Int16(1) + "y");
    DString target("old");
    opened.m_File.DSRead(target, true);
    EXPECT_EQ(Text(target), longText);
    opened.m_File.DSRead(target, true);
    EXPECT_EQ(Text(target), "y");
}

TEST(DFileRecord, ReadLeavesOtherOwnersOfTheTargetAlone) {
    OpenedBytes opened(Int16(3) + "abc");
    const DString other("old");
    DString target = other;
    opened.m_File.DSRead(target, true);
    EXPECT_EQ(Text(target), "abc");
    EXPECT_EQ(Text(other), "old");
}

TEST(DFileRecord, OfLengthZeroLeavesTheTarget) {
    OpenedBytes opened(Int16(0) + Int32(0) + "rest");
    EXPECT_EQ(RecordIn(opened.m_File, true), "old");
    EXPECT_EQ(RecordIn(opened.m_File, false), "old");
    EXPECT_EQ(opened.Rest(), "rest");
}

TEST(DFileRecord, OfNegativeLengthLeavesTheTargetAndTakesTheLengthAlone) {
    OpenedBytes opened("\xFF\xFF" + Int16(-32768) + Int32(-2147483647L - 1) + "rest");
    EXPECT_EQ(RecordIn(opened.m_File, true), "old");
    EXPECT_EQ(RecordIn(opened.m_File, true), "old");
    EXPECT_EQ(RecordIn(opened.m_File, false), "old");
    EXPECT_EQ(opened.Rest(), "rest");
}

TEST(DFileRecord, LengthThatIsNotDeliveredCountsAsZero) {
    OpenedBytes empty("");
    EXPECT_EQ(RecordIn(empty.m_File, true), "old");
    EXPECT_EQ(RecordIn(empty.m_File, false), "old");
    OpenedBytes oneByte("\x03");
    EXPECT_EQ(RecordIn(oneByte.m_File, true), "old");
    OpenedBytes threeBytes(std::string("\x03\0\0", 3));
    EXPECT_EQ(RecordIn(threeBytes.m_File, false), "old");
}

TEST(DFileRecord, CutShortIsFilledUpWithZeros) {
    OpenedBytes opened(Int16(6) + "ab");
    EXPECT_EQ(RecordIn(opened.m_File, true), std::string("ab\0\0\0\0", 6));
    OpenedBytes noText(Int32(3));
    EXPECT_EQ(RecordIn(noText.m_File, false), std::string(3, '\0'));
}

TEST(DFileRecord, HugeLengthOfAShortFileCostsNoMemory) {
    OpenedBytes opened(Int32(1000000000) + "abc");
    DString target;
    const long before = ResidentBytes();
    opened.m_File.DSRead(target, false);
    EXPECT_LT(ResidentBytes() - before, 50000000);
    if (target.GetLength() == 0) GTEST_SKIP() << "this machine grants no gigabyte";
    EXPECT_EQ(target.GetLength(), 1000000000);
    const char* text = target;
    EXPECT_EQ(std::string(text, 3), "abc");
    EXPECT_EQ(std::string(text + 3, 65536), std::string(65536, '\0'));
}

TEST(DFileRecord, LengthThatMemoryIsRefusedForLeavesTheTarget) {
    OpenedBytes opened(Int32(2147483647) + "abc");
    EXPECT_EQ(RecordIn(opened.m_File, false), "old");
}

TEST(DFileRecord, OnAClosedStreamDoesNothing) {
    DFile file;
    file.DSWrite("abc", 2);
    file.DSWrite("abc", 4);
    file.DSWrite("abc", 0);
    EXPECT_EQ(RecordIn(file, true), "old");
    EXPECT_EQ(RecordIn(file, false), "old");
}

// ---- Lines

TEST(DFileLine, LosesItsLineEnd) {
    OpenedBytes opened("one\r\ntwo\nthree");
    EXPECT_EQ(LineIn(opened.m_File, 100), "one");
    EXPECT_EQ(LineIn(opened.m_File, 100), "two");
    EXPECT_EQ(LineIn(opened.m_File, 100), "three");
}

TEST(DFileLine, LosesOneCarriageReturnAlone) {
    OpenedBytes opened("one\r\r\n\ntwo\r");
    EXPECT_EQ(LineIn(opened.m_File, 100), "one\r");
    EXPECT_EQ(LineIn(opened.m_File, 100), "");
    EXPECT_EQ(LineIn(opened.m_File, 100), "two");
}

TEST(DFileLine, IsEmptyAtABlankLineAndAtTheEnd) {
    OpenedBytes opened("\r\nx\n");
    EXPECT_EQ(LineIn(opened.m_File, 100), "");
    EXPECT_EQ(LineIn(opened.m_File, 100), "x");
    EXPECT_EQ(LineIn(opened.m_File, 100), "");
}

TEST(DFileLine, LongerThanTheRoomArrivesInPieces) {
    OpenedBytes opened("123456789012\nnext\n");
    EXPECT_EQ(LineIn(opened.m_File, 10), "12345678");
    EXPECT_EQ(LineIn(opened.m_File, 10), "9012");
    EXPECT_EQ(LineIn(opened.m_File, 10), "next");
}

TEST(DFileLine, ThatFillsTheRoomLeavesItsLineEndForTheNextCall) {
    OpenedBytes opened("12345678\nx\n");
    EXPECT_EQ(LineIn(opened.m_File, 10), "12345678");
    EXPECT_EQ(LineIn(opened.m_File, 10), "");
    EXPECT_EQ(LineIn(opened.m_File, 10), "x");
}

TEST(DFileLine, PieceThatEndsInACarriageReturnLosesIt) {
    OpenedBytes opened("123\r\nx\n");
    EXPECT_EQ(LineIn(opened.m_File, 6), "123");
    EXPECT_EQ(LineIn(opened.m_File, 6), "");
    EXPECT_EQ(LineIn(opened.m_File, 6), "x");
}

TEST(DFileLine, EndsAtAZeroByte) {
    OpenedBytes opened(std::string("ab\0cd\nnext\n", 11));
    EXPECT_EQ(LineIn(opened.m_File, 100), "ab");
    EXPECT_EQ(LineIn(opened.m_File, 100), "next");
}

TEST(DFileLine, SmallestUsefulRoomTakesOneByte) {
    OpenedBytes opened("ab\n");
    EXPECT_EQ(LineIn(opened.m_File, 3), "a");
    EXPECT_EQ(LineIn(opened.m_File, 3), "b");
    EXPECT_EQ(LineIn(opened.m_File, 3), "");
}

TEST(DFileLine, RoomOfTwoOrLessGivesAnEmptyTextAndTakesNothing) {
    OpenedBytes opened("ab\n");
    for (const int room : {2, 1, 0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(LineIn(opened.m_File, room), "");
    }
    EXPECT_EQ(opened.Rest(), "ab\n");
}

TEST(DFileLine, RoomThatMemoryIsRefusedForGivesAnEmptyText) {
    OpenedBytes opened("ab\n");
    EXPECT_EQ(LineIn(opened.m_File, 2147483647), "");
}

TEST(DFileLine, LeavesOtherOwnersOfTheTargetAlone) {
    OpenedBytes opened("abc\n");
    const DString other("old");
    DString target = other;
    opened.m_File.ReadLine(target, 100);
    EXPECT_EQ(Text(target), "abc");
    EXPECT_EQ(Text(other), "old");
}

TEST(DFileLine, OnAClosedStreamLeavesTheTarget) {
    DFile file;
    EXPECT_EQ(LineIn(file, 100), "old");
}

TEST(DFileWideLine, IsFalseOnceNothingIsDelivered) {
    OpenedBytes opened("abc\nde");
    wchar_t buffer[16];
    EXPECT_TRUE(opened.m_File.ReadWString(buffer, 3));
    EXPECT_EQ(std::wstring(buffer), L"ab");
    EXPECT_TRUE(opened.m_File.ReadWString(buffer, 16));
    EXPECT_EQ(std::wstring(buffer), L"c\n");
    EXPECT_TRUE(opened.m_File.ReadWString(buffer, 16));
    EXPECT_EQ(std::wstring(buffer), L"de");
    EXPECT_FALSE(opened.m_File.ReadWString(buffer, 16));
}

TEST(DFileWideLine, OnAClosedStreamIsFalse) {
    DFile file;
    wchar_t buffer[4] = L"old";
    EXPECT_FALSE(file.ReadWString(buffer, 4));
    EXPECT_EQ(std::wstring(buffer), L"old");
}

// ---- Whole text files

TEST(DFileText, IsTheWholeFile) {
    const std::string bytes("a\r\nb\0c\n", 7);
    WriteBytes(Scratch("File"), bytes);
    EXPECT_EQ(Text(DFile::GetText(ScratchPath("File"))), bytes);
    EXPECT_EQ(Text(DFile::GetText(ScratchPath("FILE"))), bytes);
}

TEST(DFileText, OfAMissingOrEmptyFileOrAFolderIsEmpty) {
    WriteBytes(Scratch("Empty"), "");
    MakeFolder(Scratch("Folder"));
    fs::create_symlink("Folder", Scratch("ToFolder"));
    EXPECT_TRUE(DFile::GetText(ScratchPath("ToFolder")).IsEmpty());
    EXPECT_TRUE(DFile::GetText(ScratchPath("missing")).IsEmpty());
    EXPECT_TRUE(DFile::GetText(ScratchPath("Empty")).IsEmpty());
    EXPECT_TRUE(DFile::GetText(ScratchPath("Folder")).IsEmpty());
    EXPECT_TRUE(DFile::GetText("").IsEmpty());
}

TEST(DFileText, OfAFifoIsEmptyWithoutWaitingForAWriter) {
    ASSERT_EQ(mkfifo(Scratch("Fifo").c_str(), 0600), 0);
    EXPECT_TRUE(DFile::GetText(ScratchPath("Fifo")).IsEmpty());
}

TEST(DFileText, OfAFileWhoseLengthReadsAsNegativeIsEmpty) {
    WriteBytes(Scratch("File"), "12345");
    fs::resize_file(Scratch("File"), 0x80000001);
    EXPECT_TRUE(DFile::GetText(ScratchPath("File")).IsEmpty());
}

TEST(DFileText, OfAFileBeyond32BitsIsItsBeginning) {
    WriteBytes(Scratch("File"), "12345");
    fs::resize_file(Scratch("File"), 0x100000003);
    EXPECT_EQ(Text(DFile::GetText(ScratchPath("File"))), "123");
}

TEST(DFileText, ReplacesTheFile) {
    WriteBytes(Scratch("file"), "12345");
    DString text("a b");
    text.SetChar(1, '\0');
    EXPECT_TRUE(DFile::WriteText(ScratchPath("FILE"), text));
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"file"});
    EXPECT_EQ(ReadBytes(Scratch("file")), std::string("a\0b", 3));
}

TEST(DFileText, MayBeWrittenEmpty) {
    WriteBytes(Scratch("File"), "12345");
    EXPECT_TRUE(DFile::WriteText(ScratchPath("File"), ""));
    EXPECT_EQ(ReadBytes(Scratch("File")), "");
}

TEST(DFileText, CannotBeWrittenBelowAMissingFolder) {
    EXPECT_FALSE(DFile::WriteText(ScratchPath("missing/File"), "x"));
    EXPECT_FALSE(DFile::WriteLine(ScratchPath("missing/File"), "x"));
    EXPECT_FALSE(DFile::WriteText(ScratchPath(""), "x"));
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST(DFileText, WriteThatFailsAfterTheOpenIsTrue) {
    if (!IsFullDevice("/dev/full")) GTEST_SKIP() << "needs a device that is always full";
    EXPECT_TRUE(DFile::WriteText("/dev/full", DString('x', 100000)));
    EXPECT_TRUE(DFile::WriteLine("/dev/full", DString('x', 100000)));
}

TEST(DFileText, LinesAreAppendedWithALineEnd) {
    EXPECT_TRUE(DFile::WriteLine(ScratchPath("log"), "one"));
    EXPECT_TRUE(DFile::WriteLine(ScratchPath("LOG"), "two"));
    EXPECT_TRUE(DFile::WriteLine(ScratchPath("log"), ""));
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"log"});
    EXPECT_EQ(ReadBytes(Scratch("log")), "one\r\ntwo\r\n\r\n");
}

TEST(DFileText, LineIsAppendedBehindAnUnfinishedOne) {
    WriteBytes(Scratch("log"), "half");
    EXPECT_TRUE(DFile::WriteLine(ScratchPath("log"), "one"));
    EXPECT_EQ(ReadBytes(Scratch("log")), "halfone\r\n");
}
