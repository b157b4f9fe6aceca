// The evaluator of expressions: numbers, fields, arithmetic, functions, choices, callbacks.
#include <math.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();

float Eval(const std::string& text, ValueCallback callback = nullptr) {
    return Expt.ParseInput(text.c_str(), callback);
}

bool IsInvalid(const std::string& text, ValueCallback callback = nullptr) {
    return !IsVF(Eval(text, callback));
}

// What is left of a value that was written into the text.
float ThroughText(double value) {
    char text[40];
    snprintf(text, sizeof text, "%.8g", static_cast<double>(static_cast<float>(value)));
    return strtof(text, nullptr);
}

// Keeps the compiler from computing functions of it by itself.
float AtRunTime(float value) {
    volatile float kept = value;
    return kept;
}

double Wide(float value) { return static_cast<double>(value); }

// ---- A host's own names

std::map<std::string, float> mKnown;
std::vector<std::string> mAsked;

bool Supply(DString const& name, float& value) {
    mAsked.push_back(Text(name));
    const auto known = mKnown.find(Text(name));
    if (known == mKnown.end()) return false;
    value = known->second;
    return true;
}

// Numbers and arithmetic, with no experiment open.
class Arithmetic : public testing::Test {
protected:
    Arithmetic() {
        mKnown.clear();
        mAsked.clear();
    }
};

// Names, with a shot selected.
class EvaluatorOfShot : public ShotTest {
protected:
    EvaluatorOfShot() {
        mKnown.clear();
        mAsked.clear();
        SelectNewShot("7",
                      "a=2\r\nb=5\r\nzero=0\r\nminus=-3\r\nFlag=True\r\nOther=yes\r\nsmall=true\r\n"
                      "a-b=10\r\n3 + 2=77\r\n5=500\r\nx1e=4\r\nae=3\r\ne=3\r\nhuge=1e40\r\n");
    }
};

}  // namespace

// ---- Numbers

TEST_F(Arithmetic, WholeTextIsANumberAsStrtodReadsIt) {
    EXPECT_EQ(Eval("42"), 42.0f);
    EXPECT_EQ(Eval("+3"), 3.0f);
    EXPECT_EQ(Eval(" -1.5e-3"), -1.5e-3f);
    EXPECT_EQ(Eval("0x10"), 16.0f);
}

TEST_F(Arithmetic, WholeNumberThatIsNoValidValueComesBackAsItIs) {
    EXPECT_EQ(Eval("1e40"), Infinity);
    EXPECT_EQ(Eval("inf"), Infinity);
    EXPECT_TRUE(isnan(Eval("nan")));
}

TEST_F(Arithmetic, InvalidValueIsNegativeInfinity) {
    EXPECT_EQ(Eval(""), -Infinity);
    EXPECT_EQ(Eval("   "), -Infinity);
    EXPECT_EQ(Eval("name"), -Infinity);
    EXPECT_EQ(Eval("1/0"), -Infinity);
    EXPECT_EQ(Eval("(name)"), -Infinity);
    EXPECT_EQ(Eval("2*[name]"), -Infinity);
    EXPECT_EQ(Eval("2*[1e40]"), -Infinity);
    EXPECT_EQ(Eval("0?1"), -Infinity);
    EXPECT_EQ(Eval("a\\mx"), -Infinity);
}

// ---- Sums, products, powers

TEST_F(Arithmetic, BindsFromSumsToPowers) {
    EXPECT_EQ(Eval("2+3*4"), 14.0f);
    EXPECT_EQ(Eval("2*3^2"), 18.0f);
    EXPECT_EQ(Eval("10-4-3"), 3.0f);
    EXPECT_EQ(Eval("12/3/2"), 2.0f);
    EXPECT_EQ(Eval("12/3*2"), 8.0f);
}

TEST_F(Arithmetic, PowersGoFromLeftToRight) { EXPECT_EQ(Eval("2^3^2"), 64.0f); }

TEST_F(Arithmetic, PowerBindsTighterThanALeadingMinus) { EXPECT_EQ(Eval("-2^2"), -4.0f); }

TEST_F(Arithmetic, SignBehindAnOperatorBelongsToTheOperand) {
    EXPECT_EQ(Eval("2*-3"), -6.0f);
    EXPECT_EQ(Eval("6/-3"), -2.0f);
    EXPECT_EQ(Eval("2^-1"), 0.5f);
    EXPECT_EQ(Eval("2--3"), 5.0f);
    EXPECT_EQ(Eval("2+-3"), -1.0f);
    EXPECT_EQ(Eval("--3+1"), 4.0f);
}

TEST_F(Arithmetic, EmptyAddendIsInvalid) {
    EXPECT_TRUE(IsInvalid("+3+2"));
    EXPECT_TRUE(IsInvalid("3++2"));
    EXPECT_TRUE(IsInvalid("3-+2"));
    EXPECT_TRUE(IsInvalid("3+"));
    EXPECT_TRUE(IsInvalid("2**3"));
}

TEST_F(Arithmetic, BlankHidesTheByteBehindIt) {
    EXPECT_TRUE(IsInvalid("3 - 2"));
    EXPECT_TRUE(IsInvalid("3 + 2"));
    EXPECT_TRUE(IsInvalid("3 -2"));
}

TEST_F(Arithmetic, BlankBeforeANumberIsPartOfIt) {
    EXPECT_EQ(Eval("3- 2"), 1.0f);
    EXPECT_EQ(Eval("3+ 2"), 5.0f);
    EXPECT_EQ(Eval("3* 2"), 6.0f);
    EXPECT_EQ(Eval("2^ 3"), 8.0f);
}

TEST_F(Arithmetic, BlankBehindAnOperandIsPartOfItToo) {
    EXPECT_TRUE(IsInvalid("3 * 2"));
    EXPECT_TRUE(IsInvalid("3 *2"));
    EXPECT_TRUE(IsInvalid("3 ^2"));
}

TEST_F(Arithmetic, SignOfAnExponentIsNoOperator) {
    EXPECT_EQ(Eval("1e-3+1"), 1.001f);
    EXPECT_EQ(Eval("1+2E-3"), 1.002f);
    EXPECT_EQ(Eval("1.e+2-1"), 99.0f);
}

TEST_F(Arithmetic, DivisionByZeroIsInvalidOnceItIsAddedUp) {
    EXPECT_TRUE(IsInvalid("1/0"));
    EXPECT_TRUE(IsInvalid("1+0/0"));
    EXPECT_EQ(Eval("1/0::2"), 2.0f);
    EXPECT_EQ(Expt.ParseFactor("1/0", nullptr), Infinity);
}

TEST_F(Arithmetic, SumItselfIsNotTested) { EXPECT_EQ(Eval("9e34+9e34"), 9e34f + 9e34f); }

TEST_F(Arithmetic, SumsAndProductsAreOfSinglePrecision) {
    EXPECT_EQ(Eval("16777216+1"), 16777216.0f);
    EXPECT_EQ(Eval("0.1*3"), 0.1f * 3.0f);
    EXPECT_EQ(Eval("1/3"), 1.0f / 3.0f);
}

TEST_F(Arithmetic, PowersAreComputedInDoublePrecision) {
    EXPECT_EQ(Eval("0.0057^3"), static_cast<float>(pow(Wide(0.0057f), 3.0)));
    EXPECT_EQ(Eval("1.1188^1.5"), static_cast<float>(pow(Wide(1.1188f), 1.5)));
    EXPECT_TRUE(IsInvalid("(0-8)^(1/3)"));
}

TEST_F(Arithmetic, FirstOperandOfAPowerIsNotTested) {
    EXPECT_EQ(Eval("missing^0"), 1.0f);
    EXPECT_TRUE(IsInvalid("missing^2"));
    EXPECT_TRUE(IsInvalid("2^missing"));
    EXPECT_TRUE(IsInvalid("2^missing^0"));
}

TEST_F(Arithmetic, LevelsCanBeCalledByThemselves) {
    EXPECT_EQ(Expt.ParseAddend("1+2*3", nullptr), 7.0f);
    EXPECT_EQ(Expt.ParseFactor("2*3^2", nullptr), 18.0f);
    EXPECT_EQ(Expt.ParsePower("2^3", nullptr), 8.0f);
    EXPECT_EQ(Expt.ParseSingle(" 2", nullptr), 2.0f);
    EXPECT_EQ(Expt.ParseSingle("1e40", nullptr), Infinity);
}

// ---- Parentheses

TEST_F(Arithmetic, ParenthesesComeFirst) {
    EXPECT_EQ(Eval("(2+3)*4"), 20.0f);
    EXPECT_EQ(Eval("((1+2)*(3+4))"), 21.0f);
    EXPECT_EQ(Eval("3-(0-2)"), 5.0f);
    EXPECT_EQ(Eval("( 1 )+1"), 2.0f);
}

TEST_F(Arithmetic, ParenthesesAreReplacedInPlace) {
    EXPECT_EQ(Eval("12(3)"), 123.0f);
    EXPECT_EQ(Eval("1(2)"), 12.0f);
    EXPECT_EQ(Eval("(1)(2)"), 12.0f);
    EXPECT_EQ(Eval("(1)e(0-3)"), 0.001f);
}

TEST_F(Arithmetic, NegativeBaseIsNotTakenForADifference) {
    EXPECT_EQ(Eval("(0-2)^2"), 4.0f);
    EXPECT_EQ(Eval("-(0-2)^2"), -4.0f);
    EXPECT_EQ(Eval("4-(0-2)^2"), 0.0f);
    EXPECT_EQ(Eval("3*(0-2)^2"), 12.0f);
    EXPECT_EQ(Eval("12/(0-2)^2"), 3.0f);
    EXPECT_EQ(Eval("(0-2)^2^2"), 16.0f);
    EXPECT_EQ(Eval("((0-2)^3)+1"), -7.0f);
    EXPECT_EQ(Eval("(0-0.00002)^2"), static_cast<float>(pow(Wide(-2e-5f), 2.0)));
}

TEST_F(Arithmetic, ValuesInTheTextHaveEightDigits) {
    EXPECT_EQ(Eval("(1/3)*3"), 0.33333334f * 3.0f);
    EXPECT_EQ(Eval("1000.00006*1"), 1000.00006103515625f);
    EXPECT_EQ(Eval("(1000.00006)*1"), 1000.0001220703125f);
    EXPECT_EQ(Eval("[1000.00006]*1"), 1000.0001220703125f);
}

TEST_F(Arithmetic, UnmatchedParenthesisSendsAMessage) {
    RecordingSink sink;
    EXPECT_EQ(Eval("2*(3"), -Infinity);
    EXPECT_EQ(Eval(")("), -Infinity);
    const RecordingSink::Entry message = {
        NT_Message, 0, "Expression cannot be evaluated because of unmatched parenthesis"};
    EXPECT_EQ(sink.m_Entries, (std::vector<RecordingSink::Entry>{message, message}));
}

TEST_F(Arithmetic, UnmatchedBracketSendsAMessage) {
    RecordingSink sink;
    EXPECT_EQ(Eval("2*[3"), -Infinity);
    EXPECT_EQ(Eval("]["), -Infinity);
    const RecordingSink::Entry message = {
        NT_Message, 0, "Expression cannot be evaluated because of unmatched bracket"};
    EXPECT_EQ(sink.m_Entries, (std::vector<RecordingSink::Entry>{message, message}));
}

TEST_F(Arithmetic, LoneClosingBracketIsPartOfAnOperandAndSendsNothing) {
    RecordingSink sink;
    EXPECT_TRUE(IsInvalid("3)"));
    EXPECT_TRUE(IsInvalid("3]"));
    EXPECT_TRUE(sink.m_Entries.empty());
}

// ---- Functions

TEST_F(Arithmetic, FunctionsInDoublePrecisionAreRoundedToSingle) {
    EXPECT_EQ(Eval("sin(0.0862)"), ThroughText(sin(Wide(0.0862f))));
    EXPECT_EQ(Eval("cos(0.2564)"), ThroughText(cos(Wide(0.2564f))));
    EXPECT_EQ(Eval("log(0.1026)"), ThroughText(log(Wide(0.1026f))));
    EXPECT_EQ(Eval("exp(0.1921)"), ThroughText(exp(Wide(0.1921f))));
}

TEST_F(Arithmetic, TangentAndArctangentAreOfSinglePrecision) {
    EXPECT_EQ(Eval("tan(0.1133)"), ThroughText(Wide(tanf(AtRunTime(0.1133f)))));
    EXPECT_EQ(Eval("atn(0.0724)"), ThroughText(Wide(atanf(AtRunTime(0.0724f)))));
}

TEST_F(Arithmetic, FunctionsHaveTheirUsualMeaning) {
    EXPECT_EQ(Eval("sin(1)"), 0.84147096f);
    EXPECT_EQ(Eval("cos(1)"), 0.54030228f);
    EXPECT_EQ(Eval("tan(1)"), 1.5574077f);
    EXPECT_EQ(Eval("log(2)"), 0.69314718f);
    EXPECT_EQ(Eval("exp(1)"), 2.7182817f);
    EXPECT_EQ(Eval("atn(1)"), 0.78539819f);
    EXPECT_EQ(Eval("bol(7)"), 7.0f);
    EXPECT_EQ(Eval("2*sin(0)"), 0.0f);
    EXPECT_EQ(Eval("1+exp(sin(0))"), 2.0f);
}

TEST_F(Arithmetic, FunctionNamesAreReadInAnyCase) {
    EXPECT_EQ(Eval("COS(0)"), 1.0f);
    EXPECT_EQ(Eval("Exp(0)+eXP(0)"), 2.0f);
}

TEST_F(Arithmetic, LongerWordMayEndInAFunctionsName) { EXPECT_EQ(Eval("12cos(0)"), 121.0f); }

TEST_F(Arithmetic, NegativeFunctionValueCanBeABase) {
    const float base = ThroughText(sin(Wide(-1.0f)));
    EXPECT_EQ(Eval("sin(0-1)^2"), static_cast<float>(pow(Wide(base), 2.0)));
}

TEST_F(Arithmetic, FunctionWithoutAFiniteValueIsInvalid) {
    EXPECT_EQ(Eval("log(0)"), -Infinity);
    EXPECT_TRUE(isnan(Eval("log(0-1)")));
    EXPECT_EQ(Eval("exp(1000)"), Infinity);
    EXPECT_EQ(Eval("1+log(0)"), -Infinity);
    EXPECT_TRUE(IsInvalid("log(0)^2"));
}

TEST_F(Arithmetic, FunctionOfAnInvalidValueIsInvalidButForBol) {
    EXPECT_TRUE(IsInvalid("sin(name)"));
    EXPECT_EQ(Eval("bol(name)"), 0.0f);
    EXPECT_EQ(Eval("BOL(1/0)+1"), 1.0f);
    EXPECT_TRUE(IsInvalid("ol(name)"));
}

// ---- Choices

TEST_F(Arithmetic, ConditionAboveZeroTakesTheFirstPart) {
    EXPECT_EQ(Eval("1?2?3"), 2.0f);
    EXPECT_EQ(Eval("0.001?2?3"), 2.0f);
    EXPECT_EQ(Eval("0?2?3"), 3.0f);
    EXPECT_EQ(Eval("-1?2?3"), 3.0f);
    EXPECT_EQ(Eval("name?2?3"), 3.0f);
    EXPECT_EQ(Eval("1/0?2?3"), 3.0f);
    EXPECT_EQ(Eval("?2?3"), 3.0f);
}

TEST_F(Arithmetic, PartsOfAChoiceAreExpressions) {
    EXPECT_EQ(Eval("2-1?2*3? 4+1 "), 6.0f);
    EXPECT_EQ(Eval("1-2?2*3? 4+1 "), 5.0f);
}

TEST_F(Arithmetic, SecondPartMayHoldFurtherChoices) {
    EXPECT_EQ(Eval("0?1?1?2?3"), 2.0f);
    EXPECT_EQ(Eval("0?1?0?2?3"), 3.0f);
}

TEST_F(Arithmetic, MissingPartOfAChoiceIsInvalid) {
    EXPECT_EQ(Eval("1?2"), 2.0f);
    EXPECT_TRUE(IsInvalid("0?2"));
    EXPECT_TRUE(IsInvalid("0?2?"));
    EXPECT_TRUE(IsInvalid("1??2"));
}

TEST_F(Arithmetic, SecondPartStandsInForAnInvalidFirst) {
    EXPECT_EQ(Eval("1::2"), 1.0f);
    EXPECT_EQ(Eval("name::2+1"), 3.0f);
    EXPECT_EQ(Eval("name::1/0::4"), 4.0f);
    EXPECT_TRUE(IsInvalid("name::"));
    EXPECT_EQ(Eval("::2"), 2.0f);
}

TEST_F(Arithmetic, ChoiceBindsLooserThanSecondChoice) {
    EXPECT_EQ(Eval("name::1?name::5?7"), 5.0f);
    EXPECT_EQ(Eval("name::0?5?name::7"), 7.0f);
}

TEST_F(Arithmetic, ParenthesesAreResolvedInPartsThatAreNotTaken) {
    EXPECT_TRUE(IsInvalid("1?2?(name)"));
    EXPECT_TRUE(IsInvalid("1::(name)"));
    EXPECT_TRUE(IsInvalid("1::2*[name]"));
}

// ---- A host's own names

TEST_F(Arithmetic, CallbackAnswersNamesWithoutAShot) {
    mKnown = {{"p", 3.0f}, {"q", 4.0f}};
    EXPECT_EQ(Eval("p*q+1", Supply), 13.0f);
    EXPECT_EQ(mAsked, (std::vector<std::string>{"p", "q"}));
}

TEST_F(Arithmetic, CallbackIsAskedForWholeObjectTerms) {
    mKnown = {{"W\\mx", 3.0f}};
    EXPECT_EQ(Eval("W\\mx*2", Supply), 6.0f);
}

TEST_F(Arithmetic, InvalidValueOfACallbackIsTheInvalidValue) {
    mKnown = {{"p", std::numeric_limits<float>::quiet_NaN()}, {"q", 1e35f}};
    EXPECT_EQ(Eval("p", Supply), -Infinity);
    EXPECT_EQ(Eval("q", Supply), -Infinity);
    EXPECT_EQ(Eval("[q]", Supply), -Infinity);
}

TEST_F(Arithmetic, PartThatIsNotTakenIsNotEvaluated) {
    EXPECT_EQ(Eval("1?2?p", Supply), 2.0f);
    EXPECT_EQ(Eval("0?p?3", Supply), 3.0f);
    EXPECT_EQ(Eval("1::p", Supply), 1.0f);
    EXPECT_TRUE(mAsked.empty());
}

TEST_F(Arithmetic, FirstChoiceIsEvaluatedOnce) {
    mKnown = {{"p", 3.0f}};
    EXPECT_EQ(Eval("p*2::q", Supply), 6.0f);
    EXPECT_EQ(mAsked, (std::vector<std::string>{"p"}));
}

TEST_F(Arithmetic, NothingIsEvaluatedBehindAnInvalidOperand) {
    EXPECT_TRUE(IsInvalid("p*q+r", Supply));
    EXPECT_EQ(mAsked, (std::vector<std::string>{"p"}));
}

TEST_F(Arithmetic, OnlyWholeExpressionsAreTrimmed) {
    mKnown = {{"p", 3.0f}};
    EXPECT_EQ(Eval("  p  ", Supply), 3.0f);
    EXPECT_EQ(Eval("2*( p )", Supply), 6.0f);
    EXPECT_EQ(Eval("0? 1 ? p ", Supply), 3.0f);
    EXPECT_TRUE(IsInvalid("2* p", Supply));
    EXPECT_TRUE(IsInvalid("2*[ p ]", Supply));
    EXPECT_TRUE(IsInvalid("[ p ]", Supply));
}

TEST_F(Arithmetic, BracketsTakeTheirContentsAsOneName) {
    mKnown = {{"p-q", 3.0f}, {"(x)", 5.0f}, {"1?2", 7.0f}};
    EXPECT_EQ(Eval("[p-q]*2", Supply), 6.0f);
    EXPECT_EQ(Eval("[(x)]", Supply), 5.0f);
    EXPECT_EQ(Eval("2*[1?2]", Supply), 14.0f);
    EXPECT_TRUE(IsInvalid("[p+1]", Supply));
}

TEST_F(Arithmetic, WholeBracketMayGiveAnyValue) { EXPECT_EQ(Eval("[1e40]"), Infinity); }

TEST_F(Arithmetic, BracketsAreReplacedFromTheLastOneOn) {
    mKnown = {{"p", 1.0f}, {"q", 2.0f}, {"n2", 9.0f}};
    EXPECT_EQ(Eval("[p]+[q]", Supply), 3.0f);
    EXPECT_EQ(mAsked, (std::vector<std::string>{"q", "p"}));
    EXPECT_EQ(Eval("1+[n[q]]", Supply), 10.0f);
}

TEST_F(Arithmetic, BracketBehindAnOperatorIsNoArgument) {
    mKnown = {{"W\\1", 30.0f}, {"p", 5.0f}, {"W\\15", 7.0f}};
    EXPECT_EQ(Eval("W\\1+[p]", Supply), 35.0f);
    EXPECT_EQ(Eval("W\\1([p])", Supply), 7.0f);
}

TEST_F(Arithmetic, ArgumentOfAParameterIsAnExpression) {
    mKnown = {{"W\\vt\xC9-1\xCA", 8.0f}, {"p", 2.0f}};
    EXPECT_EQ(Eval("W\\vt[1-p]*3-1", Supply), 23.0f);
    EXPECT_EQ(Eval("3^W\\vt[1-p]", Supply), 6561.0f);
    EXPECT_EQ(Eval("1--W\\vt[(p-3)*1]", Supply), -Infinity);
    EXPECT_EQ(mAsked.back(), "-W\\vt\xC9-1\xCA");
}

// ---- Markers and bounds

TEST_F(Arithmetic, ExponentHidesAMarker) {
    EXPECT_TRUE(IsInvalid("2e(0-3)^2", Supply));
    EXPECT_EQ(mAsked, (std::vector<std::string>{"2e\xCB"}));
}

TEST_F(Arithmetic, TextThatHoldsMarkersEndsTheScan) {
    for (const char* marker : {"\xC9", "\xCA", "\xCB", "\xCC"}) {
        for (const char* frame : {"", "1+", "2*", "2^", "a^", "1e", "1 ", "+", "x\\vt"}) {
            EXPECT_TRUE(IsInvalid(std::string(frame) + marker)) << frame;
            EXPECT_TRUE(IsInvalid(marker + std::string(frame) + marker)) << frame;
        }
    }
}

TEST_F(Arithmetic, TextCanEndInAnyOperator) {
    for (const char* end : {" +", "+", "-", "*", "/", "^", "1e", "1E", "?", "::", ":", "\\"}) {
        EXPECT_TRUE(IsInvalid("x" + std::string(end))) << end;
    }
}

// ---- Fields

TEST_F(EvaluatorOfShot, NameIsTheFieldOfTheShot) {
    EXPECT_EQ(Eval("a"), 2.0f);
    EXPECT_EQ(Eval(" A "), 2.0f);
    EXPECT_EQ(Eval("a*b+minus"), 7.0f);
    EXPECT_EQ(Eval("a+b^2"), 27.0f);
    EXPECT_EQ(Eval("Shot+1"), 8.0f);
}

TEST_F(EvaluatorOfShot, FieldThatIsNoNumberIsInvalid) {
    EXPECT_TRUE(IsInvalid("Other"));
    EXPECT_TRUE(IsInvalid("missing"));
    EXPECT_TRUE(IsInvalid("Flag"));
    EXPECT_TRUE(IsInvalid("1+Other"));
}

TEST_F(EvaluatorOfShot, FieldNamedLikeTheWholeTextWins) {
    EXPECT_EQ(Eval("a-b"), 10.0f);
    EXPECT_EQ(Eval("3 + 2"), 77.0f);
    EXPECT_EQ(Eval("a-b+0"), -3.0f);
    EXPECT_EQ(Eval("(a-b)+0"), 10.0f);
}

TEST_F(EvaluatorOfShot, NumberWinsOverAFieldOfItsName) { EXPECT_EQ(Eval("5"), 5.0f); }

TEST_F(EvaluatorOfShot, BracketsReachFieldsWithOperatorsInTheirNames) {
    EXPECT_EQ(Eval("[a-b]*2"), 20.0f);
    EXPECT_EQ(Eval("2*[3 + 2]"), 154.0f);
}

TEST_F(EvaluatorOfShot, NegativeFieldCanBeABase) {
    EXPECT_EQ(Eval("minus^2"), 9.0f);
    EXPECT_EQ(Eval("(minus)^2"), 9.0f);
    EXPECT_EQ(Eval("[minus]^2"), -9.0f);
}

TEST_F(EvaluatorOfShot, NumberInAFieldComesBackAsItIs) {
    EXPECT_EQ(Eval("huge"), Infinity);
    EXPECT_EQ(Eval("huge+1"), -Infinity);
}

TEST_F(EvaluatorOfShot, DigitAndEInANameHideTheSignBehindThem) {
    EXPECT_TRUE(IsInvalid("x1e-3"));
    EXPECT_EQ(Eval("x1e*1-3"), 1.0f);
    EXPECT_EQ(Eval("ae-1"), 2.0f);
    EXPECT_EQ(Eval("e-1"), 2.0f);
}

TEST_F(EvaluatorOfShot, BolReadsTruthAndNumbers) {
    EXPECT_EQ(Eval("bol(Flag)"), 1.0f);
    EXPECT_EQ(Eval("bol(small)"), 1.0f);
    EXPECT_EQ(Eval("bol(Other)"), 0.0f);
    EXPECT_EQ(Eval("bol(missing)"), 0.0f);
    EXPECT_EQ(Eval("bol(b)"), 5.0f);
    EXPECT_EQ(Eval("bol(Flag)*4"), 4.0f);
    EXPECT_TRUE(IsInvalid("bal(Flag)"));
}

TEST_F(EvaluatorOfShot, ConditionMayBeATruth) {
    EXPECT_EQ(Eval("Flag?1?2"), 1.0f);
    EXPECT_EQ(Eval("small?1?2"), 1.0f);
    EXPECT_EQ(Eval("Other?1?2"), 2.0f);
    EXPECT_EQ(Eval("a?b?zero"), 5.0f);
    EXPECT_EQ(Eval("zero?b?a"), 2.0f);
    EXPECT_EQ(Eval("minus?b?a"), 2.0f);
}

TEST_F(EvaluatorOfShot, SecondChoiceStandsInForAnEmptyFieldAndForAText) {
    EXPECT_EQ(Eval("a::b"), 2.0f);
    EXPECT_EQ(Eval("missing::b"), 5.0f);
    EXPECT_EQ(Eval("Other::b"), 5.0f);
    EXPECT_EQ(Eval("missing::none::b"), 5.0f);
}

TEST_F(EvaluatorOfShot, FieldBehindAChoiceAnswersUnlessAFieldHasTheNameInFront) {
    EXPECT_EQ(Eval("a*2::b"), 5.0f);
    EXPECT_EQ(Eval("1::b"), 5.0f);
    EXPECT_EQ(Eval("a*2::b+0"), 4.0f);
    EXPECT_EQ(Eval("a*2::Other"), 4.0f);
}

TEST_F(EvaluatorOfShot, FieldsAnswerAWholeChoiceBeforeTheCallbackIsAsked) {
    mKnown = {{"missing", 9.0f}};
    EXPECT_EQ(Eval("missing::b", Supply), 5.0f);
    EXPECT_TRUE(mAsked.empty());
    EXPECT_EQ(Eval("missing::b+0", Supply), 9.0f);
}

TEST_F(EvaluatorOfShot, CallbackComesBeforeFieldsButNotBeforeTheWholeText) {
    mKnown = {{"a", 100.0f}, {"b", std::numeric_limits<float>::infinity()}};
    EXPECT_EQ(Eval("a", Supply), 2.0f);
    EXPECT_EQ(Eval("a+0", Supply), 100.0f);
    EXPECT_TRUE(IsInvalid("b+0", Supply));
}

TEST_F(EvaluatorOfShot, ArithmeticNeedsNoShotButNamesDo) {
    Expt.SetExperimentFolder(Folder().c_str());
    mKnown = {{"p", 3.0f}};
    EXPECT_EQ(Eval("2+3*4"), 14.0f);
    EXPECT_EQ(Eval("p+1", Supply), 4.0f);
    EXPECT_TRUE(IsInvalid("a"));
    EXPECT_TRUE(IsInvalid("a+1"));
}

TEST_F(EvaluatorOfShot, FieldsAreReadWhereverTheyChanged) {
    EXPECT_EQ(Eval("a"), 2.0f);
    WriteBytes(ShotFolder("7") + "/Scalars.ini", "[Fields]\r\na=3\r\n");
    EXPECT_EQ(Eval("a"), 3.0f);
}

// ---- Calls from within

namespace {

bool EvaluateWithin(DString const& name, float& value) {
    if (name != "twice") return false;
    value = Expt.ParseInput("((a+1)*[b])^2", EvaluateWithin);
    return true;
}

bool SelectShotWithin(DString const& name, float& value) {
    if (name != "other") return false;
    value = 0.0f;
    return Expt.SetShot("8", 0);
}

/// Evaluates and moves everything that a message can find.
class MeddlingSink : public DNotify {
public:
    MeddlingSink() { SetNotify(this); }
    ~MeddlingSink() override { SetNotify(nullptr); }
    void Notify(NotifyType, int, const DString&) override {
        m_Value = Expt.ParseInput("(a+1)*2?[b]?0", nullptr);
        Expt.ClearDataPtrs();
        Expt.SetShot("8", 0);
    }
    float m_Value = 0.0f;
};

}  // namespace

TEST_F(EvaluatorOfShot, CallbackMayEvaluateAnotherExpression) {
    EXPECT_EQ(Eval("2*twice-(twice-1)", EvaluateWithin), 226.0f);
}

TEST_F(EvaluatorOfShot, CallbackMaySelectAnotherShot) {
    MakeShot("8", "a=20\r\n");
    EXPECT_EQ(Eval("a+other+a", SelectShotWithin), 22.0f);
}

TEST_F(EvaluatorOfShot, SinkMayEvaluateAndSelectAnotherShot) {
    MakeShot("8", "a=20\r\n");
    MeddlingSink sink;
    EXPECT_TRUE(IsInvalid("a*(1"));
    EXPECT_EQ(sink.m_Value, 5.0f);
    EXPECT_EQ(Eval("a"), 20.0f);
}
