// The life of a shot: creation by request and cue, renaming, deletion, and names.
#include <gtest/gtest.h>
#include <limits.h>
#include <time.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/experiment/ExperimentFixture.h"

namespace {

using List = std::vector<std::string>;

// Runs a call when it is told something, as a host may.
class CallingSink : public RecordingSink {
public:
    explicit CallingSink(std::function<void()> call) : m_Call(std::move(call)) {}
    void Notify(NotifyType type, int value, const DString& text) override {
        RecordingSink::Notify(type, value, text);
        m_Call();
    }

private:
    std::function<void()> m_Call;
};

class ShotLifeTest : public ExperimentTest {
protected:
    int Create(const char* request, const char* comment = "", bool stamp = false) {
        DString text(request);
        return m_Experiment.CreateShot(text, comment, stamp);
    }

    void AddFile(int group, const std::string& shot, const std::string& name) {
        AddShot(group, shot);
        WriteBytes(ShotFolder(group, shot) + "/" + name, "");
    }

    // The file is `before` and a local time of just now.
    static void ExpectDatedNow(const std::string& file, const std::string& before) {
        const std::string text = ReadBytes(file);
        ASSERT_EQ(text.substr(0, before.size()), before);
        const std::string date = text.substr(before.size());
        struct tm fields = {};
        const char* end = strptime(date.c_str(), "%m/%d/%Y %H:%M:%S", &fields);
        ASSERT_EQ(end, date.c_str() + 19) << date;
        fields.tm_isdst = -1;
        EXPECT_NEAR(difftime(time(nullptr), mktime(&fields)), 30, 30) << date;
    }
};

class ShotCreation : public ShotLifeTest {
protected:
    void SetUp() override { OpenWithGroups(); }
};

class ShotCue : public ShotLifeTest {};
class ShotRename : public ShotCreation {};
class ShotDeletion : public ShotCreation {};

}  // namespace

// ---- Creation

TEST_F(ShotCreation, MakesFolderSelectsAndDates) {
    EXPECT_EQ(Create("S1"), 0);
    EXPECT_EQ(Selection(), "S1 in 0");
    EXPECT_EQ(Names(ShotFolder(0, "S1")), List({"Scalars.ini"}));
    ExpectDatedNow(FieldsFile(0, "S1"), "[Fields]\r\nDate=");
    ExpectDatedNow(CacheFile(0), "[ShotS1]\r\nDate=");
}

TEST_F(ShotCreation, StoresTheCommentAheadOfTheDate) {
    EXPECT_EQ(Create("S1", " 2 mm gap "), 0);
    ExpectDatedNow(FieldsFile(0, "S1"), "[Fields]\r\nComment= 2 mm gap \r\nDate=");
    ExpectDatedNow(CacheFile(0), "[ShotS1]\r\nComment= 2 mm gap \r\nDate=");
}

TEST_F(ShotCreation, RefusesTheNameAsComment) {
    RecordingSink sink;
    EXPECT_EQ(Create("S1", "s1"), 0);
    EXPECT_EQ(sink.Texts(NT_MsgBox), List({"Attempt to write shot name to comment, in base"}));
    ExpectDatedNow(FieldsFile(0, "S1"), "[Fields]\r\nDate=");
}

TEST_F(ShotCreation, WithoutAnExperimentLeavesTheRequest) {
    m_Experiment.SetExperimentFolder("");
    DString request("*S");
    EXPECT_EQ(m_Experiment.CreateShot(request, "", false), -1);
    EXPECT_EQ(Text(request), "*S");
}

TEST_F(ShotCreation, RemovesTheStarFromTheRequestAlone) {
    DString request("*S\\W");
    EXPECT_EQ(m_Experiment.CreateShot(request, "", false), 0);
    EXPECT_EQ(Text(request), "S\\W");
    EXPECT_EQ(Selection(), "S in 0");
}

TEST_F(ShotCreation, OfAShotThatExistsIsRefusedWithItsGroup) {
    AddShot(0, "A");
    AddShot(3, "B");
    ASSERT_TRUE(m_Experiment.SetShot("x", 1));
    EXPECT_EQ(Create("A"), -1);
    EXPECT_EQ(Create("B"), -4);
    EXPECT_EQ(Create("b", "comment", true), -4);
    EXPECT_EQ(Create("B\\"), -4);
    EXPECT_EQ(Selection(), "x in 1");
    EXPECT_EQ(Names(ShotFolder(3, "B")), List());
}

TEST_F(ShotCreation, TakesOverAShotThatLacksTheData) {
    AddFile(3, "S", "W.dmt");
    EXPECT_EQ(Create("S\\W"), 3);
    EXPECT_EQ(Selection(), "S in 3");
}

TEST_F(ShotCreation, RefusesAShotThatHoldsTheData) {
    AddFile(3, "S", "W.wvf");
    AddFile(3, "T", "aboveW.WVF");
    EXPECT_EQ(Create("S\\W"), -4);
    EXPECT_EQ(Create("T\\w"), -4);
    EXPECT_EQ(Create("T\\v"), 3);
}

TEST_F(ShotCreation, PartsTheRequestAtTheFirstBackslash) {
    AddFile(3, "S", "W.wvf");
    EXPECT_EQ(Create("S\\x\\W"), 3);
    EXPECT_EQ(Selection(), "S in 3");
}

TEST_F(ShotCreation, ByForceTakesOverWhateverTheShotHolds) {
    AddFile(3, "S", "W.wvf");
    EXPECT_EQ(Create("*S\\W"), 3);
    EXPECT_EQ(Create("*S\\V"), 3);
    EXPECT_EQ(Create("*S"), 3);
    EXPECT_EQ(Names(ShotFolder(3, "S")), List({"W.wvf"}));
}

TEST_F(ShotCreation, KeepsTheDateOfAShotTakenOver) {
    AddShot(1, "S", "[Fields]\r\nDate=old");
    EXPECT_EQ(Create("*S", "new"), 1);
    EXPECT_EQ(ReadBytes(FieldsFile(1, "S")), "[Fields]\r\nDate=old\r\nComment=new");
}

TEST_F(ShotCreation, StampsAShotTakenOverWhereTold) {
    AddShot(1, "S", "[Fields]\r\nDate=old");
    EXPECT_EQ(Create("*S", "", true), 1);
    ExpectDatedNow(FieldsFile(1, "S"), "[Fields]\r\nDate=");
}

TEST_F(ShotCreation, FindsByTheGroupPartButDoesNotCutIt) {
    AddFile(1, "7", "W.wvf");
    AddShot(0, "7");
    EXPECT_EQ(Create("Data1/7\\W"), -2);
    EXPECT_EQ(Create("*Data1/7\\W"), 1);
    EXPECT_EQ(Selection(), "Data1/7 in 1");
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), GroupFolder(1) + "/ShotData1/7");
}

TEST_F(ShotCreation, KeepsTheGroupPartOfANewShotInItsName) {
    EXPECT_EQ(Create("Data1/7"), 0);
    EXPECT_EQ(Selection(), "Data1/7 in 0");
    EXPECT_TRUE(Exists(GroupFolder(0) + "/ShotData1/7/Scalars.ini"));
}

TEST_F(ShotCreation, FindsByPattern) {
    AddShot(2, "A12");
    EXPECT_EQ(Create("a*"), -3);
    EXPECT_EQ(Names(GroupFolder(0)), List());
}

TEST_F(ShotCreation, OfAnEmptyNameMakesTheBareFolder) {
    EXPECT_EQ(Create(""), 0);
    EXPECT_EQ(Names(GroupFolder(0)), List({"Shot"}));
    EXPECT_EQ(Create("*"), 0);
    EXPECT_EQ(Create("\\W"), 0);
}

TEST_F(ShotCreation, SelectsAlsoWhereTheFolderCannotBeMade) {
    std::filesystem::remove(GroupFolder(0));
    WriteBytes(GroupFolder(0), "");
    EXPECT_EQ(Create("S", "note"), 0);
    EXPECT_EQ(Selection(), "S in 0");
    EXPECT_EQ(ReadBytes(GroupFolder(0)), "");
}

TEST_F(ShotCreation, EndsAPause) {
    AddShot(0, "7", "[Fields]\r\nx=1");
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetShotData("x", "2");
    EXPECT_EQ(Create("8"), 0);
    EXPECT_EQ(ReadBytes(FieldsFile(0, "7")), "[Fields]\r\nx=2");
    EXPECT_FALSE(m_Experiment.m_PauseIO);
}

TEST_F(ShotCreation, TakesTheObjectsOwnTexts) {
    ASSERT_TRUE(m_Experiment.SetShot("before", 0));
    EXPECT_EQ(
        m_Experiment.CreateShot(m_Experiment.m_SavedShotName = "S", m_Experiment.m_ShotName, false),
        0);
    ExpectDatedNow(FieldsFile(0, "S"), "[Fields]\r\nComment=before\r\nDate=");
}

TEST_F(ShotCreation, OutlivesASinkThatClosesTheExperiment) {
    CallingSink sink([this] { m_Experiment.SetExperimentFolder(""); });
    EXPECT_EQ(Create("S1", "S1"), 0);
    EXPECT_TRUE(m_Experiment.GetShotName().IsEmpty());
}

// ---- Cues

TEST_F(ShotCue, NumberSignTakesNumbers) {
    OpenWithGroups("#=..\\Data2\n*=.\\Shots\n");
    for (const char* name : {"123", "-5", "1e3", "0.5", "0x1F"})
        EXPECT_EQ(Create(name), 2) << name;
    for (const char* name : {"abc", "12x", "x12", "1 2"})
        EXPECT_EQ(Create(name), 0) << name;
}

TEST_F(ShotCue, NumberSignIsAPrefixToo) {
    OpenWithGroups("#=..\\Data2\n");
    EXPECT_EQ(Create("#a"), 2);
}

TEST_F(ShotCue, TextTakesNamesThatBeginWithItInAnyCase) {
    OpenWithGroups("xa=..\\Data1\nB1=..\\Data2\n");
    EXPECT_EQ(Create("Xa1"), 1);
    EXPECT_EQ(Create("XA"), 1);
    EXPECT_EQ(Create("b12"), 2);
    EXPECT_EQ(Create("x"), 0);
    EXPECT_EQ(Create("1xa"), 0);
}

TEST_F(ShotCue, FalseTakesNamesThatBeginWithACapitalA) {
    OpenWithGroups("false=..\\Data1\n*=..\\Data2\n");
    for (const char* name : {"A1", "Ab", "A"})
        EXPECT_EQ(Create(name), 1) << name;
    for (const char* name : {"a2", "B", "1", "-"})
        EXPECT_EQ(Create(name), 2) << name;
    EXPECT_EQ(Create("FALSEHOOD"), 1);
}

TEST_F(ShotCue, TrueTakesAllNamesThatDoNot) {
    OpenWithGroups("TRUE=..\\Data1\n*=..\\Data2\n");
    for (const char* name : {"a", "B", "z", "1", "-2", "_"})
        EXPECT_EQ(Create(name), 1) << name;
    EXPECT_EQ(Create("A1"), 2);
}

TEST_F(ShotCue, FirstOneThatMatchesWins) {
    OpenWithGroups("ab=..\\Data1\na=..\\Data2\n*=..\\Data3\nz=.\\Shots\n");
    EXPECT_EQ(Create("abc"), 1);
    EXPECT_EQ(Create("ac"), 2);
    EXPECT_EQ(Create("z"), 3);
}

TEST_F(ShotCue, EmptyOneTakesAll) {
    OpenWithGroups("=..\\Data1\n");
    EXPECT_EQ(Create("A"), 1);
    EXPECT_EQ(Create("7"), 1);
}

TEST_F(ShotCue, OfAnUnknownPathLeadsToGroupZero) {
    OpenWithGroups("x=..\\Nothing\n*=..\\Data1\n");
    EXPECT_EQ(Create("x1"), 0);
    EXPECT_EQ(Create("y1"), 1);
}

TEST_F(ShotCue, NoneThatMatchesLeadsToGroupZero) {
    OpenWithGroups("x=..\\Data1\n");
    EXPECT_EQ(Create("y"), 0);
    EXPECT_TRUE(Exists(ShotFolder(0, "y")));
}

// ---- Renaming

TEST_F(ShotRename, MovesFolderAndSection) {
    AddShot(1, "old", "[Fields]\r\nx=1");
    WriteBytes(CacheFile(1), "[ShotA]\r\ny=2\r\n[SHOTOLD]\r\nx=1\r\n[ShotZ]\r\n");
    ASSERT_TRUE(m_Experiment.SetShot("old", 1));
    EXPECT_TRUE(m_Experiment.RenameShot("new"));
    EXPECT_EQ(Selection(), "new in 1");
    EXPECT_EQ(Text(m_Experiment.m_ScalarsFile), FieldsFile(1, "new"));
    EXPECT_EQ(Names(GroupFolder(1)), List({"ScalarCache.ini", "Shotnew"}));
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[ShotA]\r\ny=2\r\n[Shotnew]\r\nx=1\r\n[ShotZ]\r\n");
    EXPECT_EQ(Text(m_Experiment.GetShotData("x")), "1");
}

TEST_F(ShotRename, ToATakenNameIsRefusedWithAMessage) {
    AddShot(1, "old");
    AddShot(1, "x");
    ASSERT_TRUE(m_Experiment.SetShot("old", 1));
    RecordingSink sink;
    for (const char* name : {"x", "X", "*"})
        EXPECT_FALSE(m_Experiment.RenameShot(name)) << name;
    EXPECT_EQ(sink.Texts(NT_Message), List({"Shot x already exists, rename aborted",
                                            "Shot X already exists, rename aborted",
                                            "Shot * already exists, rename aborted"}));
    EXPECT_EQ(Selection(), "old in 1");
    EXPECT_EQ(Names(GroupFolder(1)), List({"Shotold", "Shotx"}));
}

TEST_F(ShotRename, LooksForTheNameInTheCurrentGroupAlone) {
    AddShot(1, "old");
    AddShot(2, "new");
    WriteBytes(CacheFile(1), "[Shotold]\r\n");
    ASSERT_TRUE(m_Experiment.SetShot("old", 1));
    EXPECT_TRUE(m_Experiment.RenameShot("new"));
    EXPECT_TRUE(Exists(ShotFolder(1, "new")));
}

TEST_F(ShotRename, ChangeOfCaseAloneLeavesTheFolder) {
    AddShot(1, "abc", "[Fields]\r\nx=1");
    WriteBytes(CacheFile(1), "[Shotabc]\r\nx=1");
    ASSERT_TRUE(m_Experiment.SetShot("abc", 1));
    RecordingSink sink;
    EXPECT_TRUE(m_Experiment.RenameShot("ABC"));
    EXPECT_EQ(sink.m_Entries.size(), 0U);
    EXPECT_EQ(Selection(), "ABC in 1");
    EXPECT_EQ(Names(GroupFolder(1)), List({"ScalarCache.ini", "Shotabc"}));
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[ShotABC]\r\nx=1");
    EXPECT_EQ(Text(m_Experiment.GetShotData("x")), "1");
}

TEST_F(ShotRename, WithoutAFolderCountsAsSuccessAndKeepsTheSection) {
    WriteBytes(CacheFile(1), "[Shotold]\r\nx=1");
    ASSERT_TRUE(m_Experiment.SetShot("old", 1));
    RecordingSink sink;
    EXPECT_TRUE(m_Experiment.RenameShot("new"));
    EXPECT_EQ(sink.m_Entries.size(), 0U);
    EXPECT_EQ(Selection(), "new in 1");
    EXPECT_EQ(Names(GroupFolder(1)), List({"ScalarCache.ini"}));
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[Shotold]\r\nx=1");
}

TEST_F(ShotRename, DuringAPauseEndsItAndLosesWhatWasHeld) {
    AddShot(1, "old", "[Fields]\r\nx=1");
    WriteBytes(CacheFile(1), "[Shotold]\r\nx=1");
    ASSERT_TRUE(m_Experiment.SetShot("old", 1));
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetShotData("x", "2");
    EXPECT_TRUE(m_Experiment.RenameShot("new"));
    EXPECT_FALSE(m_Experiment.m_PauseIO);
    EXPECT_EQ(ReadBytes(FieldsFile(1, "new")), "[Fields]\r\nx=1");
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[Shotnew]\r\nx=1");
    EXPECT_EQ(Names(GroupFolder(1)), List({"ScalarCache.ini", "Shotnew"}));
}

TEST_F(ShotRename, WithoutAShotIsRefusedSilently) {
    RecordingSink sink;
    EXPECT_FALSE(m_Experiment.RenameShot("new"));
    ASSERT_TRUE(m_Experiment.SetShot("old", 1));
    m_Experiment.m_CurrentGroup = -1;
    EXPECT_FALSE(m_Experiment.RenameShot("new"));
    EXPECT_EQ(sink.m_Entries.size(), 0U);
}

TEST_F(ShotRename, OutlivesASinkThatSelectsAnotherShot) {
    AddShot(1, "old");
    AddShot(1, "x");
    ASSERT_TRUE(m_Experiment.SetShot("old", 1));
    CallingSink sink([this] { m_Experiment.SetShot("y", 2); });
    EXPECT_FALSE(m_Experiment.RenameShot("x"));
    EXPECT_EQ(Selection(), "y in 2");
}

// ---- Deletion

TEST_F(ShotDeletion, RemovesFolderAndSectionAndStaysSelected) {
    AddFile(1, "S", "W.wvf");
    MakeFolder(ShotFolder(1, "S") + "/Backup/Inner");
    WriteBytes(CacheFile(1), "[ShotA]\r\nx=1\r\n[ShotS]\r\nx=2\r\n[ShotSx]\r\nx=3");
    ASSERT_TRUE(m_Experiment.SetShot("S", 1));
    EXPECT_TRUE(m_Experiment.DeleteShot());
    EXPECT_EQ(Names(GroupFolder(1)), List({"ScalarCache.ini"}));
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[ShotA]\r\nx=1\r\n[ShotSx]\r\nx=3");
    EXPECT_EQ(Selection(), "S in 1");
    EXPECT_EQ(Text(m_Experiment.GetShotFolder()), ShotFolder(1, "S"));
    EXPECT_EQ(Text(m_Experiment.m_ScalarsFile), FieldsFile(1, "S"));
}

TEST_F(ShotDeletion, OfAShotWithoutAFolderStillRemovesItsSection) {
    WriteBytes(CacheFile(1), "[ShotS]\r\nx=2\r\n[ShotT]\r\n");
    ASSERT_TRUE(m_Experiment.SetShot("S", 1));
    EXPECT_TRUE(m_Experiment.DeleteShot());
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[ShotT]\r\n");
}

TEST_F(ShotDeletion, ReachesTheFileAlsoDuringAPauseUntilThatEnds) {
    AddShot(1, "S", "[Fields]\r\nx=2");
    WriteBytes(CacheFile(1), "[ShotS]\r\nx=2\r\n[ShotT]\r\n");
    ASSERT_TRUE(m_Experiment.SetShot("S", 1));
    m_Experiment.SetPauseIO(true);
    EXPECT_TRUE(m_Experiment.DeleteShot());
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[ShotT]\r\n");
    m_Experiment.SetPauseIO(false);
    EXPECT_EQ(ReadBytes(CacheFile(1)), "[ShotS]\r\nx=2\r\n[ShotT]\r\n");
}

TEST_F(ShotDeletion, WithoutAShotIsRefused) {
    EXPECT_FALSE(m_Experiment.DeleteShot());
    ASSERT_TRUE(m_Experiment.SetShot("S", 1));
    m_Experiment.m_CurrentGroup = -1;
    EXPECT_FALSE(m_Experiment.DeleteShot());
    EXPECT_EQ(Names(m_Above), List({"Data1", "Data2", "Data3", "e"}));
}

// ---- Names

TEST(ShotName, IsValidWithoutOneOfTheForbiddenCharacters) {
    const Experiment experiment;
    const std::string forbidden[] = {"!\"#$*:;=?@\\{}~", "!\"#$&*,/:;<>?{|}~"};
    for (const bool kind : {false, true}) {
        for (int c = 1; c < 256; ++c) {
            const char name[] = {'a', static_cast<char>(c), 'b', '\0'};
            const bool valid = forbidden[kind].find(static_cast<char>(c)) == std::string::npos;
            EXPECT_EQ(experiment.IsValidName(name, kind), valid) << c << " " << kind;
        }
        EXPECT_TRUE(experiment.IsValidName("", kind));
    }
}

TEST(ShotName, AtAnOffsetKeepsTheCountOfDigits) {
    const auto name = [](const char* shot, int offset) {
        Experiment experiment;
        experiment.m_ShotName = shot;
        return Text(experiment.GetOffsetShotName(offset));
    };
    EXPECT_EQ(name("A0099", 1), "A0100");
    EXPECT_EQ(name("A0099", -99), "A0000");
    EXPECT_EQ(name("A09", -10), "A-01");
    EXPECT_EQ(name("A9", 1), "A10");
    EXPECT_EQ(name("7", 3), "10");
    EXPECT_EQ(name("A1B22", 1), "A1B23");
}

TEST(ShotName, AtAnOffsetLosesWhatStandsBehindTheDigits) {
    Experiment experiment;
    experiment.m_ShotName = "a12b";
    EXPECT_EQ(Text(experiment.GetOffsetShotName(1)), "a013");
    EXPECT_EQ(Text(experiment.GetOffsetShotName(0)), "a12b");
}

TEST(ShotName, WithoutADigitBecomesABareNumberAtAnOffset) {
    Experiment experiment;
    experiment.m_ShotName = "abc";
    EXPECT_EQ(Text(experiment.GetOffsetShotName(1)), "001");
    EXPECT_EQ(Text(experiment.GetOffsetShotName(0)), "abc");
    experiment.m_ShotName = "abcdefghijklmnopqrstuvwxyz";
    EXPECT_EQ(Text(experiment.GetOffsetShotName(-2)), "-" + std::string(25, '0') + "2");
    experiment.m_ShotName = "";
    EXPECT_EQ(Text(experiment.GetOffsetShotName(5)), "");
}

TEST(ShotName, AtAnOffsetStaysWithinAnInt) {
    Experiment experiment;
    experiment.m_ShotName = "A2147483647";
    EXPECT_EQ(Text(experiment.GetOffsetShotName(1)), "A2147483647");
    EXPECT_EQ(Text(experiment.GetOffsetShotName(INT_MIN)), "A-0000000001");
    experiment.m_ShotName = "A2147483648";  // the number is cut to 32 bits
    EXPECT_EQ(Text(experiment.GetOffsetShotName(-1)), "A-2147483648");
    experiment.m_ShotName = "A4294967297";
    EXPECT_EQ(Text(experiment.GetOffsetShotName(1)), "A0000000002");
}
