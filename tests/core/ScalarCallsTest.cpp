// The C calls of the scalars: numbers, numbers as text, and templates with expressions in braces.
#include <string.h>

#include "core/OpenSession.h"

namespace {

const std::string Failure = "Error evaluating scalar expression ";

std::string Number(const char* text, int room = 59) {
    return ResultOf([=](int* length, char* buffer) { GetScalarDataSafeC(text, length, buffer); },
                    room);
}

std::string Filled(const char* text, int room = 4000) { return Number(text, room); }

/// The shot 7 with two fields and a trace.
class ScalarCalls : public OpenShot {
protected:
    void SetUp() override {
        OpenShot::SetUp();
        SetStringDataC("Charge", "2.5");
        SetStringDataC("Gas", "argon");
        SetStringDataC("Trace", "I");
        const float samples[] = {0, 1, 4, 2};
        SetWaveformC("I", 0, 1, 4, samples);
    }
};

}  // namespace

// ---- Numbers

TEST_F(ScalarCalls, NumberIsAFieldOrAnExpression) {
    EXPECT_EQ(GetScalarDataC("Charge"), 2.5f);
    EXPECT_EQ(GetScalarDataC("Charge*2+1"), 6.0f);
    EXPECT_EQ(GetScalarDataC("I\\mx*2"), 8.0f);
    EXPECT_EQ(GetScalarDataC("![Trace]\\mx"), 4.0f);
}

TEST_F(ScalarCalls, NumberThatCannotBeEvaluatedIsTheMissingValue) {
    for (const char* text : {"Missing", "Gas", "1/0", "", static_cast<const char*>(nullptr),
                             "![Missing]", "X\\mx", "nan", "1e35"}) {
        EXPECT_EQ(GetScalarDataC(text), -DFMax) << (text ? text : "null");
    }
}

TEST(ScalarCallsWithoutShot, EvaluateArithmeticAlone) {
    EXPECT_EQ(GetScalarDataC("2+3*4"), 14.0f);
    EXPECT_EQ(GetScalarDataC("Charge"), -DFMax);
    EXPECT_EQ(Filled("a {2+3*4} b"), "a 14 b");
    SetScalarDataC("Charge", 1);
    SetScalarDataC("I\\t1", 1);
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST_F(ScalarCalls, NumberIsStoredInAFieldWithEightDigits) {
    const auto stored = [](float value) {
        SetScalarDataC("x", value);
        return ResultOf([](int* length, char* buffer) { GetStringDataC("x", length, buffer); });
    };
    EXPECT_EQ(stored(1.5f), "1.5");
    EXPECT_EQ(stored(1.0f / 3), "0.33333334");
    EXPECT_EQ(stored(-2e10f), "-2e+10");
    EXPECT_EQ(stored(0), "0");
    EXPECT_EQ(GetScalarDataC("x"), 0.0f);
}

TEST_F(ScalarCalls, NumberIsStoredInAParameterOfATrace) {
    SetScalarDataC("I\\t1", 1.25f);
    SetScalarDataC("I\\TC", 12.25f);
    EXPECT_EQ(GetScalarDataC("I\\t1"), 1.25f);
    EXPECT_EQ(GetScalarDataC("I\\tc"), 12.25f);
    EXPECT_EQ(GetScalarDataC("I\\mx"), 4.0f);
}

TEST_F(ScalarCalls, OtherKeysWithABackslashAndEmptyOnesStoreNothing) {
    const std::string trace = ReadBytes(Shot("7") + "/I.wvf");
    const std::string fields = ReadBytes(Shot("7") + "/Scalars.ini");
    for (const char* key : {"I\\t0", "I\\td", "I\\tab", "I\\x1", "7\\I\\t1", "X\\t1", "\\t1", "",
                            static_cast<const char*>(nullptr)}) {
        SetScalarDataC(key, 99);
    }
    EXPECT_EQ(ReadBytes(Shot("7") + "/I.wvf"), trace);
    EXPECT_EQ(ReadBytes(Shot("7") + "/Scalars.ini"), fields);
}

// ---- A room below 60: the number as text

TEST_F(ScalarCalls, SmallRoomGivesTheNumberAsText) {
    EXPECT_EQ(Number("Charge"), "2.5");
    EXPECT_EQ(Number("1/3"), "0.33333334");
    EXPECT_EQ(Number("2e10*1"), "2e+10");
}

TEST_F(ScalarCalls, SmallRoomGivesTheMissingValueAsTextToo) {
    EXPECT_EQ(Number("Missing"), "-3.3e+38");
    EXPECT_EQ(Number(nullptr), "-3.3e+38");
    EXPECT_EQ(Number("{Charge}"), "-3.3e+38");
}

TEST_F(ScalarCalls, SmallRoomCutsTheNumber) {
    EXPECT_EQ(Number("1/3", 4), "0.33");
    EXPECT_EQ(Number("1/3", 0), "");
    EXPECT_EQ(Number("1/3", -1), "");
    EXPECT_EQ(Number("1/3", INT_MIN), "");
}

TEST_F(ScalarCalls, RoomOf60MakesATemplateOfTheSameText) {
    EXPECT_EQ(Number("Charge", 59), "2.5");
    EXPECT_EQ(Filled("Charge", 60), "Charge");
    EXPECT_EQ(Filled("{Charge}", 60), "2.5");
}

TEST_F(ScalarCalls, MissingPointersAreNotTouched) {
    for (const int room : {10, 100}) {
        int length = room;
        GetScalarDataSafeC("{Charge}", &length, nullptr);
        EXPECT_EQ(length, 0);
    }
    char buffer[] = "xxxx";
    GetScalarDataSafeC("{Charge}", nullptr, buffer);
    EXPECT_STREQ(buffer, "xxxx");
}

// ---- Templates

TEST_F(ScalarCalls, TemplateWithoutAnOpeningBraceComesBackUnevaluated) {
    EXPECT_EQ(Filled("no braces, not even 1/0"), "no braces, not even 1/0");
    EXPECT_EQ(Filled("closing} alone}"), "closing} alone}");
    EXPECT_EQ(Filled("![Gas]"), "![Gas]");
    EXPECT_EQ(Filled(""), "");
    EXPECT_EQ(Filled(nullptr), "");
}

TEST_F(ScalarCalls, TemplateIsFilledBetweenItsBraces) {
    EXPECT_EQ(Filled("peak {![Trace]\\mx*2} A"), "peak 8 A");
    EXPECT_EQ(Filled("{1/3}"), "0.33333334");
    EXPECT_EQ(Filled("{Charge} C"), "2.5 C");
    EXPECT_EQ(Filled("Q = {Charge}"), "Q = 2.5");
}

TEST_F(ScalarCalls, TemplateKeepsAClosingBraceInFrontOfTheOpeningOne) {
    EXPECT_EQ(Filled("a} {Charge} b"), "a} 2.5 b");
}

TEST_F(ScalarCalls, TemplateWithoutAClosingBraceEvaluatesAllThatFollows) {
    EXPECT_EQ(Filled("Q = {Charge*2"), "Q = 5");
    EXPECT_EQ(Filled("Q = {Charge C"), Failure + "Charge C");
}

TEST_F(ScalarCalls, TemplateTakesASecondOpeningBraceForPartOfTheExpression) {
    EXPECT_EQ(Filled("a {{1} b"), Failure + "{1");
}

TEST_F(ScalarCalls, TemplateGoesOnFromClosingBraceToClosingBrace) {
    EXPECT_EQ(Filled("a{1}b{2}3"), "a1b{23");
    EXPECT_EQ(Filled("a{Charge}b}2}c"), "a2.5b2c");
    EXPECT_EQ(Filled("a{1}b}2}c}3"), "a1b2c3");
    EXPECT_EQ(Filled("a{x}b{y}c"), Failure + "x");
    EXPECT_EQ(Filled("a{1}b{2}c"), Failure + "c");
}

TEST_F(ScalarCalls, TemplateWithAnEmptyExpressionFails) {
    EXPECT_EQ(Filled("{}"), Failure);
    EXPECT_EQ(Filled("{"), Failure);
    EXPECT_EQ(Filled("a{1}}"), Failure);
}

TEST_F(ScalarCalls, TemplateThatFailsIsTheErrorTextAlone) {
    EXPECT_EQ(Filled("peak {Missing*2} A"), Failure + "Missing*2");
    EXPECT_EQ(Filled("{1} and }Missing} A"), Failure + "Missing");
    EXPECT_EQ(Filled("{1/0}"), Failure + "1/0");
}

TEST_F(ScalarCalls, TemplateAndItsErrorTextAreCutToTheRoom) {
    const std::string text(100, 'x');
    EXPECT_EQ(Filled((text + "{1}").c_str(), 60), text.substr(0, 60));
    EXPECT_EQ(Filled(("{" + text + "}").c_str(), 60), (Failure + text).substr(0, 60));
    EXPECT_EQ(Filled(("{" + text + "}").c_str(), 135), Failure + text);
}
