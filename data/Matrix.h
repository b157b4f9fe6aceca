/// Matrix: values on a grid of two or three dimensions, such as an image or a stack of images, with
/// one coordinate axis for each dimension. A shot folder holds one .dmt file per matrix;
/// docs/formats.md describes it.
///
/// The dimensions are row, column and layer, numbered 1 to 3 in all operations. The values run with
/// the last dimension slowest, so a layer of a 3-D matrix, or a column of a 2-D one, is a
/// contiguous run of them: partial reading rests on that. A 2-D matrix has a layer axis of one
/// point all the same.
///
/// An axis is regular if its step is above 0, and irregular, with explicit coordinates, otherwise.
/// Reserve, Collapse and a partial read leave the number of values and the product of the axis
/// sizes apart; operations on values go by Count(), operations on an axis by that axis.
///
/// A dimension number outside 1 to 3 makes a getter return its failure value and a setter do
/// nothing. Sizes whose product exceeds 2^31 - 1 give a matrix without values.
#pragma once

#include "types/DArray.h"
#include "types/DString.h"

class DFile;

class Matrix : private DArray<float> {
public:
    /// An axis: one coordinate for each point.
    class MDim : public DArray<float> {
    public:
        float m_Step = 1.0f;  ///< distance of neighbouring points; 0 or below: an irregular axis
        int m_OrigSize = 1;   ///< points in the file or at the last sizing

        /// One point at 0.
        MDim() : DArray<float>(1) {}
    };

    float m_ScaleUnit = 1.0f;  ///< decimal step size that fits the range of the values
    float m_Params[5] = {};    ///< free numbers, stored and reported only
    DString m_Label;           ///< free text
    DString m_Note;            ///< free text
    DString m_Date;            ///< time of the last write, as Now gives it
    MDim m_Dims[3];            ///< the axes of row, column and layer
    int m_NDims = 2;           ///< dimensions in use: 2 or 3, or what a bad file announced
    float m_Max = 0.0f;        ///< greatest value, as last computed or read
    float m_Min = 0.0f;        ///< least value, likewise
    float m_Calib = 1.0f;      ///< factor that the values carry; see SetCalibration

    /// The values, without bounds checks.
    using DArray<float>::Count;
    using DArray<float>::Capacity;
    using DArray<float>::Data;
    using DArray<float>::operator[];

    /// Zeros on axes made by setcoords.
    explicit Matrix(int rows = 1, int cols = 1, int layers = 1);
    /// Copy values and header but for m_Calib: a new object has 1 there, an existing one keeps its
    /// own.
    Matrix(Matrix const& other);
    Matrix& operator=(Matrix const& other);
    ~Matrix() override = default;

    // ---- The record

    /// Copies every field but m_Calib, and no values.
    void CopyHeader(Matrix const& other);
    /// Makes this a matrix of zeros on the axes of `other`. Takes m_Params and m_Calib if
    /// `copyParams`. Strings, extrema and scale unit stay.
    Matrix& InitFrom(Matrix const& other, bool copyParams);
    /// Throws the values away: zeros on axes made by setcoords.
    void Size(int rows, int cols, int layers);
    /// Keeps the values at their flat index; new ones are 0.
    void ReSize(int rows, int cols, int layers);
    /// Sizes the axes and grows the capacity; the number of values stays.
    void Reserve(int rows, int cols, int layers);
    /// Sets the values to 0.
    void Zero();
    /// Sizes the axes and returns the number of values that belongs to them. Sizes below 2 become
    /// 1; with 1 layer the matrix is 2-D. An axis keeps its first coordinates. New points of an
    /// axis are numbered from 0 in its step, 1 for an irregular one: an axis that grew from its
    /// first point reads 0, 0, step, 2 * step until SetStep is called. The layer axis of a 2-D
    /// matrix becomes one point at 0; its step stays.
    int setcoords(int& rows, int& cols, int& layers);

    // ---- Axes

    /// Points of an axis, in memory and in the file; -1 for a bad dimension.
    int GetSize(int dimension) const;
    int GetOrigSize(int dimension) const;
    /// -1 for a bad dimension.
    float GetStep(int dimension) const;
    /// -1 for a bad dimension or index.
    float GetCoord(int dimension, int index) const;
    /// A copy of the axis; of the rows for a bad dimension.
    DArray<float> GetAllCoords(int dimension) const;
    /// The coordinates from the first that isn't below `from` (the last one, if all are) up to the
    /// last that isn't above `to`, at least one. An invalid bound (IsVF) is none. Empty for a bad
    /// dimension or an empty axis.
    DArray<float> GetPartialCoords(int dimension, float from, float to) const;
    /// Makes a regular axis: coordinate i is i * step + start. A step of 0 or below makes the axis
    /// irregular with the coordinates that it has.
    void SetStep(int dimension, float step, float start);
    /// Sets a coordinate of an irregular axis, raised where needed to the one before it plus 1e-30:
    /// axes rise, strictly where single precision can tell. A regular axis ignores it.
    void SetCoord(int dimension, int index, float value);
    /// Makes the axis irregular, with the coordinates `coords`, if there are as many of them as the
    /// axis has points.
    void SetAllCoords(int dimension, DArray<float> const& coords);
    /// Takes the last dimension with fewer than 2 points out of a 3-D matrix; those behind it move
    /// forward, but for their m_OrigSize, and the layer axis is left without points. The values
    /// stay.
    void Collapse();
    /// Exchanges two axes, not the values nor m_OrigSize. `a` must be below m_NDims: the pair 2, 3
    /// of a 3-D matrix is accepted and the pair 3, 2 isn't.
    void SwapCoords(int a, int b);
    /// Makes an axis a copy of one of `source`.
    void CopyCoords(int to, int from, Matrix const& source);
    /// The first index whose coordinate isn't below `coord`; the last index if all are, -1 on an
    /// empty axis. 0 for a dimension that isn't in use.
    int PointAtCoord(int dimension, float coord) const;

    // ---- Files

    /// Reads `name` with ".dmt" appended. Along the last dimension, layers from `start` up to, but
    /// without, `stop` are read, at least one; -1 and 0 read all, and 0 and 0 the first one alone.
    /// A name with a range behind it, as in "M[2,5]", reads from 2 up to 5 whatever the arguments
    /// say; a number that is missing there counts as 0 or -1. A part keeps the first coordinates of
    /// the axis, and m_OrigSize the full size.
    ///
    /// False if the file can't be opened; the object then stays as it was. True otherwise: a file
    /// that announces 4 dimensions or more leaves everything but m_NDims as it was, one that
    /// announces none leaves no values, and what a file that is cut short doesn't hold stays as it
    /// was in the header and is 0 in axes and values. The same holds for even coordinates behind
    /// the first 1,048,576, but for the last, where the file is too short for a value at each
    /// point, so that a corrupt count costs no memory. Read a 2-D file into a fresh object: the
    /// layer axis isn't touched.
    bool Read(DString name, int stop, int start);
    /// The same from a stream that stands at the start of a file.
    void Read(DFile& file, int stop, int start);
    /// Read(name, 0, 0), but no values are read, and there are none then: header and axes are as if
    /// the first layer, or the range of the name, were in memory. Of even coordinates only those
    /// that GetMatrixParam asks for are sure to be worked out, the first two and the last.
    bool ReadHeader(DString name);
    /// Writes `name` with ".dmt" appended and sets m_Date. False if the file can't be opened.
    bool Write(DString name);
    /// The same to a stream.
    void Write(DFile& file);
    /// Writes a file that doesn't exist yet. A matrix has no appending form: an existing file stays
    /// as it is, and the result tells whether it could be opened.
    bool Append(DString name);
    /// Does nothing.
    void Append(DFile& file);

    // ---- Values

    /// Finds extrema and scale unit over all values, valid or not.
    void Scale();
    /// Changes the factor that the values carry, from m_Calib to `cal`, and scales anew. 0 and
    /// invalid values (IsVF) change nothing.
    void SetCalibration(float cal);
    /// The header field of a name of two letters, in either case:
    ///
    ///   t1 ... t5        m_Params[0] ... m_Params[4]
    ///   su mx mn         m_ScaleUnit, m_Max, m_Min
    ///   rc cc lc         rows in memory; columns and layers in the file
    ///   rs cs ls         steps
    ///   rb cb lb         first coordinates
    ///   re ce le         last coordinates in memory
    ///   r1 c1 l1         second coordinate minus first; 0 if there is only one. Where a partial
    ///                    read left one point, the step stands for the second of a regular axis
    ///
    /// -DFMax for any other name.
    float GetMatrixParam(DString const& name) const;

private:
    static bool IsDimension(int dimension) { return dimension >= 1 && dimension <= 3; }
    /// Dimensions in use, also where a bad file announced more.
    int UsedDims() const;
    int64_t Total() const;
    void SizeValues(int64_t total);
    int ReadHeader(DFile& file, int stop, int& start, int leading);
    static void CutAxis(MDim& axis, int stop, int& start);
    void ReadValues(DFile& file, int layers, int start);
};

extern template class DArray<Matrix>;
