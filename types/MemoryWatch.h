/// Telling whether memory was refused. Nothing of the library throws then: a string keeps the text
/// that it had, an array its elements, and each operation goes on with that. What lasts must not
/// rest on it, though: a path that lost its end names another file, and a document that lost lines
/// must not replace its file.
#pragma once

#include <errno.h>

/// How often a block was refused to a string or an array, or a stream or folder couldn't be opened
/// for want of memory or descriptors, since the start of the process.
extern long RefusedBlocks;

/// An open has failed, as errno tells. It counts if the file may well be there and fit to be
/// opened.
inline void NoteFailedOpen() {
    if (errno == ENOMEM || errno == EMFILE || errno == ENFILE) ++RefusedBlocks;
}

/// Looks back on the time since it was made.
class MemoryWatch {
public:
    /// Nothing was refused.
    bool Whole() const { return RefusedBlocks == m_Before; }

private:
    long m_Before = RefusedBlocks;
};
