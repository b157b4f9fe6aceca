// The existence tests, what they tell about a file, and the removal of one.
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/Support.h"
#include "system/DSystem.h"
#include "tests/system/FailingRemove.h"
#include "tests/system/ScratchPath.h"

namespace fs = std::filesystem;

namespace {

// What FileExists and FolderExists make of a name: the name afterwards, or "no".
std::string AsFile(const std::string& name) {
    DString path(name.c_str());
    return FileExists(path) ? Text(path) : "no";
}

std::string AsFolder(const std::string& name) {
    DString path(name.c_str());
    return FolderExists(path) ? Text(path) : "no";
}

void SetTime(const std::string& path, long seconds) {
    const struct timespec times[2] = {{1, 0}, {seconds, 999999999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

}  // namespace

// Stands in front of the system's call for the whole program.
extern "C" int remove(const char* path) noexcept {
    const FailingRemove* failing = FailingRemove::m_Current;
    if (failing && failing->m_Path == path) {
        errno = failing->m_Error;
        return -1;
    }
    return reinterpret_cast<int (*)(const char*)>(dlsym(RTLD_NEXT, "remove"))(path);
}

// ---- FileExists

TEST(FileExists, NameInOtherCaseBecomesTheOneOnDisk) {
    WriteBytes(Scratch("Trace.wvf"), "1");
    EXPECT_EQ(AsFile(Scratch("tRACE.WVF")), Scratch("Trace.wvf"));
}

TEST(FileExists, NameOnDiskIsTakenBeforeOneInOtherCase) {
    WriteBytes(Scratch("a"), "1");
    WriteBytes(Scratch("A"), "2");
    EXPECT_EQ(AsFile(Scratch("a")), Scratch("a"));
    EXPECT_EQ(AsFile(Scratch("A")), Scratch("A"));
}

TEST(FileExists, FolderAboveIsCorrectedToo) {
    WriteBytes(MakeFolder(Scratch("Data/Inner")) + "/Trace.wvf", "1");
    EXPECT_EQ(AsFile(Scratch("Data/INNER/TRACE.wvf")), Scratch("Data/Inner/Trace.wvf"));
    EXPECT_EQ(AsFile(Scratch("Data/INNER/Trace.wvf")), Scratch("Data/Inner/Trace.wvf"));
}

TEST(FileExists, FolderFurtherUpIsNotCorrected) {
    WriteBytes(MakeFolder(Scratch("Data/Inner")) + "/Trace.wvf", "1");
    EXPECT_EQ(AsFile(Scratch("DATA/Inner/Trace.wvf")), "no");
}

TEST(FileExists, LeavesTheNameWhereItFindsNone) {
    WriteBytes(MakeFolder(Scratch("Data")) + "/Trace.wvf", "1");
    DString name = ScratchPath("DATA/other");
    EXPECT_FALSE(FileExists(name));
    EXPECT_EQ(Text(name), Scratch("DATA/other"));
}

TEST(FileExists, ShortOrLongNameIsNoMatch) {
    WriteBytes(Scratch("Trace"), "1");
    EXPECT_EQ(AsFile(Scratch("trac")), "no");
    EXPECT_EQ(AsFile(Scratch("traces")), "no");
}

TEST(FileExists, StarFindsAFileAndReplacesTheName) {
    MakeFolder(Scratch("Trace"));
    WriteBytes(Scratch("Trace.wvf"), "1");
    EXPECT_EQ(AsFile(Scratch("TR*")), Scratch("Trace.wvf"));
    EXPECT_EQ(AsFile(Scratch("T*.dmt")), "no");
}

TEST(FileExists, StarFindsHiddenFilesToo) {
    WriteBytes(MakeFolder(Scratch("Data")) + "/.hidden", "1");
    EXPECT_EQ(AsFile(Scratch("Data/*")), Scratch("Data/.hidden"));
}

TEST(FileExists, QuestionMarkAndBracketsMatchOneCharacter) {
    WriteBytes(Scratch("Trace7"), "1");
    EXPECT_EQ(AsFile(Scratch("trace?")), Scratch("Trace7"));
    EXPECT_EQ(AsFile(Scratch("trace[5-8]")), Scratch("Trace7"));
    EXPECT_EQ(AsFile(Scratch("trace??")), "no");
    EXPECT_EQ(AsFile(Scratch("trace[1-5]")), "no");
}

TEST(FileExists, NameOnDiskIsTakenBeforeItCountsAsAPattern) {
    WriteBytes(Scratch("a[1]"), "1");
    WriteBytes(Scratch("a1"), "2");
    EXPECT_EQ(AsFile(Scratch("a[1]")), Scratch("a[1]"));
    EXPECT_EQ(AsFile(Scratch("A[1]")), Scratch("a1"));
}

TEST(FileExists, FolderAboveMayBeAPatternToo) {
    WriteBytes(MakeFolder(Scratch("Data")) + "/Trace", "1");
    EXPECT_EQ(AsFile(Scratch("D?ta/trace")), Scratch("Data/Trace"));
}

TEST(FileExists, FolderIsNoFile) {
    MakeFolder(Scratch("Data"));
    EXPECT_EQ(AsFile(Scratch("Data")), "no");
    EXPECT_EQ(AsFile(Scratch("DATA")), "no");
}

TEST(FileExists, LinkToAnythingAndFifoAreFiles) {
    MakeFolder(Scratch("Folder"));
    fs::create_symlink("nowhere", Scratch("Dangling"));
    fs::create_symlink("Folder", Scratch("ToFolder"));
    ASSERT_EQ(mkfifo(Scratch("Fifo").c_str(), 0600), 0);
    EXPECT_EQ(AsFile(Scratch("Dangling")), Scratch("Dangling"));
    EXPECT_EQ(AsFile(Scratch("DANGLING")), Scratch("Dangling"));
    EXPECT_EQ(AsFile(Scratch("TOFOLDER")), Scratch("ToFolder"));
    EXPECT_EQ(AsFile(Scratch("FIFO")), Scratch("Fifo"));
}

TEST(FileExists, SocketIsNeitherFileNorFolder) {
    ASSERT_EQ(mknod(Scratch("Socket").c_str(), S_IFSOCK | 0600, 0), 0);
    EXPECT_EQ(AsFile(Scratch("Socket")), "no");
    EXPECT_EQ(AsFile(Scratch("SOCKET")), "no");
    EXPECT_EQ(AsFolder(Scratch("Socket")), "no");
    EXPECT_EQ(AsFolder(Scratch("SOCKET")), "no");
}

TEST(FileExists, BelowALinkToAFolderNoNameIsCorrected) {
    WriteBytes(MakeFolder(Scratch("Folder")) + "/Trace", "1");
    fs::create_symlink("Folder", Scratch("Link"));
    EXPECT_EQ(AsFile(Scratch("Link/Trace")), Scratch("Link/Trace"));
    EXPECT_EQ(AsFile(Scratch("Link/TRACE")), "no");
}

TEST(FileExists, BareNameIsFoundInTheCurrentFolderButNotCorrected) {
    WriteBytes(Scratch("Trace"), "1");
    EXPECT_EQ(AsFile("Trace"), "Trace");
    EXPECT_EQ(AsFile("TRACE"), "no");
    EXPECT_EQ(AsFile("./TRACE"), "./Trace");
}

TEST(FileExists, EmptyNameIsNoFile) {
    EXPECT_EQ(AsFile(""), "no");
    EXPECT_EQ(AsFile(Scratch("")), "no");
}

TEST(FileExists, OtherOwnersOfTheTextKeepTheirs) {
    WriteBytes(Scratch("Trace"), "1");
    const DString asked = ScratchPath("TRACE");
    DString name = asked;
    EXPECT_TRUE(FileExists(name));
    EXPECT_EQ(Text(asked), Scratch("TRACE"));
}

// ---- FolderExists

TEST(FolderExists, NameInOtherCaseBecomesTheOneOnDisk) {
    MakeFolder(Scratch("Data/Inner"));
    EXPECT_EQ(AsFolder(Scratch("Data/Inner")), Scratch("Data/Inner"));
    EXPECT_EQ(AsFolder(Scratch("Data/INNER")), Scratch("Data/Inner"));
}

TEST(FolderExists, FolderAboveIsNotCorrected) {
    MakeFolder(Scratch("Data/Inner"));
    DString name = ScratchPath("DATA/Inner");
    EXPECT_FALSE(FolderExists(name));
    EXPECT_EQ(Text(name), Scratch("DATA/Inner"));
}

TEST(FolderExists, FileIsNoFolder) {
    WriteBytes(Scratch("Trace"), "1");
    EXPECT_EQ(AsFolder(Scratch("Trace")), "no");
    EXPECT_EQ(AsFolder(Scratch("TRACE")), "no");
}

TEST(FolderExists, LinkToAFolderIsNoFolder) {
    MakeFolder(Scratch("Folder"));
    fs::create_symlink("Folder", Scratch("Link"));
    EXPECT_EQ(AsFolder(Scratch("Link")), "no");
    EXPECT_EQ(AsFolder(Scratch("LINK")), "no");
}

TEST(FolderExists, StarPassesFilesOver) {
    WriteBytes(Scratch("Data1"), "1");
    MakeFolder(Scratch("Data2"));
    EXPECT_EQ(AsFolder(Scratch("DATA*")), Scratch("Data2"));
}

TEST(FolderExists, BareNameAndNameBelowTheRootAreNotCorrected) {
    MakeFolder(Scratch("Data"));
    EXPECT_EQ(AsFolder("Data"), "Data");
    EXPECT_EQ(AsFolder("DATA"), "no");
    EXPECT_EQ(AsFolder("/"), "/");
    EXPECT_EQ(AsFolder("/PROC"), "no");
    EXPECT_EQ(AsFolder(""), "no");
}

TEST(FolderExists, SlashBehindTheNameKeepsItFromBeingCorrected) {
    MakeFolder(Scratch("Data"));
    EXPECT_EQ(AsFolder(Scratch("Data/")), Scratch("Data/"));
    EXPECT_EQ(AsFolder(Scratch("DATA/")), "no");
}

// ---- FileDate and GetFileLen

TEST(FileDate, IsTheModificationTimeInWholeSeconds) {
    WriteBytes(Scratch("Trace"), "1");
    SetTime(Scratch("Trace"), 1234567890);
    EXPECT_EQ(FileDate(ScratchPath("Trace")), 1234567890);
    EXPECT_EQ(FileDate(ScratchPath("TRACE")), 1234567890);
}

TEST(FileDate, FollowsLinks) {
    WriteBytes(Scratch("Trace"), "1");
    fs::create_symlink("Trace", Scratch("Link"));
    SetTime(Scratch("Trace"), 1000);
    SetTime(Scratch("Link"), 2000);
    EXPECT_EQ(FileDate(ScratchPath("Link")), 1000);
}

TEST(FileDate, OfWhatIsNoFileIsZero) {
    MakeFolder(Scratch("Folder"));
    fs::create_symlink("nowhere", Scratch("Dangling"));
    EXPECT_EQ(FileDate(ScratchPath("missing")), 0);
    EXPECT_EQ(FileDate(ScratchPath("Folder")), 0);
    EXPECT_EQ(FileDate(ScratchPath("Dangling")), 0);
}

TEST(GetFileLen, IsTheSizeInBytes) {
    WriteBytes(Scratch("Trace"), std::string(70000, 'x'));
    EXPECT_EQ(GetFileLen(ScratchPath("Trace")), 70000);
    EXPECT_EQ(GetFileLen(ScratchPath("TRACE")), 70000);
}

TEST(GetFileLen, FollowsLinks) {
    WriteBytes(Scratch("Trace"), "123");
    fs::create_symlink("Trace", Scratch("LinkWithAnotherLength"));
    EXPECT_EQ(GetFileLen(ScratchPath("LinkWithAnotherLength")), 3);
}

TEST(GetFileLen, OfWhatIsNoFileIsZero) {
    MakeFolder(Scratch("Folder"));
    WriteBytes(Scratch("Empty"), "");
    fs::create_symlink("nowhere", Scratch("Dangling"));
    EXPECT_EQ(GetFileLen(ScratchPath("missing")), 0);
    EXPECT_EQ(GetFileLen(ScratchPath("Folder")), 0);
    EXPECT_EQ(GetFileLen(ScratchPath("Dangling")), 0);
    EXPECT_EQ(GetFileLen(ScratchPath("Empty")), 0);
}

TEST(GetFileLen, KeepsTheLow32BitsOfTheSize) {
    WriteBytes(Scratch("Trace"), "12345");
    fs::resize_file(Scratch("Trace"), 0x100000005);
    EXPECT_EQ(GetFileLen(ScratchPath("Trace")), 5);
    fs::resize_file(Scratch("Trace"), 0x80000001);
    EXPECT_EQ(GetFileLen(ScratchPath("Trace")), -2147483647);
}

// ---- DeleteFileD

// fnmatch itself says what is right, for each pattern alone in a folder with one file.
TEST(FileExists, MatchesJustWhatTheSystemMatches) {
    const char* const names[] = {"Shot5",
                                 "SHOT5",
                                 "shot15",
                                 "Shot",
                                 "5",
                                 "x5.wvf",
                                 "X5.WVF",
                                 "ab[5",
                                 "ab]5",
                                 "a-5",
                                 "S\xc3\xa4"
                                 "5",
                                 "\xe4",
                                 "{",
                                 "[",
                                 "\\5",
                                 "a\\5",
                                 "*",
                                 "Shot*",
                                 "_5.wv`",
                                 "_5.wv@"};
    const char* const patterns[] = {"shot5",
                                    "*5",
                                    "?hot5",
                                    "shot*5",
                                    "[ab]5",
                                    "ab[5",
                                    "ab]5",
                                    "a[!x]5",
                                    "*.wvf",
                                    "?5.*",
                                    "*",
                                    "??",
                                    "\\5",
                                    "a\\\\5",
                                    "\\*",
                                    "s?5",
                                    "S\xc3\xa4"
                                    "5",
                                    "\xe4",
                                    "\xc4",
                                    "[",
                                    "{",
                                    "5",
                                    "",
                                    "*.WVf",
                                    "_5.wv`",
                                    "longer than each of them"};
    for (const char* name : names) {
        const std::string folder = MakeFolder(Scratch("Matches"));
        fs::remove_all(folder);
        WriteBytes(MakeFolder(folder) + "/" + name, "");
        for (const char* pattern : patterns) {
            const bool matches = *pattern && fnmatch(pattern, name, FNM_CASEFOLD) == 0;
            const bool isIt = strcmp(pattern, name) == 0;
            EXPECT_EQ(AsFile(folder + "/" + pattern) != "no", matches || isIt)
                << name << " by " << pattern;
        }
    }
}

TEST(DeleteFileD, RemovesAFileInOtherCase) {
    WriteBytes(MakeFolder(Scratch("Data")) + "/Trace", "1");
    EXPECT_TRUE(DeleteFileD(ScratchPath("DATA/trace")));
    EXPECT_FALSE(Exists(Scratch("Data/Trace")));
}

TEST(DeleteFileD, RemovesTheLinkAndNotItsTarget) {
    WriteBytes(Scratch("Trace"), "1");
    fs::create_symlink("Trace", Scratch("Link"));
    EXPECT_TRUE(DeleteFileD(ScratchPath("Link")));
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"Trace"});
}

TEST(DeleteFileD, MissingFileIsTrue) {
    EXPECT_TRUE(DeleteFileD(ScratchPath("missing")));
    EXPECT_TRUE(DeleteFileD(ScratchPath("missing/below")));
}

TEST(DeleteFileD, FolderCountsAsMissingAndStays) {
    MakeFolder(Scratch("Folder"));
    EXPECT_TRUE(DeleteFileD(ScratchPath("Folder")));
    EXPECT_TRUE(Exists(Scratch("Folder")));
}

TEST(DeleteFileD, FileThatIsGoneBeforeItsRemovalIsTrue) {
    WriteBytes(Scratch("Trace"), "1");
    const FailingRemove failing(Scratch("Trace"), ENOENT);
    EXPECT_TRUE(DeleteFileD(ScratchPath("Trace")));
}

TEST(DeleteFileD, FileThatCannotBeRemovedIsFalse) {
    WriteBytes(Scratch("Trace"), "1");
    const FailingRemove failing(Scratch("Trace"), EACCES);
    EXPECT_FALSE(DeleteFileD(ScratchPath("Trace")));
}
