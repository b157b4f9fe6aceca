/// DString: the byte string of the whole library. Every path, key, value and message is one.
///
/// A DString is a single pointer to the first character of a text block. Copies share the block by
/// a reference count and part on the first write, so a copy costs a pointer and an increment, and
/// arguments and results pass by value freely. Counts are plain integers: a string and its shares
/// stay on one thread.
///
/// A block is one allocation: three 32-bit integers (reference count, length, allocated bytes)
/// directly ahead of the characters, and a zero byte behind them. A text may hold any byte, but
/// the operations built on C string calls (searching, replacing, number conversion) see it only up
/// to its first zero byte.
///
/// Three states mean an empty text, and every operation accepts all three: the null pointer (after
/// Release by the last owner), the shared empty block DEmptyString, and a zero-length block of the
/// string's own.
///
/// Lengths that are negative count as 0. Where the system refuses memory the string keeps the text
/// that it had, and a new string is empty; nothing throws.
#pragma once

#include <string.h>
#include <strings.h>

/// What is short enough to be part of its callers is a function of the library as well, which hosts
/// that don't inline link to.
#ifndef TARSEL_ALSO_EMITTED
#define TARSEL_ALSO_EMITTED
#endif

/// No position (not found), and the whole rest wherever a length is an int.
extern const int npos;

/// Carriage return and line feed: the line end of every text file that the library writes.
/// DStringArray::split tells this very pointer from other texts, so hand on LDelim itself.
extern const char* const LDelim;

/// Length of LDelim.
extern const int LenLD;

/// The layout of a text block; the characters go on behind m_Text as far as the block reaches.
struct DTextBlock {
    int m_Refs;      ///< owners; 1 for an unshared block, -1 for DEmpty
    int m_Length;    ///< characters in use, without the terminator
    int m_Alloc;     ///< bytes of the whole block, header included; 0 for DEmpty
    char m_Text[4];  ///< the characters
};

/// The shared empty block. It is never counted, written or freed.
extern const DTextBlock DEmpty;

/// The characters of DEmpty. The empty block is recognised by this address.
extern const char* const DEmptyString;

class DString {
public:
    // Construction and assignment

    /// The shared empty block.
    DString() : m_Text(const_cast<char*>(DEmptyString)) {}
    /// A share of `other`.
    TARSEL_ALSO_EMITTED DString(const DString& other) : m_Text(other.m_Text) {
        if (!IsUnset()) ++Block()->m_Refs;
    }
    /// The first min(n, strlen(s)) bytes of `s`, in a block of its own even where that is no text.
    /// A null `s` counts as empty.
    DString(const char* s, int n = npos);
    /// `n` copies of `c`.
    explicit DString(char c, int n = 1);
    /// The part of `s` from `start` on, at most `n` bytes, in a block of its own. A `start` beyond
    /// the end or below 0 gives no text; an empty `s` gives the shared empty block.
    DString(const DString& s, int start, int n);
    /// The text forms of operator<<.
    explicit DString(int value);
    explicit DString(unsigned int value);
    explicit DString(float value);
    explicit DString(double value);
    explicit DString(bool value);
    explicit DString(long time);
    explicit DString(void* address);

    /// The same as Release.
    TARSEL_ALSO_EMITTED ~DString() { Release(); }

    /// Shares `other`.
    TARSEL_ALSO_EMITTED DString& operator=(const DString& other) {
        DString share(other);
        char* const old = m_Text;
        m_Text = share.m_Text;
        share.m_Text = old;
        return *this;
    }
    /// A private copy of `s`, which may be a piece of this text. Null counts as empty.
    DString& operator=(const char* s);
    DString& operator=(char c);

    // Reading

    /// Bytes in use; 0 for every empty state.
    int GetLength() const { return m_Text ? Block()->m_Length : 0; }
    bool IsEmpty() const { return GetLength() == 0; }
    /// The zero-terminated text, never null. It stays valid until the string changes or dies.
    operator const char*() const { return m_Text ? m_Text : DEmptyString; }
    /// The byte at `i`, a zero byte out of range.
    char operator[](int i) const { return i >= 0 && i < GetLength() ? m_Text[i] : '\0'; }
    /// Equal lengths and equal letters without regard to case. False if this string is null.
    bool operator==(const DString& other) const {
        if (!m_Text || GetLength() != other.GetLength()) return false;
        if (m_Text == other.m_Text) return true;
        // Most that are equal are so to the byte, which is told faster.
        return memcmp(m_Text, other, static_cast<size_t>(GetLength())) == 0 ||
               strcasecmp(m_Text, other) == 0;
    }
    bool operator!=(const DString& other) const { return !(*this == other); }
    /// Equal with regard to case, up to the first zero byte. False if this string is null.
    bool operator==(const char* s) const {
        return m_Text && strcmp(m_Text, s ? s : DEmptyString) == 0;
    }
    bool operator!=(const char* s) const { return !(*this == s); }

    // Memory

    /// Gives up this owner's share. The last owner frees the block and becomes null; with owners
    /// left the pointer stays as it was, and the object must not be used, not even destroyed, until
    /// its place is constructed anew. DArray, which moves strings by bytes, relies on that.
    TARSEL_ALSO_EMITTED void Release() {
        if (IsUnset() || --Block()->m_Refs > 0) return;
        FreeBlock(m_Text);
        m_Text = nullptr;
    }
    /// Owners of the block; 0 for a null string, -1 for the shared empty block.
    int GetRefs() const;
    /// Bytes of the block, header included; 0 for a null string and the shared empty block.
    int GetAllocLength() const;
    /// Makes the text `n` bytes long, in a block that is not shared. New bytes are undefined. False
    /// where memory is refused; the string then stays as it was.
    bool ReAlloc(int n);
    /// ReAlloc, then the characters for direct writing: `n` of them and a terminator. Null where
    /// memory is refused. Cut back to what was written with Truncate.
    char* GetBuffer(int n);
    /// ReAlloc: despite its name it also makes a text longer, with undefined new bytes.
    void Truncate(int n);
    /// Removes the last `n` bytes; does nothing if `n` exceeds the length.
    void TruncateBy(int n);
    /// Sets the text to `n` bytes from `src`, in a block that is not shared. Does nothing if `src`
    /// is this very text. A null `src` counts as no bytes; a piece of this text is allowed.
    void AllocCopy(int n, const char* src);
    /// AllocCopy of the other's text.
    DString& Copy(const DString& other);
    /// Appends `n` bytes from `src`, which may be a piece of this text; nothing if `n` is below 1
    /// or `src` is null.
    void ConcatSelf(int n, const char* src);
    /// Stores `c` at `i`, after parting from other owners. Out of range it does nothing.
    void SetChar(int i, char c);

    // Appending

    DString& operator+=(const DString& other) {
        ConcatSelf(other.GetLength(), other.m_Text);
        return *this;
    }
    DString& operator+=(const char* s) {
        ConcatSelf(TextLength(s), s);
        return *this;
    }
    DString& operator+=(char c) {
        ConcatSelf(1, &c);
        return *this;
    }

    /// Append the text form of a value: "%i".
    DString& operator<<(int value);
    /// "%u".
    DString& operator<<(unsigned int value);
    /// "%.8g", the form in which scalars stand in files.
    DString& operator<<(float value);
    /// "%.16g".
    DString& operator<<(double value);
    /// "True" or "False".
    DString& operator<<(bool value);
    /// A time in seconds since the epoch, not a number: local time as "%m/%d/%Y %H:%M:%S".
    DString& operator<<(long time);
    /// "%p".
    DString& operator<<(void* address);
    /// Text as it stands, so that none of the forms above is taken for it.
    DString& operator<<(const char* text) { return *this += text; }

    /// Append a number in the caller's printf format: ordinary text, "%%" and at most one
    /// conversion that fits the argument (d i; u x X o; a e f g in either case, an "l" allowed),
    /// with flags, width and precision in digits, each at most 1000. Any other format gives the
    /// form of operator<<.
    ///
    /// The float and double forms then tidy the exponent behind the last "e" of the whole string,
    /// wherever that "e" came from: a "0" two places behind it goes, and a "+" directly behind it.
    /// So 1.23e+05 reads 1.23e5, and 1.23e-05 reads 1.23e-5; one zero at most is dropped.
    DString& AddFormatted(int value, const char* format);
    DString& AddFormatted(unsigned int value, const char* format);
    DString& AddFormatted(float value, const char* format);
    DString& AddFormatted(double value, const char* format);

    // Parts, each a new string

    /// At most `n` bytes from `start` on; empty if `start` is negative or beyond the length.
    DString Mid(int start, int n = npos) const;
    DString Left(int n) const;
    DString Right(int n) const;
    /// What stands behind or before the first or last `c`. Where `c` doesn't occur the result is
    /// this string when `whole` is true, and empty when it is false.
    DString AfterFirst(char c, bool whole) const;
    DString AfterLast(char c, bool whole) const;
    DString BeforeFirst(char c, bool whole) const;
    DString BeforeLast(char c, bool whole) const;
    /// Without leading and trailing spaces. Only the byte 0x20 counts, here and in the next two.
    DString Trim() const;
    /// Without leading spaces.
    DString LTrim() const;
    /// Without any space.
    DString Despace() const;

    // Changes in place

    /// Map each byte up to the first zero byte by the current locale.
    DString& ToLower();
    DString& ToUpper();
    /// Cuts the text at its first zero byte, then drops trailing spaces, but never the first
    /// character: a text of spaces keeps one.
    DString& RTrim();
    /// Cuts the text at its last ".", unless that stands first. A dot in a folder name counts.
    DString& RemoveExt();
    /// The text with every bare line feed made LDelim. The string itself, and every share of it,
    /// is left with the byte 0xC9 in the place of each; use the result and drop the source. A 0xC9
    /// that was there already becomes a line end too.
    DString LFtoCRLF();

    // Searching: an index, or npos. A negative start and a null pattern find nothing, nor does,
    // but for RFind, a start at or beyond the length.

    int Find(char c, int start = 0) const;
    int Find(const char* s, int start = 0) const;
    /// Without regard to case, by the current locale.
    int FindI(const char* s, int start = 0) const;
    /// The last occurrence at or before `start`; a start beyond the end means the end.
    int RFind(char c, int start = npos) const;
    int RFind(const char* s, int start = npos) const;
    int FindFirstOf(const char* set, int start = 0) const;
    int FindFirstNotOf(const char* set, int start = 0) const;
    /// Compare the tail without regard to case. An empty DString gives false, but an empty
    /// `const char*` gives true on any string that isn't null.
    bool EndsWith(const DString& tail) const;
    bool EndsWith(const char* tail) const;

    // Replacing, each giving a new string

    /// `with` for each `old`, or for the first alone. An empty or null `old` is never found.
    /// `count`, if not null, receives the number of replacements; it stays as it was on a null
    /// string, and where nothing is found in a text that isn't empty.
    DString Replace(const char* old, const char* with, bool all = true, int* count = nullptr) const;
    DString Replace(const char* old, const DString& with, bool all = true,
                    int* count = nullptr) const;
    DString Replace(const DString& old, const DString& with, bool all = true,
                    int* count = nullptr) const;
    /// Without regard to case. `count` receives the number also when that is 0, unlike Replace,
    /// and stays as it was only on a null string.
    DString ReplaceI(const char* old, const char* with, bool all = true,
                     int* count = nullptr) const;

    // Numbers and dates, in the C locale whatever the host has set

    /// The whole text is a number by strtod.
    bool IsNumeric() const;
    /// Empty, numeric, or beginning with "1.#" or "-1.#", as some systems print infinities.
    bool IsSemiNumeric() const;
    /// The rightmost run of digits, wherever it stands: its value, and its index as the result.
    /// Without a digit both are 0; an empty text gives npos and a value of 0.
    int EndNumber(int& value) const;
    /// From `start` on by strtol in base 10, cut to 32 bits. Lax: true if anything was taken,
    /// whatever follows. All four conversions leave `value` alone and fail on a null string, on the
    /// shared empty block and on a `start` out of range; otherwise they store also when they fail.
    bool ToInt(int& value, int start = 0) const;
    bool ToUint(unsigned int& value, int start = 0) const;
    /// By strtod. Strict: true only if the number reaches the end of the text.
    bool ToFloat(float& value, int start = 0) const;
    bool ToDouble(double& value, int start = 0) const;
    /// A date such as operator<<(long) prints, or looser: month, day, year, hour, minute, second
    /// parted by space, "-", "/" or ":", with AM or PM. The day of the month is taken one too low,
    /// as files written so far expect: a date lands one day before what its text says. Nothing is
    /// validated; false only for fewer than 2 characters, or an "M" at index 0 or 1.
    bool ToDate(long& value, int reserved = 0) const;

private:
    const DTextBlock* Block() const {
        return reinterpret_cast<const DTextBlock*>(m_Text - HeaderSize);
    }
    DTextBlock* Block() { return reinterpret_cast<DTextBlock*>(m_Text - HeaderSize); }
    void SetLength(int n);
    bool IsUnset() const { return !m_Text || m_Text == DEmptyString; }
    bool Fits(int n);
    char* Extend(int n);
    void Outgrow(int n, const char* src);
    int FindBounded(const char* found) const;
    template <typename T>
    DString& AppendFormatted(T value, const char* format, const char* conversions);
    DString& TidyExponent();

    /// The length of a C text, null counting as empty, and npos at most.
    static int TextLength(const char* s) {
        const size_t length = s ? strlen(s) : 0;
        return length < static_cast<size_t>(npos) ? static_cast<int>(length) : npos;
    }
    static char* NewBlock(long size);
    static void FreeBlock(char* text);

    static constexpr int HeaderSize = 3 * static_cast<int>(sizeof(int));
    /// Free blocks of the smallest size, linked through their character area. Blocks on the list
    /// never go back to the system.
    static char* m_pFreeList;

    char* m_Text;
};

/// Concatenation, in a new string. An empty or null right side leaves a share of the left.
DString operator+(const DString& left, const DString& right);
DString operator+(const DString& left, char right);
DString operator+(const DString& left, const char* right);
DString operator+(char left, const DString& right);
DString operator+(const char* left, const DString& right);

/// A number in the caller's printf format, as AddFormatted appends it.
DString Format(int value, const char* format);
DString Format(unsigned int value, const char* format);
DString Format(float value, const char* format);
DString Format(double value, const char* format);
