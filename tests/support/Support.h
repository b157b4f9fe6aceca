/// What the tests share: a scratch folder, whole files as bytes, and a sink that remembers.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "core/CoreGlobal.h"
#include "types/DString.h"

/// The folder of this test run: its HOME and, at the start, its current directory. It is empty when
/// the program starts and is removed at its end.
const std::string& ScratchFolder();
void SetScratchFolder(const std::string& folder);
/// `name` below the scratch folder.
std::string Scratch(const std::string& name);

/// Makes a folder and what is missing above it; returns its path.
std::string MakeFolder(const std::string& path);
/// Writes a file of exactly these bytes.
void WriteBytes(const std::string& path, const std::string& bytes);
/// The bytes of a file; fails the test if there is none.
std::string ReadBytes(const std::string& path);
/// Something of that name exists, links unfollowed.
bool Exists(const std::string& path);
/// All names in a folder, sorted.
std::vector<std::string> Names(const std::string& folder);

/// The text of a DString, all its bytes.
std::string Text(const DString& text);

/// Little-endian bytes of plain values, for golden files built by hand.
std::string Int16(int value);
std::string Int32(long value);
std::string Float32(float value);

/// A sink that remembers what it was told. It installs itself and leaves no sink behind.
class RecordingSink : public DNotify {
public:
    struct Entry {
        int m_Type;
        int m_Value;
        std::string m_Text;
        bool operator==(const Entry&) const = default;
    };

    RecordingSink();
    ~RecordingSink() override;
    void Notify(NotifyType type, int value, const DString& text) override;
    /// The texts of one type, in order.
    std::vector<std::string> Texts(NotifyType type) const;

    std::vector<Entry> m_Entries;
};

/// What a call prints on standard output.
template <typename Call>
std::string PrintedBy(Call call) {
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}

/// Lets failed expectations show texts.
void PrintTo(const DString& text, std::ostream* out);
