/// What the fuzz targets share: the process's own scratch folder, and an input read piece by piece.
///
/// A target is a source `fuzz/<Name>Fuzz.cpp` with one function RunInput. It is built twice: by
/// clang with libFuzzer, which looks for new inputs (scripts/fuzz), and by any compiler as a
/// program that replays the inputs of `fuzz/corpus/<Name>/`, one of the tests.
#pragma once

#include <stdint.h>

#include <string>
#include <string_view>

class DString;

/// The bytes of one run, from the front on. Where they are used up, numbers are 0 and texts empty.
class Input {
public:
    explicit Input(std::string_view bytes) : m_Bytes(bytes) {}
    bool IsEmpty() const { return m_Bytes.empty(); }
    uint8_t Byte();
    /// From 0 to bound - 1.
    int Below(int bound) { return Byte() % bound; }
    bool Bool() { return (Byte() & 1) != 0; }
    /// Two or four bytes, little-endian.
    int Int16();
    int Int32();
    /// Any bit pattern.
    float Float();
    /// Up to the next line feed, which is taken and not returned: what a dictionary can fill.
    std::string Line();
    std::string Take(size_t count);
    std::string Rest() { return Take(m_Bytes.size()); }

private:
    std::string_view m_Bytes;
};

/// The target itself: plays one input. It leaves nothing behind that a later input could notice.
void RunInput(Input input);
/// Once before the first input; a target without set-up leaves it empty.
void StartTarget();

/// The scratch folder of this process: its HOME and current directory, removed at its end.
const std::string& ScratchFolder();
/// `name` below the scratch folder.
std::string Scratch(const std::string& name);
/// Replaces a file by exactly these bytes.
void WriteBytes(const std::string& path, std::string_view bytes);
/// The bytes of a text and a text of these bytes, zero bytes included.
std::string Bytes(const DString& text);
DString Text(const std::string& bytes);
/// The bytes of a file, empty if there is none.
std::string ReadBytes(const std::string& path);
/// Installs the sink with which every target starts: it drops what the library says.
void HearNothing();
/// Removes all that stands in a folder.
void EmptyFolder(const std::string& path);

/// Ends the run as a finding, naming what doesn't hold.
#define REQUIRE(condition) Require((condition), #condition, __FILE__, __LINE__)
void Require(bool holds, const char* condition, const char* file, int line);
