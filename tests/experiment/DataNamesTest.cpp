// Data references: the short names by which callers name the files of a shot.
#include <filesystem>
#include <string>
#include <vector>

#include "experiment/Experiment.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

// Shots 7, current, and 8 stand in group 0, shots 8 and 9 in the archive.
class DataNames : public ShotTest {
protected:
    DataNames() {
        MakeShot("8", "");
        MakeShot("8", "", "Archive");
        MakeShot("9", "", "Archive");
        SelectNewShot("7", "Trace=W\r\nPlace=9\\W\r\nDrive=C\r\n");
    }

    static std::string File(const char* reference) { return Text(Expt.GetDataFileName(reference)); }
};

// The current shot is A009.
class NeighbourNames : public ShotTest {
protected:
    NeighbourNames() { SelectNewShot("A009", ""); }

    static std::string Clean(const char* reference) {
        return Text(Expt.CleanDataFileName(reference));
    }
};

// The data of shot 7 as references.
class DataLists : public ShotTest {
protected:
    DataLists() {
        Fill(ShotFolder("7"), {"b.dmt", "a.wvf", "c.d.wvf"});
        Fill(ShotFolder("8", "Archive"), {"x.wvf", "y.wvf"});
        Expt.SetShot("7", 0);
    }

    static void Fill(const std::string& folder, const std::vector<std::string>& files) {
        MakeFolder(folder);
        for (const std::string& file : files)
            WriteBytes(folder + "/" + file, "");
    }

    static std::string Joined(const DStringArray& names) { return Text(names.Join(" ")); }

    static std::string List(const char* pattern) {
        DStringArray names;
        Expt.GetDataFileNames(pattern, names, true);
        return Joined(names);
    }
};

}  // namespace

// ---- Files of references

TEST_F(DataNames, PlainNameIsAFileOfTheCurrentShot) {
    EXPECT_EQ(File("W"), ShotFolder("7") + "/W");
    EXPECT_EQ(File("\\W"), ShotFolder("7") + "/W");
}

TEST_F(DataNames, ShotInFrontIsFoundInAnyGroup) {
    EXPECT_EQ(File("8\\W"), ShotFolder("8") + "/W");
    EXPECT_EQ(File("9\\W"), ShotFolder("9", "Archive") + "/W");
}

TEST_F(DataNames, GroupMayStandBeforeTheShot) {
    EXPECT_EQ(File("archive/8\\W"), ShotFolder("8", "Archive") + "/W");
}

TEST_F(DataNames, UnknownShotHasNoFile) {
    EXPECT_EQ(File("10\\W"), "");
    EXPECT_EQ(File("8\\sub\\W"), "");
}

TEST_F(DataNames, EmptyReferenceHasNoFile) { EXPECT_EQ(File(""), ""); }

TEST_F(DataNames, PathWithADriveStaysAsItIs) {
    EXPECT_EQ(File("C:\\a\\b"), "C:\\a\\b");
    EXPECT_EQ(File("![Drive]:\\a"), "C:\\a");
}

TEST_F(DataNames, DotBeginsAPathOfTheExperiment) {
    EXPECT_EQ(File(".\\Query\\a"), Folder() + "/Query/a");
    EXPECT_EQ(File("..\\x\\a"), ScratchFolder() + "/x/a");
}

TEST_F(DataNames, TwoBackslashesBeginANetworkPath) {
    EXPECT_EQ(File("\\\\server\\disk\\a"), "\\\\server\\disk\\a");
}

TEST_F(DataNames, FieldsAreFilledInFirst) {
    EXPECT_EQ(File("![Trace]2"), ShotFolder("7") + "/W2");
    EXPECT_EQ(File("![Place]"), ShotFolder("9", "Archive") + "/W");
    EXPECT_EQ(File("[Trace]"), ShotFolder("7") + "/[Trace]");
}

TEST_F(DataNames, ReferenceThatCannotBeFilledNamesTheShotsFolder) {
    EXPECT_EQ(File("![missing]W"), ShotFolder("7"));
}

TEST_F(DataNames, WithoutExperimentThereIsNoShotToFind) {
    Expt.m_GroupPaths.Clear();
    EXPECT_EQ(File("8\\W"), "");
}

TEST_F(DataNames, GroupOfAReference) {
    DString shot;
    EXPECT_EQ(Expt.GetShotGNumFromFileName("W", shot), 0);
    EXPECT_EQ(Text(shot), "7");
    EXPECT_EQ(Expt.GetShotGNumFromFileName("9\\W", shot), 1);
    EXPECT_EQ(Text(shot), "9");
    EXPECT_EQ(Expt.GetShotGNumFromFileName("Archive/8\\W", shot), 1);
    EXPECT_EQ(Text(shot), "8");
    EXPECT_EQ(Expt.GetShotGNumFromFileName("10\\W", shot), -1);
}

TEST_F(DataNames, GroupOfAReferenceThatIsItsOwnResult) {
    DString reference("9\\W");
    EXPECT_EQ(Expt.GetShotGNumFromFileName(reference, reference), 1);
    EXPECT_EQ(Text(reference), "9");
}

TEST_F(DataNames, PathsBelowTheExperiment) {
    EXPECT_EQ(Text(Expt.AppendExptPathElts("a")), Folder() + "/a");
    EXPECT_EQ(Text(Expt.AppendExptPathElts("a", "b")), Folder() + "/a/b");
}

// ---- Neighbouring shots

TEST_F(NeighbourNames, ArrowsCountShotsUpAndDown) {
    EXPECT_EQ(Clean(">\\W"), "A010\\W");
    EXPECT_EQ(Clean(">2\\W"), "A011\\W");
    EXPECT_EQ(Clean("<2\\W"), "A007\\W");
    EXPECT_EQ(Clean(">0\\W"), "A009\\W");
}

TEST_F(NeighbourNames, BareLeftArrowGoesUpToo) { EXPECT_EQ(Clean("<\\W"), "A010\\W"); }

TEST_F(NeighbourNames, SignTurnsAnArrowRound) {
    EXPECT_EQ(Clean(">-2\\W"), "A007\\W");
    EXPECT_EQ(Clean("<-2\\W"), "A011\\W");
}

TEST_F(NeighbourNames, TextBehindTheNumberIsNotLookedAt) { EXPECT_EQ(Clean(">2x\\W"), "A011\\W"); }

TEST_F(NeighbourNames, ArrowWithoutNumberMeansTheCurrentShot) { EXPECT_EQ(Clean(">x\\W"), "W"); }

TEST_F(NeighbourNames, NumberKeepsItsDigitsAndStaysInBounds) {
    EXPECT_EQ(Clean(">1000\\W"), "A1009\\W");
    EXPECT_EQ(Clean("<10\\W"), "A-001\\W");
    EXPECT_EQ(Clean(">2147483647\\W"), "A2147483647\\W");
    EXPECT_EQ(Clean("<-2147483648\\W"), "A2147483647\\W");
}

TEST_F(NeighbourNames, OtherReferencesComeBackUnchanged) {
    EXPECT_EQ(Clean("8\\W"), "8\\W");
    EXPECT_EQ(Clean("W"), "W");
    EXPECT_EQ(Clean(">W"), ">W");
    EXPECT_EQ(Clean(""), "");
    EXPECT_EQ(Clean(".\\>\\W"), ".\\>\\W");
}

TEST_F(NeighbourNames, LastBackslashCounts) { EXPECT_EQ(Clean(">1\\x\\W"), "A010\\W"); }

TEST_F(NeighbourNames, WithoutShotTheNameStaysEmpty) {
    Expt.SetExperimentFolder(Folder().c_str());
    EXPECT_EQ(Clean(">\\W"), "\\W");
}

TEST_F(NeighbourNames, ArrowIsNotUnderstoodByTheFileName) {
    EXPECT_EQ(Text(Expt.GetDataFileName(">\\W")), "");
}

// ---- Lists of data

TEST_F(DataLists, CurrentShotsDataComeWithoutExtension) {
    EXPECT_EQ(List("*"), "a b c.d");
    EXPECT_EQ(List("*.wvf"), "a c.d");
    EXPECT_EQ(List("A.*"), "a");
}

TEST_F(DataLists, OtherShotStandsBeforeTheLastSlash) {
    EXPECT_EQ(List("8/*"), "8\\x 8\\y");
    EXPECT_EQ(List("Archive/8/X*"), "8\\x");
}

TEST_F(DataLists, BackslashIsNoSeparatorThere) { EXPECT_EQ(List("8\\*"), ""); }

TEST_F(DataLists, UnknownShotLeavesTheNamesAlone) {
    DStringArray names;
    names.Add("old.wvf");
    Expt.GetDataFileNames("99/*", names, true);
    EXPECT_EQ(Joined(names), "old.wvf");
}

TEST_F(DataLists, KeptNamesAreTreatedLikeNewOnes) {
    DStringArray names;
    names.Add("xx.wvf");
    Expt.GetDataFileNames("8/*", names, false);
    EXPECT_EQ(Joined(names), "8\\x 8\\xx 8\\y");
    Expt.GetDataFileNames("8/*", names, true);
    EXPECT_EQ(Joined(names), "8\\x 8\\y");
}

TEST_F(DataLists, PlainAndMarkedFieldsAreFilledIn) {
    WriteBytes(ShotFolder("7") + "/Scalars.ini", "[Fields]\r\nwhich=a\r\nshot=8\r\nfrom=8\r\n");
    EXPECT_EQ(List("[which]*"), "a");
    EXPECT_EQ(List("![from]/*"), "8\\x 8\\y");
}

TEST_F(DataLists, ReferencesOfAListNameTheFiles) {
    DStringArray names;
    Expt.GetDataFileNames("8/x*", names, true);
    ASSERT_EQ(names.Count(), 1);
    EXPECT_EQ(Text(Expt.GetDataFileName(names[0])), ShotFolder("8", "Archive") + "/x");
}

TEST_F(DataLists, PatternMayBeOneOfTheNames) {
    DStringArray names;
    names.Add("8/*");
    Expt.GetDataFileNames(names[0], names, true);
    EXPECT_EQ(Joined(names), "8\\x 8\\y");
}
