// DIni and its file: loading, writing, holding, and comparing with what is on disk.
#include <stdint.h>
#include <string.h>

#include "core/CoreGlobal.h"
#include "system/DFile.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

bool IsHeading(const DString& line) { return line[0] == '['; }

// A heading's name runs up to its last "]"; without one it is the whole rest.
DString HeadingName(const DString& line) { return line.Mid(1, npos).BeforeLast(']', true); }

// A file that exists and is empty may be in the middle of another process's write.
DString ReadWithRetries(const DString& fileName) {
    constexpr int MostRetries = 10;
    constexpr int PauseMs = 50;
    DString text = DFile::GetText(fileName);
    int retries = 0;
    while (text.IsEmpty() && retries < MostRetries) {
        DSleep(PauseMs);
        text = DFile::GetText(fileName);
        ++retries;
    }
    if (Logging && retries >= 2) {
        Log(DString(retries) + " tries needed to read from " + fileName);
    }
    return text;
}

// Holding survives a change of file for the shots' fields alone: a pause turns it on and only then
// loads the files.
bool KeepsHolding(const DString& fileName) {
    return fileName.EndsWith("Scalars.ini") || fileName.EndsWith("ScalarCache.ini");
}

bool TakeOut(DStringArray& list, const DString& element) {
    const int index = list.Index(element);
    if (index >= 0) list.Remove(index, 1);
    return index >= 0;
}

}  // namespace

bool DIni::SetFileName(const DString& name) {
    const MemoryWatch memory;
    DString corrected(name);  // may be m_FileName or a line of this document
    Detach();
    if (corrected.IsEmpty()) return false;
    if (!Load(corrected) || !memory.Whole()) {
        Detach();  // what lacks a part must not replace the file
        return false;
    }
    m_FileName = corrected;
    if (!KeepsHolding(m_FileName)) m_Hold = false;
    return true;
}

void DIni::Detach() {
    m_Sections.Clear();
    m_Lines.Clear();
    m_Section = -1;
    m_FileName = DString();
}

// Loads a file, making a missing one. False if that fails.
bool DIni::Load(DString& fileName) {
    const MemoryWatch memory;
    if (FileExists(fileName)) {
        m_Text = ReadWithRetries(fileName);
    } else {
        m_Text = DString();
        DFile file;
        if (!memory.Whole() || !file.Open(fileName, 6)) return false;
    }
    loadstring();
    return true;
}

void DIni::loadstring() {
    DStringArray lines;
    lines.split(m_Text, LDelim, -1);
    m_Lines.Clear();
    m_Sections.Clear();
    for (int i = 0; i < lines.Count(); ++i) {
        const DString& line = lines[i];
        if (IsHeading(line)) {
            AppendSection(HeadingName(line), DStringArray());
        } else if (m_Lines.Count() > 0 && !line.Trim().IsEmpty()) {
            m_Lines.Last().Add(line);
        }
    }
}

// Hands the pieces of the text to `put` one by one. Each section's heading is a line; its lines are
// joined by line ends, and only behind the last section there is none.
template <typename Put>
void DIni::PutText(Put put) const {
    for (int i = 0; i < m_Sections.Count(); ++i) {
        put("[", 1);
        put(m_Sections[i], m_Sections[i].GetLength());
        put("]", 1);
        put(LDelim, LenLD);
        const DStringArray& lines = m_Lines[i];
        const bool blank = lines.Count() == 0 || (lines.Count() == 1 && lines[0].IsEmpty());
        const bool last = i + 1 == m_Sections.Count();
        for (int j = 0; j < lines.Count(); ++j) {
            put(lines[j], lines[j].GetLength());
            if (!blank && !(last && j + 1 == lines.Count())) put(LDelim, LenLD);
        }
    }
}

// False where memory is refused; the file must then stay as it is.
bool DIni::AssembleText(DString& text) const {
    int64_t length = 0;
    PutText([&length](const char*, int n) { length += n; });
    char* target = length <= npos ? text.GetBuffer(static_cast<int>(length)) : nullptr;
    if (!target) return false;
    PutText([&target](const char* piece, int n) {
        memcpy(target, piece, static_cast<size_t>(n));
        target += n;
    });
    return true;
}

bool DIni::WriteFile(DString name, bool keepName) {
    if (name.IsEmpty()) name = m_FileName;
    if (name.IsEmpty()) return true;
    DString text;
    if (!AssembleText(text)) return false;
    DFile file;
    if (!file.Open(name, 6)) {
        Log("error opening for write");
        return false;
    }
    file.DSWrite(text, 0);
    if (!keepName) m_FileName = name;
    return true;
}

bool DIni::Changed() const {
    DStringArray fileLines;
    fileLines.split(DFile::GetText(m_FileName), LDelim, -1);
    DStringArray sectionsLeft(m_Sections);
    DStringArray linesLeft;
    for (int i = 0; i < fileLines.Count(); ++i) {
        if (!IsHeading(fileLines[i])) {
            if (!TakeOut(linesLeft, fileLines[i].Trim())) return true;
            continue;
        }
        const DString name = HeadingName(fileLines[i]);
        if (!TakeOut(sectionsLeft, name) || linesLeft.Count() > 0) return true;
        linesLeft = m_Lines[m_Sections.Index(name)];
    }
    return sectionsLeft.Count() > 0 || linesLeft.Count() > 0;
}

void DIni::RestoreFile() {
    m_Section = -1;
    loadstring();
    WriteFile(m_FileName, false);
}

void DIni::CommitFile() {
    WriteFile(m_FileName, false);
    m_Text = DFile::GetText(m_FileName);
}

void DIni::HoldWrite(bool hold) {
    if (m_Hold && !hold) WriteFile(m_FileName, false);
    m_Hold = hold;
}
