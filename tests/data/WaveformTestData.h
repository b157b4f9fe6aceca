/// Traces and .wvf files for the tests of waveforms, put together by hand.
#pragma once

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "data/Waveform.h"
#include "support/Support.h"

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinity = std::numeric_limits<float>::infinity();

/// A trace of these samples with this start time and interval, its extrema not set.
inline Waveform MakeTrace(const std::vector<float>& samples, float start = 0.0f,
                          float interval = 1.0f) {
    Waveform trace(static_cast<int>(samples.size()));
    std::copy(samples.begin(), samples.end(), trace.Data());
    trace.m_InitialStart = start;
    trace.m_TimePerPoint = interval;
    return trace;
}

/// The same with the extrema as Scale finds them.
inline Waveform MakeScaledTrace(const std::vector<float>& samples, float start = 0.0f,
                                float interval = 1.0f) {
    Waveform trace = MakeTrace(samples, start, interval);
    trace.Scale();
    return trace;
}

inline std::vector<float> Samples(const DArray<float>& trace) {
    return {trace.Data(), trace.Data() + trace.Count()};
}

/// The record of a text: a length of two bytes, then the text.
inline std::string ShortText(const std::string& text) {
    return Int16(static_cast<int>(text.size())) + text;
}

/// A .wvf file. Its defaults give every field a value of its own.
struct WvfFile {
    int m_Version = 4;
    int m_ExtensionLength = 0;
    std::string m_Extension;
    long m_Points = 3;
    float m_TimePerPoint = 0.25f;
    float m_InitialTime = 100.5f;
    float m_ScaleUnit = 2.0f;
    float m_ScopeTD = 2.25f;
    std::string m_Label = ShortText("the label");
    std::string m_Date = ShortText("06/07/2021 08:09:10");
    std::string m_Note = ShortText("a note");
    int m_LateParamBytes = 28;
    std::string m_LateParams = Float32(6.5f) + Float32(7.5f) + Float32(8.5f) + Float32(9.5f) +
                               Float32(10.5f) + Float32(11.5f) + Float32(12.5f);
    std::string m_Samples = Float32(-3.0f) + Float32(1.0f) + Float32(9.0f);

    std::string Numbers() const {
        return Int32(m_Points)            // 4
               + Float32(4.5f)            // 8: t4
               + Float32(m_TimePerPoint)  // 12
               + Float32(5.5f)            // 16: t5
               + Float32(2.0f)            // 20: calibration
               + Float32(10.0f)           // 24: attenuation
               + Float32(m_InitialTime)   // 28
               + Float32(0.75f)           // 32: time shift
               + Float32(9.0f)            // 36: maximum
               + Float32(-3.0f)           // 40: minimum
               + Int32(3)                 // 44: its index plus one
               + Int32(1)                 // 48: likewise
               + Float32(m_ScaleUnit)     // 52
               + Int16(0)                 // 56: reserved
               + Float32(6.25f)           // 58: scope SV
               + Float32(1.5f)            // 62: t1
               + Float32(2.5f)            // 66: t2
               + Float32(3.5f)            // 70: t3
               + Float32(0.125f)          // 74: baseline
               + Float32(1.25f)           // 78: scope PT
               + Float32(m_ScopeTD)       // 82
               + Float32(7.25f)           // 86: scope X
               + Float32(8.25f);          // 90: scope Y
    }

    std::string Bytes() const {
        return Int16(m_Version) + Int16(m_ExtensionLength) + m_Extension + Numbers() + m_Label +
               m_Date + m_Note + Int16(m_LateParamBytes) + m_LateParams + Int16(1) +
               Int32(m_Points) + Int32(1) + m_Samples;
    }
};

/// Writes the file trace.wvf and reads it into `trace`; the result of the read.
inline bool ReadFrom(const std::string& bytes, Waveform& trace, int points = -1) {
    WriteBytes(Scratch("trace.wvf"), bytes);
    return trace.Read(Scratch("trace").c_str(), points);
}

inline bool ReadFrom(const WvfFile& file, Waveform& trace, int points = -1) {
    return ReadFrom(file.Bytes(), trace, points);
}
