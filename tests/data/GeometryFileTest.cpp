// The .dgm format, read and written, against bytes put together by hand.
#include <gtest/gtest.h>
#include <limits.h>

#include <filesystem>
#include <fstream>
#include <type_traits>

#include "data/GeometryTestData.h"
#include "support/ProcessMemory.h"

namespace {

// Makes of `geometry` one of an earlier use: no field has the value of the hand-made file.
void Use(Geometry& geometry) {
    geometry = MakeGeometry(std::vector<Object>(300, Body(1, {7.0f, 8.0f})));
    geometry.m_Label = "old label";
    geometry.m_Note = "old note";
    geometry.m_Date = "old date";
    std::fill(std::begin(geometry.m_Max), std::end(geometry.m_Max), 55.0f);
    std::fill(std::begin(geometry.m_Min), std::end(geometry.m_Min), -55.0f);
}

Geometry UsedGeometry() {
    Geometry geometry;
    Use(geometry);
    return geometry;
}

void ExpectTexts(const Geometry& geometry, const std::string& label, const std::string& note,
                 const std::string& date) {
    EXPECT_EQ(Text(geometry.m_Label), label);
    EXPECT_EQ(Text(geometry.m_Note), note);
    EXPECT_EQ(Text(geometry.m_Date), date);
}

void ExpectBox(const Geometry& geometry, const std::vector<float>& max,
               const std::vector<float>& min) {
    EXPECT_EQ(std::vector<float>(geometry.m_Max, geometry.m_Max + 3), max);
    EXPECT_EQ(std::vector<float>(geometry.m_Min, geometry.m_Min + 3), min);
}

void ExpectTailOfUsedGeometry(const Geometry& geometry) {
    ExpectBox(geometry, {55.0f, 55.0f, 55.0f}, {-55.0f, -55.0f, -55.0f});
    ExpectTexts(geometry, "old label", "old note", "old date");
}

void ExpectTailOfFile(const Geometry& geometry) {
    ExpectBox(geometry, {101.5f, 102.5f, 103.5f}, {-101.5f, -102.5f, -103.5f});
    ExpectTexts(geometry, "the label", "a note", "06/07/2021 08:09:10");
}

// What all bodies of the hand-made file have in common.
void ExpectFieldsOfFile(const Object& body) {
    EXPECT_EQ(body.m_Attr1, 11u);
    EXPECT_EQ(body.m_Attr2, 12u);
    EXPECT_EQ(body.m_Attr3, 4294967283u);
    EXPECT_EQ(std::vector<float>(body.m_Position, body.m_Position + 3),
              (std::vector<float>{20.5f, 21.5f, 22.5f}));
    EXPECT_EQ(body.m_RMin, 23.5f);
    EXPECT_EQ(body.m_RMax, 24.5f);
    EXPECT_EQ(body.m_SpanFrom, 25.5f);
    EXPECT_EQ(body.m_SpanTo, 26.5f);
    EXPECT_EQ(body.m_Opt1, 31.5f);
    EXPECT_EQ(body.m_Opt2, 32u);
    EXPECT_EQ(body.m_Opt3, -33);
    EXPECT_EQ(body.m_Opt4, 34u);
    EXPECT_EQ(body.m_Opt5, 35u);
    EXPECT_EQ(body.m_Opt6, 36.5f);
    EXPECT_EQ(body.m_Opt7, 4294967259u);
}

void ExpectBodiesOfFile(const Geometry& geometry) {
    ASSERT_EQ(geometry.m_Objects.Count(), 2);
    const Object& first = geometry.m_Objects[0];
    EXPECT_EQ(Text(first.m_Name), "first body");
    EXPECT_EQ(first.m_Kind, 10);
    EXPECT_EQ(Numbers(first), (std::vector<float>{1.5f, 2.5f, 3.5f, 4.5f, 5.5f}));
    ExpectFieldsOfFile(first);
    const Object& second = geometry.m_Objects[1];
    EXPECT_EQ(Text(second.m_Name), "b");
    EXPECT_EQ(second.m_Kind, -4);
    EXPECT_EQ(second.m_Points.Count(), 0);
    ExpectFieldsOfFile(second);
}

void ExpectDefaults(const Object& body) {
    EXPECT_TRUE(body.m_Name.IsEmpty());
    EXPECT_EQ(body.m_Kind, 0);
    EXPECT_EQ(body.m_Attr1, 3u);
    EXPECT_EQ(body.m_Attr2, 0u);
    EXPECT_EQ(body.m_Attr3, 0u);
    for (const float coordinate : body.m_Position)
        EXPECT_EQ(coordinate, 0.0f);
    EXPECT_EQ(body.m_Points.Count(), 0);
    EXPECT_EQ(body.m_RMin, 0.0f);
    EXPECT_EQ(body.m_RMax, 0.0f);
    EXPECT_EQ(body.m_SpanFrom, 0.0f);
    EXPECT_EQ(body.m_SpanTo, 360.0f);
    EXPECT_EQ(body.m_Opt1, 0.1f);
    EXPECT_EQ(body.m_Opt2, 0u);
    EXPECT_EQ(body.m_Opt3, 1);
    EXPECT_EQ(body.m_Opt4, 0u);
    EXPECT_EQ(body.m_Opt5, 0u);
    EXPECT_EQ(body.m_Opt6, 1.0f);
    EXPECT_EQ(body.m_Opt7, 0u);
}

// A geometry that writes the hand-made file, but for its date.
Geometry GeometryOfFile() {
    Geometry geometry;
    EXPECT_TRUE(ReadFrom(DgmFile(), geometry));
    return geometry;
}

// What `geometry` writes to the file out.dgm.
std::string Written(Geometry& geometry) {
    EXPECT_TRUE(geometry.Write(Scratch("out").c_str()));
    return ReadBytes(Scratch("out.dgm"));
}

}  // namespace

// ---- The record

TEST(GeometryRecord, BodyHasItsDefaults) { ExpectDefaults(Object()); }

TEST(GeometryRecord, NewGeometryIsEmpty) {
    const Geometry geometry;
    EXPECT_EQ(geometry.m_Objects.Count(), 0);
    EXPECT_EQ(geometry.m_Objects.RCount(), 1);
    ExpectTexts(geometry, "", "", "");
    ExpectBox(geometry, {0, 0, 0}, {0, 0, 0});
    EXPECT_FALSE(std::is_polymorphic_v<Geometry>);
    EXPECT_FALSE(std::is_polymorphic_v<Object>);
}

TEST(GeometryRecord, FieldsStandInTheirOrder) {
    const Geometry g;
    const void* const fields[] = {&g.m_Objects, &g.m_Label, &g.m_Note,
                                  &g.m_Date,    &g.m_Max,   &g.m_Min};
    EXPECT_TRUE(std::is_sorted(std::begin(fields), std::end(fields)));
    const Object o;
    const void* const bodyFields[] = {
        &o.m_Name,   &o.m_Kind, &o.m_Attr1, &o.m_Attr2,    &o.m_Attr3,  &o.m_Position,
        &o.m_Points, &o.m_RMin, &o.m_RMax,  &o.m_SpanFrom, &o.m_SpanTo, &o.m_Opt1,
        &o.m_Opt2,   &o.m_Opt3, &o.m_Opt4,  &o.m_Opt5,     &o.m_Opt6,   &o.m_Opt7};
    EXPECT_TRUE(std::is_sorted(std::begin(bodyFields), std::end(bodyFields)));
}

TEST(GeometryRecord, CopyHasBodiesOfItsOwn) {
    Geometry geometry = GeometryOfFile();
    const Geometry copy = geometry;
    geometry.m_Objects[0].m_Points[0] = -1.0f;
    geometry.m_Objects[1].m_Name = "changed";
    ExpectBodiesOfFile(copy);
    ExpectTailOfFile(copy);
}

// ---- Reading

TEST(GeometryFile, ReadsEveryFieldFromItsPlace) {
    Geometry geometry = UsedGeometry();
    ASSERT_TRUE(ReadFrom(DgmFile(), geometry));
    ExpectBodiesOfFile(geometry);
    ExpectTailOfFile(geometry);
}

TEST(GeometryFile, OldBodiesLeaveNothingBehind) {
    Geometry geometry = UsedGeometry();
    ASSERT_TRUE(ReadFrom(DgmFile(), geometry));
    EXPECT_EQ(geometry.m_Objects.RCount(), 1);
    EXPECT_EQ(geometry.m_Objects.CCount(), 2);
    EXPECT_EQ(geometry.m_Objects.Capacity(), 256);
    DgmFile unnamed;
    unnamed.m_Bodies = DgmBody{LongText("")}.Bytes() + DgmFile::SecondBody().Bytes();
    ASSERT_TRUE(ReadFrom(unnamed, geometry));
    EXPECT_TRUE(geometry.m_Objects[0].m_Name.IsEmpty());
}

TEST(GeometryFile, NoBodiesLeaveTheBoxAndTheTexts) {
    for (const long count : {0L, -1L, -2147483648L}) {
        DgmFile file;
        file.m_Count = count;
        file.m_Bodies.clear();
        Geometry geometry = UsedGeometry();
        ASSERT_TRUE(ReadFrom(file, geometry));
        EXPECT_EQ(geometry.m_Objects.Count(), 0);
        EXPECT_EQ(geometry.m_Objects.Capacity(), 0);
        EXPECT_EQ(geometry.m_Objects.RCount(), 1);
        ExpectTailOfFile(geometry);
    }
}

TEST(GeometryFile, VersionIsIgnored) {
    for (const long version : {0L, 2L, 1000L, -1L}) {
        DgmFile file;
        file.m_Version = version;
        Geometry geometry;
        ASSERT_TRUE(ReadFrom(file, geometry));
        ExpectBodiesOfFile(geometry);
        ExpectTailOfFile(geometry);
    }
}

TEST(GeometryFile, HeaderExtensionIsPassedOver) {
    DgmFile file;
    file.m_ExtensionLength = 70001;
    file.m_Extension = std::string(70001, 'x');
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(file, geometry));
    ExpectBodiesOfFile(geometry);
    ExpectTailOfFile(geometry);
}

// The version is read again, as the number of bodies, and the extension length as the length of the
// first name.
TEST(GeometryFile, NegativeExtensionGoesBack) {
    const std::string behindTheName = DgmBody{LongText("")}.Bytes().substr(4);
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(Int32(1) + Int32(-8) + behindTheName + DgmFile().Tail(), geometry));
    ASSERT_EQ(geometry.m_Objects.Count(), 1);
    EXPECT_TRUE(geometry.m_Objects[0].m_Name.IsEmpty());
    ExpectFieldsOfFile(geometry.m_Objects[0]);
    ExpectTailOfFile(geometry);
}

TEST(GeometryFile, ExtensionAheadOfTheFileIsIgnored) {
    for (const long length : {-9L, -2147483648L}) {
        DgmFile file;
        file.m_ExtensionLength = length;
        Geometry geometry;
        ASSERT_TRUE(ReadFrom(file, geometry));
        ExpectBodiesOfFile(geometry);
    }
}

TEST(GeometryFile, ExtensionBeyondTheFileLeavesNoBodies) {
    DgmFile file;
    file.m_ExtensionLength = 2147483647;
    Geometry geometry = UsedGeometry();
    ASSERT_TRUE(ReadFrom(file, geometry));
    EXPECT_EQ(geometry.m_Objects.Count(), 0);
    ExpectTailOfUsedGeometry(geometry);
}

TEST(GeometryFile, ExtremaAreThoseOfTheFile) {
    DgmFile file;
    file.m_Max = Floats({-1.0f, -2.0f, -3.0f});
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(file, geometry));
    ExpectBox(geometry, {-1.0f, -2.0f, -3.0f}, {-101.5f, -102.5f, -103.5f});
    EXPECT_EQ(geometry.m_Objects[0].m_RMax, 24.5f);
}

TEST(GeometryFile, EmptyTextsKeepTheOldOnes) {
    DgmFile file;
    file.m_Label = file.m_Date = LongText("");
    file.m_Note = Int32(-3);
    Geometry geometry = UsedGeometry();
    ASSERT_TRUE(ReadFrom(file, geometry));
    ExpectTexts(geometry, "old label", "old note", "old date");
}

TEST(GeometryFile, TextsMayHoldAnyByteAndAnyLength) {
    const std::string name(70000, 'n');
    const std::string label("a\0b", 3);
    DgmFile file;
    file.m_Bodies = DgmBody{LongText(name)}.Bytes() + DgmFile::SecondBody().Bytes();
    file.m_Label = LongText(label);
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(file, geometry));
    EXPECT_EQ(Text(geometry.m_Objects[0].m_Name), name);
    ExpectTexts(geometry, label, "a note", "06/07/2021 08:09:10");
}

TEST(GeometryFile, NumbersBelowOneAreNone) {
    for (const long count : {0L, -1L, -2147483648L}) {
        DgmFile file;
        file.m_Bodies = DgmBody{LongText("b"), 1, count, ""}.Bytes();
        file.m_Count = 1;
        Geometry geometry = UsedGeometry();
        ASSERT_TRUE(ReadFrom(file, geometry));
        EXPECT_EQ(geometry.m_Objects[0].m_Points.Count(), 0);
        ExpectFieldsOfFile(geometry.m_Objects[0]);
        ExpectTailOfFile(geometry);
    }
}

TEST(GeometryFile, ManyBodiesAreReadWhole) {
    constexpr int Bodies = 70000;
    DgmFile file;
    file.m_Count = Bodies;
    file.m_Bodies.clear();
    for (int i = 0; i < Bodies; ++i)
        file.m_Bodies += DgmBody{LongText("b"), i, 1, Float32(1.0f)}.Bytes();
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(file, geometry));
    ASSERT_EQ(geometry.m_Objects.Count(), Bodies);
    EXPECT_EQ(geometry.m_Objects.RCount(), 1);
    EXPECT_EQ(geometry.m_Objects.CCount(), Bodies);
    int inPlace = 0;
    for (int i = 0; i < Bodies; ++i)
        inPlace += geometry.m_Objects[i].m_Kind == i && geometry.m_Objects[i].m_Name == "b" &&
                   geometry.m_Objects[i].m_Points.Count() == 1;
    EXPECT_EQ(inPlace, Bodies);
    ExpectTailOfFile(geometry);
}

// ---- Files cut short, corrupt counts

TEST(GeometryFile, FieldThatIsCutShortHasItsDefault) {
    const auto body = [](auto field) {
        return [field](const Geometry& geometry) {
            return geometry.m_Objects.Count() > 0
                       ? static_cast<double>(geometry.m_Objects[0].*field)
                       : static_cast<double>(Object().*field);
        };
    };
    const size_t record = 12 + strlen("first body");
    const size_t options = record + 52 + 4 * 5;
    const size_t box = DgmFile().Head().size() + DgmFile().m_Bodies.size();
    const std::vector<FieldEnd<Geometry>> fields = {
        {record + 8, body(&Object::m_Kind)},
        {record + 12, body(&Object::m_Attr1)},
        {record + 16, body(&Object::m_Attr2)},
        {record + 20, body(&Object::m_Attr3)},
        {record + 36, body(&Object::m_RMin)},
        {record + 40, body(&Object::m_RMax)},
        {record + 44, body(&Object::m_SpanFrom)},
        {record + 48, body(&Object::m_SpanTo)},
        {options + 4, body(&Object::m_Opt1)},
        {options + 8, body(&Object::m_Opt2)},
        {options + 12, body(&Object::m_Opt3)},
        {options + 16, body(&Object::m_Opt4)},
        {options + 20, body(&Object::m_Opt5)},
        {options + 24, body(&Object::m_Opt6)},
        {options + 28, body(&Object::m_Opt7)},
        {box + 4, [](const Geometry& geometry) { return geometry.m_Max[0]; }},
        {box + 12, [](const Geometry& geometry) { return geometry.m_Max[2]; }},
        {box + 16, [](const Geometry& geometry) { return geometry.m_Min[0]; }},
        {box + 24, [](const Geometry& geometry) { return geometry.m_Min[2]; }},
    };
    ExpectWholeFieldsOnly<Geometry>(
        DgmFile().Bytes(), fields,
        [](const std::string& bytes, Geometry& geometry) {
            EXPECT_TRUE(ReadFrom(bytes, geometry));
            EXPECT_EQ(geometry.m_Objects.Count(), bytes.size() < 12 ? 0 : 2);
        },
        [](Geometry& geometry) {
            Use(geometry);
            geometry.m_Objects.Clear();
        });
}

TEST(GeometryFile, BodiesThatAreMissingHaveTheirDefaults) {
    DgmFile file;
    file.m_Count = 1000;
    Geometry geometry = UsedGeometry();
    ASSERT_TRUE(ReadFrom(file.Head() + DgmBody().Bytes(), geometry));
    ASSERT_EQ(geometry.m_Objects.Count(), 1000);
    ExpectFieldsOfFile(geometry.m_Objects[0]);
    for (int i = 1; i < 1000; ++i)
        ExpectDefaults(geometry.m_Objects[i]);
    ExpectTailOfUsedGeometry(geometry);
}

TEST(GeometryFile, NumbersThatAreMissingAreZero) {
    DgmFile file;
    const std::string record = DgmBody().Bytes();
    const size_t numbers = 52 + strlen("first body");
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(file.Head() + record.substr(0, numbers + 8), geometry));
    EXPECT_EQ(Numbers(geometry.m_Objects[0]), (std::vector<float>{1.5f, 2.5f, 0, 0, 0}));
    EXPECT_EQ(geometry.m_Objects[0].m_Opt1, 0.1f);
    ASSERT_TRUE(ReadFrom(file.Head() + record.substr(0, numbers - 1), geometry));
    EXPECT_EQ(geometry.m_Objects[0].m_Points.Count(), 0);
}

TEST(GeometryFile, NameCutShortEndsInZeroBytes) {
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(DgmFile().Head() + Int32(4) + "no", geometry));
    ASSERT_EQ(geometry.m_Objects.Count(), 2);
    EXPECT_EQ(Text(geometry.m_Objects[0].m_Name), std::string("no\0\0", 4));
}

TEST(GeometryFile, EmptyFileLeavesNoBodiesAndTheRest) {
    Geometry geometry = UsedGeometry();
    ASSERT_TRUE(ReadFrom(std::string(), geometry));
    EXPECT_EQ(geometry.m_Objects.Count(), 0);
    ExpectTailOfUsedGeometry(geometry);
}

TEST(GeometryFile, HugeNumberOfBodiesCostsNoMemory) {
    for (const long count : {65537L, 10000000L, 2147483647L}) {
        DgmFile file;
        file.m_Count = count;
        Geometry geometry = UsedGeometry();
        const long before = ResidentBytes();
        ASSERT_TRUE(ReadFrom(file.Head() + DgmBody().Bytes(), geometry));
        EXPECT_LT(ResidentBytes() - before, 50000000) << count;
        ASSERT_EQ(geometry.m_Objects.Count(), 65536);
        EXPECT_EQ(geometry.m_Objects.CCount(), 65536);
        ExpectFieldsOfFile(geometry.m_Objects[0]);
        ExpectDefaults(geometry.m_Objects[65535]);
        ExpectTailOfUsedGeometry(geometry);
    }
}

TEST(GeometryFile, BodiesBeyondThoseAreMadeAsTheyArrive) {
    constexpr int Bodies = 66000;
    DgmFile file;
    file.m_Count = 2147483647;
    std::string bytes = file.Head();
    for (int i = 0; i < Bodies; ++i)
        bytes += DgmFile::SecondBody().Bytes();
    Geometry geometry;
    ASSERT_TRUE(ReadFrom(bytes, geometry));
    ASSERT_EQ(geometry.m_Objects.Count(), 131072);
    ExpectFieldsOfFile(geometry.m_Objects[Bodies - 1]);
    ExpectDefaults(geometry.m_Objects[Bodies]);
}

TEST(GeometryFile, HugeCountOfNumbersCostsNoMemory) {
    DgmFile file;
    file.m_Bodies =
        DgmBody{LongText("b"), 1, 500000000, Floats({1.5f, 2.5f})}.Bytes().substr(0, 61);
    Geometry geometry;
    const long before = ResidentBytes();
    ASSERT_TRUE(ReadFrom(file.Head() + file.m_Bodies, geometry));
    EXPECT_LT(ResidentBytes() - before, 100000000);
    const DArray<float>& points = geometry.m_Objects[0].m_Points;
    if (points.Count() == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    EXPECT_EQ(points.Count(), 500000000);
    EXPECT_EQ(points[1], 2.5f);
    EXPECT_EQ(points[2], 0.0f);
}

TEST(GeometryFile, NumbersThatGetNoMemoryArePassedOver) {
    constexpr int Numbers = 500000000;
    DgmFile file;
    file.m_Count = 1;
    DgmBody body{LongText("b"), 1, Numbers, ""};
    const std::string record = body.Bytes();
    const size_t numbersAt = 53;
    WriteBytes(Scratch("bodies.dgm"), file.Head() + record.substr(0, numbersAt));
    {
        std::fstream stream(Scratch("bodies.dgm"), std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(file.Head().size() + numbersAt) + 4L * Numbers);
        stream << record.substr(numbersAt) << file.Tail();
        if (!stream.flush()) GTEST_SKIP() << "no sparse file of 2 GB here";
    }
    Geometry geometry;
    {
        const AddressSpaceLimit limit(1000000000);
        ASSERT_TRUE(geometry.Read(Scratch("bodies").c_str()));
    }
    ASSERT_EQ(geometry.m_Objects.Count(), 1);
    EXPECT_EQ(geometry.m_Objects[0].m_Points.Count(), 0);
    ExpectFieldsOfFile(geometry.m_Objects[0]);
    ExpectTailOfFile(geometry);
}

// ---- Names

TEST(GeometryFile, NameThatEndsInSuffixGetsItTwice) {
    Geometry geometry = GeometryOfFile();
    EXPECT_FALSE(geometry.Read(Scratch("bodies.dgm").c_str()));
    EXPECT_TRUE(geometry.Write(Scratch("bodies.dgm").c_str()));
    EXPECT_TRUE(geometry.Read(Scratch("bodies.dgm").c_str()));
    EXPECT_EQ(Names(ScratchFolder()), (std::vector<std::string>{"bodies.dgm", "bodies.dgm.dgm"}));
}

TEST(GeometryFile, CallersNameStaysAsItWas) {
    const DString name(Scratch("bodies").c_str());
    Geometry geometry = GeometryOfFile();
    EXPECT_TRUE(geometry.Write(name) && geometry.Read(name));
    EXPECT_EQ(Text(name), Scratch("bodies"));
}

TEST(GeometryFile, MissingFileLeavesTheGeometryAsItWas) {
    RecordingSink sink;
    Geometry geometry = UsedGeometry();
    EXPECT_FALSE(geometry.Read(Scratch("missing").c_str()));
    EXPECT_EQ(geometry.m_Objects.Count(), 300);
    EXPECT_EQ(Numbers(geometry.m_Objects[299]), (std::vector<float>{7.0f, 8.0f}));
    ExpectTailOfUsedGeometry(geometry);
    EXPECT_TRUE(sink.m_Entries.empty());
}

// ---- Writing

TEST(GeometryFile, WritesEveryFieldInItsPlace) {
    Geometry geometry = GeometryOfFile();
    const std::string bytes = Written(geometry);
    DgmFile file;
    file.m_Date = LongText(Text(geometry.m_Date));
    EXPECT_EQ(bytes, file.Bytes());
}

TEST(GeometryFile, NewGeometryIsABoxOfZerosAndADate) {
    Geometry geometry;
    const std::string bytes = Written(geometry);
    EXPECT_EQ(bytes, Int32(1) + Int32(0) + Int32(0) + std::string(24, '\0') + Int32(0) + Int32(0) +
                         LongText(Text(geometry.m_Date)));
}

TEST(GeometryFile, NewBodyIsARecordOfDefaults) {
    Geometry geometry = MakeGeometry({Object()});
    const std::string zero = Int32(0);
    const std::string record =
        zero + zero + Int32(3) + zero + zero + zero + zero + zero  // position
        + zero + zero + zero + Float32(360.0f)                     // span
        + zero + Float32(0.1f) + zero + Int32(1) + zero + zero + Float32(1.0f) + zero;
    EXPECT_EQ(Written(geometry).substr(12, 80), record);
}

TEST(GeometryFile, WriteSetsTheDateToNow) {
    Geometry geometry = GeometryOfFile();
    const std::string before = Text(Now());
    Written(geometry);
    const std::string date = Text(geometry.m_Date);
    EXPECT_TRUE(date == before || date == Text(Now())) << date;
    EXPECT_EQ(geometry.m_Date.GetLength(), DateLength);
}

TEST(GeometryFile, WriteComputesNoBox) {
    Geometry geometry = UsedGeometry();
    Written(geometry);
    geometry.m_Date = "old date";
    ExpectTailOfUsedGeometry(geometry);
    EXPECT_EQ(geometry.m_Objects[0].m_RMax, 0.0f);
}

TEST(GeometryFile, WrittenGeometryReadsBack) {
    Geometry geometry = UsedGeometry();
    geometry.Scale();
    Written(geometry);
    Geometry back;
    ASSERT_TRUE(back.Read(Scratch("out").c_str()));
    ASSERT_EQ(back.m_Objects.Count(), 300);
    EXPECT_EQ(Numbers(back.m_Objects[299]), (std::vector<float>{7.0f, 8.0f}));
    EXPECT_EQ(back.m_Objects[299].m_RMax, 7.0f);
    ExpectBox(back, {7.0f, 7.0f, 7.0f}, {-7.0f, -7.0f, -7.0f});
    ExpectTexts(back, "old label", "old note", Text(geometry.m_Date));
}

TEST(GeometryFile, SmallerGeometryReplacesALargerFile) {
    Geometry larger = UsedGeometry();
    Written(larger);
    Geometry smaller = GeometryOfFile();
    EXPECT_EQ(Written(smaller).size(), DgmFile().Bytes().size());
}

TEST(GeometryFile, UnwritableNameIsFalseWithoutAMessage) {
    RecordingSink sink;
    MakeFolder(Scratch("taken.dgm"));
    Geometry geometry = UsedGeometry();
    EXPECT_FALSE(geometry.Write(Scratch("no/such/folder").c_str()));
    EXPECT_FALSE(geometry.Write(Scratch("taken").c_str()));
    EXPECT_TRUE(sink.m_Entries.empty());
    ExpectTailOfUsedGeometry(geometry);
}
