// The C calls of particle groups.
#include <climits>

#include "core/OpenSession.h"
#include "data/ParticleTestData.h"
#include "support/BytesRead.h"

namespace {

struct Info {
    int m_Total = -7;
    int m_Geometry = -7;
    float m_Second = -7;
    float m_First = -7;
    bool operator==(const Info&) const = default;
};

void PrintTo(const Info& info, std::ostream* out) {
    *out << info.m_Total << " particles in geometry " << info.m_Geometry << ", " << info.m_Second
         << " and " << info.m_First;
}

Info InfoOf(const char* name) {
    Info info;
    GetPGroupInfoC(name, &info.m_Total, &info.m_Geometry, &info.m_Second, &info.m_First);
    return info;
}

constexpr size_t Room = 80;
const std::vector<float> Untouched(Room, -7.0f);

/// What a read leaves in a buffer of ten particles. Sets `count` as the call does.
std::vector<float> Got(const char* name, int& count, int start) {
    std::vector<float> data = Untouched;
    GetPGroupC(name, &count, start, data.data());
    return data;
}

/// The same, of which `read` particles are expected and returned; the room behind stays as it was.
std::vector<float> Values(const char* name, int count, int start, int read) {
    std::vector<float> data = Got(name, count, start);
    EXPECT_EQ(count, read);
    const size_t values = static_cast<size_t>(read) * 8;
    EXPECT_EQ(std::vector<float>(data.begin() + 8 * read, data.end()),
              std::vector<float>(Room - values, -7.0f));
    data.resize(values);
    return data;
}

const std::vector<float> Two = Numbered({70, 71});

void Store(const char* name, const std::vector<float>& values = Two, int geometry = 5) {
    SetPGroupC(name, static_cast<int>(values.size() / 8), geometry, values.data(), 22.5f, 11.5f);
}

void Append(const char* name, const std::vector<float>& values = Two, int geometry = 5) {
    AppendPGroupC(name, static_cast<int>(values.size() / 8), geometry, values.data(), 22.5f, 11.5f);
}

class ParticleCalls : public OpenShot {
protected:
    static std::string File(const std::string& name) { return Shot("7") + "/" + name + ".dpt"; }
};

/// A file of `Two` as the calls store it.
DptFile StoredFile() {
    DptFile file;
    file.m_Geometry = 5;
    file.m_Particles = 2;
    file.m_HeaderA = 11.5f;
    file.m_HeaderB = 22.5f;
    file.m_Params = Floats({0, 0, 0, 0, 0});
    file.m_Max = Floats(Ascending(710));
    file.m_Min = Floats(Ascending(700));
    file.m_Note = LongText("");
    file.m_Label = LongText("");
    file.m_Date = LongText(std::string(DateLength, ' '));
    file.m_Records = Floats(Two);
    return file;
}

/// The bytes of such a file, the date of the writing blanked.
std::string WithoutDate(std::string bytes) {
    constexpr size_t DateOffset = 112 + 4 + 4 + 4;
    return Overwritten(std::move(bytes), DateOffset, std::string(DateLength, ' '));
}

/// Polar particles: (radius, angle, z), then a vector there, then two stored numbers.
const std::vector<float> Polar = {2, 0, 3, 4, 5, 6, 7, 8, 1, 1.5707964f, 3, 1, 0, 6, 7, 8};
const std::vector<float> Cartesian = {2, 0, 3, 4, 5, 6, 7, 8, 0, 1, 3, 0, 1, 6, 7, 8};

DptFile PolarFile() {
    DptFile file;
    file.m_Particles = 2;
    file.m_Records = Floats(Polar);
    return file;
}

void ExpectNear(const std::vector<float>& values, const std::vector<float>& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(values[i], expected[i], 1e-6f) << i;
}

}  // namespace

// ---- The header

TEST_F(ParticleCalls, InfoOfAMissingGroupIsZeros) {
    WriteBytes(Scratch(".dpt"), DptFile().Bytes());
    for (const char* name : {"P", "99\\P", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(InfoOf(name), (Info{0, 0, 0, 0}));
}

TEST_F(ParticleCalls, InfoGivesTheSecondNumberBeforeTheFirst) {
    WriteBytes(File("P"), DptFile().Bytes());
    EXPECT_EQ(InfoOf("P"), (Info{3, 7, 2.5f, 1.5f}));
}

TEST_F(ParticleCalls, InfoReadsTheHeaderAlone) {
    constexpr long Particles = 100000;
    DptFile file;
    file.m_Particles = Particles;
    file.m_Records = std::string(Particles * 32, '\0');
    WriteBytes(File("P"), file.Bytes());
    const long before = BytesRead();
    EXPECT_EQ(InfoOf("P").m_Total, Particles);
    EXPECT_LT(BytesRead() - before, Particles);
}

TEST_F(ParticleCalls, InfoMissingPointersAreNotTouched) {
    WriteBytes(File("P"), DptFile().Bytes());
    GetPGroupInfoC("P", nullptr, nullptr, nullptr, nullptr);
    float first = 0;
    GetPGroupInfoC("P", nullptr, nullptr, nullptr, &first);
    EXPECT_EQ(first, 1.5f);
}

// ---- Reading

TEST_F(ParticleCalls, WantedParticlesAreReadFromTheStartOn) {
    WriteBytes(File("P"), DptFile().Bytes());
    EXPECT_EQ(Values("P", 3, 0, 3), Numbered({0, 1, 2}));
    EXPECT_EQ(Values("P", 1, 0, 1), Numbered({0}));
    EXPECT_EQ(Values("P", 1, 1, 1), Numbered({1}));
    EXPECT_EQ(Values("P", 2, 1, 2), Numbered({1, 2}));
}

TEST_F(ParticleCalls, FewerAreReadWhereTheFileEnds) {
    WriteBytes(File("P"), DptFile().Bytes());
    EXPECT_EQ(Values("P", 10, 0, 3), Numbered({0, 1, 2}));
    EXPECT_EQ(Values("P", INT_MAX, 2, 1), Numbered({2}));
    for (const int start : {3, 4, INT_MAX})
        EXPECT_EQ(Values("P", 10, start, 0), std::vector<float>());
}

TEST_F(ParticleCalls, NegativeCountReadsAllFromTheFirstOn) {
    WriteBytes(File("P"), DptFile().Bytes());
    for (const int count : {-1, -8, INT_MIN}) {
        EXPECT_EQ(Values("P", count, 0, 3), Numbered({0, 1, 2}));
        EXPECT_EQ(Values("P", count, 2, 3), Numbered({0, 1, 2})) << "the start doesn't count";
    }
}

TEST_F(ParticleCalls, NoneAreReadIfNoneAreWanted) {
    WriteBytes(File("P"), DptFile().Bytes());
    EXPECT_EQ(Values("P", 0, 0, 0), std::vector<float>());
    EXPECT_EQ(Values("P", 0, 1, 0), std::vector<float>());
    EXPECT_EQ(Values("P", 0, -77, 0), std::vector<float>());
}

TEST_F(ParticleCalls, NegativeStartSkipsNothingAndAddsZeros) {
    WriteBytes(File("P"), DptFile().Bytes());
    std::vector<float> expected = Numbered({0, 1, 2});
    expected.resize(5 * 8);
    EXPECT_EQ(Values("P", 10, -2, 5), expected);
    EXPECT_EQ(Values("P", 2, INT_MIN, 2), Numbered({0, 1}));
}

TEST_F(ParticleCalls, StartOfTheMarkReadsFromTheFirstAndConverts) {
    WriteBytes(File("P"), PolarFile().Bytes());
    EXPECT_EQ(Values("P", 2, 0, 2), Polar);
    ExpectNear(Values("P", 2, -77, 2), Cartesian);
    ExpectNear(Values("P", -1, -77, 2), Cartesian);
    ExpectNear(Values("P", 10, -77, 2), Cartesian);
    ExpectNear(Values("P", 1, -77, 1), {2, 0, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(ReadBytes(File("P")), PolarFile().Bytes());
    EXPECT_EQ(Values("P", 2, -76, 2), Polar) << "no other start converts";
    EXPECT_EQ(Values("P", 2, -78, 2), Polar);
}

TEST_F(ParticleCalls, CartesianParticlesAreNotConverted) {
    DptFile file = PolarFile();
    file.m_Geometry = 0;
    WriteBytes(File("P"), file.Bytes());
    EXPECT_EQ(Values("P", 2, -77, 2), Polar);
}

TEST_F(ParticleCalls, MissingGroupHasNoParticles) {
    WriteBytes(Scratch(".dpt"), DptFile().Bytes());
    for (const char* name : {"P", "99\\P", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Values(name, 3, 0, 0), std::vector<float>());
        EXPECT_EQ(Values(name, -1, -77, 0), std::vector<float>());
    }
}

TEST_F(ParticleCalls, MissingCountOrBufferIsNotTouched) {
    WriteBytes(File("P"), DptFile().Bytes());
    std::vector<float> data = Untouched;
    GetPGroupC("P", nullptr, 0, data.data());
    EXPECT_EQ(data, Untouched);
    int count = 3;
    GetPGroupC("P", &count, 0, nullptr);
    EXPECT_EQ(count, 0) << "no particle was handed over";
    GetPGroupC("P", nullptr, 0, nullptr);
}

TEST_F(ParticleCalls, FileCutShortEndsInZeros) {
    const DptFile file;
    WriteBytes(File("P"), file.Bytes().substr(0, file.Bytes().size() - 12));
    std::vector<float> expected = Numbered({0, 1, 2});
    std::fill(expected.end() - 3, expected.end(), 0.0f);
    EXPECT_EQ(Values("P", 3, 0, 3), expected);
}

TEST_F(ParticleCalls, MoreValuesThanAnIntCountsAreNotRead) {
    DptFile file;
    file.m_Particles = INT_MAX;
    WriteBytes(File("P"), file.Bytes());
    EXPECT_EQ(InfoOf("P").m_Total, INT_MAX);
    EXPECT_EQ(Values("P", INT_MAX, 0, 0), std::vector<float>());
    EXPECT_EQ(Values("P", 3, 0, 3), Numbered({0, 1, 2}));
}

// ---- Storing

TEST_F(ParticleCalls, StoredGroupIsScaledAndNotConverted) {
    Store("P");
    const std::string bytes = ReadBytes(File("P"));
    EXPECT_EQ(WithoutDate(bytes), StoredFile().Bytes());
    EXPECT_EQ(bytes.substr(124, 6), Text(Now()).substr(0, 6));
    EXPECT_EQ(InfoOf("P"), (Info{2, 5, 22.5f, 11.5f}));
    EXPECT_EQ(Values("P", 2, 0, 2), Two);
}

TEST_F(ParticleCalls, StoringLeavesTheCallersParticlesAlone) {
    const std::vector<float> values = Polar;
    for (const int geometry : {0, 1, -1}) {
        Store("P", values, geometry);
        EXPECT_EQ(values, Polar);
        EXPECT_EQ(Values("P", 2, 0, 2), Polar);
        EXPECT_EQ(InfoOf("P").m_Geometry, geometry);
    }
}

TEST_F(ParticleCalls, StoringReplacesALongerFile) {
    WriteBytes(File("P"), DptFile().Bytes() + std::string(1000, 'x'));
    Store("P");
    EXPECT_EQ(WithoutDate(ReadBytes(File("P"))), StoredFile().Bytes());
}

TEST_F(ParticleCalls, StoringNoOrFewerParticlesMakesAnEmptyGroup) {
    DptFile empty = StoredFile();
    empty.m_Particles = 0;
    empty.m_Max = Floats(std::vector<float>(8, -DFMax));
    empty.m_Min = Floats(std::vector<float>(8, DFMax));
    empty.m_Records = "";
    for (const int count : {0, -1, INT_MIN}) {
        remove(File("P").c_str());
        SetPGroupC("P", count, 5, nullptr, 22.5f, 11.5f);
        EXPECT_EQ(WithoutDate(ReadBytes(File("P"))), empty.Bytes()) << count;
    }
}

TEST_F(ParticleCalls, StoringWithoutParticlesToReadDoesNothing) {
    SetPGroupC("P", 2, 5, nullptr, 0, 0);
    SetPGroupC("P", INT_MAX, 5, nullptr, 0, 0);
    AppendPGroupC("P", 2, 5, nullptr, 0, 0);
    EXPECT_FALSE(Exists(File("P")));
    WriteBytes(File("P"), DptFile().Bytes());
    AppendPGroupC("P", 2, 5, nullptr, 0, 0);
    EXPECT_EQ(ReadBytes(File("P")), DptFile().Bytes());
}

TEST_F(ParticleCalls, MoreValuesThanAnIntCountsAreNotStored) {
    for (const int count : {INT_MAX, INT_MAX / 8 + 1}) {
        SetPGroupC("P", count, 5, Two.data(), 0, 0);
        AppendPGroupC("P", count, 5, Two.data(), 0, 0);
        EXPECT_FALSE(Exists(File("P"))) << count;
    }
}

TEST_F(ParticleCalls, StoringInAnUnknownShotOrWithoutANameDoesNothing) {
    for (const char* name : {"99\\P", "", static_cast<const char*>(nullptr)}) {
        Store(name);
        Append(name);
    }
    ExpectNoNewFiles();
}

TEST_F(ParticleCalls, DataNameReachesAnotherShotAndHoldsFields) {
    ASSERT_EQ(CreateShotC("8"), 1);
    SetStringDataC("Beam", "P");
    Store("7\\![Beam]");
    Append("7\\![Beam]", Numbered({72}));
    EXPECT_EQ(Values("7\\P", 3, 0, 3), Numbered({70, 71, 72}));
    EXPECT_EQ(InfoOf("P").m_Total, 0);
}

TEST_F(ParticleCalls, MarkOfMemoryMeansNothingToTheCalls) {
    Store("@P");
    EXPECT_TRUE(Exists(File("@P")));
    EXPECT_EQ(Values("@P", -1, 0, 2), Two);
}

TEST_F(ParticleCalls, FileThatCannotBeWrittenIsLeftWithoutAMessage) {
    MakeFolder(File("P"));
    EXPECT_EQ(PrintedBy([] {
                  Store("P");
                  Append("P");
              }),
              "");
    EXPECT_EQ(Names(Shot("7")), (std::vector<std::string>{"P.dpt", "Scalars.ini"}));
}

// ---- Appending

TEST_F(ParticleCalls, AppendingToAMissingGroupStoresIt) {
    Append("P");
    EXPECT_EQ(WithoutDate(ReadBytes(File("P"))), StoredFile().Bytes());
}

TEST_F(ParticleCalls, AppendedGroupKeepsItsCoordinatesNumbersTextsAndDate) {
    WriteBytes(File("P"), DptFile().Bytes());
    Append("P");
    DptFile longer;
    longer.m_Particles = 5;
    longer.m_Max = Floats(Ascending(710));
    longer.m_Records += Floats(Two);
    EXPECT_EQ(ReadBytes(File("P")), longer.Bytes());
}

TEST_F(ParticleCalls, AppendedParticlesAreNotConverted) {
    WriteBytes(File("P"), PolarFile().Bytes());
    Append("P", Polar, 0);
    EXPECT_EQ(InfoOf("P").m_Geometry, 7);
    std::vector<float> twice = Polar;
    twice.insert(twice.end(), Polar.begin(), Polar.end());
    EXPECT_EQ(Values("P", 10, 0, 4), twice);
}

TEST_F(ParticleCalls, AppendingAgainAndAgainGrowsTheGroup) {
    Store("P");
    for (const int p : {72, 73, 74})
        Append("P", Numbered({p}));
    EXPECT_EQ(Values("P", -1, 0, 5), Numbered({70, 71, 72, 73, 74}));
    EXPECT_EQ(ReadBytes(File("P")).substr(48, 32), Floats(Ascending(740))) << "maxima";
}

TEST_F(ParticleCalls, AppendingNoParticlesLeavesTheFileAsItWas) {
    WriteBytes(File("P"), DptFile().Bytes());
    AppendPGroupC("P", 0, 5, nullptr, 22.5f, 11.5f);
    AppendPGroupC("P", -4, 5, nullptr, 22.5f, 11.5f);
    EXPECT_EQ(ReadBytes(File("P")), DptFile().Bytes());
}
