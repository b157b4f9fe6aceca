// Matrix: extrema, calibration, and the names of its numbers.
#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/Numeric.h"
#include "data/SampleRuns.h"

namespace {

using Axis = Matrix::MDim;

float FirstCoord(const Axis& axis) { return axis.Count() > 0 ? axis[0] : 0.0f; }

float LastCoord(const Axis& axis) { return axis.Count() > 0 ? axis[axis.Count() - 1] : 0.0f; }

// The distance of the first two of `points` points, of which one alone may be in memory.
float FirstDistance(const Axis& axis, int points) {
    if (points < 2 || axis.Count() < 1) return 0.0f;
    if (axis.Count() > 1) return axis[1] - axis[0];
    return axis.m_Step > 0.0f ? (axis.m_Step + axis[0]) - axis[0] : 0.0f;
}

using Values = const Matrix&;

struct MatrixParameter {
    const char* m_Name;
    float (*m_Value)(const Matrix& matrix);
};

constexpr MatrixParameter MatrixParameters[] = {
    {"t1", [](Values m) { return m.m_Params[0]; }},
    {"t2", [](Values m) { return m.m_Params[1]; }},
    {"t3", [](Values m) { return m.m_Params[2]; }},
    {"t4", [](Values m) { return m.m_Params[3]; }},
    {"t5", [](Values m) { return m.m_Params[4]; }},
    {"su", [](Values m) { return m.m_ScaleUnit; }},
    {"mx", [](Values m) { return m.m_Max; }},
    {"mn", [](Values m) { return m.m_Min; }},
    // Rows are counted in memory, columns and layers in the file.
    {"rc", [](Values m) { return static_cast<float>(m.GetSize(1)); }},
    {"rs", [](Values m) { return m.m_Dims[0].m_Step; }},
    {"rb", [](Values m) { return FirstCoord(m.m_Dims[0]); }},
    {"r1", [](Values m) { return FirstDistance(m.m_Dims[0], m.GetSize(1)); }},
    {"re", [](Values m) { return LastCoord(m.m_Dims[0]); }},
    {"cc", [](Values m) { return static_cast<float>(m.GetOrigSize(2)); }},
    {"cs", [](Values m) { return m.m_Dims[1].m_Step; }},
    {"cb", [](Values m) { return FirstCoord(m.m_Dims[1]); }},
    {"ce", [](Values m) { return LastCoord(m.m_Dims[1]); }},
    {"c1", [](Values m) { return FirstDistance(m.m_Dims[1], m.GetOrigSize(2)); }},
    {"lc", [](Values m) { return static_cast<float>(m.GetOrigSize(3)); }},
    {"ls", [](Values m) { return m.m_Dims[2].m_Step; }},
    {"lb", [](Values m) { return FirstCoord(m.m_Dims[2]); }},
    {"le", [](Values m) { return LastCoord(m.m_Dims[2]); }},
    {"l1", [](Values m) { return FirstDistance(m.m_Dims[2], m.GetOrigSize(3)); }},
};

// An extreme, as the first of the values that equal it has it: zeros differ in their signs.
float SignedAsFirst(Values matrix, float extreme) {
    if (extreme != 0.0f) return extreme;
    return matrix[FindFirst(matrix.Data(), 0, matrix.Count(),
                            [](auto value) { return value == 0.0f; })];
}

}  // namespace

void Matrix::Scale() {
    const SampleRange range = RangeOf(m_Data, Count());
    m_Max = range.m_Max > -DFMax ? SignedAsFirst(*this, range.m_Max) : -DFMax;
    m_Min = range.m_Min < DFMax ? SignedAsFirst(*this, range.m_Min) : DFMax;
    m_ScaleUnit = ScaleUnitOf(GreaterMagnitude(m_Min, m_Max));
}

void Matrix::SetCalibration(float cal) {
    if (cal == 0.0f || !IsVF(cal)) return;
    const float inverse = 1.0f / m_Calib;
    for (int i = 0; i < Count(); ++i)
        m_Data[i] = m_Data[i] * cal * inverse;
    Scale();
    m_Calib = cal;
}

float Matrix::GetMatrixParam(DString const& name) const {
    DString lower(name);
    lower.ToLower();
    for (const MatrixParameter& parameter : MatrixParameters) {
        if (lower == parameter.m_Name) return parameter.m_Value(*this);
    }
    return -DFMax;
}
