/// Geometry: the bodies of an experiment's apparatus as a list of shapes, and the bounding box of
/// the whole. A shot folder holds one .dgm file per geometry; docs/formats.md describes it. The
/// library stores shapes and computes the box; it neither draws nor tests them.
///
/// It has nothing to do with the coordinates of a ParticleGroup.
#pragma once

#include "types/DArray.h"
#include "types/DString.h"

/// One body. The meaning of its shape numbers depends on its kind:
///
///   1           sphere: radius
///   2           torus: ring radius, tube radius
///   3           cylinder: radius, height
///   4, 5        as the body before it in the list; no numbers
///   6           tube: inner radius, height, outer radius
///   7, 8        outline turned around the z axis: pairs of radius, height
///   9           block: half of x, half of y, height
///   10, 11, 12  points: triples of x, y, z
class Object {
public:
    DString m_Name;
    int m_Kind = 0;            ///< shape kind, see above
    unsigned int m_Attr1 = 3;  ///< stored only
    unsigned int m_Attr2 = 0;  ///< stored only
    unsigned int m_Attr3 = 0;  ///< stored only
    float m_Position[3] = {};  ///< x, y, z of the reference point
    DArray<float> m_Points;    ///< the shape numbers; missing ones count as 0
    float m_RMin = 0.0f;       ///< inner radius, set by Geometry::Scale for some kinds
    float m_RMax = 0.0f;       ///< outer radius, likewise
    float m_SpanFrom = 0.0f;   ///< start of an angular span, stored only
    float m_SpanTo = 360.0f;   ///< end of that span, stored only
    float m_Opt1 = 0.1f;       ///< stored only, as the rest
    unsigned int m_Opt2 = 0;
    int m_Opt3 = 1;
    unsigned int m_Opt4 = 0;
    unsigned int m_Opt5 = 0;
    float m_Opt6 = 1.0f;
    unsigned int m_Opt7 = 0;
};

extern template class DArray<Object>;

class Geometry {
public:
    DArray<Object> m_Objects;  ///< the bodies
    DString m_Label;           ///< free text
    DString m_Note;            ///< free text
    DString m_Date;            ///< time of the last write, as Now gives it
    float m_Max[3] = {};       ///< greatest x, y, z of the bounding box, as last computed or read
    float m_Min[3] = {};       ///< least x, y, z, likewise

    /// Reads `name` with ".dgm" appended, the box as the file holds it. False if the file can't be
    /// opened; the object then stays as it was. True otherwise. What a file that is cut short
    /// doesn't hold has its default in the bodies and stays as it was in the rest. More than 65,536
    /// bodies are made only as the file holds them, so that a corrupt count costs no memory.
    bool Read(DString name);
    /// Writes `name` with ".dgm" appended and sets m_Date. False if the file can't be opened.
    bool Write(DString name);
    /// Computes the bounding box, and the radii of the bodies of kinds 1, 2, 3, 6, 7 and 8. Bodies
    /// of no known kind take no part. Kinds 4 and 5 take the extents of the last body that had any,
    /// at their own position. A turned outline reaches from its least to its greatest height, 0
    /// included, as far out as its greatest radius; its inner radius starts at the x extent of the
    /// last body. Without bodies the box is empty: m_Max is -DFMax and m_Min DFMax.
    void Scale();
};
