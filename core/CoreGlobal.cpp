// The library's frame: its global state, the way of a notification to the host, the log, the clock,
// and the start of a session.
#include "core/CoreGlobal.h"

#include <stdio.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

#include "experiment/Experiment.h"
#include "system/DFile.h"
#include "system/DIni.h"
#include "system/DLibrary.h"
#include "system/DSystem.h"
#include "types/StartUp.h"

constinit const float DFMax = 3.3e38f;
constinit const float pi = 3.14159274f;
constinit const int MaxParticleBatch = 10000000;

constinit bool Logging = false;
constinit bool Silent = false;
constinit bool PublicWrite = false;
constinit QNotify* QNot = nullptr;

TARSEL_START_UP(TARSEL_START_CORE_GLOBAL) DIni TrIni;
TARSEL_START_UP(TARSEL_START_CORE_GLOBAL) Experiment Expt;
TARSEL_START_UP(TARSEL_START_CORE_GLOBAL) DStringArray SheetData;

namespace {

constinit DNotify* mNotify = nullptr;
/// The Timer value at the start of the session, from which the log counts.
constinit double sttime = 0.0;

DString LogPath() { return AppendPathElts(GetUserPath(), "Log.txt"); }

DString LogLine(const DString& text) {
    const double now = Timer();
    return text + " by " + Format(now > sttime ? now - sttime : 0.0, "%.2e");
}

// The plug-in module that runs macros. What it can't be found for has gone out as a message.
void RunMacro(const DString& text) {
    using Entry = void (*)(const DString&, int);
    bool found = true;
    void* entry = GetProc(GetTarselPath(), "Calculation", "RunMacro", found, 0);
    if (entry) reinterpret_cast<Entry>(entry)(text, 0);
}

// For a sink of a host that is not there.
void Print(const DString& text) { puts(text); }

}  // namespace

// ---- Sinks

void SetNotify(DNotify* sink) { mNotify = sink; }

void SetQNotify(QNotify* sink) { QNot = sink; }

void Notify(int type, int value, const DString& text) {
    if (mNotify) {
        mNotify->Notify(static_cast<NotifyType>(type), value, text);
    } else {
        Print(text);
    }
}

void Display(const DString& text) { Notify(NT_Display, 0, text); }

void Message(const DString& text) { Notify(NT_Message, 0, text); }

void MsgBox(const DString& text) { Notify(NT_MsgBox, 0, text); }

void MacroCallback(const DString& text) {
    if (mNotify) mNotify->Notify(NT_MacroCallback, 0, text);
}

void CFNotify::Notify(NotifyType type, int, const DString& text) {
    if (text.IsEmpty()) return;
    if (type == NT_RunMacro) {
        RunMacro(text);
    } else if (type == NT_Log) {
        Log(text);
    } else if (type == NT_Message) {
        fputs(text, stdout);
        if (!text.EndsWith("\n")) fputc('\n', stdout);
        fflush(stdout);
    }
}

// ---- Log

void Log(const DString& text) {
    constexpr int Tries = 5;
    constexpr int PauseMs = 10;
    for (int i = 0; i < Tries; ++i) {
        if (DFile::WriteLine(LogPath(), LogLine(text))) return;
        DSleep(PauseMs);
    }
}

void ClearLog() {
    DeleteFileD(LogPath());
    Log("Log initialized at " + Now());
    Log("Tarsel running on " + GetComputerNameD());
    Log("Tarselpath is " + GetTarselPath());
}

// ---- Clock

DString Now() { return DString(static_cast<long>(time(nullptr))); }

double Timer() {
    struct timeval now;
    if (gettimeofday(&now, nullptr) != 0) return 0.0;
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) * 1e-6;
}

void DSleep(int milliseconds) {
    constexpr int LongestSleep = 1000000;  // in ms; usleep counts microseconds in 32 bits
    while (milliseconds > 0) {
        const int pause = std::min(milliseconds, LongestSleep);
        usleep(static_cast<useconds_t>(pause) * 1000);
        milliseconds -= pause;
    }
}

// ---- Numbers

bool IsVF(float value) {
    const double wide = static_cast<double>(value);
    return wide > -9.9e34 && wide < 9.9e34;
}

// ---- Session

void CoreInit(const DString& path) {
    mNotify = nullptr;
    QNot = nullptr;
    Logging = false;
    sttime = Timer();
    SetComputerNameD();
    SetTarselPath(path);
}
