// DIni's document: the text form, sections and keys.
#include <gtest/gtest.h>
#include <limits.h>

#include <functional>
#include <string>
#include <utility>

#include "support/Support.h"
#include "system/DIni.h"
#include "tests/system/SettingsTexts.h"
#include "tests/types/GermanLocale.h"
#include "tests/types/SampleStrings.h"

namespace {

// The section "S" of a document attached to no file, with the given lines.
class DIniKeys : public testing::Test {
protected:
    void Load(const char* lines) {
        m_Ini = DocumentOf(("[S]\r\n" + std::string(lines)).c_str());
        m_Ini.SetSection("S");
    }
    Texts Lines() const { return TextsOf(m_Ini.GetFullSection("S")); }

    DIni m_Ini;
};

// A document whose file says something else, so that a write of it shows.
class DIniWriteThrough : public InOwnFolder {
protected:
    using Change = std::function<void(DIni&)>;

    bool Writes(const Change& change, bool hold = false) const {
        DIni ini = AttachedTo(m_Path, "[A]\r\nx=1\r\n[B]");
        ini.SetSection("A");
        ini.HoldWrite(hold);
        WriteBytes(m_Path, "untouched");
        change(ini);
        return ReadBytes(m_Path) != "untouched";
    }

    const std::string m_Path = Own("settings.ini");
    DStringArray m_Lines = ListOf({"x=2"});
};

class DIniDocument : public InOwnFolder {};
class DIniSections : public InOwnFolder {};
class DIniReload : public InOwnFolder {};

}  // namespace

// ---- The document

TEST_F(DIniDocument, BeginsEmptyAndDetached) {
    const DIni ini;
    EXPECT_TRUE(ini.m_FileName.IsEmpty());
    EXPECT_TRUE(ini.m_Text.IsEmpty());
    EXPECT_EQ(ini.m_Section, -1);
    EXPECT_EQ(ini.m_Sections.Count(), 0);
    EXPECT_EQ(ini.m_Lines.Count(), 0);
    EXPECT_FALSE(ini.m_Hold);
}

TEST_F(DIniDocument, ConstructorAttachesAFile) {
    const DIni ini = AttachedTo(Own("settings.ini"), "[A]\r\nx=1");
    EXPECT_EQ(Text(ini.m_FileName), Own("settings.ini"));
    EXPECT_EQ(TextsOf(ini.m_Sections), Texts{"A"});
    EXPECT_EQ(ini.m_Section, -1);
    EXPECT_FALSE(ini.m_Hold);
}

TEST_F(DIniDocument, WithoutAFileKeepsItsChangesInMemory) {
    DIni ini;
    ini.SetSection("A");
    ini.SetKeyValue("x", "1");
    EXPECT_EQ(Text(ini.GetKeyValue("x", "none")), "1");
    EXPECT_TRUE(Names(m_Folder).empty());
}

// ---- The text form

TEST(DIniText, ReadsLineFeedsWithAndWithoutCarriageReturns) {
    const DIni ini = DocumentOf("[A]\nx=1\r\ny=2\n[B]\r\nz=3");
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "B"}));
    EXPECT_EQ(TextsOf(ini.m_Lines[0]), (Texts{"x=1", "y=2"}));
    EXPECT_EQ(TextsOf(ini.m_Lines[1]), Texts{"z=3"});
}

TEST(DIniText, LineEndTakesOneCarriageReturnOnly) {
    EXPECT_EQ(TextsOf(DocumentOf("[A]\r\nx\r\r\ny\rz").m_Lines[0]), (Texts{"x\r", "y\rz"}));
}

TEST(DIniText, LineEndBehindTheLastLineMakesNoFurtherLine) {
    EXPECT_EQ(TextsOf(DocumentOf("[A]\r\nx=1\r\n").m_Lines[0]), Texts{"x=1"});
}

TEST(DIniText, SectionNameEndsAtTheLastBracket) {
    const DIni ini = DocumentOf("[A]tail\n[a]b]tail\n[open\n[]\n[");
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "a]b", "open", "", ""}));
}

TEST(DIniText, SectionNameKeepsItsBlanks) {
    EXPECT_EQ(TextsOf(DocumentOf("[ A ]").m_Sections), Texts{" A "});
}

TEST(DIniText, BracketBehindABlankOpensNoSection) {
    const DIni ini = DocumentOf("[A]\n [B]");
    EXPECT_EQ(TextsOf(ini.m_Sections), Texts{"A"});
    EXPECT_EQ(TextsOf(ini.m_Lines[0]), Texts{" [B]"});
}

TEST(DIniText, LinesBeforeTheFirstHeadingAreDropped) {
    const DIni ini = DocumentOf("x=1\n; comment\n[A]\ny=2");
    EXPECT_EQ(TextsOf(ini.m_Sections), Texts{"A"});
    EXPECT_EQ(TextsOf(ini.m_Lines[0]), Texts{"y=2"});
}

TEST(DIniText, BlankLinesAreDroppedAndATabIsNoBlank) {
    EXPECT_EQ(TextsOf(DocumentOf("[A]\n\n   \n\t\nx=1\n\n").m_Lines[0]), (Texts{"\t", "x=1"}));
}

TEST(DIniText, OtherLinesAreKeptAsTheyStand) {
    const Texts lines{"; a comment", "  x = 1  ", "no equals sign", "=value", ";y=2"};
    EXPECT_EQ(TextsOf(DocumentOf("[A]\n; a comment\n  x = 1  \nno equals sign\n=value\n;y=2\n")
                          .GetFullSection("A")),
              lines);
}

TEST(DIniText, TwoHeadingsOfOneNameGiveTwoSectionsAndTheFirstIsFound) {
    DIni ini = DocumentOf("[A]\nx=1\n[a]\nx=2");
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "a"}));
    EXPECT_EQ(Text(ini.GetSectionKeyValue("a", "x", "none")), "1");
    EXPECT_EQ(ini.m_Section, 0);
}

// ---- Sections

TEST_F(DIniSections, AreFoundWithoutRegardToCase) {
    DIni ini = DocumentOf("[First]\nx=1\n[Second]");
    EXPECT_TRUE(ini.SectionExists("SECOND"));
    EXPECT_FALSE(ini.SectionExists("Secon"));
    ini.SetSection("SECOND");
    EXPECT_EQ(ini.m_Section, 1);
    EXPECT_EQ(TextsOf(ini.GetFullSection("first")), Texts{"x=1"});
}

TEST_F(DIniSections, SetSectionCreatesAMissingSectionAtTheEnd) {
    DIni ini = DocumentOf("[A]\nx=1");
    ini.SetSection("B");
    EXPECT_EQ(ini.m_Section, 1);
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "B"}));
    EXPECT_EQ(ini.nKeys(), 0);
}

TEST_F(DIniSections, SectionMadeBySetSectionReachesTheFileWithTheNextWrite) {
    DIni ini = AttachedTo("settings.ini", "[A]\r\nx=1");
    ini.SetSection("B");
    EXPECT_EQ(ReadBytes("settings.ini"), "[A]\r\nx=1");
    ini.SetSection("A");
    ini.SetKeyValue("x", "2");
    EXPECT_EQ(ReadBytes("settings.ini"), "[A]\r\nx=2\r\n[B]\r\n");
}

TEST_F(DIniSections, SetSectionStaysOnASecondSectionOfTheName) {
    DIni ini = DocumentOf("[A]\nx=1\n[A]\nx=2");
    ini.m_Section = 1;
    ini.SetSection("a");
    EXPECT_EQ(ini.m_Section, 1);
}

TEST_F(DIniSections, FullSectionIsACopy) {
    const DIni ini = DocumentOf("[A]\nx=1");
    DStringArray lines = ini.GetFullSection("A");
    lines[0] = "x=2";
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=1"});
    EXPECT_EQ(ini.GetFullSection("B").Count(), 0);
}

TEST_F(DIniSections, SetFullSectionReplacesTheLines) {
    DIni ini = AttachedTo("settings.ini", "[A]\r\nx=1\r\ny=2\r\n[B]");
    ini.SetSection("B");
    DStringArray lines = ListOf({"z=3"});
    ini.SetFullSection("a", lines);
    lines[0] = "changed";
    EXPECT_EQ(ReadBytes("settings.ini"), "[A]\r\nz=3\r\n[B]\r\n");
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"z=3"});
    EXPECT_EQ(ini.m_Section, 1);
}

TEST_F(DIniSections, SetFullSectionAddsAMissingSection) {
    DIni ini = AttachedTo("settings.ini", "[A]\r\nx=1");
    ini.SetFullSection("B", ListOf({"y=2", "z=3"}));
    EXPECT_EQ(ReadBytes("settings.ini"), "[A]\r\nx=1\r\n[B]\r\ny=2\r\nz=3");
    EXPECT_EQ(ini.m_Section, -1);
}

TEST_F(DIniSections, AddSectionDoesTheSame) {
    DIni ini = AttachedTo("settings.ini", "[A]\r\nx=1");
    DStringArray lines = ListOf({"y=2"});
    ini.AddSection("a", lines);
    ini.AddSection("B", lines);
    EXPECT_EQ(ReadBytes("settings.ini"), "[A]\r\ny=2\r\n[B]\r\ny=2");
    EXPECT_EQ(ini.m_Section, -1);
}

TEST_F(DIniSections, TableBecomesAListOfLines) {
    DIni ini;
    DStringArray table;
    table.Split2D("a=1,b=2\nc=3,d=4", ",", 2);
    ini.SetFullSection("A", table);
    ini.SetSection("A");
    ini.SetKeyValue("e", "5");
    ini.DeleteKey("A", "b");
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), (Texts{"a=1", "c=3", "d=4", "e=5"}));
}

TEST_F(DIniSections, RenameSectionKeepsLinesPlaceAndCurrentSection) {
    DIni ini = AttachedTo("settings.ini", "[A]\r\nx=1\r\n[B]");
    ini.SetSection("A");
    ini.RenameSection("a", "New");
    EXPECT_EQ(ReadBytes("settings.ini"), "[New]\r\nx=1\r\n[B]\r\n");
    EXPECT_EQ(ini.m_Section, 0);
}

TEST_F(DIniSections, RenameSectionTakesANameInUse) {
    DIni ini = DocumentOf("[A]\nx=1\n[B]\ny=2");
    ini.RenameSection("B", "A");
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "A"}));
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=1"});
}

TEST_F(DIniSections, DeleteSectionLeavesNoneCurrent) {
    DIni ini = AttachedTo("settings.ini", "[A]\r\nx=1\r\n[B]\r\ny=2");
    ini.SetSection("B");
    ini.DeleteSection("a");
    EXPECT_EQ(ReadBytes("settings.ini"), "[B]\r\ny=2");
    EXPECT_EQ(ini.m_Section, -1);
    EXPECT_EQ(TextsOf(ini.GetFullSection("B")), Texts{"y=2"});
}

TEST_F(DIniSections, DeletingAMissingSectionLeavesNoneCurrentToo) {
    DIni ini = DocumentOf("[A]\nx=1");
    ini.SetSection("A");
    ini.DeleteSection("B");
    EXPECT_EQ(ini.m_Section, -1);
    EXPECT_EQ(TextsOf(ini.m_Sections), Texts{"A"});
}

TEST_F(DIniSections, NullNameIsTheEmptyName) {
    DIni ini = DocumentOf("[]\nx=1");
    EXPECT_TRUE(ini.SectionExists(NullString()));
    ini.SetSection(NullString());
    EXPECT_EQ(ini.m_Section, 0);
    ini.DeleteKey(nullptr, "x");
    EXPECT_EQ(ini.nKeys(), 0);
    ini.RenameSection("", NullString());
    EXPECT_TRUE(ini.SectionExists(""));
}

TEST_F(DIniSections, CurrentSectionOutOfRangeCountsAsNone) {
    DIni ini = DocumentOf("[A]\nx=1");
    for (const int section : {-7, 1, INT_MAX}) {
        ini.m_Section = section;
        int start = 77;
        EXPECT_EQ(ini.nKeys(), 0);
        EXPECT_EQ(ini.keyindex("x", start), -1);
        EXPECT_EQ(start, 77);
        EXPECT_EQ(Text(ini.GetKeyValue("x", "none")), "none");
        ini.SetKeyValue("x", "2");
        EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=1"});
        ini.SetSection("A");
        EXPECT_EQ(ini.m_Section, 0);
    }
}

// ---- Finding keys

TEST_F(DIniKeys, AreFoundInAnyCase) {
    Load("Rate=5");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("rATE", "none")), "5");
}

TEST_F(DIniKeys, BlankBeforeTheKeyOrTheEqualsSignHidesALine) {
    Load(" a=1\nb =2");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("a", "none")), "none");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("b", "none")), "none");
    EXPECT_EQ(Text(m_Ini.GetKeyValue(" a", "none")), "1");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("b ", "none")), "2");
}

TEST_F(DIniKeys, KeyIsNotFoundInALongerOne) {
    Load("RateMax=9\nRate=5");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("Rate", "none")), "5");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("Rat", "none")), "none");
}

TEST_F(DIniKeys, ValueHoldsFurtherEqualsSignsAndItsBlanks) {
    Load("formula= a=b=c ");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("formula", "none")), " a=b=c ");
}

TEST_F(DIniKeys, FirstOfTwoLinesCounts) {
    Load("x=1\nX=2");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("X", "none")), "1");
}

TEST_F(DIniKeys, LineWithoutEqualsSignIsNoKeyButCounts) {
    Load("bare\n; comment\nx=1");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("bare", "none")), "none");
    EXPECT_EQ(m_Ini.nKeys(), 3);
}

TEST_F(DIniKeys, EmptyKeyFindsTheLineThatBeginsWithEquals) {
    Load("x=1\n=2");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("", "none")), "2");
    EXPECT_EQ(Text(m_Ini.GetKeyValue(NullString(), "none")), "2");
}

TEST_F(DIniKeys, IndexTellsTheLineAndWhereItsValueBegins) {
    Load("x=1\nlonger=2");
    int start = -5;
    EXPECT_EQ(m_Ini.keyindex("LONGER", start), 1);
    EXPECT_EQ(start, 7);
}

TEST_F(DIniKeys, IndexSetsTheValueStartAlsoForAMissingKey) {
    Load("x=1");
    int start = -5;
    EXPECT_EQ(m_Ini.keyindex("missing", start), -1);
    EXPECT_EQ(start, 8);
}

TEST_F(DIniKeys, IndexLeavesTheValueStartForACommentAndWithoutASection) {
    Load(";x=1");
    int start = -5;
    EXPECT_EQ(m_Ini.keyindex(";x", start), -1);
    EXPECT_EQ(start, -5);
    m_Ini.m_Section = -1;
    EXPECT_EQ(m_Ini.keyindex("x", start), -1);
    EXPECT_EQ(start, -5);
}

TEST_F(DIniKeys, CommentIsNeverFoundSoSettingOneAddsALine) {
    Load("x=1\n;x=2");
    EXPECT_EQ(Text(m_Ini.GetKeyValue(";x", "none")), "none");
    m_Ini.SetKeyValue(";x", "3");
    m_Ini.SetKeyValue(";x", "3");
    EXPECT_EQ(Lines(), (Texts{"x=1", ";x=2", ";x=3", ";x=3"}));
}

// ---- Reading values

TEST_F(DIniKeys, EmptyAndMissingValuesGiveTheDefault) {
    Load("empty=");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("empty", "none")), "none");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("missing", "none")), "none");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("missing", nullptr)), "");
}

TEST_F(DIniKeys, SectionKeyValueGivesAnEmptyValueAsEmpty) {
    Load("empty=");
    EXPECT_EQ(Text(m_Ini.GetSectionKeyValue("S", "empty", "none")), "");
    EXPECT_EQ(Text(m_Ini.GetSectionKeyValue("S", "missing", "none")), "none");
    EXPECT_EQ(Text(m_Ini.GetSectionKeyValue("S", "missing", nullptr)), "");
}

TEST_F(DIniKeys, SectionKeyValueMovesTheCurrentSection) {
    m_Ini = DocumentOf("[A]\nx=1\n[B]\nx=2");
    m_Ini.SetSection("A");
    EXPECT_EQ(Text(m_Ini.GetSectionKeyValue("b", "x", "none")), "2");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("x", "none")), "2");
}

TEST_F(DIniKeys, SectionKeyValueOfAMissingSectionLeavesNoneCurrent) {
    Load("x=1");
    EXPECT_EQ(Text(m_Ini.GetSectionKeyValue("Missing", "x", "none")), "none");
    EXPECT_EQ(m_Ini.m_Section, -1);
    EXPECT_FALSE(m_Ini.SectionExists("Missing"));
    EXPECT_EQ(Text(m_Ini.GetKeyValue("x", "none")), "none");
    m_Ini.SetSection("S");
    EXPECT_EQ(Text(m_Ini.GetKeyValue("x", "none")), "1");
}

TEST_F(DIniKeys, IntValueTakesTheLeadingNumber) {
    for (const auto& [value, number] : {std::pair{"12", 12},
                                        {"-12", -12},
                                        {"12abc", 12},
                                        {"3.7", 3},
                                        {"  4", 4},
                                        {"+5", 5},
                                        {"007", 7},
                                        {"0x10", 0}}) {
        Load((std::string("x=") + value).c_str());
        EXPECT_EQ(m_Ini.GetKeyIntValue("x", 99), number) << value;
    }
}

TEST_F(DIniKeys, IntValueWithAnExponentIsReadWholeAndCutTowardZero) {
    for (const auto& [value, number] : {std::pair{"1e3", 1000},
                                        {"1E3", 1000},
                                        {"2.9E0", 2},
                                        {"-2.9e0", -2},
                                        {"1e-5", 0},
                                        {"0x1e", 30},
                                        {"2147483647e0", INT_MAX},
                                        {"2147483647.9e0", INT_MAX},
                                        {"-2147483648.9e0", INT_MIN}}) {
        Load((std::string("x=") + value).c_str());
        EXPECT_EQ(m_Ini.GetKeyIntValue("x", 99), number) << value;
    }
}

TEST_F(DIniKeys, IntValueFallsBackToTheDefault) {
    for (const char* value : {"", "abc", "12e", "1e3 ", "1e3x", "one", "2147483648e0",
                              "-2147483649e0", "1e10", "-1e10", "1e999"}) {
        Load((std::string("x=") + value).c_str());
        EXPECT_EQ(m_Ini.GetKeyIntValue("x", 99), 99) << value;
    }
    EXPECT_EQ(m_Ini.GetKeyIntValue("missing", 99), 99);
    m_Ini.m_Section = -1;
    EXPECT_EQ(m_Ini.GetKeyIntValue("x", 99), 99);
}

TEST_F(DIniKeys, BoolValueIsTrueForTrueAndOneAlone) {
    for (const char* value : {"True", "TRUE", "true", "1"}) {
        Load((std::string("x=") + value).c_str());
        EXPECT_TRUE(m_Ini.GetKeyBoolValue("x", false)) << value;
    }
    for (const char* value : {"", "False", "01", "yes", "2", "True ", " 1", "Tru", "1.0"}) {
        Load((std::string("x=") + value).c_str());
        EXPECT_FALSE(m_Ini.GetKeyBoolValue("x", true)) << value;
    }
}

TEST_F(DIniKeys, BoolValueOfAMissingKeyIsTheDefault) {
    Load("x=1");
    EXPECT_TRUE(m_Ini.GetKeyBoolValue("missing", true));
    EXPECT_FALSE(m_Ini.GetKeyBoolValue("missing", false));
    m_Ini.m_Section = -1;
    EXPECT_FALSE(m_Ini.GetKeyBoolValue("x", false));
}

TEST_F(DIniKeys, FloatValueMustBeANumberFromEndToEnd) {
    Load("a=1.5\nb=1.5x\nc=1.5 \nd=\ne= -2e3\nf=abc");
    EXPECT_EQ(m_Ini.GetKeyFloatValue("a", 9), 1.5f);
    EXPECT_EQ(m_Ini.GetKeyFloatValue("b", 9), 9.0f);
    EXPECT_EQ(m_Ini.GetKeyFloatValue("c", 9), 9.0f);
    EXPECT_EQ(m_Ini.GetKeyFloatValue("d", 9), 9.0f);
    EXPECT_EQ(m_Ini.GetKeyFloatValue("e", 9), -2000.0f);
    EXPECT_EQ(m_Ini.GetKeyFloatValue("f", 9), 9.0f);
    EXPECT_EQ(m_Ini.GetKeyFloatValue("missing", 9), 9.0f);
    m_Ini.m_Section = -1;
    EXPECT_EQ(m_Ini.GetKeyFloatValue("a", 9), 9.0f);
}

TEST_F(DIniKeys, NumbersReadAlikeWhereTheHostHasADecimalComma) {
    const GermanLocale german;
    if (!german.IsSet()) GTEST_SKIP() << "no locale could be compiled here";
    Load("point=1.5\ncomma=1,5\nwhole=1.5e1");
    EXPECT_EQ(m_Ini.GetKeyFloatValue("point", 9), 1.5f);
    EXPECT_EQ(m_Ini.GetKeyFloatValue("comma", 9), 9.0f);
    EXPECT_EQ(m_Ini.GetKeyIntValue("whole", 9), 15);
}

TEST_F(DIniKeys, RowIsTheValueSplit) {
    Load("row=a,b,,c\nblanks=  a  b ");
    EXPECT_EQ(TextsOf(m_Ini.GetKeyRow("row", -1, ",", "")), (Texts{"a", "b", "", "c"}));
    EXPECT_EQ(TextsOf(m_Ini.GetKeyRow("row", 2, ",", "")), (Texts{"a", "b", "", "c"}));
    EXPECT_EQ(TextsOf(m_Ini.GetKeyRow("row", 6, ",", "")), (Texts{"a", "b", "", "c", "", ""}));
    EXPECT_EQ(TextsOf(m_Ini.GetKeyRow("blanks", -1, " ", "")), (Texts{"a", "b"}));
    EXPECT_EQ(TextsOf(m_Ini.GetKeyRow("missing", 3, ",", "d,e")), (Texts{"d", "e", ""}));
    EXPECT_EQ(TextsOf(m_Ini.GetKeyRow("missing", 2, ",", nullptr)), (Texts{"", ""}));
}

// ---- Changing keys

TEST_F(DIniKeys, SettingReplacesTheLineInItsPlaceWithTheNewSpelling) {
    Load("; head\nrate=5\nlast=1");
    m_Ini.SetKeyValue("RATE", "6");
    EXPECT_EQ(Lines(), (Texts{"; head", "RATE=6", "last=1"}));
}

TEST_F(DIniKeys, SettingANewKeyAppendsALine) {
    Load("x=1\n; tail");
    m_Ini.SetKeyValue("y", "2");
    EXPECT_EQ(Lines(), (Texts{"x=1", "; tail", "y=2"}));
}

TEST_F(DIniKeys, EmptyValueIsWrittenAndTheKeyStays) {
    Load("x=1");
    m_Ini.SetKeyValue("x", "");
    m_Ini.SetKeyValue("y", NullString());
    EXPECT_EQ(Lines(), (Texts{"x=", "y="}));
}

TEST_F(DIniKeys, SettingWithoutACurrentSectionDoesNothing) {
    m_Ini = DIni();
    m_Ini.SetKeyValue("x", "1");
    EXPECT_EQ(m_Ini.m_Sections.Count(), 0);
    EXPECT_EQ(m_Ini.m_Lines.Count(), 0);
}

TEST_F(DIniKeys, DeletingRemovesTheFirstLineOfTheKeyAndMovesTheSection) {
    m_Ini = DocumentOf("[A]\nx=0\n[S]\nw=1\nx=2\nx=3");
    m_Ini.SetSection("A");
    m_Ini.DeleteKey("s", "X");
    EXPECT_EQ(Lines(), (Texts{"w=1", "x=3"}));
    EXPECT_EQ(m_Ini.m_Section, 1);
}

TEST_F(DIniKeys, DeletingFromAMissingSectionLeavesNoneCurrent) {
    Load("x=1");
    m_Ini.DeleteKey("Missing", "x");
    EXPECT_EQ(m_Ini.m_Section, -1);
    EXPECT_EQ(TextsOf(m_Ini.m_Sections), Texts{"S"});
    EXPECT_EQ(Lines(), Texts{"x=1"});
}

// ---- Which changes write the file

TEST_F(DIniWriteThrough, ChoosingASectionNeverWrites) {
    EXPECT_FALSE(Writes([](DIni& ini) { ini.SetSection("New"); }));
    EXPECT_FALSE(Writes([](DIni& ini) { ini.GetSectionKeyValue("B", "x", ""); }));
}

TEST_F(DIniWriteThrough, KeyIsWrittenWhenASectionIsCurrent) {
    EXPECT_TRUE(Writes([](DIni& ini) { ini.SetKeyValue("x", "1"); }));
    EXPECT_FALSE(Writes([](DIni& ini) {
        ini.m_Section = -1;
        ini.SetKeyValue("x", "1");
    }));
}

TEST_F(DIniWriteThrough, DeletedKeyIsWrittenWhenItWasThere) {
    EXPECT_TRUE(Writes([](DIni& ini) { ini.DeleteKey("A", "x"); }));
    EXPECT_FALSE(Writes([](DIni& ini) { ini.DeleteKey("A", "missing"); }));
    EXPECT_FALSE(Writes([](DIni& ini) { ini.DeleteKey("Missing", "x"); }));
}

TEST_F(DIniWriteThrough, WholeSectionIsAlwaysWritten) {
    EXPECT_TRUE(Writes([this](DIni& ini) { ini.SetFullSection("A", m_Lines); }));
    EXPECT_TRUE(Writes([this](DIni& ini) { ini.AddSection("New", m_Lines); }));
}

TEST_F(DIniWriteThrough, RenamedSectionIsWrittenWhenItWasThere) {
    EXPECT_TRUE(Writes([](DIni& ini) { ini.RenameSection("B", "C"); }));
    EXPECT_FALSE(Writes([](DIni& ini) { ini.RenameSection("Missing", "C"); }));
}

TEST_F(DIniWriteThrough, DeletingASectionWritesAlsoIfItWasMissing) {
    EXPECT_TRUE(Writes([](DIni& ini) { ini.DeleteSection("B"); }));
    EXPECT_TRUE(Writes([](DIni& ini) { ini.DeleteSection("Missing"); }));
}

TEST_F(DIniWriteThrough, NothingIsWrittenWhileHolding) {
    const Change changes[] = {[](DIni& ini) { ini.SetKeyValue("x", "2"); },
                              [](DIni& ini) { ini.DeleteKey("A", "x"); },
                              [this](DIni& ini) { ini.SetFullSection("A", m_Lines); },
                              [this](DIni& ini) { ini.AddSection("New", m_Lines); },
                              [](DIni& ini) { ini.RenameSection("B", "C"); },
                              [](DIni& ini) { ini.DeleteSection("B"); }};
    for (const Change& change : changes) {
        EXPECT_FALSE(Writes(change, true));
    }
}

// ---- The document's own names and lines as arguments

TEST(DIniOwnArguments, NamesAndLinesOfTheDocumentMayBePassed) {
    DIni ini = DocumentOf("[A]\nB\nC\n[X]");
    ini.SetSection(ini.m_Lines[0][0]);
    ini.SetKeyValue(ini.m_Sections[0], ini.m_Lines[0][1]);
    EXPECT_EQ(TextsOf(ini.GetFullSection("B")), Texts{"A=C"});
    ini.RenameSection(ini.m_Sections[2], ini.m_Lines[2][0]);
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "X", "A=C"}));
    ini.DeleteSection(ini.m_Sections[0]);
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"X", "A=C"}));
}

TEST(DIniOwnArguments, LinesOfASectionMayBeGivenToManyNewOnes) {
    DIni ini = DocumentOf("[A]\nx=1\ny=2");
    for (int i = 0; i < 600; ++i) {
        ini.SetFullSection(DString(i), ini.m_Lines[0]);
    }
    EXPECT_EQ(ini.m_Lines.Count(), 601);
    EXPECT_EQ(TextsOf(ini.GetFullSection("599")), (Texts{"x=1", "y=2"}));
}

TEST(DIniOwnArguments, SectionMayBeReplacedUnderItsOwnNameByItsOwnLines) {
    DIni ini = DocumentOf("[A]\nA\nB");
    ini.SetFullSection(ini.m_Lines[0][0], ini.m_Lines[0]);
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), (Texts{"A", "B"}));
    ini.SetSection("A");
    ini.SetKeyValue("k", "1");
    ini.DeleteKey(ini.m_Sections[0], ini.m_Lines[0][2].BeforeFirst('=', true));
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), (Texts{"A", "B"}));
}

// ---- Texts that don't read back as they were set

TEST_F(DIniReload, LineBreakInAValueReadsBackAsAFurtherLine) {
    DIni ini = AttachedTo("settings.ini", "[A]");
    ini.SetSection("A");
    ini.SetKeyValue("x", "1\ny=2");
    EXPECT_EQ(Text(ini.GetKeyValue("x", "none")), "1\ny=2");
    ini.SetFileName("settings.ini");
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), (Texts{"x=1", "y=2"}));
}

TEST_F(DIniReload, KeyThatBeginsWithABracketReadsBackAsAHeading) {
    DIni ini = AttachedTo("settings.ini", "[A]");
    ini.SetSection("A");
    ini.SetKeyValue("[B]", "1");
    EXPECT_EQ(Text(ini.GetKeyValue("[b]", "none")), "1");
    ini.SetFileName("settings.ini");
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "B"}));
    EXPECT_EQ(ini.GetFullSection("A").Count(), 0);
}

TEST_F(DIniReload, DroppedLinesAndHeadingTailsStayLostAfterASave) {
    DIni ini = AttachedTo("settings.ini",
                          "a line before the first heading\n"
                          "[Preferences] of Anna\n"
                          "\n"
                          "; where the analyses work\n"
                          "WorkingPath=/data\n"
                          "[Servers]\n"
                          "atlas=front-end of the fast cameras\n");
    ini.SetSection("Preferences");
    ini.SetKeyValue("WorkingPath", "/data/work");
    EXPECT_EQ(ReadBytes("settings.ini"),
              "[Preferences]\r\n"
              "; where the analyses work\r\n"
              "WorkingPath=/data/work\r\n"
              "[Servers]\r\n"
              "atlas=front-end of the fast cameras");
}

// A load leaves what stands in its place already; what it makes must not depend on that.
TEST_F(DIniReload, GivesTheSameDocumentWhateverStoodThereBefore) {
    const char* const texts[] = {"[A]\nx=1\ny=2\n[B]\nz=3\n",
                                 "[A]\nx=1\n[B]\nz=3\ny=2\n",
                                 "[B]\n[A]\nX=1\ny=2\n",
                                 "[A]\n",
                                 "",
                                 "[]\n1\n[]\n",
                                 "[A]\ny=2\nx=1\n[B]\nz=30\n[C]\n[D]\n1\n2\n3",
                                 "lost\n[A]\r\nx=1\r\n\r\ny=2"};
    for (const char* before : texts) {
        for (const char* text : texts) {
            DIni ini = DocumentOf(before);
            ini.m_Text = text;
            ini.loadstring();
            const DIni fresh = DocumentOf(text);
            EXPECT_EQ(TextsOf(ini.m_Sections), TextsOf(fresh.m_Sections)) << before << text;
            ASSERT_EQ(ini.m_Lines.Count(), fresh.m_Lines.Count());
            for (int i = 0; i < fresh.m_Lines.Count(); ++i)
                EXPECT_EQ(TextsOf(ini.m_Lines[i]), TextsOf(fresh.m_Lines[i])) << before << text;
        }
    }
}

TEST_F(DIniReload, GivesTheSameLongDocumentWhateverStoodThereBefore) {
    const auto textOf = [](int sections, int lines, const std::string& value) {
        std::string text;
        for (int i = 0; i < sections; ++i) {
            text += "[S" + std::to_string(i) + "]\n";
            for (int k = 0; k < lines; ++k)
                text += "key" + std::to_string(k) + "=" + value + std::to_string(i) + "\n";
        }
        return text;
    };
    const std::string texts[] = {textOf(100, 3, "a"),
                                 textOf(3, 300, "b"),
                                 textOf(50, 0, ""),
                                 textOf(40, 40, "a"),
                                 textOf(39, 41, "long values "),
                                 ""};
    for (const std::string& before : texts) {
        for (const std::string& text : texts) {
            DIni ini = DocumentOf(before.c_str());
            if (ini.m_Lines.Count() > 5) {
                ini.m_Lines[4].Clear();
                ini.m_Lines[5].m_Rows = 2;
            }
            ini.m_Text = text.c_str();
            ini.loadstring();
            const DIni fresh = DocumentOf(text.c_str());
            EXPECT_EQ(TextsOf(ini.m_Sections), TextsOf(fresh.m_Sections));
            ASSERT_EQ(ini.m_Lines.Count(), fresh.m_Lines.Count());
            for (int i = 0; i < fresh.m_Lines.Count(); ++i)
                EXPECT_EQ(TextsOf(ini.m_Lines[i]), TextsOf(fresh.m_Lines[i])) << i;
        }
    }
}

TEST_F(DIniReload, UndoesWhatWasDoneToTheListsThemselves) {
    DIni ini = DocumentOf("[A]\nx=1\ny=2\n[B]\nz=3\n");
    ini.m_Lines[0].Size(2, 2);
    ini.m_Lines[1][0] = "other";
    ini.m_Sections[1].Release();
    ini.loadstring();
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "B"}));
    EXPECT_EQ(TextsOf(ini.m_Lines[0]), (Texts{"x=1", "y=2"}));
    EXPECT_EQ(TextsOf(ini.m_Lines[1]), Texts{"z=3"});
    ini.m_Sections.Add("C");
    ini.loadstring();
    EXPECT_EQ(TextsOf(ini.m_Sections), (Texts{"A", "B"}));
    EXPECT_EQ(ini.m_Lines.Count(), 2);
}

TEST_F(DIniReload, LeavesListsThatWereTakenBefore) {
    DIni ini = DocumentOf("[A]\nx=1\n");
    const DStringArray lines = ini.GetFullSection("A");
    ini.m_Text = "[A]\nx=2\n";
    ini.loadstring();
    EXPECT_EQ(TextsOf(lines), Texts{"x=1"});
    EXPECT_EQ(TextsOf(ini.GetFullSection("A")), Texts{"x=2"});
}

TEST_F(DIniKeys, ValueMayBeTheLineThatIsReplaced) {
    Load("a=1\nb=2");
    m_Ini.SetKeyValue("a", m_Ini.m_Lines[0][0]);
    EXPECT_EQ(Lines(), (Texts{"a=a=1", "b=2"}));
    const DStringArray before = m_Ini.GetFullSection("S");
    m_Ini.SetKeyValue(m_Ini.m_Lines[0][1], "3");
    m_Ini.SetKeyValue("B", "4");
    EXPECT_EQ(Lines(), (Texts{"a=a=1", "B=4", "b=2=3"}));
    EXPECT_EQ(TextsOf(before), (Texts{"a=a=1", "b=2"}));
}

TEST_F(DIniKeys, LastByteOfAKeyIsComparedAsALetterOnly) {
    Load("k@=1\nk[=2\nka=3\nk\xe4=4");
    EXPECT_EQ(m_Ini.GetKeyValue("k`", "none"), "none");
    EXPECT_EQ(m_Ini.GetKeyValue("k{", "none"), "none");
    EXPECT_EQ(m_Ini.GetKeyValue("KA", "none"), "3");
    EXPECT_EQ(m_Ini.GetKeyValue("k\xe4", "none"), "4");
}
