// Sets of shots by wildcard, range and saved list, and saving and merging lists.
#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>
#include <sys/stat.h>
#include <utime.h>

#include <filesystem>
#include <string>
#include <vector>

#include "system/DSystem.h"
#include "tests/experiment/ExperimentFixture.h"

namespace {

using List = std::vector<std::string>;

// An experiment e with the groups 0 to 3. A set of shots is compared as a list of "name in group".
class ShotSet : public ExperimentTest {
protected:
    DStringArray m_Names;
    DArray<int> m_Groups;
    DArray<long> m_Dates;

    void SetUp() override { OpenWithGroups(); }

    void AddShots(int group, const List& shots) {
        for (const std::string& shot : shots)
            AddShot(group, shot);
    }

    std::string ListFolder() const { return m_Folder + "/ShotLists"; }
    std::string ListFile(const std::string& name) const { return ListFolder() + "/" + name; }

    void WriteList(const std::string& name, const std::string& lines) {
        MakeFolder(ListFolder());
        WriteBytes(ListFile(name), lines);
    }

    // Something in all three arrays.
    void FillArrays() {
        Fill({"old"}, {77});
        m_Dates.Size(1);
        m_Dates[0] = 5;
    }

    void Fill(const List& names, const std::vector<int>& groups) {
        m_Names.Clear();
        for (const std::string& name : names)
            m_Names.Add(name.c_str());
        m_Groups.Size(static_cast<int>(groups.size()));
        for (size_t i = 0; i < groups.size(); ++i)
            m_Groups[static_cast<int>(i)] = groups[i];
    }

    List Content() const {
        EXPECT_EQ(m_Names.Count(), m_Groups.Count());
        List content;
        for (int i = 0; i < m_Names.Count(); ++i)
            content.push_back(Text(m_Names[i]) + " in " + std::to_string(m_Groups[i]));
        return content;
    }

    std::vector<int> GroupNumbers() const {
        return {m_Groups.Data(), m_Groups.Data() + m_Groups.Count()};
    }
    std::vector<long> Dates() const { return {m_Dates.Data(), m_Dates.Data() + m_Dates.Count()}; }

    List Shots(const char* list, int group = -1) {
        FillArrays();
        m_Experiment.GetShotList(list, group, m_Names, m_Groups, nullptr);
        return Content();
    }

    List SetOf(const char* set, const char* filter, const char* dataName = "") {
        FillArrays();
        m_Experiment.GetShotSet(set, filter, dataName, m_Names, m_Groups, &m_Dates);
        EXPECT_EQ(m_Dates.Count(), m_Names.Count());
        return Content();
    }

    // What SaveShotList writes.
    std::string Saved(const List& names, const std::vector<int>& groups) {
        Fill(names, groups);
        MakeFolder(ListFolder());
        m_Experiment.SaveShotList("L.txt", m_Names, m_Groups);
        return ReadBytes(ListFile("L.txt"));
    }

    // What merging these shots into the lines of a file gives; Fill tells the shots.
    std::string Merged(const std::string& lines) {
        MakeFolder(ListFolder());
        WriteBytes(m_Above + "/Source.txt", lines);
        m_Experiment.MergeShotList((m_Above + "/Source").c_str(), "M.txt", m_Names, m_Groups);
        return ReadBytes(ListFile("M.txt"));
    }
};

class ShotRange : public ShotSet {};
class ShotListFile : public ShotSet {};
class SavedShotList : public ShotSet {};
class MergedShotList : public ShotSet {};

void SetDate(const std::string& path, long date) {
    const struct utimbuf times = {date, date};
    ASSERT_EQ(utime(path.c_str(), &times), 0);
}

}  // namespace

// ---- Sets by wildcard

TEST_F(ShotSet, WildcardTakesTheShotsOfOneGroupSortedWithoutRegardToCase) {
    AddShots(0, {"12b", "12A", "12", "13", "212"});
    AddShots(1, {"12"});
    EXPECT_EQ(SetOf(".\\Shots", "12*"), (List{"12 in 0", "12A in 0", "12b in 0"}));
    EXPECT_EQ(SetOf("..\\Data1", "*"), List{"12 in 1"});
    EXPECT_EQ(SetOf("..\\Data1", ""), List());
}

TEST_F(ShotSet, GroupIsFoundByItsFullPathWithoutRegardToCase) {
    AddShots(1, {"7"});
    EXPECT_EQ(SetOf((m_Above + "/DATA1").c_str(), "7"), List{"7 in 1"});
    EXPECT_EQ(SetOf("..\\data1", "7"), List{"7 in 1"});
    EXPECT_EQ(SetOf("..\\Data1/", "7"), List());
    EXPECT_EQ(SetOf("Data1", "7"), List());
}

TEST_F(ShotSet, FirstOfTwoGroupsOfOneFolderCounts) {
    AddShots(2, {"7"});
    m_Experiment.m_GroupPaths.Add(m_Experiment.m_GroupPaths[2]);
    EXPECT_EQ(SetOf("..\\Data2", "7"), List{"7 in 2"});
}

TEST_F(ShotSet, OfAnUnknownGroupEmptiesAllArrays) {
    FillArrays();
    m_Experiment.GetShotSet("..\\Data9", "*", "", m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(m_Names.Count() + m_Groups.Count() + m_Dates.Count(), 0);
}

TEST_F(ShotSet, FolderOfOtherCaseLosesItsFirstFourLettersToo) {
    MakeFolder(GroupFolder(0) + "/sHOT5");
    EXPECT_EQ(SetOf(".\\Shots", "*"), List{"5 in 0"});
}

TEST_F(ShotSet, WildcardGivesTheDatesOfTheFields) {
    AddShot(0, "1", "[Fields]\n");
    AddShot(0, "2");
    AddShot(0, "3", "[Fields]\n");
    SetDate(FieldsFile(0, "1"), 1000000);
    SetDate(FieldsFile(0, "3"), 3000000);
    EXPECT_EQ(SetOf(".\\Shots", "*"), (List{"1 in 0", "2 in 0", "3 in 0"}));
    EXPECT_EQ(Dates(), (std::vector<long>{1000000, 0, 3000000}));
}

TEST_F(ShotSet, RangeInAGroupBeginsTheSearchThere) {
    AddShots(1, {"A1", "A2"});
    AddShots(2, {"A1", "A2"});
    EXPECT_EQ(SetOf("..\\Data2", "A1:A2"), (List{"A1 in 2", "A2 in 2"}));
    EXPECT_EQ(Dates(), (std::vector<long>{0, 0}));
}

TEST_F(ShotSet, ShotListMeansASavedListInAnyCase) {
    AddShots(0, {"2"});
    AddShots(1, {"1"});
    WriteList("L.txt", "1;..\\Data1\r\n2");
    EXPECT_EQ(SetOf("(Shot list)", "L", "*"), (List{"1 in 1", "2 in 0"}));
    EXPECT_EQ(SetOf("(SHOT LIST)", "L", "*"), (List{"1 in 1", "2 in 0"}));
    EXPECT_EQ(Dates(), (std::vector<long>{0, 0}));
}

TEST_F(ShotSet, ShotListTakesARangeToo) {
    AddShots(1, {"A1"});
    EXPECT_EQ(SetOf("(Shot list)", "A1:A3"), List{"A1 in 1"});
}

TEST_F(ShotSet, ShotListWithoutANameIsEmpty) { EXPECT_EQ(SetOf("(Shot list)", ""), List()); }

TEST_F(ShotSet, DataNameKeepsTheShotsThatHoldIt) {
    for (const char* shot : {"120", "121", "122", "123"})
        AddShot(0, shot, "[Fields]\n");
    SetDate(FieldsFile(0, "121"), 1000000);
    SetDate(FieldsFile(0, "123"), 3000000);
    WriteBytes(ShotFolder(0, "121") + "/W.wvf", "1");
    WriteBytes(ShotFolder(0, "122") + "/W.dmt", "1");
    WriteBytes(ShotFolder(0, "123") + "/w.WVF", "1");
    EXPECT_EQ(SetOf(".\\Shots", "12*", "W"), (List{"121 in 0", "123 in 0"}));
    EXPECT_EQ(Dates(), (std::vector<long>{1000000, 3000000}));
    EXPECT_EQ(SetOf(".\\Shots", "12*", "W.dmt"), List{"122 in 0"});
    EXPECT_EQ(SetOf(".\\Shots", "12*", "W.*"), (List{"121 in 0", "122 in 0", "123 in 0"}));
    EXPECT_EQ(SetOf(".\\Shots", "12*", "X"), List());
    EXPECT_EQ(SetOf(".\\Shots", "120", "*"), List{"120 in 0"});
}

TEST_F(ShotSet, DataNameHoldsForRangesAndListsToo) {
    AddShots(0, {"A1", "A3"});
    AddShots(2, {"A2"});
    WriteBytes(ShotFolder(2, "A2") + "/W.wvf", "1");
    WriteBytes(ShotFolder(0, "A3") + "/W.wvf", "1");
    WriteList("L.txt", "A1\nA3\nA2;..\\Data2\n");
    EXPECT_EQ(SetOf(".\\Shots", "A1:A3", "W"), (List{"A2 in 2", "A3 in 0"}));
    EXPECT_EQ(SetOf("(Shot list)", "L", "W"), (List{"A3 in 0", "A2 in 2"}));
}

TEST_F(ShotSet, DatesMayBeNull) {
    AddShot(0, "1");
    WriteBytes(ShotFolder(0, "1") + "/W.wvf", "1");
    m_Experiment.GetShotSet(".\\Shots", "*", "W", m_Names, m_Groups, nullptr);
    EXPECT_EQ(Content(), List{"1 in 0"});
}

TEST_F(ShotSet, ArgumentsMayBeElementsOfTheResult) {
    AddShots(1, {"A1"});
    Fill({"..\\Data1", "A*"}, {});
    m_Experiment.GetShotSet(m_Names[0], m_Names[1], "*", m_Names, m_Groups, nullptr);
    EXPECT_EQ(Content(), List{"A1 in 1"});
    Fill({"A1:A1"}, {});
    m_Experiment.GetShotList(m_Names[0], 1, m_Names, m_Groups, nullptr);
    EXPECT_EQ(Content(), List{"A1 in 1"});
}

TEST_F(ShotSet, WithoutAnExperimentIsEmpty) {
    Experiment none;
    FillArrays();
    none.GetShotSet(".\\Shots", "*", "", m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(Content(), List());
    none.GetShotList("A1:A3", -1, m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(Content(), List());
    none.GetShotList("L", -1, m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(Content(), List());
}

// ---- Ranges

TEST_F(ShotRange, TakesTheShotsOfAGroupFromTheLowestNumberUp) {
    AddShots(0, {"A0012", "A0013", "A0014", "A0015", "A13"});
    EXPECT_EQ(Shots("A0012:A0014", 0), (List{"A0012 in 0", "A0013 in 0", "A0014 in 0"}));
}

TEST_F(ShotRange, LeavesOutShotsThatDoNotExist) {
    AddShots(0, {"A0013"});
    EXPECT_EQ(Shots("A0012:A0014", 0), List{"A0013 in 0"});
}

TEST_F(ShotRange, WithoutAGroupBeginsInThatOfItsFirstShot) {
    AddShots(2, {"A0012", "A0013", "A0014"});
    AddShots(0, {"A0013", "A0014"});
    EXPECT_EQ(Shots("A0012:A0014"), (List{"A0012 in 2", "A0013 in 2", "A0014 in 2"}));
}

TEST_F(ShotRange, WithoutAGroupAndFirstShotBeginsInGroup0) {
    AddShots(0, {"A2"});
    AddShots(1, {"A2"});
    ASSERT_TRUE(m_Experiment.SetShot("other", 1));
    EXPECT_EQ(Shots("A1:A2"), List{"A2 in 0"});
}

TEST_F(ShotRange, ShotFoundElsewhereTakesTheLowerNumbersThere) {
    AddShots(1, {"A0014"});
    AddShots(2, {"A0012", "A0013"});
    AddShots(3, {"A0012"});
    EXPECT_EQ(Shots("A0012:A0014", 1), (List{"A0012 in 2", "A0013 in 2", "A0014 in 1"}));
}

TEST_F(ShotRange, LowerNumbersStayInTheNewGroupAlsoIfTheFirstOneHasThem) {
    AddShots(1, {"A1", "A3"});
    AddShots(2, {"A1", "A2"});
    EXPECT_EQ(Shots("A1:A3", 1), (List{"A1 in 2", "A2 in 2", "A3 in 1"}));
}

TEST_F(ShotRange, MissingShotLeavesTheGroupInHand) {
    AddShots(2, {"A1", "A3"});
    AddShots(1, {"A1"});
    EXPECT_EQ(Shots("A1:A3", 2), (List{"A1 in 2", "A3 in 2"}));
}

TEST_F(ShotRange, GroupBeyondTheTableIsSearchedLikeAMissingShot) {
    AddShots(0, {"A1"});
    AddShots(1, {"A2"});
    EXPECT_EQ(Shots("A1:A2", 99), (List{"A1 in 0", "A2 in 1"}));
    EXPECT_EQ(Shots("B1:B2", 4), List());
}

TEST_F(ShotRange, GroupBelowMinusOneIsKeptUnchecked) {
    AddShots(1, {"A1"});
    FillArrays();
    m_Experiment.GetShotList("A1:A2", -2, m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(Content(), (List{"A1 in -2", "A2 in -2"}));
    EXPECT_EQ(Dates(), (std::vector<long>{0, 0}));
}

TEST_F(ShotRange, GroupInFrontOfTheNameIsDroppedWhereItHoldsTheShot) {
    AddShots(1, {"7", "8"});
    AddShots(0, {"8", "9"});
    EXPECT_EQ(Shots("Data1/7:9"), (List{"7 in 1", "8 in 1"}));
}

TEST_F(ShotRange, PrefixAndDigitsAreThoseOfTheFirstPart) {
    AddShots(0, {"A008", "A009", "A010", "B010", "A10", "a011"});
    EXPECT_EQ(Shots("A008:B10", 0), (List{"A008 in 0", "A009 in 0", "A010 in 0"}));
    EXPECT_EQ(Shots("A008:9", 0), (List{"A008 in 0", "A009 in 0"}));
    EXPECT_EQ(Shots("A11:A11", 0), List());
    EXPECT_EQ(Shots("A011:A011", 0), List{"A011 in 0"});
}

TEST_F(ShotRange, NumbersGrowPastTheDigits) {
    AddShots(0, {"9", "10", "100"});
    EXPECT_EQ(Shots("9:100", 0), (List{"9 in 0", "10 in 0", "100 in 0"}));
}

TEST_F(ShotRange, TextBehindTheDigitsIsLostAndWidensTheNumber) {
    AddShots(0, {"A12b", "A012", "A013"});
    EXPECT_EQ(Shots("A12b:A13b", 0), (List{"A012 in 0", "A013 in 0"}));
}

TEST_F(ShotRange, FirstPartWithoutDigitsCountsFrom0WithoutAPrefix) {
    AddShots(0, {"00", "01", "ab", "ab1"});
    EXPECT_EQ(Shots("ab:ab1", 0), (List{"00 in 0", "01 in 0"}));
}

TEST_F(ShotRange, LastPartWithoutDigitsEndsAtTheLastNumberOfTheText) {
    AddShots(0, {"A1", "A2"});
    EXPECT_EQ(Shots("A2:", 0), List{"A2 in 0"});
    EXPECT_EQ(Shots("A2:B", 0), List{"A2 in 0"});
}

TEST_F(ShotRange, FirstColonPartsIt) {
    AddShots(0, {"A1", "A2", "A3"});
    EXPECT_EQ(Shots("A1:A9:A2", 0), (List{"A1 in 0", "A2 in 0"}));
}

TEST_F(ShotRange, FallingNumbersGiveNothing) {
    AddShots(0, {"A3", "A4", "A5"});
    EXPECT_EQ(Shots("A5:A3", 0), List());
}

TEST_F(ShotRange, WithoutAFirstPartEmptiesTheNamesAlone) {
    FillArrays();
    m_Experiment.GetShotList(":A5", 0, m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(m_Names.Count(), 0);
    EXPECT_EQ(GroupNumbers(), std::vector<int>{77});
    EXPECT_EQ(Dates(), std::vector<long>{5});
}

TEST_F(ShotRange, ReachesTheLargestNumber) {
    AddShots(0, {"A2147483646", "A2147483647"});
    EXPECT_EQ(Shots("A2147483646:A2147483647", 0), (List{"A2147483646 in 0", "A2147483647 in 0"}));
}

TEST_F(ShotRange, NumberBeyond32BitsIsCut) {
    AddShots(0, {"A-0000000001", "A0000000000"});
    EXPECT_EQ(Shots("A4294967295:0", 0), (List{"A-0000000001 in 0", "A0000000000 in 0"}));
}

TEST_F(ShotRange, KeepsEveryDigitOfALongName) {
    const std::string zeros(40, '0');
    AddShots(0, {"A" + zeros + "1"});
    EXPECT_EQ(Shots(("A" + zeros + "1:2").c_str(), 0), List{"A" + zeros + "1 in 0"});
}

TEST_F(ShotRange, FarGreaterThanTheFoldersIsFoundAsQuickly) {
    AddShots(0, {"A5", "A-7", "A0", "A05", "B6", "A2147483647", "A21474836470", "A-0000000007",
                 "A0000000005"});
    AddShots(1, {"A6", "A1000000000", "ShotA9"});
    AddShots(3, {"A5", "a6", "A999999999"});
    EXPECT_EQ(Shots("A1:A2147483647", 0), (List{"A5 in 3", "A6 in 3", "A999999999 in 3",
                                                "A1000000000 in 1", "A2147483647 in 0"}));
    EXPECT_EQ(Shots("A2147483649:A8", 2), (List{"A-0000000007 in 0", "A0000000005 in 0"}));
}

TEST_F(ShotRange, FarGreaterThanTheFoldersFindsEveryNameThatASearchFinds) {
    const List names = {"1",    "12",   "012",  "0012", "A1",     "a0002",   "A-0003", "xA0004",
                        "A5b6", "A0x7", "*8",   "A[9",  "A0010/", "A-11",    "A00013", "A000000014",
                        "?15",  "A]16", "b c7", "",     "Shot18", "Data1/9", "A+19",   "A1 "};
    for (size_t i = 0; i < names.size(); ++i)
        AddShot(static_cast<int>(i % 4), names[i]);
    WriteBytes(ShotFolder(0, "A0017"), "");
    for (const std::string prefix : {"A", "a", "*", "?", "A[", "[A-", "Data1/", "Data3/A", "A-",
                                     "Shot", "\\", "[!A]", "A*", "x\\A", "./A", "../A"}) {
        for (const char* digits : {"0", "00", "0000"}) {
            const std::string format = "%.0" + std::to_string(strlen(digits)) + "i";
            List each;
            int group = 0;
            for (int number = 20; number >= 0; --number) {
                const DString name = DString(prefix.c_str()).AddFormatted(number, format.c_str());
                const List found = Shots(name + ":" + DString(number), group);
                if (found.empty()) continue;
                each.insert(each.begin(), found[0]);
                group = m_Groups[0];
            }
            EXPECT_EQ(Shots((prefix + digits + ":1999999999").c_str(), 0), each) << prefix + digits;
        }
    }
}

TEST_F(ShotRange, FarGreaterThanTheFoldersOfAMissingGroupIsEmpty) {
    std::filesystem::remove_all(GroupFolder(1));
    EXPECT_EQ(Shots("A1:A2147483647", 1), List());
    EXPECT_EQ(Shots((std::string(5000, 'x') + "/1:2147483647").c_str(), 1), List());
}

TEST_F(ShotRange, SaysSoInTheVerboseLog) {
    AddShots(0, {"A1"});
    const VerboseLog log;
    EXPECT_EQ(Shots("A1:A2", 0), List{"A1 in 0"});
    EXPECT_EQ(log.Texts(),
              (List{"Got names of shots in range", "Got shot list and checked for existance"}));
}

// ---- List files

TEST_F(ShotListFile, GivesItsShotsInItsOrderEachInItsGroup) {
    AddShots(0, {"S1", "S3"});
    AddShots(2, {"S2"});
    WriteList("L.txt", "S3\r\nS2;..\\Data2\nS1;..\\e/Shots");
    EXPECT_EQ(Shots("L"), (List{"S3 in 0", "S2 in 2", "S1 in 0"}));
    EXPECT_EQ(Shots("L.TXT"), (List{"S3 in 0", "S2 in 2", "S1 in 0"}));
}

TEST_F(ShotListFile, EachLineHasItsOwnGroupWhateverStandsAheadOfIt) {
    AddShots(0, {"1", "2", "3"});
    AddShots(1, {"1", "2", "3"});
    WriteList("L.txt",
              "3;\n1;..\\Data1\n2;..\\Data1\n3;\n3;..\\Data1\n1;.\\Shots\n2;..\\Gone\n2;.\\Shots\n"
              "3\n2;..\\Data1\n1;..\\Gone\n3;..\\Gone\n1;..\\Data11");
    EXPECT_EQ(Shots("L"),
              (List{"1 in 1", "2 in 1", "3 in 1", "1 in 0", "2 in 0", "3 in 0", "2 in 1"}));
}

TEST_F(ShotListFile, LineMayStandInDoubleQuotes) {
    AddShots(0, {"S1", "S2", "S3", "S\"4"});
    WriteList("L.txt", "\"S1;..\\e/Shots\"\n\"S2\"\n\"S3\nS3\"\n\"S\"4\"\n\"\n\"\"S1\"\"\n");
    EXPECT_EQ(Shots("L"), (List{"S1 in 0", "S2 in 0", "S3 in 0", "S3 in 0", "S\"4 in 0"}));
}

TEST_F(ShotListFile, ShotThatMovedToAnotherGroupIsDropped) {
    AddShots(1, {"S2"});
    WriteList("L.txt", "S2\nS2;..\\Data2\n");
    EXPECT_EQ(Shots("L", 1), List());
}

TEST_F(ShotListFile, ShotOfAnUnknownGroupIsDropped) {
    AddShots(0, {"S1"});
    AddShots(1, {"S2"});
    WriteList("L.txt", "S1;..\\Gone\nS1;\nS2;..\\Data1/\nS2;..\\Data1;more\nS1;.\\Shots\n");
    EXPECT_EQ(Shots("L"), List{"S1 in 0"});
}

TEST_F(ShotListFile, LinesThatStandTwiceGiveTheirShotTwice) {
    AddShots(0, {"S1"});
    WriteList("L.txt", "S1\ns1\nS1;.\\Shots\n");
    EXPECT_EQ(Shots("L"), (List{"S1 in 0", "s1 in 0", "S1 in 0"}));
}

TEST_F(ShotListFile, BlankLineIsTheShotWithoutAName) {
    WriteList("L.txt", "\r\n\n;..\\Data1\n");
    EXPECT_EQ(Shots("L"), List());
    MakeFolder(GroupFolder(0) + "/Shot");
    EXPECT_EQ(Shots("L"), (List{" in 0", " in 0"}));
}

TEST_F(ShotListFile, BlanksBelongToTheNameAndThePath) {
    AddShots(0, {"S1", " S1 "});
    WriteList("L.txt", " S1 \nS1; .\\Shots\n");
    EXPECT_EQ(Shots("L"), List{" S1  in 0"});
}

TEST_F(ShotListFile, MissingFileIsAnEmptyListAndItsFolderIsMade) {
    EXPECT_EQ(Shots("L"), List());
    EXPECT_TRUE(Exists(ListFolder()));
    EXPECT_TRUE(Names(ListFolder()).empty());
}

TEST_F(ShotListFile, EmptyTextEmptiesTheNamesAlone) {
    FillArrays();
    m_Experiment.GetShotList("", 0, m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(m_Names.Count(), 0);
    EXPECT_EQ(GroupNumbers(), std::vector<int>{77});
    EXPECT_EQ(Dates(), std::vector<long>{5});
    EXPECT_FALSE(Exists(ListFolder()));
}

TEST_F(ShotListFile, DatesAreZeroAlsoWhereTheFieldsHaveOne) {
    AddShot(0, "S1", "[Fields]\n");
    WriteList("L.txt", "S1\nS2\n");
    FillArrays();
    m_Experiment.GetShotList("L", -1, m_Names, m_Groups, &m_Dates);
    EXPECT_EQ(Content(), List{"S1 in 0"});
    EXPECT_EQ(Dates(), std::vector<long>{0});
}

TEST_F(ShotListFile, SaysSoInTheVerboseLog) {
    const VerboseLog log;
    EXPECT_EQ(Shots("L"), List());
    EXPECT_EQ(log.Texts(), List{"Got shot list and checked for existance"});
}

// ---- Saving

TEST_F(SavedShotList, HasALineForEachShotAndNoLineEndBehind) {
    EXPECT_EQ(Saved({"S1", "S2"}, {0, 2}), "S1;..\\e/Shots\r\nS2;..\\Data2");
    EXPECT_EQ(Saved({}, {}), "");
}

TEST_F(SavedShotList, ShotOfAnUnknownGroupHasNoPath) {
    EXPECT_EQ(Saved({"S1", "S2", "S3"}, {-1, 4, 0}), "S1;\r\nS2;\r\nS3;..\\e/Shots");
}

TEST_F(SavedShotList, MissingGroupCountsAsNoneAndOneTooManyIsIgnored) {
    EXPECT_EQ(Saved({"S1", "S2"}, {0}), "S1;..\\e/Shots\r\nS2;");
    EXPECT_EQ(Saved({"S1"}, {0, 1, 2}), "S1;..\\e/Shots");
}

TEST_F(SavedShotList, KeepsItsArraysAndItsNameWithoutASuffix) {
    Fill({"S1", "S1"}, {3, 3});
    MakeFolder(ListFolder());
    m_Experiment.SaveShotList("L", m_Names, m_Groups);
    EXPECT_EQ(Names(ListFolder()), List{"L"});
    EXPECT_EQ(ReadBytes(ListFile("L")), "S1;..\\Data3\r\nS1;..\\Data3");
    EXPECT_EQ(Content(), (List{"S1 in 3", "S1 in 3"}));
}

TEST_F(SavedShotList, DoesNotMakeItsFolder) {
    Fill({"S1"}, {0});
    m_Experiment.SaveShotList("L.txt", m_Names, m_Groups);
    EXPECT_FALSE(Exists(ListFolder()));
}

TEST_F(SavedShotList, IsReadBackAsFarAsItsShotsExist) {
    AddShots(0, {"S1"});
    AddShots(1, {"S2", "S3"});
    Saved({"S3", "S9", "S1", "S2"}, {1, 1, 0, -1});
    EXPECT_EQ(Shots("L"), (List{"S3 in 1", "S1 in 0"}));
}

TEST_F(SavedShotList, GroupOutsideTheExperimentIsSavedByItsSharedName) {
    m_Experiment.m_GroupPaths.Add("/far/Data");
    EXPECT_EQ(Saved({"S1"}, {4}), "S1;/far/Data");
    const Translations table({"\\\\server\\share=/far"});
    EXPECT_EQ(Saved({"S1"}, {4}), "S1;\\\\server\\share\\Data");
}

// ---- Merging

TEST_F(MergedShotList, NewShotsFollowTheLinesOfTheFile) {
    Fill({"S2", "S1"}, {2, 1});
    EXPECT_EQ(Merged("S9;..\\Data3\r\nS0\r\n"),
              "S9;..\\Data3\r\nS0;..\\e/Shots\r\nS2;..\\Data2\r\nS1;..\\Data1");
    EXPECT_EQ(GroupNumbers(), (std::vector<int>{2, 1}));
}

TEST_F(MergedShotList, ShotOfTheFileKeepsItsLineAndLosesItsGroup) {
    Fill({"s1", "S2", "S1"}, {1, 1, 2});
    EXPECT_EQ(Merged("\"S1;..\\Data1\"\nS1;..\\Data1"),
              "S1;..\\Data1\r\nS1;..\\Data1\r\nS2;..\\Data1\r\nS1;..\\Data2");
    EXPECT_EQ(GroupNumbers(), (std::vector<int>{-1, 1, 2}));
}

TEST_F(MergedShotList, ShotThatTheCallerHasTwiceIsAddedTwice) {
    Fill({"S1", "S1"}, {0, 0});
    EXPECT_EQ(Merged(""), "S1;..\\e/Shots\r\nS1;..\\e/Shots");
    EXPECT_EQ(GroupNumbers(), (std::vector<int>{0, 0}));
}

TEST_F(MergedShotList, ShotsWithoutAGroupAreLeftOut) {
    Fill({"S1", "S2", "S3"}, {-1, 0, -5});
    EXPECT_EQ(Merged("S9"), "S9;..\\e/Shots\r\nS2;..\\e/Shots");
    EXPECT_EQ(GroupNumbers(), (std::vector<int>{-1, 0, -5}));
}

TEST_F(MergedShotList, NamesAreComparedAsAWholeWithoutRegardToCase) {
    Fill({"B", "ab", "a", "", "A b"}, {0, 0, 0, 0, 0});
    EXPECT_EQ(Merged("AB\nA B\nb;..\\Data1"),
              "AB;..\\e/Shots\r\nA B;..\\e/Shots\r\nb;..\\Data1\r\nB;..\\e/Shots\r\n"
              "a;..\\e/Shots\r\n;..\\e/Shots");
    EXPECT_EQ(GroupNumbers(), (std::vector<int>{0, -1, 0, 0, -1}));
}

TEST_F(MergedShotList, MissingGroupCountsAsNone) {
    Fill({"S1", "S2"}, {0});
    EXPECT_EQ(Merged(""), "S1;..\\e/Shots");
    EXPECT_EQ(GroupNumbers(), std::vector<int>{0});
    Fill({"S1"}, {0, 1});
    EXPECT_EQ(Merged(""), "S1;..\\e/Shots");
}

TEST_F(MergedShotList, LinesOfUnknownGroupsStayAndLoseTheirPath) {
    Fill({"S1"}, {0});
    EXPECT_EQ(Merged("S1;..\\Gone\nS2;\n"), "S1;\r\nS2;\r\nS1;..\\e/Shots");
}

TEST_F(MergedShotList, BlankLinesAreShotsWithoutAName) {
    Fill({"", "S1"}, {0, 0});
    EXPECT_EQ(Merged("\n"), ";..\\e/Shots\r\nS1;..\\e/Shots");
    EXPECT_EQ(GroupNumbers(), (std::vector<int>{-1, 0}));
}

TEST_F(MergedShotList, SourceIsAPathAndNotAListOfTheExperiment) {
    WriteList("Source.txt", "S9\n");
    Fill({"S1"}, {0});
    m_Experiment.MergeShotList("Source", "M.txt", m_Names, m_Groups);
    EXPECT_EQ(ReadBytes(ListFile("M.txt")), "S1;..\\e/Shots");
    const std::string source = m_Above + "/Other.TXT";
    WriteBytes(source, "S9");
    m_Experiment.MergeShotList(source.c_str(), "M.txt", m_Names, m_Groups);
    EXPECT_EQ(ReadBytes(ListFile("M.txt")), "S9;..\\e/Shots\r\nS1;..\\e/Shots");
}

TEST_F(MergedShotList, MayReplaceItsSource) {
    WriteList("L.txt", "S9");
    Fill({"S1"}, {1});
    m_Experiment.MergeShotList(ListFile("L").c_str(), "L.txt", m_Names, m_Groups);
    EXPECT_EQ(ReadBytes(ListFile("L.txt")), "S9;..\\e/Shots\r\nS1;..\\Data1");
}
