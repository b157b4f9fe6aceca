// Files of data objects: the library's reads and writes by name beside the bare system calls for
// the same bytes, and beside traces in HDF5. All files are in the page cache.
#include <fcntl.h>
#include <hdf5.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"
#include "support/Bench.h"

namespace fs = std::filesystem;

namespace {

constexpr int Small = 1000;
constexpr int Large = 10000000;

// ---- System calls

void ReadWhole(const std::string& path, size_t bytes) {
    const int file = open(path.c_str(), O_RDONLY);
    void* room = malloc(bytes);
    benchmark::DoNotOptimize(read(file, room, bytes));
    benchmark::DoNotOptimize(room);
    close(file);
    free(room);
}

void ReadPart(const std::string& path, size_t bytes, off_t offset) {
    const int file = open(path.c_str(), O_RDONLY);
    void* room = malloc(bytes);
    benchmark::DoNotOptimize(pread(file, room, bytes, offset));
    benchmark::DoNotOptimize(room);
    close(file);
    free(room);
}

void ReadBeginning(const std::string& path) {
    char room[4096];
    struct stat status;
    const int file = open(path.c_str(), O_RDONLY);
    benchmark::DoNotOptimize(fstat(file, &status));
    benchmark::DoNotOptimize(read(file, room, sizeof room));
    close(file);
}

size_t SizeOf(const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return static_cast<size_t>(status.st_size);
}

// ---- Traces

Waveform MakeTrace(int points) {
    Waveform trace(points);
    for (int i = 0; i < points; ++i)
        trace[i] = static_cast<float>(i % 1000);
    trace.m_Label = "voltage at the probe";
    trace.m_Note = "a note of some length, as an operator writes it";
    return trace;
}

// A file of so many points, made once; its name without the suffix.
template <int Points>
const DString& TraceFile() {
    static const DString name = [] {
        const DString path = Scratch("trace" + std::to_string(Points)).c_str();
        MakeTrace(Points).Write(path);
        return path;
    }();
    return name;
}

template <int Points>
std::string TracePath() {
    return std::string(TraceFile<Points>()) + ".wvf";
}

template <int Points>
void ReadTraceOurs(benchmark::State& state) {
    const DString& name = TraceFile<Points>();
    for (auto _ : state) {
        Waveform trace;
        trace.Read(name, -1);
        benchmark::DoNotOptimize(trace.m_Data);
        if (trace.Count() != Points) state.SkipWithError("not read");
    }
}

template <int Points>
void ReadTraceBare(benchmark::State& state) {
    const std::string path = TracePath<Points>();
    const size_t bytes = SizeOf(path);
    for (auto _ : state)
        ReadWhole(path, bytes);
}

void ReadSmallTraceBare(benchmark::State& state) {
    const std::string path = TracePath<Small>();
    for (auto _ : state) {
        struct stat status;
        const int file = open(path.c_str(), O_RDONLY);
        fstat(file, &status);
        void* room = malloc(static_cast<size_t>(status.st_size));
        benchmark::DoNotOptimize(read(file, room, static_cast<size_t>(status.st_size)));
        benchmark::DoNotOptimize(room);
        close(file);
        free(room);
    }
}

void ReadTraceHeaderOurs(benchmark::State& state) {
    const DString& name = TraceFile<Large>();
    for (auto _ : state) {
        Waveform trace;
        trace.Read(name, 0);
        benchmark::DoNotOptimize(trace.m_HeaderPoints);
    }
}

void ReadTraceHeaderBare(benchmark::State& state) {
    const std::string path = TracePath<Large>();
    for (auto _ : state)
        ReadBeginning(path);
}

void WriteTraceOurs(benchmark::State& state) {
    Waveform trace = MakeTrace(Large);
    const DString name = Scratch("written").c_str();
    for (auto _ : state)
        trace.Write(name);
}

void WriteTraceBare(benchmark::State& state) {
    const std::string bytes(SizeOf(TracePath<Large>()), 'x');
    const std::string path = Scratch("bare");
    for (auto _ : state) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        benchmark::DoNotOptimize(write(file, bytes.data(), bytes.size()));
        close(file);
    }
}

// ---- Traces in HDF5: one data set with 12 attributes

constexpr int Attributes = 12;

std::string AttributeName(int i) { return "t" + std::to_string(i); }

void WriteHdf5(const std::string& path, const Waveform& trace) {
    const hid_t file = H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT);
    const hsize_t points = static_cast<hsize_t>(trace.Count());
    const hid_t space = H5Screate_simple(1, &points, nullptr);
    const hid_t set =
        H5Dcreate2(file, "trace", H5T_NATIVE_FLOAT, space, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
    H5Dwrite(set, H5T_NATIVE_FLOAT, H5S_ALL, H5S_ALL, H5P_DEFAULT, trace.Data());
    const hid_t scalar = H5Screate(H5S_SCALAR);
    for (int i = 0; i < Attributes; ++i) {
        const hid_t attribute = H5Acreate2(set, AttributeName(i).c_str(), H5T_NATIVE_FLOAT, scalar,
                                           H5P_DEFAULT, H5P_DEFAULT);
        H5Awrite(attribute, H5T_NATIVE_FLOAT, &trace.m_Params[i]);
        H5Aclose(attribute);
    }
    H5Sclose(scalar);
    H5Dclose(set);
    H5Sclose(space);
    H5Fclose(file);
}

void ReadHdf5(const std::string& path) {
    const hid_t file = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
    const hid_t set = H5Dopen2(file, "trace", H5P_DEFAULT);
    for (int i = 0; i < Attributes; ++i) {
        float value = 0;
        const hid_t attribute = H5Aopen(set, AttributeName(i).c_str(), H5P_DEFAULT);
        H5Aread(attribute, H5T_NATIVE_FLOAT, &value);
        benchmark::DoNotOptimize(value);
        H5Aclose(attribute);
    }
    const hid_t space = H5Dget_space(set);
    const auto points = static_cast<size_t>(H5Sget_simple_extent_npoints(space));
    void* room = malloc(points * sizeof(float));
    H5Dread(set, H5T_NATIVE_FLOAT, H5S_ALL, H5S_ALL, H5P_DEFAULT, room);
    benchmark::DoNotOptimize(room);
    free(room);
    H5Sclose(space);
    H5Dclose(set);
    H5Fclose(file);
}

template <int Points>
void ReadTraceHdf5(benchmark::State& state) {
    const std::string path = Scratch("trace" + std::to_string(Points) + ".h5");
    WriteHdf5(path, MakeTrace(Points));
    for (auto _ : state)
        ReadHdf5(path);
}

// ---- Parts of larger files

constexpr int Parts = 100;
constexpr int Part = 57;
constexpr int Rows = 1000;
constexpr int Columns = 1000;
constexpr size_t LayerBytes = sizeof(float) * Rows * Columns;
constexpr int Batch = 100000;
constexpr size_t BatchBytes = sizeof(float) * ParticleGroup::Columns * Batch;

// Only the header is written; the values are a hole, which reads as zeros.
const DString& StackFile() {
    static const DString name = [] {
        const DString path = Scratch("stack").c_str();
        Matrix stack;
        int rows = Rows;
        int columns = Columns;
        int layers = Parts;
        stack.setcoords(rows, columns, layers);
        stack.Write(path);
        const std::string file = std::string(path) + ".dmt";
        fs::resize_file(file, fs::file_size(file) - sizeof(float) + Parts * LayerBytes);
        return path;
    }();
    return name;
}

void ReadLayerOurs(benchmark::State& state) {
    const DString& name = StackFile();
    for (auto _ : state) {
        Matrix layer;
        layer.Read(name, Part + 1, Part);
        benchmark::DoNotOptimize(layer.Data());
        if (layer.Count() != Rows * Columns) state.SkipWithError("not read");
    }
}

void ReadLayerBare(benchmark::State& state) {
    const std::string path = std::string(StackFile()) + ".dmt";
    const size_t header = SizeOf(path) - Parts * LayerBytes;
    for (auto _ : state)
        ReadPart(path, LayerBytes, static_cast<off_t>(header + Part * LayerBytes));
}

const DString& GroupFile() {
    static const DString name = [] {
        const DString path = Scratch("group").c_str();
        ParticleGroup(0).Write(path);
        const std::string file = std::string(path) + ".dpt";
        constexpr int32_t Particles = Batch * Parts;
        constexpr std::streamoff ParticlesAt = 12;
        std::fstream(file, std::ios::in | std::ios::out | std::ios::binary)
            .seekp(ParticlesAt)
            .write(reinterpret_cast<const char*>(&Particles), sizeof Particles);
        fs::resize_file(file, fs::file_size(file) + Parts * BatchBytes);
        return path;
    }();
    return name;
}

void ReadBatchOurs(benchmark::State& state) {
    const DString& name = GroupFile();
    for (auto _ : state) {
        ParticleGroup batch(0);
        batch.Read(name, Batch, Part * Batch);
        benchmark::DoNotOptimize(batch.Data());
        if (batch.m_Particles != Batch) state.SkipWithError("not read");
    }
}

void ReadBatchBare(benchmark::State& state) {
    const std::string path = std::string(GroupFile()) + ".dpt";
    const size_t header = SizeOf(path) - Parts * BatchBytes;
    for (auto _ : state)
        ReadPart(path, BatchBytes, static_cast<off_t>(header + Part * BatchBytes));
}

// ---- The rows

const Row mLargeRead{"Waveform::Read / system calls", "10,000,000 points", 1.05,
                     ReadTraceOurs<Large>, ReadTraceBare<Large>};
const Row mLargeWrite{"Waveform::Write / system calls", "10,000,000 points", 1.05, WriteTraceOurs,
                      WriteTraceBare};
const Row mSmallRead{"Waveform::Read / system calls", "1,000 points", 2, ReadTraceOurs<Small>,
                     ReadSmallTraceBare};
const Row mHeaderRead{"Waveform::Read / system calls", "header only", 2, ReadTraceHeaderOurs,
                      ReadTraceHeaderBare};
const Row mSmallHdf5{"Waveform::Read / HDF5", "1,000 points", 0.5, ReadTraceOurs<Small>,
                     ReadTraceHdf5<Small>};
const Row mLargeHdf5{"Waveform::Read / HDF5", "10,000,000 points", 0.5, ReadTraceOurs<Large>,
                     ReadTraceHdf5<Large>};
const Row mLayer{"Matrix::Read / pread", "1 layer of 100, 4 MB", 1.1, ReadLayerOurs, ReadLayerBare};
const Row mBatch{"ParticleGroup::Read / pread", "1 batch of 100, 3.2 MB", 1.1, ReadBatchOurs,
                 ReadBatchBare};

}  // namespace
