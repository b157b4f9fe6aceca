// ParticleGroup: the record, and what is computed on its particles.
#include "data/ParticleGroup.h"

#include <limits.h>
#include <math.h>
#include <string.h>

#include <algorithm>

#include "core/CoreGlobal.h"
#include "data/SampleRuns.h"

namespace {

// Polar to Cartesian. The vector turns with the angle.
void ToCartesian(float* particle) {
    const float radius = particle[0];
    const double angle = static_cast<double>(particle[1]);
    const float c = static_cast<float>(cos(angle));
    const float s = static_cast<float>(sin(angle));
    const float u = particle[3];
    const float v = particle[4];
    particle[0] = c * radius;
    particle[1] = s * radius;
    particle[3] = c * u - s * v;
    particle[4] = c * v + s * u;
}

// Cartesian to polar. The vector is turned back by the angle, before that is rounded.
void ToPolar(float* particle) {
    const double x = static_cast<double>(particle[0]);
    const double y = static_cast<double>(particle[1]);
    const double angle = atan2(y, x);
    const float c = static_cast<float>(cos(angle));
    const float s = static_cast<float>(sin(angle));
    const float u = particle[3];
    const float v = particle[4];
    particle[0] = static_cast<float>(sqrt(x * x + y * y));
    particle[1] = static_cast<float>(angle);
    particle[3] = c * u + s * v;
    particle[4] = c * v - s * u;
}

bool IsFinite(const float* particle) {
    return std::all_of(particle, particle + ParticleGroup::Columns,
                       [](float value) { return isfinite(value); });
}

}  // namespace

// ---- The record

ParticleGroup::ParticleGroup(int n) {
    SizeValues(std::max(n, 0));
    m_FileParticles = m_Particles;
}

ParticleGroup::ParticleGroup(ParticleGroup const& other) : DArray<float>(other) {
    CopyHeader(other);
}

ParticleGroup& ParticleGroup::operator=(ParticleGroup const& other) {
    if (this == &other) return *this;
    DArray<float>::operator=(other);
    CopyHeader(other);
    return *this;
}

void ParticleGroup::CopyHeader(ParticleGroup const& other) {
    m_HeaderA = other.m_HeaderA;
    m_HeaderB = other.m_HeaderB;
    m_Geometry = other.m_Geometry;
    std::copy(std::begin(other.m_Params), std::end(other.m_Params), m_Params);
    m_Label = other.m_Label;
    m_Date = other.m_Date;
    m_Note = other.m_Note;
    m_Particles = other.m_Particles;
    m_FileParticles = other.m_Particles;
    m_FileGeometry = other.m_Geometry;
}

// Particles of zeros; none where there are more than an int can count the values of, or where
// memory is refused.
void ParticleGroup::SizeValues(int64_t particles) {
    const int64_t values = particles * Columns;
    DArray<float>::Size(values <= INT_MAX ? static_cast<int>(values) : 0);
    m_Particles = Count() / Columns;
}

// The particles that m_Particles tells and whose values are there.
int ParticleGroup::Held() const { return std::clamp(m_Particles, 0, Count() / Columns); }

// ---- Values

bool ParticleGroup::SetGeometry(int geometry) {
    if (geometry == m_Geometry) return true;
    m_Geometry = geometry;
    const int particles = Held();
    if (geometry == 0) {
        for (int p = 0; p < particles; ++p)
            ToCartesian(Particle(p));
    } else {
        for (int p = 0; p < particles; ++p)
            ToPolar(Particle(p));
    }
    return true;
}

void ParticleGroup::Scale() {
    std::fill(std::begin(m_Max), std::end(m_Max), -DFMax);
    std::fill(std::begin(m_Min), std::end(m_Min), DFMax);
    const int particles = Held();
    FourFloats greatest[2] = {LoadFour(m_Max), LoadFour(m_Max + 4)};
    FourFloats least[2] = {LoadFour(m_Min), LoadFour(m_Min + 4)};
    for (int p = 0; p < particles; ++p) {
        for (int half = 0; half < 2; ++half) {
            const FourFloats values = LoadFour(Particle(p) + ptrdiff_t{4} * half);
            greatest[half] = values > greatest[half] ? values : greatest[half];
            least[half] = values < least[half] ? values : least[half];
        }
    }
    memcpy(m_Max, greatest, sizeof m_Max);
    memcpy(m_Min, least, sizeof m_Min);
}

void ParticleGroup::CleanUp() {
    int last = Held() - 1;
    for (int p = 0; p <= last;) {
        float* particle = Particle(p);
        if (IsFinite(particle)) {
            ++p;
        } else {
            memmove(particle, Particle(last), Columns * sizeof(float));
            --last;
        }
    }
    DArray<float>::ReSize(1, (last + 1) * Columns);
    m_Particles = last + 1;
}

float ParticleGroup::GetPGroupParam(DString const& name) const {
    DString lower(name);
    lower.ToLower();
    if (lower == "np") return static_cast<float>(m_FileParticles);
    const bool isParam =
        lower.GetLength() == 2 && lower[0] == 't' && lower[1] >= '1' && lower[1] <= '5';
    return isParam ? m_Params[lower[1] - '1'] : -DFMax;
}
