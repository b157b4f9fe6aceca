/// Matrices and .dmt files for the tests of matrices, put together by hand.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "data/GoldenBytes.h"
#include "data/Matrix.h"
#include "data/WaveformTestData.h"
#include "support/Support.h"

using FloatList = std::vector<float>;

/// A value that tells its place: row, column and layer are its last three digits.
inline float ValueAt(int row, int col, int layer) {
    return static_cast<float>(100 * layer + 10 * col + row);
}

/// The values of layers `first` up to, but without, `end`.
inline FloatList LayerValues(int rows, int cols, int first, int end) {
    FloatList values;
    for (int layer = first; layer < end; ++layer) {
        for (int col = 0; col < cols; ++col) {
            for (int row = 0; row < rows; ++row)
                values.push_back(ValueAt(row, col, layer));
        }
    }
    return values;
}

inline FloatList Values(const Matrix& matrix) {
    return {matrix.Data(), matrix.Data() + matrix.Count()};
}

inline FloatList Coords(const Matrix& matrix, int dimension) {
    return Samples(matrix.m_Dims[dimension - 1]);
}

/// A matrix of one column with these values, its extrema not set.
inline Matrix MakeColumn(const FloatList& values) {
    Matrix matrix(static_cast<int>(values.size()), 1, 1);
    std::copy(values.begin(), values.end(), matrix.Data());
    return matrix;
}

/// Makes an axis irregular, with these coordinates; the axis must have as many points.
inline void SetCoords(Matrix& matrix, int dimension, const FloatList& coords) {
    DArray<float> all(static_cast<int>(coords.size()));
    std::copy(coords.begin(), coords.end(), all.Data());
    matrix.SetAllCoords(dimension, all);
}

/// A matrix of 2 by 2 by 2 as an earlier use left it: no field has the value of a hand-made file.
inline Matrix UsedMatrix() {
    Matrix matrix(2, 2, 2);
    for (int i = 0; i < 8; ++i)
        matrix[i] = static_cast<float>(50 + i);
    for (int d = 1; d <= 3; ++d)
        matrix.SetStep(d, static_cast<float>(10 * d), static_cast<float>(d));
    for (int i = 0; i < 5; ++i)
        matrix.m_Params[i] = static_cast<float>(60 + i);
    matrix.m_ScaleUnit = 71.0f;
    matrix.m_Max = 72.0f;
    matrix.m_Min = 73.0f;
    matrix.m_Calib = 74.0f;
    matrix.m_Label = "old label";
    matrix.m_Note = "old note";
    matrix.m_Date = "old date";
    return matrix;
}

/// Expects all but m_NDims, sizes, axes and values to be those of UsedMatrix.
inline void ExpectFieldsOfUsedMatrix(const Matrix& matrix) {
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(matrix.m_Params[i], static_cast<float>(60 + i));
    EXPECT_EQ(matrix.m_ScaleUnit, 71.0f);
    EXPECT_EQ(matrix.m_Max, 72.0f);
    EXPECT_EQ(matrix.m_Min, 73.0f);
    EXPECT_EQ(matrix.m_Calib, 74.0f);
    EXPECT_STREQ(matrix.m_Label, "old label");
    EXPECT_STREQ(matrix.m_Note, "old note");
    EXPECT_STREQ(matrix.m_Date, "old date");
}

/// The same, axes and values included.
inline void ExpectUsedMatrix(const Matrix& matrix) {
    const Matrix used = UsedMatrix();
    ExpectFieldsOfUsedMatrix(matrix);
    EXPECT_EQ(Values(matrix), Values(used));
    for (int d = 1; d <= 3; ++d) {
        EXPECT_EQ(Coords(matrix, d), Coords(used, d)) << d;
        EXPECT_EQ(matrix.GetStep(d), used.GetStep(d)) << d;
        EXPECT_EQ(matrix.GetOrigSize(d), used.GetOrigSize(d)) << d;
    }
}

/// The record of an axis: one coordinate where the step isn't 0, all of them where it is.
inline std::string AxisRecord(long points, float step, const FloatList& coords) {
    return Int32(points) + Float32(step) + Floats(coords);
}

/// A .dmt file, by default of 2 rows, 3 columns at uneven places and 4 layers. Its defaults give
/// every field a value of its own.
struct DmtFile {
    long m_Version = 4;
    long m_ExtensionLength = 0;
    std::string m_Extension;
    long m_NDims = 3;
    std::string m_Axes = AxisRecord(2, 0.5f, {10.0f})                  // 12
                         + AxisRecord(3, 0.0f, {1.0f, 2.5f, 8.0f})     // 24
                         + AxisRecord(4, 2.0f, {-1.0f});               // 44
    std::string m_Extrema = Float32(312.5f) + Float32(-7.5f);          // 56
    std::string m_Calib = Float32(2.5f);                               // 64: none below version 4
    std::string m_Numbers = Float32(0.25f)                             // 68: scale unit
                            + Floats({1.5f, 2.5f, 3.5f, 4.5f, 5.5f});  // 72: t1 to t5
    std::string m_Note = LongText("a note");                           // 92
    std::string m_Label = LongText("the label");                       // 102
    std::string m_Date = LongText("06/07/2021 08:09:10");              // 115
    std::string m_Values = Floats(LayerValues(2, 3, 0, 4));            // 138

    std::string Header() const {
        return Int32(m_Version) + Int32(m_ExtensionLength) + m_Extension + Int32(m_NDims) + m_Axes +
               m_Extrema + m_Calib + m_Numbers + m_Note + m_Label + m_Date;
    }
    std::string Bytes() const { return Header() + m_Values; }
};

/// The same as a 2-D file of 2 rows and 3 columns.
inline DmtFile FlatDmtFile() {
    DmtFile file;
    file.m_NDims = 2;
    file.m_Axes = AxisRecord(2, 0.5f, {10.0f}) + AxisRecord(3, 2.0f, {-1.0f});
    file.m_Values = Floats(LayerValues(2, 3, 0, 1));
    return file;
}

/// Writes the file matrix.dmt and reads it into `matrix`; the result of the read.
inline bool ReadFrom(const std::string& bytes, Matrix& matrix, int stop = -1, int start = 0) {
    WriteBytes(Scratch("matrix.dmt"), bytes);
    return matrix.Read(Scratch("matrix").c_str(), stop, start);
}

inline bool ReadFrom(const DmtFile& file, Matrix& matrix, int stop = -1, int start = 0) {
    return ReadFrom(file.Bytes(), matrix, stop, start);
}
