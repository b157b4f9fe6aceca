// Several processes in one experiment folder, one of them killed again and again in the middle of a
// write. What they may find is what docs/experiment.md promises under "Several processes".
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <random>

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "support/Support.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int Workers = 4;
constexpr int Points = 3000;  // of a trace: several blocks of a stream
constexpr std::chrono::seconds Duration(3);

const std::string mCommonField = "Common";
const std::string mCommonTrace = "Shared";

std::string Digits(long number, int digits) {
    const std::string text = std::to_string(number);
    return std::string(static_cast<size_t>(digits) - text.size(), '0') + text;
}

std::string FieldOf(int worker) { return "Field" + std::to_string(worker); }
std::string TraceOf(int worker) { return "T" + std::to_string(worker); }

// Values tell who wrote them, and are told from a piece of one by their end.
std::string Value(int worker, long round) {
    return "worker " + std::to_string(worker) + " in round " + Digits(round, 8) +
           " wrote this whole value;";
}

bool IsValue(const std::string& text) {
    const std::string model = Value(0, 0);
    if (text.size() != model.size()) return false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (model[i] == '0' ? text[i] < '0' || text[i] > '9' : text[i] != model[i]) return false;
    }
    return true;
}

// The sample at a place tells the place and the writer. A worker's samples are all the same in all
// rounds but for a part that tells the round.
float Sample(int worker, long round, int place) {
    return static_cast<float>(place + 1) + 0.125f * static_cast<float>(worker) +
           0.5f * static_cast<float>(round % 2);
}

bool IsSample(float value, int place) {
    const float part = (value - static_cast<float>(place + 1)) * 8;
    return value == 0 ||
           (part >= 0 && part < 8 && part == static_cast<float>(static_cast<int>(part)));
}

std::string ReadField(const std::string& name) {
    char buffer[400];
    int length = sizeof buffer;
    GetStringDataC(name.c_str(), &length, buffer);
    return {buffer, static_cast<size_t>(length)};
}

void OpenShared() {
    InitializeTarselC("/opt/tarsel");
    SetExperimentC(Scratch("Lab").c_str());
    CreateShotC("*7");
}

// ---- What a process finds

// A process that is killed in a write leaves an empty file, and whoever writes next writes what it
// knows: a field may then be gone. Lines are all of one length, so that a file that is replaced
// between the look at its length and the reading is cut between two lines.
std::string StrangeField(const std::string& name) {
    const std::string value = ReadField(name);
    return value.empty() || IsValue(value) ? "" : "field " + name + " is '" + value + "'";
}

std::string StrangeTrace(const std::string& name) {
    int points = -1;
    float start = -1;
    float step = -1;
    GetWaveformInfoC(name.c_str(), &points, &start, &step);
    if (points != 0 && (points != Points || start != 5 || step != 0.5f)) {
        return "trace " + name + " begins with " + std::to_string(points) + " points from " +
               std::to_string(start) + " on, " + std::to_string(step) + " apart";
    }
    std::vector<float> samples(Points, -1.0f);
    GetWaveformC(name.c_str(), 5, 0, Points, samples.data());
    for (int i = 0; i < Points; ++i) {
        const float value = samples[static_cast<size_t>(i)];
        if (!IsSample(value, i)) {
            return "trace " + name + " has " + std::to_string(value) + " at " + std::to_string(i);
        }
    }
    return "";
}

// ---- The processes

void Complain(const std::string& finding) {
    if (finding.empty()) return;
    WriteBytes(Scratch("Complaint" + std::to_string(getpid())), finding);
    _exit(1);
}

void WriteTrace(const std::string& name, int worker, long round) {
    std::vector<float> samples(Points);
    for (int i = 0; i < Points; ++i)
        samples[static_cast<size_t>(i)] = Sample(worker, round, i);
    SetWaveformC(name.c_str(), 5, 0.5f, Points, samples.data());
}

[[noreturn]] void Work(int worker, Clock::time_point end) {
    alarm(60);
    std::minstd_rand random(static_cast<unsigned>(getpid()));
    OpenShared();
    for (long round = 1; Clock::now() < end; ++round) {
        const int other = static_cast<int>(random() % Workers);
        switch (random() % 4) {
            case 0:
                SetStringDataC(FieldOf(worker).c_str(), Value(worker, round).c_str());
                SetStringDataC(mCommonField.c_str(), Value(worker, round).c_str());
                break;
            case 1:
                Complain(StrangeField(FieldOf(other)));
                Complain(StrangeField(mCommonField));
                break;
            case 2:
                WriteTrace(TraceOf(worker), worker, round);
                WriteTrace(mCommonTrace, worker, round);
                break;
            default:
                Complain(StrangeTrace(TraceOf(other)));
                Complain(StrangeTrace(mCommonTrace));
                break;
        }
    }
    _exit(0);
}

// Sets its own field and reads all of them, each of which is there from the start.
[[noreturn]] void WorkOnFields(int worker, Clock::time_point end) {
    alarm(60);
    OpenShared();
    for (long round = 1; Clock::now() < end; ++round) {
        SetStringDataC(FieldOf(worker).c_str(), Value(worker, round).c_str());
        for (int other = 0; other < Workers; ++other) {
            const std::string value = ReadField(FieldOf(other));
            if (!IsValue(value)) Complain("field " + FieldOf(other) + " is '" + value + "'");
        }
    }
    _exit(0);
}

pid_t Start(int worker, Clock::time_point end) {
    const pid_t child = fork();
    if (child == 0) Work(worker, end);
    return child;
}

int EndOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

std::string Complaints() {
    std::string all;
    for (const std::string& name : Names(ScratchFolder())) {
        if (name.starts_with("Complaint")) all += ReadBytes(Scratch(name)) + "\n";
    }
    return all;
}

// Starts the last worker again and again until the end, and kills it each time.
int KillAgainAndAgain(Clock::time_point end) {
    int kills = 0;
    std::minstd_rand random(1);
    while (Clock::now() < end) {
        const pid_t victim = Start(Workers - 1, end + Duration);
        usleep(10000 + static_cast<useconds_t>(random() % 30000));
        kill(victim, SIGKILL);
        const int status = EndOf(victim);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        ++kills;
    }
    return kills;
}

}  // namespace

// A file that is empty in the moment between its opening and its writing is read again.
TEST(SharedExperiment, NoFieldIsEverMissingWhileAllProcessesLive) {
    MakeFolder(Scratch("Lab/Shots/Shot7"));
    std::string fields = "[Fields]";
    for (int worker = 0; worker < Workers; ++worker)
        fields += "\r\n" + FieldOf(worker) + "=" + Value(worker, 0);
    WriteBytes(Scratch("Lab/Shots/Shot7/Scalars.ini"), fields);
    const Clock::time_point end = Clock::now() + std::chrono::seconds(1);
    std::vector<pid_t> workers;
    for (int worker = 0; worker < Workers; ++worker) {
        workers.push_back(fork());
        if (workers.back() == 0) WorkOnFields(worker, end);
    }
    for (const pid_t worker : workers)
        EXPECT_EQ(EndOf(worker), 0);
    EXPECT_EQ(Complaints(), "");
}

TEST(SharedExperiment, HoldsWhatSomebodyWroteWhileAProcessIsKilledInItsWrites) {
    MakeFolder(Scratch("Lab/Shots/Shot7"));
    const Clock::time_point end = Clock::now() + Duration;
    std::vector<pid_t> survivors;
    for (int worker = 0; worker + 1 < Workers; ++worker)
        survivors.push_back(Start(worker, end));
    const int kills = KillAgainAndAgain(end);
    EXPECT_GT(kills, 5);
    for (const pid_t survivor : survivors)
        EXPECT_EQ(EndOf(survivor), 0);
    EXPECT_EQ(Complaints(), "");

    // A process that comes later reads every file, and can write each.
    OpenShared();
    for (int worker = 0; worker < Workers; ++worker) {
        EXPECT_EQ(StrangeField(FieldOf(worker)), "");
        EXPECT_EQ(StrangeTrace(TraceOf(worker)), "");
        SetStringDataC(FieldOf(worker).c_str(), Value(worker, 1).c_str());
        WriteTrace(TraceOf(worker), worker, 1);
    }
    EXPECT_EQ(StrangeField(mCommonField), "");
    EXPECT_EQ(StrangeTrace(mCommonTrace), "");
    for (int worker = 0; worker < Workers; ++worker) {
        EXPECT_EQ(ReadField(FieldOf(worker)), Value(worker, 1));
        std::vector<float> samples(Points);
        GetWaveformC(TraceOf(worker).c_str(), 5, 0, Points, samples.data());
        EXPECT_EQ(samples.back(), Sample(worker, 1, Points - 1));
    }
}
