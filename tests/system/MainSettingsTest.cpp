// The main settings: how Tarsel.ini comes into being, what it sets, and its tables.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <string>

#include "core/CoreGlobal.h"
#include "support/Support.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "tests/system/SettingsTexts.h"

namespace {

// The home folder of each test is its own, so that the settings of one are not those of another.
class MainSettings : public InOwnFolder {
protected:
    MainSettings() {
        setenv("HOME", m_Folder.c_str(), 1);
        SetComputerNameD();
    }
    ~MainSettings() override {
        setenv("HOME", ScratchFolder().c_str(), 1);
        Silent = false;
        PublicWrite = false;
        TrIni = DIni();
    }

    void Start() { SetUserPath(); }
    void StartWith(const std::string& settings) {
        MakeFolder(m_UserPath);
        WriteBytes(m_File, settings);
        Start();
    }
    std::string OnDisk() const { return ReadBytes(m_File); }
    std::string HostsOnDisk() const { return ReadBytes(m_UserPath + "/MPIHosts.txt"); }

    const std::string m_UserPath = Own(".Tarsel");
    const std::string m_File = m_UserPath + "/Tarsel.ini";
};

class SettingsTables : public MainSettings {
protected:
    Texts Servers() {
        GetServers(m_Result);
        return TextsOf(m_Result);
    }
    Texts Paths() {
        GetPaths(m_Result);
        return TextsOf(m_Result);
    }
    Texts Nodes(int count) {
        GetNodes(m_Result, count);
        return TextsOf(m_Result);
    }

    // What a call finds in its result has to go.
    DStringArray m_Result = ListOf({"from before"});
    const std::string m_Self = Text(GetComputerNameD());
};

std::string InCapitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(toupper(c)); });
    return text;
}

constexpr const char* FirstSettings =
    "[Startup]\r\nPath=*\r\nExperiment=*\r\nQuery=*\r\nShot=*\r\nMacro=*\r\n"
    "[Preferences]\r\nUseLocalSettings=True";

}  // namespace

// ---- Start-up

TEST_F(MainSettings, FirstStartMakesFolderAndFile) {
    Start();
    EXPECT_EQ(OnDisk(), FirstSettings);
    EXPECT_EQ(Text(TrIni.m_FileName), m_File);
    EXPECT_EQ(Text(GetUserPath()), m_UserPath);
}

TEST_F(MainSettings, DefaultsAreTheUserPathAndNoPublicWriting) {
    Start();
    EXPECT_EQ(Text(GetWorkingPath()), m_UserPath);
    EXPECT_FALSE(PublicWrite);
}

TEST_F(MainSettings, PreferencesAreTheCurrentSectionAfterTheStart) {
    Start();
    EXPECT_EQ(Text(TrIni.GetKeyValue("UseLocalSettings", "")), "True");
    StartWith("[Startup]\r\n[Preferences]\r\nWorkingPath=" + m_Folder);
    EXPECT_EQ(Text(TrIni.GetKeyValue("WorkingPath", "")), m_Folder);
}

TEST_F(MainSettings, FileThatIsThereIsNeverCompleted) {
    StartWith("[Startup]\nPath=here\n");
    EXPECT_EQ(OnDisk(), "[Startup]\nPath=here\n");
    EXPECT_EQ(Text(GetWorkingPath()), m_UserPath);
    EXPECT_FALSE(PublicWrite);
    EXPECT_TRUE(TrIni.SectionExists("Preferences"));
}

TEST_F(MainSettings, EmptyFileThatIsThereStaysEmpty) {
    StartWith("");
    EXPECT_EQ(OnDisk(), "");
    EXPECT_EQ(Text(TrIni.m_FileName), m_File);
}

TEST_F(MainSettings, FileInOtherCaseIsTaken) {
    MakeFolder(m_UserPath);
    WriteBytes(m_UserPath + "/TARSEL.INI", "[Preferences]\nPublicWriteAccess=1");
    Start();
    EXPECT_EQ(Names(m_UserPath), Texts{"TARSEL.INI"});
    EXPECT_EQ(Text(TrIni.m_FileName), m_UserPath + "/TARSEL.INI");
    EXPECT_TRUE(PublicWrite);
}

TEST_F(MainSettings, WorkingPathIsTakenAndMade) {
    const std::string folder = Own("work/deep");
    StartWith("[Preferences]\r\nWorkingPath=" + folder);
    EXPECT_EQ(Text(GetWorkingPath()), folder);
    EXPECT_TRUE(Exists(folder));
}

TEST_F(MainSettings, EmptyWorkingPathIsTheUserPath) {
    StartWith("[Preferences]\r\nWorkingPath=");
    EXPECT_EQ(Text(GetWorkingPath()), m_UserPath);
}

TEST_F(MainSettings, PublicWritingIsSwitchedOnByItsKey) {
    StartWith("[Preferences]\r\nPublicWriteAccess=true");
    EXPECT_TRUE(PublicWrite);
}

TEST_F(MainSettings, SilentStartTouchesNothing) {
    Start();
    const DIni before = TrIni;
    const std::string other = MakeFolder(Own("other"));
    setenv("HOME", other.c_str(), 1);
    Silent = true;
    PublicWrite = true;
    Start();
    EXPECT_EQ(Text(GetUserPath()), other + "/.Tarsel");
    EXPECT_TRUE(Names(other).empty());
    EXPECT_EQ(Text(GetWorkingPath()), m_UserPath);
    EXPECT_TRUE(PublicWrite);
    EXPECT_EQ(Text(TrIni.m_FileName), Text(before.m_FileName));
}

TEST_F(MainSettings, FirstStartThatIsSilentLeavesTheSettingsDetached) {
    Silent = true;
    Start();
    EXPECT_TRUE(TrIni.m_FileName.IsEmpty());
    EXPECT_EQ(TrIni.m_Sections.Count(), 0);
    EXPECT_TRUE(Names(m_Folder).empty());
}

TEST_F(MainSettings, SettingsThatCannotBeMadeLeaveTheDefaults) {
    WriteBytes(Own("file"), "no folder");
    setenv("HOME", Own("file").c_str(), 1);
    Start();
    EXPECT_TRUE(TrIni.m_FileName.IsEmpty());
    EXPECT_EQ(Text(GetWorkingPath()), Own("file/.Tarsel"));
    EXPECT_FALSE(PublicWrite);
    DStringArray result = ListOf({"from before"});
    GetServers(result);
    EXPECT_EQ(result.Count(), 0);
    GetPaths(result);
    EXPECT_EQ(result.Count(), 0);
    GetNodes(result, 1);
    EXPECT_EQ(TextsOf(result), Texts{Text(GetComputerNameD())});
    EXPECT_EQ(Text(GetDefaultPath("Data")), "");
    EXPECT_EQ(ReadBytes(Own("file")), "no folder");
}

TEST_F(MainSettings, ChangesOfOthersAreSeenAtTheNextStartAlone) {
    StartWith("[DefaultPaths]\r\nData=/old");
    WriteBytes(m_File, "[DefaultPaths]\r\nData=/new");
    EXPECT_EQ(Text(GetDefaultPath("Data")), "/old");
    Start();
    EXPECT_EQ(Text(GetDefaultPath("Data")), "/new");
}

// ---- Servers and paths

TEST_F(SettingsTables, ServersAreTheNamesBeforeTheEqualsSigns) {
    StartWith("[Servers]\r\nalpha=1\r\nbeta\r\n gamma =a=b\r\n;delta=off\r\nalpha=2");
    EXPECT_EQ(Servers(), (Texts{"alpha", "beta", " gamma ", ";delta", "alpha"}));
}

TEST_F(SettingsTables, ServersLeaveOutThisComputerInAnyCase) {
    StartWith("[Servers]\r\nalpha=1\r\n" + m_Self + "=1\r\n" + InCapitals(m_Self) + "\r\nbeta=1");
    EXPECT_EQ(Servers(), (Texts{"alpha", "beta"}));
}

TEST_F(SettingsTables, ServersKeepANameThatDiffersFromThisComputerByABlank) {
    StartWith("[Servers]\r\n" + m_Self + " =1\r\n " + m_Self + "\r\n" + m_Self + "2=1");
    EXPECT_EQ(Servers(), (Texts{m_Self + " ", " " + m_Self, m_Self + "2"}));
}

TEST_F(SettingsTables, ServersSkipEmptyAndBlankNames) {
    StartWith("[Servers]\r\n=1\r\n   =2\r\nalpha=3");
    EXPECT_EQ(Servers(), Texts{"alpha"});
}

TEST_F(SettingsTables, PathsAreNotFiltered) {
    StartWith("[Paths]\r\nData=/d\r\n=empty\r\n;off=/x\r\n  =blank\r\n" + m_Self + "=self\r\nbare");
    EXPECT_EQ(Paths(), (Texts{"Data", "", ";off", "  ", m_Self, "bare"}));
}

TEST_F(SettingsTables, MissingServersAndPathsGiveEmptyTables) {
    Start();
    EXPECT_EQ(Servers(), Texts{});
    m_Result = ListOf({"from before"});
    EXPECT_EQ(Paths(), Texts{});
}

// ---- Nodes

TEST_F(SettingsTables, NodesAreRepeatedInTurn) {
    StartWith("[Nodes]\r\nA=1\r\nB=2");
    EXPECT_EQ(Nodes(5), (Texts{"A", "B", "A", "B", "A"}));
    EXPECT_EQ(HostsOnDisk(), "A\nB\nA\nB\nA");
}

TEST_F(SettingsTables, NodesAreNeitherCutNorRepeatedForASmallCount) {
    StartWith("[Nodes]\r\nA=1\r\nB=2\r\nC=3");
    for (const int count : {-1, 0, 1, 2, 3}) {
        EXPECT_EQ(Nodes(count), (Texts{"A", "B", "C"})) << count;
        EXPECT_EQ(HostsOnDisk(), "A\nB\nC");
    }
}

TEST_F(SettingsTables, NodesSkipBlankNamesAndKeepThisComputer) {
    StartWith("[Nodes]\r\n=1\r\n  =2\r\n a =3\r\n;b=4\r\n" + m_Self + "=5");
    EXPECT_EQ(Nodes(0), (Texts{" a ", ";b", m_Self}));
    EXPECT_EQ(HostsOnDisk(), " a \n;b\n" + m_Self);
}

TEST_F(SettingsTables, WithoutNodesThisComputerIsTheOnlyOne) {
    StartWith("[Startup]");
    EXPECT_EQ(Nodes(3), (Texts{m_Self, m_Self, m_Self}));
    EXPECT_EQ(HostsOnDisk(), m_Self + "\n" + m_Self + "\n" + m_Self);
    EXPECT_EQ(Nodes(0), Texts{m_Self});
    EXPECT_EQ(HostsOnDisk(), m_Self);
}

TEST_F(SettingsTables, EmptyNodesSectionCountsAsNone) {
    StartWith("[Nodes]\r\n[Startup]");
    EXPECT_EQ(Nodes(1), Texts{m_Self});
}

TEST_F(SettingsTables, NodesWithNoNameGiveAnEmptyTableAndAnEmptyFile) {
    StartWith("[Nodes]\r\n=1\r\n =2");
    WriteBytes(m_UserPath + "/MPIHosts.txt", "old");
    EXPECT_EQ(Nodes(3), Texts{});
    EXPECT_EQ(HostsOnDisk(), "");
}

TEST_F(SettingsTables, NodesAreRepeatedPastTheGrowthOfTheArray) {
    StartWith("[Nodes]\r\nA\r\nB\r\nC");
    const Texts nodes = Nodes(2000);
    ASSERT_EQ(nodes.size(), 2000u);
    for (size_t i = 0; i < nodes.size(); ++i) {
        ASSERT_EQ(nodes[i], std::string(1, "ABC"[i % 3])) << i;
    }
    EXPECT_EQ(HostsOnDisk().size(), 3999u);
}

// ---- Remembered paths

TEST_F(SettingsTables, DefaultPathIsRememberedInTheFile) {
    StartWith("[Startup]\r\nPath=*");
    SetDefaultPath("Data", "/data/one");
    SetDefaultPath("DATA", "/data/two");
    EXPECT_EQ(OnDisk(), "[Startup]\r\nPath=*\r\n[Preferences]\r\n[DefaultPaths]\r\nDATA=/data/two");
    EXPECT_EQ(Text(GetDefaultPath("data")), "/data/two");
}

TEST_F(SettingsTables, UnknownDefaultPathIsEmpty) {
    Start();
    EXPECT_EQ(Text(GetDefaultPath("Data")), "");
    EXPECT_EQ(TrIni.m_Section, -1);
    SetDefaultPath("Data", "/data");
    EXPECT_EQ(Text(GetDefaultPath("Other")), "");
    EXPECT_EQ(Text(GetDefaultPath("Data")), "/data");
}

TEST_F(SettingsTables, DefaultPathMovesTheCurrentSectionOfTheSettings) {
    StartWith("[Startup]\r\nx=1\r\n[DefaultPaths]\r\nData=/d");
    TrIni.SetSection("Startup");
    GetDefaultPath("Data");
    EXPECT_EQ(Text(TrIni.GetKeyValue("Data", "")), "/d");
}

// ---- Translations

TEST_F(SettingsTables, TranslationsMapSharedNamesToLocalOnes) {
    StartWith("[Translations]\r\n\\\\atlas\\data=/mnt/atlas");
    EXPECT_EQ(Text(GetUNCFileName("/mnt/atlas/run1/I.wvf")), "\\\\atlas\\data\\run1\\I.wvf");
    EXPECT_EQ(Text(GetLocalFileName("\\\\atlas\\data\\run1\\I.wvf")), "/mnt/atlas/run1/I.wvf");
    EXPECT_EQ(Text(GetLocalFileName("\\\\other\\data")), "\\\\other\\data");
}
