/// Experiment: the session object. It opens an experiment folder, selects, creates, renames and
/// deletes its shots, reads and writes their fields, resolves data references to files, evaluates
/// expressions, and owns the data objects that callers hold. There is one, the global Expt.
///
/// An experiment is a folder with a definition file; its shots are folders named "Shot" plus the
/// shot's name, spread over one or more shot groups. docs/experiment.md describes the layout.
///
/// A group number is an index into the table of shot-group folders; group 0 is always the folder
/// Shots in the experiment folder, and -1 means none. A shot's name never holds the "Shot" prefix.
///
/// Nothing is locked, and calls must not overlap. Operations accept the object's own strings as
/// arguments. A sink or callback may call back into the object.
#pragma once

#include <stdint.h>

#include <vector>

#include "data/DataPtr.h"
#include "system/DIni.h"
#include "types/DStringArray.h"

/// A line of the definition file's section "Groups".
class GroupName {
public:
    DString m_Pattern;  ///< the folder pattern as written
    DString m_Label;    ///< the third field of the line
};

/// A rule by which new shots are assigned to a group; see Experiment::CreateShot.
class GroupCue {
public:
    DString m_Cue;    ///< the text that is matched against the shot's name
    int m_Group = 0;  ///< the group; -1 when the definition file names none that exists
};

extern template class DArray<GroupName>;
extern template class DArray<GroupCue>;

/// A host's own source of values for the names in an expression: true if it supplied one.
using ValueCallback = bool (*)(DString const& name, float& value);

class Experiment {
public:
    DArray<GroupName> m_Groups;     ///< one for each line of the section "Groups"
    DArray<GroupCue> m_Cues;        ///< in file order; never empty once a definition is loaded
    DStringArray m_GroupPaths;      ///< the shot-group folders by group number
    DString m_Description;          ///< the definition file's Description
    DString m_ExperimentPath;       ///< the folder that holds the experiment folder
    DString m_ExperimentFolder;     ///< the experiment folder, as it was given
    DString m_ExperimentName;       ///< its last element; empty when no experiment is open
    DString m_ExperimentUNCFolder;  ///< its shared name
    int m_CurrentGroup = 0;         ///< the current shot's group; -1 for none, 0 after a load
    DString m_ShotFolder;           ///< the current shot's folder
    DString m_ShotName;             ///< the current shot's name
    DString m_SavedShotName;        ///< what SetTempShot keeps
    int m_SavedGroup = 0;
    DString m_ScalarsFile;       ///< the current shot's Scalars.ini
    DString m_ScalarCacheFile;   ///< the current group's ScalarCache.ini
    DIni m_ScalarsIni;           ///< the document over m_ScalarsFile
    DIni m_ScalarCacheIni;       ///< the document over m_ScalarCacheFile
    bool m_PauseIO = false;      ///< the fields' file traffic is paused
    DArray<DataPtr> m_DataPtrs;  ///< the data objects that callers hold, and named ones

    Experiment() = default;
    Experiment(const Experiment&) = delete;
    Experiment& operator=(const Experiment&) = delete;

    // The experiment

    /// Opens an experiment, creating its folder, its definition file and the folders Shots, Query
    /// and Macros where they are missing, and reads the definition. No shot is selected then, and
    /// m_CurrentGroup is 0. Fields held back by a pause are dropped, and
    /// the fields' documents go on holding until a pause is begun and ended anew: end a pause
    /// first. An empty folder closes the experiment but leaves the tables; a folder that ends in
    /// "/" changes nothing but m_ExperimentFolder and the names made of it. Where memory is refused
    /// no experiment is open afterwards. Always true.
    bool SetExperimentFolder(const DString& folder);
    DString GetExperimentPath() const;
    DString GetExperimentFolder() const;
    DString GetExperimentName() const;
    DString GetExperimentUNCFolder() const;
    /// The elements below the experiment folder.
    DString AppendExptPathElts(const DString& element) const;
    DString AppendExptPathElts(const DString& first, const DString& second) const;

    // The current shot

    /// Selects a shot; a leading "*" of the name is dropped. A negative group means to search for
    /// the shot; with a group given, the folder needn't exist yet. Ends a pause, unless the same
    /// shot (compared with regard to case) in the same group was current. False, with the selection
    /// as it was, if the group isn't known; false too without an experiment, where the current
    /// group becomes none and the shot folder the experiment folder.
    bool SetShot(DString name, int group);
    /// Finds a shot: in the group whose folder's last element stands before the name's last "/", if
    /// there is one (`shot` then loses it), in the current group, then in all others by ascending
    /// number. Folder names are matched as by FolderExists. -1 if no group holds it.
    int GuessPathFromShot(DString& shot) const;
    /// Pauses the file traffic of the fields: both documents are loaded once, and changes stay in
    /// memory until the pause ends.
    void SetPauseIO(bool pause);
    /// Selects a shot and keeps the one selected before, in a single slot, for ResetShot.
    void SetTempShot(const DString& name, int group);
    void ResetShot();
    DString GetShotName() const;
    DString GetShotFolder() const;
    int GetCurrentGroup() const;
    /// The current group's folder, empty if there is none.
    DString GetCurPath() const;

    // Paths

    /// A stored path as a real one: ".\" stands for the experiment folder, "..\" for the folder
    /// that holds it, and anything else is a full path that goes through GetLocalFileName.
    DString FullPath(const DString& path) const;
    /// The inverse, for writing paths into files. A path below the folder that holds the experiment
    /// gets the "..\" form with its "/" kept: "..\N/Shots" for group 0 of the experiment N. The
    /// ".\" form is made only of paths with a backslash behind the experiment folder.
    DString RelativePath(const DString& path) const;
    /// The group whose folder is this path, without regard to case; -1 if none is.
    int GetShotGroupNumber(const DString& path) const;
    /// A group's folder; empty if there is no such group.
    DString GetShotGroupPath(int group) const;

    // The life of a shot

    /// Creates and selects a shot. The request is the shot's name, with "*" in front to take over
    /// an existing shot (the "*" is removed from `request`), and optionally "\" and the name of
    /// data that the caller is about to write behind it: an existing shot is taken over too if it
    /// holds no file that ends in that name and ".wvf". A new shot goes to the group of the first
    /// cue that matches its name: "*" all; "#" numbers; "False" names that begin with "A", and
    /// "True" all others; any other text names that begin with it, without regard to case.
    /// `comment` becomes the field Comment unless empty; a new shot, or any with `stamp`, gets the
    /// field Date. Returns the group, -(g+1) if the shot exists in group g and wasn't taken over,
    /// or -1 if no experiment is open or memory is refused.
    int CreateShot(DString& request, const DString& comment, bool stamp);
    /// Renames the current shot. False, with a message, if the name is taken, and false if no shot
    /// is selected. A folder that can't be renamed still counts as success, and leaves the shot
    /// selected under the new name without a folder.
    bool RenameShot(DString newName);
    /// Deletes the current shot's folder and its section of the group's fields. The shot stays
    /// selected: select another one then. False if no shot is selected.
    bool DeleteShot();
    /// None of the name's characters is one of the 14 of !"#$*:;=?@\{}~ with `kind` false, or of
    /// the 17 of !"#$&*,/:;<>?{|}~ with `kind` true. An empty name is valid.
    bool IsValidName(const DString& name, bool kind) const;
    /// The current shot's name with its last digit run moved by `offset`, in as many digits as
    /// stood from there to the end. What stands behind the digits is lost, and a name without a
    /// digit is replaced by the bare number.
    DString GetOffsetShotName(int offset) const;

    // Fields of the current shot

    /// A field's text; empty if there is none. "Shot" gives the shot's name, and "a::b" gives the
    /// field b where a is empty. Unless paused, the file is read anew at each call.
    DString GetShotData(const DString& key);
    /// Sets a field in the shot's file and its copy in the group's; an empty value deletes it. A
    /// Comment that is the shot's name is refused, with a message.
    void SetShotData(const DString& key, const DString& value);
    /// Rebuilds the shot's section of the group's file from the shot's own.
    void SetShotCacheData();

    // Sets of shots, as parallel arrays of names and groups; `dates` may be null

    /// The shots of the group whose folder is FullPath(set) that match `filter`: a wildcard, or
    /// with a ":" in it a range. The set "(Shot list)", in any case, means that `filter` names a
    /// saved list. Only shots that hold `dataName` are kept, unless that is empty or "*"; ".wvf" is
    /// added to it if it holds no ".". A wildcard gives the dates of the fields' files, a range or
    /// list 0.
    void GetShotSet(const DString& set, const DString& filter, DString dataName,
                    DStringArray& names, DArray<int>& groups, DArray<long>* dates);
    /// The existing shots of a range or a saved list (docs/experiment.md). In a range, a shot that
    /// isn't in `group` (-1: that of the first shot) is looked for in all groups, and its group is
    /// then tried for the lower numbers too; a group below -1 gives every name of the range in that
    /// group, unchecked. A list names each shot's group and isn't searched. An empty text and a
    /// range without a first part empty `names` alone.
    void GetShotList(const DString& list, int group, DStringArray& names, DArray<int>& groups,
                     DArray<long>* dates);
    /// Writes a list file into the folder ShotLists, under the name as it is given.
    void SaveShotList(const DString& fileName, DStringArray& names, DArray<int>& groups);
    /// Adds shots to those of the list file `source`, a path, and saves the result as `fileName`.
    /// The group of a shot that the file had already becomes -1 in `groups`; shots whose group is
    /// negative are left out.
    void MergeShotList(DString source, const DString& fileName, DStringArray& names,
                       DArray<int>& groups);

    // Backups and run stamps

    /// Stores the backup root in the definition file, cut back to the folder above if it ends in
    /// the experiment's name. "![Shot]", in any case, means the shot's own folder.
    void SetBackupPath(DString path);
    /// The backup root, made if it is missing; "![Shot]" as it was stored. Without a setting it is
    /// "\Backup", a name in its own right below no folder.
    DString GetBackupPath();
    /// A free folder for a copy of a shot folder (empty: the current one): for the root
    /// "![Shot]", exactly so, "Backup" and the shot's name in the current shot, whatever `folder`
    /// is; otherwise the folder's place below the experiment's parent, mirrored below the root. A
    /// folder that lies elsewhere gives the current shot's place in Backup/N/Shots below that
    /// parent, with N the experiment's name. "_1", "_2" and so on is put behind a name that is
    /// taken.
    DString GetBackupShotFolder(DString folder);
    /// Copies the current shot to GetBackupShotFolder.
    void BackupShot();
    /// Replaces the section LastRun of a settings document by the shot, its group's folder and the
    /// time, in one write.
    void StampConfigFile(DIni& ini);

    // Data references

    /// The file of a data reference, without suffix; empty if its shot isn't found. Fields in the
    /// form "![name]" are filled in first. docs/expressions.md describes references.
    DString GetDataFileName(DString reference);
    /// The reference with a ">" or "<" form (a shot so many numbers up or down) resolved. A bare
    /// "<" goes up like ">".
    DString CleanDataFileName(const DString& reference) const;
    /// The group of a reference's shot, or -1; `shot` gets the shot's name.
    int GetShotGNumFromFileName(const DString& reference, DString& shot) const;
    /// Lists the data of a shot as references without extension. The shot is what stands before the
    /// last "/" of the pattern. An unknown shot leaves `names` as it was.
    void GetDataFileNames(const DString& pattern, DStringArray& names, bool clear);

    // Scalars and expressions

    /// A field or expression as a number; -DFMax if it has no valid value. `resolver` may be null.
    float GetScalarData(DString expression, ValueCallback resolver);
    /// Sets a field, or with a key of the form name\tX the parameter X (1 to 9, a to c) of a stored
    /// data object, whose file is read and written whole. Any other key with a backslash does
    /// nothing.
    void SetScalarData(const DString& key, float value);

    /// Evaluates an expression (docs/expressions.md). A text without a valid value gives one that
    /// IsVF refuses. The values of brackets, parentheses and
    /// functions pass through the text in eight significant digits.
    float ParseInput(DString text, ValueCallback callback);
    /// The levels below: sums, products, powers, and one operand.
    float ParseAddend(DString text, ValueCallback callback);
    float ParseFactor(DString text, ValueCallback callback);
    float ParsePower(DString text, ValueCallback callback);
    float ParseSingle(DString text, ValueCallback callback);

    /// Fills in references to fields: "![name]", and with `markedOnly` false also "[name]". Empty
    /// if one of them can't be filled.
    DString GetExpandedString(DString const& text, bool markedOnly);
    /// Fills in references of the form "![expression%format]" for a caption. A field that is text
    /// comes as it is; a number in the format, or as "%.8g"; what can't be evaluated as
    /// "(undefined)". An unclosed reference leaves the whole text unchanged.
    DString GetExpandedLabel(DString const& text);

    // Data objects

    /// The object of a name: for a name that begins with "@", but for particle groups, which are
    /// never kept in memory, the one in memory under that name and kind, or null; otherwise a new
    /// one read from the data file, or null if that fails. An empty name gives a new empty object.
    /// The table owns the object; give it back with ReleaseDataPtr.
    void* GetDataPtr(DString const& name, DataType type);
    /// A new, empty, named object; null for an empty name and for particle groups.
    void* InitDataPtr(DString const& name, DataType type);
    /// Gives an object back. With an empty name it is destroyed; under a name that begins with "@"
    /// it stays in memory; any other name is a data file, to which it is written before it is
    /// destroyed, also if the writing fails. For a particle group an "@" name is a data file too. A
    /// name that leads to no path destroys the object unsaved, and the result is true. `object`
    /// becomes null. False if the writing failed. An object that isn't in the table stays as it is,
    /// and the result is true.
    bool ReleaseDataPtr(DString const& name, DataType type, void*& object);
    /// Destroys all objects, unsaved.
    void ClearDataPtrs();

private:
    DString ShotPath(int group, const DString& shot) const;
    bool HasShot(int group, const DString& shot) const;
    bool HasShot(int group, const DString& shot, DString& folder) const;
    int FindShot(DString& shot, DString& folder) const;
    int FindLeaf(const DString& leaf, DString& folder) const;
    bool HasGroup(int group) const { return group >= 0 && group < m_GroupPaths.Count(); }
    DString CacheSection() const;
    class ShotRange;

    DString DataFileOf(DString reference);
    DString DefinitionFile() const;
    void ReadDefinition();
    void ReadGroups(const DStringArray& lines);
    void AddGroups(const DString& pattern);
    void ReadCues(const DStringArray& lines);
    DString GetDataNamedAt(const DString& text, int start, int parting);
    void LoadFields();
    void LoadCache();
    int ChooseGroup(const DString& shot) const;
    void FindShots(int group, const DString& filter, DStringArray& names, DArray<int>& groups,
                   DArray<long>* dates) const;
    bool FindInRange(DString& name, int& group) const;
    bool ListNumbers(const ShotRange& range, int64_t below, std::vector<int>& numbers) const;
    void FindRange(const ShotRange& range, int group, DStringArray& names,
                   DArray<int>& groups) const;
    void KeepShotsWith(const DString& dataName, DStringArray& names, DArray<int>& groups,
                       DArray<long>* dates) const;
    void ReadShotList(const DString& list, DStringArray& names, DArray<int>& groups);
    void SetTraceParameter(const DString& key, int backslash, float value);
    bool ResolveBrackets(DString& text, ValueCallback callback, float& result);
    bool ResolveParentheses(DString& text, ValueCallback callback);
    float ParseAlternatives(const DString& text, ValueCallback callback);
    bool IsConditionTrue(const DString& condition, ValueCallback callback);
    float ParseObjectTerm(DString text, int backslash);
    void AppendLabelValue(DString& label, const DString& contents);
    bool GetTraceParameter(const DString& name, const DString& parameter, float& value);
    int FindMemoryObject(const DString& name, DataType type) const;
    int FindObject(const void* object, DataType type, int start) const;
};
