// Texts: the library's strings beside the standard ones.
#include <string.h>
#include <strings.h>

#include <string>
#include <vector>

#include "support/Bench.h"
#include "types/DStringArray.h"

namespace {

// "1-3-5-7-..." of so many bytes.
template <int Size>
std::string Sample() {
    std::string text;
    for (int i = 0; i < Size; ++i)
        text += i % 2 == 0 ? static_cast<char>('1' + i % 8) : '-';
    return text;
}

template <int Size>
DString OurSample() {
    return DString(Sample<Size>().c_str());
}

// ---- One string

template <int Size>
void CopyOurs(benchmark::State& state) {
    const DString text = OurSample<Size>();
    for (auto _ : state) {
        DString copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

template <int Size>
void CopyYardstick(benchmark::State& state) {
    const std::string text = Sample<Size>();
    for (auto _ : state) {
        std::string copy(text);
        benchmark::DoNotOptimize(copy);
    }
}

const Row mCopyShort{"DString copy", "8 bytes", 0.5, CopyOurs<8>, CopyYardstick<8>};
const Row mCopyLong{"DString copy", "60 bytes", 0.5, CopyOurs<60>, CopyYardstick<60>};

template <typename String>
void Append(benchmark::State& state, const String& text) {
    for (auto _ : state) {
        String longer(text);
        longer += text;
        benchmark::DoNotOptimize(longer);
    }
}

template <int Size>
void AppendOurs(benchmark::State& state) {
    Append(state, OurSample<Size>());
}

template <int Size>
void AppendYardstick(benchmark::State& state) {
    Append(state, Sample<Size>());
}

const Row mAppendShort{"DString copy, append", "8 bytes", 1.0, AppendOurs<8>, AppendYardstick<8>};
const Row mAppendLong{"DString copy, append", "60 bytes", 1.0, AppendOurs<60>, AppendYardstick<60>};

// A text of 8 KB made of such pieces.
template <typename String>
void Grow(benchmark::State& state, const String& piece, int size) {
    for (auto _ : state) {
        String text;
        for (int length = 0; length < 8000; length += size)
            text += piece;
        benchmark::DoNotOptimize(text);
    }
}

template <int Size>
void GrowOurs(benchmark::State& state) {
    Grow(state, OurSample<Size>(), Size);
}

template <int Size>
void GrowYardstick(benchmark::State& state) {
    Grow(state, Sample<Size>(), Size);
}

const Row mGrowShort{"DString +=, up to 8 KB", "8 bytes", 1.0, GrowOurs<8>, GrowYardstick<8>};
const Row mGrowLong{"DString +=, up to 8 KB", "60 bytes", 1.0, GrowOurs<60>, GrowYardstick<60>};

template <int Size>
void EqualOurs(benchmark::State& state) {
    DString text = OurSample<Size>();
    DString other = OurSample<Size>();
    other.SetChar(0, '1');
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(other);
        bool isEqual = text == other;
        benchmark::DoNotOptimize(isEqual);
    }
}

template <int Size>
void EqualYardstick(benchmark::State& state) {
    std::string text = Sample<Size>();
    std::string other = Sample<Size>();
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(other);
        bool isEqual =
            text.size() == other.size() && strncasecmp(text.data(), other.data(), text.size()) == 0;
        benchmark::DoNotOptimize(isEqual);
    }
}

const Row mEqualShort{"DString ==, strncasecmp", "8 bytes", 1.0, EqualOurs<8>, EqualYardstick<8>};
const Row mEqualLong{"DString ==, strncasecmp", "60 bytes", 1.0, EqualOurs<60>, EqualYardstick<60>};

template <typename String>
void CompareExactly(benchmark::State& state, String text, const char* other) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(other);
        bool isEqual = text == other;
        benchmark::DoNotOptimize(isEqual);
    }
}

template <int Size>
void ExactOurs(benchmark::State& state) {
    CompareExactly(state, OurSample<Size>(), Sample<Size>().c_str());
}

template <int Size>
void ExactYardstick(benchmark::State& state) {
    CompareExactly(state, Sample<Size>(), Sample<Size>().c_str());
}

const Row mExactShort{"DString == C text", "8 bytes", 1.0, ExactOurs<8>, ExactYardstick<8>};
const Row mExactLong{"DString == C text", "60 bytes", 1.0, ExactOurs<60>, ExactYardstick<60>};

template <int Size>
void ReplaceOurs(benchmark::State& state) {
    const DString text = OurSample<Size>();
    for (auto _ : state) {
        DString result = text.Replace("5", "<>");
        benchmark::DoNotOptimize(result);
    }
}

std::string Replaced(const std::string& text, const std::string& old, const std::string& with) {
    std::string result;
    size_t start = 0;
    for (size_t at = text.find(old); at != std::string::npos; at = text.find(old, start)) {
        result.append(text, start, at - start);
        result += with;
        start = at + old.size();
    }
    result.append(text, start);
    return result;
}

template <int Size>
void ReplaceYardstick(benchmark::State& state) {
    const std::string text = Sample<Size>();
    for (auto _ : state) {
        std::string result = Replaced(text, "5", "<>");
        benchmark::DoNotOptimize(result);
    }
}

const Row mReplaceShort{"DString::Replace", "8 bytes", 1.0, ReplaceOurs<8>, ReplaceYardstick<8>};
const Row mReplaceLong{"DString::Replace", "60 bytes", 1.0, ReplaceOurs<60>, ReplaceYardstick<60>};

// A part of Size bytes.
template <int Size>
void MidOurs(benchmark::State& state) {
    const DString text = OurSample<2 * Size>();
    for (auto _ : state) {
        DString part = text.Mid(2, Size);
        benchmark::DoNotOptimize(part);
    }
}

template <int Size>
void MidYardstick(benchmark::State& state) {
    const std::string text = Sample<2 * Size>();
    for (auto _ : state) {
        std::string part = text.substr(2, Size);
        benchmark::DoNotOptimize(part);
    }
}

const Row mMidShort{"DString::Mid", "8 bytes", 1.0, MidOurs<8>, MidYardstick<8>};
const Row mMidLong{"DString::Mid", "60 bytes", 1.0, MidOurs<60>, MidYardstick<60>};

// ---- Lists of strings

constexpr int TextSize = 10000000;

// Lines of so many bytes, the delimiter included.
template <int Line>
std::string Lines(const char* delim) {
    const std::string line = Sample<Line>().substr(strlen(delim)) + delim;
    std::string text;
    while (text.size() < TextSize)
        text += line;
    return text;
}

template <int Line>
void SplitOurs(benchmark::State& state, const char* delim) {
    const DString text(Lines<Line>(delim).c_str());
    for (auto _ : state) {
        DStringArray pieces;
        pieces.split(text, delim);
        benchmark::DoNotOptimize(pieces);
    }
}

// Lines lose their carriage return, where there is one.
template <int Line>
void SplitYardstick(benchmark::State& state, const char* delim) {
    const std::string text = Lines<Line>(delim);
    const char last = delim[strlen(delim) - 1];
    for (auto _ : state) {
        std::vector<std::string> pieces;
        const char* start = text.data();
        const char* const end = start + text.size();
        while (const void* found = memchr(start, last, static_cast<size_t>(end - start))) {
            const char* stop = static_cast<const char*>(found);
            const char* next = stop + 1;
            if (stop > start && stop[-1] == '\r') --stop;
            pieces.emplace_back(start, stop);
            start = next;
        }
        benchmark::DoNotOptimize(pieces);
    }
}

void SplitLinesOurs(benchmark::State& state) { SplitOurs<60>(state, LDelim); }
void SplitLinesYardstick(benchmark::State& state) { SplitYardstick<60>(state, LDelim); }
void SplitFieldsOurs(benchmark::State& state) { SplitOurs<10>(state, ","); }
void SplitFieldsYardstick(benchmark::State& state) { SplitYardstick<10>(state, ","); }

const Row mSplitLines{"DStringArray::split", "10 MB, lines of 60", 1.0, SplitLinesOurs,
                      SplitLinesYardstick};
const Row mSplitFields{"DStringArray::split", "10 MB, fields of 10", 1.0, SplitFieldsOurs,
                       SplitFieldsYardstick};

template <int Line>
void JoinOurs(benchmark::State& state) {
    DStringArray pieces;
    pieces.split(DString(Lines<Line>(",").c_str()), ",");
    const DString separator(",");
    for (auto _ : state) {
        DString text = pieces.Join(separator);
        benchmark::DoNotOptimize(text);
    }
}

template <int Line>
void JoinYardstick(benchmark::State& state) {
    const std::string piece = Lines<Line>(",").substr(0, Line - 1);
    const std::vector<std::string> pieces(TextSize / Line + 1, piece);
    const std::string separator(",");
    for (auto _ : state) {
        std::string text = pieces.front();
        for (size_t i = 1; i < pieces.size(); ++i) {
            text += separator;
            text += pieces[i];
        }
        benchmark::DoNotOptimize(text);
    }
}

const Row mJoinLines{"DStringArray::Join", "10 MB, lines of 60", 1.0, JoinOurs<60>,
                     JoinYardstick<60>};
const Row mJoinFields{"DStringArray::Join", "10 MB, fields of 10", 1.0, JoinOurs<10>,
                      JoinYardstick<10>};

}  // namespace
