// Runs the rows and prints them as one table of medians; see Bench.h.
#include "support/Bench.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <vector>

#include "core/CoreGlobal.h"

namespace fs = std::filesystem;

namespace {

const char Ours[] = "ours";
const char Yardstick[] = "yardstick";

struct Entry {
    std::string m_Road;
    std::string m_Size;
    double m_Target;
    Measured m_Ours;
    Measured m_Yardstick;

    std::string Name(const char* side) const { return m_Road + "|" + m_Size + "|" + side; }
};

// In the order of the rows' definition.
std::deque<Entry>& Entries() {
    static std::deque<Entry> entries;
    return entries;
}

std::string mScratchFolder;

void Register(const Entry& entry) {
    benchmark::RegisterBenchmark(entry.Name(Ours).c_str(), entry.m_Ours);
    benchmark::RegisterBenchmark(entry.Name(Yardstick).c_str(), entry.m_Yardstick);
}

// Collects the times of all repetitions, in nanoseconds of real time, and prints the table.
class TableReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                fprintf(stderr, "%s: %s\n", run.run_name.function_name.c_str(),
                        run.error_message.c_str());
                m_Failed = true;
            } else if (run.run_type == Run::RT_Iteration) {
                m_Times[run.run_name.function_name].push_back(run.real_accumulated_time * 1e9 /
                                                              double(run.iterations));
            }
        }
    }

    void Finalize() override {
        printf("%-44s %-22s %12s %12s %7s %7s\n", "road", "size", "ours", "yardstick", "ratio",
               "target");
        for (const Entry& entry : Entries())
            Print(entry);
    }

    bool m_Failed = false;

private:
    static double Median(std::vector<double> times) {
        const auto middle = times.begin() + std::ptrdiff_t(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

    static std::string Time(double nanoseconds) {
        const char* units[] = {"ns", "us", "ms", "s"};
        int unit = 0;
        for (; nanoseconds >= 1000 && unit < 3; ++unit)
            nanoseconds /= 1000;
        char text[32];
        snprintf(text, sizeof text, "%.3g %s", nanoseconds, units[unit]);
        return text;
    }

    void Print(const Entry& entry) const {
        const auto ours = m_Times.find(entry.Name(Ours));
        const auto yardstick = m_Times.find(entry.Name(Yardstick));
        if (ours == m_Times.end() || yardstick == m_Times.end()) return;
        const double mine = Median(ours->second);
        const double other = Median(yardstick->second);
        const double ratio = mine / other;
        printf("%-44s %-22s %12s %12s %7.3f %7.2f%s\n", entry.m_Road.c_str(), entry.m_Size.c_str(),
               Time(mine).c_str(), Time(other).c_str(), ratio, entry.m_Target,
               ratio > entry.m_Target ? "  missed" : "");
    }

    std::map<std::string, std::vector<double>> m_Times;
};

// On a disk, since the library's files are; TMPDIR may name another place.
bool EnterScratchFolder() {
    std::string folder = (fs::temp_directory_path() / "tarsel-bench-XXXXXX").string();
    if (!mkdtemp(folder.data())) return false;
    mScratchFolder = folder;
    return setenv("HOME", folder.c_str(), 1) == 0 && chdir(folder.c_str()) == 0;
}

void RemoveScratchFolder() {
    std::error_code ignored;
    fs::current_path("/", ignored);
    fs::remove_all(mScratchFolder, ignored);
}

}  // namespace

Row::Row(const char* road, const char* size, double target, Measured ours, Measured yardstick) {
    Entries().push_back({road, size, target, ours, yardstick});
}

const std::string& ScratchFolder() { return mScratchFolder; }

std::string Scratch(const std::string& name) { return mScratchFolder + "/" + name; }

void WriteBytes(const std::string& path, const std::string& bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    if (!EnterScratchFolder()) return 2;
    CoreInit(ScratchFolder().c_str());
    for (const Entry& entry : Entries())
        Register(entry);
    TableReporter table;
    benchmark::RunSpecifiedBenchmarks(&table);
    RemoveScratchFolder();
    return table.m_Failed ? 1 : 0;
}
