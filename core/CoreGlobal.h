/// The frame of the library: its constants, flags and global objects, the sinks through which it
/// speaks to its host, the log, the clock, and the start of a session.
///
/// The library keeps one experiment and one current shot per process, in global objects, on the
/// caller's thread. It never prints, aborts or throws by itself: what it says goes to the sink that
/// the host installed, or, where there is none, to standard output.
#pragma once

#include "types/DStringArray.h"

class DIni;
class Experiment;

// ---- Constants

/// The bound of the data objects' values. Parameter functions return -DFMax for a missing value.
extern const float DFMax;
extern const float pi;
/// The most particles that a read of a particle file takes where no count is stated.
extern const int MaxParticleBatch;

// ---- Flags

/// Verbose logging. Log doesn't look at it; who writes an extra line tests it first.
extern bool Logging;
/// Set by the host before the start: no settings file is made or read. The library never sets it.
extern bool Silent;
/// New folders are to be open to everybody; see CreateFolder. Read from the main settings at start.
extern bool PublicWrite;

// ---- Global objects

/// The main settings, attached to Tarsel.ini in the user folder from the start of a session on.
extern DIni TrIni;
/// The session: one experiment and its current shot.
extern Experiment Expt;
/// For hosts and plug-ins alone; the library doesn't touch it.
extern DStringArray SheetData;

// ---- Sinks

/// What a notification is. Other values pass through Notify and mean what the host makes of them.
enum NotifyType : int {
    NT_Display = 1,         ///< a status text
    NT_Message = 2,         ///< a text for the user
    NT_Log = 5,             ///< a line for the log
    NT_MsgBox = 7,          ///< a text that the user should confirm
    NT_MacroCallback = 10,  ///< sent by MacroCallback; no sink of the library answers it
    NT_RunMacro = 11        ///< a macro to run; not the number that MacroCallback sends
};

/// The sink that a host implements to hear the library. The order of the operations is part of the
/// binary interface.
class DNotify {
public:
    virtual void Notify(NotifyType type, int value, const DString& text) = 0;
    /// For hosts and plug-ins that are handed a sink; the library never asks.
    virtual bool AbortRequested() { return false; }
    virtual ~DNotify() = default;
};

/// The sink of the C and IDL interfaces. An empty text is dropped. NT_Message is printed on
/// standard output, with a line feed unless the text ends in one; NT_Log goes to the log,
/// NT_RunMacro to the function RunMacro(const DString&, int) of the plug-in module Calculation in
/// the install folder; all else is dropped. The value isn't used.
class CFNotify : public DNotify {
public:
    void Notify(NotifyType type, int value, const DString& text) override;
};

/// A host's second sink, told when the C interface creates or selects a shot in a process that was
/// started by CoreInit and not by InitializeTarselC.
class QNotify {
public:
    /// A slot of the binary interface that the library never calls.
    virtual void Reserved() {}
    /// The shot's name; then -1, 0 and 0.
    virtual void ShotChanged(DString name, int, int, int) = 0;

protected:
    ~QNotify() = default;
};

/// The second sink, null for none.
extern QNotify* QNot;

/// Install a sink. No ownership is taken; null removes it.
void SetNotify(DNotify* sink);
void SetQNotify(QNotify* sink);

/// Hands a notification to the sink; with none, prints the text on standard output, with a newline.
/// A sink may call back into the library from there.
void Notify(int type, int value, const DString& text);
/// Notify with NT_Display, NT_Message and NT_MsgBox and the value 0.
void Display(const DString& text);
void Message(const DString& text);
void MsgBox(const DString& text);
/// Notify with NT_MacroCallback and the value 0. With no sink it does nothing at all.
void MacroCallback(const DString& text);

// ---- Log

/// Appends a line to Log.txt in the user folder: the text, " by ", and the seconds since the start
/// of the session as "%.2e" without a leading exponent zero or "+". The file is opened and closed
/// for each line. An open that fails is tried again every 10 ms, five times in all; then the line
/// is lost silently.
void Log(const DString& text);
/// Deletes the log and begins a new one with three lines: time, computer and install folder.
void ClearLog();

// ---- Clock

/// Local time as "%m/%d/%Y %H:%M:%S".
DString Now();
/// Seconds since the epoch, with microseconds; 0 if the clock fails.
double Timer();
/// Sleeps; a negative time returns at once.
void DSleep(int milliseconds);

// ---- Numbers

/// A valid value: not a NaN, and strictly between -9.9e34 and 9.9e34.
bool IsVF(float value);

// ---- Session

/// Starts a session: no sinks, no logging, the clock of the log at zero, the computer's name taken,
/// and SetTarselPath(path). Leaves Expt, TrIni and the loaded modules as they are. A host that
/// links the class interface calls this, then SetNotify with its own sink.
void CoreInit(const DString& path);
