// The definition of an experiment: its folder, its shot groups and its rules for new shots.
#include "experiment/Experiment.h"

#include "core/CoreGlobal.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

template class DArray<GroupName>;
template class DArray<GroupCue>;

bool Experiment::SetExperimentFolder(const DString& folder) {
    m_ExperimentFolder = folder;
    if (m_ExperimentFolder.IsEmpty()) {
        m_ExperimentPath = m_ExperimentName = m_ShotName = m_ShotFolder = DString();
        m_CurrentGroup = -1;
        return true;
    }
    const MemoryWatch memory;
    m_ExperimentUNCFolder = GetUNCFileName(m_ExperimentFolder);
    SplitPathElts(m_ExperimentFolder, m_ExperimentPath, m_ExperimentName);
    if (m_ExperimentName.IsEmpty()) return true;

    ReadDefinition();
    // Half a definition would lead shots astray, so nothing is open then.
    if (!memory.Whole()) return SetExperimentFolder(DString());
    CreateFolder(AppendExptPathElts("Query"));
    CreateFolder(AppendExptPathElts("Macros"));

    // Group 0 stays current though no shot is: a search for a shot tries it first. The pause ends
    // without a flush and without touching the documents' own hold.
    m_CurrentGroup = 0;
    m_ShotFolder = m_ShotName = DString();
    m_PauseIO = false;
    m_ScalarsFile = m_ScalarCacheFile = DString();
    return true;
}

// Empty without an experiment: a document without a file keeps what it is told to itself.
DString Experiment::DefinitionFile() const {
    if (m_ExperimentName.IsEmpty()) return DString();
    const MemoryWatch memory;
    const DString path = AppendPathElts(m_ExperimentFolder, m_ExperimentName) + ".ini";
    return memory.Whole() ? path : DString();
}

void Experiment::ReadDefinition() {
    m_GroupPaths.Clear();
    m_GroupPaths.Size(1);
    if (m_GroupPaths.Count() == 0) return;
    const DString shots = AppendExptPathElts("Shots");
    CreateFolder(shots);
    m_GroupPaths[0] = shots;

    DIni definition(DefinitionFile());
    definition.SetSection("General");
    m_Description = definition.GetKeyValue("Description", nullptr);
    ReadGroups(definition.GetFullSection("Groups"));
    // A cue can name any group, so the cues come behind all of them.
    ReadCues(definition.GetFullSection("ShotCreation"));
}

void Experiment::ReadGroups(const DStringArray& lines) {
    m_Groups.Size(lines.Count());
    if (Logging) Log("Parsing out shot groups...");
    for (int i = 0; i < m_Groups.Count(); ++i) {
        DStringArray fields;
        fields.split(lines[i].BeforeFirst('=', true), ";", 3);
        if (fields.Count() < 3) continue;
        m_Groups[i].m_Pattern = fields[0];
        m_Groups[i].m_Label = fields[2];
        AddGroups(FullPath(fields[0]));
    }
}

// Every folder that fits the pattern becomes a group, in the order of the names.
void Experiment::AddGroups(const DString& pattern) {
    DStringArray names;
    GetFolders(pattern, names, true);
    DString parent;
    DString leaf;
    SplitPathElts(pattern, parent, leaf);
    for (int i = 0; i < names.Count(); ++i)
        m_GroupPaths.Add(AppendPathElts(parent, names[i]));
}

void Experiment::ReadCues(const DStringArray& lines) {
    if (Logging) Log("Getting cues...");
    if (lines.Count() == 0) {
        m_Cues.Size(1);
        if (m_Cues.Count() == 1) m_Cues[0].m_Cue = "*";
        return;
    }
    m_Cues.Size(lines.Count());
    for (int i = 0; i < m_Cues.Count(); ++i) {
        m_Cues[i].m_Cue = lines[i].BeforeFirst('=', true);
        m_Cues[i].m_Group = GetShotGroupNumber(lines[i].AfterFirst('=', true));
    }
}

DString Experiment::GetExperimentPath() const { return m_ExperimentPath; }

DString Experiment::GetExperimentFolder() const { return m_ExperimentFolder; }

DString Experiment::GetExperimentName() const { return m_ExperimentName; }

DString Experiment::GetExperimentUNCFolder() const { return m_ExperimentUNCFolder; }

DString Experiment::AppendExptPathElts(const DString& element) const {
    return AppendPathElts(m_ExperimentFolder, element);
}

DString Experiment::AppendExptPathElts(const DString& first, const DString& second) const {
    return AppendPathElts(m_ExperimentFolder, first, second);
}
