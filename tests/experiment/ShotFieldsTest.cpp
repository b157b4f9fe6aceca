// The fields of the current shot: its own file, and its section in the file of the group.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/ProcessMemory.h"
#include "tests/experiment/ExperimentFixture.h"

namespace {

using List = std::vector<std::string>;

// Shot 7 of group 0 is current. Its files are missing until a test writes them.
class ShotFields : public ExperimentTest {
protected:
    void SetUp() override {
        OpenWithGroups();
        AddShot(0, "7");
        ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    }

    void WriteFields(const std::string& text) { WriteBytes(FieldsFile(0, "7"), text); }
    void WriteCache(const std::string& text) { WriteBytes(CacheFile(0), text); }
    std::string Fields() const { return ReadBytes(FieldsFile(0, "7")); }
    std::string Cache() const { return ReadBytes(CacheFile(0)); }
    std::string Field(const char* key) { return Text(m_Experiment.GetShotData(key)); }
};

class CommentField : public ShotFields {};
class ShotCacheRebuild : public ShotFields {};

}  // namespace

// ---- Writing

TEST_F(ShotFields, FirstOneMakesBothFiles) {
    m_Experiment.SetShotData("x", "1.5");
    EXPECT_EQ(Fields(), "[Fields]\r\nx=1.5");
    EXPECT_EQ(Cache(), "[Shot7]\r\nx=1.5");
}

TEST_F(ShotFields, ReplaceTheirLineAndLeaveTheOthers) {
    WriteFields("[Fields]\r\nx=1\r\n;note\r\ny=2\r\n[Other]\r\nx=0");
    WriteCache("[Shot6]\r\nx=6\r\n[Shot7]\r\nx=1\r\ny=2\r\n[Shot8]\r\nx=8");
    m_Experiment.SetShotData("X", "3");
    EXPECT_EQ(Fields(), "[Fields]\r\nX=3\r\n;note\r\ny=2\r\n[Other]\r\nx=0");
    EXPECT_EQ(Cache(), "[Shot6]\r\nx=6\r\n[Shot7]\r\nX=3\r\ny=2\r\n[Shot8]\r\nx=8");
}

// The document's lines, the text as it was read and the text as it is written.
TEST_F(ShotFields, WritingOneTakesMemoryInProportionToTheFileOfTheGroup) {
    const auto peakOf = [this](int shots, size_t& fileSize) {
        std::string cache;
        for (int i = 0; i < shots; ++i) {
            cache += "[Shot" + std::to_string(i) + "]\r\n";
            for (int field = 0; field < 20; ++field)
                cache += "field" + std::to_string(field) + "=1.234567\r\n";
        }
        fileSize = cache.size();
        WriteCache(cache);
        return static_cast<size_t>(PeakBytesOf([this] { m_Experiment.SetShotData("x", "1"); }));
    };
    size_t smallFile = 0;
    size_t largeFile = 0;
    const size_t smallPeak = peakOf(5000, smallFile);
    const size_t largePeak = peakOf(20000, largeFile);
#ifdef __SANITIZE_ADDRESS__
    constexpr size_t MostTimes = 28;  // its redzones are larger than the lines
#else
    constexpr size_t MostTimes = 16;  // most of it the room of lists for 256 lines each
#endif
    EXPECT_LT(smallPeak, MostTimes * smallFile);
    EXPECT_LT(largePeak, MostTimes * largeFile);
}

TEST_F(ShotFields, AddASectionBehindThoseOfOtherShots) {
    WriteCache("[Shot8]\r\nx=8");
    m_Experiment.SetShotData("x", "7");
    EXPECT_EQ(Cache(), "[Shot8]\r\nx=8\r\n[Shot7]\r\nx=7");
}

TEST_F(ShotFields, AreCopiedToTheGroupOneByOne) {
    WriteFields("[Fields]\r\nx=1");
    m_Experiment.SetShotData("y", "2");
    EXPECT_EQ(Fields(), "[Fields]\r\nx=1\r\ny=2");
    EXPECT_EQ(Cache(), "[Shot7]\r\ny=2");
}

TEST_F(ShotFields, KeepBlanksAndEqualsSignsOfTheValue) {
    m_Experiment.SetShotData("x", "  a=b  ");
    EXPECT_EQ(Fields(), "[Fields]\r\nx=  a=b  ");
    EXPECT_EQ(Cache(), "[Shot7]\r\nx=  a=b  ");
    EXPECT_EQ(Field("x"), "  a=b  ");
}

TEST_F(ShotFields, WithoutAValueGoFromBothFiles) {
    WriteFields("[Fields]\r\nx=1\r\ny=2");
    WriteCache("[Shot7]\r\nx=1\r\n[Shot8]\r\nx=1");
    m_Experiment.SetShotData("X", "");
    EXPECT_EQ(Fields(), "[Fields]\r\ny=2");
    EXPECT_EQ(Cache(), "[Shot7]\r\n[Shot8]\r\nx=1");
    EXPECT_EQ(Field("x"), "");
}

TEST_F(ShotFields, DeletionOfAnUnknownOneWritesNothing) {
    WriteFields("[Fields]\nx=1\n");
    WriteCache("[Shot7]\nx=1\n");
    m_Experiment.SetShotData("y", "");
    EXPECT_EQ(Fields(), "[Fields]\nx=1\n");
    EXPECT_EQ(Cache(), "[Shot7]\nx=1\n");
}

TEST_F(ShotFields, NeedAKey) {
    m_Experiment.SetShotData("", "1");
    EXPECT_EQ(Names(ShotFolder(0, "7")), List());
    EXPECT_FALSE(Exists(CacheFile(0)));
}

TEST_F(ShotFields, KeepWhatOtherProcessesWroteSince) {
    m_Experiment.SetShotData("x", "1");
    WriteFields("[Fields]\r\nx=1\r\nforeign=2");
    WriteCache("[Shot7]\r\nx=1\r\n[Shot9]\r\nforeign=2");
    m_Experiment.SetShotData("x", "3");
    EXPECT_EQ(Fields(), "[Fields]\r\nx=3\r\nforeign=2");
    EXPECT_EQ(Cache(), "[Shot7]\r\nx=3\r\n[Shot9]\r\nforeign=2");
}

TEST_F(ShotFields, OfAShotWithoutAFolderReachTheGroupAlone) {
    ASSERT_TRUE(m_Experiment.SetShot("8", 0));
    m_Experiment.SetShotData("x", "1");
    EXPECT_EQ(Cache(), "[Shot8]\r\nx=1");
    EXPECT_EQ(Names(GroupFolder(0)), List({"ScalarCache.ini", "Shot7"}));
    EXPECT_EQ(Field("x"), "");
}

TEST_F(ShotFields, WithoutAShotDoNothing) {
    ASSERT_TRUE(m_Experiment.SetExperimentFolder(m_Folder.c_str()));
    m_Experiment.SetShotData("x", "1");
    EXPECT_EQ(Field("x"), "");
    EXPECT_EQ(Field("Shot"), "");
    EXPECT_EQ(Names(GroupFolder(0)), List({"Shot7"}));
}

TEST_F(ShotFields, TakeTheDocumentsOwnTexts) {
    WriteFields("[Fields]\r\nx=1\r\nFields=2");
    ASSERT_EQ(Field("x"), "1");
    EXPECT_EQ(Text(m_Experiment.GetShotData(m_Experiment.m_ScalarsIni.m_Sections[0])), "2");
    DIni& document = m_Experiment.m_ScalarsIni;
    m_Experiment.SetShotData(document.m_Sections[0], document.m_Lines[0][0]);
    EXPECT_EQ(Fields(), "[Fields]\r\nx=1\r\nFields=x=1");
}

TEST_F(ShotFields, HeldByAPauseGoWithoutAValueToo) {
    WriteFields("[Fields]\r\nx=1\r\ny=2");
    WriteCache("[Shot7]\r\nx=1\r\ny=2");
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetShotData("x", "");
    m_Experiment.SetShotData("z", "3");
    EXPECT_EQ(Fields(), "[Fields]\r\nx=1\r\ny=2");
    m_Experiment.SetPauseIO(false);
    EXPECT_EQ(Fields(), "[Fields]\r\ny=2\r\nz=3");
    EXPECT_EQ(Cache(), "[Shot7]\r\ny=2\r\nz=3");
}

// ---- Reading

TEST_F(ShotFields, AreReadFromTheShotsOwnFileAlone) {
    WriteFields("[Fields]\r\nx=own\r\n[Shot7]\r\nz=1");
    WriteCache("[Shot7]\r\nx=copy\r\ny=copy\r\n[Fields]\r\nz=1");
    EXPECT_EQ(Field("X"), "own");
    EXPECT_EQ(Field("y"), "");
    EXPECT_EQ(Field("z"), "");
}

TEST_F(ShotFields, ShowWhatAnotherProcessWrote) {
    WriteFields("[Fields]\r\nx=1");
    EXPECT_EQ(Field("x"), "1");
    WriteFields("[Fields]\nx=2\n");
    EXPECT_EQ(Field("x"), "2");
}

TEST_F(ShotFields, ReadingLeavesAFreshFileEmptyAndMakesNoCopy) {
    EXPECT_EQ(Field("x"), "");
    EXPECT_EQ(Fields(), "");
    EXPECT_FALSE(Exists(CacheFile(0)));
}

TEST_F(ShotFields, ShotIsTheNameWithoutAFile) {
    for (const char* key : {"Shot", "shot", "SHOT"})
        EXPECT_EQ(Field(key), "7");
    EXPECT_EQ(Names(ShotFolder(0, "7")), List());
    WriteFields("[Fields]\r\nShot=8");
    EXPECT_EQ(Field("Shot"), "7");
}

TEST_F(ShotFields, FallBackBehindADoubleColon) {
    WriteFields("[Fields]\r\na=1\r\nb=2\r\nempty=\r\nb::c=3\r\nShot=4");
    EXPECT_EQ(Field("a::b"), "1");
    EXPECT_EQ(Field("none::b"), "2");
    EXPECT_EQ(Field("empty::b"), "2");
    EXPECT_EQ(Field("none::nil"), "");
    EXPECT_EQ(Field("::b"), "2");
    EXPECT_EQ(Field("a::"), "1");
    EXPECT_EQ(Field("none::b::c"), "3");
    EXPECT_EQ(Field("none::Shot"), "4");
}

// ---- The comment

TEST_F(CommentField, ThatIsTheShotsNameIsRefused) {
    ASSERT_TRUE(m_Experiment.SetShot("Abc", 0));
    RecordingSink sink;
    m_Experiment.SetShotData("Comment", "aBC");
    m_Experiment.SetShotData("COMMENT", "Abc");
    const std::string text = "Attempt to write shot name to comment, in base";
    EXPECT_EQ(sink.Texts(NT_MsgBox), List({text, text}));
    EXPECT_FALSE(Exists(CacheFile(0)));
}

TEST_F(CommentField, WithMoreThanTheNameIsKept) {
    RecordingSink sink;
    m_Experiment.SetShotData("Comment", "7 ");
    m_Experiment.SetShotData("Title", "7");
    EXPECT_EQ(sink.m_Entries.size(), 0U);
    EXPECT_EQ(Fields(), "[Fields]\r\nComment=7 \r\nTitle=7");
}

// ---- The copy of all fields

TEST_F(ShotCacheRebuild, ReplacesTheSectionByTheFields) {
    WriteFields("[Fields]\r\nx=1\r\n;note\r\ny= 2 \r\n[Other]\r\nz=3");
    WriteCache("[SHOT7]\r\ngone=1\r\n[Shot8]\r\nx=8");
    m_Experiment.SetShotCacheData();
    EXPECT_EQ(Cache(), "[SHOT7]\r\nx=1\r\n;note\r\ny= 2 \r\n[Shot8]\r\nx=8");
    EXPECT_EQ(Fields(), "[Fields]\r\nx=1\r\n;note\r\ny= 2 \r\n[Other]\r\nz=3");
}

TEST_F(ShotCacheRebuild, AddsAMissingSection) {
    WriteFields("[Fields]\r\nx=1");
    WriteCache("[Shot8]\r\nx=8");
    m_Experiment.SetShotCacheData();
    EXPECT_EQ(Cache(), "[Shot8]\r\nx=8\r\n[Shot7]\r\nx=1");
}

TEST_F(ShotCacheRebuild, OfAPausedShotDropsWhatWasHeldAndNoSectionIsCurrent) {
    WriteFields("[Fields]\r\nx=1");
    WriteCache("[Shot7]\r\nold=1");
    m_Experiment.SetPauseIO(true);
    m_Experiment.SetShotData("x", "held");
    m_Experiment.SetShotCacheData();
    EXPECT_EQ(Field("x"), "");
    EXPECT_EQ(Cache(), "[Shot7]\r\nold=1");
    m_Experiment.SetPauseIO(false);
    EXPECT_EQ(Fields(), "[Fields]\r\nx=1");
    EXPECT_EQ(Cache(), "[Shot7]\r\nx=1");
}

TEST_F(ShotCacheRebuild, WithoutAShotMakesNoFile) {
    ASSERT_TRUE(m_Experiment.SetExperimentFolder(m_Folder.c_str()));
    m_Experiment.SetShotCacheData();
    EXPECT_TRUE(m_Experiment.m_ScalarsIni.m_FileName.IsEmpty());
    EXPECT_TRUE(m_Experiment.m_ScalarCacheIni.m_FileName.IsEmpty());
    EXPECT_EQ(Names(GroupFolder(0)), List({"Shot7"}));
}
