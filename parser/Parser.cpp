// The evaluator of scalar expressions. It works on the text itself: each level looks for its
// operators, cuts the text at them and hands the pieces down; brackets and parentheses are computed
// first and written back as numbers. docs/expressions.md tells the language.
//
// The whole state of an evaluation is on the stack, since a sink or callback may evaluate another.
#include <math.h>
#include <string.h>
#include <strings.h>

#include <limits>

#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "experiment/Experiment.h"
#include "types/StartUp.h"

namespace {

/// What may stand before the "e" of an exponent.
TARSEL_START_UP(TARSEL_START_PARSER) const DString Digits("1234567890.");
/// What, just before a "[", tells that the bracket isn't a parameter's argument.
TARSEL_START_UP(TARSEL_START_PARSER) const DString Ops(" +-*/^(");

// Markers of computed numbers in the text; the operator scans pass over what stands between a pair.
constexpr char OpenArgument = '\xC9';
constexpr char CloseArgument = '\xCA';
constexpr char OpenNegative = '\xCB';
constexpr char CloseNegative = '\xCC';

// DFMax times -2.0 in single precision, which overflows. IsVF refuses it like every other invalid
// value.
constexpr float InvalidValue = -std::numeric_limits<float>::infinity();

// The length of every function's name.
constexpr int FunctionLength = 3;

bool IsTrue(const DString& text) { return strcasecmp(text, "True") == 0; }

bool Contains(const DString& set, char c) { return c != '\0' && set.Find(c, 0) != npos; }

bool IsFunctionName(const DString& name, const char* function) {
    return name.GetLength() == FunctionLength && strcasecmp(name, function) == 0;
}

// The last three bytes before a "(", or an empty text where there is no room for them.
DString NameAtEnd(const DString& left) {
    const int end = left.GetLength();
    return end < FunctionLength ? DString() : left.Mid(end - FunctionLength, FunctionLength);
}

// Replaces `value` by the function's value. False if `name` is no function.
bool ApplyFunction(const DString& name, float& value) {
    const double wide = static_cast<double>(value);
    if (IsFunctionName(name, "sin")) {
        value = static_cast<float>(sin(wide));
    } else if (IsFunctionName(name, "cos")) {
        value = static_cast<float>(cos(wide));
    } else if (IsFunctionName(name, "tan")) {
        value = tanf(value);
    } else if (IsFunctionName(name, "log")) {
        value = static_cast<float>(log(wide));
    } else if (IsFunctionName(name, "exp")) {
        value = static_cast<float>(exp(wide));
    } else if (IsFunctionName(name, "atn")) {
        value = atanf(value);
    } else {
        return IsFunctionName(name, "bol");
    }
    return true;
}

float Power(float base, float exponent) {
    return static_cast<float>(pow(static_cast<double>(base), static_cast<double>(exponent)));
}

// The bracket behind `left` holds the argument of a parameter, as in name\XY[expression].
bool IsParameterArgument(const DString& left) {
    const int end = left.GetLength();
    return end >= 3 && left[end - 3] == '\\' && !Contains(Ops, left[end - 1]);
}

// Behind the next `marker`; the end of the text if there is none.
int Behind(const DString& text, char marker, int from) {
    const int at = text.Find(marker, from);
    return at == npos ? text.GetLength() : at + 1;
}

// Where the scan for "+" and "-" goes on behind index `i`, which holds neither of them.
int NextInAddend(const DString& text, int i) {
    switch (text[i]) {
        case ' ':
        case '*':
        case '/':
        case '^': {
            // A sign behind these belongs to the operand; so a blank hides the byte behind it.
            const char next = text[i + 1];
            return next == OpenArgument || next == OpenNegative ? i + 1 : i + 2;
        }
        case 'E':
        case 'e':
            return i > 0 && Contains(Digits, text[i - 1]) ? i + 2 : i + 1;
        case OpenArgument:
            return Behind(text, CloseArgument, i);
        case OpenNegative:
            return Behind(text, CloseNegative, i);
        default:
            return i + 1;
    }
}

bool IsSign(char c) { return c == '+' || c == '-'; }

// The text from `start` up to `end`; all of it is a share.
DString Piece(const DString& text, int start, int end) {
    return start == 0 && end >= text.GetLength() ? text : text.Mid(start, end - start);
}

// The places of a mark in a text, asked for from ever further on; the text is searched once.
class NextPlace {
public:
    NextPlace(const DString& text, const char* mark) : m_Text(text), m_Mark(mark) {}
    int From(int start) {
        if (m_Place < start) m_Place = m_Text.Find(m_Mark, start);
        return m_Place;
    }

private:
    const DString& m_Text;
    const char* m_Mark;
    int m_Place = -1;
};

// A text that is rewritten from its last opening mark on towards its front. It is cut there: what
// stands behind the cut lies at the end of a block, with room in front of it for the value that
// takes the place of the mark and its contents. So nothing is moved, and the work for a deep nest
// grows with its length, not with the square of it.
class Rewriting {
public:
    // The text in front of the cut stays in `text` until Finish.
    explicit Rewriting(DString& text) : m_Left(text) {}

    // Moves the cut to the last `mark` in front of it, and drops the mark. False if there is none.
    bool CutAtLast(char mark) {
        const int open = m_Left.RFind(mark, m_From);
        if (open == npos) return false;
        m_From = open - 1;
        Prepend(From(m_Left, open + 1), m_Left.GetLength() - open - 1);
        m_Left.Truncate(open);
        return true;
    }

    // Takes what stands behind the cut up to the first `mark`, which is dropped. False, with
    // nothing taken, if there is none.
    bool TakeUpTo(char mark, DString& taken) {
        const int at = m_Right.Find(mark, m_Start);
        if (at == npos) return false;
        taken = m_Right.Mid(m_Start, at - m_Start);
        m_Start = at + 1;
        return true;
    }

    void PutBehindCut(const DString& text) { Prepend(text, text.GetLength()); }
    void DropBeforeCut(int n) { m_Left.TruncateBy(n); }
    const DString& Left() const { return m_Left; }
    char NextBehindCut() const { return m_Right[m_Start]; }
    bool IsAllTaken() const { return m_Left.IsEmpty() && m_Start == m_Right.GetLength(); }
    // Joins the text again. False if memory was refused on the way.
    bool Finish() {
        const int length = m_Left.GetLength() + m_Right.GetLength() - m_Start;
        m_Left.ConcatSelf(m_Right.GetLength() - m_Start, From(m_Right, m_Start));
        return !m_Refused && m_Left.GetLength() == length;
    }

private:
    static const char* From(const DString& text, int start) {
        return static_cast<const char*>(text) + start;
    }

    void Prepend(const char* text, int length) {
        if (length == 0) return;
        if (length > m_Start && !MakeRoom(length)) {
            m_Refused = true;
            return;
        }
        m_Start -= length;
        memcpy(m_Right.GetBuffer(m_Right.GetLength()) + m_Start, text, static_cast<size_t>(length));
    }

    // Room in front for `length` bytes and as many again as there are, so that growing is rare.
    bool MakeRoom(int length) {
        const int used = m_Right.GetLength() - m_Start;
        if (used > (npos - MinimalRoom - length) / 2) return false;
        const int room = length + used + MinimalRoom;
        DString grown;
        char* block = grown.GetBuffer(room + used);
        if (!block) return false;
        memcpy(block + room, From(m_Right, m_Start), static_cast<size_t>(used));
        m_Right = grown;
        m_Start = room;
        return true;
    }

    static constexpr int MinimalRoom = 32;

    DString& m_Left;
    DString m_Right;
    int m_Start = 0;
    int m_From = npos;
    bool m_Refused = false;
};

}  // namespace

// ---- The whole expression

float Experiment::ParseInput(DString text, ValueCallback callback) {
    if (text.IsEmpty()) return InvalidValue;
    float value = 0;
    if (text.ToFloat(value, 0)) return value;
    if (GetShotData(text).ToFloat(value, 0)) return value;
    text = text.Trim();
    if (ResolveBrackets(text, callback, value)) return value;
    if (!ResolveParentheses(text, callback)) return InvalidValue;
    if (text.ToFloat(value, 0)) return value;
    return ParseAlternatives(text, callback);
}

// A text in which no mark is left: "condition ? yes ? no", or parts that stand in for one another,
// or else arithmetic. What remains behind a part is what ParseInput would make of it; it stays
// where it is, so that the work for a long chain grows with its length.
float Experiment::ParseAlternatives(const DString& text, ValueCallback callback) {
    NextPlace questions(text, "?");
    NextPlace partings(text, "::");
    for (int start = 0;;) {
        float value = 0;
        if (const int question = questions.From(start); question != npos) {
            const int second = questions.From(question + 1);
            if (IsConditionTrue(text.Mid(start, question - start), callback)) {
                return ParseInput(Piece(text, question + 1, second), callback);
            }
            if (second == npos) return InvalidValue;
            start = second + 1;
        } else if (const int parting = partings.From(start); parting != npos) {
            value = ParseInput(text.Mid(start, parting - start), callback);
            if (IsVF(value)) return value;
            start = parting + 2;
        } else {
            return ParseAddend(Piece(text, start, npos), callback);
        }
        if (start == text.GetLength()) return InvalidValue;
        if (text.ToFloat(value, start)) return value;
        if (GetDataNamedAt(text, start, partings.From(start)).ToFloat(value, 0)) return value;
        while (text[start] == ' ')
            ++start;
    }
}

// Replaces each bracket by its value, from the last on. True if the whole expression is settled by
// that, with `result` as its value.
bool Experiment::ResolveBrackets(DString& text, ValueCallback callback, float& result) {
    if (text.Find('[', 0) == npos) return false;
    Rewriting rewriting(text);
    while (rewriting.CutAtLast('[')) {
        DString inner;
        if (!rewriting.TakeUpTo(']', inner)) {
            Message("Expression cannot be evaluated because of unmatched bracket");
            result = InvalidValue;
            return true;
        }
        if (rewriting.IsAllTaken()) {
            result = ParseSingle(inner, callback);
            return true;
        }
        DString value;
        if (IsParameterArgument(rewriting.Left())) {
            value += OpenArgument;
            value << ParseInput(inner, callback);
            value += CloseArgument;
        } else {
            result = ParseSingle(inner, callback);
            if (!IsVF(result)) {
                result = InvalidValue;
                return true;
            }
            value << result;
        }
        rewriting.PutBehindCut(value);
    }
    if (rewriting.Finish()) return false;
    result = InvalidValue;
    return true;
}

// Replaces each parenthesis, with a function's name before it, by its value, from the last on.
// False if one of them makes the whole expression invalid.
bool Experiment::ResolveParentheses(DString& text, ValueCallback callback) {
    if (text.Find('(', 0) == npos) return true;
    Rewriting rewriting(text);
    while (rewriting.CutAtLast('(')) {
        DString inner;
        if (!rewriting.TakeUpTo(')', inner)) {
            Message("Expression cannot be evaluated because of unmatched parenthesis");
            return false;
        }
        const DString function = NameAtEnd(rewriting.Left());
        float value = ParseInput(inner, callback);
        if (!IsVF(value)) {
            if (!IsFunctionName(function, "bol")) return false;
            value = IsTrue(GetShotData(inner)) ? 1.0f : 0.0f;
        }
        if (ApplyFunction(function, value)) rewriting.DropBeforeCut(FunctionLength);
        // A negative base of "^" must not be taken for a difference.
        const bool negativeBase = rewriting.NextBehindCut() == '^' && value < 0;
        DString written;
        if (negativeBase) written += OpenNegative;
        written << value;
        if (negativeBase) written += CloseNegative;
        rewriting.PutBehindCut(written);
    }
    return rewriting.Finish();
}

bool Experiment::IsConditionTrue(const DString& condition, ValueCallback callback) {
    if (IsTrue(GetShotData(condition))) return true;
    const float value = ParseInput(condition, callback);
    return IsVF(value) && value > 0;
}

// ---- Sums, products, powers

float Experiment::ParseAddend(DString text, ValueCallback callback) {
    float sum = 0.0f;
    bool minus = false;
    int start = 0;
    const auto close = [&](int end) {
        const float value = ParseFactor(Piece(text, start, end), callback);
        sum += minus ? -value : value;
        return IsVF(value);
    };
    for (int i = 0; i < text.GetLength();) {
        const char c = text[i];
        if (!IsSign(c)) {
            i = NextInAddend(text, i);
            continue;
        }
        const bool leading = c == '-' && i == 0;
        const bool ofOperand = c == '-' && i > 0 && IsSign(text[i - 1]);
        if (!ofOperand) {
            if (!leading && !close(i)) return InvalidValue;
            minus = c == '-';
            start = i + 1;
        }
        ++i;
    }
    return close(text.GetLength()) ? sum : InvalidValue;
}

float Experiment::ParseFactor(DString text, ValueCallback callback) {
    float product = 1.0f;
    bool divide = false;
    int start = 0;
    const auto close = [&](int end) {
        const float value = ParsePower(Piece(text, start, end), callback);
        product = divide ? product / value : product * value;
        return IsVF(value);
    };
    for (int i = 0; i < text.GetLength();) {
        const char c = text[i];
        if (c == OpenArgument) {
            i = Behind(text, CloseArgument, i);
        } else if (c == OpenNegative) {
            i = Behind(text, CloseNegative, i);
        } else {
            if (c == '*' || c == '/') {
                if (!close(i)) return InvalidValue;
                divide = c == '/';
                start = i + 1;
            }
            ++i;
        }
    }
    return close(text.GetLength()) ? product : InvalidValue;
}

float Experiment::ParsePower(DString text, ValueCallback callback) {
    if (text.Find('^', 0) == npos) return ParseSingle(text, callback);
    float base = 0.0f;
    int start = 0;
    // The first operand is not tested, so that missing^0 is 1.
    const auto close = [&](int end) {
        const float value = ParseSingle(text.Mid(start, end - start), callback);
        const bool first = start == 0;
        base = first ? value : Power(base, value);
        return first || IsVF(value);
    };
    for (int i = 0; i < text.GetLength();) {
        if (text[i] == OpenArgument) {
            i = Behind(text, CloseArgument, i);
            continue;
        }
        if (text[i] == '^') {
            if (!close(i)) return InvalidValue;
            start = i + 1;
        }
        ++i;
    }
    const float value = ParseSingle(text.Mid(start, npos), callback);
    return IsVF(value) ? Power(base, value) : InvalidValue;
}

// ---- One operand

float Experiment::ParseSingle(DString text, ValueCallback callback) {
    if (text[0] == OpenNegative) text = text.Mid(1, text.GetLength() - 2);
    float value = 0;
    if (text.ToFloat(value, 0)) return value;
    if (callback && callback(text, value)) return IsVF(value) ? value : InvalidValue;
    if (m_ShotFolder.IsEmpty()) return InvalidValue;
    const int backslash = text.RFind('\\', npos);
    if (backslash != npos) return ParseObjectTerm(text, backslash);
    return GetShotData(text).ToFloat(value, 0) ? value : InvalidValue;
}

// A data reference, the backslash, and a parameter of the data object: of a trace, or else of a
// matrix, or else of a particle group. No more is read than the parameter needs.
float Experiment::ParseObjectTerm(DString text, int backslash) {
    const int last = text.GetLength() - 1;
    if (text[last] == CloseArgument) {
        text.SetChar(backslash + 3, '[');
        text.SetChar(last, ']');
    }
    const DString name = CleanDataFileName(text.Left(backslash));
    const DString parameter = text.Mid(backslash + 1, npos);
    if (float value = 0; GetTraceParameter(name, parameter, value)) return value;
    const DString path = GetDataFileName(name);
    if (path.IsEmpty()) return InvalidValue;
    Matrix matrix(1, 1, 1);
    if (matrix.ReadHeader(path)) return matrix.GetMatrixParam(parameter);
    ParticleGroup group(0);
    return group.Read(path, 0, 0) ? group.GetPGroupParam(parameter) : InvalidValue;
}
