// Data references: the short names by which callers name the files of a shot.
#include <algorithm>
#include <limits>

#include "experiment/Experiment.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

const char NetworkMark[] = "\\\\";

// What stands before and behind the last backslash; without one, all of it is the file.
struct DataReference {
    explicit DataReference(const DString& text)
        : m_Shot(text.BeforeLast('\\', false)), m_File(text.AfterLast('\\', true)) {}

    DString m_Shot;
    DString m_File;
};

// A backward number is negated; the one that has no opposite saturates.
int Backward(int number) {
    constexpr int Limit = std::numeric_limits<int>::max();
    return -std::max(number, -Limit);
}

}  // namespace

DString Experiment::GetDataFileName(DString reference) {
    const MemoryWatch memory;
    const DString path = DataFileOf(reference);
    return memory.Whole() ? path : DString();  // half a path would name another file
}

DString Experiment::DataFileOf(DString reference) {
    if (reference.IsEmpty()) return DString();
    reference = GetExpandedString(reference, true);
    if (reference[1] == ':') return reference;
    if (reference[0] == '.' || reference.Left(2) == NetworkMark) return FullPath(reference);
    DataReference parts(reference);
    if (parts.m_Shot.IsEmpty()) return AppendPathElts(m_ShotFolder, parts.m_File);
    const int group = GuessPathFromShot(parts.m_Shot);
    if (group < 0) return DString();
    return AppendPathElts(m_GroupPaths[group], "Shot" + parts.m_Shot, parts.m_File);
}

DString Experiment::CleanDataFileName(const DString& reference) const {
    if (reference.IsEmpty()) return DString();
    const DataReference parts(reference);
    const char direction = parts.m_Shot[0];
    if (direction != '>' && direction != '<') return reference;
    int offset = 1;  // for a bare "<" as well: macros count on it going up
    if (parts.m_Shot.GetLength() > 1) {
        if (!parts.m_Shot.ToInt(offset, 1)) return parts.m_File;
        if (direction == '<') offset = Backward(offset);
    }
    return GetOffsetShotName(offset) + "\\" + parts.m_File;
}

int Experiment::GetShotGNumFromFileName(const DString& reference, DString& shot) const {
    shot = DataReference(reference).m_Shot;
    if (!shot.IsEmpty()) return GuessPathFromShot(shot);
    shot = m_ShotName;
    return m_CurrentGroup;
}

void Experiment::GetDataFileNames(const DString& pattern, DStringArray& names, bool clear) {
    const DString expanded = GetExpandedString(pattern, false);
    DString shot;
    DString leaf;
    SplitPathElts(expanded, shot, leaf);
    DString search = AppendPathElts(m_ShotFolder, expanded);
    if (!shot.IsEmpty()) {
        const int group = GuessPathFromShot(shot);
        if (group < 0) return;
        search = AppendPathElts(m_GroupPaths[group], "Shot" + shot, leaf);
        shot += "\\";
    }
    GetFiles(search, names, clear);
    for (int i = 0; i < names.Count(); ++i)
        names[i] = shot + names[i].RemoveExt();
}
