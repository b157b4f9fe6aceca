// The table of data objects that callers hold, and of objects kept in memory under "@" names.
#include <string>
#include <vector>

#include "core/CoreGlobal.h"
#include "data/DataPtr.h"
#include "data/Waveform.h"
#include "data/WaveformTestData.h"
#include "experiment/Experiment.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

constexpr DataType UnknownType = static_cast<DataType>(7);

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
    static Waveform& AsTrace(void* object) { return *static_cast<Waveform*>(object); }
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

TEST(DataPtr, AllocatesAnEmptyTrace) {
    DataPtr entry;
    entry.AllocData(DataWaveform);
    ASSERT_NE(entry.m_Object, nullptr);
    EXPECT_EQ(entry.m_Type, DataWaveform);
    EXPECT_EQ(static_cast<Waveform*>(entry.m_Object)->Count(), 0);
}

TEST(DataPtr, TypeOutOfRangeLeavesNoObjectAndTheType) {
    DataPtr entry;
    entry.AllocData(UnknownType);
    EXPECT_EQ(entry.m_Object, nullptr);
    EXPECT_EQ(entry.m_Type, DataNone);
    entry.AllocData(DataWaveform);
    entry.AllocData(UnknownType);
    EXPECT_EQ(entry.m_Object, nullptr);
    EXPECT_EQ(entry.m_Type, DataWaveform);
    EXPECT_FALSE(entry.Read("x"));
    EXPECT_FALSE(entry.Write("x"));
}

TEST(DataPtr, ReleaseLeavesTheName) {
    DataPtr entry;
    entry.AllocData(DataWaveform);
    entry.m_Name = "@T";
    entry.Release();
    EXPECT_EQ(entry.m_Object, nullptr);
    EXPECT_EQ(entry.m_Type, DataNone);
    EXPECT_EQ(Text(entry.m_Name), "@T");
    entry.m_Type = UnknownType;
    entry.Release();
    EXPECT_EQ(entry.m_Type, DataNone);
}

TEST(DataPtr, ReadsAndWritesUnderANameWithoutSuffix) {
    WriteBytes(Scratch("W.wvf"), WvfFile().Bytes());
    DataPtr entry;
    entry.AllocData(DataWaveform);
    EXPECT_TRUE(entry.Read(Scratch("W").c_str()));
    EXPECT_EQ(static_cast<Waveform*>(entry.m_Object)->Count(), 3);
    EXPECT_TRUE(entry.Write(Scratch("V").c_str()));
    EXPECT_TRUE(Exists(Scratch("V.wvf")));
    EXPECT_FALSE(entry.Read(Scratch("X").c_str()));
    EXPECT_FALSE(entry.Write(Scratch("missing/V").c_str()));
}

TEST(DataPtr, CopyHoldsACopyOfTheObject) {
    DataPtr entry;
    entry.AllocData(DataWaveform);
    entry.m_Name = "@T";
    static_cast<Waveform*>(entry.m_Object)->m_Max = 5.0f;
    DataPtr copy(entry);
    DataPtr assigned;
    assigned = copy;
    entry.Release();
    ASSERT_NE(copy.m_Object, assigned.m_Object);
    EXPECT_EQ(static_cast<Waveform*>(copy.m_Object)->m_Max, 5.0f);
    EXPECT_EQ(static_cast<Waveform*>(assigned.m_Object)->m_Max, 5.0f);
    EXPECT_EQ(Text(assigned.m_Name), "@T");
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

TEST_F(DataTable, EachRequestForAFileGivesItsOwnObject) {
    void* first = GetTrace("W");
    void* second = GetTrace("W");
    EXPECT_NE(first, second);
    EXPECT_EQ(Count(), 2);
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
    EXPECT_EQ(GetTrace("X"), nullptr);
    EXPECT_EQ(GetTrace("99\\W"), nullptr);
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
    void* object = GetTrace("");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(AsTrace(object).Count(), 0);
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(NameOf(0), "");
}

TEST_F(DataTable, TypeOutOfRangeGivesNothing) {
    EXPECT_EQ(Expt.GetDataPtr("W", UnknownType), nullptr);
    EXPECT_EQ(Expt.GetDataPtr("@T", UnknownType), nullptr);
    EXPECT_EQ(Count(), 0);
}

TEST_F(DataTable, TypeOutOfRangeWithoutNameLeavesABlankEntry) {
    EXPECT_EQ(Expt.GetDataPtr("", UnknownType), nullptr);
    ASSERT_EQ(Count(), 1);
    EXPECT_EQ(Expt.m_DataPtrs[0].m_Type, DataNone);
}

// ---- Objects in memory

TEST_F(DataTable, MemoryNameIsUnknownBeforeItIsGiven) {
    WriteBytes(File("@T"), WvfFile().Bytes());
    EXPECT_EQ(GetTrace("@T"), nullptr);
    EXPECT_EQ(Count(), 0);
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
    EXPECT_EQ(Count(), 0);
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
    void* object = GetTrace("W");
    AsTrace(object)[0] = 77.0f;
    EXPECT_TRUE(Release("", object));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(ReadBytes(File("W")), WvfFile().Bytes());
}

TEST_F(DataTable, MemoryNamePublishesAnObjectOfAFile) {
    void* object = GetTrace("W");
    void* const known = object;
    EXPECT_TRUE(Release("@T", object));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Count(), 1);
    EXPECT_EQ(GetTrace("@t"), known);
    EXPECT_EQ(AsTrace(known)[2], 9.0f);
}

TEST_F(DataTable, ParticleGroupIsNeverKeptInMemory) {
    Expt.m_DataPtrs.AddBlank(1);
    Expt.m_DataPtrs[0].m_Type = DataPGroup;
    void* object = nullptr;
    EXPECT_FALSE(Expt.ReleaseDataPtr("@P", DataPGroup, object));
    EXPECT_EQ(Count(), 0);
}

TEST_F(DataTable, DataNameWritesAndDestroys) {
    void* object = GetTrace("W");
    EXPECT_TRUE(Release("V", object));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Count(), 0);
    EXPECT_EQ(ReadBytes(File("V")).size(), WvfFile().Bytes().size());
}

TEST_F(DataTable, FailedWriteIsToldAndTheObjectLost) {
    void* object = GetTrace("W");
    EXPECT_FALSE(Release("sub/V", object));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Count(), 0);
}

TEST_F(DataTable, NameWithoutPathLosesTheObjectSilently) {
    void* object = GetTrace("W");
    EXPECT_TRUE(Release("99\\V", object));
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Count(), 0);
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
    void* const known = GetTrace("W");
    void* object = known;
    EXPECT_TRUE(Expt.ReleaseDataPtr("", DataNone, object));
    EXPECT_EQ(object, known);
    EXPECT_EQ(Count(), 1);
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
    Expt.ClearDataPtrs();
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
            AsTrace(GetTrace("W"))[0] = 77.0f;
            exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_FALSE(Exists(File("Left")));
    EXPECT_EQ(ReadBytes(File("W")), WvfFile().Bytes());
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
