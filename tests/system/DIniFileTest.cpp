// DIni and its file: loading, writing, holding, and comparing with what is on disk.
#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "core/CoreGlobal.h"
#include "support/Support.h"
#include "system/DIni.h"
#include "tests/system/SettingsTexts.h"

namespace {

// While set, the library's sleeps end at once: they are handed here, in microseconds.
std::function<void(useconds_t)> mOnSleep;

}  // namespace

// Takes the place of the system's call in this program, the library included.
extern "C" int usleep(useconds_t microseconds) {
    if (mOnSleep) {
        mOnSleep(microseconds);
        return 0;
    }
    const struct timespec pause = {microseconds / 1000000, microseconds % 1000000 * 1000L};
    return nanosleep(&pause, nullptr);
}

namespace {

// What the log says, each line without the time at its end.
Texts LogLines() {
    Texts lines;
    std::ifstream log("Log.txt");
    for (std::string line; std::getline(log, line);) {
        lines.push_back(line.substr(0, line.rfind(" by ")));
    }
    return lines;
}

// A file and documents on it. The log goes to the current directory, since no session has started.
class DIniFile : public InOwnFolder {
protected:
    ~DIniFile() override {
        mOnSleep = nullptr;
        Logging = false;
    }

    std::string OnDisk() const { return ReadBytes(m_Path); }
    void PutOnDisk(const std::string& text) const { WriteBytes(m_Path, text); }
    // A document of the section "A" with the line "x=1", and its file.
    DIni Attached() const { return AttachedTo(m_Path, "[A]\r\nx=1"); }
    DIni HoldingWithChange() const {
        DIni ini = Attached();
        ini.HoldWrite(true);
        ini.SetSection("A");
        ini.SetKeyValue("x", "2");
        return ini;
    }

    const std::string m_Path = Own("settings.ini");
    const DString m_Name = m_Path.c_str();
};

// Attaching to a file that is there and empty. The sleeps between the reads are not slept.
class DIniRetry : public DIniFile {
protected:
    // Attaches, with the file filled during the sleep of that number; 0 leaves it empty.
    bool AttachFilledDuring(size_t sleep) {
        PutOnDisk("");
        mOnSleep = [this, sleep](useconds_t microseconds) {
            m_Sleeps.push_back(microseconds);
            if (m_Sleeps.size() == sleep) PutOnDisk("[A]");
        };
        return m_Ini.SetFileName(m_Name);
    }

    DIni m_Ini;
    std::vector<useconds_t> m_Sleeps;
};

// Whether a document that was loaded from the first text calls the second one, in its file,
// changed.
class DIniChanged : public DIniFile {
protected:
    bool Changed(const std::string& loaded, const std::string& onDisk) const {
        const DIni ini = AttachedTo(m_Path, loaded);
        PutOnDisk(onDisk);
        return ini.Changed();
    }
    bool Changed(const std::string& onDisk) const {
        return Changed("[A]\r\nx=1\r\ny=2\r\n[B]\r\nz=3", onDisk);
    }
};

}  // namespace

// ---- Attaching

TEST_F(DIniFile, AttachingLoadsTheFile) {
    PutOnDisk("[A]\nx=1\n");
    DIni ini;
    EXPECT_TRUE(ini.SetFileName(m_Name));
    EXPECT_EQ(Text(ini.m_FileName), m_Path);
    EXPECT_EQ(Text(ini.m_Text), "[A]\nx=1\n");
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=1"});
    EXPECT_EQ(OnDisk(), "[A]\nx=1\n");
}

TEST_F(DIniFile, AttachingToAMissingFileCreatesItEmptyWithoutASleep) {
    int sleeps = 0;
    mOnSleep = [&sleeps](useconds_t) { ++sleeps; };
    DIni ini = DocumentOf("[Old]\nx=1");
    EXPECT_TRUE(ini.SetFileName(m_Name));
    EXPECT_EQ(OnDisk(), "");
    EXPECT_EQ(Text(ini.m_FileName), m_Path);
    EXPECT_EQ(ini.m_Sections.Count(), 0);
    EXPECT_EQ(ini.m_Lines.Count(), 0);
    EXPECT_TRUE(ini.m_Text.IsEmpty());
    EXPECT_EQ(sleeps, 0);
}

TEST_F(DIniFile, AttachingInAMissingFolderFailsAndDetaches) {
    DIni ini = HoldingWithChange();
    EXPECT_FALSE(ini.SetFileName((Own("missing") + "/settings.ini").c_str()));
    EXPECT_TRUE(ini.m_FileName.IsEmpty());
    EXPECT_TRUE(ini.m_Text.IsEmpty());
    EXPECT_EQ(ini.m_Sections.Count(), 0);
    EXPECT_EQ(ini.m_Section, -1);
    EXPECT_TRUE(ini.m_Hold);
    EXPECT_FALSE(Exists(Own("missing")));
}

TEST_F(DIniFile, AttachingToAFolderFails) {
    MakeFolder(m_Path);
    DIni ini;
    EXPECT_FALSE(ini.SetFileName(m_Name));
    EXPECT_TRUE(ini.m_FileName.IsEmpty());
}

TEST_F(DIniFile, EmptyNameDetachesAndKeepsTextAndHolding) {
    DIni ini = HoldingWithChange();
    EXPECT_FALSE(ini.SetFileName(""));
    EXPECT_TRUE(ini.m_FileName.IsEmpty());
    EXPECT_EQ(ini.m_Sections.Count(), 0);
    EXPECT_EQ(ini.m_Section, -1);
    EXPECT_EQ(Text(ini.m_Text), "[A]\r\nx=1");
    EXPECT_TRUE(ini.m_Hold);
}

TEST_F(DIniFile, AttachingTakesTheNameAsItStandsOnDisk) {
    WriteBytes(Own("Settings.INI"), "[A]");
    DIni ini;
    EXPECT_TRUE(ini.SetFileName(m_Name));
    EXPECT_EQ(Text(ini.m_FileName), Own("Settings.INI"));
    EXPECT_FALSE(Exists(m_Path));
}

TEST_F(DIniFile, AttachingAgainShowsWhatOthersWrote) {
    DIni ini = Attached();
    ini.SetSection("A");
    PutOnDisk("[A]\nx=7");
    EXPECT_EQ(Text(ini.GetKeyValue("x", "")), "1");
    EXPECT_TRUE(ini.SetFileName(ini.m_FileName));
    EXPECT_EQ(ini.m_Section, -1);
    EXPECT_EQ(Text(ini.GetSectionKeyValue("A", "x", "")), "7");
}

TEST_F(DIniFile, AttachingToAFileNamedByAnOwnLineWorks) {
    WriteBytes(Own("other.ini"), "[Other]");
    DIni ini = DocumentOf(("[A]\n" + Own("other.ini")).c_str());
    EXPECT_TRUE(ini.SetFileName(ini.m_Lines[0][0]));
    EXPECT_EQ(TextsOf(ini.m_Sections), Texts{"Other"});
}

TEST_F(DIniFile, HoldingEndsWithAnotherFileAndHeldChangesAreLost) {
    DIni ini = HoldingWithChange();
    WriteBytes(Own("other.ini"), "[B]");
    ini.SetFileName(Own("other.ini").c_str());
    EXPECT_FALSE(ini.m_Hold);
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
    EXPECT_EQ(ReadBytes(Own("other.ini")), "[B]");
}

TEST_F(DIniFile, HoldingGoesOnWithAFileOfFields) {
    for (const char* name : {"Scalars.ini", "ScalarCache.ini", "SCALARS.INI", "MyScalars.ini"}) {
        DIni ini = HoldingWithChange();
        WriteBytes(Own(name), "[B]");
        EXPECT_TRUE(ini.SetFileName(Own(name).c_str()));
        EXPECT_TRUE(ini.m_Hold) << name;
    }
    for (const char* name : {"Scalars.ini2", "Scalars.txt", "Cache.ini"}) {
        DIni ini = HoldingWithChange();
        WriteBytes(Own(name), "[B]");
        EXPECT_TRUE(ini.SetFileName(Own(name).c_str()));
        EXPECT_FALSE(ini.m_Hold) << name;
    }
}

TEST_F(DIniFile, HoldingGoesOnWithANewFileOfFieldsToo) {
    DIni ini = HoldingWithChange();
    EXPECT_TRUE(ini.SetFileName(Own("Scalars.ini").c_str()));
    EXPECT_TRUE(ini.m_Hold);
}

TEST_F(DIniFile, LoadingATextLeavesTheCurrentSectionNumber) {
    DIni ini = DocumentOf("[A]\n[B]");
    ini.SetSection("B");
    ini.m_Text = "[C]\n[D]\nx=1";
    ini.loadstring();
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"C", "D"}));
    EXPECT_EQ(ini.m_Section, 1);
    EXPECT_EQ(Text(ini.GetKeyValue("x", "")), "1");
}

// ---- Reading again

TEST_F(DIniFile, EmptyFileThatAnotherWriterFillsShortlyAfterIsRead) {
    PutOnDisk("");
    std::thread writer([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
        PutOnDisk("[A]\r\nx=1");
    });
    DIni ini;
    EXPECT_TRUE(ini.SetFileName(m_Name));
    writer.join();
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=1"});
}

TEST_F(DIniRetry, FileFilledInTheThirdPauseIsReadOnTheThirdRetry) {
    Logging = true;
    EXPECT_TRUE(AttachFilledDuring(3));
    EXPECT_EQ(m_Sleeps, std::vector<useconds_t>(3, 50000));
    EXPECT_EQ(TextsOf(m_Ini.m_Sections), Texts{"A"});
    EXPECT_EQ(Text(m_Ini.m_Text), "[A]");
    EXPECT_EQ(LogLines(), Texts{"3 tries needed to read from " + m_Path});
}

TEST_F(DIniRetry, SecondRetryIsTheFirstThatIsLogged) {
    Logging = true;
    EXPECT_TRUE(AttachFilledDuring(2));
    EXPECT_EQ(LogLines(), Texts{"2 tries needed to read from " + m_Path});
}

TEST_F(DIniRetry, SingleRetryIsNotLogged) {
    Logging = true;
    EXPECT_TRUE(AttachFilledDuring(1));
    EXPECT_EQ(m_Sleeps.size(), 1u);
    EXPECT_EQ(TextsOf(m_Ini.m_Sections), Texts{"A"});
    EXPECT_FALSE(Exists("Log.txt"));
}

TEST_F(DIniRetry, FileFilledInTheLastPauseIsRead) {
    EXPECT_TRUE(AttachFilledDuring(10));
    EXPECT_EQ(TextsOf(m_Ini.m_Sections), Texts{"A"});
}

TEST_F(DIniRetry, FileThatStaysEmptyIsAttachedAfterTenRetries) {
    Logging = true;
    EXPECT_TRUE(AttachFilledDuring(0));
    EXPECT_EQ(m_Sleeps, std::vector<useconds_t>(10, 50000));
    EXPECT_EQ(Text(m_Ini.m_FileName), m_Path);
    EXPECT_EQ(m_Ini.m_Sections.Count(), 0);
    EXPECT_EQ(LogLines(), Texts{"10 tries needed to read from " + m_Path});
}

TEST_F(DIniRetry, NothingIsLoggedWithoutVerboseLogging) {
    EXPECT_TRUE(AttachFilledDuring(0));
    EXPECT_FALSE(Exists("Log.txt"));
}

TEST_F(DIniRetry, LogNamesTheFileAsItStandsOnDisk) {
    Logging = true;
    PutOnDisk("");
    mOnSleep = [](useconds_t) {};
    m_Ini.SetFileName(Own("SETTINGS.INI").c_str());
    EXPECT_EQ(LogLines(), Texts{"10 tries needed to read from " + m_Path});
}

// ---- Writing

TEST_F(DIniFile, WrittenTextHasNoBlankLinesAndNoEndBehindTheLastLine) {
    const DIni source = DocumentOf("[A]\nx=1\ny=2\n[Empty]\n[B]\nz=3");
    DIni ini(source);
    EXPECT_TRUE(ini.WriteFile(m_Name, false));
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1\r\ny=2\r\n[Empty]\r\n[B]\r\nz=3");
}

TEST_F(DIniFile, EmptyLastSectionEndsInItsHeadingAndALineEnd) {
    DIni ini = DocumentOf("[A]\nx=1\n[Empty]");
    EXPECT_TRUE(ini.WriteFile(m_Name, false));
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1\r\n[Empty]\r\n");
}

TEST_F(DIniFile, DocumentWithoutSectionsIsAnEmptyFile) {
    DIni ini = Attached();
    ini.DeleteSection("A");
    EXPECT_EQ(OnDisk(), "");
}

TEST_F(DIniFile, SectionOfOneEmptyLineIsWrittenAsAnEmptyOne) {
    DIni ini = Attached();
    ini.SetFullSection("A", ListOf({""}));
    EXPECT_EQ(OnDisk(), "[A]\r\n");
    ini.SetFullSection("B", ListOf({"y=2"}));
    EXPECT_EQ(OnDisk(), "[A]\r\n[B]\r\ny=2");
}

TEST_F(DIniFile, EmptyLinesBesideOthersAreWritten) {
    DIni ini = Attached();
    ini.SetFullSection("A", ListOf({"", ""}));
    EXPECT_EQ(OnDisk(), "[A]\r\n\r\n");
    ini.SetFullSection("B", ListOf({"y=2", ""}));
    EXPECT_EQ(OnDisk(), "[A]\r\n\r\n\r\n[B]\r\ny=2\r\n");
}

TEST_F(DIniFile, WritingReplacesTheWholeFile) {
    DIni ini = Attached();
    PutOnDisk("[Other]\r\nof another process, and longer than what is written now");
    EXPECT_TRUE(ini.WriteFile("", false));
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
}

TEST_F(DIniFile, WritingWithoutAnyNameDoesNothingAndIsTrue) {
    DIni ini = DocumentOf("[A]");
    EXPECT_TRUE(ini.WriteFile("", false));
    EXPECT_TRUE(Names(m_Folder).empty());
}

TEST_F(DIniFile, WritingACopyKeepsTheName) {
    DIni ini = Attached();
    EXPECT_TRUE(ini.WriteFile(Own("copy.ini").c_str(), true));
    EXPECT_EQ(ReadBytes(Own("copy.ini")), "[A]\r\nx=1");
    EXPECT_EQ(Text(ini.m_FileName), m_Path);
}

TEST_F(DIniFile, WritingElsewhereAttachesThere) {
    DIni ini = Attached();
    EXPECT_TRUE(ini.WriteFile(Own("new.ini").c_str(), false));
    EXPECT_EQ(Text(ini.m_FileName), Own("new.ini"));
    ini.SetSection("A");
    ini.SetKeyValue("x", "2");
    EXPECT_EQ(ReadBytes(Own("new.ini")), "[A]\r\nx=2");
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
}

TEST_F(DIniFile, WritingUnderANameInOtherCaseReplacesTheFileThatIsThere) {
    DIni ini = Attached();
    ini.SetSection("A");
    ini.SetKeyValue("x", "2");
    EXPECT_TRUE(ini.WriteFile(Own("SETTINGS.INI").c_str(), true));
    EXPECT_EQ(Names(m_Folder), Texts{"settings.ini"});
    EXPECT_EQ(OnDisk(), "[A]\r\nx=2");
}

TEST_F(DIniFile, WritingLeavesTheTextToGoBackTo) {
    DIni ini = Attached();
    ini.SetSection("A");
    ini.SetKeyValue("x", "2");
    EXPECT_EQ(Text(ini.m_Text), "[A]\r\nx=1");
}

TEST_F(DIniFile, WriteFileWritesAlsoWhileHolding) {
    DIni ini = HoldingWithChange();
    EXPECT_TRUE(ini.WriteFile("", false));
    EXPECT_EQ(OnDisk(), "[A]\r\nx=2");
    EXPECT_TRUE(ini.m_Hold);
}

TEST_F(DIniFile, FileThatCannotBeOpenedForWritingIsLogged) {
    DIni ini = Attached();
    EXPECT_FALSE(ini.WriteFile((Own("missing") + "/settings.ini").c_str(), false));
    EXPECT_EQ(Text(ini.m_FileName), m_Path);
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=1"});
    EXPECT_EQ(LogLines(), Texts{"error opening for write"});
}

TEST_F(DIniFile, ChangeThatCannotBeWrittenStaysInMemory) {
    DIni ini = Attached();
    unlink(m_Path.c_str());
    MakeFolder(m_Path);
    ini.SetSection("A");
    ini.SetKeyValue("x", "2");
    EXPECT_EQ(Text(ini.GetKeyValue("x", "")), "2");
    EXPECT_EQ(Text(ini.m_FileName), m_Path);
    EXPECT_EQ(LogLines(), Texts{"error opening for write"});
}

TEST_F(DIniFile, FullDiskIsNotNoticed) {
    DIni ini = Attached();
    EXPECT_TRUE(ini.WriteFile("/dev/full", true));
    EXPECT_FALSE(Exists("Log.txt"));
}

TEST_F(DIniFile, DocumentThatNoTextCanHoldLeavesTheFileAlone) {
    DIni ini = Attached();
    const DString line('x', 1 << 20);
    DStringArray lines;
    for (int i = 0; i < 2048; ++i) {
        lines.Add(line);
    }
    ini.SetFullSection("B", lines);
    EXPECT_FALSE(ini.WriteFile("", false));
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
    EXPECT_EQ(ini.GetFullSection("B").Count(), 2048);
}

TEST_F(DIniFile, LastOfTwoWritersWins) {
    DIni first = Attached();
    DIni second(m_Name);
    first.SetFullSection("First", ListOf({"a=1"}));
    second.SetFullSection("Second", ListOf({"b=2"}));
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1\r\n[Second]\r\nb=2");
}

// ---- Comparing

TEST_F(DIniChanged, FalseRightAfterWriting) {
    DIni ini = Attached();
    ini.SetFullSection("B", ListOf({"y=2"}));
    EXPECT_FALSE(ini.Changed());
    ini.SetFullSection("Empty", DStringArray());
    EXPECT_FALSE(ini.Changed());
    EXPECT_FALSE(DIni(m_Name).Changed());
}

TEST_F(DIniChanged, FalseForAnotherOrder) {
    EXPECT_FALSE(Changed("[B]\r\nz=3\r\n[A]\r\ny=2\r\nx=1"));
}

TEST_F(DIniChanged, FalseForOtherCaseAndLineEndsAndHeadingTails) {
    EXPECT_FALSE(Changed("[a]\nX=1\nY=2\n[b]tail\nZ=3\n"));
}

TEST_F(DIniChanged, FalseForBlanksAroundALineOfTheFile) {
    EXPECT_FALSE(Changed("[A]\r\n  x=1 \r\ny=2\r\n[B]\r\nz=3   "));
    EXPECT_TRUE(Changed("[A]\r\n\tx=1\r\ny=2\r\n[B]\r\nz=3"));
}

TEST_F(DIniChanged, TrueForBlanksAroundALineOfTheDocument) {
    EXPECT_TRUE(Changed("[A]\r\n x=1", "[A]\r\n x=1"));
    EXPECT_TRUE(Changed("[A]\r\nx=1 ", "[A]\r\nx=1 "));
}

TEST_F(DIniChanged, TrueForABlankLine) {
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\n\r\ny=2\r\n[B]\r\nz=3"));
    EXPECT_TRUE(Changed("\r\n[A]\r\nx=1\r\ny=2\r\n[B]\r\nz=3"));
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\ny=2\r\n[B]\r\nz=3\r\n  "));
}

TEST_F(DIniChanged, TrueForALineBeforeTheFirstHeading) {
    EXPECT_TRUE(Changed("x=1\r\n[A]\r\nx=1\r\ny=2\r\n[B]\r\nz=3"));
}

TEST_F(DIniChanged, TrueForALineGainedOrLost) {
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\ny=2\r\nnew=1\r\n[B]\r\nz=3"));
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\n[B]\r\nz=3"));
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\ny=2\r\n[B]"));
}

TEST_F(DIniChanged, TrueForALineInAnotherSectionOrWithAnotherValue) {
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\n[B]\r\nz=3\r\ny=2"));
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\ny=3\r\n[B]\r\nz=3"));
}

TEST_F(DIniChanged, TrueForASectionGainedLostOrRenamed) {
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\ny=2\r\n[B]\r\nz=3\r\n[C]"));
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\ny=2"));
    EXPECT_TRUE(Changed("[A]\r\nx=1\r\ny=2\r\n[C]\r\nz=3"));
}

TEST_F(DIniChanged, CountsEqualLines) {
    EXPECT_FALSE(Changed("[A]\nx=1\nx=1", "[A]\nx=1\nx=1"));
    EXPECT_TRUE(Changed("[A]\nx=1\nx=1", "[A]\nx=1"));
    EXPECT_TRUE(Changed("[A]\nx=1", "[A]\nx=1\nx=1"));
}

TEST_F(DIniChanged, TrueForAHeadingMoreOftenThanInTheDocument) {
    EXPECT_TRUE(Changed("[A]\nx=1", "[A]\nx=1\n[A]\nx=1"));
    EXPECT_TRUE(Changed("[A]", "[A]\n[A]"));
}

TEST_F(DIniChanged, ComparesEachHeadingOfANameWithItsFirstSection) {
    EXPECT_FALSE(Changed("[A]\nx=1\n[A]\nx=1", "[A]\nx=1\n[A]\nx=1"));
    EXPECT_TRUE(Changed("[A]\nx=1\n[A]\nx=2", "[A]\nx=1\n[A]\nx=2"));
}

TEST_F(DIniChanged, EmptyOrMissingFileDiffersFromADocumentWithSections) {
    DIni ini = Attached();
    PutOnDisk("");
    EXPECT_TRUE(ini.Changed());
    unlink(m_Path.c_str());
    EXPECT_TRUE(ini.Changed());
    ini.m_Sections.Clear();
    ini.m_Lines.Clear();
    EXPECT_FALSE(ini.Changed());
    PutOnDisk("");
    EXPECT_FALSE(ini.Changed());
}

TEST_F(DIniChanged, DetachedDocumentDiffersIfItHasASection) {
    EXPECT_FALSE(DIni().Changed());
    EXPECT_TRUE(DocumentOf("[A]").Changed());
}

TEST_F(DIniChanged, ComparesTheDocumentAndNotTheTextLastLoaded) {
    DIni ini = HoldingWithChange();
    EXPECT_TRUE(ini.Changed());
    PutOnDisk("[A]\r\nx=2");
    EXPECT_FALSE(ini.Changed());
}

TEST_F(DIniChanged, AltersNothing) {
    DIni ini = HoldingWithChange();
    PutOnDisk("[B]\r\ny=1");
    EXPECT_TRUE(ini.Changed());
    EXPECT_EQ(TextsOf(ini.m_Sections), Texts{"A"});
    EXPECT_EQ(TextsOf(ini.m_Lines[0]), Texts{"x=2"});
    EXPECT_EQ(Text(ini.m_Text), "[A]\r\nx=1");
    EXPECT_EQ(ini.m_Section, 0);
    EXPECT_EQ(OnDisk(), "[B]\r\ny=1");
}

// ---- Going back, committing, holding

TEST_F(DIniFile, RestoringGoesBackInMemoryAndOnDisk) {
    DIni ini = Attached();
    ini.SetSection("A");
    ini.SetKeyValue("x", "2");
    ini.RestoreFile();
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=1"});
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
    EXPECT_EQ(ini.m_Section, -1);
}

TEST_F(DIniFile, RestoringWritesAlsoWhileHolding) {
    DIni ini = HoldingWithChange();
    PutOnDisk("[Other]");
    ini.RestoreFile();
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
    EXPECT_TRUE(ini.m_Hold);
}

TEST_F(DIniFile, CommittingWritesAndBecomesTheStateToGoBackTo) {
    DIni ini = HoldingWithChange();
    ini.CommitFile();
    EXPECT_EQ(OnDisk(), "[A]\r\nx=2");
    EXPECT_EQ(Text(ini.m_Text), "[A]\r\nx=2");
    EXPECT_TRUE(ini.m_Hold);
    ini.SetKeyValue("x", "3");
    ini.RestoreFile();
    EXPECT_EQ(OnDisk(), "[A]\r\nx=2");
}

TEST_F(DIniFile, HeldChangesReachTheFileWhenHoldingEnds) {
    DIni ini = HoldingWithChange();
    ini.SetKeyValue("y", "3");
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
    ini.HoldWrite(false);
    EXPECT_EQ(OnDisk(), "[A]\r\nx=2\r\ny=3");
    EXPECT_FALSE(ini.m_Hold);
}

TEST_F(DIniFile, HoldingWritesOnceWhenItEndsAndNeverWhenItBegins) {
    DIni ini = HoldingWithChange();
    ini.HoldWrite(false);
    PutOnDisk("untouched");
    ini.HoldWrite(false);
    ini.HoldWrite(true);
    ini.HoldWrite(true);
    EXPECT_EQ(OnDisk(), "untouched");
}

TEST_F(DIniFile, HeldChangesDieWithTheDocument) {
    { const DIni ini = HoldingWithChange(); }
    EXPECT_EQ(OnDisk(), "[A]\r\nx=1");
}
