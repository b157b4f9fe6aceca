/// Walking the entries of a folder, and telling their kinds. Internal to the library.
#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include "system/DSystem.h"
#include "types/MemoryWatch.h"

/// What a name stands for, links unfollowed.
enum class EntryKind {
    None,    ///< nothing of that name
    File,    ///< a regular file or a FIFO
    Link,    ///< a symbolic link to anything; it counts as a file
    Folder,  ///< a directory
    Other    ///< anything else
};

inline EntryKind KindOf(const struct stat& status) {
    if (S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode)) return EntryKind::File;
    if (S_ISLNK(status.st_mode)) return EntryKind::Link;
    return S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
}

inline EntryKind KindOf(const char* path) {
    struct stat status;
    return lstat(path, &status) == 0 ? KindOf(status) : EntryKind::None;
}

inline bool CountsAsFile(EntryKind kind) {
    return kind == EntryKind::File || kind == EntryKind::Link;
}

inline bool CountsAsFolder(EntryKind kind) { return kind == EntryKind::Folder; }

/// One file under two names.
inline bool IsSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// "." and "..".
inline bool IsDotEntry(const DString& name) { return name == "." || name == ".."; }

/// An open folder; it is closed when the object dies.
class FolderReader {
public:
    explicit FolderReader(const DString& folder) : m_Folder(opendir(folder)) {
        if (!m_Folder) NoteFailedOpen();
    }
    ~FolderReader() {
        if (m_Folder) closedir(m_Folder);
    }
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;

    bool IsOpen() const { return m_Folder; }
    /// The next entry's name, in the folder's own order; null behind the last.
    const char* Next() {
        const struct dirent64* entry = readdir64(m_Folder);
        return entry ? entry->d_name : nullptr;
    }

private:
    DIR* m_Folder;
};
