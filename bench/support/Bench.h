/// What the benchmarks share. A row of the table is one road of the library beside its yardstick,
/// both measured in the same run.
#pragma once

#include <benchmark/benchmark.h>

#include <string>

using Measured = void (*)(benchmark::State&);

/// A row: the road and the size as the table prints them, the ratio of the two times that the road
/// is to reach, and the two loops. Rows are defined at start-up:
///
///     const Row mCopy{"DString copy", "8 bytes", 0.5, CopyOurs, CopyYardstick};
struct Row {
    Row(const char* road, const char* size, double target, Measured ours, Measured yardstick);
};

/// The folder of this run, its HOME and current directory, on a disk; removed at its end.
const std::string& ScratchFolder();
/// `name` below the scratch folder.
std::string Scratch(const std::string& name);
/// Makes a file of these bytes, and what folders are missing above it.
void WriteBytes(const std::string& path, const std::string& bytes);
