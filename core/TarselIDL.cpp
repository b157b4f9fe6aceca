// The IDL interface.
#include "core/TarselIDL.h"

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "core/TraceAccess.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"

namespace {

CFNotify CMNotify;

constexpr int Success = 0;
constexpr int Failure = -1;

// A call's arguments: texts stand in the array, numbers and arrays behind pointers.
const char* Text(void* argument) { return static_cast<const char*>(argument); }
int* Int(void* argument) { return static_cast<int*>(argument); }
float* Float(void* argument) { return static_cast<float*>(argument); }

// The call has its own number of arguments, and those from `firstNumber` on lead somewhere.
bool HasArguments(int argc, void* argv[], int expected, int firstNumber) {
    if (argc != expected || !argv) return false;
    for (int i = firstNumber; i < expected; ++i) {
        if (!argv[i]) return false;
    }
    return true;
}

int TellMissing(const char* name) {
    Message("Error reading waveform info for " + DString(name) +
            " (most likely it does not exist)");
    return Failure;
}

}  // namespace

int InitializeTarselIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 2, 2)) return Failure;
    CoreInit(Text(argv[0]));
    SetNotify(&CMNotify);
    ClearLog();
    Log("Initialized by IDL at " + Now());
    Expt.SetExperimentFolder(Text(argv[1]));
    return Success;
}

int CreateShotIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 1, 1)) return Failure;
    DString request(Text(argv[0]));
    if (Expt.CreateShot(request, "", true) >= 0) return Success;
    Message("Error creating shot (most likely it already exists and name did not have *)");
    return Failure;
}

int SetShotIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 1, 1)) return Failure;
    if (Expt.SetShot(Text(argv[0]), -1)) return Success;
    Message("Error setting shot (most likely it does not exist)");
    return Failure;
}

int SetScalarIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 2, 1)) return Failure;
    Expt.SetScalarData(Text(argv[0]), *Float(argv[1]));
    return Success;
}

int GetScalarIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 2, 1)) return Failure;
    *Float(argv[1]) = Expt.GetScalarData(Text(argv[0]), nullptr);
    return Success;
}

int GetWaveformInfoIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 4, 1)) return Failure;
    GetWaveformInfoC(Text(argv[0]), Int(argv[3]), Float(argv[1]), Float(argv[2]));
    return *Int(argv[3]) == 0 ? TellMissing(Text(argv[0])) : Success;
}

int GetWaveformIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 5, 1)) return Failure;
    Waveform waveform(0);
    ReadWaveform(Text(argv[0]), -1, waveform);
    if (waveform.Count() == 0) return TellMissing(Text(argv[0]));
    CopyAligned(waveform, *Float(argv[1]), *Float(argv[2]), *Int(argv[3]), Float(argv[4]));
    return Success;
}

int SetWaveformIDL(int argc, void* argv[]) {
    if (!HasArguments(argc, argv, 5, 1)) return Failure;
    SetWaveformC(Text(argv[0]), *Float(argv[1]), *Float(argv[2]), *Int(argv[3]), Float(argv[4]));
    return Success;
}
