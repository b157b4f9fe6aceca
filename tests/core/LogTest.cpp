// The log and the clock that it counts by. The system's clock and its sleep are replaced in this
// program, so that the lines are known to the byte; by default they do what they always do.
#include <stdlib.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <functional>
#include <numeric>

#include "core/CFunctions.h"
#include "support/Support.h"
#include "system/DSystem.h"

namespace {

/// The time that the library is given while m_Fake is set.
struct FakeClock {
    bool m_Fake = false;
    bool m_Fails = false;
    long m_Seconds = 0;
    long m_Microseconds = 0;
};

FakeClock mClock;

/// While set, it is called instead of sleeping, with the microseconds.
std::function<void(useconds_t)> mOnSleep;

timespec SystemTime() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

}  // namespace

extern "C" int gettimeofday(timeval* __restrict now, void* __restrict) noexcept {
    if (mClock.m_Fails) return -1;
    const timespec system = SystemTime();
    now->tv_sec = mClock.m_Fake ? mClock.m_Seconds : system.tv_sec;
    now->tv_usec = mClock.m_Fake ? mClock.m_Microseconds : system.tv_nsec / 1000;
    return 0;
}

extern "C" time_t time(time_t* result) noexcept {
    const time_t now = mClock.m_Fake ? mClock.m_Seconds : SystemTime().tv_sec;
    if (result) *result = now;
    return now;
}

extern "C" int usleep(useconds_t microseconds) {
    if (mOnSleep) {
        mOnSleep(microseconds);
        return 0;
    }
    const timespec pause = {microseconds / 1000000, microseconds % 1000000 * 1000L};
    return nanosleep(&pause, nullptr);
}

namespace {

void SetClock(long seconds, long microseconds) { mClock = {true, false, seconds, microseconds}; }

/// The sleeps that a call asks for, in microseconds, without sleeping.
template <typename Call>
std::vector<useconds_t> SleepsOf(Call call) {
    std::vector<useconds_t> sleeps;
    mOnSleep = [&](useconds_t microseconds) { sleeps.push_back(microseconds); };
    call();
    mOnSleep = nullptr;
    return sleeps;
}

/// A session that began when the clock stood at 1000 s.
class SessionLog : public testing::Test {
protected:
    void SetUp() override {
        SetClock(1000, 0);
        CoreInit("/install");
    }
    void TearDown() override { mClock = {}; }

    /// What Log adds to the file.
    static std::string Logged(const DString& text) {
        const std::string before = Exists(File()) ? ReadBytes(File()) : "";
        Log(text);
        const std::string after = ReadBytes(File());
        EXPECT_EQ(after.substr(0, before.size()), before);
        return after.substr(before.size());
    }

    static std::string File() { return Scratch(".Tarsel/Log.txt"); }
};

/// A clock in a time zone of three hours east.
void UseEasternTime() {
    setenv("TZ", "XXX-3", 1);
    tzset();
}

constexpr long SomeDay = 1794483825;  // 11/12/2026 14:43:45, three hours east

}  // namespace

// ---- A line

TEST_F(SessionLog, LineIsTheTextAndTheElapsedSecondsWithCarriageReturnAndLineFeed) {
    SetClock(1000, 3100);
    EXPECT_EQ(Logged("Log initialized"), "Log initialized by 3.10e-3\r\n");
}

TEST_F(SessionLog, ElapsedSecondsLoseThePlusAndOneZeroOfTheExponent) {
    const auto elapsed = [](long seconds, long microseconds) {
        SetClock(1000 + seconds, microseconds);
        return Logged("x");
    };
    EXPECT_EQ(elapsed(0, 0), "x by 0.00e0\r\n");
    EXPECT_EQ(elapsed(0, 1), "x by 1.00e-6\r\n");
    EXPECT_EQ(elapsed(0, 12300), "x by 1.23e-2\r\n");
    EXPECT_EQ(elapsed(1, 0), "x by 1.00e0\r\n");
    EXPECT_EQ(elapsed(12, 300000), "x by 1.23e1\r\n");
    EXPECT_EQ(elapsed(45600, 0), "x by 4.56e4\r\n");
    EXPECT_EQ(elapsed(20000000000, 0), "x by 2.00e10\r\n");
}

TEST_F(SessionLog, ClockThatStandsBeforeTheStartCountsAsNoTime) {
    SetClock(999, 999999);
    EXPECT_EQ(Logged("x"), "x by 0.00e0\r\n");
}

TEST_F(SessionLog, ClockThatFailsCountsAsNoTime) {
    mClock.m_Fails = true;
    EXPECT_EQ(Logged("x"), "x by 0.00e0\r\n");
}

TEST_F(SessionLog, LineIsWrittenWhateverLoggingSays) {
    Logging = false;
    EXPECT_EQ(Logged("quiet"), "quiet by 0.00e0\r\n");
    Logging = true;
    EXPECT_EQ(Logged("loud"), "loud by 0.00e0\r\n");
}

TEST_F(SessionLog, TextIsWrittenAsItIs) {
    EXPECT_EQ(Logged("50% %s %n"), "50% %s %n by 0.00e0\r\n");
    EXPECT_EQ(Logged(""), " by 0.00e0\r\n");
    EXPECT_EQ(Logged("two\nlines"), "two\nlines by 0.00e0\r\n");
}

TEST_F(SessionLog, FileIsClosedBetweenTheLines) {
    Log("first");
    ASSERT_EQ(unlink(File().c_str()), 0);
    Log("second");
    EXPECT_EQ(ReadBytes(File()), "second by 0.00e0\r\n");
}

TEST(LogBeforeAnyStart, CountsFromZeroAndGoesToTheCurrentDirectory) {
    SetClock(SomeDay, 0);
    Log("early");
    mClock = {};
    EXPECT_EQ(ReadBytes(Scratch("Log.txt")), "early by 1.79e9\r\n");
    EXPECT_EQ(Names(ScratchFolder()), std::vector<std::string>{"Log.txt"});
}

// ---- An open that fails

class FailingLog : public SessionLog {
protected:
    void SetUp() override {
        SessionLog::SetUp();
        ASSERT_EQ(rename(Scratch(".Tarsel").c_str(), Scratch("away").c_str()), 0);
    }
};

TEST_F(FailingLog, IsTriedFiveTimesWithAPauseOf10MillisecondsBehindEach) {
    EXPECT_EQ(SleepsOf([] { Log("lost"); }), std::vector<useconds_t>(5, 10000));
}

TEST_F(FailingLog, LosesTheLineSilently) {
    RecordingSink sink;
    EXPECT_EQ(PrintedBy([] { SleepsOf([] { Log("lost"); }); }), "");
    EXPECT_TRUE(sink.m_Entries.empty());
    EXPECT_FALSE(Exists(Scratch(".Tarsel")));
}

TEST_F(FailingLog, LineIsMadeAfreshForEachTry) {
    int tries = 0;
    mOnSleep = [&](useconds_t) {
        SetClock(1000 + ++tries, 0);
        if (tries == 4) MakeFolder(Scratch(".Tarsel"));
    };
    Log("late");
    mOnSleep = nullptr;
    EXPECT_EQ(tries, 4);
    EXPECT_EQ(ReadBytes(File()), "late by 4.00e0\r\n");
}

// ---- A new log

TEST(NewLog, BeginsWithTimeComputerAndInstallFolder) {
    UseEasternTime();
    SetClock(SomeDay, 0);
    CoreInit("/the/install");
    WriteBytes(Scratch(".Tarsel/Log.txt"), "of an earlier session\r\n");
    SetClock(SomeDay, 3100);
    ClearLog();
    mClock = {};
    EXPECT_EQ(ReadBytes(Scratch(".Tarsel/Log.txt")),
              "Log initialized at 11/12/2026 14:43:45 by 3.10e-3\r\n"
              "Tarsel running on " +
                  Text(GetComputerNameD()) +
                  " by 3.10e-3\r\n"
                  "Tarselpath is /the/install by 3.10e-3\r\n");
}

// ---- The clock

TEST(Clock, NowIsLocalTime) {
    UseEasternTime();
    SetClock(SomeDay, 999999);
    const DString now = Now();
    mClock = {};
    EXPECT_EQ(Text(now), "11/12/2026 14:43:45");
}

TEST(Clock, TimerHasMicroseconds) {
    SetClock(1000, 250000);
    EXPECT_EQ(Timer(), 1000.25);
    SetClock(SomeDay, 1);
    EXPECT_NEAR(Timer() - static_cast<double>(SomeDay), 1e-6, 3e-7);
    mClock = {};
}

TEST(Clock, TimerOfAFailingClockIsZero) {
    mClock.m_Fails = true;
    const double timer = Timer();
    mClock = {};
    EXPECT_EQ(timer, 0.0);
}

TEST(Sleep, IsInMilliseconds) {
    EXPECT_EQ(SleepsOf([] { DSleep(7); }), std::vector<useconds_t>{7000});
    EXPECT_EQ(SleepsOf([] { CSleep(250); }), std::vector<useconds_t>{250000});
}

TEST(Sleep, OfNoOrNegativeTimeReturnsAtOnce) {
    const std::vector<useconds_t> sleeps = SleepsOf([] {
        DSleep(0);
        DSleep(-1);
        CSleep(-2147483647 - 1);
    });
    EXPECT_EQ(std::accumulate(sleeps.begin(), sleeps.end(), 0ul), 0ul);
}

TEST(Sleep, IsNotCutToTheRangeOfMicroseconds) {
    const std::vector<useconds_t> sleeps = SleepsOf([] { DSleep(2147483647); });
    EXPECT_EQ(std::accumulate(sleeps.begin(), sleeps.end(), 0ul), 2147483647ul * 1000);
}
