// DataPtr: the one place that turns a kind into a class.
#include "data/DataPtr.h"

#include <new>

#include "data/Waveform.h"

template class DArray<DataPtr>;

namespace {

Waveform* AsWaveform(void* object) {
    return static_cast<Waveform*>(object);
}

}  // namespace

DataPtr::DataPtr(const DataPtr& other) : m_Type(other.m_Type), m_Name(other.m_Name) {
    if (other.m_Object && m_Type == DataWaveform) {
        m_Object = new (std::nothrow) Waveform(*AsWaveform(other.m_Object));
    }
}

DataPtr& DataPtr::operator=(const DataPtr& other) {
    if (this == &other) return *this;
    DataPtr copy(other);
    std::swap(m_Object, copy.m_Object);
    std::swap(m_Type, copy.m_Type);
    m_Name = other.m_Name;
    return *this;
}

void DataPtr::AllocData(DataType type) {
    const DataType before = m_Type;
    Release();
    m_Type = before;
    if (type == DataWaveform) {
        m_Object = new (std::nothrow) Waveform(0);
        m_Type = type;
    }
}

bool DataPtr::Read(DString name) {
    if (!m_Object || m_Type != DataWaveform) return false;
    Waveform& waveform = *AsWaveform(m_Object);
    return waveform.Read(name, -1) && waveform.Count() != 0;
}

bool DataPtr::Write(DString name) {
    return m_Object && m_Type == DataWaveform && AsWaveform(m_Object)->Write(name);
}

void DataPtr::Release() {
    if (m_Type == DataWaveform) delete AsWaveform(m_Object);
    m_Object = nullptr;
    m_Type = DataNone;
}
