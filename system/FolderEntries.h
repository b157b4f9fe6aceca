/// Walking the entries of a folder, and telling their kinds. Internal to the library.
#pragma once

#include <dirent.h>
#include <fnmatch.h>
#include <string.h>
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

/// A pattern of the last element of a path: fnmatch with FNM_CASEFOLD. Nearly all entries of a
/// large folder are told apart by the end of their name alone, which is looked at first.
class EntryPattern {
public:
    explicit EntryPattern(const DString& pattern)
        : m_Pattern(pattern), m_TailLength(LiteralTail(pattern)) {}

    bool Matches(const char* entry) const {
        return MayMatch(entry) && fnmatch(m_Pattern, entry, FNM_CASEFOLD) == 0;
    }

private:
    static bool IsAscii(const char* text) {
        for (; *text; ++text) {
            if (static_cast<unsigned char>(*text) > 127) return false;
        }
        return true;
    }

    static bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

    /// The bytes at the pattern's end that stand for themselves in any locale, but for the case of
    /// letters; none if it holds others than ASCII, and none within a bracket.
    static size_t LiteralTail(const char* pattern) {
        if (!IsAscii(pattern) || strpbrk(pattern, "[]\\")) return 0;
        const char* special = strrchr(pattern, '*');
        const char* other = strrchr(pattern, '?');
        if (!special || (other && other > special)) special = other;
        return strlen(special ? special + 1 : pattern);
    }

    /// False only if the entry can't match. How other letters than those of ASCII fold is left to
    /// fnmatch.
    bool MayMatch(const char* entry) const {
        const size_t length = strlen(entry);
        const char* pattern = m_Pattern;
        const char* tail = pattern + strlen(pattern) - m_TailLength;
        for (size_t i = m_TailLength; i > 0; --i) {
            const size_t left = length - (m_TailLength - i);
            if (left == 0) return !IsAscii(entry);
            const char a = tail[i - 1];
            const char b = entry[left - 1];
            const bool equal = a == b || (IsLetter(a) && (a ^ b) == 0x20);
            if (!equal) return !IsAscii(entry);
        }
        return true;
    }

    DString m_Pattern;
    size_t m_TailLength;
};

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
