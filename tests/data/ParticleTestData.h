/// Particle groups and .dpt files for the tests, put together by hand.
#pragma once

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "data/GoldenBytes.h"
#include "data/ParticleGroup.h"

/// A group of these values, eight for each particle.
inline ParticleGroup MakeGroup(const std::vector<float>& values) {
    ParticleGroup group(static_cast<int>(values.size()) / ParticleGroup::Columns);
    std::copy(values.begin(), values.end(), group.Data());
    return group;
}

inline std::vector<float> Values(const ParticleGroup& group) {
    return {group.Data(), group.Data() + group.Count()};
}

/// The values of particles whose column c is 10 p + c for particle p, in the order of `particles`.
inline std::vector<float> Numbered(const std::vector<int>& particles,
                                   int columns = ParticleGroup::Columns) {
    std::vector<float> values;
    for (const int p : particles) {
        for (int c = 0; c < columns; ++c)
            values.push_back(static_cast<float>(10 * p + c));
    }
    return values;
}

/// The numbers from `first` on, `n` of them.
inline std::vector<float> Ascending(float first, int n = ParticleGroup::Columns) {
    std::vector<float> values;
    for (int i = 0; i < n; ++i)
        values.push_back(first + static_cast<float>(i));
    return values;
}

/// Makes of `group` one of an earlier use: no field has the value of the hand-made file.
inline void Use(ParticleGroup& group) {
    group = MakeGroup(Numbered({70, 71}));
    group.m_HeaderA = 51.0f;
    group.m_HeaderB = 52.0f;
    for (int i = 0; i < 5; ++i)
        group.m_Params[i] = static_cast<float>(60 + i);
    group.m_Label = "old label";
    group.m_Note = "old note";
    group.m_Date = "old date";
    group.m_Geometry = 53;
    group.m_FileParticles = 99;
    group.m_FileGeometry = 54;
    std::fill(std::begin(group.m_Max), std::end(group.m_Max), 55.0f);
    std::fill(std::begin(group.m_Min), std::end(group.m_Min), -55.0f);
}

inline ParticleGroup UsedGroup() {
    ParticleGroup group(0);
    Use(group);
    return group;
}

/// A .dpt file. Its defaults give every field a value of its own.
struct DptFile {
    long m_Version = 2;
    long m_ExtensionLength = 0;
    std::string m_Extension;
    long m_Geometry = 7;
    long m_Particles = 3;
    long m_Columns = 8;
    float m_HeaderA = 1.5f;
    float m_HeaderB = 2.5f;
    std::string m_Params = Floats({3.5f, 4.5f, 5.5f, 6.5f, 7.5f});
    std::string m_Max = Floats(Ascending(100.25f));
    std::string m_Min = Floats(Ascending(-100.25f));
    std::string m_Note = LongText("a note");
    std::string m_Label = LongText("the label");
    std::string m_Date = LongText("06/07/2021 08:09:10");
    std::string m_Records = Floats(Numbered({0, 1, 2}));

    std::string Header() const {
        return Int32(m_Version)            // 0
               + Int32(m_ExtensionLength)  // 4
               + m_Extension               //
               + Int32(m_Geometry)         // 8
               + Int32(m_Particles)        // 12
               + Int32(m_Columns)          // 16
               + Float32(m_HeaderA)        // 20
               + Float32(m_HeaderB)        // 24
               + m_Params                  // 28
               + m_Max                     // 48
               + m_Min;                    // 80 with eight columns
    }
    std::string Texts() const { return m_Note + m_Label + m_Date; }
    std::string Bytes() const { return Header() + Texts() + m_Records; }
};

/// The default file in the form of older ones, with `columns` columns.
inline DptFile OldFile(int columns, long version = 1) {
    DptFile file;
    file.m_Version = version;
    file.m_Columns = columns;
    file.m_Max = Floats(Ascending(100.25f, columns));
    file.m_Min = Floats(Ascending(-100.25f, columns));
    file.m_Records = Floats(Numbered({0, 1, 2}, columns));
    return file;
}

/// Writes the file group.dpt and reads it into `group`; the result of the read.
inline bool ReadFrom(const std::string& bytes, ParticleGroup& group, int count = -1,
                     int first = 0) {
    WriteBytes(Scratch("group.dpt"), bytes);
    return group.Read(Scratch("group").c_str(), count, first);
}

inline bool ReadFrom(const DptFile& file, ParticleGroup& group, int count = -1, int first = 0) {
    return ReadFrom(file.Bytes(), group, count, first);
}
