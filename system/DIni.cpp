// DIni's document: sections, lines and keys.
#include "system/DIni.h"

#include <limits.h>
#include <stdint.h>
#include <string.h>
#include <strings.h>

#include "types/MemoryWatch.h"

DIni::DIni(const DString& fileName) { SetFileName(fileName); }

bool DIni::HasSection() const { return m_Section >= 0 && m_Section < m_Sections.Count(); }

// Both arrays or neither, so that they stay in step.
bool DIni::AppendSection(const DString& name, const DStringArray& lines) {
    const MemoryWatch memory;
    const int before = m_Sections.Count();
    m_Lines.Add(lines, 1);
    m_Sections.Add(name);
    if (memory.Whole()) return true;
    m_Lines.ReSize(before);
    m_Sections.ReSize(before);
    return false;
}

void DIni::WriteThrough() {
    if (!m_Hold) WriteFile(m_FileName, false);
}

// ---- Sections

void DIni::SetSection(const DString& name) {
    if (HasSection() && m_Sections[m_Section].GetLength() == name.GetLength() &&
        strcasecmp(m_Sections[m_Section], name) == 0) {
        return;
    }
    m_Section = m_Sections.Index(name);
    if (m_Section >= 0) return;
    if (AppendSection(name, DStringArray())) m_Section = m_Sections.Count() - 1;
}

bool DIni::SectionExists(const DString& name) const { return m_Sections.Index(name) >= 0; }

DStringArray DIni::GetFullSection(const DString& name) const {
    const int index = m_Sections.Index(name);
    return index < 0 ? DStringArray() : m_Lines[index];
}

void DIni::SetFullSection(const DString& name, const DStringArray& lines) {
    const MemoryWatch memory;
    DStringArray list(lines);   // may be a section's own lines, which the appending moves
    list.ReSize(list.Count());  // a table takes no single lines later
    if (!memory.Whole()) return;
    const int index = m_Sections.Index(name);
    if (index < 0) {
        if (!AppendSection(name, list)) return;
    } else {
        m_Lines[index].SwapData(list);  // a copy could be refused, and lose the lines
    }
    WriteThrough();
}

void DIni::AddSection(const DString& name, DStringArray& lines) { SetFullSection(name, lines); }

void DIni::RenameSection(const DString& oldName, const DString& newName) {
    const int index = m_Sections.Index(oldName);
    if (index < 0) return;
    m_Sections[index] = DString(newName);
    WriteThrough();
}

void DIni::DeleteSection(const DString& name) {
    const int index = m_Sections.Index(name);
    if (index >= 0) {
        m_Sections.Remove(index, 1);
        m_Lines.Remove(index, 1);
    }
    m_Section = -1;
    WriteThrough();
}

// ---- Keys

namespace {

// Two bytes that are no letter in two cases in any locale.
bool Differ(char a, char b) { return ((a | b) & 0x80) == 0 && ((a ^ b) & ~0x20) != 0; }

}  // namespace

int DIni::nKeys() const { return HasSection() ? m_Lines[m_Section].Count() : 0; }

// A zero byte in a key ends the comparison there.
int DIni::keyindex(const DString& key, int& valueStart) const {
    if (!HasSection() || key[0] == ';') return -1;
    const int length = key.GetLength();
    valueStart = length + 1;
    const size_t compared = strlen(key);
    const bool whole = compared == static_cast<size_t>(length);
    const DStringArray& lines = m_Lines[m_Section];
    for (int i = 0; i < lines.Count(); ++i) {
        const DString& line = lines[i];
        if (whole && (line[length] != '=' || Differ(line[length - 1], key[length - 1]))) continue;
        if (strncasecmp(line, key, whole ? compared : compared + 1) == 0) return i;
    }
    return -1;
}

// The text behind the "=" of the key's line, as it stands there.
bool DIni::FindValue(const DString& key, DString& value) const {
    int start = 0;
    const int index = keyindex(key, start);
    if (index < 0) return false;
    value = Line(index).Mid(start, npos);
    return true;
}

DString DIni::GetKeyValue(const DString& key, const char* defaultValue) const {
    DString value;
    return FindValue(key, value) && !value.IsEmpty() ? value : DString(defaultValue);
}

DString DIni::GetValueNamedAt(const DString& text, int start) const {
    if (!HasSection() || text[start] == ';') return DString();
    const char* key = static_cast<const char*>(text) + start;
    const int length = text.GetLength() - start;
    const DStringArray& lines = m_Lines[m_Section];
    for (int i = 0; i < lines.Count(); ++i) {
        if (lines[i][length] == '=' &&
            strncasecmp(lines[i], key, static_cast<size_t>(length)) == 0) {
            return lines[i].Mid(length + 1, npos);
        }
    }
    return DString();
}

int DIni::GetKeyIntValue(const DString& key, int defaultValue) const {
    DString value;
    if (!FindValue(key, value)) return defaultValue;
    if (value.FindFirstOf("eE", 0) == npos) {
        int number = 0;
        return value.ToInt(number, 0) ? number : defaultValue;
    }
    double number = 0;
    const bool fits = value.ToDouble(number, 0) && number > static_cast<double>(INT_MIN) - 1 &&
                      number < static_cast<double>(INT_MAX) + 1;
    return fits ? static_cast<int>(number) : defaultValue;
}

bool DIni::GetKeyBoolValue(const DString& key, bool defaultValue) const {
    DString value;
    if (!FindValue(key, value)) return defaultValue;
    return strcasecmp(value, "True") == 0 || value == "1";
}

float DIni::GetKeyFloatValue(const DString& key, float defaultValue) const {
    DString value;
    float number = 0;
    return FindValue(key, value) && value.ToFloat(number, 0) ? number : defaultValue;
}

DStringArray DIni::GetKeyRow(const DString& key, int cols, const char* delim,
                             const char* defaultValue) const {
    DStringArray row;
    row.split(GetKeyValue(key, defaultValue), delim, cols);
    return row;
}

DString DIni::GetSectionKeyValue(const DString& section, const DString& key,
                                 const char* defaultValue) {
    m_Section = m_Sections.Index(section);
    DString value;
    return FindValue(key, value) ? value : DString(defaultValue);
}

// In the line's own block if that has room. The shares keep it from being one that the key or value
// stands in.
void DIni::PutKeyLine(const DString& key, const DString& value, DString& line) {
    const DString ownKey(key);
    const DString ownValue(value);
    const int64_t length = int64_t{1} + key.GetLength() + value.GetLength();
    char* text = length <= npos ? line.GetBuffer(static_cast<int>(length)) : nullptr;
    if (!text) return;
    memcpy(text, ownKey, static_cast<size_t>(ownKey.GetLength()));
    text += ownKey.GetLength();
    *text++ = '=';
    memcpy(text, ownValue, static_cast<size_t>(ownValue.GetLength()));
}

void DIni::SetKeyValue(const DString& key, const DString& value) {
    if (!HasSection()) return;
    const MemoryWatch memory;
    int start = 0;
    const int index = keyindex(key, start);
    if (index < 0) {
        const DString line = key + "=" + value;
        if (!memory.Whole()) return;
        m_Lines[m_Section].Add(line);
    } else {
        PutKeyLine(key, value, m_Lines[m_Section][index]);
    }
    if (memory.Whole()) WriteThrough();
}

void DIni::DeleteKey(const char* section, const DString& key) {
    m_Section = m_Sections.Index(section);
    int start = 0;
    const int index = keyindex(key, start);
    if (index < 0) return;
    m_Lines[m_Section].Remove(index, 1);
    WriteThrough();
}
