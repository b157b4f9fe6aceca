// Appending to any file: it stays within bounds, and a file in the form in which groups are written
// gets the particles at its end and nothing else but a new header.
#include <string.h>

#include <algorithm>
#include <filesystem>

#include "data/ParticleGroup.h"
#include "support/FileRounds.h"

namespace {

constexpr int Columns = ParticleGroup::Columns;
constexpr size_t TextsAt = 112;
constexpr size_t RecordBytes = 32;

int32_t WordAt(const std::string& bytes, size_t offset) {
    int32_t word = 0;
    memcpy(&word, bytes.data() + offset, sizeof word);
    return word;
}

// The file is whole and as the library writes it.
bool IsOfTodaysForm(const std::string& bytes) {
    if (bytes.size() < TextsAt || WordAt(bytes, 0) != 2) return false;
    const int32_t particles = WordAt(bytes, 12);
    if (WordAt(bytes, 4) != 0 || WordAt(bytes, 16) != Columns || particles < 0) return false;
    size_t end = TextsAt;
    for (int text = 0; text < 3; ++text) {
        if (end + 4 > bytes.size()) return false;
        const int32_t length = WordAt(bytes, end);
        if (length < 0) return false;
        end += 4 + static_cast<size_t>(length);
    }
    return end + RecordBytes * static_cast<size_t>(particles) == bytes.size();
}

ParticleGroup MakeGroup(Input& input) {
    ParticleGroup group(input.Below(8));
    for (int i = 0; i < group.Count(); ++i)
        group[i] = input.Float();
    group.m_Geometry = input.Byte();
    group.Scale();
    return group;
}

void RequireContinued(const std::string& before, const ParticleGroup& group) {
    const std::string after = ReadBytes("Group.dpt");
    const std::string records(reinterpret_cast<const char*>(group.Data()),
                              sizeof(float) * static_cast<size_t>(group.Count()));
    REQUIRE(after.substr(TextsAt) == before.substr(TextsAt) + records);
    REQUIRE(WordAt(after, 12) == WordAt(before, 12) + group.m_Particles);
    REQUIRE(IsOfTodaysForm(after));
}

}  // namespace

void StartTarget() { FixTimeZone(); }

void RunInput(Input input) {
    ParticleGroup group = MakeGroup(input);
    const int particles = group.m_Particles;
    const std::string before = input.Rest();
    WriteBytes("Group.dpt", before);
    REQUIRE(group.Append("Group"));
    REQUIRE(group.m_Particles == particles);
    if (IsOfTodaysForm(before)) RequireContinued(before, group);
    // Lengths and counts may lead far behind the file's end, but no byte is written on the way.
    if (std::filesystem::file_size("Group.dpt") > 1000000) return;
    ParticleGroup all(0);
    REQUIRE(all.Read("Group", MostValues, 0));
}
