// The shared test helpers; see Support.h.
#include "support/Support.h"

#include <string.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

std::string mScratchFolder;

template <typename T>
std::string Bytes(T value) {
    std::string bytes(sizeof value, '\0');
    memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

}  // namespace

const std::string& ScratchFolder() { return mScratchFolder; }

void SetScratchFolder(const std::string& folder) { mScratchFolder = folder; }

std::string Scratch(const std::string& name) { return mScratchFolder + "/" + name; }

std::string MakeFolder(const std::string& path) {
    fs::create_directories(path);
    return path;
}

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes;
    ASSERT_TRUE(file.good()) << path;
}

std::string ReadBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.good()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Exists(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string Text(const DString& text) {
    return {static_cast<const char*>(text), static_cast<size_t>(text.GetLength())};
}

std::string Int16(int value) { return Bytes(static_cast<int16_t>(value)); }
std::string Int32(long value) { return Bytes(static_cast<int32_t>(value)); }
std::string Float32(float value) { return Bytes(value); }

RecordingSink::RecordingSink() { SetNotify(this); }

RecordingSink::~RecordingSink() { SetNotify(nullptr); }

void RecordingSink::Notify(NotifyType type, int value, const DString& text) {
    m_Entries.push_back({type, value, Text(text)});
}

std::vector<std::string> RecordingSink::Texts(NotifyType type) const {
    std::vector<std::string> texts;
    for (const Entry& entry : m_Entries) {
        if (entry.m_Type == type) texts.push_back(entry.m_Text);
    }
    return texts;
}

void PrintTo(const DString& text, std::ostream* out) { *out << '"' << Text(text) << '"'; }
