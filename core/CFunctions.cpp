// The C interface: the library, the session and its scalars.
#include "core/CFunctions.h"

#include <string.h>
#include <strings.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

constinit bool mFromExternal = false;
CFNotify CMNotify;

// A string result as StringArgs makes it, for the C pointers of a call.
void StringResult(DString text, int* length, char* buffer) {
    if (length) StringArgs(text, *length, buffer);
}

// A host that started the session by itself is told which shot it has now.
bool TellsHost() { return !mFromExternal && QNot; }

// "*" and the current directory's last element, without "Shot" in front.
DString NameFromCurrentDirectory() {
    const char prefix[] = "Shot";
    const int prefixLength = sizeof prefix - 1;
    DString folder;
    DString name;
    SplitPathElts(GetCurrentDirectoryD(), folder, name);
    if (strncasecmp(name, prefix, prefixLength) == 0) name = name.Mid(prefixLength, npos);
    return "*" + name;
}

DString ExpandTemplate(const DString& text) {
    DString result;
    int pos = 0;
    for (int open = text.Find('{', 0); open != npos;) {
        result += text.Mid(pos, open - pos);
        const int found = text.Find('}', open + 1);
        const int close = found == npos ? text.GetLength() : found;
        const DString expression = text.Mid(open + 1, close - open - 1);
        const float value = Expt.GetScalarData(expression, nullptr);
        if (!IsVF(value)) return "Error evaluating scalar expression " + expression;
        result << value;
        pos = close + 1;
        // The closing brace, not the opening one: templates with one pair are what callers write,
        // and what the rest of them gives is settled by this.
        open = text.Find('}', pos);
    }
    return result + text.Mid(pos, npos);
}

}  // namespace

void StringArgs(DString& text, int& length, char* buffer) {
    const int room = buffer ? std::max(length, 0) : 0;
    if (text.GetLength() > room) text.Truncate(room);
    length = std::min(text.GetLength(), room);  // a cut that finds no memory leaves the text whole
    if (length > 0) memcpy(buffer, text, static_cast<size_t>(length));
}

// ---- The library

void InitializeTarselC(const char* path) {
    const MemoryWatch memory;
    DString folder(path);
    const bool logging = folder.EndsWith("$L");
    if (logging) folder.TruncateBy(2);
    if (!memory.Whole()) return;
    if (folder == GetTarselPath()) {
        if (Logging) Log("InitializeTarselC called again");
        return;
    }
    CoreInit(folder);
    SetNotify(&CMNotify);
    ClearLog();
    Logging = logging;
    mFromExternal = true;
    if (logging) Log("InitializeTarselC called from external code at " + Now());
}

int TestFuncC() { return 316; }

void CSleep(int milliseconds) { DSleep(milliseconds); }

void NotifyC(int type, int value, const char* text) { Notify(type, value, text); }

// ---- The session

void GetStringC(int selector, int* length, char* buffer) {
    DString text;
    switch (selector) {
        case 0:
            text = GetTarselPath();
            break;
        case 1:
            text = Expt.GetShotName();
            break;
        case 2:
            text = Expt.GetShotFolder();
            break;
        case 3:
            text = Expt.GetExperimentFolder();
            break;
        case 4:
            text = GetLocalSettingsPath();
            break;
        case 5:
            text = AppendPathElts(GetLocalSettingsPath(), "MPIHosts.txt");
            break;
        case 6:
            text = Expt.GetExperimentName();
            break;
        case 99:
            text = "Test string from Tarsel";
            break;
        default:
            break;
    }
    StringResult(text, length, buffer);
}

int GetNodesC(int count) {
    DStringArray nodes;
    GetNodes(nodes, count);
    return count;
}

void SetExperimentC(const char* folder) {
    const MemoryWatch memory;
    const DString path(folder);
    if (mFromExternal && memory.Whole()) Expt.SetExperimentFolder(path);
}

int CreateShotC(const char* name) {
    const MemoryWatch memory;
    const DString given(name);
    DString request = given == "*" ? NameFromCurrentDirectory() : given;
    if (!memory.Whole() || Expt.CreateShot(request, "", false) < 0) {
        Message("Error creating shot " + given +
                " (most likely it already exists and name did not have *)" + " expt is " +
                Expt.GetExperimentPath());
        return 0;
    }
    if (TellsHost()) QNot->ShotChanged(request, -1, 0, 0);
    return 1;
}

int SetShotC(const char* name) {
    const MemoryWatch memory;
    const DString given(name);
    if (!memory.Whole() || !Expt.SetShot(given, -1)) {
        Message("Error setting shot (most likely it does not exist)");
        return 0;
    }
    if (TellsHost()) {
        Log("here");
        QNot->ShotChanged(given, -1, 0, 0);
    }
    return 1;
}

void GetStringDataC(const char* name, int* length, char* buffer) {
    StringResult(Expt.GetShotData(name), length, buffer);
}

void SetStringDataC(const char* name, const char* value) {
    const MemoryWatch memory;
    const DString key(name);
    const DString text(value);
    if (memory.Whole()) Expt.SetShotData(key, text);  // a value that is lost isn't an empty one
}

// ---- Scalars

float GetScalarDataC(const char* name) { return Expt.GetScalarData(name, nullptr); }

void GetScalarDataSafeC(const char* text, int* length, char* buffer) {
    constexpr int TemplateRoom = 60;
    if (!length) return;
    const bool isTemplate = *length >= TemplateRoom;
    StringResult(isTemplate ? ExpandTemplate(text) : DString(Expt.GetScalarData(text, nullptr)),
                 length, buffer);
}

void SetScalarDataC(const char* name, float value) { Expt.SetScalarData(name, value); }
