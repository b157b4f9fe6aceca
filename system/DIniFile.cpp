// DIni and its file: loading, writing and holding.
#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/CoreGlobal.h"
#include "system/DFile.h"
#include "system/DIni.h"
#include "system/DSystem.h"
#include "types/MemoryWatch.h"

namespace {

bool IsRegularFile(const DString& name) {
    struct stat status;
    return lstat(name, &status) == 0 && S_ISREG(status.st_mode);
}

// Reads `length` bytes, or as many as there are; their number.
int ReadAll(int descriptor, char* buffer, int length) {
    int delivered = 0;
    while (delivered < length) {
        const ssize_t count =
            read(descriptor, buffer + delivered, static_cast<size_t>(length - delivered));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        delivered += static_cast<int>(count);
    }
    return delivered;
}

// What DFile::GetText gives of a regular file of this very name, in the text's own block if that
// has room: without a stream, since all of the file is read at once, and for each field.
void ReadInPlace(const DString& fileName, DString& text) {
    const int descriptor = open(fileName, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) NoteFailedOpen();
    struct stat status;
    const bool isOpen = descriptor >= 0 && fstat(descriptor, &status) == 0;
    const int length = isOpen ? static_cast<int>(status.st_size) : 0;
    char* buffer = length > 0 ? text.GetBuffer(length) : nullptr;
    if (buffer) {
        text.Truncate(ReadAll(descriptor, buffer, length));
    } else {
        text = DString();
    }
    if (descriptor >= 0) close(descriptor);
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

void DIni::RestoreFile() {
    const MemoryWatch memory;
    m_Section = -1;
    loadstring();
    if (memory.Whole()) {
        WriteFile(m_FileName, false);
    } else {
        Detach();
    }
}

void DIni::CommitFile() {
    WriteFile(m_FileName, false);
    m_Text = DFile::GetText(m_FileName);
}

void DIni::HoldWrite(bool hold) {
    if (m_Hold && !hold) WriteFile(m_FileName, false);
    m_Hold = hold;
}
