// The library's paths and names, and the start-up of the main settings.
#include "system/DSystem.h"

#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include "core/CoreGlobal.h"
#include "system/DIni.h"
#include "types/MemoryWatch.h"
#include "types/StartUp.h"

namespace {

TARSEL_START_UP(TARSEL_START_DSYSTEM) DString m_TarselPath(DEmptyString, npos);
TARSEL_START_UP(TARSEL_START_DSYSTEM) DString m_UserPath(DEmptyString, npos);
TARSEL_START_UP(TARSEL_START_DSYSTEM) DString m_WorkingPath(DEmptyString, npos);
TARSEL_START_UP(TARSEL_START_DSYSTEM) DString m_ComputerName(DEmptyString, npos);

// The path of the running executable; empty if it can't be found out.
DString ExecutablePath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    return length < 1 ? DString() : DString(path, static_cast<int>(length));
}

void SetKey(const char* key, const char* value) {
    const MemoryWatch memory;
    const DString name(key);
    const DString text(value);
    if (memory.Whole()) TrIni.SetKeyValue(name, text);
}

void WriteFirstSettings() {
    for (const char* key : {"Path", "Experiment", "Query", "Shot", "Macro"}) {
        SetKey(key, "*");
    }
    TrIni.SetSection("Preferences");
    SetKey("UseLocalSettings", "True");
}

void OpenMainSettings() {
    const MemoryWatch memory;
    CreateFolder(m_UserPath);
    DString file = AppendPathElts(m_UserPath, "Tarsel.ini");
    const bool existed = FileExists(file);
    TrIni.SetFileName(file);
    TrIni.SetSection("Startup");
    if (!existed) WriteFirstSettings();
    TrIni.SetSection("Preferences");
    m_WorkingPath = TrIni.GetKeyValue("WorkingPath", m_UserPath);
    if (memory.Whole()) CreateFolder(m_WorkingPath);
    PublicWrite = TrIni.GetKeyBoolValue("PublicWriteAccess", false);
}

}  // namespace

DString GetTarselPath() { return m_TarselPath; }

DString GetUserPath() { return m_UserPath; }

DString GetWorkingPath() { return m_WorkingPath; }

DString GetComputerNameD() { return m_ComputerName; }

DString GetLocalSettingsPath() { return DString(getenv("HOME")) + "/.Tarsel"; }

void SetTarselPath(const DString& path) {
    if (path.IsEmpty()) {
        const DString executable = ExecutablePath();
        if (executable.IsEmpty()) return;
        DString name;
        SplitPathElts(executable, m_TarselPath, name);
    } else if (IsFullQual(path)) {
        m_TarselPath = path;
    } else {
        m_TarselPath = AppendPathElts(GetCurrentDirectoryD(), path);
    }
    SetUserPath();
}

void SetUserPath() {
    const MemoryWatch memory;
    const DString path = GetLocalSettingsPath();
    if (!memory.Whole()) return;
    m_UserPath = path;
    if (!Silent) OpenMainSettings();
}

void SetComputerNameD() {
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    m_ComputerName = DString(name).BeforeFirst('.', true);
}
