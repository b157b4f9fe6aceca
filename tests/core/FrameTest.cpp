// The frame: constants, flags and global objects as a host finds them, the sinks, and valid
// numbers.
#include <fcntl.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <limits>

#include "core/CFunctions.h"
#include "experiment/Experiment.h"
#include "support/Support.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "types/DStringArray.h"

namespace {

const std::vector<int> NotificationTypes = {NT_Display,       NT_Message, NT_Log, NT_MsgBox,
                                            NT_MacroCallback, 0,          -1,     99};

/// The function in a slot of an object's table of virtual operations.
template <typename Function>
Function* Slot(void* object, int slot) {
    void* const* table = nullptr;
    memcpy(&table, object, sizeof table);
    return reinterpret_cast<Function*>(table[slot]);
}

/// Runs `call` with standard output going straight to a file, and gives what stands in that file
/// when the call is over, whatever the stream still holds back.
template <typename Call>
std::string OnDiskAfter(Call call) {
    const std::string path = Scratch("output.txt");
    fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(file, STDOUT_FILENO);
    call();
    const std::string bytes = ReadBytes(path);
    fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    close(file);
    return bytes;
}

/// The sink of the C interface, made the current one.
class CInterfaceSink : public testing::Test {
protected:
    void SetUp() override { SetNotify(&m_Sink); }
    void TearDown() override { SetNotify(nullptr); }

    CFNotify m_Sink;
};

}  // namespace

// ---- Constants, flags and objects

TEST(Constants, HaveTheirBits) {
    EXPECT_EQ(npos, 2147483647);
    EXPECT_EQ(std::bit_cast<uint32_t>(DFMax), 0x7F7843B0u);
    EXPECT_EQ(std::bit_cast<uint32_t>(pi), 0x40490FDBu);
    EXPECT_EQ(MaxParticleBatch, 10000000);
}

TEST(Constants, LineDelimiterIsCarriageReturnAndLineFeed) {
    EXPECT_STREQ(LDelim, "\r\n");
    EXPECT_EQ(LenLD, 2);
}

TEST(Constants, EmptyTextIsThatOfTheSharedEmptyBlock) {
    EXPECT_EQ(DEmptyString, DEmpty.m_Text);
    EXPECT_STREQ(DEmptyString, "");
    EXPECT_EQ(static_cast<const char*>(DString()), DEmptyString);
}

TEST(Flags, AreOffInALoadedLibrary) {
    EXPECT_FALSE(Logging);
    EXPECT_FALSE(Silent);
    EXPECT_FALSE(PublicWrite);
    EXPECT_EQ(QNot, nullptr);
}

TEST(GlobalObjects, AreEmptyInALoadedLibrary) {
    EXPECT_EQ(SheetData.Count(), 0);
    EXPECT_TRUE(TrIni.m_FileName.IsEmpty());
    EXPECT_TRUE(Expt.GetExperimentFolder().IsEmpty());
    EXPECT_TRUE(Expt.GetExperimentName().IsEmpty());
    EXPECT_TRUE(Expt.GetShotName().IsEmpty());
    EXPECT_TRUE(Expt.GetShotFolder().IsEmpty());
}

TEST(GlobalObjects, PathsAndNameAreEmptyInALoadedLibrary) {
    EXPECT_EQ(Text(GetTarselPath()), "");
    EXPECT_EQ(Text(GetUserPath()), "");
    EXPECT_EQ(Text(GetWorkingPath()), "");
    EXPECT_EQ(Text(GetComputerNameD()), "");
}

// ---- The way of a notification

TEST(Notification, TypesHaveTheirNumbers) {
    EXPECT_EQ(NT_Display, 1);
    EXPECT_EQ(NT_Message, 2);
    EXPECT_EQ(NT_Log, 5);
    EXPECT_EQ(NT_MsgBox, 7);
    EXPECT_EQ(NT_MacroCallback, 10);
    EXPECT_EQ(NT_RunMacro, 11);
}

TEST(Notification, ReachesTheSinkWithTypeValueAndText) {
    RecordingSink sink;
    Notify(NT_Message, 42, "text");
    Notify(-77, -1, "of a type that has no name");
    Notify(0, 0, "");
    const std::vector<RecordingSink::Entry> expected = {
        {2, 42, "text"}, {-77, -1, "of a type that has no name"}, {0, 0, ""}};
    EXPECT_EQ(sink.m_Entries, expected);
}

TEST(Notification, NamedCallsSendTheirTypeAndTheValueZero) {
    RecordingSink sink;
    Display("a");
    Message("b");
    MsgBox("c");
    MacroCallback("d");
    const std::vector<RecordingSink::Entry> expected = {
        {1, 0, "a"}, {2, 0, "b"}, {7, 0, "c"}, {10, 0, "d"}};
    EXPECT_EQ(sink.m_Entries, expected);
}

TEST(Notification, OfTheCInterfaceReachesTheSinkAsItIs) {
    RecordingSink sink;
    NotifyC(10, 3, "text");
    NotifyC(12345, -3, nullptr);
    const std::vector<RecordingSink::Entry> expected = {{10, 3, "text"}, {12345, -3, ""}};
    EXPECT_EQ(sink.m_Entries, expected);
}

TEST(NotificationWithoutSink, PrintsTheTextAndANewlineWhateverTheType) {
    for (const int type : NotificationTypes) {
        EXPECT_EQ(PrintedBy([&] { Notify(type, 1, "50% done\n"); }), "50% done\n\n") << type;
    }
    EXPECT_EQ(PrintedBy([] { Display("a"); }), "a\n");
    EXPECT_EQ(PrintedBy([] { Message("b"); }), "b\n");
    EXPECT_EQ(PrintedBy([] { MsgBox("c"); }), "c\n");
    EXPECT_EQ(PrintedBy([] { NotifyC(5, 0, "d"); }), "d\n");
}

TEST(NotificationWithoutSink, PrintsAnEmptyLineForAnEmptyText) {
    EXPECT_EQ(PrintedBy([] { Message(""); }), "\n");
    EXPECT_EQ(PrintedBy([] { NotifyC(1, 0, nullptr); }), "\n");
}

TEST(NotificationWithoutSink, OfAMacroCallbackIsDropped) {
    EXPECT_EQ(PrintedBy([] { MacroCallback("macro"); }), "");
}

TEST(Sink, IsReplacedAndRemovedButNeverDestroyed) {
    RecordingSink first;
    RecordingSink second;
    Message("to the second");
    SetNotify(&first);
    Message("to the first");
    SetNotify(nullptr);
    EXPECT_EQ(PrintedBy([] { Message("to nobody"); }), "to nobody\n");
    EXPECT_EQ(first.Texts(NT_Message), std::vector<std::string>{"to the first"});
    EXPECT_EQ(second.Texts(NT_Message), std::vector<std::string>{"to the second"});
}

TEST(Sink, IsNotAskedForAnAbortAndAnswersNo) {
    RecordingSink sink;
    EXPECT_FALSE(sink.AbortRequested());
}

TEST(Sink, MayCallBackAndTakeItselfAway) {
    class CallingSink : public DNotify {
    public:
        void Notify(NotifyType type, int, const DString& text) override {
            m_Texts.push_back(Text(text));
            if (type == NT_Message) Display(text + " again");
            if (type == NT_MsgBox) SetNotify(nullptr);
        }
        std::vector<std::string> m_Texts;
    } sink;
    SetNotify(&sink);
    Message("once");
    MsgBox("last");
    EXPECT_EQ(PrintedBy([] { Message("unheard"); }), "unheard\n");
    EXPECT_EQ(sink.m_Texts, (std::vector<std::string>{"once", "once again", "last"}));
}

// ---- Binary interface of the sinks: plug-ins call by slot

TEST(SinkSlots, NotifyIsFirstAndAbortRequestedSecond) {
    class AbortingSink : public RecordingSink {
    public:
        bool AbortRequested() override { return true; }
    } sink;
    DNotify* base = &sink;
    const DString text("by slot");
    Slot<void(DNotify*, NotifyType, int, const DString&)>(base, 0)(base, NT_Log, 6, text);
    const std::vector<RecordingSink::Entry> expected = {{5, 6, "by slot"}};
    EXPECT_EQ(sink.m_Entries, expected);
    EXPECT_TRUE(Slot<bool(DNotify*)>(base, 1)(base));
}

TEST(SinkSlots, DestructorIsThird) {
    class DyingSink : public DNotify {
    public:
        explicit DyingSink(bool& died) : m_Died(died) {}
        ~DyingSink() override { m_Died = true; }
        void Notify(NotifyType, int, const DString&) override {}
        bool& m_Died;
    };
    bool died = false;
    alignas(DyingSink) char place[sizeof(DyingSink)];
    DNotify* base = new (place) DyingSink(died);
    Slot<void(DNotify*)>(base, 2)(base);
    EXPECT_TRUE(died);
}

TEST(SinkSlots, OfTheSecondSinkAreAReservedOneAndShotChanged) {
    class ShotSink final : public QNotify {
    public:
        void ShotChanged(DString name, int a, int b, int c) override {
            m_Heard = Text(name) + std::to_string(a) + std::to_string(b) + std::to_string(c);
        }
        std::string m_Heard;
    } sink;
    QNotify* base = &sink;
    Slot<void(QNotify*)>(base, 0)(base);
    EXPECT_EQ(sink.m_Heard, "");
    Slot<void(QNotify*, DString, int, int, int)>(base, 1)(base, DString("shot"), 1, 2, 3);
    EXPECT_EQ(sink.m_Heard, "shot123");
}

// ---- The sink of the C interface

TEST_F(CInterfaceSink, PrintsAMessageWithOneNewline) {
    EXPECT_EQ(PrintedBy([] { Message("50% done"); }), "50% done\n");
    EXPECT_EQ(PrintedBy([] { Message("50% done\n"); }), "50% done\n");
    EXPECT_EQ(PrintedBy([] { Message("twice\n\n"); }), "twice\n\n");
    EXPECT_EQ(PrintedBy([] { NotifyC(2, 99, "text"); }), "text\n");
}

TEST_F(CInterfaceSink, HandsAMessageToTheSystemAtOnce) {
    EXPECT_EQ(OnDiskAfter([] { Message("text"); }), "text\n");
    EXPECT_EQ(OnDiskAfter([] { Message("line\n"); }), "line\n");
}

TEST_F(CInterfaceSink, WritesTheLogTypeToTheLogAlone) {
    EXPECT_EQ(PrintedBy([] { NotifyC(NT_Log, 0, "for the log"); }), "");
    EXPECT_EQ(ReadBytes("Log.txt").substr(0, 15), "for the log by ");
}

TEST_F(CInterfaceSink, DropsAllOtherTypes) {
    for (const int type : NotificationTypes) {
        if (type == NT_Message || type == NT_Log) continue;
        EXPECT_EQ(PrintedBy([&] { Notify(type, 1, "text"); }), "") << type;
    }
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST_F(CInterfaceSink, DropsAnEmptyTextWhateverTheType) {
    for (const int type : NotificationTypes) {
        EXPECT_EQ(PrintedBy([&] { Notify(type, 1, ""); }), "") << type;
    }
    EXPECT_EQ(PrintedBy([] { NotifyC(NT_RunMacro, 1, nullptr); }), "");
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}

TEST_F(CInterfaceSink, NeverAsksForAnAbort) { EXPECT_FALSE(m_Sink.AbortRequested()); }

// ---- Numbers

TEST(ValidNumber, LiesStrictlyBetweenTheBoundsAsADouble) {
    // The nearest single-precision number lies below the bound, so that it is still valid.
    const float nearest = 9.9e34f;
    ASSERT_LT(static_cast<double>(nearest), 9.9e34);
    EXPECT_TRUE(IsVF(nearest));
    EXPECT_TRUE(IsVF(-nearest));
    EXPECT_FALSE(IsVF(std::nextafter(nearest, DFMax)));
    EXPECT_FALSE(IsVF(std::nextafter(-nearest, -DFMax)));
    EXPECT_TRUE(IsVF(0.0f));
    EXPECT_TRUE(IsVF(-0.0f));
    EXPECT_TRUE(IsVF(std::numeric_limits<float>::denorm_min()));
}

TEST(ValidNumber, IsNoMarkerInfinityOrNaN) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float value : {DFMax, -DFMax, infinity, -infinity, nan, -nan}) {
        EXPECT_FALSE(IsVF(value)) << value;
    }
}

TEST(TestCall, Returns316AndTouchesNothing) {
    EXPECT_EQ(TestFuncC(), 316);
    EXPECT_TRUE(Names(ScratchFolder()).empty());
}
