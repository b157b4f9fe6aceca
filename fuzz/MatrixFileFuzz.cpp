// Files of matrices: any bytes and any range are read within bounds, a range is a run of the whole,
// and what was read is written the same from then on.
#include "data/Matrix.h"

#include <string.h>

#include <algorithm>
#include <iterator>

#include "support/FileRounds.h"

namespace {

void ReadAll(Matrix& matrix, DFile& file) { matrix.Read(file, -1, 0); }

bool IsSmall(const Matrix& matrix) {
    return matrix.Count() <= MostValues && IsShort(matrix.m_Label) && IsShort(matrix.m_Note) &&
           std::all_of(std::begin(matrix.m_Dims), std::end(matrix.m_Dims),
                       [](const Matrix::MDim& axis) { return axis.Count() <= MostValues; });
}

// The layers of a file from `start` up to `stop` are those of the whole.
void RequireSlice(const std::string& bytes, int stop, int start) {
    Matrix all;
    ReadFrom(bytes, all, ReadAll);
    Matrix part;
    ReadFrom(bytes, part, [stop, start](Matrix& m, DFile& file) { m.Read(file, stop, start); });
    const int layers = all.GetSize(all.m_NDims);
    if (layers < 1 || all.Count() == 0) return;
    const int size = all.Count() / layers;
    const int end = std::max(std::min(stop, layers), 1);
    const int first = std::max(std::min(start, end - 1), 0);
    const bool isWhole = stop < 0 && start <= 0;
    const int wanted = isWhole ? layers : end - std::min(start, end - 1);
    REQUIRE(part.Count() == wanted * size);
    const int held = std::min(part.Count(), (layers - first) * size);
    REQUIRE(memcmp(part.Data(), all.Data() + (isWhole ? 0 : first * size),
                   sizeof(float) * static_cast<size_t>(held)) == 0);
}

void Measure(Matrix& matrix, const std::string& name, float number) {
    matrix.GetMatrixParam(name.c_str());
    for (int d = 0; d <= 4; ++d) {
        matrix.PointAtCoord(d, number);
        matrix.GetPartialCoords(d, number, -number);
        matrix.GetCoord(d, matrix.GetOrigSize(d) - 1);
    }
    matrix.SetCalibration(number);
    matrix.Collapse();
    matrix.SwapCoords(1, 2);
}

}  // namespace

void StartTarget() { FixTimeZone(); }

void RunInput(Input input) {
    const int stop = input.Int16() % 64;
    const int start = input.Int16() % 64;
    const float number = input.Float();
    const std::string name = input.Line();
    const std::string line = input.Line();
    const std::string range = line.empty() ? line : "[" + line;
    WriteBytes("Matrix.dmt", input.Rest());

    Matrix matrix;
    REQUIRE(matrix.Read(("Matrix" + range).c_str(), stop, start));
    if (!IsSmall(matrix)) return;
    RequireSlice(RequireStable(matrix, ReadAll), stop, start);
    Measure(matrix, name, number);
    RequireStable(matrix, ReadAll);
}
