/// DataPtr: an entry of the session's table of live data objects. It owns one object of any kind by
/// an untyped pointer and knows the kind, so that a caller can hold an object by a plain pointer
/// without knowing its class or who frees it.
#pragma once

#include "types/DArray.h"
#include "types/DString.h"

/// The kind of a data object.
enum DataType : int {
    DataNone = 0,      ///< none: an unused entry
    DataWaveform = 1,  ///< Waveform
    DataMatrix = 2,    ///< Matrix
    DataPGroup = 3,    ///< ParticleGroup
    DataGeometry = 4   ///< Geometry
};

/// The object dies with its entry. A copy of an entry holds a copy of the object. Nothing is
/// written to disk when an entry goes.
class DataPtr {
public:
    void* m_Object = nullptr;    ///< the object, owned by the table's entry; null in a blank entry
    DataType m_Type = DataNone;  ///< its kind; DataNone in a blank entry
    DString m_Name;              ///< the name under which it is known; empty for none

    DataPtr() = default;
    DataPtr(const DataPtr& other);
    DataPtr& operator=(const DataPtr& other);
    ~DataPtr();

    /// Creates an empty object of a kind, destroying what the entry held. A kind that isn't known
    /// leaves the entry without an object and its type as it was.
    void AllocData(DataType type);
    /// Reads the object from a file, named without the suffix of its kind. False if that fails; a
    /// waveform without points counts as failed.
    bool Read(DString name);
    /// Writes the object to a file, named likewise.
    bool Write(DString name);
    /// Destroys the object; the entry is then blank but for its name.
    void Release();
};

extern template class DArray<DataPtr>;
