// The .dpt format, read in batches, written and appended to, against bytes put together by hand.
#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>
#include <string.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "data/ParticleTestData.h"
#include "support/ProcessMemory.h"
#include "system/DFile.h"

namespace {

// Offset of the texts in a file of eight columns.
constexpr size_t TextsAt = 112;

void ExpectTexts(const ParticleGroup& group, const std::string& note, const std::string& label,
                 const std::string& date) {
    EXPECT_EQ(Text(group.m_Note), note);
    EXPECT_EQ(Text(group.m_Label), label);
    EXPECT_EQ(Text(group.m_Date), date);
}

void ExpectHeaderOfUsedGroup(const ParticleGroup& group) {
    EXPECT_EQ(group.m_HeaderA, 51.0f);
    EXPECT_EQ(group.m_HeaderB, 52.0f);
    EXPECT_EQ(group.m_Params[4], 64.0f);
    EXPECT_EQ(group.m_Geometry, 53);
    EXPECT_EQ(group.m_FileParticles, 99);
    EXPECT_EQ(group.m_FileGeometry, 54);
    EXPECT_EQ(group.m_Max[0], 55.0f);
    EXPECT_EQ(group.m_Min[7], -55.0f);
    ExpectTexts(group, "old note", "old label", "old date");
}

void ExpectNumbersOfFile(const ParticleGroup& group) {
    EXPECT_EQ(group.m_Geometry, 7);
    EXPECT_EQ(group.m_FileGeometry, 7);
    EXPECT_EQ(group.m_FileParticles, 3);
    EXPECT_EQ(group.m_HeaderA, 1.5f);
    EXPECT_EQ(group.m_HeaderB, 2.5f);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(group.m_Params[i], 3.5f + static_cast<float>(i));
}

void ExpectTextsOfFile(const ParticleGroup& group) {
    ExpectTexts(group, "a note", "the label", "06/07/2021 08:09:10");
}

// The extrema of a file of `columns` columns; further columns keep those of UsedGroup.
void ExpectExtremaOfFile(const ParticleGroup& group, int columns = 8) {
    for (int c = 0; c < 8; ++c) {
        const float offset = static_cast<float>(c);
        EXPECT_EQ(group.m_Max[c], c < columns ? 100.25f + offset : 55.0f) << c;
        EXPECT_EQ(group.m_Min[c], c < columns ? -100.25f + offset : -55.0f) << c;
    }
}

// The group holds these values and says so.
void ExpectParticles(const ParticleGroup& group, const std::vector<float>& values) {
    EXPECT_EQ(Values(group), values);
    EXPECT_EQ(group.m_Particles, static_cast<int>(values.size() / 8));
}

// A group that writes the hand-made file, but for its date.
ParticleGroup GroupOfFile() {
    ParticleGroup group(0);
    EXPECT_TRUE(ReadFrom(DptFile(), group));
    return group;
}

// What `group` writes to the file out.dpt.
std::string Written(ParticleGroup& group) {
    EXPECT_TRUE(group.Write(Scratch("out").c_str()));
    return ReadBytes(Scratch("out.dpt"));
}

// What the file group.dpt holds after `group` was appended to `bytes`.
std::string Appended(const std::string& bytes, ParticleGroup& group) {
    WriteBytes(Scratch("group.dpt"), bytes);
    EXPECT_TRUE(group.Append(Scratch("group").c_str()));
    return ReadBytes(Scratch("group.dpt"));
}

bool IsNow(const std::string& date, const std::string& before) {
    return date == before || date == Text(Now());
}

// A stream over bytes in memory that counts what goes through it.
struct MemoryStream {
    std::string m_Bytes;
    size_t m_Position = 0;
    long m_Read = 0;
    long m_Written = 0;

    static ssize_t Read(void* cookie, char* buffer, size_t size) {
        MemoryStream& stream = *static_cast<MemoryStream*>(cookie);
        if (stream.m_Position >= stream.m_Bytes.size()) return 0;
        const size_t n = stream.m_Bytes.copy(buffer, size, stream.m_Position);
        stream.m_Position += n;
        stream.m_Read += static_cast<long>(n);
        return static_cast<ssize_t>(n);
    }
    static ssize_t Write(void* cookie, const char* buffer, size_t size) {
        MemoryStream& stream = *static_cast<MemoryStream*>(cookie);
        stream.m_Bytes =
            Overwritten(std::move(stream.m_Bytes), stream.m_Position, std::string(buffer, size));
        stream.m_Position += size;
        stream.m_Written += static_cast<long>(size);
        return static_cast<ssize_t>(size);
    }
    static int Seek(void* cookie, off64_t* offset, int whence) {
        MemoryStream& stream = *static_cast<MemoryStream*>(cookie);
        if (whence == SEEK_CUR) *offset += static_cast<off64_t>(stream.m_Position);
        if (whence == SEEK_END) *offset += static_cast<off64_t>(stream.m_Bytes.size());
        if (*offset < 0) return -1;
        stream.m_Position = static_cast<size_t>(*offset);
        return 0;
    }
    void Open(DFile& file, const char* mode) {
        file.m_Stream = fopencookie(this, mode, {Read, Write, Seek, nullptr});
        ASSERT_NE(file.m_Stream, nullptr);
    }
};

// The beginning of a file whose particles take more bytes than 32 bits count.
constexpr int ManyParticles = 150000000;

std::string HeadOfManyParticles() {
    DptFile file;
    file.m_Particles = ManyParticles;
    return file.Header() + file.Texts();
}

// A file of `particles` particles, the p-th of which holds the number p in each column.
DptFile LargeFile(int particles) {
    DptFile file;
    file.m_Particles = particles;
    file.m_Records.clear();
    for (int p = 0; p < particles; ++p) {
        for (int c = 0; c < 8; ++c)
            file.m_Records += Float32(static_cast<float>(p));
    }
    return file;
}

}  // namespace

// ---- Reading

TEST(ParticleFile, ReadsEveryFieldFromItsPlace) {
    ParticleGroup group = UsedGroup();
    ASSERT_TRUE(ReadFrom(DptFile(), group));
    ExpectNumbersOfFile(group);
    ExpectExtremaOfFile(group);
    ExpectTextsOfFile(group);
    ExpectParticles(group, Numbered({0, 1, 2}));
}

TEST(ParticleFile, SpecialValuesOfParticlesAreReadAsTheyStand) {
    DptFile file;
    file.m_Particles = 1;
    file.m_Records = Floats({INFINITY, -0.0f, NAN, 0, 0, 0, -INFINITY, -NAN});
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(file, group));
    EXPECT_EQ(memcmp(group.Data(), file.m_Records.data(), file.m_Records.size()), 0);
}

TEST(ParticleFile, ExtremaAreThoseOfTheFile) {
    DptFile file;
    file.m_Max = Floats(Ascending(-5.0f));
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(file, group));
    EXPECT_EQ(group.m_Max[0], -5.0f);
}

TEST(ParticleFile, EmptyTextsKeepTheOldOnes) {
    DptFile file;
    file.m_Note = file.m_Label = LongText("");
    file.m_Date = Int32(-5);
    ParticleGroup group = UsedGroup();
    ASSERT_TRUE(ReadFrom(file, group));
    ExpectTexts(group, "old note", "old label", "old date");
    ExpectParticles(group, Numbered({0, 1, 2}));
}

TEST(ParticleFile, TextsMayHoldAnyByteAndAnyLength) {
    DptFile file;
    const std::string note(70000, 'n');
    const std::string label("a\0b", 3);
    file.m_Note = LongText(note);
    file.m_Label = LongText(label);
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(file, group));
    ExpectTexts(group, note, label, "06/07/2021 08:09:10");
    ExpectParticles(group, Numbered({0, 1, 2}));
}

// ---- Batches

TEST(ParticleBatch, NegativeCountReadsFromTheFirstParticleOn) {
    for (const int count : {-1, -77, INT_MIN}) {
        for (const int first : {0, 1, 3, -2}) {
            ParticleGroup group(0);
            ASSERT_TRUE(ReadFrom(DptFile(), group, count, first));
            ExpectParticles(group, Numbered({0, 1, 2}));
        }
    }
}

TEST(ParticleBatch, CountOfZeroReadsTheHeaderAlone) {
    for (const int first : {0, 1}) {
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(DptFile(), group, 0, first));
        ExpectNumbersOfFile(group);
        ExpectExtremaOfFile(group);
        ExpectTextsOfFile(group);
        ExpectParticles(group, {});
        EXPECT_EQ(group.Capacity(), 0);
        EXPECT_EQ(group.GetPGroupParam("np"), 3.0f);
    }
}

TEST(ParticleBatch, HeaderReadStopsAheadOfTheParticles) {
    WriteBytes(Scratch("group.dpt"), DptFile().Bytes());
    DFile file;
    ASSERT_TRUE(file.Open(Scratch("group.dpt").c_str(), 5));
    ParticleGroup group(0);
    group.Read(file, 0, 0);
    EXPECT_EQ(ftell(file.m_Stream), static_cast<long>(TextsAt + DptFile().Texts().size()));
}

TEST(ParticleBatch, HoldsAsManyParticlesAsThereAre) {
    const struct {
        int m_Count, m_First;
        std::vector<int> m_Particles;
    } batches[] = {{1, 0, {0}},           {2, 0, {0, 1}}, {3, 0, {0, 1, 2}}, {4, 0, {0, 1, 2}},
                   {1, 1, {1}},           {2, 1, {1, 2}}, {5, 1, {1, 2}},    {1, 2, {2}},
                   {INT_MAX, 2, {2}},     {1, 3, {}},     {5, 4, {}},        {1, INT_MAX, {}},
                   {INT_MAX, INT_MAX, {}}};
    for (const auto& [count, first, particles] : batches) {
        ParticleGroup group = UsedGroup();
        EXPECT_TRUE(ReadFrom(DptFile(), group, count, first));
        ExpectParticles(group, Numbered(particles));
        EXPECT_EQ(group.m_FileParticles, 3);
    }
}

TEST(ParticleBatch, ParticlesBehindTheAnnouncedOnesAreNotRead) {
    DptFile file;
    file.m_Particles = 2;
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(file, group, 3, 0));
    ExpectParticles(group, Numbered({0, 1}));
}

// A step back makes room for more than the file holds; what it doesn't hold is 0.
TEST(ParticleBatch, NegativeFirstParticleReadsFromTheStart) {
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(DptFile(), group, 2, -1));
    ExpectParticles(group, Numbered({0, 1}));
    std::vector<float> values = Numbered({0, 1, 2});
    values.resize(5 * 8);
    ASSERT_TRUE(ReadFrom(DptFile(), group, 10, -2));
    ExpectParticles(group, values);
    ASSERT_TRUE(ReadFrom(DptFile(), group, INT_MAX, INT_MIN));
    ExpectParticles(group, {});
}

TEST(ParticleBatch, WalkThroughAFileMeetsEveryParticleOnce) {
    WriteBytes(Scratch("group.dpt"), LargeFile(1000).Bytes());
    ParticleGroup group(0);
    int expected = 0;
    do {
        ASSERT_TRUE(group.Read(Scratch("group").c_str(), 300, expected));
        for (int p = 0; p < group.m_Particles; ++p, ++expected)
            EXPECT_EQ(group[8 * p + 7], static_cast<float>(expected));
    } while (group.m_Particles > 0);
    EXPECT_EQ(expected, 1000);
}

TEST(ParticleBatch, ReadsLittleMoreThanItIsAskedFor) {
    MemoryStream stream;
    stream.m_Bytes = LargeFile(100000).Bytes();
    DFile file;
    stream.Open(file, "r");
    ParticleGroup group(0);
    group.Read(file, 2, 50000);
    ASSERT_EQ(group.m_Particles, 2);
    EXPECT_EQ(group[0], 50000.0f);
    EXPECT_EQ(group[15], 50001.0f);
    EXPECT_LE(stream.m_Read, 2 * BUFSIZ);  // one buffer at the header and one at the particles
}

TEST(ParticleBatch, ReadWithoutACountHasALimit) {
    DptFile file;
    file.m_Particles = 10000001;
    ParticleGroup group(0);
    const long before = ResidentBytes();
    ASSERT_TRUE(ReadFrom(file, group));
    EXPECT_LT(ResidentBytes() - before, 100000000);  // the values would take 320 MB
    ASSERT_EQ(group.Count(), 80000000);
    EXPECT_EQ(group.m_Particles, 10000000);
    EXPECT_EQ(group.m_FileParticles, 10000001);
    EXPECT_EQ(group.GetPGroupParam("np"), 10000001.0f);
    EXPECT_EQ(group[23], 27.0f);
    EXPECT_EQ(group[24], 0.0f);
    EXPECT_EQ(group[79999999], 0.0f);
}

TEST(ParticleBatch, ReadWithACountHasNone) {
    DptFile file;
    file.m_Particles = 20000000;
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(file, group, 10000002, 1));
    EXPECT_EQ(group.m_Particles, 10000002);
    EXPECT_EQ(group[0], 10.0f);
}

TEST(ParticleBatch, FourGigabytesAndMoreArePassedOver) {
    const std::string head = HeadOfManyParticles();
    WriteBytes(Scratch("group.dpt"), head);
    std::fstream stream(Scratch("group.dpt"), std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(head.size()) + 32L * (ManyParticles - 1));
    stream << Floats(Numbered({4}));
    if (!stream.flush()) GTEST_SKIP() << "no sparse file of 4.8 GB here";
    ParticleGroup group(0);
    ASSERT_TRUE(group.Read(Scratch("group").c_str(), 10, ManyParticles - 1));
    ExpectParticles(group, Numbered({4}));
}

TEST(ParticleBatch, MoreValuesThanAnIntCountsAreNone) {
    DptFile file;
    file.m_Particles = INT_MAX;
    for (const int count : {268435456, INT_MAX}) {
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(file, group, count, 0));
        ExpectParticles(group, {});
        EXPECT_EQ(group.m_FileParticles, INT_MAX);
    }
}

TEST(ParticleBatch, CountThatGetsNoMemoryLeavesAnEmptyGroup) {
    DptFile file;
    file.m_Particles = INT_MAX;
    ParticleGroup group = UsedGroup();
    {
        const AddressSpaceLimit limit(1000000000);
        EXPECT_TRUE(ReadFrom(file, group, 100000000));
    }
    ExpectParticles(group, {});
    ExpectTextsOfFile(group);
}

// ---- Header extension

TEST(ParticleFile, HeaderExtensionIsPassedOver) {
    DptFile file;
    file.m_ExtensionLength = 70001;
    file.m_Extension = std::string(70001, 'x');
    ParticleGroup group = UsedGroup();
    ASSERT_TRUE(ReadFrom(file, group));
    ExpectNumbersOfFile(group);
    ExpectParticles(group, Numbered({0, 1, 2}));
}

TEST(ParticleFile, NegativeExtensionGoesBack) {
    const std::string bytes = DptFile().Bytes();
    ParticleGroup group(0);
    // The coordinates are read from the extension length.
    ASSERT_TRUE(ReadFrom(Int32(2) + Int32(-4) + bytes.substr(12), group));
    EXPECT_EQ(group.m_Geometry, -4);
    EXPECT_EQ(group.m_HeaderB, 2.5f);
    ExpectParticles(group, Numbered({0, 1, 2}));
}

TEST(ParticleFile, ExtensionAheadOfTheFileIsIgnored) {
    for (const long length : {-9L, -2147483648L}) {
        DptFile file;
        file.m_ExtensionLength = length;
        ParticleGroup group(0);
        ASSERT_TRUE(ReadFrom(file, group));
        ExpectNumbersOfFile(group);
        ExpectParticles(group, Numbered({0, 1, 2}));
    }
}

TEST(ParticleFile, ExtensionBeyondTheFileLeavesTheHeader) {
    for (const long length : {1000L, 2147483647L}) {
        DptFile file;
        file.m_ExtensionLength = length;
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(file, group));
        ExpectHeaderOfUsedGroup(group);
        ExpectParticles(group, {});
    }
}

// ---- Versions and columns

TEST(ParticleFile, OldRecordsHaveTheColumnsOfTheFileAndAZero) {
    std::vector<float> expected = Numbered({0, 1, 2});
    expected[7] = expected[15] = expected[23] = 0.0f;
    for (const long version : {1L, 0L, -1L, -100L, -2147483648L}) {
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(OldFile(7, version), group));
        ExpectNumbersOfFile(group);
        ExpectExtremaOfFile(group, 7);
        ExpectTextsOfFile(group);
        ExpectParticles(group, expected);
    }
}

TEST(ParticleFile, EighthColumnOfOldRecordsReadsAsZero) {
    std::vector<float> expected = Numbered({0, 1, 2});
    expected[7] = expected[15] = expected[23] = 0.0f;
    ParticleGroup group = UsedGroup();
    ASSERT_TRUE(ReadFrom(OldFile(8), group));
    ExpectExtremaOfFile(group);
    ExpectParticles(group, expected);
}

TEST(ParticleFile, OldRecordsOfFewColumnsAreFilledUp) {
    for (const int columns : {0, 1, 3, 6}) {
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(OldFile(columns), group));
        ExpectExtremaOfFile(group, columns);
        ExpectTextsOfFile(group);
        std::vector<float> expected = Numbered({0, 1, 2});
        for (size_t i = 0; i < expected.size(); ++i)
            if (i % 8 >= static_cast<size_t>(columns)) expected[i] = 0.0f;
        ExpectParticles(group, expected);
    }
}

TEST(ParticleFile, OldRecordsOfManyColumnsAreCut) {
    for (const int columns : {9, 100}) {
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(OldFile(columns), group));
        ExpectExtremaOfFile(group);
        ExpectTextsOfFile(group);
        std::vector<float> expected = Numbered({0, 1, 2});
        expected[7] = expected[15] = expected[23] = 0.0f;
        ExpectParticles(group, expected);
    }
}

TEST(ParticleFile, BatchesOfOldRecordsBeginAtTheirFirst) {
    for (const int columns : {2, 7, 8, 11}) {
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(OldFile(columns), group, 1, 2));
        EXPECT_EQ(group.m_Particles, 1);
        EXPECT_EQ(group[0], 20.0f);
        EXPECT_EQ(group[1], 21.0f);
        EXPECT_EQ(group[7], 0.0f);
    }
}

TEST(ParticleFile, VersionsAboveTwoAreReadAsTwo) {
    for (const long version : {3L, 100L, 2147483647L}) {
        DptFile file;
        file.m_Version = version;
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(file, group));
        ExpectNumbersOfFile(group);
        ExpectParticles(group, Numbered({0, 1, 2}));
    }
}

// Records have eight columns from version 2 on, while the way to the first goes by the header's.
TEST(ParticleFile, RecordsOfTodayHaveEightColumnsWhateverTheHeaderSays) {
    for (const int columns : {0, 5, 9}) {
        DptFile file = OldFile(columns, 2);
        file.m_Records = Floats(Ascending(0.0f, 24));
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(file, group, 2, 0));
        ExpectExtremaOfFile(group, std::min(columns, 8));
        ExpectTextsOfFile(group);
        ExpectParticles(group, Ascending(0.0f, 16));
        ASSERT_TRUE(ReadFrom(file, group, 1, 1));
        ExpectParticles(group, Ascending(static_cast<float>(columns)));
    }
}

TEST(ParticleFile, NegativeColumnCountIsNone) {
    for (const long version : {1L, 2L}) {
        for (const long columns : {-1L, -2147483648L}) {
            DptFile file = OldFile(0, version);
            file.m_Columns = columns;
            file.m_Records = Floats(Numbered({0, 1, 2}));
            ParticleGroup group = UsedGroup();
            ASSERT_TRUE(ReadFrom(file, group, 2, 1));
            ExpectExtremaOfFile(group, 0);
            ExpectTextsOfFile(group);
            ExpectParticles(group, version == 1 ? std::vector<float>(16) : Numbered({0, 1}));
        }
    }
}

TEST(ParticleFile, HugeColumnCountEndsTheReading) {
    for (const long version : {1L, 2L}) {
        DptFile file;
        file.m_Version = version;
        file.m_Columns = 2147483647;
        file.m_Particles = 2147483647;
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(file, group, 10, 2147483600));
        EXPECT_EQ(group.m_Max[7], 107.25f);
        EXPECT_EQ(group.m_Min[0], -55.0f);
        ExpectTexts(group, "old note", "old label", "old date");
        ExpectParticles(group, std::vector<float>(80, 0.0f));
    }
}

TEST(ParticleFile, NegativeParticleCountIsNone) {
    for (const long particles : {-1L, -2147483648L}) {
        DptFile file;
        file.m_Particles = particles;
        ParticleGroup group = UsedGroup();
        ASSERT_TRUE(ReadFrom(file, group, 5, 0));
        EXPECT_EQ(group.m_FileParticles, 0);
        ExpectTextsOfFile(group);
        ExpectParticles(group, {});
    }
}

// Every value of version 1 is stored in a loop; records that aren't there cost nothing even so.
TEST(ParticleFile, OldRecordsThatAreMissingCostNoMemory) {
    for (const int columns : {0, 7}) {
        DptFile file = OldFile(columns);
        file.m_Particles = 10000000;
        const long before = ResidentBytes();
        ParticleGroup group(0);
        ASSERT_TRUE(ReadFrom(file, group));
        EXPECT_LT(ResidentBytes() - before, 100000000) << columns;
        EXPECT_EQ(group.m_Particles, 10000000);
        EXPECT_EQ(group[8], columns == 0 ? 0.0f : 10.0f);
    }
}

// ---- Files cut short

TEST(ParticleFile, NumberThatIsCutShortStaysAsItWas) {
    const std::vector<FieldEnd<ParticleGroup>> fields = {
        {12, [](const ParticleGroup& group) { return group.m_Geometry; }},
        {12, [](const ParticleGroup& group) { return group.m_FileGeometry; }},
        {16, [](const ParticleGroup& group) { return group.m_FileParticles; }},
        {24, [](const ParticleGroup& group) { return group.m_HeaderA; }},
        {28, [](const ParticleGroup& group) { return group.m_HeaderB; }},
        {32, [](const ParticleGroup& group) { return group.m_Params[0]; }},
        {48, [](const ParticleGroup& group) { return group.m_Params[4]; }},
        {52, [](const ParticleGroup& group) { return group.m_Max[0]; }},
        {80, [](const ParticleGroup& group) { return group.m_Max[7]; }},
        {84, [](const ParticleGroup& group) { return group.m_Min[0]; }},
        {112, [](const ParticleGroup& group) { return group.m_Min[7]; }},
    };
    ExpectWholeFieldsOnly<ParticleGroup>(
        DptFile().Bytes(), fields,
        [](const std::string& bytes, ParticleGroup& group) {
            EXPECT_TRUE(ReadFrom(bytes, group, 2, 0));
            EXPECT_EQ(group.m_Particles, bytes.size() < 16 ? 0 : 2);
            EXPECT_EQ(group.Count(), 8 * group.m_Particles);
        },
        Use);
}

TEST(ParticleFile, EmptyFileLeavesTheHeaderAndNoParticles) {
    ParticleGroup group = UsedGroup();
    EXPECT_TRUE(ReadFrom(std::string(), group));
    ExpectHeaderOfUsedGroup(group);
    ExpectParticles(group, {});
}

TEST(ParticleFile, TextCutShortEndsInZeroBytes) {
    const std::string bytes = DptFile().Header() + Int32(5) + "no";
    ParticleGroup group = UsedGroup();
    ASSERT_TRUE(ReadFrom(bytes, group));
    ExpectTexts(group, std::string("no\0\0\0", 5), "old label", "old date");
}

TEST(ParticleFile, MissingParticlesAreZero) {
    std::vector<float> expected = Numbered({0, 1, 2});
    std::fill(expected.begin() + 10, expected.end(), 0.0f);
    DptFile file;
    file.m_Records.resize(10 * 4);
    ParticleGroup group = UsedGroup();
    ASSERT_TRUE(ReadFrom(file, group));
    ExpectParticles(group, expected);
    DptFile old = OldFile(8);
    old.m_Records.resize(10 * 4 + 3);
    expected[7] = 0.0f;
    ASSERT_TRUE(ReadFrom(old, group));
    ExpectParticles(group, expected);
}

TEST(ParticleFile, ClosedStreamIsReadWrittenAndAppendedToWithoutEffect) {
    DFile closed;
    ParticleGroup group = UsedGroup();
    group.Read(closed, -1, 0);
    ExpectHeaderOfUsedGroup(group);
    ExpectParticles(group, {});
    group.Write(closed);
    group.Append(closed);
    EXPECT_EQ(closed.m_Stream, nullptr);
}

// ---- Names

TEST(ParticleFile, NameThatEndsInSuffixGetsItTwice) {
    ParticleGroup group = GroupOfFile();
    EXPECT_FALSE(group.Read(Scratch("group.dpt").c_str(), -1, 0));
    EXPECT_TRUE(group.Write(Scratch("group.dpt").c_str()));
    EXPECT_TRUE(group.Read(Scratch("group.dpt").c_str(), -1, 0));
    EXPECT_TRUE(group.Append(Scratch("other.dpt").c_str()));
    EXPECT_EQ(Names(ScratchFolder()),
              (std::vector<std::string>{"group.dpt", "group.dpt.dpt", "other.dpt.dpt"}));
}

TEST(ParticleFile, CallersNameStaysAsItWas) {
    const DString name(Scratch("group").c_str());
    ParticleGroup group = GroupOfFile();
    EXPECT_TRUE(group.Write(name) && group.Read(name, -1, 0) && group.Append(name));
    EXPECT_EQ(Text(name), Scratch("group"));
}

TEST(ParticleFile, MissingFileLeavesTheGroupAsItWas) {
    ParticleGroup group = UsedGroup();
    EXPECT_FALSE(group.Read(Scratch("missing").c_str(), -1, 0));
    ExpectHeaderOfUsedGroup(group);
    ExpectParticles(group, Numbered({70, 71}));
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

// ---- Writing

TEST(ParticleFile, WritesEveryFieldInItsPlace) {
    ParticleGroup group = GroupOfFile();
    const std::string bytes = Written(group);
    DptFile file;
    file.m_Date = LongText(Text(group.m_Date));
    EXPECT_EQ(bytes, file.Bytes());
}

TEST(ParticleFile, EmptyGroupIsAHeaderOfDefaults) {
    ParticleGroup group(0);
    const std::string bytes = Written(group);
    EXPECT_EQ(bytes, Int32(2) + Int32(0) + Int32(0) + Int32(0) + Int32(8) +
                         std::string(28 + 64, '\0') + Int32(0) + Int32(0) +
                         LongText(Text(group.m_Date)));
}

TEST(ParticleFile, WriteSetsTheDateToNow) {
    ParticleGroup group = GroupOfFile();
    const std::string before = Text(Now());
    Written(group);
    EXPECT_TRUE(IsNow(Text(group.m_Date), before)) << group.m_Date;
    EXPECT_EQ(group.m_Date.GetLength(), DateLength);
}

TEST(ParticleFile, WriteLeavesTheOtherFields) {
    ParticleGroup group = UsedGroup();
    Written(group);
    group.m_Date = "old date";
    ExpectHeaderOfUsedGroup(group);
    ExpectParticles(group, Numbered({70, 71}));
}

TEST(ParticleFile, BatchReadAndWrittenIsAFileOfTheBatch) {
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(DptFile(), group, 1, 1));
    const std::string bytes = Written(group);
    DptFile file;
    file.m_Particles = 1;
    file.m_Records = Floats(Numbered({1}));
    file.m_Date = LongText(Text(group.m_Date));
    EXPECT_EQ(bytes, file.Bytes());
    EXPECT_EQ(group.m_FileParticles, 3);
}

TEST(ParticleFile, OldFileIsWrittenInTheFormOfToday) {
    ParticleGroup group(0);
    ASSERT_TRUE(ReadFrom(OldFile(7), group));
    const std::string bytes = Written(group);
    DptFile file;
    file.m_Max = Floats(Ascending(100.25f, 7)) + Float32(0.0f);
    file.m_Min = Floats(Ascending(-100.25f, 7)) + Float32(0.0f);
    file.m_Records.clear();
    for (const int p : {0, 1, 2})
        file.m_Records += Floats(Numbered({p}, 7)) + Float32(0.0f);
    file.m_Date = LongText(Text(group.m_Date));
    EXPECT_EQ(bytes, file.Bytes());
}

TEST(ParticleFile, WriteGoesByTheToldParticlesUpToThoseHeld) {
    const std::pair<int, std::vector<int>> counts[] = {
        {2, {0, 1}}, {0, {}}, {-5, {}}, {4, {0, 1, 2}}, {INT_MAX, {0, 1, 2}}};
    for (const auto& [particles, written] : counts) {
        ParticleGroup group = GroupOfFile();
        group.m_Particles = particles;
        const std::string bytes = Written(group);
        DptFile file;
        file.m_Particles = static_cast<long>(written.size());
        file.m_Records = Floats(Numbered(written));
        file.m_Date = LongText(Text(group.m_Date));
        EXPECT_EQ(bytes, file.Bytes()) << particles;
    }
}

TEST(ParticleFile, SmallerGroupReplacesALargerFile) {
    ParticleGroup larger(1000);
    Written(larger);
    ParticleGroup smaller = GroupOfFile();
    EXPECT_EQ(Written(smaller).size(), DptFile().Bytes().size());
}

TEST(ParticleFile, WrittenGroupReadsBack) {
    ParticleGroup group = UsedGroup();
    group.Scale();
    Written(group);
    ParticleGroup back(0);
    ASSERT_TRUE(back.Read(Scratch("out").c_str(), -1, 0));
    ExpectParticles(back, Numbered({70, 71}));
    ExpectTexts(back, "old note", "old label", Text(group.m_Date));
    EXPECT_EQ(back.m_Max[7], 717.0f);
    EXPECT_EQ(back.m_Min[7], 707.0f);
    EXPECT_EQ(back.m_FileParticles, 2);
    EXPECT_EQ(back.m_FileGeometry, 53);
}

TEST(ParticleFile, UnwritableNameIsFalseWithoutAMessage) {
    RecordingSink sink;
    MakeFolder(Scratch("taken.dpt"));
    ParticleGroup group = UsedGroup();
    for (const char* name : {"no/such/folder", "taken"}) {
        EXPECT_FALSE(group.Write(Scratch(name).c_str()));
        EXPECT_FALSE(group.Append(Scratch(name).c_str()));
    }
    EXPECT_TRUE(sink.m_Entries.empty());
    ExpectHeaderOfUsedGroup(group);
}

// Two gigabytes of records, which an int can't count the bytes of.
TEST(ParticleFile, LargeGroupIsWrittenWhole) {
    constexpr int Particles = (1 << 26) + 1;
    ParticleGroup group(Particles);
    if (group.m_Particles == 0) GTEST_SKIP() << "this machine grants no 2 GB of address space";
    long written = 0;
    DFile file;
    file.m_Stream = fopencookie(&written, "w",
                                {nullptr,
                                 [](void* count, const char*, size_t size) {
                                     *static_cast<long*>(count) += static_cast<long>(size);
                                     return static_cast<ssize_t>(size);
                                 },
                                 nullptr, nullptr});
    ASSERT_NE(file.m_Stream, nullptr);
    group.Write(file);
    file.Close();
    EXPECT_EQ(written, 112 + 12 + DateLength + 32L * Particles);
}

// ---- Appending

TEST(ParticleAppend, MissingFileIsWritten) {
    ParticleGroup group = GroupOfFile();
    ASSERT_TRUE(group.Read(Scratch("group").c_str(), 2, 0));
    const std::string before = Text(Now());
    EXPECT_TRUE(group.Append(Scratch("new").c_str()));
    DptFile file;
    file.m_Particles = 2;
    file.m_Records = Floats(Numbered({0, 1}));
    file.m_Date = LongText(Text(group.m_Date));
    EXPECT_EQ(ReadBytes(Scratch("new.dpt")), file.Bytes());
    EXPECT_TRUE(IsNow(Text(group.m_Date), before)) << group.m_Date;
    EXPECT_EQ(group.m_FileParticles, 3);
}

TEST(ParticleAppend, ParticlesGoBehindThoseOfTheFile) {
    ParticleGroup group = UsedGroup();
    DptFile expected;
    expected.m_Particles = 5;
    expected.m_Records = Floats(Numbered({0, 1, 2, 70, 71}));
    EXPECT_EQ(Appended(DptFile().Bytes(), group), expected.Bytes());
}

TEST(ParticleAppend, GroupTakesTheNumbersOfTheFile) {
    ParticleGroup group = UsedGroup();
    Appended(DptFile().Bytes(), group);
    EXPECT_EQ(group.m_FileParticles, 5);
    group.m_FileParticles = 3;
    ExpectNumbersOfFile(group);
}

TEST(ParticleAppend, GroupKeepsItsParticlesAndTexts) {
    ParticleGroup group = UsedGroup();
    Appended(DptFile().Bytes(), group);
    ExpectParticles(group, Numbered({70, 71}));
    ExpectTexts(group, "old note", "old label", "old date");
}

TEST(ParticleAppend, ExtremaAreThoseOfBoth) {
    DptFile file;
    file.m_Max = Floats({1.0f, 60.0f, 54.0f, 56.0f, -1.0f, 55.0f, 0.0f, 100.0f});
    file.m_Min = Floats({1.0f, -60.0f, -54.0f, -56.0f, -1.0f, -55.0f, 0.0f, -100.0f});
    ParticleGroup group = UsedGroup();
    const std::string bytes = Appended(file.Bytes(), group);
    const std::vector<float> max = {55.0f, 60.0f, 55.0f, 56.0f, 55.0f, 55.0f, 55.0f, 100.0f};
    const std::vector<float> min = {-55.0f, -60.0f, -55.0f, -56.0f,
                                    -55.0f, -55.0f, -55.0f, -100.0f};
    EXPECT_EQ(bytes.substr(48, 64), Floats(max) + Floats(min));
    EXPECT_EQ(std::vector<float>(group.m_Max, group.m_Max + 8), max);
    EXPECT_EQ(std::vector<float>(group.m_Min, group.m_Min + 8), min);
}

TEST(ParticleAppend, ZerosOfAGroupWithoutExtremaCount) {
    DptFile file;
    file.m_Max = Floats(Ascending(-20.0f));
    file.m_Min = Floats(Ascending(10.0f));
    ParticleGroup group = MakeGroup(Numbered({5}));
    const std::string bytes = Appended(file.Bytes(), group);
    EXPECT_EQ(bytes.substr(48, 64), std::string(64, '\0'));
}

TEST(ParticleAppend, FileGrowsByEveryAppend) {
    ParticleGroup group = MakeGroup(Numbered({0}));
    for (int p = 0; p < 5; ++p) {
        group = MakeGroup(Numbered({p}));
        EXPECT_TRUE(group.Append(Scratch("group").c_str()));
    }
    EXPECT_EQ(group.m_FileParticles, 5);
    EXPECT_EQ(group.m_Particles, 1);
    ParticleGroup whole(0);
    ASSERT_TRUE(whole.Read(Scratch("group").c_str(), -1, 0));
    ExpectParticles(whole, Numbered({0, 1, 2, 3, 4}));
    ASSERT_TRUE(whole.Read(Scratch("group").c_str(), 2, 3));
    ExpectParticles(whole, Numbered({3, 4}));
}

TEST(ParticleAppend, EmptyGroupWidensTheExtremaAlone) {
    ParticleGroup group(0);
    DptFile expected;
    expected.m_Max = DptFile().m_Max;
    EXPECT_EQ(Appended(DptFile().Bytes(), group), expected.Bytes());
    EXPECT_EQ(group.m_FileParticles, 3);
}

TEST(ParticleAppend, TextsOfAnyLengthStay) {
    DptFile file;
    file.m_Note = LongText("");
    file.m_Label = LongText(std::string(100000, 'l'));
    file.m_Date = Int32(-7);  // no text
    DptFile expected = file;
    expected.m_Particles = 4;
    expected.m_Records += Floats(Numbered({9}));
    ParticleGroup group = MakeGroup(Numbered({9}));
    EXPECT_EQ(Appended(file.Bytes(), group), expected.Bytes());
}

TEST(ParticleAppend, WhatStandsBehindTheParticlesIsOverwritten) {
    DptFile expected;
    expected.m_Particles = 4;
    expected.m_Records += Floats(Numbered({9}));
    ParticleGroup group = MakeGroup(Numbered({9}));
    const std::string rest(40, 'r');
    EXPECT_EQ(Appended(DptFile().Bytes() + rest, group), expected.Bytes() + rest.substr(32));
}

TEST(ParticleAppend, GoesByTheToldParticlesUpToThoseHeld) {
    const std::pair<int, std::vector<int>> counts[] = {
        {1, {0, 1, 2, 70}}, {0, {0, 1, 2}}, {-1, {0, 1, 2}}, {INT_MAX, {0, 1, 2, 70, 71}}};
    for (const auto& [particles, all] : counts) {
        ParticleGroup group = UsedGroup();
        group.m_Particles = particles;
        DptFile expected;
        expected.m_Particles = static_cast<long>(all.size());
        expected.m_Records = Floats(Numbered(all));
        EXPECT_EQ(Appended(DptFile().Bytes(), group), expected.Bytes()) << particles;
        EXPECT_EQ(group.m_FileParticles, static_cast<int>(all.size()));
    }
}

TEST(ParticleAppend, FileIsFoundWithoutRegardToCase) {
    WriteBytes(Scratch("Group.dpt"), DptFile().Bytes());
    ParticleGroup group = UsedGroup();
    EXPECT_TRUE(group.Append(Scratch("gROUP").c_str()));
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"Group.dpt"});
    EXPECT_EQ(group.m_FileParticles, 5);
}

TEST(ParticleAppend, CostsWhatItsOwnParticlesCost) {
    MemoryStream stream;
    stream.m_Bytes = LargeFile(100000).Bytes();
    DFile file;
    stream.Open(file, "r+");
    ParticleGroup group = MakeGroup(Numbered({9}));
    group.Append(file);
    file.Close();
    EXPECT_LE(stream.m_Read, 8 * BUFSIZ);  // each change of position reads a buffer anew
    EXPECT_LE(stream.m_Written, BUFSIZ);
    DptFile expected = LargeFile(100000);
    expected.m_Particles = 100001;
    expected.m_Records += Floats(Numbered({9}));
    EXPECT_TRUE(stream.m_Bytes == expected.Bytes());
}

TEST(ParticleAppend, FourGigabytesAndMoreArePassedOver) {
    const std::string head = HeadOfManyParticles();
    WriteBytes(Scratch("group.dpt"), head);
    const std::uintmax_t end = head.size() + 32ull * ManyParticles;
    std::error_code error;
    std::filesystem::resize_file(Scratch("group.dpt"), end, error);
    if (error) GTEST_SKIP() << "no sparse file of 4.8 GB here";
    ParticleGroup group = MakeGroup(Numbered({4}));
    ASSERT_TRUE(group.Append(Scratch("group").c_str()));
    EXPECT_EQ(std::filesystem::file_size(Scratch("group.dpt")), end + 32);
    ASSERT_TRUE(group.Read(Scratch("group").c_str(), 10, ManyParticles));
    ExpectParticles(group, Numbered({4}));
}

// ---- Appending to files of another form

TEST(ParticleAppend, HeaderBecomesThatOfTodayWithoutARewrite) {
    for (const long version : {3L, 0L, -1L}) {
        DptFile file;
        file.m_Version = version;
        DptFile expected;
        expected.m_Particles = 5;
        expected.m_Records = Floats(Numbered({0, 1, 2, 70, 71}));
        ParticleGroup group = UsedGroup();
        EXPECT_EQ(Appended(file.Bytes(), group), expected.Bytes()) << version;
    }
}

// The header moves to the start of the file and the particles begin as many bytes ahead of the end
// of the old ones as the extension has.
TEST(ParticleAppend, FileWithAHeaderExtensionIsNotContinuedCorrectly) {
    DptFile file;
    file.m_ExtensionLength = 6;
    file.m_Extension = "extend";
    DptFile header;
    header.m_Particles = 5;
    const std::string old = file.Bytes();
    std::string expected = Overwritten(old, 0, header.Header());
    expected = Overwritten(expected, old.size() - 6, Floats(Numbered({70, 71})));
    ParticleGroup group = UsedGroup();
    EXPECT_EQ(Appended(old, group), expected);
}

namespace {

// `old` as an append of UsedGroup leaves it: a copy in the form of today behind it, the header of
// today over the old one, and the particles at `at`. The date of the copy is taken from `result`.
std::string RewrittenAndAppended(const DptFile& old, DptFile copy, const DptFile& header, size_t at,
                                 const std::string& result) {
    const size_t date =
        old.Bytes().size() + copy.Header().size() + copy.m_Note.size() + copy.m_Label.size() + 4;
    copy.m_Date = LongText(result.substr(date, DateLength));
    const std::string rewritten = old.Bytes() + copy.Bytes();
    return Overwritten(Overwritten(rewritten, 0, header.Header()), at, Floats(Numbered({70, 71})));
}

}  // namespace

// The old content stays, a copy of it goes behind it, and the new particles go over the beginning
// of that copy.
TEST(ParticleAppend, OldFileOfEightColumnsIsCopiedBehindItself) {
    const DptFile old = OldFile(8);
    DptFile copy;
    copy.m_Records.clear();
    for (const int p : {0, 1, 2})
        copy.m_Records += Floats(Numbered({p}, 7)) + Float32(0.0f);
    DptFile header;
    header.m_Particles = 5;
    ParticleGroup group = UsedGroup();
    const std::string before = Text(Now());
    const std::string result = Appended(old.Bytes(), group);
    EXPECT_EQ(result, RewrittenAndAppended(old, copy, header, old.Bytes().size(), result));
    EXPECT_EQ(group.m_FileParticles, 5);
    const size_t date = old.Bytes().size() + TextsAt + 10 + 13 + 4;
    EXPECT_TRUE(IsNow(result.substr(date, DateLength), before));
    ExpectTexts(group, "old note", "old label", "old date");
    ASSERT_TRUE(group.Read(Scratch("group").c_str(), -1, 0));
    ExpectParticles(group, Numbered({0, 1, 2, 70, 71}));
}

TEST(ParticleAppend, OldFileCutShortIsCopiedWithZerosForWhatIsMissing) {
    const std::string whole = OldFile(8).Bytes();
    DptFile more = OldFile(8);
    more.m_Particles = 4;
    const std::string cut = more.Bytes();
    ParticleGroup group = UsedGroup();
    ParticleGroup other = UsedGroup();
    // The copy has a particle more, of zeros.
    EXPECT_EQ(Appended(cut, group).size() - cut.size(),
              Appended(whole, other).size() - whole.size() + 32);
    EXPECT_EQ(group.m_FileParticles, other.m_FileParticles + 1);
}

TEST(ParticleAppend, HugeLengthsOfAShortOldFileCostNoDiskSpace) {
    DptFile old = OldFile(8);
    old.m_Particles = 2147483647;
    old.m_Note = Int32(1000000000) + "a note";
    WriteBytes(Scratch("group.dpt"), old.Bytes());
    ParticleGroup group = UsedGroup();
    const long before = ResidentBytes();
    if (!group.Append(Scratch("group").c_str())) GTEST_SKIP();
    EXPECT_LT(ResidentBytes() - before, 50000000);
    struct stat status;
    ASSERT_EQ(stat(Scratch("group.dpt").c_str(), &status), 0);
    EXPECT_LT(status.st_blocks * 512, 1000000);
}

// Everything goes by eight columns, so with seven the first text seems to begin inside the note,
// eight bytes on.
TEST(ParticleAppend, OldFileOfOtherColumnsIsContinuedWhereTheStepsLead) {
    DptFile old = OldFile(7);
    old.m_Note = LongText("note" + Int32(0) + Int32(0));
    DptFile copy;
    copy.m_Note = old.m_Note;
    copy.m_Max = Floats(Ascending(100.25f, 7)) + Float32(0.0f);
    copy.m_Min = Floats(Ascending(-100.25f, 7)) + Float32(0.0f);
    copy.m_Records.clear();
    for (const int p : {0, 1, 2})
        copy.m_Records += Floats(Numbered({p}, 7)) + Float32(0.0f);
    DptFile header;
    header.m_Particles = 5;
    ParticleGroup group = UsedGroup();
    const std::string result = Appended(old.Bytes(), group);
    // The extrema as they were read: the eighth maximum is the first minimum, the last two minima
    // are the length of the note and its first four bytes, both positive.
    header.m_Max = Floats(Ascending(100.25f, 7)) + Float32(55.0f);
    header.m_Min = Floats(Ascending(-99.25f, 6)) + Floats({-55.0f, -55.0f});
    const size_t at = TextsAt + 12 + strlen("the label") + 3 * 32;
    EXPECT_EQ(result, RewrittenAndAppended(old, copy, header, at, result));
}

TEST(ParticleAppend, TextLengthBeyondTheFileLeadsThere) {
    DptFile file;
    file.m_Label = Int32(2000000000);
    ParticleGroup group = MakeGroup(Numbered({9}));
    WriteBytes(Scratch("group.dpt"), file.Bytes());
    EXPECT_TRUE(group.Append(Scratch("group").c_str()));
    EXPECT_EQ(std::filesystem::file_size(Scratch("group.dpt")),
              TextsAt + 12 + 6 + 2000000000 + 3 * 32 + 32);
}

TEST(ParticleAppend, NegativeCountOfTheFileIsNone) {
    DptFile file;
    file.m_Particles = -2147483648L;
    DptFile expected;
    expected.m_Particles = 1;
    expected.m_Records.replace(0, 32, Floats(Numbered({9})));
    ParticleGroup group = MakeGroup(Numbered({9}));
    EXPECT_EQ(Appended(file.Bytes(), group), expected.Bytes());
    EXPECT_EQ(group.m_FileParticles, 1);
}

TEST(ParticleAppend, SumBeyondAnIntStaysTheGreatestInt) {
    DptFile file;
    file.m_Particles = 2147483647;
    WriteBytes(Scratch("group.dpt"), file.Bytes());
    ParticleGroup group = UsedGroup();
    EXPECT_TRUE(group.Append(Scratch("group").c_str()));
    EXPECT_EQ(group.m_FileParticles, 2147483647);
    ParticleGroup header(0);
    ASSERT_TRUE(header.Read(Scratch("group").c_str(), 0, 0));
    EXPECT_EQ(header.m_FileParticles, 2147483647);
}

TEST(ParticleAppend, EmptyFileBecomesOneOfTheGroup) {
    ParticleGroup group = UsedGroup();
    const std::string result = Appended(std::string(), group);
    DptFile expected;
    expected.m_Geometry = 53;
    expected.m_Particles = 2;
    expected.m_HeaderA = 51.0f;
    expected.m_HeaderB = 52.0f;
    expected.m_Params = Floats(Ascending(60.0f, 5));
    expected.m_Max = Floats(std::vector<float>(8, 55.0f));
    expected.m_Min = Floats(std::vector<float>(8, -55.0f));
    expected.m_Note = expected.m_Label = expected.m_Date = Int32(0);
    expected.m_Records = Floats(Numbered({70, 71}));
    EXPECT_EQ(result, expected.Bytes());
    EXPECT_EQ(group.m_FileParticles, 2);
}

TEST(ParticleAppend, FileCutShortGivesTheNumbersThatItHas) {
    ParticleGroup group = UsedGroup();
    Appended(DptFile().Bytes().substr(0, 26), group);
    EXPECT_EQ(group.m_Geometry, 7);
    EXPECT_EQ(group.m_HeaderA, 1.5f);
    EXPECT_EQ(group.m_HeaderB, 52.0f);
    EXPECT_EQ(group.m_FileParticles, 5);
    EXPECT_EQ(group.m_Max[0], 55.0f);
}
