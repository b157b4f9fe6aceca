// Existence tests that correct a name's case, and what they tell about a file.
#include <errno.h>
#include <fnmatch.h>
#include <stdio.h>

#include "system/DSystem.h"
#include "system/FolderEntries.h"

namespace {

// The first entry of `folder` that matches `pattern` without regard to case and is of the kind
// that `counts` tells becomes `name`.
bool FindEntry(const DString& folder, const DString& pattern, bool (*counts)(EntryKind),
               DString& name) {
    FolderReader reader(folder);
    if (!reader.IsOpen()) return false;
    while (const char* entry = reader.Next()) {
        if (fnmatch(pattern, entry, FNM_CASEFOLD) != 0) continue;
        const MemoryWatch memory;
        const DString path = folder + "/" + entry;
        if (!memory.Whole() || !counts(KindOf(path))) continue;
        name = path;
        return true;
    }
    return false;
}

bool StatFile(const DString& name, struct stat& status) {
    DString corrected(name);
    return FileExists(corrected) && stat(corrected, &status) == 0;
}

}  // namespace

bool FileExists(DString& name) {
    if (CountsAsFile(KindOf(name))) return true;
    DString folder;
    DString pattern;
    SplitPathElts(name, folder, pattern);
    return FolderExists(folder) && FindEntry(folder, pattern, CountsAsFile, name);
}

bool FolderExists(DString& name) {
    if (CountsAsFolder(KindOf(name))) return true;
    DString folder;
    DString pattern;
    SplitPathElts(name, folder, pattern);
    return FindEntry(folder, pattern, CountsAsFolder, name);
}

long FileDate(const DString& name) {
    struct stat status;
    return StatFile(name, status) ? status.st_mtime : 0;
}

int GetFileLen(const DString& name) {
    struct stat status;
    return StatFile(name, status) ? static_cast<int>(status.st_size) : 0;
}

bool DeleteFileD(const DString& name) {
    DString corrected(name);
    if (!FileExists(corrected)) return true;
    return remove(corrected) == 0 || errno == ENOENT;
}
