// The IDL calls, called as an interpreter calls them: a count, and an array of pointers in which
// texts stand themselves and numbers and arrays lead to their values.
#include <climits>

#include "core/OpenSession.h"
#include "core/TarselIDL.h"
#include "experiment/Experiment.h"
#include "system/DSystem.h"

namespace {

using Function = int (*)(int, void*[]);
using Texts = std::vector<std::string>;

void* Address(const char* text) { return const_cast<char*>(text); }
template <typename T>
void* Address(T* value) {
    return value;
}

template <typename... Arguments>
int Call(Function function, Arguments... arguments) {
    void* argv[] = {Address(arguments)..., nullptr};
    return function(sizeof...(arguments), argv);
}

struct Named {
    const char* m_Name;
    Function m_Function;
    int m_Count;
    int m_FirstNumber;  ///< from this argument on they are numbers and arrays
};

const Named AllCalls[] = {
    {"InitializeTarselIDL", InitializeTarselIDL, 2, 2},
    {"CreateShotIDL", CreateShotIDL, 1, 1},
    {"SetShotIDL", SetShotIDL, 1, 1},
    {"SetScalarIDL", SetScalarIDL, 2, 1},
    {"GetScalarIDL", GetScalarIDL, 2, 1},
    {"GetWaveformInfoIDL", GetWaveformInfoIDL, 4, 1},
    {"GetWaveformIDL", GetWaveformIDL, 5, 1},
    {"SetWaveformIDL", SetWaveformIDL, 5, 1},
};

/// Arguments that fit each of the calls, and what a call may have done to them.
struct Arguments {
    Arguments() {
        for (int i = 1; i < 8; ++i)
            m_Pointers[i] = &m_Numbers[i];
    }

    bool Untouched() const {
        for (const int number : m_Numbers) {
            if (number != 7) return false;
        }
        return true;
    }

    int m_Numbers[8] = {7, 7, 7, 7, 7, 7, 7, 7};
    void* m_Pointers[8] = {Address("3")};
};

/// Calls everything with all counts but the right one.
void ExpectWrongCountsRefused() {
    for (const Named& call : AllCalls) {
        for (const int count : {INT_MIN, -1, 0, 1, 2, 3, 4, 5, 6, 7, INT_MAX}) {
            if (count == call.m_Count) continue;
            Arguments arguments;
            EXPECT_EQ(call.m_Function(count, arguments.m_Pointers), -1) << call.m_Name << count;
            EXPECT_TRUE(arguments.Untouched()) << call.m_Name << count;
        }
    }
}

struct Trace {
    float m_Start = -1;
    float m_Step = -1;
    int m_Points = -1;
    bool operator==(const Trace&) const = default;
};

const char InfoMessage[] = "Error reading waveform info for I (most likely it does not exist)\n";

class IDLSession : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(Call(InitializeTarselIDL, "/the/install", Scratch("Lab").c_str()), 0);
    }

    static std::string Shot(const std::string& name) { return Scratch("Lab/Shots/Shot" + name); }
    static std::string Log() { return ReadBytes(Scratch(".Tarsel/Log.txt")); }
};

class IDLShot : public IDLSession {
protected:
    void SetUp() override {
        IDLSession::SetUp();
        ASSERT_EQ(Call(CreateShotIDL, "7"), 0);
    }

    static int Store(const char* name, std::vector<float> samples, float start = 10,
                     float step = 0.5f) {
        int points = static_cast<int>(samples.size());
        samples.reserve(1);  // an array of no points is an array all the same
        return Call(SetWaveformIDL, name, &start, &step, &points, samples.data());
    }

    static int InfoOf(const char* name, Trace& trace) {
        return Call(GetWaveformInfoIDL, name, &trace.m_Start, &trace.m_Step, &trace.m_Points);
    }

    static int ValuesOf(const char* name, Trace base, std::vector<float>& data) {
        return Call(GetWaveformIDL, name, &base.m_Start, &base.m_Step, &base.m_Points, data.data());
    }

    static float Scalar(const char* name) {
        float value = -1;
        EXPECT_EQ(Call(GetScalarIDL, name, &value), 0);
        return value;
    }
};

const std::vector<float> Ramp = {1, 2, 4, 3};

}  // namespace

// ---- Counts and pointers

TEST(IDLCalls, OfAnotherCountBeforeTheStartTouchNothing) {
    EXPECT_EQ(PrintedBy(ExpectWrongCountsRefused), "");
    EXPECT_TRUE(Names(ScratchFolder()).empty());
    EXPECT_TRUE(GetTarselPath().IsEmpty());
}

TEST_F(IDLShot, OfAnotherCountTouchNothing) {
    const std::string log = Log();
    EXPECT_EQ(PrintedBy(ExpectWrongCountsRefused), "");
    EXPECT_EQ(Log(), log);
    EXPECT_EQ(Names(Scratch("Lab/Shots")), (Texts{"ScalarCache.ini", "Shot7"}));
    EXPECT_STREQ(Expt.GetShotName(), "7");
}

TEST_F(IDLShot, WithANullNumberOrArrayDoNothing) {
    ASSERT_EQ(Store("3", Ramp), 0);
    const std::string before = ReadBytes(Shot("7") + "/3.wvf");
    for (const Named& call : AllCalls) {
        for (int i = call.m_FirstNumber; i < call.m_Count; ++i) {
            Arguments arguments;
            arguments.m_Pointers[i] = nullptr;
            EXPECT_EQ(PrintedBy([&] {
                          EXPECT_EQ(call.m_Function(call.m_Count, arguments.m_Pointers), -1);
                      }),
                      "")
                << call.m_Name << i;
            EXPECT_TRUE(arguments.Untouched()) << call.m_Name << i;
        }
    }
    EXPECT_EQ(ReadBytes(Shot("7") + "/3.wvf"), before);
}

TEST_F(IDLShot, WithoutAnArgumentArrayDoNothing) {
    for (const Named& call : AllCalls) {
        EXPECT_EQ(call.m_Function(call.m_Count, nullptr), -1) << call.m_Name;
    }
}

TEST_F(IDLShot, NullTextCountsAsAnEmptyOne) {
    const char* null = nullptr;
    Trace trace;
    EXPECT_EQ(PrintedBy([&] { EXPECT_EQ(InfoOf(null, trace), -1); }),
              "Error reading waveform info for  (most likely it does not exist)\n");
    EXPECT_EQ(trace, (Trace{0, 1, 0}));
    EXPECT_EQ(Store(null, Ramp), 0);
    EXPECT_EQ(Scalar(null), Scalar(""));
    float value = 3;
    EXPECT_EQ(Call(SetScalarIDL, null, &value), 0);
}

// ---- The start

TEST(IDLStart, OpensTheExperimentAndStartsALog) {
    SetNotify(nullptr);
    EXPECT_EQ(PrintedBy([] {
                  EXPECT_EQ(Call(InitializeTarselIDL, "/the/install", Scratch("Lab").c_str()), 0);
              }),
              "");
    EXPECT_STREQ(GetTarselPath(), "/the/install");
    EXPECT_EQ(Text(Expt.GetExperimentFolder()), Scratch("Lab"));
    DStringArray lines;
    lines.split(DString(ReadBytes(Scratch(".Tarsel/Log.txt")).c_str()), "\r\n");
    ASSERT_GE(lines.Count(), 4);
    const Texts beginnings = {"Log initialized at ", "Tarsel running on ",
                              "Tarselpath is /the/install by ", "Initialized by IDL at "};
    for (int i = 0; i < 4; ++i) {
        const std::string& beginning = beginnings[static_cast<size_t>(i)];
        EXPECT_EQ(Text(lines[i]).substr(0, beginning.size()), beginning);
    }
}

TEST_F(IDLSession, StartedAgainWithTheSameFoldersStartsAnew) {
    WriteBytes(Scratch(".Tarsel/Log.txt"), "an old line\r\n");
    RecordingSink sink;
    Logging = true;
    ASSERT_EQ(Call(InitializeTarselIDL, "/the/install", Scratch("Lab").c_str()), 0);
    EXPECT_FALSE(Logging);
    EXPECT_EQ(Log().find("Log initialized at "), 0u);
    EXPECT_EQ(Log().find("an old line"), std::string::npos);
    EXPECT_EQ(PrintedBy([] { Message("spoken"); }), "spoken\n") << "the sink is that of the calls";
    EXPECT_TRUE(sink.m_Entries.empty());
}

TEST_F(IDLSession, StartDoesNotLookAtTheLoggingMark) {
    ASSERT_EQ(Call(InitializeTarselIDL, "/the/install$L", Scratch("Lab").c_str()), 0);
    EXPECT_STREQ(GetTarselPath(), "/the/install$L");
    EXPECT_FALSE(Logging);
}

TEST_F(IDLSession, StartIsNoneOfACHost) {
    SetExperimentC(Scratch("Other").c_str());
    EXPECT_EQ(Text(Expt.GetExperimentFolder()), Scratch("Lab"));
    EXPECT_FALSE(Exists(Scratch("Other")));
}

// ---- Shots

TEST_F(IDLSession, ShotIsMadeStampedAndSelected) {
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(Call(CreateShotIDL, "7"), 0); }), "");
    EXPECT_STREQ(Expt.GetShotName(), "7");
    EXPECT_FALSE(Expt.GetShotData("Date").IsEmpty());
}

TEST_F(IDLShot, ShotThatExistsIsRefusedWithAMessage) {
    ASSERT_EQ(Call(CreateShotIDL, "8"), 0);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(Call(CreateShotIDL, "7"), -1); }),
              "Error creating shot (most likely it already exists and name did not have *)\n");
    EXPECT_STREQ(Expt.GetShotName(), "8");
}

TEST_F(IDLShot, ShotThatIsTakenOverIsStampedAnew) {
    Expt.SetShotData("Date", "long ago");
    EXPECT_EQ(Call(CreateShotIDL, "*7"), 0);
    EXPECT_STRNE(Expt.GetShotData("Date"), "long ago");
    Expt.SetShotData("Date", "long ago");
    EXPECT_EQ(Call(CreateShotIDL, "7\\I"), 0);
    EXPECT_STRNE(Expt.GetShotData("Date"), "long ago");
}

TEST_F(IDLShot, StarAloneIsNotTheCurrentFolder) {
    EXPECT_EQ(Call(CreateShotIDL, "*"), 0);
    EXPECT_TRUE(Expt.GetShotName().IsEmpty());
    EXPECT_TRUE(Exists(Shot("")));
}

TEST_F(IDLShot, NameGivenToCreateShotStaysAsItWas) {
    char name[] = "*9";
    EXPECT_EQ(Call(CreateShotIDL, name), 0);
    EXPECT_STREQ(name, "*9");
}

TEST_F(IDLShot, SelectingAShot) {
    ASSERT_EQ(Call(CreateShotIDL, "8"), 0);
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(Call(SetShotIDL, "7"), 0); }), "");
    EXPECT_STREQ(Expt.GetShotName(), "7");
}

TEST_F(IDLShot, SelectingAMissingShotIsToldByAMessage) {
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(Call(SetShotIDL, "99"), -1); }),
              "Error setting shot (most likely it does not exist)\n");
}

TEST_F(IDLShot, NobodyIsToldOfAShotButThroughTheCCalls) {
    class Listener final : public QNotify {
    public:
        void ShotChanged(DString, int, int, int) override { m_Heard = true; }
        bool m_Heard = false;
    };
    Listener listener;
    SetQNotify(&listener);
    EXPECT_EQ(Call(CreateShotIDL, "8"), 0);
    EXPECT_EQ(Call(SetShotIDL, "7"), 0);
    EXPECT_FALSE(listener.m_Heard);
    EXPECT_EQ(SetShotC("8"), 1);
    EXPECT_TRUE(listener.m_Heard);
    SetQNotify(nullptr);
}

// ---- Scalars

TEST_F(IDLShot, ScalarIsSetAndRead) {
    float value = 2.5f;
    EXPECT_EQ(Call(SetScalarIDL, "Charge", &value), 0);
    EXPECT_STREQ(Expt.GetShotData("Charge"), "2.5");
    EXPECT_EQ(Scalar("![Charge]*2"), 5);
}

TEST_F(IDLShot, ScalarThatCannotBeEvaluatedIsStillASuccess) {
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(Scalar("Absent"), -DFMax); }), "");
}

// ---- Traces

TEST_F(IDLShot, TraceIsStoredAndRead) {
    EXPECT_EQ(Store("I", Ramp), 0);
    Trace trace;
    EXPECT_EQ(PrintedBy([&] { EXPECT_EQ(InfoOf("I", trace), 0); }), "");
    EXPECT_EQ(trace, (Trace{10, 0.5f, 4}));
    std::vector<float> data(4, -7.0f);
    EXPECT_EQ(ValuesOf("I", trace, data), 0);
    EXPECT_EQ(data, Ramp);
    EXPECT_EQ(Scalar("I\\mx*2"), 8);
}

TEST_F(IDLShot, TraceIsGivenOnTheCallersTimeBase) {
    ASSERT_EQ(Store("I", Ramp), 0);
    std::vector<float> data(7, -7.0f);
    EXPECT_EQ(ValuesOf("I", {9.75f, 0.25f, 6}, data), 0);
    EXPECT_EQ(data, (std::vector<float>{0, 1, 1.5f, 2, 3, 4, -7}));
}

TEST_F(IDLShot, TraceOfNoOrFewerPointsIsASuccessAndTouchesNothing) {
    ASSERT_EQ(Store("I", Ramp), 0);
    for (const int points : {0, -1, INT_MIN}) {
        std::vector<float> data(2, -7.0f);
        EXPECT_EQ(ValuesOf("I", {10, 0.5f, points}, data), 0);
        EXPECT_EQ(data, std::vector<float>(2, -7.0f));
    }
}

TEST_F(IDLShot, InfoOfAMissingTraceIsToldByAMessageAndWrittenAllTheSame) {
    Trace trace;
    EXPECT_EQ(PrintedBy([&] { EXPECT_EQ(InfoOf("I", trace), -1); }), InfoMessage);
    EXPECT_EQ(trace, (Trace{0, 1, 0}));
}

TEST_F(IDLShot, InfoOfATraceWithoutPointsFailsAndGivesItsTimeBase) {
    ASSERT_EQ(Store("I", {}), 0);
    Trace trace;
    EXPECT_EQ(PrintedBy([&] { EXPECT_EQ(InfoOf("I", trace), -1); }), InfoMessage);
    EXPECT_EQ(trace, (Trace{10, 0.5f, 0}));
}

TEST_F(IDLShot, MissingOrEmptyTraceIsToldByTheSameMessageAndLeavesTheArray) {
    const std::vector<float> untouched(2, -7.0f);
    std::vector<float> data = untouched;
    EXPECT_EQ(PrintedBy([&] { EXPECT_EQ(ValuesOf("I", {0, 1, 2}, data), -1); }), InfoMessage);
    ASSERT_EQ(Store("I", {}), 0);
    EXPECT_EQ(PrintedBy([&] { EXPECT_EQ(ValuesOf("I", {0, 1, 2}, data), -1); }), InfoMessage);
    EXPECT_EQ(data, untouched);
}

TEST_F(IDLShot, StoringSucceedsWhateverHappensToTheFile) {
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(Store("99\\I", Ramp), 0); }), "");
    EXPECT_EQ(Names(Shot("7")), Texts{"Scalars.ini"});
    MakeFolder(Shot("7") + "/I.wvf");
    EXPECT_EQ(Store("I", Ramp), 0);
}

TEST_F(IDLShot, StoringLeavesTheCallersValuesAlone) {
    float start = 10;
    float step = 0.5f;
    int points = 4;
    std::vector<float> samples = Ramp;
    EXPECT_EQ(Call(SetWaveformIDL, "I", &start, &step, &points, samples.data()), 0);
    EXPECT_EQ((Trace{start, step, points}), (Trace{10, 0.5f, 4}));
    EXPECT_EQ(samples, Ramp);
}
