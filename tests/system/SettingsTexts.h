/// Lists of strings and settings documents, for the tests of the settings.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/Support.h"
#include "system/DIni.h"

/// Each test in a current directory of its own, also where one process runs several.
class InOwnFolder : public testing::Test {
protected:
    InOwnFolder() { std::filesystem::current_path(m_Folder); }
    ~InOwnFolder() override { std::filesystem::current_path(ScratchFolder()); }

    /// `name` below the folder of this test.
    std::string Own(const std::string& name) const { return m_Folder + "/" + name; }

    const std::string m_Folder =
        MakeFolder(Scratch(testing::UnitTest::GetInstance()->current_test_info()->name()));
};

using Texts = std::vector<std::string>;

/// The elements of an array.
inline Texts TextsOf(const DStringArray& array) {
    Texts texts;
    for (int i = 0; i < array.Count(); ++i) {
        texts.push_back(Text(array[i]));
    }
    return texts;
}

inline DStringArray ListOf(const Texts& texts) {
    DStringArray array;
    for (const std::string& text : texts) {
        array.Add(text.c_str());
    }
    return array;
}

/// The document that this text reads as, attached to no file.
inline DIni DocumentOf(const char* text) {
    DIni document;
    document.m_Text = text;
    document.loadstring();
    return document;
}

/// Writes `text` to a file and attaches a document to it.
inline DIni AttachedTo(const std::string& path, const std::string& text) {
    WriteBytes(path, text);
    return DIni(path.c_str());
}
