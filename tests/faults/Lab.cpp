// The experiment to be harmed; see Lab.h.
#include "faults/Lab.h"

#include <grp.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "data/Geometry.h"
#include "experiment/Experiment.h"
#include "faults/Faults.h"
#include "support/Support.h"

namespace fs = std::filesystem;

namespace {

const std::string mFolderMark = "/";

std::vector<float> Ramp(int count, float from) {
    std::vector<float> values(static_cast<size_t>(count));
    for (float& value : values)
        value = from++;
    return values;
}

std::string Fields(const std::string& shot) {
    std::string fields;
    for (int i = 0; i < 12; ++i) {
        fields +=
            "Key" + std::to_string(i) + "=of the shot " + shot + ", a value of some length\r\n";
    }
    return fields + "Trace=I\r\nCharge=2.5";
}

void MakeShot(const std::string& folder, const std::string& shot) {
    MakeFolder(folder + "/Shot" + shot);
    WriteBytes(folder + "/Shot" + shot + "/Scalars.ini", "[Fields]\r\n" + Fields(shot));
}

std::string CacheSection(const std::string& shot) {
    return "[Shot" + shot + "]\r\n" + Fields(shot);
}

void MakeData(const char* shot) {
    SetShotC(shot);
    SetWaveformC("I", 10, 0.5f, 100, Ramp(100, 0).data());
    SetMatrixC("M", 2, 3, 2, Ramp(12, 1).data(), 10, 0.5f, 0, 1, -1, 2);
    SetPGroupC("P", 2, 0, Ramp(16, 1).data(), 8, 7);
    Geometry geometry;
    geometry.m_Objects.Size(2);
    geometry.m_Objects[0].m_Kind = 1;
    geometry.m_Objects[0].m_Name = "the name of a body that is long enough";
    geometry.Write(Expt.GetDataFileName("G"));
}

bool IsText(const std::string& path) { return path.ends_with(".ini") || path.ends_with(".txt"); }

std::multiset<std::string> Lines(const std::string& text) {
    std::multiset<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r')) line.pop_back();
        lines.insert(line);
    }
    return lines;
}

std::string ContentIn(const Snapshot& state, const std::string& path) {
    const auto found = state.find(path);
    return found == state.end() ? std::string() : found->second;
}

// A text file that stands between the states.
void ExpectLinesOf(const std::vector<Snapshot>& states, const std::string& path,
                   const std::string& content) {
    std::multiset<std::string> known;
    std::multiset<std::string> common = Lines(ContentIn(states[0], path));
    for (const Snapshot& state : states) {
        const std::multiset<std::string> lines = Lines(ContentIn(state, path));
        std::multiset<std::string> both;
        std::set_intersection(common.begin(), common.end(), lines.begin(), lines.end(),
                              std::inserter(both, both.end()));
        common = both;
        known.insert(lines.begin(), lines.end());
    }
    const std::multiset<std::string> lines = Lines(content);
    EXPECT_TRUE(std::includes(lines.begin(), lines.end(), common.begin(), common.end()))
        << path << " lost lines:\n"
        << content;
    EXPECT_TRUE(std::includes(known.begin(), known.end(), lines.begin(), lines.end()))
        << path << " has strange lines:\n"
        << content;
}

}  // namespace

Snapshot TakeSnapshot(const std::string& folder) {
    Snapshot snapshot;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = entry.path().string();
        snapshot[path.substr(folder.size() + 1)] =
            entry.is_directory() ? mFolderMark : ReadBytes(path);
    }
    return snapshot;
}

void Restore(const std::string& folder, const Snapshot& snapshot) {
    const Snapshot now = TakeSnapshot(folder);
    for (const auto& [path, content] : now) {
        if (!snapshot.contains(path)) fs::remove_all(folder + "/" + path);
    }
    for (const auto& [path, content] : snapshot) {
        const std::string full = folder + "/" + path;
        if (content == mFolderMark) {
            fs::create_directories(full);
        } else if (!now.contains(path) || now.at(path) != content) {
            WriteBytes(full, content);
        }
    }
}

void MakeLab() {
    for (const auto& entry : fs::directory_iterator(ScratchFolder()))
        fs::remove_all(entry.path());
    const std::string lab = Scratch("Lab");
    const std::string shots = lab + "/Shots";
    MakeShot(shots, "7");
    MakeShot(shots, "8");
    MakeShot(lab + "/Archive", "Old");
    WriteBytes(shots + "/ScalarCache.ini", CacheSection("8") + "\r\n" + CacheSection("7"));
    WriteBytes(lab + "/Archive/ScalarCache.ini", CacheSection("Old"));
    WriteBytes(lab + "/Lab.ini",
               "[General]\r\nDescription=Spark gap, 2 mm\r\n[Groups]\r\n.\\Archive;;older shots\r\n"
               "[ShotCreation]\r\n#=.\\Shots\r\n*=.\\Archive\r\n[Backup]\r\nPath=..\\Backup");
    MakeFolder(lab + "/ShotLists");
    WriteBytes(lab + "/ShotLists/L.txt", "7;..\\Lab/Shots\r\n8;..\\Lab/Shots\r\nOld;.\\Archive");
    MakeFolder(Scratch("Backup"));
    MakeFolder(Scratch(".Tarsel"));
    WriteBytes(Scratch(".Tarsel/Tarsel.ini"),
               "[Preferences]\r\nUseLocalSettings=True\r\n[Nodes]\r\nfirst=1\r\nsecond=2\r\n"
               "[Translations]\r\n\\\\atlas\\data=/mnt/atlas");
    const FixedTime time(1000000000);
    ASSERT_EQ(InChild([] {
                  OpenLab();
                  for (const char* shot : {"Old", "8", "7"})
                      MakeData(shot);
              }),
              ChildEnd::Passed);
}

void OpenLab() {
    InitializeTarselC("/opt/tarsel");
    SetExperimentC(Scratch("Lab").c_str());
    ASSERT_EQ(SetShotC("7"), 1);
}

void ExpectOneOf(const std::vector<Snapshot>& states, const std::string& folder, bool between) {
    Snapshot now = TakeSnapshot(folder);
    Snapshot all = now;
    for (const Snapshot& state : states)
        all.insert(state.begin(), state.end());
    for (const auto& [path, ignored] : all) {
        if (path.ends_with("Log.txt")) continue;
        const auto isAsNow = [&](const Snapshot& state) {
            return state.contains(path) == now.contains(path) &&
                   ContentIn(state, path) == ContentIn(now, path);
        };
        if (std::any_of(states.begin(), states.end(), isAsNow)) continue;
        const bool known = std::any_of(states.begin(), states.end(),
                                       [&](const Snapshot& s) { return s.contains(path); });
        if (between && known && now.contains(path) && IsText(path)) {
            ExpectLinesOf(states, path, now[path]);
        } else {
            ADD_FAILURE() << path << (now.contains(path) ? " is in no known state" : " is gone");
        }
    }
}

void ExpectWorkingSession() {
    InitializeTarselC("/opt/tarsel");
    SetExperimentC(Scratch("Lab").c_str());
    ASSERT_EQ(SetShotC("Old"), 1);
    EXPECT_EQ(Text(Expt.GetShotData("Key3")), "of the shot Old, a value of some length");
    ASSERT_EQ(SetShotC("8"), 1);
    EXPECT_EQ(GetScalarDataC("I\\mx+Charge"), 99 + 2.5f);
    CreateShotC("*7");
    ASSERT_EQ(Text(Expt.GetShotName()), "7");
    SetStringDataC("Later", "a value that was set later");
    EXPECT_EQ(Text(Expt.GetShotData("Later")), "a value that was set later");
    const std::vector<float> samples = Ramp(50, 3);
    std::vector<float> read(50);
    SetWaveformC("Later", 0, 1, 50, samples.data());
    GetWaveformC("Later", 0, 1, 50, read.data());
    EXPECT_EQ(read, samples);
}

void AsNobody(const std::function<void()>& body) {
    constexpr uid_t Nobody = 65534;
    if (geteuid() == 0) {
        ASSERT_EQ(chown(ScratchFolder().c_str(), Nobody, Nobody), 0);
        for (const auto& entry : fs::recursive_directory_iterator(ScratchFolder()))
            ASSERT_EQ(lchown(entry.path().c_str(), Nobody, Nobody), 0);
    }
    EXPECT_EQ(InChild([&] {
                  if (geteuid() == 0) {
                      ASSERT_EQ(setgroups(0, nullptr), 0);
                      ASSERT_EQ(setgid(Nobody), 0);
                      ASSERT_EQ(setuid(Nobody), 0);
                  }
                  body();
              }),
              ChildEnd::Passed);
}
