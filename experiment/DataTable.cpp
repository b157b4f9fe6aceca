// The table of data objects that callers hold, and of objects kept in memory under "@" names.
#include <strings.h>

#include "data/Waveform.h"
#include "experiment/Experiment.h"
#include "types/MemoryWatch.h"

namespace {

// A particle group is never a memory object.
bool IsMemoryName(const DString& name, DataType type) {
    return name[0] == '@' && type != DataPGroup;
}

// Removes the entry of an object if its name still shares `mark`. Writing may have spoken to the
// host, and the host may have changed the table: an index can stand for another entry then, and so
// can the object's address, which a later object can have again.
void RemoveMarked(DArray<DataPtr>& table, const void* object, const DString& mark) {
    const char* block = mark;
    for (int i = 0; i < table.Count(); ++i) {
        if (table[i].m_Object != object || static_cast<const char*>(table[i].m_Name) != block)
            continue;
        table.Remove(i, 1);
        return;
    }
}

}  // namespace

int Experiment::FindMemoryObject(const DString& name, DataType type) const {
    for (int i = 0; i < m_DataPtrs.Count(); ++i) {
        const DataPtr& entry = m_DataPtrs[i];
        if (entry.m_Type == type && entry.m_Name.GetLength() == name.GetLength() &&
            strcasecmp(entry.m_Name, name) == 0) {
            return i;
        }
    }
    return -1;
}

// The index of an entry by its object and kind, from `start` on; -1 if there is none.
int Experiment::FindObject(const void* object, DataType type, int start) const {
    for (int i = start; i < m_DataPtrs.Count(); ++i) {
        if (m_DataPtrs[i].m_Object == object && m_DataPtrs[i].m_Type == type) return i;
    }
    return -1;
}

void* Experiment::GetDataPtr(DString const& name, DataType type) {
    if (IsMemoryName(name, type)) {
        const int index = FindMemoryObject(name, type);
        return index < 0 ? nullptr : m_DataPtrs[index].m_Object;
    }
    const MemoryWatch memory;
    const DString reference(name);  // may be an entry's own, which the appending moves
    const int before = m_DataPtrs.Count();
    m_DataPtrs.AddBlank(1);
    if (m_DataPtrs.Count() == before) return nullptr;
    m_DataPtrs.Last().AllocData(type);
    if (reference.IsEmpty()) return m_DataPtrs.Last().m_Object;
    const DString path = GetDataFileName(reference);
    DataPtr& entry = m_DataPtrs.Last();
    if (!path.IsEmpty()) {
        entry.m_Type = type;
        // What was read in part would replace its file when it is given back.
        if (entry.Read(path) && memory.Whole()) {
            entry.m_Name = reference;
            return entry.m_Object;
        }
    }
    m_DataPtrs.Remove(m_DataPtrs.Count() - 1, 1);
    return nullptr;
}

// A parameter of a trace, for which no more is read than it needs. False if there is no trace, or
// none with points, of that name.
bool Experiment::GetTraceParameter(const DString& name, const DString& parameter, float& value) {
    const bool ofTable = name.IsEmpty() || IsMemoryName(name, DataWaveform);
    if (!ofTable && !Waveform::NeedsSamples(parameter)) {
        Waveform header(0);
        const DString path = GetDataFileName(name);
        if (path.IsEmpty() || !header.Read(path, 0) || header.m_HeaderPoints <= 0) return false;
        value = header.GetHeaderParam(parameter);
        return true;
    }
    void* object = GetDataPtr(name, DataWaveform);
    if (!object) return false;
    value = static_cast<const Waveform*>(object)->GetTraceParam(parameter);
    ReleaseDataPtr("", DataWaveform, object);
    return true;
}

void* Experiment::InitDataPtr(DString const& name, DataType type) {
    if (name.IsEmpty() || type == DataPGroup) return nullptr;
    const DString known(name);
    const int before = m_DataPtrs.Count();
    m_DataPtrs.AddBlank(1);
    if (m_DataPtrs.Count() == before) return nullptr;
    m_DataPtrs.Last().AllocData(type);
    m_DataPtrs.Last().m_Name = known;
    return m_DataPtrs.Last().m_Object;
}

bool Experiment::ReleaseDataPtr(DString const& name, DataType type, void*& object) {
    const DString target(name);  // both arguments may be an entry's own
    void* const wanted = object;
    const int first = FindObject(wanted, type, 0);
    if (first < 0) return true;
    object = nullptr;
    m_DataPtrs[first].m_Object = wanted;  // in case it was `object` itself that is null now
    bool result = true;
    for (int i = first; i >= 0; i = FindObject(wanted, type, i + 1)) {
        if (IsMemoryName(target, type)) {
            m_DataPtrs[i].m_Name = target;
            continue;
        }
        // The name's text, in a block that no other entry shares.
        const DString mark(static_cast<const char*>(m_DataPtrs[i].m_Name));
        m_DataPtrs[i].m_Name = mark;
        const DString path = target.IsEmpty() ? DString() : GetDataFileName(target);
        if (!path.IsEmpty()) result = m_DataPtrs[i].Write(path);
        RemoveMarked(m_DataPtrs, wanted, mark);
    }
    return result;
}

void Experiment::ClearDataPtrs() { m_DataPtrs.Clear(); }
