/// ParticleGroup: a population of particles as a simulation writes them, eight floats each. A shot
/// folder holds one .dpt file per group, which can hold more than fits in memory, is read in
/// batches, and grows by appending; docs/formats.md describes it.
///
/// Column c of particle p is element 8 * p + c of the values. Columns 0 to 2 are a position, 3 to 5
/// a vector at that position, which turns with it when the coordinates change, and 6 and 7 are
/// stored only. In Cartesian coordinates the position is x, y, z; in polar ones radius, angle in
/// radians, z.
///
/// Operations go by m_Particles, but never beyond the values that are there.
#pragma once

#include "types/DArray.h"
#include "types/DString.h"

class DFile;

class ParticleGroup : private DArray<float> {
public:
    /// Floats of a particle.
    static constexpr int Columns = 8;

    float m_HeaderA = 0.0f;     ///< a number of the group, stored and handed to callers only
    float m_HeaderB = 0.0f;     ///< a second one
    float m_Params[5] = {};     ///< free numbers
    DString m_Label;            ///< free text
    DString m_Note;             ///< free text
    DString m_Date;             ///< time of the last write, as Now gives it
    int m_Particles = 0;        ///< particles in memory
    int m_Geometry = 0;         ///< coordinates: 0 Cartesian, other values polar
    int m_FileParticles = 0;    ///< particles in the file, as last read
    int m_FileGeometry = 0;     ///< m_Geometry as last read from a file
    float m_Max[Columns] = {};  ///< greatest value of each column, as last computed or read
    float m_Min[Columns] = {};  ///< least value, likewise

    /// The values, without bounds checks.
    using DArray<float>::Count;
    using DArray<float>::Capacity;
    using DArray<float>::Data;
    using DArray<float>::operator[];

    /// `n` particles of zeros; a negative `n` counts as 0.
    explicit ParticleGroup(int n = 0);
    /// Copy values and header. The extrema aren't copied: a new object has 0 there, an existing one
    /// keeps its own.
    ParticleGroup(ParticleGroup const& other);
    ParticleGroup& operator=(ParticleGroup const& other);
    ~ParticleGroup() override = default;

    /// Copies every field but the extrema, and no values. m_FileParticles and m_FileGeometry become
    /// m_Particles and m_Geometry of `other`.
    void CopyHeader(ParticleGroup const& other);

    // ---- Files

    /// Reads `name` with ".dpt" appended: `count` particles from particle `first` on, or as many as
    /// there are. A negative `count` reads from the first particle on, at most MaxParticleBatch. 0
    /// and 0 read the header alone. False if the file can't be opened; the object then stays as it
    /// was. True otherwise. What a file that is cut short doesn't hold stays as it was in the
    /// header and is 0 in the particles.
    bool Read(DString name, int count, int first);
    /// The same from a stream that stands at the start of a file.
    void Read(DFile& file, int count, int first);
    /// Writes `name` with ".dpt" appended and sets m_Date. False if the file can't be opened.
    bool Write(DString name);
    /// The same to a stream.
    void Write(DFile& file);
    /// Adds the particles to the end of a file without touching those that it holds, or writes a
    /// new one. The file keeps its coordinates, numbers, strings and date: m_Geometry, m_HeaderA,
    /// m_HeaderB and m_Params are taken from it, no particle being converted. Extrema become those
    /// of both, m_FileParticles the sum. A file that isn't in the form that Write gives, with 8
    /// columns and without header extension, isn't continued correctly: lengths and counts in it
    /// that lead behind its end leave a gap there, which most file systems don't store. False if
    /// the file can't be opened.
    bool Append(DString name);
    /// The same to a stream that stands at the start of a file and can read and write.
    void Append(DFile& file);

    // ---- Values

    /// Converts position and vector of each particle to the coordinates of `geometry`, unless that
    /// is m_Geometry already. The direction depends on the new value alone: 0 converts from polar
    /// to Cartesian, any other from Cartesian to polar, so that going from 1 to 2 converts again.
    /// Always true.
    bool SetGeometry(int geometry);
    /// Finds the extrema of each column, values being valid or not.
    void Scale();
    /// Removes the particles that hold a NaN or an infinity. The order of the others isn't kept.
    void CleanUp();
    /// The header field of a name of two letters, in either case: t1 ... t5 for m_Params, np for
    /// m_FileParticles. -DFMax for any other name.
    float GetPGroupParam(DString const& name) const;

private:
    float* Particle(int p) { return m_Data + int64_t{Columns} * p; }
    int Held() const;
    void SizeValues(int64_t particles);
    void ReadRecords(DFile& file, int64_t particles);
    void ReadOldRecords(DFile& file, int columns);
};
