// DString's numbers and dates: text forms, caller's formats, conversions.
#include <stdio.h>
#include <string.h>
#include <strings.h>
#include <time.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <type_traits>

#include "types/CLocale.h"
#include "types/DString.h"

namespace {

// Bytes reserved behind the text while a value is printed there.
constexpr int RoomForInt = 12;
constexpr int RoomForFloat = 15;
constexpr int RoomForDouble = 25;
constexpr int RoomForTime = 25;
constexpr int RoomForAddress = 25;
constexpr int RoomForFormat = 20;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Behind a width or a precision; null where it would print more than a label can want.
const char* SkipPlaces(const char* p) {
    constexpr int MostPlaces = 1000;
    int places = 0;
    for (; IsDigit(*p); ++p)
        places = std::min(10 * places + (*p - '0'), MostPlaces + 1);
    return places > MostPlaces ? nullptr : p;
}

// Behind one conversion that begins at the "%" at `p`; null unless it is of the given kinds, with
// flags, width and precision in digits and an "l" at most where `allowLong` is set.
const char* SkipConversion(const char* p, const char* conversions, bool allowLong) {
    ++p;
    p += strspn(p, "-+ #0");
    p = SkipPlaces(p);
    if (p && *p == '.') p = SkipPlaces(p + 1);
    if (!p) return nullptr;
    if (allowLong && *p == 'l') ++p;
    return *p && strchr(conversions, *p) ? p + 1 : nullptr;
}

// A format from a user's label may reach no other argument and no memory: see AddFormatted.
bool IsSafeFormat(const char* format, const char* conversions, bool allowLong) {
    int found = 0;
    for (const char* p = format; p && *p;) {
        if (*p != '%') {
            ++p;
        } else if (p[1] == '%') {
            p += 2;
        } else {
            p = SkipConversion(p, conversions, allowLong);
            if (++found > 1) return false;
        }
        if (!p) return false;
    }
    return true;
}

template <typename T>
int PrintFormatted(char* target, int room, const char* format, T value) {
    const ScopedCLocale scope;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"  // the format has passed IsSafeFormat
    return snprintf(target, static_cast<size_t>(room), format, value);
#pragma GCC diagnostic pop
}

bool BeginsWithInfinityMark(const char* text) {
    return strncasecmp(text, "1.#", 3) == 0 || strncasecmp(text, "-1.#", 4) == 0;
}

// Fields of a date, in the order in which they stand.
constexpr int DateFields = 6;
constexpr int DateDefaults[DateFields] = {1, 1, 0, 0, 0, 0};

bool IsDateSeparator(char c) { return c == ' ' || c == '-' || c == '/' || c == ':'; }

// strtol of a field; a number far out of range stays so without overflowing struct tm.
int DateField(const DString& text, int fallback) {
    constexpr long Limit = std::numeric_limits<int>::max() / 2;
    char* end = nullptr;
    const long value = strtol(text, &end, 10);
    return end == text ? fallback : static_cast<int>(std::clamp(value, -Limit, Limit));
}

// The fields of the text up to `end`. Each separator closes one, but the first character never
// counts as a separator. The last field, closed by none, goes on to the end of the whole text.
void SplitDate(const DString& text, int end, DString (&fields)[DateFields]) {
    int full = 0;
    int start = 0;
    for (int i = 1; i < end && full < DateFields; ++i) {
        if (!IsDateSeparator(text[i])) continue;
        fields[full++] = text.Mid(start, i - start);
        start = i + 1;
    }
    if (full < DateFields && start < end) fields[full] = text.Mid(start);
}

}  // namespace

// ---- Text forms

// `n` bytes of room behind the text for direct writing; null where memory is refused. The caller
// sets the length to what it wrote.
char* DString::Extend(int n) {
    const int length = GetLength();
    return ReAlloc(length + std::min(n, npos - length)) ? m_Text + length : nullptr;
}

DString& DString::operator<<(int value) {
    if (char* room = Extend(RoomForInt)) {
        SetLength(static_cast<int>(std::to_chars(room, room + RoomForInt, value).ptr - m_Text));
    }
    return *this;
}

DString& DString::operator<<(unsigned int value) {
    if (char* room = Extend(RoomForInt)) {
        SetLength(static_cast<int>(std::to_chars(room, room + RoomForInt, value).ptr - m_Text));
    }
    return *this;
}

DString& DString::operator<<(float value) {
    if (char* room = Extend(RoomForFloat)) {
        const auto written = std::to_chars(room, room + RoomForFloat, static_cast<double>(value),
                                           std::chars_format::general, 8);
        SetLength(static_cast<int>(written.ptr - m_Text));
    }
    return *this;
}

DString& DString::operator<<(double value) {
    if (char* room = Extend(RoomForDouble)) {
        const auto written =
            std::to_chars(room, room + RoomForDouble, value, std::chars_format::general, 16);
        SetLength(static_cast<int>(written.ptr - m_Text));
    }
    return *this;
}

DString& DString::operator<<(bool value) { return *this += value ? "True" : "False"; }

DString& DString::operator<<(long time) {
    const time_t seconds = time;
    struct tm local;
    tzset();  // localtime_r need not look at a time zone that the host has changed
    if (!localtime_r(&seconds, &local)) return *this;
    if (char* room = Extend(RoomForTime)) {
        const size_t written = strftime(room, RoomForTime, "%m/%d/%Y %H:%M:%S", &local);
        SetLength(static_cast<int>(room - m_Text) + static_cast<int>(written));
    }
    return *this;
}

DString& DString::operator<<(void* address) {
    if (char* room = Extend(RoomForAddress)) {
        const int written = snprintf(room, RoomForAddress, "%p", address);
        SetLength(static_cast<int>(room - m_Text) + written);
    }
    return *this;
}

DString::DString(int value) : DString() { *this << value; }
DString::DString(unsigned int value) : DString() { *this << value; }
DString::DString(float value) : DString() { *this << value; }
DString::DString(double value) : DString() { *this << value; }
DString::DString(bool value) : DString() { *this << value; }
DString::DString(long time) : DString() { *this << time; }
DString::DString(void* address) : DString() { *this << address; }

// ---- Caller's formats

template <typename T>
DString& DString::AppendFormatted(T value, const char* format, const char* conversions) {
    const int length = GetLength();
    if (!format) format = DEmptyString;
    // The format may be a piece of this text, which the printing moves.
    const DString own(format);
    int printed = -1;
    if (IsSafeFormat(own, conversions, std::is_floating_point_v<T>)) {
        char* room = Extend(RoomForFormat);
        if (!room) return *this;
        printed = PrintFormatted(room, RoomForFormat, own, value);
        if (printed >= RoomForFormat) {
            Truncate(length);
            room = Extend(printed);
            printed = room ? PrintFormatted(room, printed + 1, own, value) : -1;
        }
        Truncate(length + std::max(printed, 0));
    }
    return printed < 0 ? *this << value : *this;
}

DString& DString::TidyExponent() {
    const int exponent = RFind('e', npos);
    if (exponent == npos) return *this;
    const bool plus = (*this)[exponent + 1] == '+';
    const bool zero = (*this)[exponent + 2] == '0';
    if (!plus && !zero) return *this;
    const int length = GetLength();
    char* text = GetBuffer(length);
    if (!text) return *this;
    const int target = exponent + (plus ? 1 : 2);
    const int rest = exponent + (zero ? 3 : 2);
    memmove(text + target, text + rest, static_cast<size_t>(length - rest));
    Truncate(length - (rest - target));
    return *this;
}

DString& DString::AddFormatted(int value, const char* format) {
    return AppendFormatted(value, format, "di");
}

DString& DString::AddFormatted(unsigned int value, const char* format) {
    return AppendFormatted(value, format, "uxXo");
}

DString& DString::AddFormatted(float value, const char* format) {
    return AppendFormatted(value, format, "aAeEfFgG").TidyExponent();
}

DString& DString::AddFormatted(double value, const char* format) {
    return AppendFormatted(value, format, "aAeEfFgG").TidyExponent();
}

DString Format(int value, const char* format) { return DString().AddFormatted(value, format); }

DString Format(unsigned int value, const char* format) {
    return DString().AddFormatted(value, format);
}

DString Format(float value, const char* format) { return DString().AddFormatted(value, format); }

DString Format(double value, const char* format) { return DString().AddFormatted(value, format); }

// ---- Conversions

bool DString::IsNumeric() const {
    if (IsUnset()) return false;
    char* end = nullptr;
    ParseDouble(m_Text, &end);
    return end != m_Text && *end == '\0';
}

bool DString::IsSemiNumeric() const {
    return IsEmpty() || IsNumeric() || BeginsWithInfinityMark(m_Text);
}

int DString::EndNumber(int& value) const {
    value = 0;
    if (IsEmpty()) return npos;
    int first = GetLength();
    bool inRun = false;
    while (first > 0 && (IsDigit(m_Text[first - 1]) || !inRun)) {
        --first;
        inRun = inRun || IsDigit(m_Text[first]);
    }
    if (inRun) value = static_cast<int>(strtoul(m_Text + first, nullptr, 10));
    return first;
}

bool DString::ToInt(int& value, int start) const {
    if (IsUnset() || start < 0 || start > GetLength()) return false;
    char* end = nullptr;
    value = static_cast<int>(strtol(m_Text + start, &end, 10));
    return end != m_Text + start;
}

bool DString::ToUint(unsigned int& value, int start) const {
    if (IsUnset() || start < 0 || start > GetLength()) return false;
    char* end = nullptr;
    value = static_cast<unsigned int>(strtoul(m_Text + start, &end, 10));
    return end != m_Text + start;
}

bool DString::ToFloat(float& value, int start) const {
    double number = 0;
    if (IsUnset() || start < 0 || start > GetLength()) return false;
    const bool complete = ToDouble(number, start);
    value = static_cast<float>(number);
    return complete;
}

bool DString::ToDouble(double& value, int start) const {
    if (IsUnset() || start < 0 || start > GetLength()) return false;
    char* end = nullptr;
    value = ParseDouble(m_Text + start, &end);
    return end != m_Text + start && *end == '\0';
}

bool DString::ToDate(long& value, int) const {
    if (GetLength() < 2) return false;
    int letter = RFind('M', npos);
    if (letter == npos) letter = RFind('m', npos);
    if (letter < 2) return false;
    const bool marked = letter != npos;
    const bool afternoon = marked && (m_Text[letter - 1] == 'P' || m_Text[letter - 1] == 'p');
    const int end = marked ? letter - 1 : GetLength();

    DString fields[DateFields];
    SplitDate(*this, end, fields);
    int numbers[DateFields];
    for (int i = 0; i < DateFields; ++i) {
        numbers[i] = DateField(fields[i], DateDefaults[i]);
    }
    struct tm date = {};
    date.tm_mon = numbers[0] - 1;
    date.tm_mday = numbers[1] - 1;  // one too low; see the declaration
    date.tm_year = numbers[2] >= 1901 ? numbers[2] - 1900 : numbers[2];
    date.tm_hour = numbers[3] + (afternoon && numbers[3] < 12 ? 12 : 0);
    date.tm_min = numbers[4];
    date.tm_sec = numbers[5];
    date.tm_isdst = -1;
    value = mktime(&date);
    return true;
}
