// Copying a shot aside, and stamping a configuration with the last run.
#include <strings.h>

#include <iterator>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

/// Back up inside the shot's own folder.
constexpr char InsideShot[] = "![Shot]";

// Without regard to case.
bool IsInsideShot(const DString& path) { return path == DString(InsideShot); }

// The folder itself if it is free, otherwise the first of folder_1, folder_2 and so on.
DString FirstFreeFolder(const DString& folder) {
    const MemoryWatch memory;
    DString candidate(folder);
    DString probe(candidate);
    for (int n = 1; memory.Whole() && FolderExists(probe); ++n) {
        candidate = folder + "_" + DString(n);
        probe = candidate;
    }
    return memory.Whole() ? candidate : DString();
}

}  // namespace

void Experiment::SetBackupPath(DString path) {
    const MemoryWatch memory;
    const DString key("Path");
    DIni definition(DefinitionFile());
    definition.SetSection("Backup");
    if (!IsInsideShot(path)) {
        DString parent;
        DString name;
        SplitPathElts(path, parent, name);
        if (name == m_ExperimentName) path = parent;
        path = RelativePath(path);
    }
    if (memory.Whole()) definition.SetKeyValue(key, path);
}

DString Experiment::GetBackupPath() {
    const MemoryWatch memory;
    DIni definition(DefinitionFile());
    definition.SetSection("Backup");
    // A name in its own right, below no folder: nothing is made of it, and a host that relies on
    // the default gives it a place through the table of translations.
    const DString value = definition.GetKeyValue("Path", "\\Backup");
    if (IsInsideShot(value)) return value;
    const DString path = FullPath(value);
    DString probe(path);
    if (memory.Whole() && !FolderExists(probe)) CreateFolder(path);
    return path;
}

DString Experiment::GetBackupShotFolder(DString folder) {
    const MemoryWatch memory;
    if (folder.IsEmpty()) folder = m_ShotFolder;
    const DString root = GetBackupPath();
    DString result;
    // With regard to case, where storing the mark ignores it.
    if (root == InsideShot) {
        result = AppendPathElts(m_ShotFolder, "Backup" + m_ShotName);
    } else if (!m_ExperimentPath.IsEmpty() &&
               strncasecmp(folder, m_ExperimentPath,
                           static_cast<size_t>(m_ExperimentPath.GetLength())) == 0) {
        result = folder.Replace(m_ExperimentPath, root, true, nullptr);
    } else {
        result = AppendPathElts(m_ExperimentPath, "Backup", m_ExperimentName, "Shots",
                                "Shot" + m_ShotName);
    }
    return memory.Whole() ? FirstFreeFolder(result) : DString();
}

void Experiment::BackupShot() { CopyFolder(m_ShotFolder, GetBackupShotFolder(DString())); }

void Experiment::StampConfigFile(DIni& ini) {
    const MemoryWatch memory;
    const DString section("LastRun");
    const DString keys[] = {"Shot", "ShotPath", "Started"};
    const DString values[] = {m_ShotName, GetCurPath(), Now()};
    if (!memory.Whole()) return;
    ini.HoldWrite(true);
    ini.DeleteSection(section);
    ini.SetSection(section);
    for (size_t i = 0; i < std::size(keys); ++i)
        ini.SetKeyValue(keys[i], values[i]);
    ini.HoldWrite(false);
}
