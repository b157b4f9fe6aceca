// Scalars: an expression read as a number, and a number written to a field or a stored parameter.
#include <iterator>

#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"
#include "types/MemoryWatch.h"

namespace {

// The element of a data object's parameters for the "1" to "9", "a" to "c" of a key; -1 for others.
int ParameterIndex(char c) {
    static const char Parameters[] = "123456789abc";
    static const char Capitals[] = "123456789ABC";
    for (int i = 0; Parameters[i]; ++i) {
        if (c == Parameters[i] || c == Capitals[i]) return i;
    }
    return -1;
}

// Sets a number stored with a trace; false if there is no trace with points of that name.
bool SetTraceNumber(const DString& path, int index, float value) {
    const MemoryWatch memory;
    Waveform waveform(0);
    waveform.Read(path, -1);
    if (waveform.Count() == 0) return false;
    if (!memory.Whole()) return true;  // half a trace must not replace it
    waveform.m_Params[index] = value;
    waveform.Write(path);
    return true;
}

// The same for a matrix, which has fewer numbers. A name with a range stands for a part, which must
// not be written over the whole.
void SetMatrixNumber(const DString& path, int index, float value) {
    const MemoryWatch memory;
    Matrix matrix(1, 1, 1);
    if (index >= static_cast<int>(std::size(matrix.m_Params)) || path.Find('[', 0) != npos) return;
    if (!matrix.Read(path, -1, 0) || !memory.Whole() || matrix.Count() < 2) return;
    matrix.m_Params[index] = value;
    matrix.Write(path);
}

}  // namespace

float Experiment::GetScalarData(DString expression, ValueCallback resolver) {
    const MemoryWatch memory;
    const float value = ParseInput(GetExpandedString(expression, true), resolver);
    return IsVF(value) && memory.Whole() ? value : -DFMax;
}

void Experiment::SetScalarData(const DString& key, float value) {
    if (m_ShotFolder.IsEmpty()) return;
    const int backslash = key.Find('\\', 0);
    if (backslash == npos) {
        const MemoryWatch memory;
        const DString text(value);
        if (memory.Whole()) SetShotData(key, text);
    } else {
        SetTraceParameter(key, backslash, value);
    }
}

void Experiment::SetTraceParameter(const DString& key, int backslash, float value) {
    const bool wellFormed = key.GetLength() == backslash + 3 &&
                            (key[backslash + 1] == 't' || key[backslash + 1] == 'T');
    const int index = wellFormed ? ParameterIndex(key[backslash + 2]) : -1;
    if (index < 0) return;
    const DString path = GetDataFileName(key.Left(backslash));
    if (path.IsEmpty()) return;
    if (!SetTraceNumber(path, index, value)) SetMatrixNumber(path, index, value);
}
