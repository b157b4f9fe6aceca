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
