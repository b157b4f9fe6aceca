// Random sequences of the C calls in one experiment: whatever a host does, in any order and with
// any names, no call leaves its buffers or its session in a state that the next one can't use.
#include "core/CFunctions.h"

#include <limits.h>
#include <math.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"
#include "support/Fuzzing.h"

namespace {

constexpr int MostSamples = 64;
constexpr char Untouched = '\x5A';

// A name from the input. It may lead to any shot, but not out of the experiment, at once or through
// the text of a field.
std::string Name(Input& input) {
    std::string name = input.Line().c_str();
    for (const char* way : {"..", ":", "!["}) {
        for (size_t at = name.find(way); at != std::string::npos; at = name.find(way)) {
            name.replace(at, strlen(way), "_");
        }
    }
    const size_t first = name.find_first_not_of("*");
    if (first != std::string::npos && strchr("/.\\", name[first])) name[first] = '_';
    return name;
}

// A string result: nothing is written beyond the room, and the length says what was.
template <typename Call>
std::string Result(int room, Call call) {
    std::string buffer(static_cast<size_t>(room) + 8, Untouched);
    int length = room;
    call(&length, buffer.data());
    REQUIRE(length >= 0 && length <= room);
    REQUIRE(buffer.find_first_not_of(Untouched, static_cast<size_t>(length)) == std::string::npos);
    return buffer.substr(0, static_cast<size_t>(length));
}

std::vector<float> Floats(Input& input, size_t count) {
    std::vector<float> values(count);
    for (float& value : values)
        value = input.Float();
    return values;
}

bool SameFloats(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// ---- One call of each kind, with its arguments from the input

void CallShot(Input& input) {
    const std::string name = Name(input);
    if (input.Bool()) {
        CreateShotC(name.c_str());
    } else {
        SetShotC(name.c_str());
    }
    Result(200, [](int* length, char* buffer) { GetStringC(1, length, buffer); });
}

void CallField(Input& input) {
    const int room = input.Byte();
    const std::string name = Name(input);
    const std::string value = input.Line();
    SetStringDataC(name.c_str(), value.c_str());
    Result(room, [&](int* length, char* buffer) { GetStringDataC(name.c_str(), length, buffer); });
}

void CallScalar(Input& input) {
    const int room = input.Byte();
    const float value = input.Float();
    const bool set = input.Bool();
    const std::string text = set ? Name(input) : input.Line();
    if (set) SetScalarDataC(text.c_str(), value);
    const float scalar = GetScalarDataC(text.c_str());
    REQUIRE(IsVF(scalar) || scalar == -DFMax);
    Result(room,
           [&](int* length, char* buffer) { GetScalarDataSafeC(text.c_str(), length, buffer); });
}

void CallTrace(Input& input) {
    const int points = input.Below(MostSamples);
    const float start = input.Float();
    const float step = input.Float();
    const bool pairs = input.Bool();
    const std::string name = Name(input);
    const std::vector<float> samples = Floats(input, static_cast<size_t>(points) * (pairs ? 2 : 1));
    if (pairs) {
        SetWaveformXYC(name.c_str(), points, samples.data());
    } else {
        SetWaveformC(name.c_str(), start, step, points, samples.data());
    }
    int stored = -1;
    float first = 0;
    float interval = 0;
    GetWaveformInfoC(name.c_str(), &stored, &first, &interval);
    REQUIRE(stored >= 0);
    std::vector<float> read(MostSamples, 1.0f);
    GetWaveformC(name.c_str(), input.Float(), input.Float(), input.Below(MostSamples), read.data());
}

void CallMatrix(Input& input) {
    const int n1 = input.Below(5);
    const int n2 = input.Below(5);
    const int n3 = input.Below(4);
    const std::string name = Name(input);
    const std::vector<float> values = Floats(input, static_cast<size_t>(n1 * n2 * n3));
    SetMatrixC(name.c_str(), n1, n2, n3, values.data(), input.Float(), input.Float(), input.Float(),
               input.Float(), input.Float(), input.Float());
    int size[3] = {-1, -1, -1};
    float start[3];
    float step[3];
    GetMatrixInfoC(name.c_str(), &size[0], &start[0], &step[0], &size[1], &start[1], &step[1],
                   &size[2], &start[2], &step[2]);
    for (const int n : size)
        REQUIRE(n >= 0);
    std::vector<float> read(5 * 5 * 4);
    GetMatrixC(name.c_str(), n1, n2, n3, read.data());
}

void CallParticles(Input& input) {
    const int count = input.Below(8);
    const int geometry = input.Below(3);
    const std::string name = Name(input);
    const std::vector<float> values = Floats(input, static_cast<size_t>(count) * 8);
    if (input.Bool()) {
        AppendPGroupC(name.c_str(), count, geometry, values.data(), input.Float(), input.Float());
    } else {
        SetPGroupC(name.c_str(), count, geometry, values.data(), input.Float(), input.Float());
    }
    int total = -1;
    int stored = 0;
    float a = 0;
    float b = 0;
    GetPGroupInfoC(name.c_str(), &total, &stored, &a, &b);
    std::vector<float> read(8 * 16);
    int wanted = input.Below(16);
    const int most = wanted;
    GetPGroupC(name.c_str(), &wanted, input.Below(8), read.data());
    REQUIRE(wanted >= 0 && wanted <= most);
}

// What a host of the class interface does between the C calls.
void CallSession(Input& input) {
    switch (input.Below(6)) {
        case 0:
            return Expt.SetPauseIO(true);
        case 1:
            return Expt.SetPauseIO(false);
        case 2:
            Expt.RenameShot(Name(input).c_str());
            return;
        case 3:
            Expt.DeleteShot();
            return;
        case 4:
            Expt.SetBackupPath(Scratch("Backup").c_str());
            return Expt.BackupShot();
        default:
            return SetExperimentC(Scratch("Discharge").c_str());
    }
}

void PlayCall(Input& input) {
    switch (input.Below(8)) {
        case 0:
            return CallShot(input);
        case 1:
            return CallField(input);
        case 2:
            return CallScalar(input);
        case 3:
            return CallTrace(input);
        case 4:
            return CallMatrix(input);
        case 5:
            return CallParticles(input);
        case 6:
            return CallSession(input);
        default: {
            const int selector = input.Below(9);
            Result(input.Byte(),
                   [&](int* length, char* buffer) { GetStringC(selector, length, buffer); });
        }
    }
}

// ---- Afterwards a plain session works

void RequireWorkingSession() {
    SetExperimentC(Scratch("Discharge").c_str());
    REQUIRE(CreateShotC("*1") == 1);
    // A pause that opening an experiment cut off is over only when another one has ended.
    Expt.SetPauseIO(true);
    Expt.SetPauseIO(false);
    SetStringDataC("field", "value");
    REQUIRE(Result(9, [](int* length, char* buffer) { GetStringDataC("field", length, buffer); }) ==
            "value");
    const std::vector<float> samples = {1.0f, 2.0f, 4.0f};
    SetWaveformC("trace", 0.5f, 0.25f, 3, samples.data());
    std::vector<float> read(3);
    GetWaveformC("trace", 0.5f, 0, 3, read.data());
    REQUIRE(SameFloats(read, samples));
    REQUIRE(GetScalarDataC("trace\\mx*2") == 8.0f);
}

}  // namespace

void StartTarget() {
    InitializeTarselC(Scratch("Install").c_str());
    HearNothing();
    // Where data names lead while no shot is selected.
    REQUIRE(mkdir(Scratch("Work").c_str(), 0755) == 0 && chdir(Scratch("Work").c_str()) == 0);
}

void RunInput(Input input) {
    constexpr int MostCalls = 24;
    SetExperimentC(Scratch("Discharge").c_str());
    for (int i = 0; i < MostCalls && !input.IsEmpty(); ++i)
        PlayCall(input);
    RequireWorkingSession();
    SetExperimentC("");
    for (const char* folder : {"Discharge", "Backup", "Work"})
        EmptyFolder(Scratch(folder));
}
