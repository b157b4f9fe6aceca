// DStringArray: cutting text into lines, fields and tables, and joining it again.
#include "types/DStringArray.h"

#include <stddef.h>
#include <string.h>
#include <strings.h>

#include <algorithm>

#include "types/Prefetch.h"
#include "types/TextSearch.h"

template class DArray<DString>;
template class DArray<DStringArray>;

namespace {

void DropCarriageReturn(DString& line) {
    const int length = line.GetLength();
    if (length > 0 && line[length - 1] == '\r') line.TruncateBy(1);
}

int MeasureWidth(const DStringArray& lines, const char* delim) {
    constexpr int MeasuredLines = 100;
    int width = 0;
    for (int i = 0; i < std::min(MeasuredLines, lines.Count()); ++i) {
        DStringArray pieces;
        pieces.split(lines[i], delim, -1);
        width = std::max(width, pieces.Count());
    }
    return width;
}

// Copies a text without its terminator to a target that ends at `end`; the result is the place
// behind it. A short one takes along what is behind it, since every block but the shared empty one
// has that many bytes, and a move of a known length is a single instruction.
char* Copied(const DString& text, char* target, const char* end) {
    constexpr size_t ShortText = 16;
    const size_t length = static_cast<size_t>(text.GetLength());
    const bool isShort = length - 1 < ShortText;
    if (isShort && end - target >= ptrdiff_t{ShortText}) {
        memcpy(target, text, ShortText);
    } else {
        memcpy(target, text, length);
    }
    return target + length;
}

// The texts of a long list lie all over the memory: they are fetched ahead of their use, since
// waiting for each in turn would take most of the time.
[[gnu::always_inline]] inline void FetchAhead(const DStringArray& list, int i) {
    constexpr int Ahead = 16;
    if (i + Ahead < list.Count()) PrefetchText(list[i + Ahead]);
}

// Goes through the pieces of a text that have a delimiter behind them.
class PieceWalk {
public:
    PieceWalk(const DString& text, const char* delim)
        : m_Text(text),
          m_End(m_Text + strlen(m_Text)),
          m_Delim(delim),
          m_DelimLength(strlen(delim)),
          m_AtSpaces(strcmp(delim, " ") == 0),
          m_Next(SkipSpaces(m_Text)) {}
    /// False where no delimiter is left; the rest of the text then begins at Start.
    bool Go() {
        m_Start = m_Next;
        m_Stop = FindText(m_Start, m_End, m_Delim, m_DelimLength);
        if (!m_Stop) return false;
        m_Next = SkipSpaces(m_Stop + m_DelimLength);
        return true;
    }
    int Start() const { return static_cast<int>(m_Start - m_Text); }
    int Length() const { return static_cast<int>(m_Stop - m_Start); }

private:
    const char* SkipSpaces(const char* p) const {
        while (m_AtSpaces && *p == ' ')
            ++p;
        return p;
    }

    const char* m_Text;
    const char* m_End;  // of what is searched: a zero byte ends it
    const char* m_Delim;
    size_t m_DelimLength;
    bool m_AtSpaces;
    const char* m_Next;
    const char* m_Start = nullptr;
    const char* m_Stop = nullptr;
};

}  // namespace

int compfunc(const void* a, const void* b) {
    return strcasecmp(*static_cast<const DString*>(a), *static_cast<const DString*>(b));
}

void DStringArray::Add(const DString& s) { DArray<DString>::Add(s, 1); }

// A piece with a delimiter behind it goes to its place without a temporary. Only the count goes up:
// the shape of an array that is being split is not kept. Null where memory is refused.
DString* DStringArray::AppendPiece(const DString& text, int start, int n) {
    if (m_Count == m_Capacity) realloc(m_Count + 1);
    if (m_Count == m_Capacity) return nullptr;
    DString* place = m_Data + m_Count++;
    return n > 0 ? ::new (static_cast<void*>(place)) DString(text, start, n)
                 : ::new (static_cast<void*>(place)) DString();
}

// The room is made in one step, to the capacity that growing piece by piece would reach.
void DStringArray::AppendPieces(const DString& text, const char* delim) {
    const bool isLines = delim == LDelim;
    if (isLines) delim = "\n";
    int64_t count = m_Count;
    for (PieceWalk walk(text, delim); walk.Go();)
        ++count;
    realloc(count - 1);
    PieceWalk walk(text, delim);
    while (walk.Go()) {
        DString* piece = AppendPiece(text, walk.Start(), walk.Length());
        if (piece && isLines) DropCarriageReturn(*piece);
    }
    if (walk.Start() >= text.GetLength()) return;
    DString rest = text.Mid(walk.Start(), npos);
    if (isLines) DropCarriageReturn(rest);
    Add(rest);
}

void DStringArray::split(const DString& text, const char* delim, int n) {
    const DString whole(text);  // may be an element of this array
    if (n > 0) Reserve(n);
    if (delim == LDelim && (n > 0 || !whole.IsEmpty())) {
        for (int i = 0; i < Count(); ++i)
            DropCarriageReturn(m_Data[i]);
    }
    if (!whole.IsEmpty()) {
        if (delim && *delim) {
            AppendPieces(whole, delim);
        } else {
            Add(whole);
        }
    }
    if (n > 0 && Count() < n) ReSize(1, n);
}

void DStringArray::Split2D(const DString& text, const char* delim, int cols) {
    DStringArray lines;
    lines.split(text, LDelim, -1);
    Split1Dto2D(lines, delim, cols);
}

void DStringArray::Split1Dto2D(const DStringArray& lines, const char* delim, int cols) {
    if (&lines == this) {
        const DStringArray own(lines);
        Split1Dto2D(own, delim, cols);
        return;
    }
    if (cols < 0) cols = MeasureWidth(lines, delim);
    Clear();
    ReSize(cols, lines.Count());
    for (int i = 0; i < CCount(); ++i) {
        DStringArray pieces;
        pieces.split(lines[i], delim, cols);
        for (int j = 0; j < std::min(cols, pieces.Count()); ++j)
            (*this)(j, i) = pieces[j];
    }
}

void DStringArray::MakeTable(DArray<DStringArray>& out, const char* delim, int n) const {
    out.Clear();
    out.AddBlank(Count());
    for (int i = 0; i < out.Count(); ++i)
        out[i].split((*this)[i], delim, n);
}

DString DStringArray::Join(const DString& sep) const {
    if (Count() == 0) return DString("");
    if (Count() == 1) return (*this)[0];
    int64_t length = static_cast<int64_t>(sep.GetLength()) * (m_Count - 1);
    for (int i = 0; i < Count(); ++i) {
        FetchAhead(*this, i);
        length += (*this)[i].GetLength();
    }
    DString result;
    char* target = result.GetBuffer(static_cast<int>(std::min<int64_t>(length, npos)));
    if (!target) return DString("");  // as always for npos
    const char* const end = target + length;
    target = Copied((*this)[0], target, end);
    for (int i = 1; i < Count(); ++i) {
        FetchAhead(*this, i);
        target = Copied((*this)[i], Copied(sep, target, end), end);
    }
    return result;
}

void DStringArray::JoinInto(char* buffer) const {
    if (!buffer) return;
    size_t room = strlen(buffer);
    for (int i = 0; i < Count(); ++i) {
        const DString& element = (*this)[i];
        const size_t length = static_cast<size_t>(element.GetLength());
        const size_t delimLength = static_cast<size_t>(LenLD);
        if (length + delimLength > room) return;
        memcpy(buffer, element, length);
        memcpy(buffer + length, LDelim, delimLength);
        buffer += length + delimLength;
        room -= length + delimLength;
    }
}

int DStringArray::Index(const DString& s) const {
    for (int i = 0; i < Count(); ++i) {
        const DString& element = (*this)[i];
        if (element.GetLength() == s.GetLength() && strcasecmp(element, s) == 0) return i;
    }
    return -1;
}

void DStringArray::Sort(int (*cmp)(const void*, const void*)) {
    DArray<DString>::Sort(cmp ? cmp : compfunc);
}
