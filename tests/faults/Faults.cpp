// The faults: this program's own allocation, clock and sleep, which the library and the C library
// call in place of the system's. See Faults.h.
#include "faults/Faults.h"

#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <exception>
#include <new>

namespace {

bool mArmed = false;
long mAsked = 0;
long mFirst = 0;
long mCount = 0;
bool mClockFails = false;
long mFixedTime = -1;
bool mSleepless = false;
long mSlept = 0;

// One more allocation is asked for. True if it is one of those to be refused.
bool Refuse() {
    if (!mArmed || ++mAsked < mFirst || mAsked - mFirst >= mCount) return false;
    errno = ENOMEM;
    return true;
}

// The failures of the test so far.
int PartsTold() {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    return test ? test->result()->total_part_count() : 0;
}

template <typename Function>
Function* NextOf(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// ---- Allocation

#ifdef FAULTS_UNDER_SANITIZER
#define REAL(name) __interceptor_##name
#else
#define REAL(name) __libc_##name
#endif

// NOLINTBEGIN(bugprone-reserved-identifier): these are the names under which the real ones stand.
extern "C" {

void* REAL(malloc)(size_t size) noexcept;
void* REAL(calloc)(size_t count, size_t size) noexcept;
void* REAL(realloc)(void* block, size_t size) noexcept;

void* malloc(size_t size) noexcept { return Refuse() ? nullptr : REAL(malloc)(size); }

void* calloc(size_t count, size_t size) noexcept {
    return Refuse() ? nullptr : REAL(calloc)(count, size);
}

void* realloc(void* block, size_t size) noexcept {
    return Refuse() ? nullptr : REAL(realloc)(block, size);
}
}
// NOLINTEND(bugprone-reserved-identifier)

// The C++ library's own call malloc, but the sanitizer's don't.
#ifdef FAULTS_UNDER_SANITIZER

void* operator new(size_t size) {
    void* block = malloc(size);
    if (!block) throw std::bad_alloc();
    return block;
}

void* operator new[](size_t size) { return operator new(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
void operator delete(void* block) noexcept { free(block); }
void operator delete[](void* block) noexcept { free(block); }
void operator delete(void* block, size_t) noexcept { free(block); }
void operator delete[](void* block, size_t) noexcept { free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { free(block); }

#endif

RefusedMemory::RefusedMemory(long first, long count) {
    mAsked = 0;
    mFirst = first;
    mCount = count;
    mArmed = true;
}

RefusedMemory::~RefusedMemory() { mArmed = false; }

bool RefusedMemory::Hit() const { return mAsked >= mFirst; }

// ---- Clock

extern "C" int gettimeofday(struct timeval* now, void* zone) noexcept {
    if (!mClockFails) return NextOf<int(struct timeval*, void*)>("gettimeofday")(now, zone);
    errno = EINVAL;
    return -1;
}

extern "C" time_t time(time_t* now) noexcept {
    time_t told = -1;
    if (!mClockFails)
        told = mFixedTime >= 0 ? mFixedTime : NextOf<time_t(time_t*)>("time")(nullptr);
    if (now) *now = told;
    return told;
}

extern "C" struct tm* localtime(const time_t* when) noexcept {
    return mClockFails ? nullptr : NextOf<struct tm*(const time_t*)>("localtime")(when);
}

extern "C" struct tm* localtime_r(const time_t* when, struct tm* result) noexcept {
    return mClockFails ? nullptr
                       : NextOf<struct tm*(const time_t*, struct tm*)>("localtime_r")(when, result);
}

BrokenClock::BrokenClock() { mClockFails = true; }

BrokenClock::~BrokenClock() { mClockFails = false; }

FixedTime::FixedTime(long seconds) : m_Before(mFixedTime) { mFixedTime = seconds; }

FixedTime::~FixedTime() { mFixedTime = m_Before; }

// ---- Sleep

extern "C" int usleep(useconds_t microseconds) {
    if (!mSleepless) return NextOf<int(useconds_t)>("usleep")(microseconds);
    mSlept += static_cast<long>(microseconds);
    return 0;
}

NoSleep::NoSleep() {
    mSleepless = true;
    mSlept = 0;
}

NoSleep::~NoSleep() { mSleepless = false; }

long NoSleep::Microseconds() const { return mSlept; }

// ---- Children

ChildEnd InChild(const std::function<void()>& body, unsigned seconds) {
    constexpr int FailedCode = 90;
    fflush(nullptr);
    const int before = PartsTold();
    const pid_t child = fork();
    if (child == 0) {
        alarm(seconds);
        bool threw = false;
        try {
            body();
        } catch (const std::exception&) {
            threw = true;
        }
        mArmed = false;
        fflush(nullptr);
        if (threw) _exit(FailedCode + 1);
        _exit(PartsTold() > before ? FailedCode : 0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return ChildEnd::Died;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return ChildEnd::Passed;
    return WIFEXITED(status) && WEXITSTATUS(status) == FailedCode ? ChildEnd::Failed
                                                                  : ChildEnd::Died;
}
