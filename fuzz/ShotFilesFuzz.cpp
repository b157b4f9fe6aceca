// The text files of a session: the experiment's definition, saved shot lists, the fields of shots,
// and the main settings. Whatever stands in them, and whatever set of shots is asked for, what
// comes out is consistent, quick, and written nowhere but below the experiment.
#include <time.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/Fuzzing.h"
#include "system/DSystem.h"

namespace {

const char* const Shots[] = {"e/Shots/Shot1",      "e/Shots/Shot2",      "e/Shots/ShotA0009",
                             "e/Shots/ShotA0010",  "Data1/Shot1",        "Data1/ShotA0010",
                             "Data1/Shota0011",    "Data2/ShotA0012",    "Data2/Shot2147483647",
                             "Data2/Shot*1",       "Data2/ShotA[1",      "Data2/ShotA-0001",
                             "Data2/ShotA000011a", "Data2/ShotX/Shot12", "e/Shots/ShotData1/A0010"};

void MakeShots() {
    for (const char* shot : Shots)
        std::filesystem::create_directories(Scratch(shot));
    WriteBytes(Scratch("e/Shots/Shot1/W.wvf"), "");
    WriteBytes(Scratch("Data2/ShotA0012/W.wvf"), "");
}

// A group may be any folder of the machine; only those of the scratch folder are written to.
bool IsOurs(const DString& folder) {
    std::error_code error;
    const auto real = std::filesystem::weakly_canonical(Bytes(folder), error).string();
    return !error && real.starts_with(ScratchFolder() + "/");
}

void CheckArrays(const DStringArray& names, const DArray<int>& groups, const DArray<long>& dates) {
    REQUIRE(groups.Count() == names.Count());
    REQUIRE(dates.Count() == names.Count());
    for (int i = 0; i < groups.Count(); ++i)
        REQUIRE(groups[i] < Expt.m_GroupPaths.Count());
}

// A group below -1 asks for every name of a range, however many.
int TakeGroup(Input& input) { return input.Below(6) - 1; }

void AskForSets(Input& input) {
    DStringArray names;
    DArray<int> groups;
    DArray<long> dates;
    const std::string list = input.Line();
    Expt.GetShotList(Text(list), TakeGroup(input), names, groups, &dates);
    if (!names.Count()) groups.Clear();
    if (!names.Count()) dates.Clear();
    CheckArrays(names, groups, dates);
    Expt.GetShotList("L", -1, names, groups, &dates);
    CheckArrays(names, groups, dates);
    for (int i = 0; i < groups.Count(); ++i)
        REQUIRE(groups[i] >= 0);
    const DString set = input.Bool() ? DString(".\\Shots") : Text(input.Line());
    const DString filter = Text(input.Line());
    Expt.GetShotSet(set, filter, Text(input.Line()), names, groups, &dates);
    CheckArrays(names, groups, dates);
}

// What a list holds comes back from the file that was saved, so far as the shots exist.
void MergeAndReload(Input& input) {
    DStringArray names;
    DArray<int> groups;
    for (int count = input.Below(8); count > 0; --count) {
        names.Add(Text(input.Line()));
        groups.Add(input.Below(7) - 2);
    }
    groups.ReSize(std::min(groups.Count(), input.Below(16)));
    DArray<int> before(groups);
    Expt.MergeShotList(Scratch("e/ShotLists/L").c_str(), "M.txt", names, groups);
    REQUIRE(groups.Count() == before.Count());
    for (int i = 0; i < groups.Count(); ++i)
        REQUIRE(groups[i] == before[i] || groups[i] == -1);
    DArray<int> merged(groups);
    Expt.MergeShotList(Scratch("e/ShotLists/M.txt").c_str(), "N.txt", names, merged);
    Expt.SaveShotList("K.txt", names, groups);
    Expt.GetShotList("K", -1, names, groups, nullptr);
    REQUIRE(names.Count() == groups.Count());
}

// Fields are written to the shot's file and to the group's, and read back from the first.
void WriteFields(Input& input) {
    if (!Expt.SetShot(Text(input.Line()), TakeGroup(input)) || !IsOurs(Expt.GetShotFolder()))
        return;
    if (!IsOurs(Expt.GetCurPath())) return;
    const bool paused = input.Bool();
    if (paused) Expt.SetPauseIO(true);
    for (int count = input.Below(5); count > 0; --count) {
        const std::string key = input.Line();
        const std::string value = input.Line();
        Expt.SetShotData(Text(key), Text(value));
        const DString read = Expt.GetShotData(Text(key));
        const std::string bytes = key + value + Bytes(Expt.m_ScalarsIni.m_Text);
        const bool plain = bytes.find('\0') == bytes.npos && bytes.find('\r') == bytes.npos &&
                           key.find("::") == key.npos && !key.starts_with('[') &&
                           !key.starts_with(';') && !key.empty() && !value.empty();
        const DString name(key.c_str());
        const bool special = name == DString("Shot") || name == DString("Comment");
        const std::string folder = Bytes(Expt.GetShotFolder());
        const bool there =
            folder.find('\0') == folder.npos && std::filesystem::is_directory(folder);
        if (plain && !special && there) REQUIRE(Bytes(read) == value);
    }
    if (paused) Expt.SetPauseIO(false);
    Expt.SetShotCacheData();
}

void ReadSettings(Input& input) {
    WriteBytes(Scratch(".Tarsel/Tarsel.ini"), input.Take(static_cast<size_t>(input.Byte())));
    TrIni.SetFileName(Scratch(".Tarsel/Tarsel.ini").c_str());
    DStringArray names;
    GetServers(names);
    GetPaths(names);
    GetNodes(names, input.Int16() % 300);
    const std::string key = input.Line();
    const std::string path = input.Line();
    SetDefaultPath(Text(key), Text(path));
    if (!key.starts_with(';')) REQUIRE(Bytes(GetDefaultPath(Text(key))) == path);
    const DString shared = GetUNCFileName(Text(path));
    GetLocalFileName(shared);
}

std::string TakePiece(Input& input) { return input.Take(static_cast<size_t>(input.Byte())); }

}  // namespace

void StartTarget() {
    std::filesystem::create_directories(Scratch(".Tarsel"));
    PublicWrite = false;
}

void RunInput(Input input) {
    const timespec start = [] {
        timespec now{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return now;
    }();
    for (const char* folder : {"e", "Data1", "Data2"})
        std::filesystem::remove_all(Scratch(folder));
    MakeShots();
    ReadSettings(input);
    WriteBytes(Scratch("e/e.ini"), "[Groups]\n..\\Data*;;\n" + TakePiece(input));
    REQUIRE(Expt.SetExperimentFolder(Scratch("e").c_str()));
    REQUIRE(Expt.m_Cues.Count() >= 1 && Expt.m_GroupPaths.Count() >= 1);
    std::filesystem::create_directories(Scratch("e/ShotLists"));
    WriteBytes(Scratch("e/ShotLists/L.txt"), TakePiece(input));
    WriteBytes(Scratch("e/Shots/Shot1/Scalars.ini"), TakePiece(input));
    WriteBytes(Scratch("e/Shots/ScalarCache.ini"), TakePiece(input));
    AskForSets(input);
    MergeAndReload(input);
    WriteFields(input);
    AskForSets(input);
    Expt.SetExperimentFolder("");
    Expt.m_ScalarsIni.SetFileName("");
    Expt.m_ScalarCacheIni.SetFileName("");
    timespec end{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
    REQUIRE(end.tv_sec - start.tv_sec < 5);
}
