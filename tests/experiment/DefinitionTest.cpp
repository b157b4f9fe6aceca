// Opening an experiment: its folders, its definition file, its groups and its rules for new shots.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/experiment/ExperimentFixture.h"

namespace {

using List = std::vector<std::string>;

class ExperimentDefinition : public ExperimentTest {
protected:
    List GroupPaths() const { return Texts(m_Experiment.m_GroupPaths); }

    // "pattern|label" of each line of Groups.
    List Lines() const {
        List lines;
        for (int i = 0; i < m_Experiment.m_Groups.Count(); ++i) {
            const GroupName& group = m_Experiment.m_Groups[i];
            lines.push_back(Text(group.m_Pattern) + "|" + Text(group.m_Label));
        }
        return lines;
    }

    // "cue to group" of each line of ShotCreation.
    List Cues() const {
        List cues;
        for (int i = 0; i < m_Experiment.m_Cues.Count(); ++i) {
            const GroupCue& cue = m_Experiment.m_Cues[i];
            cues.push_back(Text(cue.m_Cue) + " to " + std::to_string(cue.m_Group));
        }
        return cues;
    }
};

}  // namespace

// ---- Before anything is open

TEST(ExperimentObject, StartsWithNothingOpenAndGroupZero) {
    EXPECT_TRUE(Expt.GetExperimentName().IsEmpty());
    EXPECT_TRUE(Expt.GetExperimentFolder().IsEmpty());
    EXPECT_TRUE(Expt.GetExperimentPath().IsEmpty());
    EXPECT_TRUE(Expt.GetExperimentUNCFolder().IsEmpty());
    EXPECT_TRUE(Expt.GetShotName().IsEmpty());
    EXPECT_TRUE(Expt.GetShotFolder().IsEmpty());
    EXPECT_EQ(Expt.GetCurrentGroup(), 0);
    EXPECT_EQ(Expt.m_SavedGroup, 0);
    EXPECT_FALSE(Expt.m_PauseIO);
    EXPECT_EQ(Expt.m_GroupPaths.Count(), 0);
    EXPECT_EQ(Expt.m_Cues.Count(), 0);
    for (const DIni* document : {&Expt.m_ScalarsIni, &Expt.m_ScalarCacheIni}) {
        EXPECT_TRUE(document->m_FileName.IsEmpty());
        EXPECT_EQ(document->m_Section, -1);
    }
}

TEST(ExperimentObject, TablesGrowInBlocksOf256) {
    EXPECT_EQ(Expt.m_Groups.m_Grain, 256);
    EXPECT_EQ(Expt.m_Cues.m_Grain, 256);
    EXPECT_EQ(Expt.m_GroupPaths.m_Grain, 256);
}

TEST(ExperimentObject, NewCueIsEmptyAndLeadsToGroupZero) {
    DArray<GroupCue> cues(2);
    ASSERT_EQ(cues.Count(), 2);
    EXPECT_TRUE(cues[1].m_Cue.IsEmpty());
    EXPECT_EQ(cues[1].m_Group, 0);
}

TEST(ExperimentObject, NewGroupLineHasTwoEmptyTexts) {
    DArray<GroupName> lines(2);
    ASSERT_EQ(lines.Count(), 2);
    EXPECT_TRUE(lines[0].m_Pattern.IsEmpty());
    EXPECT_TRUE(lines[0].m_Label.IsEmpty());
    lines[0].m_Label = "x";
    lines.Remove(0, 1);
    EXPECT_TRUE(lines[0].m_Label.IsEmpty());
}

// ---- The experiment folder

TEST_F(ExperimentDefinition, MissingFolderIsCreatedWithItsFoldersAndAnEmptyDefinition) {
    const std::string folder = m_Above + "/not/there/yet";
    EXPECT_TRUE(m_Experiment.SetExperimentFolder(folder.c_str()));
    EXPECT_EQ(Names(folder), List({"Macros", "Query", "Shots", "yet.ini"}));
    EXPECT_EQ(ReadBytes(folder + "/yet.ini"), "");
    EXPECT_EQ(Names(folder + "/Shots"), List());
    EXPECT_EQ(GroupPaths(), List({folder + "/Shots"}));
    EXPECT_EQ(Cues(), List({"* to 0"}));
    EXPECT_EQ(Lines(), List());
}

TEST_F(ExperimentDefinition, FolderIsPartedIntoPathAndName) {
    Open();
    EXPECT_EQ(Text(m_Experiment.GetExperimentFolder()), m_Folder);
    EXPECT_EQ(Text(m_Experiment.GetExperimentPath()), m_Above);
    EXPECT_EQ(Text(m_Experiment.GetExperimentName()), "e");
    EXPECT_EQ(Text(m_Experiment.GetExperimentUNCFolder()), m_Folder);
}

TEST_F(ExperimentDefinition, UNCFolderIsTheSharedName) {
    const Translations table({"\\\\server\\share=" + m_Above});
    Open();
    EXPECT_EQ(Text(m_Experiment.GetExperimentUNCFolder()), "\\\\server\\share\\e");
    EXPECT_EQ(Text(m_Experiment.GetExperimentFolder()), m_Folder);
}

TEST_F(ExperimentDefinition, DescriptionIsAKeyOfGeneral) {
    Open("[Other]\nDescription=no\n[general]\nDESCRIPTION=Spark gap, 2 mm = wide\n");
    EXPECT_EQ(Text(m_Experiment.m_Description), "Spark gap, 2 mm = wide");
}

TEST_F(ExperimentDefinition, OfAllSectionsIsReadAsDocumented) {
    for (const char* name : {"/Data2", "/Data1", "/e/Simulated"})
        MakeFolder(m_Above + name);
    Open(
        "[General]\nDescription=Spark gap, 2 mm\n"
        "[Groups]\n..\\Data*;;measured\n.\\Simulated\n"
        "[ShotCreation]\n#=..\\Data1\nsim=.\\Simulated\n*=.\\Shots\n");
    EXPECT_EQ(Text(m_Experiment.m_Description), "Spark gap, 2 mm");
    EXPECT_EQ(Lines(), List({"..\\Data*|measured", ".\\Simulated|"}));
    EXPECT_EQ(GroupPaths(), List({m_Folder + "/Shots", m_Above + "/Data1", m_Above + "/Data2",
                                  m_Folder + "/Simulated"}));
    EXPECT_EQ(Cues(), List({"# to 1", "sim to 3", "* to 0"}));
}

TEST_F(ExperimentDefinition, FileIsOnlyRead) {
    const std::string definition =
        "lost\n[Groups]\n\n.\\A\n;note\n[ShotCreation]\n#=nowhere\n[Backup]\nPath=/b\n\n";
    Open(definition);
    EXPECT_EQ(ReadBytes(m_DefinitionFile), definition);
}

TEST_F(ExperimentDefinition, LoadLeavesGroupZeroCurrentWithoutAShot) {
    OpenWithGroups();
    AddShot(2, "7");
    ASSERT_TRUE(m_Experiment.SetShot("7", 2));
    ASSERT_TRUE(m_Experiment.SetExperimentFolder(m_Folder.c_str()));
    EXPECT_EQ(m_Experiment.GetCurrentGroup(), 0);
    EXPECT_EQ(Text(m_Experiment.GetCurPath()), GroupFolder(0));
    EXPECT_TRUE(m_Experiment.GetShotName().IsEmpty());
    EXPECT_TRUE(m_Experiment.GetShotFolder().IsEmpty());
    EXPECT_TRUE(m_Experiment.m_ScalarsFile.IsEmpty());
    EXPECT_TRUE(m_Experiment.m_ScalarCacheFile.IsEmpty());
}

TEST_F(ExperimentDefinition, LoadKeepsTheSlotOfSetTempShotAndTheDataObjects) {
    OpenWithGroups();
    ASSERT_TRUE(m_Experiment.SetShot("7", 2));
    m_Experiment.SetTempShot("8", 1);
    ASSERT_NE(m_Experiment.InitDataPtr("@W", DataWaveform), nullptr);
    ASSERT_TRUE(m_Experiment.SetExperimentFolder(m_Folder.c_str()));
    EXPECT_EQ(Text(m_Experiment.m_SavedShotName), "7");
    EXPECT_EQ(m_Experiment.m_SavedGroup, 2);
    EXPECT_NE(m_Experiment.GetDataPtr("@W", DataWaveform), nullptr);
}

TEST_F(ExperimentDefinition, LoadCutsAPauseOffWithoutAFlush) {
    OpenWithGroups();
    const std::string fields = "[Fields]\r\nx=old";
    AddShot(0, "7", fields);
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetShotData("x", "held");
    ASSERT_TRUE(m_Experiment.SetExperimentFolder(m_Folder.c_str()));
    EXPECT_FALSE(m_Experiment.m_PauseIO);
    EXPECT_TRUE(m_Experiment.m_ScalarsIni.m_Hold);
    EXPECT_TRUE(m_Experiment.m_ScalarCacheIni.m_Hold);
    ASSERT_TRUE(m_Experiment.SetShot("8", 0));
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), fields);
    EXPECT_EQ(ReadBytes(CacheFile(0)), "");
}

TEST_F(ExperimentDefinition, AnotherExperimentReplacesTheTables) {
    OpenWithGroups("#=..\\Data2\nx=..\\Data1\n");
    m_Experiment.m_Description = "old";
    const std::string other = m_Above + "/other";
    ASSERT_TRUE(m_Experiment.SetExperimentFolder(other.c_str()));
    EXPECT_EQ(GroupPaths(), List({other + "/Shots"}));
    EXPECT_EQ(Cues(), List({"* to 0"}));
    EXPECT_EQ(Lines(), List());
    EXPECT_TRUE(m_Experiment.m_Description.IsEmpty());
    EXPECT_EQ(Text(m_Experiment.GetExperimentName()), "other");
}

TEST_F(ExperimentDefinition, PathThatEndsInASlashKeepsTablesAndShot) {
    OpenWithGroups();
    AddShot(2, "7");
    ASSERT_TRUE(m_Experiment.SetShot("7", 2));
    m_Experiment.SetPauseIO(true);
    const std::string other = m_Above + "/other";
    EXPECT_TRUE(m_Experiment.SetExperimentFolder((other + "/").c_str()));
    EXPECT_EQ(Text(m_Experiment.GetExperimentFolder()), other + "/");
    EXPECT_EQ(Text(m_Experiment.GetExperimentUNCFolder()), other + "/");
    EXPECT_EQ(Text(m_Experiment.GetExperimentPath()), other);
    EXPECT_TRUE(m_Experiment.GetExperimentName().IsEmpty());
    EXPECT_EQ(m_Experiment.m_GroupPaths.Count(), 4);
    EXPECT_EQ(Selection(), "7 in 2");
    EXPECT_TRUE(m_Experiment.m_PauseIO);
    EXPECT_FALSE(Exists(other));
}

TEST_F(ExperimentDefinition, EmptyFolderClosesButKeepsTheTables) {
    OpenWithGroups();
    AddShot(2, "7");
    ASSERT_TRUE(m_Experiment.SetShot("7", 2));
    EXPECT_TRUE(m_Experiment.SetExperimentFolder(""));
    EXPECT_TRUE(m_Experiment.GetExperimentFolder().IsEmpty());
    EXPECT_TRUE(m_Experiment.GetExperimentPath().IsEmpty());
    EXPECT_TRUE(m_Experiment.GetExperimentName().IsEmpty());
    EXPECT_TRUE(m_Experiment.GetShotFolder().IsEmpty());
    EXPECT_EQ(Selection(), " in -1");
    EXPECT_EQ(m_Experiment.m_GroupPaths.Count(), 4);
    EXPECT_EQ(m_Experiment.m_Groups.Count(), 1);
    EXPECT_EQ(m_Experiment.m_Cues.Count(), 1);
    EXPECT_EQ(Text(m_Experiment.GetExperimentUNCFolder()), m_Folder);
    EXPECT_EQ(Text(m_Experiment.m_ScalarsFile), FieldsFile(2, "7"));
    EXPECT_EQ(Text(m_Experiment.m_ScalarCacheFile), CacheFile(2));
    EXPECT_FALSE(m_Experiment.SetShot("7", 2));
}

TEST_F(ExperimentDefinition, FolderMayBeTheObjectsOwnText) {
    Open("[Groups]\n.\\A\n");
    MakeFolder(m_Folder + "/A");
    EXPECT_TRUE(m_Experiment.SetExperimentFolder(m_Experiment.m_ExperimentFolder));
    EXPECT_EQ(GroupPaths(), Below(m_Folder, {"Shots", "A"}));
    EXPECT_TRUE(m_Experiment.SetExperimentFolder(m_Experiment.m_GroupPaths[1]));
    EXPECT_EQ(GroupPaths(), List({m_Folder + "/A/Shots"}));
}

TEST_F(ExperimentDefinition, FolderThatCannotBeMadeOpensAllTheSame) {
    WriteBytes(m_Above + "/file", "");
    const std::string folder = m_Above + "/file/e";
    EXPECT_TRUE(m_Experiment.SetExperimentFolder(folder.c_str()));
    EXPECT_EQ(Text(m_Experiment.GetExperimentName()), "e");
    EXPECT_EQ(GroupPaths(), List({folder + "/Shots"}));
    EXPECT_EQ(Cues(), List({"* to 0"}));
}

TEST_F(ExperimentDefinition, UnreadableFileOpensWithGroupZero) {
    MakeFolder(m_DefinitionFile);
    Open();
    EXPECT_EQ(GroupPaths(), List({GroupFolder(0)}));
    EXPECT_EQ(Cues(), List({"* to 0"}));
}

TEST_F(ExperimentDefinition, ProgressIsLoggedWhenLoggingIsVerbose) {
    const VerboseLog log;
    Open();
    EXPECT_EQ(log.Texts(), List({"Parsing out shot groups...", "Getting cues..."}));
}

TEST_F(ExperimentDefinition, NothingIsLoggedOtherwise) {
    { const VerboseLog log; }
    Open();
    EXPECT_FALSE(Exists(Scratch("Log.txt")));
}

TEST_F(ExperimentDefinition, HeldFieldsDieWithTheObject) {
    MakeFolder(ShotFolder(0, "7"));
    WriteBytes(FieldsFile(0, "7"), "[Fields]\r\nx=old");
    {
        Experiment session;
        session.SetExperimentFolder(m_Folder.c_str());
        session.SetShot("7", 0);
        session.SetPauseIO(true);
        session.SetShotData("x", "held");
    }
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\nx=old");
}

// ---- Groups

TEST_F(ExperimentDefinition, GroupLineHasPatternIgnoredFieldAndLabel) {
    Open("[Groups]\nData;x;y\nData\na;b;c;d;e\na;b;\nb;1;2=;3;4\n;note\n=x\n");
    EXPECT_EQ(Lines(), List({"Data|y", "Data|", "a|c", "a|", "b|2", "|", "|"}));
}

TEST_F(ExperimentDefinition, GroupsAreSortedWithinALineAndFollowTheLines) {
    for (const char* name : {"Data2", "data1", "Data10", "Apart"})
        MakeFolder(m_Above + "/" + name);
    MakeFolder(m_Folder + "/Inside");
    Open("[Groups]\r\n..\\Data*;;\r\n.\\inside\r\n..\\Apart\r\n");
    EXPECT_EQ(GroupPaths(), List({m_Folder + "/Shots", m_Above + "/data1", m_Above + "/Data10",
                                  m_Above + "/Data2", m_Folder + "/Inside", m_Above + "/Apart"}));
}

TEST_F(ExperimentDefinition, LineWithoutAMatchAddsNoGroup) {
    MakeFolder(m_Above + "/Data");
    Open("[Groups]\n.\\Nothing\n/no/such/parent/*\nbare\n..\\Data\n");
    EXPECT_EQ(m_Experiment.m_Groups.Count(), 4);
    EXPECT_EQ(GroupPaths(), List({GroupFolder(0), m_Above + "/Data"}));
}

TEST_F(ExperimentDefinition, GroupsAreFoldersAlone) {
    WriteBytes(m_Above + "/Data1", "");
    MakeFolder(m_Above + "/Data2/Inner1");
    Open("[Groups]\n..\\Data*\n..\\Data*\\Inner*\n..\\Data?\n..\\Data[3-9]\n");
    EXPECT_EQ(GroupPaths(), List({GroupFolder(0), m_Above + "/Data2", m_Above + "/Data2"}));
}

TEST_F(ExperimentDefinition, PatternStarDeliversTheDotEntries) {
    MakeFolder(m_Folder + "/Sub/A");
    Open("[Groups]\n.\\Sub\\*\n");
    EXPECT_EQ(GroupPaths(), Below(m_Folder, {"Shots", "Sub/.", "Sub/..", "Sub/A"}));
}

TEST_F(ExperimentDefinition, FullPatternGoesThroughTheSharedNames) {
    const std::string disk = m_Above + "/disk";
    MakeFolder(disk + "/x/Data");
    const Translations table({"\\\\server\\share=" + disk});
    Open("[Groups]\n\\\\server\\share\\x\\D*\n" + disk + "/*x\n");
    EXPECT_EQ(GroupPaths(), List({GroupFolder(0), disk + "/x/Data", disk + "/x"}));
}

TEST_F(ExperimentDefinition, MoreGroupsThanABlockHolds) {
    for (int i = 100; i < 400; ++i)
        MakeFolder(m_Above + "/Data" + std::to_string(i));
    Open("[Groups]\n..\\Data*\n");
    ASSERT_EQ(m_Experiment.m_GroupPaths.Count(), 301);
    EXPECT_EQ(Text(m_Experiment.m_GroupPaths[300]), m_Above + "/Data399");
}

// ---- Cues

TEST_F(ExperimentDefinition, CueIsWhatStandsBeforeTheFirstEqualsSign) {
    OpenWithGroups("#=..\\Data1\nfalse=.\\Shots\n=..\\Data3\nx=..\\Data2=y\n*=..\\data2\n");
    EXPECT_EQ(Cues(), List({"# to 1", "false to 0", " to 3", "x to -1", "* to 2"}));
}

TEST_F(ExperimentDefinition, CueWithoutEqualsSignIsItsOwnPath) {
    MakeFolder(m_Above + "/Data1");
    Open("[Groups]\n..\\Data1\n[ShotCreation]\n..\\Data1\nabc\n");
    EXPECT_EQ(Cues(), List({"..\\Data1 to 1", "abc to -1"}));
}

TEST_F(ExperimentDefinition, CueOfAPathThatIsNoGroupHasNone) {
    OpenWithGroups("a=..\\Data4\nb=..\\Data1/\nc=..\\Data1\\x\nd=\n");
    EXPECT_EQ(Cues(), List({"a to -1", "b to -1", "c to -1", "d to -1"}));
}

TEST_F(ExperimentDefinition, CueCanNameAGroupOfALaterSection) {
    MakeFolder(m_Above + "/Data1");
    Open("[ShotCreation]\n*=..\\Data1\n[Groups]\n..\\Data1\n");
    EXPECT_EQ(Cues(), List({"* to 1"}));
}

TEST_F(ExperimentDefinition, EmptySectionOfCuesCountsAsNone) {
    Open("[ShotCreation]\n\n  \n[General]\n");
    EXPECT_EQ(Cues(), List({"* to 0"}));
}
