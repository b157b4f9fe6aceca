// Strings that share blocks, against a plain model: after each operation every string has the text,
// the owners and the block size of its model, so a write that reaches another owner shows.
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <new>
#include <optional>
#include <type_traits>

#include "support/Fuzzing.h"
#include "support/TextModel.h"
#include "types/DString.h"

namespace {

constexpr int Slots = 4;
constexpr int LongestText = 600;

struct Session {
    DString m_Texts[Slots];
    TextModel m_Models[Slots] = {TextModel::SharedEmpty(), TextModel::SharedEmpty(),
                                 TextModel::SharedEmpty(), TextModel::SharedEmpty()};
};

// What one operation works on: a slot, another one (often the same), and the numbers it asks for.
struct Step {
    Session& m_Session;
    Input& m_Input;
    int m_Slot;
    int m_OtherSlot;

    DString& Text() { return m_Session.m_Texts[m_Slot]; }
    TextModel& Model() { return m_Session.m_Models[m_Slot]; }
    DString& Other() { return m_Session.m_Texts[m_OtherSlot]; }
    TextModel& OtherModel() { return m_Session.m_Models[m_OtherSlot]; }
    /// An index or a count: near the text's ends, out of range, or npos.
    int Index();
};

int Step::Index() {
    const int choice = m_Input.Byte();
    if (choice >= 252) return choice == 255 ? npos : choice == 254 ? npos - 1 : -1;
    if (choice >= 200) return Text().GetLength() + choice - 226;
    return choice;
}

// A C text: null, bytes of the input, or a piece of one of the strings.
class Pattern {
public:
    explicit Pattern(Step& step) {
        const int kind = step.m_Input.Below(8);
        if (kind == 0) {
            m_Text = nullptr;
        } else if (kind < 6) {
            m_Own = CText(step.m_Input.Take(static_cast<size_t>(kind)));
            m_Text = m_Own->c_str();
        } else {
            const DString& source = kind == 6 ? step.Text() : step.Other();
            m_Text = static_cast<const char*>(source) + step.m_Input.Below(source.GetLength() + 1);
        }
        m_Copy = m_Text ? m_Text : "";
    }
    bool IsNull() const { return !m_Text; }
    operator const char*() const { return m_Text; }
    const std::string& Copy() const { return m_Copy; }

private:
    std::optional<std::string> m_Own;
    const char* m_Text;
    std::string m_Copy;
};

// ---- Making and assigning

// A block that the model can't tell the size of has room for its text, in whole steps.
void AdoptAlloc(Step& step) {
    if (step.Model().IsUnset()) return;
    const int alloc = step.Text().GetAllocLength();
    REQUIRE(alloc % 32 == 0 && alloc >= BlockBytes(static_cast<size_t>(step.Model().Length())));
    step.Model().Adopt(alloc);
}

// A pointer at the string's own first character: copying from there does nothing.
bool IsOwnText(Step& step, const char* text) {
    if (step.Model().IsNull()) return !text;
    return text == static_cast<const char*>(step.Text());
}

void AssignString(Step& step) {
    step.Text() = step.Other();
    step.Model() = TextModel(step.OtherModel());
}

void AssignText(Step& step) {
    const Pattern text(step);
    if (!IsOwnText(step, text)) step.Model().Store(text.Copy());
    step.Text() = text;
}

void AssignChar(Step& step) {
    const char c = static_cast<char>(step.m_Input.Byte());
    step.Text() = c;
    step.Model().Store(std::string(1, c));
}

void MakeFromText(Step& step) {
    const Pattern text(step);
    const int n = step.Index();
    const size_t length = std::min(text.Copy().size(), static_cast<size_t>(std::max(n, 0)));
    TextModel made(text.Copy().substr(0, length));
    step.Text() = DString(text, n);
    step.Model() = made;
}

void MakeFromChar(Step& step) {
    const char c = static_cast<char>(step.m_Input.Byte());
    const int n = step.m_Input.Byte() - 4;
    step.Text() = DString(c, n);
    step.Model() = TextModel(std::string(static_cast<size_t>(std::max(n, 0)), c));
}

void MakePart(Step& step) {
    const int start = step.Index();
    const int n = step.Index();
    const TextModel made = step.OtherModel().Part(start, n);
    step.Text() = DString(step.Other(), start, n);
    step.Model() = made;
}

void CopyText(Step& step) {
    const char* source =
        step.OtherModel().IsNull() ? nullptr : static_cast<const char*>(step.Other());
    if (!IsOwnText(step, source)) step.Model().Store(step.OtherModel().Text());
    REQUIRE(&step.Text().Copy(step.Other()) == &step.Text());
}

// Behind a Release that leaves owners the place is made anew; the last owner becomes null.
void Release(Step& step) {
    const bool isLast = step.Model().Refs() == 1;
    step.Text().Release();
    if (!isLast) ::new (static_cast<void*>(&step.Text())) DString();
    step.Model() = isLast ? TextModel() : TextModel::SharedEmpty();
}

// ---- Memory

void Fill(Step& step, int from) {
    const int length = step.Text().GetLength();
    char* buffer = step.Text().GetBuffer(length);
    REQUIRE(buffer && buffer[length] == '\0');
    for (int i = from; i < length; ++i)
        buffer[i] = '?';
}

void ReAllocText(Step& step) {
    const int n = std::min(step.Index(), LongestText);
    const int before = step.Text().GetLength();
    const int way = step.m_Input.Below(3);
    if (way == 0) REQUIRE(step.Text().ReAlloc(n));
    if (way == 1) step.Text().Truncate(n);
    if (way == 2) REQUIRE(step.Text().GetBuffer(n) == static_cast<const char*>(step.Text()));
    step.Model().ReAlloc(n);
    REQUIRE(step.Text().GetAllocLength() == step.Model().Alloc());
    Fill(step, before);
}

void TruncateByText(Step& step) {
    const int n = step.Index();
    const int length = step.Model().Length();
    step.Text().TruncateBy(n);
    if (n <= length) step.Model().ReAlloc(length - std::max(n, 0));
}

// Any bytes of a string, zero bytes too: its own or another one's, from anywhere.
void AllocCopyPiece(Step& step) {
    const std::string source = step.OtherModel().Text();
    const int start = step.m_Input.Below(static_cast<int>(source.size()) + 1);
    const int n = step.m_Input.Below(static_cast<int>(source.size()) - start + 1);
    const char* piece = static_cast<const char*>(step.Other()) + start;
    if (!IsOwnText(step, piece)) {
        step.Model().Store(source.substr(static_cast<size_t>(start), static_cast<size_t>(n)));
    }
    step.Text().AllocCopy(n, piece);
}

void AppendPiece(Step& step) {
    const std::string source = step.OtherModel().Text();
    const int start = step.m_Input.Below(static_cast<int>(source.size()) + 1);
    const int n = step.m_Input.Below(static_cast<int>(source.size()) - start + 1);
    step.Model().Append(source.substr(static_cast<size_t>(start), static_cast<size_t>(n)));
    step.Text().ConcatSelf(n, static_cast<const char*>(step.Other()) + start);
}

void SetCharAt(Step& step) {
    const int i = step.Index();
    const char c = static_cast<char>(step.m_Input.Byte());
    step.Text().SetChar(i, c);
    if (i < 0 || i >= step.Model().Length()) return;
    if (step.Model().Refs() > 1) step.Model().ReAlloc(step.Model().Length());
    step.Model().Shared()[static_cast<size_t>(i)] = c;
}

// ---- Appending

void AppendString(Step& step) {
    step.Model().Append(step.OtherModel().Text());
    step.Text() += step.Other();
}

void AppendText(Step& step) {
    const Pattern text(step);
    step.Model().Append(text.Copy());
    step.m_Input.Bool() ? step.Text() += text : step.Text() << text;
}

void AppendChar(Step& step) {
    const char c = static_cast<char>(step.m_Input.Byte());
    step.Model().Append(std::string(1, c));
    step.Text() += c;
}

void Concatenate(Step& step) {
    const Pattern text(step);
    const char c = static_cast<char>(step.m_Input.Byte());
    const std::string other = step.OtherModel().Text();
    TextModel made = step.Model();
    switch (step.m_Input.Below(5)) {
        case 0:
            made.Append(other);
            step.Text() = step.Text() + step.Other();
            break;
        case 1:
            made.Append(text.Copy());
            step.Text() = step.Text() + text;
            break;
        case 2:
            made.Append(std::string(1, c));
            step.Text() = step.Text() + c;
            break;
        case 3:
            made = TextModel(text.Copy());
            made.Append(other);
            step.Text() = static_cast<const char*>(text) + step.Other();
            break;
        default:
            made = TextModel(std::string(1, c));
            made.Append(other);
            step.Text() = c + step.Other();
    }
    step.Model() = made;
}

template <typename T>
void AppendPrinted(Step& step, T value, const char* format, int room) {
    char printed[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    snprintf(printed, sizeof printed, format, value);
#pragma GCC diagnostic pop
    if (step.m_Input.Bool()) {
        step.Text() << value;
        step.Model().AppendReserved(printed, room);
    } else {
        step.Text() = DString(value);
        TextModel made = TextModel::SharedEmpty();
        made.AppendReserved(printed, room);
        step.Model() = made;
    }
}

void AppendNumber(Step& step) {
    const int value = step.m_Input.Int32();
    const float real = step.m_Input.Float();
    switch (step.m_Input.Below(6)) {
        case 0:
            return AppendPrinted(step, value, "%i", 12);
        case 1:
            return AppendPrinted(step, static_cast<unsigned int>(value), "%u", 12);
        case 2:
            return AppendPrinted(step, real, "%.8g", 15);
        case 3:
            return AppendPrinted(step, static_cast<double>(real) * value, "%.16g", 25);
        case 4:
            return AppendPrinted(step, static_cast<void*>(&step), "%p", 25);
        default:
            const bool yes = (value & 1) != 0;
            step.Model().Append(yes ? "True" : "False");
            step.Text() << yes;
    }
}

void AppendTime(Step& step) {
    const long value = step.m_Input.Int32() * static_cast<long>(step.m_Input.Byte());
    const time_t seconds = value;
    struct tm local;
    if (!localtime_r(&seconds, &local)) return;
    char printed[64];
    strftime(printed, sizeof printed, "%m/%d/%Y %H:%M:%S", &local);
    if (strlen(printed) < 25) step.Model().AppendReserved(printed, 25);
    if (strlen(printed) < 25) step.Text() << value;
}

// ---- Formats

void TidyExponent(TextModel& model) {
    std::string text = model.Text();
    const size_t at = text.rfind('e');
    if (at == std::string::npos) return;
    if (at + 2 < text.size() && text[at + 2] == '0') text.erase(at + 2, 1);
    if (at + 1 < text.size() && text[at + 1] == '+') text.erase(at + 1, 1);
    if (text != model.Text()) model.Store(text);
}

template <typename T>
void AddPrinted(Step& step, T value, const std::string& format) {
    char printed[512];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    snprintf(printed, sizeof printed, format.c_str(), value);
#pragma GCC diagnostic pop
    step.Text().AddFormatted(value, format.c_str());
    step.Model().AppendReserved(printed, 20);
    if constexpr (std::is_floating_point_v<T>) TidyExponent(step.Model());
}

// Formats that fit their value: flags, width, precision and some text about them.
void AddFormatted(Step& step) {
    if (step.Model().Text().size() != CText(step.Model().Text()).size()) return;
    static const char* const flags[] = {"", "-", "+", "0", " ", "#", "-+", "+0"};
    std::string format = step.m_Input.Bool() ? "e+0%%" : "";
    format += std::string("%") + flags[step.m_Input.Below(8)];
    if (step.m_Input.Bool()) format += std::to_string(1 + step.m_Input.Below(60));
    if (step.m_Input.Bool()) format += "." + std::to_string(step.m_Input.Below(40));
    const char conversion = "aAeEfFgG"[step.m_Input.Below(8)];
    const int value = step.m_Input.Int32();
    const float real = step.m_Input.Float();
    switch (step.m_Input.Below(4)) {
        case 0:
            AddPrinted(step, value, format + "d|");
            break;
        case 1:
            AddPrinted(step, static_cast<unsigned int>(value), format + "x|");
            break;
        case 2:
            AddPrinted(step, real, format + conversion);
            break;
        default:
            AddPrinted(step, static_cast<double>(real), format + conversion + " V");
    }
    AdoptAlloc(step);
}

// Any bytes as a format end in a text, and what stood there before begins it.
void FormatAnything(Step& step) {
    const std::string format = step.m_Input.Line();
    const DString number = Format(step.m_Input.Int32(), format.c_str());
    const DString real = Format(step.m_Input.Float(), format.c_str());
    REQUIRE(number.GetLength() >= 0 && real.GetLength() >= 0);
    if (format.find('%') != std::string::npos) return;
    REQUIRE(std::string(number) == CText(format));
}

// ---- Parts and changes in place

void TakePart(Step& step) {
    const int start = step.Index();
    const int n = step.Index();
    const TextModel other = step.OtherModel();
    const int length = other.Length();
    const bool isOutside = start < 0 || start > length;
    switch (step.m_Input.Below(3)) {
        case 0:
            step.Model() = isOutside ? TextModel::SharedEmpty() : other.Part(start, n);
            step.Text() = step.Other().Mid(start, n);
            break;
        case 1:
            step.Model() = other.Part(0, n);
            step.Text() = step.Other().Left(n);
            break;
        default:
            step.Model() =
                std::max(n, 0) >= length ? other : other.Part(length - std::max(n, 0), npos);
            step.Text() = step.Other().Right(n);
    }
}

void TakeSide(Step& step) {
    const char c = static_cast<char>(step.m_Input.Byte());
    const bool whole = step.m_Input.Bool();
    const int way = step.m_Input.Below(4);
    const TextModel other = step.OtherModel();
    const int at = way % 2 == 0 ? other.Find(c, 0) : other.RFind(c, npos);
    step.Model() = at == npos ? other.WholeOrEmpty(whole)
                   : way < 2  ? other.Part(at + 1, npos)
                              : other.Part(0, at);
    const DString& source = step.Other();
    step.Text() = way == 0   ? source.AfterFirst(c, whole)
                  : way == 1 ? source.AfterLast(c, whole)
                  : way == 2 ? source.BeforeFirst(c, whole)
                             : source.BeforeLast(c, whole);
}

void TakeTrimmed(Step& step) {
    const std::string text = step.OtherModel().Text();
    const size_t first = std::min(text.find_first_not_of(' '), text.size());
    std::string made = text.substr(first);
    switch (step.m_Input.Below(3)) {
        case 0:
            step.Text() = step.Other().LTrim();
            break;
        case 1:
            made.resize(made.find_last_not_of(' ') + 1);
            step.Text() = step.Other().Trim();
            break;
        default:
            made.erase(std::remove(made.begin(), made.end(), ' '), made.end());
            step.Text() = step.Other().Despace();
    }
    step.Model() = TextModel(made);
    AdoptAlloc(step);
}

void TrimRight(Step& step) {
    REQUIRE(&step.Text().RTrim() == &step.Text());
    std::string text = CText(step.Model().Text());
    while (text.size() > 1 && text.back() == ' ')
        text.pop_back();
    step.Model().ReAlloc(static_cast<int>(text.size()));
}

void RemoveExtension(Step& step) {
    REQUIRE(&step.Text().RemoveExt() == &step.Text());
    const size_t dot = step.Model().Text().rfind('.');
    if (dot != std::string::npos && dot > 0) step.Model().ReAlloc(static_cast<int>(dot));
}

void MapLetters(Step& step) {
    const bool lower = step.m_Input.Bool();
    REQUIRE(&(lower ? step.Text().ToLower() : step.Text().ToUpper()) == &step.Text());
    step.Model().ReAlloc(step.Model().Length());
    std::string& text = step.Model().Shared();
    for (size_t i = 0; i < text.size() && text[i]; ++i) {
        const char low = LowerAscii(text[i]);
        text[i] = lower ? low : low >= 'a' && low <= 'z' ? static_cast<char>(low - 32) : low;
    }
}

void MakeLineEnds(Step& step) {
    TextModel source = step.OtherModel();
    if (!source.IsUnset()) {
        const std::string before = source.Text();
        for (size_t i = 0; i < before.size(); ++i) {
            if (before[i] == '\n' && (i == 0 || before[i - 1] != '\r')) source.Shared()[i] = '\xC9';
        }
    }
    const TextModel made = source.Replaced("\xC9", "\r\n", true, false, nullptr);
    step.Text() = step.Other().LFtoCRLF();
    step.Model() = made;
    source = TextModel();
    AdoptAlloc(step);
}

// ---- Searching and replacing

void Search(Step& step) {
    const Pattern pattern(step);
    const char c = static_cast<char>(step.m_Input.Byte());
    const int start = step.Index();
    const DString& text = step.Text();
    const TextModel& model = step.Model();
    REQUIRE(text.Find(c, start) == model.Find(c, start));
    REQUIRE(text.RFind(c, start) == model.RFind(c, start));
    const std::string& copy = pattern.Copy();
    const bool isNull = pattern.IsNull();
    REQUIRE(text.Find(pattern, start) == (isNull ? npos : model.Find(copy, start)));
    REQUIRE(text.FindI(pattern, start) == (isNull ? npos : model.FindI(copy, start)));
    REQUIRE(text.RFind(pattern, start) == (isNull ? npos : model.RFind(copy, start)));
    REQUIRE(text.FindFirstOf(pattern, start) == (isNull ? npos : model.FindFirstOf(copy, start)));
    REQUIRE(text.FindFirstNotOf(pattern, start) ==
            (isNull ? npos : model.FindFirstNotOf(copy, start)));
    REQUIRE(text.EndsWith(pattern) == (!model.IsNull() && model.EndsWith(copy)));
}

void Compare(Step& step) {
    const Pattern pattern(step);
    const std::string text = step.Model().Text();
    const std::string other = step.OtherModel().Text();
    const bool isNull = step.Model().IsNull();
    REQUIRE((step.Text() == step.Other()) == (!isNull && text.size() == other.size() &&
                                              Lowered(CText(text)) == Lowered(CText(other))));
    REQUIRE((step.Text() == pattern) == (!isNull && CText(text) == pattern.Copy()));
    REQUIRE(step.Text().EndsWith(step.Other()) == (!other.empty() && step.Model().EndsWith(other)));
}

void Replace(Step& step) {
    const Pattern old(step);
    const Pattern with(step);
    const bool all = step.m_Input.Bool();
    const bool ignoreCase = step.m_Input.Bool();
    int count = -7;
    int expected = -7;
    const TextModel made =
        step.OtherModel().Replaced(old.Copy(), with.Copy(), all, ignoreCase, &expected);
    if (made.Length() > LongestText) return;
    const DString& source = step.Other();
    step.Text() = ignoreCase ? source.ReplaceI(old, with, all, &count)
                             : source.Replace(old, with, all, &count);
    REQUIRE(count == expected);
    step.Model() = made;
    if (made.Refs() == 2) AdoptAlloc(step);
}

void ReplaceByStrings(Step& step) {
    const bool all = step.m_Input.Bool();
    const std::string with = CText(step.OtherModel().Text());
    const Pattern old(step);
    const TextModel made = step.Model().Replaced(old.Copy(), with, all, false, nullptr);
    if (made.Length() > LongestText) return;
    step.Text() = step.m_Input.Bool() ? step.Text().Replace(old, step.Other(), all)
                                      : step.Text().Replace(DString(old), step.Other(), all);
    step.Model() = made;
    AdoptAlloc(step);
}

// ---- Numbers and dates

bool IsNumericModel(const std::string& text) {
    char* end = nullptr;
    strtod(text.c_str(), &end);
    return end != text.c_str() && *end == '\0';
}

void AskNumbers(Step& step) {
    const std::string text = CText(step.Model().Text());
    const bool isNumeric = !step.Model().IsUnset() && IsNumericModel(text);
    REQUIRE(step.Text().IsNumeric() == isNumeric);
    const std::string lowered = Lowered(text);
    REQUIRE(step.Text().IsSemiNumeric() ==
            (step.Model().Length() == 0 || isNumeric || lowered.starts_with("1.#") ||
             lowered.starts_with("-1.#")));
    int end = -1;
    const std::string whole = step.Model().Text();
    const size_t last = whole.find_last_of("0123456789");
    const size_t before = whole.find_last_not_of("0123456789", last);
    const size_t first = last == std::string::npos     ? 0
                         : before == std::string::npos ? 0
                                                       : before + 1;
    const int expected = whole.empty() ? npos : static_cast<int>(first);
    REQUIRE(step.Text().EndNumber(end) == expected);
    REQUIRE(end == (last == std::string::npos
                        ? 0
                        : static_cast<int>(strtoul(whole.c_str() + first, nullptr, 10))));
}

void ConvertNumbers(Step& step) {
    const int start = step.Index();
    const bool isAllowed = !step.Model().IsUnset() && start >= 0 && start <= step.Model().Length();
    const std::string text =
        isAllowed ? CText(step.Model().Text(), static_cast<size_t>(start)) : std::string();
    char* end = nullptr;
    const double real = strtod(text.c_str(), &end);
    const bool isComplete = end != text.c_str() && *end == '\0';
    const long number = strtol(text.c_str(), &end, 10);
    const bool isTaken = end != text.c_str();
    int value = 77;
    REQUIRE(step.Text().ToInt(value, start) == (isAllowed && isTaken));
    REQUIRE(value == (isAllowed ? static_cast<int>(number) : 77));
    unsigned int positive = 77;
    REQUIRE(step.Text().ToUint(positive, start) == (isAllowed && isTaken));
    REQUIRE(positive ==
            (isAllowed ? static_cast<unsigned int>(strtoul(text.c_str(), nullptr, 10)) : 77));
    double stored = 77;
    REQUIRE(step.Text().ToDouble(stored, start) == (isAllowed && isComplete));
    const double wanted = isAllowed ? real : 77;
    REQUIRE(memcmp(&stored, &wanted, sizeof stored) == 0);
    float narrow = 77;
    REQUIRE(step.Text().ToFloat(narrow, start) == (isAllowed && isComplete));
    const float wantedNarrow = static_cast<float>(wanted);
    REQUIRE(memcmp(&narrow, &wantedNarrow, sizeof narrow) == 0);
}

// The fields of a date that ends at `end`, the last one open to the end of the text.
void SplitDateModel(const std::string& text, size_t end, long (&numbers)[6]) {
    size_t start = 0;
    int full = 0;
    const auto store = [&](const std::string& field) {
        char* behind = nullptr;
        const long number = strtol(field.c_str(), &behind, 10);
        if (behind != field.c_str()) numbers[full] = number;
        ++full;
    };
    for (size_t i = 1; i < end && full < 6; ++i) {
        if (!strchr(" -/:", text[i]) || text[i] == '\0') continue;
        store(text.substr(start, i - start));
        start = i + 1;
    }
    if (full < 6 && start < end) store(text.substr(start));
}

void AskDate(Step& step) {
    const std::string text = step.Model().Text();
    size_t letter = CText(text).rfind('M');
    if (letter == std::string::npos) letter = CText(text).rfind('m');
    const bool isMarked = letter != std::string::npos;
    const bool isRefused = text.size() < 2 || letter < 2;
    long value = 77;
    REQUIRE(step.Text().ToDate(value) == !isRefused);
    if (isRefused) {
        REQUIRE(value == 77);
        return;
    }
    long numbers[6] = {1, 1, 0, 0, 0, 0};
    SplitDateModel(text, isMarked ? letter - 1 : text.size(), numbers);
    for (const long number : numbers) {
        if (number < -100000 || number > 100000) return;
    }
    const bool isAfternoon = isMarked && LowerAscii(text[letter - 1]) == 'p';
    struct tm date = {};
    date.tm_mon = static_cast<int>(numbers[0] - 1);
    date.tm_mday = static_cast<int>(numbers[1] - 1);
    date.tm_year = static_cast<int>(numbers[2] > 1900 ? numbers[2] - 1900 : numbers[2]);
    date.tm_hour = static_cast<int>(numbers[3] + (isAfternoon && numbers[3] < 12 ? 12 : 0));
    date.tm_min = static_cast<int>(numbers[4]);
    date.tm_sec = static_cast<int>(numbers[5]);
    date.tm_isdst = -1;
    REQUIRE(value == mktime(&date));
}

// ----

using Operation = void (*)(Step&);
constexpr Operation Operations[] = {
    AssignString, AssignText,       AssignChar,     MakeFromText,   MakeFromChar,   MakePart,
    CopyText,     Release,          ReAllocText,    TruncateByText, AllocCopyPiece, AppendPiece,
    SetCharAt,    AppendString,     AppendText,     AppendChar,     Concatenate,    AppendNumber,
    AppendTime,   AddFormatted,     FormatAnything, TakePart,       TakeSide,       TakeTrimmed,
    TrimRight,    RemoveExtension,  MapLetters,     MakeLineEnds,   Search,         Compare,
    Replace,      ReplaceByStrings, AskNumbers,     ConvertNumbers, AskDate,
};
constexpr int OperationCount = static_cast<int>(sizeof Operations / sizeof *Operations);

void RequireEqual(const Session& session) {
    for (int i = 0; i < Slots; ++i) {
        const DString& text = session.m_Texts[i];
        const TextModel& model = session.m_Models[i];
        const int length = model.Length();
        REQUIRE(text.GetLength() == length && text.IsEmpty() == (length == 0));
        const char* bytes = text;
        REQUIRE(memcmp(bytes, model.Text().data(), static_cast<size_t>(length)) == 0);
        REQUIRE(bytes[length] == '\0' && text[length] == '\0' && text[-1] == '\0');
        REQUIRE(text.GetRefs() == model.Refs());
        REQUIRE(text.GetAllocLength() == model.Alloc());
    }
}

}  // namespace

void StartTarget() {}

void RunInput(Input input) {
    Session session;
    for (int steps = 0; !input.IsEmpty() && steps < 100; ++steps) {
        const Operation operation = Operations[input.Below(OperationCount)];
        const int slots = input.Byte();
        Step step{session, input, slots % Slots, slots / Slots % Slots};
        operation(step);
        RequireEqual(session);
        if (step.Text().GetLength() <= LongestText) continue;
        step.Text().Truncate(LongestText);
        step.Model().ReAlloc(LongestText);
    }
}
