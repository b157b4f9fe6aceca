// A process whose surroundings are broken: no home, no clock, no log, no standard streams.
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "faults/Faults.h"
#include "faults/Lab.h"
#include "support/Support.h"
#include "system/DSystem.h"

namespace fs = std::filesystem;

namespace {

class BadSurroundings : public testing::Test {
protected:
    NoSleep m_NoSleep;

    void SetUp() override { MakeLab(); }
};

// A session that uses each kind of file, and speaks.
void Session() {
    InitializeTarselC("/opt/tarsel$L");
    SetExperimentC(Scratch("Lab").c_str());
    SetShotC("missing");
    NotifyC(NT_Message, 0, "a text for the user");
    ASSERT_EQ(SetShotC("7"), 1);
    SetStringDataC("Key4", "another value");
    const std::vector<float> values(2000, 1.5f);
    SetWaveformC("I", 0, 1, 2000, values.data());
    SetMatrixC("M", 4, 3, 2, values.data(), 0, 1, 0, 1, 0, 1);
    SetPGroupC("P", 3, 0, values.data(), 1, 2);
    AppendPGroupC("P", 3, 0, values.data(), 1, 2);
    CreateShotC("8");
    Expt.BackupShot();
    GetNodesC(2);
}

}  // namespace

TEST_F(BadSurroundings, WithoutAHomeSettingsAreAtTheRoot) {
    AsNobody([] {
        unsetenv("HOME");
        EXPECT_EQ(Text(GetLocalSettingsPath()), "/.Tarsel");
        ExpectWorkingSession();
        EXPECT_EQ(Text(GetUserPath()), "/.Tarsel");
        EXPECT_EQ(Text(GetWorkingPath()), "/.Tarsel");
    });
}

TEST_F(BadSurroundings, EmptyHomeIsLikeNone) {
    AsNobody([] {
        setenv("HOME", "", 1);
        ExpectWorkingSession();
        EXPECT_EQ(Text(GetUserPath()), "/.Tarsel");
    });
}

TEST_F(BadSurroundings, HomeThatCantBeWrittenLeavesTheDefaults) {
    MakeFolder(Scratch("home"));
    AsNobody([] {
        chmod(Scratch("home").c_str(), 0555);
        setenv("HOME", Scratch("home").c_str(), 1);
        ExpectWorkingSession();
        EXPECT_EQ(Text(GetUserPath()), Scratch("home/.Tarsel"));
        EXPECT_EQ(Text(GetWorkingPath()), Scratch("home/.Tarsel"));
        EXPECT_EQ(Names(Scratch("home")).size(), 0u);
    });
}

TEST_F(BadSurroundings, HomeThatIsAFileStaysOne) {
    WriteBytes(Scratch("home"), "a file");
    EXPECT_EQ(InChild([] {
                  setenv("HOME", Scratch("home").c_str(), 1);
                  ExpectWorkingSession();
                  EXPECT_EQ(Text(GetUserPath()), Scratch("home/.Tarsel"));
              }),
              ChildEnd::Passed);
    EXPECT_EQ(ReadBytes(Scratch("home")), "a file");
}

TEST_F(BadSurroundings, HomeWithAnEndlessNameLeavesTheDefaults) {
    EXPECT_EQ(InChild([] {
                  setenv("HOME", ("/" + std::string(100000, 'h')).c_str(), 1);
                  ExpectWorkingSession();
              }),
              ChildEnd::Passed);
}

TEST_F(BadSurroundings, WithoutAClockTimesAreZeroAndDatesEmpty) {
    const BrokenClock clock;
    EXPECT_EQ(Timer(), 0.0);
    EXPECT_EQ(Text(Now()), "");
    ExpectWorkingSession();
    EXPECT_EQ(ReadBytes(Scratch(".Tarsel/Log.txt")).substr(0, 36),
              "Log initialized at  by 0.00e0\r\nTarse");
    ASSERT_EQ(CreateShotC("9"), 1);
    EXPECT_EQ(Text(Expt.GetShotData("Date")), "");
    EXPECT_EQ(ReadBytes(Scratch("Lab/Shots/Shot9/Scalars.ini")), "");
}

TEST_F(BadSurroundings, LogThatCantBeWrittenIsTriedFiveTimes) {
    fs::remove_all(Scratch(".Tarsel/Log.txt"));
    MakeFolder(Scratch(".Tarsel/Log.txt/Inside"));
    InitializeTarselC("/opt/tarsel");
    const NoSleep sleep;
    Log("a line");
    EXPECT_EQ(sleep.Microseconds(), 5 * 10000);
    EXPECT_TRUE(Exists(Scratch(".Tarsel/Log.txt/Inside")));
    ExpectWorkingSession();
}

TEST_F(BadSurroundings, SettingsThatAreAFolderLeaveTheDefaults) {
    fs::remove_all(Scratch(".Tarsel/Tarsel.ini"));
    MakeFolder(Scratch(".Tarsel/Tarsel.ini/Inside"));
    ExpectWorkingSession();
    EXPECT_EQ(Text(GetWorkingPath()), Scratch(".Tarsel"));
    EXPECT_TRUE(Exists(Scratch(".Tarsel/Tarsel.ini/Inside")));
}

// A host without standard streams has its files under their descriptors. What the library says
// goes nowhere, and above all not into a file.
TEST_F(BadSurroundings, WithoutStandardStreamsNothingIsPrintedIntoFiles) {
    const FixedTime time(1100000000);
    const Snapshot before = TakeSnapshot(ScratchFolder());
    EXPECT_EQ(InChild(Session), ChildEnd::Passed);
    Snapshot with = TakeSnapshot(ScratchFolder());
    Restore(ScratchFolder(), before);
    EXPECT_EQ(InChild([] {
                  for (const int stream : {0, 1, 2})
                      close(stream);
                  Session();
              }),
              ChildEnd::Passed);
    Snapshot without = TakeSnapshot(ScratchFolder());
    for (Snapshot* snapshot : {&with, &without})
        snapshot->erase(".Tarsel/Log.txt");
    EXPECT_EQ(without, with);
    EXPECT_EQ(ReadBytes(Scratch(".Tarsel/Log.txt")).find("a text for the user"), std::string::npos);
}
