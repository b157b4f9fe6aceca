// The life of a shot: creation by request and cue, renaming, deletion, and names.
#include <stdint.h>
#include <strings.h>

#include <algorithm>
#include <limits>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

// "True" for names whose first character isn't a capital A, "False" for those that begin with one.
// It is the position in the alphabet, compared with 0, that is asked for and not whether there is
// one, so digits and signs give "True" as letters do; definition files are written for that.
DString AlphabetCue(const DString& shot) {
    const DString letters("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    return DString(letters.Find(shot[0], 0) != 0);
}

bool CueMatches(const DString& cue, const DString& shot) {
    if (cue == "*") return true;
    if (cue == "#" && shot.IsNumeric()) return true;
    if (cue == AlphabetCue(shot)) return true;
    return strncasecmp(shot, cue, static_cast<size_t>(cue.GetLength())) == 0;
}

}  // namespace

int Experiment::CreateShot(DString& request, const DString& comment, bool stamp) {
    if (m_ExperimentName.IsEmpty()) return -1;
    const MemoryWatch memory;
    const DString note(comment);  // may be one of this object's strings
    const bool force = request[0] == '*';
    if (force) request = request.Mid(1, npos);
    const DString name = request.BeforeFirst('\\', true);
    const DString dataName = request.AfterFirst('\\', false);

    DString found(name);
    int group = GuessPathFromShot(found);
    if (!memory.Whole()) return -1;  // whether it exists isn't known
    const bool isNew = group < 0;
    if (isNew) {
        group = ChooseGroup(name);
        CreateFolder(ShotPath(group, name));
    } else if (!force) {
        DString data = AppendPathElts(ShotPath(group, found), "*" + dataName + ".wvf");
        if (dataName.IsEmpty() || FileExists(data)) return ~group;
    }
    SetShot(name, group);
    if (!memory.Whole()) return -1;
    if (!note.IsEmpty()) SetShotData("Comment", note);
    const DString now = Now();
    const DString key("Date");
    if (memory.Whole() && (isNew || stamp)) SetShotData(key, now);
    return group;
}

int Experiment::ChooseGroup(const DString& shot) const {
    for (int i = 0; i < m_Cues.Count(); ++i) {
        if (CueMatches(m_Cues[i].m_Cue, shot)) return std::max(m_Cues[i].m_Group, 0);
    }
    return 0;
}

bool Experiment::RenameShot(DString newName) {
    if (m_ShotName.IsEmpty() || !HasGroup(m_CurrentGroup)) return false;
    const MemoryWatch memory;
    DString target = ShotPath(m_CurrentGroup, newName);
    const DString section = CacheSection();
    const DString newSection = "Shot" + newName;
    if (!memory.Whole()) return false;
    const bool caseOnly = newName == m_ShotName;
    DString taken(target);
    if (!caseOnly && FolderExists(taken)) {
        Message("Shot " + newName + " already exists, rename aborted");
        return false;
    }
    if (RenameFolder(m_ShotFolder, target)) {
        m_ScalarCacheIni.SetFileName(m_ScalarCacheFile);
        m_ScalarCacheIni.RenameSection(section, newSection);
    }
    // A folder that couldn't be renamed counts as success too: callers find the shot under its new
    // name in either case.
    SetShot(newName, m_CurrentGroup);
    return true;
}

bool Experiment::DeleteShot() {
    if (m_ShotName.IsEmpty() || m_CurrentGroup < 0) return false;
    DeleteFolder(m_ShotFolder);
    m_ScalarCacheIni.SetFileName(m_ScalarCacheFile);
    // Another document writes the file, so that it changes also while this one holds its writing.
    DIni cache(AppendPathElts(GetCurPath(), "ScalarCache.ini"));
    cache.DeleteSection(CacheSection());
    return true;
}

bool Experiment::IsValidName(const DString& name, bool kind) const {
    return name.FindFirstOf(kind ? "!\"#$&*,/:;<>?{|}~" : "!\"#$*:;=?@\\{}~", 0) == npos;
}

DString Experiment::GetOffsetShotName(int offset) const {
    if (offset == 0) return m_ShotName;
    int value = 0;
    const int start = m_ShotName.EndNumber(value);
    if (start == npos) return m_ShotName;
    const int64_t sum = static_cast<int64_t>(value) + offset;
    const int number = static_cast<int>(
        std::clamp<int64_t>(sum, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    const DString format = "%.0" + DString(m_ShotName.GetLength() - start) + "i";
    return m_ShotName.Left(start).AddFormatted(number, format);
}
