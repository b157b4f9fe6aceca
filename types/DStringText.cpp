// DString's text operations: parts, changes in place, searching and replacing.
#include <ctype.h>
#include <string.h>
#include <strings.h>

#include <algorithm>

#include "types/DString.h"

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

// strstr, which is slower where it has one byte to look for.
const char* FindText(const char* text, const char* pattern, size_t length) {
    return length == 1 ? strchr(text, *pattern) : strstr(text, pattern);
}

// How often `pattern` is found, each time behind the one before; an empty or null one never is.
int CountMatches(const char* text, const char* pattern, bool all) {
    if (!pattern || !*pattern) return 0;
    const size_t length = strlen(pattern);
    int count = 0;
    for (const char* found = FindText(text, pattern, length); found;
         found = FindText(found + length, pattern, length)) {
        ++count;
        if (!all) break;
    }
    return count;
}

// `text` with `with` in the place of the first `count` matches, which are looked for in `searched`:
// the text itself, or its copy in small letters. One allocation, whatever the count.
DString ReplaceMatches(const char* text, const char* searched, const char* old, const char* with,
                       int count) {
    const size_t oldLength = strlen(old);
    const size_t withLength = with ? strlen(with) : 0;
    const size_t length = strlen(text);
    const size_t wanted =
        length - static_cast<size_t>(count) * oldLength + static_cast<size_t>(count) * withLength;
    DString result;
    if (wanted > static_cast<size_t>(npos)) return result;
    char* target = result.GetBuffer(static_cast<int>(wanted));
    const char* end = text + length;
    for (; target && count > 0; --count) {
        const size_t before = static_cast<size_t>(FindText(searched, old, oldLength) - searched);
        target = std::copy_n(text, before, target);
        if (with) target = std::copy_n(with, withLength, target);
        text += before + oldLength;
        searched += before + oldLength;
    }
    if (target) std::copy(text, end, target);
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
    const int found = CountMatches(m_Text, old, all);
    if (found == 0) return *this;
    if (count) *count = found;
    return ReplaceMatches(m_Text, m_Text, old, with, found);
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
    const int found = CountMatches(text, pattern, all);
    if (count) *count = found;
    return found == 0 ? *this : ReplaceMatches(m_Text, text, pattern, with, found);
}
