// Expressions over fields, traces, matrices and particle groups: each evaluates to what the rules
// give when they are followed on plain text, step by step, however slowly.
#include <math.h>
#include <string.h>
#include <strings.h>

#include <limits>

#include "core/CoreGlobal.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"
#include "support/Fuzzing.h"

namespace {

constexpr float Invalid = -std::numeric_limits<float>::infinity();
constexpr size_t Nowhere = std::string::npos;

// ---- The rules, on plain text

std::string Field(const std::string& name) {
    const DString value = Expt.GetShotData(name.c_str());
    return {static_cast<const char*>(value), static_cast<size_t>(value.GetLength())};
}

bool IsNumber(const std::string& text, float& value) {
    return DString(text.c_str()).ToFloat(value, 0);
}

std::string Written(float value) {
    char text[40];
    snprintf(text, sizeof text, "%.8g", static_cast<double>(value));
    return text;
}

bool Equals(const std::string& text, const char* other) {
    return strcasecmp(text.c_str(), other) == 0;
}

class Rules {
public:
    explicit Rules(ValueCallback callback) : m_Callback(callback) {}

    float Whole(std::string text) const {
        float value = 0;
        if (text.empty()) return Invalid;
        if (IsNumber(text, value) || IsNumber(Field(text), value)) return value;
        text = static_cast<const char*>(DString(text.c_str()).Trim());
        if (Brackets(text, value)) return value;
        if (!Parentheses(text)) return Invalid;
        if (IsNumber(text, value)) return value;
        if (const size_t at = text.find('?'); at != Nowhere) return Choice(text, at);
        if (const size_t at = text.find("::"); at != Nowhere) {
            value = Whole(text.substr(0, at));
            return IsVF(value) ? value : Whole(text.substr(at + 2));
        }
        return Sum(text);
    }

private:
    bool Brackets(std::string& text, float& result) const {
        for (size_t p = text.rfind('['); p != Nowhere; p = p ? text.rfind('[', p - 1) : Nowhere) {
            const size_t end = text.find(']', p);
            result = Invalid;
            if (end == Nowhere) return true;
            std::string left = text.substr(0, p);
            const std::string inner = text.substr(p + 1, end - p - 1);
            const std::string right = text.substr(end + 1);
            if (left.empty() && right.empty()) {
                result = Single(inner);
                return true;
            }
            if (p >= 3 && text[p - 3] == '\\' && !strchr(" +-*/^(", text[p - 1])) {
                left += "\xC9" + Written(Whole(inner)) + "\xCA";
            } else {
                const float value = Single(inner);
                if (!IsVF(value)) return true;
                left += Written(value);
            }
            text = left + right;
        }
        return false;
    }

    bool Parentheses(std::string& text) const {
        for (size_t p = text.rfind('('); p != Nowhere; p = text.rfind('(')) {
            const size_t end = text.find(')', p);
            if (end == Nowhere) return false;
            const std::string inner = text.substr(p + 1, end - p - 1);
            const std::string right = text.substr(end + 1);
            std::string name = p >= 3 ? text.substr(p - 3, 3) : "";
            float value = Whole(inner);
            if (!IsVF(value)) {
                if (!Equals(name, "bol")) return false;
                value = Equals(Field(inner), "True") ? 1.0f : 0.0f;
            }
            if (!Apply(name, value)) name.clear();
            std::string written = Written(value);
            if (!right.empty() && right[0] == '^' && value < 0) written = "\xCB" + written + "\xCC";
            text = text.substr(0, p - name.size()) + written + right;
        }
        return true;
    }

    static bool Apply(const std::string& name, float& value) {
        const double wide = static_cast<double>(value);
        if (Equals(name, "sin"))
            value = static_cast<float>(sin(wide));
        else if (Equals(name, "cos"))
            value = static_cast<float>(cos(wide));
        else if (Equals(name, "tan"))
            value = tanf(value);
        else if (Equals(name, "log"))
            value = static_cast<float>(log(wide));
        else if (Equals(name, "exp"))
            value = static_cast<float>(exp(wide));
        else if (Equals(name, "atn"))
            value = atanf(value);
        else
            return Equals(name, "bol");
        return true;
    }

    float Choice(const std::string& text, size_t question) const {
        std::string condition = text.substr(0, question);
        const std::string rest = text.substr(question + 1);
        const size_t second = rest.find('?');
        if (Equals(Field(condition), "True")) condition = "1";
        const float value = Whole(condition);
        if (IsVF(value) && value > 0) return Whole(rest.substr(0, second));
        return Whole(second == Nowhere ? "" : rest.substr(second + 1));
    }

    static size_t Past(const std::string& text, char mark, size_t i) {
        const size_t at = text.find(mark, i);
        return at == Nowhere ? text.size() : at + 1;
    }

    float Sum(const std::string& text) const {
        float sum = 0;
        size_t start = 0;
        bool minus = false;
        const auto at = [&](size_t i) { return i < text.size() ? text[i] : '\0'; };
        for (size_t i = 0; i < text.size();) {
            const char c = text[i];
            if (strchr(" */^", c)) {
                i += at(i + 1) == '\xC9' || at(i + 1) == '\xCB' ? size_t{1} : 2;
            } else if ((c == 'e' || c == 'E') && i > 0) {
                i += strchr("1234567890.", text[i - 1]) ? size_t{2} : 1;
            } else if (c == '\xC9') {
                i = Past(text, '\xCA', i);
            } else if (c == '\xCB') {
                i = Past(text, '\xCC', i);
            } else if (c == '-' && i == 0) {
                start = ++i;
                minus = true;
            } else if (c == '-' && (text[i - 1] == '+' || text[i - 1] == '-')) {
                ++i;
            } else if (c == '+' || c == '-') {
                const float value = Product(text.substr(start, i - start));
                if (!IsVF(value)) return Invalid;
                sum += minus ? -value : value;
                minus = c == '-';
                start = ++i;
            } else {
                ++i;
            }
        }
        const float value = Product(text.substr(start));
        return IsVF(value) ? sum + (minus ? -value : value) : Invalid;
    }

    float Product(const std::string& text) const {
        float product = 1;
        size_t start = 0;
        bool divide = false;
        for (size_t i = 0;;) {
            const char c = i < text.size() ? text[i] : '\0';
            if (c == '\xC9') {
                i = Past(text, '\xCA', i);
            } else if (c == '\xCB') {
                i = Past(text, '\xCC', i);
            } else if (i == text.size() || c == '*' || c == '/') {
                const float value = Power(text.substr(start, i - start));
                if (!IsVF(value)) return Invalid;
                product = divide ? product / value : product * value;
                if (i == text.size()) return product;
                divide = c == '/';
                start = ++i;
            } else {
                ++i;
            }
        }
    }

    float Power(const std::string& text) const {
        if (text.find('^') == Nowhere) return Single(text);
        size_t start = 0;
        float base = 0;
        for (size_t i = 0;;) {
            if (i < text.size() && text[i] == '\xC9') {
                i = Past(text, '\xCA', i);
            } else if (i == text.size() || text[i] == '^') {
                const float value = Single(text.substr(start, i - start));
                const bool first = start == 0 && i < text.size();
                if (!first && !IsVF(value)) return Invalid;
                base = first ? value : static_cast<float>(pow(double(base), double(value)));
                if (i == text.size()) return base;
                start = ++i;
            } else {
                ++i;
            }
        }
    }

    float Single(const std::string& operand) const {
        std::string text = operand;
        if (!text.empty() && text[0] == '\xCB') {
            text = text.size() < 2 ? "" : text.substr(1, text.size() - 2);
        }
        float value = 0;
        if (IsNumber(text, value)) return value;
        if (m_Callback && m_Callback(text.c_str(), value)) return IsVF(value) ? value : Invalid;
        // What the object tells is the library's own; the way to it is checked here.
        if (text.find('\\') != Nowhere) return Expt.ParseSingle(operand.c_str(), nullptr);
        return IsNumber(Field(text), value) ? value : Invalid;
    }

    ValueCallback m_Callback;
};

// ---- The host's own names

bool Supply(DString const& name, float& value) {
    if (name == "host") value = 12.5f;
    if (name == "wild") value = Invalid;
    if (name == "nest") value = Expt.ParseInput("1+(2*a)", nullptr);
    return name == "host" || name == "wild" || name == "nest";
}

bool SameBits(float a, float b) { return (a != a && b != b) || memcmp(&a, &b, sizeof a) == 0; }

void MakeData() {
    Waveform trace(8);
    for (int i = 0; i < trace.Count(); ++i)
        trace[i] = static_cast<float>(i % 5) - 1.5f;
    trace.m_TimePerPoint = 0.5f;
    trace.Scale();
    REQUIRE(trace.Write(Expt.GetDataFileName("W")));
    REQUIRE(Waveform(0).Write(Expt.GetDataFileName("Empty")));
    Matrix matrix(2, 3, 2);
    matrix.Scale();
    REQUIRE(matrix.Write(Expt.GetDataFileName("M")));
    ParticleGroup group(2);
    REQUIRE(group.Write(Expt.GetDataFileName("P")));
}

}  // namespace

void StartTarget() {
    Expt.SetExperimentFolder(Scratch("Discharge").c_str());
    for (const char* name : {"8", "7"}) {
        DString shot(name);
        REQUIRE(Expt.CreateShot(shot, "", false) >= 0);
        MakeData();
    }
    for (const auto& [key, value] : {std::pair{"a", "2"},
                                     {"b", "text"},
                                     {"c", "-3.5"},
                                     {"a-b", "10"},
                                     {"Flag", "True"},
                                     {"Off", "False"},
                                     {"Trace", "W"},
                                     {"self", "self"},
                                     {"ref", "![ref]"}}) {
        Expt.SetShotData(key, value);
    }
    Expt.SetPauseIO(true);  // reading the fields anew takes most of a run
}

void RunInput(Input input) {
    const int mode = input.Byte();
    const bool paused = (mode & 7) != 0;
    const ValueCallback callback = mode & 8 ? Supply : nullptr;
    const std::string text = input.Rest();
    const std::string whole(text.c_str());
    if (!paused) Expt.SetPauseIO(false);
    const float expected = Rules(callback).Whole(whole);
    const float value = Expt.ParseInput(whole.c_str(), callback);
    REQUIRE(SameBits(value, expected));
    const float scalar = Expt.GetScalarData(whole.c_str(), callback);
    REQUIRE(IsVF(scalar) || scalar == -DFMax);
    if (whole.find("![") == Nowhere) REQUIRE(scalar == (IsVF(expected) ? expected : -DFMax));
    if (!paused) Expt.SetPauseIO(true);
}
