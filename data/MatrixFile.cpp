// Matrix: its file format, and reading a part of a file.
#include <limits.h>
#include <stdint.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/BinaryFields.h"
#include "data/Matrix.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

constexpr int32_t FileVersion = 4;
constexpr int32_t FirstVersionWithCalib = 4;
constexpr int MostDims = 3;

/// Extrema, calibration, scale unit and parameters.
constexpr int NumberBytes = 36;

constexpr int OpenToWrite = 6;
constexpr int OpenToUpdate = 7;

// In a file an axis is irregular if its step is exactly 0: one with a negative step keeps its first
// coordinate alone and comes back evenly spaced downwards.
bool HasAllCoords(const Matrix::MDim& axis) { return axis.m_Step == 0.0f; }

// Even coordinates cost memory that the file doesn't hold, so that a huge count of them is believed
// only where the file is big enough for a value at each point. This many are made in any case, and
// the last one.
constexpr int64_t MostPointsAhead = 1048576;

// How many leading coordinates are worked out: of those GetMatrixParam asks for the first two, and
// the last.
constexpr int AllCoords = INT_MAX;
constexpr int CoordsOfParameters = 2;

// Works out the coordinates behind the first of an axis that has `size` points in the file and may
// have been cut or made longer since: the first `leading` of them, and those at its ends.
void FillCoords(const DFile& file, Matrix::MDim& axis, int size, int leading) {
    int64_t points = size;
    if (points > MostPointsAhead)
        points = std::min(points, std::max(MostPointsAhead, FileBytes(file) / 4));
    float* const coords = axis.Data();
    const float first = coords[0];
    const float step = axis.m_Step;
    const auto coord = [=](int i) { return static_cast<float>(i) * step + first; };
    const int kept = static_cast<int>(std::min<int64_t>(points, axis.Count()));
    for (int i = 1; i < std::min(kept, leading); ++i)
        coords[i] = coord(i);
    if (kept > 1) coords[kept - 1] = coord(kept - 1);
    if (points < size && size <= axis.Count()) coords[size - 1] = coord(size - 1);
}

// ---- The pieces of the file, each as it is read and as it is written

// The points of an axis whose coordinates are left to be worked out, 0 where there are none.
int ReadAxis(DFile& file, Matrix::MDim& axis) {
    int32_t size = 0;
    FieldBlock head(file, sizeof size + sizeof axis.m_Step);
    if (ReadField(head, size)) axis.m_OrigSize = std::max(size, 0);
    size = std::max(size, 0);
    ReadField(head, axis.m_Step);
    if (HasAllCoords(axis)) {
        ReadArray(file, axis, size);
        if (axis.Count() != size) SkipBytes(file, int64_t{4} * size);
        return 0;
    }
    axis.Size(size);
    float first = 0.0f;
    if (!ReadField(file, first) || axis.Count() == 0) return 0;
    axis[0] = first;
    return size;
}

void WriteAxis(DFile& file, const Matrix::MDim& axis) {
    WriteField<int32_t>(file, axis.Count());
    WriteField(file, axis.m_Step);
    if (HasAllCoords(axis)) {
        WriteFloats(file, axis.Data(), axis.Count());
    } else {
        WriteField(file, axis.Count() > 0 ? axis[0] : 0.0f);
    }
}

void ReadNumbers(DFile& file, Matrix& matrix, int32_t version) {
    const bool hasCalib = version >= FirstVersionWithCalib;
    FieldBlock numbers(file, NumberBytes - (hasCalib ? 0 : int{sizeof matrix.m_Calib}));
    ReadField(numbers, matrix.m_Max);
    ReadField(numbers, matrix.m_Min);
    if (hasCalib) {
        ReadField(numbers, matrix.m_Calib);
    } else {
        matrix.m_Calib = 1.0f;
    }
    ReadField(numbers, matrix.m_ScaleUnit);
    for (float& param : matrix.m_Params)
        ReadField(numbers, param);
}

void WriteNumbers(DFile& file, const Matrix& matrix) {
    WriteField(file, matrix.m_Max);
    WriteField(file, matrix.m_Min);
    WriteField(file, matrix.m_Calib);
    WriteField(file, matrix.m_ScaleUnit);
    for (const float param : matrix.m_Params)
        WriteField(file, param);
}

void ReadTexts(DFile& file, Matrix& matrix) {
    file.DSRead(matrix.m_Note, false);
    file.DSRead(matrix.m_Label, false);
    file.DSRead(matrix.m_Date, false);
}

void WriteTexts(DFile& file, const Matrix& matrix) {
    file.DSWrite(matrix.m_Note, 4);
    file.DSWrite(matrix.m_Label, 4);
    file.DSWrite(matrix.m_Date, 4);
}

// Points behind the axis's own are 0, and cost no memory until they are used.
void GrowAxis(Matrix::MDim& axis, int size) {
    DArray<float> grown(size);
    if (grown.Count() != size) return;
    std::copy_n(axis.Data(), axis.Count(), grown.Data());
    axis.SwapData(grown);
}

// ---- Ranges in names

int NumberOr(const DString& text, int fallback) {
    int number = 0;
    return text.Trim().ToInt(number, 0) ? number : fallback;
}

// Takes a range "[start,stop]" off the name. What is missing of it counts as no number.
void TakeRange(DString& name, int& stop, int& start) {
    const int open = name.Find('[', 0);
    if (open == npos) return;
    const int comma = name.Find(',', open);
    const int close = comma == npos ? npos : name.Find(']', comma);
    start = comma == npos ? 0 : NumberOr(name.Mid(open + 1, comma - open - 1), 0);
    stop = close == npos ? -1 : NumberOr(name.Mid(comma + 1, close - comma - 1), -1);
    name.Truncate(open);
}

// Opens the file of a name that may hold a range.
bool OpenPart(DataFileReader& file, DString name, int& stop, int& start) {
    TakeRange(name, stop, start);
    name += ".dmt";
    return file.Open(name);
}

}  // namespace

// ---- Reading

bool Matrix::Read(DString name, int stop, int start) {
    DataFileReader file;
    if (!OpenPart(file, name, stop, start)) return false;
    Read(file, stop, start);
    return true;
}

void Matrix::Read(DFile& file, int stop, int start) {
    const int dims = ReadHeader(file, stop, start, AllCoords);
    if (dims == 0) SizeValues(0);
    if (dims > 0) ReadValues(file, m_Dims[dims - 1].Count(), start);
}

bool Matrix::ReadHeader(DString name) {
    int stop = 0;
    int start = 0;
    DataFileReader file;
    if (!OpenPart(file, name, stop, start)) return false;
    ReadHeader(file, stop, start, CoordsOfParameters);
    SizeValues(0);
    return true;
}

// What stands ahead of the values. The result is the number of dimensions, negative if they are too
// many to be read.
int Matrix::ReadHeader(DFile& file, int stop, int& start, int leading) {
    int32_t version = FileVersion;
    ReadField(file, version);
    SkipBytes(file, ReadLengthField<int32_t>(file));
    int32_t dims = 0;
    if (ReadField(file, dims)) m_NDims = dims;
    if (dims > MostDims) return -1;
    dims = std::max(dims, 0);
    int evenPoints[MostDims] = {};
    for (int i = 0; i < dims; ++i)
        evenPoints[i] = ReadAxis(file, m_Dims[i]);
    ReadNumbers(file, *this, version);
    ReadTexts(file, *this);
    if (dims > 0) CutAxis(m_Dims[dims - 1], stop, start);
    for (int i = 0; i < dims; ++i) {
        if (evenPoints[i] > 0) FillCoords(file, m_Dims[i], evenPoints[i], leading);
    }
    return dims;
}

// Cuts the last axis to the wanted range. Its first coordinates stay, also where the range begins
// later, and a range that begins ahead of the axis makes it longer.
void Matrix::CutAxis(MDim& axis, int stop, int& start) {
    if (stop < 0 && start <= 0) return;
    stop = std::max(std::min(stop, axis.Count()), 1);
    start = std::min(start, stop - 1);
    const int size = static_cast<int>(std::min<int64_t>(int64_t{stop} - start, INT_MAX));
    if (size > axis.Count()) {
        GrowAxis(axis, size);
    } else {
        axis.ReSize(1, size);
    }
}

// `layers` is the size of the last axis, along which `start` counts. What no file can hold, because
// it lies beyond every position, is 0 like all that the file doesn't hold.
void Matrix::ReadValues(DFile& file, int layers, int start) {
    const int64_t total = Total();
    if (total == 0 || total > INT_MAX) {
        SizeValues(0);
        return;
    }
    const int64_t ahead = total / layers * std::max(start, 0);
    if (ahead <= INT64_MAX / 4 && SkipBytes(file, ahead * 4)) {
        ReadArray(file, *this, static_cast<int>(total));
    } else {
        SizeValues(total);
    }
}

// ---- Writing

bool Matrix::Write(DString name) {
    const MemoryWatch memory;
    name += ".dmt";
    DFile file;
    if (!memory.Whole() || !file.Open(name, OpenToWrite)) return false;
    Write(file);
    return true;
}

void Matrix::Write(DFile& file) {
    m_Date = Now();
    WriteField<int32_t>(file, FileVersion);
    WriteField<int32_t>(file, 0);
    WriteField<int32_t>(file, std::min(m_NDims, MostDims));
    for (int i = 0; i < UsedDims(); ++i)
        WriteAxis(file, m_Dims[i]);
    WriteNumbers(file, *this);
    WriteTexts(file, *this);
    WriteFloats(file, m_Data, m_Count);
}

bool Matrix::Append(DString name) {
    const MemoryWatch memory;
    DString existing = name + ".dmt";
    const bool exists = FileExists(existing);
    if (!memory.Whole()) return false;
    if (!exists) return Write(name);
    DFile file;
    if (!file.Open(existing, OpenToUpdate)) return false;
    Append(file);
    return true;
}

void Matrix::Append(DFile&) {}
