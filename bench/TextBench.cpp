// Texts: the library's strings beside the standard ones.
#include <string>

#include "support/Bench.h"
#include "types/DString.h"

namespace {

const char Short[] = "12345678";

void CopyOurs(benchmark::State& state) {
    const DString text(Short);
    for (auto _ : state) {
        DString copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

void CopyYardstick(benchmark::State& state) {
    const std::string text(Short);
    for (auto _ : state) {
        std::string copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

const Row mCopy{"DString copy", "8 bytes", 0.5, CopyOurs, CopyYardstick};

}  // namespace
