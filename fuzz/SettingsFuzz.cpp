// Settings documents: any file loads as the rules of the text form say, edits do to the document
// what they are told, and what is written loads again. A second parser and writer, the plainest
// that can be, say what is right.
#include <strings.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "support/Fuzzing.h"
#include "system/DIni.h"

namespace {

struct Section {
    std::string m_Name;
    std::vector<std::string> m_Lines;
    bool operator==(const Section&) const = default;
};
using Document = std::vector<Section>;

struct Edit {
    int m_Kind;
    std::string m_Section;
    std::string m_Key;
    std::string m_Value;
};

bool HasZero(const std::string& bytes) { return bytes.find('\0') != std::string::npos; }

bool IsSameName(const std::string& a, const std::string& b) {
    return a.size() == b.size() && strcasecmp(a.c_str(), b.c_str()) == 0;
}

// ---- The second parser and writer

void TakeLine(Document& document, std::string line) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line[0] == '[') {
        const size_t close = line.rfind(']');
        document.push_back({line.substr(1, close == line.npos ? close : close - 1), {}});
    } else if (!document.empty() && line.find_first_not_of(' ') != line.npos) {
        document.back().m_Lines.push_back(line);
    }
}

Document Parse(const std::string& bytes) {
    Document document;
    size_t start = 0;
    while (start < bytes.size()) {
        const size_t end = std::min(bytes.find('\n', start), bytes.size());
        TakeLine(document, bytes.substr(start, end - start));
        start = end + 1;
    }
    return document;
}

std::string Join(const std::vector<std::string>& lines) {
    std::string text;
    for (size_t i = 0; i < lines.size(); ++i)
        text += (i > 0 ? "\r\n" : "") + lines[i];
    return text;
}

std::string Write(const Document& document) {
    std::string text;
    for (size_t i = 0; i < document.size(); ++i) {
        const std::string lines = Join(document[i].m_Lines);
        text += "[" + document[i].m_Name + "]\r\n" + lines;
        if (!lines.empty() && i + 1 < document.size()) text += "\r\n";
    }
    return text;
}

Document Copy(const DIni& ini) {
    Document document;
    REQUIRE(ini.m_Sections.Count() == ini.m_Lines.Count());
    for (int i = 0; i < ini.m_Sections.Count(); ++i) {
        document.push_back({Bytes(ini.m_Sections[i]), {}});
        for (int j = 0; j < ini.m_Lines[i].Count(); ++j)
            document.back().m_Lines.push_back(Bytes(ini.m_Lines[i][j]));
    }
    return document;
}

// ---- Edits

// The byte 1 stands for a line feed, which a line of the input can't hold.
std::string TakeText(Input& input) {
    std::string text = input.Line();
    std::replace(text.begin(), text.end(), '\1', '\n');
    return text;
}

std::vector<Edit> TakeEdits(Input& input) {
    std::vector<Edit> edits;
    for (int count = input.Below(12); count > 0; --count) {
        const int kind = input.Byte();
        std::string section = TakeText(input);
        std::string key = TakeText(input);
        edits.push_back({kind, std::move(section), std::move(key), TakeText(input)});
    }
    return edits;
}

DStringArray Lines(const Edit& edit) {
    DStringArray lines;
    lines.Add(Text(edit.m_Key));
    lines.Add(Text(edit.m_Value));
    if (edit.m_Kind & 0x80) lines.Size(1, 0);
    return lines;
}

// What is set is read back by every way of reading.
void SetAndRead(DIni& ini, const Edit& edit) {
    const DString section = Text(edit.m_Section);
    const DString key = Text(edit.m_Key);
    const DString value = Text(edit.m_Value);
    ini.SetSection(section);
    const int before = ini.nKeys();
    int start = 0;
    const bool known = ini.keyindex(key, start) >= 0;
    ini.SetKeyValue(key, value);
    REQUIRE(ini.nKeys() == before + !known);
    REQUIRE(ini.SectionExists(section));
    if (key[0] == ';') return;
    const std::string expected = edit.m_Value.empty() ? "none" : edit.m_Value;
    REQUIRE(Bytes(ini.GetKeyValue(key, "none")) == expected);
    const bool isTrue = strcasecmp(edit.m_Value.c_str(), "true") == 0 || edit.m_Value == "1";
    REQUIRE(HasZero(edit.m_Value) || ini.GetKeyBoolValue(key, !isTrue) == isTrue);
    ini.GetKeyIntValue(key, 7);
    ini.GetKeyFloatValue(key, 7);
    ini.GetKeyRow(key, edit.m_Kind % 7, edit.m_Section.c_str(), "none");
    // Of two sections of one name the second may have been current, and the first is read.
    const int current = ini.m_Section;
    const DString read = ini.GetSectionKeyValue(section, key, "none");
    REQUIRE(ini.m_Section >= 0);
    if (ini.m_Section == current) REQUIRE(Bytes(read) == edit.m_Value);
}

void DeleteAndLook(DIni& ini, const Edit& edit) {
    const DString section = Text(edit.m_Section);
    const bool known = ini.SectionExists(section);
    const int lines = ini.GetFullSection(section).Count();
    ini.DeleteKey(section, Text(edit.m_Key));
    REQUIRE(HasZero(edit.m_Section) || (ini.m_Section >= 0) == known);
    REQUIRE(HasZero(edit.m_Section) || ini.nKeys() <= lines);
}

void SetLines(DIni& ini, const Edit& edit) {
    const DString section = Text(edit.m_Section);
    DStringArray lines = Lines(edit);
    ini.AddSection(section, lines);
    REQUIRE(ini.GetFullSection(section).Count() == lines.Count());
}

void Play(DIni& ini, const Edit& edit) {
    const DString section = Text(edit.m_Section);
    switch ((edit.m_Kind & 0x7f) % 11) {
        default:
            return SetAndRead(ini, edit);
        case 4:
            return DeleteAndLook(ini, edit);
        case 5:
            return SetLines(ini, edit);
        case 6:
            return ini.RenameSection(section, Text(edit.m_Key));
        case 7:
            ini.DeleteSection(section);
            return REQUIRE(ini.m_Section == -1);
        case 8:
            return ini.HoldWrite((edit.m_Kind & 0x80) != 0);
        case 9:
            ini.RestoreFile();
            return REQUIRE(HasZero(Bytes(ini.m_Text)) || Copy(ini) == Parse(Bytes(ini.m_Text)));
        case 10:
            return ini.CommitFile();
    }
}

// ---- What has to hold

// The rules of Changed where they are simple: every section's name once, and nothing to trim.
bool IsPlain(const Document& document) {
    for (size_t i = 0; i < document.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (IsSameName(document[i].m_Name, document[j].m_Name)) return false;
        }
        for (const std::string& line : document[i].m_Lines) {
            if (line.empty() || line.front() == ' ' || line.back() == ' ') return false;
        }
    }
    return true;
}

// The last line end of a file is none, so a carriage return at the very end goes with it.
bool EndsInReturn(const std::string& text) { return !text.empty() && text.back() == '\r'; }

void CheckLoad(DIni& ini, const std::string& path, const std::string& bytes) {
    REQUIRE(ini.SetFileName(path.c_str()));
    REQUIRE(Bytes(ini.m_Text) == bytes);
    REQUIRE(ini.m_Section == -1 && !ini.m_Hold);
    if (!HasZero(bytes)) REQUIRE(Copy(ini) == Parse(bytes));
}

// A document that was loaded writes what loads as itself.
void CheckRewrite(const std::string& path) {
    DIni ini;
    CheckLoad(ini, path, ReadBytes(path));
    const Document document = Copy(ini);
    REQUIRE(ini.WriteFile("", false));
    const std::string written = ReadBytes(path);
    REQUIRE(written == Write(document));
    if (HasZero(written) || EndsInReturn(written)) return;
    REQUIRE(Parse(written) == document);
    if (IsPlain(document)) REQUIRE(!ini.Changed());
    DIni again;
    CheckLoad(again, path, written);
    REQUIRE(again.WriteFile("", false));
    REQUIRE(ReadBytes(path) == written);
}

}  // namespace

void StartTarget() {}

void RunInput(Input input) {
    const std::vector<Edit> edits = TakeEdits(input);
    const std::string bytes = input.Rest();
    const std::string path = Scratch("Some.ini");
    WriteBytes(path, bytes);
    DIni ini;
    CheckLoad(ini, path, bytes);
    ini.Changed();
    for (const Edit& edit : edits) {
        Play(ini, edit);
        if (!ini.m_Hold && edit.m_Kind % 3 == 0) ini.Changed();
    }
    ini.HoldWrite(false);
    REQUIRE(ini.WriteFile("", false));
    REQUIRE(ReadBytes(path) == Write(Copy(ini)));
    CheckRewrite(path);
}
