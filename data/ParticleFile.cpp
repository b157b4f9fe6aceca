// ParticleGroup: its file format, reading in batches, and appending.
#include <limits.h>
#include <stdint.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/BinaryFields.h"
#include "data/ParticleGroup.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

constexpr int Columns = ParticleGroup::Columns;
constexpr int32_t FileVersion = 2;
constexpr int32_t LastVersionWithOldRecords = 1;

/// From the coordinates to the last parameter.
constexpr int NumberBytes = 40;

constexpr int OpenToWrite = 6;
constexpr int OpenToUpdate = 7;

// ---- The pieces of the file, each as it is read and as it is written

// Version, extension, coordinates, counts and numbers, up to the extrema.
struct FileHead {
    int32_t m_Version = 0;
    int32_t m_Particles = 0;  ///< 0 if negative or not delivered
    int32_t m_Columns = 0;    ///< likewise
};

FileHead ReadHead(DFile& file, ParticleGroup& group) {
    FileHead head;
    head.m_Version = ReadLengthField<int32_t>(file);
    SkipBytes(file, ReadLengthField<int32_t>(file));
    FieldBlock numbers(file, NumberBytes);
    if (ReadField(numbers, group.m_Geometry)) group.m_FileGeometry = group.m_Geometry;
    if (ReadField(numbers, group.m_FileParticles)) {
        group.m_FileParticles = std::max(group.m_FileParticles, 0);
        head.m_Particles = group.m_FileParticles;
    }
    head.m_Columns = std::max(ReadLengthField<int32_t>(numbers), 0);
    ReadField(numbers, group.m_HeaderA);
    ReadField(numbers, group.m_HeaderB);
    for (float& param : group.m_Params)
        ReadField(numbers, param);
    return head;
}

void WriteHead(DFile& file, const ParticleGroup& group, int particles) {
    WriteField<int32_t>(file, FileVersion);
    WriteField<int32_t>(file, 0);
    WriteField<int32_t>(file, group.m_Geometry);
    WriteField<int32_t>(file, particles);
    WriteField<int32_t>(file, Columns);
    WriteField(file, group.m_HeaderA);
    WriteField(file, group.m_HeaderB);
    for (const float param : group.m_Params)
        WriteField(file, param);
}

// One float for each column of the file; columns beyond the eighth are passed over. False behind
// the end of the file, where the values that weren't delivered stay as they were.
bool ReadColumns(DFile& file, float* values, int columns) {
    constexpr int FloatBytes = sizeof(float);
    const int held = std::min(columns, Columns);
    float read[Columns];
    const int delivered = file.BRead(read, held * FloatBytes) / FloatBytes;
    std::copy_n(read, delivered, values);
    if (delivered < held) return false;
    SkipBytes(file, int64_t{FloatBytes} * (columns - held));
    return true;
}

void WriteExtrema(DFile& file, const ParticleGroup& group) {
    WriteFloats(file, group.m_Max, Columns);
    WriteFloats(file, group.m_Min, Columns);
}

void ReadTexts(DFile& file, ParticleGroup& group) {
    file.DSRead(group.m_Note, false);
    file.DSRead(group.m_Label, false);
    file.DSRead(group.m_Date, false);
}

void WriteTexts(DFile& file, const ParticleGroup& group) {
    file.DSWrite(group.m_Note, 4);
    file.DSWrite(group.m_Label, 4);
    file.DSWrite(group.m_Date, 4);
}

// Passes over the three texts; the result is the bytes that they and their lengths take.
int64_t SkipTexts(DFile& file) {
    constexpr int Texts = 3;
    int64_t bytes = 0;
    for (int i = 0; i < Texts; ++i) {
        const int32_t length = std::max(ReadLengthField<int32_t>(file), 0);
        SkipBytes(file, length);
        bytes += int64_t{length} + int64_t{sizeof length};
    }
    return bytes;
}

// Passes over `count` records, unless that is no position that a file can have.
void SkipRecords(DFile& file, int columns, int count) {
    const int64_t recordBytes = int64_t{4} * columns;
    if (count > 0 && recordBytes <= INT64_MAX / count) SkipBytes(file, recordBytes * count);
}

// ---- Positions. A stream that reads and writes wants a seek between the two.

void GoToStart(DFile& file) {
    if (file.m_Stream) fseeko64(file.m_Stream, 0, SEEK_SET);
}

void TurnToWriting(DFile& file) {
    if (file.m_Stream) fseeko64(file.m_Stream, 0, SEEK_CUR);
}

// The file ended more than a mebibyte before what it announces.
bool IsFarTooShort(DFile& file, const ParticleGroup& group) {
    constexpr int64_t MostMissing = 1 << 20;
    const int64_t announced = int64_t{4} * ParticleGroup::Columns * group.m_Particles +
                              group.m_Note.GetLength() + group.m_Label.GetLength() +
                              group.m_Date.GetLength();
    return file.m_Stream && feof(file.m_Stream) && announced > FileBytes(file) + MostMissing;
}

// Writes all of an old file's particles behind it, in the form of today; the old header and
// particles stay where they are. What a file that is cut short doesn't hold is zeros in the copy;
// one that is far too short isn't copied, since a corrupt number would fill the disk with them.
// Leaves the stream at the start. False, with nothing written, where there is no memory for them.
bool RewriteOldFile(DFile& file) {
    const MemoryWatch memory;
    ParticleGroup old(0);
    GoToStart(file);
    old.Read(file, -1, 0);
    if (!memory.Whole()) return false;
    if (!IsFarTooShort(file, old)) {
        TurnToWriting(file);
        old.Write(file);
    }
    GoToStart(file);
    return true;
}

}  // namespace

// ---- Reading

bool ParticleGroup::Read(DString name, int count, int first) {
    name += ".dpt";
    DataFileReader file;
    if (!file.Open(name)) return false;
    Read(file, count, first);
    return true;
}

void ParticleGroup::Read(DFile& file, int count, int first) {
    if (count < 0) first = 0;
    const int64_t limit = count < 0 ? MaxParticleBatch : count;
    const FileHead head = ReadHead(file, *this);
    ReadColumns(file, m_Max, head.m_Columns);
    ReadColumns(file, m_Min, head.m_Columns);
    ReadTexts(file, *this);
    const int64_t rest = int64_t{head.m_Particles} - first;
    SkipRecords(file, head.m_Columns, first);
    const int64_t particles = std::max<int64_t>(std::min(rest, limit), 0);
    if (head.m_Version > LastVersionWithOldRecords) {
        ReadRecords(file, particles);
    } else {
        SizeValues(particles);
        ReadOldRecords(file, head.m_Columns);
    }
}

void ParticleGroup::ReadRecords(DFile& file, int64_t particles) {
    const int64_t values = particles * Columns;
    ReadArray(file, *this, values <= INT_MAX ? static_cast<int>(values) : 0);
    m_Particles = Count() / Columns;
}

// Records of as many columns as the file has; the last of today's columns is new. Records that the
// file doesn't have aren't touched, so that they cost no memory.
void ParticleGroup::ReadOldRecords(DFile& file, int columns) {
    bool delivered = columns > 0;
    for (int p = 0; p < m_Particles && delivered; ++p) {
        float* particle = Particle(p);
        delivered = ReadColumns(file, particle, columns);
        particle[Columns - 1] = 0.0f;
    }
}

// ---- Writing

bool ParticleGroup::Write(DString name) {
    const MemoryWatch memory;
    name += ".dpt";
    DFile file;
    if (!memory.Whole() || !file.Open(name, OpenToWrite)) return false;
    Write(file);
    return true;
}

void ParticleGroup::Write(DFile& file) {
    m_Date = Now();
    WriteHead(file, *this, Held());
    WriteExtrema(file, *this);
    WriteTexts(file, *this);
    WriteFloats(file, m_Data, int64_t{Columns} * Held());
}

// ---- Appending

bool ParticleGroup::Append(DString name) {
    const MemoryWatch memory;
    DString existing = name + ".dpt";
    const bool exists = FileExists(existing);
    if (!memory.Whole()) return false;
    if (!exists) return Write(name);
    DFile file;
    if (!file.Open(existing, OpenToUpdate)) return false;
    Append(file);
    return true;
}

void ParticleGroup::Append(DFile& file) {
    const auto version = ReadLengthField<int32_t>(file);
    if (version == LastVersionWithOldRecords && !RewriteOldFile(file)) return;
    GoToStart(file);
    const FileHead head = ReadHead(file, *this);
    float fileMax[Columns];
    float fileMin[Columns];
    std::copy(std::begin(m_Max), std::end(m_Max), fileMax);
    std::copy(std::begin(m_Min), std::end(m_Min), fileMin);
    ReadColumns(file, fileMax, Columns);
    ReadColumns(file, fileMin, Columns);
    const int64_t textBytes = SkipTexts(file);
    for (int c = 0; c < Columns; ++c) {
        m_Max[c] = std::max(m_Max[c], fileMax[c]);
        m_Min[c] = std::min(m_Min[c], fileMin[c]);
    }
    const int64_t sum = int64_t{Held()} + head.m_Particles;
    m_FileParticles = static_cast<int>(std::min<int64_t>(sum, INT_MAX));

    GoToStart(file);
    WriteHead(file, *this, m_FileParticles);
    WriteExtrema(file, *this);
    SkipBytes(file, textBytes);
    SkipRecords(file, Columns, head.m_Particles);
    WriteFloats(file, m_Data, int64_t{Columns} * Held());
}
