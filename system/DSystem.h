/// The platform services: the library's paths and names, existence tests, path names, files and
/// folders, and the tables of the main settings.
///
/// Paths inside the library use "/". Every call that takes the name of a file or folder accepts one
/// that differs from the one on disk in case alone, in its last element and in most calls in the
/// folder above as well, since it goes through FileExists or FolderExists first; both also match
/// "*", "?" and "[...]" in the last element. The folder of a pattern (GetFiles, GetFolders,
/// GetFilesDates) must be spelled as on disk. Kinds are told without following links:
///
///   regular file, symbolic link to anything, FIFO   a file
///   directory                                       a folder
///   anything else                                   neither
#pragma once

#include "types/DStringArray.h"

// ---- The library's paths and names

/// The install folder, the per-user folder, and the working folder; empty before a session starts.
DString GetTarselPath();
DString GetUserPath();
DString GetWorkingPath();
/// The host name without its domain part.
DString GetComputerNameD();
/// "HOME" followed by "/.Tarsel"; an unset "HOME" counts as empty.
DString GetLocalSettingsPath();

/// Sets the install folder, then calls SetUserPath. An empty path means the folder of the running
/// executable; if that can't be found out, nothing changes. A path without a leading "/" is taken
/// from the current directory.
void SetTarselPath(const DString& path);
/// Sets the user path to GetLocalSettingsPath. Unless Silent is set, it then makes that folder,
/// attaches TrIni to Tarsel.ini in it (a new file gets its first keys; see docs/settings.md), and
/// takes the working folder, which it makes too, and PublicWrite from there. Failures leave the
/// defaults.
void SetUserPath();
/// Takes the name that GetComputerNameD gives from the system.
void SetComputerNameD();

// ---- Existence tests

/// A file of that name exists. If only one whose name matches without regard to case does, `name`
/// becomes its path; the folder part is corrected by FolderExists then. "*" finds the first fit in
/// the folder's own order.
bool FileExists(DString& name);
/// The same for folders, correcting the last element alone. A link to a folder is none.
bool FolderExists(DString& name);
/// Modification time in seconds since the epoch, links followed; 0 if it isn't a file.
long FileDate(const DString& name);
/// The low 32 bits of the size, links followed; 0 if it isn't a file.
int GetFileLen(const DString& name);

// ---- Path names

/// The elements with "/" between them. An empty element leaves out the "/"; what the elements end
/// or begin with isn't looked at, so a first element that ends in "/" gives a doubled one. Empty
/// where memory is refused: half a path would name something else.
DString AppendPathElts(const DString& a, const DString& b);
DString AppendPathElts(const DString& a, const DString& b, const DString& c);
DString AppendPathElts(const DString& a, const DString& b, const DString& c, const DString& d);
DString AppendPathElts(const DString& a, const DString& b, const DString& c, const DString& d,
                       const DString& e);
/// Parts a path at its last "/". Without one the folder is empty.
void SplitPathElts(const DString& path, DString& folder, DString& name);
/// The path begins with "/".
bool IsFullQual(const DString& path);
/// The name with "/" for each backslash.
DString TranslateFileName(const DString& name);
/// A local name as its shared form, by the table "Translations" of the main settings (lines
/// shared=local, tried in order, prefixes compared without regard to case). The byte behind the
/// prefix is dropped as the separator, whatever it is, and each "/" becomes a backslash. A name
/// that no line fits comes back as it was.
DString GetUNCFileName(const DString& name);
/// The other direction: a shared name as its local form.
DString GetLocalFileName(const DString& name);
/// Empty if it can't be found out.
DString GetCurrentDirectoryD();
/// Makes a folder the current directory, its case corrected; false if that fails.
bool SetCurrentDirectoryD(const DString& path);

// ---- Files and folders

/// Makes a folder and every missing level above it; true if it was there before or its last level
/// could be made. A link to a folder counts as none, and gives false.
/// The text before the first "/" is left out, so a relative path loses its first element and is
/// made below the root, and a bare name that isn't there yet is refused.
///
/// Take care: with PublicWrite set, each level, also one that existed, gets the mode 0666. That has
/// no execute bits, so users without special rights can't enter the folder any more. Installations
/// that share a data disk as root rely on it.
bool CreateFolder(const DString& path);
/// The bare names of the files that match the last element of `pattern` (a shell pattern, without
/// regard to case), sorted without regard to case together with what `result` holds unless `clear`
/// empties it first. False if the folder can't be listed to its end; `result` then holds what was
/// found so far, unsorted.
bool GetFiles(const DString& pattern, DStringArray& result, bool clear);
/// The same for folders; "." and ".." are delivered if the pattern fits them.
bool GetFolders(const DString& pattern, DStringArray& result, bool clear);
/// Adds names and modification times in the folder's own order; nothing is emptied or sorted. Both
/// arrays of dates get the same value.
bool GetFilesDates(const DString& pattern, DStringArray& names, DArray<long>& firstDates,
                   DArray<long>& secondDates);
/// Removes a file; true also if there was none.
bool DeleteFileD(const DString& name);
/// Removes a folder with all its content, links unfollowed; true also if there was none. Stops at
/// the first failure, with what was removed so far gone. A path whose last element is "." or ".."
/// is refused, and a link with a "/" behind it counts as no folder.
bool DeleteFolder(const DString& path);
/// Rename; an existing target whose name differs in case alone is what gets replaced. False if the
/// old name isn't there.
bool RenameFile(const DString& oldName, const DString& newName);
/// The same for folders; refused where the last element of either is "." or "..".
bool RenameFolder(const DString& oldName, const DString& newName);
/// Copies a file, making the target's folder if needed. A failed write isn't noticed. A copy onto
/// the file itself, by another case or a link too, leaves it alone and is true.
bool CopyFileD(const DString& source, const DString& target);
/// Copies a folder with all its content into `target`, which may exist. Links are copied as links;
/// what is neither file nor folder is passed over. Stops at the first failure.
bool CopyFolder(const DString& source, const DString& target);

// ---- Tables of the main settings

/// The names in the section "Servers", without this computer's and without blank ones.
void GetServers(DStringArray& result);
/// The names in the section "Paths", unfiltered: a comment line comes through as a name.
void GetPaths(DStringArray& result);
/// The names in the section "Nodes", blank ones left out, or this computer's if that section is
/// missing or empty, repeated in turn up to `count` of them if that is more. Also writes them to
/// MPIHosts.txt in the user folder, parted by single line feeds.
void GetNodes(DStringArray& result, int count);
/// A path remembered under a key in the main settings; empty if unknown. Both move the current
/// section of TrIni.
DString GetDefaultPath(const DString& key);
void SetDefaultPath(const DString& key, const DString& path);
