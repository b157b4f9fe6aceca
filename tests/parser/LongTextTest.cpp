// Very long expressions and captions: the stack that they take doesn't grow with them, and the time
// no faster than they do.
#include <pthread.h>

#include <functional>
#include <limits>
#include <string>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/ShotFixture.h"
#include "support/Support.h"

namespace {

// The sanitizer's own strstr and strcasecmp walk to the end of the text at each call, so what is
// linear without it isn't there.
#ifdef __SANITIZE_ADDRESS__
constexpr int Many = 10'000;
constexpr int Million = 50'000;
#else
constexpr int Many = 100'000;
constexpr int Million = 1'000'000;
#endif

std::string Repeated(const std::string& piece, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += piece;
    return text;
}

// Runs in a thread with so little stack that a call for each piece of a long text wouldn't fit.
// What takes a step for each pair of pieces would end by the time limit of the tests.
void RunWithLittleStack(const std::function<void()>& steps) {
    constexpr size_t StackSize = 256 * 1024;
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, StackSize), 0);
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&steps)),
              0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

class LongText : public ShotTest {
protected:
    LongText() {
        SelectNewShot("7", "a=2\r\nself=self\r\nown=![own]\r\nlink=(link)+1\r\n");
        Expt.SetPauseIO(true);  // else each piece that is looked up reads the file anew
    }
    ~LongText() override { Expt.SetPauseIO(false); }

    static void ExpectValue(const std::string& text, float value) {
        RunWithLittleStack([&] {
            EXPECT_EQ(Expt.ParseInput(text.c_str(), nullptr), value) << text.substr(0, 20);
        });
    }

    static void ExpectInvalid(const std::string& text) {
        RunWithLittleStack([&] {
            EXPECT_FALSE(IsVF(Expt.ParseInput(text.c_str(), nullptr))) << text.substr(0, 20);
        });
    }
};

}  // namespace

TEST_F(LongText, ChainOfStandIns) {
    ExpectValue(Repeated("x::", Many) + "6", 6.0f);
    ExpectInvalid(Repeated("::", Many));
    ExpectInvalid(Repeated(":", Million));
}

TEST_F(LongText, ChainOfChoices) {
    ExpectValue(Repeated("x?1?", Many) + "5", 5.0f);
    ExpectValue(Repeated("1?3?", Many), 3.0f);
    ExpectInvalid(Repeated("?", Million));
}

TEST_F(LongText, NestOfParentheses) {
    ExpectValue(Repeated("(", Many) + "1" + Repeated(")", Many), 1.0f);
    ExpectValue(Repeated("bol(", Many) + "a" + Repeated(")", Many), 2.0f);
    ExpectInvalid(Repeated("sin(", Many));
    ExpectInvalid(Repeated("(", Million));
}

TEST_F(LongText, NestOfBrackets) {
    ExpectValue(Repeated("[", Many) + "a" + Repeated("]", Many), 2.0f);
    // Each of these looks for a data file.
    ExpectInvalid(Repeated("W\\vt[", Many / 10) + "1" + Repeated("]", Many / 10));
    ExpectInvalid(Repeated("[", Million));
}

TEST_F(LongText, RowOfParenthesesAndBrackets) {
    const std::string zeros = Repeated("(0)", Many);
    ExpectValue(zeros + "(4)", 4.0f);
    ExpectValue(Repeated("(a)-[a]+", Many) + "a", 2.0f);
}

TEST_F(LongText, SumProductAndPower) {
    ExpectValue(Repeated("1+", Many) + "1", static_cast<float>(Many + 1));
    ExpectValue(Repeated("1*", Many) + "a", 2.0f);
    ExpectValue(Repeated("1^", Many) + "a", 1.0f);
    ExpectInvalid(Repeated("-", Million) + "1");
}

TEST_F(LongText, NumberOfAMillionDigits) {
    ExpectInvalid(Repeated("9", Million));
    ExpectValue("0." + Repeated("0", Million) + "1", 0.0f);
    ExpectValue(Repeated("0", Million) + "7", 7.0f);
    ExpectInvalid("1e" + Repeated("9", Million));
    ExpectInvalid(Repeated("1e", Million));
}

TEST_F(LongText, MillionBlanks) {
    ExpectValue(Repeated(" ", Million) + "1", 1.0f);
    ExpectValue("1" + Repeated(" ", Million), 1.0f);
    ExpectInvalid(Repeated(" ", Million));
    ExpectInvalid("1" + Repeated(" ", Million) + "+1");
}

TEST_F(LongText, MillionMarkerBytes) {
    for (const char* marker : {"\xC9", "\xCA", "\xCB", "\xCC"}) {
        ExpectInvalid(Repeated(marker, Million));
        ExpectInvalid("1+" + Repeated(marker + std::string("^"), Many) + "1");
        ExpectInvalid(Repeated(marker + std::string("*"), Many) + "1");
    }
    ExpectInvalid(Repeated("\xC9+\xCA", Many));
}

TEST_F(LongText, MillionBackslashes) { ExpectInvalid(Repeated("\\", Million)); }

TEST_F(LongText, FieldThatRefersToItselfIsTakenOnce) {
    EXPECT_FALSE(IsVF(Expt.ParseInput("self", nullptr)));
    EXPECT_FALSE(IsVF(Expt.ParseInput("link", nullptr)));
    EXPECT_FALSE(IsVF(Expt.ParseInput("![own]", nullptr)));
    EXPECT_EQ(Text(Expt.GetExpandedString("![own]", true)), "![own]");
    EXPECT_EQ(Text(Expt.GetExpandedLabel("![own]")), "![own]");
}

TEST_F(LongText, CaptionOfManyReferences) {
    RunWithLittleStack([] {
        EXPECT_EQ(Text(Expt.GetExpandedLabel(Repeated("![a]", Many).c_str())), Repeated("2", Many));
        EXPECT_EQ(Text(Expt.GetExpandedString(Repeated("![a]", Many).c_str(), true)),
                  Repeated("2", Many));
        const std::string open = Repeated("![", Many);
        EXPECT_EQ(Text(Expt.GetExpandedLabel(open.c_str())), open);
        EXPECT_EQ(Text(Expt.GetExpandedString(open.c_str(), true)), "");
        const std::string nest = "![" + Repeated("[", Many) + "a" + Repeated("]", Many) + "]";
        EXPECT_EQ(Text(Expt.GetExpandedLabel(nest.c_str())), "2");
    });
}
