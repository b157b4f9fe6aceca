// Path names: joining and parting them, their local and shared forms, the current directory.
#include <limits.h>
#include <stdint.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#include "core/CoreGlobal.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

// The name behind `prefix` and the one byte that parts them, which is dropped unseen. False if the
// name doesn't begin with the prefix.
bool DropPrefix(const DString& name, const DString& prefix, DString& rest) {
    const size_t length = static_cast<size_t>(prefix.GetLength());
    if (strncasecmp(name, prefix, length) != 0) return false;
    rest = name.Mid(prefix.GetLength() + 1, npos);
    return true;
}

// Null where there are none.
const DStringArray* TranslationLines() {
    const int section = TrIni.m_Sections.Index("Translations");
    return section < 0 ? nullptr : &TrIni.m_Lines[section];
}

DString SharedPrefix(const DString& line) { return line.BeforeFirst('=', true); }

DString LocalPrefix(const DString& line) { return line.AfterFirst('=', true); }

}  // namespace

DString AppendPathElts(const DString& a, const DString& b) {
    if (a.IsEmpty() || b.IsEmpty()) return a + b;
    const int64_t length = int64_t{1} + a.GetLength() + b.GetLength();
    DString path;
    char* text = length <= npos ? path.GetBuffer(static_cast<int>(length)) : nullptr;
    if (!text) return path;  // half a path would name something else
    memcpy(text, a, static_cast<size_t>(a.GetLength()));
    text += a.GetLength();
    *text++ = '/';
    memcpy(text, b, static_cast<size_t>(b.GetLength()));
    return path;
}

DString AppendPathElts(const DString& a, const DString& b, const DString& c) {
    const MemoryWatch memory;
    const DString path = AppendPathElts(AppendPathElts(a, b), c);
    return memory.Whole() ? path : DString();
}

DString AppendPathElts(const DString& a, const DString& b, const DString& c, const DString& d) {
    const MemoryWatch memory;
    const DString path = AppendPathElts(AppendPathElts(a, b, c), d);
    return memory.Whole() ? path : DString();
}

DString AppendPathElts(const DString& a, const DString& b, const DString& c, const DString& d,
                       const DString& e) {
    const MemoryWatch memory;
    const DString path = AppendPathElts(AppendPathElts(a, b, c, d), e);
    return memory.Whole() ? path : DString();
}

void SplitPathElts(const DString& path, DString& folder, DString& name) {
    const DString whole(path);  // may be one of the results
    folder = whole.BeforeLast('/', false);
    name = whole.AfterLast('/', true);
}

bool IsFullQual(const DString& path) { return path[0] == '/'; }

DString TranslateFileName(const DString& name) { return name.Replace("\\", "/", true, nullptr); }

DString GetUNCFileName(const DString& name) {
    const DStringArray* lines = name.IsEmpty() ? nullptr : TranslationLines();
    for (int i = 0; lines && i < lines->Count(); ++i) {
        const DString& line = (*lines)[i];
        DString rest;
        if (!DropPrefix(name, LocalPrefix(line), rest)) continue;
        return AppendPathElts(SharedPrefix(line), rest).Replace("/", "\\", true, nullptr);
    }
    return name;
}

DString GetLocalFileName(const DString& name) {
    const DStringArray* lines = name.IsEmpty() ? nullptr : TranslationLines();
    for (int i = 0; lines && i < lines->Count(); ++i) {
        const DString& line = (*lines)[i];
        DString rest;
        if (!DropPrefix(name, SharedPrefix(line), rest)) continue;
        return AppendPathElts(LocalPrefix(line), TranslateFileName(rest));
    }
    return name;
}

DString GetCurrentDirectoryD() {
    char path[PATH_MAX];
    return getcwd(path, sizeof path) ? DString(path) : DString();
}

bool SetCurrentDirectoryD(const DString& path) {
    DString corrected(path);
    FolderExists(corrected);
    return chdir(corrected) == 0;
}
