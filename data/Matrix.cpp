// Matrix: the record, its sizes and its axes.
#include "data/Matrix.h"

#include <limits.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/CoreGlobal.h"

template class DArray<Matrix>;

namespace {

bool IsRegular(const Matrix::MDim& axis) { return axis.m_Step > 0.0f; }

// The coordinates of the points from `first` on, numbered from 0 in the axis's step.
void FillCoords(Matrix::MDim& axis, int first) {
    const float step = IsRegular(axis) ? axis.m_Step : 1.0f;
    for (int i = first; i < axis.Count(); ++i)
        axis[i] = static_cast<float>(i - first) * step;
}

void SizeAxis(Matrix::MDim& axis, int size) {
    const int before = axis.Count();
    axis.ReSize(1, size);
    axis.m_OrigSize = size;
    FillCoords(axis, before);
}

// Step and coordinates, but not the size in the file, which stays with its place.
void ExchangeAxes(Matrix::MDim& a, Matrix::MDim& b) {
    std::swap(a.m_Step, b.m_Step);
    a.SwapData(b);
}

}  // namespace

// ---- The record

Matrix::Matrix(int rows, int cols, int layers) { Size(rows, cols, layers); }

Matrix::Matrix(Matrix const& other) : DArray<float>(other) { CopyHeader(other); }

Matrix& Matrix::operator=(Matrix const& other) {
    if (this == &other) return *this;
    DArray<float>::operator=(other);
    CopyHeader(other);
    return *this;
}

void Matrix::CopyHeader(Matrix const& other) {
    if (this == &other) return;
    m_NDims = other.m_NDims;
    m_Max = other.m_Max;
    m_Min = other.m_Min;
    m_ScaleUnit = other.m_ScaleUnit;
    std::copy(std::begin(other.m_Params), std::end(other.m_Params), m_Params);
    m_Label = other.m_Label;
    m_Note = other.m_Note;
    m_Date = other.m_Date;
    std::copy(std::begin(other.m_Dims), std::end(other.m_Dims), m_Dims);
}

Matrix& Matrix::InitFrom(Matrix const& other, bool copyParams) {
    if (this == &other) return *this;
    SizeValues(other.Count());
    m_NDims = other.m_NDims;
    std::copy(std::begin(other.m_Dims), std::end(other.m_Dims), m_Dims);
    if (copyParams) {
        std::copy(std::begin(other.m_Params), std::end(other.m_Params), m_Params);
        m_Calib = other.m_Calib;
    }
    return *this;
}

int Matrix::setcoords(int& rows, int& cols, int& layers) {
    int* const sizes[] = {&rows, &cols, &layers};
    for (int* size : sizes)
        *size = std::max(*size, 1);
    m_NDims = layers > 1 ? 3 : 2;
    for (int i = 0; i < m_NDims; ++i)
        SizeAxis(m_Dims[i], *sizes[i]);
    if (m_NDims == 2) {
        m_Dims[2].Size(1);
        m_Dims[2].m_OrigSize = 1;
    }
    const int64_t total = Total();
    return total <= INT_MAX ? static_cast<int>(total) : 0;
}

void Matrix::Size(int rows, int cols, int layers) { SizeValues(setcoords(rows, cols, layers)); }

void Matrix::ReSize(int rows, int cols, int layers) {
    DArray<float>::ReSize(1, setcoords(rows, cols, layers));
}

void Matrix::Reserve(int rows, int cols, int layers) {
    DArray<float>::Reserve(setcoords(rows, cols, layers));
}

void Matrix::Zero() { std::fill_n(m_Data, std::max(Count(), 0), 0.0f); }

int Matrix::UsedDims() const { return std::clamp(m_NDims, 0, 3); }

// The product of the three axis sizes; more than an int holds where that is so.
int64_t Matrix::Total() const {
    int64_t total = 1;
    for (const MDim& axis : m_Dims) {
        // Two sizes can't overflow 64 bits, and a third can only where the two already exceed an
        // int or one of them is 0.
        total = total > INT_MAX && axis.Count() > 0 ? INT64_MAX / INT_MAX : total * axis.Count();
    }
    return total;
}

void Matrix::SizeValues(int64_t total) {
    DArray<float>::Size(total <= INT_MAX ? static_cast<int>(total) : 0);
}

// ---- Axes

int Matrix::GetSize(int dimension) const {
    return IsDimension(dimension) ? m_Dims[dimension - 1].Count() : -1;
}

int Matrix::GetOrigSize(int dimension) const {
    return IsDimension(dimension) ? m_Dims[dimension - 1].m_OrigSize : -1;
}

float Matrix::GetStep(int dimension) const {
    return IsDimension(dimension) ? m_Dims[dimension - 1].m_Step : -1.0f;
}

float Matrix::GetCoord(int dimension, int index) const {
    if (index < 0 || index >= GetSize(dimension)) return -1.0f;
    return m_Dims[dimension - 1][index];
}

DArray<float> Matrix::GetAllCoords(int dimension) const {
    return m_Dims[IsDimension(dimension) ? dimension - 1 : 0];
}

DArray<float> Matrix::GetPartialCoords(int dimension, float from, float to) const {
    DArray<float> part;
    if (GetSize(dimension) < 1) return part;
    const MDim& axis = m_Dims[dimension - 1];
    const int end = axis.Count() - 1;
    int first = 0;
    while (IsVF(from) && first < end && !(from <= axis[first]))
        ++first;
    int last = end;
    while (IsVF(to) && last > first && !(axis[last] <= to))
        --last;
    part.Insert(&axis[first], 0, last - first + 1);
    return part;
}

void Matrix::SetStep(int dimension, float step, float start) {
    if (!IsDimension(dimension)) return;
    MDim& axis = m_Dims[dimension - 1];
    axis.m_Step = step;
    if (!IsRegular(axis)) return;
    for (int i = 0; i < axis.Count(); ++i)
        axis[i] = static_cast<float>(i) * step + start;
}

void Matrix::SetCoord(int dimension, int index, float value) {
    constexpr double LeastStep = 1e-30;
    if (index < 0 || index >= GetSize(dimension)) return;
    MDim& axis = m_Dims[dimension - 1];
    if (!(axis.m_Step <= 0.0f)) return;
    if (index > 0) {
        const double least = static_cast<double>(axis[index - 1]) + LeastStep;
        value = std::max(value, static_cast<float>(least));
    }
    axis[index] = value;
}

void Matrix::SetAllCoords(int dimension, DArray<float> const& coords) {
    if (GetSize(dimension) != coords.Count() || !IsDimension(dimension)) return;
    MDim& axis = m_Dims[dimension - 1];
    static_cast<DArray<float>&>(axis) = coords;
    axis.m_Step = 0.0f;
}

void Matrix::Collapse() {
    if (m_NDims <= 2) return;
    int flat = UsedDims() - 1;
    while (flat >= 0 && m_Dims[flat].Count() >= 2)
        --flat;
    if (flat < 0) return;
    const int last = UsedDims() - 1;
    for (int i = flat; i < last; ++i)
        ExchangeAxes(m_Dims[i], m_Dims[i + 1]);
    m_Dims[last].Clear();
    m_NDims = last;
}

void Matrix::SwapCoords(int a, int b) {
    if (a < 1 || a >= UsedDims() || b < 1 || b > UsedDims()) return;
    ExchangeAxes(m_Dims[a - 1], m_Dims[b - 1]);
}

void Matrix::CopyCoords(int to, int from, Matrix const& source) {
    if (IsDimension(to) && IsDimension(from)) m_Dims[to - 1] = source.m_Dims[from - 1];
}

int Matrix::PointAtCoord(int dimension, float coord) const {
    if (dimension < 1 || dimension > UsedDims()) return 0;
    const MDim& axis = m_Dims[dimension - 1];
    for (int i = 0; i < axis.Count(); ++i) {
        if (coord <= axis[i]) return i;
    }
    return axis.Count() - 1;
}
