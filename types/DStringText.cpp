// DString's text operations: parts, changes in place, searching and replacing.
#include <ctype.h>
#include <string.h>
#include <strings.h>

#include <algorithm>

#include "types/DString.h"
#include "types/TextSearch.h"

namespace {

char Lower(char c) { return static_cast<char>(tolower(static_cast<unsigned char>(c))); }
char Upper(char c) { return static_cast<char>(toupper(static_cast<unsigned char>(c))); }

DString& MapLetters(DString& text, char (*map)(char)) {
    char* buffer = text.GetBuffer(text.GetLength());
    for (char* c = buffer; c && *c; ++c)
        *c = map(*c);
    return text;
}

// What C string calls see of a text, in small letters.
DString LoweredCopy(const char* text) { return DString(text).ToLower(); }

// A pattern and the part of a text in which it is looked for, which ends at the first zero byte.
class Search {
public:
    Search(const char* text, const char* pattern)
        : m_Pattern(pattern ? pattern : ""),
          m_Length(strlen(m_Pattern)),
          m_Begin(text),
          m_End(text + strlen(text)) {}
    /// The first match at or behind `start`, or null; an empty or null pattern has none.
    const char* From(const char* start) const {
        return m_Length > 0 ? FindText(start, m_End, m_Pattern, m_Length) : nullptr;
    }
    /// How many matches there are from the first one on, each behind the one before; one at most
    /// unless `all` are wanted.
    int Count(const char* match, bool all) const {
        if (!match || !all) return match ? 1 : 0;
        int count = 0;
        for (; match; match = From(match + m_Length))
            ++count;
        return count;
    }

    const char* const m_Pattern;
    const size_t m_Length;
    const char* const m_Begin;
    const char* const m_End;
};

// `text` with `with` in the place of `count` matches from the first on. They are looked for in the
// text itself or in its copy in small letters. One allocation, whatever the count.
DString ReplaceMatches(const char* text, const Search& search, const char* match, int count,
                       const char* with) {
    const size_t withLength = with ? strlen(with) : 0;
    const size_t length = static_cast<size_t>(search.m_End - search.m_Begin);
    const size_t wanted = length - static_cast<size_t>(count) * search.m_Length +
                          static_cast<size_t>(count) * withLength;
    DString result;
    char* target = result.GetBuffer(static_cast<int>(std::min(wanted, static_cast<size_t>(npos))));
    if (!target) return result;  // as always for npos
    const char* searched = search.m_Begin;
    while (true) {
        const size_t before = static_cast<size_t>(match - searched);
        target = std::copy_n(text, before, target);
        target = std::copy_n(with, withLength, target);
        text += before + search.m_Length;
        searched = match + search.m_Length;
        if (--count == 0) break;
        match = search.From(searched);
    }
    std::copy_n(text, search.m_End - searched, target);
    return result;
}

}  // namespace

// ---- Parts

DString DString::Mid(int start, int n) const {
    if (start < 0 || start > GetLength()) return DString();
    return DString(*this, start, n);
}

DString DString::Left(int n) const { return DString(*this, 0, n); }

DString DString::Right(int n) const {
    n = std::max(n, 0);
    return n >= GetLength() ? *this : DString(*this, GetLength() - n, n);
}

DString DString::AfterFirst(char c, bool whole) const {
    const int at = Find(c, 0);
    if (at == npos) return whole && m_Text ? *this : DString();
    return DString(*this, at + 1, npos);
}

DString DString::AfterLast(char c, bool whole) const {
    const int at = RFind(c, npos);
    if (at == npos) return whole && m_Text ? *this : DString();
    return DString(*this, at + 1, npos);
}

DString DString::BeforeFirst(char c, bool whole) const {
    const int at = Find(c, 0);
    if (at == npos) return whole && m_Text ? *this : DString();
    return DString(*this, 0, at);
}

DString DString::BeforeLast(char c, bool whole) const {
    const int at = RFind(c, npos);
    if (at == npos) return whole && m_Text ? *this : DString();
    return DString(*this, 0, at);
}

DString DString::Trim() const {
    const char* text = *this;
    int first = 0;
    int end = GetLength();
    while (first < end && text[first] == ' ')
        ++first;
    while (end > first && text[end - 1] == ' ')
        --end;
    return first == end ? DString("") : DString(*this, first, end - first);
}

DString DString::LTrim() const {
    const char* text = *this;
    int first = 0;
    while (first < GetLength() && text[first] == ' ')
        ++first;
    return first == GetLength() ? DString("") : DString(*this, first, npos);
}

DString DString::Despace() const {
    DString result("");
    const char* text = *this;
    char* target = result.GetBuffer(GetLength());
    if (!target) return result;
    char* end = std::copy_if(text, text + GetLength(), target, [](char c) { return c != ' '; });
    result.Truncate(static_cast<int>(end - target));
    return result;
}

// ---- Changes in place

DString& DString::ToLower() { return MapLetters(*this, Lower); }

DString& DString::ToUpper() { return MapLetters(*this, Upper); }

DString& DString::RTrim() {
    const char* text = *this;
    int length = static_cast<int>(strnlen(text, static_cast<size_t>(GetLength())));
    while (length > 1 && text[length - 1] == ' ')
        --length;
    Truncate(length);
    return *this;
}

DString& DString::RemoveExt() {
    const char* text = *this;
    for (int i = GetLength() - 1; i > 0; --i) {
        if (text[i] != '.') continue;
        Truncate(i);
        break;
    }
    return *this;
}

DString DString::LFtoCRLF() {
    constexpr char Mark = '\xC9';
    // Written without parting from other owners: callers drop the source, and no copy is paid for.
    for (int i = 0; i < GetLength(); ++i) {
        if (m_Text[i] == '\n' && (i == 0 || m_Text[i - 1] != '\r')) m_Text[i] = Mark;
    }
    const char pattern[] = {Mark, '\0'};
    return Replace(pattern, LDelim, true, nullptr);
}

// ---- Searching

int DString::FindBounded(const char* found) const {
    return found ? static_cast<int>(found - m_Text) : npos;
}

int DString::Find(char c, int start) const {
    if (start < 0 || start >= GetLength()) return npos;
    return FindBounded(strchr(m_Text + start, c));
}

int DString::Find(const char* s, int start) const {
    if (!s || start < 0 || start >= GetLength()) return npos;
    return FindBounded(strstr(m_Text + start, s));
}

int DString::FindI(const char* s, int start) const {
    if (!s || start < 0 || start >= GetLength()) return npos;
    const DString lowered = LoweredCopy(m_Text + start);
    const char* text = lowered;
    const char* found = strstr(text, LoweredCopy(s));
    return found ? start + static_cast<int>(found - text) : npos;
}

int DString::RFind(char c, int start) const {
    if (IsEmpty() || start < 0) return npos;
    if (start == npos) return FindBounded(strrchr(m_Text, c));
    for (int i = std::min(start, GetLength() - 1); i >= 0; --i) {
        if (m_Text[i] == c) return i;
    }
    return npos;
}

int DString::RFind(const char* s, int start) const {
    if (!s || start < 0) return npos;
    const size_t length = strlen(s);
    if (length > static_cast<size_t>(GetLength())) return npos;
    const char* text = *this;
    for (int i = std::min(start, GetLength() - static_cast<int>(length)); i >= 0; --i) {
        if (strncmp(text + i, s, length) == 0) return i;
    }
    return npos;
}

int DString::FindFirstOf(const char* set, int start) const {
    if (!set || start < 0 || start >= GetLength()) return npos;
    return FindBounded(strpbrk(m_Text + start, set));
}

int DString::FindFirstNotOf(const char* set, int start) const {
    if (!set || start < 0 || start >= GetLength()) return npos;
    const char* found = m_Text + start + strspn(m_Text + start, set);
    return *found ? FindBounded(found) : npos;
}

bool DString::EndsWith(const DString& tail) const {
    return !tail.IsEmpty() && tail.GetLength() <= GetLength() &&
           strcasecmp(m_Text + GetLength() - tail.GetLength(), tail) == 0;
}

bool DString::EndsWith(const char* tail) const {
    if (!m_Text) return false;
    const size_t length = tail ? strlen(tail) : 0;
    const size_t own = static_cast<size_t>(GetLength());
    return length <= own && (length == 0 || strcasecmp(m_Text + own - length, tail) == 0);
}

// ---- Replacing

DString DString::Replace(const char* old, const char* with, bool all, int* count) const {
    if (IsEmpty() || *m_Text == '\0') {
        if (m_Text && count) *count = 0;
        return DString("");
    }
    const Search search(m_Text, old);
    const char* const match = search.From(m_Text);
    if (!match) return *this;
    const int found = search.Count(match, all);
    if (count) *count = found;
    return ReplaceMatches(m_Text, search, match, found, with);
}

DString DString::Replace(const char* old, const DString& with, bool all, int* count) const {
    return Replace(old, static_cast<const char*>(with), all, count);
}

DString DString::Replace(const DString& old, const DString& with, bool all, int* count) const {
    return Replace(static_cast<const char*>(old), static_cast<const char*>(with), all, count);
}

DString DString::ReplaceI(const char* old, const char* with, bool all, int* count) const {
    if (!m_Text) return DString("");
    const DString text = LoweredCopy(m_Text);
    const DString pattern = LoweredCopy(old);
    const Search search(text, pattern);
    const char* const match = search.From(text);
    const int found = search.Count(match, all);
    if (count) *count = found;
    return found == 0 ? *this : ReplaceMatches(m_Text, search, match, found, with);
}
