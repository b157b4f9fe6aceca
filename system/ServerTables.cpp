// The tables of the main settings: servers, paths, nodes and remembered paths.
#include "core/CoreGlobal.h"
#include "system/DFile.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

// What stands before the "=" counts; a line without one counts whole.
DString NameOf(const DString& line) { return line.BeforeFirst('=', true); }

bool IsBlank(const DString& name) { return name.Trim().IsEmpty(); }

// Repeats the names from the first on until there are `count`.
void RepeatNames(DStringArray& names, int count) {
    const int own = names.Count();
    if (own == 0 || count <= own) return;
    names.Reserve(count);
    for (int i = own; i < count; ++i)
        names.Add(names[i % own]);
}

}  // namespace

void GetServers(DStringArray& result) {
    result.Clear();
    const DStringArray lines = TrIni.GetFullSection("Servers");
    const DString self = GetComputerNameD();
    for (int i = 0; i < lines.Count(); ++i) {
        const DString name = NameOf(lines[i]);
        if (!IsBlank(name) && name != self) result.Add(name);
    }
}

void GetPaths(DStringArray& result) {
    result.Clear();
    const DStringArray lines = TrIni.GetFullSection("Paths");
    for (int i = 0; i < lines.Count(); ++i)
        result.Add(NameOf(lines[i]));
}

void GetNodes(DStringArray& result, int count) {
    const MemoryWatch memory;
    result.Clear();
    DStringArray lines = TrIni.GetFullSection("Nodes");
    if (lines.Count() == 0) lines.Add(GetComputerNameD() + "=Node");
    for (int i = 0; i < lines.Count(); ++i) {
        const DString name = NameOf(lines[i]);
        if (!IsBlank(name)) result.Add(name);
    }
    RepeatNames(result, count);
    const DString path = AppendPathElts(GetUserPath(), "MPIHosts.txt");
    const DString text = result.Join("\n");
    if (memory.Whole()) DFile::WriteText(path, text);
}

void SetDefaultPath(const DString& key, const DString& path) {
    TrIni.SetSection("DefaultPaths");
    TrIni.SetKeyValue(key, path);
}

DString GetDefaultPath(const DString& key) {
    return TrIni.GetSectionKeyValue("DefaultPaths", key, nullptr);
}
