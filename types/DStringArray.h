/// DStringArray: the list of strings, and the text-table tool: it cuts text into lines and fields,
/// and joins them again. Settings files, shot lists and delimited tables all pass through it.
#pragma once

#include "types/DArray.h"
#include "types/DString.h"

extern template class DArray<DString>;

class DStringArray : public DArray<DString> {
public:
    using DArray<DString>::DArray;

    /// Appends a share of the string. On a table of more than one row it does nothing, since one
    /// element is no whole column there.
    void Add(const DString& s);

    /// Appends the pieces of `text` behind what the array holds.
    ///
    /// With the delimiter " ", runs of spaces part the pieces, and leading and trailing ones make
    /// none. Any other delimiter parts at each occurrence, with regard to case; pieces between
    /// adjacent delimiters are empty strings, and one at the very end makes no last piece. With
    /// LDelim itself (the pointer, not a copy of its text) the text is parted at line feeds, and
    /// afterwards every element of the array, also those that stood in it before, loses one
    /// trailing carriage return, so that both kinds of line end read alike. An empty or null
    /// delimiter gives the whole text as one piece.
    ///
    /// A positive `n` is a minimum: the array is filled up to `n` elements with blanks. Otherwise
    /// only Count() can be trusted afterwards, and CCount() can't.
    void split(const DString& text, const char* delim, int n = -1);
    /// split of `text` into lines, then Split1Dto2D.
    void Split2D(const DString& text, const char* delim, int cols = -1);
    /// Makes this array a table: each line becomes one column, and its fields go down the column,
    /// `cols` of them: what is missing is blank, and what is beyond is dropped. A negative `cols`
    /// is measured as the widest of the first 100 lines.
    void Split1Dto2D(const DStringArray& lines, const char* delim, int cols = -1);
    /// Splits each element of this array into the element of `out` with the same index.
    void MakeTable(DArray<DStringArray>& out, const char* delim, int n = -1) const;

    /// The elements with `sep` between them; an empty array gives a zero-length string.
    DString Join(const DString& sep) const;
    /// Copies each element, followed by LDelim, into `buffer`, while text and delimiter fit
    /// together. The room is strlen(buffer) on entry, so fill the buffer with non-zero bytes
    /// first. Nothing is terminated.
    void JoinInto(char* buffer) const;

    /// The first index whose element equals `s` without regard to case; -1 (not npos) if none.
    int Index(const DString& s) const;
    /// qsort; a null `cmp` means compfunc.
    void Sort(int (*cmp)(const void*, const void*) = nullptr);

private:
    void AppendPieces(const DString& text, const char* delim);
    DString* AppendPiece(const DString& text, int start, int n);
};

extern template class DArray<DStringArray>;

/// strcasecmp of the two DString elements that the arguments point at; neither may be null.
int compfunc(const void* a, const void* b);
