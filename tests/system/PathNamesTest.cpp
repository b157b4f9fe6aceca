// Path names: joining and parting, local and shared forms, the current directory.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "core/CoreGlobal.h"
#include "support/Support.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "tests/system/ScratchPath.h"

namespace fs = std::filesystem;

namespace {

std::pair<std::string, std::string> Split(const DString& path) {
    DString folder("old");
    DString name("old");
    SplitPathElts(path, folder, name);
    return {Text(folder), Text(name)};
}

using Parts = std::pair<std::string, std::string>;

std::string Shared(const char* local) { return Text(GetUNCFileName(local)); }

std::string Local(const char* shared) { return Text(GetLocalFileName(shared)); }

void SetTranslations(const std::string& lines) {
    WriteBytes(Scratch("Tarsel.ini"), "[Other]\r\nx=/other\r\n[Translations]\r\n" + lines);
    ASSERT_TRUE(TrIni.SetFileName(ScratchPath("Tarsel.ini")));
}

}  // namespace

// ---- Joining and parting

TEST(AppendPathElts, PutsASlashBetween) {
    EXPECT_EQ(Text(AppendPathElts("a", "b")), "a/b");
    EXPECT_EQ(Text(AppendPathElts("/a", "b", "c")), "/a/b/c");
    EXPECT_EQ(Text(AppendPathElts("a", "b", "c", "d")), "a/b/c/d");
    EXPECT_EQ(Text(AppendPathElts("a", "b", "c", "d", "e")), "a/b/c/d/e");
}

TEST(AppendPathElts, EmptyElementLeavesOutTheSlash) {
    EXPECT_EQ(Text(AppendPathElts("", "b")), "b");
    EXPECT_EQ(Text(AppendPathElts("a", "")), "a");
    EXPECT_EQ(Text(AppendPathElts("", "")), "");
    EXPECT_EQ(Text(AppendPathElts("", "b", "c")), "b/c");
    EXPECT_EQ(Text(AppendPathElts("a", "", "c")), "a/c");
    EXPECT_EQ(Text(AppendPathElts("a", "", "", "d")), "a/d");
    EXPECT_EQ(Text(AppendPathElts("", "b", "", "d", "")), "b/d");
}

TEST(AppendPathElts, SlashAtAnElementsEndIsDoubled) {
    EXPECT_EQ(Text(AppendPathElts("a/", "b")), "a//b");
    EXPECT_EQ(Text(AppendPathElts("a", "/b")), "a//b");
    EXPECT_EQ(Text(AppendPathElts("/", "b")), "//b");
}

TEST(SplitPathElts, PartsAtTheLastSlash) {
    EXPECT_EQ(Split("/a/b/c.d"), Parts("/a/b", "c.d"));
    EXPECT_EQ(Split("a/b"), Parts("a", "b"));
    EXPECT_EQ(Split("a\\b"), Parts("", "a\\b"));
}

TEST(SplitPathElts, BareNameHasNoFolder) {
    EXPECT_EQ(Split("name"), Parts("", "name"));
    EXPECT_EQ(Split(""), Parts("", ""));
}

TEST(SplitPathElts, SlashAtTheEndLeavesNoName) {
    EXPECT_EQ(Split("/a/b/"), Parts("/a/b", ""));
    EXPECT_EQ(Split("/"), Parts("", ""));
}

TEST(SplitPathElts, NameBelowTheRootHasNoFolder) { EXPECT_EQ(Split("/name"), Parts("", "name")); }

TEST(SplitPathElts, ResultMayBeThePathItself) {
    DString path("/a/b");
    DString other;
    SplitPathElts(path, path, other);
    EXPECT_EQ(Text(path), "/a");
    EXPECT_EQ(Text(other), "b");
    path = "/a/b";
    SplitPathElts(path, other, path);
    EXPECT_EQ(Text(other), "/a");
    EXPECT_EQ(Text(path), "b");
}

TEST(IsFullQual, TellsALeadingSlash) {
    EXPECT_TRUE(IsFullQual("/a"));
    EXPECT_TRUE(IsFullQual("/"));
    EXPECT_FALSE(IsFullQual("a/b"));
    EXPECT_FALSE(IsFullQual("\\a"));
    EXPECT_FALSE(IsFullQual(" /a"));
    EXPECT_FALSE(IsFullQual(""));
}

// ---- Local and shared forms

TEST(TranslateFileName, MakesEachBackslashASlash) {
    EXPECT_EQ(Text(TranslateFileName("..\\a\\\\b/c")), "../a//b/c");
    EXPECT_EQ(Text(TranslateFileName("Plain Name")), "Plain Name");
    EXPECT_EQ(Text(TranslateFileName("")), "");
}

TEST(SharedNames, FollowTheTable) {
    SetTranslations("\\\\server\\data=/data\r\n\\\\server\\home=/home\r\n");
    EXPECT_EQ(Shared("/home/x/y"), "\\\\server\\home\\x\\y");
    EXPECT_EQ(Local("\\\\server\\home\\x\\y"), "/home/x/y");
}

TEST(SharedNames, PrefixIsMatchedInAnyCase) {
    SetTranslations("\\\\Server\\Data=/Data\r\n");
    EXPECT_EQ(Shared("/dATA/File"), "\\\\Server\\Data\\File");
    EXPECT_EQ(Local("\\\\sERVER\\dATA\\File"), "/Data/File");
}

TEST(SharedNames, FirstLineThatFitsWins) {
    SetTranslations("S1=/data\r\nS2=/data/runs\r\n");
    EXPECT_EQ(Shared("/data/runs/x"), "S1\\runs\\x");
    SetTranslations("S=/a\r\nS\\runs=/b\r\n");
    EXPECT_EQ(Local("S\\runs\\x"), "/a/runs/x");
}

TEST(SharedNames, ByteBehindThePrefixIsDroppedUnseen) {
    SetTranslations("S=/data\r\n");
    EXPECT_EQ(Shared("/dataset/x"), "S\\et\\x");
    EXPECT_EQ(Local("Server\\x"), "/data/rver/x");
}

TEST(SharedNames, PrefixAloneBecomesTheOtherPrefixAlone) {
    SetTranslations("S=/data\r\n");
    EXPECT_EQ(Shared("/data"), "S");
    EXPECT_EQ(Shared("/data/"), "S");
    EXPECT_EQ(Local("S"), "/data");
}

TEST(SharedNames, NameShorterThanThePrefixDoesNotFit) {
    SetTranslations("Server=/data\r\n");
    EXPECT_EQ(Shared("/dat"), "/dat");
    EXPECT_EQ(Local("Serve"), "Serve");
}

TEST(SharedNames, SlashesOfTheSharedPrefixBecomeBackslashesToo) {
    SetTranslations("//server/data=/data\r\n");
    EXPECT_EQ(Shared("/data/x"), "\\\\server\\data\\x");
}

TEST(SharedNames, LocalPrefixKeepsItsBackslashes) {
    SetTranslations("S=/odd\\folder\r\n");
    EXPECT_EQ(Local("S\\a\\b"), "/odd\\folder/a/b");
}

TEST(SharedNames, LineEndsAtItsFirstEqualsSign) {
    SetTranslations("S=/a=b\r\n");
    EXPECT_EQ(Shared("/a=b/x"), "S\\x");
    EXPECT_EQ(Local("S\\x"), "/a=b/x");
}

TEST(SharedNames, LineWithoutEqualsSignCountsAsBothPrefixes) {
    SetTranslations("/data\r\n");
    EXPECT_EQ(Shared("/DATA/x"), "\\data\\x");
    EXPECT_EQ(Local("/DATA\\x"), "/data/x");
}

TEST(SharedNames, EmptyPrefixFitsEveryNameAndDropsItsFirstByte) {
    SetTranslations("S=\r\n");
    EXPECT_EQ(Shared("/x/y"), "S\\x\\y");
    SetTranslations("=/data\r\n");
    EXPECT_EQ(Local("xyz\\a"), "/data/yz/a");
}

TEST(SharedNames, NameThatNoLineFitsStaysAsItWas) {
    SetTranslations("S=/data\r\n");
    EXPECT_EQ(Shared("/other/x\\y"), "/other/x\\y");
    EXPECT_EQ(Local("T\\x/y"), "T\\x/y");
    EXPECT_EQ(Shared("/other"), "/other") << "the table of another section";
}

TEST(SharedNames, EmptyNameStaysEmpty) {
    SetTranslations("S=\r\n=/data\r\n");
    EXPECT_EQ(Shared(""), "");
    EXPECT_EQ(Local(""), "");
}

TEST(SharedNames, WithoutTheTableNamesStayAsTheyWere) {
    EXPECT_EQ(Shared("/data/x"), "/data/x");
    EXPECT_EQ(Local("S\\x"), "S\\x");
}

TEST(SharedNames, ThereAndBackGivesTheNameWithTheCaseOfThePrefix) {
    SetTranslations("\\\\server\\data=/Data\r\n");
    EXPECT_EQ(Local(Shared("/data/Runs/7.wvf").c_str()), "/Data/Runs/7.wvf");
}

// ---- The current directory

TEST(CurrentDirectory, IsWhereTheProcessStands) {
    MakeFolder(Scratch("Data"));
    EXPECT_EQ(Text(GetCurrentDirectoryD()), ScratchFolder());
    EXPECT_TRUE(SetCurrentDirectoryD("Data"));
    EXPECT_EQ(Text(GetCurrentDirectoryD()), Scratch("Data"));
    EXPECT_EQ(fs::current_path(), Scratch("Data"));
}

TEST(CurrentDirectory, IsSetByANameInOtherCase) {
    MakeFolder(Scratch("Data"));
    const DString asked = ScratchPath("DATA");
    EXPECT_TRUE(SetCurrentDirectoryD(asked));
    EXPECT_EQ(fs::current_path(), Scratch("Data"));
    EXPECT_EQ(Text(asked), Scratch("DATA"));
}

TEST(CurrentDirectory, MayBeSetThroughALink) {
    MakeFolder(Scratch("Data"));
    fs::create_symlink("Data", Scratch("Link"));
    EXPECT_TRUE(SetCurrentDirectoryD(ScratchPath("Link")));
    EXPECT_EQ(fs::current_path(), Scratch("Data"));
}

TEST(CurrentDirectory, StaysWhereTheFolderIsMissing) {
    WriteBytes(Scratch("File"), "1");
    EXPECT_FALSE(SetCurrentDirectoryD(ScratchPath("missing")));
    EXPECT_FALSE(SetCurrentDirectoryD(ScratchPath("File")));
    EXPECT_FALSE(SetCurrentDirectoryD(""));
    EXPECT_EQ(fs::current_path(), ScratchFolder());
}

TEST(CurrentDirectory, IsEmptyOnceItWasRemoved) {
    MakeFolder(Scratch("Data"));
    fs::current_path(Scratch("Data"));
    fs::remove(Scratch("Data"));
    EXPECT_EQ(Text(GetCurrentDirectoryD()), "");
    fs::current_path(ScratchFolder());
}
