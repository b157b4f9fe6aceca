// DataPtr: the one place that turns a kind into a class.
#include "data/DataPtr.h"

#include <new>
#include <utility>

#include "data/Geometry.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"

template class DArray<DataPtr>;

namespace {

// Calls `use(object)` with the object as what it is; `otherwise` for no object or an unknown kind.
template <typename Result, typename Use>
Result WithObject(void* object, DataType type, Result otherwise, Use use) {
    if (!object) return otherwise;
    switch (type) {
        case DataWaveform:
            return use(*static_cast<Waveform*>(object));
        case DataMatrix:
            return use(*static_cast<Matrix*>(object));
        case DataPGroup:
            return use(*static_cast<ParticleGroup*>(object));
        case DataGeometry:
            return use(*static_cast<Geometry*>(object));
        default:
            return otherwise;
    }
}

// Null for an unknown kind, and where memory is refused.
void* NewObject(DataType type) {
    switch (type) {
        case DataWaveform:
            return new (std::nothrow) Waveform(0);
        case DataMatrix:
            return new (std::nothrow) Matrix(1, 1, 1);
        case DataPGroup:
            return new (std::nothrow) ParticleGroup(0);
        case DataGeometry:
            return new (std::nothrow) Geometry();
        default:
            return nullptr;
    }
}

bool IsKnown(DataType type) { return type >= DataWaveform && type <= DataGeometry; }

// How each kind is read whole. A trace without points counts as missing.
bool ReadWhole(Waveform& waveform, const DString& name) {
    return waveform.Read(name, -1) && waveform.Count() != 0;
}

bool ReadWhole(Matrix& matrix, const DString& name) { return matrix.Read(name, -1, 0); }

bool ReadWhole(ParticleGroup& group, const DString& name) { return group.Read(name, -1, 0); }

bool ReadWhole(Geometry& geometry, const DString& name) { return geometry.Read(name); }

}  // namespace

DataPtr::DataPtr(const DataPtr& other) : m_Type(other.m_Type), m_Name(other.m_Name) {
    const auto copy = [](auto& object) -> void* {
        return new (std::nothrow) std::remove_reference_t<decltype(object)>(object);
    };
    m_Object = WithObject<void*>(other.m_Object, m_Type, nullptr, copy);
}

DataPtr& DataPtr::operator=(const DataPtr& other) {
    if (this == &other) return *this;
    DataPtr copy(other);
    std::swap(m_Object, copy.m_Object);
    std::swap(m_Type, copy.m_Type);
    m_Name = other.m_Name;
    return *this;
}

DataPtr::~DataPtr() { Release(); }

void DataPtr::AllocData(DataType type) {
    const DataType before = m_Type;
    Release();
    m_Object = NewObject(type);
    m_Type = IsKnown(type) ? type : before;
}

bool DataPtr::Read(DString name) {
    return WithObject(m_Object, m_Type, false,
                      [&name](auto& object) { return ReadWhole(object, name); });
}

bool DataPtr::Write(DString name) {
    return WithObject(m_Object, m_Type, false,
                      [&name](auto& object) { return object.Write(name); });
}

void DataPtr::Release() {
    void* const object = m_Object;
    const DataType type = m_Type;
    m_Object = nullptr;
    m_Type = DataNone;
    WithObject(object, type, false, [](auto& held) {
        delete &held;
        return true;
    });
}
