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
    const DString wanted(key);  // may be a line of the document that is loaded now
    return GetDataNamedAt(wanted, 0, wanted.Find("::", 0));
}

// GetShotData of `text` from `start` on, where `parting` is the place of its first "::". The
// evaluator asks for every rest of a long chain, which is too much to copy.
DString Experiment::GetDataNamedAt(const DString& text, int start, int parting) {
    if (m_ShotFolder.IsEmpty()) return DString();
    const char* name = static_cast<const char*>(text) + start;
    if (text.GetLength() - start == 4 && strcasecmp(name, "Shot") == 0) return m_ShotName;
    if (!m_PauseIO) LoadFields();
    if (parting != npos) {
        const DString first = m_ScalarsIni.GetKeyValue(text.Mid(start, parting - start), nullptr);
        if (!first.IsEmpty()) return first;
        start = parting + 2;
    }
    return m_ScalarsIni.GetValueNamedAt(text, start);
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
