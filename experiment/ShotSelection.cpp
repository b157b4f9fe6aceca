// Selecting a shot, finding it by its name, and the paths of groups and shots.
#include <string.h>
#include <strings.h>

#include <algorithm>
#include <string_view>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

// The stored forms carry a backslash, whatever parts real paths.
const char BelowExperiment[] = ".\\";
const char BesideExperiment[] = "..\\";

bool BeginsWith(const DString& text, const DString& prefix) {
    return strncasecmp(text, prefix, static_cast<size_t>(prefix.GetLength())) == 0;
}

// What AppendPathElts gives of a folder and the two pieces of a name, in one block: the building of
// paths is most of what selecting a shot costs beside the look at its folder.
DString PathIn(const DString& folder, std::string_view piece, const DString& rest) {
    const std::string_view pieces[] = {{folder, static_cast<size_t>(folder.GetLength())},
                                       folder.IsEmpty() ? "" : "/",
                                       piece,
                                       {rest, static_cast<size_t>(rest.GetLength())}};
    size_t length = 0;
    for (const std::string_view each : pieces)
        length += each.size();
    DString path;
    const bool fits = length <= static_cast<size_t>(npos);
    char* target = fits ? path.GetBuffer(static_cast<int>(length)) : nullptr;
    if (!target) return path;
    for (const std::string_view each : pieces)
        target = std::copy(each.begin(), each.end(), target);
    return path;
}

DString LastElement(const DString& path) {
    DString folder;
    DString name;
    SplitPathElts(path, folder, name);
    return name;
}

}  // namespace

// ---- Selection

bool Experiment::SetShot(DString name, int group) {
    if (m_ExperimentName.IsEmpty()) {
        m_CurrentGroup = -1;
        m_ShotFolder = m_ExperimentFolder;
        if (Logging) Log("experiment name not defined");
        return false;
    }
    const MemoryWatch memory;
    DString folder;
    if (name[0] == '*') name = name.Mid(1, npos);
    if (group < 0) group = FindShot(name, folder);
    if (strcmp(name, m_ShotName) == 0 && group == m_CurrentGroup) return memory.Whole();
    if (!HasGroup(group)) {
        if (Logging) Log("gnum is " + DString(group));
        return false;
    }
    if (folder.IsEmpty()) folder = ShotPath(group, name);
    const DString cacheFile = PathIn(m_GroupPaths[group], "ScalarCache.ini", DString());
    const DString fieldsFile = PathIn(folder, "Scalars.ini", DString());
    if (!memory.Whole()) return false;
    m_ShotName = name;
    m_CurrentGroup = group;
    m_ShotFolder = folder;
    // The documents still have the files of the shot that is left: what a pause held goes there.
    SetPauseIO(false);
    m_ScalarCacheFile = cacheFile;
    m_ScalarsFile = fieldsFile;
    if (Logging) Log("Finished setting shot");
    return true;
}

DString Experiment::ShotPath(int group, const DString& shot) const {
    return PathIn(m_GroupPaths[group], "Shot", shot);
}

// `folder` becomes the path that was looked for; the case of what is there may differ.
bool Experiment::HasShot(int group, const DString& shot, DString& folder) const {
    folder = ShotPath(group, shot);
    DString found(folder);
    return FolderExists(found);
}

bool Experiment::HasShot(int group, const DString& shot) const {
    DString folder;
    return HasShot(group, shot, folder);
}

int Experiment::GuessPathFromShot(DString& shot) const {
    DString folder;
    return FindShot(shot, folder);
}

// GuessPathFromShot; `folder` becomes the folder of the shot as it is named then. It is empty where
// there is none, and where a group part stays in the name, which then isn't what was looked for.
int Experiment::FindShot(DString& shot, DString& folder) const {
    DString groupName;
    DString leaf(shot);
    const bool hasGroupPart = strchr(shot, '/') != nullptr;
    if (hasGroupPart) SplitPathElts(shot, groupName, leaf);
    for (int i = 0; !groupName.IsEmpty() && i < m_GroupPaths.Count(); ++i) {
        if (LastElement(m_GroupPaths[i]) != groupName) continue;
        if (!HasShot(i, leaf, folder)) continue;
        shot = leaf;
        return i;
    }
    const int group = FindLeaf(leaf, folder);
    if (group < 0 || hasGroupPart) folder = DString();
    return group;
}

// The group of a shot named without one, -1 if there is none; `folder` is the last one looked at.
int Experiment::FindLeaf(const DString& leaf, DString& folder) const {
    if (HasGroup(m_CurrentGroup) && HasShot(m_CurrentGroup, leaf, folder)) return m_CurrentGroup;
    for (int i = 0; i < m_GroupPaths.Count(); ++i) {
        if (i != m_CurrentGroup && HasShot(i, leaf, folder)) return i;
    }
    return -1;
}

void Experiment::SetPauseIO(bool pause) {
    if (pause == m_PauseIO) return;
    m_PauseIO = pause;
    m_ScalarsIni.HoldWrite(pause);
    m_ScalarCacheIni.HoldWrite(pause);
    if (!pause) return;
    const MemoryWatch memory;
    LoadFields();
    LoadCache();
    if (!memory.Whole()) SetPauseIO(false);  // documents without a file would hold what is lost
}

void Experiment::SetTempShot(const DString& name, int group) {
    const DString wanted(name);  // may be the slot
    m_SavedShotName = m_ShotName;
    m_SavedGroup = m_CurrentGroup;
    SetShot(wanted, group);
}

void Experiment::ResetShot() { SetShot(m_SavedShotName, m_SavedGroup); }

// ---- The state

DString Experiment::GetShotName() const { return m_ShotName; }

DString Experiment::GetShotFolder() const { return m_ShotFolder; }

int Experiment::GetCurrentGroup() const { return m_CurrentGroup; }

// ---- Paths

DString Experiment::GetCurPath() const { return GetShotGroupPath(m_CurrentGroup); }

DString Experiment::GetShotGroupPath(int group) const {
    return HasGroup(group) ? m_GroupPaths[group] : DString();
}

DString Experiment::FullPath(const DString& path) const {
    if (BeginsWith(path, BelowExperiment)) {
        return AppendPathElts(m_ExperimentFolder, TranslateFileName(path.Mid(2, npos)));
    }
    if (BeginsWith(path, BesideExperiment)) {
        return AppendPathElts(m_ExperimentPath, TranslateFileName(path.Mid(3, npos)));
    }
    return GetLocalFileName(path);
}

// The prefix is not asked to end at a separator, and the first test of the rest looks for a
// backslash where real paths have "/": FullPath reads what comes out back to the same place.
DString Experiment::RelativePath(const DString& path) const {
    if (!BeginsWith(path, m_ExperimentPath)) return GetUNCFileName(path);
    const DString below = m_ExperimentFolder + "\\";
    if (BeginsWith(path, below)) return BelowExperiment + path.Mid(below.GetLength(), npos);
    return BesideExperiment + path.Mid(m_ExperimentPath.GetLength() + 1, npos);
}

int Experiment::GetShotGroupNumber(const DString& path) const {
    return m_GroupPaths.Index(GetLocalFileName(FullPath(path)));
}
