/// DIni: a settings document in memory, and its file. It is an ordered list of sections, each with
/// an ordered list of text lines, and one current section through which keys are read and written.
///
/// A key is looked up by comparing the beginning of each line with the key and "=", without regard
/// to case; lines are never taken apart, so comments and unknown lines pass through a load and a
/// save unharmed. docs/settings.md describes the text form.
///
/// Reads never fail: what is missing or malformed yields the caller's default. Unless writing is
/// held, each change rewrites the whole file at once; the last writer wins. There are no locks. A
/// document sees what other processes wrote only when its file is attached again.
///
/// Keys and values are stored as given: one with a line break, or one that begins with "[", reads
/// back as the lines and headings that it then forms.
#pragma once

#include "types/DStringArray.h"

class DIni {
public:
    DString m_FileName;            ///< the backing file, its case corrected; empty for none
    int m_Section = -1;            ///< index of the current section; -1 for none
    DString m_Text;                ///< the file's text as last loaded or committed
    DStringArray m_Sections;       ///< section names in file order, without brackets
    DArray<DStringArray> m_Lines;  ///< the lines of each section, without line ends
    bool m_Hold = false;           ///< changes stay in memory

    /// A detached document.
    DIni() = default;
    /// A document attached to a file by SetFileName.
    explicit DIni(const DString& fileName);

    // Sections. A section is found without regard to case; of two of one name, the first.

    /// Makes a section current, creating it in memory if it is missing. Never writes the file.
    void SetSection(const DString& name);
    bool SectionExists(const DString& name) const;
    /// A copy of a section's lines.
    DStringArray GetFullSection(const DString& name) const;
    /// Replace a section's lines, adding the section if it is missing. The two are the same.
    void SetFullSection(const DString& name, const DStringArray& lines);
    void AddSection(const DString& name, DStringArray& lines);
    /// Whether the new name is free isn't looked at.
    void RenameSection(const DString& oldName, const DString& newName);
    /// Removes a section; afterwards none is current. Rewrites the file also if there was none.
    void DeleteSection(const DString& name);

    // Keys of the current section. A null default means an empty text.

    /// Lines in the current section, comments included.
    int nKeys() const;
    /// The index of a key's line, or -1; `valueStart` is where its value begins. A key that begins
    /// with ";" is a comment and never found. `valueStart` is set also if the search fails, unless
    /// no section is current or the key is a comment.
    int keyindex(const DString& key, int& valueStart) const;
    /// A missing key and an empty value both give the default.
    DString GetKeyValue(const DString& key, const char* defaultValue) const;
    /// GetKeyValue, without a default, of the key that is `text` from `start` on.
    DString GetValueNamedAt(const DString& text, int start) const;
    /// By DString::ToInt, so "12abc" is 12; a value with an "e" must be a number from end to end,
    /// and is cut toward zero. One that doesn't fit an int then gives the default.
    int GetKeyIntValue(const DString& key, int defaultValue) const;
    /// True for "True" in any case and for "1"; false for anything else, an empty value included.
    bool GetKeyBoolValue(const DString& key, bool defaultValue) const;
    /// The whole value must be a number.
    float GetKeyFloatValue(const DString& key, float defaultValue) const;
    /// GetKeyValue, split at `delim` into at least `cols` pieces.
    DStringArray GetKeyRow(const DString& key, int cols, const char* delim,
                           const char* defaultValue) const;
    /// Makes `section` current, without creating it: none is current then if it is missing. Gives
    /// an empty value as empty, unlike GetKeyValue.
    DString GetSectionKeyValue(const DString& section, const DString& key,
                               const char* defaultValue);
    /// Replaces the key's line, or appends one. Does nothing if no section is current.
    void SetKeyValue(const DString& key, const DString& value);
    /// Makes `section` current, without creating it, and removes the key's line.
    void DeleteKey(const char* section, const DString& key);

    // The file

    /// Attaches a file and loads it; what was in memory and not written is gone. A missing file is
    /// created empty. One that is there and empty is read again every 50 ms, ten times at most,
    /// since another process may be in the middle of a write. An empty name detaches. Unless its
    /// name ends in Scalars.ini or ScalarCache.ini (in any case), holding is turned off; a failed
    /// attach leaves it. False, with no file attached, if the name is empty, if the file can't be
    /// created, or if memory or descriptors are refused while it is loaded.
    bool SetFileName(const DString& name);
    /// Parses m_Text into the document; m_Section stays.
    void loadstring();
    /// Writes the whole document to `name`, or to m_FileName if that is empty, holding or not, and
    /// attaches it there unless `keepName`. True, with nothing done, if neither is a name. False,
    /// with a line in the log, if the file can't be opened; false also for a document too large to
    /// be one text.
    bool WriteFile(DString name, bool keepName);
    /// The file's content differs from the document, the order of sections and of lines and the
    /// case of letters aside. Its lines are trimmed for the comparison and the document's aren't,
    /// and a blank line counts as a difference.
    bool Changed() const;
    /// Goes back to the text last loaded or committed, in memory and on disk, holding or not;
    /// afterwards no section is current.
    void RestoreFile();
    /// Writes the document, and keeps what the file says now as the text to go back to.
    void CommitFile();
    /// Turns holding on or off; turning it off writes what was held.
    void HoldWrite(bool hold);

private:
    bool HasSection() const;
    const DString& Line(int index) const { return m_Lines[m_Section][index]; }
    bool FindValue(const DString& key, DString& value) const;
    static void PutKeyLine(const DString& key, const DString& value, DString& line);
    void Detach();
    bool ReadFrom(DString& fileName);
    bool AppendSection(const DString& name, const DStringArray& lines);
    void WriteThrough();
    bool AssembleText(DString& text) const;
};
