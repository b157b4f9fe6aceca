// What long texts cost: each of these is done in a moment, and was or would be a matter of minutes
// where an operation goes over the text once more for each of its bytes or matches.
#include <gtest/gtest.h>

#include <string>

#include "support/Support.h"
#include "types/DStringArray.h"

namespace {

constexpr int Million = 1000000;

}  // namespace

TEST(TextCost, AppendsOneByOne) {
    DString text;
    for (int i = 0; i < 4 * Million; ++i)
        text += 'x';
    EXPECT_EQ(text.GetLength(), 4 * Million);
    EXPECT_EQ(text.GetAllocLength(), 4 * Million + 32);
    EXPECT_EQ(Text(text), std::string(4 * Million, 'x'));
}

TEST(TextCost, AppendsNumbersOneByOne) {
    DString text;
    for (int i = 0; i < Million; ++i)
        text << 7 << true;
    EXPECT_EQ(text.GetLength(), 5 * Million);
    EXPECT_EQ(Text(text.Right(10)), "7True7True");
}

TEST(TextCost, ReplacesEachOfAMillion) {
    const DString commas(',', 4 * Million);
    int count = 0;
    const DString replaced = commas.Replace(",", "; ", true, &count);
    EXPECT_EQ(count, 4 * Million);
    EXPECT_EQ(replaced.GetLength(), 8 * Million);
    EXPECT_EQ(Text(replaced.Left(6)), "; ; ; ");
    EXPECT_EQ(commas.Replace(",", "", true, nullptr).GetLength(), 0);
}

TEST(TextCost, ReplacesEachOfAMillionIgnoringCase) {
    int count = 0;
    const DString replaced = DString('a', 4 * Million).ReplaceI("A", "BC", true, &count);
    EXPECT_EQ(count, 4 * Million);
    EXPECT_EQ(replaced.GetLength(), 8 * Million);
    EXPECT_EQ(Text(replaced.Left(6)), "BCBCBC");
}

TEST(TextCost, MakesAMillionLineEnds) {
    DString text('\n', 4 * Million);
    EXPECT_EQ(text.LFtoCRLF().GetLength(), 8 * Million);
}

TEST(TextCost, FindsALongPatternIgnoringCase) {
    const DString text('a', Million);
    const std::string pattern = std::string(Million / 4, 'A') + "B";
    EXPECT_EQ(text.FindI(pattern.c_str(), 0), npos);
    EXPECT_EQ(text.Find(pattern.c_str(), 0), npos);
    EXPECT_EQ(DString(text + pattern.c_str()).FindI(pattern.c_str(), 0), Million);
}

TEST(TextCost, ReadsAMillionDigits) {
    const DString digits('7', 4 * Million);
    int number = 0;
    float real = 0;
    long date = 0;
    EXPECT_TRUE(digits.IsNumeric());
    EXPECT_EQ(digits.EndNumber(number), 0);
    EXPECT_TRUE(digits.ToInt(number));
    EXPECT_TRUE(DString(DString("0.") + digits).ToFloat(real));
    EXPECT_EQ(real, 0.777777777777777777f);
    EXPECT_TRUE(digits.ToDate(date));
}

TEST(TextCost, ReadsAMillionBlanks) {
    const DString blanks(' ', 4 * Million);
    int number = 0;
    EXPECT_FALSE(blanks.IsNumeric());
    EXPECT_FALSE(blanks.ToInt(number));
    EXPECT_TRUE(blanks.Trim().IsEmpty());
    EXPECT_TRUE(blanks.LTrim().IsEmpty());
    EXPECT_TRUE(blanks.Despace().IsEmpty());
    EXPECT_EQ(DString(blanks).RTrim().GetLength(), 1);
    EXPECT_EQ(DString(blanks + "12").EndNumber(number), 4 * Million);
    EXPECT_EQ(number, 12);
    DStringArray pieces;
    pieces.split(blanks, " ");
    EXPECT_EQ(pieces.Count(), 0);
}

TEST(TextCost, CutsAndJoinsHalfAMillionPieces) {
    constexpr int Lines = Million / 2;
    DString text;
    for (int i = 0; i < Lines; ++i)
        text += i % 2 == 0 ? "a\n" : "b\r\n";
    DStringArray lines;
    lines.split(text, LDelim);
    EXPECT_EQ(lines.Count(), Lines);
    EXPECT_EQ(Text(lines[Lines - 1]), "b");
    EXPECT_EQ(lines.Join(",").GetLength(), 2 * Lines - 1);
}
