/// The faults that a test injects into the library's process: memory that is refused, a clock that
/// fails, and a child process in which a test body may die, change its user or close its streams.
#pragma once

#include <functional>

/// While it lives, the allocation with the number `first` (from 1 on) and the `count` - 1 behind it
/// are refused, in the library, the C library and the C++ library alike. One at a time.
class RefusedMemory {
public:
    static constexpr long AllBehind = 1L << 60;
    RefusedMemory(long first, long count);
    ~RefusedMemory();
    RefusedMemory(const RefusedMemory&) = delete;
    RefusedMemory& operator=(const RefusedMemory&) = delete;
    /// One allocation at least was refused.
    bool Hit() const;
};

/// While it lives, the clock fails: gettimeofday, time and localtime tell nothing.
class BrokenClock {
public:
    BrokenClock();
    ~BrokenClock();
    BrokenClock(const BrokenClock&) = delete;
    BrokenClock& operator=(const BrokenClock&) = delete;
};

/// While it lives, time tells this moment and no other.
class FixedTime {
public:
    explicit FixedTime(long seconds);
    ~FixedTime();
    FixedTime(const FixedTime&) = delete;
    FixedTime& operator=(const FixedTime&) = delete;

private:
    long m_Before;
};

/// While it lives, usleep returns at once, and the microseconds are added up.
class NoSleep {
public:
    NoSleep();
    ~NoSleep();
    NoSleep(const NoSleep&) = delete;
    NoSleep& operator=(const NoSleep&) = delete;
    long Microseconds() const;
};

/// What became of a child process.
enum class ChildEnd { Passed, Failed, Died };

/// Runs `body` in a child process. It passed if no expectation in it failed; it died by a signal,
/// by an exception, or after `seconds`. What it printed goes where the test's own output goes.
ChildEnd InChild(const std::function<void()>& body, unsigned seconds = 20);
