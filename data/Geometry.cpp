// Geometry: its file format.
#include "data/Geometry.h"

#include <stdint.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/BinaryFields.h"
#include "types/MemoryWatch.h"

template class DArray<Object>;

namespace {

constexpr int32_t FileVersion = 1;

constexpr int MostBodiesAhead = 65536;

/// The numbers of a body: from the kind to the count of shape numbers, and those behind these.
constexpr int FrontBytes = 48;
constexpr int OptionBytes = 28;

constexpr int OpenToWrite = 6;

// ---- The pieces of the file, each as it is read and as it is written

void ReadPoints(DFile& file, DArray<float>& points, int size) {
    ReadArray(file, points, size);
    if (points.Count() < size) SkipBytes(file, int64_t{4} * size);
}

void WritePoints(DFile& file, const DArray<float>& points) {
    WriteField<int32_t>(file, points.Count());
    WriteFloats(file, points.Data(), points.Count());
}

// False if the record wasn't delivered whole.
bool ReadObject(DFile& file, Object& object) {
    file.DSRead(object.m_Name, false);
    FieldBlock front(file, FrontBytes);
    ReadField(front, object.m_Kind);
    ReadField(front, object.m_Attr1);
    ReadField(front, object.m_Attr2);
    ReadField(front, object.m_Attr3);
    for (float& coordinate : object.m_Position)
        ReadField(front, coordinate);
    ReadField(front, object.m_RMin);
    ReadField(front, object.m_RMax);
    ReadField(front, object.m_SpanFrom);
    ReadField(front, object.m_SpanTo);
    ReadPoints(file, object.m_Points, std::max(ReadLengthField<int32_t>(front), 0));
    FieldBlock options(file, OptionBytes);
    ReadField(options, object.m_Opt1);
    ReadField(options, object.m_Opt2);
    ReadField(options, object.m_Opt3);
    ReadField(options, object.m_Opt4);
    ReadField(options, object.m_Opt5);
    ReadField(options, object.m_Opt6);
    return ReadField(options, object.m_Opt7);
}

void WriteObject(DFile& file, const Object& object) {
    file.DSWrite(object.m_Name, 4);
    WriteField(file, object.m_Kind);
    WriteField(file, object.m_Attr1);
    WriteField(file, object.m_Attr2);
    WriteField(file, object.m_Attr3);
    for (const float coordinate : object.m_Position)
        WriteField(file, coordinate);
    WriteField(file, object.m_RMin);
    WriteField(file, object.m_RMax);
    WriteField(file, object.m_SpanFrom);
    WriteField(file, object.m_SpanTo);
    WritePoints(file, object.m_Points);
    WriteField(file, object.m_Opt1);
    WriteField(file, object.m_Opt2);
    WriteField(file, object.m_Opt3);
    WriteField(file, object.m_Opt4);
    WriteField(file, object.m_Opt5);
    WriteField(file, object.m_Opt6);
    WriteField(file, object.m_Opt7);
}

// Bodies cost memory as soon as they are made, so that a big count is believed only as the records
// arrive. Up to MostBodiesAhead bodies are there whatever the file holds.
void ReadObjects(DFile& file, DArray<Object>& objects, int count) {
    objects.Clear();
    bool delivered = true;
    for (int read = 0; read < count && delivered;) {
        const int64_t ahead = std::max(int64_t{MostBodiesAhead}, 2 * int64_t{read});
        objects.ReSize(static_cast<int>(std::min<int64_t>(count, ahead)));
        if (objects.Count() == read) return;
        for (; read < objects.Count() && delivered; ++read)
            delivered = ReadObject(file, objects[read]);
    }
}

void ReadTail(DFile& file, Geometry& geometry) {
    for (float& bound : geometry.m_Max)
        ReadField(file, bound);
    for (float& bound : geometry.m_Min)
        ReadField(file, bound);
    file.DSRead(geometry.m_Label, false);
    file.DSRead(geometry.m_Note, false);
    file.DSRead(geometry.m_Date, false);
}

void WriteTail(DFile& file, const Geometry& geometry) {
    for (const float bound : geometry.m_Max)
        WriteField(file, bound);
    for (const float bound : geometry.m_Min)
        WriteField(file, bound);
    file.DSWrite(geometry.m_Label, 4);
    file.DSWrite(geometry.m_Note, 4);
    file.DSWrite(geometry.m_Date, 4);
}

}  // namespace

bool Geometry::Read(DString name) {
    name += ".dgm";
    DataFileReader reader;
    if (!reader.Open(name)) return false;
    DFile& file = reader;
    int32_t version = 0;
    ReadField(file, version);
    SkipBytes(file, ReadLengthField<int32_t>(file));
    ReadObjects(file, m_Objects, ReadLengthField<int32_t>(file));
    ReadTail(file, *this);
    return true;
}

bool Geometry::Write(DString name) {
    const MemoryWatch memory;
    name += ".dgm";
    DFile file;
    if (!memory.Whole() || !file.Open(name, OpenToWrite)) return false;
    WriteField<int32_t>(file, FileVersion);
    WriteField<int32_t>(file, 0);
    WriteField<int32_t>(file, m_Objects.Count());
    for (int i = 0; i < m_Objects.Count(); ++i)
        WriteObject(file, m_Objects[i]);
    m_Date = Now();
    WriteTail(file, *this);
    return true;
}
