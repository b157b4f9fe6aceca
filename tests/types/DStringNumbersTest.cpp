// DString's numbers and dates: text forms, callers' formats, conversions.
#include <float.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include <limits>
#include <vector>

#include "support/Support.h"
#include "tests/types/GermanLocale.h"
#include "tests/types/SampleStrings.h"
#include "types/DString.h"

namespace {

// The host's time zone for the life of the object. Only the environment is changed: the library
// has to take notice by itself.
class TimeZone {
public:
    explicit TimeZone(const char* zone) { setenv("TZ", zone, 1); }
    ~TimeZone() {
        unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
};

constexpr const char* Universal = "UTC0";
constexpr const char* CentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

// The local time that a text is taken for, or why it is taken for none.
std::string DateIn(const DString& text) {
    long value = 77;
    if (!text.ToDate(value, 0)) return value == 77 ? "no date" : "no date, but a value";
    const time_t seconds = value;
    char form[40];
    strftime(form, sizeof form, "%Y-%m-%d %H:%M:%S", localtime(&seconds));
    return form;
}

template <typename T>
std::string Printed(const char* format, T value) {
    char buffer[40];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    snprintf(buffer, sizeof buffer, format, value);
#pragma GCC diagnostic pop
    return buffer;
}

}  // namespace

// ---- Text forms

TEST(DStringTextForm, OfIntegersIsDecimal) {
    EXPECT_EQ(Text(DString(0)), "0");
    EXPECT_EQ(Text(DString(-12)), "-12");
    EXPECT_EQ(Text(DString(INT_MIN)), "-2147483648");
    EXPECT_EQ(Text(DString(INT_MAX)), "2147483647");
    EXPECT_EQ(Text(DString(UINT_MAX)), "4294967295");
    EXPECT_EQ(Text(DString(7u)), "7");
}

TEST(DStringTextForm, OfAFloatHasEightDigits) {
    EXPECT_EQ(Text(DString(0.1f)), "0.1");
    EXPECT_EQ(Text(DString(1.0f / 3.0f)), "0.33333334");
    EXPECT_EQ(Text(DString(1e10f)), "1e+10");
    EXPECT_EQ(Text(DString(16777216.0f)), "16777216");
    EXPECT_EQ(Text(DString(-FLT_MIN)), "-1.1754944e-38");
    EXPECT_EQ(Text(DString(-0.0f)), "-0");
    EXPECT_EQ(Text(DString(std::numeric_limits<float>::infinity())), "inf");
}

TEST(DStringTextForm, OfADoubleHasSixteenDigits) {
    EXPECT_EQ(Text(DString(0.1)), "0.1");
    EXPECT_EQ(Text(DString(1.0 / 3.0)), "0.3333333333333333");
    EXPECT_EQ(Text(DString(1e16)), "1e+16");
    EXPECT_EQ(Text(DString(123456.0)), "123456");
    EXPECT_EQ(Text(DString(-2.2250738585072014e-308)), "-2.225073858507201e-308");
    EXPECT_EQ(Text(DString(-std::numeric_limits<double>::infinity())), "-inf");
}

TEST(DStringTextForm, OfNumbersIsThatOfPrintf) {
    const std::vector<double> values = {
        0.0,          -0.0,        1.0,        -1.5,    1e-4,    9.9999e-5,          1e-5,
        1e7,          99999999.4,  99999999.5, 1e8,     1e15,    9999999999999999.0, 1e17,
        M_PI,         -M_PI * 1e9, 1e100,      DBL_MAX, DBL_MIN, DBL_TRUE_MIN,       FLT_MAX,
        FLT_TRUE_MIN, 0.5,         2.0 / 3.0,  NAN,     -NAN,    HUGE_VAL,
    };
    for (const double value : values) {
        EXPECT_EQ(Text(DString(value)), Printed("%.16g", value));
        if (fabs(value) <= FLT_MAX || isinf(value) || isnan(value)) {
            const float single = static_cast<float>(value);
            EXPECT_EQ(Text(DString(single)), Printed("%.8g", static_cast<double>(single)));
        }
    }
}

TEST(DStringTextForm, OfABool) {
    EXPECT_EQ(Text(DString(true)), "True");
    EXPECT_EQ(Text(DString(false)), "False");
}

TEST(DStringTextForm, OfAnAddress) {
    int object = 0;
    void* address = &object;
    EXPECT_EQ(Text(DString(address)), Printed("%p", address));
    EXPECT_EQ(Text(DString(static_cast<void*>(nullptr))), "(nil)");
}

TEST(DStringTextForm, OfALongIsADate) {
    const TimeZone zone(Universal);
    EXPECT_EQ(Text(DString(0L)), "01/01/1970 00:00:00");
    EXPECT_EQ(Text(DString(951782399L)), "02/28/2000 23:59:59");
    EXPECT_EQ(Text(DString() << -1L), "12/31/1969 23:59:59");
}

TEST(DStringTextForm, OfALongIsLocalTimeWithDaylightSaving) {
    const TimeZone zone(CentralEurope);
    EXPECT_EQ(Text(DString(1579046400L)), "01/15/2020 01:00:00");
    EXPECT_EQ(Text(DString(1594771200L)), "07/15/2020 02:00:00");
}

TEST(DStringTextForm, OfALongFollowsAChangeOfTheZone) {
    {
        const TimeZone zone(Universal);
        EXPECT_EQ(Text(DString(0L)), "01/01/1970 00:00:00");
    }
    setenv("TZ", "TST-3", 1);
    EXPECT_EQ(Text(DString(0L)), "01/01/1970 03:00:00");
    unsetenv("TZ");
}

TEST(DStringTextForm, OfATimeThatNoCalendarHoldsIsEmpty) {
    const TimeZone zone(Universal);
    EXPECT_EQ(Text(DString("at ") << LONG_MAX), "at ");
}

TEST(DStringTextForm, IsAppended) {
    DString text("n = ");
    EXPECT_EQ(&(text << 3), &text);
    text << 4u;
    EXPECT_EQ(Text(text), "n = 34");
    EXPECT_EQ(Text(DString("v ") << 0.5f << 0.25 << true << 1), "v 0.50.25True1");
}

TEST(DStringTextForm, ReservesItsRoomBeforeItWrites) {
    EXPECT_EQ(DString(1).GetAllocLength(), 64);
    EXPECT_EQ(DString(1u).GetAllocLength(), 64);
    EXPECT_EQ(DString(1.0f).GetAllocLength(), 64);
    EXPECT_EQ(DString(1.0).GetAllocLength(), 64);
    EXPECT_EQ(DString(true).GetAllocLength(), 32);
    EXPECT_EQ(DString(false).GetAllocLength(), 32);
    DString text('x', 14);
    text << 1.0;  // 14 and 25 no longer fit into 64 bytes
    EXPECT_EQ(text.GetAllocLength(), 96);
}

// ---- Callers' formats

TEST(DStringFormat, PrintsByTheFormat) {
    EXPECT_EQ(Text(Format(42, "%05i")), "00042");
    EXPECT_EQ(Text(Format(42, "%-4d|")), "42  |");
    EXPECT_EQ(Text(Format(255u, "%#x %%")), "0xff %");
    EXPECT_EQ(Text(Format(255u, "%X")), "FF");
    EXPECT_EQ(Text(Format(8u, "%o")), "10");
    EXPECT_EQ(Text(Format(4294967295u, "%u")), "4294967295");
    EXPECT_EQ(Text(Format(0.5f, "%g A")), "0.5 A");
    EXPECT_EQ(Text(Format(1.25, "%+.1f")), "+1.2");
    EXPECT_EQ(Text(Format(1.25, "%lf")), "1.250000");
    EXPECT_EQ(Text(Format(1.0, "%A")), "0X1P+0");
    EXPECT_EQ(Text(Format(2.5, "%6.2F")), "  2.50");
}

TEST(DStringFormat, AppendsToTheText) {
    DString text("t = ");
    EXPECT_EQ(&text.AddFormatted(1.5, "%.2f"), &text);
    EXPECT_EQ(Text(text), "t = 1.50");
    EXPECT_EQ(Text(text.AddFormatted(7, " n=%d")), "t = 1.50 n=7");
}

TEST(DStringFormat, OfAnExponentIsTidied) {
    EXPECT_EQ(Text(Format(0.5, "%.2e")), "5.00e-1");
    EXPECT_EQ(Text(Format(123000.0, "%.2e")), "1.23e5");
    EXPECT_EQ(Text(Format(1.23e-5, "%.2e")), "1.23e-5");
    EXPECT_EQ(Text(Format(1.23e12, "%.2e")), "1.23e12");
    EXPECT_EQ(Text(Format(1.23e-12f, "%.2e")), "1.23e-12");
    EXPECT_EQ(Text(Format(1.0, "%.0e")), "1e0");
    EXPECT_EQ(Text(Format(1e100, "%.0e s")), "1e100 s");
    EXPECT_EQ(Text(Format(1e5f, "%.0e s")), "1e5 s");
}

TEST(DStringFormat, TidiesOnlySmallLetterE) {
    EXPECT_EQ(Text(Format(123000.0, "%.2E")), "1.23E+05");
}

TEST(DStringFormat, TidiesAtTheLastEOfTheWholeText) {
    EXPECT_EQ(Text(DString("re+05 ").AddFormatted(1.5, "%.1f")), "re5 1.5");
    EXPECT_EQ(Text(DString("ex0 ").AddFormatted(2.5, "%.1f")), "ex 2.5");
    EXPECT_EQ(Text(Format(123000.0, "%.2e eV")), "1.23e+05 eV");
    EXPECT_EQ(Text(DString("e").AddFormatted(2.0, "+%.0f")), "e2");
    EXPECT_EQ(Text(DString("line").AddFormatted(0.25f, "")), "line");
}

TEST(DStringFormat, LeavesIntegersUntidied) {
    EXPECT_EQ(Text(DString("e+").AddFormatted(5, "%02d")), "e+05");
    EXPECT_EQ(Text(DString("e+").AddFormatted(5u, "%02u")), "e+05");
}

TEST(DStringFormat, TidyingALongTextLeavesOtherOwnersAlone) {
    const DString original("e+05");
    DString text(original);
    text.AddFormatted(1.0, "");
    EXPECT_EQ(Text(text), "e5");
    EXPECT_EQ(Text(original), "e+05");
}

TEST(DStringFormat, WithoutAConversionIsText) {
    EXPECT_EQ(Text(Format(1.5, "volts")), "volts");
    EXPECT_EQ(Text(Format(1, "100%%")), "100%");
    EXPECT_EQ(Text(Format(1, "")), "");
    EXPECT_EQ(Text(Format(1, nullptr)), "");
    EXPECT_EQ(Text(Format(2.5, nullptr)), "");
}

TEST(DStringFormat, ThatIsNotAllowedGivesTheTextForm) {
    for (const char* format :
         {"%s",   "%n",  "%*d", "%.*f", "%1$g", "%1$d", "%g %g", "%d %d", "%c",
          "%p",   "%",   "%5",  "%.",   "%l",   "%hd",  "%ld",   "%lld",  "%Lf",
          "%llf", "%5%", "%'d", "%'f",  "%q",   "%g%",  "%m",    "%C",    "%S"}) {
        SCOPED_TRACE(format);
        EXPECT_EQ(Text(Format(12, format)), "12");
        EXPECT_EQ(Text(Format(12u, format)), "12");
        EXPECT_EQ(Text(Format(2.5f, format)), "2.5");
        EXPECT_EQ(Text(Format(2.5, format)), "2.5");
    }
}

TEST(DStringFormat, ForAnotherTypeGivesTheTextForm) {
    for (const char* format : {"%d", "%i", "%u", "%x"}) {
        EXPECT_EQ(Text(Format(2.5, format)), "2.5") << format;
        EXPECT_EQ(Text(Format(2.5f, format)), "2.5") << format;
    }
    for (const char* format : {"%u", "%x", "%X", "%o", "%g", "%f", "%e", "%a"}) {
        EXPECT_EQ(Text(Format(-1, format)), "-1") << format;
    }
    for (const char* format : {"%d", "%i", "%g", "%lu"}) {
        EXPECT_EQ(Text(Format(4294967295u, format)), "4294967295") << format;
    }
}

TEST(DStringFormat, TidiesTheTextFormToo) {
    EXPECT_EQ(Text(Format(1e20, "%s")), "1e20");
    EXPECT_EQ(Text(Format(1e-5f, "%d")), "9.9999997e-6");
}

TEST(DStringFormat, KeepsALongResultWhole) {
    EXPECT_EQ(Text(Format(1, "%19d")), std::string(18, ' ') + "1");
    EXPECT_EQ(Text(Format(1, "%20d")), std::string(19, ' ') + "1");
    EXPECT_EQ(Text(Format(1, "%0200i")), std::string(199, '0') + "1");
    EXPECT_EQ(Text(Format(1.0, "%.30f")), "1." + std::string(30, '0'));
    EXPECT_EQ(Text(DString("a label, ").AddFormatted(5u, "and a long label behind it: %u V")),
              "a label, and a long label behind it: 5 V");
}

TEST(DStringFormat, OfAWidthThatNoTextHoldsGivesTheTextForm) {
    EXPECT_EQ(Text(DString("n=").AddFormatted(1, "%99999999999d")), "n=1");
    EXPECT_EQ(Text(DString("n=").AddFormatted(1.5, "%99999999999f")), "n=1.5");
}

TEST(DStringFormat, OfMoreThanAThousandPlacesGivesTheTextForm) {
    EXPECT_EQ(Text(Format(1, "%1000d")), std::string(999, ' ') + "1");
    EXPECT_EQ(Text(Format(1.0, "%.1000f")), "1." + std::string(1000, '0'));
    EXPECT_EQ(Text(Format(1, "%-00001000d")), "1" + std::string(999, ' '));
    EXPECT_EQ(Text(Format(1, "%1001d")), "1");
    EXPECT_EQ(Text(Format(1, "%.1001d")), "1");
    EXPECT_EQ(Text(Format(1u, "%999999999u")), "1");
    EXPECT_EQ(Text(Format(1.5f, "%.4294967297f")), "1.5");
    EXPECT_EQ(Text(Format(1.5, "%32.516698527e")), "1.5");
}

TEST(DStringFormat, ReservesTwentyBytes) {
    DString text('x', 18);
    text.AddFormatted(1, "%d");
    EXPECT_EQ(text.GetAllocLength(), 64);
    DString longer('x', 19);  // 19 and 20 no longer fit into 64 bytes
    longer.AddFormatted(1, "%d");
    EXPECT_EQ(longer.GetAllocLength(), 96);
}

TEST(DStringFormat, MayBeThePartOfTheTextItself) {
    DString text("%i,");
    text.AddFormatted(5, text);
    EXPECT_EQ(Text(text), "%i,5,");
}

// ---- Locale

TEST(DStringNumbers, AreWrittenAndReadWithAPointInEveryLocale) {
    const GermanLocale german;
    if (!german.IsSet()) GTEST_SKIP() << "no locale could be compiled here";
    ASSERT_EQ(Printed("%g", 0.5), "0,5");
    EXPECT_EQ(Text(DString(0.5)), "0.5");
    EXPECT_EQ(Text(DString(0.5f)), "0.5");
    EXPECT_EQ(Text(DString() << 0.5 << 0.25f), "0.50.25");
    EXPECT_EQ(Text(Format(0.5, "%.2f")), "0.50");
    EXPECT_EQ(Text(Format(0.5f, "%.2e")), "5.00e-1");
    EXPECT_EQ(Text(Format(0.5, "%s")), "0.5");

    double value = 0;
    EXPECT_TRUE(DString("1.5").ToDouble(value, 0));
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(DString("1,5").ToDouble(value, 0));
    EXPECT_EQ(value, 1.0);
    float single = 0;
    EXPECT_TRUE(DString("2.5").ToFloat(single, 0));
    EXPECT_EQ(single, 2.5f);
    EXPECT_TRUE(DString("1.5").IsNumeric());
    EXPECT_FALSE(DString("1,5").IsNumeric());
    EXPECT_FALSE(DString("1,5").IsSemiNumeric());

    EXPECT_EQ(Printed("%g", 0.5), "0,5") << "the host's locale was changed";
}

// ---- Is it a number?

TEST(DStringIsNumeric, WantsTheWholeText) {
    EXPECT_TRUE(DString("12").IsNumeric());
    EXPECT_TRUE(DString("-1.5e-3").IsNumeric());
    EXPECT_TRUE(DString("  +.5").IsNumeric());
    EXPECT_TRUE(DString("0x1F").IsNumeric());
    EXPECT_TRUE(DString("inf").IsNumeric());
    EXPECT_TRUE(DString("NaN").IsNumeric());
    EXPECT_FALSE(DString("12x").IsNumeric());
    EXPECT_FALSE(DString("12 ").IsNumeric());
    EXPECT_FALSE(DString("abc").IsNumeric());
    EXPECT_FALSE(DString(" ").IsNumeric());
    EXPECT_FALSE(DString("1.#INF").IsNumeric());
}

TEST(DStringIsNumeric, IsFalseForEveryEmptyTextAndSemiNumericIsTrue) {
    for (const DString& empty : EmptyStrings()) {
        EXPECT_FALSE(empty.IsNumeric());
        EXPECT_TRUE(empty.IsSemiNumeric());
    }
}

TEST(DStringIsSemiNumeric, TakesForeignInfinities) {
    EXPECT_TRUE(DString("1.#INF").IsSemiNumeric());
    EXPECT_TRUE(DString("-1.#IND").IsSemiNumeric());
    EXPECT_TRUE(DString("1.#qnan").IsSemiNumeric());
    EXPECT_TRUE(DString("12.5").IsSemiNumeric());
    EXPECT_FALSE(DString("+1.#INF").IsSemiNumeric());
    EXPECT_FALSE(DString("x1.#INF").IsSemiNumeric());
    EXPECT_FALSE(DString("1#INF").IsSemiNumeric());
    EXPECT_FALSE(DString("abc").IsSemiNumeric());
    EXPECT_FALSE(DString("12x").IsSemiNumeric());
}

// ---- Number at the end

TEST(DStringEndNumber, IsTheRightmostRunOfDigits) {
    int value = -1;
    EXPECT_EQ(DString("shot12").EndNumber(value), 4);
    EXPECT_EQ(value, 12);
    EXPECT_EQ(DString("a12b").EndNumber(value), 1);
    EXPECT_EQ(value, 12);
    EXPECT_EQ(DString("7a034").EndNumber(value), 2);
    EXPECT_EQ(value, 34);
    EXPECT_EQ(DString("a-5").EndNumber(value), 2);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(DString("1.25").EndNumber(value), 2);
    EXPECT_EQ(value, 25);
}

TEST(DStringEndNumber, IsAtIndexZeroForDigitsAloneAndForNone) {
    int value = -1;
    EXPECT_EQ(DString("0042").EndNumber(value), 0);
    EXPECT_EQ(value, 42);
    value = -1;
    EXPECT_EQ(DString("shot").EndNumber(value), 0);
    EXPECT_EQ(value, 0);
}

TEST(DStringEndNumber, OfAnEmptyTextIsNposAndZero) {
    for (const DString& empty : EmptyStrings()) {
        int value = -1;
        EXPECT_EQ(empty.EndNumber(value), npos);
        EXPECT_EQ(value, 0);
    }
}

TEST(DStringEndNumber, IsCutTo32Bits) {
    int value = 0;
    EXPECT_EQ(DString("s4294967298").EndNumber(value), 1);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(DString("s99999999999999999999999").EndNumber(value), 1);
    EXPECT_EQ(value, -1);
}

// ---- Conversions

TEST(DStringConversion, LeavesTheValueOfANullOrSharedEmptyText) {
    for (const DString& unset : {NullString(), DString()}) {
        int whole = 7;
        unsigned int natural = 7;
        float single = 7;
        double number = 7;
        EXPECT_FALSE(unset.ToInt(whole, 0));
        EXPECT_FALSE(unset.ToUint(natural, 0));
        EXPECT_FALSE(unset.ToFloat(single, 0));
        EXPECT_FALSE(unset.ToDouble(number, 0));
        EXPECT_EQ(whole, 7);
        EXPECT_EQ(natural, 7u);
        EXPECT_EQ(single, 7.0f);
        EXPECT_EQ(number, 7.0);
    }
}

TEST(DStringConversion, StoresZeroWhereAnOwnTextHoldsNoNumber) {
    for (const DString& text : {DString(""), DString("abc")}) {
        int whole = 7;
        unsigned int natural = 7;
        float single = 7;
        double number = 7;
        EXPECT_FALSE(text.ToInt(whole, 0));
        EXPECT_FALSE(text.ToUint(natural, 0));
        EXPECT_FALSE(text.ToFloat(single, 0));
        EXPECT_FALSE(text.ToDouble(number, 0));
        EXPECT_EQ(whole, 0);
        EXPECT_EQ(natural, 0u);
        EXPECT_EQ(single, 0.0f);
        EXPECT_EQ(number, 0.0);
    }
}

TEST(DStringConversion, LeavesTheValueWhereTheStartIsOutside) {
    const DString text("123");
    for (const int start : {-1, 4, npos}) {
        SCOPED_TRACE(start);
        int whole = 7;
        unsigned int natural = 7;
        float single = 7;
        double number = 7;
        EXPECT_FALSE(text.ToInt(whole, start));
        EXPECT_FALSE(text.ToUint(natural, start));
        EXPECT_FALSE(text.ToFloat(single, start));
        EXPECT_FALSE(text.ToDouble(number, start));
        EXPECT_EQ(whole, 7);
        EXPECT_EQ(natural, 7u);
        EXPECT_EQ(single, 7.0f);
        EXPECT_EQ(number, 7.0);
    }
}

TEST(DStringConversion, ToWholeNumbersIsLax) {
    int whole = 0;
    EXPECT_TRUE(DString("12x").ToInt(whole, 0));
    EXPECT_EQ(whole, 12);
    EXPECT_TRUE(DString(" -12.9").ToInt(whole, 0));
    EXPECT_EQ(whole, -12);
    EXPECT_TRUE(DString("t19").ToInt(whole, 1));
    EXPECT_EQ(whole, 19);
    EXPECT_TRUE(DString("0x10").ToInt(whole, 0));
    EXPECT_EQ(whole, 0);
    unsigned int natural = 0;
    EXPECT_TRUE(DString("12x").ToUint(natural, 0));
    EXPECT_EQ(natural, 12u);
    EXPECT_TRUE(DString("t19").ToUint(natural, 1));
    EXPECT_EQ(natural, 19u);
}

TEST(DStringConversion, ToWholeNumbersIsCutTo32Bits) {
    int whole = 0;
    EXPECT_TRUE(DString("4294967297").ToInt(whole, 0));
    EXPECT_EQ(whole, 1);
    EXPECT_TRUE(DString("2147483648").ToInt(whole, 0));
    EXPECT_EQ(whole, INT_MIN);
    EXPECT_TRUE(DString("99999999999999999999").ToInt(whole, 0));
    EXPECT_EQ(whole, -1);
    unsigned int natural = 0;
    EXPECT_TRUE(DString("-1").ToUint(natural, 0));
    EXPECT_EQ(natural, 4294967295u);
    EXPECT_TRUE(DString("4294967297").ToUint(natural, 0));
    EXPECT_EQ(natural, 1u);
}

TEST(DStringConversion, ToFractionsIsStrictButStores) {
    float single = 0;
    EXPECT_TRUE(DString("0.1").ToFloat(single, 0));
    EXPECT_EQ(single, 0.1f);
    EXPECT_FALSE(DString("12x").ToFloat(single, 0));
    EXPECT_EQ(single, 12.0f);
    EXPECT_TRUE(DString("=1.5").ToFloat(single, 1));
    EXPECT_EQ(single, 1.5f);
    double number = 0;
    EXPECT_TRUE(DString(" 0.1").ToDouble(number, 0));
    EXPECT_EQ(number, 0.1);
    EXPECT_FALSE(DString("12 ").ToDouble(number, 0));
    EXPECT_EQ(number, 12.0);
    EXPECT_TRUE(DString("=1.5").ToDouble(number, 1));
    EXPECT_EQ(number, 1.5);
    EXPECT_TRUE(DString("0x1p4").ToDouble(number, 0));
    EXPECT_EQ(number, 16.0);
}

TEST(DStringConversion, ToFractionsTakesInfinitiesAndNaN) {
    float single = 0;
    EXPECT_TRUE(DString("-inf").ToFloat(single, 0));
    EXPECT_EQ(single, -HUGE_VALF);
    EXPECT_TRUE(DString("1e39").ToFloat(single, 0));
    EXPECT_EQ(single, HUGE_VALF);
    EXPECT_TRUE(DString("nan").ToFloat(single, 0));
    EXPECT_TRUE(isnan(single));
    double number = 0;
    EXPECT_TRUE(DString("1e999").ToDouble(number, 0));
    EXPECT_EQ(number, HUGE_VAL);
}

TEST(DStringConversion, ToFloatRoundsTheDouble) {
    // Halfway between two floats as a double, but just above it in the text.
    float single = 0;
    EXPECT_TRUE(DString("1.00000005960464477539062500000001").ToFloat(single, 0));
    EXPECT_EQ(single, 1.0f);
}

// ---- Dates

TEST(DStringToDate, LandsOneDayBeforeWhatTheTextSays) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("03/15/2020 01:02:03"), "2020-03-14 01:02:03");
    EXPECT_EQ(DateIn("03/01/2020 01:02:03"), "2020-02-29 01:02:03");
    EXPECT_EQ(DateIn("01/01/2020 00:00:00"), "2019-12-31 00:00:00");
}

TEST(DStringToDate, TakesWhatALongPrintsLessOneDay) {
    const TimeZone zone(CentralEurope);
    long value = 0;
    EXPECT_TRUE(DString(1579046400L).ToDate(value, 0));
    EXPECT_EQ(value, 1579046400L - 86400);
    EXPECT_TRUE(DString(1594771200L).ToDate(value, 1));
    EXPECT_EQ(value, 1594771200L - 86400);
}

TEST(DStringToDate, KnowsMorningAndAfternoon) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("03/15/2020 01:02:03 PM"), "2020-03-14 13:02:03");
    EXPECT_EQ(DateIn("03/15/2020 01:02:03 pm"), "2020-03-14 13:02:03");
    EXPECT_EQ(DateIn("03/15/2020 01:02:03PM"), "2020-03-14 13:02:03");
    EXPECT_EQ(DateIn("03/15/2020 01:02:03 AM"), "2020-03-14 01:02:03");
    EXPECT_EQ(DateIn("03/15/2020 12:00:00 PM"), "2020-03-14 12:00:00");
    EXPECT_EQ(DateIn("03/15/2020 13:00:00 PM"), "2020-03-14 13:00:00");
    EXPECT_EQ(DateIn("03/15/2020 3 PM"), "2020-03-14 15:00:00");
}

TEST(DStringToDate, TwelveInTheMorningStaysTwelve) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("03/15/2020 12:00:00 AM"), "2020-03-14 12:00:00");
}

TEST(DStringToDate, PrefersACapitalM) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("03/15/2020 01:02 PM m"), "2020-03-14 13:02:00");
}

TEST(DStringToDate, FailsForShortTextsAndAnEarlyM) {
    EXPECT_EQ(DateIn("5"), "no date");
    for (const DString& empty : EmptyStrings())
        EXPECT_EQ(DateIn(empty), "no date");
    EXPECT_EQ(DateIn("Mon 3/5"), "no date");
    EXPECT_EQ(DateIn("may 5"), "no date");
    EXPECT_EQ(DateIn("AM"), "no date");
    EXPECT_EQ(DateIn("am"), "no date");
}

TEST(DStringToDate, ValidatesNothing) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("hello"), "1899-12-31 00:00:00");
    EXPECT_EQ(DateIn("--"), "1899-12-31 00:00:00");
    EXPECT_EQ(DateIn("Sam 3"), "1899-12-31 00:00:00");
    EXPECT_EQ(DateIn("13/32/2020"), "2021-01-31 00:00:00");
}

TEST(DStringToDate, FillsWhatIsMissing) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("12"), "1900-11-30 00:00:00");
    EXPECT_EQ(DateIn("7/4"), "1900-07-03 00:00:00");
    EXPECT_EQ(DateIn("7/4/2020"), "2020-07-03 00:00:00");
    EXPECT_EQ(DateIn("7/4/2020 5"), "2020-07-03 05:00:00");
    EXPECT_EQ(DateIn("7/4/2020 5:6"), "2020-07-03 05:06:00");
}

TEST(DStringToDate, ReadsYearsByTheirSize) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("7/4/95"), "1995-07-03 00:00:00");
    EXPECT_EQ(DateIn("7/4/20"), "1920-07-03 00:00:00");
    EXPECT_EQ(DateIn("7/4/1901"), "1901-07-03 00:00:00");
    EXPECT_EQ(DateIn("7/4/1900"), "3800-07-03 00:00:00");
}

TEST(DStringToDate, PartsAtAnySeparator) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("7-4-2020-5/6 7"), "2020-07-03 05:06:07");
    EXPECT_EQ(DateIn("7:4:2020:5:6:7"), "2020-07-03 05:06:07");
    EXPECT_EQ(DateIn("7.4.2020"), "1900-06-30 00:00:00");
}

TEST(DStringToDate, MakesEmptyFieldsOfAdjacentSeparators) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("7//2020"), "2020-06-30 00:00:00");
    EXPECT_EQ(DateIn("7/4/2020  5:6"), "2020-07-03 00:05:06");
}

TEST(DStringToDate, NeverPartsAtTheFirstCharacter) {
    const TimeZone zone(Universal);
    // The first field is "/7", in which no number is found.
    EXPECT_EQ(DateIn("/7/4/95"), "1995-01-03 00:00:00");
    // The first field is "-2", not an empty one and then "2".
    EXPECT_EQ(DateIn("-2/4/95"), "1994-10-03 00:00:00");
}

TEST(DStringToDate, StopsAfterSixFields) {
    const TimeZone zone(Universal);
    EXPECT_EQ(DateIn("1/2/2020 3:4:5:6"), "2020-01-01 03:04:05");
    EXPECT_EQ(DateIn("1/2/2020 3:4:5:6 PM"), "2020-01-01 15:04:05");
}

TEST(DStringToDate, LeavesDaylightSavingToTheZone) {
    const TimeZone zone(CentralEurope);
    long value = 0;
    EXPECT_TRUE(DString("07/16/2020 12:00:00").ToDate(value, 0));
    EXPECT_EQ(value, 1594807200L);
    EXPECT_TRUE(DString("01/16/2020 12:00:00").ToDate(value, 0));
    EXPECT_EQ(value, 1579086000L);
}

TEST(DStringToDate, BearsNumbersOutOfAllRange) {
    long value = 0;
    EXPECT_TRUE(DString("99999999999999999999/99999999999/99999999999 "
                        "99999999999:99999999999:99999999999 PM")
                    .ToDate(value, 0));
    EXPECT_TRUE(DString("1/1/-5").ToDate(value, 0));
}

TEST(DStringTextForm, TextStaysTextAndIsNoBool) {
    DString text("peak ");
    text << "of " << DString("I") << 2;
    EXPECT_EQ(Text(text), "peak of I2");
}
