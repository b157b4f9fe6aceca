// Selecting a shot, finding it by its name, pausing its fields, and the paths of an experiment.
#include <gtest/gtest.h>
#include <limits.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/experiment/ExperimentFixture.h"

namespace {

using List = std::vector<std::string>;

class ShotSelection : public ExperimentTest {
protected:
    void SetUp() override { OpenWithGroups(); }

    // "group name": what the search finds, and what it leaves of the name.
    std::string Found(const char* shot) {
        DString name(shot);
        const int group = m_Experiment.GuessPathFromShot(name);
        return std::to_string(group) + " " + Text(name);
    }
};

class ShotSearch : public ShotSelection {};
class ShotPause : public ShotSelection {};
class TemporaryShot : public ShotSelection {};

// An experiment e in a folder /d that needn't be on disk.
class ExperimentPaths : public testing::Test {
protected:
    Experiment m_Experiment;

    void SetUp() override {
        m_Experiment.m_ExperimentPath = "/d";
        m_Experiment.m_ExperimentFolder = "/d/e";
        m_Experiment.m_ExperimentName = "e";
        for (const char* path : {"/d/e/Shots", "/d/Data1", "/far/Data2", "/D/DATA1"}) {
            m_Experiment.m_GroupPaths.Add(path);
        }
    }
    std::string Full(const char* path) const { return Text(m_Experiment.FullPath(path)); }
    std::string Relative(const char* path) const { return Text(m_Experiment.RelativePath(path)); }
    int Group(const char* path) const { return m_Experiment.GetShotGroupNumber(path); }
};

}  // namespace

// ---- Selection

TEST_F(ShotSelection, SetsNameGroupFolderAndFiles) {
    AddShot(2, "A7");
    EXPECT_TRUE(m_Experiment.SetShot("A7", -1));
    EXPECT_EQ(Text(m_Experiment.GetShotName()), "A7");
    EXPECT_EQ(m_Experiment.GetCurrentGroup(), 2);
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), m_Above + "/Data2/ShotA7");
    EXPECT_EQ(Text(m_Experiment.GetCurPath()), m_Above + "/Data2");
    EXPECT_EQ(Text(m_Experiment.m_ScalarsFile), m_Above + "/Data2/ShotA7/Scalars.ini");
    EXPECT_EQ(Text(m_Experiment.m_ScalarCacheFile), m_Above + "/Data2/ScalarCache.ini");
}

TEST_F(ShotSelection, MakesNoFile) {
    AddShot(2, "7");
    ASSERT_TRUE(m_Experiment.SetShot("7", 2));
    EXPECT_EQ(Names(GroupFolder(2)), List({"Shot7"}));
    EXPECT_EQ(Names(ShotFolder(2, "7")), List());
}

TEST_F(ShotSelection, LeadingStarIsDropped) {
    AddShot(0, "123");
    EXPECT_TRUE(m_Experiment.SetShot("*123", -1));
    EXPECT_EQ(Selection(), "123 in 0");
    EXPECT_TRUE(m_Experiment.SetShot("**5", 1));
    EXPECT_EQ(Selection(), "*5 in 1");
}

TEST_F(ShotSelection, GivenGroupNeedsNoFolder) {
    AddShot(0, "7");
    EXPECT_TRUE(m_Experiment.SetShot("7", 3));
    EXPECT_EQ(Selection(), "7 in 3");
    EXPECT_FALSE(Exists(ShotFolder(3, "7")));
}

TEST_F(ShotSelection, UnknownGroupLeavesTheSelection) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    const VerboseLog log;
    EXPECT_FALSE(m_Experiment.SetShot("8", 4));
    EXPECT_FALSE(m_Experiment.SetShot("8", INT_MAX));
    EXPECT_EQ(Selection(), "7 in 1");
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), ShotFolder(1, "7"));
    EXPECT_EQ(log.Texts(), List({"gnum is 4", "gnum is 2147483647"}));
}

TEST_F(ShotSelection, ShotThatIsNowhereLeavesTheSelection) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    m_Experiment.SetPauseIO(true);
    const VerboseLog log;
    EXPECT_FALSE(m_Experiment.SetShot("8", INT_MIN));
    EXPECT_EQ(Selection(), "7 in 1");
    EXPECT_TRUE(m_Experiment.m_PauseIO);
    EXPECT_EQ(log.Texts(), List({"gnum is -1"}));
}

TEST_F(ShotSelection, WithoutAnExperimentNoGroupIsCurrent) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    const std::string other = m_Above + "/other/";
    ASSERT_TRUE(m_Experiment.SetExperimentFolder(other.c_str()));
    const VerboseLog log;
    EXPECT_FALSE(m_Experiment.SetShot("7", 1));
    EXPECT_EQ(Selection(), "7 in -1");
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), other);
    EXPECT_TRUE(m_Experiment.GetCurPath().IsEmpty());
    EXPECT_EQ(log.Texts(), List({"experiment name not defined"}));
}

TEST_F(ShotSelection, OfTheCurrentShotDoesNothing) {
    ASSERT_TRUE(m_Experiment.SetShot("abc", 1));
    m_Experiment.SetPauseIO(true);
    const VerboseLog log;
    EXPECT_TRUE(m_Experiment.SetShot("abc", 1));
    EXPECT_TRUE(m_Experiment.SetShot("*abc", 1));
    EXPECT_TRUE(m_Experiment.m_PauseIO);
    EXPECT_EQ(log.Texts(), List());
}

TEST_F(ShotSelection, InAnotherCaseIsANewSelection) {
    ASSERT_TRUE(m_Experiment.SetShot("abc", 1));
    m_Experiment.SetPauseIO(true);
    EXPECT_TRUE(m_Experiment.SetShot("ABC", 1));
    EXPECT_EQ(Selection(), "ABC in 1");
    EXPECT_FALSE(m_Experiment.m_PauseIO);
}

TEST_F(ShotSelection, OfTheSameNameInAnotherGroupIsANewSelection) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    m_Experiment.SetPauseIO(true);
    EXPECT_TRUE(m_Experiment.SetShot("7", 2));
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), ShotFolder(2, "7"));
    EXPECT_FALSE(m_Experiment.m_PauseIO);
}

TEST_F(ShotSelection, IsLoggedWhenLoggingIsVerbose) {
    const VerboseLog log;
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    EXPECT_EQ(log.Texts(), List({"Finished setting shot"}));
}

TEST_F(ShotSelection, OfAnEmptyNameAfterALoadLeavesNoShot) {
    EXPECT_TRUE(m_Experiment.SetShot("", 0));
    EXPECT_TRUE(m_Experiment.GetShotFolder().IsEmpty());
    EXPECT_TRUE(m_Experiment.SetShot("", 1));
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), ShotFolder(1, ""));
}

TEST_F(ShotSelection, DropsTheGroupPartThatTheSearchUsed) {
    AddShot(1, "7");
    EXPECT_TRUE(m_Experiment.SetShot("Data1/7", -1));
    EXPECT_EQ(Selection(), "7 in 1");
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), GroupFolder(1) + "/Shot7");
}

TEST_F(ShotSelection, FolderIsNamedAsTheShotWasAndNotAsItStandsOnDisk) {
    AddShot(2, "Abc");
    for (const std::string name : {"aBC", "a?[b-d]"}) {
        EXPECT_TRUE(m_Experiment.SetShot(name.c_str(), -1));
        EXPECT_EQ(Selection(), name + " in 2");
        EXPECT_EQ(Text(m_Experiment.GetShotFolder()), GroupFolder(2) + "/Shot" + name);
        EXPECT_EQ(Text(m_Experiment.m_ScalarsFile),
                  GroupFolder(2) + "/Shot" + name + "/Scalars.ini");
    }
}

TEST_F(ShotSelection, KeepsAGroupPartThatTheSearchDidNotUse) {
    AddShot(0, "7");
    EXPECT_TRUE(m_Experiment.SetShot("Data1/7", -1));
    EXPECT_EQ(Selection(), "Data1/7 in 0");
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), GroupFolder(0) + "/ShotData1/7");
}

TEST_F(ShotSelection, GroupFoldersAreToldByNumber) {
    EXPECT_EQ(Text(m_Experiment.GetShotGroupPath(0)), GroupFolder(0));
    EXPECT_EQ(Text(m_Experiment.GetShotGroupPath(3)), GroupFolder(3));
    EXPECT_TRUE(m_Experiment.GetShotGroupPath(4).IsEmpty());
    EXPECT_TRUE(m_Experiment.GetShotGroupPath(-1).IsEmpty());
}

// ---- Search

TEST_F(ShotSearch, PrefersTheCurrentGroup) {
    AddShot(1, "7");
    AddShot(2, "7");
    ASSERT_TRUE(m_Experiment.SetShot("x", 2));
    EXPECT_EQ(Found("7"), "2 7");
}

TEST_F(ShotSearch, TakesTheLowestGroupWhereTheCurrentOneHasNone) {
    AddShot(1, "7");
    AddShot(2, "7");
    ASSERT_TRUE(m_Experiment.SetShot("x", 3));
    EXPECT_EQ(Found("7"), "1 7");
}

TEST_F(ShotSearch, GivesNoneForAShotThatIsNowhere) {
    EXPECT_EQ(Found("7"), "-1 7");
    EXPECT_EQ(Found("Data1/7"), "-1 Data1/7");
    EXPECT_EQ(Found(""), "-1 ");
}

TEST_F(ShotSearch, PrefersTheNamedGroupAndDropsItFromTheName) {
    AddShot(1, "7");
    AddShot(2, "7");
    ASSERT_TRUE(m_Experiment.SetShot("x", 2));
    EXPECT_EQ(Found("Data1/7"), "1 7");
    EXPECT_EQ(Found("dATA1/7"), "1 7");
}

TEST_F(ShotSearch, KeepsTheNamedGroupInTheNameWhereAnotherHoldsTheShot) {
    AddShot(0, "7");
    EXPECT_EQ(Found("Data1/7"), "0 Data1/7");
    EXPECT_EQ(Found("Data/7"), "0 Data/7");
}

TEST_F(ShotSearch, AsksForTheLastElementOfTheGroupAlone) {
    AddShot(1, "7");
    EXPECT_EQ(Found("d/Data1/7"), "1 d/Data1/7");
}

TEST_F(ShotSearch, GoesOnBehindAGroupThatHasTheNameButNotTheShot) {
    const std::string far = m_Above + "/far/DATA1";
    MakeFolder(far + "/Shot7");
    AddShot(0, "7");
    m_Experiment.m_GroupPaths.Add(far.c_str());
    EXPECT_EQ(Found("Data1/7"), "4 7");
}

TEST_F(ShotSearch, MatchesFoldersByCaseAndPatternButLeavesTheName) {
    AddShot(2, "Abc");
    EXPECT_EQ(Found("aBC"), "2 aBC");
    EXPECT_EQ(Found("a?[b-d]"), "2 a?[b-d]");
    EXPECT_EQ(Found("Data2/*"), "2 *");
}

TEST_F(ShotSearch, CountsFoldersAlone) {
    WriteBytes(ShotFolder(1, "7"), "");
    std::filesystem::create_directory_symlink(GroupFolder(3), ShotFolder(2, "7"));
    EXPECT_EQ(Found("7"), "-1 7");
}

TEST(ShotSearchAlone, GivesNoneWithoutGroups) {
    Experiment experiment;
    DString name("7");
    EXPECT_EQ(experiment.GuessPathFromShot(name), -1);
    name = "Shots/7";
    EXPECT_EQ(experiment.GuessPathFromShot(name), -1);
    EXPECT_TRUE(experiment.GetCurPath().IsEmpty());
    EXPECT_TRUE(experiment.GetShotGroupPath(0).IsEmpty());
}

// ---- Pause

TEST_F(ShotPause, HoldsChangesUntilItEnds) {
    AddShot(0, "7", "[Fields]\r\nx=1");
    WriteBytes(CacheFile(0), "[Shot7]\r\nx=1");
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetShotData("x", "2");
    m_Experiment.SetShotData("y", "3");
    EXPECT_EQ(Text(m_Experiment.GetShotData("x")), "2");
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\nx=1");
    EXPECT_EQ(ReadBytes(CacheFile(0)), "[Shot7]\r\nx=1");
    m_Experiment.SetPauseIO(false);
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\nx=2\r\ny=3");
    EXPECT_EQ(ReadBytes(CacheFile(0)), "[Shot7]\r\nx=2\r\ny=3");
}

TEST_F(ShotPause, EndsWithAnotherShotWhoseFilesItSpares) {
    AddShot(0, "7", "[Fields]\r\nx=1");
    AddShot(1, "8", "[Fields]\r\nx=8");
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetShotData("x", "2");
    ASSERT_TRUE(m_Experiment.SetShot("8", 1));
    EXPECT_FALSE(m_Experiment.m_PauseIO);
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\nx=2");
    EXPECT_EQ(ReadBytes(CacheFile(0)), "[Shot7]\r\nx=2");
    EXPECT_EQ(ReadBytes(FieldsFile(1, "8")), "[Fields]\r\nx=8");
    EXPECT_FALSE(Exists(CacheFile(1)));
}

TEST_F(ShotPause, LoadsBothFilesOnceAndDoesNotLookAtThemAgain) {
    AddShot(0, "7", "[Fields]\r\nx=1");
    WriteBytes(CacheFile(0), "[Shot7]\r\nx=1\r\n[Shot8]\r\ny=8");
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.SetPauseIO(true);
    WriteBytes(FieldsFile(0, "7"), "[Fields]\r\nx=foreign");
    WriteBytes(CacheFile(0), "[Shot7]\r\nx=foreign");
    EXPECT_EQ(Text(m_Experiment.GetShotData("x")), "1");
    m_Experiment.SetPauseIO(true);
    EXPECT_EQ(Text(m_Experiment.GetShotData("x")), "1");
    m_Experiment.SetPauseIO(false);
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\nx=1");
    EXPECT_EQ(ReadBytes(CacheFile(0)), "[Shot7]\r\nx=1\r\n[Shot8]\r\ny=8");
}

TEST_F(ShotPause, CreatesTheFilesWhereTheyAreMissing) {
    AddShot(0, "7");
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.SetPauseIO(true);
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "");
    EXPECT_EQ(ReadBytes(CacheFile(0)), "");
    m_Experiment.SetPauseIO(false);
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\n");
    EXPECT_EQ(ReadBytes(CacheFile(0)), "[Shot7]\r\n");
}

TEST_F(ShotPause, EndedTwiceWritesOnce) {
    AddShot(0, "7", "[Fields]\r\nx=1");
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetPauseIO(false);
    WriteBytes(FieldsFile(0, "7"), "[Fields]\r\nx=foreign");
    m_Experiment.SetPauseIO(false);
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\nx=foreign");
}

TEST_F(ShotPause, WithoutAShotMakesNoFile) {
    m_Experiment.SetPauseIO(true);
    EXPECT_TRUE(m_Experiment.m_PauseIO);
    m_Experiment.SetShotData("x", "1");
    EXPECT_TRUE(m_Experiment.GetShotData("x").IsEmpty());
    m_Experiment.SetPauseIO(false);
    EXPECT_TRUE(m_Experiment.m_ScalarsIni.m_FileName.IsEmpty());
    EXPECT_TRUE(m_Experiment.m_ScalarCacheIni.m_FileName.IsEmpty());
    EXPECT_EQ(Names(GroupFolder(0)), List());
}

// ---- The slot for one shot

TEST_F(TemporaryShot, IsLeftForTheOneBefore) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    m_Experiment.SetTempShot("8", 2);
    EXPECT_EQ(Selection(), "8 in 2");
    m_Experiment.ResetShot();
    EXPECT_EQ(Selection(), "7 in 1");
    ASSERT_TRUE(m_Experiment.SetShot("9", 3));
    m_Experiment.ResetShot();
    EXPECT_EQ(Selection(), "7 in 1");
}

TEST_F(TemporaryShot, HasOneSlot) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    m_Experiment.SetTempShot("8", 2);
    m_Experiment.SetTempShot("9", 3);
    m_Experiment.ResetShot();
    EXPECT_EQ(Selection(), "8 in 2");
}

TEST_F(TemporaryShot, ThatIsNowhereStillFillsTheSlot) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    m_Experiment.SetTempShot("8", -1);
    EXPECT_EQ(Selection(), "7 in 1");
    ASSERT_TRUE(m_Experiment.SetShot("9", 2));
    m_Experiment.ResetShot();
    EXPECT_EQ(Selection(), "7 in 1");
}

TEST_F(TemporaryShot, MayBeTheSlotItself) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 1));
    m_Experiment.SetTempShot("8", 2);
    m_Experiment.SetTempShot(m_Experiment.m_SavedShotName, m_Experiment.m_SavedGroup);
    EXPECT_EQ(Selection(), "7 in 1");
    m_Experiment.ResetShot();
    EXPECT_EQ(Selection(), "8 in 2");
}

TEST_F(TemporaryShot, WithoutAShotMakesNoFile) {
    m_Experiment.ResetShot();
    EXPECT_TRUE(m_Experiment.GetShotFolder().IsEmpty());
    m_Experiment.SetTempShot("8", -1);
    m_Experiment.ResetShot();
    EXPECT_EQ(Selection(), " in 0");
    EXPECT_TRUE(m_Experiment.m_ScalarsIni.m_FileName.IsEmpty());
    EXPECT_TRUE(m_Experiment.m_ScalarCacheIni.m_FileName.IsEmpty());
    EXPECT_EQ(Names(GroupFolder(0)), List());
}

// ---- Paths

TEST_F(ExperimentPaths, MarkersStandForTheExperimentAndTheFolderAboveIt) {
    EXPECT_EQ(Full(".\\Macros\\a"), "/d/e/Macros/a");
    EXPECT_EQ(Full("..\\x\\y"), "/d/x/y");
    EXPECT_EQ(Full("..\\e/Shots"), "/d/e/Shots");
    EXPECT_EQ(Full(".\\"), "/d/e");
    EXPECT_EQ(Full("..\\"), "/d");
}

TEST_F(ExperimentPaths, WithoutAMarkerStayAsTheyAre) {
    for (const char* path : {"/a\\b", "./x", "../x", ".", "..", ".x\\y", "a\\.\\b", ""}) {
        EXPECT_EQ(Full(path), path);
    }
}

TEST_F(ExperimentPaths, WithoutAMarkerGoThroughTheSharedNames) {
    const Translations table({"\\\\server\\share=/disk", ".\\=/never"});
    EXPECT_EQ(Full("\\\\SERVER\\share\\a\\b"), "/disk/a/b");
    EXPECT_EQ(Full(".\\a"), "/d/e/a");
}

TEST_F(ExperimentPaths, BelowTheExperimentAreStoredFromTheFolderAboveIt) {
    EXPECT_EQ(Relative("/d/e/Shots"), "..\\e/Shots");
    EXPECT_EQ(Relative("/d/x/y"), "..\\x/y");
    EXPECT_EQ(Relative("/D/x"), "..\\x");
    EXPECT_EQ(Relative("/d"), "..\\");
    EXPECT_EQ(Relative("/d/e"), "..\\e");
}

TEST_F(ExperimentPaths, WithABackslashBehindTheExperimentGetItsMarker) {
    EXPECT_EQ(Relative("/d/e\\Macros\\a"), ".\\Macros\\a");
    EXPECT_EQ(Relative("/D/E\\a/b"), ".\\a/b");
}

TEST_F(ExperimentPaths, PrefixNeedNotEndAtASeparator) { EXPECT_EQ(Relative("/dx/y"), "..\\/y"); }

TEST_F(ExperimentPaths, ElsewhereAreStoredByTheirSharedName) {
    EXPECT_EQ(Relative("/far/x"), "/far/x");
    EXPECT_EQ(Relative(""), "");
    const Translations table({"\\\\server\\share=/far", "never=/d"});
    EXPECT_EQ(Relative("/far/x/y"), "\\\\server\\share\\x\\y");
    EXPECT_EQ(Relative("/d/x"), "..\\x");
}

TEST_F(ExperimentPaths, StoredFormsReadBackToTheSamePlace) {
    for (const char* path : {"/d/e/Shots", "/d/x", "/d/e\\a", "/far/x"}) {
        const std::string back = Full(Relative(path).c_str());
        EXPECT_EQ(back, std::string(path) == "/d/e\\a" ? "/d/e/a" : path);
    }
}

TEST_F(ExperimentPaths, NumberOfAGroupIsThatOfItsWholePath) {
    EXPECT_EQ(Group("..\\e/Shots"), 0);
    EXPECT_EQ(Group(".\\shots"), 0);
    EXPECT_EQ(Group("/FAR/data2"), 2);
    EXPECT_EQ(Group("/d/Data1"), 1);
    EXPECT_EQ(Group("/D/DATA1"), 1);
    EXPECT_EQ(Group("/far/Data2/"), -1);
    EXPECT_EQ(Group("/far/Data2/x"), -1);
    EXPECT_EQ(Group("/far"), -1);
    EXPECT_EQ(Group(""), -1);
}

TEST_F(ExperimentPaths, PathOfAGroupGoesThroughTheSharedNamesTwice) {
    const Translations table({"/a=/b", "/b=/far"});
    EXPECT_EQ(Full("/a/Data2"), "/b/Data2");
    EXPECT_EQ(Group("/a/Data2"), 2);
}
