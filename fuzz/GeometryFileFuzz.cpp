// Files of geometries: any bytes are read within bounds, and what was read is written the same from
// then on. Only the count of bodies is kept low, since the first 65,536 are made in any case.
#include "data/Geometry.h"

#include <string.h>

#include "support/FileRounds.h"

namespace {

std::string WrittenByName(Geometry& geometry) {
    REQUIRE(geometry.Write("Written"));
    return ReadBytes("Written.dgm");
}

// What was read from a file is written as the same file.
void RequireSameFile(Geometry& geometry) {
    const std::string bytes = WrittenByName(geometry);
    Geometry again;
    REQUIRE(again.Read("Written"));
    REQUIRE(again.m_Date == geometry.m_Date);
    const std::string second = WrittenByName(again);
    REQUIRE(again.m_Date != geometry.m_Date || second == bytes);
}

bool IsSmall(const Geometry& geometry) {
    for (int i = 0; i < geometry.m_Objects.Count(); ++i) {
        const Object& body = geometry.m_Objects[i];
        if (!IsShort(body.m_Name) || body.m_Points.Count() > MostValues) return false;
    }
    return IsShort(geometry.m_Label) && IsShort(geometry.m_Note);
}

std::string Word(int value) {
    char bytes[sizeof value];
    memcpy(bytes, &value, sizeof value);
    return {bytes, sizeof bytes};
}

}  // namespace

void StartTarget() { FixTimeZone(); }

void RunInput(Input input) {
    const std::string extension = input.Take(static_cast<size_t>(input.Below(16)));
    const int count = input.Below(24) - 4;
    WriteBytes("Bodies.dgm", Word(1) + Word(static_cast<int>(extension.size())) + extension +
                                 Word(count) + input.Rest());

    Geometry geometry;
    REQUIRE(geometry.Read("Bodies"));
    if (!IsSmall(geometry)) return;
    RequireSameFile(geometry);
    Geometry copy(geometry);
    copy.Scale();
    RequireSameFile(copy);
}
