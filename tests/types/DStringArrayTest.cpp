// DStringArray: cutting text into pieces and tables, and joining it again.
#include "types/DStringArray.h"
#include "types/MemoryWatch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Support.h"
#include "tests/types/SampleStrings.h"

namespace {

using Pieces = std::vector<std::string>;

Pieces PiecesOf(const DArray<DString>& array) {
    Pieces pieces;
    for (int i = 0; i < array.Count(); ++i)
        pieces.push_back(Text(array[i]));
    return pieces;
}

Pieces Split(const DString& text, const char* delim, int n = -1) {
    DStringArray array;
    array.split(text, delim, n);
    return PiecesOf(array);
}

DStringArray ArrayOf(const Pieces& pieces) {
    DStringArray array;
    for (const std::string& piece : pieces)
        array.Add(StringOf(piece));
    return array;
}

std::string JoinedInto(std::string buffer, const DStringArray& array) {
    array.JoinInto(buffer.data());
    return buffer;
}

int CompareLengths(const void* a, const void* b) {
    return static_cast<const DString*>(a)->GetLength() -
           static_cast<const DString*>(b)->GetLength();
}

}  // namespace

// ---- Add

TEST(DStringArrayAdd, AppendsAShare) {
    const DString text("abc");
    DStringArray array;
    array.Add(text);
    EXPECT_EQ(Place(array[0]), Place(text));
    EXPECT_EQ(text.GetRefs(), 2);
    EXPECT_EQ(array.CCount(), 1);
}

TEST(DStringArrayAdd, DoesNothingOnATableOfMoreThanOneRow) {
    DStringArray table(2, 1);
    table.Add("abc");
    EXPECT_EQ(PiecesOf(table), (Pieces{"", ""}));
}

TEST(DStringArrayAdd, TakesItsOwnElementPastTheCapacity) {
    DStringArray array = ArrayOf({"first"});
    for (int i = 0; i < 600; ++i)
        array.Add(array[0]);
    EXPECT_EQ(array.Count(), 601);
    EXPECT_EQ(Text(array[600]), "first");
    EXPECT_EQ(array[0].GetRefs(), 601);
}

TEST(DStringArrayCopy, IsIndependent) {
    DStringArray array = ArrayOf({"a", "b"});
    DStringArray copy(array);
    DStringArray assigned;
    assigned = array;
    array[0] = "x";
    EXPECT_EQ(PiecesOf(copy), (Pieces{"a", "b"}));
    EXPECT_EQ(PiecesOf(assigned), (Pieces{"a", "b"}));
}

// ---- split

TEST(DStringArraySplit, KeepsEmptyPiecesButNoneAtTheEnd) {
    EXPECT_EQ(Split("a,b,,c", ","), (Pieces{"a", "b", "", "c"}));
    EXPECT_EQ(Split("a,b,", ","), (Pieces{"a", "b"}));
    EXPECT_EQ(Split("a,,", ","), (Pieces{"a", ""}));
    EXPECT_EQ(Split(",a", ","), (Pieces{"", "a"}));
    EXPECT_EQ(Split(",,a", ","), (Pieces{"", "", "a"}));
    EXPECT_EQ(Split(",", ","), (Pieces{""}));
    EXPECT_EQ(Split("abc", ","), (Pieces{"abc"}));
}

TEST(DStringArraySplit, TakesLongDelimitersWithRegardToCase) {
    EXPECT_EQ(Split("1and2AND3and4", "and"), (Pieces{"1", "2AND3", "4"}));
    EXPECT_EQ(Split("aaa", "aa"), (Pieces{"", "a"}));
    EXPECT_EQ(Split("a\tb\t\tc", "\t"), (Pieces{"a", "b", "", "c"}));
}

TEST(DStringArraySplit, AtASpaceTakesRunsAsOne) {
    EXPECT_EQ(Split("  one   two  ", " "), (Pieces{"one", "two"}));
    EXPECT_EQ(Split("one two", " "), (Pieces{"one", "two"}));
    EXPECT_EQ(Split("one ", " "), (Pieces{"one"}));
    EXPECT_EQ(Split("one", " "), (Pieces{"one"}));
    EXPECT_EQ(Split("   ", " "), Pieces{});
    EXPECT_EQ(Split("a\t b", " "), (Pieces{"a\t", "b"}));
}

TEST(DStringArraySplit, AtTwoSpacesIsPlain) {
    EXPECT_EQ(Split("  a   b    c", "  "), (Pieces{"", "a", " b", "", "c"}));
}

TEST(DStringArraySplit, IntoLinesReadsBothLineEndsAlike) {
    const Pieces lines = {"one", "", "two", "three"};
    EXPECT_EQ(Split("one\n\ntwo\nthree", LDelim), lines);
    EXPECT_EQ(Split("one\r\n\r\ntwo\r\nthree", LDelim), lines);
    EXPECT_EQ(Split("one\n\r\ntwo\r\nthree\n", LDelim), lines);
    EXPECT_EQ(Split("one\r\n\ntwo\nthree\r\n", LDelim), lines);
    EXPECT_EQ(Split("a\r\r\nb\r", LDelim), (Pieces{"a\r", "b"}));
    EXPECT_EQ(Split("\na", LDelim), (Pieces{"", "a"}));
}

TEST(DStringArraySplit, IntoLinesTakesACarriageReturnFromOldElementsToo) {
    const DString held("held\r");
    DStringArray array;
    array.Add(held);
    array.split("new\r\n", LDelim, -1);
    EXPECT_EQ(PiecesOf(array), (Pieces{"held", "new"}));
    EXPECT_EQ(Text(held), "held\r");
}

TEST(DStringArraySplit, OfNoTextIntoAtLeastSomeLinesTakesCarriageReturnsToo) {
    DStringArray array = ArrayOf({"a\r"});
    array.split("", LDelim, 0);
    EXPECT_EQ(Text(array[0]), "a\r");
    array.split("", LDelim, 3);
    EXPECT_EQ(array.Count(), 3);
    EXPECT_EQ(Text(array[0]), "a");
}

TEST(DStringArraySplit, AtACopyOfTheLineEndIsPlain) {
    const std::string copy(LDelim);
    EXPECT_EQ(Split("one\ntwo\r\nthree", copy.c_str()), (Pieces{"one\ntwo", "three"}));
}

TEST(DStringArraySplit, AppendsBehindWhatIsThere) {
    DStringArray array = ArrayOf({"held"});
    array.split("a,b", ",", -1);
    EXPECT_EQ(PiecesOf(array), (Pieces{"held", "a", "b"}));
}

TEST(DStringArraySplit, FillsUpToTheWantedNumberAndNoLess) {
    EXPECT_EQ(Split("a,b", ",", 4), (Pieces{"a", "b", "", ""}));
    EXPECT_EQ(Split("a,b,c", ",", 2), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(Split("a,b,c", ",", 0), (Pieces{"a", "b", "c"}));
    DStringArray array = ArrayOf({"held"});
    array.split("a,b", ",", 4);
    EXPECT_EQ(PiecesOf(array), (Pieces{"held", "a", "b", ""}));
}

TEST(DStringArraySplit, OfNoTextGivesOnlyTheWantedBlanks) {
    for (const DString& empty : EmptyStrings()) {
        SCOPED_TRACE(empty.GetRefs());
        EXPECT_EQ(Split(empty, ",", 3), (Pieces{"", "", ""}));
        EXPECT_EQ(Split(empty, ",", -1), Pieces{});
        EXPECT_EQ(Split(empty, " ", 1), Pieces{""});
        EXPECT_EQ(Split(empty, LDelim, 0), Pieces{});
    }
}

TEST(DStringArraySplit, WithoutADelimiterGivesTheWholeText) {
    EXPECT_EQ(Split("a b", ""), Pieces{"a b"});
    EXPECT_EQ(Split("a b", nullptr), Pieces{"a b"});
    EXPECT_EQ(Split("a b", "", 2), (Pieces{"a b", ""}));
}

TEST(DStringArraySplit, CountsOnlyTheLastPieceAsAColumn) {
    DStringArray array;
    array.split("a,b,c", ",", -1);
    EXPECT_EQ(array.Count(), 3);
    EXPECT_EQ(array.CCount(), 1);
    array.split("", ",", 5);
    EXPECT_EQ(array.CCount(), 5);
}

TEST(DStringArraySplit, ReservesRoomForTheWantedNumber) {
    DStringArray array;
    array.split("a", ",", 300);
    EXPECT_EQ(array.Capacity(), 512);
    EXPECT_EQ(array.Count(), 300);
    EXPECT_EQ(array.RCount(), 1);
}

TEST(DStringArraySplit, MakesMorePiecesThanTheCapacity) {
    DString commas;
    DString spaces;
    for (int i = 0; i < 1000; ++i) {
        (commas << i) += ',';
        (spaces << i) += ' ';
    }
    const Pieces pieces = Split(commas, ",");
    ASSERT_EQ(pieces.size(), 1000u);
    EXPECT_EQ(pieces[0], "0");
    EXPECT_EQ(pieces[256], "256");
    EXPECT_EQ(pieces[999], "999");
    EXPECT_EQ(Split(spaces, " "), pieces);
}

TEST(DStringArraySplit, TakesItsOwnElement) {
    DStringArray array = ArrayOf({"a,b,c"});
    array.split(array[0], ",", 600);
    EXPECT_EQ(array.Count(), 600);
    EXPECT_EQ(Text(array[0]), "a,b,c");
    EXPECT_EQ(Text(array[3]), "c");
}

// ---- Tables

TEST(DStringArrayTable, EachLineBecomesAColumn) {
    DStringArray table;
    table.Split2D("a,b\r\nc,d\ne,f", ",", 2);
    EXPECT_EQ(table.RCount(), 2);
    EXPECT_EQ(table.CCount(), 3);
    EXPECT_EQ(PiecesOf(table), (Pieces{"a", "b", "c", "d", "e", "f"}));
    EXPECT_EQ(Text(table(1, 2)), "f");
}

TEST(DStringArrayTable, ShortLinesLeaveBlanksAndLongOnesAreCut) {
    DStringArray table;
    table.Split2D("a\nb,c,d\n\ne,f", ",", 2);
    EXPECT_EQ(PiecesOf(table), (Pieces{"a", "", "b", "c", "", "", "e", "f"}));
}

TEST(DStringArrayTable, WidthIsMeasuredIfNegative) {
    DStringArray table;
    table.Split2D("a\nb,c,d\ne,f", ",", -1);
    EXPECT_EQ(table.RCount(), 3);
    EXPECT_EQ(PiecesOf(table), (Pieces{"a", "", "", "b", "c", "d", "e", "f", ""}));
}

TEST(DStringArrayTable, WidthIsMeasuredInTheFirstHundredLines) {
    DStringArray lines;
    for (int i = 0; i < 99; ++i)
        lines.Add("a");
    lines.Add("b,c");
    lines.Add("d,e,f");
    DStringArray table;
    table.Split1Dto2D(lines, ",", -1);
    EXPECT_EQ(table.RCount(), 2);
    EXPECT_EQ(table.CCount(), 101);
    EXPECT_EQ(Text(table(1, 99)), "c");
    EXPECT_EQ(Text(table(0, 100)), "d");
    EXPECT_EQ(Text(table(1, 100)), "e");
}

TEST(DStringArrayTable, OfNoColumnsHasOneRowOfBlanks) {
    DStringArray table;
    table.Split2D("a,b\nc", ",", 0);
    EXPECT_EQ(table.RCount(), 1);
    EXPECT_EQ(table.CCount(), 2);
    EXPECT_EQ(PiecesOf(table), (Pieces{"", ""}));
}

TEST(DStringArrayTable, ThrowsAwayWhatTheArrayHeld) {
    DStringArray table = ArrayOf({"x", "y", "z"});
    table.Split2D("a,b", ",", 2);
    EXPECT_EQ(PiecesOf(table), (Pieces{"a", "b"}));
    table.Split2D("", ",", 2);
    EXPECT_EQ(table.Count(), 0);
    EXPECT_EQ(table.CCount(), 0);
}

TEST(DStringArrayTable, IsMadeFromTheArrayItself) {
    DStringArray array = ArrayOf({"a,b", "c,d"});
    array.Split1Dto2D(array, ",", -1);
    EXPECT_EQ(PiecesOf(array), (Pieces{"a", "b", "c", "d"}));
    EXPECT_EQ(array.RCount(), 2);
}

TEST(DStringArrayTable, CountsLinesAndNotColumnsOfItsSource) {
    DStringArray lines;
    lines.split("a b\nc d\n", LDelim, -1);
    ASSERT_EQ(lines.CCount(), 0);
    DStringArray table;
    table.Split1Dto2D(lines, " ", 2);
    EXPECT_EQ(PiecesOf(table), (Pieces{"a", "b", "c", "d"}));
}

TEST(DStringArrayTable, RefusedMemoryLeavesItEmpty) {
    DStringArray lines(100000);
    DStringArray table = ArrayOf({"x", "y"});
    table.Split1Dto2D(lines, ",", 2000000000);
    EXPECT_EQ(table.Count(), 0);
    EXPECT_EQ(table.CCount(), 0);
}

TEST(DStringArrayMakeTable, SplitsEachElement) {
    const DStringArray lines = ArrayOf({"a,b", "", "c"});
    DArray<DStringArray> out(5);
    lines.MakeTable(out, ",", -1);
    ASSERT_EQ(out.Count(), 3);
    EXPECT_EQ(PiecesOf(out[0]), (Pieces{"a", "b"}));
    EXPECT_EQ(PiecesOf(out[1]), Pieces{});
    EXPECT_EQ(PiecesOf(out[2]), Pieces{"c"});
    lines.MakeTable(out, ",", 2);
    EXPECT_EQ(PiecesOf(out[1]), (Pieces{"", ""}));
    EXPECT_EQ(PiecesOf(out[2]), (Pieces{"c", ""}));
    DStringArray().MakeTable(out, ",", 2);
    EXPECT_EQ(out.Count(), 0);
}

// ---- Joining

TEST(DStringArrayJoin, PutsTheSeparatorBetween) {
    EXPECT_EQ(Text(ArrayOf({"a", "b", "c"}).Join(", ")), "a, b, c");
    EXPECT_EQ(Text(ArrayOf({"a", "b", "c"}).Join("")), "abc");
    EXPECT_EQ(Text(ArrayOf({"a", "b"}).Join(NullString())), "ab");
    EXPECT_EQ(Text(ArrayOf({"", "", ""}).Join("-")), "--");
    EXPECT_EQ(Text(ArrayOf({"", ""}).Join("")), "");
}

TEST(DStringArrayJoin, TakesTextsOfEveryLengthWhole) {
    DStringArray array;
    std::string expected;
    for (int length = 0; length < 70; ++length) {
        const std::string text(static_cast<size_t>(length), static_cast<char>('0' + length));
        array.Add(text.c_str());
        expected += (length > 0 ? "," : "") + text;
        EXPECT_EQ(Text(array.Join(",")), expected);
        EXPECT_EQ(array.Join(",").GetLength(), static_cast<int>(expected.size()));
    }
    const std::string longSeparator(17, '#');
    EXPECT_EQ(Text(ArrayOf({"a", "b", ""}).Join(longSeparator.c_str())),
              "a" + longSeparator + "b" + longSeparator);
}

TEST(DStringArrayJoin, FillsItsBlockToTheLastByte) {
    EXPECT_EQ(Text(ArrayOf({"1234", "x"}).Join(",")), "1234,x");
    EXPECT_EQ(ArrayOf({"1234", "x"}).Join(",").GetAllocLength(), 32);
    for (int length = 1; length < 100; ++length) {
        const std::string first(static_cast<size_t>(length), 'a');
        EXPECT_EQ(Text(ArrayOf({first.c_str(), "x"}).Join(",")), first + ",x");
    }
}

TEST(DStringArrayJoin, TakesEmptyTextsOfEveryKind) {
    const std::string tail(40, 't');
    DStringArray array;
    array.AddBlank(2);
    array.Add(NullString());
    array.Add(tail.c_str());
    EXPECT_EQ(Text(array.Join(",")), ",,," + tail);
}

TEST(DStringArrayJoin, BeyondTheLargestTextIsEmptyAndCountsAsRefused) {
    const DString megabyte('x', 1048576);
    DStringArray array;
    for (int i = 0; i < 2100; ++i)
        array.Add(megabyte);
    const MemoryWatch memory;
    EXPECT_EQ(array.Join(",").GetLength(), 0);
    EXPECT_FALSE(memory.Whole());
}

TEST(DStringArrayJoin, TakesZeroBytesAlong) {
    DStringArray array = ArrayOf({"a.b", "c"});
    array[0].SetChar(1, '\0');
    EXPECT_EQ(Text(array.Join(",")), std::string("a\0b,c", 5));
}

TEST(DStringArrayJoin, OfOneElementSharesIt) {
    const DStringArray array = ArrayOf({"one"});
    EXPECT_EQ(Place(array.Join(",")), Place(array[0]));
}

TEST(DStringArrayJoin, LeavesTheElements) {
    const DStringArray array = ArrayOf({"a", "b"});
    array.Join("-");
    EXPECT_EQ(PiecesOf(array), (Pieces{"a", "b"}));
    EXPECT_EQ(array[0].GetRefs(), 1);
}

TEST(DStringArrayJoin, OfNothingIsAZeroLengthText) {
    const DString joined = DStringArray().Join(",");
    EXPECT_EQ(joined.GetLength(), 0);
    EXPECT_EQ(joined.GetRefs(), 1);
}

TEST(DStringArrayJoinInto, WritesLinesAndNoTerminator) {
    EXPECT_EQ(JoinedInto("##########", ArrayOf({"ab", "c"})), "ab\r\nc\r\n###");
    EXPECT_EQ(JoinedInto("#######", ArrayOf({"ab", "c"})), "ab\r\nc\r\n");
    EXPECT_EQ(JoinedInto("####", DStringArray()), "####");
    EXPECT_EQ(JoinedInto("####", ArrayOf({"", ""})), "\r\n\r\n");
}

TEST(DStringArrayJoinInto, StopsAtTheFirstElementThatDoesNotFit) {
    EXPECT_EQ(JoinedInto("#########", ArrayOf({"ab", "cdefgh", "i"})), "ab\r\n#####");
    EXPECT_EQ(JoinedInto("######", ArrayOf({"ab", "c"})), "ab\r\n##");
    EXPECT_EQ(JoinedInto("", ArrayOf({"a"})), "");
}

TEST(DStringArrayJoinInto, TakesTheRoomFromTheText) {
    std::string buffer = "####";
    buffer[3] = '\0';
    EXPECT_EQ(JoinedInto(buffer, ArrayOf({"a", "b"})), std::string("a\r\n\0", 4));
    ArrayOf({"a"}).JoinInto(nullptr);
}

// ---- Looking up and sorting

TEST(DStringArrayIndex, IgnoresCaseAndGivesTheFirst) {
    const DStringArray array = ArrayOf({"one", "Two", "TWO"});
    EXPECT_EQ(array.Index("tWo"), 1);
    EXPECT_EQ(array.Index("ONE"), 0);
    EXPECT_EQ(array.Index("on"), -1);
    EXPECT_EQ(array.Index("ones"), -1);
    EXPECT_EQ(DStringArray().Index("one"), -1);
}

TEST(DStringArrayIndex, FindsAnEmptyElementInAnyState) {
    for (const DString& empty : EmptyStrings()) {
        EXPECT_EQ(ArrayOf({"a", ""}).Index(empty), 1);
        DStringArray array;
        array.Add(empty);
        EXPECT_EQ(array.Index(""), 0);
    }
}

TEST(DStringArraySort, IgnoresCase) {
    DStringArray array = ArrayOf({"b", "C", "a", "D"});
    array.Sort(nullptr);
    EXPECT_EQ(PiecesOf(array), (Pieces{"a", "b", "C", "D"}));
    DStringArray other = ArrayOf({"b", "A"});
    other.Sort();
    EXPECT_EQ(PiecesOf(other), (Pieces{"A", "b"}));
}

TEST(DStringArraySort, TakesTheCallersComparison) {
    DStringArray array = ArrayOf({"ccc", "a", "bb"});
    array.Sort(CompareLengths);
    EXPECT_EQ(PiecesOf(array), (Pieces{"a", "bb", "ccc"}));
}

TEST(DStringArraySort, DefaultComparisonIgnoresCase) {
    const DString small("abc");
    const DString capital("ABC");
    const DString later("B");
    EXPECT_EQ(compfunc(&small, &capital), 0);
    EXPECT_LT(compfunc(&small, &later), 0);
    EXPECT_GT(compfunc(&later, &small), 0);
}
