// Existence tests that correct a name's case, and what they tell about a file.
#include <errno.h>
#include <stdio.h>

#include "system/DSystem.h"
#include "system/FolderEntries.h"
#include "types/MemoryWatch.h"

namespace {

// The first entry of `folder` that matches `leaf` without regard to case and is of the kind that
// `counts` tells becomes `name`.
bool FindEntry(const DString& folder, const DString& leaf, bool (*counts)(EntryKind),
               DString& name) {
    FolderReader reader(folder);
    if (!reader.IsOpen()) return false;
    const EntryPattern pattern(leaf);
    while (const char* entry = reader.Next()) {
        if (!pattern.Matches(entry)) continue;
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
