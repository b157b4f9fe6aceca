// Making, listing, deleting, renaming and copying files and folders.
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <unistd.h>

#include "core/CoreGlobal.h"
#include "system/DSystem.h"
#include "system/FolderEntries.h"
#include "types/MemoryWatch.h"

namespace {

DString WithoutTrailingSlashes(const DString& path) {
    int length = path.GetLength();
    while (length > 0 && path[length - 1] == '/')
        --length;
    return path.Left(length);
}

// A folder of that name must not be removed or renamed: what stands for the folder itself, the one
// above, or the root.
bool IsProtected(const DString& path) {
    const DString name = WithoutTrailingSlashes(path).AfterLast('/', true);
    return name.IsEmpty() || IsDotEntry(name);
}

// ---- Listing

// Hands each entry of the pattern's folder that is of the wanted kind and fits the pattern to
// `take(name, status)`. False if the folder can't be opened or an entry can't be looked at.
template <typename Take>
bool WalkMatches(const DString& pattern, bool (*counts)(EntryKind), Take take) {
    DString folder;
    DString leaf;
    SplitPathElts(pattern, folder, leaf);
    const MemoryWatch memory;
    FolderReader reader(folder);
    if (!reader.IsOpen()) return false;
    const EntryPattern wanted(leaf);
    DString path = folder + "/";
    const int start = path.GetLength();
    while (const char* entry = reader.Next()) {
        struct stat status;
        path.Truncate(start);
        path += entry;
        if (!memory.Whole() || lstat(path, &status) != 0) return false;
        if (counts(KindOf(status)) && wanted.Matches(entry)) {
            const DString name(entry);
            if (memory.Whole()) take(name, status);
        }
    }
    return memory.Whole();
}

bool ListMatches(const DString& pattern, bool (*counts)(EntryKind), DStringArray& result,
                 bool clear) {
    const DString whole(pattern);  // may be an element of the result
    if (clear) result.Clear();
    const auto take = [&result](const DString& name, const struct stat&) { result.Add(name); };
    if (!WalkMatches(whole, counts, take)) return false;
    result.Sort(nullptr);
    return true;
}

// All entries but "." and "..". They are gathered before anything is done with them, so that no
// folder stays open while the work goes on below it.
bool GetEntries(const DString& folder, DStringArray& entries) {
    const MemoryWatch memory;
    FolderReader reader(folder);
    if (!reader.IsOpen()) return false;
    while (const char* entry = reader.Next()) {
        const DString name(entry);
        if (!IsDotEntry(name)) entries.Add(name);
    }
    return memory.Whole();
}

// ---- Copying

// An open file that never waits for the other end of a FIFO. It needs no memory, which could be
// refused when the target is emptied already.
class OpenFile {
public:
    OpenFile(const DString& name, int flags)
        : m_Descriptor(open(name, flags | O_NONBLOCK | O_CLOEXEC, 0666)) {}
    ~OpenFile() {
        if (IsOpen()) close(m_Descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool IsOpen() const { return m_Descriptor >= 0; }

    const int m_Descriptor;
};

bool WriteAll(int descriptor, const char* bytes, ssize_t count) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, static_cast<size_t>(count));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        count -= written;
    }
    return true;
}

void CopyBytes(const OpenFile& source, const OpenFile& target) {
    char buffer[32768];
    for (;;) {
        const ssize_t count = read(source.m_Descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0 || !WriteAll(target.m_Descriptor, buffer, count)) return;
    }
}

bool CopyLink(const DString& source, const DString& target) {
    char text[PATH_MAX];
    const ssize_t length = readlink(source, text, sizeof text - 1);
    if (length < 0) return false;
    text[length] = '\0';
    return symlink(text, target) == 0;
}

bool CopyTree(DString source, DString target, const struct stat* top);

bool CopyEntry(const DString& source, const DString& target, const struct stat* top) {
    struct stat status;
    if (lstat(source, &status) != 0) return false;
    switch (KindOf(status)) {
        case EntryKind::File:
            return CopyFileD(source, target);
        case EntryKind::Link:
            return CopyLink(source, target);
        case EntryKind::Folder:
            return IsSameFile(status, *top) || CopyTree(source, target, top);
        default:
            return true;
    }
}

// `top` is the target of the whole copy, null for the first folder. It may lie inside the source,
// and isn't copied into itself. The first folder is listed before the target is made in it.
bool CopyTree(DString source, DString target, const struct stat* top) {
    if (!FolderExists(source)) return false;
    DStringArray entries;
    const bool canRead = GetEntries(source, entries);
    if (!CreateFolder(target) || !canRead) return false;
    FolderExists(target);
    struct stat first;
    if (!top && stat(target, &first) != 0) return false;
    if (!top) top = &first;
    for (int i = 0; i < entries.Count(); ++i) {
        const MemoryWatch memory;
        const DString from = source + "/" + entries[i];
        const DString to = target + "/" + entries[i];
        if (!memory.Whole() || !CopyEntry(from, to, top)) return false;
    }
    return true;
}

}  // namespace

bool CreateFolder(const DString& path) {
    constexpr mode_t NewFolderMode = 0777;
    constexpr mode_t PublicMode = 0666;
    const MemoryWatch memory;
    DString corrected(path);
    if (FolderExists(corrected)) return true;
    if (corrected.EndsWith("/")) corrected.TruncateBy(1);
    DStringArray elements;
    elements.split(corrected, "/", -1);
    if (elements.Count() < 2) return false;
    DString level;
    bool made = false;
    for (int i = 1; i < elements.Count(); ++i) {
        level += "/";
        level += elements[i];
        if (!memory.Whole()) return false;
        made = mkdir(level, NewFolderMode) == 0;
        if (PublicWrite) chmod(level, PublicMode);
    }
    return made;
}

bool GetFiles(const DString& pattern, DStringArray& result, bool clear) {
    return ListMatches(pattern, CountsAsFile, result, clear);
}

bool GetFolders(const DString& pattern, DStringArray& result, bool clear) {
    return ListMatches(pattern, CountsAsFolder, result, clear);
}

bool GetFilesDates(const DString& pattern, DStringArray& names, DArray<long>& firstDates,
                   DArray<long>& secondDates) {
    const auto take = [&](const DString& name, const struct stat& status) {
        const long date = status.st_mtime;
        names.Add(name);
        firstDates.Add(date, 1);
        secondDates.Add(date, 1);
    };
    return WalkMatches(pattern, CountsAsFile, take);
}

bool DeleteFolder(const DString& path) {
    DString folder(path);
    if (!FolderExists(folder)) return true;
    if (IsProtected(folder)) return false;
    if (KindOf(WithoutTrailingSlashes(folder)) == EntryKind::Link) return true;
    DStringArray entries;
    if (!GetEntries(folder, entries)) return false;
    for (int i = 0; i < entries.Count(); ++i) {
        const MemoryWatch memory;
        const DString entry = folder + "/" + entries[i];
        if (!memory.Whole()) return false;
        const EntryKind kind = KindOf(entry);
        if (CountsAsFile(kind) && remove(entry) != 0) return false;
        if (CountsAsFolder(kind) && !DeleteFolder(entry)) return false;
    }
    return remove(folder) == 0;
}

bool RenameFile(const DString& oldName, const DString& newName) {
    const MemoryWatch memory;
    DString source(oldName);
    DString target(newName);
    if (!FileExists(source)) return false;
    FileExists(target);
    if (!memory.Whole()) return false;
    return rename(source, target) == 0;
}

bool RenameFolder(const DString& oldName, const DString& newName) {
    const MemoryWatch memory;
    DString source(oldName);
    DString target(newName);
    if (!FolderExists(source)) return false;
    FolderExists(target);
    if (!memory.Whole()) return false;
    if (IsProtected(source) || IsProtected(target)) return false;
    return rename(source, target) == 0;
}

bool CopyFileD(const DString& source, const DString& target) {
    DString from(source);
    DString to(target);
    if (!FileExists(from)) return false;
    const MemoryWatch memory;
    DString folder;
    DString name;
    SplitPathElts(to, folder, name);
    if (memory.Whole()) CreateFolder(folder);
    FileExists(to);
    if (!memory.Whole()) return false;
    const OpenFile reader(from, O_RDONLY);
    if (!reader.IsOpen()) return false;
    struct stat fromStatus;
    struct stat toStatus;
    if (fstat(reader.m_Descriptor, &fromStatus) == 0 && stat(to, &toStatus) == 0 &&
        IsSameFile(fromStatus, toStatus)) {
        return true;
    }
    const OpenFile writer(to, O_WRONLY | O_CREAT | O_TRUNC);
    if (!writer.IsOpen()) return false;
    CopyBytes(reader, writer);
    return true;
}

bool CopyFolder(const DString& source, const DString& target) {
    return CopyTree(source, target, nullptr);
}
