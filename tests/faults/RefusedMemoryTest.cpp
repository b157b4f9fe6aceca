// Memory that is refused in the middle of a session: at each allocation in turn, once and from
// there on. Whatever a step of a session loses by that, it doesn't die, and every file is as it was
// before the step or as it is after it.
#include <fcntl.h>
#include <unistd.h>

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "data/Geometry.h"
#include "experiment/Experiment.h"
#include "faults/Faults.h"
#include "faults/Lab.h"
#include "support/Support.h"
#include "system/DFile.h"
#include "system/DSystem.h"

namespace {

using Step = std::function<void()>;

// Each allocation in turn; under the sanitizer, where a process costs ten times as much, every
// fifth.
#ifdef __SANITIZE_ADDRESS__
constexpr long Stride = 5;
#else
constexpr long Stride = 1;
#endif

// What the library prints goes nowhere while this lives, so that it asks for no memory of its own.
class Quiet {
public:
    Quiet() : m_Output(dup(STDOUT_FILENO)) {
        fflush(stdout);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        close(null);
    }
    ~Quiet() {
        fflush(stdout);
        dup2(m_Output, STDOUT_FILENO);
        close(m_Output);
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    int m_Output;
};

class RefusedMemorySession : public testing::Test {
protected:
    static constexpr long Moment = 1100000000;
    FixedTime m_Time{Moment};
    NoSleep m_NoSleep;

    bool m_Between = false;  ///< the step writes a text file more than once

    // Strings whose blocks the library would otherwise have at hand, without asking for memory.
    std::vector<DString> m_Drained;

    void SetUp() override { MakeLab(); }

    void DrainFreeBlocks() {
        for (int i = 0; i < 3000; ++i)
            m_Drained.emplace_back("x");
    }

    Snapshot After(const Step& step) {
        EXPECT_EQ(InChild(step), ChildEnd::Passed);
        return TakeSnapshot(ScratchFolder());
    }

    // Runs the step with the refusals in a child process; false where it came to its end before
    // the first of them.
    bool RunHarmed(const Step& step, const std::vector<Snapshot>& states, long first, long count) {
        const std::string unharmed = Scratch("unharmed");
        const ChildEnd end = InChild([&] {
            bool hit = true;
            {
                const Quiet quiet;
                const RefusedMemory refused(first, count);
                step();
                hit = refused.Hit();
            }
            ExpectOneOf(states, ScratchFolder(), m_Between);
            if (!hit) WriteBytes(unharmed, "");
            ExpectWorkingSession();
        });
        EXPECT_EQ(end, ChildEnd::Passed)
            << (count == 1 ? "allocation " : "all from allocation ") << first;
        return !Exists(unharmed);
    }

    void ExpectNoHarm(const Step& step) {
        DrainFreeBlocks();
        const Snapshot before = TakeSnapshot(ScratchFolder());
        std::vector<Snapshot> states = {before, After(step)};
        Restore(ScratchFolder(), before);
        states.push_back(After([&] {
            const BrokenClock clock;
            step();
        }));
        Restore(ScratchFolder(), before);
        constexpr long Most = 20000;
        long n = 1;
        for (bool reached = true; reached && n < Most; n += Stride) {
            for (const long count : {1L, RefusedMemory::AllBehind}) {
                reached = RunHarmed(step, states, n, count);
                Restore(ScratchFolder(), before);
                ASSERT_FALSE(HasFailure()) << "the rest isn't tried";
            }
        }
        EXPECT_GT(n, 5) << "the step asks for memory";
        EXPECT_LT(n, Most);
        RecordProperty("allocations", static_cast<int>(n));
    }

    void ExpectNoHarmInShot(const Step& step) {
        OpenLab();
        ExpectNoHarm(step);
    }
};

std::vector<float> Samples(int count) {
    std::vector<float> samples(static_cast<size_t>(count), 2.5f);
    samples[0] = 1;
    return samples;
}

}  // namespace

TEST_F(RefusedMemorySession, AtTheStart) {
    ExpectNoHarm([] { InitializeTarselC("/opt/tarsel$L"); });
}

TEST_F(RefusedMemorySession, WhileAnExperimentIsOpened) {
    InitializeTarselC("/opt/tarsel");
    const std::string folder = Scratch("Lab");
    ExpectNoHarm([&] { SetExperimentC(folder.c_str()); });
}

TEST_F(RefusedMemorySession, WhileAShotIsCreated) {
    m_Between = true;
    ExpectNoHarmInShot([] { CreateShotC("A shot that is new"); });
}

TEST_F(RefusedMemorySession, WhileAShotIsSelected) {
    ExpectNoHarmInShot([] { SetShotC("Archive/Old"); });
}

TEST_F(RefusedMemorySession, WhileAFieldIsRead) {
    ExpectNoHarmInShot([] {
        char buffer[100];
        int length = sizeof buffer;
        GetStringDataC("Nothing::Key3", &length, buffer);
    });
}

TEST_F(RefusedMemorySession, WhileAFieldIsSet) {
    ExpectNoHarmInShot([] { SetStringDataC("Key4", "another value, which is no longer"); });
}

TEST_F(RefusedMemorySession, WhileAFieldIsDeleted) {
    ExpectNoHarmInShot([] { SetStringDataC("Key4", ""); });
}

TEST_F(RefusedMemorySession, WhileFieldsAreSetInAPause) {
    const DString keys[] = {"Key4", "A new key"};
    const DString values[] = {"another value, which is no longer", "and its value"};
    m_Between = true;
    ExpectNoHarmInShot([&] {
        Expt.SetPauseIO(true);
        Expt.SetShotData(keys[0], values[0]);
        Expt.SetShotData(keys[1], values[1]);
        Expt.SetPauseIO(false);
    });
}

TEST_F(RefusedMemorySession, WhileTheFieldsOfTheGroupAreRebuilt) {
    ExpectNoHarmInShot([] { Expt.SetShotCacheData(); });
}

TEST_F(RefusedMemorySession, WhileATraceIsWritten) {
    const std::vector<float> samples = Samples(100);
    ExpectNoHarmInShot([&] { SetWaveformC("I", 0, 1, 100, samples.data()); });
}

TEST_F(RefusedMemorySession, WhileATraceIsRead) {
    ExpectNoHarmInShot([] {
        float read[100];
        GetWaveformC("I", 0, 1, 100, read);
    });
}

TEST_F(RefusedMemorySession, WhileAMatrixIsWrittenAndRead) {
    const std::vector<float> values = Samples(24);
    ExpectNoHarmInShot([&] {
        float read[24];
        SetMatrixC("M", 4, 3, 2, values.data(), 0, 1, 0, 1, 0, 1);
        GetMatrixC("M", 4, 3, 2, read);
        GetMatrixC("8\\M", 2, 3, 2, read);
    });
}

TEST_F(RefusedMemorySession, WhileParticlesAreWrittenAndRead) {
    const std::vector<float> values = Samples(24);
    ExpectNoHarmInShot([&] {
        float read[24];
        int count = 3;
        SetPGroupC("P", 3, 0, values.data(), 1, 2);
        GetPGroupC("P", &count, 0, read);
    });
}

TEST_F(RefusedMemorySession, WhileParticlesAreAppended) {
    const std::vector<float> values = Samples(24);
    ExpectNoHarmInShot([&] { AppendPGroupC("P", 3, 0, values.data(), 1, 2); });
}

TEST_F(RefusedMemorySession, WhileAGeometryIsReadAndWritten) {
    const DString source("8\\G");
    const DString target("G");
    ExpectNoHarmInShot([&] {
        void* geometry = Expt.GetDataPtr(source, DataGeometry);
        Expt.ReleaseDataPtr(target, DataGeometry, geometry);
    });
}

TEST_F(RefusedMemorySession, WhileANumberOfATraceIsSet) {
    ExpectNoHarmInShot([] { SetScalarDataC("I\\t3", 4.5f); });
}

TEST_F(RefusedMemorySession, WhileANumberOfAMatrixIsSet) {
    ExpectNoHarmInShot([] { SetScalarDataC("M\\t3", 4.5f); });
}

TEST_F(RefusedMemorySession, WhileExpressionsAreEvaluated) {
    ExpectNoHarmInShot([] {
        char buffer[100];
        int length = sizeof buffer;
        GetScalarDataC("(Charge+2)*![Charge]^2 + I\\mx - <\\M\\mx");
        GetScalarDataSafeC("a peak of {I\\mx*2} A", &length, buffer);
        Expt.GetExpandedLabel("a charge of ![Charge%.3f] C, not of ![Nothing]");
    });
}

TEST_F(RefusedMemorySession, WhileShotsAreListed) {
    ExpectNoHarmInShot([] {
        DStringArray names;
        DArray<int> groups;
        DArray<long> dates;
        Expt.GetShotSet(".\\Shots", "*", "I", names, groups, &dates);
        Expt.GetShotSet("(Shot list)", "L", "*", names, groups, &dates);
        Expt.GetShotList("6:9", -1, names, groups, &dates);
        Expt.GetDataFileNames("*", names, true);
    });
}

TEST_F(RefusedMemorySession, ShotWhoseNameIsRefusedIsNotSelected) {
    Expt.SetExperimentFolder(Scratch("Lab").c_str());
    const DString name("*a shot of some length");
    bool selected = true;
    {
        const RefusedMemory refused(1, 1);
        selected = Expt.SetShot(name, 0);
        EXPECT_TRUE(refused.Hit());
    }
    EXPECT_FALSE(selected);
    EXPECT_TRUE(Expt.GetShotName().IsEmpty());
}

TEST_F(RefusedMemorySession, ListLosesTheLineThatIsHitAndNoneBehindIt) {
    OpenLab();
    constexpr int Lines = 12;
    std::string lines;
    for (int i = 0; i < Lines; ++i)
        lines += i % 2 == 0 ? "7;..\\Lab/Shots\r\n" : "8;..\\Lab/Shots\r\n";
    WriteBytes(Scratch("Lab/ShotLists/Long.txt"), lines);
    DrainFreeBlocks();
    const DString list("Long");
    int partial = 0;
    for (long n = 1; n < 1000; ++n) {
        DStringArray names;
        DArray<int> groups;
        bool hit = false;
        {
            const RefusedMemory refused(n, 1);
            Expt.GetShotList(list, -1, names, groups, nullptr);
            hit = refused.Hit();
        }
        if (!hit) break;
        EXPECT_EQ(names.Count(), groups.Count());
        if (names.Count() == 0) continue;  // the file or its name was refused
        EXPECT_GE(names.Count(), Lines - 1) << n;
        if (names.Count() < Lines) ++partial;
    }
    EXPECT_GT(partial, Lines);
}

TEST_F(RefusedMemorySession, WhileAListIsSaved) {
    DStringArray names;
    DArray<int> groups;
    names.Add("7");
    groups.Add(0);
    names.Add("Old");
    groups.Add(1);
    const DString file("L.txt");
    ExpectNoHarmInShot([&] { Expt.SaveShotList(file, names, groups); });
}

TEST_F(RefusedMemorySession, WhileAListIsMerged) {
    DStringArray names;
    DArray<int> groups;
    names.Add("9");
    groups.Add(0);
    const DString source((Scratch("Lab/ShotLists/L")).c_str());
    const DString file("L.txt");
    ExpectNoHarmInShot([&] { Expt.MergeShotList(source, file, names, groups); });
}

TEST_F(RefusedMemorySession, WhileAShotIsBackedUp) {
    ExpectNoHarmInShot([] { Expt.BackupShot(); });
}

TEST_F(RefusedMemorySession, WhileTheBackupPathIsSet) {
    const DString path("/somewhere/else/Lab");
    ExpectNoHarmInShot([&] { Expt.SetBackupPath(path); });
}

TEST_F(RefusedMemorySession, WhileARunIsStamped) {
    const DString file(Scratch(".Tarsel/Tarsel.ini").c_str());
    m_Between = true;
    ExpectNoHarmInShot([&] {
        DIni settings(file);
        Expt.StampConfigFile(settings);
    });
}

TEST_F(RefusedMemorySession, WhileSettingsAreRestored) {
    OpenLab();
    DIni settings(Scratch(".Tarsel/Tarsel.ini").c_str());
    for (const char* section : {"Nodes", "Preferences", "Translations"})
        settings.DeleteSection(section);
    ExpectNoHarm([&] { settings.RestoreFile(); });
}

TEST_F(RefusedMemorySession, WhileAShotIsRenamed) {
    const DString name("A new name");
    ExpectNoHarmInShot([&] { Expt.RenameShot(name); });
}

TEST_F(RefusedMemorySession, WhileAShotIsDeleted) {
    ExpectNoHarmInShot([] { Expt.DeleteShot(); });
}

TEST_F(RefusedMemorySession, WhileNodesAreAsked) {
    ExpectNoHarmInShot([] { GetNodesC(3); });
}

TEST_F(RefusedMemorySession, WhileFilesAreCopiedAndRenamed) {
    const auto inShot = [](const char* name) {
        return DString(Scratch(std::string("Lab/Shots/Shot7/") + name).c_str());
    };
    DString from = inShot("I.wvf");
    DString to = inShot("Copy.wvf");
    const DString before = inShot("m.dmt");
    const DString after = inShot("Moved.dmt");
    ExpectNoHarmInShot([&] {
        DFile::CopyLargeFile(from, to);
        RenameFile(before, after);
    });
}
