// What grows with the square of its size: each row is the work on twice as much beside the work on
// once as much, so that a ratio of 4 is the square and one of 2 would be linear.
#include <string>

#include "support/Bench.h"
#include "system/DIni.h"
#include "types/DString.h"

namespace {

constexpr int Lines = 2'000;
constexpr int Bytes = 20'000;
constexpr int Numbers = 2'000;

// A settings file whose lines stand in the opposite order in the document.
void Changed(benchmark::State& state, int lines) {
    std::string forward = "[Fields]";
    std::string backward = "[Fields]";
    for (int i = 0; i < lines; ++i) {
        forward += "\r\nkey" + std::to_string(i) + "=value";
        backward += "\r\nkey" + std::to_string(lines - 1 - i) + "=value";
    }
    const std::string path = Scratch("Reordered.ini");
    WriteBytes(path, forward);
    DIni document(path.c_str());
    WriteBytes(path, backward);
    for (auto _ : state) {
        if (document.Changed()) state.SkipWithError("the order of lines counts");
    }
}

// A pattern that fails at its last byte, everywhere.
void RFind(benchmark::State& state, int bytes) {
    const DString text('a', bytes);
    const DString pattern = DString('a', bytes / 2) + "b";
    for (auto _ : state)
        benchmark::DoNotOptimize(text.RFind(pattern, npos));
}

// Numbers in a caller's format, appended to one text.
void AddFormatted(benchmark::State& state, int numbers) {
    for (auto _ : state) {
        DString text;
        for (int i = 0; i < numbers; ++i)
            text.AddFormatted(1.5f, "%.3f ");
        benchmark::DoNotOptimize(text);
    }
}

template <void (*Work)(benchmark::State&, int), int Size>
void Of(benchmark::State& state) {
    Work(state, Size);
}

const Row mChanged{"square: Changed, lines reversed", "4,000 : 2,000 lines", 6.0,
                   Of<Changed, 2 * Lines>, Of<Changed, Lines>};
const Row mRFind{"square: RFind of half the text", "40,000 : 20,000 bytes", 6.0,
                 Of<RFind, 2 * Bytes>, Of<RFind, Bytes>};
const Row mAddFormatted{"square: AddFormatted to one text", "4,000 : 2,000", 6.0,
                        Of<AddFormatted, 2 * Numbers>, Of<AddFormatted, Numbers>};

}  // namespace
