// Files and folders that aren't what the library expects: too little room, no rights, another kind,
// links that lead nowhere, and names too long.
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "data/Geometry.h"
#include "experiment/Experiment.h"
#include "faults/Faults.h"
#include "faults/Lab.h"
#include "support/Support.h"
#include "system/DFile.h"
#include "system/DSystem.h"

namespace fs = std::filesystem;

namespace {

// While it lives, no file of this process gets longer than `bytes`: the disk is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_Before);
        rlimit limit = m_Before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_Before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_Before{};
};

// A session in the experiment Lab, with the shot 7 selected.
class BadFiles : public testing::Test {
protected:
    NoSleep m_NoSleep;
    std::string m_Lab = Scratch("Lab");
    std::string m_Shot = m_Lab + "/Shots/Shot7";

    void SetUp() override {
        MakeLab();
        OpenLab();
    }

    static std::string Field(const char* key) { return Text(Expt.GetShotData(key)); }

    static int Points(const char* trace) {
        int points = -1;
        GetWaveformInfoC(trace, &points, nullptr, nullptr);
        return points;
    }

    static void SetTrace(const char* name, int points) {
        const std::vector<float> samples(static_cast<size_t>(points), 1.5f);
        SetWaveformC(name, 0, 1, points, samples.data());
    }

    static void SetMode(const std::string& path, mode_t mode) {
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }

    void Replace(const std::string& path, const std::function<void()>& make) {
        fs::remove_all(path);
        make();
    }
};

}  // namespace

// ---- Too little room

// A full disk isn't noticed by design; the file then holds what there was room for.
TEST_F(BadFiles, FieldOnFullDiskIsLostAndSessionGoesOn) {
    {
        const FullDisk full(0);
        SetStringDataC("Key4", "another value");
    }
    EXPECT_EQ(ReadBytes(m_Shot + "/Scalars.ini"), "");
    SetStringDataC("Key4", "a third value");
    EXPECT_EQ(Field("Key4"), "a third value");
    ExpectWorkingSession();
}

TEST_F(BadFiles, TraceOnFullDiskEndsWhereTheRoomEnds) {
    const Snapshot before = TakeSnapshot(m_Lab);
    {
        const FullDisk full(1000);
        SetTrace("I", 500);
    }
    EXPECT_EQ(fs::file_size(m_Shot + "/I.wvf"), 1000u);
    EXPECT_EQ(Points("I"), 500);
    std::vector<float> read(500, -1.0f);
    GetWaveformC("I", 0, 1, 500, read.data());
    EXPECT_EQ(read.front(), 1.5f);
    EXPECT_EQ(read.back(), 0.0f) << "what the file lacks is 0";
    Snapshot after = TakeSnapshot(m_Lab);
    after["Shots/Shot7/I.wvf"] = before.at("Shots/Shot7/I.wvf");
    EXPECT_EQ(after, before);
    ExpectWorkingSession();
}

TEST_F(BadFiles, BackupOnFullDiskLeavesTheShotAlone) {
    const Snapshot before = TakeSnapshot(m_Lab);
    {
        const FullDisk full(100);
        Expt.BackupShot();
    }
    EXPECT_EQ(TakeSnapshot(m_Lab), before);
    EXPECT_EQ(fs::file_size(Scratch("Backup/Lab/Shots/Shot7/I.wvf")), 100u);
    ExpectWorkingSession();
}

TEST_F(BadFiles, EverythingIntoDevFullIsLostAndSessionGoesOn) {
    for (const char* name : {"/Scalars.ini", "/I.wvf", "/M.dmt", "/P.dpt", "/G.dgm"}) {
        Replace(m_Shot + name, [&] { fs::create_symlink("/dev/full", m_Shot + name); });
    }
    const float values[16] = {};
    SetStringDataC("Key4", "another value");
    SetTrace("I", 5000);
    SetMatrixC("M", 2, 2, 4, values, 0, 1, 0, 1, 0, 1);
    SetPGroupC("P", 2, 0, values, 0, 0);
    AppendPGroupC("P", 2, 0, values, 0, 0);
    EXPECT_EQ(Field("Key4"), "");
    for (const char* name : {"/Scalars.ini", "/I.wvf"})
        EXPECT_TRUE(fs::is_symlink(m_Shot + name)) << name;
    ASSERT_EQ(SetShotC("8"), 1);
    EXPECT_EQ(Field("Key4"), "of the shot 8, a value of some length");
}

// ---- No rights

TEST_F(BadFiles, ClosedFieldsReadAsEmptyAndStayAsTheyAre) {
    const std::string file = m_Shot + "/Scalars.ini";
    const std::string before = ReadBytes(file);
    AsNobody([&] {
        SetMode(file, 0);
        EXPECT_EQ(Field("Key4"), "");
        SetStringDataC("Key4", "another value");
        SetMode(file, 0644);
        EXPECT_EQ(ReadBytes(file), before);
        EXPECT_EQ(Field("Key4"), "of the shot 7, a value of some length");
        ExpectWorkingSession();
    });
}

TEST_F(BadFiles, ReadOnlyFieldsStayAsTheyAre) {
    const std::string file = m_Shot + "/Scalars.ini";
    const std::string before = ReadBytes(file);
    AsNobody([&] {
        SetMode(file, 0444);
        SetStringDataC("Key4", "another value");
        EXPECT_EQ(ReadBytes(file), before);
        EXPECT_EQ(Field("Key4"), "of the shot 7, a value of some length");
    });
}

TEST_F(BadFiles, ReadOnlyDataStaysAsItIs) {
    const Snapshot before = TakeSnapshot(m_Shot);
    AsNobody([&] {
        const float values[16] = {};
        for (const char* name : {"/I.wvf", "/M.dmt", "/P.dpt"})
            SetMode(m_Shot + name, 0444);
        SetTrace("I", 10);
        SetMatrixC("M", 2, 2, 4, values, 0, 1, 0, 1, 0, 1);
        SetPGroupC("P", 2, 0, values, 0, 0);
        AppendPGroupC("P", 2, 0, values, 0, 0);
        SetScalarDataC("I\\t1", 3);
        EXPECT_EQ(TakeSnapshot(m_Shot), before);
        ExpectWorkingSession();
    });
}

TEST_F(BadFiles, ReadOnlyFoldersKeepWhatTheyHold) {
    const Snapshot before = TakeSnapshot(m_Lab);
    AsNobody([&] {
        const std::vector<std::string> folders = {
            m_Shot, m_Lab + "/Shots", m_Lab + "/Archive", m_Lab + "/ShotLists",
            m_Lab,  Scratch("Backup")};
        for (const std::string& folder : folders)
            SetMode(folder, 0555);
        SetTrace("New", 10);
        CreateShotC("A new one");
        EXPECT_EQ(Field("Date"), "");
        SetStringDataC("Date", "today");
        ASSERT_EQ(SetShotC("7"), 1);
        Expt.BackupShot();
        Expt.RenameShot("Renamed");
        ASSERT_EQ(SetShotC("8"), 1);
        SetExperimentC(m_Lab.c_str());
        EXPECT_EQ(SetShotC("7"), 1);
        for (const std::string& folder : folders)
            SetMode(folder, 0755);
        // The copy of a shot's fields is a file that may be written, also by a shot without a
        // folder.
        Snapshot after = TakeSnapshot(m_Lab);
        after["Archive/ScalarCache.ini"] = before.at("Archive/ScalarCache.ini");
        EXPECT_EQ(after, before);
        EXPECT_EQ(Names(Scratch("Backup")).size(), 0u);
        ExpectWorkingSession();
    });
}

TEST_F(BadFiles, ClosedFoldersReadAsEmpty) {
    const Snapshot before = TakeSnapshot(m_Lab);
    AsNobody([&] {
        SetMode(m_Shot, 0);
        EXPECT_EQ(Field("Key4"), "");
        SetStringDataC("Key5", "in the group's copy alone");
        EXPECT_EQ(Points("I"), 0);
        SetTrace("I", 10);
        Expt.DeleteShot();
        SetMode(m_Shot, 0755);
        Snapshot after = TakeSnapshot(m_Lab);
        EXPECT_EQ(after["Shots/Shot7/Scalars.ini"], before.at("Shots/Shot7/Scalars.ini"));
        EXPECT_EQ(after["Shots/Shot7/I.wvf"], before.at("Shots/Shot7/I.wvf"));
        ExpectWorkingSession();
    });
}

// ---- Another kind

TEST_F(BadFiles, FoldersInTheFilesPlacesReadAsNothing) {
    const std::vector<std::string> places = {
        m_Shot + "/Scalars.ini", m_Shot + "/I.wvf",  m_Shot + "/M.dmt",         m_Shot + "/P.dpt",
        m_Shot + "/G.dgm",       m_Lab + "/Lab.ini", m_Lab + "/ShotLists/L.txt"};
    for (const std::string& place : places) {
        fs::remove(place);
        MakeFolder(place + "/Inside");
    }
    SetExperimentC(m_Lab.c_str());
    ASSERT_EQ(SetShotC("7"), 1);
    SetStringDataC("Key4", "another value");
    EXPECT_EQ(Field("Key4"), "");
    const float values[16] = {};
    SetTrace("I", 10);
    EXPECT_EQ(Points("I"), 0);
    SetMatrixC("M", 2, 2, 4, values, 0, 1, 0, 1, 0, 1);
    AppendPGroupC("P", 2, 0, values, 0, 0);
    Geometry geometry;
    geometry.Read((m_Shot + "/G").c_str());
    EXPECT_EQ(geometry.m_Objects.Count(), 0);
    EXPECT_FALSE(geometry.Write((m_Shot + "/G").c_str()));
    DStringArray names;
    DArray<int> groups;
    Expt.GetShotList("L", -1, names, groups, nullptr);
    EXPECT_EQ(names.Count(), 0);
    Expt.SetBackupPath("/b");
    Expt.SaveShotList("L.txt", names, groups);
    for (const std::string& place : places)
        EXPECT_TRUE(Exists(place + "/Inside")) << place;
}

TEST_F(BadFiles, FilesInTheFoldersPlacesStayAsTheyAre) {
    const std::vector<std::string> places = {m_Shot, m_Lab + "/ShotLists", m_Lab + "/Query",
                                             Scratch("Backup")};
    for (const std::string& place : places)
        Replace(place, [&] { WriteBytes(place, "a file"); });
    SetExperimentC(m_Lab.c_str());
    EXPECT_EQ(SetShotC("7"), 0);
    ASSERT_TRUE(Expt.SetShot("7", 0));
    SetStringDataC("Key4", "another value");
    EXPECT_EQ(Field("Key4"), "");
    SetTrace("I", 10);
    Expt.BackupShot();
    Expt.DeleteShot();
    DStringArray names;
    DArray<int> groups;
    names.Add("7");
    groups.Add(0);
    Expt.SaveShotList("L.txt", names, groups);
    for (const std::string& place : places)
        EXPECT_EQ(ReadBytes(place), "a file") << place;
}

TEST_F(BadFiles, ExperimentThatIsAFileHoldsNothing) {
    WriteBytes(Scratch("File"), "a file");
    SetExperimentC(Scratch("File").c_str());
    EXPECT_EQ(CreateShotC("1"), 1);
    SetStringDataC("Key", "value");
    EXPECT_EQ(Field("Key"), "");
    EXPECT_EQ(ReadBytes(Scratch("File")), "a file");
    ExpectWorkingSession();
}

// ---- Links

TEST_F(BadFiles, LinkLoopsReadAsNothing) {
    for (const char* name : {"/Scalars.ini", "/I.wvf", "/M.dmt", "/P.dpt"}) {
        Replace(m_Shot + name, [&] { fs::create_symlink(m_Shot + name, m_Shot + name); });
    }
    fs::create_directory_symlink(m_Shot, m_Shot + "/Around");
    SetStringDataC("Key4", "another value");
    EXPECT_EQ(Field("Key4"), "");
    SetTrace("I", 10);
    EXPECT_EQ(Points("I"), 0);
    Expt.BackupShot();
    const std::string backup = Scratch("Backup/Lab/Shots/Shot7");
    EXPECT_TRUE(fs::is_symlink(backup + "/Around"));
    EXPECT_TRUE(fs::is_symlink(backup + "/I.wvf"));
    Expt.DeleteShot();
    EXPECT_FALSE(Exists(m_Shot));
    ExpectWorkingSession();
}

TEST_F(BadFiles, DanglingLinkIsWrittenThrough) {
    for (const char* name : {"/Scalars.ini", "/I.wvf"}) {
        Replace(m_Shot + name,
                [&] { fs::create_symlink(Scratch("Away") + (name + 1), m_Shot + name); });
    }
    EXPECT_EQ(Field("Key4"), "");
    EXPECT_EQ(Points("I"), 0);
    SetStringDataC("Key4", "another value");
    SetTrace("I", 10);
    EXPECT_EQ(ReadBytes(Scratch("AwayScalars.ini")), "[Fields]\r\nKey4=another value");
    EXPECT_EQ(Field("Key4"), "another value");
    EXPECT_EQ(Points("I"), 10);
}

// ---- Names too long

TEST_F(BadFiles, LongestNameIsKept) {
    const std::string shot(251, 's');   // with "Shot" in front 255 bytes
    const std::string trace(251, 't');  // with ".wvf" behind
    ASSERT_EQ(CreateShotC(shot.c_str()), 1);
    SetStringDataC("Key", "value");
    EXPECT_EQ(Field("Key"), "value");
    SetTrace(trace.c_str(), 10);
    EXPECT_EQ(Points(trace.c_str()), 10);
    ExpectWorkingSession();
}

TEST_F(BadFiles, NameTooLongNamesNothing) {
    const Snapshot before = TakeSnapshot(m_Lab);
    const std::string trace(252, 't');
    SetTrace(trace.c_str(), 10);
    EXPECT_EQ(Points(trace.c_str()), 0);
    for (const size_t length : {size_t{252}, size_t{5000}, size_t{100000}}) {
        const std::string shot(length, 's');
        EXPECT_EQ(SetShotC(shot.c_str()), 0);
        CreateShotC(shot.c_str());
        SetTrace("I", 10);
        EXPECT_EQ(Points("I"), 0);
        EXPECT_EQ(Field("Date"), "");
        ASSERT_EQ(SetShotC("7"), 1);
    }
    // A shot without a folder has its fields in the group's copy all the same.
    Snapshot after = TakeSnapshot(m_Lab);
    after["Archive/ScalarCache.ini"] = before.at("Archive/ScalarCache.ini");
    EXPECT_EQ(after, before);
    ExpectWorkingSession();
}

TEST_F(BadFiles, PathTooLongNamesNothing) {
    std::string deep = Scratch("Deep");
    while (deep.size() < 5000)
        deep += "/a folder with a name of some length";
    SetExperimentC(deep.c_str());
    CreateShotC("1");
    SetStringDataC("Key", "value");
    EXPECT_EQ(Field("Key"), "");
    SetTrace("I", 10);
    EXPECT_EQ(Points("I"), 0);
    Expt.BackupShot();
    Expt.RenameShot("2");
    Expt.DeleteShot();
    ExpectWorkingSession();
}

// ---- No descriptors

// A file that can't be opened to be read must not be taken for an empty one and replaced.
TEST_F(BadFiles, WithoutDescriptorsFieldsStayAsTheyAre) {
    const Snapshot before = TakeSnapshot(m_Lab);
    for (rlim_t free = 0; free < 4; ++free) {
        EXPECT_EQ(InChild([&] {
                      rlimit limit{};
                      getrlimit(RLIMIT_NOFILE, &limit);
                      const rlim_t all = limit.rlim_cur;
                      const int first = dup(0);
                      close(first);
                      limit.rlim_cur = static_cast<rlim_t>(first) + free;
                      setrlimit(RLIMIT_NOFILE, &limit);
                      SetStringDataC("Key4", "another value");
                      SetShotC("8");
                      Expt.BackupShot();
                      limit.rlim_cur = all;
                      setrlimit(RLIMIT_NOFILE, &limit);
                      ASSERT_EQ(SetShotC("7"), 1);
                      EXPECT_EQ(Field("Key3"), "of the shot 7, a value of some length");
                      ExpectWorkingSession();
                  }),
                  ChildEnd::Passed)
            << free << " descriptors";
        Restore(m_Lab, before);
    }
}
