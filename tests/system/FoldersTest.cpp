// Making, listing, deleting, renaming and copying files and folders.
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "core/CoreGlobal.h"
#include "support/Support.h"
#include "system/DSystem.h"
#include "tests/system/FailingRemove.h"
#include "tests/system/ScratchPath.h"

namespace fs = std::filesystem;

namespace {

using Strings = std::vector<std::string>;

bool IsBelowScratch(const char* path) {
    return path[0] != '/' || std::string(path).starts_with(ScratchFolder() + "/");
}

std::string WithMode(const char* call, const char* path, mode_t mode) {
    char digits[16];
    snprintf(digits, sizeof digits, " %04o", static_cast<unsigned>(mode));
    return std::string(call) + " " + path + digits;
}

// While it lives, mkdir and chmod are recorded.
struct RecordedModes {
    explicit RecordedModes(bool publicWrite);
    ~RecordedModes();
    Strings m_Calls;
};

RecordedModes* mModes = nullptr;

RecordedModes::RecordedModes(bool publicWrite) {
    mModes = this;
    PublicWrite = publicWrite;
}

RecordedModes::~RecordedModes() {
    PublicWrite = false;
    mModes = nullptr;
}

// While it lives, the entry of that path can't be looked at.
struct HiddenEntry {
    explicit HiddenEntry(const std::string& path);
    ~HiddenEntry();
    std::string m_Path;
};

HiddenEntry* mHidden = nullptr;

HiddenEntry::HiddenEntry(const std::string& path) : m_Path(path) { mHidden = this; }

HiddenEntry::~HiddenEntry() { mHidden = nullptr; }

// While it lives, no more files than these can be open.
struct FewOpenFiles {
    explicit FewOpenFiles(rlim_t count) {
        getrlimit(RLIMIT_NOFILE, &m_Before);
        const struct rlimit few = {count, m_Before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewOpenFiles() { setrlimit(RLIMIT_NOFILE, &m_Before); }
    struct rlimit m_Before;
};

template <typename Call>
Call Real(const char* name) {
    return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

void MakeSocket(const std::string& path) { ASSERT_EQ(mknod(path.c_str(), S_IFSOCK | 0600, 0), 0); }

void MakeFifo(const std::string& path) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }

mode_t ModeOf(const std::string& path) {
    struct stat status;
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

// The names in a folder as the system gives them, but for "." and "..".
Strings NamesInOrderOfTheFolder(const std::string& folder) {
    Strings names;
    DIR* open = opendir(folder.c_str());
    while (const struct dirent* entry = readdir(open)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(open);
    return names;
}

Strings Elements(const DStringArray& array) {
    Strings elements;
    for (int i = 0; i < array.Count(); ++i)
        elements.push_back(Text(array[i]));
    return elements;
}

Strings FilesOf(const std::string& pattern) {
    DStringArray found;
    EXPECT_TRUE(GetFiles(ScratchPath(pattern), found, true));
    return Elements(found);
}

Strings FoldersOf(const std::string& pattern) {
    DStringArray found;
    EXPECT_TRUE(GetFolders(ScratchPath(pattern), found, true));
    return Elements(found);
}

bool Create(const std::string& name) { return CreateFolder(ScratchPath(name)); }

bool Delete(const std::string& name) { return DeleteFolder(ScratchPath(name)); }

bool Copy(const std::string& source, const std::string& target) {
    return CopyFileD(ScratchPath(source), ScratchPath(target));
}

bool CopyWhole(const std::string& source, const std::string& target) {
    return CopyFolder(ScratchPath(source), ScratchPath(target));
}

bool Rename(const std::string& source, const std::string& target) {
    return RenameFile(ScratchPath(source), ScratchPath(target));
}

bool RenameWhole(const std::string& source, const std::string& target) {
    return RenameFolder(ScratchPath(source), ScratchPath(target));
}

// A path below the scratch folder of so many folders, each named "d".
std::string DeepPath(const std::string& name, int levels) {
    std::string path = name;
    for (int i = 0; i < levels; ++i)
        path += "/d";
    return path;
}

}  // namespace

// These stand in front of the system's calls for the whole program. No mode is ever changed, and no
// folder made outside the scratch folder, so that nothing here can reach the folders of others.
extern "C" int chmod(const char* path, mode_t mode) noexcept {
    if (mModes) mModes->m_Calls.push_back(WithMode("chmod", path, mode));
    errno = EPERM;
    return -1;
}

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    if (mModes) mModes->m_Calls.push_back(WithMode("mkdir", path, mode));
    if (IsBelowScratch(path)) return Real<int (*)(const char*, mode_t)>("mkdir")(path, mode);
    errno = Exists(path) ? EEXIST : EACCES;
    return -1;
}

extern "C" int lstat(const char* path, struct stat* status) noexcept {
    if (mHidden && mHidden->m_Path == path) {
        errno = EACCES;
        return -1;
    }
    return Real<int (*)(const char*, struct stat*)>("lstat")(path, status);
}

// ---- CreateFolder

TEST(CreateFolder, MakesEveryMissingLevel) {
    EXPECT_TRUE(Create("a/b/c"));
    EXPECT_TRUE(fs::is_directory(Scratch("a/b/c")));
}

TEST(CreateFolder, AsksForAllPermissionsThatTheUserGives) {
    const mode_t before = umask(027);
    EXPECT_TRUE(Create("a/b"));
    umask(before);
    EXPECT_EQ(ModeOf(Scratch("a")), 0750u);
    EXPECT_EQ(ModeOf(Scratch("a/b")), 0750u);
}

TEST(CreateFolder, TriesEachLevelFromTheRootOn) {
    Strings expected;
    const std::string path = Scratch("a/b");
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        expected.push_back("mkdir " + path.substr(0, end) + " 0777");
    }
    expected.push_back("mkdir " + path + " 0777");
    const RecordedModes recorded(false);
    EXPECT_TRUE(Create("a/b"));
    EXPECT_EQ(recorded.m_Calls, expected);
}

TEST(CreateFolder, PublicWriteChangesTheModeOfEachLevelWhateverComesOfIt) {
    Strings expected;
    const std::string path = Scratch("a/b");
    for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        expected.push_back("mkdir " + path.substr(0, end) + " 0777");
        expected.push_back("chmod " + path.substr(0, end) + " 0666");
    }
    expected.push_back("mkdir " + path + " 0777");
    expected.push_back("chmod " + path + " 0666");
    const RecordedModes recorded(true);
    EXPECT_TRUE(Create("a/b"));
    EXPECT_EQ(recorded.m_Calls, expected);
}

TEST(CreateFolder, ExistingFolderIsTrueAndKeepsItsPermissions) {
    MakeFolder(Scratch("a"));
    fs::permissions(Scratch("a"), fs::perms(0710));
    const RecordedModes recorded(true);
    EXPECT_TRUE(Create("a"));
    EXPECT_TRUE(Create("A"));
    EXPECT_TRUE(Create("a/"));
    EXPECT_TRUE(CreateFolder("/"));
    EXPECT_EQ(recorded.m_Calls, Strings{});
    EXPECT_EQ(ModeOf(Scratch("a")), 0710u);
    EXPECT_EQ(Names(ScratchFolder()), Strings{"a"});
}

TEST(CreateFolder, SlashAtTheEndMakesTheSameFolder) {
    EXPECT_TRUE(Create("a/b/"));
    EXPECT_TRUE(Create("a/c//"));
    EXPECT_EQ(Names(Scratch("a")), (Strings{"b", "c"}));
}

TEST(CreateFolder, LevelAboveInOtherCaseIsMadeBesideTheOneOnDisk) {
    MakeFolder(Scratch("a"));
    EXPECT_TRUE(Create("A/b"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"A", "a"}));
}

TEST(CreateFolder, BareNameIsRefused) {
    EXPECT_FALSE(CreateFolder("bare"));
    EXPECT_FALSE(CreateFolder("bare/"));
    EXPECT_FALSE(CreateFolder(""));
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST(CreateFolder, BareNameOfAnExistingFolderIsTrue) {
    MakeFolder(Scratch("bare"));
    EXPECT_TRUE(CreateFolder("bare"));
}

TEST(CreateFolder, RelativePathLosesItsFirstElementAndStartsAtTheRoot) {
    const std::string relative = "first" + Scratch("a");
    EXPECT_TRUE(CreateFolder(relative.c_str()));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"a"});
}

TEST(CreateFolder, NameThatAFileOrLinkTakesIsFalse) {
    WriteBytes(Scratch("file"), "1");
    MakeFolder(Scratch("folder"));
    fs::create_symlink("folder", Scratch("link"));
    EXPECT_FALSE(Create("file"));
    EXPECT_FALSE(Create("file/below"));
    EXPECT_FALSE(Create("link"));
    EXPECT_TRUE(Create("link/below"));
    EXPECT_TRUE(Exists(Scratch("folder/below")));
}

// ---- Listing

TEST(GetFiles, GivesBareNamesSortedWithoutRegardToCase) {
    for (const char* name : {"b.WVF", "C.wvf", "A.Wvf", "a.wv", "wvf"})
        WriteBytes(name, "1");
    EXPECT_EQ(FilesOf("*.wvf"), (Strings{"A.Wvf", "b.WVF", "C.wvf"}));
    EXPECT_EQ(FilesOf("[ab].wvf"), (Strings{"A.Wvf", "b.WVF"}));
    EXPECT_EQ(FilesOf("none*"), Strings{});
}

TEST(GetFiles, TakesLinksAndFifosAndNoOtherKind) {
    WriteBytes(Scratch("file"), "1");
    MakeFolder(Scratch("folder"));
    fs::create_symlink("folder", Scratch("link"));
    fs::create_symlink("nowhere", Scratch("dangling"));
    MakeFifo(Scratch("fifo"));
    MakeSocket(Scratch("socket"));
    EXPECT_EQ(FilesOf("*"), (Strings{"dangling", "fifo", "file", "link"}));
}

TEST(GetFiles, FindsHiddenFilesToo) {
    WriteBytes(Scratch(".hidden"), "1");
    EXPECT_EQ(FilesOf("*"), Strings{".hidden"});
}

TEST(GetFiles, SortsNewNamesTogetherWithTheOldOnes) {
    for (const char* name : {"a", "d"})
        WriteBytes(name, "1");
    DStringArray found;
    found.Add("C");
    found.Add("b");
    EXPECT_TRUE(GetFiles(ScratchPath("*"), found, false));
    EXPECT_EQ(Elements(found), (Strings{"a", "b", "C", "d"}));
    EXPECT_TRUE(GetFiles(ScratchPath("*"), found, true));
    EXPECT_EQ(Elements(found), (Strings{"a", "d"}));
}

TEST(GetFiles, FolderThatCannotBeOpenedIsFalse) {
    WriteBytes(MakeFolder(Scratch("Data")) + "/a", "1");
    DStringArray found;
    found.Add("old");
    EXPECT_FALSE(GetFiles(ScratchPath("missing/*"), found, false));
    EXPECT_FALSE(GetFiles(ScratchPath("DATA/*"), found, false));
    EXPECT_EQ(Elements(found), Strings{"old"});
    EXPECT_FALSE(GetFiles(ScratchPath("missing/*"), found, true));
    EXPECT_EQ(Elements(found), Strings{});
}

TEST(GetFiles, PatternWithoutAFolderIsFalse) {
    WriteBytes(Scratch("a"), "1");
    DStringArray found;
    EXPECT_FALSE(GetFiles("*", found, true));
    EXPECT_FALSE(GetFiles("/*", found, true));
    EXPECT_FALSE(GetFiles("", found, true));
    EXPECT_TRUE(GetFiles("./*", found, true));
    EXPECT_EQ(Elements(found), Strings{"a"});
}

TEST(GetFiles, PatternMayBeAnElementOfTheResult) {
    WriteBytes(Scratch("a"), "1");
    DStringArray found;
    found.Add(ScratchPath("*"));
    EXPECT_TRUE(GetFiles(found[0], found, true));
    EXPECT_EQ(Elements(found), Strings{"a"});
}

TEST(GetFiles, EntryThatCannotBeLookedAtEndsTheListUnsorted) {
    for (const char* name : {"d", "b", "z", "a", "y", "c", "x", "e"})
        WriteBytes(name, "1");
    Strings expected = NamesInOrderOfTheFolder(ScratchFolder());
    const HiddenEntry hidden(Scratch(expected.back()));
    expected.pop_back();
    expected.insert(expected.begin(), "old");
    DStringArray found;
    found.Add("old");
    EXPECT_FALSE(GetFiles(ScratchPath("*"), found, false));
    EXPECT_EQ(Elements(found), expected);
}

TEST(GetFiles, EntryThatCannotBeLookedAtCountsAlsoIfItDoesNotFit) {
    WriteBytes(Scratch("notes.txt"), "1");
    const HiddenEntry hidden(Scratch("notes.txt"));
    DStringArray found;
    EXPECT_FALSE(GetFiles(ScratchPath("*.wvf"), found, true));
}

TEST(GetFolders, StarTakesTheDotsToo) {
    MakeFolder(Scratch("b"));
    MakeFolder(Scratch("A"));
    WriteBytes(Scratch("file"), "1");
    EXPECT_EQ(FoldersOf("*"), (Strings{".", "..", "A", "b"}));
}

TEST(GetFolders, LetterAheadLeavesTheDotsOut) {
    MakeFolder(Scratch("Shot2"));
    MakeFolder(Scratch("shot10"));
    MakeFolder(Scratch("Other"));
    MakeFolder(Scratch("target"));
    fs::create_symlink("target", Scratch("ShotLink"));
    EXPECT_EQ(FoldersOf("Shot*"), (Strings{"shot10", "Shot2"}));
}

TEST(GetFolders, KeepsOldNamesOnRequest) {
    MakeFolder(Scratch("b"));
    DStringArray found;
    found.Add("c");
    EXPECT_TRUE(GetFolders(ScratchPath("b*"), found, false));
    EXPECT_EQ(Elements(found), (Strings{"b", "c"}));
    EXPECT_FALSE(GetFolders(ScratchPath("missing/*"), found, true));
    EXPECT_EQ(Elements(found), Strings{});
}

TEST(GetFilesDates, KeepsNamesAndDatesInStepInTheOrderOfTheFolder) {
    const std::map<std::string, long> dates = {{"c.wvf", 3000}, {"A.WVF", 1000}, {"b.wvf", 2000}};
    for (const auto& [name, date] : dates) {
        WriteBytes(name, "1");
        const struct timespec times[2] = {{1, 0}, {date, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, name.c_str(), times, 0), 0);
    }
    const Strings order = NamesInOrderOfTheFolder(ScratchFolder());
    DStringArray names;
    DArray<long> first;
    DArray<long> second;
    EXPECT_TRUE(GetFilesDates(ScratchPath("*.wvf"), names, first, second));
    EXPECT_EQ(Elements(names), order);
    ASSERT_EQ(first.Count(), 3);
    ASSERT_EQ(second.Count(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(first[i], dates.at(Text(names[i])));
        EXPECT_EQ(second[i], first[i]);
    }
}

TEST(GetFilesDates, GivesTheDateOfALinkItself) {
    MakeFolder(Scratch("data"));
    WriteBytes(Scratch("file"), "1");
    fs::create_symlink("../file", Scratch("data/link"));
    const struct timespec times[2] = {{1, 0}, {5000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, Scratch("data/link").c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    DStringArray names;
    DArray<long> first;
    DArray<long> second;
    EXPECT_TRUE(GetFilesDates(ScratchPath("data/*"), names, first, second));
    ASSERT_EQ(first.Count(), 1);
    EXPECT_EQ(first[0], 5000);
}

TEST(GetFilesDates, AddsBehindWhatIsThere) {
    WriteBytes(Scratch("a"), "1");
    DStringArray names;
    names.Add("old");
    DArray<long> first;
    DArray<long> second;
    first.Add(7);
    second.Add(8);
    EXPECT_TRUE(GetFilesDates(ScratchPath("*"), names, first, second));
    EXPECT_EQ(Elements(names), (Strings{"old", "a"}));
    EXPECT_EQ(first.Count(), 2);
    EXPECT_EQ(first[0], 7);
    EXPECT_EQ(second[0], 8);
    EXPECT_FALSE(GetFilesDates(ScratchPath("missing/*"), names, first, second));
    EXPECT_EQ(names.Count(), 2);
}

// ---- DeleteFolder

TEST(DeleteFolder, RemovesAllItsContent) {
    WriteBytes(MakeFolder(Scratch("Data/a/b")) + "/file", "1");
    WriteBytes(Scratch("Data/.hidden"), "1");
    MakeFolder(Scratch("Data/empty"));
    MakeFifo(Scratch("Data/fifo"));
    EXPECT_TRUE(Delete("DATA"));
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST(DeleteFolder, LeavesTheTargetsOfLinksAlone) {
    WriteBytes(MakeFolder(Scratch("kept")) + "/file", "1");
    MakeFolder(Scratch("data"));
    fs::create_symlink("../kept", Scratch("data/link"));
    fs::create_symlink("nowhere", Scratch("data/dangling"));
    EXPECT_TRUE(Delete("data"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"kept"});
    EXPECT_EQ(Names(Scratch("kept")), Strings{"file"});
}

TEST(DeleteFolder, MissingFolderIsTrue) {
    WriteBytes(Scratch("file"), "1");
    EXPECT_TRUE(Delete("missing"));
    EXPECT_TRUE(Delete("file"));
    EXPECT_TRUE(DeleteFolder(""));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"file"});
}

TEST(DeleteFolder, LinkIsNoFolderAlsoWithASlashBehindIt) {
    WriteBytes(MakeFolder(Scratch("kept")) + "/file", "1");
    fs::create_symlink("kept", Scratch("link"));
    EXPECT_TRUE(Delete("link"));
    EXPECT_TRUE(Delete("link/"));
    EXPECT_TRUE(Delete("link//"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"kept", "link"}));
    EXPECT_EQ(Names(Scratch("kept")), Strings{"file"});
}

TEST(DeleteFolder, SlashBehindAFolderIsNoHindrance) {
    WriteBytes(MakeFolder(Scratch("data")) + "/file", "1");
    EXPECT_TRUE(Delete("data/"));
    EXPECT_FALSE(Exists(Scratch("data")));
}

TEST(DeleteFolder, RefusesDots) {
    WriteBytes(MakeFolder(Scratch("outer/inner")) + "/file", "1");
    for (const char* name : {"outer/.", "outer/./", "outer/inner/..", "outer/inner/..//"}) {
        EXPECT_FALSE(Delete(name)) << name;
    }
    fs::current_path(Scratch("outer/inner"));
    EXPECT_FALSE(DeleteFolder("."));
    EXPECT_FALSE(DeleteFolder(".."));
    EXPECT_TRUE(Exists(Scratch("outer/inner/file")));
    fs::current_path(ScratchFolder());
}

TEST(DeleteFolder, StarThatFindsADotIsRefused) {
    WriteBytes(MakeFolder(Scratch("outer")) + "/file", "1");
    EXPECT_FALSE(Delete("outer/*"));
    EXPECT_TRUE(Exists(Scratch("outer/file")));
}

TEST(DeleteFolder, EntryOfAnotherKindStaysAndMakesItFalse) {
    WriteBytes(MakeFolder(Scratch("data/inner")) + "/file", "1");
    MakeSocket(Scratch("data/inner/socket"));
    EXPECT_FALSE(Delete("data"));
    EXPECT_EQ(Names(Scratch("data/inner")), Strings{"socket"});
}

TEST(DeleteFolder, EntryThatCannotBeLookedAtIsPassedOver) {
    MakeFolder(Scratch("data"));
    for (const char* name : {"data/a", "data/b", "data/c"})
        WriteBytes(name, "1");
    const HiddenEntry hidden(Scratch("data/b"));
    EXPECT_FALSE(Delete("data"));
    EXPECT_EQ(NamesInOrderOfTheFolder(Scratch("data")), Strings{"b"});
}

TEST(DeleteFolder, StopsAtTheFirstFailure) {
    for (const char* name : {"data/a", "data/b", "data/c", "data/d"})
        MakeFolder(name);
    const Strings order = NamesInOrderOfTheFolder(Scratch("data"));
    MakeSocket(Scratch("data/" + order[1] + "/socket"));
    EXPECT_FALSE(Delete("data"));
    EXPECT_EQ(NamesInOrderOfTheFolder(Scratch("data")), Strings(order.begin() + 1, order.end()));
}

TEST(DeleteFolder, StopsAtAFileThatCannotBeRemoved) {
    MakeFolder(Scratch("data"));
    for (const char* name : {"data/a", "data/b", "data/c", "data/d"})
        WriteBytes(name, "1");
    const Strings order = NamesInOrderOfTheFolder(Scratch("data"));
    const FailingRemove failing(Scratch("data/" + order[1]), EACCES);
    EXPECT_FALSE(Delete("data"));
    EXPECT_EQ(NamesInOrderOfTheFolder(Scratch("data")), Strings(order.begin() + 1, order.end()));
}

TEST(DeleteFolder, LeavesNoFileOpen) {
    MakeFolder(Scratch("data/inner"));
    MakeSocket(Scratch("data/inner/socket"));
    const size_t openFiles = Names("/proc/self/fd").size();
    EXPECT_FALSE(Delete("data"));
    EXPECT_EQ(Names("/proc/self/fd").size(), openFiles);
}

// ---- RenameFile

TEST(RenameFile, MovesAFileInOtherCase) {
    WriteBytes(Scratch("old.txt"), "1");
    MakeFolder(Scratch("data"));
    EXPECT_TRUE(Rename("OLD.TXT", "data/new.txt"));
    EXPECT_FALSE(Exists(Scratch("old.txt")));
    EXPECT_EQ(ReadBytes(Scratch("data/new.txt")), "1");
}

TEST(RenameFile, MissingFileIsFalseAndNothingIsMade) {
    MakeFolder(Scratch("folder"));
    EXPECT_FALSE(Rename("missing", "new"));
    EXPECT_FALSE(Rename("folder", "new"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"folder"});
}

TEST(RenameFile, ReplacesTheTargetOfAnotherCaseAndKeepsItsSpelling) {
    WriteBytes(Scratch("old"), "1");
    WriteBytes(Scratch("Target"), "22");
    EXPECT_TRUE(Rename("old", "TARGET"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"Target"});
    EXPECT_EQ(ReadBytes(Scratch("Target")), "1");
}

TEST(RenameFile, ChangeOfCaseAloneLeavesTheSpelling) {
    WriteBytes(Scratch("name"), "1");
    EXPECT_TRUE(Rename("name", "NAME"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"name"});
}

TEST(RenameFile, RenamesALinkItself) {
    WriteBytes(Scratch("file"), "1");
    fs::create_symlink("file", Scratch("link"));
    EXPECT_TRUE(Rename("link", "moved"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"file", "moved"}));
    EXPECT_TRUE(fs::is_symlink(Scratch("moved")));
}

TEST(RenameFile, TargetBelowAMissingFolderIsFalse) {
    WriteBytes(Scratch("file"), "1");
    EXPECT_FALSE(Rename("file", "missing/file"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"file"});
}

// ---- RenameFolder

TEST(RenameFolder, MovesAFolderWithItsContent) {
    WriteBytes(MakeFolder(Scratch("old")) + "/file", "1");
    EXPECT_TRUE(RenameWhole("OLD", "new"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"new"});
    EXPECT_EQ(ReadBytes(Scratch("new/file")), "1");
}

TEST(RenameFolder, MissingFolderIsFalse) {
    WriteBytes(Scratch("file"), "1");
    fs::create_symlink("..", Scratch("link"));
    EXPECT_FALSE(RenameWhole("missing", "new"));
    EXPECT_FALSE(RenameWhole("file", "new"));
    EXPECT_FALSE(RenameWhole("link", "new"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"file", "link"}));
}

TEST(RenameFolder, ReplacesAnEmptyTargetOfAnotherCaseAndNoOther) {
    WriteBytes(MakeFolder(Scratch("old")) + "/file", "1");
    MakeFolder(Scratch("Empty"));
    WriteBytes(MakeFolder(Scratch("full")) + "/other", "1");
    EXPECT_FALSE(RenameWhole("old", "full"));
    EXPECT_TRUE(RenameWhole("old", "EMPTY"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"Empty", "full"}));
    EXPECT_EQ(Names(Scratch("Empty")), Strings{"file"});
}

TEST(RenameFolder, ChangeOfCaseAloneLeavesTheSpelling) {
    MakeFolder(Scratch("name"));
    EXPECT_TRUE(RenameWhole("name", "NAME"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"name"});
}

TEST(RenameFolder, RefusesDots) {
    MakeFolder(Scratch("outer/inner"));
    MakeFolder(Scratch("other"));
    for (const char* name : {"outer/.", "outer/inner/..", "outer/inner/../"}) {
        EXPECT_FALSE(RenameWhole(name, "new")) << name;
        EXPECT_FALSE(RenameWhole("other", name)) << name;
    }
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"other", "outer"}));
}

TEST(RenameFolder, StarThatFindsADotIsRefused) {
    WriteBytes(MakeFolder(Scratch("outer")) + "/file", "1");
    EXPECT_FALSE(RenameWhole("outer/*", "new"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"outer"});
}

// ---- CopyFileD

TEST(CopyFile, CopiesEveryByte) {
    std::string bytes;
    for (int i = 0; i < 100001; ++i)
        bytes += static_cast<char>(i * 7);
    WriteBytes(Scratch("source"), bytes);
    WriteBytes(Scratch("longer"), bytes + bytes);
    EXPECT_TRUE(Copy("SOURCE", "target"));
    EXPECT_EQ(ReadBytes(Scratch("target")), bytes);
    EXPECT_TRUE(Copy("source", "longer"));
    EXPECT_EQ(ReadBytes(Scratch("longer")), bytes);
    EXPECT_EQ(ReadBytes(Scratch("source")), bytes);
}

TEST(CopyFile, CopiesAnEmptyFile) {
    WriteBytes(Scratch("source"), "");
    WriteBytes(Scratch("target"), "12");
    EXPECT_TRUE(Copy("source", "target"));
    EXPECT_EQ(ReadBytes(Scratch("target")), "");
}

TEST(CopyFile, MakesTheFolderOfTheTarget) {
    WriteBytes(Scratch("source"), "1");
    EXPECT_TRUE(Copy("source", "a/b/target"));
    EXPECT_EQ(ReadBytes(Scratch("a/b/target")), "1");
}

TEST(CopyFile, TargetInOtherCaseIsReplacedAndKeepsItsSpelling) {
    WriteBytes(Scratch("source"), "1");
    WriteBytes(MakeFolder(Scratch("data")) + "/target", "22");
    EXPECT_TRUE(Copy("source", "DATA/TARGET"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"data", "source"}));
    EXPECT_EQ(Names(Scratch("data")), Strings{"target"});
    EXPECT_EQ(ReadBytes(Scratch("data/target")), "1");
}

TEST(CopyFile, BareTargetIsMadeInTheCurrentFolder) {
    WriteBytes(Scratch("source"), "1");
    EXPECT_TRUE(CopyFileD("source", "target"));
    EXPECT_EQ(ReadBytes(Scratch("target")), "1");
}

TEST(CopyFile, MissingSourceIsFalseAndNothingIsMade) {
    EXPECT_FALSE(Copy("missing", "data/target"));
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST(CopyFile, SourceThatCannotBeOpenedIsFalseAndMakesTheFolderAlone) {
    fs::create_symlink("nowhere", Scratch("dangling"));
    EXPECT_FALSE(Copy("dangling", "data/target"));
    EXPECT_TRUE(Names(Scratch("data")).empty());
}

TEST(CopyFile, TargetThatIsAFolderIsFalse) {
    WriteBytes(Scratch("source"), "1");
    MakeFolder(Scratch("folder"));
    EXPECT_FALSE(Copy("source", "folder"));
    EXPECT_TRUE(Names(Scratch("folder")).empty());
}

TEST(CopyFile, CopiesWhatALinkPointsTo) {
    WriteBytes(Scratch("source"), "1");
    fs::create_symlink("source", Scratch("link"));
    EXPECT_TRUE(Copy("link", "target"));
    EXPECT_FALSE(fs::is_symlink(Scratch("target")));
    EXPECT_EQ(ReadBytes(Scratch("target")), "1");
}

TEST(CopyFile, OntoItselfLeavesItAlone) {
    WriteBytes(Scratch("source"), "123");
    fs::create_symlink("source", Scratch("link"));
    fs::create_hard_link(Scratch("source"), Scratch("twin"));
    for (const char* name : {"source", "SOURCE", "link", "twin"}) {
        EXPECT_TRUE(Copy("source", name)) << name;
        EXPECT_TRUE(Copy(name, "source")) << name;
        EXPECT_EQ(ReadBytes(Scratch("source")), "123") << name;
    }
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"link", "source", "twin"}));
}

TEST(CopyFile, DoesNotWaitForTheOtherEndOfAFifo) {
    MakeFifo(Scratch("fifo"));
    WriteBytes(Scratch("source"), "1");
    EXPECT_TRUE(Copy("fifo", "target"));
    EXPECT_EQ(ReadBytes(Scratch("target")), "");
    EXPECT_TRUE(fs::is_regular_file(Scratch("target")));
    EXPECT_FALSE(Copy("source", "fifo"));
}

TEST(CopyFile, FailedWriteIsNotNoticed) {
    struct stat status;
    if (stat("/dev/full", &status) != 0 || !S_ISCHR(status.st_mode)) {
        GTEST_SKIP() << "needs a device that is always full";
    }
    WriteBytes(Scratch("source"), std::string(100000, 'x'));
    EXPECT_TRUE(CopyFileD(ScratchPath("source"), "/dev/full"));
}

// ---- CopyFolder

TEST(CopyWholeFolder, CopiesFilesAndFoldersAtAnyDepth) {
    WriteBytes(MakeFolder(Scratch("source/a/b")) + "/deep", "1");
    WriteBytes(Scratch("source/.hidden"), "2");
    MakeFolder(Scratch("source/empty"));
    EXPECT_TRUE(CopyWhole("SOURCE", "new/target"));
    EXPECT_EQ(Names(Scratch("new/target")), (Strings{".hidden", "a", "empty"}));
    EXPECT_EQ(ReadBytes(Scratch("new/target/.hidden")), "2");
    EXPECT_EQ(ReadBytes(Scratch("new/target/a/b/deep")), "1");
    EXPECT_EQ(ReadBytes(Scratch("source/a/b/deep")), "1");
}

TEST(CopyWholeFolder, CopiesLinksAsLinks) {
    WriteBytes(MakeFolder(Scratch("source")) + "/file", "1");
    const std::string longText(4000, 'x');
    fs::create_symlink("file", Scratch("source/link"));
    fs::create_symlink("nowhere/at/all", Scratch("source/dangling"));
    fs::create_symlink("..", Scratch("source/folder"));
    fs::create_symlink(longText, Scratch("source/long"));
    EXPECT_TRUE(CopyWhole("source", "target"));
    EXPECT_EQ(fs::read_symlink(Scratch("target/link")), "file");
    EXPECT_EQ(fs::read_symlink(Scratch("target/dangling")), "nowhere/at/all");
    EXPECT_EQ(fs::read_symlink(Scratch("target/folder")), "..");
    EXPECT_EQ(fs::read_symlink(Scratch("target/long")), longText);
}

TEST(CopyWholeFolder, MergesIntoATargetInOtherCase) {
    WriteBytes(MakeFolder(Scratch("source/Inner")) + "/file", "new");
    WriteBytes(MakeFolder(Scratch("Target/inner")) + "/FILE", "old");
    WriteBytes(Scratch("Target/inner/other"), "kept");
    EXPECT_TRUE(CopyWhole("source", "TARGET"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"Target", "source"}));
    EXPECT_EQ(Names(Scratch("Target")), Strings{"inner"});
    EXPECT_EQ(Names(Scratch("Target/inner")), (Strings{"FILE", "other"}));
    EXPECT_EQ(ReadBytes(Scratch("Target/inner/FILE")), "new");
    EXPECT_EQ(ReadBytes(Scratch("Target/inner/other")), "kept");
}

TEST(CopyWholeFolder, FifoArrivesAsAnEmptyFileAndASocketNotAtAll) {
    MakeFolder(Scratch("source"));
    MakeFifo(Scratch("source/fifo"));
    MakeSocket(Scratch("source/socket"));
    EXPECT_TRUE(CopyWhole("source", "target"));
    EXPECT_EQ(Names(Scratch("target")), Strings{"fifo"});
    EXPECT_TRUE(fs::is_regular_file(Scratch("target/fifo")));
}

TEST(CopyWholeFolder, MissingSourceIsFalseAndNothingIsMade) {
    WriteBytes(Scratch("file"), "1");
    EXPECT_FALSE(CopyWhole("missing", "target"));
    EXPECT_FALSE(CopyWhole("file", "target"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"file"});
}

TEST(CopyWholeFolder, TargetThatCannotBeMadeIsFalse) {
    MakeFolder(Scratch("source"));
    WriteBytes(Scratch("file"), "1");
    EXPECT_FALSE(CopyWhole("source", "file"));
    EXPECT_FALSE(CopyFolder("source", "bare"));
    EXPECT_EQ(Names(ScratchFolder()), (Strings{"file", "source"}));
}

TEST(CopyWholeFolder, StopsAtTheFirstFailureAndLeavesWhatIsCopied) {
    MakeFolder(Scratch("source"));
    for (const char* name : {"source/a", "source/b", "source/c", "source/d"})
        WriteBytes(name, "1");
    const Strings order = NamesInOrderOfTheFolder(Scratch("source"));
    MakeFolder(Scratch("target/" + order[2]));
    EXPECT_FALSE(CopyWhole("source", "target"));
    EXPECT_TRUE(Exists(Scratch("target/" + order[0])));
    EXPECT_TRUE(Exists(Scratch("target/" + order[1])));
    EXPECT_FALSE(Exists(Scratch("target/" + order[3])));
}

TEST(CopyWholeFolder, LinkIsNotMadeOverAnotherEntry) {
    MakeFolder(Scratch("source"));
    fs::create_symlink("new", Scratch("source/link"));
    MakeFolder(Scratch("target"));
    fs::create_symlink("old", Scratch("target/link"));
    EXPECT_FALSE(CopyWhole("source", "target"));
    EXPECT_EQ(fs::read_symlink(Scratch("target/link")), "old");
}

TEST(CopyWholeFolder, EntryThatCannotBeLookedAtIsFalse) {
    WriteBytes(MakeFolder(Scratch("source")) + "/file", "1");
    const HiddenEntry hidden(Scratch("source/file"));
    EXPECT_FALSE(CopyWhole("source", "target"));
}

TEST(CopyWholeFolder, TargetInsideTheSourceIsNotCopiedIntoItself) {
    WriteBytes(MakeFolder(Scratch("source/inner")) + "/file", "1");
    EXPECT_TRUE(CopyWhole("source", "source/inner/copy"));
    EXPECT_EQ(Names(Scratch("source/inner/copy")), Strings{"inner"});
    EXPECT_EQ(Names(Scratch("source/inner/copy/inner")), Strings{"file"});
}

TEST(CopyWholeFolder, OntoItselfLeavesItAlone) {
    WriteBytes(MakeFolder(Scratch("source/inner")) + "/file", "1");
    EXPECT_TRUE(CopyWhole("source", "SOURCE"));
    EXPECT_EQ(Names(ScratchFolder()), Strings{"source"});
    EXPECT_EQ(ReadBytes(Scratch("source/inner/file")), "1");
}

TEST(CopyWholeFolder, DeepFoldersNeedNeitherMuchStackNorManyOpenFiles) {
    constexpr int Levels = 300;
    MakeFolder(Scratch(DeepPath("source", Levels)));
    WriteBytes(Scratch(DeepPath("source", Levels)) + "/file", "1");
    const FewOpenFiles few(32);
    EXPECT_TRUE(CopyWhole("source", "target"));
    EXPECT_EQ(ReadBytes(Scratch(DeepPath("target", Levels)) + "/file"), "1");
    EXPECT_TRUE(Delete("source"));
    EXPECT_TRUE(Delete("target"));
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}
