// DIni's text form: a document read from it, written in it, and compared with a file in it.
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string_view>

#include "core/CoreGlobal.h"
#include "system/DFile.h"
#include "system/DIni.h"
#include "types/Prefetch.h"

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

bool IsBlank(std::string_view line) {
    return line.find_first_not_of(' ') == std::string_view::npos;
}

// A heading's name runs up to its last "]"; without one it is the whole rest.
std::string_view HeadingName(std::string_view line) {
    const std::string_view name = line.substr(1);
    return name.substr(0, name.substr(0, name.find('\0')).rfind(']'));
}

// Goes ahead of a pass over a document, one line at each line of the pass, and fetches the lines:
// in a large document they lie all over the memory, and waiting for each in turn would take most of
// the time.
class FetchAhead {
public:
    FetchAhead(const DStringArray& sections, const DArray<DStringArray>& lines)
        : m_Sections(sections), m_Lines(lines) {
        for (int i = 0; i < LinesAhead; ++i)
            Step();
    }

    [[gnu::always_inline]] void Step() {
        if (m_Section >= m_Lines.Count()) return;
        if (m_Line < m_Lines[m_Section].Count()) {
            PrefetchText(m_Lines[m_Section][m_Line++]);
            return;
        }
        m_Line = 0;
        ++m_Section;
        if (m_Section < m_Sections.Count()) PrefetchText(m_Sections[m_Section]);
        if (m_Section + 1 < m_Lines.Count()) PrefetchList(m_Lines[m_Section + 1]);
    }

private:
    static constexpr int LinesAhead = 32;

    // Fetches the pointers to a section's first lines.
    [[gnu::always_inline]] static void PrefetchList(const DStringArray& lines) {
        constexpr int LinesPerFetch = 8;
        for (int i = 0; i < LinesAhead; i += LinesPerFetch)
            Prefetch(lines.m_Data, int64_t{i} * int64_t{sizeof(DString)});
    }

    const DStringArray& m_Sections;
    const DArray<DStringArray>& m_Lines;
    int m_Section = 0;
    int m_Line = 0;
};

// Fills the lists of a document anew. What stands there already in its place is left alone, since a
// group's fields are loaded for each one that is set, and little of them changes in between.
class DocumentFiller {
public:
    DocumentFiller(DStringArray& sections, DArray<DStringArray>& lines)
        : m_Sections(sections), m_Lines(lines), m_Ahead(sections, lines) {
        // What was fetched of lists that are dropped here was fetched in vain.
        if (IsList(sections) && IsList(lines) && sections.Count() == lines.Count()) return;
        sections.Clear();
        lines.Clear();
    }

    void AddSection(std::string_view name) {
        EndSection();
        if (m_Section + 1 == m_Sections.Count() && !AddBlankSection()) return;
        ++m_Section;
        if (!IsList(m_Lines[m_Section])) m_Lines[m_Section].Clear();
        Put(name, m_Sections[m_Section]);
        m_Line = 0;
        m_Ahead.Step();
    }

    void AddLine(std::string_view line) {
        if (m_Section < 0) return;
        DStringArray& lines = m_Lines[m_Section];
        if (m_Line == lines.Count()) {
            lines.AddBlank(1);
            if (m_Line == lines.Count()) return;
        }
        Put(line, lines[m_Line]);
        ++m_Line;
        m_Ahead.Step();
    }

    void End() {
        EndSection();
        m_Sections.ReSize(m_Section + 1);
        m_Lines.ReSize(m_Section + 1);
    }

private:
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

    // False where memory is refused.
    bool AddBlankSection() {
        const int count = m_Sections.Count() + 1;
        m_Sections.AddBlank(1);
        m_Lines.AddBlank(1);
        if (m_Sections.Count() != count || m_Lines.Count() != count) {
            m_Sections.ReSize(count - 1);  // both or neither, so that they stay in step
            m_Lines.ReSize(count - 1);
            return false;
        }
        return true;
    }

    void EndSection() {
        if (m_Section >= 0) m_Lines[m_Section].ReSize(m_Line);
    }

    DStringArray& m_Sections;
    DArray<DStringArray>& m_Lines;
    FetchAhead m_Ahead;
    int m_Section = -1;
    int m_Line = 0;
};

// Puts a text together of many lines, in one block.
class TextBuilder {
public:
    TextBuilder(DString& text, int64_t expected) : m_Text(text) { Reserve(expected); }

    // `before` and `behind` are short.
    void Put(std::string_view before, const DString& line, std::string_view behind) {
        const int64_t length = line.GetLength();
        const int64_t most = length + static_cast<int64_t>(before.size() + behind.size());
        if (most > m_Capacity - m_Length) Reserve(std::max(m_Length + most, 2 * m_Capacity));
        if (most > m_Capacity - m_Length) m_Failed = true;
        if (m_Failed) return;
        char* target = std::copy(before.begin(), before.end(), m_Buffer + m_Length);
        memcpy(target, line, static_cast<size_t>(length));
        std::copy(behind.begin(), behind.end(), target + length);
        m_Length += most;
    }

    // False where memory was refused, or one text can't hold it all.
    bool End() {
        if (!m_Failed) m_Text.Truncate(static_cast<int>(m_Length));
        return !m_Failed;
    }

private:
    void Reserve(int64_t wanted) {
        const int64_t capacity = std::min<int64_t>(wanted, npos);
        char* buffer = m_Text.GetBuffer(static_cast<int>(capacity));
        m_Failed = m_Failed || !buffer;
        if (m_Failed) return;
        m_Buffer = buffer;
        m_Capacity = capacity;
    }

    DString& m_Text;
    char* m_Buffer = nullptr;
    int64_t m_Capacity = 0;
    int64_t m_Length = 0;
    bool m_Failed = false;
};

void PutLines(TextBuilder& text, const DStringArray& lines, bool last, FetchAhead& ahead) {
    const std::string_view lineEnd(LDelim, static_cast<size_t>(LenLD));
    const int count = lines.Count();
    if (count == 1 && lines[0].IsEmpty()) return;
    for (int i = 0; i < count; ++i) {
        ahead.Step();
        text.Put("", lines[i], last && i + 1 == count ? std::string_view() : lineEnd);
    }
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

// Each section's heading is a line; its lines are joined by line ends, and only behind the last
// section there is none. False where memory is refused; the file must then stay as it is.
bool DIni::AssembleText(DString& text) const {
    constexpr int Change = 4096;  // most writes follow a small change of what was loaded
    TextBuilder builder(text, int64_t{m_Text.GetLength()} + Change);
    FetchAhead ahead(m_Sections, m_Lines);
    for (int i = 0; i < m_Sections.Count(); ++i) {
        ahead.Step();
        builder.Put("[", m_Sections[i], "]\r\n");
        PutLines(builder, m_Lines[i], i + 1 == m_Sections.Count(), ahead);
    }
    return builder.End();
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
