// A session: shots and their fields, settings documents, sets of shots, and scalars of fields.
#include <dirent.h>
#include <fcntl.h>
#include <ini.h>
#include <muParser.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/Bench.h"
#include "system/DIni.h"

namespace {

constexpr int Fields = 20;

// ---- Experiments

std::string ShotNumber(int number) {
    char text[16];
    snprintf(text, sizeof text, "%05d", number);
    return text;
}

// The lines of a shot's fields, some 300 bytes.
std::string FieldLines() {
    std::string lines;
    for (int i = 0; i < Fields; ++i)
        lines += "\r\nfield" + std::to_string(i) + "=" + std::to_string(1.25 + i * 3.5);
    return lines;
}

// An experiment of its own for each size: the shots 00001 and up in group 0, each a folder, the
// first with its fields, and all in the file of the group.
std::string ExperimentOf(int shots) {
    const std::string folder = Scratch("Shots" + std::to_string(shots));
    if (std::filesystem::exists(folder)) return folder;
    std::string cache;
    for (int i = 1; i <= shots; ++i) {
        std::filesystem::create_directories(folder + "/Shots/Shot" + ShotNumber(i));
        cache += (i > 1 ? "\r\n[Shot" : "[Shot") + ShotNumber(i) + "]" + FieldLines();
    }
    WriteBytes(folder + "/Shots/ScalarCache.ini", cache);
    WriteBytes(folder + "/Shots/Shot00001/Scalars.ini", "[Fields]" + FieldLines());
    return folder;
}

std::string GroupOf(int shots) { return ExperimentOf(shots) + "/Shots"; }

// The experiment is open and its first shot selected.
void Select(int shots) {
    Expt.SetPauseIO(false);
    Expt.SetExperimentFolder(ExperimentOf(shots).c_str());
    Expt.SetShot("00001", 0);
}

// ---- Yardsticks of the file system

// What a file holds, in memory that isn't zeroed first.
struct FileBytes {
    std::unique_ptr<char[]> m_Bytes;
    size_t m_Length;
};

FileBytes ReadFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat about {};
    fstat(file, &about);
    const size_t length = static_cast<size_t>(about.st_size);
    FileBytes bytes{std::make_unique_for_overwrite<char[]>(length), length};
    if (read(file, bytes.m_Bytes.get(), length) < 0) abort();
    close(file);
    return bytes;
}

void WriteFile(const std::string& path, const FileBytes& bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (write(file, bytes.m_Bytes.get(), bytes.m_Length) < 0) abort();
    close(file);
}

template <typename Visit>
void ForEachEntry(const std::string& folder, Visit visit) {
    DIR* const entries = opendir(folder.c_str());
    while (const dirent* entry = readdir(entries))
        visit(entry->d_name);
    closedir(entries);
}

void ReadAndLstatEach(const std::string& folder) {
    int folders = 0;
    ForEachEntry(folder, [&](const char* name) {
        struct stat about;
        folders += lstat((folder + "/" + name).c_str(), &about) == 0 && S_ISDIR(about.st_mode);
    });
    benchmark::DoNotOptimize(folders);
}

// ---- Fields, not paused

void GetFieldOurs(benchmark::State& state) {
    Select(1);
    const DString key("field7");
    for (auto _ : state)
        benchmark::DoNotOptimize(Expt.GetShotData(key));
}

void GetFieldYardstick(benchmark::State& state) {
    const std::string path = GroupOf(1) + "/Shot00001/Scalars.ini";
    for (auto _ : state)
        benchmark::DoNotOptimize(ReadFile(path));
}

const Row mGetField{"GetShotData", "20 fields", 2, GetFieldOurs, GetFieldYardstick};

template <int Shots>
void SetFieldOurs(benchmark::State& state) {
    Select(Shots);
    int count = 0;
    for (auto _ : state)
        Expt.SetShotData("field7", ++count % 2 ? "12.5" : "13.5");
}

template <int Shots>
void SetFieldYardstick(benchmark::State& state) {
    const std::string group = GroupOf(Shots);
    for (auto _ : state) {
        for (const char* name : {"/ScalarCache.ini", "/Shot00001/Scalars.ini"})
            WriteFile(group + name, ReadFile(group + name));
    }
}

const Row mSetField1000{"SetShotData", "1,000 shots", 3, SetFieldOurs<1000>,
                        SetFieldYardstick<1000>};
const Row mSetField10000{"SetShotData", "10,000 shots", 3, SetFieldOurs<10000>,
                         SetFieldYardstick<10000>};

// ---- Fields, paused

std::string Folded(std::string key) {
    for (char& c : key)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return key;
}

std::unordered_map<std::string, std::string> FieldMap() {
    std::unordered_map<std::string, std::string> map;
    for (int i = 0; i < Fields; ++i)
        map["field" + std::to_string(i)] = std::to_string(1.25 + i * 3.5);
    return map;
}

void GetPausedOurs(benchmark::State& state) {
    Select(1);
    Expt.SetPauseIO(true);
    const DString key("Field7");
    for (auto _ : state)
        benchmark::DoNotOptimize(Expt.GetShotData(key));
    Expt.SetPauseIO(false);
}

void GetPausedYardstick(benchmark::State& state) {
    const auto map = FieldMap();
    const std::string key("Field7");
    for (auto _ : state) {
        std::string value = map.find(Folded(key))->second;
        benchmark::DoNotOptimize(value);
    }
}

const Row mGetPaused{"GetShotData, paused", "20 fields", 3, GetPausedOurs, GetPausedYardstick};

void SetPausedOurs(benchmark::State& state) {
    Select(1000);
    Expt.SetPauseIO(true);
    const DString key("Field7");
    const DString values[] = {"12.5", "13.5"};
    int count = 0;
    for (auto _ : state)
        Expt.SetShotData(key, values[++count % 2]);
    Expt.SetPauseIO(false);
}

void SetPausedYardstick(benchmark::State& state) {
    auto map = FieldMap();
    const std::string key("Field7");
    const std::string values[] = {"12.5", "13.5"};
    int count = 0;
    for (auto _ : state)
        map[Folded(key)] = values[++count % 2];
    benchmark::DoNotOptimize(map);
}

const Row mSetPaused{"SetShotData, paused", "20 fields", 3, SetPausedOurs, SetPausedYardstick};

// ---- Scalars

const char OurExpression[] = "field1*2+field2/field3-(field4+field5)*field6";

void ScalarOurs(benchmark::State& state) {
    Select(1);
    Expt.SetPauseIO(true);
    const DString expression(OurExpression);
    for (auto _ : state)
        benchmark::DoNotOptimize(Expt.GetScalarData(expression, nullptr));
    Expt.SetPauseIO(false);
}

void ScalarYardstick(benchmark::State& state) {
    mu::Parser parser;
    std::vector<double> values(7);
    for (size_t i = 1; i < values.size(); ++i) {
        values[i] = 1.25 + static_cast<double>(i) * 3.5;
        parser.DefineVar("field" + std::to_string(i), &values[i]);
    }
    for (auto _ : state) {
        parser.SetExpr(OurExpression);
        benchmark::DoNotOptimize(parser.Eval());
    }
}

const Row mScalar{"GetScalarData, paused", "6 fields", 1, ScalarOurs, ScalarYardstick};

// ---- Settings documents

// The file of a group of 10,000 shots, more than 3 MB.
std::string LargeSettings() { return GroupOf(10000) + "/ScalarCache.ini"; }

void LoadOurs(benchmark::State& state) {
    const DString path(LargeSettings().c_str());
    for (auto _ : state) {
        const DIni ini(path);
        benchmark::DoNotOptimize(&ini);
    }
}

using SettingsMap = std::map<std::string, std::string>;

int TakeSetting(void* map, const char* section, const char* name, const char* value) {
    (*static_cast<SettingsMap*>(map))[std::string(section) + "=" + name] = value;
    return 1;
}

void LoadYardstick(benchmark::State& state) {
    const std::string path = LargeSettings();
    for (auto _ : state) {
        SettingsMap map;
        if (ini_parse(path.c_str(), TakeSetting, &map) != 0) state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(&map);
    }
}

const Row mLoad{"DIni load", "10,000 sections", 1, LoadOurs, LoadYardstick};

// ---- Shots by name

void FindShotOurs(benchmark::State& state) {
    Select(10000);
    const DString names[] = {"00002", "05000"};
    int count = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(Expt.SetShot(names[++count % 2], -1));
}

void FindShotYardstick(benchmark::State& state) {
    const std::string paths[] = {GroupOf(10000) + "/Shot00002", GroupOf(10000) + "/Shot05000"};
    int count = 0;
    for (auto _ : state) {
        struct stat about;
        benchmark::DoNotOptimize(lstat(paths[++count % 2].c_str(), &about));
    }
}

const Row mFindShot{"SetShot, found", "10,000 shots", 1.5, FindShotOurs, FindShotYardstick};

void MissShotOurs(benchmark::State& state) {
    Select(10000);
    const DString name("99999");
    for (auto _ : state)
        benchmark::DoNotOptimize(Expt.SetShot(name, -1));
}

void MissShotYardstick(benchmark::State& state) {
    const std::string folder = GroupOf(10000);
    for (auto _ : state) {
        int entries = 0;
        ForEachEntry(folder, [&](const char*) { ++entries; });
        benchmark::DoNotOptimize(entries);
    }
}

const Row mMissShot{"SetShot, not found", "10,000 shots", 1.5, MissShotOurs, MissShotYardstick};

// ---- Sets of shots

void AllShotsYardstick(benchmark::State& state) {
    const std::string folder = GroupOf(10000);
    for (auto _ : state)
        ReadAndLstatEach(folder);
}

void ShotSetOurs(benchmark::State& state) {
    Select(10000);
    DStringArray names;
    DArray<int> groups;
    for (auto _ : state)
        Expt.GetShotSet(".\\Shots", "*", "", names, groups, nullptr);
    if (names.Count() != 10000) state.SkipWithError("not all shots");
}

const Row mShotSet{"GetShotSet", "10,000 shots", 1.5, ShotSetOurs, AllShotsYardstick};

void ShotListOurs(benchmark::State& state, const char* list) {
    Select(10000);
    DStringArray names;
    DArray<int> groups;
    Expt.GetShotSet(".\\Shots", "*", "", names, groups, nullptr);
    std::filesystem::create_directories(ExperimentOf(10000) + "/ShotLists");
    Expt.SaveShotList("All.txt", names, groups);
    for (auto _ : state)
        Expt.GetShotList(list, -1, names, groups, nullptr);
    if (names.Count() != 10000) state.SkipWithError("not all shots");
}

void SavedListOurs(benchmark::State& state) { ShotListOurs(state, "All"); }

void RangeOurs(benchmark::State& state) { ShotListOurs(state, "00000:10999"); }

const Row mSavedList{"GetShotList, saved list", "10,000 shots", 1.5, SavedListOurs,
                     AllShotsYardstick};
const Row mRange{"GetShotList, range", "10,000 of 11,000", 1.5, RangeOurs, AllShotsYardstick};

}  // namespace
