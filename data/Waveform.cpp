// Waveform: the record, its copies, and its file format.
#include "data/Waveform.h"

#include <stdint.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/BinaryFields.h"
#include "types/MemoryWatch.h"

namespace {

constexpr int FileVersion = 4;
constexpr int FirstVersionWithScopeTD = 4;

constexpr int ReadLocked = 1;
constexpr int WriteLocked = 2;
constexpr int IgnoreLock = 4;

constexpr int OpenToRead = 5;
constexpr int OpenToWrite = 6;

/// From the count to the last scope setting.
constexpr int NumberBytes = 90;

/// The later parameters stand in a block of their own, told by its size.
constexpr int FirstLateParam = 5;
constexpr int LateParamEnd = 12;
constexpr int16_t LateParamBytes = (LateParamEnd - FirstLateParam) * int{sizeof(float)};

// A step of 0 would be no step.
void ReadStep(FieldBlock& numbers, float& step) {
    if (ReadField(numbers, step) && step == 0.0f) step = 1.0f;
}

// ---- The header, each piece as it is read and as it is written

// Version word; false if the file is too new. A word that isn't delivered counts as version 0.
bool ReadVersion(DFile& file, Waveform& trace, int& version) {
    const int word = ReadLengthField<int16_t>(file);
    if (word > FileVersion) return false;
    if (word < 0) trace.m_Flags = ReadLocked;
    version = word < 0 ? -word : word;
    return true;
}

void WriteVersion(DFile& file, const Waveform& trace) {
    WriteField<int16_t>(file, trace.m_Flags & WriteLocked ? -FileVersion : FileVersion);
}

// Extension length to the end of the numbers; the result is the number of points announced.
int ReadNumbers(DFile& file, Waveform& trace, int version) {
    float initialTime = 0.0f;
    int16_t reserved = 0;
    float scopeTD = 0.0f;

    SkipBytes(file, ReadLengthField<int16_t>(file));
    FieldBlock numbers(file, NumberBytes);
    int32_t points = 0;
    if (ReadField(numbers, points)) trace.m_HeaderPoints = points;
    ReadField(numbers, trace.m_Params[3]);
    ReadStep(numbers, trace.m_TimePerPoint);
    ReadField(numbers, trace.m_Params[4]);
    ReadField(numbers, trace.m_Calib);
    ReadField(numbers, trace.m_Atten);
    const bool hasInitialTime = ReadField(numbers, initialTime);
    ReadField(numbers, trace.m_TimeShift);
    ReadField(numbers, trace.m_Max);
    ReadField(numbers, trace.m_Min);
    ReadField(numbers, trace.m_MaxIndex);
    ReadField(numbers, trace.m_MinIndex);
    ReadStep(numbers, trace.m_ScaleUnit);
    ReadField(numbers, reserved);
    ReadField(numbers, trace.m_ScopeSV);
    ReadField(numbers, trace.m_Params[0]);
    ReadField(numbers, trace.m_Params[1]);
    ReadField(numbers, trace.m_Params[2]);
    ReadField(numbers, trace.m_Baseline);
    ReadField(numbers, trace.m_ScopePT);
    const bool hasScopeTD = ReadField(numbers, scopeTD);
    if (hasScopeTD) trace.m_ScopeTD = version >= FirstVersionWithScopeTD ? scopeTD : 0.0f;
    if (hasInitialTime) trace.m_InitialStart = initialTime - (trace.m_ScopePT + trace.m_ScopeTD);
    ReadField(numbers, trace.m_ScopeX);
    ReadField(numbers, trace.m_ScopeY);
    return points;
}

void WriteNumbers(DFile& file, const Waveform& trace) {
    WriteField<int16_t>(file, 0);
    WriteField<int32_t>(file, trace.Count());
    WriteField(file, trace.m_Params[3]);
    WriteField(file, trace.m_TimePerPoint);
    WriteField(file, trace.m_Params[4]);
    WriteField(file, trace.m_Calib);
    WriteField(file, trace.m_Atten);
    WriteField(file, trace.m_ScopePT + trace.m_InitialStart + trace.m_ScopeTD);
    WriteField(file, trace.m_TimeShift);
    WriteField(file, trace.m_Max);
    WriteField(file, trace.m_Min);
    WriteField<int32_t>(file, trace.m_MaxIndex);
    WriteField<int32_t>(file, trace.m_MinIndex);
    WriteField(file, trace.m_ScaleUnit);
    WriteField<int16_t>(file, 0);
    WriteField(file, trace.m_ScopeSV);
    WriteField(file, trace.m_Params[0]);
    WriteField(file, trace.m_Params[1]);
    WriteField(file, trace.m_Params[2]);
    WriteField(file, trace.m_Baseline);
    WriteField(file, trace.m_ScopePT);
    WriteField(file, trace.m_ScopeTD);
    WriteField(file, trace.m_ScopeX);
    WriteField(file, trace.m_ScopeY);
}

void ReadTexts(DFile& file, Waveform& trace) {
    file.DSRead(trace.m_Label, true);
    file.DSRead(trace.m_Date, true);
    file.DSRead(trace.m_Note, true);
}

void WriteTexts(DFile& file, const Waveform& trace) {
    file.DSWrite(trace.m_Label, 2);
    file.DSWrite(trace.m_Date, 2);
    file.DSWrite(trace.m_Note, 2);
}

// The later parameters and the reserved bytes behind them. A block of another size is passed over.
void ReadLateParams(DFile& file, Waveform& trace) {
    constexpr int ReservedBytes = 10;
    const int16_t size = ReadLengthField<int16_t>(file);
    if (size != LateParamBytes) SkipBytes(file, size);
    FieldBlock params(file, ReservedBytes + (size == LateParamBytes ? size : 0));
    if (size != LateParamBytes) return;
    for (int i = FirstLateParam; i < LateParamEnd; ++i)
        ReadField(params, trace.m_Params[i]);
}

void WriteLateParams(DFile& file, const Waveform& trace) {
    WriteField(file, LateParamBytes);
    for (int i = FirstLateParam; i < LateParamEnd; ++i)
        WriteField(file, trace.m_Params[i]);
    WriteField<int16_t>(file, 1);
    WriteField<int32_t>(file, trace.Count());
    WriteField<int32_t>(file, 1);
}

// ---- Locks

// A file that can't be opened, or is too short for a version word, isn't locked.
bool IsLocked(const DString& fileName) {
    DFile file;
    return file.Open(fileName, OpenToRead) && ReadLengthField<int16_t>(file) < 0;
}

}  // namespace

// ---- The record

Waveform::Waveform(int n) : m_HeaderPoints(std::max(n, 0)) { ReSize(1, n); }

Waveform::Waveform(Waveform const& other) : DArray<float>(other) { CopyHeader(other); }

Waveform& Waveform::operator=(Waveform const& other) {
    if (this == &other) return *this;
    DArray<float>::operator=(other);
    CopyHeader(other);
    return *this;
}

Waveform::~Waveform() = default;

float Waveform::StartTime() const { return m_TimeShift + m_InitialStart + m_ScopePT + m_ScopeTD; }

void Waveform::CopyHeader(Waveform const& other) {
    m_TimePerPoint = other.m_TimePerPoint;
    m_TimeShift = other.m_TimeShift;
    m_InitialStart = other.m_InitialStart;
    m_ScaleUnit = other.m_ScaleUnit;
    std::copy(std::begin(other.m_Params), std::end(other.m_Params), m_Params);
    m_ScopePT = other.m_ScopePT;
    m_ScopeSV = other.m_ScopeSV;
    m_ScopeX = other.m_ScopeX;
    m_ScopeY = other.m_ScopeY;
    m_ScopeTD = other.m_ScopeTD;
    m_Label = other.m_Label;
    m_Date = other.m_Date;
    m_Note = other.m_Note;
    m_HeaderPoints = other.m_HeaderPoints;
    m_Atten = other.m_Atten;
    m_Calib = other.m_Calib;
    m_Baseline = other.m_Baseline;
    m_Max = other.m_Max;
    m_Min = other.m_Min;
    m_MaxIndex = other.m_MaxIndex;
    m_MinIndex = other.m_MinIndex;
}

Waveform& Waveform::InitFrom(Waveform const& other, bool copyParams, bool copyCalib) {
    if (this == &other) return *this;
    Size(other.Count());
    m_TimePerPoint = other.m_TimePerPoint;
    ScopeZero();
    m_TimeShift = other.m_TimeShift;
    m_InitialStart = other.m_ScopePT + other.m_InitialStart + other.m_ScopeTD;
    if (copyParams) std::copy(std::begin(other.m_Params), std::end(other.m_Params), m_Params);
    if (copyCalib) {
        m_Atten = other.m_Atten;
        m_Calib = other.m_Calib;
    }
    return *this;
}

void Waveform::Zero() {
    if (Count() > 0) std::fill(m_Data, m_Data + m_Count, 0.0f);
}

void Waveform::ScopeZero() {
    m_InitialStart = m_InitialStart + m_ScopePT + m_ScopeTD;
    m_ScopePT = 0.0f;
    m_ScopeSV = 0.0f;
    m_ScopeX = 0.0f;
    m_ScopeY = 0.0f;
    m_ScopeTD = 0.0f;
    m_Baseline = 0.0f;
}

// ---- Files

bool Waveform::Read(DString name, int points) {
    name += ".wvf";
    DataFileReader file;
    if (!file.Open(name)) {
        ReSize(1, 0);
        return false;
    }
    Read(file, points);
    return true;
}

void Waveform::Read(DFile& file, int points) {
    int version = 0;
    if (!ReadVersion(file, *this, version)) {
        ReSize(1, 0);
        return;
    }
    const int announced = ReadNumbers(file, *this, version);
    ReadTexts(file, *this);
    ReadLateParams(file, *this);
    ReadArray(file, *this, points < 0 ? announced : points);
}

bool Waveform::Write(DString name) {
    const MemoryWatch memory;
    name += ".wvf";
    const bool locked = m_Flags < IgnoreLock && IsLocked(name);
    if (!memory.Whole()) return false;
    if (locked) {
        Message("Could not write to " + name + " because it is locked");
        return false;
    }
    DFile file;
    if (!file.Open(name, OpenToWrite)) return false;
    Write(file);
    return true;
}

void Waveform::Write(DFile& file) {
    m_Date = Now();
    WriteVersion(file, *this);
    WriteNumbers(file, *this);
    WriteTexts(file, *this);
    WriteLateParams(file, *this);
    WriteFloats(file, m_Data, m_Count);
}

template class DArray<Waveform>;
