// The scratch folder, the input and the entry points of every fuzz target; see Fuzzing.h.
#include "support/Fuzzing.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "core/CoreGlobal.h"

namespace fs = std::filesystem;

namespace {

std::string mScratchFolder;

void RemoveScratchFolder() {
    std::error_code ignored;
    fs::current_path("/", ignored);
    fs::remove_all(mScratchFolder, ignored);
}

// The library speaks to a sink that hears nothing.
class DeafSink : public DNotify {
public:
    void Notify(NotifyType, int, const DString&) override {}
};

// A folder in memory where there is one: most of a run is file access.
std::string ParentFolder() {
    return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path().string();
}

}  // namespace

// Takes the place of the C library's: the pauses in which the library waits for another process's
// write would be most of a run, and there is no other process.
extern "C" int usleep(useconds_t) { return 0; }

uint8_t Input::Byte() {
    if (m_Bytes.empty()) return 0;
    const auto byte = static_cast<uint8_t>(m_Bytes.front());
    m_Bytes.remove_prefix(1);
    return byte;
}

int Input::Int16() {
    int16_t value = 0;
    const std::string bytes = Take(sizeof value);
    memcpy(&value, bytes.data(), bytes.size());
    return value;
}

int Input::Int32() {
    int32_t value = 0;
    const std::string bytes = Take(sizeof value);
    memcpy(&value, bytes.data(), bytes.size());
    return value;
}

float Input::Float() {
    float value = 0;
    const std::string bytes = Take(sizeof value);
    memcpy(&value, bytes.data(), bytes.size());
    return value;
}

std::string Input::Line() {
    const size_t end = m_Bytes.find('\n');
    std::string line(m_Bytes.substr(0, end));
    m_Bytes.remove_prefix(end == std::string_view::npos ? m_Bytes.size() : end + 1);
    return line;
}

std::string Input::Take(size_t count) {
    std::string bytes(m_Bytes.substr(0, count));
    m_Bytes.remove_prefix(bytes.size());
    return bytes;
}

const std::string& ScratchFolder() { return mScratchFolder; }

std::string Scratch(const std::string& name) { return mScratchFolder + "/" + name; }

void WriteBytes(const std::string& path, std::string_view bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    REQUIRE(file >= 0);
    REQUIRE(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    close(file);
}

std::string Bytes(const DString& text) {
    return {static_cast<const char*>(text), static_cast<size_t>(text.GetLength())};
}

DString Text(const std::string& bytes) {
    DString text;
    text.AllocCopy(static_cast<int>(bytes.size()), bytes.data());
    return text;
}

std::string ReadBytes(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    struct stat about {};
    fstat(file, &about);
    std::string bytes(static_cast<size_t>(about.st_size), '\0');
    const ssize_t count = read(file, bytes.data(), bytes.size());
    close(file);
    bytes.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
}

void HearNothing() {
    static DeafSink sink;
    SetNotify(&sink);
}

void EmptyFolder(const std::string& path) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(path, ignored)) {
        fs::remove_all(entry.path(), ignored);
    }
}

void Require(bool holds, const char* condition, const char* file, int line) {
    if (holds) return;
    fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
    abort();
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::string folder = ParentFolder() + "/tarsel-fuzz-XXXXXX";
    if (!mkdtemp(folder.data())) abort();
    mScratchFolder = folder;
    atexit(RemoveScratchFolder);
    if (setenv("HOME", folder.c_str(), 1) != 0 || chdir(folder.c_str()) != 0) abort();
    CoreInit(folder.c_str());
    HearNothing();
    StartTarget();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    RunInput(Input({reinterpret_cast<const char*>(data), size}));
    return 0;
}
