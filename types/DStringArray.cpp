// DStringArray: cutting text into lines, fields and tables, and joining it again.
#include "types/DStringArray.h"

#include <string.h>
#include <strings.h>

#include <algorithm>

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

}  // namespace

int compfunc(const void* a, const void* b) {
    return strcasecmp(*static_cast<const DString*>(a), *static_cast<const DString*>(b));
}

void DStringArray::Add(const DString& s) { DArray<DString>::Add(s, 1); }

// A piece with a delimiter behind it goes to its place without a temporary. Only the count goes up:
// the shape of an array that is being split is not kept.
void DStringArray::AppendPiece(const DString& text, int start, int n) {
    realloc(m_Count + 1);
    if (m_Count == m_Capacity) return;
    void* place = m_Data + m_Count;
    if (n > 0) {
        ::new (place) DString(text, start, n);
    } else {
        ::new (place) DString();
    }
    ++m_Count;
}

void DStringArray::SplitAtSpaces(const DString& text) {
    const auto skipSpaces = [&text](int from) {
        while (text[from] == ' ')
            ++from;
        return from;
    };
    int start = skipSpaces(0);
    for (int end = text.Find(' ', start); end != npos; end = text.Find(' ', start)) {
        AppendPiece(text, start, end - start);
        start = skipSpaces(end);
    }
    if (start < text.GetLength()) Add(text.Mid(start, npos));
}

void DStringArray::SplitAt(const DString& text, const char* delim, int delimLength) {
    int start = 0;
    for (int end = text.Find(delim, start); end != npos; end = text.Find(delim, start)) {
        AppendPiece(text, start, end - start);
        start = end + delimLength;
    }
    if (start < text.GetLength()) Add(text.Mid(start, npos));
}

void DStringArray::split(const DString& text, const char* delim, int n) {
    const DString whole(text);  // may be an element of this array
    if (n > 0) Reserve(n);
    if (!whole.IsEmpty()) {
        if (delim == LDelim) {
            SplitAt(whole, "\n", 1);
        } else if (!delim || !*delim) {
            Add(whole);
        } else if (strcmp(delim, " ") == 0) {
            SplitAtSpaces(whole);
        } else {
            SplitAt(whole, delim, static_cast<int>(strlen(delim)));
        }
    }
    if (delim == LDelim && (n > 0 || !whole.IsEmpty())) {
        for (int i = 0; i < Count(); ++i)
            DropCarriageReturn(m_Data[i]);
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
    DString result((*this)[0]);
    if (Count() == 1) return result;
    int64_t length = static_cast<int64_t>(sep.GetLength()) * (m_Count - 1);
    for (int i = 0; i < Count(); ++i)
        length += (*this)[i].GetLength();
    if (length > npos) return DString("");
    // One allocation for the whole; the appends then stay inside it.
    if (!result.ReAlloc(static_cast<int>(length))) return DString("");
    result.Truncate((*this)[0].GetLength());
    for (int i = 1; i < Count(); ++i) {
        result += sep;
        result += (*this)[i];
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
