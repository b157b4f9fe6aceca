/// What the test's own process has read, for the reads that must leave most of a file alone.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>

/// The bytes that this process has read from files so far.
inline long BytesRead() {
    std::ifstream counters("/proc/self/io");
    std::string name;
    long bytes = -1;
    counters >> name >> bytes;
    EXPECT_EQ(name, "rchar:");
    return bytes;
}
