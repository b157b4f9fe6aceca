// The fields of the current shot: its own file, and its section in the file of the group.
#include <strings.h>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "types/MemoryWatch.h"

namespace {

const char FieldsSection[] = "Fields";

// Where the section's name was lost for want of memory the document stays without a file, lest what
// is set goes to another section.
void LoadSection(DIni& document, const DString& file, const DString& section) {
    document.SetFileName(section.IsEmpty() ? DString() : file);
    document.SetSection(section);
}

}  // namespace

DString Experiment::CacheSection() const {
    const MemoryWatch memory;
    const DString section = "Shot" + m_ShotName;
    return memory.Whole() ? section : DString();
}

void Experiment::LoadFields() { LoadSection(m_ScalarsIni, m_ScalarsFile, FieldsSection); }

void Experiment::LoadCache() { LoadSection(m_ScalarCacheIni, m_ScalarCacheFile, CacheSection()); }

DString Experiment::GetShotData(const DString& key) {
    if (m_ShotFolder.IsEmpty()) return DString();
    if (strcasecmp(key, "Shot") == 0) return m_ShotName;
    const DString wanted(key);  // may be a line of the document that is loaded now
    if (!m_PauseIO) LoadFields();
    const int parting = wanted.Find("::", 0);
    if (parting == npos) return m_ScalarsIni.GetKeyValue(wanted, nullptr);
    const DString first = m_ScalarsIni.GetKeyValue(wanted.Left(parting), nullptr);
    if (!first.IsEmpty()) return first;
    return m_ScalarsIni.GetKeyValue(wanted.Mid(parting + 2, npos), nullptr);
}

void Experiment::SetShotData(const DString& key, const DString& value) {
    if (m_ShotFolder.IsEmpty() || key.IsEmpty()) return;
    if (strcasecmp(key, "Comment") == 0 && m_ShotName == value) {
        MsgBox("Attempt to write shot name to comment, in base");
        return;
    }
    const MemoryWatch memory;
    const DString field(key);
    const DString text(value);
    if (!m_PauseIO) {
        LoadFields();
        LoadCache();
    }
    if (!memory.Whole()) return;
    if (text.IsEmpty()) {
        m_ScalarCacheIni.DeleteKey(CacheSection(), field);
        m_ScalarsIni.DeleteKey(FieldsSection, field);
    } else {
        m_ScalarCacheIni.SetKeyValue(field, text);
        m_ScalarsIni.SetKeyValue(field, text);
    }
}

void Experiment::SetShotCacheData() {
    const MemoryWatch memory;
    m_ScalarsIni.SetFileName(m_ScalarsFile);
    const DStringArray fields = m_ScalarsIni.GetFullSection(FieldsSection);
    m_ScalarCacheIni.SetFileName(m_ScalarCacheFile);
    const DString section = CacheSection();
    if (memory.Whole()) m_ScalarCacheIni.SetFullSection(section, fields);
}
