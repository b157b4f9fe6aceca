// Filling references to fields into names, expressions and captions.
#include <string>

#include "experiment/Experiment.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

constexpr bool MarkedOnly = true;
constexpr bool AlsoPlain = false;

class Expansion : public ShotTest {
protected:
    Expansion() {
        SelectNewShot("0099",
                      "a=2\r\nb=text\r\nshout=Hi!\r\nlink=![a]\r\nlong=3.14159265358979\r\n"
                      "a-b=10\r\nbig=123000\r\nsmall=0.0000123\r\nendless=inf\r\nmark=1.#INF\r\n");
    }
};

std::string Filled(const char* text, bool markedOnly) {
    return Text(Expt.GetExpandedString(text, markedOnly));
}

std::string Label(const char* text) { return Text(Expt.GetExpandedLabel(text)); }

}  // namespace

// ---- Names and expressions

TEST_F(Expansion, TextWithoutReferenceComesBackUnchanged) {
    EXPECT_EQ(Filled("plain!", MarkedOnly), "plain!");
    EXPECT_EQ(Filled("plain!", AlsoPlain), "plain!");
    EXPECT_EQ(Filled("", MarkedOnly), "");
}

TEST_F(Expansion, MarkedReferencesAreFilledIn) {
    EXPECT_EQ(Filled("x![a]y![b]z", MarkedOnly), "x2ytextz");
    EXPECT_EQ(Filled("![A]", MarkedOnly), "2");
    EXPECT_EQ(Filled("Shot![Shot]", MarkedOnly), "Shot0099");
    EXPECT_EQ(Filled("![missing::a]", MarkedOnly), "2");
}

TEST_F(Expansion, PlainBracketsStayWhereOnlyMarkedOnesCount) {
    EXPECT_EQ(Filled("[a]*![a]", MarkedOnly), "[a]*2");
}

TEST_F(Expansion, BothFormsAreFilledInWherePlainOnesCount) {
    EXPECT_EQ(Filled("x[a]y![b]z", AlsoPlain), "x2ytextz");
}

TEST_F(Expansion, OneMarkIsDroppedWhereverItCameFrom) {
    EXPECT_EQ(Filled("x!![a]", AlsoPlain), "x!2");
    EXPECT_EQ(Filled("[shout][a]", AlsoPlain), "Hi2");
    EXPECT_EQ(Filled("![shout]![a]", MarkedOnly), "Hi!2");
    EXPECT_EQ(Filled("[shout]", AlsoPlain), "Hi!");
}

TEST_F(Expansion, ReferenceThatCannotBeFilledEmptiesTheWholeResult) {
    EXPECT_EQ(Filled("x![a]y![missing]z", MarkedOnly), "");
    EXPECT_EQ(Filled("x[a]y[missing]z", AlsoPlain), "");
    EXPECT_EQ(Filled("x![]", MarkedOnly), "");
    EXPECT_EQ(Filled("x![", MarkedOnly), "");
}

TEST_F(Expansion, UnclosedReferenceTakesTheRestAsName) {
    EXPECT_EQ(Filled("x![a", MarkedOnly), "x2");
    EXPECT_EQ(Filled("x[a", AlsoPlain), "x2");
}

TEST_F(Expansion, ReferencesDoNotNestAndFieldsAreNotScannedAgain) {
    EXPECT_EQ(Filled("![link]", MarkedOnly), "![a]");
    EXPECT_EQ(Filled("![![a]]", MarkedOnly), "");
}

TEST_F(Expansion, NothingIsFilledInWithoutAShot) {
    Expt.SetExperimentFolder(Folder().c_str());
    EXPECT_EQ(Filled("x![a]", MarkedOnly), "");
    EXPECT_EQ(Filled("x[a]", MarkedOnly), "x[a]");
    EXPECT_EQ(Label("x ![Shot] ![a]"), "x  (undefined)");
}

TEST_F(Expansion, TextMayBeAStringOfTheSession) {
    Expt.m_Description = "x![a]";
    Expt.m_Description = Expt.GetExpandedString(Expt.m_Description, MarkedOnly);
    EXPECT_EQ(Text(Expt.m_Description), "x2");
    Expt.m_ShotName = "![a]";
    EXPECT_EQ(Text(Expt.GetExpandedLabel(Expt.m_ShotName)), "2");
}

// ---- Captions

TEST_F(Expansion, LabelWithoutReferenceComesBackUnchanged) {
    EXPECT_EQ(Label("100 % [a]"), "100 % [a]");
    EXPECT_EQ(Label(""), "");
}

TEST_F(Expansion, NumberIsPrintedInItsFormat) {
    EXPECT_EQ(Label("![a%.2f] A, ![long%8.3f]"), "2.00 A,    3.142");
    EXPECT_EQ(Label("![a%+05.1f]"), "+02.0");
}

TEST_F(Expansion, NumberWithoutFormatHasEightDigits) { EXPECT_EQ(Label("![long]"), "3.1415927"); }

TEST_F(Expansion, TextFieldIgnoresAnyFormat) {
    EXPECT_EQ(Label("![b] and ![b%.2f]"), "text and text");
    EXPECT_EQ(Label("![mark%.2f]"), "1.#INF");
}

TEST_F(Expansion, ExpressionIsComputed) {
    EXPECT_EQ(Label("twice ![a*2+1], half ![a/4%.3f]"), "twice 5, half 0.500");
    EXPECT_EQ(Label("![missing::a]"), "2");
    EXPECT_EQ(Label("![ a %.1f]"), "2.0");
}

TEST_F(Expansion, ExpressionMayHoldBrackets) {
    EXPECT_EQ(Label("![[a-b]*2%.1f]!"), "20.0!");
    EXPECT_EQ(Label("![a]]"), "2]");
}

TEST_F(Expansion, WhatCannotBeEvaluatedIsUndefined) {
    EXPECT_EQ(Label("x ![missing] y ![1/0%.2f] ![] ![%.2f]"),
              "x (undefined) y (undefined) (undefined) (undefined)");
    EXPECT_EQ(Label("![endless]"), "(undefined)");
}

TEST_F(Expansion, ShotsNameIsNeverANumber) {
    EXPECT_EQ(Label("shot ![Shot], ![sHOT%.3f]"), "shot 0099, 0099");
    EXPECT_EQ(Label("![Shot+0%.1f]"), "99.0");
}

TEST_F(Expansion, UnclosedReferenceLeavesTheWholeLabel) {
    EXPECT_EQ(Label("![a] and ![a"), "![a] and ![a");
    EXPECT_EQ(Label("![a] and ![["), "![a] and ![[");
    EXPECT_EQ(Label("![a] and ![[a]"), "![a] and ![[a]");
    EXPECT_EQ(Label("![a] and !["), "![a] and ![");
}

TEST_F(Expansion, FirstPercentSignBeginsTheFormat) {
    EXPECT_EQ(Label("![a%.1f%% of all]"), "2.0% of all");
    EXPECT_EQ(Label("![W\\t%[50]]"), "(undefined)");
}

TEST_F(Expansion, FormatThatDoesNotFitANumberGivesTheDefaultForm) {
    for (const char* format : {"%", "%s", "%d", "%c", "%n", "%p", "%*f", "%.*f", "%1$f", "%Lf",
                               "%hf", "%f%f", "%f%n", "%f %", "%llf"}) {
        EXPECT_EQ(Label(("<![a" + std::string(format) + "]>").c_str()), "<2>") << format;
    }
}

TEST_F(Expansion, EveryConversionOfANumberFits) {
    EXPECT_EQ(Label("![a%e] ![a%E] ![a%f] ![a%F]"), "2.000000e0 2.000000E+00 2.000000 2.000000");
    EXPECT_EQ(Label("![a%g] ![a%G] ![a%a] ![a%A]"), "2 2 0x1p+1 0X1P+1");
    EXPECT_EQ(Label("![a%lf] ![a%-6.1f]|![a%# .3g]"), "2.000000 2.0   | 2.00");
    EXPECT_EQ(Label("![a%%]"), "%");
}

TEST_F(Expansion, LongResultOfAFormatIsKeptWhole) {
    EXPECT_EQ(Label("![a%.40f]|"), "2." + std::string(40, '0') + "|");
    EXPECT_EQ(Label("![a%300.1f]|"), std::string(297, ' ') + "2.0|");
}

TEST_F(Expansion, FormattedNumberHasAShortExponent) {
    EXPECT_EQ(Label("![big%.2e] ![small%.2e]"), "1.23e5 1.23e-5");
    EXPECT_EQ(Label("![small] ![small%g]"), "1.23e-05 1.23e-5");
}

TEST_F(Expansion, FormattingTidiesTheLastSmallEOfTheLabelSoFar) {
    EXPECT_EQ(Label("e+05: ![a%.1f]"), "e5: 2.0");
    EXPECT_EQ(Label("Pulse 0: ![a%.1f]"), "Pulse : 2.0");
    EXPECT_EQ(Label("Pulse 0: ![a]"), "Pulse 0: 2");
    EXPECT_EQ(Label("![a%.1f] Pulse 0"), "2.0 Pulse 0");
}
