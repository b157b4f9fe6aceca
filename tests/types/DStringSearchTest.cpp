// DString's searching and replacing.
#include <gtest/gtest.h>

#include "support/Support.h"
#include "tests/types/GermanLocale.h"
#include "tests/types/SampleStrings.h"
#include "types/DString.h"
#include "types/MemoryWatch.h"

namespace {

constexpr const char* NoText = nullptr;

}  // namespace

// ---- Searching

TEST(DStringSearch, FindsNothingInAnyEmptyText) {
    for (const DString& empty : EmptyStrings()) {
        SCOPED_TRACE(empty.GetRefs());
        EXPECT_EQ(empty.Find('a', 0), npos);
        EXPECT_EQ(empty.Find("a", 0), npos);
        EXPECT_EQ(empty.Find("", 0), npos);
        EXPECT_EQ(empty.FindI("a", 0), npos);
        EXPECT_EQ(empty.FindI("", 0), npos);
        EXPECT_EQ(empty.RFind('a', npos), npos);
        EXPECT_EQ(empty.RFind('\0', npos), npos);
        EXPECT_EQ(empty.RFind('a', 0), npos);
        EXPECT_EQ(empty.RFind("a", npos), npos);
        EXPECT_EQ(empty.FindFirstOf("a", 0), npos);
        EXPECT_EQ(empty.FindFirstNotOf("a", 0), npos);
        EXPECT_EQ(empty.FindFirstNotOf("", 0), npos);
        EXPECT_FALSE(empty.EndsWith("a"));
        EXPECT_FALSE(empty.EndsWith(DString("a")));
    }
}

TEST(DStringSearch, FindsNothingFromANegativeStart) {
    const DString text("abcabc");
    EXPECT_EQ(text.Find('a', -1), npos);
    EXPECT_EQ(text.Find("a", -1), npos);
    EXPECT_EQ(text.FindI("a", -1), npos);
    EXPECT_EQ(text.RFind('a', -1), npos);
    EXPECT_EQ(text.RFind("a", -1), npos);
    EXPECT_EQ(text.FindFirstOf("a", -1), npos);
    EXPECT_EQ(text.FindFirstNotOf("b", -1), npos);
}

TEST(DStringSearch, FindsNothingFromTheEndOn) {
    const DString text("abc");
    for (const int start : {3, 4, npos}) {
        SCOPED_TRACE(start);
        EXPECT_EQ(text.Find('a', start), npos);
        EXPECT_EQ(text.Find('\0', start), npos);
        EXPECT_EQ(text.Find("a", start), npos);
        EXPECT_EQ(text.Find("", start), npos);
        EXPECT_EQ(text.FindI("a", start), npos);
        EXPECT_EQ(text.FindI("", start), npos);
        EXPECT_EQ(text.FindFirstOf("abc", start), npos);
        EXPECT_EQ(text.FindFirstNotOf("x", start), npos);
    }
}

TEST(DStringSearch, NeverFindsANullPattern) {
    const DString text("abc");
    EXPECT_EQ(text.Find(NoText, 0), npos);
    EXPECT_EQ(text.FindI(NoText, 0), npos);
    EXPECT_EQ(text.RFind(NoText, npos), npos);
    EXPECT_EQ(text.FindFirstOf(NoText, 0), npos);
    EXPECT_EQ(text.FindFirstNotOf(NoText, 0), npos);
}

TEST(DStringSearch, StopsAtAZeroByte) {
    const DString text = StringOf(std::string("ab\0cb", 5));
    EXPECT_EQ(text.Find('c', 0), npos);
    EXPECT_EQ(text.Find("c", 0), npos);
    EXPECT_EQ(text.FindI("C", 0), npos);
    EXPECT_EQ(text.FindFirstOf("c", 0), npos);
    EXPECT_EQ(text.FindFirstNotOf("ab", 0), npos);
    EXPECT_EQ(text.RFind('b', npos), 1);
    EXPECT_EQ(text.Find("c", 3), 3);
}

TEST(DStringFind, FindsTheFirstFromStart) {
    const DString text("abcabc");
    EXPECT_EQ(text.Find('b', 0), 1);
    EXPECT_EQ(text.Find('b', 1), 1);
    EXPECT_EQ(text.Find('b', 2), 4);
    EXPECT_EQ(text.Find('b', 5), npos);
    EXPECT_EQ(text.Find('B', 0), npos);
    EXPECT_EQ(text.Find("ca", 0), 2);
    EXPECT_EQ(text.Find("bc", 2), 4);
    EXPECT_EQ(text.Find("CA", 0), npos);
    EXPECT_EQ(text.Find("abcabcd", 0), npos);
}

TEST(DStringFind, FindsAnEmptyPatternAtStart) {
    const DString text("abc");
    EXPECT_EQ(text.Find("", 0), 0);
    EXPECT_EQ(text.Find("", 2), 2);
    EXPECT_EQ(text.FindI("", 2), 2);
}

TEST(DStringFind, FindsTheTerminator) { EXPECT_EQ(DString("abc").Find('\0', 0), 3); }

TEST(DStringFindI, IgnoresCase) {
    const DString text("Shot\\TRACE.wvf");
    EXPECT_EQ(text.FindI("trace", 0), 5);
    EXPECT_EQ(text.FindI("SHOT", 0), 0);
    EXPECT_EQ(text.FindI("T", 0), 3);
    EXPECT_EQ(text.FindI("t", 4), 5);
    EXPECT_EQ(text.FindI("WVFX", 0), npos);
    EXPECT_EQ(Text(text), "Shot\\TRACE.wvf");
}

TEST(DStringFindI, TakesAPartialMatchAsNone) { EXPECT_EQ(DString("aAab").FindI("AAB", 0), 1); }

TEST(DStringFindI, FindsTheEmptyPatternWhereTheStartIsAZeroByte) {
    DString text("abcd");
    text.SetChar(2, '\0');
    EXPECT_EQ(text.FindI("", 2), 2);
    EXPECT_EQ(text.Find("", 2), 2);
}

TEST(DStringFindI, FollowsTheLocale) {
    const DString text("x\xC4");
    EXPECT_EQ(text.FindI("\xE4", 0), npos);
    const GermanLocale german;
    if (!german.IsSet()) GTEST_SKIP() << "no locale could be compiled here";
    EXPECT_EQ(text.FindI("\xE4", 0), 1);
}

TEST(DStringRFind, FindsTheLastCharacterAtOrBeforeStart) {
    const DString text("abcabc");
    EXPECT_EQ(text.RFind('b', npos), 4);
    EXPECT_EQ(text.RFind('b'), 4);
    EXPECT_EQ(text.RFind('b', 100), 4);
    EXPECT_EQ(text.RFind('b', 4), 4);
    EXPECT_EQ(text.RFind('b', 3), 1);
    EXPECT_EQ(text.RFind('b', 0), npos);
    EXPECT_EQ(text.RFind('a', 0), 0);
    EXPECT_EQ(text.RFind('x', npos), npos);
}

TEST(DStringRFind, WithAnIndexLooksBehindAZeroByte) {
    const DString text = StringOf(std::string("ab\0cb", 5));
    EXPECT_EQ(text.RFind('c', 4), 3);
    EXPECT_EQ(text.RFind("cb", npos), 3);
}

TEST(DStringRFind, FindsTheLastTextThatBeginsAtOrBeforeStart) {
    const DString text("abcabc");
    EXPECT_EQ(text.RFind("bc", npos), 4);
    EXPECT_EQ(text.RFind("bc", 4), 4);
    EXPECT_EQ(text.RFind("bc", 3), 1);
    EXPECT_EQ(text.RFind("bc", 0), npos);
    EXPECT_EQ(text.RFind("abcabc", npos), 0);
    EXPECT_EQ(text.RFind("abcabcd", npos), npos);
    EXPECT_EQ(text.RFind("BC", npos), npos);
}

TEST(DStringRFind, FindsAnEmptyPatternAtTheEnd) {
    EXPECT_EQ(DString("abc").RFind("", npos), 3);
    EXPECT_EQ(DString("abc").RFind("", 1), 1);
    EXPECT_EQ(DString("").RFind("", npos), 0);
}

TEST(DStringFindFirstOf, FindsAnyOfASet) {
    const DString text("one, two");
    EXPECT_EQ(text.FindFirstOf(" ,", 0), 3);
    EXPECT_EQ(text.FindFirstOf(" ,", 4), 4);
    EXPECT_EQ(text.FindFirstOf(" ,", 5), npos);
    EXPECT_EQ(text.FindFirstOf("", 0), npos);
}

TEST(DStringFindFirstNotOf, FindsWhatIsOutsideASet) {
    const DString text("  12 ");
    EXPECT_EQ(text.FindFirstNotOf(" ", 0), 2);
    EXPECT_EQ(text.FindFirstNotOf(" ", 3), 3);
    EXPECT_EQ(text.FindFirstNotOf(" 12", 0), npos);
    EXPECT_EQ(text.FindFirstNotOf(" ", 4), npos);
    EXPECT_EQ(text.FindFirstNotOf("", 3), 3);
}

TEST(DStringEndsWith, IgnoresCase) {
    const DString name("Trace.WVF");
    EXPECT_TRUE(name.EndsWith(".wvf"));
    EXPECT_TRUE(name.EndsWith(DString(".wvf")));
    EXPECT_TRUE(name.EndsWith("trace.wvf"));
    EXPECT_FALSE(name.EndsWith(".mtx"));
    EXPECT_FALSE(name.EndsWith("xTrace.WVF"));
    EXPECT_FALSE(name.EndsWith(DString("xTrace.WVF")));
}

TEST(DStringEndsWith, EmptyStringIsNoEndButEmptyPlainTextIs) {
    EXPECT_FALSE(DString("abc").EndsWith(DString()));
    EXPECT_FALSE(DString("abc").EndsWith(DString("")));
    EXPECT_FALSE(DString("abc").EndsWith(NullString()));
    EXPECT_TRUE(DString("abc").EndsWith(""));
    EXPECT_TRUE(DString("").EndsWith(""));
    EXPECT_TRUE(DString().EndsWith(""));
    EXPECT_FALSE(NullString().EndsWith(""));
}

// ---- Replacing

TEST(DStringReplace, ReplacesAllAndCounts) {
    const DString text("a-b-c");
    int count = -1;
    EXPECT_EQ(Text(text.Replace("-", "+", true, &count)), "a+b+c");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(Text(text.Replace("-", " and ", true, nullptr)), "a and b and c");
    EXPECT_EQ(Text(text.Replace("-", DString("="), true, nullptr)), "a=b=c");
    EXPECT_EQ(Text(text.Replace(DString("-"), DString("="), true, nullptr)), "a=b=c");
    EXPECT_EQ(Text(text), "a-b-c");
}

TEST(DStringReplace, ReplacesTheFirstAloneAndKeepsTheRest) {
    int count = -1;
    EXPECT_EQ(Text(DString("a-b-c").Replace("-", "+", false, &count)), "a+b-c");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(Text(DString("-").Replace("-", "+", false, nullptr)), "+");
}

TEST(DStringReplace, NewTextMayBeEmptyOrNull) {
    const DString text("a-b-");
    EXPECT_EQ(Text(text.Replace("-", "", true, nullptr)), "ab");
    EXPECT_EQ(Text(text.Replace("-", NoText, true, nullptr)), "ab");
    EXPECT_EQ(Text(text.Replace("-", NullString(), true, nullptr)), "ab");
    EXPECT_EQ(Text(DString("--").Replace("-", "", true, nullptr)), "");
}

TEST(DStringReplace, DoesNotSearchInWhatItPutIn) {
    EXPECT_EQ(Text(DString("aaa").Replace("a", "aa", true, nullptr)), "aaaaaa");
    EXPECT_EQ(Text(DString("aaaa").Replace("aa", "a", true, nullptr)), "aa");
}

TEST(DStringReplace, HonoursCase) {
    EXPECT_EQ(Text(DString("aA").Replace("A", "x", true, nullptr)), "ax");
}

TEST(DStringReplace, WithoutAMatchSharesTheTextAndLeavesTheCount) {
    const DString text("abc");
    int count = 7;
    EXPECT_EQ(Place(text.Replace("x", "y", true, &count)), Place(text));
    EXPECT_EQ(count, 7);
    EXPECT_EQ(Place(text.Replace("", "y", true, &count)), Place(text));
    EXPECT_EQ(Place(text.Replace(NoText, "y", true, &count)), Place(text));
    EXPECT_EQ(Place(text.Replace("", "y", false, &count)), Place(text));
    EXPECT_EQ(count, 7);
}

TEST(DStringReplace, InAnEmptyTextCountsZeroUnlessTheStringIsNull) {
    int count = 7;
    EXPECT_EQ(Text(DString("").Replace("a", "b", true, &count)), "");
    EXPECT_EQ(count, 0);
    count = 7;
    EXPECT_EQ(Text(DString().Replace("a", "b", true, &count)), "");
    EXPECT_EQ(count, 0);
    count = 7;
    const DString ofNull = NullString().Replace("a", "b", true, &count);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(ofNull.GetLength(), 0);
    EXPECT_NE(ofNull.GetRefs(), 0);
}

TEST(DStringReplace, EndsAtTheFirstZeroByte) {
    int count = 7;
    const DString text = StringOf(std::string("a-\0-", 4));
    EXPECT_EQ(Text(text.Replace("-", "+", true, &count)), "a+");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(Text(text.Replace("a-", "+", true, nullptr)), "+");
    EXPECT_EQ(Place(text.Replace("x", "+", true, &count)), Place(text)) << "all of it";
    EXPECT_EQ(count, 1);
    EXPECT_EQ(Text(StringOf(std::string("\0-", 2)).Replace("-", "+", true, &count)), "");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(Text(text.ReplaceI("-", "+", true, &count)), "a+");
    EXPECT_EQ(count, 1);
}

TEST(DStringReplace, BeyondTheLargestTextIsEmptyAndCountsAsRefused) {
    const DString many('c', 1048576);
    const DString with('w', 4096);
    const MemoryWatch memory;
    EXPECT_EQ(many.Replace("c", with, true, nullptr).GetLength(), 0);
    EXPECT_FALSE(memory.Whole());
}

TEST(DStringReplace, TakesPiecesOfItsOwnText) {
    DString text("abab");
    text = text.Replace(Place(text) + 3, text, true, nullptr);
    EXPECT_EQ(Text(text), "aababaabab");
}

TEST(DStringReplaceI, IgnoresCaseAndCounts) {
    int count = -1;
    EXPECT_EQ(Text(DString("xAyaZ").ReplaceI("a", "-", true, &count)), "x-y-Z");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(Text(DString("xAyaZ").ReplaceI("A", "-", false, &count)), "x-yaZ");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(Text(DString("AbAB").ReplaceI("ab", NoText, true, &count)), "");
    EXPECT_EQ(count, 2);
}

TEST(DStringReplaceI, WithoutAMatchCountsZero) {
    const DString text("abc");
    int count = 7;
    EXPECT_EQ(Text(text.ReplaceI("x", "y", true, &count)), "abc");
    EXPECT_EQ(count, 0);
    count = 7;
    EXPECT_EQ(Text(text.ReplaceI("", "y", true, &count)), "abc");
    EXPECT_EQ(count, 0);
    count = 7;
    EXPECT_EQ(Text(text.ReplaceI(NoText, "y", true, &count)), "abc");
    EXPECT_EQ(count, 0);
    count = 7;
    EXPECT_EQ(Text(DString("").ReplaceI("x", "y", true, &count)), "");
    EXPECT_EQ(count, 0);
}

TEST(DStringReplaceI, OnANullStringLeavesTheCount) {
    int count = 7;
    const DString ofNull = NullString().ReplaceI("a", "b", true, &count);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(ofNull.GetLength(), 0);
    EXPECT_NE(ofNull.GetRefs(), 0);
}
