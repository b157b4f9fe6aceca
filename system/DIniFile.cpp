// DIni and its file: loading, writing, holding, and comparing with what is on disk.
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <string_view>

#include "core/CoreGlobal.h"
#include "system/DFile.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

// The lines of a text, as DStringArray::split tells them apart with LDelim: a zero byte ends the
// search for line ends, and all that follows belongs to the line that holds it.
class LineReader {
public:
    explicit LineReader(const DString& text)
        : m_Next(text), m_Plain(m_Next + strlen(text)), m_End(m_Next + text.GetLength()) {}

    bool Next(std::string_view& line) {
        if (m_Next == m_End) return false;
        const size_t searched = m_Next < m_Plain ? static_cast<size_t>(m_Plain - m_Next) : 0;
        const char* lineEnd = static_cast<const char*>(memchr(m_Next, '\n', searched));
        const char* end = lineEnd ? lineEnd : m_End;
        line = std::string_view(m_Next, static_cast<size_t>(end - m_Next));
        if (line.ends_with('\r')) line.remove_suffix(1);
        m_Next = lineEnd ? lineEnd + 1 : m_End;
        return true;
    }

private:
    const char* m_Next;
    const char* m_Plain;
    const char* m_End;
};

bool IsHeading(std::string_view line) { return line.starts_with('['); }

bool IsBlank(std::string_view line) { return line.find_first_not_of(' ') == line.npos; }

// A heading's name runs up to its last "]"; without one it is the whole rest.
std::string_view HeadingName(std::string_view line) {
    const std::string_view name = line.substr(1);
    return name.substr(0, name.substr(0, name.find('\0')).rfind(']'));
}

// Fills the lists of a document anew. What stands there already in its place is left alone, since a
// group's fields are loaded for each one that is set, and little of them changes in between.
class DocumentFiller {
public:
    DocumentFiller(DStringArray& sections, DArray<DStringArray>& lines)
        : m_Sections(sections), m_Lines(lines) {
        if (IsList(sections) && IsList(lines) && sections.Count() == lines.Count()) return;
        sections.Clear();
        lines.Clear();
    }

    void AddSection(std::string_view name) {
        EndSection();
        if (m_Section + 1 == m_Sections.Count()) {
            m_Sections.AddBlank(1);
            m_Lines.AddBlank(1);
            if (m_Lines.Count() < m_Section + 2 || m_Sections.Count() < m_Section + 2) {
                m_Sections.ReSize(m_Section + 1);  // both or neither, so that they stay in step
                m_Lines.ReSize(m_Section + 1);
                return;
            }
            m_Lines.Last().m_Grain = LinesGrain;
        }
        ++m_Section;
        if (!IsList(m_Lines[m_Section])) m_Lines[m_Section].Clear();
        Put(name, m_Sections[m_Section]);
        m_Line = 0;
    }

    void AddLine(std::string_view line) {
        if (m_Section < 0) return;
        DStringArray& lines = m_Lines[m_Section];
        if (m_Line == lines.Count()) {
            if (m_Line == lines.Capacity()) lines.Reserve(2 * m_Line);
            lines.AddBlank(1);
            if (m_Line == lines.Count()) return;
        }
        Put(line, lines[m_Line]);
        ++m_Line;
    }

    void End() {
        EndSection();
        m_Sections.ReSize(m_Section + 1);
        m_Lines.ReSize(m_Section + 1);
    }

private:
    static constexpr int LinesGrain = 32;  // the sections of a group's fields are many and short

    template <typename T>
    static bool IsList(const DArray<T>& array) {
        return array.m_Rows == 1;
    }

    static void Put(std::string_view text, DString& place) {
        const int length = static_cast<int>(text.size());
        if (length > 0 && place.GetLength() == length &&
            memcmp(place, text.data(), text.size()) == 0) {
            return;
        }
        place = DString();
        place.AllocCopy(length, text.data());
    }

    void EndSection() {
        if (m_Section >= 0) m_Lines[m_Section].ReSize(m_Line);
    }

    DStringArray& m_Sections;
    DArray<DStringArray>& m_Lines;
    int m_Section = -1;
    int m_Line = 0;
};

bool IsRegularFile(const DString& name) {
    struct stat status;
    return lstat(name, &status) == 0 && S_ISREG(status.st_mode);
}

// What DFile::GetText gives of a regular file of this very name, in the text's own block if it has
// room.
void ReadInPlace(const DString& fileName, DString& text) {
    DFile file;
    struct stat status;
    file.m_Stream = fopen64(fileName, "rb");
    if (!file.m_Stream) NoteFailedOpen();
    const bool open = file.m_Stream && fstat(fileno(file.m_Stream), &status) == 0;
    const int length = open ? static_cast<int>(status.st_size) : 0;
    char* buffer = length > 0 ? text.GetBuffer(length) : nullptr;
    if (!buffer) {
        text = DString();
        return;
    }
    setvbuf(file.m_Stream, nullptr, _IONBF, 0);  // the whole in one transfer
    text.Truncate(file.BRead(buffer, length));
}

// A file that exists and is empty may be in the middle of another process's write.
void ReadWithRetries(const DString& fileName, bool isRegular, DString& text) {
    constexpr int MostRetries = 10;
    constexpr int PauseMs = 50;
    const auto read = [&] {
        if (isRegular) {
            ReadInPlace(fileName, text);
        } else {
            text = DFile::GetText(fileName);
        }
    };
    read();
    int retries = 0;
    while (text.IsEmpty() && retries < MostRetries) {
        DSleep(PauseMs);
        read();
        ++retries;
    }
    if (Logging && retries >= 2) {
        Log(DString(retries) + " tries needed to read from " + fileName);
    }
}

// Holding survives a change of file for the shots' fields alone: a pause turns it on and only then
// loads the files.
bool KeepsHolding(const DString& fileName) {
    return fileName.EndsWith("Scalars.ini") || fileName.EndsWith("ScalarCache.ini");
}

DString TextOf(std::string_view piece) {
    DString text;
    text.AllocCopy(static_cast<int>(piece.size()), piece.data());
    return text;
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
    m_Section = -1;
    if (!corrected.IsEmpty() && ReadFrom(corrected)) {
        loadstring();
        if (memory.Whole()) {
            m_FileName = corrected;
            if (!KeepsHolding(m_FileName)) m_Hold = false;
            return true;
        }
    }
    Detach();  // what lacks a part must not replace the file
    return false;
}

void DIni::Detach() {
    m_Sections.Clear();
    m_Lines.Clear();
    m_Section = -1;
    m_FileName = "";
}

// Takes the text of a file, which is made if it is missing; false if it can't be.
bool DIni::ReadFrom(DString& fileName) {
    const bool isRegular = IsRegularFile(fileName);
    if (isRegular || FileExists(fileName)) {
        ReadWithRetries(fileName, isRegular, m_Text);
        return true;
    }
    m_Text = "";
    DFile file;
    return file.Open(fileName, 6);
}

void DIni::loadstring() {
    DocumentFiller document(m_Sections, m_Lines);
    LineReader reader(m_Text);
    std::string_view line;
    while (reader.Next(line)) {
        if (IsHeading(line)) {
            document.AddSection(HeadingName(line));
        } else if (!IsBlank(line)) {
            document.AddLine(line);
        }
    }
    document.End();
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
    const DString text = DFile::GetText(m_FileName);
    DStringArray sectionsLeft(m_Sections);
    DStringArray linesLeft;
    LineReader reader(text);
    std::string_view line;
    while (reader.Next(line)) {
        if (!IsHeading(line)) {
            if (!TakeOut(linesLeft, TextOf(line).Trim())) return true;
            continue;
        }
        const DString name = TextOf(HeadingName(line));
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
