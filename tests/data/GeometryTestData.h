/// Geometries and .dgm files for the tests, put together by hand.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "data/Geometry.h"
#include "data/GoldenBytes.h"

/// A body of this kind with these shape numbers.
inline Object Body(int kind, const std::vector<float>& numbers,
                   const std::vector<float>& position) {
    Object body;
    body.m_Kind = kind;
    std::copy(position.begin(), position.end(), body.m_Position);
    body.m_Points.Size(static_cast<int>(numbers.size()));
    std::copy(numbers.begin(), numbers.end(), body.m_Points.Data());
    return body;
}

inline Object Body(int kind, const std::vector<float>& numbers) {
    return Body(kind, numbers, {0.0f, 0.0f, 0.0f});
}

inline Geometry MakeGeometry(const std::vector<Object>& bodies) {
    Geometry geometry;
    for (const Object& body : bodies)
        geometry.m_Objects.Add(body);
    return geometry;
}

inline std::vector<float> Numbers(const Object& body) {
    return {body.m_Points.Data(), body.m_Points.Data() + body.m_Points.Count()};
}

/// A record of a body. Its defaults give every field a value of its own.
struct DgmBody {
    std::string m_Name = LongText("first body");
    long m_Kind = 10;
    long m_Count = 5;
    std::string m_Numbers = Floats({1.5f, 2.5f, 3.5f, 4.5f, 5.5f});

    std::string Bytes() const {
        return m_Name + Int32(m_Kind)           // L is the length of the name
               + Int32(11)                      // 8 + L: attributes
               + Int32(12)                      // 12 + L
               + Int32(-13)                     // 16 + L
               + Floats({20.5f, 21.5f, 22.5f})  // 20 + L: position
               + Float32(23.5f)                 // 32 + L: inner radius
               + Float32(24.5f)                 // 36 + L: outer radius
               + Float32(25.5f)                 // 40 + L: span
               + Float32(26.5f)                 // 44 + L
               + Int32(m_Count) + m_Numbers     // 48 + L
               + Float32(31.5f) + Int32(32)     // 52 + L + 4 n: options
               + Int32(-33) + Int32(34)         // 60 + L + 4 n
               + Int32(35) + Float32(36.5f)     // 68 + L + 4 n
               + Int32(-37);                    // 76 + L + 4 n
    }
};

/// A .dgm file of two bodies.
struct DgmFile {
    long m_Version = 1;
    long m_ExtensionLength = 0;
    std::string m_Extension;
    long m_Count = 2;
    std::string m_Bodies = DgmBody().Bytes() + SecondBody().Bytes();
    std::string m_Max = Floats({101.5f, 102.5f, 103.5f});
    std::string m_Min = Floats({-101.5f, -102.5f, -103.5f});
    std::string m_Label = LongText("the label");
    std::string m_Note = LongText("a note");
    std::string m_Date = LongText("06/07/2021 08:09:10");

    static DgmBody SecondBody() { return {LongText("b"), -4, 0, ""}; }
    std::string Head() const {
        return Int32(m_Version) + Int32(m_ExtensionLength) + m_Extension + Int32(m_Count);
    }
    std::string Tail() const { return m_Max + m_Min + m_Label + m_Note + m_Date; }
    std::string Bytes() const { return Head() + m_Bodies + Tail(); }
};

/// Writes the file bodies.dgm and reads it into `geometry`; the result of the read.
inline bool ReadFrom(const std::string& bytes, Geometry& geometry) {
    WriteBytes(Scratch("bodies.dgm"), bytes);
    return geometry.Read(Scratch("bodies").c_str());
}

inline bool ReadFrom(const DgmFile& file, Geometry& geometry) {
    return ReadFrom(file.Bytes(), geometry);
}
