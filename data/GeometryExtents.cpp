// Geometry: the extents of each kind of body, and the bounding box.
#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/Geometry.h"

namespace {

/// Bounds in x, y and z, relative to a body's position.
struct Extents {
    float m_From[3] = {};
    float m_To[3] = {};
};

float Number(const Object& body, int i) {
    return i < body.m_Points.Count() ? body.m_Points[i] : 0.0f;
}

// A body of the same reach in x and y.
Extents Round(float radius, float zFrom, float zTo) {
    return {{-radius, -radius, zFrom}, {radius, radius, zTo}};
}

// An outline turned around the z axis. `xTo` is the x extent of the body before.
Extents Turned(Object& body, float xTo) {
    const int pairs = (body.m_Points.Count() - 1) / 2;  // behind the first radius
    float zFrom = 0.0f;
    float zTo = 0.0f;
    body.m_RMin = xTo;
    body.m_RMax = Number(body, 0);
    for (int i = 1; i <= pairs; ++i) {
        const float height = Number(body, 2 * i - 1);
        const float radius = Number(body, 2 * i);
        body.m_RMin = std::min(body.m_RMin, radius);
        body.m_RMax = std::max(body.m_RMax, radius);
        zFrom = std::min(zFrom, height);
        zTo = std::max(zTo, height);
    }
    return Round(body.m_RMax, zFrom, zTo);
}

// The bounds of a list of points; the first triple starts them, complete or not.
Extents OfPoints(const Object& body) {
    Extents extents;
    for (int axis = 0; axis < 3; ++axis) {
        extents.m_From[axis] = extents.m_To[axis] = Number(body, axis);
        for (int i = 3 + axis; i / 3 < body.m_Points.Count() / 3; i += 3) {
            extents.m_From[axis] = std::min(extents.m_From[axis], body.m_Points[i]);
            extents.m_To[axis] = std::max(extents.m_To[axis], body.m_Points[i]);
        }
    }
    return extents;
}

// Replaces `extents`, those of the body before, by the body's own, and sets the radii that belong
// to its kind. False if the body takes no part in the box.
bool Measure(Object& body, Extents& extents) {
    const float a = Number(body, 0);
    const float b = Number(body, 1);
    const float c = Number(body, 2);
    switch (body.m_Kind) {
        case 1:
            body.m_RMax = a;
            extents = Round(a, -a, a);
            return true;
        case 2:
            body.m_RMin = a - b;
            body.m_RMax = b + a;
            extents = Round(a + b, -b, b);
            return true;
        case 3:
            body.m_RMax = a;
            extents = Round(a, 0.0f, b);
            return true;
        case 4:
        case 5:
            return true;
        case 6:
            body.m_RMin = a;
            body.m_RMax = c;
            extents = Round(c, 0.0f, b);
            return true;
        case 7:
        case 8:
            extents = Turned(body, extents.m_To[0]);
            return true;
        case 9:
            extents = {{-a, -b, 0.0f}, {a, b, c}};
            return true;
        case 10:
        case 11:
        case 12:
            extents = OfPoints(body);
            return true;
        default:
            return false;
    }
}

}  // namespace

void Geometry::Scale() {
    std::fill(std::begin(m_Max), std::end(m_Max), -DFMax);
    std::fill(std::begin(m_Min), std::end(m_Min), DFMax);
    Extents extents;
    for (int i = 0; i < m_Objects.Count(); ++i) {
        Object& body = m_Objects[i];
        if (!Measure(body, extents)) continue;
        for (int axis = 0; axis < 3; ++axis) {
            m_Max[axis] = std::max(m_Max[axis], body.m_Position[axis] + extents.m_To[axis]);
            m_Min[axis] = std::min(m_Min[axis], body.m_Position[axis] + extents.m_From[axis]);
        }
    }
}
