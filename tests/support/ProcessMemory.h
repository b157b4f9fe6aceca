/// The memory of the test's own process: how much it holds, and a limit to what it gets.
#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <string>

/// Bytes of real memory in use.
inline long ResidentBytes() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

/// The most real memory that a call had in use beyond what was in use before it.
template <typename Call>
long PeakBytesOf(Call call) {
    std::ofstream("/proc/self/clear_refs") << 5;  // the peak starts anew
    const long before = ResidentBytes();
    call();
    std::ifstream status("/proc/self/status");
    long kilobytes = -1;
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") status >> kilobytes;
    }
    return kilobytes * 1024 - before;
}

/// Lets the process take only `bytes` more address space while it lives.
class AddressSpaceLimit {
public:
    explicit AddressSpaceLimit(rlim_t bytes) {
        getrlimit(RLIMIT_AS, &m_Before);
        unsigned long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        rlimit limit = m_Before;
        limit.rlim_cur = pages * static_cast<unsigned long>(sysconf(_SC_PAGESIZE)) + bytes;
        setrlimit(RLIMIT_AS, &limit);
    }
    ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &m_Before); }
    AddressSpaceLimit(const AddressSpaceLimit&) = delete;
    AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

private:
    rlimit m_Before{};
};
