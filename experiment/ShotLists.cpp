// Sets of shots: by wildcard in a group, by a range of numbers, or by a saved list.
#include <ctype.h>
#include <errno.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <new>
#include <unordered_set>
#include <utility>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "system/DFile.h"
#include "system/DSystem.h"
#include "system/FolderEntries.h"
#include "types/MemoryWatch.h"

namespace {

constexpr char ListFolder[] = "ShotLists";
constexpr int PrefixLength = 4;  // of "Shot"
constexpr int NoGroup = -1;      // a range without a group is searched; a number below isn't

DString WithTextSuffix(const DString& name) { return name.EndsWith(".txt") ? name : name + ".txt"; }

DString WithoutQuotes(DString line) {
    if (line.EndsWith("\"")) line.TruncateBy(1);
    return line[0] == '"' ? line.Mid(1, npos) : line;
}

int GroupAt(const DArray<int>& groups, int i) { return i < groups.Count() ? groups[i] : -1; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Calls `take(name)` for each entry of a folder; one that can't be reached at all has none. False
// if they can't be known.
template <typename Take>
bool ForEachEntry(const DString& folder, Take take) {
    FolderReader reader(folder.IsEmpty() ? DString(".") : folder);
    if (!reader.IsOpen()) {
        return errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG || errno == ELOOP;
    }
    while (const char* entry = reader.Next())
        take(entry);
    return true;
}

// Parses the lines of a shot list. Most name the group of the line before, whose path is resolved
// once.
class ShotLineParser {
public:
    explicit ShotLineParser(const Experiment& experiment) : m_Experiment(experiment) {}

    // The group of a line, -1 if it isn't known. A line holds the shot's name and behind ";" the
    // path of its group; without a ";" it is group 0. A name that was refused is empty, and what is
    // taken for its path is no group's.
    int Parse(const DString& line, DString& name) {
        const DString text = WithoutQuotes(line);
        name = text.BeforeFirst(';', true);
        return name.GetLength() < text.GetLength() ? GroupOf(text, name.GetLength() + 1) : 0;
    }

private:
    // Of the path that is `text` from `start` on.
    int GroupOf(const DString& text, int start) {
        const int length = text.GetLength() - start;
        const bool isLast = m_IsKnown && length == m_Path.GetLength() &&
                            memcmp(m_Path, static_cast<const char*>(text) + start,
                                   static_cast<size_t>(length)) == 0;
        if (isLast) return m_Group;
        const MemoryWatch memory;
        m_Path = text.Mid(start, npos);
        m_Group = m_Experiment.GetShotGroupNumber(m_Experiment.FullPath(m_Path));
        m_IsKnown = memory.Whole();
        return m_Group;
    }

    const Experiment& m_Experiment;
    DString m_Path;
    int m_Group = -1;
    bool m_IsKnown = false;
};

struct Shot {
    DString m_Name;
    int m_Group;
    bool operator==(const Shot& other) const {
        return m_Group == other.m_Group && m_Name == other.m_Name;
    }
};

// Equal names, the case of letters aside, give equal numbers.
struct ShotHash {
    size_t operator()(const Shot& shot) const {
        size_t hash = static_cast<size_t>(shot.m_Group);
        for (const char* c = shot.m_Name; *c; ++c)
            hash = hash * 31 + static_cast<size_t>(tolower(static_cast<unsigned char>(*c)));
        return hash;
    }
};

// The shots of a list, to be asked for one of them.
class ShotTable {
public:
    ShotTable(const DStringArray& names, const DArray<int>& groups) {
        try {
            for (int i = 0; i < names.Count(); ++i)
                m_Shots.insert({names[i], groups[i]});
        } catch (const std::bad_alloc&) {
            ++RefusedBlocks;
        }
    }
    bool Holds(const DString& name, int group) const { return m_Shots.contains({name, group}); }

private:
    std::unordered_set<Shot, ShotHash> m_Shots;
};

void ClearAll(DStringArray& names, DArray<int>& groups, DArray<long>* dates) {
    names.Clear();
    groups.Clear();
    if (dates) dates->Clear();
}

// Adds a shot to both arrays or to none, so that they stay in step.
void AddShot(const DString& name, int group, DStringArray& names, DArray<int>& groups) {
    const MemoryWatch memory;
    const int before = names.Count();
    names.Add(name);
    groups.Add(group);
    if (memory.Whole()) return;
    names.ReSize(before);
    groups.ReSize(before);
}

template <typename T>
void Reverse(T& array) {
    for (int low = 0, high = array.Count() - 1; low < high; ++low, --high) {
        std::swap(array[low], array[high]);
    }
}

}  // namespace

/// A range of shot names, as in "A0012:A0020": prefix and digits of the first, both numbers.
class Experiment::ShotRange {
public:
    explicit ShotRange(const DString& text) {
        const DString first = text.BeforeFirst(':', true);
        const int digits = first.EndNumber(m_First);
        m_Valid = digits != npos && text.EndNumber(m_Last) != npos;
        m_Prefix = first.Left(digits);
        m_Format = "%.0" + DString(first.GetLength() - m_Prefix.GetLength()) + "i";
        m_Width = Name(0).GetLength() - m_Prefix.GetLength();
    }

    DString Name(int64_t number) const {
        return DString(m_Prefix).AddFormatted(static_cast<int>(number), m_Format);
    }

    // Adds the numbers of the range whose names a folder's entry may fit, and perhaps others.
    void AddNumbersOf(const char* entry, std::vector<int>& numbers) const;

    int m_First = 0;
    int m_Last = 0;
    bool m_Valid = false;

private:
    bool Holds(int64_t number) const { return number >= m_First && number <= m_Last; }

    DString m_Prefix;
    DString m_Format;
    int m_Width = 0;  // the fewest digits of a number
};

// Whatever stands in front, a wildcard too: a name ends in its number, and so does what fits it. A
// number has the digits of the format, or more and then no zero in front.
void Experiment::ShotRange::AddNumbersOf(const char* entry, std::vector<int>& numbers) const {
    constexpr int64_t Largest = int64_t{1} << 31;
    const char* const end = entry + strlen(entry);
    int64_t number = 0;
    int64_t weight = 1;
    for (const char* c = end; c > entry && IsDigit(c[-1]) && number <= Largest; --c) {
        const int64_t digit = c[-1] - '0';
        number += digit * weight;
        if (weight <= Largest) weight *= 10;
        const int64_t digits = end - c + 1;
        if (digits < m_Width || (digits > m_Width && digit == 0)) continue;
        if (Holds(number)) numbers.push_back(static_cast<int>(number));
        if (Holds(-number)) numbers.push_back(static_cast<int>(-number));
    }
}

// ---- Sets

void Experiment::GetShotSet(const DString& set, const DString& filter, DString dataName,
                            DStringArray& names, DArray<int>& groups, DArray<long>* dates) {
    const DString wanted(filter);  // may be an element of the arrays that are emptied now
    const DString folder(set);
    ClearAll(names, groups, dates);
    if (folder == DString("(Shot list)")) {
        GetShotList(wanted, -1, names, groups, dates);
    } else {
        const int group = m_GroupPaths.Index(FullPath(folder));
        if (group < 0) return;
        if (wanted.Find(':', 0) != npos) {
            GetShotList(wanted, group, names, groups, dates);
        } else {
            FindShots(group, wanted, names, groups, dates);
        }
    }
    if (dataName.IsEmpty() || dataName == "*") return;
    if (dataName.Find('.', 0) == npos) dataName += ".wvf";
    KeepShotsWith(dataName, names, groups, dates);
}

// The shots of a group whose names match a wildcard, with the dates of their fields.
void Experiment::FindShots(int group, const DString& filter, DStringArray& names,
                           DArray<int>& groups, DArray<long>* dates) const {
    const DString& folder = m_GroupPaths[group];
    GetFolders(AppendPathElts(folder, "Shot" + filter), names, true);
    groups.Size(names.Count());
    if (dates) dates->Size(names.Count());
    if (groups.Count() < names.Count() || (dates && dates->Count() < names.Count())) {
        ClearAll(names, groups, dates);
        return;
    }
    for (int i = 0; i < names.Count(); ++i) {
        groups[i] = group;
        if (dates) (*dates)[i] = FileDate(AppendPathElts(folder, names[i], "Scalars.ini"));
        names[i] = names[i].Mid(PrefixLength, npos);
    }
}

void Experiment::KeepShotsWith(const DString& dataName, DStringArray& names, DArray<int>& groups,
                               DArray<long>* dates) const {
    int kept = 0;
    for (int i = 0; i < names.Count(); ++i) {
        if (!HasGroup(groups[i])) continue;
        DString data = AppendPathElts(ShotPath(groups[i], names[i]), dataName);
        if (!FileExists(data)) continue;
        names[kept] = DString(names[i]);
        groups[kept] = groups[i];
        if (dates) (*dates)[kept] = (*dates)[i];
        ++kept;
    }
    names.ReSize(kept);
    groups.ReSize(kept);
    if (dates) dates->ReSize(kept);
}

// ---- Lists and ranges

void Experiment::GetShotList(const DString& list, int group, DStringArray& names,
                             DArray<int>& groups, DArray<long>* dates) {
    const DString wanted(list);  // may be an element of the names
    names.Clear();
    if (wanted.IsEmpty()) return;
    if (wanted.Find(':', 0) == npos) {
        ReadShotList(wanted, names, groups);
    } else {
        const ShotRange range(wanted);
        if (!range.m_Valid) return;
        FindRange(range, group, names, groups);
    }
    if (Logging) Log("Got shot list and checked for existance");
    if (!dates) return;
    dates->Size(names.Count());
    // The date of the folder itself, not of its fields as for a wildcard: FileDate knows files
    // only, and callers of lists and ranges get 0.
    for (int i = 0; i < dates->Count(); ++i)
        (*dates)[i] = HasGroup(groups[i]) ? FileDate(ShotPath(groups[i], names[i])) : 0;
}

// The existing shots of a list file, each in the group that its line names.
void Experiment::ReadShotList(const DString& list, DStringArray& names, DArray<int>& groups) {
    CreateFolder(AppendExptPathElts(ListFolder));
    DStringArray lines;
    DFile::GetLines(AppendExptPathElts(ListFolder, WithTextSuffix(list)), lines);
    groups.Clear();
    ShotLineParser parser(*this);
    for (int i = 0; i < lines.Count(); ++i) {
        DString name;
        const int group = parser.Parse(lines[i], name);
        if (HasGroup(group) && HasShot(group, name)) AddShot(name, group, names, groups);
    }
}

// Finds a shot of a range, starting from the group in hand, which follows the shot that is found
// elsewhere. A group part of the name is dropped by the search that uses it.
bool Experiment::FindInRange(DString& name, int& group) const {
    if (group < NoGroup || (HasGroup(group) && HasShot(group, name))) return true;
    const int found = GuessPathFromShot(name);
    if (found < 0) return false;
    group = found;
    return HasShot(group, name);
}

// The numbers of a range below `below` for which there may be a shot in any group, from the highest
// down. False if that can't be known.
bool Experiment::ListNumbers(const ShotRange& range, int64_t below,
                             std::vector<int>& numbers) const {
    const DString name = range.Name(range.m_First);
    DString groupName;
    DString leaf;
    SplitPathElts(name, groupName, leaf);
    const auto add = [&](const char* entry) { range.AddNumbersOf(entry, numbers); };
    for (int i = 0; i < m_GroupPaths.Count(); ++i) {
        for (const DString& shot : {name, leaf}) {
            DString folder;
            DString last;
            SplitPathElts(ShotPath(i, shot), folder, last);
            if (!ForEachEntry(folder, add)) return false;
            if (groupName.IsEmpty()) break;
        }
    }
    std::erase_if(numbers, [below](int number) { return number >= below; });
    std::sort(numbers.begin(), numbers.end(), std::greater<>());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return true;
}

// The search goes from the highest number down with the group in hand, so that a shot found in
// another group takes the lower numbers there too. Where one isn't simply there the folders are
// listed, and numbers that none of them holds are passed over: a range may be far greater than they
// are.
void Experiment::FindRange(const ShotRange& range, int group, DStringArray& names,
                           DArray<int>& groups) const {
    groups.Clear();
    if (group == NoGroup) {
        DString first = range.Name(range.m_First);
        group = std::max(GuessPathFromShot(first), 0);
    }
    if (Logging) Log("Got names of shots in range");
    const auto add = [&](const DString& name) { AddShot(name, group, names, groups); };
    const auto find = [&](int64_t number) {
        DString name = range.Name(number);
        if (FindInRange(name, group)) add(name);
    };
    int64_t number = range.m_Last;
    for (; number >= range.m_First; --number) {
        const DString name = range.Name(number);
        const bool isThere = HasGroup(group) && CountsAsFolder(KindOf(ShotPath(group, name)));
        if (!isThere && group >= NoGroup) break;
        add(name);
    }
    std::vector<int> left;
    bool listed = false;
    try {
        listed = number >= range.m_First && ListNumbers(range, number + 1, left);
    } catch (const std::bad_alloc&) {
        left.clear();  // to look for each of the numbers takes longer, but no memory
    }
    if (listed) {
        std::for_each(left.begin(), left.end(), find);
    } else {
        for (; number >= range.m_First; --number)
            find(number);
    }
    Reverse(names);
    Reverse(groups);
}

// ---- Saving

void Experiment::SaveShotList(const DString& fileName, DStringArray& names, DArray<int>& groups) {
    const MemoryWatch memory;
    DStringArray lines;
    for (int i = 0; i < names.Count(); ++i) {
        const int group = GroupAt(groups, i);
        const DString path = HasGroup(group) ? RelativePath(m_GroupPaths[group]) : DString();
        lines.Add(names[i] + ";" + path);
    }
    const DString path = AppendExptPathElts(ListFolder, fileName);
    if (memory.Whole()) DFile::WriteLines(path, lines);
}

void Experiment::MergeShotList(DString source, const DString& fileName, DStringArray& names,
                               DArray<int>& groups) {
    const MemoryWatch memory;
    DStringArray lines;
    DFile::GetLines(WithTextSuffix(source), lines);
    DStringArray merged;
    DArray<int> mergedGroups;
    ShotLineParser parser(*this);
    for (int i = 0; i < lines.Count(); ++i) {
        DString name;
        const int group = parser.Parse(lines[i], name);
        merged.Add(name);
        mergedGroups.Add(group);
    }
    if (!memory.Whole()) return;
    const ShotTable known(merged, mergedGroups);
    if (!memory.Whole()) return;
    for (int i = 0; i < std::min(names.Count(), groups.Count()); ++i) {
        if (groups[i] >= 0 && known.Holds(names[i], groups[i])) groups[i] = -1;
        if (groups[i] < 0) continue;
        merged.Add(names[i]);
        mergedGroups.Add(groups[i]);
    }
    if (memory.Whole()) SaveShotList(fileName, merged, mergedGroups);
}
