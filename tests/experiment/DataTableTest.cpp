// The table of data objects that callers hold, and of objects kept in memory under "@" names.
#include <string>
#include <vector>

#include "core/CoreGlobal.h"
#include "data/DataPtr.h"
#include "data/Geometry.h"
#include "data/GeometryTestData.h"
#include "data/Matrix.h"
#include "data/MatrixTestData.h"
#include "data/ParticleGroup.h"
#include "data/ParticleTestData.h"
#include "data/Waveform.h"
#include "data/WaveformTestData.h"
#include "experiment/Experiment.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

constexpr DataType UnknownType = static_cast<DataType>(7);

/// A kind of object, the suffix of its files, and a file with the label "the label".
struct Kind {
    DataType m_Type;
    std::string m_Suffix;
    std::string m_Bytes;
};

const std::vector<Kind> Kinds = {{DataWaveform, ".wvf", WvfFile().Bytes()},
                                 {DataMatrix, ".dmt", DmtFile().Bytes()},
                                 {DataPGroup, ".dpt", DptFile().Bytes()},
                                 {DataGeometry, ".dgm", DgmFile().Bytes()}};

Waveform& AsTrace(void* object) { return *static_cast<Waveform*>(object); }
Matrix& AsMatrix(void* object) { return *static_cast<Matrix*>(object); }
ParticleGroup& AsGroup(void* object) { return *static_cast<ParticleGroup*>(object); }
Geometry& AsGeometry(void* object) { return *static_cast<Geometry*>(object); }

/// The label of an object of any kind.
DString& LabelOf(void* object, DataType type) {
    switch (type) {
        case DataWaveform:
            return AsTrace(object).m_Label;
        case DataMatrix:
            return AsMatrix(object).m_Label;
        case DataPGroup:
            return AsGroup(object).m_Label;
        default:
            return AsGeometry(object).m_Label;
    }
}

/// The object holds what the files of its kind in `Kinds` do.
void ExpectContents(void* object, DataType type) {
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(Text(LabelOf(object, type)), "the label");
    switch (type) {
        case DataWaveform:
            EXPECT_EQ(Samples(AsTrace(object)), (std::vector<float>{-3.0f, 1.0f, 9.0f}));
            break;
        case DataMatrix:
            EXPECT_EQ(Values(AsMatrix(object)), LayerValues(2, 3, 0, 4));
            break;
        case DataPGroup:
            EXPECT_EQ(Values(AsGroup(object)), Numbered({0, 1, 2}));
            break;
        default:
            ASSERT_EQ(AsGeometry(object).m_Objects.Count(), 2);
            EXPECT_EQ(Text(AsGeometry(object).m_Objects[0].m_Name), "first body");
            EXPECT_EQ(Numbers(AsGeometry(object).m_Objects[0]).size(), 5u);
    }
}

/// Makes of a blank entry one of the name @T, with an object of a file of its kind.
void FillNamed(DataPtr& entry, const Kind& kind) {
    WriteBytes(Scratch("Q" + kind.m_Suffix), kind.m_Bytes);
    entry.AllocData(kind.m_Type);
    ASSERT_TRUE(entry.Read(Scratch("Q").c_str()));
    entry.m_Name = "@T";
}

void ExpectEmpty(void* object, DataType type) {
    ASSERT_NE(object, nullptr);
    EXPECT_TRUE(LabelOf(object, type).IsEmpty());
    switch (type) {
        case DataWaveform:
            EXPECT_EQ(AsTrace(object).Count(), 0);
            break;
        case DataMatrix:
            EXPECT_EQ(Values(AsMatrix(object)), FloatList{0.0f});
            EXPECT_EQ(AsMatrix(object).m_NDims, 2);
            break;
        case DataPGroup:
            EXPECT_EQ(AsGroup(object).Count(), 0);
            EXPECT_EQ(AsGroup(object).m_FileParticles, 0);
            break;
        default:
            EXPECT_EQ(AsGeometry(object).m_Objects.Count(), 0);
            EXPECT_EQ(AsGeometry(object).m_Objects.RCount(), 1);
    }
}

/// A file of this kind with the date of its writing blanked.
std::string WithoutDate(const Kind& kind, std::string bytes) {
    return Overwritten(std::move(bytes), kind.m_Bytes.find("06/07/2021 08:09:10"),
                       std::string(DateLength, ' '));
}

/// What an object of a file of `Kinds` is written as once its label is "new label".
std::string Relabelled(const Kind& kind) {
    return Overwritten(WithoutDate(kind, kind.m_Bytes), kind.m_Bytes.find("the label"),
                       "new label");
}

// Shot 7 holds the trace W.
class DataTable : public ShotTest {
protected:
    DataTable() {
        SelectNewShot("7", "Trace=W\r\n");
        WriteBytes(File("W"), WvfFile().Bytes());
    }

    static std::string File(const std::string& name) {
        return ShotFolder("7") + "/" + name + ".wvf";
    }

    static void* GetTrace(const char* name) { return Expt.GetDataPtr(name, DataWaveform); }
    static void* KeepTrace(const char* name) { return Expt.InitDataPtr(name, DataWaveform); }
    static bool Release(const char* name, void*& object) {
        return Expt.ReleaseDataPtr(name, DataWaveform, object);
    }
    static int Count() { return Expt.m_DataPtrs.Count(); }
    static std::string FileOf(const Kind& kind, const std::string& name) {
        return ShotFolder("7") + "/" + name + kind.m_Suffix;
    }
    /// An object of a kind, read from a file Q that is made for it.
    static void* GetFromFile(const Kind& kind) {
        WriteBytes(FileOf(kind, "Q"), kind.m_Bytes);
        return Expt.GetDataPtr("Q", kind.m_Type);
    }
    static std::string NameOf(int entry) { return Text(Expt.m_DataPtrs[entry].m_Name); }
};

}  // namespace

// ---- An entry

TEST(DataPtr, BlankEntryHoldsNothing) {
    DataPtr entry;
    EXPECT_EQ(entry.m_Object, nullptr);
    EXPECT_EQ(entry.m_Type, DataNone);
    EXPECT_TRUE(entry.m_Name.IsEmpty());
    EXPECT_FALSE(entry.Read("x"));
    EXPECT_FALSE(entry.Write("x"));
    EXPECT_FALSE(Exists(Scratch("x.wvf")));
}

TEST(DataPtr, TypesHaveTheirNumbers) {
    EXPECT_EQ(DataNone, 0);
    EXPECT_EQ(DataWaveform, 1);
    EXPECT_EQ(DataMatrix, 2);
    EXPECT_EQ(DataPGroup, 3);
    EXPECT_EQ(DataGeometry, 4);
}

TEST(DataPtr, AllocatesAnEmptyObjectOfEachKind) {
    for (const Kind& kind : Kinds) {
        DataPtr entry;
        entry.AllocData(kind.m_Type);
        EXPECT_EQ(entry.m_Type, kind.m_Type);
        ExpectEmpty(entry.m_Object, kind.m_Type);
        EXPECT_TRUE(entry.m_Name.IsEmpty());
    }
}

TEST(DataPtr, AllocationDestroysWhatTheEntryHeld) {
    DataPtr entry;
    for (const Kind& before : Kinds) {
        for (const Kind& kind : Kinds) {
            entry.AllocData(before.m_Type);
            LabelOf(entry.m_Object, before.m_Type) = "old";
            entry.AllocData(kind.m_Type);
            EXPECT_EQ(entry.m_Type, kind.m_Type);
            ExpectEmpty(entry.m_Object, kind.m_Type);
        }
    }
}

TEST(DataPtr, TypeOutOfRangeLeavesNoObjectAndTheType) {
    for (const int type : {-1, 0, 5, 7}) {
        DataPtr entry;
        entry.AllocData(static_cast<DataType>(type));
        EXPECT_EQ(entry.m_Object, nullptr);
        EXPECT_EQ(entry.m_Type, DataNone);
    }
    for (const Kind& kind : Kinds) {
        DataPtr entry;
        entry.AllocData(kind.m_Type);
        entry.AllocData(UnknownType);
        EXPECT_EQ(entry.m_Object, nullptr);
        EXPECT_EQ(entry.m_Type, kind.m_Type);
        EXPECT_FALSE(entry.Read("x"));
        EXPECT_FALSE(entry.Write("x"));
    }
}

TEST(DataPtr, ReleaseLeavesTheName) {
    DataPtr entry;
    for (const Kind& kind : Kinds) {
        entry.AllocData(kind.m_Type);
        entry.m_Name = "@T";
        entry.Release();
        EXPECT_EQ(entry.m_Object, nullptr);
        EXPECT_EQ(entry.m_Type, DataNone);
        EXPECT_EQ(Text(entry.m_Name), "@T");
    }
    entry.m_Type = UnknownType;
    entry.Release();
    EXPECT_EQ(entry.m_Type, DataNone);
}

TEST(DataPtr, ReadsAndWritesUnderANameWithoutSuffix) {
    for (const Kind& kind : Kinds) {
        WriteBytes(Scratch("Q" + kind.m_Suffix), kind.m_Bytes);
        DataPtr entry;
        entry.AllocData(kind.m_Type);
        EXPECT_FALSE(entry.Read(Scratch("X").c_str()));
        EXPECT_TRUE(entry.Read(Scratch("Q").c_str()));
        ExpectContents(entry.m_Object, kind.m_Type);
        LabelOf(entry.m_Object, kind.m_Type) = "new label";
        EXPECT_TRUE(entry.Write(Scratch("V").c_str()));
        EXPECT_EQ(WithoutDate(kind, ReadBytes(Scratch("V" + kind.m_Suffix))), Relabelled(kind));
        EXPECT_FALSE(entry.Write(Scratch("missing/V").c_str()));
    }
}

TEST(DataPtr, ReadsMatricesAndGroupsWhole) {
    DmtFile stack;
    WriteBytes(Scratch("Q.dmt"), stack.Bytes());
    DataPtr entry;
    entry.AllocData(DataMatrix);
    EXPECT_TRUE(entry.Read(Scratch("Q").c_str()));
    EXPECT_EQ(AsMatrix(entry.m_Object).GetSize(3), 4);
    EXPECT_TRUE(entry.Read(Scratch("Q[1,3]").c_str())) << "but for a part that the name tells";
    EXPECT_EQ(Values(AsMatrix(entry.m_Object)), LayerValues(2, 3, 1, 3));
}

TEST(DataPtr, ObjectsWithoutValuesAreNoFailureUnlessTraces) {
    DmtFile matrix;
    matrix.m_NDims = 0;
    DptFile group;
    group.m_Particles = 0;
    DgmFile geometry;
    geometry.m_Count = 0;
    WvfFile trace;
    trace.m_Points = 0;
    const std::string files[] = {trace.Bytes(), matrix.Bytes(), group.Bytes(), geometry.Bytes()};
    for (size_t i = 0; i < Kinds.size(); ++i) {
        WriteBytes(Scratch("Q" + Kinds[i].m_Suffix), files[i]);
        DataPtr entry;
        entry.AllocData(Kinds[i].m_Type);
        EXPECT_EQ(entry.Read(Scratch("Q").c_str()), Kinds[i].m_Type != DataWaveform);
    }
}

TEST(DataPtr, CopyHoldsACopyOfTheObject) {
    for (const Kind& kind : Kinds) {
        DataPtr entry;
        FillNamed(entry, kind);
        DataPtr copy(entry);
        LabelOf(entry.m_Object, kind.m_Type) = "new label";
        entry.Release();
        ExpectContents(copy.m_Object, kind.m_Type);
        EXPECT_EQ(copy.m_Type, kind.m_Type);
        EXPECT_EQ(Text(copy.m_Name), "@T");
    }
}

TEST(DataPtr, AssignmentReplacesAnObjectOfAnyKind) {
    for (const Kind& before : Kinds) {
        for (const Kind& kind : Kinds) {
            DataPtr entry;
            FillNamed(entry, kind);
            DataPtr assigned;
            assigned.AllocData(before.m_Type);
            assigned = entry;
            ASSERT_NE(assigned.m_Object, entry.m_Object);
            entry.Release();
            ExpectContents(assigned.m_Object, kind.m_Type);
            EXPECT_EQ(assigned.m_Type, kind.m_Type);
            EXPECT_EQ(Text(assigned.m_Name), "@T");
        }
    }
}

TEST(DataPtr, AssignmentToItselfKeepsTheObject) {
    DataPtr entry;
    entry.AllocData(DataMatrix);
    void* const object = entry.m_Object;
    const DataPtr& same = entry;
    entry = same;
    EXPECT_EQ(entry.m_Object, object);
    ExpectEmpty(entry.m_Object, DataMatrix);
}

TEST(DataPtr, CopiesOfABlankEntryAreBlank) {
    DataPtr blank;
    blank.m_Name = "name";
    DataPtr assigned;
    assigned.AllocData(DataGeometry);
    assigned = blank;
    EXPECT_EQ(assigned.m_Object, nullptr);
    EXPECT_EQ(assigned.m_Type, DataNone);
    EXPECT_EQ(Text(assigned.m_Name), "name");
}

// ---- Getting an object

TEST_F(DataTable, FileIsReadIntoANewObject) {
    void* object = GetTrace("W");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(Samples(AsTrace(object)), (std::vector<float>{-3.0f, 1.0f, 9.0f}));
    ASSERT_EQ(Count(), 1);
    EXPECT_EQ(Expt.m_DataPtrs[0].m_Object, object);
    EXPECT_EQ(Expt.m_DataPtrs[0].m_Type, DataWaveform);
    EXPECT_EQ(NameOf(0), "W");
}

TEST_F(DataTable, KindTellsWhichFileOfANameIsRead) {
    for (const Kind& kind : Kinds)
        WriteBytes(FileOf(kind, "Q"), kind.m_Bytes);
    for (int i = 0; i < 4; ++i) {
        const DataType type = Kinds[static_cast<size_t>(i)].m_Type;
        void* object = Expt.GetDataPtr("Q", type);
        ExpectContents(object, type);
        ASSERT_EQ(Count(), i + 1);
        EXPECT_EQ(Expt.m_DataPtrs[i].m_Object, object);
        EXPECT_EQ(Expt.m_DataPtrs[i].m_Type, type);
        EXPECT_EQ(NameOf(i), "Q");
    }
}

TEST_F(DataTable, EachRequestForAFileGivesItsOwnObject) {
    for (const Kind& kind : Kinds) {
        Expt.ClearDataPtrs();
        void* first = GetFromFile(kind);
        void* second = GetFromFile(kind);
        EXPECT_NE(first, second);
        EXPECT_EQ(Count(), 2);
    }
}

TEST_F(DataTable, ObjectsKeepTheirAddressWhenTheTableGrows) {
    void* first = GetTrace("W");
    for (int i = 0; i < 100; ++i)
        GetTrace("");
    EXPECT_EQ(Expt.m_DataPtrs[0].m_Object, first);
    EXPECT_EQ(AsTrace(first)[2], 9.0f);
}

TEST_F(DataTable, NameIsADataReference) {
    MakeShot("8", "");
    WriteBytes(ShotFolder("8") + "/V.wvf", WvfFile().Bytes());
    EXPECT_NE(GetTrace("8\\V"), nullptr);
    EXPECT_NE(GetTrace("![Trace]"), nullptr);
    EXPECT_EQ(NameOf(1), "![Trace]");
    EXPECT_EQ(GetTrace("9\\V"), nullptr);
}

TEST_F(DataTable, MissingFileLeavesTheTableAsItWas) {
    GetTrace("W");
    for (const Kind& kind : Kinds) {
        WriteBytes(Scratch(kind.m_Suffix), kind.m_Bytes);
        EXPECT_EQ(Expt.GetDataPtr("X", kind.m_Type), nullptr);
        EXPECT_EQ(Expt.GetDataPtr("99\\W", kind.m_Type), nullptr) << "no path is no empty path";
    }
    EXPECT_EQ(Count(), 1);
}

TEST_F(DataTable, TraceWithoutPointsCountsAsMissing) {
    WvfFile empty;
    empty.m_Points = 0;
    WvfFile tooNew;
    tooNew.m_Version = 5;
    for (const WvfFile& file : {empty, tooNew}) {
        WriteBytes(File("W"), file.Bytes());
        EXPECT_EQ(GetTrace("W"), nullptr);
        EXPECT_EQ(Count(), 0);
    }
}

TEST_F(DataTable, EmptyNameGivesAnEmptyObjectWithoutName) {
    for (const Kind& kind : Kinds) {
        Expt.ClearDataPtrs();
        ExpectEmpty(Expt.GetDataPtr("", kind.m_Type), kind.m_Type);
        ASSERT_EQ(Count(), 1);
        EXPECT_EQ(Expt.m_DataPtrs[0].m_Type, kind.m_Type);
        EXPECT_EQ(NameOf(0), "");
    }
}

TEST_F(DataTable, TypeOutOfRangeGivesNothing) {
    for (const int number : {-1, 0, 5, 7}) {
        const DataType type = static_cast<DataType>(number);
        EXPECT_EQ(Expt.GetDataPtr("W", type), nullptr);
        EXPECT_EQ(Expt.GetDataPtr("@T", type), nullptr);
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(DataTable, TypeOutOfRangeWithoutNameLeavesABlankEntry) {
    EXPECT_EQ(Expt.GetDataPtr("", UnknownType), nullptr);
    ASSERT_EQ(Count(), 1);
    EXPECT_EQ(Expt.m_DataPtrs[0].m_Type, DataNone);
}

// ---- Objects in memory

TEST_F(DataTable, MemoryNameIsUnknownBeforeItIsGiven) {
    for (const Kind& kind : Kinds) {
        if (kind.m_Type == DataPGroup) continue;
        WriteBytes(FileOf(kind, "@T"), kind.m_Bytes);
        EXPECT_EQ(Expt.GetDataPtr("@T", kind.m_Type), nullptr);
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(DataTable, MemoryNameOfAParticleGroupIsAFile) {
    WriteBytes(ShotFolder("7") + "/@P.dpt", DptFile().Bytes());
    void* object = Expt.GetDataPtr("@P", DataPGroup);
    ExpectContents(object, DataPGroup);
    EXPECT_EQ(NameOf(0), "@P");
    EXPECT_NE(Expt.GetDataPtr("@P", DataPGroup), object);
    EXPECT_EQ(Expt.GetDataPtr("@Q", DataPGroup), nullptr);
    EXPECT_EQ(Count(), 2);
}

TEST_F(DataTable, NewNamedObjectIsEmpty) {
    for (const Kind& kind : Kinds) {
        if (kind.m_Type == DataPGroup) continue;
        WriteBytes(FileOf(kind, "@T"), kind.m_Bytes);
        ExpectEmpty(Expt.InitDataPtr("@T", kind.m_Type), kind.m_Type);
    }
    EXPECT_EQ(Count(), 3);
}

TEST_F(DataTable, MemoryNamesAreFoundInAnyCase) {
    void* object = KeepTrace("@Trace");
    EXPECT_EQ(GetTrace("@tRACE"), object);
    EXPECT_EQ(GetTrace("@Trace2"), nullptr);
    EXPECT_EQ(GetTrace("@Trac"), nullptr);
    EXPECT_EQ(Count(), 1);
}

TEST_F(DataTable, TypeIsPartOfAMemoryName) {
    KeepTrace("@T");
    EXPECT_EQ(Expt.GetDataPtr("@T", DataNone), nullptr);
    EXPECT_EQ(Expt.GetDataPtr("@T", UnknownType), nullptr);
    EXPECT_EQ(Expt.GetDataPtr("@T", DataMatrix), nullptr);
    void* matrix = Expt.InitDataPtr("@T", DataMatrix);
    void* geometry = Expt.InitDataPtr("@t", DataGeometry);
    EXPECT_EQ(GetTrace("@T"), Expt.m_DataPtrs[0].m_Object);
    EXPECT_EQ(Expt.GetDataPtr("@T", DataMatrix), matrix);
    EXPECT_EQ(Expt.GetDataPtr("@T", DataGeometry), geometry);
    EXPECT_EQ(Expt.GetDataPtr("@T", DataPGroup), nullptr);
}

TEST_F(DataTable, FirstOfEqualMemoryNamesWins) {
    void* first = KeepTrace("@T");
    void* second = KeepTrace("@T");
    EXPECT_EQ(GetTrace("@T"), first);
    Release("", first);
    EXPECT_EQ(GetTrace("@T"), second);
}

TEST_F(DataTable, NameOfANewObjectNeedsNoMark) {
    WriteBytes(File("N"), WvfFile().Bytes());
    void* object = KeepTrace("N");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(NameOf(0), "N");
    EXPECT_NE(GetTrace("N"), object);
}

TEST_F(DataTable, NewObjectNeedsANameAndMayNotBeAParticleGroup) {
    EXPECT_EQ(KeepTrace(""), nullptr);
    EXPECT_EQ(Expt.InitDataPtr("@P", DataPGroup), nullptr);
    EXPECT_EQ(Expt.InitDataPtr("P", DataPGroup), nullptr);
    EXPECT_EQ(Count(), 0);
}

TEST_F(DataTable, NewObjectOfATypeOutOfRangeIsANamedEntryWithoutObject) {
    EXPECT_EQ(Expt.InitDataPtr("@T", UnknownType), nullptr);
    ASSERT_EQ(Count(), 1);
    EXPECT_EQ(NameOf(0), "@T");
    EXPECT_EQ(Expt.m_DataPtrs[0].m_Type, DataNone);
}

TEST_F(DataTable, ObjectOutlivesShotAndExperiment) {
    void* object = KeepTrace("@T");
    MakeShot("8", "");
    Expt.SetShot("8", 0);
    Expt.SetExperimentFolder("");
    EXPECT_EQ(GetTrace("@T"), object);
}

// ---- Giving an object back

TEST_F(DataTable, EmptyNameDestroysUnsaved) {
    for (const Kind& kind : Kinds) {
        void* object = GetFromFile(kind);
        LabelOf(object, kind.m_Type) = "new label";
        EXPECT_TRUE(Expt.ReleaseDataPtr("", kind.m_Type, object));
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(Count(), 0);
        EXPECT_EQ(ReadBytes(FileOf(kind, "Q")), kind.m_Bytes);
    }
}

TEST_F(DataTable, MemoryNamePublishesAnObjectOfAFile) {
    for (const Kind& kind : Kinds) {
        if (kind.m_Type == DataPGroup) continue;
        Expt.ClearDataPtrs();
        void* object = GetFromFile(kind);
        void* const known = object;
        EXPECT_TRUE(Expt.ReleaseDataPtr("@T", kind.m_Type, object));
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(Count(), 1);
        EXPECT_EQ(Expt.GetDataPtr("@t", kind.m_Type), known);
        ExpectContents(known, kind.m_Type);
        EXPECT_FALSE(Exists(FileOf(kind, "@T")));
    }
}

TEST_F(DataTable, ParticleGroupIsNeverKeptInMemory) {
    const Kind& kind = Kinds[2];
    void* object = GetFromFile(kind);
    LabelOf(object, DataPGroup) = "new label";
    EXPECT_TRUE(Expt.ReleaseDataPtr("@P", DataPGroup, object));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(WithoutDate(kind, ReadBytes(FileOf(kind, "@P"))), Relabelled(kind));
}

TEST_F(DataTable, DataNameWritesAndDestroys) {
    for (const Kind& kind : Kinds) {
        void* object = GetFromFile(kind);
        LabelOf(object, kind.m_Type) = "new label";
        EXPECT_TRUE(Expt.ReleaseDataPtr("V", kind.m_Type, object));
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(Count(), 0);
        EXPECT_EQ(WithoutDate(kind, ReadBytes(FileOf(kind, "V"))), Relabelled(kind));
        EXPECT_EQ(ReadBytes(FileOf(kind, "Q")), kind.m_Bytes);
    }
}

TEST_F(DataTable, FailedWriteIsToldAndTheObjectLost) {
    for (const Kind& kind : Kinds) {
        void* object = GetFromFile(kind);
        EXPECT_FALSE(Expt.ReleaseDataPtr("sub/V", kind.m_Type, object));
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(Count(), 0);
    }
}

TEST_F(DataTable, NameWithoutPathLosesTheObjectSilently) {
    for (const Kind& kind : Kinds) {
        void* object = GetFromFile(kind);
        EXPECT_TRUE(Expt.ReleaseDataPtr("99\\V", kind.m_Type, object));
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(Count(), 0);
        EXPECT_FALSE(Exists(Scratch(kind.m_Suffix)));
    }
}

TEST_F(DataTable, PartOfAMatrixIsWrittenBesideTheWhole) {
    WriteBytes(ShotFolder("7") + "/M.dmt", DmtFile().Bytes());
    void* object = Expt.GetDataPtr("M[1,3]", DataMatrix);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(Values(AsMatrix(object)), LayerValues(2, 3, 1, 3));
    EXPECT_TRUE(Expt.ReleaseDataPtr("M[1,3]", DataMatrix, object));
    EXPECT_EQ(ReadBytes(ShotFolder("7") + "/M.dmt"), DmtFile().Bytes());
    EXPECT_TRUE(Exists(ShotFolder("7") + "/M[1,3].dmt"));
}

TEST_F(DataTable, ObjectThatIsNotInTheTableStays) {
    Waveform own(1);
    void* object = &own;
    EXPECT_TRUE(Release("V", object));
    EXPECT_EQ(object, &own);
    EXPECT_FALSE(Exists(File("V")));
    int nowhere = 0;
    void* address = &nowhere;
    EXPECT_TRUE(Release("", address));
    EXPECT_EQ(address, &nowhere);
}

TEST_F(DataTable, ObjectOfAnotherTypeStays) {
    for (const Kind& kind : Kinds) {
        Expt.ClearDataPtrs();
        void* const known = GetFromFile(kind);
        void* object = known;
        for (const int type : {0, 1, 2, 3, 4, 5}) {
            if (type == kind.m_Type) continue;
            EXPECT_TRUE(Expt.ReleaseDataPtr("V", static_cast<DataType>(type), object));
            EXPECT_EQ(object, known);
        }
        EXPECT_EQ(Count(), 1);
        EXPECT_FALSE(Exists(FileOf(kind, "V")));
    }
}

TEST_F(DataTable, NullMatchesBlankEntriesAlone) {
    KeepTrace("@T");
    Expt.GetDataPtr("", UnknownType);
    void* object = nullptr;
    EXPECT_TRUE(Release("", object));
    EXPECT_EQ(Count(), 2);
    EXPECT_TRUE(Expt.ReleaseDataPtr("", DataNone, object));
    EXPECT_EQ(Count(), 1);
    EXPECT_NE(GetTrace("@T"), nullptr);
}

TEST_F(DataTable, WalkGoesOnBehindTheEntryThatFollowsARemovedOne) {
    for (int i = 0; i < 4; ++i)
        Expt.GetDataPtr("", UnknownType);
    void* object = nullptr;
    EXPECT_TRUE(Expt.ReleaseDataPtr("", DataNone, object));
    EXPECT_EQ(Count(), 2);
}

TEST_F(DataTable, ArgumentsMayBeTheEntrysOwn) {
    void* const known = GetTrace("W");
    AsTrace(known).m_Params[0] = 77.0f;
    DataPtr& entry = Expt.m_DataPtrs[0];
    EXPECT_TRUE(Expt.ReleaseDataPtr("@T", DataWaveform, entry.m_Object));
    EXPECT_EQ(GetTrace("@T"), known);
    entry.m_Name = "V";
    EXPECT_TRUE(Expt.ReleaseDataPtr(entry.m_Name, DataWaveform, entry.m_Object));
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(ReadBytes(File("V")).substr(62, 4), Float32(77.0f));
}

TEST_F(DataTable, NamesOfEntriesMayBeAskedForAgain) {
    GetTrace("W");
    for (int i = 0; i < 100; ++i) {
        ASSERT_NE(Expt.GetDataPtr(Expt.m_DataPtrs[0].m_Name, DataWaveform), nullptr);
        ASSERT_NE(Expt.InitDataPtr(Expt.m_DataPtrs[0].m_Name, DataWaveform), nullptr);
    }
    EXPECT_EQ(NameOf(200), "W");
}

TEST_F(DataTable, PointerOfABlankEntryDoesNotReachItsFollower) {
    Expt.GetDataPtr("", UnknownType);
    void* kept = KeepTrace("@T");
    Expt.GetDataPtr("", UnknownType);
    EXPECT_TRUE(Expt.ReleaseDataPtr("", DataNone, Expt.m_DataPtrs[0].m_Object));
    EXPECT_EQ(GetTrace("@T"), kept);
}

TEST_F(DataTable, ClearDropsEverythingUnsaved) {
    AsTrace(GetTrace("W"))[0] = 77.0f;
    KeepTrace("@T");
    for (const Kind& kind : Kinds)
        LabelOf(GetFromFile(kind), kind.m_Type) = "new label";
    Expt.ClearDataPtrs();
    for (const Kind& kind : Kinds)
        EXPECT_EQ(ReadBytes(FileOf(kind, "Q")), kind.m_Bytes);
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(Expt.m_DataPtrs.RCount(), 1);
    EXPECT_EQ(Expt.m_DataPtrs.Capacity(), 0);
    EXPECT_EQ(GetTrace("@T"), nullptr);
    EXPECT_EQ(ReadBytes(File("W")), WvfFile().Bytes());
}

TEST_F(DataTable, ObjectsLeftAtExitDieWithoutAFile) {
    EXPECT_EXIT(
        {
            KeepTrace("Left");
            Expt.InitDataPtr("@Left", DataMatrix);
            Expt.InitDataPtr("Left", DataGeometry);
            for (const Kind& kind : Kinds) {
                LabelOf(GetFromFile(kind), kind.m_Type) = "new label";
                Expt.GetDataPtr("", kind.m_Type);
            }
            exit(0);
        },
        testing::ExitedWithCode(0), "^$");
    EXPECT_EQ(Names(ShotFolder("7")), (std::vector<std::string>{"Q.dgm", "Q.dmt", "Q.dpt", "Q.wvf",
                                                                "Scalars.ini", "W.wvf"}));
    for (const Kind& kind : Kinds)
        EXPECT_EQ(ReadBytes(FileOf(kind, "Q")), kind.m_Bytes);
}

// ---- Calls from within a locked write

namespace {

/// Does `Action` when it is told that a file is locked.
class LockedSink : public DNotify {
public:
    explicit LockedSink(void (*action)(LockedSink&)) : m_Action(action) { SetNotify(this); }
    ~LockedSink() override { SetNotify(nullptr); }
    void Notify(NotifyType, int, const DString&) override { m_Action(*this); }

    void (*m_Action)(LockedSink&);
    void* m_Object = nullptr;
};

class LockedWrite : public DataTable {
protected:
    LockedWrite() {
        WvfFile locked;
        locked.m_Version = -4;
        WriteBytes(File("Locked"), locked.Bytes());
    }
};

}  // namespace

TEST_F(LockedWrite, SinkMayReleaseTheObject) {
    LockedSink sink([](LockedSink& self) {
        EXPECT_TRUE(Expt.ReleaseDataPtr("", DataWaveform, self.m_Object));
    });
    void* object = sink.m_Object = GetTrace("W");
    EXPECT_FALSE(Release("Locked", object));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(sink.m_Object, nullptr);
    EXPECT_EQ(Count(), 0);
}

TEST_F(LockedWrite, SinkMayWriteTheObjectElsewhere) {
    LockedSink sink([](LockedSink& self) {
        EXPECT_TRUE(Expt.ReleaseDataPtr("Rescued", DataWaveform, self.m_Object));
    });
    void* object = sink.m_Object = GetTrace("W");
    EXPECT_FALSE(Release("Locked", object));
    EXPECT_TRUE(Exists(File("Rescued")));
    EXPECT_EQ(Count(), 0);
}

TEST_F(LockedWrite, SinkMayClearTheTable) {
    LockedSink sink([](LockedSink&) { Expt.ClearDataPtrs(); });
    void* object = GetTrace("W");
    EXPECT_FALSE(Release("Locked", object));
    EXPECT_EQ(Count(), 0);
}

TEST_F(LockedWrite, SinkMayFillTheTable) {
    LockedSink sink([](LockedSink&) {
        for (int i = 0; i < 100; ++i)
            Expt.InitDataPtr("@new", DataWaveform);
    });
    void* object = GetTrace("W");
    EXPECT_FALSE(Release("Locked", object));
    EXPECT_EQ(Count(), 100);
    EXPECT_EQ(NameOf(0), "@new");
}

TEST_F(LockedWrite, NewObjectInThePlaceOfTheOldOneStays) {
    LockedSink sink([](LockedSink& self) {
        Expt.ReleaseDataPtr("", DataWaveform, self.m_Object);
        self.m_Object = Expt.InitDataPtr("@new", DataWaveform);
    });
    void* object = sink.m_Object = GetTrace("W");
    EXPECT_FALSE(Release("Locked", object));
    ASSERT_EQ(Count(), 1);
    EXPECT_EQ(GetTrace("@new"), sink.m_Object);
}

TEST_F(LockedWrite, ScalarMayBeWrittenWhileTheTableIsCleared) {
    LockedSink sink([](LockedSink&) {
        Expt.ClearDataPtrs();
        Expt.SetExperimentFolder("");
    });
    Expt.SetScalarData("Locked\\t1", 5.0f);
    EXPECT_TRUE(Expt.m_ShotFolder.IsEmpty());
}
