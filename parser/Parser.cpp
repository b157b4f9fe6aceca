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

// The three bytes before a "(", or an empty text where there is no room for them.
DString NameBefore(const DString& text, int open) {
    return open < FunctionLength ? DString() : text.Mid(open - FunctionLength, FunctionLength);
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

// The bracket at `open` holds the argument of a parameter, as in name\XY[expression].
bool IsParameterArgument(const DString& text, int open) {
    return open >= 3 && text[open - 3] == '\\' && !Contains(Ops, text[open - 1]);
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

}  // namespace

// ---- The whole expression

float Experiment::ParseInput(DString text, ValueCallback callback) {
    // What remains of "?" and "::" is evaluated by going round again.
    for (;;) {
        if (text.IsEmpty()) return InvalidValue;
        float value = 0;
        if (text.ToFloat(value, 0)) return value;
        if (GetShotData(text).ToFloat(value, 0)) return value;
        text = text.Trim();
        if (ResolveBrackets(text, callback, value)) return value;
        if (!ResolveParentheses(text, callback)) return InvalidValue;
        if (text.ToFloat(value, 0)) return value;
        if (const int question = text.Find('?', 0); question != npos) {
            text = ChooseBranch(text, question, callback);
        } else if (const int parting = text.Find("::", 0); parting != npos) {
            value = ParseInput(text.Left(parting), callback);
            if (IsVF(value)) return value;
            text = text.Mid(parting + 2, npos);
        } else {
            return ParseAddend(text, callback);
        }
    }
}

// Replaces each bracket by its value, from the last on. True if the whole expression is settled by
// that, with `result` as its value.
bool Experiment::ResolveBrackets(DString& text, ValueCallback callback, float& result) {
    for (int open = text.RFind('[', npos); open != npos; open = text.RFind('[', open - 1)) {
        const int close = text.Find(']', open);
        if (close == npos) {
            Message("Expression cannot be evaluated because of unmatched bracket");
            result = InvalidValue;
            return true;
        }
        DString left = text.Left(open);
        const DString inner = text.Mid(open + 1, close - open - 1);
        const DString right = text.Mid(close + 1, npos);
        if (left.IsEmpty() && right.IsEmpty()) {
            result = ParseSingle(inner, callback);
            return true;
        }
        if (IsParameterArgument(text, open)) {
            left += OpenArgument;
            left << ParseInput(inner, callback);
            left += CloseArgument;
        } else {
            result = ParseSingle(inner, callback);
            if (!IsVF(result)) {
                result = InvalidValue;
                return true;
            }
            left << result;
        }
        text = left + right;
    }
    return false;
}

// Replaces each parenthesis, with a function's name before it, by its value, from the last on.
// False if one of them makes the whole expression invalid.
bool Experiment::ResolveParentheses(DString& text, ValueCallback callback) {
    for (int open = text.RFind('(', npos); open != npos; open = text.RFind('(', npos)) {
        const int close = text.Find(')', open);
        if (close == npos) {
            Message("Expression cannot be evaluated because of unmatched parenthesis");
            return false;
        }
        const DString inner = text.Mid(open + 1, close - open - 1);
        const DString right = text.Mid(close + 1, npos);
        const DString function = NameBefore(text, open);
        float value = ParseInput(inner, callback);
        if (!IsVF(value)) {
            if (!IsFunctionName(function, "bol")) return false;
            value = IsTrue(GetShotData(inner)) ? 1.0f : 0.0f;
        }
        const bool applied = ApplyFunction(function, value);
        DString resolved = text.Left(applied ? open - FunctionLength : open);
        // A negative base of "^" must not be taken for a difference.
        const bool negativeBase = right[0] == '^' && value < 0;
        if (negativeBase) resolved += OpenNegative;
        resolved << value;
        if (negativeBase) resolved += CloseNegative;
        text = resolved + right;
    }
    return true;
}

// The part of "condition ? yes ? no" that is to be evaluated; empty for a missing "no".
DString Experiment::ChooseBranch(const DString& text, int question, ValueCallback callback) {
    DString condition = text.Left(question);
    const DString branches = text.Mid(question + 1, npos);
    if (IsTrue(GetShotData(condition))) condition = "1";
    const float value = ParseInput(condition, callback);
    const bool isTrue = IsVF(value) && value > 0;
    return isTrue ? branches.BeforeFirst('?', true) : branches.AfterFirst('?', false);
}

// ---- Sums, products, powers

float Experiment::ParseAddend(DString text, ValueCallback callback) {
    float sum = 0.0f;
    bool minus = false;
    int start = 0;
    const auto close = [&](int end) {
        const float value = ParseFactor(text.Mid(start, end - start), callback);
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
        const float value = ParsePower(text.Mid(start, end - start), callback);
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
