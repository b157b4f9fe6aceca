// The start of a session: InitializeTarselC and CoreInit, the library's paths and the computer's
// name. Calls of the system are replaced in this program: those that read a link and give the
// host's name do by default what they always do, and no mode of a file is ever changed.
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "core/CFunctions.h"
#include "experiment/Experiment.h"
#include "support/Support.h"
#include "system/DIni.h"
#include "system/DSystem.h"

namespace {

/// What a link holds while m_Fake is set, and what was asked for.
struct FakeLink {
    bool m_Fake = false;
    ssize_t m_Result = -1;  ///< -1 to fail; else the length of m_Target
    std::string m_Target;
    std::string m_Name;
    size_t m_Room = 0;
};

FakeLink mLink;

/// The host's name, unless empty.
std::string mHostName;

}  // namespace

// A start that is wrong about public access must not reach the folders above a test's own.
extern "C" int chmod(const char*, mode_t) noexcept {
    errno = EPERM;
    return -1;
}

extern "C" ssize_t readlink(const char* __restrict name, char* __restrict buffer,
                            size_t room) noexcept {
    if (!mLink.m_Fake) return readlinkat(AT_FDCWD, name, buffer, room);
    mLink.m_Name = name;
    mLink.m_Room = room;
    memcpy(buffer, mLink.m_Target.data(), std::min(room, mLink.m_Target.size()));
    return mLink.m_Result;
}

extern "C" int gethostname(char* name, size_t room) noexcept {
    utsname system;
    uname(&system);
    strncpy(name, mHostName.empty() ? system.nodename : mHostName.c_str(), room);
    return 0;
}

namespace {

std::string LogFile() { return Scratch(".Tarsel/Log.txt"); }

/// The lines of the log without their elapsed times.
std::vector<std::string> LogLines() {
    std::vector<std::string> lines;
    const std::string text = ReadBytes(LogFile());
    for (size_t at = 0; at < text.size();) {
        const size_t end = text.find("\r\n", at);
        const std::string line = text.substr(at, end - at);
        lines.push_back(line.substr(0, line.rfind(" by ")));
        at = end + 2;
    }
    return lines;
}

std::string ExecutableFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
}

bool BeginsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

class ShotSink final : public QNotify {
public:
    void ShotChanged(DString, int, int, int) override {}
};

}  // namespace

// ---- The empty path in a loaded library

class FreshLibrary : public testing::TestWithParam<const char*> {};

TEST_P(FreshLibrary, TakesAnEmptyPathForARepeatAndDoesNothing) {
    EXPECT_EQ(PrintedBy([&] { InitializeTarselC(GetParam()); }), "");
    EXPECT_FALSE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), "");
    EXPECT_EQ(Text(GetUserPath()), "");
    SetExperimentC(Scratch("Lab").c_str());
    EXPECT_EQ(Text(Expt.GetExperimentFolder()), "");
    EXPECT_TRUE(Names(ScratchFolder()).empty());
    EXPECT_EQ(PrintedBy([] { Display("no sink"); }), "no sink\n");
}

INSTANTIATE_TEST_SUITE_P(EmptyPath, FreshLibrary, testing::Values("", "$L", "$l", nullptr));

TEST(FreshLibraryWithLogging, LogsTheRepeatInTheCurrentDirectory) {
    Logging = true;
    InitializeTarselC("");
    EXPECT_TRUE(Logging);
    EXPECT_TRUE(BeginsWith(ReadBytes(Scratch("Log.txt")), "InitializeTarselC called again by "));
}

// ---- The first call

TEST(FirstStart, SetsPathsSinkAndLog) {
    InitializeTarselC("/the/install");
    EXPECT_EQ(Text(GetTarselPath()), "/the/install");
    EXPECT_EQ(Text(GetUserPath()), Scratch(".Tarsel"));
    EXPECT_FALSE(Logging);
    EXPECT_EQ(PrintedBy([] { Display("dropped"); }), "");
    EXPECT_EQ(PrintedBy([] { Message("printed"); }), "printed\n");
    const std::vector<std::string> lines = LogLines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(BeginsWith(lines[0], "Log initialized at "));
    EXPECT_EQ(lines[1], "Tarsel running on " + Text(GetComputerNameD()));
    EXPECT_EQ(lines[2], "Tarselpath is /the/install");
}

TEST(FirstStart, MarkSwitchesLoggingOnAndIsCutFromThePath) {
    InitializeTarselC("/the/install$L");
    EXPECT_TRUE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), "/the/install");
    const std::vector<std::string> lines = LogLines();
    const std::string start = "InitializeTarselC called from external code at ";
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[2], "Tarselpath is /the/install");
    EXPECT_TRUE(BeginsWith(lines.back(), start));
    EXPECT_EQ(lines.back().size(), start.size() + strlen("11/12/2026 14:43:45"));
}

TEST(FirstStart, MarkMayBeOfEitherCase) {
    InitializeTarselC("/the/install$l");
    EXPECT_TRUE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), "/the/install");
}

TEST(FirstStart, MarkCountsAtTheEndAloneAndOnce) {
    InitializeTarselC("/the$L/install");
    EXPECT_FALSE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), "/the$L/install");
    InitializeTarselC("/the$L$L");
    EXPECT_TRUE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), "/the$L");
}

TEST(FirstStart, KeepsNoPointerToThePath) {
    char path[] = "/the/install";
    InitializeTarselC(path);
    memset(path, 'x', sizeof path - 1);
    EXPECT_EQ(Text(GetTarselPath()), "/the/install");
}

// ---- A repeat

TEST(RepeatedStart, InAnotherCaseWithoutTheMarkIsLoggedAndKeepsLoggingOn) {
    InitializeTarselC("/the/install$L");
    const size_t before = LogLines().size();
    InitializeTarselC("/THE/Install");
    EXPECT_TRUE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), "/the/install");
    const std::vector<std::string> lines = LogLines();
    ASSERT_EQ(lines.size(), before + 1);
    EXPECT_EQ(lines.back(), "InitializeTarselC called again");
}

TEST(RepeatedStart, WithoutLoggingWritesNothingAndItsMarkHasNoEffect) {
    InitializeTarselC("/the/install");
    const std::string before = ReadBytes(LogFile());
    InitializeTarselC("/the/install");
    InitializeTarselC("/the/install$L");
    EXPECT_FALSE(Logging);
    EXPECT_EQ(ReadBytes(LogFile()), before);
}

TEST(RepeatedStart, KeepsTheSinksThatTheHostSetMeanwhile) {
    InitializeTarselC("/the/install");
    RecordingSink sink;
    ShotSink shots;
    SetQNotify(&shots);
    InitializeTarselC("/the/install");
    Display("text");
    EXPECT_EQ(sink.Texts(NT_Display), std::vector<std::string>{"text"});
    EXPECT_EQ(QNot, &shots);
}

// ---- Another path

TEST(StartWithAnotherPath, BeginsTheLogAgainAndResetsTheSinksAndLogging) {
    InitializeTarselC("/first$L");
    ShotSink shots;
    SetQNotify(&shots);
    RecordingSink sink;
    InitializeTarselC("/second");
    EXPECT_EQ(Text(GetTarselPath()), "/second");
    EXPECT_FALSE(Logging);
    EXPECT_EQ(QNot, nullptr);
    EXPECT_EQ(PrintedBy([] { Message("printed"); }), "printed\n");
    EXPECT_TRUE(sink.m_Entries.empty());
    const std::vector<std::string> lines = LogLines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[2], "Tarselpath is /second");
}

TEST(StartWithAnotherPath, LeavesTheExperimentAndItsShot) {
    InitializeTarselC("/first");
    SetExperimentC(Scratch("Lab").c_str());
    ASSERT_EQ(CreateShotC("7"), 1);
    InitializeTarselC("/second");
    EXPECT_EQ(Text(Expt.GetExperimentName()), "Lab");
    EXPECT_EQ(Text(Expt.GetShotName()), "7");
}

TEST(StartWithARelativePath, IsStoredAsAbsoluteAndNeverARepeat) {
    InitializeTarselC("install");
    EXPECT_EQ(Text(GetTarselPath()), Scratch("install"));
    SetNotify(nullptr);
    InitializeTarselC("install");
    EXPECT_EQ(PrintedBy([] { Display("dropped by the sink that was set again"); }), "");
    EXPECT_EQ(LogLines().size(), 3u);
}

TEST(StartWithAnEmptyPath, TakesTheExecutablesFolderOnceAnotherPathWasSet) {
    InitializeTarselC("/the/install");
    InitializeTarselC("");
    EXPECT_EQ(Text(GetTarselPath()), ExecutableFolder());
    InitializeTarselC("$L");
    EXPECT_TRUE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), ExecutableFolder());
}

// ---- CoreInit

TEST(CoreStart, ResetsTheSinksLoggingAndTheClockOfTheLog) {
    RecordingSink sink;
    ShotSink shots;
    SetQNotify(&shots);
    Logging = true;
    CoreInit("/the/install");
    EXPECT_EQ(QNot, nullptr);
    EXPECT_FALSE(Logging);
    EXPECT_EQ(PrintedBy([] { Display("no sink"); }), "no sink\n");
    Log("text");
    // A line that counted from the epoch would end in "e9".
    EXPECT_EQ(ReadBytes(LogFile()).find("e9\r\n"), std::string::npos);
}

TEST(CoreStart, WritesNoLog) {
    CoreInit("/the/install");
    EXPECT_FALSE(Exists(LogFile()));
}

TEST(CoreStart, IsNotARepeatEvenWithTheSamePath) {
    CoreInit("/the/install");
    Logging = true;
    CoreInit("/the/install");
    EXPECT_FALSE(Logging);
}

TEST(CoreStart, TakesAMarkForPartOfThePath) {
    CoreInit("/the/install$L");
    EXPECT_FALSE(Logging);
    EXPECT_EQ(Text(GetTarselPath()), "/the/install$L");
}

TEST(CoreStart, LeavesTheExperiment) {
    CoreInit("/first");
    Expt.SetExperimentFolder(Scratch("Lab").c_str());
    CoreInit("/second");
    EXPECT_EQ(Text(Expt.GetExperimentFolder()), Scratch("Lab"));
}

// ---- Paths

TEST(InstallPath, ThatIsAbsoluteIsKeptAsItStands) {
    for (const char* path : {"/", "/a//b/", "/no such folder/../x"}) {
        SetTarselPath(path);
        EXPECT_EQ(Text(GetTarselPath()), path);
    }
}

TEST(InstallPath, ThatIsRelativeIsTakenFromTheCurrentDirectory) {
    SetTarselPath("./a/../b");
    EXPECT_EQ(Text(GetTarselPath()), Scratch("./a/../b"));
}

TEST(InstallPath, ThatIsRelativeStaysSoWhereTheCurrentDirectoryIsGone) {
    const std::string folder = MakeFolder(Scratch("gone"));
    ASSERT_EQ(chdir(folder.c_str()), 0);
    ASSERT_EQ(rmdir(folder.c_str()), 0);
    SetTarselPath("a/b");
    EXPECT_EQ(Text(GetTarselPath()), "a/b");
}

TEST(InstallPath, MayBeGivenByItself) {
    SetTarselPath("/the/install");
    SetTarselPath(GetTarselPath());
    EXPECT_EQ(Text(GetTarselPath()), "/the/install");
}

TEST(InstallPath, IsHandedOutAsAShare) {
    SetTarselPath("/the/install");
    EXPECT_EQ(static_cast<const char*>(GetTarselPath()), static_cast<const char*>(GetTarselPath()));
}

class ExecutableLink : public testing::Test {
protected:
    void SetUp() override {
        SetTarselPath("/the/install");
        setenv("HOME", Scratch("other").c_str(), 1);
    }
    void TearDown() override { mLink = {}; }

    /// An empty path is set while the link holds `target`.
    static void SetEmptyPath(const std::string& target, ssize_t result) {
        mLink = {true, result, target, "", 0};
        SetTarselPath("");
    }
};

TEST_F(ExecutableLink, GivesTheFolder) {
    SetEmptyPath("/opt/lab/bin/host", 17);
    EXPECT_EQ(Text(GetTarselPath()), "/opt/lab/bin");
    EXPECT_EQ(mLink.m_Name, "/proc/self/exe");
    EXPECT_EQ(Text(GetUserPath()), Scratch("other/.Tarsel"));
}

TEST_F(ExecutableLink, ThatCannotBeReadLeavesAllPathsAndSaysNothing) {
    for (const ssize_t result : {ssize_t{-1}, ssize_t{0}}) {
        EXPECT_EQ(PrintedBy([&] { SetEmptyPath("", result); }), "");
        EXPECT_EQ(Text(GetTarselPath()), "/the/install");
        EXPECT_EQ(Text(GetUserPath()), Scratch(".Tarsel"));
    }
    EXPECT_FALSE(Exists(Scratch("other")));
}

TEST_F(ExecutableLink, IsReadUpTo4095Bytes) {
    const std::string folder = "/" + std::string(4091, 'a');
    SetEmptyPath(folder + "/xyz", 4095);
    EXPECT_EQ(mLink.m_Room, 4095u);
    EXPECT_EQ(Text(GetTarselPath()), folder);
}

TEST(SettingsPath, IsBelowHome) {
    setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(Text(GetLocalSettingsPath()), "/home/someone/.Tarsel");
    setenv("HOME", "/home/someone/", 1);
    EXPECT_EQ(Text(GetLocalSettingsPath()), "/home/someone//.Tarsel");
}

TEST(SettingsPath, IsBelowTheRootWithoutAHome) {
    setenv("HOME", "", 1);
    EXPECT_EQ(Text(GetLocalSettingsPath()), "/.Tarsel");
    unsetenv("HOME");
    EXPECT_EQ(Text(GetLocalSettingsPath()), "/.Tarsel");
}

// ---- Silent

TEST(SilentStart, SetsTheUserPathAndMakesNothing) {
    Silent = true;
    CoreInit("/the/install");
    EXPECT_EQ(Text(GetUserPath()), Scratch(".Tarsel"));
    EXPECT_EQ(Text(GetWorkingPath()), "");
    EXPECT_TRUE(TrIni.m_FileName.IsEmpty());
    EXPECT_TRUE(Names(ScratchFolder()).empty());
    EXPECT_TRUE(Silent);
}

TEST(SilentStart, KeepsTheWorkingPathTheSettingsAndTheWriteFlagOfTheOneBefore) {
    CoreInit("/the/install");
    ASSERT_EQ(Text(GetWorkingPath()), Scratch(".Tarsel"));
    PublicWrite = true;
    Silent = true;
    setenv("HOME", Scratch("other").c_str(), 1);
    CoreInit("/the/install");
    EXPECT_EQ(Text(GetUserPath()), Scratch("other/.Tarsel"));
    EXPECT_EQ(Text(GetWorkingPath()), Scratch(".Tarsel"));
    EXPECT_EQ(Text(TrIni.m_FileName), Scratch(".Tarsel/Tarsel.ini"));
    EXPECT_TRUE(PublicWrite);
    EXPECT_FALSE(Exists(Scratch("other")));
}

// ---- The computer's name

TEST(ComputerName, IsWhatStandsBeforeTheFirstDot) {
    const std::string longest(255, 'x');
    const std::vector<std::pair<std::string, std::string>> names = {
        {"node7.lab.example", "node7"}, {"node7", "node7"}, {".lab", ""}, {longest, longest}};
    for (const auto& [host, name] : names) {
        mHostName = host;
        SetComputerNameD();
        EXPECT_EQ(Text(GetComputerNameD()), name);
    }
    mHostName.clear();
}

TEST(ComputerName, IsTakenAtTheStart) {
    mHostName = "node7.lab.example";
    CoreInit("/the/install");
    mHostName.clear();
    EXPECT_EQ(Text(GetComputerNameD()), "node7");
}
