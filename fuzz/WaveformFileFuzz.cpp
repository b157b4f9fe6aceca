// Files of traces: any bytes are read within bounds, and what was read is written the same from
// then on. The scope's terms are taken out of the start time and added again, which may round it.
#include "data/Waveform.h"

#include <string.h>

#include "support/FileRounds.h"

namespace {

constexpr Loss InitialTime = {28, 32};

void ReadAll(Waveform& trace, DFile& file) { trace.Read(file, -1); }

int AnnouncedPoints(const std::string& bytes) {
    Waveform header;
    ReadFrom(bytes, header, [](Waveform& trace, DFile& file) { trace.Read(file, 0); });
    REQUIRE(header.Count() == 0);
    return header.m_HeaderPoints;
}

// Samples that one reading delivers and another one with fewer or more points.
void RequireSameSamples(const Waveform& a, const Waveform& b) {
    const int count = a.Count() < b.Count() ? a.Count() : b.Count();
    if (count > 0)
        REQUIRE(memcmp(a.m_Data, b.m_Data, sizeof(float) * static_cast<size_t>(count)) == 0);
}

void Measure(Waveform& trace, const std::string& name, float number) {
    trace.GetTraceParam(name.c_str());
    Waveform axis(trace);
    trace.GetXYTraceParam(name.c_str(), axis);
    trace.PointAtTime(number);
    trace.SetCalAttOff(number, trace.m_Atten, trace.m_Baseline);
    axis.Align(trace.Count() / 2, number, trace.m_TimePerPoint);
    axis.Scale();
    axis.GetTraceParam(name.c_str());
}

}  // namespace

void StartTarget() { FixTimeZone(); }

void RunInput(Input input) {
    const int points = input.Int16() % MostValues;
    const float number = input.Float();
    const std::string name = input.Line();
    const std::string bytes = input.Rest();
    WriteBytes("Trace.wvf", bytes);

    Waveform trace;
    const bool isSmall = AnnouncedPoints(bytes) <= MostValues;
    REQUIRE(trace.Read("Trace", points >= 0 || isSmall ? points : MostValues));
    if (points > 0) REQUIRE(trace.Count() == points || trace.Count() == 0);
    Waveform all;
    ReadFrom(RequireStable(trace, ReadAll, InitialTime), all, ReadAll);
    REQUIRE(all.Count() == trace.Count());
    RequireSameSamples(all, trace);
    Waveform part;
    ReadFrom(Written(all), part, [points](Waveform& t, DFile& file) { t.Read(file, abs(points)); });
    RequireSameSamples(part, trace);
    Measure(trace, name, number);
    RequireStable(trace, ReadAll, InitialTime);
}
