// Copying a shot aside, and stamping a configuration with the last run.
#include <strings.h>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "system/DSystem.h"

namespace {

/// Back up inside the shot's own folder.
constexpr char InsideShot[] = "![Shot]";

// Without regard to case.
bool IsInsideShot(const DString& path) { return path == DString(InsideShot); }

// The folder itself if it is free, otherwise the first of folder_1, folder_2 and so on.
DString FirstFreeFolder(const DString& folder) {
    DString candidate(folder);
    DString probe(candidate);
    for (int n = 1; FolderExists(probe); ++n) {
        candidate = folder + "_" + DString(n);
        probe = candidate;
    }
    return candidate;
}

}  // namespace

void Experiment::SetBackupPath(DString path) {
    DIni definition(DefinitionFile());
    definition.SetSection("Backup");
    if (IsInsideShot(path)) {
        definition.SetKeyValue("Path", path);
        return;
    }
    DString parent;
    DString name;
    SplitPathElts(path, parent, name);
    if (name == m_ExperimentName) path = parent;
    definition.SetKeyValue("Path", RelativePath(path));
}

DString Experiment::GetBackupPath() {
    DIni definition(DefinitionFile());
    definition.SetSection("Backup");
    // A name in its own right, below no folder: nothing is made of it, and a host that relies on
    // the default gives it a place through the table of translations.
    const DString value = definition.GetKeyValue("Path", "\\Backup");
    if (IsInsideShot(value)) return value;
    const DString path = FullPath(value);
    DString probe(path);
    if (!FolderExists(probe)) CreateFolder(path);
    return path;
}

DString Experiment::GetBackupShotFolder(DString folder) {
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
    return FirstFreeFolder(result);
}

void Experiment::BackupShot() { CopyFolder(m_ShotFolder, GetBackupShotFolder(DString())); }

void Experiment::StampConfigFile(DIni& ini) {
    ini.HoldWrite(true);
    ini.DeleteSection("LastRun");
    ini.SetSection("LastRun");
    ini.SetKeyValue("Shot", m_ShotName);
    ini.SetKeyValue("ShotPath", GetCurPath());
    ini.SetKeyValue("Started", Now());
    ini.HoldWrite(false);
}
