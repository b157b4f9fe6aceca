// Files of particle groups: any bytes and any batch are read within bounds, a batch is a run of the
// whole, and what was read is written the same from then on.
#include <string.h>

#include <algorithm>

#include "data/ParticleGroup.h"
#include "support/FileRounds.h"

namespace {

constexpr int Columns = ParticleGroup::Columns;
constexpr int MostParticles = MostValues / Columns;

// ParticleGroup without an argument of its constructor.
struct Group : ParticleGroup {
    Group() : ParticleGroup(0) {}
};

void ReadAll(ParticleGroup& group, DFile& file) { group.Read(file, -1, 0); }

int ParticlesOf(const std::string& bytes) {
    Group header;
    ReadFrom(bytes, header, [](ParticleGroup& group, DFile& file) { group.Read(file, 0, 0); });
    REQUIRE(header.m_Particles == 0 && header.Count() == 0);
    return header.m_FileParticles;
}

// A batch of a file is a run of the whole.
void RequireBatch(const std::string& bytes, int count, int first) {
    Group all;
    ReadFrom(bytes, all, ReadAll);
    Group batch;
    ReadFrom(bytes, batch,
             [count, first](ParticleGroup& g, DFile& file) { g.Read(file, count, first); });
    REQUIRE(batch.m_FileParticles == all.m_Particles);
    if (count < 0) first = 0;
    const int rest = all.m_Particles - first;
    REQUIRE(batch.m_Particles == std::max(count < 0 ? rest : std::min(rest, count), 0));
    const int held = std::min(batch.m_Particles, all.m_Particles - std::max(first, 0));
    if (held <= 0) return;
    REQUIRE(memcmp(batch.Data(), &all.Data()[Columns * std::max(first, 0)],
                   sizeof(float) * static_cast<size_t>(Columns * held)) == 0);
}

void Compute(Group& group, const std::string& name, int geometry) {
    group.GetPGroupParam(name.c_str());
    group.Scale();
    group.SetGeometry(geometry);
    group.CleanUp();
}

}  // namespace

void StartTarget() { FixTimeZone(); }

void RunInput(Input input) {
    const int count = input.Int16() % MostParticles;
    const int first = input.Int16() % MostParticles;
    const int geometry = input.Byte();
    const std::string name = input.Line();
    const std::string bytes = input.Rest();
    WriteBytes("Group.dpt", bytes);

    Group group;
    const bool isSmall = ParticlesOf(bytes) <= MostParticles;
    REQUIRE(group.Read("Group", count >= 0 || isSmall ? count : MostParticles, first));
    REQUIRE(group.Count() == Columns * group.m_Particles);
    if (!IsShort(group.m_Label) || !IsShort(group.m_Note)) return;
    RequireBatch(RequireStable(group, ReadAll), count, first);
    Compute(group, name, geometry);
    RequireStable(group, ReadAll);
}
