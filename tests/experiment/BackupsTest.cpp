// Where backups of shots go, what they hold, and stamping a configuration with the last run.
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "system/DSystem.h"
#include "tests/experiment/ExperimentFixture.h"

namespace fs = std::filesystem;

namespace {

using List = std::vector<std::string>;

// An experiment e with the groups 0 to 3; backups go to the folder "b" of the test's own.
class Backup : public ExperimentTest {
protected:
    const std::string m_Root = Scratch(TestName() + "/b");

    void SetUp() override { OpenWithGroups(); }

    std::string Definition() const { return ReadBytes(m_DefinitionFile); }

    // What the definition file says behind "Path=".
    std::string Stored() const {
        const std::string key = "\r\n[Backup]\r\nPath=";
        const std::string text = Definition();
        const size_t start = text.find(key);
        return start == std::string::npos ? "(none)" : text.substr(start + key.size());
    }

    std::string StoredFor(const std::string& path) {
        m_Experiment.SetBackupPath(path.c_str());
        return Stored();
    }

    // Puts a setting into the definition file by hand.
    void WriteSetting(const std::string& lines) {
        WriteBytes(m_DefinitionFile, "[General]\r\n[Backup]\r\n" + lines);
    }

    std::string BackupOf(const std::string& folder) {
        return Text(m_Experiment.GetBackupShotFolder(folder.c_str()));
    }

    void SelectShot(int group, const std::string& shot) {
        AddShot(group, shot, "[Fields]\nUbank=1\n");
        ASSERT_TRUE(m_Experiment.SetShot(shot.c_str(), group));
    }
};

class BackupPath : public Backup {};
class BackupFolder : public Backup {};
class ShotBackup : public Backup {};

// Counts how often files of a folder are written and closed. The openings between keep the system
// from taking two such events for one.
class ClosedFiles {
public:
    explicit ClosedFiles(const std::string& folder) : m_Events(inotify_init1(IN_NONBLOCK)) {
        EXPECT_GE(inotify_add_watch(m_Events, folder.c_str(), IN_OPEN | IN_CLOSE_WRITE), 0);
    }
    ~ClosedFiles() { close(m_Events); }
    ClosedFiles(const ClosedFiles&) = delete;
    ClosedFiles& operator=(const ClosedFiles&) = delete;

    int Count() const {
        alignas(struct inotify_event) char buffer[4096];
        const ssize_t bytes = read(m_Events, buffer, sizeof buffer);
        int count = 0;
        for (ssize_t at = 0; at < bytes;) {
            const auto* event = reinterpret_cast<const struct inotify_event*>(buffer + at);
            if (event->mask & IN_CLOSE_WRITE) ++count;
            at += static_cast<ssize_t>(sizeof *event + event->len);
        }
        return count;
    }

private:
    const int m_Events;
};

class LastRun : public ExperimentTest {
protected:
    const std::string m_File = MakeFolder(Scratch(TestName() + "/run")) + "/Run.ini";

    void SetUp() override { OpenWithGroups(); }

    // The file after a stamp, the time of which is left out.
    std::string Stamped(const std::string& before) {
        WriteBytes(m_File, before);
        DIni ini(m_File.c_str());
        m_Experiment.StampConfigFile(ini);
        return WithoutTime(ReadBytes(m_File));
    }

    static std::string WithoutTime(std::string text) {
        const size_t start = text.find("Started=") + 8;
        return text.erase(start, text.find("\r\n", start) - start);
    }
};

}  // namespace

// ---- The setting

TEST_F(BackupPath, IsStoredAsAStoredPath) {
    EXPECT_EQ(StoredFor(m_Above + "/old/copies"), "..\\old/copies");
    EXPECT_EQ(StoredFor("/b"), "/b");
    const Translations table({"\\\\server\\share=/b"});
    EXPECT_EQ(StoredFor("/b/x"), "\\\\server\\share\\x");
}

TEST_F(BackupPath, IsCutBackAboveTheExperimentsOwnName) {
    EXPECT_EQ(StoredFor("/b/e"), "/b");
    EXPECT_EQ(StoredFor("/b/E"), "/b");
    EXPECT_EQ(StoredFor("/b/ee"), "/b/ee");
    EXPECT_EQ(StoredFor("/b/e/"), "/b/e/");
    EXPECT_EQ(StoredFor("/b/e/e"), "/b/e");
}

TEST_F(BackupPath, InsideTheShotIsStoredAsItIsWritten) {
    EXPECT_EQ(StoredFor("![shot]"), "![shot]");
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), "![shot]");
    EXPECT_EQ(StoredFor("![Shot]"), "![Shot]");
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), "![Shot]");
}

TEST_F(BackupPath, LeavesTheRestOfTheDefinition) {
    WriteBytes(m_DefinitionFile, "[Groups]\n..\\Data*\n[backup]\nother=1\npath=/old\n[X]\ny\n");
    m_Experiment.SetBackupPath("/new");
    EXPECT_EQ(Definition(),
              "[Groups]\r\n..\\Data*\r\n[backup]\r\nother=1\r\nPath=/new\r\n[X]\r\ny");
}

TEST_F(BackupPath, IsReadBackAndMade) {
    WriteSetting("Path=..\\deep/er\r\n");
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), m_Above + "/deep/er");
    EXPECT_TRUE(fs::is_directory(m_Above + "/deep/er"));
    WriteSetting("Path=.\\copies\r\n");
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), m_Folder + "/copies");
    EXPECT_TRUE(fs::is_directory(m_Folder + "/copies"));
}

TEST_F(BackupPath, OfOtherCaseOnDiskIsKeptAndNotMadeBesideIt) {
    MakeFolder(m_Above + "/Copies");
    WriteSetting("Path=..\\COPIES\r\n");
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), m_Above + "/COPIES");
    EXPECT_FALSE(Exists(m_Above + "/COPIES"));
}

TEST_F(BackupPath, IsANameBelowNoFolderWhereNoneIsSet) {
    const std::string before = Definition();
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), "\\Backup");
    EXPECT_EQ(Definition(), before);
    WriteSetting("Path=\r\n");
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), "\\Backup");
    EXPECT_FALSE(Exists(m_Above + "/Backup"));
    EXPECT_FALSE(Exists("\\Backup"));
}

TEST_F(BackupPath, DefaultGetsItsPlaceByTheTableOfNames) {
    const Translations table({"\\Backup=" + m_Root});
    EXPECT_EQ(Text(m_Experiment.GetBackupPath()), m_Root);
    EXPECT_TRUE(fs::is_directory(m_Root));
}

TEST_F(BackupPath, WithoutAnExperimentMakesNoFile) {
    Experiment none;
    none.SetBackupPath("/b");
    EXPECT_EQ(Text(none.GetBackupPath()), "\\Backup");
    EXPECT_FALSE(Exists(Scratch(".ini")));
}

// ---- The folder of a backup

TEST_F(BackupFolder, MirrorsTheShotsPlaceBelowTheRoot) {
    WriteSetting("Path=" + m_Root + "\r\n");
    SelectShot(0, "7");
    EXPECT_EQ(BackupOf(""), m_Root + "/e/Shots/Shot7");
    EXPECT_EQ(BackupOf(ShotFolder(2, "9")), m_Root + "/Data2/Shot9");
    EXPECT_EQ(Names(m_Root), List());
}

TEST_F(BackupFolder, PrefixNeedNotEndAtASeparator) {
    WriteSetting("Path=" + m_Root + "\r\n");
    EXPECT_EQ(BackupOf(m_Above + "x/Shot9"), m_Root + "x/Shot9");
}

TEST_F(BackupFolder, EveryOccurrenceOfThePrefixIsReplaced) {
    WriteSetting("Path=" + m_Root + "\r\n");
    EXPECT_EQ(BackupOf(m_Above + "/Shots" + m_Above + "/Shot9"),
              m_Root + "/Shots" + m_Root + "/Shot9");
}

TEST_F(BackupFolder, PrefixOfOtherCaseIsFoundButNotReplaced) {
    WriteSetting("Path=" + m_Root + "\r\n");
    m_Experiment.m_ExperimentPath =
        m_Experiment.m_ExperimentPath.Replace("/d", "/D", true, nullptr);
    EXPECT_EQ(BackupOf(m_Above + "/Shot9"), m_Above + "/Shot9");
    MakeFolder(m_Above + "/Shot9");
    EXPECT_EQ(BackupOf(m_Above + "/Shot9"), m_Above + "/Shot9_1");
}

TEST_F(BackupFolder, OfAShotElsewhereIsThatOfTheCurrentOneBesideTheExperiment) {
    WriteSetting("Path=" + m_Root + "\r\n");
    SelectShot(0, "7");
    EXPECT_EQ(BackupOf("/far/Data/Shot9"), m_Above + "/Backup/e/Shots/Shot7");
}

TEST_F(BackupFolder, WithoutAShotHasItsPrefixAlone) {
    WriteSetting("Path=" + m_Root + "\r\n");
    EXPECT_EQ(BackupOf(""), m_Above + "/Backup/e/Shots/Shot");
}

TEST_F(BackupFolder, InsideTheShotIsBelowTheCurrentOneWhateverIsAskedFor) {
    WriteSetting("Path=![Shot]\r\n");
    SelectShot(0, "7");
    EXPECT_EQ(BackupOf(""), ShotFolder(0, "7") + "/Backup7");
    EXPECT_EQ(BackupOf(ShotFolder(2, "9")), ShotFolder(0, "7") + "/Backup7");
}

TEST_F(BackupFolder, MarkOfOtherCaseIsARootLikeAnyOther) {
    WriteSetting("Path=![shot]\r\n");
    SelectShot(0, "7");
    EXPECT_EQ(BackupOf(""), "![shot]/e/Shots/Shot7");
    EXPECT_EQ(BackupOf("/far/Shot7"), m_Above + "/Backup/e/Shots/Shot7");
}

TEST_F(BackupFolder, EmptyExperimentPathIsNoPrefix) {
    WriteSetting("Path=" + m_Root + "\r\n");
    SelectShot(0, "7");
    m_Experiment.m_ExperimentPath = "";
    EXPECT_EQ(BackupOf(""), "Backup/e/Shots/Shot7");
}

TEST_F(BackupFolder, IsTheFirstThatIsFree) {
    WriteSetting("Path=" + m_Root + "\r\n");
    SelectShot(0, "7");
    const std::string base = m_Root + "/e/Shots/Shot7";
    MakeFolder(base + "_1");
    EXPECT_EQ(BackupOf(""), base);
    MakeFolder(base);
    EXPECT_EQ(BackupOf(""), base + "_2");
    MakeFolder(m_Root + "/e/Shots/SHOT7_2");
    EXPECT_EQ(BackupOf(""), base + "_3");
    WriteBytes(base + "_3", "a file doesn't count");
    EXPECT_EQ(BackupOf(""), base + "_3");
    for (int i = 4; i < 12; ++i)
        MakeFolder(base + "_" + std::to_string(i));
    fs::remove(base + "_3");
    MakeFolder(base + "_3");
    EXPECT_EQ(BackupOf(""), base + "_12");
}

TEST_F(BackupFolder, TakesTheObjectsOwnString) {
    WriteSetting("Path=" + m_Root + "\r\n");
    SelectShot(0, "7");
    EXPECT_EQ(Text(m_Experiment.GetBackupShotFolder(m_Experiment.m_ShotFolder)),
              m_Root + "/e/Shots/Shot7");
    EXPECT_EQ(Text(m_Experiment.m_ShotFolder), ShotFolder(0, "7"));
}

// ---- Backups

TEST_F(ShotBackup, IsACopyEachTimeInAFolderOfItsOwn) {
    WriteSetting("Path=" + m_Root + "\r\n");
    SelectShot(0, "7");
    WriteBytes(MakeFolder(ShotFolder(0, "7") + "/raw") + "/I.wvf", "trace");
    m_Experiment.BackupShot();
    WriteBytes(ShotFolder(0, "7") + "/raw/I.wvf", "changed");
    m_Experiment.BackupShot();
    m_Experiment.BackupShot();
    EXPECT_EQ(Names(m_Root + "/e/Shots"), (List{"Shot7", "Shot7_1", "Shot7_2"}));
    EXPECT_EQ(Names(m_Root + "/e/Shots/Shot7"), (List{"Scalars.ini", "raw"}));
    EXPECT_EQ(ReadBytes(m_Root + "/e/Shots/Shot7/raw/I.wvf"), "trace");
    EXPECT_EQ(ReadBytes(m_Root + "/e/Shots/Shot7_1/raw/I.wvf"), "changed");
    EXPECT_EQ(Selection(), "7 in 0");
}

TEST_F(ShotBackup, InsideTheShotDoesNotCopyItself) {
    WriteSetting("Path=![Shot]\r\n");
    SelectShot(0, "7");
    const std::string shot = ShotFolder(0, "7");
    m_Experiment.BackupShot();
    EXPECT_EQ(Names(shot), (List{"Backup7", "Scalars.ini"}));
    EXPECT_EQ(Names(shot + "/Backup7"), List{"Scalars.ini"});
    m_Experiment.BackupShot();
    EXPECT_EQ(Names(shot), (List{"Backup7", "Backup7_1", "Scalars.ini"}));
    EXPECT_EQ(Names(shot + "/Backup7_1"), (List{"Backup7", "Scalars.ini"}));
    EXPECT_EQ(Names(shot + "/Backup7_1/Backup7"), List{"Scalars.ini"});
}

TEST_F(ShotBackup, FoldersMadeOnTheWayIntoTheSourceAreNotCopied) {
    SelectShot(0, "7");
    const std::string shot = ShotFolder(0, "7");
    ASSERT_TRUE(CopyFolder(shot.c_str(), (shot + "/new/er").c_str()));
    EXPECT_EQ(Names(shot + "/new/er"), List{"Scalars.ini"});
}

TEST_F(ShotBackup, OfAShotWithoutAFolderMakesTheRootAlone) {
    WriteSetting("Path=" + m_Root + "\r\n");
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    m_Experiment.BackupShot();
    EXPECT_EQ(Names(m_Root), List());
}

TEST_F(ShotBackup, WithoutAShotCopiesNothing) {
    WriteSetting("Path=" + m_Root + "\r\n");
    m_Experiment.BackupShot();
    EXPECT_EQ(Names(m_Root), List());
    EXPECT_EQ(Names(m_Above), (List{"Data1", "Data2", "Data3", "e"}));
}

TEST_F(ShotBackup, ThatCannotBeMadeShowsNothing) {
    WriteBytes(m_Root, "a file");
    WriteSetting("Path=" + m_Root + "\r\n");
    SelectShot(0, "7");
    const RecordingSink sink;
    m_Experiment.BackupShot();
    EXPECT_TRUE(sink.m_Entries.empty());
    EXPECT_EQ(ReadBytes(m_Root), "a file");
}

// ---- Stamps

TEST_F(LastRun, HasTheShotItsGroupsFolderAndTheTimeInThisOrder) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 2));
    EXPECT_EQ(
        Stamped("[General]\r\na=b\r\n"),
        "[General]\r\na=b\r\n[LastRun]\r\nShot=7\r\nShotPath=" + m_Above + "/Data2\r\nStarted=");
}

TEST_F(LastRun, IsStampedWithTheTimeNow) {
    DIni ini(m_File.c_str());
    const std::string before = Text(Now());
    m_Experiment.StampConfigFile(ini);
    const std::string after = Text(Now());
    const std::string stamp = Text(ini.GetKeyValue("Started", nullptr));
    EXPECT_TRUE(stamp == before || stamp == after) << stamp;
    EXPECT_NE(stamp, "");
}

TEST_F(LastRun, LosesEveryOtherKeyAndStandsOnceAtTheEnd) {
    ASSERT_TRUE(m_Experiment.SetShot("7", 0));
    const std::string stamp =
        "[Z]\r\nz\r\n[LastRun]\r\nShot=7\r\nShotPath=" + m_Folder + "/Shots\r\nStarted=";
    EXPECT_EQ(Stamped("[lastrun]\r\nShot=6\r\nLeft=over\r\n[Z]\r\nz\r\n"), stamp);
    EXPECT_EQ(Stamped(stamp), stamp);
}

TEST_F(LastRun, WithoutAShotOrGroupIsEmpty) {
    Experiment none;
    none.SetShot("7", 0);
    DIni ini(m_File.c_str());
    none.StampConfigFile(ini);
    EXPECT_EQ(WithoutTime(ReadBytes(m_File)), "[LastRun]\r\nShot=\r\nShotPath=\r\nStarted=");
}

TEST_F(LastRun, IsWrittenOnceAndHoldsNothingBack) {
    WriteBytes(m_File, "[LastRun]\r\nShot=6\r\n");
    DIni ini(m_File.c_str());
    const ClosedFiles written(fs::path(m_File).parent_path().string());
    m_Experiment.StampConfigFile(ini);
    EXPECT_EQ(written.Count(), 1);
    ini.SetKeyValue("Later", "1");
    EXPECT_NE(ReadBytes(m_File).find("Later=1"), std::string::npos);
}

TEST_F(LastRun, WritesWhatTheCallerHeldBack) {
    WriteBytes(m_File, "[A]\r\na=1\r\n");
    DIni ini(m_File.c_str());
    ini.HoldWrite(true);
    ini.SetSection("A");
    ini.SetKeyValue("a", "2");
    m_Experiment.StampConfigFile(ini);
    EXPECT_TRUE(ReadBytes(m_File).starts_with("[A]\r\na=2\r\n[LastRun]\r\n"));
    EXPECT_FALSE(ini.m_Hold);
}
