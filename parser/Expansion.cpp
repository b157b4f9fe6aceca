// Filling references to fields into names, expressions and captions.
#include <strings.h>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"

namespace {

const char Marked[] = "![";
const char Plain[] = "[";

// The index of the "]" that closes a reference whose contents begin at `start`; npos if none does.
int FindClosing(const DString& text, int start) {
    int depth = 1;
    for (int i = start; i < text.GetLength(); ++i) {
        if (text[i] == '[') ++depth;
        if (text[i] == ']' && --depth == 0) return i;
    }
    return npos;
}

}  // namespace

DString Experiment::GetExpandedString(DString const& text, bool markedOnly) {
    const DString whole(text);  // may be one of this object's strings
    const char* opening = markedOnly ? Marked : Plain;
    const int openingLength = markedOnly ? 2 : 1;
    int open = whole.Find(opening, 0);
    if (open == npos) return whole;
    DString result("");
    int copied = 0;
    while (open != npos) {
        result += whole.Mid(copied, open - copied);
        // The byte that is dropped is the last of the result, wherever it came from.
        if (!markedOnly && result.EndsWith("!")) result.TruncateBy(1);
        const int start = open + openingLength;
        const int found = whole.Find(']', start);
        const int close = found == npos ? whole.GetLength() : found;
        const DString field = GetShotData(whole.Mid(start, close - start));
        if (field.IsEmpty()) return DString();
        result += field;
        copied = found == npos ? close : close + 1;
        open = whole.Find(opening, copied);
    }
    result += whole.Mid(copied, npos);
    return result;
}

DString Experiment::GetExpandedLabel(DString const& text) {
    const DString whole(text);
    DString result("");
    int copied = 0;
    for (int open = whole.Find(Marked, 0); open != npos; open = whole.Find(Marked, copied)) {
        result += whole.Mid(copied, open - copied);
        const int start = open + 2;
        const int close = FindClosing(whole, start);
        if (close == npos) return whole;
        AppendLabelValue(result, whole.Mid(start, close - start));
        copied = close + 1;
    }
    result += whole.Mid(copied, npos);
    return result;
}

// Appends the value of a reference's contents, an expression with an optional format behind it.
void Experiment::AppendLabelValue(DString& label, const DString& contents) {
    const int percent = contents.Find('%', 0);
    const DString expression = contents.Left(percent);
    const DString field = GetShotData(expression);
    // A shot's name is text, also where it is a number.
    const bool isText = !field.IsEmpty() && !field.IsNumeric();
    if (isText || strcasecmp(expression, "Shot") == 0) {
        label += field;
        return;
    }
    const float value = ParseInput(expression, nullptr);
    if (!IsVF(value)) {
        label += "(undefined)";
    } else if (percent == npos) {
        label << value;
    } else {
        label.AddFormatted(value, contents.Mid(percent, npos));
    }
}
