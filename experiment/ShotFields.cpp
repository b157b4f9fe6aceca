// The fields of the current shot: its own file, and its section in the file of the group.
#include <strings.h>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"

namespace {

const char FieldsSection[] = "Fields";

}  // namespace

DString Experiment::CacheSection() const { return "Shot" + m_ShotName; }

void Experiment::LoadFields() {
    m_ScalarsIni.SetFileName(m_ScalarsFile);
    m_ScalarsIni.SetSection(FieldsSection);
}

void Experiment::LoadCache() {
    m_ScalarCacheIni.SetFileName(m_ScalarCacheFile);
    m_ScalarCacheIni.SetSection(CacheSection());
}

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
    const DString field(key);
    const DString text(value);
    if (!m_PauseIO) {
        LoadFields();
        LoadCache();
    }
    if (text.IsEmpty()) {
        m_ScalarCacheIni.DeleteKey(CacheSection(), field);
        m_ScalarsIni.DeleteKey(FieldsSection, field);
    } else {
        m_ScalarCacheIni.SetKeyValue(field, text);
        m_ScalarsIni.SetKeyValue(field, text);
    }
}

void Experiment::SetShotCacheData() {
    m_ScalarsIni.SetFileName(m_ScalarsFile);
    const DStringArray fields = m_ScalarsIni.GetFullSection(FieldsSection);
    m_ScalarCacheIni.SetFileName(m_ScalarCacheFile);
    m_ScalarCacheIni.SetFullSection(CacheSection(), fields);
}
